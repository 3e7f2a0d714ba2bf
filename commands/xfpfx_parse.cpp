// Prefix entries taken in: the two vocabularies, the cutting of a typed
// prefix text into a name, a number and operands, and the parking of the
// entry in the file's single or block table, where it waits for xfapply.
// Also the PENDing command and its query, which let a macro park entries.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "session/xed.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdio>

std::vector<std::string> pfx_buffer;
std::vector<std::pair<std::string, std::string>> pfx_synonyms;

namespace {

// Byte 142 fills a slot a vocabulary does not use: nobody can type it.
#define NOPE "\x8e"

constexpr const char *single_names[2][PFX_NSINGLE] = {
    {"A", "D", "PU", "\"", "'", "/", "G", "E", ">", "<", NOPE, "X", "S", "SCALE", "TABL", "I",
     NOPE, NOPE},
    {"I", "D", "PU", "\"", "'", "/", "G", "E", ">", "<", "R", "X", "S", "SCALE", "TABL", "I", "LC",
     "UC"},
};
constexpr const char *block_names[2][PFX_NBLOCK] = {
    {"MM", "CC", "DD", "PP", "P", "F", "M", "C", "\"\"", "''", ">>", "<<", NOPE NOPE, "XX", "O", "OO",
     NOPE NOPE, NOPE NOPE},
    {"MM", "CC", "DD", "PP", "B", "A", "M", "C", "\"\"", "''", ">>", "<<", "RR", "XX", "O", "OO",
     "LCC", "UCC"},
};
#undef NOPE

const char *const *singles() { return single_names[modes.prefix_ispf ? 1 : 0]; }
const char *const *blocks() { return block_names[modes.prefix_ispf ? 1 : 0]; }

// Letters a single name needs: SCALE and TABL may be shortened.
int single_min(int32_t code, const char *name)
{
    return code == PFX_SCALE ? 2 : code == PFX_TABL ? 1 : (int)std::char_traits<char>::length(name);
}

// A typed prefix text cut up.
struct parsed {
    std::string name;              // upper case
    int32_t count = 1;             // the number, or 1
    bool numbered = false;         // a number was given
    std::vector<std::string> ops;  // up to three words after the name
};

bool is_letter(char c) { return std::isalpha((unsigned char)c) != 0; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }

// number := '*' | ['-'] digit+  (the sign only behind the name)
bool take_number(std::string_view t, size_t &i, bool sign, int32_t &out)
{
    if (i < t.size() && t[i] == '*') {
        out = xfpend_all;
        i++;
        return true;
    }
    size_t j = i;
    bool neg = sign && j < t.size() && t[j] == '-';
    if (neg)
        j++;
    if (j >= t.size() || !is_digit(t[j]))
        return false;
    long long v = 0;
    for (; j < t.size() && is_digit(t[j]); j++)
        v = std::min<long long>(v * 10 + (t[j] - '0'), INT_MAX - 1);
    out = (int32_t)(neg ? -v : v);
    i = j;
    return true;
}

// entry := [number] name [number] {blank word}   with at most three words;
// a name is a run of letters or a run of other characters that are neither
// letters, digits, blanks nor '*'.
bool parse(std::string_view t, parsed &p)
{
    size_t i = 0;
    int32_t n;
    if (take_number(t, i, false, n)) {
        p.count = n;
        p.numbered = true;
    }
    size_t s = i;
    if (i < t.size() && is_letter(t[i]))
        while (i < t.size() && is_letter(t[i]))
            i++;
    else
        while (i < t.size() && !is_letter(t[i]) && !is_digit(t[i]) && t[i] != ' ' && t[i] != '*')
            i++;
    if (i == s)
        return false;
    for (size_t k = s; k < i; k++)
        p.name += (char)std::toupper((unsigned char)t[k]);
    if (!p.numbered && take_number(t, i, true, n)) {
        p.count = n;
        p.numbered = true;
    }
    if (i < t.size() && t[i] != ' ')
        return false;
    std::string_view rest = t.substr(i);
    for (std::string_view w = xfword(rest); !w.empty(); w = xfword(rest)) {
        if (p.ops.size() == 3)
            return false;
        p.ops.emplace_back(w);
    }
    return true;
}

int32_t find_single(const std::string &name)
{
    for (int32_t k = 1; k <= PFX_NSINGLE; k++) {
        const char *tn = singles()[k - 1];
        if (abbrev(name, tn, single_min(k, tn)))
            return k;
    }
    return 0;
}

int32_t find_block(const std::string &name)
{
    for (int32_t k = 1; k <= PFX_NBLOCK; k++)
        if (name == blocks()[k - 1])
            return k;
    return 0;
}

// The macro a prefix name stands for: through the prefix synonyms, then
// among the REXX macros by its name as typed or in either case. Empty when
// there is none; a synonym always names one, found or not.
std::string macro_for(const std::string &name, const std::string &typed)
{
    for (auto &s : pfx_synonyms)
        if (s.first == name)
            return s.second;
    std::string lower = xffold(name);
    for (const std::string *n : std::initializer_list<const std::string *>{&typed, &lower, &name})
        for (auto &m : rexx_macros)
            if (m.name == *n)
                return m.name;
    return std::string();
}

std::vector<xfpend> &table(bool block) { return block ? xf->pend2 : xf->pend1; }

void set_text(std::vector<std::pair<std::string, int32_t>> &v, int32_t li, std::string_view text)
{
    v.erase(std::remove_if(v.begin(), v.end(), [&](const auto &p) { return p.second == li; }),
            v.end());
    if (!text.empty())
        v.emplace_back(std::string(text), li);
}

// Parks one entry; false (message 4) when its table is full.
bool park(bool block, xfpend e, std::string_view text, size_t limit)
{
    xfpfx_clear_line(e.li, true);
    std::vector<xfpend> &t = table(block);
    if (t.size() >= limit) {
        xfmsg(4, 1);
        return false;
    }
    e.view = xvidx;
    t.push_back(std::move(e));
    set_text(xf->pfxtexts, t.back().li, text);
    return true;
}

xfpend entry(int32_t li, int32_t code, const parsed &p, int field)
{
    xfpend e;
    e.li = li;
    e.code = code;
    e.count = p.count;
    e.numbered = p.numbered;
    e.field = field;
    return e;
}

xfpend macro_entry(int32_t li, const std::string &macro, const parsed &p, int field)
{
    xfpend e = entry(li, PFX_MACRO, p, field);
    e.oldname = p.name;
    e.words.push_back(macro);
    // The number goes to the macro as its first operand.
    if (p.numbered)
        e.words.push_back(p.count == xfpend_all ? "*" : std::to_string(p.count));
    for (auto &o : p.ops)
        if (e.words.size() < 4)
            e.words.push_back(o);
    return e;
}

// Where a parsed entry goes. 0 it was parked (or refused with message 4),
// 1 nothing knows its name, 2 a built-in that this line cannot take.
int place(const parsed &p, std::string_view typed_name, std::string_view text, int32_t li, int field)
{
    std::string mac = macro_for(p.name, std::string(typed_name));
    bool macro_block = p.name.size() > 1;
    if (macro_first && !mac.empty()) {
        park(macro_block, macro_entry(li, mac, p, field), text, PFX_MAX);
        return 0;
    }
    if (int32_t k = find_single(p.name)) {
        xfpend e = entry(li, k, p, field);
        if (k == PFX_SHOW && !p.numbered)
            e.count = 0; // S alone: the whole group
        else if (k != PFX_SHOW)
            e.count = std::max(1, e.count);
        park(false, std::move(e), text, PFX_MAX);
        return 0;
    }
    if (int32_t k = find_block(p.name)) {
        if (li < 0 && (k == PFX_M || k == PFX_C))
            return 2;
        xfpend e = entry(li, k, p, field);
        e.count = std::max(1, e.count);
        park(true, std::move(e), text, PFX_MAX);
        return 0;
    }
    if (!macro_first && !mac.empty()) {
        park(macro_block, macro_entry(li, mac, p, field), text, PFX_MAX);
        return 0;
    }
    return 1;
}

// The name as typed, for a macro whose file name keeps its case.
std::string_view typed_name(std::string_view t)
{
    size_t i = 0;
    while (i < t.size() && (is_digit(t[i]) || t[i] == '*'))
        i++;
    size_t s = i;
    while (i < t.size() && is_letter(t[i]))
        i++;
    return t.substr(s, i - s);
}

// A label typed on the line: `.name` names it, unless another line has it.
void take_label(int32_t li, std::string_view t)
{
    std::string_view rest = t;
    std::string_view name = xfword(rest);
    int k = xfpoint_find(name);
    if (name.size() < 2 || !xftrim(rest).empty() || li < 0 || (k >= 0 && xf->points[(size_t)k].li != li)) {
        xfpfx_error(li, t);
        return;
    }
    xfpfx_clear_line(li, true);
    xfpoint_set(name, li);
}

} // namespace

