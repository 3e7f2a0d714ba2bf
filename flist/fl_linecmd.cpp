// The words a line may hold, tried in a fixed order before the text goes
// to the editor as a command of its own.
#include "flist/flist.h"

#include "commands/commands.h"
#include "rexx/run.h"
#include "session/xed.h"

#include <cstring>
#include <strings.h>

namespace {

// The path an entry stands for: the parent entry is its directory.
std::string path_of(const fl_level &lv, size_t i)
{
    return fl_is_parent(lv.list, i) ? fl_dirs[size_t(lv.list.dir[i])] : lv.list.name[i];
}

// The directory a new list from the entry shows: a directory entry's own,
// else the one the file is in.
std::string list_dir(const fl_level &lv, size_t i)
{
    std::string p = path_of(lv, i);
    return fl_is_dir(lv.list.st[i]) ? p : fl_dirname(p);
}

struct ctx {
    fl_level &lv;
    size_t i;
    std::string_view rest; // the text after the word
    int arg;               // the word's own value in the table
};

using fn = int (*)(ctx &);

int move_top(ctx &c) { fl_scroll(c.lv, 0); return 0; }
int move_bottom(ctx &c) { fl_scroll(c.lv, int(c.lv.list.count())); return 0; }
int refuse_e(ctx &) { fl_say("..... Use \"rm\" to delete files"); return 1; }
int erase(ctx &c) { return fl_erase(c.lv, c.i); }

constexpr int TREE = 8; // with a filter in the arg: the directories beneath too

int new_list(ctx &c)
{
    std::string args = xftrim(c.rest).empty() ? "* *" : std::string(c.rest);
    // The arguments hold the forms of the entry already replaced.
    return flcom(args, list_dir(c.lv, c.i), c.arg & ~TREE, (c.arg & TREE) != 0);
}
int copy(ctx &c) { return fl_copy(c.lv, c.i, c.rest, c.arg != 0); }
int diff(ctx &c) { return fl_diff(c.lv, c.i, c.rest); }
int open(ctx &c) { return fl_run_file(path_of(c.lv, c.i), true); }

// An editor command on the file, its quoted path after the command's word.
constexpr const char *editor_words[] = {"xed", "xbin", "xkb"};
int editor_on(ctx &c)
{
    std::string path = path_of(c.lv, c.i);
    return fl_edit(std::string(editor_words[c.arg]) + " " + fl_quote(path) + std::string(c.rest));
}

int sort_by(ctx &c)
{
    c.lv.sort = c.arg;
    fl_sort(c.lv);
    return 0;
}

int display_as(ctx &c)
{
    c.lv.display = c.arg;
    c.lv.rebuild = true;
    return 0;
}

enum : unsigned {
    ON_PARENT = 1, // only on the entry `..`
    XEDIT = 2,     // only in the XEDIT vocabulary
};

struct word {
    const char *name;
    fn run;
    int arg;
    unsigned when;
};

// In the order they are tried.
constexpr word words[] = {
    {"bottom", move_bottom, 0, ON_PARENT},
    {"top", move_top, 0, ON_PARENT},
    {"e", refuse_e, 0, XEDIT},
    {"e", erase, 0, 0},
    {"rm", erase, 0, 0},
    {"f", new_list, FL_ALL, 0},
    {"*f", new_list, FL_ALL, 0},
    {"rf", new_list, FL_ALL | TREE, 0},
    {"df", new_list, FL_DIRSONLY, 0},
    {"ff", new_list, FL_FILESONLY, 0},
    {"cp", copy, 0, 0},
    {"copy", copy, 0, 0},
    {"mv", copy, 1, 0},
    {"ren", copy, 1, 0},
    {"open", open, 0, 0},
    {"diff", diff, 0, 0},
    {"xed", editor_on, 0, 0},
    {"x", editor_on, 0, 0},
    {"xbin", editor_on, 1, 0},
    {"xkb", editor_on, 2, 0},
    {"/sn", sort_by, FL_BYNAME, 0},
    {"/st", sort_by, FL_BYTYPE, 0},
    {"/sb", sort_by, FL_BYSIZE, 0},
    {"/sd", sort_by, FL_BYTIME, 0},
    {"/snr", sort_by, FL_BYNAME | FL_REVERSED, 0},
    {"/str", sort_by, FL_BYTYPE | FL_REVERSED, 0},
    {"/sbr", sort_by, FL_BYSIZE | FL_REVERSED, 0},
    {"/sdr", sort_by, FL_BYTIME | FL_REVERSED, 0},
    {"/dm0", display_as, 0, 0},
    {"/dm1", display_as, 1, 0},
    {"/dm2", display_as, 2, 0},
};

// PATH in a file-list macro: the directory table joined by `;` in the
// order of the file modes (a, b, ... z, aa, ba, ...).
void set_path() { rx_host_set("PATH", fl_path_text()); }

// A `.flist` macro of that name, given the rest and the entry's path.
bool flist_macro(const std::string &name, std::string_view rest, const std::string &path, int &result)
{
    for (const xfmacro &m : flist_macros) {
        if (m.name != name)
            continue;
        if (!xfrexx_hook) {
            xfmsg(173, 1);
            result = 1;
            return true;
        }
        macro_depth++;
        rx_start_hook = set_path;
        int r = xfrexx_hook(m.path, std::string(rest) + " " + fl_quote(path));
        rx_start_hook = nullptr; // a macro that could not be read never took it
        macro_depth--;
        result = r != 0;
        return true;
    }
    return false;
}

// The message the editor gave last during a command, for the list's line.
struct message_watch {
    size_t before = xv ? xv->msgs.size() : 0;
    void report() const
    {
        if (xv && xv->msgs.size() > before)
            fl_say(xv->msgs.back());
    }
};

// One command of a line, its word tried as a file-list macro, then as a
// built-in word, and last given to the editor.
int one_command(size_t i, const std::string &typed)
{
    fl_level &lv = fl_levels.back();
    std::string path = path_of(lv, i);
    std::string text = fl_subst(typed, path);
    std::string_view all = xftrim(text), rest = all;
    std::string w(xfword(rest));
    int result = 0;
    message_watch watch;
    if (flist_macro(w, rest, path, result)) {
        watch.report();
        return result;
    }
    for (const word &b : words) {
        if (strcasecmp(b.name, w.c_str()) != 0)
            continue;
        if ((b.when & ON_PARENT) && !fl_is_parent(lv.list, i))
            continue;
        if ((b.when & XEDIT) && modes.command_ispf)
            continue;
        ctx c{lv, i, rest, b.arg};
        result = b.run(c);
        watch.report();
        return result;
    }
    // Any other text is an editor command on the file: a lone `/` stands
    // for its quoted path, and with none the path ends the command.
    std::string cmd, q = fl_quote(path);
    bool placed = false;
    for (size_t k = 0; k < all.size(); k++) {
        bool alone = all[k] == '/' && (k == 0 || all[k - 1] == ' ') && (k + 1 == all.size() || all[k + 1] == ' ');
        cmd += alone ? q : std::string(1, all[k]);
        placed = placed || alone;
    }
    if (!placed && text == typed)
        cmd += " " + q;
    return fl_editor_command(cmd);
}

} // namespace

