// LOCATE in both vocabularies, the string searches `\`, `-\` and R/, named
// lines (Point), and the settings that steer every search: STAY, WRap,
// SPAN, VARblank, ARBchar, CASE, HEX, Zone, LASTLorc and REGtype.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "commands/xfregex.h"
#include "commands/xfsettings.h"
#include "session/xed.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

int bad(int rc)
{
    xfmsg(16, 1);
    cmd_rc = rc;
    return 1;
}

// The settings that are one switch: their flag and the return code of a
// wrong operand.
struct switch_row {
    const char *name; // trace label
    int *flag;        // the setting
    int badrc;        // cmd_rc of a wrong operand
};
constexpr switch_row switches[] = {
    {"Commande xfcm_stay", &stay_on, 5},
    {"Commande xfcm_varblank", &varblank_on, 5},
    {"Commande xfcm_hex", &hex_on, 1},
    {"Commande xfcm_wrap", &wrap_on, 1},
};

int one_switch(const xfcmd &c, const switch_row &r)
{
    xftrace(r.name);
    std::string_view op = xftrim(c.ops());
    if (op.empty())
        return xfreport_onoff(*r.flag);
    int v = xfonoff_word(op);
    if (v < 0)
        return bad(r.badrc);
    *r.flag = v;
    return 1;
}

// After a failed LOCATE-like search: the return code, and with WRap OFF the
// current line goes to the end it ran into unless STAY is ON.
void not_found(int dir)
{
    if (wrap_on) {
        cmd_rc = 2;
        return;
    }
    cmd_rc = 1;
    if (!stay_on)
        curline() = dir < 0 ? topline : std::max(topline, nbli() - 1);
}

// `\/string/`, `-\/string/`, `R/re/`, `R-/re/`: a search with the rest of
// the line as the string.
int string_search(std::string_view text, int dir, bool regex)
{
    if (!xf)
        return 1;
    int r = xfsearch_string(text, dir, regex, false, true, false);
    if (r == -3)
        cmd_rc = regex ? 1 : 5;
    else if (r == -2)
        not_found(dir);
    return 1;
}

} // namespace

int xfcm_stay(const xfcmd &c) { return one_switch(c, switches[0]); }
int xfcm_varblank(const xfcmd &c) { return one_switch(c, switches[1]); }
int xfcm_hex(const xfcmd &c) { return one_switch(c, switches[2]); }
int xfcm_wrap(const xfcmd &c) { return one_switch(c, switches[3]); }

int xfcm_fsearch(const xfcmd &c)
{
    if (c.line.substr(0, 1) != "\\")
        return 0;
    xftrace("Commande xfcm_fsearch");
    return string_search(c.line.substr(1), 1, false);
}

int xfcm_bsearch(const xfcmd &c)
{
    if (c.line.substr(0, 2) != "-\\")
        return 0;
    xftrace("Commande xfcm_bsearch");
    return string_search(c.line.substr(2), -1, false);
}

// R/re/ and R-/re/; alone, with nothing to look for, they are message 108.
int xfcm_rsearch(const xfcmd &c)
{
    std::string_view l = c.lline;
    int dir = l.substr(0, 2) == "r/" ? 1 : l.substr(0, 3) == "r-/" ? -1 : 0;
    if (!dir)
        return 0;
    xftrace("Commande xfcm_rsearch");
    std::string_view text = c.line.substr(dir > 0 ? 1 : 2);
    std::string_view body = xftrim(text.substr(1));
    if (body.empty() || body == "/") {
        xfmsg(108, 1);
        cmd_rc = 1;
        return 1;
    }
    return string_search(text, dir, true);
}

int xfcm_locate(const xfcmd &c)
{
    return modes.command_ispf ? xfcm_pdflocate(c) : xfcm_xedlocate(c);
}

