// Settings whose features come later, kept now so that SET, Query, EXTRACT
// and the listing of all settings know them and a profile may set them: a
// table of global values with one handler, and the few that a file or a
// view keeps. The operand shapes every handler shares live here too.
#include "commands/xfsettings.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "fields/fields.h"
#include "session/xed.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

std::string profile_name, profile_args;
std::string last_menu;
std::vector<std::string> setp_hints;

// ---------------------------------------------------------------------------
// Operand shapes.

int xfbad()
{
    xfmsg(16, 1);
    cmd_rc = 1;
    return 1;
}

int xfonoff_word(std::string_view w)
{
    std::string f = xffold(w);
    return f == "on" ? 1 : f == "off" || f == "of" ? 0 : -1;
}

int xfreport_onoff(int on)
{
    xfmsg(on ? 9 : 10, 0);
    return 1;
}

bool xfop_onoff(std::string_view w, int &out)
{
    int v = xfonoff_word(w);
    if (v < 0)
        return xfbad(), false;
    out = v;
    return true;
}

bool xfop_number(std::string_view w, long lo, long hi, long &out)
{
    long n;
    if (!xfnumber(w, n) || n < lo || n > hi)
        return xfbad(), false;
    out = n;
    return true;
}

bool xfop_star(std::string_view w, long lo, long hi, long &out)
{
    if (w == "*") {
        out = 0;
        return true;
    }
    return xfop_number(w, lo, hi, out);
}

bool xfop_pair(std::string_view ops, long &a, long &b)
{
    std::string_view wa = xfword(ops), wb = xfword(ops);
    if (wa.empty() || !xftrim(ops).empty())
        return xfbad(), false;
    if (!xfop_number(wa, 1, xfmax_cols, a))
        return false;
    if (wb.empty())
        wb = "*";
    if (!xfop_star(wb, a, xfmax_cols, b))
        return false;
    return true;
}

bool xfop_word(std::string_view w, const char *const *words, int n, int &out)
{
    for (int i = 0; i < n; i++) {
        const char *slash = std::strchr(words[i], '/');
        std::string_view name(words[i], slash ? (size_t)(slash - words[i]) : std::strlen(words[i]));
        int min = slash ? std::atoi(slash + 1) : (int)name.size();
        if (abbrev(w, name, min)) {
            out = i;
            return true;
        }
    }
    return xfbad(), false;
}

int xfreport(const std::string &text)
{
    xfmsgs("..... Is " + text, 0);
    return 1;
}

std::string xfquery_text(const cmd_entry *e)
{
    std::string got;
    int rc = cmd_rc;
    std::string *was = xfmsg_capture;
    xfmsg_capture = &got;
    xfcall(e, e->fn, e->name, 0, 0);
    xfmsg_capture = was;
    cmd_rc = rc;
    // The report's head, or the setting's own name where the report starts
    // with it ("FORMAT JUSTIFY ...").
    std::string own = xffold(e->name) + " ";
    if (xffold(got.substr(0, own.size())) == own)
        return got.substr(own.size());
    for (const char *head : {"..... Is ", "..... is ", "...... is ", "..... "})
        if (got.compare(0, std::strlen(head), head) == 0)
            return got.substr(std::strlen(head));
    return got;
}

