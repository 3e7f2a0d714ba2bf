// The page's commands: SCReen and its division of the grid, and the
// settings that shape a view (CMDline, CURLine, NUMber, PREfix) or typing
// (AUTOExp, AUTOIndent).
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "commands/xfsettings.h"
#include "session/xed.h"
#include "session/xfpage.h"
#include "fields/fields.h"

#include <algorithm>
#include <cctype>

#include <cstdio>
#include <cstdlib>

extern int autoexp;
extern int autoindent;
extern int autoindent_stay;

namespace {

struct rect {
    int row, col, rows, cols; // from 1
};

int fail(const char *fmt, int a, int b = 0)
{
    char buf[96];
    std::snprintf(buf, sizeof buf, fmt, a, b);
    xfmsgs(buf, 1);
    cmd_rc = 1;
    return 1;
}

// The rectangles of a division over rows x cols.
std::vector<rect> rects_of(const xfscreendef &d, int rows, int cols)
{
    std::vector<rect> r;
    auto split = [&](int total, const std::vector<int> &sizes, bool equal, int n) {
        std::vector<int> out;
        if (equal) {
            for (int i = 0; i < n; i++)
                out.push_back(i + 1 < n ? total / n : total - (total / n) * (n - 1));
        } else {
            int used = 0;
            for (size_t i = 0; i + 1 < sizes.size(); i++) {
                out.push_back(sizes[i]);
                used += sizes[i];
            }
            out.push_back(total - used);
        }
        return out;
    };
    int n = d.a.empty() ? 1 : d.a[0];
    switch (d.kind) {
    case 0:
    case 2: {
        std::vector<int> h = split(rows, d.a, d.kind == 0, n);
        int y = 1;
        for (int v : h) {
            r.push_back({y, 1, v, cols});
            y += v;
        }
        break;
    }
    case 1:
    case 3: {
        std::vector<int> w = split(cols, d.a, d.kind == 1, n);
        int x = 1;
        for (int v : w) {
            r.push_back({1, x, rows, v});
            x += v;
        }
        break;
    }
    default:
        for (size_t i = 0; i + 3 < d.a.size(); i += 4)
            r.push_back({d.a[i], d.a[i + 1], d.a[i + 2], d.a[i + 3]});
    }
    return r;
}

int check(const std::vector<rect> &r, int rows, int cols)
{
    for (size_t i = 0; i < r.size(); i++) {
        const rect &a = r[i];
        int n = (int)i + 1;
        if (a.rows < 6)
            return fail("..... Screen %d: should have at least %d lines", n, 6);
        if (a.cols < 38)
            return fail("..... Screen %d: should have at least %d columns", n, 38);
        if (a.row < 1 || a.col < 1 || a.row + a.rows - 1 > rows || a.col + a.cols - 1 > cols)
            return fail("..... Screen %d out of bounds", n);
        for (size_t j = 0; j < i; j++) {
            const rect &b = r[j];
            bool apart = a.row + a.rows <= b.row || b.row + b.rows <= a.row ||
                         a.col + a.cols <= b.col || b.col + b.cols <= a.col;
            if (!apart)
                return fail("..... Screen %d overlaps screen %d", n, (int)j + 1);
        }
    }
    return 0;
}

} // namespace

int xfscreen_apply(const xfscreendef &d, bool check_only)
{
    int rows = page_rows - nbpf, cols = page_cols;
    std::vector<rect> r = rects_of(d, rows, cols);
    if (r.empty())
        return fail("..... Invalid parameters", 0);
    if (pageok && check(r, rows, cols))
        return 1;
    if (check_only)
        return 0;
    int fileidx = xv ? xv->fileidx : -1;
    int32_t cur = xf ? curline() : -1;
    while (views.size() < r.size()) {
        auto *v = new xview(*views[0]);
        v->rows.clear();
        v->cmdline.clear();
        v->cmdcursor = 0;
        v->msgs.clear();
        v->msgshown = 0;
        v->fileidx = fileidx;
        if (fileidx >= 0)
            v->perfile[(size_t)fileidx].curline = cur;
        views.push_back(v);
    }
    while (views.size() > r.size()) {
        delete views.back();
        views.pop_back();
    }
    for (size_t i = 0; i < r.size(); i++) {
        xview *v = views[i];
        v->y0 = r[i].row;
        v->x0 = r[i].col;
        v->nrows = r[i].rows;
        v->ncols = r[i].cols;
    }
    xfsetview(std::min(xvidx < 0 ? 0 : xvidx, (int)views.size() - 1));
    return 0;
}

