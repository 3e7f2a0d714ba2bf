// A listing on a page of its own, and the same listing written as a macro.
#include "session/xflistpage.h"
#include "session/xfkeys.h"

#include "fields/fields.h"

#include <cstdio>

namespace {

constexpr const char *LEGEND =
    "1/^c:QUIT  2:Make File  7:Scroll up  8:Scroll down  S-F11:top  S-F12:bot";

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

// The list on its page: one protected field a row, the legend on the last.
struct list_page {
    const std::vector<std::string> &lines;
    uint32_t id;                    // the page's number
    int top = 0;                    // index of the first line shown
    int rows = 0;                   // rows for the list
    int cols = 0;                   // width of the grid

    void create()
    {
        fspcrt(id);
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

int xflist_write(const std::string &path, const char *comment,
                 const std::vector<std::string> &lines)
{
    FILE *f = fopen(path.c_str(), "w");
    if (!f)
        return 1;
    bool ok = fprintf(f, "/* %s */\n", comment) >= 0;
    for (const std::string &line : lines)
        ok = ok && fprintf(f, "%s\n", quoted(line).c_str()) >= 0;
    ok = fclose(f) == 0 && ok;
    return ok ? 0 : 1;
}

std::string xflist_quoted(const std::string &line) { return quoted(line); }

int xflist_show(const std::vector<std::string> &lines, uint32_t page, int (*make)())
{
    list_page p{lines, page};
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
        if (value == 2 && make() != 0)
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
    fspdel(page);
    if (!resized && prev != FS_NOPAGE)
        fspsel(prev);
    return resized;
}
