// Help and manual pages: HELP shows the index or the page of a command, a
// REXX built-in or a topic, MAN shows a system manual page; each becomes a
// read-only file of the ring that can be searched and quit like any file.
// S_Help and S_MAN reach them from the selected word (xfcm_sel.cpp).
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "platform/platform.h"
#include "rexx/builtins/builtins.h"
#include "rexx/rexx.h"
#include "session/xed.h"

#include <algorithm>
#include <cerrno>
#include <cctype>
#include <cstdio>
#include <fstream>

namespace {

// The kinds of page, in the order a bare word is looked up.
struct kind_row {
    const char *kind;  // as the data file spells it
    const char *label; // shown on the page's first line
    const char *word;  // HELP <word> name: this kind only
    int missing;       // message when the file has no page of the kind
};
constexpr kind_row kinds[] = {
    {"command", "editor command", "command", 116},
    {"rexx", "REXX built-in function", "rexx", 195},
    {"task", "topic", "task", 117},
};

int fail(int msg)
{
    xfmsg(msg, 1);
    cmd_rc = 1;
    return 1;
}

bool load(std::vector<xfhelp_page> &pages)
{
    std::string path = xfhelp_file();
    if (path.empty())
        return false;
    std::ifstream in(path);
    std::string why;
    if (!in || !xfhelp_parse(in, pages, why)) {
        if (!why.empty())
            xfmsgs("..... " + path + ": " + why, 1);
        return false;
    }
    return true;
}

// Where the pages live as ring files: a name in the state folder, so that a
// user who turns RW ON can keep a page; a name no file name rule refuses.
std::string page_name(const std::string &sub, const std::string &name, const std::string &ext)
{
    std::string dir = pl_state_dir(sub);
    if (dir.empty())
        dir = startdir;
    if (dir.back() != '/')
        dir += '/';
    std::string safe;
    for (unsigned char c : name) {
        if (std::isalnum(c) || c == '_' || c == '-' || c == '.') {
            safe += (char)std::tolower(c);
        } else {
            char hex[8];
            std::snprintf(hex, sizeof hex, "x%02x", c);
            safe += hex;
        }
    }
    if (safe.empty() || safe[0] == '.')
        safe = "x" + safe;
    return dir + safe + ext;
}

const cmd_entry *command_row(std::string_view name)
{
    for (const cmd_entry &e : cmd_table)
        if (abbrev(name, e.name, (int)std::string_view(e.name).size()))
            return &e;
    for (const cmd_entry &e : notimp_table)
        if (abbrev(name, e.name, (int)std::string_view(e.name).size()))
            return &e;
    return nullptr;
}

const bu_row *rexx_row(std::string_view name)
{
    for (int i = 0; i < bu_table_rows; i++)
        if (abbrev(name, bu_table[i].name, (int)std::string_view(bu_table[i].name).size()))
            return &bu_table[i];
    return nullptr;
}

// What the running program can say about a page that the data file cannot:
// how the command is reached, and whether this build has it yet.
std::vector<std::string> facts(const xfhelp_page &p, const std::vector<xfhelp_page> &pages)
{
    std::vector<std::string> out;
    if (p.kind == "command") {
        const cmd_entry *e = command_row(p.name);
        if (e && e->fn == nullptr)
            out.push_back("Accepted as a setting and ignored while MODE NOTIMP is ON.");
        if (e && (e->flags & CMD_SET))
            out.push_back("It is a setting: SET " + p.name + " ... does the same.");
        if (e && (e->flags & CMD_QUERY))
            out.push_back("Query " + p.name + " shows its present value.");
        if (e && e->fn == xfcm_notimpl)
            out.push_back("Not built yet: it answers \"..... Not implemented\" with return code 1.");
        if (xfhelp_find(pages, "rexx", p.name))
            out.push_back("There is also a REXX built-in of this name: HELP REXX " + p.name + ".");
    } else if (p.kind == "rexx") {
        if (rexx_row(p.name) && !rx_builtin_ready(p.name))
            out.push_back("Not built yet: a call of it is an unknown routine (error 43).");
        if (xfhelp_find(pages, "command", p.name))
            out.push_back("There is also an editor command of this name: HELP COMMAND " + p.name + ".");
    }
    return out;
}

std::vector<std::string> page_lines(const xfhelp_page &p, const kind_row &k,
                                    const std::vector<xfhelp_page> &pages)
{
    std::vector<std::string> l;
    std::string head = p.name;
    if (p.kind == "command") {
        std::string ab;
        for (char c : p.name)
            if (!(c >= 'a' && c <= 'z'))
                ab += c;
            else
                break;
        if (ab.size() < p.name.size())
            head += "  (shortest form: " + ab + ")";
    }
    head += std::string(head.size() < 56 ? 56 - head.size() : 2, ' ') + k.label;
    l.push_back(head);
    l.emplace_back("");
    if (!p.syntax.empty()) {
        l.push_back("Syntax:   " + p.syntax);
        l.emplace_back("");
    }
    l.insert(l.end(), p.text.begin(), p.text.end());
    for (size_t i = 0; i < p.examples.size(); i++) {
        if (i == 0)
            l.emplace_back("");
        l.push_back((i == 0 ? "Example:  " : "          ") + p.examples[i]);
    }
    std::vector<std::string> f = facts(p, pages);
    if (!f.empty())
        l.emplace_back("");
    l.insert(l.end(), f.begin(), f.end());
    return l;
}

void index_part(std::vector<std::string> &l, const std::vector<xfhelp_page> &pages, const kind_row &k,
                const char *title)
{
    std::vector<const xfhelp_page *> of;
    for (const xfhelp_page &p : pages)
        if (p.kind == k.kind)
            of.push_back(&p);
    if (of.empty())
        return;
    std::stable_sort(of.begin(), of.end(), [](const xfhelp_page *a, const xfhelp_page *b) {
        return xffold(a->name) < xffold(b->name);
    });
    l.emplace_back("");
    l.emplace_back(title);
    l.emplace_back("");
    for (const xfhelp_page *p : of) {
        std::string row = "  " + p->name;
        row += std::string(row.size() < 26 ? 26 - row.size() : 1, ' ');
        l.push_back(row + p->syntax);
    }
}

int show_index(const std::vector<xfhelp_page> &pages)
{
    std::vector<std::string> l = {
        "HELP: the index of every page",
        "",
        "HELP name shows the page of a command (any abbreviation will do), of a",
        "REXX built-in function or of a topic; HELP REXX name and HELP TASK name",
        "ask for the built-in or the topic when a command has the same name.",
        "Commands are written with their shortest form in capitals. Search this",
        "file as any other (/word/), and QUIT it to come back.",
    };
    index_part(l, pages, kinds[2], "Topics");
    index_part(l, pages, kinds[0], "Editor commands");
    index_part(l, pages, kinds[1], "REXX built-in functions");
    xfring_text(page_name("help", "index", ".help"), l);
    cmd_rc = 0;
    return 1;
}

int show_page(const xfhelp_page &p, const kind_row &k, const std::vector<xfhelp_page> &pages)
{
    std::string ext = std::string(".") + k.kind + ".help";
    xfring_text(page_name("help", p.name, ext), page_lines(p, k, pages));
    cmd_rc = 0;
    return 1;
}

// The page a word names: a command by any of its abbreviations first, then
// a built-in, then a topic.
const xfhelp_page *lookup(const std::vector<xfhelp_page> &pages, std::string_view word, const kind_row *&k)
{
    if (const cmd_entry *e = cmd_lookup(xffold(word)))
        if (const xfhelp_page *p = xfhelp_find(pages, "command", e->name)) {
            k = &kinds[0];
            return p;
        }
    for (const kind_row &r : kinds)
        if (const xfhelp_page *p = xfhelp_find(pages, r.kind, word)) {
            k = &r;
            return p;
        }
    return nullptr;
}

bool has_kind(const std::vector<xfhelp_page> &pages, const kind_row &k)
{
    return std::any_of(pages.begin(), pages.end(), [&](const xfhelp_page &p) { return p.kind == k.kind; });
}

// The manual page's text as a terminal would show it, without the
// overstriking that marks bold and underlined letters, or colour sequences.
std::vector<std::string> plain_lines(const std::string &raw)
{
    std::vector<std::string> out(1);
    for (size_t i = 0; i < raw.size(); i++) {
        char c = raw[i];
        if (c == '\n') {
            out.emplace_back();
        } else if (c == '\b') {
            if (!out.back().empty()) {
                // Drop the whole character before the backspace (UTF-8 too).
                std::string &s = out.back();
                size_t j = s.size() - 1;
                while (j > 0 && ((unsigned char)s[j] & 0xC0) == 0x80)
                    j--;
                s.erase(j);
            }
        } else if (c == '\x1b' && i + 1 < raw.size() && raw[i + 1] == '[') {
            size_t j = i + 2;
            while (j < raw.size() && !(raw[j] >= '@' && raw[j] <= '~'))
                j++;
            i = j;
        } else {
            out.back() += c;
        }
    }
    if (out.back().empty())
        out.pop_back();
    for (std::string &s : out) {
        size_t e = s.find_last_not_of(' ');
        s.erase(e == std::string::npos ? 0 : e + 1);
    }
    return out;
}

bool man_word_ok(std::string_view w)
{
    if (w.empty() || w[0] == '-')
        return false;
    return std::none_of(w.begin(), w.end(), [](char c) { return c == '/' || (unsigned char)c < ' '; });
}

} // namespace

