// A level of the list: its start from the arguments of FLIST, and its loop
// around the read, which ends with END, FLQuit or a cancel.
#include "flist/flist.h"

#include "commands/commands.h"
#include "fields/fields.h"
#include "session/xed.h"
#include "session/xfpage.h"

#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>

bool fl_end_level = false;
bool fl_switch_back = false;
int fl_running = 0;
bool fl_cancelled = false;
unsigned fl_generation = 0;

namespace {

bool grid_changed = false; // the editor's page must be laid out again

bool is_dir(const std::string &p)
{
    struct stat sb;
    return stat(p.c_str(), &sb) == 0 && S_ISDIR(sb.st_mode);
}

std::string joined(const std::string &dir, const std::string &name)
{
    return name.empty() || name[0] == '/' ? name : dir + "/" + name;
}

// The level's directory and patterns from "name ext mode"; 0 or a code of
// fl_dir_enter with the message in `msg`.
int setup(fl_level &lv, std::string_view args, const std::string &dir, std::string &msg)
{
    std::vector<std::string> w = fl_words(args);
    if (w.size() > 3 || std::any_of(w.begin(), w.end(), [](const std::string &s) { return s.size() > 100; })) {
        msg = ".... Invalid parameters for FLIST";
        return 1;
    }
    std::string where = dir;
    fl_dirs_make(); // a mode of two letters may name the first entry
    if (w.size() == 1) {
        // One word that names a directory lists it; a path with a pattern
        // at its end lists that directory by the pattern, split at its
        // dot into name and extension.
        if (is_dir(joined(dir, w[0]))) {
            where = joined(dir, w[0]);
            w.clear();
        } else {
            size_t slash = w[0].rfind('/');
            if (slash != std::string::npos) {
                where = joined(dir, slash ? w[0].substr(0, slash) : "/");
                w[0] = w[0].substr(slash + 1);
            }
            size_t dot = w[0].rfind('.');
            if (dot != std::string::npos && dot > 0 && w[0].find_first_of("*?") != std::string::npos)
                w = {w[0].substr(0, dot), w[0].substr(dot + 1)};
        }
    }
    lv.npat = w.size() > 0 ? w[0] : "*";
    lv.epat = w.size() > 1 ? w[1] : "*";
    int code = 0;
    if (w.size() > 2 && w[2] == "*") {
        lv.dirindex = -1;
    } else if (w.size() > 2 && fl_mode_index(w[2]) >= 0 && !is_dir(joined(dir, w[2]))) {
        lv.dirindex = fl_mode_index(w[2]);
        if (size_t(lv.dirindex) >= fl_dirs.size())
            code = 4;
    } else {
        code = fl_dir_enter(w.size() > 2 ? joined(dir, w[2]) : where, lv.dirindex);
    }
    if (code == 0)
        lv.dir = lv.dirindex >= 0 ? fl_dirs[size_t(lv.dirindex)] : std::string();
    msg = fl_dir_message(code);
    return code;
}

// The row of the screen a field belongs to, or -1.
int row_of_field(int id)
{
    int r = id % 100;
    return id >= 100 && id < 600 && id / 100 != 4 && r < int(fl_lay.rows.size()) ? r : -1;
}

int cursor_row()
{
    int id = 0, line = 0, col = 0;
    asqcur(1, &id, &line, &col);
    return row_of_field(id);
}

// The entry of the line the cursor is on, -1 off the list.
int cursor_entry()
{
    int row = cursor_row();
    return row >= 0 ? fl_lay.rows[size_t(row)].entry : -1;
}

// The function keys of the list, by number.
enum { K_NONE, K_SORTNAME, K_FILE, K_END, K_XED, K_SWITCH, K_SORTSIZE, K_UP, K_DOWN, K_SORTDATE,
       K_SORTTYPE, K_NEXT, K_CANCEL };

void act_key(fl_level &lv, int key)
{
    int row = cursor_row();
    int entry = cursor_entry();
    int rows = std::max(1, fl_list_rows(fl_lay.lines));
    switch (key) {
    case K_SORTNAME: fl_resort(lv, FL_BYNAME); break;
    case K_SORTSIZE: fl_resort(lv, FL_BYSIZE); break;
    case K_SORTDATE: fl_resort(lv, FL_BYTIME); break;
    case K_SORTTYPE: fl_resort(lv, FL_BYTYPE); break;
    case K_UP: fl_fetch(lv); fl_scroll(lv, lv.top - rows); break;
    case K_DOWN: fl_fetch(lv); fl_scroll(lv, lv.top + rows); break;
    case K_END: fl_end_level = true; break;
    case K_CANCEL: fl_end_level = fl_cancelled = true; break;
    case K_FILE: fl_fetch(lv); xfcom2("flfile"); break;
    case K_XED:
        if (entry < 0) {
            lv.msg = ".... Invalid cursor position";
            break;
        }
        fl_fetch(lv);
        fl_line_command(size_t(entry), "xed");
        break;
    case K_SWITCH:
        fl_fetch(lv);
        if (nbfiles() == 0)
            lv.msg = ".... No file in the ring";
        else
            fl_edit("");
        break;
    case K_NEXT: // to the command field of the next line
        if (!fl_lay.rows.empty())
            asfcur(200 + (row + 1) % int(fl_lay.rows.size()), 1, 1);
        return;
    default: return;
    }
    lv.rebuild = true;
}

void place_cursor(int row)
{
    if (fl_lay.rows.empty())
        return;
    row = std::max(0, std::min(row, int(fl_lay.rows.size()) - 1));
    asfcur_quiet(200 + row, 1, 1);
}

// One level's loop, until it ends.
int run_level(size_t depth)
{
    int row = 0;
    for (;;) {
        if (fl_levels.size() < depth)
            return 0;
        fl_level &lv = fl_levels[depth - 1];
        if (fl_end_level) {
            fl_end_level = false;
            return 0;
        }
        // A directory changed behind the list is read again.
        if (lv.dirindex >= 0 && !lv.recursive && fl_dirtime(lv.dir) != lv.dirtime) {
            fl_fetch(lv);
            if (fl_scan(lv) == 29 && lv.list.count() == 0)
                lv.msg = ".... Can't open directory " + fl_mode_letters(lv.dirindex);
        }
        if (lv.rebuild || fs_curpage() != FL_PAGE) {
            fl_page(lv);
            place_cursor(row);
        } else {
            fl_show_msg(lv);
        }
        int code = 0, value = 0, mod = 0;
        // The right button is the list's own, for its sort menu: the
        // editor's pop-up does not open over the list.
        // Clicks never move the cursor here: the list takes every press
        // itself, whatever the mouse mode of the editor's page says.
        fs_menuhook menus = as_menuhook;
        as_menuhook = nullptr;
        asfclickpos(0);
        asread(&code, &value, &mod);
        asfclickpos(1);
        as_menuhook = menus;
        int r = cursor_row();
        if (r >= 0)
            row = r;
        const int nf = as_nbkeys[1] > 0 ? as_nbkeys[1] : 12;
        switch (code) {
        case 23: case 672: // the window has gone
            xfexit(0);
            break;
        case 25:
            fl_fetch(lv);
            fsresize();
            grid_changed = true;
            lv.rebuild = true;
            break;
        case 0: // Enter: every line with a new command runs
            fl_fetch(lv);
            lv.msg.clear();
            lv.notes.clear();
            fl_run_lines();
            if (fl_levels.size() >= depth)
                fl_levels[depth - 1].rebuild = true;
            break;
        case 1:
            // Shifted keys count past the plain ones; the list knows twelve.
            act_key(lv, (value - 1) % nf + 1 <= 12 ? (value - 1) % nf + 1 : K_NONE);
            break;
        case 22: // Ctrl with a letter: C cancels, S asks for an order
            if (value == 'c' || value == 'C' || value == 3)
                fl_end_level = fl_cancelled = true;
            else if (value == 's' || value == 'S' || value == 19)
                lv.rebuild = fl_sort_menu(lv) || lv.rebuild;
            break;
        case 20: // a press no field took: the right button asks for an order
            if (value == 3)
                lv.rebuild = fl_sort_menu(lv) || lv.rebuild;
            break;
        case 38: { // a click on a name opens its entry
            int id = 0, l = 0, c = 0;
            asqmou(1, &id, &l, &c);
            int rr = row_of_field(id);
            if (rr < 0) {
                lv.msg = ".... Invalid mouse position";
                break;
            }
            fl_fetch(lv);
            fl_open_entry(size_t(fl_lay.rows[size_t(rr)].entry));
            if (fl_levels.size() >= depth)
                fl_levels[depth - 1].rebuild = true;
            break;
        }
        case 31: case 63: // a choice in the window's menus
            if (const char *text = fs_menucmd(value))
                fl_menu_run(lv, text, cursor_entry());
            break;
        case 64:
            fl_tool_run(lv, value, cursor_entry());
            break;
        case FSK_WHEELUP: case FSK_WHEELDOWN:
            fl_fetch(lv);
            fl_scroll(lv, lv.top + (code == FSK_WHEELUP ? -3 : 3));
            break;
        default:
            break;
        }
    }
}

// Back to the editor's page, laid out again if the grid changed meanwhile.
void to_editor()
{
    if (fs_layer() && fs_curpage() == FL_PAGE)
        fspsel(0);
    if (grid_changed) {
        grid_changed = false;
        xfgeom(false);
    }
}

struct editor_state {
    std::string name;  // the file edited from the list, "" for any
};
editor_state editing;

bool edit_done()
{
    if (fl_switch_back || nbfiles() == 0)
        return true;
    if (editing.name.empty())
        return false;
    for (int i = 0; i < nbfiles(); i++)
        if (files[size_t(i)]->fname == editing.name)
            return false;
    return true;
}

} // namespace

