// The ECMASCRIPT regular-expression engine: PCRE2 in its JavaScript-
// compatible mode, compiled to machine code by its JIT where the platform
// has one. Neither the JIT nor the interpreter recurses on the machine
// stack per character, so a line of any length is safe to search.
#define PCRE2_CODE_UNIT_WIDTH 8
#include "commands/xfregex.h"

#include <cstdio>
#include <pcre2.h>

namespace {

constexpr int NPAIR = 10; // group 0, the whole match, and groups 1 to 9
// JavaScript's meaning for \u, \x and unset back references, for an empty
// class `[]` (matches nothing) and `[^]` (any character), and for `$`
// (the text's end only).
constexpr uint32_t JS_OPTIONS =
    PCRE2_ALT_BSUX | PCRE2_MATCH_UNSET_BACKREF | PCRE2_ALLOW_EMPTY_CLASS | PCRE2_DOLLAR_ENDONLY;
// The JIT's own stack grows on demand up to this; a pattern that needs more
// on some line fails to match there instead of failing the whole search.
constexpr size_t JIT_STACK_MAX = size_t(8) << 20;

struct engine_state {
    pcre2_code *code = nullptr;          // the compiled pattern
    pcre2_match_data *md = nullptr;      // one block for every search
    pcre2_match_context *mctx = nullptr; // holds the JIT stack
    pcre2_jit_stack *jstack = nullptr;   // made at the first compile
    bool keep = false;                   // the caller wants the groups
    bool found = false;                  // a match has been found since the last reset
    int npair = 0;                       // pairs of ov that the last match set
    PCRE2_SIZE ov[2 * NPAIR] = {};       // the last match's offsets
    char err[300] = {};                  // the last compile error's text

    ~engine_state()
    {
        pcre2_code_free(code);
        pcre2_match_data_free(md);
        pcre2_match_context_free(mctx);
        pcre2_jit_stack_free(jstack);
    }
};
engine_state st;

// The blocks every search shares, made once. False when memory is short.
bool ready()
{
    if (!st.md)
        st.md = pcre2_match_data_create(NPAIR, nullptr);
    if (!st.mctx) {
        st.mctx = pcre2_match_context_create(nullptr);
        st.jstack = pcre2_jit_stack_create(32 * 1024, JIT_STACK_MAX, nullptr);
        if (st.mctx && st.jstack)
            pcre2_jit_stack_assign(st.mctx, nullptr, st.jstack);
    }
    return st.md && st.mctx;
}

const char *compile(std::string_view pat, bool icase, bool utf8)
{
    if (pat.empty())
        return st.code ? nullptr : "No previous RE";
    if (!ready())
        return "Not enough memory for this RE";
    uint32_t opts = JS_OPTIONS;
    if (icase)
        opts |= PCRE2_CASELESS;
    if (utf8)
        opts |= PCRE2_UTF | PCRE2_MATCH_INVALID_UTF;
    int code = 0;
    PCRE2_SIZE off = 0;
    pcre2_code *re = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pat.data()), pat.size(), opts,
                                   &code, &off, nullptr);
    if (!re) {
        // A failed pattern leaves the last good one for an empty pattern.
        PCRE2_UCHAR text[256];
        if (pcre2_get_error_message(code, text, sizeof text) < 0)
            std::snprintf(reinterpret_cast<char *>(text), sizeof text, "error %d", code);
        std::snprintf(st.err, sizeof st.err, "%s at offset %zu", reinterpret_cast<char *>(text),
                      size_t(off));
        return st.err;
    }
    // Without a JIT (or with one that refuses) pcre2_match interprets.
    pcre2_jit_compile(re, PCRE2_JIT_COMPLETE);
    pcre2_code_free(st.code);
    st.code = re;
    return nullptr;
}

int32_t execute(const char *text, int32_t n, int32_t start, bool at_line_start)
{
    if (!st.code || start < 0 || start > n || (text == nullptr && n > 0))
        return -1;
    static const char none = 0;
    int rc = pcre2_match(st.code, reinterpret_cast<PCRE2_SPTR>(text ? text : &none), PCRE2_SIZE(n),
                         PCRE2_SIZE(start), at_line_start ? 0 : PCRE2_NOTBOL, st.md, st.mctx);
    if (rc < 0)
        return -1; // no match, or a limit reached on this text
    // Kept apart from the match block so that a later search that fails
    // does not spoil what the caller has yet to read.
    st.npair = rc == 0 ? NPAIR : rc; // 0: more groups matched than the block holds
    const PCRE2_SIZE *ov = pcre2_get_ovector_pointer(st.md);
    for (int i = 0; i < 2 * st.npair; i++)
        st.ov[i] = ov[i];
    st.found = true;
    return int32_t(st.ov[0]);
}

void last_match(int32_t &start, int32_t &len)
{
    if (!st.found) {
        start = len = 0;
        return;
    }
    start = int32_t(st.ov[0]);
    len = int32_t(st.ov[1] - st.ov[0]);
}

void reset(bool keep_groups)
{
    st.keep = keep_groups;
    st.found = false;
}

bool group(int i, int32_t &start, int32_t &len)
{
    if (!st.keep || !st.found || i < 0 || i >= st.npair || st.ov[2 * i] == PCRE2_UNSET)
        return false;
    start = int32_t(st.ov[2 * i]);
    len = int32_t(st.ov[2 * i + 1] - st.ov[2 * i]);
    return true;
}

constexpr xfre_engine ecma = {"ECMASCRIPT", compile, execute, last_match, reset, group};

} // namespace

const xfre_engine &xfre_ecma() { return ecma; }
