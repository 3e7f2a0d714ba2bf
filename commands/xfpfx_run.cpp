// Prefix entries run: once per screen read, after everything typed has been
// taken in, xfapply performs the waiting entries of every file on screen.
// Single entries go first in the order they were typed, deletions after
// them (they move lines), then the block table's pairs and sources with
// their destination, then prefix macros. Each operation is one undo step;
// one that is refused leaves the file as it was.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "session/xed.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace {

bool shown(int32_t li) { return li >= 0 && li < nbli() && xfinscope(li); }

// The lines n lines in scope from li take: `first` and the count of
// indexes. From the top of the file it starts at line 0, one fewer.
void range_of(int32_t li, int64_t n, int32_t &first, int64_t &span)
{
    if (li < 0) {
        li = 0;
        n--;
    }
    first = li;
    int32_t k = li;
    for (int64_t got = 0; k < nbli() && got < n; k++)
        got += xfinscope(k) ? 1 : 0;
    span = k - li;
}

bool live(const xfpend &p) { return p.code != PFX_DONE; }

// The first live entry of the table that `want` accepts, -1 none.
template <class F> int first_of(const std::vector<xfpend> &t, F want, int after = -1)
{
    for (int i = after + 1; i < (int)t.size(); i++)
        if (live(t[(size_t)i]) && want(t[(size_t)i]))
            return i;
    return -1;
}

std::vector<xfline> blank_lines(int64_t n)
{
    std::vector<xfline> v((size_t)n);
    for (auto &l : v)
        l = xfline{xfstrdup(""), 0, 0, xv->select_new};
    return v;
}

// The level that takes a line out of the display range.
int32_t hidden_level() { return xv->display_hi == INT_MAX ? INT_MAX : xv->display_hi + 1; }

void hide(int32_t first, int64_t span)
{
    int32_t lv = hidden_level();
    for (int32_t k = first; k < first + span && k < nbli(); k++)
        if (xfinscope(k))
            xf->lines[k].selevel = lv;
    // A current line that leaves goes to the next line shown.
    int32_t &cur = curline();
    if (cur >= 0 && !xfinscope(cur)) {
        int32_t k = cur;
        while (k < nbli() && !xfinscope(k))
            k++;
        while (k >= nbli() && k > topline && (k >= nbli() || !xfinscope(k)))
            k--;
        cur = std::max<int32_t>(topline, k);
    }
}

// S: the excluded group that starts at li (or just below a shown line).
void show_group(int32_t li, int32_t count)
{
    int32_t g0 = shown(li) || li < 0 ? li + 1 : li;
    int32_t g1 = g0;
    while (g1 < nbli() && !xfinscope(g1))
        g1++;
    int32_t a = g0, b = g1;
    if (count > 0)
        b = std::min<int64_t>(g1, (int64_t)g0 + count);
    else if (count < 0)
        a = std::max<int64_t>(g0, (int64_t)g1 + count);
    for (int32_t k = a; k < b; k++)
        xf->lines[k].selevel = xv->display_hi;
}

std::vector<std::string> texts_of(int32_t first, int64_t span)
{
    std::vector<std::string> v;
    for (int32_t k = first; k < first + span && k < nbli(); k++)
        if (xfinscope(k))
            v.emplace_back(xf->lines[k].text, (size_t)xf->lines[k].len);
    return v;
}

// The file-area row the entry was typed on, -1 none.
int row_of(const xfpend &p)
{
    for (size_t r = 0; r < xv->rows.size(); r++)
        if (p.field > 0 ? xv->rows[r].pfx == p.field : xv->rows[r].pli == p.li)
            return (int)r;
    return -1;
}

// SCALE and TABL: put on the entry's row.
void set_row(const xfpend &p)
{
    int row = row_of(p);
    if (row < 0)
        return;
    if (xv->rows[(size_t)row].li == curline()) {
        xfmsg(57, 1);
        return;
    }
    xfviewfile &pf = xv->perfile[(size_t)xfidx];
    (p.code == PFX_SCALE ? pf.scale : pf.tabline) = row + 1;
}

