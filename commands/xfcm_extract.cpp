// EXTract: the editor's state handed to a macro as stem variables. Each
// item of the table gives a text "N v1 ... vN"; a few items that are lists
// of lines (the ring, the named lines, the key settings...) set their stems
// themselves. A line number in a result counts from 1.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "platform/platform.h"
#include "commands/xfsettings.h"
#include "rexx/run.h"
#include "session/xed.h"
#include "session/xfcolours.h"
#include "session/xfkeys.h"
#include "session/xfpage.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <unistd.h>

extern int autoexp;
extern int autoindent;
extern int autoindent_stay;
extern size_t history_max;

namespace {

// PENDING's operand: BLOCK and OLDNAME, each at most once, and one name.
bool xfpending_operand(std::string_view ops)
{
    int names = 0;
    for (std::string_view w = xfword(ops); !w.empty(); w = xfword(ops)) {
        std::string f = xffold(w);
        if (f != "block" && f != "oldname" && ++names > 1)
            return false;
    }
    return true;
}

using result = std::optional<std::string>;

std::string num(long long n) { return std::to_string(n); }
std::string onoff(long long v) { return v ? "ON" : "OFF"; }
std::string one(const std::string &v) { return "1 " + v; }

// The current line's number as results give it: 0 is the top of the file.
long long lineno(int32_t li) { return (long long)li + 1; }

// A setting's query report as the value of a one-word or many-word item:
// the count of its words in front.
result reported(const char *cmd)
{
    const cmd_entry *e = cmd_lookup(xffold(cmd));
    if (!e)
        return std::nullopt;
    std::string t = xfquery_text(e);
    int n = 0;
    std::string_view r = t;
    while (!xfword(r).empty())
        n++;
    return num(n) + " " + t;
}

// The value functions: each takes the operands after the item's name.
using value_fn = result (*)(std::string_view ops);

struct extract_row {
    const char *name; // minimum abbreviation in capitals
    value_fn fn;
};

result need_file(result r) { return xf ? r : std::nullopt; }

result x_equal(std::string_view)
{
    std::string last;
    xfhist_get(0, last);
    return one(last);
}
result x_alt(std::string_view) { return need_file("2 " + num(xf ? xf->chgsince : 0) + " " + num(xf ? xf->chgcount : 0)); }
result x_arbchar(std::string_view) { return "2 " + onoff(arbchar_on) + " " + std::string(1, arbchar); }
result x_arch(std::string_view) { return std::string("1 linux"); }
result x_autoexp(std::string_view) { return one(onoff(autoexp)); }
result x_binary(std::string_view) { return need_file(one(onoff(xf ? xf->bin : 0))); }
result x_hex(std::string_view) { return one(onoff(hex_on)); }
result x_insert(std::string_view) { return one(onoff(xfset_insert())); }
result x_keepblanks(std::string_view) { return need_file(one(onoff(xf ? xf->keepblanks : 0))); }
result x_macro(std::string_view) { return one(onoff(macro_first)); }
result x_rw(std::string_view) { return need_file(one(onoff(xf ? xf->rw : 0))); }
result x_shadow(std::string_view) { return one(onoff(xv->shadow)); }
result x_shblank(std::string_view) { return one(onoff(xfset_flag("SHBlank"))); }
result x_stay(std::string_view) { return one(onoff(stay_on)); }
result x_stream(std::string_view) { return one(onoff(xfset_flag("STReam"))); }
result x_varblank(std::string_view) { return one(onoff(varblank_on)); }
result x_wrap(std::string_view) { return one(onoff(wrap_on)); }
result x_autoi(std::string_view)
{
    return "2 " + onoff(autoindent) + (autoindent_stay ? " STAY" : " NOSTAY");
}
result x_autosave(std::string_view)
{
    std::string dir = autosave_dir.empty() ? "." : autosave_dir;
    std::string head = autosave_count ? num(autosave_count) : "OFF";
    if (!xf)
        return "4 " + head + " . 0 " + dir;
    return "4 " + head + " " + dir + " " + num(xf->chgsince) + " " + xfautoname(xfidx);
}
result x_case(std::string_view)
{
    if (!xf)
        return std::nullopt;
    int m = xf->case_mode; // 0 MI, 1 MR, 2 UI, 3 UR
    std::string s = m >= 2 ? "uppercase" : "mixed";
    s += m == 0 || m == 2 ? " ignore" : " respect";
    s += xf->case_c ? " respect" : " ignore";
    s += xf->case_s ? " respect" : " ignore";
    return "4 " + s;
}
result x_cdpath(std::string_view)
{
    std::string s;
    for (auto &d : cdpath)
        s += " " + d;
    return num((long long)cdpath.size()) + s;
}
result x_cmdline(std::string_view)
{
    int p = xv->cmdline_pos;
    if (p < 0)
        return std::string("1 OFF");
    return std::string(p == 1 || p == -1 ? "2 TOP " : "2 BOTTOM ") + num(p == 1 ? xv->y0 : xv->y0 + xv->nrows - 1);
}
result x_column(std::string_view) { return need_file(one(num(xf ? xf->colptr + 1 : 0))); }
result x_cring(std::string_view) { return one(num(xfidx < 0 ? 0 : ringpos[(size_t)xfidx])); }
result x_length(std::string_view)
{
    if (!xf)
        return std::nullopt;
    int32_t li = curline();
    if (li < 0 || li >= nbli())
        return std::string("1 0");
    const xfline &l = xf->lines[li];
    return one(num(xfcol_len(l.text, l.len, xf->utf8)));
}
result x_line(std::string_view) { return need_file(one(num(xf ? lineno(curline()) : 0))); }
result x_nbfile(std::string_view) { return one(num(nbfiles())); }
result x_qnc(std::string_view) { return one(num((long long)cmd_queue.size())); }
result x_size(std::string_view) { return need_file(one(num(nbli()))); }
result x_width(std::string_view) { return need_file(one(num(xf && xf->lrecl ? xf->lrecl : xfmax_cols))); }
result x_ctags(std::string_view) { return "2 " + xfset_text("CTags"); }
result x_ctlchar(std::string_view) { return "3 " + xfset_text("CTLchar"); }
result x_curline(std::string_view)
{
    std::string row = num(xv->curline_row);
    if (!xf)
        return "2 " + row;
    int32_t li = curline();
    if (li < 0 || li >= nbli())
        return "2 " + row + " " + num(lineno(li));
    const xfline &l = xf->lines[li];
    return "3 " + row + " " + num(lineno(li)) + " " + std::string(l.text, (size_t)l.len);
}
// Where a cursor record stands: its screen row and column (0 0 off the file
// area), then its line and column in the file.
std::string cursor_words(const xfcursor &c)
{
    int row = 0, col = 0;
    if (c.fld == 0 && c.li >= -1 && (size_t)c.ec < views.size()) {
        const xview *v = views[(size_t)c.ec];
        for (size_t r = 0; r < v->rows.size(); r++)
            if (v->rows[r].li == c.li && v->rows[r].fld) {
                row = v->y0 + (int)r;
                col = c.col - v->rows[r].col0 + 1;
                break;
            }
    }
    return " " + num(row) + " " + num(col) + " " + num(lineno(c.li)) + " " + num(c.col + 1);
}
result x_cursor(std::string_view)
{
    return need_file("12" + cursor_words(xfcursor_now()) + cursor_words(ptcu) + cursor_words(ptmo));
}
result x_display(std::string_view) { return "2 " + num(xv->display_lo) + " " + num(xv->display_hi); }
result x_flscreen(std::string_view)
{
    if (!xf)
        return std::nullopt;
    int32_t first = -1, last = -1;
    for (auto &r : xv->rows)
        if (r.fld && r.li >= 0 && r.li < nbli()) {
            if (first < 0)
                first = r.li;
            last = r.li;
        }
    if (first < 0)
        first = last = std::max(curline(), 0);
    return "2 " + num(lineno(first)) + " " + num(lineno(last));
}
result x_nbscope(std::string_view)
{
    if (!xf)
        return std::nullopt;
    long long n = 0, at = 0;
    for (int32_t li = 0; li < nbli(); li++)
        if (xfinscope(li)) {
            n++;
            if (li <= curline())
                at = n;
        }
    return "2 " + num(n) + " " + num(at);
}
result x_lrecl(std::string_view) { return need_file("2 " + num(xf ? xf->lrecl : 0)); }
result x_select(std::string_view)
{
    if (!xf)
        return std::nullopt;
    int32_t li = curline(), hi = 0;
    for (int32_t i = 0; i < nbli(); i++)
        hi = std::max<int32_t>(hi, xf->lines[i].selevel);
    return "2 " + num(li >= 0 && li < nbli() ? xf->lines[li].selevel : 0) + " " + num(hi);
}
result x_zone(std::string_view)
{
    if (!xf)
        return std::nullopt;
    const xfviewfile &p = xv->perfile[(size_t)xfidx];
    return "2 " + num(p.zone[0]) + " " + (p.zone[1] ? num(p.zone[1]) : std::string("*"));
}
result x_dyalog(std::string_view) { return one(onoff(!batch)); }
result x_environ(std::string_view ops)
{
    std::string n(xftrim(ops));
    const char *v = n.empty() ? nullptr : std::getenv(n.c_str());
    return v ? one(v) : result("0");
}
result x_extract(std::string_view);
result x_fdirectory(std::string_view) { return need_file(one(xf ? xfsplit_name(xf->fname).fd : "")); }
result x_fname(std::string_view) { return need_file(one(xf ? xfsplit_name(xf->fname).fn : "")); }
result x_ftype(std::string_view) { return need_file(one(xf ? xfsplit_name(xf->fname).ft : "")); }
result x_lfname(std::string_view) { return need_file(one(xf ? xfsplit_name(xf->fname).lfn : "")); }
result x_name(std::string_view) { return need_file(one(xf ? xf->fname : "")); }
result x_lastlorc(std::string_view) { return one(lastlorc); }
result x_lastmenu(std::string_view) { return one(last_menu); }
result x_lastmsg(std::string_view) { return one(last_message); }
result x_pwd(std::string_view)
{
    char buf[4096];
    return one(getcwd(buf, sizeof buf) ? buf : ".");
}
result x_rexx(std::string_view) { return std::string("1 REXX 4.00 22 Nov 2026 VORTA 1.0"); }
result x_set(std::string_view)
{
    std::string s;
    int n = 0;
    for (const cmd_entry *e : set_table())
        if (e->fn)
            s += " " + std::string(e->name), n++;
    return num(n) + s;
}
result x_softbench(std::string_view) { return std::string("1 OFF"); }
result x_source(std::string_view) { return one(rx_source_name()); }
result x_tabs(std::string_view)
{
    if (!xf)
        return std::nullopt;
    std::string s;
    for (int32_t c : xf->tabset)
        s += " " + num(c);
    return num((long long)xf->tabset.size()) + s;
}
result x_xshell(std::string_view) { return std::string("1 0"); }
result x_xhome(std::string_view) { return one(xhome); }
result x_xedlast(std::string_view) { return one(files.empty() ? std::string() : files.back()->fname); }
result x_format(std::string_view)
{
    if (!xf)
        return std::nullopt;
    return reported("FORMAT");
}
result x_highlight(std::string_view) { return one(xfset_text("HIghlight")); }
result x_impcmscp(std::string_view) { return std::string(impcmscp == 2 ? "1 XON" : impcmscp ? "1 ON" : "1 OFF"); }
result x_kedit(std::string_view) { return one(onoff(opt_kedit)); }
result x_pdf(std::string_view) { return one(onoff(opt_pdf)); }
result x_lscreen(std::string_view)
{
    return "6 " + num(xv->nrows) + " " + num(xv->ncols) + " " + num(xv->y0) + " " + num(xv->x0) + " " +
           num(page_rows) + " " + num(page_cols);
}
result x_margins(std::string_view)
{
    if (!xf)
        return std::nullopt;
    return reported("MARgins");
}
result x_mousemode(std::string_view) { return reported("MOUSEMode"); }
result x_number(std::string_view)
{
    int n = xf ? xv->perfile[(size_t)xfidx].number : xv->screen.number;
    return std::string(n == 2 ? "1 ZERO" : n ? "1 ON" : "1 OFF");
}
result x_obs(std::string_view) { return std::string("1 OFF"); }
result x_powerinput(std::string_view)
{
    if (!xf)
        return std::nullopt;
    return reported("POWerinput");
}
// SCALE and TABLINE: state, row, and the column of the view's left edge.
result row_item(int32_t xfviewfile::*field)
{
    if (!xf)
        return std::nullopt;
    int32_t v = xv->perfile[(size_t)xfidx].*field;
    int32_t row = v ? std::abs(v) : std::max(1, xv->curline_row ? xv->curline_row - 1 : 1);
    return "3 " + onoff(v > 0) + " " + num(row) + " " + num(xv->x0);
}
result x_scale(std::string_view) { return row_item(&xfviewfile::scale); }
result x_tabline(std::string_view) { return row_item(&xfviewfile::tabline); }
result x_scope(std::string_view) { return std::string(xv->scope == 1 ? "1 ALL" : "1 DISPLAY"); }
result x_screen(std::string_view)
{
    if (views.size() == 1)
        return "2 " + num(xv->nrows) + " " + num(xv->ncols);
    std::string s = num(1 + 2 * (long long)views.size()) + " " + num((long long)views.size());
    for (const xview *v : views)
        s += " " + num(v->nrows) + " " + num(v->ncols);
    return s;
}
result x_selection(std::string_view)
{
    int f = xfsel_file();
    if (f < 0)
        return std::string("8 NONE LINEAR NOPENDING 0 0 0 0 ") + (xf ? xf->fname : "");
    return "8 " + num(xfsel.kind) + (xfsel.kind == 3 ? " RECTANGULAR " : " LINEAR ") +
           (xfsel.pending ? "PENDING " : "NOPENDING ") + num(xfsel.l1) + " " + num(xfsel.c1) + " " +
           num(xfsel.l2) + " " + num(xfsel.c2) + " " + files[(size_t)f]->fname;
}
result x_sep(std::string_view) { return "2 " + onoff(linend_on) + " " + std::string(1, linend_char); }
result x_span(std::string_view)
{
    return "3 " + onoff(span_on) + (span_blank ? " BLANK " : " NOBLANK ") + (span_lines ? num(span_lines) : "*");
}
result x_spill(std::string_view) { return std::string("1 OFF"); }
result x_target(std::string_view)
{
    if (!xf || lastmatch.fileid != xf->fileid)
        return std::string("4 0 0 0 0");
    long long l = lineno(lastmatch.li);
    return "4 " + num(l) + " " + num(lastmatch.col + 1) + " " + num(l) + " " + num(lastmatch.col + lastmatch.len);
}
result x_trunc(std::string_view) { return need_file("2 " + num(xf ? xf->trunc : 0)); }
result x_verify(std::string_view)
{
    if (!xf)
        return std::nullopt;
    const xfviewfile &p = xv->perfile[(size_t)xfidx];
    std::string hi = p.verify[1] ? num(p.verify[1]) : std::string("*");
    return "2 " + num(p.verify[0]) + " " + hi;
}
result x_visible(std::string_view)
{
    return "2 " + num((long long)xv->rows.size()) + " " + num(xv->ncols);
}
result none(std::string_view) { return std::nullopt; }

// The 94 items in their order; the names of the items that set their own
// stems stand here too, so that EXTRACT /EXTRACT/ names them all.
constexpr extract_row rows[] = {
    {"=", x_equal},          {"ALT", x_alt},           {"ARBchar", x_arbchar},
    {"ARCH", x_arch},        {"AUTOExpand", x_autoexp}, {"BInary", x_binary},
    {"HEX", x_hex},          {"INSert", x_insert},     {"KEEPBlanks", x_keepblanks},
    {"MACRO", x_macro},      {"RW", x_rw},             {"SHADow", x_shadow},
    {"SHBlank", x_shblank},  {"STAY", x_stay},         {"STReam", x_stream},
    {"VARBLANK", x_varblank}, {"WRap", x_wrap},        {"AUTOI", x_autoi},
    {"AUtosave", x_autosave}, {"CASE", x_case},        {"CDpath", x_cdpath},
    {"CMDline", x_cmdline},  {"COLOR", none},          {"COLumn", x_column},
    {"CRing", x_cring},      {"LENgth", x_length},     {"LIne", x_line},
    {"NBFile", x_nbfile},    {"QNC", x_qnc},           {"SIZe", x_size},
    {"Width", x_width},      {"CTags", x_ctags},       {"CTLchar", x_ctlchar},
    {"CURLine", x_curline},  {"CURSor", x_cursor},     {"DISPlay", x_display},
    {"FLscreen", x_flscreen}, {"NBScope", x_nbscope},  {"LRecl", x_lrecl},
    {"SELect", x_select},    {"Zone", x_zone},         {"DYAlog", x_dyalog},
    {"ENTer", none},         {"ENViron", x_environ},   {"EXTRACT", x_extract},
    {"FDirectory", x_fdirectory}, {"FILE", none},      {"FName", x_fname},
    {"FONt", none},          {"FType", x_ftype},       {"LASTLorc", x_lastlorc},
    {"LASTMEnu", x_lastmenu}, {"LASTmsg", x_lastmsg},  {"LFName", x_lfname},
    {"NAme", x_name},        {"PENDing", none},        {"Point", none},
    {"PWD", x_pwd},          {"RESERved", none},       {"REXX", x_rexx},
    {"RMATCH", none},        {"SET", x_set},           {"SOftbench", x_softbench},
    {"SOURCE", x_source},    {"TABS", x_tabs},         {"VERSion", none},
    {"XSHell", x_xshell},    {"Xhome", x_xhome},       {"XEDlast", x_xedlast},
    {"MATCH", none},         {"RING", none},           {"FORMAT", x_format},
    {"HIghlight", x_highlight}, {"IMPcmscp", x_impcmscp}, {"KEDIT", x_kedit},
    {"PDF", x_pdf},          {"LScreen", x_lscreen},   {"MARgins", x_margins},
    {"MOUSEMode", x_mousemode}, {"NUMber", x_number},  {"OBS", x_obs},
    {"POWerinput", x_powerinput}, {"SCALE", x_scale},  {"TABLine", x_tabline},
    {"SCOPE", x_scope},      {"SCReen", x_screen},     {"SELECTION", x_selection},
    {"SEP", x_sep},          {"SPAN", x_span},         {"SPILL", x_spill},
    {"TARget", x_target},    {"TRUnc", x_trunc},       {"Verify", x_verify},
    {"VIsible", x_visible},
};
constexpr int NROWS = sizeof rows / sizeof rows[0];
static_assert(NROWS == 94, "the EXTRACT table has 94 rows");

result x_extract(std::string_view)
{
    std::string s = num(NROWS);
    for (const extract_row &r : rows)
        s += " " + std::string(r.name);
    return s;
}

// The minimum length of a name: the capitals in front.
int min_len(const char *name)
{
    int n = 0;
    while (name[n] && !(name[n] >= 'a' && name[n] <= 'z'))
        n++;
    return n;
}

const extract_row *find_row(std::string_view word)
{
    for (const extract_row &r : rows)
        if (abbrev(word, r.name, min_len(r.name)))
            return &r;
    return nullptr;
}

// ---------------------------------------------------------------------------
// Items that set their own stems.

void set_var(const std::string &stem, long long i, std::string_view v)
{
    rx_host_set(stem + "." + num(i), v);
}
void set_list(const std::string &stem, const std::vector<std::string> &lines)
{
    set_var(stem, 0, num((long long)lines.size()));
    for (size_t i = 0; i < lines.size(); i++)
        set_var(stem, (long long)i + 1, lines[i]);
}

// Each returns 0, or -1 when the item's operand is wrong.
using list_fn = int (*)(const std::string &stem, std::string_view ops);

int l_file(const std::string &stem, std::string_view)
{
    if (!xf)
        return -1;
    set_list(stem, {xf->fname, num(nbli()), num(xf->chgcount), xf->rw ? "RW" : "RO"});
    return 0;
}
int l_enter(const std::string &stem, std::string_view)
{
    // The definitions of Enter alone and with Shift, Ctrl, Alt and Shift+Ctrl.
    std::vector<std::string> defs;
    for (const std::string &l : xfkeys_list())
        if (l.find("ENTER ") != std::string::npos && defs.size() < 5) {
            std::string_view r = l;
            xfword(r);
            xfword(r);
            defs.emplace_back(xftrim(r));
        }
    defs.resize(5);
    for (size_t i = 0; i < 5; i++)
        set_var(stem, (long long)i, defs[i]);
    return 0;
}
int l_font(const std::string &stem, std::string_view)
{
    std::vector<std::string> w;
    std::string_view r = xffont_now();
    for (std::string_view x = xfword(r); !x.empty(); x = xfword(r))
        w.emplace_back(x);
    set_list(stem, w);
    return 0;
}
int l_match(const std::string &stem, std::string_view)
{
    std::string s;
    if (lastmatch.fileid >= 0)
        for (xfile *f : files)
            if (f->fileid == lastmatch.fileid && lastmatch.li >= 0 && lastmatch.li < f->nbli()) {
                const xfline &l = f->lines[lastmatch.li];
                int32_t a = xfcol_off(l.text, l.len, lastmatch.col, f->utf8);
                int32_t b = xfcol_off(l.text, l.len, lastmatch.col + lastmatch.len, f->utf8);
                s.assign(l.text + a, (size_t)(b - a));
            }
    set_list(stem, {s});
    return 0;
}
int l_rmatch(const std::string &stem, std::string_view ops)
{
    l_match(stem, ops);
    set_var(stem, 0, "3");
    set_var(stem, 2, num(lastmatch.col + 1));
    set_var(stem, 3, num(lastmatch.len));
    return 0;
}
// RESERved and Point take no operand but `*` (all of them).
bool plain(std::string_view ops)
{
    ops = xftrim(ops);
    if (ops.empty() || ops == "*")
        return true;
    xfmsgs("Invalid EXTRACT/RESERVED operand", 1);
    return false;
}
int l_reserved(const std::string &stem, std::string_view ops)
{
    if (!plain(ops))
        return -1;
    std::vector<std::string> w;
    if (xf)
        for (auto &r : xf->reserved)
            w.push_back(num(r.first) + " " + r.second);
    set_list(stem, w);
    return 0;
}
int l_point(const std::string &stem, std::string_view ops)
{
    if (!plain(ops))
        return -1;
    std::vector<std::string> w;
    if (xf)
        for (auto &p : xf->points)
            w.push_back(num(lineno(p.li)) + " " + p.name);
    set_list(stem, w);
    return 0;
}
int l_synonym(const std::string &stem, std::string_view)
{
    std::vector<std::string> w;
    for (auto &s : synonyms) {
        std::string t = s.name + " " + num(s.minlen);
        for (auto &x : s.expansions)
            t += " " + x;
        w.push_back(t);
    }
    set_list(stem, w);
    return 0;
}
int l_pending(const std::string &stem, std::string_view ops)
{
    // The first waiting entry that `[BLOCK] [OLDNAME] name|*` names: its
    // line, its name and the name typed; with no name, any entry.
    if (!xfpending_operand(ops)) {
        std::fprintf(stderr, "vorta: Invalid EXTRACT/PENDING/ operand\n");
        return -1;
    }
    std::string req(xftrim(ops));
    bool named;
    std::vector<xfpfx_row> found = xfpfx_find(req, named);
    if (!named)
        found = xfpfx_find(req + " *", named);
    if (found.empty()) {
        set_var(stem, 0, "0");
        return 0;
    }
    set_list(stem, {num(lineno(found[0].li)), found[0].name, found[0].old});
    return 0;
}
int l_ring(const std::string &stem, std::string_view)
{
    set_var(stem, 0, num(nbfiles()));
    set_var(stem, 1, num(xfidx + 1));
    for (int i = 0; i < nbfiles(); i++) {
        const xfile *f = files[(size_t)i];
        set_var(stem, i + 2, f->fname + " SIZE=" + num(f->nbli()) + (f->chgcount ? " ALT" : ""));
    }
    return 0;
}
int l_version(const std::string &stem, std::string_view)
{
    set_list(stem, {"1.0", "VORTA 1.0"});
    return 0;
}
int l_lastfiles(const std::string &stem, std::string_view)
{
    const char *home = std::getenv("HOME");
    set_list(stem, {onoff(lastfiles_on), num(lastfiles_max), std::string(home ? home : "") + "/vorta.lastfiles"});
    return 0;
}
int l_clipboard(const std::string &stem, std::string_view)
{
    // What a paste would insert, read from our own copy only: asking the
    // system's from a macro would block on another program.
    set_list(stem, pl_clip_own().lines);
    return 0;
}
int l_reclevel(const std::string &stem, std::string_view)
{
    set_list(stem, {num(macro_depth)});
    return 0;
}
int l_profile(const std::string &stem, std::string_view)
{
    set_list(stem, {profile_name, profile_args});
    return 0;
}
int l_color(const std::string &stem, std::string_view ops)
{
    std::string w = xffold(xftrim(ops));
    if (!w.empty()) {
        int item = xfcolour_item_find(w);
        if (item < 0)
            return -1;
        set_list(stem, {xfcolour_item_text(item)});
        return 0;
    }
    set_list(stem, xfcolours_list(false));
    return 0;
}

struct list_row {
    const char *name; // lower case
    int min;          // letters needed
    list_fn fn;
};
constexpr list_row lists[] = {
    {"file", 4, l_file},         {"enter", 3, l_enter},       {"font", 3, l_font},
    {"match", 5, l_match},       {"rmatch", 6, l_rmatch},     {"reserved", 5, l_reserved},
    {"point", 1, l_point},       {"synonym", 3, l_synonym},   {"pending", 4, l_pending},
    {"ring", 4, l_ring},         {"version", 4, l_version},   {"lastfiles", 5, l_lastfiles},
    {"clipboard", 9, l_clipboard}, {"reclevel", 8, l_reclevel}, {"profile", 7, l_profile},
    {"color", 5, l_color},
};

// One item: its stem is the name as written, "=" being "equalsign".
int extract_item(std::string_view item)
{
    item = xftrim(item);
    std::string_view ops = item;
    std::string_view word = xfword(ops);
    std::string stem = word == "=" ? "equalsign" : std::string(word);
    for (const list_row &l : lists)
        if (abbrev(word, l.name, l.min))
            return l.fn(stem, ops);
    const extract_row *r = find_row(word);
    result v = r ? r->fn(ops) : std::nullopt;
    if (!v)
        return -1;
    // The count first; the last value takes the rest of the text, blanks
    // and all, so that a name or a line with blanks stays whole.
    std::string_view t = *v;
    std::string_view cw = xfword(t);
    long n = 0;
    if (!xfnumber(cw, n) || n < 0)
        return -1;
    set_var(stem, 0, cw);
    if (!t.empty() && t.front() == ' ')
        t.remove_prefix(1);
    for (long i = 1; i <= n; i++) {
        std::string_view val;
        if (i < n) {
            while (!t.empty() && t.front() == ' ')
                t.remove_prefix(1);
            size_t e = t.find(' ');
            val = t.substr(0, e);
            t = e == std::string_view::npos ? std::string_view() : t.substr(e + 1);
        } else {
            val = t;
        }
        set_var(stem, i, val);
    }
    return 0;
}

} // namespace

int xfextract(std::string_view text)
{
    text = xftrim(text);
    if (text.empty())
        return -1;
    char delim = text.front();
    text.remove_prefix(1);
    while (!text.empty()) {
        size_t e = text.find(delim);
        std::string_view item = text.substr(0, e);
        text = e == std::string_view::npos ? std::string_view() : text.substr(e + 1);
        if (xftrim(item).empty())
            continue;
        if (int rc = extract_item(item))
            return rc;
    }
    return 0;
}

bool xfmacro_active()
{
    if (rx_running())
        return true;
    xfmsg(173, 1);
    cmd_rc = 1;
    return false;
}

int xfcm_extract(const xfcmd &c)
{
    xftrace("Commande xfcm_extract");
    if (!xfmacro_active())
        return 1;
    cmd_rc = xfextract(c.ops());
    return 1;
}
