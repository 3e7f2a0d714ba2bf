// The editor's session: the file record, the view record, the line store and
// the process-wide state that every command works on.
//
// Code addresses the current file and the current view through two bound
// pointers, `xf` and `xv`; switching file or view rebinds them and nothing
// else, so no command needs to be told which file it works on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "syntax/syn.h"

// ---------------------------------------------------------------------------
// Memory wrapper: callers never test the result; failure goes to xfnomem.
void *xfmalloc(size_t size);
void *xfrealloc(void *ptr, size_t size);
void *xfgrow(void *ptr, size_t size);
[[noreturn]] void xfnomem(size_t size, int reason);
char *xfstrdup(std::string_view s);   // heap copy, NUL-ended, owned by the caller
void xfmem_install();                 // route operator new failures to xfnomem

// Hook for the recovery save: called by xfnomem before the process ends.
// The saving subsystem sets it; null means nothing is saved.
extern void (*xfnomem_hook)(int reason); // recovery of changed files

// ---------------------------------------------------------------------------
// Lines.  A line is one slot of the store: its heap text (NUL-ended, but its
// length is authoritative: binary lines may hold NUL bytes), its length, its
// stop mark and its selection level.
//
// A large file holds millions of these, so the record is kept to 16 bytes:
// the length (at most xfmax_cols) and the level (0 to 2147483647) need 31
// bits each, and the stop mark's two bits fill their two words.  Neither
// field can be bound to a reference or have its address taken; reading one
// gives an int, as before.
struct xfline {
    char *text;             // heap text owned by the line
    uint32_t len : 31;      // byte length of text
    uint32_t mark_hi : 1;   // stop mark, high bit: see stopmark()
    uint32_t selevel : 31;  // selection level (SET SELECT), never negative
    uint32_t mark_lo : 1;   // stop mark, low bit

    xfline() = default;
    xfline(char *t, int32_t n, int32_t mark, int32_t level)
        : text(t), len((uint32_t)n), mark_hi(0), selevel((uint32_t)level), mark_lo(0)
    {
        set_stopmark(mark);
    }
    // The mark is 0..3, set through xf_do code 's'.
    int32_t stopmark() const { return (int32_t)(mark_hi << 1 | mark_lo); }
    void set_stopmark(int32_t m)
    {
        mark_hi = (uint32_t)(m >> 1) & 1;
        mark_lo = (uint32_t)m & 1;
    }
};
static_assert(sizeof(xfline) == 16, "a line record stays at 16 bytes");

// The four line arrays as one gapped array: inserting or deleting near the
// same place repeatedly costs only the lines between the gap and the edit
// point, and index access stays constant-time.
class xflines {
public:
    xflines() = default;
    ~xflines();
    xflines(const xflines &) = delete;
    xflines &operator=(const xflines &) = delete;

    int32_t size() const { return cap_ - gaplen_; }
    int32_t capacity() const { return cap_; }
    xfline &operator[](int32_t i) { return buf_[i < gap0_ ? i : i + gaplen_]; }
    const xfline &operator[](int32_t i) const { return buf_[i < gap0_ ? i : i + gaplen_]; }

    void reserve(int32_t cap);          // capacity at least cap
    xfline *span(int32_t at, int32_t n); // slots [at, at+n) as one run, the gap moved aside
    void open(int32_t at, int32_t n);   // n zeroed slots before index `at`
    void close(int32_t at, int32_t n);  // remove n slots from `at` (texts untouched)

private:
    void movegap(int32_t at);
    xfline *buf_ = nullptr;  // storage, cap_ slots
    int32_t cap_ = 0;        // slots allocated
    int32_t gap0_ = 0;       // first slot of the gap
    int32_t gaplen_ = 0;     // slots in the gap
};

