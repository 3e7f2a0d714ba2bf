// The LEGACY regular-expression engine: a small grammar (characters, `.`,
// classes, three repeats of one item, line anchors, groups, word edges)
// compiled into a byte program and matched by backtracking. The program is
// a straight run of nodes with no alternation, so the only choices a match
// makes are how much each repeat takes; an explicit stack records them, and
// a line of any length costs no stack depth.
#include "commands/xfregex.h"

#include <cstring>
#include <new>
#include <utility>
#include <vector>

namespace {

// Byte codes. An item is CHR, ANY, CLS or NCLS; a repeat code stands just
// before the item it repeats.
enum : uint8_t {
    END = 0,   // the match is complete; ENDMARK follows
    CHR = 1,   // length, bytes: one character (a whole UTF-8 character in UTF-8 text)
    ANY = 2,   // any character
    CLS = 3,   // class index: a byte in the class
    NCLS = 4,  // class index: a character whose first byte is not in the class
    EOL = 5,   // the end of the text
    WBEG = 6,  // a word begins here
    WEND = 7,  // a word ended just before
    OPEN = 8,  // group number: the group starts here
    CLOSE = 9, // group number: the group ends here
    STAR = 10, // any number of the next item
    PLUS = 11, // one or more of the next item
    QUEST = 12 // zero or one of the next item
};
constexpr uint8_t ENDMARK = 28;
constexpr int NGROUP = 10; // group 0, the whole match, and nine \( \) groups
constexpr int NCLASS = 10;
// A pattern comes from a command line or a macro; a program this large is a
// runaway macro, refused before it costs a line's worth of memory per node.
constexpr size_t MAXCODE = size_t(1) << 20;

constexpr const char *E_NOPREV = "No previous RE";
constexpr const char *E_NOMEM = "Not enough memory for this RE";
constexpr const char *E_NOTHING = "* or \\+ or \\? follows nothing";
constexpr const char *E_BADREP = "* or \\+ or \\? can only follow a normal character or . or []";
constexpr const char *E_DOUBLE = "* or \\+ or \\? doubled up";
constexpr const char *E_OPEN = "Not enough \\)s";
constexpr const char *E_SPAN = "Backwards span in []";
constexpr const char *E_BRACKET = "] missing";
constexpr const char *E_GROUPS = "Too many \\(s";
constexpr const char *E_CLOSE = "Mismatched \\)";
constexpr const char *E_CLASSES = "Too many []s";

struct program {
    int32_t gstart[NGROUP];    // where each group began in the match being tried
    int32_t gend[NGROUP];      // where each group ended in it
    int32_t minlen;            // bytes any match needs
    uint8_t first;             // the (folded) byte every match begins with, or 0
    bool anchored;             // `^`: tried at the line's start only
    int nclass;                // class bitmaps in use
    uint8_t cls[NCLASS][32];   // bit b of a bitmap: byte b is a member
    std::vector<uint8_t> code; // the nodes, closed by END and ENDMARK
    int ngroup;                // groups the pattern opens
    bool icase;                // letters were folded to lower case
    bool utf8;                 // `.` and negated classes take whole UTF-8 characters
    bool lead_dot;             // begins with .* or .\+: a start that fails fails every later one
    uint8_t must;              // a byte every match holds, 0 when none is known
};

// One choice a repeat made: it took the text up to `p`, and may give back
// down to `lo`.
struct choice {
    uint32_t pc; // the node after the repeat
    int32_t lo;  // the least the repeat may keep
    int32_t p;   // where its take ends now
    int32_t w;   // bytes per item, or 0 when items are UTF-8 characters of varying length
};

struct engine_state {
    program prog{};              // the compiled pattern
    bool have = false;           // prog holds one
    bool keep = false;           // the caller wants the groups
    bool found = false;          // a match has been found since the last reset
    int32_t mstart = 0;          // the last match's offset
    int32_t mlen = 0;            // and length
    int32_t gs[NGROUP] = {};     // the last match's group starts
    int32_t ge[NGROUP] = {};     // and ends
    std::vector<choice> choices; // reused from one search to the next
};
engine_state st;

unsigned char fold(unsigned char c) { return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c; }
bool lower_letter(unsigned char c) { return c >= 'a' && c <= 'z'; }

bool wordbyte(unsigned char c)
{
    return c >= 128 || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           c == '_';
}

void setbit(uint8_t *bm, unsigned char c) { bm[c >> 3] |= uint8_t(1u << (c & 7)); }
bool hasbit(const uint8_t *bm, unsigned char c) { return bm[c >> 3] & (1u << (c & 7)); }

// Bytes of the UTF-8 character at s[0], of at most `left` bytes; a lead
// byte without its continuation bytes is a character of one byte, so that
// stepping forward and stepping back agree on any text.
int32_t utf8_len(const unsigned char *s, int32_t left)
{
    unsigned char b = s[0];
    int32_t k = b < 0xC0 ? 1 : b < 0xE0 ? 2 : b < 0xF0 ? 3 : b < 0xF8 ? 4 : 1;
    if (k > left)
        return 1;
    for (int32_t j = 1; j < k; j++)
        if ((s[j] & 0xC0) != 0x80)
            return 1;
    return k;
}

int32_t item_size(const uint8_t *it) { return it[0] == CHR ? 2 + it[1] : it[0] == ANY ? 1 : 2; }

// The compiler: pattern in, program out, or an error text.
struct compiler {
    std::string_view pat;
    program &p;
    enum { NOTHING, ITEM, REPEATED, OTHER } last = NOTHING; // what a repeat would follow
    size_t item_at = 0;                                     // where the last item's code starts
    int32_t item_w = 0;                                     // and its length in bytes

