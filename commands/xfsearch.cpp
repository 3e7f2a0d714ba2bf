// Looking for a string in lines: the prepared string (folded once, cut at
// the arbitrary character, or compiled as a regular expression), the search
// within one line (plain, blank-collapsing, arbitrary, whole words, the
// trailing-blank rule), the walk over the lines with wrapping and SPAN, and
// the settings that steer all of it.
//
// Lines are searched in place: no line is copied and nothing is allocated
// per line. Offsets are bytes; the zone and the cursor are turned into
// bytes once per line through the column service, and only when they are
// not the whole line.
#include "commands/commands.h"
#include "commands/internal.h"
#include "commands/xfregex.h"
#include "session/xed.h"

#include <algorithm>
#include <cstring>

int wrap_on = 1;
int stay_on = 0;
int varblank_on = 0;
int hex_on = 0;
int span_on = 0;
int span_blank = 1;
int32_t span_lines = 0;
std::string memo_str;
xflastmatch lastmatch;

namespace {

unsigned char fold_tab[256]; // ASCII letters to lower case, the rest as is

struct fold_init {
    fold_init()
    {
        for (int i = 0; i < 256; i++)
            fold_tab[i] = (unsigned char)(i >= 'A' && i <= 'Z' ? i + 32 : i);
    }
} fold_init_once;

inline unsigned char fold(char ch) { return fold_tab[(unsigned char)ch]; }

bool equal_at(const char *t, const std::string &s, bool icase)
{
    if (!icase)
        return std::memcmp(t, s.data(), s.size()) == 0;
    for (size_t i = 0; i < s.size(); i++)
        if (fold(t[i]) != (unsigned char)s[i])
            return false;
    return true;
}

// The first occurrence of s in t[from, end): memmem when the case counts,
// a Horspool walk over folded bytes when it does not.
int32_t plain_find(const xfpat &p, const std::string &s, const char *t, int32_t from, int32_t end)
{
    int32_t m = (int32_t)s.size();
    if (m == 0)
        return from <= end ? from : -1;
    if (end - from < m)
        return -1;
    if (!p.icase && (&s != &p.s || end - from >= 1024)) {
        // memmem's set-up pays off on long texts only.
        const void *r = memmem(t + from, (size_t)(end - from), s.data(), (size_t)m);
        return r ? (int32_t)((const char *)r - t) : -1;
    }
    if (&s != &p.s) { // a piece of an arbitrary string: a simple walk
        for (int32_t i = from; i + m <= end; i++)
            if (fold(t[i]) == (unsigned char)s[0] && equal_at(t + i, s, true))
                return i;
        return -1;
    }
    if (!p.icase) {
        // A short line: the first byte found by memchr, then the rest compared.
        for (int32_t i = from; i + m <= end;) {
            const void *q = std::memchr(t + i, (unsigned char)s[0], (size_t)(end - m + 1 - i));
            if (!q)
                return -1;
            i = (int32_t)((const char *)q - t);
            if (std::memcmp(t + i + 1, s.data() + 1, (size_t)m - 1) == 0)
                return i;
            i++;
        }
        return -1;
    }
    // Horspool over folded bytes: the skips were worked out once per search.
    unsigned char last = (unsigned char)s[(size_t)m - 1];
    for (int32_t i = from; i + m <= end;) {
        unsigned char c = fold(t[i + m - 1]);
        if (c == last && equal_at(t + i, s, true))
            return i;
        i += p.skip[c];
    }
    return -1;
}

bool is_word_byte(char ch) { return xfwordchar((unsigned char)ch); }

bool word_ok(const xfpat &p, const char *t, int32_t n, int32_t ms, int32_t me)
{
    if (!p.word)
        return true;
    if (ms > 0 && is_word_byte(t[ms - 1]))
        return false;
    return !(me < n && is_word_byte(t[me]));
}

// The blank-collapsing comparison at t[i]: the end of the match, or -1.
int32_t varblank_at(const xfpat &p, const char *t, int32_t i, int32_t end)
{
    const std::string &s = p.s;
    if (i < end && t[i] == ' ' && !s.empty() && s[0] != ' ')
        return -1;
    size_t k = 0;
    int32_t j = i;
    while (k < s.size()) {
        if (s[k] == ' ') {
            if (j < end && t[j] != ' ')
                return -1;
            while (k < s.size() && s[k] == ' ')
                k++;
            while (j < end && t[j] == ' ')
                j++;
            continue;
        }
        if (j >= end)
            return -1;
        unsigned char a = p.icase ? fold(t[j]) : (unsigned char)t[j];
        if (a != (unsigned char)s[k])
            return -1;
        j++;
        k++;
    }
    return j;
}

} // namespace

