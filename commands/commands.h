// The command interpreter: the command table, the dispatcher and its splitter,
// synonyms, macros and command files, messages and the dispatch state.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

struct cmd_entry;

// One command as its handler sees it.
struct xfcmd {
    std::string_view orig;   // the line as given, before $ expansion
    std::string_view line;   // the expanded line
    std::string_view lline;  // the expanded line folded to lower case
    std::string_view norm;   // the expanded line with a blank after the word
    std::string_view lnorm;  // the same, folded
    int ctx1 = 0, ctx2 = 0;  // context values passed down to nested dispatches
    const cmd_entry *ent = nullptr; // the table entry that matched
    int typed = 0;           // length of the command word as typed

    // The operands: the normalised text behind the command word, leading
    // blanks skipped.
    std::string_view ops() const;
};

using xfcm_fn = int (*)(const xfcmd &);

enum : uint8_t {
    CMD_SET = 1,    // may be reached as SET <name>
    CMD_QUERY = 2,  // Query <name> re-dispatches it
};

struct cmd_entry {
    const char *name;  // minimum abbreviation in capitals
    uint8_t flags;     // CMD_SET, CMD_QUERY
    xfcm_fn fn;        // handler, null for the not-implemented table
};

// Start-up values of an entry: folded name, full length, minimum length.
struct cmd_info {
    std::string lname; // name folded to lower case
    int len;           // full length
    int min;           // characters before the first lower-case letter
};

constexpr int CMD_COUNT = 367;
constexpr int NOTIMP_COUNT = 28;
extern const cmd_entry cmd_table[CMD_COUNT];
extern const cmd_entry notimp_table[NOTIMP_COUNT];
extern cmd_info cmd_infos[CMD_COUNT];        // parallel to cmd_table
extern cmd_info notimp_infos[NOTIMP_COUNT];  // parallel to notimp_table

void cmd_init();                             // tables, hash, synonym; once
const cmd_entry *cmd_lookup(std::string_view folded_word);
int cmd_index(const cmd_entry *e);           // position in cmd_table
const cmd_info &cmd_info_of(const cmd_entry *e);
std::vector<const cmd_entry *> &set_table();
int cmd_hash_of(std::string_view key);       // the bucket of a key

// Word tests shared by handlers.
bool word_match(std::string_view text, const cmd_info &name);
bool synonym_match(std::string_view text, std::string_view name, int minlen);
// The commands the first synonym matching `line` stands for, the text typed
// after its name added to the last of them; false when none matches.
bool synonym_expand(std::string_view line, std::vector<std::string> &cmds);
bool abbrev(std::string_view word, std::string_view name, int min); // case folded

// ---------------------------------------------------------------------------
// Dispatch.
int xfcmdline(std::string_view line, int ctx1 = 0, int ctx2 = 0);
int xfcom2(std::string_view line, int ctx1 = 0, int ctx2 = 0);
int xfcmdline_given(std::string_view line, int ctx1 = 0, int ctx2 = 0); // macro text, may hold 0
std::string xfexpand(std::string_view line);
bool xftarget_test(std::string_view line);

extern int cmd_rc;          // return code of the last command
extern int may_macro;       // macros may take the next dispatch
extern int may_builtin;     // built-in commands may take the next dispatch
extern int may_system;      // IMPcmscp may hand the next dispatch's line to the system
extern int macro_first;     // SET MACRO ON
extern int profile_pending; // the profile is searched as a macro first
extern int synonym_armed;   // 0 while a synonym's expansions run
extern int synonym_on;      // SYNonym ON
extern int no_redisplay;    // PRompt: no command-line give-back once
extern int keep_rc_quiet;   // non-zero cmd_rc that is no failure
extern int inner_quiet;     // keep_rc_quiet of the last dispatch
extern int linend_on;       // LINEND splitting on
extern char linend_char;    // the LINEND character
extern int impcmscp;        // 0 OFF, 1 ON, 2 XON
extern int redisplay_done;  // the failed line was put back on the command line
extern int macro_depth;     // REXX macros running

// MODE switches.
struct xfmodes {
    int locate_stay = 0;    // LOCATE STAY
    int prefix_ispf = 0;    // PREFIX ISPF
    int enter_stay = 1;     // ENTER STAY
    int number_scroll = 0;  // NUMBER SCROLL
    int change_one = 0;     // CHANGE ONE
    int redisplay = 1;      // REDISPLAY ON
    int cursor = 1;         // CURSOR n, 0 = WRAP
    int get_stay = 0;       // GET STAY
    int icursor = 0;        // ICURSOR ON
    int reserved_skip = 1;  // RESERVED SKIP
    int notimp = 1;         // NOTIMP ON
    int scroll_wrap = 0;    // SCROLL WRAP
    int command_ispf = 0;   // COMMAND ISPF
    int expand_on = 1;      // EXPAND ON
    int expand_env = 0;     // EXPAND ENV
};
extern xfmodes modes;

// ---------------------------------------------------------------------------
// Messages.
void xfmsg(int number, int level);
void xfmsgs(std::string_view text, int level);
const char *xfmsg_text(int number);          // "" for an empty slot
extern std::string last_message;             // copy of the last message shown
// When set, messages are appended here (lines apart) instead of being shown.
extern std::string *xfmsg_capture;

