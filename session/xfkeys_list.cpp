// The keys listing: every definition as the SET line that makes it, the
// file setkeys.vorta that brings the same keys back when called as a macro,
// and the scrolling page that shows the list on the field manager.
#include "session/xfkeys.h"

#include "commands/commands.h"
#include "fields/fields.h"

#include <cstdio>

namespace {

// The start of a class key's line, by shift state: 16 characters wide.
constexpr const char *class_formats[KEY_STATES] = {
    "SET %s%-9d  ",  "SET S-%s%-9d",   "SET C-%s%-9d",   "SET M-%s%-9d",
    "SET S+C-%s%-7d", "SET S+M-%s%-7d", "SET C+M-%s%-7d", "SET S+C+M-%s%-5d",
};
constexpr const char *enter_heads[KEY_STATES] = {
    "SET ENTER       ", "SET S-ENTER     ", "SET C-ENTER     ", "SET M-ENTER     ",
    "SET S+C-ENTER   ", "SET S+M-ENTER   ", "SET C+M-ENTER   ", "SET S+C+M-ENTER ",
};
// The prefix of a key name, by shift state.
constexpr const char *prefixes[KEY_STATES] = {
    "", "S-", "C-", "M-", "S+C-", "S+M-", "C+M-", "S+C+M-",
};
constexpr int HEAD = 16;                // width of the SET part of a line
constexpr int LIST_CLASSES[KC_COUNT] = {KC_F, KC_R, KC_L};
constexpr const char *LEGEND =
    "1/^c:QUIT  2:Make File  7:Scroll up  8:Scroll down  S-F11:top  S-F12:bot";
constexpr const char *KEYS_FILE = "setkeys.vorta";
constexpr uint32_t KEYS_PAGE = 0x6b657973; // a page number of its own

std::string padded(std::string s)
{
    if (s.size() < size_t(HEAD))
        s.resize(size_t(HEAD), ' ');
    return s;
}

std::string with_def(std::string head, const xfkeydef &d)
{
    head += order_words[d.order & 3];
    head += d.def;
    return head;
}

std::string char_name(int c)
{
    return c == 27 ? std::string("ESCAPE") : std::string(1, char(c));
}

// A REXX string holding the line, quotes doubled.
std::string quoted(const std::string &line)
{
    std::string q = "'";
    for (char ch : line) {
        q += ch;
        if (ch == '\'')
            q += '\'';
    }
    return q + "'";
}

} // namespace

std::vector<std::string> xfkeys_list()
{
    std::vector<std::string> out;
    char buf[64];
    for (int cls : LIST_CLASSES) {
        const xfkeyclass &k = key_class[cls];
        const char letter[2] = {k.letter, 0};
        for (size_t i = 1; i < k.slot.size(); i++) {
            if (k.slot[i].def.empty())
                continue;
            int key = int(i - 1) % k.nbkeys + 1, state = int(i - 1) / k.nbkeys;
            snprintf(buf, sizeof buf, class_formats[state], letter, key);
            out.push_back(with_def(buf, k.slot[i]));
        }
    }
    static const char *const char_prefix[2] = {"SET C-", "SET M-"};
    for (int t = 0; t < 2; t++)
        for (int c = 0; c < 256; c++)
            if (!key_chars[t][c].def.empty())
                out.push_back(with_def(padded(char_prefix[t] + char_name(c)), key_chars[t][c]));
    for (int s = 0; s < KEY_STATES; s++)
        if (!key_enter[s].def.empty())
            out.push_back(with_def(enter_heads[s], key_enter[s]));
    for (int f = 0; f < FK_COUNT; f++) {
        const xfkeyref &r = key_field[f];
        if (r.cls < 0)
            continue;
        snprintf(buf, sizeof buf, "%s%c%d", prefixes[r.state], key_class[r.cls].letter, r.key);
        out.push_back(padded(std::string("SET ") + field_key_names[f]) + buf);
    }
    out.push_back(padded("SET BACKSPACE") + (key_backspace == 127 ? "^?" : "^h"));
    snprintf(buf, sizeof buf, "SET NBKEYS      %d %d %d", key_class[KC_L].nbkeys,
             key_class[KC_F].nbkeys, key_class[KC_R].nbkeys);
    out.push_back(buf);
    out.push_back(std::string("SET SERVER      ") + server_names[key_server]);
    return out;
}

// The file is a macro: a comment, then each SET line as a command string.
int xfkeys_write(const std::string &path)
{
    FILE *f = fopen(path.c_str(), "w");
    if (!f)
        return 1;
    bool ok = fputs("/* Key definitions: call this macro to set them again */\n", f) >= 0;
    for (const std::string &line : xfkeys_list())
        ok = ok && fprintf(f, "%s\n", quoted(line).c_str()) >= 0;
    ok = fclose(f) == 0 && ok;
    return ok ? 0 : 1;
}

namespace {

// The list on its page: one protected field a row, the legend on the last.
struct list_page {
    std::vector<std::string> lines; // the listing
    int top = 0;                    // index of the first line shown
    int rows = 0;                   // rows for the list
    int cols = 0;                   // width of the grid

    void create()
    {
        fspcrt(KEYS_PAGE);
        int nlines = 0;
        fs_grid(&nlines, &cols);
        rows = nlines > 1 ? nlines - 1 : 0;
        std::vector<int32_t> t;
        for (int r = 1; r <= rows + 1 && cols > 0; r++) {
            const int32_t row[14] = {r, r, 1, 1, cols, 2, 1, 0, 0, 0, 0, 0, 0, 0};
            t.insert(t.end(), row, row + 14);
        }
        asrfmt(int(t.size() / 14), 14, t.data());
        std::string legend(LEGEND);
        ascput(rows + 1, int(legend.size()), legend.c_str());
        asfcur(rows + 1, 1, 1);
        show();
    }

    int last_top() const { return int(lines.size()) > rows ? int(lines.size()) - rows : 0; }

    void scroll(int to)
    {
        top = to < 0 ? 0 : to > last_top() ? last_top() : to;
        show();
    }

    void show()
    {
        for (int r = 1; r <= rows; r++) {
            size_t i = size_t(top + r - 1);
            const std::string &s = i < lines.size() ? lines[i] : std::string();
            ascput(r, int(s.size()), s.c_str());
        }
    }
};

} // namespace

int xfshow_keys()
{
    list_page p;
    p.lines = xfkeys_list();
    uint32_t prev = fs_curpage();
    p.create();
    int resized = 0;
    const int nf = key_class[KC_F].nbkeys;
    for (;;) {
        int code = 0, value = 0, mod = 0;
        asread(&code, &value, &mod);
        if (code == 23 || code == FSK_CLOSE || (code == 22 && (value == 'c' || value == 'C')))
            break;
        if (code == 25) {
            fsresize();
            resized = 1;
            p.create();
            p.scroll(p.top);
            continue;
        }
        if (code != 1)
            continue;
        if (value == 1)
            break;
        if (value == 2 && xfkeys_write(KEYS_FILE) != 0)
            fsalrm();
        else if (value == 7)
            p.scroll(p.top - p.rows);
        else if (value == 8)
            p.scroll(p.top + p.rows);
        else if (value == 11 + nf)
            p.scroll(0);
        else if (value == 12 + nf)
            p.scroll(p.last_top());
    }
    fspdel(KEYS_PAGE);
    if (!resized && prev != FS_NOPAGE)
        fspsel(prev);
    return resized;
}