    void emit(uint8_t b) { p.code.push_back(b); }

    // A literal character at pat[i]: in UTF-8 a whole character, so that a
    // repeat applies to all of it. Returns its length in the pattern.
    size_t literal(size_t i)
    {
        auto s = reinterpret_cast<const unsigned char *>(pat.data()) + i;
        int32_t k = p.utf8 ? utf8_len(s, int32_t(pat.size() - i)) : 1;
        item_at = p.code.size();
        emit(CHR);
        emit(uint8_t(k));
        for (int32_t j = 0; j < k; j++)
            emit(p.icase ? fold(s[j]) : s[j]);
        item_w = k;
        p.minlen += k;
        last = ITEM;
        return size_t(k);
    }

    const char *repeat(uint8_t op)
    {
        if (last == NOTHING)
            return E_NOTHING;
        if (last == REPEATED)
            return E_DOUBLE;
        if (last == OTHER)
            return E_BADREP;
        p.code.insert(p.code.begin() + std::ptrdiff_t(item_at), op);
        if (op != PLUS)
            p.minlen -= item_w;
        last = REPEATED;
        return nullptr;
    }

    void member(uint8_t *bm, unsigned char c)
    {
        setbit(bm, c);
        unsigned char l = fold(c);
        if (p.icase && lower_letter(l)) {
            setbit(bm, l);
            setbit(bm, uint8_t(l - ('a' - 'A')));
        }
    }

    // class: '[' ['^'] [']'] { char | char '-' char } ']'
    // A `]` first (after any `^`) is a member; a `-` first or last is one too.
    const char *bracket(size_t &i)
    {
        if (p.nclass == NCLASS)
            return E_CLASSES;
        uint8_t *bm = p.cls[p.nclass];
        std::memset(bm, 0, 32);
        size_t j = i + 1;
        bool neg = j < pat.size() && pat[j] == '^';
        if (neg)
            j++;
        for (bool first = true;; first = false) {
            if (j >= pat.size())
                return E_BRACKET;
            auto c = static_cast<unsigned char>(pat[j]);
            if (c == ']' && !first)
                break;
            if (j + 2 < pat.size() && pat[j + 1] == '-' && pat[j + 2] != ']') {
                auto hi = static_cast<unsigned char>(pat[j + 2]);
                if (c > hi)
                    return E_SPAN;
                for (unsigned b = c; b <= hi; b++)
                    member(bm, static_cast<unsigned char>(b));
                j += 3;
            } else {
                member(bm, c);
                j++;
            }
        }
        item_at = p.code.size();
        emit(neg ? NCLS : CLS);
        emit(uint8_t(p.nclass++));
        item_w = 1;
        p.minlen += 1;
        last = ITEM;
        i = j + 1;
        return nullptr;
    }

