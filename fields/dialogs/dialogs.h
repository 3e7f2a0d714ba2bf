// Dialog boxes: descriptions made item by item, the table of open boxes,
// their values, colours and events. Nothing here knows a toolkit: a window
// layer shows a box as its own controls, the other layers as a page of
// fields in a frame over the editor's page (dy_page.cpp).
//
// Items of a kind are numbered from 1 in the order they were described; the
// getters and setters take that number, the events report it.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

enum dy_kind : int {
  DY_KLABEL = 0,   // a line of text
  DY_KINPUT = 1,   // an input line, or a multi-line input
  DY_KBUTTON = 2,  // a push button
  DY_KTG = 3,      // a group of toggles
  DY_KCH = 4,      // a choice among texts
  DY_KSCL = 5,     // a scrolled list
  DY_NKINDS = 6
};

struct dy_colours {
  int fg[3] = {-1, -1, -1};  // text red, green, blue; -1 the default
  int bg[3] = {-1, -1, -1};  // background red, green, blue; -1 the default
};

struct dy_item {
  int kind = DY_KLABEL;            // dy_kind
  double x = 0;                    // column, in characters of the dialog font
  double y = 0;                    // line, in characters of the dialog font
  std::string text;                // label, button or input text; title of a group, choice, list
  double width = 0;                // input: visible length (0 multi-line); list: columns
  double height = 0;               // list: lines shown; multi-line input: lines
  std::vector<std::string> lines;  // toggle texts, choice texts, list lines
  std::vector<double> tx;          // toggle columns
  std::vector<double> ty;          // toggle lines
  std::vector<int> on;             // toggle states; list lines selected (0 or 1)
  bool exclusive = false;          // toggle group: one toggle on at a time
  bool multiple = false;           // list: Multiple selection
  int selected = 1;                // choice: the text chosen, from 1
  int top = 0;                     // list: first line shown, from 0
  int cursor = 0;                  // list: line with the cursor, from 0
  dy_colours col;                  // colours of the item
  int control = 0;                 // control number, given when the box is made
};

enum dy_grab : int {
  DY_GRAB = 0,     // modal to the editor's window
  DY_NOGRAB = 1,   // modeless
  DY_DISPLAY = 2,  // modeless, tells nobody of anything
};

struct dy_opts {
  double x = 0;          // position, characters (offsets when centred)
  double y = 0;          // position, characters
  int framed = 0;        // non-zero: the box has a frame of its own
  std::string title;     // caption; empty: the editor's title
  int grab = DY_GRAB;    // dy_grab
  int centre = 0;        // 1: x and y are offsets from the middle of the screen
  int bg[3] = {-1, -1, -1};  // background of the box
};

struct dy_box {
  int handle = 0;               // from 1, never reused in a run
  bool mapped = false;          // shown
  bool placed = false;          // the layer told us where it is
  int px = 0, py = 0;           // position in pixels from the page's corner, when placed
  int pw = 0, ph = 0;           // size in pixels, as last mapped
  int cols = 0, lines = 0;      // size in characters of the dialog font
  dy_opts opts;                 // as made
  std::vector<dy_item> items;   // the description, kept for queries
  int focus = 0;                // index in items of the focused item, -1 none
  void *view = nullptr;         // the layer's own record of the box, or null
  bool waited = false;          // someone waits for a button: it unmaps the box
  bool picks = false;           // waited: a click on a list line ends the wait too
  bool picks2 = false;          // waited: a double click on a list line ends it
  bool panel_keys = false;      // waited: Enter presses the first button, F3 and Ctrl+C close
  int answer = 0;               // the button pressed last, from 1
  bool gone = false;            // being destroyed: the view lets go of its record
};

// Columns of a multi-line input (one made with width 0).
constexpr int DY_MULTI_COLS = 16;

// An item of a kind at a place with its text, the rest as by default.
dy_item dy_text_item(int kind, double x, double y, const std::string &text);

// ---- the manager -------------------------------------------------------------
//
// A bad handle or item number sets as_errno to 1 and as_lastmsg to the
// call's "invalid" message, and the call gives an empty or failing result.

int dy_make(std::vector<dy_item> items, const dy_opts &o);  // the new handle
int dy_map(int h, int geo[4]);  // 0 and x, y, width, height in pixels; -1 bad handle
int dy_unmap(int h);            // 0, -1 bad handle
int dy_destroy(int h);          // 0, -1 bad handle; safe from the box's own callback
int dy_qmap(int h);             // 1 mapped, 0 not, -1 bad handle
// A window layer shows boxes as controls of its own: it is told of every
// change to a box (mapped, unmapped, a value, gone). Null: the boxes are
// drawn as field pages.
extern void (*dy_viewhook)(dy_box &b);
// The read of such a layer while a box is asked modally: one wait for what
// the user does; 0 when nothing can come any more.
extern int (*dy_viewread)();
dy_box *dy_get(const char *call, int h);  // the box, or null with the message
void dy_destroy_all();                    // the editor ends

