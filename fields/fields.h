// Field manager: pages of numbered fields over a grid of 16-bit cells, the
// as.../fs... calls that build and query them, and asread, which turns the
// events of the screen layer into field edits and return codes. Runs with no
// window at all: the screen layer behind it is the interface of plat.h.
#pragma once
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

class fs_plat;

// ---- results -------------------------------------------------------------

extern int as_errno;          // outcome of the last call: 0, 1, 2, 3, 4 or 28
extern char as_lastmsg[161];  // text of the last error, at most 160 characters
extern int as_msgs;           // 1: errors are also shown through the layer's alert

constexpr int AS_ENOTFOUND = 28;          // field or page not found
constexpr uint16_t FS_NULL = 32767;       // the null cell: holds nothing, reads as blank
constexpr uint32_t FS_NOPAGE = 0xFFFFFFFFu;  // a free page slot, or no current page

// ---- field definition ----------------------------------------------------

struct fsfield {
  int32_t id;         // caller's field number, at least 1
  int32_t y1;         // first line
  int32_t x1;         // first column
  int32_t nb_lines;   // height in lines
  int32_t nb_cols;    // width in columns
  int32_t type;       // 0 text, 1 numeric, 2 protected
  int32_t intensity;  // 0 invisible, 1 normal, 2 bright
  int32_t colour;     // logical colour 0 to 64
  int32_t res9;       // reserved, zero
  int32_t hilite;     // 0 normal, 2 reverse, 3 reverse underline, 4 underline
  int32_t mgd;        // non-zero: the page's pop-up menu opens on this field
  int32_t flags;      // FSF_* bits
  int32_t res13;      // reserved, zero
  int32_t upper;      // 1: ascget hands back ASCII letters in upper case
};
static_assert(sizeof(fsfield) == 14 * sizeof(int32_t), "fsfield is fourteen words");

enum : int32_t {
  FSF_NOINS = 1,        // typing always overwrites
  FSF_REPEND = 2,       // typing the last cell returns 32, a hilite-2 cell 36
  FSF_BUTTON = 4,       // push button: click returns 38
  FSF_KEYSTROKE = 8,    // each character returns 39
  FSF_REPDEL = 16,      // delete/backspace return 44, erase 45, insert 26
  FSF_REPUP = 32,       // arrow up out of the field returns 47
  FSF_REPDOWN = 64,     // arrow down into the field returns 48
  FSF_OUINON = 128,     // OUI/NON toggle
  FSF_YESNO = 256,      // YES/NO toggle
  FSF_NOCLICK = 512,    // clicks do not position the cursor
  FSF_TEXTPTR = 1024,   // text-shaped pointer over the field
  FSF_LTR = 4096,       // keeps left-to-right in reverse direction
  FSF_SELECT = 8192,    // a left drag selects a span: code 68
  FSF_UTF8 = 16384,     // the field holds UTF-8 text: any character may be typed
};

// A displayed segment of a file's line inside an extended field.
struct fs_segment {
  int32_t first;   // first source column shown
  int32_t last;    // last source column shown
  int32_t mode;    // 1: hexadecimal, two cells a byte
  int32_t cell0;   // zero-based first cell of the segment in the field
  int32_t ncells;  // number of cells of the segment
};

struct fs_verify {
  int32_t count;            // number of segments
  const fs_segment *seg;    // the segments, in cell order
  const int32_t *cell;      // per cell: source column, -column for a hex digit, 0 none
};

// Called after each edit of an extended field; non-zero makes asread return 60.
typedef int (*fs_onchange)(const char *text, int len, intptr_t arg, int line, int op, int pos);

struct fsxfield {
  const int32_t *tabs;     // tab columns: count, then the columns; null for none
  const fs_verify *verify; // segments of a file's line, null for none
  fs_onchange on_change;   // edit callback, null for none
  intptr_t change_arg;     // handed to on_change
  int32_t line;            // handed to on_change
  int32_t show_blanks;     // non-zero: trailing blanks get a tick mark
  int32_t limit;           // last meaningful position, -1 for none
};