// E: the line stays on its row while the rest of the file scrolls, unless
// it stands on the area's first or last row, where scrolling begins. E on
// a line held so lets it go; the oldest goes when the list is full.
void keep_line(const xfpend &p)
{
    int row = row_of(p);
    if (row <= 0 || row >= (int)xv->rows.size() - 1)
        return;
    std::vector<xfkept> &k = xv->perfile[(size_t)xfidx].kept;
    auto held = std::find_if(k.begin(), k.end(), [&](const xfkept &e) { return e.li == p.li || e.row == row; });
    bool again = held != k.end() && held->li == p.li;
    if (held != k.end())
        k.erase(held);
    if (again)
        return;
    if (k.size() >= xfkept_max)
        k.erase(k.begin());
    k.push_back(xfkept{p.li, row});
}

void add_lines(int32_t li, int64_t n)
{
    if (n > (int64_t)xfmax_lines - nbli()) {
        xfmsg(16, 1);
        return;
    }
    xfadd(li, (int32_t)n, 1);
}

// One entry of the single table, D apart.
void run_single(const xfpend &p)
{
    int32_t first;
    int64_t span;
    int64_t n = p.count == xfpend_all ? (int64_t)nbli() - p.li : p.count;
    switch (p.code) {
    case PFX_ADD:
    case PFX_INS:
        add_lines(p.li, n);
        break;
    case PFX_PUT:
        range_of(p.li, n, first, span);
        pfx_buffer = texts_of(first, span);
        break;
    case PFX_DUP:
    case PFX_DUP2:
    case PFX_REP:
        if (n > (int64_t)xfmax_lines - nbli())
            xfmsg(16, 1);
        else
            xfdup(p.li, (int32_t)n);
        break;
    case PFX_CUR:
        curline() = p.li;
        if (ptcu.ec == xvidx && p.li >= 0)
            xfcursor_file(p.li, 0);
        break;
    case PFX_GET: {
        std::vector<xfline> v;
        for (auto &t : pfx_buffer)
            v.push_back(xfline{xfstrdup(t), (int32_t)t.size(), 0, xv->select_new});
        xfinsert_lines(p.li, v, "xfpfx:g");
        break;
    }
    case PFX_EDIT:
        if (p.li >= 0) {
            keep_line(p);
            xfcursor_file(p.li, xfcol_len(xf->lines[p.li].text, xf->lines[p.li].len, xf->utf8));
        }
        break;
    case PFX_SHR:
    case PFX_SHL:
        if (p.li >= 0 && n > 0)
            (p.code == PFX_SHR ? xfshr : xfshl)(p.li, p.li, (int32_t)std::min<int64_t>(n, INT_MAX), false);
        break;
    case PFX_EXCL:
        range_of(p.li, n, first, span);
        hide(first, span);
        break;
    case PFX_SHOW:
        show_group(p.li, p.count);
        break;
    case PFX_SCALE:
    case PFX_TABL:
        set_row(p);
        break;
    case PFX_LC:
    case PFX_UC:
        range_of(p.li, n, first, span);
        if (span > 0)
            xfcase_lines(first, (int32_t)(first + span - 1), p.code == PFX_UC);
        break;
    }
}

// Runs the single table's entries of one kind (D or the others), each once,
// in the order they were typed; a search from the start after each, since
// lines move.
void run_singles(bool deletions)
{
    for (;;) {
        int i = first_of(xf->pend1, [&](const xfpend &p) {
            return p.code > 0 && (p.code == PFX_DEL) == deletions;
        });
        if (i < 0)
            return;
        xfpend p = xf->pend1[(size_t)i];
        xf->pend1[(size_t)i].code = PFX_DONE;
        if (p.li >= nbli())
            continue;
        if (p.li >= 0 && !xfinscope(p.li) && p.code != PFX_SHOW) {
            xfmsg(55, 1);
            continue;
        }
        xfopen_groups();
        if (!deletions) {
            run_single(p);
            continue;
        }
        int32_t first;
        int64_t span;
        range_of(p.li, p.count == xfpend_all ? (int64_t)nbli() + 1 : p.count, first, span);
        if (span > 0)
            xfdel(first, span, "xfpfx:d");
    }
}

