// Selective display: ALl, EXClude and SHOw choose the lines a view shows by
// giving each line a selection level; DISPlay sets the range of levels that
// is shown, SCOpe whether line walks see the hidden lines too, SHAdow whether
// a row stands for each run of hidden lines.
//
// Levels are not part of the text, so these commands never touch the undo
// journal: undoing a change leaves the selection alone, as users expect.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "session/xed.h"

#include <cstdint>
#include <cstdio>
#include <vector>

namespace {

constexpr int32_t LEVEL_MAX = 2147483647; // `*` of DISPlay

// The level that hides a line: one above the range, unless the range
// already reaches the largest level (then nothing can be hidden).
int32_t hidden_level()
{
    return xv->display_hi == LEVEL_MAX ? LEVEL_MAX : xv->display_hi + 1;
}

// Per-line state of an evaluation: whether the expression has selected the
// line, and whether it is tested at all.
enum : uint8_t { MARK = 1, TESTED = 2 };

bool blank_line(const xfline &l)
{
    for (int32_t k = 0; k < l.len; k++)
        if (l.text[k] != ' ')
            return false;
    return true;
}

// One part of the expression over the tested lines. An "and" part can only
// take marks away, an "or" part only add them, so each looks only at the
// lines it may change.
bool apply_part(const xfselpart &p, char op, std::vector<uint8_t> &st)
{
    xfpat pat;
    if (!p.blank && !xfpat_init(pat, p.str, xfcase_ignore(), p.word, p.regex)) {
        cmd_rc = 5;
        return false;
    }
    int32_t n = nbli();
    for (int32_t li = 0; li < n; li++) {
        uint8_t &s = st[(size_t)li];
        if (!(s & TESTED) || (op == '&') != ((s & MARK) != 0))
            continue;
        const xfline &l = xf->lines[li];
        bool hit;
        if (p.blank) {
            hit = blank_line(l);
        } else {
            int32_t zl, zr, ms, me;
            xfzone_bytes(li, zl, zr);
            hit = xfpat_find(pat, l.text, l.len, zl, zr, zl, ms, me);
        }
        if (hit != p.neg)
            s |= MARK;
        else
            s &= (uint8_t)~MARK;
    }
    return true;
}

// Evaluates `text` over the lines whose state has TESTED (they start
// marked). False with the message given: a bad expression, or no line
// selected (message 18, cmd_rc 2).
bool evaluate(std::string_view text, std::vector<uint8_t> &st)
{
    xfselexpr e;
    if (!xfselexpr_parse(text, e))
        return false;
    for (size_t k = 0; k < e.parts.size(); k++)
        if (!apply_part(e.parts[k], k ? e.conns[k - 1] : '&', st))
            return false;
    for (uint8_t s : st)
        if (s & MARK)
            return true;
    xfmsg(18, 1);
    cmd_rc = 2;
    return false;
}

// Lines in scope are tested (all of them under SCOPE ALL), or with
// `hidden` the lines out of scope instead.
std::vector<uint8_t> start_state(bool hidden)
{
    std::vector<uint8_t> st((size_t)nbli());
    for (int32_t li = 0; li < nbli(); li++)
        if (xfinscope(li) != hidden)
            st[(size_t)li] = MARK | TESTED;
    return st;
}

std::string_view operand(const xfcmd &c)
{
    std::string_view t = c.ops();
    while (!t.empty() && t.back() == ' ')
        t.remove_suffix(1);
    return t;
}

// The first line at or after the current one that is shown, else the last
// shown before it, else the top.
void settle_current()
{
    int32_t cur = std::max(0, curline());
    for (int32_t li = cur; li < nbli(); li++)
        if (xfinscope(li)) {
            curline() = li;
            return;
        }
    for (int32_t li = std::min(cur, nbli()) - 1; li >= 0; li--)
        if (xfinscope(li)) {
            curline() = li;
            return;
        }
    curline() = topline;
}

} // namespace