// The arbitrary match with its first piece at or behind `from`; `gaps`,
// when given, gets the byte ranges the gaps held, in order.
bool xfpat_find_arb(const xfpat &p, const char *t, int32_t zl, int32_t zr, int32_t from,
                    int32_t &ms, int32_t &me, std::vector<std::pair<int32_t, int32_t>> *gaps)
{
    const auto &pc = p.pieces;
    for (int32_t at = std::max(from, zl); at <= zr;) {
        if (gaps)
            gaps->clear();
        int32_t pos, start;
        size_t k = 0;
        if (p.arb_lead) {
            // A leading gap starts where the search does: the zone's left
            // column on a line's first search.
            pos = at;
            start = at;
        } else {
            pos = plain_find(p, pc[0], t, at, zr);
            if (pos < 0)
                return false;
            start = pos;
            pos += (int32_t)pc[0].size();
            k = 1;
        }
        bool ok = true;
        for (; k < pc.size(); k++) {
            int32_t q = plain_find(p, pc[k], t, pos, zr);
            if (q < 0) {
                ok = false;
                break;
            }
            if (gaps)
                gaps->emplace_back(pos, q);
            pos = q + (int32_t)pc[k].size();
        }
        if (!ok)
            return false; // a later piece is missing: no later start helps
        ms = start;
        me = p.arb_trail ? std::max(zr, pos) : pos;
        if (gaps && p.arb_trail)
            gaps->emplace_back(pos, me);
        if (p.arb_lead || word_ok(p, t, zr, ms, me))
            return true;
        at = start + 1;
    }
    return false;
}

namespace {

bool regex_find(const char *t, int32_t zl, int32_t zr, int32_t from, int32_t &ms, int32_t &me)
{
    const xfre_engine &e = xfre();
    int32_t start = std::max(from, zl);
    if (start > zr)
        return false;
    if (e.execute(t, zr, start, true) < 0)
        return false;
    int32_t s, len;
    e.last_match(s, len);
    ms = s;
    me = s + len;
    return me <= zr;
}

} // namespace

bool xfcase_ignore() { return xf && (xf->case_mode == 0 || xf->case_mode == 2); }

bool xfpat_init(xfpat &p, std::string_view text, bool icase, bool word, bool regex, bool msg69)
{
    p = xfpat();
    p.icase = icase;
    p.word = word;
    p.regex = regex;
    if (regex) {
        p.s.assign(text);
        if (const char *err = xfre().compile(text, icase, xf && xf->utf8)) {
            if (msg69)
                xfmsg(69, 0);
            else
                xfmsgs(std::string("..... ") + err, 1);
            return false;
        }
        return true;
    }
    p.varblank = varblank_on != 0;
    p.s.assign(text);
    if (icase)
        for (auto &ch : p.s)
            ch = (char)fold(ch);
    int32_t k = (int32_t)p.s.size() - 1;
    while (k >= 0 && p.s[(size_t)k] == ' ')
        k--;
    p.lastnb = k;
    if (arbchar_on && p.s.find(arbchar) != std::string::npos) {
        if (p.s.find_first_not_of(arbchar) == std::string::npos) {
            xfmsg(146, 1);
            return false;
        }
        p.arb = true;
        p.arb_lead = p.s.front() == arbchar;
        p.arb_trail = p.s.back() == arbchar;
        size_t a = 0;
        while (a <= p.s.size()) {
            size_t b = p.s.find(arbchar, a);
            if (b == std::string::npos)
                b = p.s.size();
            if (b > a)
                p.pieces.push_back(p.s.substr(a, b - a));
            a = b + 1;
        }
        // Blanks that end the last piece do not decide where it ends.
        if (!p.arb_trail && !p.pieces.empty()) {
            std::string &lp = p.pieces.back();
            size_t e = lp.find_last_not_of(' ');
            if (e != std::string::npos)
                lp.resize(e + 1);
        }
        return true;
    }
    int32_t m = (int32_t)p.s.size();
    for (auto &v : p.skip)
        v = std::max(1, m);
    for (int32_t i = 0; i + 1 < m; i++)
        p.skip[(unsigned char)p.s[(size_t)i]] = m - 1 - i;
    return true;
}

