// The texts of a list line: names made safe for the screen, sizes with
// their thousands, dates in the user's order.
#include "flist/flist.h"

#include "fields/fields.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

int fl_europe = 1;
int fl_parent = 1;
int fl_attrs = 0;

std::string fl_shown(std::string_view raw)
{
    static const char hex[] = "0123456789abcdef";
    std::string out;
    out.reserve(raw.size());
    const auto *p = reinterpret_cast<const unsigned char *>(raw.data());
    size_t n = raw.size();
    for (size_t i = 0; i < n;) {
        unsigned c = p[i];
        if (c == '\n' || c == '\t' || c == '\\') {
            out += '\\';
            out += c == '\n' ? 'n' : c == '\t' ? 't' : '\\';
            i++;
            continue;
        }
        uint32_t cp = 0;
        int len = c < 32 || c == 127 ? 0 : fs_utf8_seq(p + i, long(n - i), cp);
        if (len > 0) {
            out.append(raw.substr(i, size_t(len)));
            i += size_t(len);
            continue;
        }
        // A control character, or a byte that starts no character.
        out += "\\x";
        out += hex[c >> 4];
        out += hex[c & 15];
        i++;
    }
    return out;
}

size_t fl_cells(std::string_view s)
{
    size_t cells = 0;
    for (unsigned char c : s)
        cells += (c & 0xc0) != 0x80;
    return cells;
}

std::string fl_thousands(int64_t n)
{
    std::string digits = std::to_string(n < 0 ? -n : n), out;
    for (size_t i = 0; i < digits.size(); i++) {
        if (i && (digits.size() - i) % 3 == 0)
            out += ',';
        out += digits[i];
    }
    return n < 0 ? "-" + out : out;
}

std::string fl_date(int64_t t)
{
    time_t tt = time_t(t);
    struct tm tmv;
    if (!localtime_r(&tt, &tmv))
        tmv = {};
    int a = fl_europe ? tmv.tm_mday : tmv.tm_mon + 1, b = fl_europe ? tmv.tm_mon + 1 : tmv.tm_mday;
    char buf[48];
    std::snprintf(buf, sizeof buf, "%2.2d/%2.2d/%2.2d %2.2d:%2.2d", a, b, tmv.tm_year % 100, tmv.tm_hour,
                  tmv.tm_min);
    return buf;
}

std::string fl_basename(const std::string &path)
{
    size_t s = path.rfind('/');
    return s == std::string::npos ? path : path.substr(s + 1);
}

std::string fl_dirname(const std::string &path)
{
    // The root keeps its slash; a name with none lives in ".".
    size_t s = path.rfind('/');
    return s == std::string::npos ? std::string(".") : s == 0 ? std::string("/") : path.substr(0, s);
}

std::vector<std::string> fl_words(std::string_view text)
{
    // Blanks part the words; double quotes hold blanks in, with \" for a
    // quote inside them, as the substitutions write names.
    std::vector<std::string> out;
    size_t i = 0;
    while (i < text.size()) {
        while (i < text.size() && (text[i] == ' ' || text[i] == '\t'))
            i++;
        if (i >= text.size())
            break;
        std::string w;
        bool quoted = false;
        for (; i < text.size() && (quoted || (text[i] != ' ' && text[i] != '\t')); i++) {
            if (text[i] == '"')
                quoted = !quoted;
            else if (quoted && text[i] == '\\' && i + 1 < text.size() && text[i + 1] == '"')
                w += text[++i];
            else
                w += text[i];
        }
        out.push_back(std::move(w));
    }
    return out;
}

namespace {

constexpr size_t FIRST_BYTES = 4096; // read of a file for its first lines
constexpr size_t FIRST_LINES = 8;    // lines kept of it

// The first lines of a regular file, tabs as blanks and the rest as shown.
// Opened without waiting, so that a file that turns into a pipe meanwhile
// cannot hold the list up.
std::vector<std::string> read_first(const std::string &path)
{
    std::vector<std::string> lines;
    int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0)
        return lines;
    struct stat sb;
    std::string buf;
    if (fstat(fd, &sb) == 0 && S_ISREG(sb.st_mode)) {
        buf.resize(FIRST_BYTES);
        ssize_t n = read(fd, buf.data(), buf.size());
        buf.resize(n > 0 ? size_t(n) : 0);
    }
    close(fd);
    for (size_t at = 0; at < buf.size() && lines.size() < FIRST_LINES;) {
        size_t nl = buf.find('\n', at);
        std::string line = buf.substr(at, nl == std::string::npos ? std::string::npos : nl - at);
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        std::replace(line.begin(), line.end(), '\t', ' ');
        lines.push_back(fl_shown(line));
        at = nl == std::string::npos ? buf.size() : nl + 1;
    }
    return lines;
}

} // namespace

const std::vector<std::string> &fl_first_lines(fl_list &l, size_t i)
{
    if (l.first.size() < l.count())
        l.first.resize(l.count());
    fl_first &f = l.first[i];
    // Only what was a regular file when listed is opened at all: opening a
    // device may do something to it.
    if (fl_is_parent(l, i) || !S_ISREG(l.st[i].mode) || fl_removed(l.st[i])) {
        f = fl_first{};
        return f.lines;
    }
    if (f.path != l.name[i] || f.mtime != l.st[i].mtime) {
        f.path = l.name[i];
        f.mtime = l.st[i].mtime;
        f.lines = read_first(f.path);
    }
    return f.lines;
}