// SCReen n [Horizontal|Vertical] | SIZE/LINES a ... | WIDTH/COLUMNS a ... |
// DEFINE row col rows cols ...
int xfcm_screen(const xfcmd &c)
{
    xftrace("Commande xfcm_screen");
    if (batch)
        return 1;
    std::string_view rest = c.ops();
    std::vector<std::string> w;
    for (std::string_view x = xfword(rest); !x.empty(); x = xfword(rest))
        w.push_back(xffold(x));
    xfscreendef d;
    long n;
    auto numbers = [&](size_t from) {
        for (size_t i = from; i < w.size(); i++) {
            if (!xfnumber(w[i], n) || n < 1)
                return false;
            d.a.push_back((int)n);
        }
        return !d.a.empty();
    };
    bool ok = false;
    if (w.empty()) {
        xfmsgs("..... Is " + std::to_string(views.size()), 0);
        return 1;
    }
    if (xfnumber(w[0], n) && n >= 1) {
        d.a.push_back((int)n);
        if (w.size() == 1 || (w.size() == 2 && abbrev(w[1], "horizontal", 1)))
            d.kind = 0, ok = true;
        else if (w.size() == 2 && abbrev(w[1], "vertical", 1))
            d.kind = 1, ok = true;
    } else if (w[0] == "size" || w[0] == "lines") {
        d.kind = 2, ok = numbers(1);
    } else if (w[0] == "width" || w[0] == "columns") {
        d.kind = 3, ok = numbers(1);
    } else if (w[0] == "define") {
        d.kind = 4, ok = numbers(1) && d.a.size() % 4 == 0;
    }
    if (!ok) {
        xfmsg(16, 1);
        cmd_rc = 1;
        return 1;
    }
    if (xfscreen_apply(d, false) == 0)
        screen_def = d;
    return 1;
}

// CMDline [ON|OFF] [TOP|BOTTOM]
int xfcm_cmdline(const xfcmd &c)
{
    xftrace("Commande xfcm_cmdline");
    std::string_view rest = c.ops();
    std::string a = xffold(xfword(rest)), b = xffold(xfword(rest));
    int pos = xv->cmdline_pos;
    if (a.empty()) {
        xfmsgs(pos < 0 ? "..... Is OFF" : std::abs(pos) == 1 ? "..... Is ON TOP" : "..... Is ON BOTTOM", 0);
        return 1;
    }
    int on = pos > 0, where = std::abs(pos);
    for (const std::string &x : {a, b}) {
        if (x.empty())
            continue;
        if (x == "on")
            on = 1;
        else if (abbrev(x, "off", 2))
            on = 0;
        else if (abbrev(x, "top", 1))
            where = 1;
        else if (abbrev(x, "bottom", 1))
            where = 2;
        else {
            xfmsg(16, 1);
            cmd_rc = 1;
            return 1;
        }
    }
    xv->cmdline_pos = on ? where : -where;
    return 1;
}