// ---------------------------------------------------------------------------
// The block table.

// Where copied or moved lines go.
struct dest {
    int kind = 0;       // PFX_BEFORE, PFX_AFTER, PFX_O (O or a pair of OO)
    int32_t li = 0;     // the line of the entry (the first of OO)
    int32_t last = 0;   // OO: the second line; O: -1
    int32_t count = 1;  // O: its count
    bool numbered = false; // O: a number was given
    std::vector<int> recs; // its entries in the block table
};

bool is_dest(int32_t c) { return c == PFX_BEFORE || c == PFX_AFTER || c == PFX_O || c == PFX_OO; }

// 0: no destination yet; 1: one found; -1: more than one.
int find_dest(dest &d)
{
    const auto &t = xf->pend2;
    int found = 0;
    std::vector<int> oo;
    for (int i = 0; i < (int)t.size(); i++) {
        const xfpend &p = t[(size_t)i];
        if (!live(p) || !is_dest(p.code))
            continue;
        if (p.code == PFX_OO) {
            oo.push_back(i);
            continue;
        }
        found++;
        d = dest{p.code, p.li, -1, p.count, p.numbered, {i}};
    }
    if (oo.size() == 2) {
        found++;
        int32_t a = t[(size_t)oo[0]].li, b = t[(size_t)oo[1]].li;
        d = dest{PFX_O, std::min(a, b), std::max(a, b), 1, false, oo};
    } else if (oo.size() > 2) {
        found += 2;
    }
    return found > 1 ? -1 : found;
}

void done(const std::vector<int> &recs)
{
    for (int i : recs)
        xf->pend2[(size_t)i].code = PFX_DONE;
}

void refuse(const std::vector<int> &recs)
{
    xfmsg(5, 1);
    done(recs);
}

// The text of dst with src laid over it, column by column: src's blanks
// leave dst's text.
std::string overlay(std::string_view dst, std::string_view src)
{
    bool u = xf->utf8 != 0;
    auto cols = [u](std::string_view t) {
        std::vector<std::string_view> v;
        for (int32_t off = 0, next; off < (int32_t)t.size(); off = next) {
            xfcol_char(t.data(), (int32_t)t.size(), off, next, u);
            v.push_back(t.substr((size_t)off, (size_t)(next - off)));
        }
        return v;
    };
    std::vector<std::string_view> d = cols(dst), s = cols(src);
    if (d.size() < s.size())
        d.resize(s.size(), " ");
    for (size_t k = 0; k < s.size(); k++)
        if (s[k] != " ")
            d[k] = s[k];
    std::string out;
    for (auto &c : d)
        out += c;
    if (!xf->keepblanks)
        while (!out.empty() && out.back() == ' ')
            out.pop_back();
    return out;
}

void free_lines(std::vector<xfline> &v)
{
    for (auto &l : v)
        xftext_free(l.text);
    v.clear();
}

// Overlays the lines of [a, a+span) on the destination; the source goes
// afterwards when moved.
void overlay_to(int32_t a, int64_t span, bool move, const dest &d)
{
    std::vector<xfline> src = xfcopy_out(a, span);
    if (src.empty())
        return;
    int32_t at = d.li;
    int64_t len = (int64_t)src.size();
    if (d.last >= 0)
        len = (int64_t)texts_of(std::max(0, d.li), d.last - std::max(0, d.li) + 1).size() + (d.li < 0);
    else if (d.numbered)
        len = d.count;
    if (at < 0) {
        // Over the top of the file: a first line to lay the text on.
        std::vector<xfline> one = blank_lines(1);
        xfinsert_lines(-1, one, "xfpfx:o");
        at = 0;
        a++;
    }
    for (int64_t j = 0; j < len; j++, at++) {
        while (at < nbli() && !xfinscope(at))
            at++;
        if (at >= nbli()) {
            std::vector<xfline> one = blank_lines(1);
            xfinsert_lines(nbli() - 1, one, "xfpfx:o");
        }
        const xfline &s = src[(size_t)(j % (int64_t)src.size())];
        const xfline &l = xf->lines[at];
        xf_do('r', overlay(std::string_view(l.text, (size_t)l.len), std::string_view(s.text, (size_t)s.len)),
              at, "xfpfx:o");
    }
    free_lines(src);
    if (move)
        xfdel(a, span, "xfpfx:mo");
}