// ---------------------------------------------------------------------------
// Cursor record: where the cursor is to stand, with a priority.
struct xfcursor {
    int32_t ec = 0;        // view index
    int32_t fld = 0;       // 0 file area, else field number of the page
    int32_t li = -1;       // line
    int32_t col = 0;       // column
    int32_t cmdcol[2] = {0, 0}; // saved position in the command line
    int32_t elem = -1;     // prefix or reserved element, -1 none
    int32_t spare = 0;     // unused
    int32_t prio = 0;      // priority of the proposal
};

struct xfpoint {
    std::string name;      // ".name" as given
    int32_t li;            // line index
};

// Undo journal of one file: parallel arrays of entries, and the redo list.
struct xfjentry {
    bool groupstart;       // first entry of a group
    int32_t line;          // li of the xf_do call
    char code;             // D d r i I s P
    int32_t nlines;        // count of the xf_do call
    int32_t oldmark;       // for 's': stop mark before the change
    std::vector<xfline> old; // texts removed by the operation (owned)
    std::vector<int32_t> order; // for 'P': where each line of the range came from
    xfcursor cursor;       // where the cursor stood (ec -1 unknown)
};
struct xfjournal {
    std::vector<xfjentry> undo; // entries, oldest first
    std::vector<xfjentry> redo; // undone entries, for REDo
};

// A prefix entry waiting to run: in the single table or the block table
// of its file.
struct xfpend {
    int32_t view = 0;      // the view the line was seen in
    int32_t li = 0;        // index of the line, -1 the top of the file
    int32_t code = 0;      // index in the vocabulary, -1 a macro, -2 done
    int32_t count = 1;     // the number given, or 1; xfpend_all for `*`
    int32_t field = -1;    // the prefix field it was typed in, -1 none
    bool numbered = false; // a number was given
    std::vector<std::string> words; // a macro: its name and up to 3 operands
    std::string oldname;   // a macro: the name typed, before prefix synonyms
};
constexpr int32_t xfpend_all = 2147483647; // the count of `*`: to the end

// The bytes of a loaded file, split into lines in place: the texts of the
// lines read at load point into this block.  xftext_free knows such texts
// and leaves them to the block, which goes with its file.  So a line's text
// is never given to free or realloc directly, and a text that moves to
// another file is copied.
struct xftextblock {
    char *base = nullptr;  // first byte, null when none
    size_t size = 0;       // bytes in the block
    xftextblock() = default;
    xftextblock(const xftextblock &) = delete;
    xftextblock &operator=(const xftextblock &) = delete;
    ~xftextblock();
    void adopt(char *b, size_t n); // take over a heap block
    void release();                // free it now
};
void xftext_free(char *text);      // free a line's text, wherever it lives

// Columns of a line's text: a character of a UTF-8 file (`xfile::utf8`), a
// byte of any other. Offsets and columns count from 0; past the text's end
// every column is one blank byte. Everything that takes or shows a column
// (the page, the cursor, zones, margins, column targets, CHANGE, SHIFT, the
// block and reflow commands, EXTRACT) counts through these, never by bytes,
// and cuts a line only at the offset of a column, so that no character is
// ever split. A walk along a line steps with xfcol_char instead of asking
// xfcol_off for every column, which would rescan the line each time.
int32_t xfcol_len(const char *t, int32_t n, bool utf8);               // columns of the text
int32_t xfcol_off(const char *t, int32_t n, int32_t col, bool utf8);  // byte offset of a column
int32_t xfcol_at(const char *t, int32_t n, int32_t off, bool utf8);   // column of a byte offset
// The character at byte `off` (a stray byte stands for itself), and where
// the next one starts: the step of a walk along a line.
uint32_t xfcol_char(const char *t, int32_t n, int32_t off, int32_t &next, bool utf8);
int xfcol_width(uint32_t cp); // terminal cells a character takes: 0, 1 or 2
// Whether the bytes are well-formed UTF-8; `high` tells whether any is past ASCII.
bool xfutf8_text(const char *t, size_t n, bool &high);
// The text mode of the current file, decided once it is loaded: UTF-8 when
// its lines are well-formed UTF-8 with something past ASCII, bytes when they
// are not (Latin-1, binary), and for a new or pure-ASCII file the locale's.
// ENCODING UTF8 or BYTES given before the load decides instead.
int xftext_mode();
bool xflocale_utf8(); // the character set of the user's locale is UTF-8