int xfhelp_word(std::string_view ops)
{
    std::vector<xfhelp_page> pages;
    if (!load(pages))
        return fail(115);
    std::string_view rest = ops;
    std::string_view w1 = xfword(rest);
    if (w1.empty())
        return show_index(pages);
    std::string_view w2 = xfword(rest);
    for (const kind_row &k : kinds) {
        if (!w2.empty() && xffold(w1) == k.word) {
            if (!has_kind(pages, k))
                return fail(k.missing);
            const xfhelp_page *p = xfhelp_find(pages, k.kind, w2);
            if (!p && k.kind == std::string_view("command"))
                if (const cmd_entry *e = cmd_lookup(xffold(w2)))
                    p = xfhelp_find(pages, k.kind, e->name);
            return p ? show_page(*p, k, pages) : fail(116);
        }
        if (w2.empty() && xffold(w1) == k.word && k.kind != std::string_view("command"))
            return has_kind(pages, k) ? show_index(pages) : fail(k.missing);
    }
    // HELP SET ZONE and HELP QUERY ZONE are about ZONE.
    std::string f1 = xffold(w1);
    if (!w2.empty() && (f1 == "set" || f1 == "query" || f1 == "q"))
        w1 = w2;
    const kind_row *k = nullptr;
    const xfhelp_page *p = lookup(pages, w1, k);
    return p ? show_page(*p, *k, pages) : fail(116);
}

