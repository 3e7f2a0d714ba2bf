// The printer box: the print queues the system knows in a list, the default
// one chosen when it opens. A click chooses a line and a second click on
// the same line takes it, as do Enter and OK; Escape and Cancel give none.
#include "fields/dialogs/dialogs.h"
#include "fields/fs_int.h"
#include "platform/platform.h"

#include <algorithm>

const char *const DY_NO_PRINTER = "No printer is installed";

namespace {

enum : int { I_LIST, I_OK, I_CANCEL };  // the items, by their place
constexpr int ANSWER_OK = 1, ANSWER_CANCEL = 2;

std::vector<dy_item> box(const std::vector<std::string> &names, int cursor, int top) {
  int widest = 0;
  for (const std::string &n : names) widest = std::max(widest, int(n.size()));
  int width = std::clamp(widest + 2, 30, 60);
  int rows = std::clamp(int(names.size()), 3, 10);
  std::vector<dy_item> items;
  dy_item l = dy_text_item(DY_KSCL, 1, 0, "Printers:");
  l.lines = names;
  l.on.assign(names.size(), 0);
  l.on[size_t(cursor)] = 1;
  l.cursor = cursor;
  l.top = std::clamp(top, std::max(0, cursor - rows + 1), cursor);
  l.height = rows;
  l.width = width;
  items.push_back(l);
  items.push_back(dy_text_item(DY_KBUTTON, 2, rows + 2, "OK"));
  items.push_back(dy_text_item(DY_KBUTTON, width - 10, rows + 2, "Cancel"));
  return items;
}

}  // namespace

int dy_printbox(const std::string &title, std::string &queue) {
  std::vector<std::string> names;
  std::string dflt;
  pl_print_queues(names, dflt);
  if (names.empty()) {
    asf_alert(2, {DY_NO_PRINTER});
    return 0;
  }
  if (!fs.started || dy_noscreen) return -1;
  auto at = std::find(names.begin(), names.end(), dflt);
  int cursor = at == names.end() ? 0 : int(at - names.begin()), top = 0, clicked = -1;
  dy_modal how;
  how.picks = true;
  how.panel_keys = true;
  how.focus = I_LIST;
  for (;;) {
    std::vector<dy_item> items = box(names, cursor, top);
    int answer = dy_run_modal(items, title, how);
    if (answer < 0) return -1;
    if (answer == 0 || answer == ANSWER_CANCEL) return 0;
    const dy_item &l = items[I_LIST];
    cursor = std::clamp(l.cursor, 0, int(names.size()) - 1);
    top = l.top;
    // A box made again for each click has no double click of its own: the
    // second click on the line clicked last takes it.
    bool again = answer == DY_PICK && clicked == cursor;
    clicked = cursor;
    if (answer == DY_PICK && !again) continue;
    if (answer != ANSWER_OK && answer != DY_PICK && answer != DY_PICK2) continue;
    queue = names[size_t(cursor)];
    return 1;
  }
}