namespace {

// ---------------------------------------------------------------------------
// The stored settings.

enum shape { ONOFF, NUMBER, WORD, TEXT };

struct stored_row {
    const char *name;     // the command's name, as in the command table
    shape kind;
    const char *start;    // value at start, as the query gives it
    long lo, hi;          // NUMBER: the range
    const char *words[4]; // WORD: "word/min" entries, upper case
    void (*apply)(const std::string &value); // what the value steers now, or null
};

void apply_timeload(const std::string &v) { timeload = v == "ON"; }
void apply_reload(const std::string &v) { reload_default = v == "ON"; }

const stored_row stored[] = {
    {"APL", ONOFF, "OFF", 0, 0, {}, nullptr},
    {"BEEP", ONOFF, "OFF", 0, 0, {}, nullptr},
    {"CTags", TEXT, "OFF tags", 0, 0, {}, nullptr},
    {"CTLchar", TEXT, "OFF", 0, 0, {}, nullptr},
    {"ESCAPEdelay", NUMBER, "100", 0, 10000, {}, nullptr},
    {"FMAcro", ONOFF, "OFF", 0, 0, {}, nullptr},
    {"FOLLOW", ONOFF, "OFF", 0, 0, {}, nullptr},
    {"FORCEFOCUS", ONOFF, "OFF", 0, 0, {}, nullptr},
    {"GLOBALCase", WORD, "IGNORE", 0, 0, {"IGNORE/1", "RESPECT/1"}, nullptr},
    {"HIghlight", WORD, "OFF", 0, 0, {"OFF/2", "ALTERED/1", "TAGGED/1", "SELECT/1"}, nullptr},
    {"LINECol", ONOFF, "ON", 0, 0, {}, nullptr},
    {"MESsagesdir", TEXT, ".", 0, 0, {}, nullptr},
    {"METAKey", ONOFF, "OFF", 0, 0, {}, nullptr},
    {"OBsolete", ONOFF, "OFF", 0, 0, {}, nullptr},
    {"RELEase", TEXT, "1.0", 0, 0, {}, nullptr},
    {"RELoad", ONOFF, "ON", 0, 0, {}, apply_reload},
    {"SCROllbar", ONOFF, "ON", 0, 0, {}, nullptr},
    {"SELECTAll", ONOFF, "OFF", 0, 0, {}, nullptr},
    {"SHBlank", ONOFF, "ON", 0, 0, {}, nullptr},
    {"SHOWHistory", ONOFF, "OFF", 0, 0, {}, nullptr},
    {"STAMpdelay", NUMBER, "0", 0, 86400, {}, nullptr},
    {"STReam", ONOFF, "ON", 0, 0, {}, nullptr},
    {"TIMELOAD", ONOFF, "OFF", 0, 0, {}, apply_timeload},
    {"VIsible", ONOFF, "OFF", 0, 0, {}, nullptr},
    {"WORDChars", TEXT, "A-Za-z0-9_", 0, 0, {}, nullptr},
    {"XSHELLMax", NUMBER, "10", 1, 99, {}, nullptr},
    {"XTESTChars", TEXT, "", 0, 0, {}, nullptr},
    {"WINSHRinktofit", ONOFF, "OFF", 0, 0, {}, nullptr},
};
constexpr size_t NSTORED = sizeof stored / sizeof stored[0];

std::string values[NSTORED]; // current values, "" before the first use
bool filled = false;

std::string &value_of(size_t i)
{
    if (!filled) {
        filled = true;
        for (size_t k = 0; k < NSTORED; k++)
            values[k] = stored[k].start;
    }
    return values[i];
}

int find_stored(const char *name)
{
    for (size_t i = 0; i < NSTORED; i++)
        if (!std::strcmp(stored[i].name, name))
            return (int)i;
    return -1;
}

int count_words(const char *const *w)
{
    int n = 0;
    while (n < 4 && w[n])
        n++;
    return n;
}

} // namespace

std::string xfset_text(const char *name)
{
    int i = find_stored(name);
    return i < 0 ? std::string() : value_of((size_t)i);
}

int xfset_flag(const char *name) { return xfset_text(name) == "ON"; }

int xfset_insert() { return !batch && fs_layer() ? asqinsert() : 0; }

int xfcm_stored(const xfcmd &c)
{
    xftrace("Commande xfcm_stored");
    int i = c.ent ? find_stored(c.ent->name) : -1;
    if (i < 0)
        return xfbad();
    const stored_row &r = stored[i];
    std::string &v = value_of((size_t)i);
    std::string_view ops = xftrim(c.ops());
    if (ops.empty()) {
        return r.kind == ONOFF ? xfreport_onoff(v == "ON") : xfreport(v);
    }
    std::string nv;
    switch (r.kind) {
    case ONOFF: {
        int on;
        if (!xfop_onoff(ops, on))
            return 1;
        nv = on ? "ON" : "OFF";
        break;
    }
    case NUMBER: {
        long n;
        if (!xfop_number(ops, r.lo, r.hi, n))
            return 1;
        nv = std::to_string(n);
        break;
    }
    case WORD: {
        int k;
        if (!xfop_word(ops, r.words, count_words(r.words), k))
            return 1;
        nv = std::string(r.words[k], std::strchr(r.words[k], '/'));
        break;
    }
    case TEXT:
        nv = std::string(ops);
        break;
    }
    v = nv;
    if (r.apply)
        r.apply(v);
    return 1;
}