int xfman_word(std::string_view ops)
{
    std::string_view rest = ops;
    std::string_view a = xfword(rest), b = xfword(rest);
    if (a.empty()) {
        xfmsg(159, 1);
        cmd_rc = 5;
        return 1;
    }
    std::string section, word(a);
    if (!b.empty()) {
        section.assign(a);
        word.assign(b);
    }
    if (!man_word_ok(word) || (!section.empty() && !man_word_ok(section))) {
        xfmsg(16, 1);
        cmd_rc = 5;
        return 1;
    }
    xfmsg(129, 2);
    int width = xv ? std::clamp(xv->ncols - 8, 40, 200) : 80;
    std::vector<std::string> argv = {"man"};
    if (!section.empty())
        argv.push_back(section);
    argv.push_back("--");
    argv.push_back(word);
    std::string out, err;
    pl_run_opts o;
    o.env = {"MANWIDTH=" + std::to_string(width), "MANPAGER=cat", "PAGER=cat", "MAN_KEEP_FORMATTING=",
             "GROFF_NO_SGR=1"};
    int rc = pl_run_capture(argv, out, o, &err);
    if (rc == -ENOENT) {
        xfmsgs("..... The man command is not installed (Debian package man-db)", 1);
        cmd_rc = 1;
        return 1;
    }
    if (rc != 0 || out.empty()) {
        std::string what = section.empty() ? word : word + " in section " + section;
        xfmsgs("..... No manual entry for " + what, 1);
        cmd_rc = 1;
        return 1;
    }
    std::string name = section.empty() ? word : word + "." + section;
    xfring_text(page_name("man", name, ".man"), plain_lines(out));
    cmd_rc = 0;
    return 1;
}

int xfcm_help(const xfcmd &c)
{
    xftrace("Commande xfcm_help");
    return xfhelp_word(c.ops());
}

int xfcm_man(const xfcmd &c)
{
    xftrace("Commande xfcm_man");
    return xfman_word(c.ops());
}
