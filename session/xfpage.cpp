// The editor's page: the division of the grid among the views, and the
// composition of each view into fields (id line, message line, command line,
// prefix areas and file rows, end rows and shadow rows, the key legend), the
// cursor's placing and the window title.
#include "session/xed.h"
#include "session/xfpage.h"
#include "commands/commands.h"
#include "fields/fields.h"
#include "fields/plat.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <unistd.h>

int page_rows = 24;    // grid size at the last geometry
int page_cols = 80;
bool pageok = true;    // the grid has room for a page
int nbpf = 1;          // rows of the key legend
std::string pf_legend =
    "1:Q  2:E  3:Save  4:Sp  5:x  6:cu  7:U  8:D  9:?  10:h  12:=  S-11:top  S-12:bot";
xfscreendef screen_def; // SCReen's division, kept for resizes

// Colour items of the page: logical colour and hilite of each.
xfcolour_item colour_items[38] = {
    {"Filearea", 2, 0},      {"CURLine", 7, 0},      {"Arrow", 3, 0},       {"MSgline", 1, 0},
    {"CURrent", 7, 0},       {"CURRENTedited", 7, 0}, {"Nocurrent", 2, 0},  {"Edited", 2, 0},
    {"PEnding", 1, 0},       {"PRefix", 6, 0},       {"Idline", 4, 0},      {"CMdline", 3, 0},
    {"PFline", 5, 0},        {"SIze", 4, 0},         {"MOd", 4, 0},         {"SHadow", 6, 0},
    {"SCale", 5, 0},         {"Tabline", 5, 0},      {"PDelete", 1, 0},     {"RStart", 5, 0},
    {"REnd", 5, 0},          {"POint", 5, 0},        {"FL_Idline", 4, 0},   {"FL_MSgline", 1, 0},
    {"FL_Names", 2, 0},      {"FL_MOde", 4, 0},      {"FL_Cmdline", 3, 0},  {"FL_Size", 4, 0},
    {"FL_Removed", 1, 0},    {"FL_Pfline", 5, 0},    {"FL_Directories", 6, 0}, {"CURSor", 7, 0},
    {"TR_Box", 5, 0},        {"TR_HBox", 5, 0},      {"TR_CPBox", 5, 0},    {"TR_CUrrent", 7, 0},
    {"TR_HIdden", 6, 0},     {"", 0, 0},
};

namespace {

enum colour_item {
    C_FILE = 0, C_CURL = 1, C_ARROW = 2, C_MSG = 3, C_PENDING = 8, C_PREFIX = 9, C_ID = 10,
    C_CMD = 11, C_PF = 12, C_SIZE = 13, C_MOD = 14, C_SHADOW = 15, C_SCALE = 16, C_TABS = 17,
    C_POINT = 21,
};

int colour(int item) { return colour_items[item].colour; }

// Texts of the page other than a file's lines are in the locale's
// character set.
bool locale_utf8()
{
    static const bool on = xflocale_utf8();
    return on;
}

struct page_text {
    int id;           // field
    std::string text; // content
    bool utf8;        // UTF-8 text, else bytes shown as Latin-1
};

// The fields of a page are collected, defined in one call, then filled.
struct page_builder {
    std::vector<int32_t> table;            // 14 words a field
    std::vector<page_text> texts;          // what the fields hold
    std::vector<std::pair<int, std::vector<int8_t>>> colours; // per-cell colours of a field
    std::vector<std::pair<int, fsxfield>> exts;             // extended records of fields
    std::vector<std::pair<int, std::vector<int32_t>>> hilites; // per-cell hilites (-1 the field's)
    int next = 1;                          // next field id

    int add(int row, int col, int width, int type, int col_item, int flags = 0,
            std::string text = std::string(), bool utf8 = locale_utf8())
    {
        if (width <= 0)
            return 0;
        fsfield f{};
        f.id = next++;
        f.y1 = row;
        f.x1 = col;
        f.nb_lines = 1;
        f.nb_cols = width;
        f.type = type;
        f.intensity = 1;
        f.colour = colour(col_item);
        f.hilite = colour_items[col_item].hilite;
        f.flags = flags;
        const int32_t *w = reinterpret_cast<const int32_t *>(&f);
        table.insert(table.end(), w, w + 14);
        if (!text.empty())
            texts.push_back({f.id, std::move(text), utf8});
        return f.id;
    }