// Copies or moves the lines of [a, a+span) to the destination, or refuses
// with message 5 when it stands inside them.
void copy_to(int32_t a, int64_t span, bool move, const dest &d, std::vector<int> recs)
{
    recs.insert(recs.end(), d.recs.begin(), d.recs.end());
    if (a < 0)
        return refuse(recs);
    if (d.kind == PFX_O) {
        int32_t d0 = d.li, d1 = d.last >= 0 ? d.last : d.li;
        if (d0 < a + span && d1 >= a && !(d0 < 0 && a > 0))
            return refuse(recs);
        done(recs);
        xfopen_groups();
        overlay_to(a, span, move, d);
        return;
    }
    int32_t ip = d.kind == PFX_AFTER ? d.li + 1 : d.li; // the new lines' first index
    if (ip < 0 || (a < ip && ip < a + span))
        return refuse(recs);
    done(recs);
    xfopen_groups();
    std::vector<xfline> lines = xfcopy_out(a, span);
    if (move) {
        int64_t gone = xfdel(a, span, "xfpfx:m");
        if (ip >= a + span)
            ip -= (int32_t)gone;
    }
    xfinsert_lines(ip - 1, lines, move ? "xfpfx:m" : "xfpfx:c");
}

// The block goes to the file that CREAte or REPlace parked, ahead of any
// destination in this file; a moved block leaves the file only once it is
// safely written. The file is served once, whatever the outcome.
void to_file(int32_t a, int64_t span, bool move, const std::vector<int> &recs)
{
    done(recs);
    xfparked p = std::move(pdf_parked);
    pdf_parked = {};
    if (!xfwrite_block(p.path, p.kind == PARK_CREATE, a, span) || !move)
        return;
    xfopen_groups();
    xfdel(a, span, "xfpfx:m");
}

// The number of a pair: the first bound's when it has one.
int32_t pair_count(const xfpend &p, const xfpend &q)
{
    const xfpend &lo = p.li <= q.li ? p : q, &hi = p.li <= q.li ? q : p;
    return lo.numbered ? lo.count : hi.numbered ? hi.count : 1;
}

// A pair's lines [lo, hi], the top of the file counting from line 0.
void run_pair(int32_t code, int32_t lo, int32_t hi, int32_t count)
{
    int32_t first = std::max(0, lo);
    int64_t span = (int64_t)hi - first + 1;
    if (span <= 0 || first >= nbli())
        return;
    xfopen_groups();
    switch (code) {
    case PFX_DD:
        xfdel(first, span, "xfpfx:dd");
        break;
    case PFX_PP:
        pfx_buffer = texts_of(first, span);
        break;
    case PFX_DUPS:
    case PFX_DUPS2:
    case PFX_REPS: {
        std::vector<xfline> one = xfcopy_out(first, span);
        if ((int64_t)one.size() * count > (int64_t)xfmax_lines - nbli()) {
            free_lines(one);
            xfmsg(16, 1);
            break;
        }
        std::vector<xfline> all;
        for (int32_t t = 0; t < count; t++)
            for (auto &l : one) {
                all.push_back(l);
                all.back().text = xfstrdup(std::string_view(l.text, (size_t)l.len));
            }
        free_lines(one);
        xfinsert_lines(hi, all, "xfpfx:dup");
        break;
    }
    case PFX_SHRS:
        xfshr(first, hi, count, false);
        break;
    case PFX_SHLS:
        xfshl(first, hi, count, false);
        break;
    case PFX_XX:
        hide(first, span);
        break;
    case PFX_LCC:
    case PFX_UCC:
        xfcase_lines(first, hi, code == PFX_UCC);
        break;
    }
}

