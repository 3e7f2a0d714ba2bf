// The window screen layer: the field manager's grid in a window of its own,
// with a menu bar, a tool bar, a pop-up menu and a scroll bar. Only the files
// of this folder see the toolkit; what crosses here is plain C++.
#pragma once
#include "fields/plat.h"
#include <string>

// Called once when the display has gone, before the read ends: the place to
// save what would otherwise be lost.
typedef void (*fs_qt_gonehook)();

// True when a display is named in the environment and answers (the toolkit
// would end the process if asked to open a display that is not there).
bool fs_qt_display();
bool fs_qt_named();  // a display is named, whether it answers or not

// Opens the window with the window options of argv (which stay in argv for
// fsinit) and returns the layer, or null with err saying why.
fs_plat *fs_plat_qt(int argc, char **argv, fs_qt_gonehook ongone, std::string &err);

// ---- window memory ------------------------------------------------------------
//
// The window's place, grid size and font are remembered for each screen size
// in the settings store, with a fallback for screen sizes never seen.
struct qw_memory {
  bool has_pos = false;   // left and top were found
  int left = 0, top = 0;  // the window's position
  int cols = 0;           // columns, 0 unknown
  int lines = 0;          // lines, 0 unknown
  std::string font;       // face%style%width%height, "" unknown
};
// The folder of the settings of the window ("" when there is no home).
std::string qw_memdir();
// Reads the key of screen sw x sh, then the fallback key for what is still
// missing. A key that cannot be read or holds nonsense gives nothing.
qw_memory qw_memread(int sw, int sh);
// Writes to the key of the screen and to the fallback key; false on failure.
bool qw_memwrite(int sw, int sh, const qw_memory &m);
// Brings saved values into bounds: at least ten pixels of a w x h window on
// the screen, no negative coordinates, at least 6 lines and 38 columns.
void qw_memclamp(qw_memory &m, int sw, int sh, int w, int h);

// ---- fonts ------------------------------------------------------------------

// A font name face%style%width%height taken apart; missing parts get the
// defaults. False when the sizes are not numbers.
struct qw_fontname {
  std::string face;   // "" the default face
  std::string style;  // "*" any
  int width = 9;      // cell width asked for
  int height = 15;    // cell height asked for
};
bool qw_fontparse(const std::string &name, qw_fontname &out);
std::string qw_fontformat(const qw_fontname &f);