int xfsel_all(std::string_view expr)
{
    if (!xf)
        return 0;
    int32_t hi = xv->display_hi, hid = hidden_level();
    if (expr.empty()) {
        for (int32_t li = 0; li < nbli(); li++)
            xf->lines[li].selevel = hi;
    } else {
        std::vector<uint8_t> st = start_state(false);
        if (!evaluate(expr, st))
            return cmd_rc;
        for (int32_t li = 0; li < nbli(); li++)
            xf->lines[li].selevel = st[(size_t)li] & MARK ? hi : hid;
    }
    xv->scope = 0;
    curline() = topline;
    return 0;
}

int xfsel_exclude(std::string_view expr)
{
    if (!xf)
        return 0;
    int32_t hi = xv->display_hi, hid = hidden_level();
    std::vector<uint8_t> st = start_state(false);
    if (!expr.empty() && !evaluate(expr, st))
        return cmd_rc;
    for (int32_t li = 0; li < nbli(); li++) {
        uint8_t s = st[(size_t)li];
        if (s & TESTED)
            xf->lines[li].selevel = s & MARK ? hid : hi;
    }
    xv->scope = 0;
    settle_current();
    return 0;
}

int xfsel_show(std::string_view expr)
{
    if (!xf)
        return 0;
    // The hidden lines the expression selects come back; the others, and
    // the current line, stay as they are.
    int32_t hi = xv->display_hi;
    std::vector<uint8_t> st = start_state(true);
    if (!expr.empty() && !evaluate(expr, st))
        return cmd_rc;
    for (int32_t li = 0; li < nbli(); li++)
        if (st[(size_t)li] & MARK)
            xf->lines[li].selevel = hi;
    xv->scope = 0;
    return 0;
}

int xfcm_all(const xfcmd &c)
{
    xftrace("Commande xfcm_all");
    cmd_rc = xfsel_all(operand(c));
    return 1;
}

int xfcm_exclude(const xfcmd &c)
{
    return modes.command_ispf ? xfcm_pdfexclude(c) : xfcm_xedexclude(c);
}

int xfcm_xedexclude(const xfcmd &c)
{
    xftrace("Commande xfcm_exclude");
    cmd_rc = xfsel_exclude(operand(c));
    return 1;
}

int xfcm_show(const xfcmd &c)
{
    xftrace("Commande xfcm_show");
    cmd_rc = xfsel_show(operand(c));
    return 1;
}

// DISPlay [a [b|*]]
int xfcm_display(const xfcmd &c)
{
    xftrace("Commande xfcm_display");
    std::string_view rest = c.ops();
    std::string_view a = xfword(rest), b = xfword(rest);
    if (a.empty()) {
        char buf[64];
        std::snprintf(buf, sizeof buf, "...... is %d %d", xv->display_lo, xv->display_hi);
        xfmsgs(buf, 0);
        return 1;
    }
    long lo, hi = 0;
    bool good = xfnumber(a, lo) && lo >= 0 && lo <= LEVEL_MAX && xftrim(rest).empty();
    if (good && b.empty())
        hi = lo;
    else if (good && b == "*")
        hi = LEVEL_MAX;
    else if (good)
        good = xfnumber(b, hi) && hi >= lo && hi <= LEVEL_MAX;
    if (!good) {
        xfmsg(16, 1);
        cmd_rc = 1;
        return 1;
    }
    xv->display_lo = (int32_t)lo;
    xv->display_hi = (int32_t)hi;
    // Lines added from now on are born shown.
    xv->select_new = (int32_t)lo;
    return 1;
}

// SCOpe [Display|All]
int xfcm_scope(const xfcmd &c)
{
    xftrace("Commande xfcm_scope");
    std::string w = xffold(xftrim(c.ops()));
    if (w.empty())
        xfmsg(xv->scope == 1 ? 53 : 52, 0);
    else if (abbrev(w, "display", 1))
        xv->scope = 0;
    else if (abbrev(w, "all", 1))
        xv->scope = 1;
    else {
        xfmsg(16, 1);
        cmd_rc = 1;
    }
    return 1;
}

// SHAdow [ON|OFf]
int xfcm_shadow(const xfcmd &c)
{
    xftrace("Commande xfcm_shadow");
    return xfonoff(c, xv->shadow);
}