bool xfpat_find(const xfpat &p, const char *t, int32_t n, int32_t zl, int32_t zr, int32_t from,
                int32_t &ms, int32_t &me)
{
    from = std::max(from, zl);
    if (p.regex)
        return regex_find(t, zl, zr, from, ms, me);
    if (p.arb)
        return xfpat_find_arb(p, t, zl, zr, from, ms, me, nullptr);
    int32_t m = (int32_t)p.s.size();
    if (p.lastnb < 0 && n < zl) {
        // A line that ends before the zone holds blanks enough at its left column.
        ms = zl;
        me = zl + m;
        return from <= zl;
    }
    if (p.varblank) {
        for (int32_t i = from; i < zr; i++) {
            int32_t e = varblank_at(p, t, i, zr);
            if (e >= 0 && word_ok(p, t, n, i, e)) {
                ms = i;
                me = e;
                return true;
            }
        }
    } else {
        for (int32_t at = from;;) {
            int32_t i = plain_find(p, p.s, t, at, zr);
            if (i < 0)
                break;
            if (word_ok(p, t, n, i, i + m)) {
                ms = i;
                me = i + m;
                return true;
            }
            at = i + 1;
        }
    }
    // Blanks beyond the line's end are there to be matched.
    if (zr >= n && p.lastnb + 1 < m) {
        int32_t core = p.lastnb + 1;
        int32_t i = n - core;
        if (i >= from && i >= zl && (core == 0 || equal_at(t + i, p.s.substr(0, (size_t)core), p.icase)) &&
            word_ok(p, t, n, i, n)) {
            ms = i;
            me = n;
            return true;
        }
    }
    return false;
}

bool xfpat_find_back(const xfpat &p, const char *t, int32_t n, int32_t zl, int32_t zr,
                     int32_t before, int32_t &ms, int32_t &me)
{
    bool found = false;
    int32_t s, e;
    for (int32_t at = zl; xfpat_find(p, t, n, zl, zr, at, s, e) && s < before; at = s + 1) {
        ms = s;
        me = e;
        found = true;
        if (s >= zr)
            break;
    }
    return found;
}

void xfzone_bytes(int32_t li, int32_t &zl, int32_t &zr) { xfzone_bytes(xf->lines[li], zl, zr); }

void xfzone_bytes(const xfline &l, int32_t &zl, int32_t &zr)
{
    const int32_t *z = xv->perfile[(size_t)xfidx].zone;
    // Past the text's end a column is one byte, so a zone that starts
    // beyond a short line lies beyond its length.
    zl = z[0] <= 1 ? 0 : xfcol_off(l.text, l.len, z[0] - 1, xf->utf8);
    zr = z[1] <= 0 ? l.len : std::min<int32_t>(l.len, xfcol_off(l.text, l.len, z[1], xf->utf8));
}

bool xfhex_decode(std::string_view in, std::string &out)
{
    auto digit = [](char ch) {
        if (ch >= '0' && ch <= '9')
            return ch - '0';
        ch = (char)(ch | 32);
        return ch >= 'a' && ch <= 'f' ? ch - 'a' + 10 : -1;
    };
    if (in.size() < 4 || (in[0] != 'x' && in[0] != 'X') || in[1] != '\'' || in.back() != '\'')
        return false;
    std::string_view h = in.substr(2, in.size() - 3);
    if (h.size() % 2)
        return false;
    out.clear();
    for (size_t i = 0; i < h.size(); i += 2) {
        int a = digit(h[i]), b = digit(h[i + 1]);
        if (a < 0 || b < 0)
            return false;
        char ch = (char)(a * 16 + b);
        if (ch == '\n')
            return false;
        out.push_back(ch == 0 ? '\n' : ch);
    }
    return true;
}