int xfcm_xedlocate(const xfcmd &c)
{
    xftrace("Commande xfcm_xedlocate");
    if (!xf) {
        cmd_rc = 0;
        return 1;
    }
    std::string_view line = c.line;
    if (arbchar_on && arbchar == '$')
        line = c.orig;
    // The operand is what follows the command word as typed.
    size_t w = 0;
    while (w < line.size() && line[w] == ' ')
        w++;
    while (w < line.size() && ((line[w] >= 'a' && line[w] <= 'z') || (line[w] >= 'A' && line[w] <= 'Z')))
        w++;
    std::string_view t = xftrim(line.substr(w));
    if (t.empty())
        return bad(5);
    xflocate_line(t, c.ctx1, c.ctx2);
    return 1;
}

// PDFLocate: a label, a line number, or words naming a kind of line.
namespace {

struct kind_word {
    const char *word; // as typed, folded
    int min;          // letters needed
    int cls;          // 1 command, 2 error, 3 excluded, 4 label, 5 special
};
constexpr kind_word kinds[] = {
    {"command", 1, 1}, {"error", 3, 2}, {"excluded", 1, 3}, {"x", 1, 3},
    {"label", 3, 4},   {"special", 3, 5},
};

struct dir_word {
    const char *word; // folded
    int min;          // letters needed
    int dir;          // 1 forward, -1 backward
    bool from_end;    // from the range's ends, not the screen line
};
constexpr dir_word dirs[] = {
    {"first", 3, 1, true}, {"last", 3, -1, true}, {"next", 3, 1, false}, {"prev", 3, -1, false},
};

bool line_is(int cls, int32_t li)
{
    switch (cls) {
    case 1:
        for (auto *t : {&xf->pend1, &xf->pend2})
            for (auto &p : *t)
                if (p.li == li)
                    return true;
        return false;
    case 2:
        return xf->lines[li].stopmark() == 2;
    case 3:
        return !xfinscope(li);
    default: // 4 a label named with a leading dot, 5 one without
        for (auto &p : xf->points)
            if (p.li == li && (!p.name.empty() && p.name[0] == '.') == (cls == 4))
                return true;
        return false;
    }
}

} // namespace

int xfcm_pdflocate(const xfcmd &c)
{
    xftrace("Commande xfcm_pdflocate");
    if (!xf)
        return 1;
    std::string_view rest = xftrim(c.ops());
    if (rest.empty())
        return bad(1);
    long n;
    if (rest[0] == '.' && rest.find(' ') == std::string_view::npos) {
        int k = xfpoint_find(rest);
        if (k < 0) {
            xfmsg(178, 1);
            cmd_rc = 1;
            return 1;
        }
        curline() = xf->points[(size_t)k].li;
        return 1;
    }
    if (xfnumber(rest, n)) {
        curline() = (int32_t)std::clamp<long>(n - 1, 0, std::max(0, nbli() - 1));
        return 1;
    }
    int cls = 0;
    const dir_word *d = &dirs[2];
    std::vector<int32_t> range;
    while (!rest.empty()) {
        std::string_view w = xfword(rest);
        std::string f = xffold(w);
        bool known = false;
        for (auto &k : kinds)
            if (abbrev(f, k.word, k.min) || f == k.word) {
                cls = k.cls;
                known = true;
            }
        for (auto &dw : dirs)
            if (abbrev(f, dw.word, dw.min)) {
                d = &dw;
                known = true;
            }
        if (!known && w[0] == '.') {
            int k = xfpoint_find(w);
            if (k < 0) {
                xfmsg(178, 1);
                cmd_rc = 1;
                return 1;
            }
            range.push_back(xf->points[(size_t)k].li);
            known = true;
        }
        if (!known)
            return bad(1);
    }
    if (range.size() == 1) {
        xfmsg(179, 1);
        cmd_rc = 1;
        return 1;
    }
    if (!cls)
        return bad(1);
    int32_t lo = range.empty() ? 0 : std::min(range[0], range[1]);
    int32_t hi = range.empty() ? nbli() - 1 : std::max(range[0], range[1]);
    int32_t start = d->from_end ? (d->dir > 0 ? lo : hi) : curline() + d->dir;
    for (int32_t li = start; li >= lo && li <= hi; li += d->dir)
        if (li >= 0 && line_is(cls, li)) {
            curline() = li;
            return 1;
        }
    xfmsg(18, 1);
    cmd_rc = 1;
    return 1;
}