// The limits of a file: its lines, and a line's bytes (so its columns).
constexpr int32_t xfmax_lines = 2147483646;
constexpr int32_t xfmax_cols = 2147483646;

// ---------------------------------------------------------------------------
// The file record.
struct xfile {
    xftextblock textblock; // loaded bytes that line texts point into
    xflines lines;         // text, lentr, stopmark, selevel
    int32_t chgcount = 0;  // changes since the last save
    int32_t group_open = 1; // next journalled change starts an undo group
    std::vector<xfpend> pend1, pend2; // pending prefix entries
    xfcursor ptcur_i;      // where the cursor is to stand
    std::string fname;     // full path
    std::string fname2;    // path as loaded
    std::string idline;    // identification line as last built
    xfjournal journal;     // undo and redo
    std::vector<int32_t> tabset; // TABSET columns
    int32_t colptr = 0;    // column pointer
    int32_t chgsince = 0;  // changes towards AUTOSAVE
    int32_t case_mode = 1; // 0 MI, 1 MR, 2 UI, 3 UR
    int32_t rw = 1;        // RW ON
    int64_t mtime = 2147483647; // last-write time at load
    int64_t disk_ns = -1;  // disk time in ns at load or save; 0 absent then; -1 unknown
    int64_t disk_size = -1; // size on disk at that time
    std::vector<std::pair<std::string, int32_t>> pfxtexts; // pending prefix texts by line
    std::vector<std::pair<std::string, int32_t>> pfxerrs;  // prefix texts not understood, by line
    int32_t lrecl = 0;     // 0 means *
    int32_t trunc = 0;     // 0 means *
    int32_t reload_ok = 1; // may be reloaded on external change
    int32_t fileid = 0;    // session number of the file
    std::vector<std::pair<int32_t, std::string>> reserved; // RESERVED rows: view row, text
    std::vector<xfpoint> points; // named lines
    int32_t loadmark = -1; // nbli-1 at load
    std::vector<xfcursor> curstack; // proposed cursor positions
    int32_t synstale = -1; // colouring: -1 to be worked out, 0 off, 1 done
    int32_t synblock = -1; // the rule block in use, -1 none
    syn_colouring syn;     // the colours worked out so far
    int32_t format[7] = {0, 71, -1, 0, 1, 0, 1}; // MARGINS and FORMAT
    int32_t eol_kind = 1;  // 0 CR LF, 1 LF
    int32_t case_s = 1;    // SRESPECT: sorting compares exactly
    int32_t case_c = 1;    // CRESPECT: changes compare exactly
    int32_t keepblanks = 0; // trailing blanks kept
    int32_t bin = 0;       // binary file
    int32_t utf8 = 0;      // text mode: 1 UTF-8 (a column is a character), 0 bytes
    int32_t powerinput[4] = {0, 0, 0, 0}; // POWERINPUT words
    std::vector<std::string> pmsgs; // messages waiting to be shown

    int32_t nbli() const { return lines.size(); }
    int32_t nballoc() const { return lines.capacity(); }
};

// A line held on a row of the file area while the rest scrolls.
struct xfkept {
    int32_t li;  // the line
    int32_t row; // its row in the file area, from 0
};
constexpr size_t xfkept_max = 19; // lines a view holds so

