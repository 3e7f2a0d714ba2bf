// Macros and the commands that steer the dispatcher: the macro index built by
// HAsh, the macro search with its recursion guard, command files (.x) with
// their argument frames, MACRO, COMmand/BUILTIN, IMPcmscp and SYNonym.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "commands/xfsettings.h"
#include "session/xed.h"

#include <algorithm>
#include <cstdio>
#include <dirent.h>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

std::vector<xfmacro> rexx_macros, cmd_files, flist_macros;
std::vector<std::string> macro_path;
std::vector<std::vector<std::string>> arg_frames;
std::vector<xfsynonym> synonyms;
int (*xfrexx_hook)(const std::string &path, std::string_view rest) = nullptr;

namespace {

std::vector<std::string> macro_stack; // names of the command files running

struct ext_class {
    const char *ext; // extension, case as written
    int cls;         // class number
};
constexpr ext_class classes[] = {
    {"c", 2},  {"f", 3},      {"x", 4},      {"F", 5},    {"p", 6},     {"y", 7},
    {"l", 8},  {"vorta", 10}, {"flist", 16}, {"ex", 9},   {"check", 11}, {"hlp", 12},
    {"task", 13}, {"ux", 14}, {"rexx", 15},
};

void add_to(std::vector<xfmacro> &list, const std::string &name, const std::string &path, int cls)
{
    for (auto &m : list)
        if (m.name == name) {
            m.path = path;
            m.cls = cls;
            m.loaded = false;
            m.lines.clear();
            return;
        }
    list.push_back({name, path, cls, false, {}});
}

std::string base_without_ext(const std::string &path)
{
    size_t s = path.rfind('/');
    std::string b = s == std::string::npos ? path : path.substr(s + 1);
    size_t d = b.rfind('.');
    return d == std::string::npos ? b : b.substr(0, d);
}

// Whether a file of that class is a macro; `direct` allows the class only
// named files take.
bool is_macro_class(int cls, bool direct)
{
    return cls == 4 || cls == 9 || cls == 10 || (cls == 14 && direct) || cls == 16;
}

// Enter one file by its class.
void register_file(const std::string &path, bool direct)
{
    int cls = xfext_class(path);
    if (!is_macro_class(cls, direct))
        return;
    std::string name = base_without_ext(path);
    if (cls == 4)
        add_to(cmd_files, name, path, cls);
    else if (cls == 16)
        add_to(flist_macros, name, path, cls);
    else
        add_to(rexx_macros, name, path, cls);
}

bool scan_dir(const std::string &dir)
{
    DIR *d = opendir(dir.c_str());
    if (!d)
        return false;
    // Only macros are kept and put in order (a later name of the same stem
    // wins): the folder may be the user's working folder of a hundred
    // thousand files, read at every start.
    std::vector<std::string> names;
    while (dirent *e = readdir(d))
        if (is_macro_class(xfext_class(e->d_name), false))
            names.emplace_back(e->d_name);
    closedir(d);
    std::sort(names.begin(), names.end());
    std::string base = dir.empty() || dir.back() == '/' ? dir : dir + "/";
    for (auto &n : names)
        register_file(base + n, false);
    return true;
}

bool read_lines(xfmacro &m)
{
    std::ifstream in(m.path, std::ios::binary);
    if (!in) {
        xfmsg(0, 1);
        cmd_rc = 1;
        return false;
    }
    std::string l;
    m.lines.clear();
    while (std::getline(in, l)) {
        if (!l.empty() && l.back() == '\r')
            l.pop_back();
        m.lines.push_back(l);
    }
    m.loaded = true;
    return true;
}

// Words of a macro's command line: the name, each word, and last the text
// from the second word on.
std::vector<std::string> frame_of(std::string_view line)
{
    std::vector<std::string> f;
    std::string_view rest = line;
    while (true) {
        std::string_view w = xfword(rest);
        if (w.empty())
            break;
        f.emplace_back(w);
    }
    std::string_view tail = line;
    xfword(tail);
    f.emplace_back(xftrim(tail));
    return f;
}

int run_command_file(xfmacro &m, std::string_view line)
{
    arg_frames.push_back(frame_of(line));
    if (!m.loaded && !read_lines(m)) {
        arg_frames.pop_back();
        macro_stack.pop_back();
        return 1;
    }
    std::vector<std::string> lines = m.lines;
    cmd_rc = 0;
    for (auto &l : lines) {
        xfcmdline(l);
        if (cmd_rc != 0)
            break;
    }
    arg_frames.pop_back();
    macro_stack.pop_back();
    return 1;
}

} // namespace