// Point: labels of the current line, of every line, or one label set or taken away.
int xfcm_point(const xfcmd &c)
{
    xftrace("Commande xfcm_point");
    if (!xf)
        return 1;
    std::string_view rest = xftrim(c.ops());
    std::string_view a = xfword(rest);
    std::string_view b = xfword(rest);
    if (!xftrim(rest).empty())
        return bad(5);
    int32_t cur = curline();
    if (a.empty()) {
        std::string s;
        for (auto &p : xf->points)
            if (p.li == cur)
                s += (s.empty() ? "" : " ") + p.name;
        xfmsgs(s, 0);
        return 1;
    }
    bool off = !b.empty() && xfonoff_word(b) == 0;
    if (!b.empty() && !off)
        return bad(5);
    if (a == "*") {
        if (off) {
            xf->points.clear();
            return 1;
        }
        std::vector<int32_t> lines;
        for (auto &p : xf->points)
            lines.push_back(p.li);
        std::sort(lines.begin(), lines.end());
        lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
        int width = std::clamp((int)std::to_string(nbli()).size(), 1, 8);
        bool zero = xv->perfile[(size_t)xfidx].number == 2;
        for (int32_t li : lines) {
            char buf[40];
            std::snprintf(buf, sizeof buf, "Line %*.*d: ", width, width, zero ? li : li + 1);
            std::string s = buf;
            bool firstname = true;
            for (auto &p : xf->points)
                if (p.li == li) {
                    s += (firstname ? "" : " ") + p.name;
                    firstname = false;
                }
            xfmsgs(s, 0);
        }
        return 1;
    }
    if (a[0] != '.' || a.size() < 2)
        return bad(5);
    int k = xfpoint_find(a);
    if (off) {
        if (k < 0) {
            xfmsg(166, 1);
            cmd_rc = 2;
            return 1;
        }
        xf->points.erase(xf->points.begin() + k);
        return 1;
    }
    if (k >= 0 && xf->points[(size_t)k].li != cur) {
        xfmsgs("..... Name " + std::string(a) + " already in use.", 1);
        cmd_rc = 1;
        return 1;
    }
    if (k < 0)
        xf->points.push_back({std::string(a), cur});
    return 1;
}

// SPAN ON|OFF [BLANK|NOBLANK [n|*]]
int xfcm_span(const xfcmd &c)
{
    xftrace("Commande xfcm_span");
    std::string_view rest = xftrim(c.ops());
    if (rest.empty()) {
        char buf[64];
        if (span_lines > 0)
            std::snprintf(buf, sizeof buf, "..... %s %s %d", span_on ? "ON" : "OFF",
                          span_blank ? "B" : "N", span_lines);
        else
            std::snprintf(buf, sizeof buf, "..... %s %s *", span_on ? "ON" : "OFF",
                          span_blank ? "B" : "N");
        xfmsgs(buf, 0);
        return 1;
    }
    int on = xfonoff_word(xfword(rest));
    if (on < 0)
        return bad(5);
    int blank = span_blank;
    int32_t lines = span_lines;
    std::string_view w = xfword(rest);
    if (!w.empty()) {
        std::string f = xffold(w);
        if (abbrev(f, "blank", 1))
            blank = 1;
        else if (abbrev(f, "noblank", 1))
            blank = 0;
        else
            return bad(5);
        w = xfword(rest);
        long n;
        if (w == "*")
            lines = 0;
        else if (!w.empty()) {
            if (!xfnumber(w, n) || n < 1 || n > 2147483646L)
                return bad(5);
            lines = (int32_t)n;
        }
        if (!xftrim(rest).empty())
            return bad(5);
    }
    span_on = on;
    span_blank = blank;
    span_lines = lines;
    return 1;
}

