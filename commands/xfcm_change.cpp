// CHANGE in the line-editor vocabulary: Change and its selective, whole-word
// and regular-expression forms (SChange, CN, SCN, RChange, SRChange), the
// change engine they share with COUnt, and the selective dialogue.
//
// A changed line is built once in a reused buffer and handed to the line
// store; lines without a match are only read. Every line replaced by one
// command belongs to one undo group.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "commands/xfregex.h"
#include "session/xed.h"
#include "session/xfkeys.h"
#include "session/xfpage.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

constexpr int32_t NO_LIMIT = 2147483646;

// What one change command asks for.
struct change_req {
    std::string from, to; // the two strings as given
    int32_t first = 0;    // first line of the range
    int64_t n = 1;        // lines in the range
    int32_t count = 1;    // changes per line
    int32_t k = 1;        // the occurrence in a line to start at
    bool word = false;    // CN: whole words
    bool selective = false; // SChange: ask for each
    bool count_only = false; // COUnt
    bool regex = false;   // RChange
};

// The selective dialogue's answer: do, skip, or quit the whole change.
enum ask_answer { ASK_DO = 0, ASK_SKIP = 1, ASK_QUIT = 2 };

bool asking = true; // cleared by Ctrl and KEY_DO for the rest of a change

ask_answer ask(int32_t li, int32_t col)
{
    if (!asking)
        return ASK_DO;
    int idx = xfidx;
    curline() = li;
    xfcursor_file(li, col);
    char hint[160], msg[80];
    std::snprintf(hint, sizeof hint, "F%d : Quit    Return : Skipp     F%d : Do     ^F%d : Stop asking",
                  sckey_quit, sckey_do, sckey_do);
    std::snprintf(msg, sizeof msg, "..... String found; F%d key set for change", sckey_do);
    // The hint takes the key legend's row while the question stands.
    std::string legend = pf_legend;
    pf_legend = hint;
    bool asked = xfask(msg, false);
    pf_legend = legend;
    if (!asked)
        return ASK_QUIT;
    if (xfidx != idx && idx < nbfiles())
        xfsetfile(idx);
    int nb = key_class[KC_F].nbkeys;
    if (aid == 1 && aid_value == sckey_do)
        return ASK_DO;
    if (aid == 1 && aid_value == sckey_do + 2 * nb) {
        asking = false;
        return ASK_DO;
    }
    if (aid == 1 && aid_value == sckey_quit)
        return ASK_QUIT;
    return ASK_SKIP;
}

int arb_count(const std::string &s)
{
    return arbchar_on ? (int)std::count(s.begin(), s.end(), arbchar) : 0;
}

// The replacement of an arbitrary match: each arbitrary character of `to`
// takes the text its gap held, in order.
void arb_to(const std::string &to, const char *t, const std::vector<std::pair<int32_t, int32_t>> &gaps,
            std::string &out)
{
    out.clear();
    size_t g = 0;
    for (char ch : to) {
        if (arbchar_on && ch == arbchar && g < gaps.size()) {
            out.append(t + gaps[g].first, (size_t)(gaps[g].second - gaps[g].first));
            g++;
        } else {
            out.push_back(ch);
        }
    }
}

// The replacement of a regular-expression match: each arbitrary character
// of `to` stands for the matched text.
void regex_to(const std::string &to, const char *t, int32_t ms, int32_t me, std::string &out)
{
    out.clear();
    for (char ch : to)
        if (arbchar_on && ch == arbchar)
            out.append(t + ms, (size_t)(me - ms));
        else
            out.push_back(ch);
}

// The change engine over the request's lines; returns 0 done, 1 not found,
// 2 too many arbitrary characters, 3 bad hexadecimal, 4 bad regular
// expression. `total` counts the occurrences changed (or found).
class engine {
public:
    explicit engine(change_req &r) : r_(r) {}
    int run(int64_t &total);

private:
    bool line(int32_t li, int64_t &total, bool &quit);
    void put(int32_t li);
    change_req &r_;
    xfpat pat_;
    std::string buf_;        // the line being rebuilt
    std::string repl_;       // the replacement of one match
    std::vector<std::pair<int32_t, int32_t>> gaps_;
    int32_t lastchanged_ = -1;
};

void engine::put(int32_t li)
{
    if (!xf->keepblanks) {
        size_t e = buf_.find_last_not_of(' ');
        buf_.resize(e == std::string::npos ? 0 : e + 1);
    }
    if (buf_.empty())
        buf_ = " "; // a line a change empties keeps one blank
    xf_do('r', buf_, li, "xfcm_ch1:142");
    lastchanged_ = li;
}