    // pattern: ['^'] { item [repeat] | '\(' | '\)' | '\<' | '\>' } ['$']
    const char *run()
    {
        size_t i = 0;
        int open[NGROUP];
        int depth = 0;
        if (pat[0] == '^')
            p.anchored = true, i = 1;
        while (i < pat.size()) {
            if (p.code.size() > MAXCODE)
                return E_NOMEM;
            char c = pat[i];
            const char *err = nullptr;
            if (c == '$' && i + 1 == pat.size()) {
                emit(EOL);
                last = OTHER;
                i++;
            } else if (c == '*') {
                err = repeat(STAR);
                i++;
            } else if (c == '.') {
                item_at = p.code.size();
                emit(ANY);
                item_w = 1;
                p.minlen++;
                last = ITEM;
                i++;
            } else if (c == '[') {
                err = bracket(i);
            } else if (c == '\\' && i + 1 < pat.size()) {
                char d = pat[i + 1];
                i += 2;
                if (d == '+') {
                    err = repeat(PLUS);
                } else if (d == '?') {
                    err = repeat(QUEST);
                } else if (d == '(') {
                    if (p.ngroup == NGROUP - 1)
                        return E_GROUPS;
                    open[depth++] = ++p.ngroup;
                    emit(OPEN);
                    emit(uint8_t(p.ngroup));
                    last = NOTHING;
                } else if (d == ')') {
                    if (depth == 0)
                        return E_CLOSE;
                    emit(CLOSE);
                    emit(uint8_t(open[--depth]));
                    last = OTHER;
                } else if (d == '<' || d == '>') {
                    emit(d == '<' ? WBEG : WEND);
                    last = OTHER;
                } else {
                    i += literal(i - 1) - 1;
                }
            } else {
                i += literal(i);
            }
            if (err)
                return err;
        }
        if (depth > 0)
            return E_OPEN;
        if (p.code.size() + 2 > MAXCODE)
            return E_NOMEM;
        emit(END);
        emit(ENDMARK);
        hints();
        return nullptr;
    }

    // What the search can know before it tries a column: the first byte,
    // whether a leading .* makes one start enough, and a byte that must occur.
    void hints()
    {
        const uint8_t *c = p.code.data();
        size_t pc = 0;
        while (c[pc] == OPEN)
            pc += 2;
        if (c[pc] == CHR || (c[pc] == PLUS && c[pc + 1] == CHR))
            p.first = c[pc] == CHR ? c[pc + 2] : c[pc + 3];
        p.lead_dot = (c[pc] == STAR || c[pc] == PLUS) && c[pc + 1] == ANY;
        for (pc = 0; c[pc] != END;) {
            uint8_t op = c[pc];
            if (op == CHR || (op == PLUS && c[pc + 1] == CHR)) {
                uint8_t b = op == CHR ? c[pc + 2] : c[pc + 3];
                if (b != 0 && !(p.icase && lower_letter(b)))
                    p.must = b;
            }
            if (op == STAR || op == PLUS || op == QUEST)
                pc += 1 + size_t(item_size(c + pc + 1));
            else if (op == EOL || op == WBEG || op == WEND || op == ANY)
                pc += 1;
            else
                pc += size_t(item_size(c + pc));
        }
    }
};

// One search of one text with the current program.
struct matcher {
    program &p;
    const unsigned char *t; // the text
    int32_t n;              // its length
    std::vector<choice> &choices;

    int32_t step(int32_t i) const { return p.utf8 ? utf8_len(t + i, n - i) : 1; }

    // The start of the character that ends at q, no further back than lo;
    // both q and lo are character starts of a forward walk with step().
    int32_t back(int32_t q, int32_t lo) const
    {
        for (int32_t c = q - 1; c >= lo && c >= q - 4; c--)
            if ((t[c] & 0xC0) != 0x80)
                return utf8_len(t + c, n - c) == q - c ? c : q - 1;
        return q - 1;
    }

    // Bytes one item takes at i, or -1.
    int32_t one(const uint8_t *it, int32_t i) const
    {
        if (i >= n)
            return -1;
        switch (it[0]) {
        case CHR: {
            int32_t k = it[1];
            if (n - i < k)
                return -1;
            for (int32_t j = 0; j < k; j++)
                if ((p.icase ? fold(t[i + j]) : t[i + j]) != it[2 + j])
                    return -1;
            return k;
        }
        case ANY:
            return step(i);
        case CLS:
            return hasbit(p.cls[it[1]], t[i]) ? 1 : -1;
        default: // NCLS
            return hasbit(p.cls[it[1]], t[i]) ? -1 : step(i);
        }
    }

    // Takes as much of a repeat's item as it can from *i; returns where the
    // take may be given back to, or -1 when a \+ finds none.
    int32_t take(uint8_t op, const uint8_t *it, int32_t &i) const
    {
        int32_t w;
        if (op == PLUS) {
            if ((w = one(it, i)) < 0)
                return -1;
            i += w;
        }
        int32_t lo = i;
        if (op == QUEST) {
            if ((w = one(it, i)) >= 0)
                i += w;
        } else if (it[0] == ANY && !p.utf8) {
            i = n;
        } else {
            while ((w = one(it, i)) >= 0)
                i += w;
        }
        return lo;
    }