// Per-file, per-view settings.
struct xfviewfile {
    int32_t curline = -1;  // the view's current line of that file
    int32_t w[3] = {0, 0, 0}; // words kept for the page composer
    int32_t verify[2] = {1, 0}; // VERIFY columns (0 = whole line)
    int32_t scale = 0;     // SCALE row in the file area, negative when OFF, 0 never set
    int32_t tabline = 0;   // TABLINE row, the same way
    int32_t zone[2] = {1, 0}; // ZONE, 0 = end of line
    int32_t colptr = 0;    // column pointer of the column commands, 1-based; 0 = the zone's left
    int32_t prefix = 1;    // PREFIX: 0 OFF, 1 ON LEFT, 2 ON RIGHT
    int32_t prefix_side = 1; // the side ON brings back after OFF
    int32_t prefix_nulls = 0; // PREFIX NULLS: no filling in the area
    int32_t number = 0;    // NUMBER
    std::vector<xfkept> kept; // lines the prefix E holds on their rows, oldest first
};

struct xview {
    int32_t fileidx = -1;  // current file of the view, -1 none
    std::vector<xfviewfile> perfile; // one per file of the ring
    xfviewfile screen;     // the _SCREEN defaults a new file copies
    std::string cmdline;   // command-line buffer
    int32_t cmdcursor = 0; // cursor column in the command line
    int32_t select_new = 0; // selection level of new lines
    int32_t display_lo = 0, display_hi = 0; // DISPLAY range
    int32_t scope = 0;     // 0 DISPLAY, 1 ALL, 2 inverse
    std::vector<std::string> msgs; // message area: texts in order

    // The page: where the view stands and the fields it was last drawn with.
    int32_t x0 = 1, y0 = 1;   // first column and row in the grid, from 1
    int32_t ncols = 80, nrows = 24; // size of the view
    int32_t cmdline_pos = 1;  // +-1 top, +-2 bottom; negative: CMDLINE OFF
    int32_t curline_row = 0;  // CURLINE row in the file area, 0 the middle
    int32_t shadow = 1;       // SHADOW ON
    int32_t prefix_width = 5; // digits of the prefix area at the last draw
    size_t msgshown = 0;      // messages of msgs already drawn
    std::string msgline;      // the message line as last drawn
    bool msgkeep = false;     // the next draw keeps it (a redraw nobody asked for)
    struct rowmap {
        int32_t fld;          // text field of the row, 0 none
        int32_t li;           // line index, -1 top, nbli end, -3 shadow
        int32_t pfx;          // prefix field, 0 none
        int32_t col0;         // first line column shown (from 0)
        int32_t len;          // width of the text field
        int32_t pli = -4;     // the line the prefix field stands for (a shadow row's first hidden line)
        std::string pshown = std::string(); // what the prefix field was filled with
    };
    std::vector<rowmap> rows; // one per file row, top to bottom
    int32_t cmdfield = 0;     // command line field
    int32_t msgfield = 0;     // message line field
};

// ---------------------------------------------------------------------------
// Process-wide session state.
extern std::vector<xfile *> files; // the ring, in creation order
extern std::vector<xview *> views; // the screens
extern xfile *xf;                  // bound current file, or null
extern int xfidx;                  // its index in files, -1 none
extern xview *xv;                  // bound current view
extern int xvidx;                  // its index in views
extern int topline;                // -1 with a top-of-file line, 0 without
extern bool batch;                 // no window, no field manager
extern bool timeload;              // TIMELOAD=ON timing trace
extern bool autoexit;              // MODE AUTOEXIT ON
extern int reload_default;         // reload_ok of new files
extern int eol_default;            // FILEConv of new files: 1 LF
extern int keepblanks_global;      // KEEPBLANKS override, -1 none
extern int bin_global;             // BIN override, -1 none
extern int utf8_global;            // ENCODING of files loaded later: 1 UTF-8, 0 bytes, -1 by their bytes
extern int cmd_source;             // 1 key, 2 queue/macro, 3 mouse, 4 menu
extern std::vector<int32_t> chg_snapshot; // change counters at cycle start
extern std::vector<int32_t> ringpos; // ring order number of each file
extern xfcursor ptcu;               // cursor as read at the last screen read
extern xfcursor ptmo;               // where the mouse pointer stood

