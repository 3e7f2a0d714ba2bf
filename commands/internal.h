// State and helpers shared by the files of the command interpreter only.
#pragma once

#include "commands/commands.h"
#include "session/xed.h"

#include <string>
#include <string_view>
#include <vector>

struct xfsynonym {
    std::string name;                    // as typed, case kept
    int minlen;                          // minimum length of a match
    std::vector<std::string> expansions; // commands it runs
    char linend;                         // LINEND character at definition
};
extern std::vector<xfsynonym> synonyms;  // in order of definition

extern int arbchar_on;                   // ARBchar ON
extern char arbchar;                     // the arbitrary character
extern int debug_cmds;                   // SYSCMD ON: service words, traces
extern std::string lastlorc;             // the last locate text

std::string xffold(std::string_view s);
void xfmacro_stack_remove(size_t index);
void xfline_number(std::string_view line, int ctx1, int ctx2);
void xflocate_line(std::string_view line, int ctx1, int ctx2);
bool xfsyscmd_word(std::string_view line);

// The word-character test of whole-word searches and changes (`\` targets,
// CN, the ISPF word options): letters, digits and `_`, and in a UTF-8 file
// every character past ASCII (letters of other scripts), so that a word is
// never cut inside a character. `ch` is a byte, or a code point in UTF-8.
bool xfwordchar(uint32_t ch);

// Run one handler on a text as if it had been dispatched (SET uses it).
int xfcall(const cmd_entry *e, xfcm_fn fn, std::string_view text, int ctx1, int ctx2);

// ---------------------------------------------------------------------------
// Searching. Settings that steer every search, global to the session.
extern int wrap_on;          // WRap ON: a failed search goes round the file's end
extern int stay_on;          // STAY ON: a failed LOCATE leaves the current line
extern int varblank_on;      // VARblank ON: a run of blanks matches any run
extern int hex_on;           // HEX ON: x'...' strings are hexadecimal
extern int span_on;          // SPAN ON: searches run across line ends
extern int span_blank;       // SPAN BLANK: joined lines have a blank between them
extern int32_t span_lines;   // SPAN n, 0 for *
extern std::string memo_str; // the last non-empty string searched for

// The last match: where it was, for the repeat of a search and for EXTRACT.
struct xflastmatch {
    int fileid = -1;         // the file it was found in, -1 none
    int32_t li = -1;         // its line
    int32_t col = 0;         // its first column, from 0
    int32_t len = 0;         // its length in columns
};
extern xflastmatch lastmatch;

// A string to look for in lines, prepared once per search: folded for an
// ignoring case, cut at the arbitrary character, compiled for a regular
// expression. Byte offsets throughout; columns only at the edges.
struct xfpat {
    std::string s;           // the string (decoded, folded when icase)
    bool icase = false;      // compare ASCII letters folded
    bool word = false;       // a match must be a whole word
    bool varblank = false;   // blank runs compare as one blank
    bool regex = false;      // s is a regular expression (compiled in xfre)
    bool arb = false;        // cut at the arbitrary character
    bool arb_lead = false;   // the string began with it
    bool arb_trail = false;  // the string ended with it
    std::vector<std::string> pieces; // the pieces between arbitrary characters
    int32_t lastnb = -1;     // index of the last non-blank byte, -1 all blanks
    int32_t skip[256];       // the bad-character shifts of the plain search
};
// Prepares `p` for `text`; false with the message given (arbitrary string
// that is only the character: 146; a regular expression that does not
// compile: its text at level 1, or message 69 when `msg69`).
bool xfpat_init(xfpat &p, std::string_view text, bool icase, bool word, bool regex,
                bool msg69 = false);
// The first match in t[zl, zr) that starts at byte `from` or behind: its
// start and end bytes. `n` is the line's whole length (blanks beyond it
// count as there when zr reaches it).
bool xfpat_find(const xfpat &p, const char *t, int32_t n, int32_t zl, int32_t zr, int32_t from,
                int32_t &ms, int32_t &me);
// The match of a string cut at the arbitrary character, with the byte
// ranges its gaps held (for a change to carry them over).
bool xfpat_find_arb(const xfpat &p, const char *t, int32_t zl, int32_t zr, int32_t from,
                    int32_t &ms, int32_t &me, std::vector<std::pair<int32_t, int32_t>> *gaps);
// The last match that starts before byte `before`.
bool xfpat_find_back(const xfpat &p, const char *t, int32_t n, int32_t zl, int32_t zr,
                     int32_t before, int32_t &ms, int32_t &me);
// The zone of line li of the current file as byte offsets.
void xfzone_bytes(int32_t li, int32_t &zl, int32_t &zr);
// Decodes x'hex' (false: message 150 is the caller's). A 0 byte becomes a
// line feed; a line feed in the result is refused.
bool xfhex_decode(std::string_view in, std::string &out);
// The ignoring-case test of the file's case code.
bool xfcase_ignore();
// Where the cursor stands now, after the proposals of this command.
xfcursor xfcursor_now();
// Proposes the cursor at a line and column of the file area (col from 0).
void xfcursor_file(int32_t li, int32_t col);

// A search over the lines of the current file for a prepared string, from
// a line and byte in a direction, wrapping when asked. Returns the line or
// -1; `ms`/`me` the bytes of the match; `wrapped` whether it went round.
int32_t xfsearch_lines(const xfpat &p, int32_t li, int32_t from, int dir, bool wrap,
                       int32_t stop, int32_t &ms, int32_t &me, bool &wrapped);

// Targets: the scanner gives the length of a target at the start of a line;
// the parser gives a line index, -2 not found, -3 invalid.
size_t xftarget_scan(std::string_view line);
int xftarget_parse(std::string_view target, bool move);
// The same with the caller's wishes: `for_command` when a command takes the
// target (no "Wrapped" message), `all` for ALL's extra part forms.
int xftarget_parse(std::string_view target, bool move, bool for_command);
// The lines a command's target names: the target at the front of `ops` is
// parsed (the current line stays) and `ops` is left at what follows it. On
// success `first` is the first line of the range and `n` its count: from
// the current line up to the target line (not included), `*` to the end; a
// target before the current line gives the lines from it up to the current
// one when `back` is allowed, message 168 otherwise. Returns 0, or -2 / -3
// with the message given.
int xftarget_lines(std::string_view &ops, bool back, int32_t &first, int64_t &n);

// The string search of LOCATE, `\\` and R/: text starts with the delimiter.
// Returns the line, or -2 not found / -3 invalid with the message given.
// `move` makes the line current (and, under LOCATE NOSTAY, puts the cursor
// on the match); `for_command` when a command takes it as its target: the
// search then starts on the next line and "Wrapped" is not shown.
int xfsearch_string(std::string_view text, int dir, bool regex, bool in_target, bool move,
                    bool for_command);

// Handlers of on/off settings share this: no operand reports the state with
// message 9 or 10; ON or OFF sets it; anything else is message 16.
int xfonoff(const xfcmd &c, int &flag);
