// The list's page: one screen of the shown level laid out by the window's
// width, its fields defined from the top line only, so that a list of any
// length costs one screen of fields.
#include "flist/flist.h"

#include "fields/fields.h"
#include "fields/plat.h"
#include "session/xfpage.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>

fl_layout fl_lay;

int fl_list_rows(int lines) { return std::min(lines - 8, 99); }

void fl_scroll(fl_level &lv, int top)
{
    int n = int(lv.list.count());
    int rows = std::max(1, fl_list_rows(fl_lay.lines));
    lv.top = std::max(0, std::min(top, std::max(0, n - rows)));
    lv.rebuild = true;
}

namespace {

enum { T_INPUT = 0, T_PROTECTED = 2 };

// The list's colour items, in the order of the colour table.
enum { C_ID, C_MSG, C_NAMES, C_MODE, C_CMD, C_SIZE, C_REMOVED, C_PF, C_DIRS, C_COUNT };
const xfcolour_item &item(int which)
{
    static const char *const names[C_COUNT] = {"FL_Idline", "FL_MSgline", "FL_Names",
                                               "FL_MOde",   "FL_Cmdline", "FL_Size",
                                               "FL_Removed", "FL_Pfline", "FL_Directories"};
    static const xfcolour_item none{"", 0, 0};
    for (const xfcolour_item &c : colour_items)
        if (c.name[0] && std::strcmp(c.name, names[which]) == 0)
            return c;
    return none;
}

struct fieldrow {
    int32_t w[14];
};
fieldrow field(int id, int line, int col, int nlines, int ncols, int type, int colour_item, int flags)
{
    const xfcolour_item &c = item(colour_item);
    return {{id, line, col, nlines, ncols, type, 1, c.colour, 0, c.hilite, 0, flags, 0, 0}};
}

// The parts of a name on the screen.
struct parts {
    std::string stem, ext, size;
};

parts parts_of(const fl_list &l, size_t i)
{
    parts p;
    if (fl_is_parent(l, i)) {
        p.stem = "..";
    } else {
        std::string base = fl_basename(l.name[i]);
        std::string_view stem, ext;
        fl_split(base, stem, ext);
        p.stem = fl_shown(stem);
        p.ext = fl_shown(ext);
        if (fl_is_dir(l.st[i]))
            (p.ext.empty() ? p.stem : p.ext) += '\\';
    }
    // A directory's own size says nothing to the user, and differs from one
    // file system to another.
    p.size = fl_removed(l.st[i]) ? "xxxxxxx" : fl_is_dir(l.st[i]) ? "<DIR>" : fl_thousands(l.st[i].size);
    return p;
}

// The first `cells` cells of a shown text; `cut` tells whether it lost any.
std::string head(const std::string &s, size_t cells, bool &cut)
{
    size_t n = 0, i = 0;
    for (; i < s.size(); i++)
        if ((s[i] & 0xc0) != 0x80 && n++ == cells)
            break;
    cut = i < s.size();
    return s.substr(0, i);
}

std::string padded(const std::string &s, size_t cells)
{
    size_t have = fl_cells(s);
    return have >= cells ? s : s + std::string(cells - have, ' ');
}

void put(int id, const std::string &text)
{
    ascput_utf8(id, int(text.size()), text.c_str());
}

void put_keys(int cols)
{
    std::string keys(FL_KEYS);
    keys.resize(1000, ' ');
    keys.resize(size_t(cols));
    put(3, keys);
}

// The widths of the columns for the entries of one screen.
void measure(fl_layout &L, const std::vector<parts> &shown, int display)
{
    size_t stem = 2, ext = 2, size = 1;
    for (const parts &p : shown) {
        stem = std::max(stem, fl_cells(p.stem));
        ext = std::max(ext, fl_cells(p.ext));
        size = std::max(size, p.size.size());
    }
    L.attrw = fl_attrs ? 8 : 1;
    L.sizew = int(size);
    L.stemw = int(stem);
    L.extw = int(ext);
    L.namew = L.stemw + L.extw + 5;
    L.timew = L.sizew + 1 + 15;
    // A file's first lines say more the more of them is seen: they take
    // half of what the name leaves, the command field the other half.
    if (display != 0)
        L.timew = std::max(L.timew, (L.cols - L.attrw - L.namew) / 2);
    int room = L.cols - (L.attrw + L.namew + L.timew);
    L.cmdw = std::max(10, room);
    int excess = L.attrw + L.namew + L.cmdw + L.timew - L.cols;
    if (excess > 0) {
        // The name gives way: half from the extension, never below three
        // cells (or its own two), the rest from the stem; what the stem
        // cannot give the extension gives after all.
        int extmin = std::min(L.extw, 3);
        int fromext = std::min(excess / 2, L.extw - extmin);
        int fromstem = std::min(excess - fromext, L.stemw - 1);
        fromext = std::min(excess - fromstem, L.extw - 1);
        L.extw -= fromext;
        L.stemw -= fromstem;
    } else if (room > 10) {
        L.extw++; // a column to spare parts the extension from the command
    }
    L.namew = L.stemw + L.extw + 5;
    L.cmdw = std::max(10, L.cols - (L.attrw + L.namew + L.timew));
}

std::string name_text(const fl_layout &L, const parts &p, const fl_list &l, size_t i, bool &stemcut,
                      bool &extcut)
{
    std::string t = padded(head(p.stem, size_t(L.stemw), stemcut), size_t(L.stemw)) + " ";
    t += padded(head(p.ext, size_t(L.extw), extcut), size_t(L.extw)) + " ";
    return t + fl_mode_letters(l.dir[i]) + " ";
}

// Attribute letters of the status: directory, system, hidden, archive,
// read-only, link, each in its place or `-`.
std::string attr_text(const fl_list &l, size_t i)
{
    const fl_status &s = l.st[i];
    if (s.mode == 0)
        return "??????";
    std::string a = "------";
    std::string base = fl_basename(l.name[i]);
    if (fl_is_dir(s))
        a[0] = 'D';
    if (!S_ISDIR(s.mode) && !S_ISREG(s.mode))
        a[1] = 'S';
    if (!base.empty() && base[0] == '.' && !fl_is_parent(l, i))
        a[2] = 'H';
    if (!(s.mode & 0222))
        a[4] = 'R';
    struct stat lb;
    if (!fl_is_parent(l, i) && lstat(l.name[i].c_str(), &lb) == 0 && S_ISLNK(lb.st_mode))
        a[5] = 'L';
    return a;
}

// What the right column shows of a file's first lines: the first line in
// display mode 1, in mode 2 those that are not blank run together.
std::string first_text(fl_level &lv, size_t i, int display)
{
    const std::vector<std::string> &lines = fl_first_lines(lv.list, i);
    if (lines.empty())
        return std::string();
    if (display == 1)
        return lines.front();
    std::string all;
    for (const std::string &t : lines)
        if (t.find_first_not_of(' ') != std::string::npos)
            all += (all.empty() ? "" : " | ") + t.substr(t.find_first_not_of(' '));
    return all;
}

} // namespace