inline int nbfiles() { return (int)files.size(); }
inline int32_t nbli() { return xf ? xf->nbli() : 0; }
inline int32_t &curline() { return xv->perfile[xfidx].curline; }

// Per-extension defaults made by SET commands: extension -> value words.
struct xfextdef { std::string ext; std::string value; };
extern std::vector<xfextdef> ext_tabs, ext_case, ext_lrecl, ext_trunc,
    ext_keepblanks, ext_bin, ext_powerinput; // "*" is the fallback entry

// ---------------------------------------------------------------------------
// The line store.
// Code 'P' rearranges the `count` lines from li in place, pointers only:
// line li+k becomes the line that stood at li+order[k] (`order` is a
// permutation of 0..count-1); nothing is copied, and a journalled change
// takes `order` itself into the journal, leaving it empty.  Code 'p' is the
// same change made already by the caller on the records in place (a sort
// of a whole range): the store journals it as 'P' and moves what refers to
// the lines, without moving the lines a second time.
void xf_do(char cd, const char *text, int32_t li, int32_t count, int mode,
           xfline *lines, const char *tag, std::vector<int32_t> *order = nullptr);
void xf_do(char cd, std::string_view text, int32_t li, const char *tag); // mode 1 r/i
void xfcheckroom(int32_t extra);
void xfshift_down(int32_t after, int32_t n);
void xfshift_up(int32_t from, int32_t n, int32_t at);
void xfadd(int32_t after, int32_t count, int flag);
bool xfinscope(int32_t li);         // the scope test for the current view
void xfclampcur();                  // keep every view's curline valid
int xfpoint_find(std::string_view name); // index in xf->points or -1
void xfpoint_set(std::string_view name, int32_t li);
void xfclearundo(xfile *f);
void xfclearredo(xfile *f);
void xfopen_groups(); // the next change of every file starts an undo group: one a command

// The ring.
int xfnewfile();                    // new record at the end, bound; its index
void xfdefaults(const std::string &name, int previous);
void xfsetfile(int index);
void xfsetview(int index);
void xfswitchto(int k);
int xfprevfile();
int xfnextfile();
void xfdelfile();
void xfsortring(int from, int to);
// A read-only file of the ring holding `lines` made by the editor, named
// `name` (its own text, not read from disk); one of that name already in the
// ring is made current instead. Returns its index.
int xfring_text(const std::string &name, const std::vector<std::string> &lines);
void xfsession_reset();             // empty ring, one view (tests and start-up)
void xfsession_end();               // the ring and the views freed: the session is over
// A field's text: UTF-8 for a field of UTF-8 text, else a byte a cell.
std::string xffield_text(int id, bool trim, bool utf8);
// Line li of a file row as it would be with the row's text typed: the part
// before the view's first column and the part past the field kept.
std::string xfrow_line(const xview::rowmap &m, const std::string &typed);
std::string xfext(std::string_view name); // text after the last '.', or ""

// Hooks that later subsystems fill; null does nothing.
extern void (*xfreload_hook)();     // reload check after a switch

// ---------------------------------------------------------------------------
// Start-up, main loop and ending.
int xfmain(int argc, char **argv);
void xfqueue(std::string_view text);
[[noreturn]] void xfexit(int code);
extern std::vector<std::string> cmd_queue; // pending commands
extern std::vector<std::string> macro_stack_cmds; // commands stacked by macros
extern std::string startdir;       // current directory at start
extern std::vector<std::string> cdpath; // XCDPATH entries, each ending in '/'
extern std::vector<std::string> xpath;  // XPATH or PATH absolute entries
extern std::string installdir;     // directory of the program, ending in '/'
// The command a menu choice (read codes 63, 31) or a tool bar button (64)
// runs; "" for none.
std::string xfwin_command(int code, int value);
void xfwin_start();  // the window's tool bar and shipped menu, at start
std::string xfuser_data();         // the user's data folder, $XDG_DATA_HOME/vorta/
extern std::string xhome;          // the editor's home directory
extern std::vector<std::string> raw_argv; // the vector as split
extern std::vector<std::string> regrouped_argv; // for restart
extern bool opt_pdf, opt_kedit;    // -pdf and -kedit

