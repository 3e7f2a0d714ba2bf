// MAtch: the partner of the bracket under the cursor, counting the nesting
// of that pair only, across lines, and passing over what the file's
// colouring marks as comment or string.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "session/xed.h"

#include <cstring>
#include <utility>

namespace {

constexpr char openers[] = "{[(<";
constexpr char closers[] = "}])>";

// Walks from (li, off) in the direction, counting the pair; the partner's
// line and byte, or false.
bool partner(int32_t li, int32_t off, char open, char close, int dir, int32_t &pli, int32_t &poff)
{
    int depth = 0;
    std::vector<uint8_t> mask;
    bool first = true;
    for (; li >= 0 && li < nbli(); li += dir, first = false) {
        const xfline &l = xf->lines[li];
        bool masked = xfsyn_inert(li, mask) && (int32_t)mask.size() >= l.len;
        int32_t k = first ? off : (dir > 0 ? 0 : l.len - 1);
        for (; k >= 0 && k < l.len; k += dir) {
            if (masked && mask[(size_t)k])
                continue;
            char ch = l.text[k];
            if (ch == open)
                depth++;
            else if (ch == close)
                depth--;
            else
                continue;
            if (depth == 0) {
                pli = li;
                poff = k;
                return true;
            }
        }
    }
    return false;
}

} // namespace

int xfcm_match(const xfcmd &c)
{
    xftrace("Commande xfcm_match");
    if (!xf)
        return 1;
    std::string w = xffold(xftrim(c.ops()));
    if (!w.empty() && !abbrev(w, "cursor", 1) && !abbrev(w, "sel", 1)) {
        xfmsg(16, 1);
        cmd_rc = 5;
        return 1;
    }
    bool sel = !abbrev(w, "cursor", 1);
    xfcursor cur = xfcursor_now();
    // A one-character selection in this file stands for the cursor.
    if (sel && xfsel.fileid == xf->fileid && xfsel.l1 == xfsel.l2 && xfsel.c1 == xfsel.c2) {
        cur.fld = 0;
        cur.li = xfsel.l1 - 1;
        cur.col = xfsel.c1 - 1;
    }
    if (cur.fld != 0 || cur.li < 0 || cur.li >= nbli() || !xfinscope(cur.li)) {
        xfmsg(6, 1);
        cmd_rc = 1;
        return 1;
    }
    const xfline &l = xf->lines[cur.li];
    int32_t off = xfcol_off(l.text, l.len, cur.col, xf->utf8);
    char ch = off < l.len ? l.text[off] : ' ';
    const char *o = std::strchr(openers, ch), *e = std::strchr(closers, ch);
    if (ch == 0 || (!o && !e)) {
        xfmsg(67, 1);
        cmd_rc = 1;
        return 1;
    }
    size_t pair = o ? (size_t)(o - openers) : (size_t)(e - closers);
    int32_t pli, poff;
    if (!partner(cur.li, off, openers[pair], closers[pair], o ? 1 : -1, pli, poff)) {
        xfmsg(18, 1);
        cmd_rc = 1;
        return 1;
    }
    const xfline &pl = xf->lines[pli];
    int32_t pcol = xfcol_at(pl.text, pl.len, poff, xf->utf8);
    xfcursor_file(pli, pcol);
    if (sel) {
        // The stretch from one bracket to the other, in text order.
        xfsel_set(cur.li, xfcol_at(l.text, l.len, off, xf->utf8), pli, pcol, 2);
    } else if (xfsel.fileid == xf->fileid) {
        xfsel_clear();
    }
    bool shown = false;
    for (auto &r : xv->rows)
        shown = shown || r.li == pli;
    if (!shown)
        curline() = pli; // bring it into sight
    return 1;
}
