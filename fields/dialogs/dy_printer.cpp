// The printer box: the print queues the system knows in a list, the default
// one chosen when it opens. Enter, OK or a double click takes the line the
// list's cursor is on; Escape and Cancel give none.
#include "fields/dialogs/dialogs.h"
#include "fields/fs_int.h"
#include "platform/platform.h"

#include <algorithm>

const char *const DY_NO_PRINTER = "No printer is installed";

namespace {

enum : int { I_LIST, I_OK, I_CANCEL };  // the items, by their place
constexpr int ANSWER_OK = 1;            // the OK button, the first

std::vector<dy_item> box(const std::vector<std::string> &names, int chosen) {
  int widest = 0;
  for (const std::string &n : names) widest = std::max(widest, int(n.size()));
  int width = std::clamp(widest + 2, 30, 60);
  int rows = std::clamp(int(names.size()), 3, 10);
  std::vector<dy_item> items;
  dy_item l = dy_text_item(DY_KSCL, 1, 0, "Printers:");
  l.lines = names;
  l.on.assign(names.size(), 0);
  l.on[size_t(chosen)] = 1;
  l.cursor = chosen;
  l.top = std::max(0, chosen - rows + 1);
  l.height = rows;
  l.width = width;
  items.push_back(l);
  items.push_back(dy_text_item(DY_KBUTTON, 2, rows + 2, "OK"));
  items.push_back(dy_text_item(DY_KBUTTON, width - 10, rows + 2, "Cancel"));
  return items;
}

}  // namespace

int dy_printbox(const std::string &title, std::string &queue) {
  // With no screen nobody could choose: the printing system is not asked.
  if (!fs.started || dy_noscreen) return -1;
  std::vector<std::string> names;
  std::string dflt;
  pl_print_queues(names, dflt);
  if (names.empty()) {
    asf_alert(2, {DY_NO_PRINTER});
    return 0;
  }
  auto at = std::find(names.begin(), names.end(), dflt);
  std::vector<dy_item> items = box(names, at == names.end() ? 0 : int(at - names.begin()));
  dy_modal how;
  how.picks2 = true;
  how.panel_keys = true;
  how.focus = I_LIST;
  int answer = dy_run_modal(items, title, how);
  if (answer < 0) return -1;
  if (answer != ANSWER_OK && answer != DY_PICK2) return 0;
  queue = names[size_t(std::clamp(items[I_LIST].cursor, 0, int(names.size()) - 1))];
  return 1;
}