bool engine::line(int32_t li, int64_t &total, bool &quit)
{
    const xfline &l0 = xf->lines[li];
    bool allblank = pat_.lastnb < 0 && !r_.regex;
    if (!r_.from.empty() && (allblank || (r_.regex && r_.from.find_first_not_of(' ') == std::string::npos)) &&
        l0.len == 1 && l0.text[0] == ' ')
        return false;
    int32_t zl, zr;
    xfzone_bytes(li, zl, zr);
    int32_t ms, me;
    // A line without a match is only read.
    if (!r_.from.empty() && !(r_.regex ? xfpat_find(pat_, l0.text, l0.len, zl, zr, zl, ms, me)
                                      : pat_.arb ? xfpat_find_arb(pat_, l0.text, zl, zr, zl, ms, me, nullptr)
                                                 : xfpat_find(pat_, l0.text, l0.len, zl, zr, zl, ms, me)))
        return false;
    buf_.assign(l0.text, (size_t)l0.len);
    int32_t col = zl;
    int32_t changes = 0, occ = 0;
    bool changed = false;
    for (;;) {
        const char *t = buf_.data();
        int32_t n = (int32_t)buf_.size();
        if (r_.from.empty()) {
            ms = me = zl;
            repl_ = r_.to;
        } else if (r_.regex) {
            int32_t zre = zr >= l0.len ? n : std::min(n, zr + (n - l0.len));
            if (!xfpat_find(pat_, t, n, zl, std::max(zre, zl), col, ms, me))
                break;
            regex_to(r_.to, t, ms, me, repl_);
        } else if (pat_.arb) {
            int32_t zre = zr >= l0.len ? n : std::min(n, zr + (n - l0.len));
            if (!xfpat_find_arb(pat_, t, zl, std::max(zre, zl), col, ms, me, &gaps_))
                break;
            arb_to(r_.to, t, gaps_, repl_);
        } else {
            int32_t zre = zr >= l0.len ? n : std::min(n, zr + (n - l0.len));
            // The first match is the one that let the line in.
            if (!(occ == 0 && col == zl) && !xfpat_find(pat_, t, n, zl, zre, col, ms, me))
                break;
            repl_ = r_.to;
        }
        occ++;
        if (occ < r_.k || r_.count_only) {
            if (r_.count_only && occ >= r_.k)
                total++;
            col = me > ms ? me : ms + 1;
            if (r_.from.empty() || col > n || ms >= n ||
                (!r_.regex && !pat_.arb && me - ms < (int32_t)pat_.s.size()))
                break;
            continue;
        }
        if (r_.selective) {
            int32_t ccol = xfcol_at(t, n, ms, xf->utf8);
            if (changed)
                put(li);
            changed = false;
            ask_answer a = ask(li, ccol);
            if (a == ASK_QUIT) {
                quit = true;
                return true;
            }
            if (a == ASK_SKIP) {
                col = ms + 1;
                if (col > n)
                    break;
                continue;
            }
        }
        // A match that needed the blanks beyond the line's end is the
        // line's last.
        bool at_end = ms >= n || (!r_.regex && !pat_.arb && me - ms < (int32_t)pat_.s.size());
        // Blanks stand in for a line too short to reach the match.
        std::string tail = me < n ? buf_.substr((size_t)me) : std::string();
        if (ms > n)
            buf_.append((size_t)(ms - n), ' ');
        buf_.resize((size_t)ms);
        buf_ += repl_;
        int32_t after = (int32_t)buf_.size();
        buf_ += tail;
        changed = true;
        total++;
        changes++;
        if (r_.selective) {
            put(li);
            changed = false;
        }
        col = after;
        if (me == ms && !r_.from.empty())
            col++; // an empty match moves on by a character
        if (r_.from.empty() || at_end || changes >= r_.count || (pat_.arb && pat_.arb_trail) ||
            col > (int32_t)buf_.size())
            break;
    }
    if (changed)
        put(li);
    return occ > 0;
}