int fl_edit(const std::string &cmd)
{
    to_editor();
    if (!cmd.empty()) {
        cmd_rc = 0;
        xfcom2(cmd);
        if (nbfiles() == 0 || cmd_rc != 0)
            return 1;
    }
    // The editor has the page until the file leaves the ring or SWITCH
    // gives the page back; quitting the last file returns here, not out.
    editor_state saved = editing;
    editing.name = cmd.empty() || !xf ? std::string() : xf->fname;
    bool exit_was = autoexit;
    autoexit = false;
    fl_switch_back = false;
    xfx_until(edit_done);
    fl_switch_back = false;
    autoexit = exit_was;
    editing = saved;
    return 0;
}

int flcom(std::string_view args, const std::string &dir, int filter, bool recursive)
{
    if (!fs_layer() || fs_curpage() == FS_NOPAGE) {
        xfmsgs(".... FLIST needs a screen", 1);
        cmd_rc = 1;
        return 1;
    }
    fl_levels.emplace_back();
    fl_generation++;
    fl_level &lv = fl_levels.back();
    lv.filter = filter;
    lv.recursive = recursive;
    std::string msg;
    int code = setup(lv, args, dir, msg);
    if (code == 0) {
        code = fl_scan(lv);
        if (code != 0 && lv.list.count() == 0)
            msg = lv.msg;
        else
            code = 0;
    }
    if (code != 0) {
        fl_levels.pop_back();
        // A list that never started says why where the user asked for it.
        if (!fl_levels.empty())
            fl_levels.back().msg = msg;
        else
            xfmsgs(msg, 1);
        cmd_rc = 1;
        return 1;
    }
    size_t depth = fl_levels.size();
    fl_running++;
    run_level(depth);
    fl_running--;
    while (fl_levels.size() >= depth)
        fl_levels.pop_back();
    if (fl_levels.empty()) {
        fl_cancelled = false;
        to_editor();
        fspdel(FL_PAGE);
    } else {
        fl_levels.back().rebuild = true;
    }
    cmd_rc = 0;
    return 0;
}
