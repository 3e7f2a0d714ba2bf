// Field manager internals shared by its files: the page record, the working
// state, and the helpers that report errors and walk cells.
#pragma once
#include "fields/fields.h"
#include "fields/plat.h"
#include <string>
#include <unordered_map>
#include <vector>

// Cells of a field in reading order: the n-th character is cell n.
struct fs_cells {
  std::vector<int16_t> line;  // line of each cell, 1-based
  std::vector<int16_t> col;   // column of each cell, 1-based
};

struct fs_pagerec {
  uint32_t number = FS_NOPAGE;      // caller's page number, FS_NOPAGE when free
  int bells = 0;                    // queued bells
  int capacity = 0;                 // field slots allocated
  int mouse_line = 1;               // last mouse position
  int mouse_col = 1;                // last mouse position
  std::vector<fsfield> fld;         // field table, order of definition
  int cur_line = 1;                 // cursor line
  int cur_col = 1;                  // cursor column
  std::vector<int32_t> owner;       // per cell: 1-based field position, 0 none
  std::vector<uint8_t> modified;    // per field: changed by the user
  std::vector<uint8_t> dirty;       // per field: to repaint
  std::vector<uint16_t> text;       // per cell: character, FS_NULL for none
  double scaling[4] = {1.0, 0.0, 1.0, 0.0};  // kept for the page record's shape
  int small[3] = {0, 0, 0};         // kept for the page record's shape
  std::vector<std::shared_ptr<fs_fieldmenu>> menu;  // per field: its own menu, or null
  void *popup = nullptr;            // page's pop-up menu
  int popup_button = 0;             // button that opens it
  std::vector<int32_t> hilite;      // per cell
  std::vector<int32_t> colour;      // per cell, physical
  std::vector<int32_t> intensity;   // per cell
  std::vector<fsxfield> ext;        // per field: extended record
  std::vector<fs_cells> cells;      // per field: cell list
  bool repaint = false;             // the whole page must be compared again
  std::vector<std::string> subst;   // bytes of substitute cell FS_SUBST_FIRST + i
  std::unordered_map<std::string, uint16_t> subst_cell; // the same, by bytes
};

// The shadow of what the layer shows.
struct fs_shadow {
  std::vector<uint16_t> text;      // characters, null shown as blank
  std::vector<uint8_t> hilite;     // hilite drawn
  std::vector<uint8_t> colour;     // physical colour drawn
  std::vector<uint8_t> intensity;  // intensity drawn
  std::vector<uint8_t> tick;       // trailing-blank mark drawn
  int ticks = 0;                   // marks drawn
};

struct fs_state {
  bool started = false;             // fsinit has run
  bool shutdown = false;            // fsend is running: page 0 may go
  fs_plat *plat = nullptr;          // the screen layer
  int nb_lines = 24;                // grid lines
  int nb_cols = 80;                 // grid columns
  fs_metrics m{};                   // last geometry of the layer
  std::vector<fs_pagerec> pages;    // page table, grown by ten slots
  int cur = -1;                     // slot of the current page, -1 none
  uint32_t curnum = FS_NOPAGE;      // number of the current page
  uint32_t shown = FS_NOPAGE;       // page last displayed
  int fwd[65];                      // logical to physical colours
  int back[65];                     // physical to logical colours
  int pal[65][3];                   // palette entries
  fs_shadow sh;                     // what the screen shows
  bool full = true;                 // full repaint requested
  bool colchange = false;           // colours changed: repaint everything
  std::string status;               // status line last drawn
  int curs_line = 0;                // cursor bar last drawn, 0 none
  int curs_col = 0;                 // cursor bar last drawn
  // switches
  int up = 0;                       // report function key releases
  int onekey = 0;                   // any key pressed ends the read (AS_ONEKEY)
  int upm = 0;                      // report mouse button releases
  int skip = 0;                     // arrows skip unusable cells
  int int2 = 1;                     // draw intensity 2 twice
  int rem = 1;                      // attribute rule for typed and erased cells
  int blk = 0;                      // block mode
  int apl = 0;                      // APL mode
  int veto = 0;                     // close box action
  int view = 1;                     // window shown
  int acol = 1;                     // colours on
  int repeat = 0;                   // read-level auto-repeat
  int insert = 0;                   // insert mode
  int reverse = 0;                  // right-to-left typing
  int readonly = 0;                 // status line read-only mark
  int nobells = 0;                  // silence the bells
  // read state
  bool gone = false;                // the window has gone
  bool resized = false;             // resize mark
  bool timedout = false;            // time-out mark
  int timeout = 0;                  // read time-out in ms, 0 none
  bool posted = false;              // a number for code 28 waits
  int postval = 0;                  // its value
  bool posted43 = false;            // a number for code 43 waits
  bool nudged = false;              // something outside the page changed: code AS_NUDGED
  bool pending = false;             // dialogs or menus have something for the read
  int post43val = 0;                // its value
  bool keepmod = false;             // the next read keeps the modified flags
  uint32_t lastread = FS_NOPAGE;    // page of the previous read
  bool refreshed = false;           // the last event already refreshed
  int askpaint = 0;                 // report repaints (29)
  int askfocus = 0;                 // report focus gain (42)
  int askmove = 0;                  // report cursor moves (673)
  int movedl = 0;                   // cursor at the last move report
  int movedc = 0;                   // cursor at the last move report
  bool droprel = false;             // drop the next release
  int readmod = 0;                  // the read's count of modified fields
  int chordrel = 0;                 // releases of a chord still to merge
  bool batch = false;               // typing queued keys: repaint once at the end
  fs_event last{};                  // previous event, for the read's repeat
  int lastch = -1;                  // its character
  bool havelast = false;            // last holds an event
  int delays[4] = {25000, 50000, 60000, 60000};  // repeat delays in microseconds
  int kbtype = -1;                  // keyboard type, -1 standard
  int movetab[9][4];                // field movement keys: code, shift, ctrl, alt
  int rightpos = 0;                 // button 3 positions the cursor
  int leftpos = 1;                  // button 1 positions the cursor
  int clickpos = 1;                 // 0: neither button positions (a list's read)
  long clickdelay = 50000;          // in units of 10 microseconds
  long lastclick = -1;              // time of the last positioning click, same units
  int chord[3] = {0, 0, 0};         // two buttons that together act as the third
  int chordslices = 0;              // 100 ms slices to wait for the second button
  // mouse press state
  int btn_down = 0;                 // button held, 0 none
  bool btn_eaten = false;           // its press was consumed
  int pushfld = 0;                  // push button or toggle held, 1-based position
  int drag_x = 0;                   // last reported drag position
  int drag_y = 0;                   // last reported drag position
  // span selection
  bool selecting = false;           // a left drag selects
  int sel[6] = {0, 0, 0, 0, 0, 0};  // first field, line, col, last field, line, col
  int selfld = 0;                   // field of the selection, 1-based position
};

