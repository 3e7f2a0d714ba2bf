// SOrt and NSort: the lines in scope of a range rearranged by keys of
// columns, as text or as numbers. Lines out of scope keep their places.
//
// A file of millions of lines is sorted with one array of four bytes a line
// beside it, the order that the store applies and the journal then keeps.
// The sort itself runs on the line records in the store's own array, so a
// compare reaches the texts directly.  For its time each record carries, in
// place of its level, its offset in the range, which tells equal keys apart
// (they keep their order, so sorting on one key after another works) and
// names the line in the end; the levels and marks wait in the order array.
// The texts then go back where they were and the store makes the move
// itself, through the one path that journals a change.  NSort reads the
// first key's number of each line once, not at every compare.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "session/xed.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

struct sort_key {
    int32_t col1;  // first column, from 1
    int32_t col2;  // last column, 0 for the end of the zone
    bool down;     // descending
};

// Whether the first n bytes are all single-byte characters: then, even in
// a UTF-8 file, a column is a byte, and a compare (which asks for the key's
// columns again each time) needs no decoding.
bool ascii(const char *t, int32_t n)
{
    for (int32_t i = 0; i < n; i++)
        if ((unsigned char)t[i] >= 0x80)
            return false;
    return true;
}

// How two records compare; `selevel` holds the offset of the line.
struct order_by {
    const std::vector<sort_key> &keys;
    bool numeric;               // NSort
    bool fold;                  // CASE SIGNORE: letters compare folded
    bool whole_zone;            // the zone is the whole line: no need to ask for it
    std::vector<uint64_t> num0; // NSort: the first key's value, by offset

    // The bytes of key k of a line: [a, b).
    void key_bytes(const xfline &l, const sort_key &k, int32_t &a, int32_t &b) const
    {
        int32_t len = l.len;
        int32_t zl = 0, zr = len;
        if (!whole_zone)
            xfzone_bytes(l, zl, zr);
        if (k.col1 == 0) {
            a = zl;
            b = zr;
        } else if (xf->utf8 && !ascii(l.text, std::min(len, k.col2 ? k.col2 : len))) {
            a = xfcol_off(l.text, len, k.col1 - 1, true);
            b = k.col2 ? xfcol_off(l.text, len, k.col2, true) : zr;
        } else {
            a = k.col1 - 1;
            b = k.col2 ? k.col2 : zr;
        }
        a = std::min(a, len);
        b = std::max(a, std::min(b, len));
    }

    // Numbers order as their values; anything that is no number comes first.
    uint64_t number(const xfline &l, const sort_key &k) const
    {
        int32_t a, b;
        key_bytes(l, k, a, b);
        const char *t = l.text + a;
        int32_t n = b - a;
        char buf[80];
        int32_t i = 0;
        while (i < n && t[i] == ' ')
            i++;
        int32_t m = std::min<int32_t>(n - i, (int32_t)sizeof buf - 1);
        std::memcpy(buf, t + i, (size_t)m);
        buf[m] = 0;
        char *end;
        double v = std::strtod(buf, &end);
        if (end == buf || v != v)
            return 0;
        uint64_t bits;
        std::memcpy(&bits, &v, sizeof bits);
        bits = bits >> 63 ? ~bits : bits | (1ULL << 63);
        return bits | 1; // never 0, the value of no number
    }

    // Bytes in order, a key that ends first sorting first.
    int text_cmp(const char *p, int32_t n, const char *q, int32_t m) const
    {
        int32_t c = std::min(n, m);
        if (!fold) {
            if (int r = std::memcmp(p, q, (size_t)c))
                return r;
        } else {
            for (int32_t i = 0; i < c; i++) {
                unsigned char x = (unsigned char)p[i], y = (unsigned char)q[i];
                x = x >= 'A' && x <= 'Z' ? (unsigned char)(x + 32) : x;
                y = y >= 'A' && y <= 'Z' ? (unsigned char)(y + 32) : y;
                if (x != y)
                    return x < y ? -1 : 1;
            }
        }
        return n < m ? -1 : n > m ? 1 : 0;
    }

    int key_cmp(const xfline &x, const xfline &y, size_t ki) const
    {
        const sort_key &k = keys[ki];
        int r;
        if (numeric) {
            uint64_t u = ki == 0 ? num0[x.selevel] : number(x, k);
            uint64_t v = ki == 0 ? num0[y.selevel] : number(y, k);
            r = u < v ? -1 : u > v ? 1 : 0;
        } else {
            int32_t a, b, c, d;
            key_bytes(x, k, a, b);
            key_bytes(y, k, c, d);
            r = text_cmp(x.text + a, b - a, y.text + c, d - c);
        }
        return k.down ? -r : r;
    }

    // The keys alone: equal keys give 0.
    int operator()(const xfline &x, const xfline &y) const
    {
        for (size_t ki = 0; ki < keys.size(); ki++)
            if (int r = key_cmp(x, y, ki))
                return r;
        return 0;
    }
};

