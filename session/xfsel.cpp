// The selection record and the tests the page and the commands share.
#include "session/xed.h"

#include <utility>

xfselection xfsel;

int xfsel_file()
{
    if (xfsel.fileid < 0)
        return -1;
    for (int i = 0; i < nbfiles(); i++)
        if (files[(size_t)i]->fileid == xfsel.fileid)
            return i;
    return -1;
}

bool xfsel_has(int32_t li, int32_t col)
{
    int32_t l = li + 1, c = col + 1;
    if (xfsel.fileid < 0 || l < xfsel.l1 || l > xfsel.l2)
        return false;
    bool to_end = xfsel.c2 < 0;
    if (xfsel.kind == 3)
        return c >= xfsel.c1 && (to_end || c <= xfsel.c2);
    if (l == xfsel.l1 && c < xfsel.c1)
        return false;
    if (l == xfsel.l2 && !to_end && c > xfsel.c2)
        return false;
    return true;
}

void xfsel_clear() { xfsel = xfselection(); }

void xfsel_set(int32_t l1, int32_t c1, int32_t l2, int32_t c2, int kind)
{
    if (l2 < l1 || (l2 == l1 && c2 >= 0 && c2 < c1)) {
        std::swap(l1, l2);
        std::swap(c1, c2);
    }
    if (kind == 3 && c2 >= 0 && c2 < c1)
        std::swap(c1, c2);
    xfsel = xfselection();
    xfsel.fileid = xf->fileid;
    xfsel.l1 = l1 + 1;
    xfsel.c1 = c1 + 1;
    xfsel.l2 = l2 + 1;
    xfsel.c2 = c2 < 0 ? -1 : c2 + 1;
    xfsel.kind = kind;
    xfsel.width = xv->ncols;
}