// CURLine [ON] n | M (the middle)
int xfcm_curline(const xfcmd &c)
{
    xftrace("Commande xfcm_curline");
    std::string_view rest = c.ops();
    std::string a = xffold(xfword(rest));
    if (a == "on")
        a = xffold(xfword(rest));
    long n;
    if (a.empty()) {
        xfmsgs("..... Is " + std::to_string(xv->curline_row), 0);
        return 1;
    }
    // 0 is the middle too, as the report gives it.
    if (a == "m")
        xv->curline_row = 0;
    else if (xfnumber(a, n) && n >= 0)
        xv->curline_row = (int)n;
    else {
        xfmsg(16, 1);
        cmd_rc = 1;
    }
    return 1;
}

// NUMber ON|OFF|ZERO
int xfcm_number(const xfcmd &c)
{
    xftrace("Commande xfcm_number");
    std::string a = xffold(xftrim(c.ops()));
    int *num = xf ? &xv->perfile[(size_t)xfidx].number : &xv->screen.number;
    if (a.empty()) {
        xfmsg(*num == 2 ? 170 : *num ? 9 : 10, 0);
        return 1;
    }
    if (a == "on")
        *num = 1;
    else if (abbrev(a, "off", 2))
        *num = 0;
    else if (abbrev(a, "zero", 1))
        *num = 2;
    else {
        xfmsg(16, 1);
        cmd_rc = 1;
    }
    return 1;
}

int xfcm_autoexp(const xfcmd &c)
{
    xftrace("Commande xfcm_autoexp");
    return xfonoff(c, autoexp);
}

// AUTOIndent ON|OFF [STAY|NOSTAY]
int xfcm_autoindent(const xfcmd &c)
{
    xftrace("Commande xfcm_autoindent");
    std::string_view rest = c.ops();
    std::string a = xffold(xfword(rest)), b = xffold(xfword(rest));
    if (a.empty()) {
        xfmsg(autoindent ? (autoindent_stay ? 71 : 72) : (autoindent_stay ? 73 : 74), 0);
        return 1;
    }
    int on;
    if (a == "on")
        on = 1;
    else if (abbrev(a, "off", 2))
        on = 0;
    else {
        xfmsg(16, 1);
        cmd_rc = 1;
        return 1;
    }
    int stay = autoindent_stay;
    if (b == "stay")
        stay = 1;
    else if (b == "nostay")
        stay = 0;
    else if (!b.empty()) {
        xfmsg(16, 1);
        cmd_rc = 1;
        return 1;
    }
    autoindent = on;
    autoindent_stay = stay;
    return 1;
}

// SCALe and TABLine, and their _Screen defaults: [ON|OFF] [row], the row
// counted in the file area, negative while OFF, 0 never set (`defrow` then).
int xfrow_setting(const xfcmd &c, int32_t &v, int32_t defrow)
{
    std::string_view rest = c.ops();
    std::string a = xffold(xfword(rest)), b = xffold(xfword(rest));
    int32_t row = v ? std::abs(v) : defrow;
    if (a.empty()) {
        xfmsgs((v > 0 ? "..... Is ON " : "..... Is OFF ") + std::to_string(row), 0);
        return 1;
    }
    long n;
    bool on = v > 0;
    if (a == "on")
        on = true;
    else if (abbrev(a, "off", 2))
        on = false;
    else if (xfnumber(a, n) && n >= 1 && b.empty())
        row = (int32_t)n, on = true;
    else
        return xfmsg(16, 1), cmd_rc = 1, 1;
    if (!b.empty()) {
        if (!xfnumber(b, n) || n < 1)
            return xfmsg(16, 1), cmd_rc = 1, 1;
        row = (int32_t)n;
    }
    v = on ? row : -row;
    return 1;
}

namespace {

int row_setting(const xfcmd &c, int32_t xfviewfile::*field)
{
    if (!xf) {
        xfmsg(136, 1);
        cmd_rc = 1;
        return 1;
    }
    return xfrow_setting(c, xv->perfile[(size_t)xfidx].*field,
                         std::max(1, xv->curline_row ? xv->curline_row - 1 : 1));
}

} // namespace

int xfcm_scale(const xfcmd &c)
{
    xftrace("Commande xfcm_scale");
    return row_setting(c, &xfviewfile::scale);
}