int fl_editor_command(const std::string &cmd)
{
    message_watch watch;
    cmd_rc = 0;
    // A word the editor has no command or macro for is refused in a list,
    // whatever IMPcmscp says: the system would run any program the word
    // happens to name, a typing slip included, with a file as its argument.
    // SHEll or XSHell runs a system command asked for by name.
    may_system = 0;
    // Its failure shows in the list, not on the editor's command line.
    no_redisplay = 1;
    xfcom2(cmd);
    watch.report();
    return cmd_rc != 0 && cmd_rc != 2;
}

int fl_line_command(size_t i, const std::string &typed)
{
    // The user's synonyms come first, as on the command line: each command
    // the synonym stands for runs on the entry in turn, the text typed after
    // the name going to the last, and the first failure stops the rest.
    std::vector<std::string> cmds;
    if (!synonym_on || !synonym_expand(xftrim(typed), cmds))
        return one_command(i, typed);
    const unsigned gen = fl_generation;
    const size_t depth = fl_levels.size();
    for (const std::string &c : cmds) {
        if (one_command(i, c) != 0)
            return 1;
        // A level started or ended meanwhile: the entry may be gone.
        if (fl_generation != gen || fl_levels.size() != depth)
            break;
    }
    return 0;
}

int fl_open_entry(size_t i)
{
    fl_level &lv = fl_levels.back();
    if (fl_is_dir(lv.list.st[i]))
        return flcom("* *", path_of(lv, i), FL_ALL, false);
    if (fl_removed(lv.list.st[i])) {
        fl_say("..... File " + fl_shown(lv.list.name[i]) + " already erased");
        return 1;
    }
    std::string path = path_of(lv, i);
    if (fl_runnable(path)) {
        switch (fl_ask_run(path)) {
        case FL_ASK_RUN: return fl_run_file(path, false);
        case FL_ASK_EDIT: break;
        default: return 0;
        }
    }
    return fl_edit("xed " + fl_quote(path));
}
