// The file list: directories scanned into lists that are shown one screen at
// a time on a page of their own, with a command field on every file's line.
// Lists nest: a command on a line opens a further level, FLQuit or END goes
// back to the one below.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <deque>
#include <vector>

// ---- the directory table ------------------------------------------------------

constexpr int FL_MAXDIRS = 701;   // directories the table holds
constexpr int FL_MAXDIRLEN = 512; // longest directory path accepted
// The real paths in the order met; the first is the working directory as it
// was when the table was made, which PATH and the user know as ".".
extern std::vector<std::string> fl_dirs;
void fl_dirs_make();        // the table with its first entry, if not made yet
std::string fl_path_text(); // the paths joined by `;`, the first written "."

// The two letters of a directory's place: "a " to "z ", then "aa", "ba", ...
// the first letter running fastest; "??" outside the table's range.
std::string fl_mode_letters(int index);
// The place two letters stand for, or -1 when they do not decode.
int fl_mode_index(std::string_view letters);
// Enters a directory (normalised) and gives its place in `index`: 0, or
// 2 unreachable, 3 too long, 5 the table is full.
int fl_dir_enter(const std::string &path, int &index);
std::string fl_dir_message(int code); // the message of a code of fl_dir_enter

// ---- patterns -------------------------------------------------------------------

// Wildcard match: `*` any run, `?` any one byte.
bool fl_wild(std::string_view pat, std::string_view text);
// The name test of a scan: name pattern against the stem, extension pattern
// against the extension, with `.` standing for "none".
bool fl_accept(std::string_view name_pat, std::string_view ext_pat, std::string_view name);
// A name's stem and extension (with its dot); the last `.` splits them, and
// a name with no dot has no extension.
void fl_split(std::string_view base, std::string_view &stem, std::string_view &ext);

// ---- a list and its levels -----------------------------------------------------

// What the list keeps of a file's status; a failed status call leaves it
// zero, a removed file has a negative size.
struct fl_status {
    uint32_t mode = 0;  // the mode word: type and permission bits
    int64_t size = 0;
    int64_t atime = 0, mtime = 0, ctime = 0;
};

enum { FL_ALL = 0, FL_DIRSONLY = 1, FL_FILESONLY = 2 };

// The first lines of a file as read for the display modes that show them;
// read again when the entry's path or modify time is no longer the one read.
struct fl_first {
    std::string path;              // the file read, "" never read
    int64_t mtime = 0;             // its modify time then
    std::vector<std::string> lines; // its first lines, as shown
};

// Sort codes: the key, plus FL_REVERSED.
enum { FL_BYSIZE = 0, FL_BYTIME = 1, FL_BYTYPE = 2, FL_BYNAME = 3, FL_REVERSED = 4 };

// The list of one level, in parallel arrays indexed by scan order.
struct fl_list {
    std::vector<std::string> name;  // full path; the parent entry is ".."
    std::vector<std::string> cmd;   // the text typed on the line, "" for none
    std::vector<fl_status> st;
    std::vector<int32_t> dir;       // place in fl_dirs of its directory
    std::vector<int32_t> order;     // the display order
    std::vector<fl_first> first;    // the first lines, read when first shown
    size_t count() const { return name.size(); }
    void clear();
    // Appends an entry; false when memory for it cannot be had.
    bool add(std::string path, const fl_status &s, int32_t d);
    // Makes room for `want` entries; false when it cannot be had.
    bool reserve(size_t want);
    void keep(size_t to, size_t from); // the entry `from` moves down to `to`
    void truncate(size_t n);           // only the first n entries stay
};

struct fl_level {
    std::string dir;            // the directory listed, "" with all of the table
    int dirindex = 0;           // its place in fl_dirs, -1 for all
    int filter = FL_ALL;
    bool recursive = false;     // the directories beneath are listed too
    std::string npat = "*", epat = "*"; // name and extension patterns
    int sort = FL_BYNAME;
    int64_t dirtime = 0;        // the directory's modify time at scan time
    int display = 0;            // the right column after the size: 0 the date,
                                // 1 the file's first line, 2 its first lines
    int top = 0;                // first displayed line, in display order
    fl_list list;
    std::string msg;            // message line text
    std::vector<std::string> notes; // the spare lines under the list
    std::string lastcmd;        // the last text run, for `=`
    bool rebuild = true;        // the page must be laid out again
};