struct block_kind {
    int32_t codes[3]; // entry codes that make up the kind (0 unused)
    bool pair;        // two bounds, else a single source with a count
    bool needs_dest;  // copies or moves
};
// The order in which pairs are sought.
constexpr block_kind kinds[] = {
    {{PFX_DD}, true, false},   {{PFX_PP}, true, false},
    {{PFX_CC}, true, true},    {{PFX_DUPS, PFX_DUPS2, PFX_REPS}, true, false},
    {{PFX_SHRS}, true, false}, {{PFX_SHLS}, true, false},
    {{PFX_MM}, true, true},    {{PFX_M}, false, true},
    {{PFX_C}, false, true},    {{PFX_XX}, true, false},
    {{PFX_LCC}, true, false},  {{PFX_UCC}, true, false},
};

bool of_kind(const block_kind &k, int32_t code)
{
    return code > 0 && (code == k.codes[0] || code == k.codes[1] || code == k.codes[2]);
}

// Runs every complete block of one kind; false when one waits for a
// destination.
bool run_kind(const block_kind &k)
{
    for (;;) {
        auto want = [&](const xfpend &p) { return of_kind(k, p.code); };
        int i = first_of(xf->pend2, want);
        int j = k.pair && i >= 0 ? first_of(xf->pend2, want, i) : i;
        if (i < 0 || j < 0)
            return true;
        xfpend p = xf->pend2[(size_t)i], q = xf->pend2[(size_t)j];
        int32_t lo = std::min(p.li, q.li), hi = std::max(p.li, q.li);
        std::vector<int> recs = k.pair ? std::vector<int>{i, j} : std::vector<int>{i};
        if (lo >= nbli() || hi >= nbli()) {
            done(recs);
            continue;
        }
        if (!k.needs_dest) {
            done(recs);
            run_pair(p.code, lo, hi, pair_count(p, q));
            continue;
        }
        bool move = p.code == PFX_MM || p.code == PFX_M;
        int32_t first = lo;
        int64_t span = (int64_t)hi - lo + 1;
        if (!k.pair)
            range_of(p.li, p.count == xfpend_all ? (int64_t)nbli() + 1 : p.count, first, span);
        if (pdf_parked.kind == PARK_CREATE || pdf_parked.kind == PARK_REPLACE) {
            to_file(first, span, move, recs);
            continue;
        }
        dest d;
        int found = find_dest(d);
        if (found == 0)
            return false;
        if (found < 0) {
            // Two destinations: nobody can tell which is meant.
            for (int r = 0; r < (int)xf->pend2.size(); r++)
                if (live(xf->pend2[(size_t)r]) && is_dest(xf->pend2[(size_t)r].code))
                    recs.push_back(r);
            refuse(recs);
            continue;
        }
        copy_to(first, span, move, d, recs);
    }
}

// Lines a PDFCOpy read wait for a place: the first A or B (F or P) takes
// them, ahead of any block that might want it.
void serve_copy()
{
    if (pdf_parked.kind != PARK_COPY)
        return;
    int i = first_of(xf->pend2, [](const xfpend &p) { return p.code == PFX_AFTER || p.code == PFX_BEFORE; });
    if (i < 0)
        return;
    xfpend p = xf->pend2[(size_t)i];
    int32_t after = p.code == PFX_AFTER ? p.li : p.li - 1;
    if (after < -1 || p.li >= nbli())
        return refuse({i});
    done({i});
    std::vector<xfline> v;
    for (auto &t : pdf_parked.lines)
        v.push_back(xfline{xfstrdup(t), (int32_t)t.size(), 0, xv->select_new});
    pdf_parked = {};
    xfopen_groups();
    xfinsert_lines(after, v, "xfpfx:pdfcopy");
}