    bool at(int32_t p0)
    {
        const uint8_t *code = p.code.data();
        uint32_t pc = 0;
        int32_t i = p0;
        choices.clear();
        for (;;) {
            const uint8_t *c = code + pc;
            bool ok = true;
            switch (c[0]) {
            case END:
                p.gstart[0] = p0;
                p.gend[0] = i;
                return true;
            case CHR:
            case ANY:
            case CLS:
            case NCLS: {
                int32_t w = one(c, i);
                ok = w >= 0;
                i += w;
                pc += uint32_t(item_size(c));
                break;
            }
            case EOL:
                ok = i == n;
                pc++;
                break;
            case WBEG:
                ok = i < n && wordbyte(t[i]) && !(i > 0 && wordbyte(t[i - 1]));
                pc++;
                break;
            case WEND:
                ok = i > 0 && wordbyte(t[i - 1]) && !(i < n && wordbyte(t[i]));
                pc++;
                break;
            case OPEN:
                p.gstart[c[1]] = i;
                pc += 2;
                break;
            case CLOSE:
                p.gend[c[1]] = i;
                pc += 2;
                break;
            default: { // STAR, PLUS, QUEST
                const uint8_t *it = c + 1;
                int32_t lo = take(c[0], it, i);
                ok = lo >= 0;
                pc += 1 + uint32_t(item_size(it));
                if (ok && i > lo) {
                    bool wide = p.utf8 && (it[0] == ANY || it[0] == NCLS);
                    choices.push_back({pc, lo, i, it[0] == CHR ? it[1] : wide ? 0 : 1});
                }
                break;
            }
            }
            if (ok)
                continue;
            // Give back one item of the latest repeat that still can.
            if (choices.empty())
                return false;
            choice &ch = choices.back();
            ch.p = ch.w ? ch.p - ch.w : back(ch.p, ch.lo);
            i = ch.p;
            pc = ch.pc;
            if (ch.p == ch.lo)
                choices.pop_back();
        }
    }

    // The next column at or after i where the first byte stands, or -1.
    int32_t seek(int32_t i) const
    {
        unsigned char f = p.first;
        if (!(p.icase && lower_letter(f))) {
            auto q = static_cast<const unsigned char *>(std::memchr(t + i, f, size_t(n - i)));
            return q ? int32_t(q - t) : -1;
        }
        for (; i < n; i++)
            if (fold(t[i]) == f)
                return i;
        return -1;
    }

    int32_t search(int32_t start, bool at_line_start)
    {
        if (p.anchored)
            return at_line_start && start == 0 && n >= p.minlen && at(0) ? 0 : -1;
        if (p.must && !std::memchr(t + start, p.must, size_t(n - start)))
            return -1;
        for (int32_t i = start; n - i >= p.minlen;) {
            if (p.first && (i = seek(i)) < 0)
                return -1;
            if (n - i < p.minlen)
                return -1;
            if (at(i))
                return i;
            if (p.lead_dot || i == n)
                return -1;
            i += step(i);
        }
        return -1;
    }
};

const char *compile(std::string_view pat, bool icase, bool utf8)
{
    if (pat.empty())
        return st.have ? nullptr : E_NOPREV;
    // A failed pattern leaves the last good one in place for an empty
    // pattern to repeat.
    try {
        program next{};
        next.icase = icase;
        next.utf8 = utf8;
        compiler c{pat, next};
        if (const char *err = c.run())
            return err;
        st.prog = std::move(next);
        st.have = true;
        return nullptr;
    } catch (const std::bad_alloc &) {
        return E_NOMEM;
    }
}

int32_t execute(const char *text, int32_t n, int32_t start, bool at_line_start)
{
    if (!st.have || start < 0 || start > n || (text == nullptr && n > 0))
        return -1;
    static const char none = 0;
    matcher m{st.prog, reinterpret_cast<const unsigned char *>(text ? text : &none), n, st.choices};
    int32_t at = m.search(start, at_line_start);
    if (at < 0)
        return -1;
    st.found = true;
    st.mstart = at;
    st.mlen = st.prog.gend[0] - at;
    if (st.keep) {
        std::memcpy(st.gs, st.prog.gstart, sizeof st.gs);
        std::memcpy(st.ge, st.prog.gend, sizeof st.ge);
    }
    return at;
}

void last_match(int32_t &start, int32_t &len)
{
    start = st.mstart;
    len = st.mlen;
}

void reset(bool keep_groups)
{
    st.keep = keep_groups;
    st.found = false;
    st.mstart = st.mlen = 0;
}

bool group(int i, int32_t &start, int32_t &len)
{
    // Every group of a pattern takes part in each of its matches: no group
    // may be repeated and there is no alternation.
    if (!st.keep || !st.found || i < 0 || i > st.prog.ngroup)
        return false;
    start = st.gs[i];
    len = st.ge[i] - st.gs[i];
    return true;
}

constexpr xfre_engine legacy = {"LEGACY", compile, execute, last_match, reset, group};

} // namespace

const xfre_engine &xfre_legacy() { return legacy; }
