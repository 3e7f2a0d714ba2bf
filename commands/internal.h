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

// HELP and MAN on a word (the selection's forms use them): the operands as
// the commands take them. Messages and cmd_rc as the commands give them.
int xfhelp_word(std::string_view ops);
int xfman_word(std::string_view ops);

// A file name cut as $ expansion and EXTRACT name its parts.
struct xfname_parts {
    std::string lfn, fn, fd, ft; // name up to the extension, base, folder, extension
};
xfname_parts xfsplit_name(const std::string &name);

// A setting's report as its query gives it, without the "..... Is " in
// front: what the listing of every setting and EXTRACT read. The handler runs
// with no operand and shows nothing; cmd_rc is kept.
std::string xfquery_text(const cmd_entry *e);
void xfmacro_stack_remove(size_t index);
void xfline_number(std::string_view line, int ctx1, int ctx2);
void xflocate_line(std::string_view line, int ctx1, int ctx2);
bool xfsyscmd_word(std::string_view line);

// The word-character test of whole-word searches and changes (`\` targets,
// CN, the ISPF word options): letters, digits and `_`, and in a UTF-8 file
// every character past ASCII (letters of other scripts), so that a word is
// never cut inside a character. `ch` is a byte, or a code point in UTF-8.
bool xfwordchar(uint32_t ch);
// The word under the cursor in the current file: its line and byte range
// [from, to); false when the cursor is not on a word.
bool xfcursor_word(int32_t &li, int32_t &from, int32_t &to);

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
void xfzone_bytes(const xfline &l, int32_t &zl, int32_t &zr); // of a record of this file
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
// ALL's expression: parts joined by `&` and `|`, evaluated left to right.
struct xfselpart {
    std::string str;    // the string or regular expression, decoded
    bool neg = false;   // ~: the lines without it
    bool blank = false; // the word blank: lines of blanks only
    bool regex = false; // r/re/
    bool word = false;  // \string\: whole words
};
struct xfselexpr {
    std::vector<xfselpart> parts; // at least one
    std::string conns;            // '&' or '|' before each part after the first
};
// Splits and checks the expression; false with the message given and
// cmd_rc set (163 an even count of elements, 16 a wrong part, 108 an empty
// string, 150 bad hexadecimal).
bool xfselexpr_parse(std::string_view body, xfselexpr &e);

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

// ---------------------------------------------------------------------------
// Counts and line services of the block commands; the prefix commands call
// them too. The services walk the lines in scope of their range (all lines
// under SCOPE ALL) and change the current file through xf_do, so that the
// caller's command stays one undo step.

// The lines of a file on disk from line `first` (from 1), `count` of them
// or all (-1), as copies the caller owns; false with the message given
// (22 not found, the loader's, or the file being shorter).
bool xfread_file_lines(std::string name, long first, long count, std::vector<xfline> &out);

// A name typed for a file: "~" is the home folder, and a relative name is
// taken from the working folder.
std::string xfpath_of(std::string name);

// The text font FONt set last (face%style%width%height), "" none yet.
const std::string &xffont_now();
// What FONt's family is told in a terminal, whose font is its own.
extern const char *const XF_TERMINAL_FONT;

// The names PDFCOpy, CREAte and REPlace ask for in a box when none was
// typed: 1 with the answer, 0 cancelled (cmd_rc set), -1 when no box can
// be shown. The COPY panel asks the lines too: count -1 is to the end.
int xfask_copy(std::string &name, long &first, long &count);
int xfask_target(bool create, std::string &name);

// What PDFCOpy, CREAte or REPlace leave for the prefix area to complete:
// lines read from a file that wait for an A or B (F or P) destination, or a
// file that waits for a CC or MM block (or a C or M) to be written with.
// One at a time: a later command takes the place of one still waiting. The
// prefix commands' run serves it ahead of the file's own destinations.
enum : int { PARK_NONE, PARK_COPY, PARK_CREATE, PARK_REPLACE };
struct xfparked {
    int kind = PARK_NONE;
    std::vector<std::string> lines; // PARK_COPY
    std::string path;               // PARK_CREATE, PARK_REPLACE
};
extern xfparked pdf_parked;

// Writes the lines in scope of n lines from li to the file at `path`, as
// CREAte (which must find no file there, message 182) or REPlace do; the
// bound file itself stays unsaved. False, with the message given, when
// nothing was written.
bool xfwrite_block(const std::string &path, bool create, int32_t li, int64_t n);
// A block that already waits in the prefix area goes to the parked file.
void xfpfx_take_parked();

