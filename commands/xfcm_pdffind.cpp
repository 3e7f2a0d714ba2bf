// FIND and CHANGE in the panel-editor vocabulary: PDFFINd, PDFChange, RFINd
// and PDFRChange. Operands are words with quotes respected: direction,
// extent and exclusion keywords, a pair of labels, a column range, and the
// strings in their quoted forms (exact, picture, hexadecimal).
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "session/xed.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>

namespace {

enum { D_NEXT, D_ALL, D_FIRST, D_LAST, D_PREV };
enum { E_CHARS, E_PREFIX, E_SUFFIX, E_WORD };
enum { X_BOTH, X_ONLY, X_NOT };

struct kw {
    const char *word; // folded
    int group;        // 0 direction, 1 extent, 2 exclusion
    int value;        // D_*, E_* or X_*
};
constexpr kw keywords[] = {
    {"next", 0, D_NEXT},   {"all", 0, D_ALL},       {"first", 0, D_FIRST},
    {"last", 0, D_LAST},   {"prev", 0, D_PREV},     {"chars", 1, E_CHARS},
    {"prefix", 1, E_PREFIX}, {"suffix", 1, E_SUFFIX}, {"word", 1, E_WORD},
    {"x", 2, X_ONLY},      {"nx", 2, X_NOT},
};

struct pstring {
    std::string text;   // decoded
    bool icase = true;  // quoted or bare: letters compare folded
    bool pic = false;   // picture
};

struct psearch {
    pstring find, repl;
    bool has_repl = false;
    int dir = D_NEXT, ext = E_CHARS, excl = X_BOTH;
    std::string lab1, lab2; // labels of the line range, empty for all
    int32_t col1 = 0, col2 = 0; // column range from 1, 0 for the zone's
};

psearch last;          // the last ISPF search, for RFINd and PDFRChange
bool have_find = false; // a find was made
bool have_change = false; // a change was made

// A quoted word's form: c'..', p'..', x'..' before or after the quotes.
// Returns 0, or the result code with its message given.
int read_string(std::string_view w, bool is_repl, pstring &out)
{
    char pre = 0, suf = 0;
    std::string_view body = w;
    if (body.size() >= 2 && std::strchr("cCpPxX", body[0]) && (body[1] == '\'' || body[1] == '"')) {
        pre = (char)std::tolower((unsigned char)body[0]);
        body = body.substr(1);
    }
    if (!body.empty() && (body[0] == '\'' || body[0] == '"')) {
        char q = body[0];
        size_t e = body.find(q, 1);
        if (e == std::string_view::npos) {
            xfmsg(16, 1);
            return 12;
        }
        std::string_view after = body.substr(e + 1);
        if (!pre && after.size() == 1 && std::strchr("cCpPxX", after[0]))
            suf = (char)std::tolower((unsigned char)after[0]);
        else if (!after.empty()) {
            xfmsg(16, 1);
            return 12;
        }
        out.text.assign(body.substr(1, e - 1));
        if (out.text.empty() && (pre || !is_repl)) {
            xfmsg(16, 1);
            return 12;
        }
    } else {
        out.text.assign(w); // a bare word
    }
    char f = pre ? pre : suf;
    out.icase = f == 0;
    out.pic = f == 'p';
    if (f == 'x') {
        std::string hex = "x'" + out.text + "'";
        if (!xfhex_decode(hex, out.text)) {
            xfmsg(150, 1);
            return 6;
        }
    }
    return 0;
}

// Words with quotes respected: a quoted stretch (with its prefix or
// suffix letter) is one word.
std::vector<std::string> cut_words(std::string_view s)
{
    std::vector<std::string> out;
    size_t i = 0;
    while (i < s.size()) {
        while (i < s.size() && s[i] == ' ')
            i++;
        if (i >= s.size())
            break;
        size_t st = i;
        bool inq = false;
        char q = 0;
        while (i < s.size() && (inq || s[i] != ' ')) {
            if (!inq && (s[i] == '\'' || s[i] == '"')) {
                inq = true;
                q = s[i];
            } else if (inq && s[i] == q) {
                inq = false;
            }
            i++;
        }
        out.emplace_back(s.substr(st, i - st));
    }
    return out;
}

bool is_number(const std::string &w)
{
    return !w.empty() && std::all_of(w.begin(), w.end(), [](char ch) { return ch >= '0' && ch <= '9'; });
}

// The operands of a find (`need` 1 string) or a change (2). Returns 0 or
// the result code.
int parse(std::string_view ops, int need, psearch &s)
{
    std::vector<std::string> words = cut_words(ops);
    bool seen[3] = {false, false, false};
    std::vector<std::string> rest;
    bool test_kw = (int)words.size() > need;
    for (auto &w : words) {
        std::string f = xffold(w);
        const kw *hit = nullptr;
        if (test_kw)
            for (auto &k : keywords)
                if (f == k.word)
                    hit = &k;
        if (hit) {
            if (seen[hit->group]) {
                xfmsg(184, 1);
                return 12;
            }
            seen[hit->group] = true;
            int *slot[] = {&s.dir, &s.ext, &s.excl};
            *slot[hit->group] = hit->value;
            continue;
        }
        rest.push_back(w);
    }
    if (rest.size() > 6) {
        xfmsg(16, 1);
        return 12;
    }
    size_t i = 0;
    if (i + 1 < rest.size() && rest[i][0] == '.' && rest[i + 1][0] == '.') {
        s.lab1 = rest[i];
        s.lab2 = rest[i + 1];
        if (xfpoint_find(s.lab1) < 0 || xfpoint_find(s.lab2) < 0) {
            xfmsg(178, 1);
            return 7;
        }
        i += 2;
    }
    int nums = 0, strs = 0;
    for (; i < rest.size(); i++) {
        const std::string &w = rest[i];
        if (is_number(w) && strs < need && !(strs == 0 && nums == 2)) {
            if (nums == 2 || (strs > 0 && nums == 0 && false)) {
                xfmsg(16, 1);
                return 12;
            }
            long v = std::atol(w.c_str());
            (nums == 0 ? s.col1 : s.col2) = (int32_t)std::clamp<long>(v, 1, xfmax_cols);
            nums++;
            continue;
        }
        if (strs >= need) {
            xfmsg(16, 1);
            return 12;
        }
        pstring &p = strs == 0 ? s.find : s.repl;
        if (strs == 0 && w == "*") {
            if (!have_find) {
                xfmsg(180, 1);
                return 5;
            }
            p = last.find;
        } else if (int r = read_string(w, strs == 1, p)) {
            return r;
        }
        strs++;
    }
    if (nums == 1)
        s.col2 = 0;
    if (strs < need) {
        xfmsg(16, 1);
        return 12;
    }
    s.has_repl = need == 2;
    if (s.has_repl && s.repl.pic && s.repl.text.size() != s.find.text.size()) {
        xfmsg(181, 1);
        return 12;
    }
    return 0;
}

bool pic_fits(char p, unsigned char ch)
{
    switch (p) {
    case '=': return true;
    case '#': return std::isdigit(ch);
    case '-': return !std::isdigit(ch);
    case '@': return std::isalpha(ch) || ch >= 128;
    case '<': return std::islower(ch);
    case '>': return std::isupper(ch);
    case '$': return !std::isalnum(ch) && ch < 128;
    case '.': return ch < 32;
    case '~': return ch != ' ';
    default: return (unsigned char)p == ch;
    }
}

// The match of the search string at byte `at` of t[0, lim): its end, or -1.
int32_t match_at(const pstring &f, const char *t, int32_t lim, int32_t at)
{
    int32_t j = at;
    bool u8 = xf->utf8 != 0;
    for (size_t k = 0; k < f.text.size(); k++) {
        if (j >= lim)
            return -1;
        unsigned char ch = (unsigned char)t[j];
        if (f.pic) {
            if (!pic_fits(f.text[k], ch))
                return -1;
            int32_t next;
            xfcol_char(t, lim, j, next, u8); // a picture character takes a whole character
            j = next;
            continue;
        }
        unsigned char p = (unsigned char)f.text[k];
        if (f.icase ? std::tolower(p) != std::tolower(ch) : p != ch)
            return -1;
        j++;
    }
    return j;
}

bool ends_ok(int ext, const char *t, int32_t n, int32_t ms, int32_t me)
{
    bool left = ms == 0 || !xfwordchar((unsigned char)t[ms - 1]);
    bool right = me >= n || !xfwordchar((unsigned char)t[me]);
    switch (ext) {
    case E_PREFIX: return left;
    case E_SUFFIX: return right;
    case E_WORD: return left && right;
    default: return true;
    }
}

bool line_wanted(const psearch &s, int32_t li)
{
    bool in = xfinscope(li);
    return s.excl == X_BOTH || (s.excl == X_ONLY ? !in : in);
}

// The columns searched in a line, as bytes.
void cols(const psearch &s, int32_t li, int32_t &lo, int32_t &hi)
{
    const xfline &l = xf->lines[li];
    if (s.col1 > 0) {
        lo = std::min<int32_t>(l.len, xfcol_off(l.text, l.len, s.col1 - 1, xf->utf8));
        hi = s.col2 > 0 ? std::min<int32_t>(l.len, xfcol_off(l.text, l.len, s.col2, xf->utf8)) : l.len;
    } else {
        xfzone_bytes(li, lo, hi);
        lo = std::min<int32_t>(lo, l.len);
    }
}

// One match in line li, forward from byte `from` or backward before byte
// `before`: its start and end bytes.
bool in_line(const psearch &s, int32_t li, int dir, int32_t from, int32_t &ms, int32_t &me)
{
    const xfline &l = xf->lines[li];
    int32_t lo, hi;
    cols(s, li, lo, hi);
    int32_t m = (int32_t)s.find.text.size();
    if (dir > 0) {
        for (int32_t at = std::max(lo, from); at + (s.find.pic ? 1 : m) <= hi; at++) {
            int32_t e = match_at(s.find, l.text, hi, at);
            if (e >= 0 && ends_ok(s.ext, l.text, l.len, at, e)) {
                ms = at;
                me = e;
                return true;
            }
        }
        return false;
    }
    for (int32_t at = std::min(from, hi) - 1; at >= lo; at--) {
        int32_t e = match_at(s.find, l.text, hi, at);
        if (e >= 0 && ends_ok(s.ext, l.text, l.len, at, e)) {
            ms = at;
            me = e;
            return true;
        }
    }
    return false;
}

void range(const psearch &s, int32_t &lo, int32_t &hi)
{
    lo = 0;
    hi = nbli() - 1;
    if (!s.lab1.empty()) {
        int32_t a = xf->points[(size_t)xfpoint_find(s.lab1)].li;
        int32_t b = xf->points[(size_t)xfpoint_find(s.lab2)].li;
        lo = std::max(0, std::min(a, b));
        hi = std::max(a, b);
    }
}

// Where a search starts: a line and a byte.
void start_of(const psearch &s, int dir_kw, int32_t &li, int32_t &at)
{
    int32_t lo, hi;
    range(s, lo, hi);
    xfcursor c = xfcursor_now();
    bool in_file = c.fld == 0 && c.li >= lo && c.li <= hi && c.li < nbli();
    switch (dir_kw) {
    case D_FIRST:
    case D_ALL:
        li = lo;
        at = 0;
        return;
    case D_LAST:
        li = hi;
        at = 2147483647;
        return;
    case D_PREV:
        if (in_file) {
            const xfline &l = xf->lines[c.li];
            li = c.li;
            at = xfcol_off(l.text, l.len, c.col, xf->utf8);
        } else {
            li = hi;
            at = 2147483647;
        }
        return;
    default:
        if (in_file) {
            const xfline &l = xf->lines[c.li];
            li = c.li;
            at = xfcol_off(l.text, l.len, c.col + 1, xf->utf8);
        } else if (c.fld == 1 && !xv->rows.empty()) {
            li = std::max(lo, xv->rows[0].li);
            at = 0;
        } else {
            li = lo;
            at = 0;
        }
    }
}

// The next match from (li, at) in the direction; false when out of lines.
bool search(const psearch &s, int dir, int32_t &li, int32_t at, int32_t &ms, int32_t &me)
{
    int32_t lo, hi;
    range(s, lo, hi);
    for (bool first = true; li >= lo && li <= hi && li < nbli(); li += dir, first = false) {
        if (li < 0 || !line_wanted(s, li))
            continue;
        int32_t from = first ? at : (dir > 0 ? 0 : 2147483647);
        if (in_line(s, li, dir, from, ms, me))
            return true;
    }
    return false;
}

void not_found(const psearch &s)
{
    xfmsgs(".... String \"" + s.find.text + "\" not found.", 1);
    cmd_rc = 4;
}

void found_at(int32_t li, int32_t ms)
{
    const xfline &l = xf->lines[li];
    curline() = li;
    xfcursor_file(li, xfcol_at(l.text, l.len, ms, xf->utf8));
    lastmatch = {xf->fileid, li, xfcol_at(l.text, l.len, ms, xf->utf8), 0};
}

int do_find(psearch &s, bool repeat)
{
    int dir_kw = s.dir;
    if (repeat && dir_kw == D_ALL)
        dir_kw = D_NEXT;
    int dir = dir_kw == D_LAST || dir_kw == D_PREV ? -1 : 1;
    int32_t li, at, ms, me;
    start_of(s, dir_kw, li, at);
    if (dir_kw == D_ALL) {
        int64_t total = 0;
        int32_t firstli = -1, firstms = 0;
        for (int32_t k = li, from = 0; search(s, 1, k, from, ms, me);) {
            if (!total) {
                firstli = k;
                firstms = ms;
            }
            total++;
            from = me > ms ? me : ms + 1;
        }
        if (!total) {
            not_found(s);
            return 1;
        }
        found_at(firstli, firstms);
        char buf[64];
        std::snprintf(buf, sizeof buf, total > 1 ? "%lld occurrences found." : "%lld occurrence found.",
                      (long long)total);
        xfmsgs(buf, 0);
        cmd_rc = 0;
        return 1;
    }
    if (!search(s, dir, li, at, ms, me)) {
        not_found(s);
        return 1;
    }
    found_at(li, ms);
    cmd_rc = 0;
    return 1;
}

// The replacement for a match: a picture keeps or folds the found
// characters, anything else is copied.
std::string replacement(const psearch &s, const char *t, int32_t ms)
{
    if (!s.repl.pic)
        return s.repl.text;
    std::string out;
    for (size_t k = 0; k < s.repl.text.size(); k++) {
        char p = s.repl.text[k];
        char ch = t[ms + (int32_t)k];
        out.push_back(p == '=' ? ch : p == '<' ? (char)std::tolower((unsigned char)ch)
                                  : p == '>' ? (char)std::toupper((unsigned char)ch) : p);
    }
    return out;
}

// Replaces [ms, me) of line li; a run of two or more blanks behind the
// match takes up the difference so that the text after it stays put.
// Returns the byte behind the replacement.
int32_t replace(const psearch &s, int32_t li, int32_t ms, int32_t me, bool adjust)
{
    const xfline &l = xf->lines[li];
    std::string t(l.text, (size_t)l.len);
    std::string r = replacement(s, l.text, ms);
    int32_t sl = me - ms, rl = (int32_t)r.size();
    int32_t run = 0;
    while (me + run < (int32_t)t.size() && t[(size_t)(me + run)] == ' ')
        run++;
    std::string tail = t.substr((size_t)me);
    if (adjust && run >= 2 && me + run < (int32_t)t.size()) {
        if (rl > sl && run > rl - sl)
            tail.erase(0, (size_t)(rl - sl));
        else if (rl < sl)
            r.append((size_t)(sl - rl), ' ');
    }
    t.resize((size_t)ms);
    t += r;
    int32_t after = (int32_t)t.size();
    t += tail;
    if (t.empty())
        t = " ";
    xf_do('r', t, li, "xfcm_pdfchange");
    return after;
}

int do_change(psearch &s, bool repeat)
{
    int dir_kw = s.dir;
    if (repeat && dir_kw == D_ALL)
        dir_kw = D_NEXT;
    bool adjust = !(s.find.text == "=" && s.dir == D_ALL);
    int dir = dir_kw == D_LAST || dir_kw == D_PREV ? -1 : 1;
    int32_t li, at, ms, me;
    start_of(s, dir_kw, li, at);
    if (dir_kw == D_ALL) {
        int64_t total = 0;
        int32_t lastli = -1, perline = 0;
        for (int32_t k = li, from = 0; search(s, 1, k, from, ms, me);) {
            if (k != lastli)
                perline = 0;
            lastli = k;
            from = replace(s, k, ms, me, adjust);
            if (from == ms)
                from++;
            total++;
            // A replacement that keeps matching stops at the zone's width.
            int32_t zl, zr;
            xfzone_bytes(k, zl, zr);
            if (++perline > std::max(1, zr - zl)) {
                k++;
                from = 0;
            }
        }
        if (!total) {
            not_found(s);
            return 1;
        }
        curline() = lastli;
        if (total >= 2) {
            char buf[64];
            std::snprintf(buf, sizeof buf, "%lld occurrences changed", (long long)total);
            xfmsgs(buf, 0);
        } else {
            xfmsg(17, 0);
        }
        cmd_rc = 0;
        return 1;
    }
    if (!search(s, dir, li, at, ms, me)) {
        not_found(s);
        return 1;
    }
    int32_t after = replace(s, li, ms, me, adjust);
    const xfline &l = xf->lines[li];
    curline() = li;
    int32_t col = xfcol_at(l.text, l.len, dir > 0 ? after : ms, xf->utf8);
    xfcursor_file(li, dir > 0 ? std::max(0, col - 1) : col);
    lastmatch = {xf->fileid, li, col, 0};
    cmd_rc = 0;
    return 1;
}

} // namespace