int xfcm_tabline(const xfcmd &c)
{
    xftrace("Commande xfcm_tabline");
    return row_setting(c, &xfviewfile::tabline);
}

// RESERved row text | RESERved row OFF; a negative row counts from the
// view's bottom.
int xfcm_reserved(const xfcmd &c)
{
    xftrace("Commande xfcm_reserved");
    if (!xf) {
        xfmsg(136, 1);
        cmd_rc = 1;
        return 1;
    }
    std::string_view rest = c.ops();
    std::string_view w = xfword(rest);
    long n;
    bool neg = !w.empty() && w[0] == '-';
    if (w.empty() || !xfnumber(neg ? w.substr(1) : w, n) || n == 0) {
        xfmsg(16, 1);
        cmd_rc = 1;
        return 1;
    }
    int32_t row = (int32_t)(neg ? -n : n);
    auto &r = xf->reserved;
    r.erase(std::remove_if(r.begin(), r.end(), [&](const auto &x) { return x.first == row; }), r.end());
    std::string_view text = rest.empty() ? rest : rest.substr(1);
    if (xffold(xftrim(text)) != "off")
        r.emplace_back(row, std::string(text));
    return 1;
}

int xfcm_mousemode(const xfcmd &c)
{
    xftrace("Commande xfcm_mousemode");
    std::string a = xffold(xftrim(c.ops()));
    static std::string mode = "WINDOWS";
    if (a.empty()) {
        xfmsgs("..... Is " + mode, 0);
        return 1;
    }
    std::string up = a;
    for (auto &ch : up)
        ch = (char)std::toupper((unsigned char)ch);
    if (!batch && fs_layer() && asfmousemode(up.c_str()) != 0) {
        xfmsg(16, 1);
        cmd_rc = 1;
        return 1;
    }
    if (up != "OPENLOOK" && up != "OPENLOOKW" && up != "MOTIF" && up != "WINDOWS") {
        xfmsg(16, 1);
        cmd_rc = 1;
        return 1;
    }
    mode = up;
    return 1;
}

int xfcm_clickdelay(const xfcmd &c)
{
    xftrace("Commande xfcm_clickdelay");
    std::string_view a = xftrim(c.ops());
    if (a.empty()) {
        char buf[64] = "..... is 0.30";
        if (!batch && fs_layer())
            asqclickdelay(buf, sizeof buf);
        xfmsgs(buf, 0);
        return 1;
    }
    char *end = nullptr;
    std::string s(a);
    double d = std::strtod(s.c_str(), &end);
    if (end == s.c_str() || *end || d <= 0) {
        xfmsg(16, 1);
        cmd_rc = 1;
        return 1;
    }
    if (!batch && fs_layer())
        asfclickdelay(d);
    return 1;
}

// REPEATDelay d1 d2 d3 d4, in milliseconds, each at least 1.
int xfcm_repeatdelay(const xfcmd &c)
{
    xftrace("Commande xfcm_repeatdelay");
    static int d[4] = {400, 50, 400, 50};
    std::string_view rest = c.ops();
    if (xftrim(rest).empty()) {
        char buf[80];
        std::snprintf(buf, sizeof buf, "..... Is %d %d %d %d", d[0], d[1], d[2], d[3]);
        xfmsgs(buf, 0);
        return 1;
    }
    int v[4];
    for (int &x : v) {
        long n;
        if (!xfnumber(xfword(rest), n) || n < 1) {
            xfmsg(16, 1);
            cmd_rc = 1;
            return 1;
        }
        x = (int)n;
    }
    if (!xftrim(rest).empty()) {
        xfmsg(16, 1);
        cmd_rc = 1;
        return 1;
    }
    std::copy(v, v + 4, d);
    if (!batch && fs_layer())
        asfrepdelay(d[0], d[1], d[2], d[3]);
    return 1;
}
