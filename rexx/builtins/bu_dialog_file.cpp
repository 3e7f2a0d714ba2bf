// The file boxes a macro can open: DY_OPEN for a file to read, DY_SAVE for
// a name to write; and DY_WARP, the pointer's move.
#include "fields/dialogs/dialogs.h"
#include "rexx/builtins/bu_dialog.h"

namespace {

// Asks in the file box with the arguments from first on as the proposed
// name and the title; the path chosen, "" when none was.
int ask(bu_frame& f, value& r, int mode, int first, const char* title) {
  std::string from = bu_has(f, 0) ? std::string(bu_text(f, 0)) : "";
  std::string path = first >= 0 && bu_has(f, first) ? std::string(bu_text(f, first)) : "";
  int t = first >= 0 ? first + 1 : 1;
  std::string caption = bu_has(f, t) ? std::string(bu_text(f, t)) : title;
  if (dy_filebox(mode, caption, from, path) != 1) path.clear();
  r.set_str(path);
  return 0;
}

}  // namespace

// DY_OPEN([folder [, title]]): the path of a file that exists, chosen in
// the box; folder "//last" is where the previous file box ended.
int bu_dy_open(bu_frame& f, value& r) {
  if (int e = bu_dy_needs(f, f.argc <= 2, "needs 0 to 2 arguments.")) return e;
  return ask(f, r, DY_FOPEN, -1, "Open");
}

// DY_SAVE([folder [, name [, title]]]): a path to write to, in a folder that
// exists; the name is proposed on the box's line.
int bu_dy_save(bu_frame& f, value& r) {
  if (int e = bu_dy_needs(f, f.argc <= 3, "needs 0 to 3 arguments.")) return e;
  return ask(f, r, DY_FSAVE, 1, "Save As");
}

// DY_WARP(x, y): the pointer stays where the user has it, in a window as
// in a terminal: a macro does not take the mouse from under the user's hand.
int bu_dy_warp(bu_frame& f, value& r) {
  if (int e = bu_dy_needs(f, f.argc == 2 && bu_has(f, 0) && bu_has(f, 1), "needs 2 arguments."))
    return e;
  double x = 0, y = 0;
  if (int e = bu_dy_number(f, 0, true, x)) return e;
  if (int e = bu_dy_number(f, 1, true, y)) return e;
  r.set_str("0");
  return 0;
}
