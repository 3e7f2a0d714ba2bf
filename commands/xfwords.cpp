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
