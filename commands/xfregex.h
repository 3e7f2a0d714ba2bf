// The regular-expression switch: two engines, LEGACY (written here, a
// compiled byte program with its own small grammar) and ECMASCRIPT (PCRE2 in
// its JavaScript-compatible mode, with JIT), behind the same four
// operations. REGtype chooses; everything that searches or changes by a
// regular expression (R/ targets, RChange, ALL r/.../) calls xfre() and
// never an engine by name.
#pragma once

#include <cstdint>
#include <string_view>

struct xfre_engine {
    const char *name; // "LEGACY" or "ECMASCRIPT"
    // Compiles `pat`, ignoring case when asked; `utf8` when the text searched
    // is a UTF-8 file's (a character is then one unit of the pattern).
    // Returns null, or the error text to show; the engine keeps the compiled
    // pattern until the next compile. An empty pattern reuses the previous
    // one (LEGACY: "No previous RE" when there is none).
    const char *(*compile)(std::string_view pat, bool icase, bool utf8);
    // Searches text[start, n) for the first match; text[0, start) is context
    // only (look-behind, word boundaries). `at_line_start` tells whether
    // text[0] begins a line (false when the text is a line's zone that does
    // not begin at column 1). Returns the match's byte offset from text, or
    // -1. The text is never copied and need not end in a NUL.
    int32_t (*execute)(const char *text, int32_t n, int32_t start, bool at_line_start);
    // Byte offset and length of the last match.
    void (*last_match)(int32_t &start, int32_t &len);
    // Readies a new run; with `keep_groups` the groups of each match are
    // kept for xfre_group.
    void (*reset)(bool keep_groups);
    // Byte offset and length of group i (0 the whole match, up to 9) of the
    // last match, when reset asked for groups; false when it did not take part.
    bool (*group)(int i, int32_t &start, int32_t &len);
};

extern int regtype;           // 0 LEGACY, 1 ECMASCRIPT (the default)
const xfre_engine &xfre();    // the engine regtype chooses
const xfre_engine &xfre_legacy();
const xfre_engine &xfre_ecma();