// What moves when the texts go back: all of a record but its level and
// the low bit of its mark, which never left their slots.
struct head {
    char *text;
    uint32_t len, mark_hi;
};
head head_of(const xfline &l) { return {l.text, l.len, l.mark_hi}; }
void set_head(xfline &l, const head &h)
{
    l.text = h.text;
    l.len = h.len;
    l.mark_hi = h.mark_hi;
}

// The record in slot k came from slot o[k]: it goes back there, each cycle
// followed once, a slot done marked by a complemented entry until the end.
void put_back(xfline *r, std::vector<int32_t> &o)
{
    int32_t n = (int32_t)o.size();
    for (int32_t k = 0; k < n; k++) {
        if (o[(size_t)k] < 0 || o[(size_t)k] == k)
            continue;
        head carry = head_of(r[k]);
        int32_t j = k;
        do {
            int32_t d = o[(size_t)j];
            o[(size_t)j] = ~d;
            head next = head_of(r[d]);
            set_head(r[d], carry);
            carry = next;
            j = d;
        } while (j != k);
    }
    for (auto &x : o)
        if (x < 0)
            x = ~x;
}

// A quick sort in three parts, keys less than, equal to and greater than
// the pivot's: lines of equal keys are gathered at once and then put in
// order by their offsets alone, which reaches no text (keys that repeat
// over a large file would otherwise send every compare to two texts far
// apart).  The pivot is the median of three; too deep a recursion ends in
// a heap sort, and short runs in an insertion sort.  While a partition
// scans the records, the texts a few records ahead are fetched into the
// cache: that is where the time of a large sort goes.
template <class Cmp> void sort_records(xfline *a, xfline *b, const Cmp &cmp, int depth)
{
    constexpr ptrdiff_t ahead = 8;
    auto less = [&cmp](const xfline &x, const xfline &y) {
        int c = cmp(x, y);
        return c ? c < 0 : x.selevel < y.selevel;
    };
    auto by_offset = [](const xfline &x, const xfline &y) { return x.selevel < y.selevel; };
    while (b - a > 16) {
        if (depth-- == 0) {
            std::make_heap(a, b, less);
            std::sort_heap(a, b, less);
            return;
        }
        xfline *x = a, *y = a + (b - a) / 2, *z = b - 1;
        const xfline &mid = less(*x, *y) ? (less(*y, *z) ? *y : less(*x, *z) ? *z : *x)
                                         : (less(*x, *z) ? *x : less(*y, *z) ? *z : *y);
        const xfline pivot = mid;
        xfline *lt = a, *i = a, *gt = b;
        while (i < gt) {
            if (gt - i > ahead) {
                __builtin_prefetch(i[ahead].text);
                __builtin_prefetch(gt[-ahead].text);
            }
            int c = cmp(*i, pivot);
            if (c < 0)
                std::swap(*lt++, *i++);
            else if (c > 0)
                std::swap(*i, *--gt);
            else
                i++;
        }
        std::sort(lt, gt, by_offset);
        // The smaller side by recursion, the larger in this loop.
        if (lt - a < b - gt) {
            sort_records(a, lt, cmp, depth);
            a = gt;
        } else {
            sort_records(gt, b, cmp, depth);
            b = lt;
        }
    }
    std::sort(a, b, less);
}