// ARBchar ON|OFF [c]
int xfcm_arbchar(const xfcmd &c)
{
    xftrace("Commande xfcm_arbchar");
    std::string_view rest = xftrim(c.ops());
    if (rest.empty()) {
        char buf[32];
        std::snprintf(buf, sizeof buf, "..... is %s %c", arbchar_on ? "ON" : "OFF", arbchar);
        xfmsgs(buf, 0);
        return 1;
    }
    std::string f = xffold(xfword(rest));
    int on = f == "on" ? 1 : f == "off" ? 0 : -1;
    if (on < 0)
        return bad(5);
    std::string_view ch = xfword(rest);
    if (ch.size() > 1 || !xftrim(rest).empty())
        return bad(5);
    arbchar_on = on;
    if (!ch.empty())
        arbchar = ch[0];
    return 1;
}

// CASE Mixed|Uppercase Ignore|Respect CRespect|CIgnore SRespect|SIgnore [FT type]
int xfcm_case(const xfcmd &c)
{
    xftrace("Commande xfcm_case");
    std::string_view rest = xftrim(c.ops());
    if (rest.empty()) {
        if (!xf)
            return 1;
        std::string s = "..... Case ";
        s += xf->case_mode >= 2 ? "Uppercase " : "Mixed ";
        s += xf->case_mode & 1 ? "Respect " : "Ignore ";
        s += xf->case_c ? "CRespect" : "CIgnore";
        s += xf->case_s ? " SRespect" : " SIgnore";
        xfmsgs(s, 0);
        return 1;
    }
    int upper = -1, respect = -1, cr = -1, sr = -1;
    std::string ft;
    bool has_ft = false;
    while (!rest.empty()) {
        std::string f = xffold(xfword(rest));
        if (f.size() >= 2 && f.compare(0, 2, "cr") == 0)
            cr = 1;
        else if (f.size() >= 2 && f.compare(0, 2, "ci") == 0)
            cr = 0;
        else if (f.size() >= 2 && f.compare(0, 2, "sr") == 0)
            sr = 1;
        else if (f.size() >= 2 && f.compare(0, 2, "si") == 0)
            sr = 0;
        else if (f == "ft") {
            ft.assign(xfword(rest));
            has_ft = true;
            if (ft.empty())
                return bad(5);
        } else if (f[0] == 'u')
            upper = 1;
        else if (f[0] == 'm')
            upper = 0;
        else if (f[0] == 'r')
            respect = 1;
        else if (f[0] == 'i')
            respect = 0;
        else
            return bad(5);
    }
    auto apply = [&](int &mode, int &c_, int &s_) {
        if (upper >= 0)
            mode = (mode & 1) | (upper ? 2 : 0);
        if (respect >= 0)
            mode = (mode & 2) | respect;
        if (cr >= 0)
            c_ = cr;
        if (sr >= 0)
            s_ = sr;
    };
    if (has_ft) {
        // The row for files of that type, kept as four letters.
        auto it = std::find_if(ext_case.begin(), ext_case.end(),
                               [&](const xfextdef &e) { return e.ext == ft; });
        if (it == ext_case.end())
            it = ext_case.insert(ext_case.end(), {ft, "MRRR"});
        int mode = (it->value[0] == 'U' ? 2 : 0) | (it->value[1] == 'R' ? 1 : 0);
        int c_ = it->value.size() > 2 ? it->value[2] == 'R' : 1;
        int s_ = it->value.size() > 3 ? it->value[3] == 'R' : 1;
        apply(mode, c_, s_);
        it->value = std::string(1, mode & 2 ? 'U' : 'M') + (mode & 1 ? 'R' : 'I') +
                    (c_ ? 'R' : 'I') + (s_ ? 'R' : 'I');
    }
    if (xf && (!has_ft || ft == "*" || ft == xfext(xf->fname))) {
        int mode = xf->case_mode, c_ = xf->case_c, s_ = xf->case_s;
        apply(mode, c_, s_);
        xf->case_mode = mode;
        xf->case_c = c_;
        xf->case_s = s_;
    }
    return 1;
}

