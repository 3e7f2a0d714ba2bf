// Which names a scan takes: a name pattern for the stem, an extension
// pattern for what follows the last dot.
#include "flist/flist.h"

bool fl_wild(std::string_view pat, std::string_view text)
{
    // Iterative, with one back-tracking point: the last `*` seen. A name of
    // any length costs at most pattern times text steps, never a recursion.
    size_t p = 0, t = 0, star = std::string_view::npos, mark = 0;
    while (t < text.size()) {
        if (p < pat.size() && (pat[p] == '?' || pat[p] == text[t])) {
            p++;
            t++;
        } else if (p < pat.size() && pat[p] == '*') {
            star = p++;
            mark = t;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            t = ++mark;
        } else {
            return false;
        }
    }
    while (p < pat.size() && pat[p] == '*')
        p++;
    return p == pat.size();
}

void fl_split(std::string_view base, std::string_view &stem, std::string_view &ext)
{
    size_t dot = base.rfind('.');
    if (dot == std::string_view::npos) {
        stem = base;
        ext = {};
        return;
    }
    stem = base.substr(0, dot);
    ext = base.substr(dot);
}

bool fl_accept(std::string_view npat, std::string_view epat, std::string_view name)
{
    if (npat == "*" && epat == "*")
        return true;
    std::string_view stem, ext;
    fl_split(name, stem, ext);
    if (npat == ".") {
        if (!stem.empty())
            return false;
    } else if (npat != "*" && !fl_wild(npat, stem)) {
        return false;
    }
    if (ext.empty()) // no extension: only the patterns "." and "*" take it
        return epat == "." || epat == "*";
    if (epat == ".")
        return false;
    if (epat == "*")
        return true;
    // "txt" and ".txt" both name the extension.
    return epat.size() > 1 && epat[0] == '.' ? fl_wild(epat, ext) : fl_wild(epat, ext.substr(1));
}