// The order of the lines [first, first+n) by the keys, for xf_do code 'P':
// the lines in scope take the sorted lines' places in turn, the others stay.
// `placed` says that the lines stand in that order already (code 'p').
std::vector<int32_t> sorted_order(int32_t first, int32_t n, order_by &by, bool &placed)
{
    bool all = xv->scope == 1;
    std::vector<int32_t> o((size_t)n);
    xfline *r = xf->lines.span(first, n);
    // Each record lends its level and low mark bit to the order array and
    // takes its offset instead; those in scope gather at the front, still
    // in file order (the scope is asked before a record is touched).
    int32_t m = 0;
    bool same = true; // every line has the same level and mark
    for (int32_t k = 0; k < n; k++) {
        bool in = all || xfinscope(first + k);
        o[(size_t)k] = (int32_t)(r[k].selevel | (uint32_t)r[k].mark_lo << 31);
        same = same && o[(size_t)k] == o[0] && r[k].mark_hi == r[0].mark_hi;
        r[k].selevel = (uint32_t)k;
        if (in)
            std::swap(r[m++], r[k]);
    }
    if (by.numeric) {
        by.num0.assign((size_t)n, 0);
        for (int32_t j = 0; j < m; j++)
            by.num0[r[j].selevel] = by.number(r[j], by.keys[0]);
    }
    int depth = 0;
    for (int32_t k = m; k > 1; k >>= 1)
        depth += 2;
    const sort_key &k0 = by.keys[0];
    if (by.keys.size() == 1 && k0.col1 == 0 && by.whole_zone && !by.numeric && !by.fold) {
        // The plain SORT of whole lines: the texts compared as they are.
        bool down = k0.down;
        auto whole = [down](const xfline &x, const xfline &y) {
            int32_t xn = x.len, yn = y.len;
            int c = std::memcmp(x.text, y.text, (size_t)std::min(xn, yn));
            if (c == 0)
                c = xn < yn ? -1 : xn > yn ? 1 : 0;
            return down ? -c : c;
        };
        sort_records(r, r + m, whole, depth);
    } else {
        sort_records(r, r + m, by, depth);
    }
    std::vector<uint64_t>().swap(by.num0);
    // When all lines are in scope and alike in level and mark (a file sorted
    // whole, as a rule), the records stand where they belong: each takes the
    // common level back and the order array learns whose record it is.
    placed = m == n && same;
    if (placed) {
        uint32_t lent = (uint32_t)o[0];
        for (int32_t k = 0; k < n; k++) {
            o[(size_t)k] = (int32_t)r[k].selevel;
            r[k].selevel = lent & 0x7fffffffu;
            r[k].mark_lo = lent >> 31;
        }
        return o;
    }
    // Every slot takes back its own level and mark; the order array learns
    // whose record stands in the slot.
    for (int32_t k = 0; k < n; k++) {
        uint32_t from = r[k].selevel, lent = (uint32_t)o[(size_t)k];
        r[k].selevel = lent & 0x7fffffffu;
        r[k].mark_lo = lent >> 31;
        o[(size_t)k] = (int32_t)from;
    }
    put_back(r, o);
    // The sorted lines go to the places in scope in turn.  Filled from the
    // end, an entry is read before its slot is written over.
    int32_t s = m;
    for (int32_t k = n - 1; k >= 0; k--)
        o[(size_t)k] = all || xfinscope(first + k) ? o[(size_t)--s] : k;
    return o;
}

// "[range] [keys]": the lines, the keys. False after message 16 or 58.
bool parse(std::string_view ops, int32_t &first, int64_t &n, std::vector<sort_key> &keys)
{
    std::string_view rest = xftrim(ops);
    int32_t cur = curline();
    first = std::max(0, cur);
    n = (int64_t)nbli() - first;
    std::string_view save = rest;
    std::string_view w = xfword(rest);
    std::string lw = xffold(w);
    long v;
    if (!w.empty() && w[0] == ':') {
        std::string_view t = w;
        int64_t count;
        if (int r = xftarget_forward(t, count)) {
            cmd_rc = r == -2 ? 2 : 5;
            return false;
        }
        xfcount_range(count, first, n);
    } else if (w == "*") {
    } else if (abbrev(lw, "all", 1)) {
        first = 0;
        n = nbli();
    } else if (abbrev(lw, "sel", 1)) {
        xfmsg(58, 1);
        cmd_rc = 1;
        return false;
    } else if (!w.empty() && xfnumber(w, v) && v >= 0) {
        xfcount_range(v, first, n);
    } else {
        rest = save;
    }
    bool down = false;
    std::vector<sort_key> out;
    for (w = xfword(rest); !w.empty(); w = xfword(rest)) {
        lw = xffold(w);
        if (lw == "a" || lw == "d") {
            down = lw == "d";
            continue;
        }
        long c1, c2 = 0;
        std::string_view w2 = xfword(rest);
        if (!xfnumber(w, c1) || c1 < 1 || c1 > xfmax_cols ||
            !(w2 == "*" || (xfnumber(w2, c2) && c2 >= c1 && c2 <= xfmax_cols))) {
            xfmsg(16, 1);
            cmd_rc = 1;
            return false;
        }
        out.push_back({(int32_t)c1, (int32_t)c2, down});
    }
    // No columns: the zone, in the direction given.
    if (out.empty())
        out.push_back({0, 0, down});
    keys = std::move(out);
    return true;
}

int sort(const xfcmd &c, bool num)
{
    if (!xf)
        return 1;
    int32_t first;
    int64_t n;
    std::vector<sort_key> keys;
    if (!parse(c.ops(), first, n, keys))
        return 1;
    cmd_rc = 0;
    n = std::max<int64_t>(0, std::min<int64_t>(n, (int64_t)nbli() - first));
    if (n < 2)
        return 1;
    const int32_t *z = xv->perfile[(size_t)xfidx].zone;
    order_by by{keys, num, xf->case_s == 0, z[0] <= 1 && z[1] <= 0, {}};
    bool placed;
    std::vector<int32_t> order = sorted_order(first, (int32_t)n, by, placed);
    xf_do(placed ? 'p' : 'P', nullptr, first, (int32_t)n, 1, nullptr, num ? "xfcm_nsort:274" : "xfcm_sort:274",
          &order);
    return 1;
}

} // namespace

int xfcm_sort(const xfcmd &c)
{
    xftrace("Commande xfcm_sort");
    return sort(c, false);
}

int xfcm_nsort(const xfcmd &c)
{
    xftrace("Commande xfcm_nsort");
    return sort(c, true);
}
