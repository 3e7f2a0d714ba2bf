// FIND in the line-editor vocabulary: FINd, FINDUp (FUp), NFind and
// NFINDUp (NFUp). The pattern is laid over a line from its first column: a
// blank in it matches any character, `_` matches a blank.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "session/xed.h"

#include <algorithm>

namespace {

uint32_t fold(uint32_t ch) { return ch >= 'A' && ch <= 'Z' ? ch + 32 : ch; }

// Whether line li begins with the pattern, character by character.
bool fits(std::string_view pat, int32_t li, bool icase)
{
    const xfline &l = xf->lines[li];
    bool u8 = xf->utf8 != 0;
    int32_t po = 0, lo = 0, pn = (int32_t)pat.size();
    while (po < pn) {
        if (lo >= l.len)
            return false; // the line is shorter than the pattern
        int32_t pnext, lnext;
        uint32_t pc = xfcol_char(pat.data(), pn, po, pnext, u8);
        uint32_t lc = xfcol_char(l.text, l.len, lo, lnext, u8);
        po = pnext;
        lo = lnext;
        if (pc == ' ')
            continue;
        if (pc == '_')
            pc = ' ';
        if (icase ? fold(pc) != fold(lc) : pc != lc)
            return false;
    }
    return true;
}

// The text behind the command word and the one blank after it.
std::string_view pattern_of(const xfcmd &c)
{
    std::string_view n = c.norm;
    size_t w = 0;
    while (w < n.size() && n[w] == ' ')
        w++;
    while (w < n.size() && n[w] != ' ')
        w++;
    if (w < n.size())
        w++;
    return n.substr(std::min(w, n.size()));
}

int find(const xfcmd &c, int dir, bool negate)
{
    if (!xf)
        return 0;
    std::string_view pat = pattern_of(c);
    if (xftrim(pat).empty()) {
        xfmsg(159, 1);
        cmd_rc = 5;
        return 1;
    }
    bool icase = xfcase_ignore();
    int32_t cur = curline(), n = nbli();
    auto hit = [&](int32_t li) {
        return (xv->scope == 1 || xfinscope(li)) && fits(pat, li, icase) != negate;
    };
    for (int32_t li = cur + dir; li >= 0 && li < n; li += dir)
        if (hit(li)) {
            curline() = li;
            return 1;
        }
    if (wrap_on)
        for (int32_t li = dir > 0 ? 0 : n - 1; li >= 0 && li < n && (dir > 0 ? li <= cur : li >= cur);
             li += dir)
            if (hit(li)) {
                curline() = li;
                xfmsg(23, 0);
                return 1;
            }
    xfmsg(18, 1);
    cmd_rc = 1;
    if (!wrap_on && !stay_on)
        curline() = dir > 0 ? std::max(topline, n - 1) : topline;
    return 1;
}

} // namespace

int xfcm_find(const xfcmd &c)
{
    return modes.command_ispf ? xfcm_pdffind(c) : xfcm_xedfind(c);
}

int xfcm_xedfind(const xfcmd &c)
{
    xftrace("Commande xfcm_find");
    return find(c, 1, false);
}

int xfcm_findup(const xfcmd &c)
{
    xftrace("Commande xfcm_findup");
    return find(c, -1, false);
}

int xfcm_nfind(const xfcmd &c)
{
    xftrace("Commande xfcm_nfind");
    return find(c, 1, true);
}

int xfcm_nfindup(const xfcmd &c)
{
    xftrace("Commande xfcm_nfindup");
    return find(c, -1, true);
}