int engine::run(int64_t &total)
{
    total = 0;
    asking = true;
    std::string from = r_.from, to = r_.to;
    if (hex_on && !r_.regex) {
        auto hex = [](std::string &s) {
            return !(s.size() >= 2 && (s[0] == 'x' || s[0] == 'X') && s[1] == '\'') || xfhex_decode(s, s);
        };
        if (!hex(from) || !hex(to)) {
            xfmsg(150, 1);
            return 3;
        }
        r_.from = from;
        r_.to = to;
    }
    int save_case = xf->case_mode;
    xf->case_mode = xf->case_c ? 1 : 0;
    struct restore {
        int v;
        ~restore() {
            if (xf)
                xf->case_mode = v;
        }
    } restore_case{save_case};
    if (!r_.regex && !r_.from.empty()) {
        if (!xfpat_init(pat_, r_.from, xfcase_ignore(), r_.word, false))
            return 2;
        pat_.varblank = false;
        if (pat_.arb) {
            int gaps = (int)pat_.pieces.size() - 1 + pat_.arb_lead + pat_.arb_trail;
            if (arb_count(r_.to) > gaps) {
                xfmsg(142, 1);
                return 2;
            }
        }
    }
    if (r_.regex && !xfpat_init(pat_, r_.from, xfcase_ignore(), false, true, true))
        return 4;
    int32_t li = r_.first;
    int64_t n = r_.n;
    if (li < 0) {
        li = 0;
        n--;
    }
    bool quit = false;
    bool any = false;
    for (; n > 0 && li < nbli() && !quit; li++, n--) {
        if (xv->scope != 1 && !xfinscope(li))
            continue;
        if (r_.from.empty()) {
            // An empty string inserts at the zone's left column.
            const xfline &l = xf->lines[li];
            int32_t zl, zr;
            xfzone_bytes(li, zl, zr);
            buf_.assign(l.text, (size_t)l.len);
            if (zl > l.len)
                buf_.append((size_t)(zl - l.len), ' ');
            if (r_.count_only) {
                total++;
                any = true;
                continue;
            }
            buf_.insert((size_t)zl, r_.to);
            put(li);
            total++;
            any = true;
            continue;
        }
        if (line(li, total, quit))
            any = true;
    }
    (void)any;
    if (lastchanged_ >= 0 && !stay_on && !r_.count_only)
        curline() = lastchanged_;
    if (quit)
        return 0;
    return total > 0 ? 0 : 1;
}

int bad(int rc)
{
    xfmsg(16, 1);
    cmd_rc = rc;
    return 1;
}

// "/from/to/ [target [count [first]]]": the strings, the lines, the counts.
// Returns false with the message given and cmd_rc set.
bool parse_change(std::string_view ops, change_req &r)
{
    ops = xftrim(ops);
    if (ops.empty()) {
        bad(5);
        return false;
    }
    lastlorc.assign(ops);
    char d = ops[0];
    size_t a = ops.find(d, 1);
    if (a == std::string_view::npos) {
        bad(5);
        return false;
    }
    r.from.assign(ops.substr(1, a - 1));
    size_t b = ops.find(d, a + 1);
    std::string_view rest;
    if (b == std::string_view::npos) {
        r.to.assign(ops.substr(a + 1));
    } else {
        r.to.assign(ops.substr(a + 1, b - a - 1));
        rest = xftrim(ops.substr(b + 1));
    }
    bool all = !modes.change_one;
    r.first = curline();
    r.n = all ? (int64_t)nbli() - r.first : 1;
    r.count = all ? NO_LIMIT : 1;
    if (!rest.empty()) {
        int t = xftarget_lines(rest, false, r.first, r.n);
        if (t < -1) {
            cmd_rc = 1;
            return false;
        }
        std::string_view w = xfword(rest);
        long v;
        if (!w.empty()) {
            if (w == "*")
                r.count = NO_LIMIT;
            else if (w[0] == ':' && xfnumber(w.substr(1), v) && v >= 0)
                r.count = (int32_t)std::min<long>(v, NO_LIMIT);
            else if (xfnumber(w, v) && v >= 0)
                r.count = (int32_t)std::min<long>(v, NO_LIMIT);
            else {
                bad(5);
                return false;
            }
            w = xfword(rest);
            if (!w.empty()) {
                if (!xfnumber(w, v) || v < 1) {
                    bad(5);
                    return false;
                }
                r.k = (int32_t)std::min<long>(v, NO_LIMIT);
            }
            if (!xftrim(rest).empty()) {
                bad(5);
                return false;
            }
        }
    }
    return true;
}