// ---------------------------------------------------------------------------
// Settings a file or a view keeps.

namespace {

bool need_file()
{
    if (xf)
        return true;
    xfmsg(136, 1);
    cmd_rc = 1;
    return false;
}

std::string star(long v) { return v ? std::to_string(v) : std::string("*"); }

// LRecl and TRUnc: a width or `*`.
int width_setting(const xfcmd &c, int32_t xfile::*field)
{
    if (!need_file())
        return 1;
    std::string_view ops = xftrim(c.ops());
    if (ops.empty())
        return xfreport(star(xf->*field));
    long n;
    if (xfop_star(ops, 1, xfmax_cols, n))
        xf->*field = (int32_t)n;
    return 1;
}

// A column pair of the view: the file's own, or the default for files that
// come into it.
int pair_setting(const xfcmd &c, int32_t (xfviewfile::*field)[2], bool screen)
{
    if (!screen && !need_file())
        return 1;
    xfviewfile &p = screen || !xf ? xv->screen : xv->perfile[(size_t)xfidx];
    int32_t *v = p.*field;
    std::string_view ops = xftrim(c.ops());
    if (ops.empty())
        return xfreport(std::to_string(v[0]) + " " + star(v[1]));
    long a, b;
    if (xfop_pair(ops, a, b)) {
        v[0] = (int32_t)a;
        v[1] = (int32_t)b;
    }
    return 1;
}

} // namespace

int xfcm_lrecl(const xfcmd &c)
{
    xftrace("Commande xfcm_lrecl");
    return width_setting(c, &xfile::lrecl);
}

int xfcm_trunc(const xfcmd &c)
{
    xftrace("Commande xfcm_trunc");
    return width_setting(c, &xfile::trunc);
}

int xfcm_verify(const xfcmd &c)
{
    xftrace("Commande xfcm_verify");
    return pair_setting(c, &xfviewfile::verify, false);
}

int xfcm_verify_screen(const xfcmd &c)
{
    xftrace("Commande xfcm_verify_screen");
    return pair_setting(c, &xfviewfile::verify, true);
}

// ALT [changes [changes since the last save]]: the counts of alterations.
int xfcm_alt(const xfcmd &c)
{
    xftrace("Commande xfcm_alt");
    if (!need_file())
        return 1;
    std::string_view ops = c.ops();
    std::string_view a = xfword(ops), b = xfword(ops);
    if (a.empty())
        return xfreport(std::to_string(xf->chgsince) + " " + std::to_string(xf->chgcount));
    long x, y = xf->chgcount;
    if (!xfop_number(a, 0, 2147483647, x) || (!b.empty() && !xfop_number(b, 0, 2147483647, y)))
        return 1;
    if (!xftrim(ops).empty())
        return xfbad();
    xf->chgsince = (int32_t)x;
    xf->chgcount = (int32_t)y;
    return 1;
}

// MARgins left right [para|+n], 1-based columns.
int xfcm_margins(const xfcmd &c)
{
    xftrace("Commande xfcm_margins");
    if (!need_file())
        return 1;
    int32_t *f = xf->format;
    std::string_view ops = c.ops();
    std::string_view a = xfword(ops), b = xfword(ops), p = xfword(ops);
    if (a.empty()) {
        std::string para = f[2] < 0 ? "+" + std::to_string(f[3]) : std::to_string(f[2] + 1);
        return xfreport(std::to_string(f[0] + 1) + " " + std::to_string(f[1] + 1) + " " + para);
    }
    long l, r, n = 0;
    if (!xfop_number(a, 1, xfmax_cols, l) || !xfop_number(b, l, xfmax_cols, r))
        return 1;
    bool rel = !p.empty() && p[0] == '+';
    if (!p.empty() && !xfop_number(rel ? p.substr(1) : p, rel ? 0 : 1, xfmax_cols, n))
        return 1;
    if (!xftrim(ops).empty())
        return xfbad();
    f[0] = (int32_t)l - 1;
    f[1] = (int32_t)r - 1;
    f[2] = p.empty() ? f[0] : rel ? -1 : (int32_t)n - 1;
    f[3] = rel ? (int32_t)n : 0;
    return 1;
}