// Trace.
void xftrace(const char *label);   // record in the ring of the last 500
bool xftrace_dump();               // write xed.trace; false on failure
void dttime(int stop, int level, const char *text);
void xftimeload(const char *what);
int xfcm_check();                  // verify every line's length; 0 good

// ---------------------------------------------------------------------------
// Files in and out: loading, saving, autosave, recovery, undo.

// Settings of loading and saving.
extern int autobin;                // AUTOBIN ON: look for control bytes
extern std::string autobin_allowed; // control bytes that leave a file text
extern int64_t load_limit;         // LIMIT in bytes, 0 none
extern int fileconv_read;          // records on reading: 1 unix, 2 auto
extern int eol_empty;              // eol_kind of a file with no lines
extern int isoconv;                // ISOCONV ON: the tables apply
extern unsigned char readtab[256]; // byte translation on reading
extern unsigned char writetab[256]; // byte translation on writing
void xfisoconv_set(int on);        // ISOCONV ON or OFF, with its tables
extern int backup_on;              // BACKUP ON
extern std::string bak_suffix;     // backup of a save
extern std::string reload_suffix;  // backup of a reload of an unchanged file
extern int recycle_on;             // RECYCLE ON
extern int preservlinks;           // PRESERVLINKS ON: backups by copy
extern int saveclearundo;          // SAVECLEARUNDO ON
extern int autosave_count;         // changes between autosaves, 0 off
extern std::string autosave_dir;   // where autosaves go, ending in '/'
extern bool recovering;            // a recovery save is running
extern int save_failures;          // saves that failed in this run (a batch then ends with 1)
extern int lastfiles_on;           // LASTFILES ON
extern int lastfiles_max;          // entries kept in ~/vorta.lastfiles
extern int noreload_once;          // skip the next reload check

// Loading (xfedit returns 0 on success or when already open, 1 on refusal).
int xfedit(const std::string &name);
int xfedit(const std::string &name, const std::string &dir, bool noext);
int xfopen_words(std::string_view text, const std::string &dir);
void xfrun_reprofile(); // the reprofile macro, where there is one and it may run
int xftr1(int &status, const std::string &path, bool noreport);
bool xfreload_all();
bool xfreload_one(int index, int force, int return_to);
bool xfwritable(const struct stat &st); // from the mode bits, root included
int64_t xfstat_ns(const struct stat &st); // last-write time in nanoseconds
std::string xfcanon(const std::string &path); // fold "." and ".."

// Reading a file's lines into a line array; xftr1 and GET use it.
struct xfreadstate {
    std::string name;      // the file's name for messages
    int bin = 0;           // in: BIN already; out: BIN after detection
    int keepblanks = 0;    // in/out: trailing blanks kept
    int eol_kind = 1;      // out: 0 when a record ended in CR
    int32_t sizeest = 1000; // in: the array-size estimate
    int status = 0;        // out: 0 good, 3 unreadable, 4 directory, 5, 6
    int err = 0;           // out: errno of a failed open
    int64_t mtime = 0;     // out: last-write time of the file
    int64_t mtime_ns = 0;  // out: the same in nanoseconds
    int64_t size = 0;      // out: the file's size
    bool ended_lf = false; // out: the data's last byte was a line feed
    std::vector<std::string> msgs; // out: messages to show after the read
};
int xfreadlines(int fd, xflines &L, xftextblock &blk, xfreadstate &st);

// Saving: xfwrite returns 0, 2 on failure, 3 when refused. With `only`
// the write takes just those lines of the bound file, in that order; a save
// of some lines must be `named`, since the file itself is not saved by it.
int xfwrite(bool dosmode, bool verify, const std::vector<int32_t> *only = nullptr);
int xfsave(const std::string &target, bool force, bool keeptime, bool dosmode,
           bool verify, bool named, const std::vector<int32_t> *only = nullptr);