extern std::deque<fl_level> fl_levels; // the stack, the back shown; entries never move
// Below this many entries a thread would cost more than its share of the
// status calls saves.
extern size_t fl_share_least;
extern int fl_europe;                   // FLDATE EUROPE: day before month
extern int fl_parent;                   // FLPP: the parent entry `..` is listed
extern int fl_attrs;                    // the attribute column is shown

bool fl_is_parent(const fl_list &l, size_t i);
bool fl_is_dir(const fl_status &s);
bool fl_removed(const fl_status &s);

// ---- scan and sort ---------------------------------------------------------------

// Fills the level's list from its directory (or every directory of the
// table), keeping the commands typed on lines already listed. 0, or the code
// of the failure: 28 nothing found, 29 a directory could not be opened,
// 1 no memory; the message line says which.
int fl_scan(fl_level &lv);
fl_status fl_stat_of(const std::string &path);
// Rebuilds the display order by the level's sort code, `..` first.
void fl_sort(fl_level &lv);
// Sorts the shown level by the code `code`, what was typed on its lines first
// taken into the list.
void fl_resort(fl_level &lv, int code);
// The place the entry `i` takes in the sorted display order.
void fl_sort_insert(fl_level &lv, int32_t i);
// The first lines of the entry `i` (none for what is no regular file),
// read from the file once and kept.
const std::vector<std::string> &fl_first_lines(fl_list &l, size_t i);
// The directory's modify time, 0 when it cannot be looked at.
int64_t fl_dirtime(const std::string &dir);

// ---- texts ---------------------------------------------------------------------

// A name for the screen: control characters and bytes that are not UTF-8
// written as escapes, so that no name can break the page.
std::string fl_shown(std::string_view raw);
size_t fl_cells(std::string_view shown); // screen cells of a shown text
std::string fl_thousands(int64_t n);     // 1,234,567
std::string fl_date(int64_t t);          // the right column's date and time
std::string fl_basename(const std::string &path);
std::string fl_dirname(const std::string &path); // without the final '/'
// The words of an argument text, double quotes honoured.
std::vector<std::string> fl_words(std::string_view text);

// ---- the page -----------------------------------------------------------------

constexpr const char *FL_KEYS =
    "1:/SN  2:FILE  3:END  4:XED  5:SWITCH  6:/SB  7:U  8:D  9:/SD  10:/ST  11:->  12/^c:CAN";

// One screen line of the list as laid out.
struct fl_row {
    int entry = -1;   // index into the list, -1 for none
    int line = 0;     // screen line
    int cmdlines = 1; // lines the command field takes
    bool wide = false;// the command took the size column
};
struct fl_layout {
    int lines = 0, cols = 0;
    int attrw = 1, stemw = 2, extw = 2, namew = 9, cmdw = 10, sizew = 1, timew = 17;
    std::vector<fl_row> rows;
};
extern fl_layout fl_lay;

// Lays out the screen from the level's top line and defines its fields; 0,
// or 1 when the window is too small (the message says so).
int fl_page(fl_level &lv);
void fl_show_msg(fl_level &lv);   // the message line and the spare lines
void fl_idline(fl_level &lv);     // the title line
// Moves what was typed on the screen's command fields into the list.
void fl_fetch(fl_level &lv);
// The screen rows the list has for a window of `lines` lines.
int fl_list_rows(int lines);
// Makes `top` the first line shown, as far as the list lets the last
// screen be full.
void fl_scroll(fl_level &lv, int top);

// ---- the commands on lines ----------------------------------------------------