const char *xfpfx_name(bool block, int32_t code)
{
    if (code < 1 || code > (block ? (int32_t)PFX_NBLOCK : (int32_t)PFX_NSINGLE))
        return "";
    return block ? blocks()[code - 1] : singles()[code - 1];
}

std::string xfpfx_text(int32_t li)
{
    for (auto &p : xf->pfxtexts)
        if (p.second == li)
            return p.first;
    return std::string();
}

void xfpfx_clear_line(int32_t li, bool errors)
{
    for (auto *t : {&xf->pend1, &xf->pend2})
        t->erase(std::remove_if(t->begin(), t->end(),
                                [&](const xfpend &p) { return p.li == li && p.code != PFX_DONE; }),
                 t->end());
    set_text(xf->pfxtexts, li, "");
    if (errors)
        set_text(xf->pfxerrs, li, "");
}

void xfpfx_error(int32_t li, std::string_view text)
{
    xfpfx_clear_line(li, true);
    set_text(xf->pfxerrs, li, text);
}

void xfack2(int32_t li, std::string_view typed, int field)
{
    if (!xf || li < -1 || li >= nbli())
        return;
    std::string_view t = xftrim(typed);
    while (!t.empty() && t.back() == ' ')
        t.remove_suffix(1);
    if (t.empty()) {
        // Blanks over an entry take it away; a macro hears of it.
        std::vector<xfpend> macros;
        for (auto *tb : {&xf->pend1, &xf->pend2})
            for (auto &p : *tb)
                if (p.li == li && p.code == PFX_MACRO)
                    macros.push_back(p);
        xfpfx_clear_line(li, true);
        for (auto &m : macros)
            xfpfx_macro(m, "CLEAR");
        return;
    }
    if (t[0] == '.') {
        take_label(li, t);
        return;
    }
    parsed p;
    if (!parse(t, p) || place(p, typed_name(t), t, li, field) != 0)
        xfpfx_error(li, t);
}

