// The screen layer: the operations the field manager needs from whatever shows
// its grid (a window, a terminal, nothing at all). No toolkit type crosses
// this file; a layer only draws what it is told and appends events to gdet_ev.
#pragma once
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

struct fs_metrics {
  int cell_w;     // cell width in pixels
  int cell_h;     // cell height in pixels
  int client_w;   // client area width in pixels
  int client_h;   // client area height in pixels, status line included
  int screen_w;   // screen width in pixels
  int screen_h;   // screen height in pixels
  int left;       // window's left edge on the screen
  int top;        // window's top edge on the screen
  int toolbar_h;  // toolbar height above the grid
};

// What fs_plat::wait answers.
enum { FS_WAIT_EVENT = 1, FS_WAIT_TIMEOUT = 0, FS_WAIT_GONE = -1 };

class fs_plat {
 public:
  virtual ~fs_plat() = default;
  // Draws count cells from line, col with one set of attributes. The text has
  // already been made displayable: no null cell, tab, line feed or form feed.
  virtual void run(int line, int col, const uint16_t *text, int count, int hilite,
                   int colour, int intensity) = 0;
  virtual void cursor(int line, int col, int colour) = 0;  // the bar under a cell
  virtual void tick(int line, int col, int on) = 0;        // trailing-blank mark of a cell
  virtual void status(const std::string &text) = 0;       // the line under the grid
  virtual void bell() = 0;
  virtual void flash() = 0;                                // a refused key
  virtual void alert(const std::string &text) = 0;         // an error message
  // Waits up to ms milliseconds (negative: for ever) until events have been
  // appended to gdet_ev; FS_WAIT_GONE when no event can ever come again.
  // Every press is followed by its release in time: a layer that cannot see
  // releases queues one right after the press, or held keys repeat for ever.
  virtual int wait(int ms) = 0;
  // Appends to gdet_ev what input has already arrived, without waiting: the
  // look a running macro takes for the halt key.
  virtual void peek() { wait(0); }
  virtual void title(const std::string &text) = 0;
  virtual void geometry(fs_metrics &m) = 0;
  virtual void size(int lines, int cols) = 0;              // ask for a grid size
  virtual void show(int on) = 0;
  virtual void palette(int entry, int red, int green, int blue) = 0;
  virtual void clear() = 0;                                // blank everything
  virtual void pointer(int shape) = 0;                     // 1 arrow, 2 busy, 3 text
  virtual void flush() = 0;                                // end of a refresh

  // What only a window has. A layer without one keeps these defaults: no
  // font to change, no menus, tool bar or scroll bar to show.
  // Changes the text font by name; 0, or 1 when there is no such font.
  virtual int font(const std::string &) { return 0; }
  // The text font's name as it was set; "" when the layer has none of its own.
  virtual std::string font_name() { return std::string(); }
  // The fixed-pitch families the text font may take, for the font box;
  // false when the text font is not the layer's to change (a terminal
  // shows its own). An empty list: the layer cannot tell, and the box
  // offers the usual few.
  virtual bool font_families(std::vector<std::string> &) { return true; }
  // Whether a font face exists for the dialog boxes: 1 yes, 0 no, -1 the
  // layer cannot tell (any well-formed name is taken).
  virtual int font_known(const std::string &) { return -1; }
  // Shows the menu bar and the page's pop-up menu (null: none).
  virtual void menus(const struct fs_menu *, const struct fs_menu *) {}
  // Opens the page's pop-up menu at a pixel; false when the layer has none.
  virtual bool popup(int, int) { return false; }
  // Opens a field's own menu at a pixel; false when the layer has no menus.
  virtual bool fieldmenu(const struct fs_fieldmenu &, int, int) { return false; }
  virtual int toolbar(int) { return 0; }                   // 1 on, 0 off, -1 ask; the state
  // The scroll bar: lines in all, the first one shown, how many are shown.
  virtual void scrollbar(long, long, long) {}
  // Asks the close-box question; false when the layer cannot ask, and the
  // caller then acts as on Continue. On Continue the layer sets the gone mark.
  virtual bool ask(const std::string &, int) { return false; }
  // Gives the terminal to a program run in the foreground (true) and takes
  // it back, redrawn (false). False when the layer has no terminal to give.
  virtual bool console(bool) { return false; }
  // A PDF document drawn by the layer's own toolkit: of the lines in the
  // text font, or (no lines) of the page as it is shown, colours and all.
  // "" when the layer draws none, and the plain text writer serves.
  virtual std::string pdf(const std::vector<std::string> *, const std::string &) { return ""; }
};

// Calls a layer makes into the model from its message handling.
enum { FS_MARK_RESIZE = 1, FS_MARK_GONE = 2 };
void fs_mark(int what);  // the client area changed size, or the window has gone
void fs_closebox();      // the close box was used: acts as asfveto says

// The headless layer: draws nothing, alerts go to standard error, events come
// from a key script whose format is described in plat_null.cpp.
fs_plat *fs_plat_null(int lines, int cols);
// Feeds a key script to a layer made by fs_plat_null; dump lines write to out.
// Returns 0, or -1 when the file cannot be read.
int fs_null_script(fs_plat *layer, const char *path, std::FILE *out);

// The recording layer of the tests keeps one of these for every call.
struct fs_rec_call {
  char op;           // 'r' run, 'c' cursor, 's' status, 'b' bell, 'f' flash, 'a' alert,
                     // 'x' clear, 'p' palette (line: entry, col: red, count: green),
                     // 't' tick (count: 1 on, 0 off)
  int line;          // first line of a run, or the cursor's line
  int col;           // first column of a run, or the cursor's column
  int count;         // cells of a run
  std::string text;  // run text (8-bit), status or alert text
};
// The script-driven layers and the recording layer are declared in plat_test.h.