// Operation codes handed to on_change.
enum { FS_OP_OVER = 0, FS_OP_INSERT = 3, FS_OP_BACK = 4, FS_OP_BACKINS = 5, FS_OP_DELETE = 6 };

// ---- events ----------------------------------------------------------------

struct fs_event {
  uint16_t code;          // key or event code, FSK_* or a character
  uint16_t released;      // bit 1: a release
  uint16_t modifiers;     // FSM_* bits
  int16_t x;              // pointer column in client pixels
  int16_t y;              // pointer line in client pixels, below the toolbar
  uint32_t seconds;       // time of the event
  uint32_t microseconds;  // time of the event, fraction
  uint16_t source;        // FS_SRC_NONE, or FS_SRC_SELF for the system's own
};

enum : uint16_t { FSM_SHIFT = 14, FSM_CTRL = 48, FSM_ALT = 64 };
// The tool-bar event value by which a layer says that a paste of many lines
// waits (pl_paste_take): no button has it.
constexpr int FS_PASTE_ID = 30000;
enum : uint16_t { FS_SRC_NONE = 31744, FS_SRC_SELF = 31743 };

enum : uint16_t {
  FSK_MOVE = 32512, FSK_DRAG = 32515, FSK_PAINT = 32516,
  FSK_FOCUSIN = 32520, FSK_FOCUSOUT = 32521,
  FSK_LEFT_B = 32544, FSK_MIDDLE_B = 32545, FSK_RIGHT_B = 32546,
  FSK_EXTRA1 = 32554,
  FSK_PRINT = 32570, FSK_SCROLL = 32571, FSK_PAUSE = 32572, FSK_INSERT = 32573,
  FSK_HOME = 32574, FSK_PGUP = 32575, FSK_END = 32576, FSK_UP = 32577,
  FSK_PGDN = 32578, FSK_LEFT = 32579, FSK_RIGHT = 32581, FSK_DOWN = 32583,
  FSK_F0 = 32585,  // function key n is FSK_F0 + n
  FSK_WHEELUP = 670, FSK_WHEELDOWN = 671, FSK_CLOSE = 672,
  FSK_SCROLLBAR = 32808, FSK_MENUBAR = 32831, FSK_TOOLBAR = 32832,
  FSK_CHAR = 65533,  // a character past Latin-1 typed: its code point is the event's character
};

// The event queue: events first in, first out, each with its input character
// (-1 for none) beside it.
struct fs_evqueue {
  fs_event *ev;   // the events
  int *ch;        // character of each event, -1 for none
  int head;       // index of the first pending event
  int count;      // pending events
  int cap;        // slots allocated, grown by ten
};
extern fs_evqueue gdet_ev;  // the one queue the screen layer appends to

void fs_postev(const fs_event &ev, int ch);  // append to gdet_ev
int fs_evpending();                          // events waiting in gdet_ev
// Takes out of gdet_ev the events `hit` chooses; gives how many there were.
int fs_evcut(bool (*hit)(const fs_event &ev));

// ---- start and pages -----------------------------------------------------

// Starts the manager on a screen layer; takes the window options out of argv
// and returns the new argc, or -1 when called twice.
int fsinit(int argc, char **argv, fs_plat *layer);
void fsinit2();   // measure the grid and (re)create page 0
void fsresize();  // after code 25: destroy every page, measure, recreate page 0
void fsend();     // shutdown: every page goes, fsinit may be called again
fs_plat *fs_layer();  // the layer given to fsinit

int asrfmt(int nrows, int words, const int32_t *table);
int asxfmt(int words, const int32_t *row, const fsxfield &x);
int asxset(int id, const fsxfield &x);  // the extended record of a field made already; -1 none
void asfclr();
void fspcrt(uint32_t page, int lines = 0, int cols = 0, int flag = 0);
void fspsel(uint32_t page);
void fspdel(uint32_t page);
uint32_t fs_curpage();                   // number of the current page
void fs_grid(int *lines, int *cols);     // size of the grid

// ---- cursor, text, attributes --------------------------------------------

