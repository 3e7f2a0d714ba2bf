// The doors to settings: SEt (through the SET table), Query, MODe with its
// sixteen switches, LINENd/SEP, and the shared ON/OFF operand helper.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "commands/xfsettings.h"
#include "session/xed.h"
#include "session/xfkeys.h"
#include "session/xflistpage.h"
#include "session/xfpage.h"
#include "fields/fields.h"
#include "fields/plat.h"

#include <algorithm>
#include <cstring>

int arbchar_on = 0;
char arbchar = '$';
std::string lastlorc;

int xfcm_set_mac(const xfcmd &c);
int xfcm_set_equal(const xfcmd &c);
void xfsynonym_list();
int (*xfsetkey_hook)(std::string_view name, std::string_view def) = nullptr;

int xfonoff(const xfcmd &c, int &flag)
{
    std::string_view w = xftrim(c.ops());
    if (w.empty())
        return xfreport_onoff(flag);
    int on;
    if (xfop_onoff(w, on))
        flag = on;
    return 1;
}

namespace {

// The handler SET uses for an entry, where it differs from the table's.
struct set_override {
    const char *name; // entry name
    xfcm_fn fn;       // handler under SET
};
constexpr set_override overrides[] = {
    {"MACRO", xfcm_set_mac},
    {"=", xfcm_set_equal},
};

xfcm_fn set_handler(const cmd_entry *e)
{
    for (auto &o : overrides)
        if (std::strcmp(o.name, e->name) == 0)
            return o.fn;
    return e->fn;
}

int set_listing();

} // namespace

int xfcm_set(const xfcmd &c)
{
    xftrace("Commande xfcm_set");
    std::string_view rest = c.ops();
    if (rest.empty() || rest.front() == '?')
        return set_listing();
    auto &rows = set_table();
    size_t count = rows.size() - (modes.notimp ? 0 : (size_t)NOTIMP_COUNT);
    // "=" abuts its text: "set =text" names it too.
    for (size_t i = 0; i < count; i++) {
        const cmd_entry *e = rows[i];
        const cmd_info &inf = cmd_info_of(e);
        bool hit = e->name[0] == '=' ? rest.front() == '=' : word_match(rest, inf);
        if (!hit)
            continue;
        xfcm_fn fn = set_handler(e);
        if (!fn)
            return 1; // accepted and ignored
        return xfcall(e, fn, rest, c.ctx1, c.ctx2);
    }
    std::string_view r2 = rest;
    std::string_view key = xfword(r2);
    if (xfsetkey_hook && xfsetkey_hook(key, xftrim(r2)) == 0)
        return 1;
    xfmsg(11, 1);
    cmd_rc = 1;
    return 1;
}

int xfcm_query(const xfcmd &c)
{
    xftrace("Commande xfcm_query");
    std::string_view rest = c.ops();
    std::string_view r2 = rest;
    std::string w = xffold(xfword(r2));
    if (w == "macro") {
        xfcom2("set macro", c.ctx1, c.ctx2);
        return 1;
    }
    if (abbrev(w, "synonym", 3)) {
        xfsynonym_list();
        return 1;
    }
    if (abbrev(w, "lastlorc", 5)) {
        xfmsgs(lastlorc, 0);
        return 1;
    }
    if (w == "keys") { // every key definition, on a page of its own
        if (xfshow_keys() == 1)
            xfgeom(false);
        return 1;
    }
    if (abbrev(w, "pending", 4)) {
        cmd_rc = xfpfx_query(r2);
        return 1;
    }
    if (abbrev(w, "font", 3)) {
        // Nothing to tell in a run with no screen, as FONt sets nothing there.
        fs_plat *l = fs_layer();
        std::string name = l ? l->font_name() : std::string();
        if (!name.empty()) {
            xfmsgs("..... is " + name, 0);
        } else if (l) {
            xfmsgs(XF_TERMINAL_FONT, 1);
            cmd_rc = 1;
        }
        return 1;
    }
    const cmd_entry *e = cmd_lookup(w);
    if (e && (e->flags & CMD_QUERY)) {
        xfcom2(rest, c.ctx1, c.ctx2);
        return 1;
    }
    xfmsg(16, 1);
    cmd_rc = 1;
    return 1;
}

// ---------------------------------------------------------------------------
// MODe.

