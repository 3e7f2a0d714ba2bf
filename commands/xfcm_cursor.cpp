// Commands of the keys that move the cursor or the view: HOme, the line
// ends (C_ENDLine, C_ENDCurl), splitting and joining (C_SPlit, SPLTJOIN),
// adding a line at the cursor (C_LINEAdd), paging (PGUp, PGDown), shifting the
// view sideways (LEft, RIght) and word moves (PREVWord, NEXTWord).
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "session/xed.h"

#include <algorithm>
#include <cctype>

namespace {

constexpr int CURSOR_PRIO = 30; // after a command

void propose(int fld, int32_t li, int32_t col)
{
    xfcursor c = xf->ptcur_i;
    c.ec = xvidx;
    c.fld = fld;
    c.li = li;
    c.col = std::max(0, col);
    c.prio = CURSOR_PRIO;
    xf->curstack.push_back(c);
}

// The line the cursor stands on in the file area, or -2 (also with no file).
int32_t cursor_line()
{
    if (!xf)
        return -2;
    const xfcursor &c = xf->ptcur_i;
    return c.fld == 0 && c.li >= 0 && c.li < nbli() ? c.li : -2;
}

std::string text_of(int32_t li)
{
    const xfline &l = xf->lines[li];
    return std::string(l.text, (size_t)l.len);
}

// A page is the view's file rows less one, so a line stays in sight.
int page_size() { return std::max(1, (int)xv->rows.size() - 1); }

int32_t columns_of(int32_t li) { return xfcol_len(xf->lines[li].text, xf->lines[li].len, xf->utf8); }

} // namespace

int xfcm_home(const xfcmd &c)
{
    xftrace("Commande xfcm_home");
    (void)c;
    if (!xf)
        return 1;
    if (xf->ptcur_i.fld == 1) {
        int32_t li = std::max(0, std::min(curline(), nbli() - 1));
        if (nbli() > 0)
            propose(0, li, 0);
    } else {
        propose(1, -1, 0);
        xv->cmdcursor = 0;
    }
    return 1;
}

int xfcm_endline(const xfcmd &c)
{
    xftrace("Commande xfcm_endline");
    (void)c;
    if (!xf)
        return 1;
    int32_t li = cursor_line();
    if (li >= 0)
        propose(0, li, columns_of(li));
    return 1;
}

int xfcm_endcurl(const xfcmd &c)
{
    xftrace("Commande xfcm_endcurl");
    (void)c;
    if (!xf)
        return 1;
    int32_t li = curline();
    if (li >= 0 && li < nbli())
        propose(0, li, columns_of(li));
    return 1;
}

// Split the cursor's line at the cursor; past the line's end, join the next
// line to it instead. C_SPlit, and SPLTJOIN with an operand starting with s,
// give the new line the indentation of the line it came from. The cursor
// stays where it was (RETURN moves it to the new line itself).
int xfcm_split(const xfcmd &c)
{
    xftrace("Commande xfcm_split");
    int32_t li = cursor_line();
    if (li < 0 || !xfinscope(li)) {
        xfmsg(6, 1);
        cmd_rc = 1;
        return 1;
    }
    std::string_view ops = xftrim(c.ops());
    bool indent = ops.empty() ? (c.typed > 0 && (c.line[0] | 0x20) == 'c')
                              : (ops[0] | 0x20) == 's';
    std::string t = text_of(li);
    int32_t col = xf->ptcur_i.col;
    // The cursor's column as a byte offset; past the end, one blank a column.
    size_t at = (size_t)xfcol_off(t.data(), (int32_t)t.size(), col, xf->utf8);
    if (at >= t.size()) {
        if (li + 1 >= nbli())
            return 1;
        t.resize(at, ' ');
        std::string next = text_of(li + 1);
        size_t b = next.find_first_not_of(' ');
        t += b == std::string::npos ? std::string() : next.substr(b);
        xf_do('r', t, li, "xfcm_spl:83");
        xf_do('d', nullptr, li + 1, 1, 1, nullptr, "xfcm_spl:83");
        xfshift_up(li + 1, 1, li);
        return 1;
    }
    std::string head = t.substr(0, at), tail = t.substr(at);
    if (indent) {
        size_t lead = head.find_first_not_of(' ');
        size_t own = tail.find_first_not_of(' ');
        tail = std::string(lead == std::string::npos ? head.size() : lead, ' ') +
               (own == std::string::npos ? std::string() : tail.substr(own));
    }
    while (!head.empty() && head.back() == ' ' && !xf->keepblanks)
        head.pop_back();
    if (head.empty())
        head = " ";
    xf_do('r', head, li, "xfcm_spl:59");
    xf_do('i', tail, li, "xfcm_spl:60");
    xfshift_down(li, 1);
    return 1;
}