int xfcm_pdffind(const xfcmd &c)
{
    xftrace("Commande xfcm_pdffind");
    if (!xf)
        return 1;
    psearch s;
    if (int r = parse(c.ops(), 1, s)) {
        cmd_rc = r;
        return 1;
    }
    last = s;
    have_find = true;
    return do_find(s, false);
}

int xfcm_pdfchange(const xfcmd &c)
{
    xftrace("Commande xfcm_pdfchange");
    if (!xf)
        return 1;
    psearch s;
    if (int r = parse(c.ops(), 2, s)) {
        cmd_rc = r;
        return 1;
    }
    last = s;
    have_find = have_change = true;
    return do_change(s, false);
}

int xfcm_rfind(const xfcmd &c)
{
    xftrace("Commande xfcm_rfind");
    (void)c;
    if (!xf)
        return 1;
    if (!have_find) {
        xfmsg(186, 1);
        cmd_rc = 12;
        return 1;
    }
    return do_find(last, true);
}

int xfcm_pdfrchange(const xfcmd &c)
{
    xftrace("Commande xfcm_pdfrchange");
    (void)c;
    if (!xf)
        return 1;
    if (!have_change) {
        xfmsg(187, 1);
        cmd_rc = 12;
        return 1;
    }
    if (last.repl.pic && last.repl.text.size() != last.find.text.size()) {
        xfmsg(181, 1);
        cmd_rc = 12;
        return 1;
    }
    return do_change(last, true);
}

// The panel-style EXCLUDE: the FIND operands, with each line found hidden
// instead of shown; ALL hides every line that holds the string.
int xfcm_pdfexclude(const xfcmd &c)
{
    xftrace("Commande xfcm_pdfexclude");
    if (!xf)
        return 1;
    psearch s;
    if (int r = parse(c.ops(), 1, s)) {
        cmd_rc = r;
        return 1;
    }
    int dir = s.dir == D_LAST || s.dir == D_PREV ? -1 : 1;
    int32_t li, at, ms, me;
    start_of(s, s.dir, li, at);
    int32_t hid = xv->display_hi == 2147483647 ? 2147483647 : xv->display_hi + 1;
    int64_t total = 0;
    while (search(s, dir, li, at, ms, me)) {
        xf->lines[li].selevel = hid;
        total++;
        if (s.dir != D_ALL)
            break;
        li++;
        at = 0;
    }
    if (!total) {
        not_found(s);
        return 1;
    }
    char buf[64];
    std::snprintf(buf, sizeof buf, total > 1 ? "%lld lines excluded." : "%lld line excluded.",
                  (long long)total);
    xfmsgs(buf, 0);
    cmd_rc = 0;
    return 1;
}