    // A field's hilite other than its colour item's.
    void set_hilite(int id, int h)
    {
        if (id > 0)
            table[(size_t)(id - 1) * 14 + 9] = h;
    }

    // Defines the fields and fills them. A row whose characters the page's
    // table of substitutes cannot all take is shown but cannot be typed on,
    // so that no character is ever read back as another.
    void apply()
    {
        if (!table.empty())
            asrfmt((int)table.size() / 14, 14, table.data());
        for (auto &t : texts) {
            if (!t.utf8) {
                ascput(t.id, (int)t.text.size(), t.text.c_str());
            } else if (ascput_utf8(t.id, (int)t.text.size(), t.text.c_str()) == -2) {
                asftyp(t.id, 2);
            }
        }
        for (auto &c : colours)
            asccol(c.first, (int)c.second.size(), c.second.data());
        for (auto &e : exts)
            asxset(e.first, e.second);
        for (auto &h : hilites)
            aschlt(h.first, (int)h.second.size(), h.second.data());
    }
};

constexpr int TYPE_INPUT = 0;
constexpr int TYPE_PROTECTED = 2;

// A file under the start directory is shown by its relative name.
std::string shown_name(const std::string &f)
{
    std::string dir = startdir.empty() || startdir.back() == '/' ? startdir : startdir + "/";
    return f.compare(0, dir.size(), dir) == 0 ? f.substr(dir.size()) : f;
}

std::string fit(std::string s, size_t width)
{
    if (s.size() > width)
        s = s.substr(s.size() - width); // a long name keeps its end
    return s;
}

std::string host_name()
{
    static std::string h;
    if (h.empty()) {
        char buf[256] = "";
        gethostname(buf, sizeof buf - 1);
        h = buf[0] ? buf : "localhost";
    }
    return h;
}

// Lines in scope walking from `from` in direction dir; runs of lines out of
// scope are counted in `hidden`.
int32_t next_in_scope(int32_t from, int dir, int32_t &hidden)
{
    hidden = 0;
    int32_t li = from + dir;
    while (li >= 0 && li < nbli() && !xfinscope(li)) {
        hidden++;
        li += dir;
    }
    return li;
}

struct row_plan {
    int32_t li;     // line, -1 top, nbli end, -3 shadow, -4 nothing
    int32_t hidden; // lines a shadow row stands for
    int32_t first;  // a shadow row: the first of its lines
};

// Which position each file row shows, the current line on row `c`.
std::vector<row_plan> plan_rows(int nfile, int c, const std::vector<int32_t> &held)
{
    std::vector<row_plan> plan((size_t)nfile, {-4, 0, 0});
    int32_t cur = curline();
    plan[(size_t)c] = {cur, 0, 0};
    auto walk = [&](int dir) {
        int32_t li = cur;
        for (int r = c + dir; r >= 0 && r < nfile;) {
            if (li == -1 && dir < 0)
                break;
            if (li >= nbli() && dir > 0)
                break;
            int32_t hidden;
            int32_t nli = next_in_scope(li, dir, hidden);
            if (hidden > 0 && xv->shadow && xv->scope == 0) {
                plan[(size_t)r] = {-3, hidden, dir > 0 ? li + 1 : nli + 1};
                r += dir;
                if (r < 0 || r >= nfile)
                    break;
            }
            if (nli < -1 || (nli == -1 && topline != -1))
                break;
            // A line held on a row of its own is not shown twice.
            if (nli >= 0 && std::find(held.begin(), held.end(), nli) != held.end()) {
                li = nli;
                continue;
            }
            plan[(size_t)r] = {nli < 0 ? -1 : nli, 0, 0};
            li = nli;
            r += dir;
        }
    };
    walk(-1);
    walk(1);
    return plan;
}

void settle_cursor()
{
    auto &st = xf->curstack;
    for (size_t i = st.size(); i-- > 0;)
        if (st[i].prio >= xf->ptcur_i.prio)
            xf->ptcur_i = st[i];
    st.clear();
}

// What a prefix area shows: a text of the user's (an entry waiting, or one
// not understood) or else the area's own filling, which `filler` tells.
std::string prefix_text(int32_t li, int pw, bool &filler)
{
    filler = false;
    for (auto *v : {&xf->pfxerrs, &xf->pfxtexts})
        for (auto &p : *v)
            if (p.second == li) {
                std::string t = p.first.substr(0, (size_t)pw);
                t.resize((size_t)pw, ' ');
                return t;
            }
    filler = true;
    const xfviewfile &pf = xv->perfile[(size_t)xfidx];
    if (pf.number == 0)
        return std::string((size_t)pw, pf.prefix_nulls ? ' ' : '=');
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.*d", pw, pf.number == 2 ? li : li + 1);
    std::string t = buf;
    if (li < 0)
        t = std::string((size_t)pw, '0');
    return t;
}

bool has_error(int32_t li)
{
    for (auto &p : xf->pfxerrs)
        if (p.second == li)
            return true;
    return false;
}

// The prefix field of a row that stands for line li.
void add_prefix(page_builder &pb, xview::rowmap &m, int row, int x, int pw, int32_t li, bool input)
{
    bool filler;
    std::string pt = prefix_text(li, pw, filler);
    int item = filler ? C_PREFIX : C_PENDING;
    m.pfx = pb.add(row, x, pw, input ? TYPE_INPUT : TYPE_PROTECTED, item, 0, pt);
    m.pli = li;
    m.pshown = filler ? pt : std::string();
    if (has_error(li))
        pb.set_hilite(m.pfx, 2); // shown back reversed: it was not understood
}

// What a file row shows of a line: `width` columns from column col0. Only
// those bytes are taken, however long the line.
std::string line_text(int32_t li, int32_t col0, int width)
{
    const xfline &l = xf->lines[li];
    int32_t a = xfcol_off(l.text, l.len, col0, xf->utf8);
    if (a >= l.len)
        return std::string();
    int32_t b = a + xfcol_off(l.text + a, l.len - a, width, xf->utf8);
    return std::string(l.text + a, (size_t)(std::min<int32_t>(b, l.len) - a));
}

void compose_view(page_builder &pb)
{
    int y0 = xv->y0, x0 = xv->x0, w = xv->ncols, h = xv->nrows;
    bool cmd_on = xv->cmdline_pos > 0 || !xf;
    bool cmd_top = std::abs(xv->cmdline_pos) == 1;
    int row_cmd = 0, row_msg, first, last;
    if (cmd_on && cmd_top) {
        row_cmd = y0 + 1;
        row_msg = y0 + 2;
        first = y0 + 3;
        last = y0 + h - 1;
    } else {
        row_msg = y0 + 1;
        first = y0 + 2;
        last = y0 + h - 1;
        if (cmd_on) {
            row_cmd = y0 + h - 1;
            last--;
        }
    }

    // Id line: name, "mod:", size, "Len:".
    int32_t n = nbli();
    int sizew = n <= 99998 ? 6 : n <= 999998 ? 7 : 9;
    int tail = 6 + 5 + 1 + sizew + 7 + 6;
    int namew = std::max(1, w - tail);
    if (xf) {
        int x = x0;
        pb.add(y0, x, namew, TYPE_PROTECTED, C_ID, 0, fit(shown_name(xf->fname), (size_t)namew));
        x += namew;
        pb.add(y0, x, 6, TYPE_PROTECTED, C_ID, 0, " mod: ");
        x += 6;
        pb.add(y0, x, 5, TYPE_PROTECTED, C_MOD, 0, std::to_string(xf->chgcount));
        x += 6;
        char sz[16];
        std::snprintf(sz, sizeof sz, "%*d", sizew, n);
        pb.add(y0, x, sizew, TYPE_PROTECTED, C_SIZE, 0, sz);
        x += sizew;
        pb.add(y0, x, 7, TYPE_PROTECTED, C_ID, 0, "  Len: ");
        x += 7;
        int32_t cur = curline();
        int32_t len = cur >= 0 && cur < n ? xfcol_len(xf->lines[cur].text, xf->lines[cur].len, xf->utf8) : 0;
        pb.add(y0, x, x0 + w - x, TYPE_PROTECTED, C_SIZE, 0, std::to_string(len));
    } else {
        pb.add(y0, x0, w, TYPE_PROTECTED, C_ID, 0, "");
    }

    // Message line: the newest message since the last draw. A draw the user
    // did not cause (a child's output arriving) leaves it standing.
    std::string msg;
    if (xv->msgshown < xv->msgs.size())
        msg = xv->msgs.back();
    else if (xv->msgkeep)
        msg = xv->msgline;
    xv->msgshown = xv->msgs.size();
    xv->msgkeep = false;
    xv->msgline = msg;
    xv->msgfield = pb.add(row_msg, x0, w, TYPE_PROTECTED, C_MSG, 0, msg);

    xv->cmdfield = 0;
    if (row_cmd) {
        pb.add(row_cmd, x0, 6, TYPE_PROTECTED, C_ARROW, 0, "====> ");
        xv->cmdfield = pb.add(row_cmd, x0 + 6, w - 6, TYPE_INPUT, C_CMD,
                              locale_utf8() ? FSF_UTF8 : 0, xv->cmdline);
    }

    xv->rows.clear();
    if (!xf)
        return;

    // File rows.
    int nfile = last - first + 1;
    if (nfile <= 0)
        return;
    xfviewfile &pf = xv->perfile[(size_t)xfidx];
    int pw = pf.prefix ? xfprefix_width(curline()) : 0;
    xv->prefix_width = pw;
    bool right = pf.prefix == 2;
    int textx = x0 + (pw && !right ? pw + 1 : 0);
    int textw = w - (pw ? pw + 1 : 0);
    int pfxx = right ? x0 + w - pw : x0;
    int32_t col0 = std::max(0, pf.verify[0] - 1);
    int c = xv->curline_row > 0 ? std::min(xv->curline_row, nfile) - 1 : nfile / 2;

    // Rows that show no line: reserved rows, the scale and the tab line.
    enum { ROW_LINE, ROW_RESERVED, ROW_SCALE, ROW_TABS, ROW_KEPT };
    std::vector<int> kind((size_t)nfile, ROW_LINE);
    std::vector<std::string> reserved_text((size_t)nfile);
    for (auto &[vrow, text] : xf->reserved) {
        int r = (vrow > 0 ? y0 + vrow - 1 : y0 + h + vrow) - first;
        if (r >= 0 && r < nfile) {
            kind[(size_t)r] = ROW_RESERVED;
            reserved_text[(size_t)r] = text;
        }
    }
    if (pf.scale > 0 && pf.scale <= nfile && kind[(size_t)pf.scale - 1] == ROW_LINE)
        kind[(size_t)pf.scale - 1] = ROW_SCALE;
    if (pf.tabline > 0 && pf.tabline <= nfile && kind[(size_t)pf.tabline - 1] == ROW_LINE)
        kind[(size_t)pf.tabline - 1] = ROW_TABS;
    // Lines held on their rows by the prefix E, where nothing else stands.
    std::vector<int32_t> kept_li((size_t)nfile, -4);
    for (const xfkept &k : pf.kept)
        if (k.row >= 0 && k.row < nfile && k.row != c && kind[(size_t)k.row] == ROW_LINE && k.li >= 0 &&
            k.li < n && k.li != curline() && xfinscope(k.li)) {
            kind[(size_t)k.row] = ROW_KEPT;
            kept_li[(size_t)k.row] = k.li;
        }
    std::vector<int> line_rows;
    int cidx = -1;
    for (int r = 0; r < nfile; r++)
        if (kind[(size_t)r] == ROW_LINE) {
            if (cidx < 0 && r >= c)
                cidx = (int)line_rows.size();
            line_rows.push_back(r);
        }
    if (cidx < 0)
        cidx = line_rows.empty() ? 0 : (int)line_rows.size() - 1;
    std::vector<row_plan> plan_lines = line_rows.empty()
                                           ? std::vector<row_plan>()
                                           : plan_rows((int)line_rows.size(), cidx, kept_li);
    std::vector<row_plan> plan((size_t)nfile, {-4, 0, 0});
    for (size_t i = 0; i < line_rows.size(); i++)
        plan[(size_t)line_rows[i]] = plan_lines[i];
    for (int r = 0; r < nfile; r++)
        if (kind[(size_t)r] == ROW_KEPT)
            plan[(size_t)r] = {kept_li[(size_t)r], 0, 0};

    for (int r = 0; r < nfile; r++) {
        int row = first + r;
        const row_plan &p = plan[(size_t)r];
        xview::rowmap m{0, p.li, 0, col0, textw};
        if (kind[(size_t)r] != ROW_LINE && kind[(size_t)r] != ROW_KEPT) {
            std::string t;
            if (kind[(size_t)r] == ROW_RESERVED)
                t = reserved_text[(size_t)r];
            else if (kind[(size_t)r] == ROW_SCALE)
                t = xfscale_text(col0, textw);
            else
                t = xftab_text(xf->tabset, col0, textw);
            int item = kind[(size_t)r] == ROW_SCALE ? C_SCALE : kind[(size_t)r] == ROW_TABS ? C_TABS : C_FILE;
            int x = kind[(size_t)r] == ROW_RESERVED ? x0 : textx;
            int wd = kind[(size_t)r] == ROW_RESERVED ? w : textw;
            m.li = -4;
            m.fld = pb.add(row, x, wd, TYPE_PROTECTED, item, 0, t);
            xv->rows.push_back(m);
            continue;
        }
        if (p.li == -4) {
            xv->rows.push_back(m);
            continue;
        }
        if (p.li == -3) {
            // The prefix area of a shadow row stands for the run's first line.
            if (pw)
                add_prefix(pb, m, row, pfxx, pw, p.first, true);
            m.fld = pb.add(row, textx, textw, TYPE_PROTECTED, C_SHADOW, 0, xfshadow_row(p.hidden, textw));
            xv->rows.push_back(m);
            continue;
        }
        bool end = p.li == -1 || p.li >= n;
        if (pw && p.li >= n)
            m.pfx = pb.add(row, pfxx, pw, TYPE_PROTECTED, C_PREFIX, 0,
                           std::string((size_t)pw, pf.prefix_nulls ? ' ' : '='));
        else if (pw)
            add_prefix(pb, m, row, pfxx, pw, p.li, true);
        if (end) {
            const char *t = p.li == -1 ? "* * * Top of File * * *" : "* * * End of File * * *";
            m.fld = pb.add(row, textx, textw, TYPE_PROTECTED, p.li == curline() ? C_CURL : C_FILE,
                           0, t);
        } else {
            int item = p.li == curline() ? C_CURL : C_FILE;
            for (auto &pt : xf->points)
                if (pt.li == p.li && item == C_FILE)
                    item = C_POINT;
            m.fld = pb.add(row, textx, textw, TYPE_INPUT, item,
                           FSF_REPEND | (xf->utf8 ? FSF_UTF8 : 0), line_text(p.li, col0, textw),
                           xf->utf8 != 0);
            // The syntax colours of the line's characters; the rest keeps the row's.
            std::vector<int8_t> cols;
            if (m.fld && xfsyn_colours(p.li, col0, textw, cols)) {
                pb.colours.emplace_back(m.fld, std::move(cols));
                // Typing on the row keeps its colours true before ENTER.
                fsxfield x{};
                x.on_change = xfsyn_typed;
                x.change_arg = xvidx;
                x.line = (int32_t)xv->rows.size();
                x.limit = -1;
                pb.exts.emplace_back(m.fld, x);
            }
            // The selected cells are drawn reversed.
            if (m.fld && xfsel.fileid == xf->fileid && p.li + 1 >= xfsel.l1 && p.li + 1 <= xfsel.l2) {
                std::vector<int32_t> hl((size_t)textw, -1);
                bool any = false;
                // A stream holds the text only; a rectangle shows its columns
                // past short lines too, for they are part of what it takes.
                const xfline &sl = xf->lines[p.li];
                int32_t upto = xfsel.kind == 3 ? col0 + textw : xfcol_len(sl.text, sl.len, xf->utf8);
                for (int32_t k = 0; k < textw && col0 + k < upto; k++)
                    if (xfsel_has(p.li, col0 + k)) {
                        hl[(size_t)k] = 2;
                        any = true;
                    }
                if (any)
                    pb.hilites.emplace_back(m.fld, std::move(hl));
            }
        }
        xv->rows.push_back(m);
    }
}

void place_cursor()
{
    if (!xf) {
        if (xv->cmdfield)
            asfcur_quiet(xv->cmdfield, 1, xv->cmdcursor + 1);
        return;
    }
    settle_cursor();
    xfcursor &pc = xf->ptcur_i;
    if (pc.fld == 0 || pc.fld == -1) {
        for (auto &m : xv->rows) {
            if (pc.fld == -1 && m.pfx && m.pli == pc.li) {
                asfcur_quiet(m.pfx, 1, 1);
                return;
            }
            if (m.li == pc.li && m.fld && pc.fld == 0) {
                int col = pc.col - m.col0 + 1;
                if (col >= 1 && col <= m.len) {
                    asfcur_quiet(m.fld, 1, col);
                    return;
                }
            }
        }
    }
    if (xv->cmdfield)
        asfcur_quiet(xv->cmdfield, 1, std::min(xv->cmdcursor + 1, xv->ncols - 6));
}

} // namespace