// An item of a kind by its number from 1; null with "call: invalid "n" what number".
dy_item *dy_nth(const char *call, dy_box *b, int kind, int n);
int dy_nkind(const dy_box &b, int kind);  // items of that kind

int dy_qtext(int h, int n, std::string &out);   // an input's text
int dy_stext(int h, int n, const std::string &text);
int dy_slabel(int h, int n, const std::string &text);
int dy_qtg(int h, int group, std::vector<int> &states);
int bu_dy_stg(int h, int group, int toggle, int on);
int dy_qch(int h, int n, int &selected);
int bu_dy_sch(int h, int n, int value);
int dy_qscl(int h, int n, std::vector<int> &selected);  // selected line numbers from 1
int bu_dy_ascl(int h, int n, const std::string &text, int at, int select);  // at 0: the end
int bu_dy_dscl(int h, int n, int line, int count);
int bu_dy_pscl(int h, int n, int line);
int bu_dy_rscl(int h, int n, int line, const std::string &text);
// The list's lines, sifted by dy_sift with the pattern and keep_first, and
// sorted when sort is not 0.
int bu_dy_sscl(int h, int n, std::vector<std::string> lines, int sort,
               const std::string &pattern = "*", bool keep_first = false);
// Lines kept by a pattern: alternatives separated by ";", each a wildcard
// ("*", "?", "[...]") for the whole line or "r/" and an extended regular
// expression found in the line; "*" keeps all, and so does a pattern with
// an alternative that does not compile. With keep_first the first line is
// kept, and stays first, whatever the pattern; with sort the others are
// sorted by bytes.
std::vector<std::string> dy_sift(std::vector<std::string> lines, const std::string &pattern,
                                 bool keep_first, bool sort);
int dy_sheader(int h, const std::string &text);
int dy_sfocus(int h, int item);  // item: from 1 in description order

// Colour calls: which item of the kind, text then background red, green, blue.
int dy_Cbutton(int h, int n, const int rgb[6]);
int dy_Cch(int h, int n, const int rgb[6]);
int dy_Ctext(int h, int n, const int rgb[6]);
int dy_Clabel(int h, int n, const int rgb[6]);
int dy_Cscl(int h, int n, const int rgb[6]);
int dy_Ctg(int h, int n, const int rgb[6]);

// The font of the boxes: face, or face%style%width%height. 0, 1 unknown.
int dy_setfont(const std::string &name);
const std::string &dy_font();
// The same as a field manager call, with its errors: 0, or 1 with the
// message and code set.
int asffont_dy(const char *font);

// ---- the box as a dialog template --------------------------------------------
//
// The header and the controls of a box in dialog units, and the 16-bit words
// of the whole template. A debugging aid: see dy_template.cpp.
struct dy_tpl_control {
  uint32_t style = 0;
  int16_t x = 0, y = 0, cx = 0, cy = 0;
  uint16_t id = 0;
  uint16_t cls = 0;  // the class's atom
  std::string text;
};
struct dy_tpl {
  uint32_t style = 0;
  int16_t x = 0, y = 0, cx = 0, cy = 0;
  std::string caption;
  uint16_t point = 0;
  std::string face;
  std::vector<dy_tpl_control> controls;
  std::vector<uint16_t> words;
};
dy_tpl dy_template(const dy_box &b);
std::string dy_template_dump(const dy_tpl &t);
// With XED_DIALOG_DUMP naming a file, appends the box's dump to it.
void dy_template_trace(const dy_box &b);

// ---- events ------------------------------------------------------------------
//
// What the user does in a box becomes an event text (" 3 B1", " 3 SC1 4",
// ...), queued when the box has a callback macro and is not a display box;
// the read then ends with code 59 and the caller runs the pending callbacks.

// Macro boxes: the callback named at DY_END and who made the box.
void dy_attach(int h, const std::string &macro, const std::string &owner);
// Runs a callback: the macro with the event text as its argument string;
// gives the macro's return code, -1 when it cannot be run. The editor sets
// its own; the interpreter alone falls back to running the program file.
extern int (*dy_callhook)(const std::string &macro, const std::string &event);

