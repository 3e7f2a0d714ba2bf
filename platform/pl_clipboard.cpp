// The clipboard: our own copy in the process, and the hooks through which a
// screen layer reaches the system's.
#include "platform/platform.h"

pl_clip_hooks pl_clip_system;

namespace {
pl_clip own;
std::string pasted;     // a paste not yet taken
bool paste_waits = false;
}

void pl_paste_put(const std::string &text)
{
    pasted = text;
    paste_waits = true;
}

bool pl_paste_take(std::string &out)
{
    if (!paste_waits)
        return false;
    out.swap(pasted);
    pasted.clear();
    paste_waits = false;
    return true;
}

void pl_clip_set(const pl_clip &c)
{
    own = c;
    if (pl_clip_system.put)
        pl_clip_system.put(own);
}

int pl_clip_get(pl_clip &out)
{
    if (pl_clip_system.get) {
        int r = pl_clip_system.get(out);
        if (r != 0)
            return r;
    }
    if (own.lines.empty())
        return 0;
    out = own;
    return 1;
}

const pl_clip &pl_clip_own() { return own; }

std::string pl_clip_join(const pl_clip &c)
{
    std::string s;
    for (size_t i = 0; i < c.lines.size(); i++) {
        if (i)
            s += "\r\n";
        s += c.lines[i];
    }
    return s;
}

pl_clip pl_clip_split(const std::string &text, bool rect)
{
    pl_clip c;
    c.rect = rect;
    size_t a = 0;
    while (a <= text.size()) {
        size_t e = text.find('\n', a);
        if (e == std::string::npos)
            e = text.size();
        size_t end = e > a && text[e - 1] == '\r' ? e - 1 : e;
        c.lines.emplace_back(text, a, end - a);
        a = e + 1;
    }
    // A text that ends with a line end holds no empty last line.
    if (c.lines.size() > 1 && c.lines.back().empty() && !text.empty() && text.back() == '\n')
        c.lines.pop_back();
    return c;
}

std::string pl_base64(const std::string &bytes)
{
    static const char tab[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    size_t i = 0;
    for (; i + 2 < bytes.size(); i += 3) {
        unsigned v = (unsigned char)bytes[i] << 16 | (unsigned char)bytes[i + 1] << 8 |
                     (unsigned char)bytes[i + 2];
        out += tab[v >> 18];
        out += tab[(v >> 12) & 63];
        out += tab[(v >> 6) & 63];
        out += tab[v & 63];
    }
    if (i < bytes.size()) {
        unsigned v = (unsigned char)bytes[i] << 16;
        if (i + 1 < bytes.size())
            v |= (unsigned char)bytes[i + 1] << 8;
        out += tab[v >> 18];
        out += tab[(v >> 12) & 63];
        out += i + 1 < bytes.size() ? tab[(v >> 6) & 63] : '=';
        out += '=';
    }
    return out;
}
