// What counts as a character of a word when a search or a change asks for
// whole words.
#include "commands/internal.h"

bool xfwordchar(uint32_t ch)
{
    if (ch >= 128)
        return true; // accented and other-script letters of UTF-8 text, Latin-1 letters
    return (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') || (ch >= '0' && ch <= '9') ||
           ch == '_';
}

// A command that acts on "the word under the cursor" takes the cursor as the
// page last read it, when it stood on a line of the current file; with no
// page (a batch run, a macro) the column pointer of the current line.
bool xfcursor_word(int32_t &li, int32_t &from, int32_t &to)
{
    if (!xf || !xv)
        return false;
    int32_t col = xv->perfile[(size_t)xfidx].colptr - 1;
    li = curline();
    if (!batch && ptcu.fld == 0 && ptcu.li >= 0 && ptcu.li < nbli()) {
        li = ptcu.li;
        col = ptcu.col;
    }
    if (li < 0 || li >= nbli())
        return false;
    const xfline &l = xf->lines[li];
    int32_t off = xfcol_off(l.text, l.len, col < 0 ? 0 : col, xf->utf8);
    if (off >= l.len || !xfwordchar((unsigned char)l.text[off]))
        return false;
    from = to = off;
    while (from > 0 && xfwordchar((unsigned char)l.text[from - 1]))
        from--;
    while (to < l.len && xfwordchar((unsigned char)l.text[to]))
        to++;
    return true;
}