// ---------------------------------------------------------------------------
// Macros.

void run_macros()
{
    xfile *f = xf;
    size_t budget = xf->pend1.size() + xf->pend2.size();
    for (; budget > 0; budget--) {
        std::vector<xfpend> *tb = &xf->pend1;
        int i = first_of(*tb, [](const xfpend &p) { return p.code == PFX_MACRO; });
        if (i < 0) {
            tb = &xf->pend2;
            i = first_of(*tb, [](const xfpend &p) { return p.code == PFX_MACRO; });
        }
        if (i < 0)
            return;
        xfpend p = (*tb)[(size_t)i];
        std::string text = xfpfx_text(p.li);
        (*tb)[(size_t)i].code = PFX_DONE;
        xfopen_groups();
        int r = xfpfx_macro(p, p.li >= 0 && !xfinscope(p.li) ? "SHADOW" : "SET");
        if (xf != f)
            return; // the file went while the macro ran
        if (r != 0) {
            if (r > 0)
                xfmsgs("..... Unable to execute macro \"" + p.words[0] + "\"", 1);
            if (p.li < nbli())
                xfpfx_error(p.li, text);
        }
    }
}

// What still waits, on the message line.
void report_waiting()
{
    std::vector<std::string> names;
    for (auto &p : xf->pend2)
        if (live(p) && p.code > 0 && std::find(names.begin(), names.end(), xfpfx_name(true, p.code)) == names.end())
            names.emplace_back(xfpfx_name(true, p.code));
    std::string m = "..... Pending:";
    for (auto &n : names)
        m += " " + n;
    if (!names.empty())
        xfmsgs(m, 0);
}

// Entries that ran go, and so do the texts of lines with none left.
void clean()
{
    for (auto *t : {&xf->pend1, &xf->pend2})
        t->erase(std::remove_if(t->begin(), t->end(), [](const xfpend &p) { return !live(p); }),
                 t->end());
    auto waiting = [](int32_t li) {
        for (auto *t : {&xf->pend1, &xf->pend2})
            for (auto &p : *t)
                if (p.li == li)
                    return true;
        return false;
    };
    auto &pt = xf->pfxtexts;
    pt.erase(std::remove_if(pt.begin(), pt.end(), [&](const auto &p) { return !waiting(p.second); }),
             pt.end());
}

// A single operation keeps its line on the row it was typed on: the screen
// shifts instead, by at most the operation's distance, so that a deletion
// or an addition above the current line does not slide the rows the user
// was looking at.
struct kept_row {
    int32_t li = -2;   // the line operated on, -2 none
    int rows = 0;      // file rows from it down to the current line's row
    int32_t dist = 0;  // how far the current line may move for it
};

int32_t row_distance(int32_t code)
{
    switch (code) {
    case PFX_DEL:
        return 10;
    case PFX_ADD: case PFX_INS: case PFX_DUP: case PFX_DUP2: case PFX_REP:
        return 30;
    case PFX_GET:
        return 40;
    default:
        return 0;
    }
}

kept_row note_row()
{
    kept_row k;
    if (xf->pend1.size() != 1 || !xf->pend2.empty())
        return k;
    const xfpend &p = xf->pend1.front();
    int r = -1, c = -1;
    for (int i = 0; i < (int)xv->rows.size(); i++) {
        const xview::rowmap &m = xv->rows[(size_t)i];
        if (r < 0 && (p.field > 0 ? m.pfx == p.field : m.pli == p.li && m.li == p.li))
            r = i;
        if (c < 0 && m.li == curline())
            c = i;
    }
    k.dist = row_distance(p.code);
    if (r < 0 || c < 0 || k.dist == 0 || p.li < 0)
        return k;
    // Rows that show no line (scale, tab line, reserved) do not count.
    int dir = c >= r ? 1 : -1;
    for (int i = r; i != c; i += dir)
        if (xv->rows[(size_t)(i + dir)].li != -4)
            k.rows += dir;
    k.li = p.li;
    return k;
}