int xfext_class(std::string_view name)
{
    size_t s = name.rfind('/');
    std::string_view b = s == std::string_view::npos ? name : name.substr(s + 1);
    size_t d = b.rfind('.');
    if (d == std::string_view::npos)
        return 0;
    if (d + 1 == b.size())
        return 1;
    std::string_view ext = b.substr(d + 1);
    for (auto &c : classes)
        if (ext == c.ext)
            return c.cls;
    return -1;
}

void xfmacro_stack_remove(size_t index)
{
    if (index < macro_stack.size())
        macro_stack.erase(macro_stack.begin() + (long)index);
}

int xfmacro_search(std::string_view line)
{
    std::string_view rest = line;
    while (!rest.empty() && rest.front() == ' ')
        rest.remove_prefix(1);
    std::string name(rest.substr(0, rest.find(' ')));
    if (name.empty())
        return 0;
    if (std::find(macro_stack.begin(), macro_stack.end(), name) != macro_stack.end()) {
        xfmsgs("..... Recursive call for \"" + name + "\" macro", 1);
        xfqueue_clear();
        cmd_rc = 1;
        return 1;
    }
    macro_stack.push_back(name);
    for (auto &m : rexx_macros) {
        if (m.name != name)
            continue;
        macro_stack.pop_back();
        if (m.cls != 10)
            return 1; // found and handled: only .vorta macros run
        macro_depth++;
        std::string_view tail = rest.substr(std::min(rest.size(), name.size()));
        if (xfrexx_hook) {
            int r = xfrexx_hook(m.path, tail);
            cmd_rc = r != 0 ? 1 : 0;
        } else {
            xfmsg(173, 1);
            cmd_rc = 1;
        }
        macro_depth--;
        return 1;
    }
    for (auto &m : cmd_files)
        if (m.name == name)
            return run_command_file(m, rest);
    macro_stack.pop_back();
    return 0;
}

void xfhash_path()
{
    rexx_macros.clear();
    cmd_files.clear();
    flist_macros.clear();
    for (auto &d : macro_path)
        scan_dir(d);
}

int xfcm_hash(const xfcmd &c)
{
    xftrace("Commande xfcm_hash");
    std::string_view rest = c.ops();
    if (rest.empty()) {
        xfhash_path();
        return 1;
    }
    for (std::string_view w = xfword(rest); !w.empty(); w = xfword(rest)) {
        std::string p(w);
        struct stat st;
        if (stat(p.c_str(), &st) != 0) {
            xfmsg(8, 1);
            cmd_rc = 1;
            continue;
        }
        if (S_ISDIR(st.st_mode)) {
            if (!scan_dir(p)) {
                xfmsgs(".... Can't open directory " + p, 2);
                usleep(500000);
                cmd_rc = 1;
            }
        } else {
            register_file(p, true);
        }
    }
    return 1;
}

int xfcm_macro(const xfcmd &c)
{
    xftrace("Commande xfcm_macro");
    std::string_view rest = c.ops();
    if (rest.empty()) {
        xfmsg(16, 1);
        cmd_rc = 1;
        return 1;
    }
    may_builtin = 0;
    xfcom2(rest, c.ctx1, c.ctx2);
    return 1;
}

int xfcm_set_mac(const xfcmd &c)
{
    xftrace("Commande xfcm_set_mac");
    return xfonoff(c, macro_first);
}