int xfcm_lineadd(const xfcmd &c)
{
    xftrace("Commande xfcm_lineadd");
    (void)c;
    if (!xf)
        return 1;
    int32_t li = cursor_line();
    xfadd(li >= 0 ? li : curline(), 1, 1);
    return 1;
}

int xfcm_pgdown(const xfcmd &c)
{
    xftrace("Commande xfcm_pgdown");
    (void)c;
    if (xf)
        curline() = std::min(curline() + page_size(), std::max(topline, nbli() - 1));
    return 1;
}

int xfcm_pgup(const xfcmd &c)
{
    xftrace("Commande xfcm_pgup");
    (void)c;
    if (xf)
        curline() = std::max(topline, curline() - page_size());
    return 1;
}

namespace {

// LEft n and RIght n shift the view's first column.
int shift_view(const xfcmd &c, int dir)
{
    long n;
    if (!xf || !xfcount(c, n))
        return 1;
    int32_t &first = xv->perfile[(size_t)xfidx].verify[0];
    first = (int32_t)std::clamp<long>(first + dir * n, 1, xfmax_cols);
    return 1;
}

} // namespace

int xfcm_left(const xfcmd &c)
{
    xftrace("Commande xfcm_left");
    return shift_view(c, -1);
}

int xfcm_right(const xfcmd &c)
{
    xftrace("Commande xfcm_right");
    return shift_view(c, 1);
}

// The start of the next or the previous word, across lines.
int xfcm_nextword(const xfcmd &c)
{
    xftrace("Commande xfcm_nextword");
    (void)c;
    int32_t li = cursor_line();
    if (li < 0)
        return 1;
    int32_t col = xf->ptcur_i.col;
    bool u8 = xf->utf8 != 0;
    // One walk from the cursor: over the rest of its word, then to the next.
    for (; li < nbli(); li++, col = -1) {
        const xfline &l = xf->lines[li];
        int32_t off = col > 0 ? xfcol_off(l.text, l.len, col, u8) : 0;
        int32_t i = std::max(0, col);
        bool skip_word = col >= 0;
        while (off < l.len) {
            int32_t next;
            uint32_t ch = xfcol_char(l.text, l.len, off, next, u8);
            bool w = xfwordchar(ch);
            if (w && !skip_word) {
                propose(0, li, i);
                return 1;
            }
            if (!w)
                skip_word = false;
            off = next;
            i++;
        }
    }
    return 1;
}

int xfcm_prevword(const xfcmd &c)
{
    xftrace("Commande xfcm_prevword");
    (void)c;
    int32_t li = cursor_line();
    if (li < 0)
        return 1;
    int32_t col = xf->ptcur_i.col;
    bool u8 = xf->utf8 != 0;
    // One walk up to the cursor, noting where the last word before it began.
    for (; li >= 0; li--, col = 1 << 30) {
        const xfline &l = xf->lines[li];
        int32_t start = -1, i = 0;
        bool prev_w = false;
        for (int32_t off = 0; off < l.len && i < col; i++) {
            int32_t next;
            bool w = xfwordchar(xfcol_char(l.text, l.len, off, next, u8));
            if (w && !prev_w)
                start = i;
            prev_w = w;
            off = next;
        }
        if (start >= 0) {
            propose(0, li, start);
            return 1;
        }
    }
    return 1;
}