void dy_event(int h, const std::string &text);   // queue when someone listens
void dy_button(int h, int n);                     // " %d B%d"
void dy_choice(int h, int n, int selected);       // " %d MENU%d %d"
// A click on a line of a list at a time in milliseconds: SC, or DSC when the
// previous click on that line came less than 301 milliseconds before.
void dy_listclick(int h, int n, int line, long long ms);
// A key in the box: 'E' Enter, 'F' function key n, 'L' and 'R' left and
// right bank key n, '^' Ctrl with the character n, 'f' the box got the focus.
void dy_key(int h, char what, int n);
// Escape, or the box's close button: its "Cancel" button when it has one,
// else the box leaves the screen.
void dy_escape(dy_box &b);
int dy_pending();              // events waiting for their callback
// Runs the pending callbacks in order; gives how many ran.
int dy_deliver();
// Hands out what the screen has for the boxes and runs their callbacks: a
// long macro's way of keeping its boxes alive.
int dy_dispatch();
// The read of the editor gave code 59: a box has events.
constexpr int DY_READCODE = 59;
extern bool dy_noscreen;  // set: nothing to hand out (the interpreter alone)

// ---- alerts ------------------------------------------------------------------

// A modal question: lines, then the buttons of kind 1 to 5; gives the
// button pressed from 1, 0 when the box was closed, -1 when no box can be
// shown (no screen).
int asf_alert(int kind, const std::vector<std::string> &lines);
// Shows a box of these items modally until a button is pressed; the items
// then hold what the user made of them. The button from 1, 0 when the box
// was closed, -1 when no box can be shown.
int dy_run_modal(std::vector<dy_item> &items, const std::string &title);
// How the editor's own boxes are asked: where the focus starts, and what
// besides a button ends the wait.
struct dy_modal {
  int focus = -1;           // index in items of the item to start on; -1 the first
  bool picks = false;       // a click on a list line ends it: DY_PICK or DY_PICK2
  bool picks2 = false;      // only a double click on a list line ends it: DY_PICK2
  bool panel_keys = false;  // Enter off a button is the first button; F3, Ctrl+C close
  int line = 0, col = 0;    // a cell from 1: the box's corner there; 0 centred
};
constexpr int DY_PICK = 1000;   // a list line was clicked: the list's cursor is on it
constexpr int DY_PICK2 = 1001;  // the same line was clicked twice in a row
int dy_run_modal(std::vector<dy_item> &items, const std::string &title, const dy_modal &how);
// A small menu: the labels as a column of buttons, asked modally with the
// row `first` (from 0) focused, its corner at a cell of the page (from 1)
// or, with line 0, centred. The arrows and Enter, a click or the row's
// marked letter choose; Escape closes. The row chosen from 1; 0 when the
// menu was closed or cannot be shown.
int dy_menu(const std::vector<std::string> &labels, const std::string &title, int first,
            int line = 0, int col = 0);
// A line of text asked for in a box with a title, a label, OK and Cancel;
// text holds the proposal and gets the answer. 1 OK, 0 cancelled, -1 no
// box can be shown.
int dy_ask(const std::string &title, const std::string &label, std::string &text);

// ---- the file box ----------------------------------------------------------------

// What the file box asks for: a file that exists, a name to write (in a
// folder that exists), or a folder that exists. The folder box lists only
// folders; choosing one walks into it, and OK takes the folder named on
// the line or, with the line empty, the folder shown.
enum dy_filemode : int { DY_FOPEN = 0, DY_FSAVE = 1, DY_FFOLDER = 2 };
// Asks for a file in a box that lists a folder's entries and walks the
// folders. from is where it starts: a folder, "//last" for the folder the
// previous file box ended in, "" (or a folder that is not there) the
// working folder. path holds a proposed name and gets the absolute path
// chosen. 1 chosen, 0 cancelled, -1 no box can be shown.
int dy_filebox(int mode, const std::string &title, const std::string &from, std::string &path);
const std::string &dy_lastfolder();  // where the last file box ended, "" none yet

// ---- the printer box ------------------------------------------------------------

// Asks for one of the print queues in a list with the default queue
// chosen first; Enter, OK or a double click takes the line, Escape
// cancels. With no queue at all nothing is asked: the alert NO_PRINTER is
// shown instead. queue gets the name. 1 chosen, 0 cancelled or no queue,
// -1 no box can be shown.
int dy_printbox(const std::string &title, std::string &queue);
extern const char *const DY_NO_PRINTER;  // "No printer is installed"

// ---- the field page of the terminal and headless layers ------------------------

// Runs the input of the mapped boxes that take it, on their own page over
// the editor's, until an event waits or no box takes input; 1 when it read.
int dy_page_read();
// The box that takes the input now, 0 none.
int dy_page_top();
