// Columns of a line's text. In a file of UTF-8 text a column is a
// character; in a file of bytes (Latin-1, binary) it is a byte. Every
// command that takes a column (zones, targets, CHANGE, SHIFT, margins, the
// cursor, the status line) counts it through these functions, never by
// bytes, so that a character is never cut in two.
//
// Each call walks the text once from its start; a caller that goes along a
// line (the page, a search) keeps its place with xfcol_char instead of
// asking again for every column, so a long line is never rescanned.
#include "session/xed.h"

#include <cstring>

namespace {

// The length of the well-formed UTF-8 sequence at p (n bytes left), or 0:
// overlong forms, surrogates and values past U+10FFFF are not characters.
int seq_len(const unsigned char *p, int32_t n, uint32_t &cp)
{
    unsigned char c = p[0];
    if (c < 0x80) {
        cp = c;
        return 1;
    }
    int len = c >= 0xf0 ? 4 : c >= 0xe0 ? 3 : c >= 0xc2 ? 2 : 0;
    if (len == 0 || c > 0xf4 || len > n)
        return 0;
    cp = c & (0x7f >> len);
    for (int k = 1; k < len; k++) {
        if ((p[k] & 0xc0) != 0x80)
            return 0;
        cp = cp << 6 | (p[k] & 0x3f);
    }
    static constexpr uint32_t least[5] = {0, 0, 0x80, 0x800, 0x10000};
    if (cp < least[len] || cp > 0x10ffff || (cp >= 0xd800 && cp <= 0xdfff))
        return 0;
    return len;
}

// Runs of 8 ASCII bytes are stepped over whole.
inline bool ascii8(const unsigned char *p)
{
    uint64_t w;
    std::memcpy(&w, p, 8);
    return (w & 0x8080808080808080ull) == 0;
}

struct range {
    uint32_t lo, hi;
};

// Characters that take no cell of their own: combining marks, zero-width
// spaces and joiners, the byte-order mark.
constexpr range zero_width[] = {
    {0x0300, 0x036f}, {0x0483, 0x0489}, {0x0591, 0x05bd}, {0x05bf, 0x05bf}, {0x05c1, 0x05c2},
    {0x05c4, 0x05c5}, {0x05c7, 0x05c7}, {0x0610, 0x061a}, {0x064b, 0x065f}, {0x0670, 0x0670},
    {0x06d6, 0x06dc}, {0x06df, 0x06e4}, {0x06e7, 0x06e8}, {0x06ea, 0x06ed}, {0x0900, 0x0902},
    {0x093a, 0x093a}, {0x093c, 0x093c}, {0x0941, 0x0948}, {0x094d, 0x094d}, {0x0951, 0x0957},
    {0x0e31, 0x0e31}, {0x0e34, 0x0e3a}, {0x0e47, 0x0e4e}, {0x1ab0, 0x1aff}, {0x1dc0, 0x1dff},
    {0x200b, 0x200f}, {0x202a, 0x202e}, {0x2060, 0x2064}, {0x20d0, 0x20ff}, {0xfe00, 0xfe0f},
    {0xfe20, 0xfe2f}, {0xfeff, 0xfeff}, {0xe0100, 0xe01ef},
};

// Characters that take two cells: East Asian wide and full-width forms,
// and the pictographs terminals draw wide.
constexpr range wide[] = {
    {0x1100, 0x115f},   {0x231a, 0x231b},   {0x2329, 0x232a},   {0x23e9, 0x23ec},
    {0x2614, 0x2615},   {0x2e80, 0x303e},   {0x3041, 0x33ff},   {0x3400, 0x4dbf},
    {0x4e00, 0x9fff},   {0xa000, 0xa4cf},   {0xa960, 0xa97f},   {0xac00, 0xd7a3},
    {0xf900, 0xfaff},   {0xfe10, 0xfe19},   {0xfe30, 0xfe6f},   {0xff00, 0xff60},
    {0xffe0, 0xffe6},   {0x16fe0, 0x16fe4}, {0x17000, 0x18cff}, {0x1b000, 0x1b2ff},
    {0x1f004, 0x1f004}, {0x1f0cf, 0x1f0cf}, {0x1f18e, 0x1f18e}, {0x1f191, 0x1f19a},
    {0x1f200, 0x1f251}, {0x1f300, 0x1f64f}, {0x1f680, 0x1f6ff}, {0x1f900, 0x1f9ff},
    {0x1fa70, 0x1faff}, {0x20000, 0x2fffd}, {0x30000, 0x3fffd},
};

template <size_t N> bool in(const range (&t)[N], uint32_t cp)
{
    size_t lo = 0, hi = N;
    while (lo < hi) {
        size_t mid = (lo + hi) / 2;
        if (cp < t[mid].lo)
            hi = mid;
        else if (cp > t[mid].hi)
            lo = mid + 1;
        else
            return true;
    }
    return false;
}

} // namespace

uint32_t xfcol_char(const char *t, int32_t n, int32_t off, int32_t &next, bool utf8)
{
    const unsigned char *p = (const unsigned char *)t + off;
    uint32_t cp = p[0];
    int len = utf8 ? seq_len(p, n - off, cp) : 1;
    if (len == 0) {
        cp = p[0]; // a stray byte stands for itself, one column
        len = 1;
    }
    next = off + len;
    return cp;
}

int32_t xfcol_len(const char *t, int32_t n, bool utf8)
{
    if (!utf8)
        return n;
    int32_t cols = 0, off = 0;
    while (off < n) {
        if (off + 8 <= n && ascii8((const unsigned char *)t + off)) {
            off += 8;
            cols += 8;
            continue;
        }
        xfcol_char(t, n, off, off, true);
        cols++;
    }
    return cols;
}

int32_t xfcol_off(const char *t, int32_t n, int32_t col, bool utf8)
{
    if (!utf8 || col <= 0)
        return col < 0 ? 0 : col;
    int32_t off = 0;
    while (col > 0 && off < n) {
        if (col >= 8 && off + 8 <= n && ascii8((const unsigned char *)t + off)) {
            off += 8;
            col -= 8;
            continue;
        }
        xfcol_char(t, n, off, off, true);
        col--;
    }
    return off + col; // past the end every column is a blank byte
}

int32_t xfcol_at(const char *t, int32_t n, int32_t off, bool utf8)
{
    if (!utf8)
        return off;
    int32_t col = 0, at = 0;
    while (at < off && at < n) {
        int32_t next;
        xfcol_char(t, n, at, next, true);
        if (next > off)
            break; // a byte inside a character belongs to that character
        at = next;
        col++;
    }
    return col + (off > n ? off - n : 0);
}

int xfcol_width(uint32_t cp)
{
    if (cp < 0x300)
        return 1;
    if (in(zero_width, cp))
        return 0;
    return in(wide, cp) ? 2 : 1;
}

bool xfutf8_text(const char *t, size_t n, bool &high)
{
    high = false;
    const unsigned char *p = (const unsigned char *)t;
    size_t i = 0;
    while (i < n) {
        if (i + 8 <= n && ascii8(p + i)) {
            i += 8;
            continue;
        }
        if (p[i] < 0x80) {
            i++;
            continue;
        }
        uint32_t cp;
        size_t left = n - i > 4 ? 4 : n - i;
        int len = seq_len(p + i, (int32_t)left, cp);
        if (len == 0)
            return false;
        high = true;
        i += (size_t)len;
    }
    return true;
}