namespace {

struct mode_value {
    const char *word; // value word, lower case
    int min;          // letters needed
    int value;        // what the switch takes
    int msg;          // report of that state
};

struct mode_row {
    const char *name;    // mode name, lower case
    int min;             // letters needed
    int xfmodes::*var;   // the switch, or null for the special rows
    mode_value v[2];     // its two values
};

constexpr mode_row mode_rows[] = {
    {"locate", 1, &xfmodes::locate_stay, {{"stay", 1, 1, 76}, {"nostay", 1, 0, 75}}},
    {"prefix", 1, &xfmodes::prefix_ispf, {{"xedit", 1, 0, 93}, {"ispf", 1, 1, 94}}},
    {"enter", 1, &xfmodes::enter_stay, {{"stay", 1, 1, 97}, {"nostay", 1, 0, 98}}},
    {"autoexit", 1, nullptr, {{"on", 1, 1, 9}, {"off", 2, 0, 10}}},
    {"number", 1, &xfmodes::number_scroll, {{"scroll", 1, 1, 126}, {"goto", 1, 0, 125}}},
    {"change", 2, &xfmodes::change_one, {{"one", 1, 1, 128}, {"all", 1, 0, 127}}},
    {"redisplay", 3, &xfmodes::redisplay, {{"on", 1, 1, 9}, {"off", 2, 0, 10}}},
    {"topline", 1, nullptr, {{"0", 1, 0, 143}, {"1", 1, 1, 144}}},
    {"cursor", 2, nullptr, {{"wrap", 1, 0, 147}, {"", 0, 0, 0}}},
    {"get", 1, &xfmodes::get_stay, {{"stay", 1, 1, 151}, {"nostay", 1, 0, 152}}},
    {"icursor", 7, &xfmodes::icursor, {{"on", 1, 1, 9}, {"off", 2, 0, 10}}},
    {"reserved", 3, &xfmodes::reserved_skip, {{"skip", 1, 1, 160}, {"noskip", 1, 0, 161}}},
    {"notimp", 2, &xfmodes::notimp, {{"on", 1, 1, 9}, {"off", 2, 0, 10}}},
    {"scroll", 2, &xfmodes::scroll_wrap, {{"wrap", 1, 1, 147}, {"nowrap", 1, 0, 175}}},
    {"command", 2, &xfmodes::command_ispf, {{"xedit", 1, 0, 93}, {"ispf", 1, 1, 94}}},
    {"expand", 2, nullptr, {{"on", 1, 1, 0}, {"off", 2, 0, 0}}},
};
static_assert(sizeof mode_rows / sizeof mode_rows[0] == 16, "sixteen MODE switches");

int bad_mode() { return xfbad(); }

// The value of a two-valued switch, wherever it lives.
int get_mode(const mode_row &r)
{
    if (r.var)
        return modes.*r.var;
    if (!std::strcmp(r.name, "autoexit"))
        return autoexit ? 1 : 0;
    if (!std::strcmp(r.name, "topline"))
        return topline == -1 ? 0 : 1;
    return 0;
}

void set_mode(const mode_row &r, int v)
{
    if (r.var) {
        modes.*r.var = v;
    } else if (!std::strcmp(r.name, "autoexit")) {
        autoexit = v != 0;
    } else if (!std::strcmp(r.name, "topline")) {
        topline = v ? 0 : -1;
        // With no top-of-file line every current line is at least line 0.
        for (xview *vw : views)
            for (auto &pf : vw->perfile)
                if (pf.curline < topline)
                    pf.curline = topline;
    }
}

int mode_expand(std::string_view rest)
{
    static const int report[2][2] = {{193, 194}, {191, 192}}; // [on][env]
    std::string a = xffold(xfword(rest)), b = xffold(xfword(rest));
    if (a.empty()) {
        xfmsg(report[modes.expand_on][modes.expand_env], 0);
        return 1;
    }
    for (const std::string &w : {a, b}) {
        if (w.empty())
            continue;
        if (w == "on")
            modes.expand_on = 1;
        else if (abbrev(w, "off", 2))
            modes.expand_on = 0;
        else if (w == "env")
            modes.expand_env = 1;
        else if (w == "noenv")
            modes.expand_env = 0;
        else
            return bad_mode();
    }
    return 1;
}

int mode_cursor(std::string_view rest)
{
    std::string w = xffold(xfword(rest));
    if (w.empty()) {
        if (modes.cursor == 0)
            xfmsg(147, 0);
        else
            xfmsgs("..... Is " + std::to_string(modes.cursor), 0);
        return 1;
    }
    long n;
    if (abbrev(w, "wrap", 1))
        modes.cursor = 0;
    else if (xfnumber(w, n) && n >= 1)
        modes.cursor = (int)n;
    else
        return bad_mode();
    return 1;
}

} // namespace

int xfcm_mode(const xfcmd &c)
{
    xftrace("Commande xfcm_mode");
    std::string_view rest = c.ops();
    std::string name = xffold(xfword(rest));
    if (name.empty())
        return bad_mode();
    for (const mode_row &r : mode_rows) {
        if (!abbrev(name, r.name, r.min))
            continue;
        if (!std::strcmp(r.name, "expand"))
            return mode_expand(rest);
        if (!std::strcmp(r.name, "cursor"))
            return mode_cursor(rest);
        std::string val = xffold(xfword(rest));
        if (!xftrim(rest).empty())
            return bad_mode();
        if (val.empty()) {
            int cur = get_mode(r);
            xfmsg(r.v[0].value == cur ? r.v[0].msg : r.v[1].msg, 0);
            return 1;
        }
        for (const mode_value &v : r.v)
            if (v.word[0] && abbrev(val, v.word, v.min)) {
                set_mode(r, v.value);
                return 1;
            }
        return bad_mode();
    }
    return bad_mode();
}

