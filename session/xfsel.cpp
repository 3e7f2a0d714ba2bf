// The selection record and the tests the page and the commands share.
#include "session/xed.h"

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
