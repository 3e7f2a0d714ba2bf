// Small menus of the editor's own: a column of buttons in a box, so that
// the arrows, Enter, a click and Escape work alike on every screen, and a
// pop-up opens where the pointer is.
#include "fields/dialogs/dialogs.h"

int dy_menu(const std::vector<std::string> &labels, const std::string &title, int first, int line,
            int col) {
  std::vector<dy_item> items;
  for (size_t k = 0; k < labels.size(); k++)
    items.push_back(dy_text_item(DY_KBUTTON, 0, double(k), labels[k]));
  dy_modal how;
  how.focus = first;
  how.line = line;
  how.col = col;
  int chosen = dy_run_modal(items, title, how);
  return chosen >= 1 && size_t(chosen) <= labels.size() ? chosen : 0;
}
