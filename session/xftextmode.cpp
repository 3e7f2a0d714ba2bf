// A file's text mode: UTF-8, where a column is a character, or bytes, where
// it is a byte. Decided from the file's own bytes, so that a Latin-1 or
// binary file is never reinterpreted, and from the locale where the bytes
// cannot tell (a new file, pure ASCII).
#include "session/xed.h"

#include <clocale>
#include <cstring>
#include <langinfo.h>

int utf8_global = -1;

bool xflocale_utf8()
{
    const char *cs = nl_langinfo(CODESET);
    return cs && (std::strcmp(cs, "UTF-8") == 0 || std::strcmp(cs, "utf8") == 0);
}

int xftext_mode()
{
    if (xf->bin)
        return 0; // a binary file is bytes whatever ENCODING says
    if (utf8_global >= 0)
        return utf8_global;
    bool past_ascii = false;
    for (int32_t i = 0; i < xf->nbli(); i++) {
        const xfline &l = xf->lines[i];
        bool high;
        if (!xfutf8_text(l.text, (size_t)l.len, high))
            return 0;
        past_ascii = past_ascii || high;
    }
    return past_ascii || xflocale_utf8() ? 1 : 0;
}
