// MAtch: the partner of the bracket under the cursor, counting the nesting
// of that pair only, across lines, and passing over what the file's
// colouring marks as comment or string.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "session/xed.h"

#include <cstring>

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
    xfcursor cur = xfcursor_now();
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
    // The selection of the stretch waits for selections in files; meanwhile
    // both forms take the cursor to the partner.
    const xfline &pl = xf->lines[pli];
    xfcursor_file(pli, xfcol_at(pl.text, pl.len, poff, xf->utf8));
    bool shown = false;
    for (auto &r : xv->rows)
        shown = shown || r.li == pli;
    if (!shown)
        curline() = pli; // bring it into sight
    return 1;
}