void asfcur(int id, int line, int col);
void asfcur_quiet(int id, int line, int col);  // as asfcur, code only, no message
void asqcur(int code, int *id, int *line, int *col);
void asqmou(int code, int *id, int *line, int *col);

int ascput(int id, int len, const char *text);
int ascput_short(int id, int len, const uint16_t *cells);
void ascget(int id, int len, char *buf);
void ascget_short(int id, int len, uint16_t *buf);
char *ascget_char(int id, int *len, int trim);  // free() the result
int ascget_int(int id, int *value);
extern int as_msgfield;  // id of the field that ascget_int writes its complaint to

void asfcol(int id, int colour);
void asfhlt(int id, int hilite);
void asfint(int id, int intensity);
void asftyp(int id, int type);
void asfmgd(int id, int value);
void asfmod(int id, int value);
void asftypall(int type);
void asccol(int id, int len, const int32_t *colours);
void asccol(int id, int len, const int8_t *colours);  // bytes: negative is the field's own
void aschlt(int id, int len, const int32_t *hilites);
void asscol(int id);
void asshlt(int id);
void asqcol(int id, int n, int32_t *colours);

int asqmod(int count, int *ids, int *lens, int *used);
void asqfld(int code, int id, int count, int32_t *words);
void fsqury(int code, int ignored, int count, int32_t *words);
int asq_ff(int id);

// ---- characters past Latin-1 ------------------------------------------------
//
// A cell holds a byte (0 to 255: Latin-1), or in a field of UTF-8 text a
// character of the Basic Multilingual Plane that takes one terminal column.
// Any other character (wide, zero-width, outside the plane, a private-use
// one) and any stray byte of broken UTF-8 is kept aside, as its bytes, in
// the page's table, and its cell holds a substitute from FS_SUBST_FIRST to
// FS_SUBST_LAST: drawn as one marked cell, so that the grid never shifts, and
// read back as the very bytes it stands for. The table lives until the
// page's fields are cleared.
constexpr uint16_t FS_SUBST_FIRST = 0xD800;
constexpr uint16_t FS_SUBST_LAST = 0xF8FF;
inline bool fs_subst(uint16_t cell) { return cell >= FS_SUBST_FIRST && cell <= FS_SUBST_LAST; }
// The length of the well-formed UTF-8 sequence at p (n bytes there) and its
// character, or 0: overlong forms, surrogates and values past U+10FFFF are
// not characters. Inline: the column service walks lines of megabytes with it.
inline int fs_utf8_seq(const unsigned char *p, long n, uint32_t &cp) {
  unsigned c = p[0];
  if (c < 0x80) {
    cp = c;
    return 1;
  }
  auto cont = [p](int k) { return (p[k] & 0xc0) == 0x80; };
  if (c >= 0xc2 && c <= 0xdf) {
    if (n < 2 || !cont(1)) return 0;
    cp = (c & 0x1f) << 6 | (p[1] & 0x3f);
    return 2;
  }
  if (c >= 0xe0 && c <= 0xef) {
    if (n < 3 || !cont(1) || !cont(2)) return 0;
    if ((c == 0xe0 && p[1] < 0xa0) || (c == 0xed && p[1] >= 0xa0)) return 0;  // overlong, surrogate
    cp = (c & 0x0f) << 12 | (p[1] & 0x3f) << 6 | (p[2] & 0x3f);
    return 3;
  }
  if (c >= 0xf0 && c <= 0xf4) {
    if (n < 4 || !cont(1) || !cont(2) || !cont(3)) return 0;
    if ((c == 0xf0 && p[1] < 0x90) || (c == 0xf4 && p[1] >= 0x90)) return 0;  // overlong, too big
    cp = (c & 0x07) << 18 | (p[1] & 0x3f) << 12 | (p[2] & 0x3f) << 6 | (p[3] & 0x3f);
    return 4;
  }
  return 0;
}
int fs_utf8_put(uint32_t cp, char out[4]);  // the encoding of a character; its length
int fs_cwidth(uint32_t cp);                   // terminal columns it takes: 0, 1 or 2
// The cell for the character cp whose bytes are given: the character itself
// when it may stand in a cell, else a substitute; FS_NULL when the page's
// table is full.
uint16_t fs_cell(uint32_t cp, const char *bytes, int n);
uint32_t fs_cellchar(uint16_t cell);  // the character a cell shows, substitutes resolved
// As ascput and ascget_char, with the text decoded from and encoded to UTF-8.
// ascput_utf8 answers -2 when the page's table of substitutes is full.
int ascput_utf8(int id, int len, const char *text);
char *ascget_utf8(int id, int *len, int trim);  // free() the result