// The line n file rows below li (above for n < 0), a shadow row counting as
// one; -2 when that row is a shadow row or off the file.
int32_t rows_from(int32_t li, int n)
{
    int dir = n >= 0 ? 1 : -1;
    for (int k = 0; k != n; k += dir) {
        int32_t nli = li + dir;
        bool hidden = false;
        while (nli >= 0 && nli < nbli() && !xfinscope(nli)) {
            nli += dir;
            hidden = true;
        }
        if (hidden && xv->shadow && xv->scope == 0 && (k += dir) == n)
            return -2;
        if (nli < topline || nli >= nbli())
            return -2;
        li = nli;
    }
    return li;
}

void keep_row(const kept_row &k)
{
    if (k.li < 0 || k.li >= nbli() || !xfinscope(k.li))
        return;
    int32_t cur = rows_from(k.li, k.rows);
    if (cur != -2 && std::abs((int64_t)cur - curline()) <= k.dist)
        curline() = cur;
}

void apply_file()
{
    if (xf->pend1.empty() && xf->pend2.empty())
        return;
    xfile *f = xf;
    kept_row row = note_row();
    int32_t case_mode = xf->case_mode;
    xf->case_mode = 0; // mixed, ignored: the entries' own searches
    serve_copy();
    run_singles(false);
    run_singles(true);
    for (const block_kind &k : kinds)
        run_kind(k);
    run_macros();
    if (xf != f)
        return;
    xf->case_mode = case_mode;
    report_waiting();
    clean();
    xfclampcur();
    keep_row(row);
}

} // namespace

int xfpfx_macro(const xfpend &p, const char *set)
{
    const xfmacro *m = nullptr;
    for (auto &r : rexx_macros)
        if (r.name == p.words[0])
            m = &r;
    if (!m)
        return 1;
    if (m->cls != 10 || !xfrexx_hook)
        return -1; // not a macro of this kind: a failure, silently
    int v = xvidx;
    xfile *f = xf;
    int32_t cur = curline();
    int number = xv->perfile[(size_t)xfidx].number;
    std::string args = " PREFIX " + std::string(set) + " " +
                       std::to_string(number == 2 ? p.li : p.li + 1);
    for (size_t k = 1; k < p.words.size(); k++)
        args += " " + p.words[k];
    std::string path = m->path;
    // The command line was taken before the prefix area ran: a command of
    // the macro's that is given back there must not run after it.
    std::vector<std::string> cmdlines;
    for (xview *w : views)
        cmdlines.push_back(w->cmdline);
    macro_depth++;
    int r = xfrexx_hook(path, args);
    macro_depth--;
    for (size_t k = 0; k < views.size() && k < cmdlines.size(); k++)
        views[k]->cmdline = cmdlines[k];
    // The file and its current line come back, if the file is still there.
    if (v < (int)views.size())
        xfsetview(v);
    auto it = std::find(files.begin(), files.end(), f);
    if (it == files.end())
        return r != 0 ? 1 : 0;
    if (xf != f) {
        xv->fileidx = (int32_t)(it - files.begin());
        xfsetfile(xv->fileidx);
    }
    curline() = std::clamp(cur, topline, std::max(topline, nbli() - 1));
    return r != 0 ? 1 : 0;
}

void xfpfx_take_parked()
{
    if (!xf || xf->pend2.empty())
        return;
    for (const block_kind &k : kinds)
        if (k.needs_dest)
            run_kind(k);
    clean();
    xfclampcur();
}

void xfapply()
{
    if (views.empty())
        return;
    int save = xvidx;
    std::vector<xfile *> seen;
    for (int v = 0; v < (int)views.size(); v++) {
        xfsetview(v);
        if (!xf || std::find(seen.begin(), seen.end(), xf) != seen.end())
            continue;
        seen.push_back(xf);
        apply_file();
    }
    if (save < (int)views.size())
        xfsetview(save);
}