// Count-from-target: the target at the front of `text` (which is left at
// what follows it) as a count from the current line, negative for a target
// before it; empty text counts 1. Returns 0, or -2 / -3 with the message given.
int xftarget_count(std::string_view &text, int64_t &count);
// The same for commands that go forward only: a target before the current
// line is message 168 and -3.
int xftarget_forward(std::string_view &text, int64_t &count);
// The lines a count names from the current line: forward from it, or for a
// negative count the lines before it up to it. The top of the file counts
// one fewer from line 0; the range is cut at the end. False when empty.
bool xfcount_range(int64_t count, int32_t &first, int64_t &n);

// Deletes the lines in scope of n lines from li (li -1 counts one fewer
// from 0), moving marks, pending entries and current lines; returns how many.
int64_t xfdel(int32_t li, int64_t n, const char *tag);
// Copies of the lines in scope of n lines from li, owned by the caller.
std::vector<xfline> xfcopy_out(int32_t li, int64_t n);
// Inserts the lines after line `after` (-1 the top); they become the file's
// and `lines` is left empty.
void xfinsert_lines(int32_t after, std::vector<xfline> &lines, const char *tag);
// n copies of line li after it; of the top of the file, n one-blank lines.
void xfdup(int32_t li, int32_t n);
// Shifts lines a to b n columns right (blanks inserted) or left (columns
// removed, whatever they hold) at the zone's left column, or behind the
// first word with `keep_label`. Lines that end before that column, and
// one-blank lines, stay. Return the lines changed.
int64_t xfshr(int32_t a, int32_t b, int32_t n, bool keep_label);
int64_t xfshl(int32_t a, int32_t b, int32_t n, bool keep_label);
// Upper-cases or lower-cases the zone of lines a to b; returns the lines changed.
int64_t xfcase_lines(int32_t a, int32_t b, bool upper);
// Folds bytes [from, to) of a text of the current file; whether any changed.
bool xfcase_text(std::string &t, size_t from, size_t to, bool upper);

// ---------------------------------------------------------------------------
// Prefix commands: the two vocabularies, the pending tables and the prefix
// buffer (xfpfx_parse.cpp parks entries, xfpfx_run.cpp runs them).

// What the single table's indexes mean, in both vocabularies.
enum : int32_t {
    PFX_ADD = 1, PFX_DEL, PFX_PUT, PFX_DUP, PFX_DUP2, PFX_CUR, PFX_GET, PFX_EDIT, PFX_SHR, PFX_SHL,
    PFX_REP, PFX_EXCL, PFX_SHOW, PFX_SCALE, PFX_TABL, PFX_INS, PFX_LC, PFX_UC,
    PFX_NSINGLE = PFX_UC // the last index
};
// And the block table's.
enum : int32_t {
    PFX_MM = 1, PFX_CC, PFX_DD, PFX_PP, PFX_BEFORE, PFX_AFTER, PFX_M, PFX_C, PFX_DUPS, PFX_DUPS2,
    PFX_SHRS, PFX_SHLS, PFX_REPS, PFX_XX, PFX_O, PFX_OO, PFX_LCC, PFX_UCC,
    PFX_NBLOCK = PFX_UCC
};
constexpr int32_t PFX_MACRO = -1; // the code of a macro's entry
constexpr int32_t PFX_DONE = -2;  // the code of an entry that has run
constexpr size_t PFX_MAX = 999;   // entries a table holds

// The name of an index in the vocabulary MODE PREFIX chose.
const char *xfpfx_name(bool block, int32_t code);
// The prefix buffer that PU and PP fill and G reads.
extern std::vector<std::string> pfx_buffer;
// Prefix synonyms: a name and the macro it calls.
extern std::vector<std::pair<std::string, std::string>> pfx_synonyms;

// The line's text shown on its prefix area while it waits, or "".
std::string xfpfx_text(int32_t li);
// The line's entries go (its waiting text too); with `errors` its error row.
void xfpfx_clear_line(int32_t li, bool errors);
// A text the line's prefix area shows back as not understood.
void xfpfx_error(int32_t li, std::string_view text);
// Runs a prefix macro on line li: 0 success.
int xfpfx_macro(const xfpend &p, const char *set);
// Parks an entry on the current line for a macro (PENDing).
int xfpfx_park(std::string_view text, bool block, int32_t li, int field);