int xfcopyfile(const std::string &from, const std::string &to);
int xfrecycle(const std::string &path); // to the Trash: 0 or an errno value

// Autosave: the cycle's start and end, and one file's autosave.
void xfcycle_begin();              // snapshot counters, open undo groups
void xfcycle_end();                // count changes towards AUTOSAVE
std::string xfautoname(int index);
int xfautosave(int index);

// Syntax colouring.
extern int syntax_global;           // SYNTAX GON: colouring for all files
// Colours of line li of the current file from column col0, one a column
// (-1: the row's own); false when the file is not coloured.
bool xfsyn_colours(int32_t li, int32_t col0, int width, std::vector<int8_t> &out);
void xfsyn_changed(int32_t li);     // the current file changed at line li or after
// Which bytes of line li are in a comment or a string (1), so that bracket
// matching passes over them; false when the file is not coloured.
bool xfsyn_inert(int32_t li, std::vector<uint8_t> &mask);
void xfsyn_all_stale();             // rules changed: every file works its colours out again
// The check after a keystroke on a file row (the field manager's change
// callback; arg the view, line the row): when the typed text changes only
// that row's colours they are set on the field at once (0); when it changes
// the state the next lines start in, 1 asks for the rows to be committed and
// the page coloured again.
int xfsyn_typed(const char *text, int len, intptr_t view, int row, int op, int pos);
// Loads a rule file into the table; 0, or 1 with the message in err and the
// line in line (0: the file could not be read).
int xfsyn_load(const std::string &path, std::string &err, int &line);
void xfsyn_defaults();              // the user's rule file, else the shipped one

// Recovery.
void xfnomem_save(int reason);     // the ".check" save of xfnomem
// Whether code found in `path` (a profile or a reprofile macro of the current
// folder) may run: a trusted folder, or the user's word, asked on the page;
// otherwise one line says how to trust it.
bool xftrusted(const std::string &path);
void xfendsig_install();          // outside signals end the run through the rescue
void xfendsig_point();            // a safe point: rescues and ends when such a signal came
void xfendsig_rescue();           // the rescue of that end, once
void xfmacro_poll();              // a running macro's poll: end signals and the halt key
bool xfhalt_key();                // the halt key typed since the last look (keys besides it stay queued)
[[noreturn]] void xfinterr(int code);
void xfrescue(int code, const std::string &message, bool restart);
int xfrestart();                   // write restart.x and start anew

// Undo and redo: one group each; false when there was nothing to do.
bool xf_undo();
bool xf_redo();

// ---------------------------------------------------------------------------
// The one selection of the session: a stretch of one file, a stream from a
// first to a last character or a rectangle of columns. Lines and columns
// count from 1; a last column of -1 reaches each line's end. The file is
// held by its session number, so that a file closed or moved in the ring
// never leaves the record pointing at another one.
struct xfselection {
    int32_t fileid = -1;     // the file's session number, -1 none
    int32_t l1 = 0, c1 = 0;  // first line and column
    int32_t l2 = 0, c2 = 0;  // last line and column (-1: the line's end)
    int32_t kind = 2;        // 2 stream, 3 rectangle
    int32_t width = 0;       // the screen's width when it was made
    bool pending = false;    // PENDING: typing or a paste over it replaces it
};
extern xfselection xfsel;
// The index in the ring of the selection's file, -1 when there is none.
int xfsel_file();
// Whether column col (from 0) of line li (from 0) of the selection's file
// is selected.
bool xfsel_has(int32_t li, int32_t col);
void xfsel_clear();
// Makes the stretch between two places of the current file (lines and
// columns from 0, in either order; c2 -1 to the line's end) the selection,
// of kind 2 (stream) or 3 (rectangle: its columns ordered too).
void xfsel_set(int32_t l1, int32_t c1, int32_t l2, int32_t c2, int kind);