int xfcm_command(const xfcmd &c)
{
    xftrace("Commande xfcm_command");
    std::string_view rest = c.ops();
    if (rest.empty())
        return 1;
    may_macro = 0;
    xfcom2(rest, c.ctx1, c.ctx2);
    keep_rc_quiet = inner_quiet;
    return 1;
}

int xfcm_impcmscp(const xfcmd &c)
{
    xftrace("Commande xfcm_impcmscp");
    std::string_view rest = c.ops();
    std::string w = xffold(xftrim(rest));
    if (w.empty())
        xfmsg(impcmscp == 0 ? 10 : impcmscp == 1 ? 9 : 162, 0);
    else if (w == "on")
        impcmscp = 1;
    else if (w == "off")
        impcmscp = 0;
    else if (w == "xon")
        impcmscp = 2;
    else {
        xfmsg(16, 1);
        cmd_rc = 1;
    }
    return 1;
}

bool synonym_expand(std::string_view line, std::vector<std::string> &cmds)
{
    for (const xfsynonym &s : synonyms) {
        if (!synonym_match(line, s.name, s.minlen))
            continue;
        cmds = s.expansions;
        if (cmds.empty())
            cmds.emplace_back();
        size_t matched = 0;
        while (matched < line.size() && matched < s.name.size() && line[matched] == s.name[matched])
            matched++;
        cmds.back().append(line.substr(matched));
        return true;
    }
    return false;
}

// SYNonym [ON|OFf] | CLEAR name | [LINEND c] name [minlen] text
int xfcm_synonym(const xfcmd &c)
{
    xftrace("Commande xfcm_synonym");
    std::string_view rest = c.ops();
    std::string_view all = rest;
    std::string_view w1 = xfword(rest);
    if (w1.empty())
        return xfreport_onoff(synonym_on);
    if (int on = xfonoff_word(w1); on >= 0 && xftrim(rest).empty()) {
        synonym_on = on;
        return 1;
    }
    if (w1 == "CLEAR") {
        std::string name(xftrim(rest));
        synonyms.erase(std::remove_if(synonyms.begin(), synonyms.end(),
                                      [&](const xfsynonym &s) { return s.name == name; }),
                       synonyms.end());
        return 1;
    }
    char cut = 0;
    std::string_view name = w1;
    if (xffold(w1) == "linend") {
        std::string_view cw = xfword(rest);
        if (cw.size() != 1) {
            xfmsg(16, 1);
            cmd_rc = 1;
            return 1;
        }
        cut = cw[0];
        name = xfword(rest);
    }
    std::string_view after_name = rest;
    std::string_view w3 = xfword(rest);
    long minlen = (long)name.size();
    std::string_view text;
    if (long n; !w3.empty() && xfnumber(w3, n)) {
        minlen = n;
        text = xftrim(rest);
    } else {
        text = xftrim(after_name);
    }
    if (name.empty() || text.empty()) {
        xfmsg(16, 1);
        cmd_rc = 1;
        return 1;
    }
    (void)all;
    xfsynonym s{std::string(name), (int)minlen, {}, cut ? cut : linend_char};
    if (cut) {
        std::string_view t = text;
        while (true) {
            size_t p = t.find(cut);
            std::string_view piece = t.substr(0, p);
            while (!piece.empty() && piece.front() == ' ')
                piece.remove_prefix(1);
            s.expansions.emplace_back(piece);
            if (p == std::string_view::npos)
                break;
            t.remove_prefix(p + 1);
        }
    } else {
        s.expansions.emplace_back(text);
    }
    for (auto &old : synonyms)
        if (old.name == s.name) {
            old = s;
            return 1;
        }
    synonyms.push_back(s);
    return 1;
}

void xfsynonym_list()
{
    for (auto &s : synonyms) {
        std::string t = s.name + " " + std::to_string(s.minlen);
        for (auto &e : s.expansions)
            t += " " + e;
        xfmsgs(t, 0);
    }
}