int xfpfx_park(std::string_view text, bool block, int32_t li, int field)
{
    parsed p;
    if (!parse(text, p))
        return 1;
    std::string mac = macro_for(p.name, std::string(typed_name(text)));
    int32_t k = block ? find_block(p.name) : find_single(p.name);
    if (k && !(li < 0 && block && (k == PFX_M || k == PFX_C))) {
        xfpend e = entry(li, k, p, field);
        e.count = k == PFX_SHOW && !block ? (p.numbered ? p.count : 0) : std::max(1, e.count);
        return park(block, std::move(e), text, block ? PFX_MAX + 1 : PFX_MAX) ? 0 : 2;
    }
    if (mac.empty())
        return 1;
    return park(block, macro_entry(li, mac, p, field), text, block ? PFX_MAX + 1 : PFX_MAX) ? 0 : 2;
}

// PENDing [BLOCK] name [ops] | ERROR text | OFf
int xfcm_pending(const xfcmd &c)
{
    xftrace("Commande xfcm_pending");
    if (!xf)
        return 1;
    std::string_view rest = c.ops();
    std::string_view all = xftrim(rest);
    std::string w = xffold(xfword(rest));
    auto fail = [](int msg) {
        xfmsg(msg, 1);
        cmd_rc = 5;
        return 1;
    };
    if (w.empty())
        return fail(159);
    int32_t li = curline();
    if (abbrev(w, "off", 2) && xftrim(rest).empty()) {
        xfpfx_clear_line(li, false);
        return 1;
    }
    if (w == "error") {
        if (xftrim(rest).empty())
            return fail(159);
        xfpfx_error(li, xftrim(rest));
        return 1;
    }
    bool block = w == "block";
    std::string_view text = block ? xftrim(rest) : all;
    if (text.empty())
        return fail(159);
    int r = xfpfx_park(text, block, li, -1);
    if (r == 1)
        return fail(16);
    cmd_rc = r == 0 ? 0 : 1;
    return 1;
}

// The entries that `[BLOCK] [OLDNAME] name|*` names, in table order: the
// single table first unless BLOCK. `ok` false when no name was given.
std::vector<xfpfx_row> xfpfx_find(std::string_view rest, bool &ok)
{
    std::vector<xfpfx_row> out;
    bool block = false, oldname = false;
    std::string_view w = xfword(rest);
    if (xffold(w) == "block") {
        block = true;
        w = xfword(rest);
    }
    if (xffold(w) == "oldname") {
        oldname = true;
        w = xfword(rest);
    }
    ok = !w.empty();
    if (!ok || !xf)
        return out;
    auto upper = [](std::string t) {
        for (auto &ch : t)
            ch = (char)std::toupper((unsigned char)ch);
        return t;
    };
    std::string want = upper(std::string(w));
    for (int tb = block ? 1 : 0; tb < 2; tb++)
        for (auto &p : table(tb == 1)) {
            if (p.code == PFX_DONE)
                continue;
            xfpfx_row r;
            r.li = p.li;
            r.name = p.code == PFX_MACRO ? p.words[0] : xfpfx_name(tb == 1, p.code);
            r.old = p.code == PFX_MACRO ? p.oldname : r.name;
            if (want != "*" && upper(oldname ? r.old : r.name) != want)
                continue;
            for (size_t k = 1; k < p.words.size() && k <= 3; k++)
                r.ops.push_back(p.words[k]);
            out.push_back(std::move(r));
        }
    return out;
}

// Query PENDing [BLOCK] [OLDNAME] name|*: one message for each entry.
int xfpfx_query(std::string_view rest)
{
    if (!xf)
        return 0;
    bool ok;
    std::vector<xfpfx_row> rows = xfpfx_find(rest, ok);
    if (!ok) {
        xfmsg(159, 1);
        return 5;
    }
    for (auto &r : rows) {
        char head[32];
        std::snprintf(head, sizeof head, "Line %d: ", r.li + 1);
        std::string m = head + ("'" + r.name + "', Oldname='" + r.old + "'");
        for (size_t k = 0; k < r.ops.size(); k++)
            m += ", OP" + std::to_string(k + 1) + "='" + r.ops[k] + "'";
        xfmsgs(m, 0);
    }
    return 0;
}