void report(const change_req &r, int res, int64_t total)
{
    switch (res) {
    case 0:
        if (total >= 2) {
            char buf[64];
            std::snprintf(buf, sizeof buf, "%lld occurrences changed", (long long)total);
            xfmsgs(buf, 0);
        } else if (total == 1) {
            xfmsg(17, 0);
        }
        cmd_rc = 0;
        break;
    case 1:
        xfmsgs("..... String \"" + r.from + "\" not found", 1);
        cmd_rc = 1;
        break;
    case 4:
        cmd_rc = 5;
        break;
    default:
        cmd_rc = 1;
        break;
    }
}

// The variants of the command word as typed: a leading `s` asks for each
// occurrence, an `n` behind the `c` wants whole words.
void variant(const xfcmd &c, change_req &r)
{
    std::string w = xffold(c.lline.substr(0, (size_t)std::max(c.typed, 1)));
    if (w.rfind("xed", 0) == 0 || w.rfind("pdf", 0) == 0)
        w = w.substr(3);
    r.selective = !w.empty() && w[0] == 's';
    size_t cpos = w.find('c');
    r.word = cpos != std::string::npos && cpos + 1 < w.size() && w[cpos + 1] == 'n';
}

int change(const xfcmd &c, bool regex, bool selective_forced)
{
    if (!xf)
        return 1;
    change_req r;
    variant(c, r);
    r.regex = regex;
    if (selective_forced)
        r.selective = true;
    if (regex)
        r.word = false;
    if (r.selective && batch) {
        xfmsg(205, 1);
        cmd_rc = 1;
        return 1;
    }
    std::string_view ops = c.ops();
    if (!regex && arbchar_on && arbchar == '$') {
        std::string_view o = c.orig;
        size_t w = 0;
        while (w < o.size() && o[w] == ' ')
            w++;
        while (w < o.size() && ((o[w] | 32) >= 'a' && (o[w] | 32) <= 'z'))
            w++;
        ops = o.substr(w);
    }
    if (!parse_change(ops, r))
        return 1;
    engine e(r);
    int64_t total = 0;
    int res = e.run(total);
    report(r, res, total);
    return 1;
}

} // namespace

int xfcm_change(const xfcmd &c)
{
    return modes.command_ispf ? xfcm_pdfchange(c) : xfcm_xedchange(c);
}

int xfcm_xedchange(const xfcmd &c)
{
    xftrace("Commande xfcm_ch");
    return change(c, false, false);
}

int xfcm_rchange(const xfcmd &c)
{
    if (modes.command_ispf)
        return xfcm_pdfrchange(c);
    return xfcm_xedrchange(c);
}

int xfcm_xedrchange(const xfcmd &c)
{
    xftrace("Commande xfcm_rch");
    return change(c, true, false);
}

int xfcm_srchange(const xfcmd &c)
{
    xftrace("Commande xfcm_srch");
    return change(c, true, true);
}

// COUnt /string/ [target]
int xfcm_count(const xfcmd &c)
{
    xftrace("Commande xfcm_count");
    if (!xf)
        return 1;
    std::string_view ops = xftrim(c.ops());
    if (ops.empty()) {
        xfmsg(159, 1);
        cmd_rc = 5;
        return 1;
    }
    char d = ops[0];
    size_t e = ops.find(d, 1);
    change_req r;
    r.from.assign(ops.substr(1, e == std::string_view::npos ? std::string_view::npos : e - 1));
    std::string_view rest = e == std::string_view::npos ? std::string_view() : xftrim(ops.substr(e + 1));
    if (r.from.empty()) {
        xfmsg(169, 1);
        cmd_rc = 5;
        return 1;
    }
    r.word = d == '\\';
    r.count_only = true;
    r.count = NO_LIMIT;
    r.first = std::max(0, curline());
    r.n = 1;
    int32_t keep = curline();
    if (!rest.empty()) {
        int t = xftarget_lines(rest, true, r.first, r.n);
        if (t < -1) {
            cmd_rc = t == -2 ? 2 : 5;
            return 1;
        }
        if (r.first == keep && keep < 0) {
            r.first = 0;
            r.n = std::max<int64_t>(0, r.n - 1);
        }
    }
    engine en(r);
    int64_t total = 0;
    int res = en.run(total);
    if (res >= 2) {
        cmd_rc = 1;
        return 1;
    }
    char buf[64];
    std::snprintf(buf, sizeof buf, total > 1 ? "%lld occurrences found." : "%lld occurrence found.",
                  (long long)total);
    xfmsgs(buf, 0);
    cmd_rc = 0;
    if (stay_on)
        curline() = keep;
    return 1;
}
