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
#include "fields/fields.h"

#include <cstring>

namespace {

int seq_len(const unsigned char *p, int32_t n, uint32_t &cp) { return fs_utf8_seq(p, n, cp); }

// Runs of 8 ASCII bytes are stepped over whole.
inline bool ascii8(const unsigned char *p)
{
    uint64_t w;
    std::memcpy(&w, p, 8);
    return (w & 0x8080808080808080ull) == 0;
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

int xfcol_width(uint32_t cp) { return fs_cwidth(cp); }

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