// ---- switches ------------------------------------------------------------

void asfup(int on);
void asfupm(int on);
void asfskip(int on);
void asfint2(int on);
void asfrem(int mode);
void asfblk(int mode);
void asfapl(int on);
void asfveto(int value);
void asfview(int on);
void asfacol(int on);
void asfrepeat(int on);
void fsalrm();
void asfmap(int entry, int red, int green, int blue);
void asqmap(int entry, int *red, int *green, int *blue);  // an entry as set
// Changes the text font by name (face%style%width%height), keeping the grid's
// lines and columns; 1 and "Invalid font" with the name when there is none.
int asffont(const char *font);
void asfro(int on);  // the status line's read-only mark

// ---- input -----------------------------------------------------------------

void asread(int *code, int *value, int *modified);
void asrefresh();
void asqsel(int out[6]);
void asfrepdelay(int d1, int d2, int d3, int d4);  // milliseconds, each at least 1
int asfmousemode(const char *mode);  // OPENLOOK OPENLOOKW MOTIF WINDOWS; 0 or 1 bad
// 0: no button positions the cursor, whatever the mode says, and the page's
// pop-up menu does not open (a page that takes every click itself); 1: as
// the mode says.
void asfclickpos(int on);
void asfclickdelay(double seconds);
void asqclickdelay(char *buf, size_t size);  // "..... is %.2f"
void asfchord(int b1, int b2, int b3, int slices);  // b1+b2 together act as b3
int asfkeyb(const char *file, int type);
void asfkbtype(int type);     // keyboard type: -1 standard, else 0, 3, 4, 12, 14
void asftimeout(int ms);      // time-out of the reads, 0 for none
void aspost(int number);      // ends the next read with code 28
void aspost43(int number);    // ends the next read with code 43
// A child's output changed a file: the next read ends with AS_NUDGED, once
// the events already queued have been taken, so that the page is composed
// again. Safe to call from a watched descriptor's ready call in the wait.
void asnudge();
constexpr int AS_NUDGED = 674;
void asfkeepmod(int on);      // the next read keeps the modified flags
void asfinsert(int on);       // insert mode
void asfreverse(int on);      // reverse direction
int asqinsert();
void asfreports(int paint, int focus, int moves);  // codes 29, 42, 673 wanted
// While on, a read ends at the next key pressed, whatever the key, with code
// AS_ONEKEY: nothing is typed and the cursor stays. Its value is the
// printable character the key types with no Ctrl or Alt, else 0.
void asfonekey(int on);
constexpr int AS_ONEKEY = 69;

extern int as_delkey;       // code of the delete-character key
extern int as_bskey;        // code of the backspace key
extern int as_nbkeys[3];    // keys in the L, F and R banks
extern int as_shiftright;   // 1: Shift+right arrow deletes under the cursor
extern int as_retreport;    // 1: the next-line key (RETURN) ends the read with code 34
extern int as_evmods;       // modifiers of the last event read: 1 Shift, 2 Ctrl, 4 Alt
extern unsigned char as_altdef[256];  // 1: Alt with this character has a definition