xfcursor xfcursor_now()
{
    xfcursor c = xf->ptcur_i;
    for (size_t i = xf->curstack.size(); i-- > 0;)
        if (xf->curstack[i].prio >= c.prio)
            c = xf->curstack[i];
    return c;
}

void xfcursor_file(int32_t li, int32_t col)
{
    xfcursor c = xf->ptcur_i;
    c.ec = xvidx;
    c.fld = 0;
    c.li = li;
    c.col = std::max(0, col);
    c.prio = 30;
    xf->curstack.push_back(c);
}

namespace {

// SPAN: the text of lines li... joined, each cut to the zone, enough of it
// for a match that begins in line li; `first` is the length of line li's part.
struct joined {
    std::string text;
    std::vector<std::pair<int32_t, int32_t>> parts; // joined offset, line
};

void join_lines(const xfpat &p, int32_t li, joined &j)
{
    j.text.clear();
    j.parts.clear();
    int32_t limit = span_lines > 0 ? span_lines : 2147483647;
    // Enough following text for any plain match; a regular expression or
    // blank-collapsing string is given a bounded window of lines.
    size_t want = p.regex || p.varblank ? (size_t)-1 : p.s.size() + 1;
    int32_t maxl = p.regex || p.varblank ? std::min(limit, 64) : limit;
    size_t after = 0;
    for (int32_t k = 0; k < maxl && li + k < nbli(); k++) {
        int32_t zl, zr;
        xfzone_bytes(li + k, zl, zr);
        const xfline &l = xf->lines[li + k];
        std::string_view part(l.text + std::min<int32_t>(zl, l.len), (size_t)std::max(0, std::min<int32_t>(zr, l.len) - std::min<int32_t>(zl, l.len)));
        if (part == " ")
            part = {};
        if (k > 0 && span_blank) {
            j.text.push_back(' ');
            after++;
        }
        j.parts.emplace_back((int32_t)j.text.size(), li + k);
        j.text.append(part);
        if (k > 0)
            after += part.size();
        if (k > 0 && after >= want)
            break;
    }
}

} // namespace

int32_t xfsearch_lines(const xfpat &p, int32_t li, int32_t from, int dir, bool wrap, int32_t stop,
                       int32_t &ms, int32_t &me, bool &wrapped)
{
    wrapped = false;
    int32_t n = nbli();
    joined j;
    auto test = [&](int32_t k, int32_t col_from, bool first) -> bool {
        if (xv->scope != 1 && !xfinscope(k))
            return false;
        const xfline &l = xf->lines[k];
        int32_t zl, zr;
        xfzone_bytes(k, zl, zr);
        bool hit;
        if (dir > 0)
            hit = xfpat_find(p, l.text, l.len, zl, zr, first ? col_from : zl, ms, me);
        else
            hit = xfpat_find_back(p, l.text, l.len, zl, zr, first ? col_from : 2147483647, ms, me);
        if (hit || !span_on || k + 1 >= n)
            return hit;
        join_lines(p, k, j);
        int32_t firstlen = j.parts.size() > 1 ? j.parts[1].first : (int32_t)j.text.size();
        int32_t jn = (int32_t)j.text.size();
        int32_t s, e;
        int32_t base_from = first && dir > 0 ? std::max(0, col_from - zl) : 0;
        bool h = dir > 0 ? xfpat_find(p, j.text.data(), jn, 0, jn, base_from, s, e)
                         : xfpat_find_back(p, j.text.data(), jn, 0, jn,
                                           first ? col_from - zl : 2147483647, s, e);
        if (!h || s >= firstlen)
            return false;
        ms = s + zl;
        me = std::min(e, firstlen) + zl;
        return true;
    };
    bool first = true;
    int32_t k = li;
    for (; k >= 0 && k < n; k += dir, first = false)
        if (test(k, from, first))
            return k;
    if (!wrap)
        return -1;
    wrapped = true;
    // Once more from the other end, as far as the line it started behind.
    for (k = dir > 0 ? 0 : n - 1; k >= 0 && k < n && (dir > 0 ? k <= stop : k >= stop); k += dir)
        if (test(k, 0, false))
            return k;
    return -1;
}