int xfprefix_width(int32_t cur)
{
    long line = (long)cur + 1;
    if (line >= 99999940L)
        return 9;
    if (line >= 9999940L)
        return 8;
    if (line >= 999940L)
        return 7;
    if (line >= 99940L)
        return 6;
    return 5;
}

std::string xfshadow_row(int32_t count, int width)
{
    char text[48];
    if (count == 1)
        std::snprintf(text, sizeof text, "1 line  not displayed ");
    else
        std::snprintf(text, sizeof text, "%d lines not displayed ", count);
    int len = (int)std::strlen(text);
    bool centre = count == 1 ? width > 22 : len < width;
    if (!centre)
        return text;
    int left = (width - 22) / 2;
    std::string row((size_t)std::max(0, left - 1), '-');
    row += ' ';
    row += text;
    row.append((size_t)std::max(0, width - (left + len)), '-');
    return row;
}

// The scale row: a ruler of the columns the view shows, from col0.
std::string xfscale_text(int32_t col0, int width)
{
    std::string t;
    for (int32_t c = col0 + 1; (int)t.size() < width; c++) {
        if (c % 10 == 0) {
            std::string d = std::to_string(c / 10 % 10);
            t += d;
        } else {
            t += c % 5 == 0 ? '+' : '.';
        }
    }
    return t;
}