// A question put to the user who typed the command: the message line says
// "..... <key> <what>" and the answer is yes when the same key comes again.
// False at once when the command did not come from a key on a page.
bool xfconfirm_key(const std::string &what);
// The same question asked as the command's source allows: from a key as
// xfconfirm_key does with `what`; from a macro or a menu in a box of the
// lines with Continue and Cancel. False where nobody can be asked.
bool xfconfirm(const std::string &what, const std::vector<std::string> &lines);
// The page's way of asking: `question` on the message line, then one read;
// `aid` and `aid_value` hold the answer. With `onekey` any key answers, a
// typed character included (AS_ONEKEY), and nothing is typed. False at once
// where no page can be asked: in batch, or before any screen exists.
bool xfask(const std::string &question, bool onekey);

// ---------------------------------------------------------------------------
// Macros and command files.
struct xfmacro {
    std::string name;                  // name without extension
    std::string path;                  // full path
    int cls = 0;                       // extension class
    bool loaded = false;               // command file lines read
    std::vector<std::string> lines;    // command file lines once read
};
extern std::vector<xfmacro> rexx_macros, cmd_files, flist_macros;
extern std::vector<std::string> macro_path; // directories HAsh scans
int xfext_class(std::string_view name);
int xfmacro_search(std::string_view line);  // 1 taken, 0 not
void xfhash_path();                        // HAsh with no operand
extern int (*xfrexx_hook)(const std::string &path, std::string_view rest); // run a REXX macro
void xfrexx_init();                        // macros run in the interpreter
void xfdialog_init();                      // dialog boxes call back into the editor
extern std::vector<std::vector<std::string>> arg_frames; // words of executing macros

// Command history.
void xfhist_add(std::string_view line);
// The command `back` entries before the newest (0 the newest); false when
// the history holds fewer.
bool xfhist_get(size_t back, std::string &out);

// A line no command took, given to the system as IMPcmscp says: run on
// the terminal (ON, and always in batch) or in a shell window (XON).
void xfimpcmscp_run(std::string_view line, int ctx1, int ctx2);

// Queue operations used by the dispatcher.
void xfqueue_clear();

// Operand parsing helpers shared by handlers.
std::string_view xfword(std::string_view &rest); // next blank-delimited word
std::string_view xftrim(std::string_view s);
bool xfnumber(std::string_view s, long &out);     // whole decimal number
bool xfcount(const xfcmd &c, long &n); // optional count of 1 or more; false after message 16
// The same for a count of lines to add to the bound file: one that would
// take it past the line limit is refused the same way, before any memory is
// asked for.
bool xfcount_lines(const xfcmd &c, long &n);

// Prefix entries: the text typed in a prefix field for line li of the
// current file (field: the page's field, -1 none) is parked, or shown back
// as not understood; once a read has taken everything in, xfapply runs
// what waits in every file on the screen.
void xfack2(int32_t li, std::string_view typed, int field);
void xfapply();
// Query PENDing's listing (the operands after PENDing); its return code.
int xfpfx_query(std::string_view rest);
// A waiting entry as Query PENDing and EXTRACT /PENDING/ tell it.
struct xfpfx_row {
    int32_t li = 0;               // its line
    std::string name;             // its name, a macro's after prefix synonyms
    std::string old;              // the name typed
    std::vector<std::string> ops; // a macro's operands, up to three
};
// The entries `[BLOCK] [OLDNAME] name|*` names; `ok` false with no name.
std::vector<xfpfx_row> xfpfx_find(std::string_view rest, bool &ok);

// Text pasted from outside (a terminal's bracketed paste): inserted at the
// cursor as a stream, the clipboard left as it is. One undo step.
int xfpaste_text(const std::string &text);
// A character typed over a pending selection of the current file (its bytes
// as the file holds them): the selection is removed and the character put in
// its place, the cursor behind it. 0 when no such selection is there.
int xf_cut(const std::string &typed);
// Removes the selected text (copied to the clipboard first when `keep`):
// what the DEL selection key does. 0 when there is no selection.
int xfsel_delete(bool keep);

// ---------------------------------------------------------------------------
// Help pages (xfhelp.cpp): one data file holds them all.
struct xfhelp_page {
    std::string kind;                  // "command", "rexx" or "task"
    std::string name;                  // as the table spells it
    std::string syntax;                // one line of syntax
    std::vector<std::string> text;     // the paragraph(s)
    std::vector<std::string> examples; // example lines
};
// Reads the pages of the data file's text; false with the reason in `why`
// (the line number and what is wrong) for a malformed file.
bool xfhelp_parse(std::istream &in, std::vector<xfhelp_page> &pages, std::string &why);
// The page of a kind and name, the name compared without case; null if none.
const xfhelp_page *xfhelp_find(const std::vector<xfhelp_page> &pages, std::string_view kind,
                               std::string_view name);
// The data file beside the program, or "" when it is not there.
std::string xfhelp_file();

// Lets a test replace the command table's "not implemented" handler lookup.
int xfcm_notimpl(const xfcmd &c);