extern fs_state fs;

inline fs_pagerec &pg() { return fs.pages[fs.cur]; }
inline int cellix(int line, int col) { return (line - 1) * fs.nb_cols + col - 1; }

// Reports an error: sets as_errno (unless code is negative), as_lastmsg and the alert.
void fs_err(int code, const char *fmt, ...) __attribute__((format(printf, 2, 3)));
bool fs_started(const char *words);  // reports words with code 1 when not started
int fs_find(int id);                 // 1-based position of a field, 0 none
int fs_phys(int logical);            // logical colour, modulo 65, to physical

// Sets one cell to a field's attributes; helpers shared by text and editing.
void fs_cellattr(int ix, const fsfield &f);
void fs_markdirty(int pos);          // pos is 1-based
void fs_paintline(int line);         // compare and draw one line now
void fs_compare();                   // the comparison of every line
void fs_drawstatus();                // the status line, drawn when it changed
void fs_showcursor();                // cursor bar and status line, where they changed
void fs_removefield(int pos);        // 1-based
void fs_clearall();                  // asfclr without the start check
void fs_newpage(uint32_t number);    // create without the checks
void fs_select(int slot);            // make a slot current
int fs_slot(uint32_t number);        // slot of a page, -1 none
void fs_keybinit();                  // start values of the keyboard table
int fs_translate(int ch, int shift, int alt, int upperlock);  // typed character
int fs_ctrlchar(int ch);             // the rank 1 character after a table was read
void fs_movetab_set(int kbtype);     // field movement keys for a keyboard type
void fs_evreset();                   // empty the queue
bool fs_evtake(fs_event &ev, int &ch);  // take the first event

int fs_kbmode();                     // keyboard type given to asfkeyb
int fs_cellk(int pos, int line, int col);  // 0-based cell of a field, -1 none
bool fs_usable(int line, int col);   // a cell of a non-protected field
void fs_settext(int pos, const char *text);  // write a field's text and repaint it
// A press of a mouse button on field pos (0 none) that opens a menu, the
// field's own or the page's pop-up: true when the layer showed one.
bool fs_menupress(int pos, int button, bool alt, const fs_event &e, int line, int col);
// A field menu's item chosen: a read code, or -1 to go on reading.
int fs_fieldchoice(int itemid, int *value);

// Editing operations of the read; each answers a read code or -1 to go on.
int fs_type(int ch, const fs_event &ev, int *value);
int fs_delete(bool backspace);
int fs_erase(bool all);
void fs_tab(bool back);
void fs_nextline(bool prev);
void fs_firstfield(bool last);
int fs_arrow(int code);              // 47, 48, or -1
void fs_shiftright();
int fs_mouse(const fs_event &ev, int ch);