void fl_idline(fl_level &lv)
{
    int64_t total = 0;
    size_t n = lv.list.count();
    for (size_t i = 0; i < n; i++)
        if (!fl_is_dir(lv.list.st[i]) && !fl_removed(lv.list.st[i]))
            total += lv.list.st[i].size;
    std::string left = "  Level " + std::to_string(fl_levels.size()) + "   " + std::to_string(n) +
                       " Files     Size = " + fl_thousands(total);
    std::string right = std::to_string(n ? lv.top + 1 : 0) + " /" + std::to_string(n);
    size_t cols = size_t(fl_lay.cols);
    std::string t = left.size() + right.size() + 1 < cols
                        ? left + std::string(cols - left.size() - right.size(), ' ') + right
                        : left;
    put(1, t);
    if (fs_plat *p = fs_layer())
        p->title("flist  -  " + (lv.dirindex >= 0 ? fl_dirs[size_t(lv.dirindex)] : fl_dirs.front()));
}

void fl_show_msg(fl_level &lv)
{
    put(2, fl_shown(lv.msg));
    int spare = 5;
    for (int k = 0; k < spare; k++)
        put(401 + k, k < int(lv.notes.size()) ? fl_shown(lv.notes[size_t(k)]) : std::string());
}

int fl_page(fl_level &lv)
{
    if (fs_curpage() != FL_PAGE) {
        // The page may have gone with a resize: looked for without a word.
        int said = as_msgs;
        as_msgs = 0;
        fspsel(FL_PAGE);
        as_msgs = said;
        if (as_errno)
            fspcrt(FL_PAGE);
    }
    asfclr();
    fl_layout &L = fl_lay;
    L = fl_layout{};
    fs_grid(&L.lines, &L.cols);
    if (L.lines < 10 || L.cols < 50) {
        fieldrow f = field(2, 1, 1, 1, std::max(1, L.cols), T_PROTECTED, C_MSG, 0);
        asrfmt(1, 14, f.w);
        put(2, ".... Increase window size");
        return 1;
    }
    const fl_list &l = lv.list;
    int rows = fl_list_rows(L.lines);
    int n = int(l.count());
    lv.top = std::max(0, std::min(lv.top, n - 1));
    std::vector<parts> shown;
    for (int k = 0; k < rows && lv.top + k < n; k++)
        shown.push_back(parts_of(l, size_t(l.order[size_t(lv.top + k)])));
    measure(L, shown, lv.display);

    std::vector<fieldrow> defs;
    defs.push_back(field(1, 1, 1, 1, L.cols, T_PROTECTED, C_ID, 0));
    defs.back().w[10] = 1;
    defs.push_back(field(2, 2, 1, 1, L.cols, T_PROTECTED, C_MSG, 0));
    defs.back().w[10] = 1;
    int x_name = 1 + L.attrw, x_cmd = x_name + L.namew, x_size = x_cmd + L.cmdw;
    int line = 3, last = 2 + rows;
    for (size_t k = 0; k < shown.size() && line <= last; k++) {
        size_t i = size_t(l.order[size_t(lv.top) + k]);
        int r = int(L.rows.size());
        fl_row row;
        row.entry = int(i);
        row.line = line;
        bool gone = fl_removed(l.st[i]);
        int namecol = gone ? C_REMOVED : fl_is_dir(l.st[i]) ? C_DIRS : C_NAMES;
        defs.push_back(field(100 + r, line, x_name, 1, L.namew, T_PROTECTED, namecol, FSF_BUTTON | FSF_UTF8));
        if (gone)
            defs.back().w[9] = 0;
        if (L.attrw > 1)
            defs.push_back(field(500 + r, line, 2, 1, 6, T_PROTECTED, gone ? C_REMOVED : C_MODE, 0));
        // A command longer than its field takes the size column too, and a
        // second line when one is left: the entries below move down.
        size_t typed = fl_cells(l.cmd[i]);
        row.wide = typed > size_t(L.cmdw);
        if (row.wide && typed > size_t(L.cmdw + L.timew) && line < last)
            row.cmdlines = 2;
        int cw = row.wide ? L.cmdw + L.timew : L.cmdw;
        defs.push_back(field(200 + r, line, x_cmd, row.cmdlines, cw, T_INPUT, gone ? C_REMOVED : C_CMD,
                             FSF_REPEND | FSF_UTF8));
        if (!row.wide)
            defs.push_back(field(300 + r, line, x_size, 1, L.timew, T_PROTECTED, gone ? C_REMOVED : C_SIZE, 0));
        L.rows.push_back(row);
        line += row.cmdlines;
    }
    for (int k = 0; k < 5; k++)
        defs.push_back(field(401 + k, L.lines - 5 + k, 1, 1, L.cols, T_PROTECTED, C_MSG, 0));
    defs.push_back(field(3, L.lines, 1, 1, L.cols, T_PROTECTED, C_PF, 0));
    asrfmt(int(defs.size()), 14, defs[0].w);

    for (size_t r = 0; r < L.rows.size(); r++) {
        size_t i = size_t(L.rows[r].entry);
        bool stemcut = false, extcut = false;
        std::string nt = name_text(L, shown[r], l, i, stemcut, extcut);
        put(100 + int(r), nt);
        // A cut stem or extension marks its last cell.
        if (stemcut || extcut) {
            std::vector<int32_t> hl(size_t(L.namew), -1);
            if (stemcut)
                hl[size_t(L.stemw - 1)] = 2;
            if (extcut)
                hl[size_t(L.stemw + L.extw)] = 2;
            aschlt(100 + int(r), L.namew, hl.data());
        }
        if (L.attrw > 1)
            put(500 + int(r), attr_text(l, i));
        put(200 + int(r), fl_shown(l.cmd[i]));
        if (!L.rows[r].wide) {
            const parts &p = shown[r];
            std::string right = " " + std::string(size_t(L.sizew) - p.size.size(), ' ') + p.size;
            // A status that could not be had has no date to show.
            if (!fl_removed(l.st[i]) && lv.display == 0 && l.st[i].mode != 0) {
                const fl_status &s = l.st[i];
                right += " " + fl_date(s.mtime ? s.mtime : s.ctime ? s.ctime : s.atime);
            } else if (lv.display != 0) {
                right += " " + first_text(lv, i, lv.display);
            }
            bool cut = false;
            put(300 + int(r), head(right, size_t(L.timew), cut));
        }
    }
    fl_idline(lv);
    fl_show_msg(lv);
    put_keys(L.cols);
    lv.rebuild = false;
    return 0;
}

void fl_fetch(fl_level &lv)
{
    if (fs_curpage() != FL_PAGE)
        return;
    for (size_t r = 0; r < fl_lay.rows.size(); r++) {
        size_t i = size_t(fl_lay.rows[r].entry);
        if (i >= lv.list.count())
            continue;
        int len = 0;
        char *t = ascget_utf8(200 + int(r), &len, 1);
        if (!t)
            continue;
        std::string typed(t, size_t(len));
        free(t);
        // Typed further right on the line it is the same command.
        typed.erase(0, typed.find_first_not_of(' ') == std::string::npos ? typed.size() : typed.find_first_not_of(' '));
        // A field shows a name's escapes; untouched, it keeps the raw text.
        if (typed != fl_shown(lv.list.cmd[i]))
            lv.list.cmd[i] = typed;
    }
}