// The tab line: a T under each tab column.
std::string xftab_text(const std::vector<int32_t> &tabs, int32_t col0, int width)
{
    std::string t((size_t)width, ' ');
    for (int32_t c : tabs)
        if (c - 1 - col0 >= 0 && c - 1 - col0 < width)
            t[(size_t)(c - 1 - col0)] = 'T';
    return t;
}

std::string xftitle()
{
    std::string prefix = "VORTA @ " + host_name();
    char buf[2048];
    if (!xf) {
        std::snprintf(buf, sizeof buf, "%s - (NONE), dir:%s", prefix.c_str(), startdir.c_str());
        return buf;
    }
    std::string name = xf->fname.substr(xf->fname.rfind('/') + 1);
    const char *mark = xf->eol_kind == eol_default ? "" : xf->eol_kind == 1 ? "[U]" : "[W]";
    bool edited = false;
    for (xfile *f : files)
        edited = edited || f->chgcount != 0;
    std::snprintf(buf, sizeof buf, edited ? "%s %s(edited) - %s, dir:%s" : "%s %s - %s, dir:%s",
                  name.c_str(), mark, prefix.c_str(), startdir.c_str());
    return buf;
}

// Divides the grid among the views as SCReen last said.
bool xfgeom(bool first)
{
    fs_grid(&page_rows, &page_cols);
    pageok = page_rows >= 6 && page_cols >= 38;
    if (first) {
        nbpf = 1;
        screen_def = xfscreendef{};
    }
    return xfscreen_apply(screen_def, false) == 0;
}

void xfdisplay()
{
    if (batch || !fs_layer())
        return;
    int save = xvidx;
    asfclr();
    page_builder pb;
    if (!pageok) {
        pb.add(1, 1, std::min(page_cols, 40), TYPE_PROTECTED, C_MSG, 0, "..... Increase window size");
        pb.apply();
        return;
    }
    int pfrow = page_rows - nbpf + 1;
    if (nbpf > 0)
        pb.add(pfrow, 1, page_cols, TYPE_PROTECTED, C_PF, 0, pf_legend.substr(0, (size_t)page_cols));
    for (int v = 0; v < (int)views.size(); v++) {
        xfsetview(v);
        compose_view(pb);
    }
    pb.apply();
    xfsetview(save);
    place_cursor();
    if (fs_plat *p = fs_layer())
        p->title(xftitle());
}