// The command text with /d, /n and /t replaced for the entry `path`.
std::string fl_subst(std::string_view text, const std::string &path);
// The quoted form of a text: in double quotes, `"` escaped with `\`.
std::string fl_quote(std::string_view text);
// Runs every line that holds a new command, top to bottom. Returns true when
// the level changed meanwhile (a new level, or this one ended).
bool fl_run_lines();
// One built-in or editor command on the entry `i` of the shown level; 0 when
// it ran, 1 when its line keeps the text (the message says why).
int fl_line_command(size_t i, const std::string &text);
// An editor command run from the list, its message on the list's message
// line; 0, or 1 when it failed.
int fl_editor_command(const std::string &cmd);
// The entry `i` opened: a directory as a new level, a file in the editor.
int fl_open_entry(size_t i);
// Runs a file by its type; 0 or 1 with the message set.
int fl_run_file(const std::string &path, bool open_action);
// A regular file we may execute: a click asks whether to run or edit it.
bool fl_runnable(const std::string &path);

// ---- questions in boxes -------------------------------------------------------

// The sort code of a sort menu's action: `0` to `3` by name, type, size and
// date, `a` to `d` the same reversed; -1 for any other.
int fl_sort_action(char action);
// Asks for an order in the sort menu and sorts the level by it; false when
// the menu was closed without a choice.
bool fl_sort_menu(fl_level &lv);
enum { FL_ASK_NONE = 0, FL_ASK_RUN = 1, FL_ASK_EDIT = 2 };
// Asks whether the program `path` is to be run or edited: FL_ASK_RUN,
// FL_ASK_EDIT, or FL_ASK_NONE when the question was closed.
int fl_ask_run(const std::string &path);
// Erases the entry `i`: into the Trash with RECYCLE ON. 0, or 1 with the
// message set.
int fl_erase(fl_level &lv, size_t i);
int fl_copy(fl_level &lv, size_t i, std::string_view args, bool rename);
int fl_diff(fl_level &lv, size_t i, std::string_view args);
void fl_say(const std::string &text); // the shown level's message line

// ---- the window's menus and tool bar over a list ------------------------------

// What a menu's action text does in a list.
enum { FLA_REFRESH, FLA_SORT, FLA_TOP, FLA_BOTTOM, FLA_RETURN, FLA_LINE, FLA_FILE };
enum : unsigned {
    FLA_EDITOR_TOO = 1, // the editor has a command of this name and sense
};
struct fl_action {
    const char *text; // the menu item's command text
    int what;         // FLA_...
    char sort;        // FLA_SORT: the sort menu's action for the order
    const char *line; // FLA_LINE: the command run on the entry under the cursor
    unsigned flags;   // FLA_EDITOR_TOO
};
// The action a menu text stands for, compared ignoring case and the blanks
// around it; null for any other text.
const fl_action *fl_menu_action(std::string_view text);
// A menu choice over the shown level, the cursor on the entry `entry` (-1
// when it is on no line of the list): the list's action, or any other text
// run as an editor command.
void fl_menu_run(fl_level &lv, std::string_view text, int entry);
// The tool bar's button at `pos` over the shown level.
void fl_tool_run(fl_level &lv, int pos, int entry);
// The message for a menu text chosen in the editor that means something only
// in a list; "" for any other text.
std::string fl_menu_refusal(std::string_view text);

// ---- the levels ---------------------------------------------------------------

// Starts a level on `args` ("name ext mode") over `dir` with a filter, and
// runs it until it ends; the first scan's failure is said on the editor's
// message line. 0 or 1 as a command's result.
int flcom(std::string_view args, const std::string &dir, int filter, bool recursive);
// Edits a file from the list: the editor takes the page until the file
// leaves the ring or SWITCH comes back to the list. 0, or 1 when the
// command `cmd` that loads it failed.
int fl_edit(const std::string &cmd);
extern bool fl_end_level;   // END or FLQuit asked this level to end
extern bool fl_switch_back; // SWITCH asked the editor to give the page back
extern int fl_running;      // levels whose loop is running
extern bool fl_cancelled;   // CAN ended a level: the commands left are not run
extern unsigned fl_generation; // counts the levels started
constexpr uint32_t FL_PAGE = 0x666c7374; // the list's page number, of its own