// FORMAT [JUSTIFY|NOJUSTIFY] [BLANK|EXTENDED|DOTEXTENDED] [SINGLE|DOUBLE|NONE]:
// three settings of the reflow, any of them, in any order. A wrong word
// changes none.
int xfcm_format(const xfcmd &c)
{
    xftrace("Commande xfcm_format");
    if (!need_file())
        return 1;
    static const char *const justify[] = {"JUSTIFY", "NOJUSTIFY"};
    static const char *const rule[] = {"BLANK", "EXTENDED", "DOTEXTENDED"};
    static const char *const gap[] = {"NONE", "SINGLE", "DOUBLE"};
    int32_t *f = xf->format;
    std::string_view ops = c.ops();
    if (xftrim(ops).empty()) {
        xfmsgs(std::string("FORMAT ") + justify[f[4] ? 1 : 0] + " " + rule[std::clamp(f[5], 0, 2)] + " " +
                   gap[std::clamp(f[6], 0, 2)],
               0);
        return 1;
    }
    // Word, minimum letters, the field it sets and the value.
    struct fword {
        const char *w;
        int min, field, value;
    };
    static const fword words[] = {
        {"justify", 1, 4, 0},     {"nojustify", 3, 4, 1}, {"blank", 4, 5, 0},
        {"extended", 4, 5, 1},    {"dotextended", 3, 5, 2}, {"single", 3, 6, 1},
        {"double", 3, 6, 2},      {"none", 4, 6, 0},
    };
    int32_t nf[7];
    std::copy(f, f + 7, nf);
    for (std::string_view w = xfword(ops); !w.empty(); w = xfword(ops)) {
        const fword *hit = nullptr;
        for (const fword &x : words)
            if (abbrev(w, x.w, x.min))
                hit = &x;
        if (!hit)
            return xfbad();
        nf[hit->field] = hit->value;
    }
    std::copy(nf, nf + 7, f);
    return 1;
}

// POWerinput [PREVIOUS|NOPREVIOUS] [MOVE|NOMOVE] [n]: how typing past the end
// of a row goes on; three words.
int xfcm_powerinput(const xfcmd &c)
{
    xftrace("Commande xfcm_powerinput");
    if (!need_file())
        return 1;
    int32_t *p = xf->powerinput;
    std::string_view ops = c.ops();
    if (xftrim(ops).empty())
        return xfreport(std::string(p[0] ? "PREVIOUS" : "NOPREVIOUS") + (p[1] ? " MOVE " : " NOMOVE ") +
                        std::to_string(p[2]));
    int32_t np[4];
    std::copy(p, p + 4, np);
    for (std::string_view w = xfword(ops); !w.empty(); w = xfword(ops)) {
        std::string f = xffold(w);
        long n;
        if (f == "previous" || f == "noprevious")
            np[0] = f == "previous";
        else if (f == "move" || f == "nomove")
            np[1] = f == "move";
        else if (xfnumber(w, n) && n >= 0 && n <= 255)
            np[2] = (int32_t)n;
        else
            return xfbad();
    }
    std::copy(np, np + 4, p);
    return 1;
}

// NUMBER_Screen ON|OFF|ZERO: the default a file takes when it comes into
// the view.
int xfcm_number_screen(const xfcmd &c)
{
    xftrace("Commande xfcm_number_screen");
    static const char *const words[] = {"OFF/2", "ON/2", "ZERO/1"};
    int32_t &n = xv->screen.number;
    std::string_view ops = xftrim(c.ops());
    if (ops.empty())
        return xfreport(std::string(words[std::clamp(n, 0, 2)], n == 2 ? 4 : n ? 2 : 3));
    int k;
    if (xfop_word(ops, words, 3, k))
        n = k;
    return 1;
}

// SCALE_Screen and TABLINE_Screen [ON|OFF] [row]: the defaults files take.
int xfcm_scale_screen(const xfcmd &c)
{
    xftrace("Commande xfcm_scale_screen");
    return xfrow_setting(c, xv->screen.scale, 1);
}

