// SOrt and NSort: the lines in scope of a range rearranged by keys of
// columns, as text or as numbers. Lines out of scope keep their places.
//
// Only the lines' order changes: the sort works on a compact array of
// (key chunk, line) pairs, refining equal chunks with the next bytes of the
// key (a radix sort on seven bytes at a time), and the result is handed to
// the store as one permutation, which the journal keeps as the order alone.
// Equal keys keep their order, so sorting on one key after another works.
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

// A line's place in the sort: seven bytes of its key and, in the lowest
// byte, how many of them are real (7: the key goes on), so that one integer
// compare orders both the bytes and a key that ends before another.
#pragma pack(push, 4)
struct elem {
    uint64_t chunk; // key bytes, big-endian, and their count
    int32_t li;     // the line
};
#pragma pack(pop)
static_assert(sizeof(elem) == 12, "the array stays small for millions of lines");

constexpr int CHUNK = 7;

bool numeric = false; // NSort
bool fold = false;    // CASE SIGNORE: letters compare folded

bool whole_zone = true; // the zone is the whole line: no need to ask for it

// The bytes of key k of a line: [a, b).
void key_bytes(const xfline &l, int32_t li, const sort_key &k, int32_t &a, int32_t &b)
{
    int32_t zl = 0, zr = l.len;
    if (!whole_zone)
        xfzone_bytes(li, zl, zr);
    if (k.col1 == 0) {
        a = zl;
        b = zr;
    } else if (xf->utf8) {
        a = xfcol_off(l.text, l.len, k.col1 - 1, true);
        b = k.col2 ? xfcol_off(l.text, l.len, k.col2, true) : zr;
    } else {
        a = k.col1 - 1;
        b = k.col2 ? k.col2 : zr;
    }
    a = std::min(a, l.len);
    b = std::max(a, std::min(b, l.len));
}

// Numbers order as their values; anything that is no number comes first.
uint64_t number_chunk(const char *t, int32_t n)
{
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

uint64_t text_chunk(const char *t, int32_t n, int32_t off)
{
    uint64_t c = 0;
    int32_t got = std::max(0, std::min(CHUNK, n - off));
    if (got == CHUNK && !fold) {
        // Seven whole bytes: one load, in the order a compare wants.
        unsigned char b[8] = {0};
        std::memcpy(b, t + off, CHUNK);
        for (int i = 0; i < CHUNK; i++)
            c = (c << 8) | b[i];
        return c << 8 | (uint64_t)CHUNK;
    }
    for (int32_t i = 0; i < CHUNK; i++) {
        unsigned char ch = i < got ? (unsigned char)t[off + i] : 0;
        if (fold && ch >= 'A' && ch <= 'Z')
            ch = (unsigned char)(ch + 32);
        c = (c << 8) | ch;
    }
    return c << 8 | (uint64_t)got;
}

uint64_t chunk_of(int32_t li, const sort_key &k, int32_t off)
{
    const xfline &l = xf->lines[li];
    int32_t a, b;
    key_bytes(l, li, k, a, b);
    uint64_t c = numeric ? number_chunk(l.text + a, b - a) : text_chunk(l.text + a, b - a, off);
    return k.down ? ~c : c;
}

// A stretch of the array still to be ordered, by key `key` from byte `off`.
struct task {
    size_t b, e;
    size_t key;
    int32_t off;
};

void sort_elems(std::vector<elem> &v, const std::vector<sort_key> &keys)
{
    std::vector<task> todo{{0, v.size(), 0, 0}};
    auto by_chunk = [](const elem &x, const elem &y) { return x.chunk < y.chunk; };
    auto by_line = [](const elem &x, const elem &y) { return x.li < y.li; };
    while (!todo.empty()) {
        task t = todo.back();
        todo.pop_back();
        if (t.key >= keys.size()) {
            std::sort(v.begin() + (long)t.b, v.begin() + (long)t.e, by_line);
            continue;
        }
        const sort_key &k = keys[t.key];
        for (size_t i = t.b; i < t.e; i++)
            v[i].chunk = chunk_of(v[i].li, k, t.off);
        std::sort(v.begin() + (long)t.b, v.begin() + (long)t.e, by_chunk);
        for (size_t i = t.b; i < t.e;) {
            size_t j = i + 1;
            while (j < t.e && v[j].chunk == v[i].chunk)
                j++;
            if (j - i > 1) {
                // Equal so far: a full chunk goes on in the same key, a
                // key that ended goes on to the next key.
                uint64_t c = k.down ? ~v[i].chunk : v[i].chunk;
                bool more = !numeric && (c & 0xff) == CHUNK;
                todo.push_back({i, j, more ? t.key : t.key + 1, more ? t.off + CHUNK : 0});
            }
            i = j;
        }
    }
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
    numeric = num;
    fold = xf->case_s == 0;
    const int32_t *z = xv->perfile[(size_t)xfidx].zone;
    whole_zone = z[0] <= 1 && z[1] <= 0;
    std::vector<elem> v;
    v.reserve((size_t)n);
    for (int32_t li = first; li < first + n; li++)
        if (xv->scope == 1 || xfinscope(li))
            v.push_back({0, li});
    sort_elems(v, keys);
    // The lines in scope take the sorted lines' places in turn; the others
    // stay where they are.
    std::vector<int32_t> order((size_t)n);
    for (int32_t k = 0; k < (int32_t)n; k++)
        order[(size_t)k] = k;
    size_t s = 0;
    for (int32_t k = 0; k < (int32_t)n; k++)
        if (xv->scope == 1 || xfinscope(first + k))
            order[(size_t)k] = v[s++].li - first;
    std::vector<elem>().swap(v);
    xf_do('P', nullptr, first, (int32_t)n, 1, nullptr, num ? "xfcm_nsort:274" : "xfcm_sort:274",
          order.data());
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
