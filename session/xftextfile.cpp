// Files of the ring whose text the editor makes itself (a help page, a
// manual page): never read from disk, read-only until RW ON, and found again
// by their name instead of being made twice.
#include "session/xed.h"

int xfring_text(const std::string &name, const std::vector<std::string> &lines)
{
    for (int i = 0; i < nbfiles(); i++)
        if (files[(size_t)i]->fname == name) {
            xfswitchto(i);
            if (xv)
                curline() = topline;
            return i;
        }
    int previous = xfidx;
    int k = xfnewfile();
    xfdefaults(name, previous);
    // The text is the page's own: a line that is not UTF-8 (a manual page
    // of another encoding) makes the whole file one of bytes.
    bool utf8 = xflocale_utf8();
    for (const std::string &l : lines) {
        bool high = false;
        if (!xfutf8_text(l.data(), l.size(), high))
            utf8 = false;
    }
    int32_t n = (int32_t)lines.size();
    xf->lines.open(0, n);
    for (int32_t i = 0; i < n; i++) {
        const std::string &l = lines[(size_t)i];
        xf->lines[i] = {xfstrdup(l), (int32_t)l.size(), 0, xv ? xv->select_new : 0};
    }
    xf->utf8 = utf8;
    xf->loadmark = n - 1;
    xf->fname = name;
    xf->fname2 = name;
    xf->chgcount = 0;
    xf->rw = 0;
    xf->reload_ok = 0;
    xf->disk_ns = 0;
    for (xview *v : views)
        v->perfile[(size_t)k].curline = topline;
    if (xv)
        xv->fileidx = k;
    return k;
}