// Zone a b: the columns searched, from 1; `*` or nothing for the line's end.
int xfcm_zone(const xfcmd &c)
{
    xftrace("Commande xfcm_zone");
    if (!xf)
        return 1;
    int32_t *z = xv->perfile[(size_t)xfidx].zone;
    std::string_view rest = xftrim(c.ops());
    if (rest.empty()) {
        char buf[64];
        if (z[1] <= 0)
            std::snprintf(buf, sizeof buf, "...... is %d *", z[0]);
        else
            std::snprintf(buf, sizeof buf, "...... is %d %d", z[0], z[1]);
        xfmsgs(buf, 0);
        return 1;
    }
    std::string_view a = xfword(rest), b = xfword(rest);
    long l, r = 0;
    if (!xfnumber(a, l) || l < 1 || l > xfmax_cols || !xftrim(rest).empty())
        return bad(5);
    if (!b.empty() && b != "*" && (!xfnumber(b, r) || r < l || r > xfmax_cols))
        return bad(5);
    z[0] = (int32_t)l;
    z[1] = (int32_t)r;
    return 1;
}

// ZONE_Screen: the zone new files of this screen take.
int xfcm_zone_screen(const xfcmd &c)
{
    xftrace("Commande xfcm_zone_screen");
    std::string_view rest = xftrim(c.ops());
    int32_t *z = xv->screen.zone;
    if (rest.empty()) {
        char buf[64];
        std::snprintf(buf, sizeof buf, z[1] <= 0 ? "...... is %d *" : "...... is %d %d", z[0], z[1]);
        xfmsgs(buf, 0);
        return 1;
    }
    std::string_view a = xfword(rest), b = xfword(rest);
    long l, r = 0;
    if (!xfnumber(a, l) || l < 1 || l > xfmax_cols || !xftrim(rest).empty())
        return bad(5);
    if (!b.empty() && b != "*" && (!xfnumber(b, r) || r < l || r > xfmax_cols))
        return bad(5);
    z[0] = (int32_t)l;
    z[1] = (int32_t)r;
    return 1;
}

// LASTLorc: the text of the last LOCATE or CHANGE, shown or set.
int xfcm_lastlorc(const xfcmd &c)
{
    xftrace("Commande xfcm_lastlorc");
    std::string_view rest = c.ops();
    if (xftrim(rest).empty())
        xfmsgs(lastlorc, 0);
    else
        lastlorc.assign(rest);
    return 1;
}

// REGtype LEGACY|ECMASCRIPT|PCRE: the engine of regular expressions.
int xfcm_regtype(const xfcmd &c)
{
    xftrace("Commande xfcm_regtype");
    std::string_view rest = xftrim(c.ops());
    if (rest.empty()) {
        xfmsg(regtype == 0 ? 208 : 209, 0);
        return 1;
    }
    std::string_view w = xfword(rest);
    std::string f = xffold(w);
    if (!xftrim(rest).empty())
        return bad(1);
    struct row {
        const char *word;
        int code;
    };
    static constexpr row rows[] = {{"legacy", 0}, {"ecmascript", 1}, {"pcre", 1}};
    for (auto &r : rows)
        if (std::strncmp(r.word, f.c_str(), f.size()) == 0 && !f.empty()) {
            regtype = r.code;
            return 1;
        }
    return bad(1);
}