// LINENd ON [c] | OFF | c
int xfcm_linend(const xfcmd &c)
{
    xftrace("Commande xfcm_linend");
    std::string_view rest = c.ops();
    std::string_view w = xfword(rest);
    std::string_view ch = xfword(rest);
    std::string f = xffold(w);
    if (w.empty())
        return xfreport_onoff(linend_on);
    if (f == "on") {
        linend_on = 1;
        if (ch.size() == 1)
            linend_char = ch[0];
        else if (!ch.empty())
            goto bad;
        return 1;
    }
    if (abbrev(f, "off", 2) && ch.empty()) {
        linend_on = 0;
        return 1;
    }
    if (w.size() == 1 && ch.empty()) {
        linend_on = 1;
        linend_char = w[0];
        return 1;
    }
bad:
    return xfbad();
}

// ---------------------------------------------------------------------------
// The listing of every setting: SET commands that, run as a profile, give the
// same settings again. Keys first, then each setting by name, the MODE
// switches among them in the place of MODE.

namespace {

// Settings the listing leaves out: the keys (listed first), the tables of
// their own listings, and commands whose operand is an action on the file.
constexpr const char *unlisted[] = {
    "=", "KEYboard", "STAck", "SYNTax", "SYNonym", "Point", "RESERved", "SCReen", "PENDing",
    "COLor", "FD", "FName", "FType", "ALT", "SELect", "PREFIX_Screen", "PREfix", "SCKeys",
};

bool is_unlisted(const char *name)
{
    for (const char *u : unlisted)
        if (!std::strcmp(u, name))
            return true;
    return false;
}

std::string upper(std::string s)
{
    for (auto &ch : s)
        ch = (char)std::toupper((unsigned char)ch);
    return s;
}

// A mode switch as the MODE command sets it.
std::string mode_line(const mode_row &r)
{
    std::string v;
    if (!std::strcmp(r.name, "expand"))
        v = std::string(modes.expand_on ? "ON" : "OFF") + (modes.expand_env ? " ENV" : " NOENV");
    else if (!std::strcmp(r.name, "cursor"))
        v = modes.cursor ? std::to_string(modes.cursor) : "WRAP";
    else
        v = upper(r.v[get_mode(r) == r.v[0].value ? 0 : 1].word);
    return "MODE " + upper(r.name) + " " + v;
}

std::vector<std::string> listing()
{
    std::vector<std::string> out = xfkeys_list();
    std::vector<std::string> lines;
    for (const cmd_entry *e : set_table()) {
        xfcm_fn fn = set_handler(e);
        if (!fn || fn == xfcm_notimpl || is_unlisted(e->name))
            continue;
        std::string got;
        int rc = cmd_rc;
        std::string *was = xfmsg_capture;
        xfmsg_capture = &got;
        cmd_rc = 0;
        xfcall(e, fn, e->name, 0, 0);
        xfmsg_capture = was;
        bool failed = cmd_rc != 0 || got.empty() || got.find('\n') != std::string::npos;
        cmd_rc = rc;
        if (failed)
            continue;
        // The report's head goes; what is left is the operand that sets it.
        std::string name = upper(e->name);
        for (const std::string &head : {std::string("..... Is "), std::string("..... is "),
                                        std::string("...... is "), name + " ", std::string("..... ")})
            if (got.compare(0, head.size(), head) == 0) {
                got.erase(0, head.size());
                break;
            }
        if (got.rfind(".....", 0) == 0 || xftrim(got).empty())
            continue; // a report that is no value
        lines.push_back("SET " + name + " " + got);
    }
    for (const mode_row &r : mode_rows)
        lines.push_back(mode_line(r));
    std::sort(lines.begin(), lines.end(), [](const std::string &a, const std::string &b) {
        auto key = [](const std::string &s) { return s.rfind("SET ", 0) == 0 ? s.substr(4) : s; };
        return key(a) < key(b);
    });
    out.insert(out.end(), lines.begin(), lines.end());
    return out;
}

// The listing goes into a new file of the ring, "settings.vorta" in the
// current folder, a macro ready to be saved as a profile.
int set_listing()
{
    std::vector<std::string> lines = listing();
    std::string name = startdir + "/settings.vorta";
    for (int i = 0; i < nbfiles(); i++)
        if (files[(size_t)i]->fname == name) {
            xfmsg(50, 1);
            cmd_rc = 1;
            return 1;
        }
    if (xfedit(name) != 0)
        return 1;
    if (nbli() > 0)
        xfdel(0, nbli(), "xfcm_set");
    xf_do('i', "/* The settings of the session: run as a profile to get them again. */", -1, "xfcm_set");
    for (const std::string &l : lines)
        xf_do('i', xflist_quoted(l), nbli() - 1, "xfcm_set");
    curline() = topline;
    return 1;
}

} // namespace