// A menu that a mouse press may open; the hook answers 1 when it consumed the
// press. Filled in by the menus; empty by default.
typedef int (*fs_menuhook)(int field_id, int button, int line, int col);
extern fs_menuhook as_menuhook;
// Dialog boxes and menus that have something for the read call aspend(); the
// read then asks the hook, first for dialog events (codes 59, 49, 62, in that
// priority) before posted numbers, then for menu items (31, 30). The hook
// answers a read code with its value, or -1 for nothing.
enum { FS_PEND_DIALOG, FS_PEND_MENU };
typedef int (*fs_pendhook)(int stage, int *value);
extern fs_pendhook as_pendhook;
void aspend();
// A character about to be typed at the cursor (asqcur tells where): the hook
// answers 1 when its caller takes the character instead, and the read then
// ends with AS_TYPEDOVER and the character as its value, the cell unchanged;
// 0 lets it be typed. The editor uses it to put what is typed over a
// selection in the selection's place. Empty by default.
typedef int (*fs_typehook)(int ch);
extern fs_typehook as_typehook;
constexpr int AS_TYPEDOVER = 675;
// Called at the start of every read, before the current page is read: the
// dialog boxes drawn as pages take their input there. Null for none.
typedef int (*fs_readhook)();
extern fs_readhook as_readhook;
// Called before the page is drawn or read: whoever borrowed the terminal
// (a macro's console) gives it back there. Null for none.
extern void (*as_screenhook)();
// Maps the cursor to the position the status line shows; null keeps the grid's.
typedef void (*fs_poshook)(int *line, int *col);
extern fs_poshook as_poshook;

// ---- menus -----------------------------------------------------------------
//
// A menu is a list of items, each a title with a command or a sub-menu. The
// bar's items are numbered from 0 (below FS_POPUP_ID), the page's pop-up from
// FS_POPUP_ID, field menus from FS_FIELDMENU_ID, tool bar buttons from
// FS_TOOLBAR_ID; the id of a choice comes back as the read's value.
constexpr int FS_POPUP_ID = 10000;
constexpr int FS_FIELDMENU_ID = 20000;
constexpr int FS_TOOLBAR_ID = 30000;
constexpr int FS_MENU_MAXLINES = 50000;  // past this an include must be looping

struct fs_menu {
  struct item {
    std::string title;              // what the menu shows
    std::string command;            // run when chosen; empty for a sub-menu
    int id = -1;                    // id of the choice, -1 for a sub-menu
    std::unique_ptr<fs_menu> sub;   // the sub-menu, or null
  };
  std::vector<item> items;  // in file order
};

// A field's own menu: the button that opens it on the field, and its items.
// A choice writes the item's command (when there is one) into the field and
// puts the cursor on its first cell; with flag set the read then ends with 30
// and the item's number from 1. Item i has the id first + i.
struct fs_fieldmenu {
  int button = 3;                     // mouse button 1, 2 or 3
  std::vector<std::string> titles;    // what the menu shows
  std::vector<std::string> commands;  // empty when the items carry none
  int flag = 0;                       // non-zero: a choice ends the read
  int first = FS_FIELDMENU_ID;        // id of the first item
};
// Gives field id a menu of count items (0 removes it); the result is
// as_errno, 28 for a field that does not exist.
int asfmenu(int id, int button, int count, const char *const *titles, const char *const *commands,
            int flag);
const fs_fieldmenu *fs_fieldmenuget(int id);  // null: none, or no such field

// Reads a menu file with its includes ("$xhome/" stands for home). Lines in
// error are left out, each with its message added to errors; a file that
// cannot be read or includes itself for ever gives null and one message.
std::unique_ptr<fs_menu> fs_menuread(const std::string &path, const std::string &home,
                                     std::vector<std::string> &errors);
// Puts a menu in place (0 the bar, 1 the page's pop-up; null removes it),
// numbering its items, and shows both through the layer.
void fs_menuset(int which, std::unique_ptr<fs_menu> menu);
const fs_menu *fs_menuget(int which);
// The command of the item with this id; null when there is none.
const char *fs_menucmd(int id);

// ---- screen dump (headless and tests) ------------------------------------

// Writes what the screen shows: one row a line, then the status line, then,
// with attrs, the attribute planes as letters.
void fs_dump(FILE *out, int attrs);
// The rows the screen shows, in UTF-8, trailing blanks cut; none without a page.
std::vector<std::string> fs_rows();