int xfcm_tabline_screen(const xfcmd &c)
{
    xftrace("Commande xfcm_tabline_screen");
    return xfrow_setting(c, xv->screen.tabline, 1);
}

// SELect [+|-]n [*|target]: the selection level of the current line, the
// level new lines get shown with the current one.
int xfcm_select(const xfcmd &c)
{
    xftrace("Commande xfcm_select");
    if (!need_file())
        return 1;
    std::string_view ops = c.ops();
    std::string_view w = xfword(ops);
    int32_t li = curline();
    xfline *l = li >= 0 && li < nbli() ? &xf->lines[li] : nullptr;
    int32_t lv = l ? (int32_t)l->selevel : 0;
    if (w.empty())
        return xfreport(std::to_string(lv) + " " + std::to_string(xv->select_new));
    bool rel = w[0] == '+' || w[0] == '-';
    long n;
    if (!xfop_number(rel ? w.substr(1) : w, 0, 32767, n) || !xftrim(ops).empty())
        return rel && xftrim(ops).empty() ? 1 : xfbad();
    if (!l)
        return 1;
    // A level stays within 0 and the highest one, however far it is moved.
    int64_t nv = rel ? (int64_t)lv + (w[0] == '-' ? -n : n) : n;
    l->selevel = (uint32_t)std::clamp<int64_t>(nv, 0, 2147483647);
    return 1;
}

// TABSet col ...: the tab columns, ascending, from 1.
int xfcm_tabset(const xfcmd &c)
{
    xftrace("Commande xfcm_tabset");
    if (!need_file())
        return 1;
    std::string_view ops = c.ops();
    if (xftrim(ops).empty()) {
        std::string s;
        for (int32_t t : xf->tabset)
            s += (s.empty() ? "" : " ") + std::to_string(t);
        return xfreport(s);
    }
    std::vector<int32_t> cols;
    for (std::string_view w = xfword(ops); !w.empty(); w = xfword(ops)) {
        long n;
        if (!xfop_number(w, cols.empty() ? 1 : cols.back() + 1, xfmax_cols, n))
            return 1;
        cols.push_back((int32_t)n);
    }
    xf->tabset = cols;
    return 1;
}

// FD, FName and FType rename a part of the current file's name: the folder,
// the base and the extension. The file on disk isn't touched until it is saved.
int xfcm_fnameparts(const xfcmd &c)
{
    xftrace("Commande xfcm_fnameparts");
    if (!need_file())
        return 1;
    std::string_view w = xftrim(c.ops());
    xfname_parts p = xfsplit_name(xf->fname);
    std::string which = xffold(c.ent ? c.ent->name : "");
    if (w.empty())
        return xfreport(which == "fd" ? p.fd : which == "fname" ? p.fn : p.ft);
    if (w.find('/') != std::string_view::npos && which != "fd")
        return xfbad();
    std::string dir = which == "fd" ? std::string(w) : p.fd;
    std::string base = which == "fname" ? std::string(w) : p.fn;
    std::string ext = which == "ftype" ? std::string(w) : p.ft;
    if (dir.size() > 1 && dir.back() == '/')
        dir.pop_back();
    xf->fname = (dir == "/" ? "" : dir) + "/" + base + (ext.empty() ? "" : "." + ext);
    xf->fname2 = xf->fname;
    return 1;
}

// SETP "hint\nhint...": the key hints of the screen's hint rows.
int xfcm_setp(const xfcmd &c)
{
    xftrace("Commande xfcm_setp");
    std::string_view ops = c.ops();
    size_t q1 = ops.find('"');
    if (q1 == std::string_view::npos) {
        setp_hints.clear();
        return 1;
    }
    size_t q2 = ops.rfind('"');
    if (q2 == q1) {
        xfmsg(16, 1);
        cmd_rc = 1;
        return 1;
    }
    std::string_view body = ops.substr(q1 + 1, q2 - q1 - 1);
    setp_hints.clear();
    while (!body.empty()) {
        size_t nl = body.find("\\n");
        setp_hints.emplace_back(body.substr(0, nl));
        body = nl == std::string_view::npos ? std::string_view() : body.substr(nl + 2);
    }
    return 1;
}
