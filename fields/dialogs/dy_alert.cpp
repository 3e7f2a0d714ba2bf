// Alerts: a question in a box with the buttons of its kind, asked modally.
#include "fields/dialogs/dy_int.h"
#include "fields/fields.h"
#include "fields/fs_int.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr int MAX_LINES = 20;  // an alert holds at most this many lines

// The buttons of each kind of alert, left to right.
const std::vector<std::string> kinds[] = {
    {},
    {"Continue", "Cancel"},
    {"Continue"},
    {"Cancel", "Continue"},
    {"Save File", "Discard Edits"},
    {"Save File", "Discard Edits", "Cancel Exit"},
};

bool no_screen() { return !fs.started || dy_noscreen; }

}  // namespace

int dy_run_modal(std::vector<dy_item> &items, const std::string &title) {
  return dy_run_modal(items, title, dy_modal{});
}

int dy_run_modal(std::vector<dy_item> &items, const std::string &title, const dy_modal &how) {
  if (no_screen()) return -1;
  dy_opts o;
  o.centre = how.line > 0 ? 0 : 1;
  o.x = how.line > 0 ? how.col - 1 : 0;
  o.y = how.line > 0 ? how.line - 1 : 0;
  o.grab = DY_GRAB;
  o.title = title;
  int h = dy_make(items, o);
  dy_box *made = dy_find(h);
  made->waited = true;
  made->picks = how.picks;
  made->picks2 = how.picks2;
  made->panel_keys = how.panel_keys;
  if (how.focus >= 0 && how.focus < int(made->items.size())) made->focus = how.focus;
  int geo[4];
  dy_map(h, geo);
  dy_box *box;
  while ((box = dy_find(h)) && box->mapped && !fs.gone)
    if (!(dy_viewread ? dy_viewread() : dy_page_read())) break;
  if (!box) return 0;
  int answer = box->mapped ? 0 : box->answer;
  items = box->items;
  dy_destroy(h);
  return answer;
}

int asf_alert(int kind, const std::vector<std::string> &lines) {
  if (kind < 1 || kind > 5 || lines.empty() || lines.size() > MAX_LINES) {
    fputs("vorta: asf_alert: internal error\n", stderr);
    return -1;
  }
  if (no_screen()) {
    for (const std::string &l : lines) fprintf(stderr, "%s\n", l.c_str());
    return -1;
  }
  const std::vector<std::string> &names = kinds[kind];
  int count = int(lines.size()), longest = 0, buttons = 0;
  std::vector<dy_item> items;
  for (int i = 0; i < count; i++) {
    items.push_back(dy_text_item(DY_KLABEL, 1, i, lines[size_t(i)]));
    longest = std::max(longest, int(lines[size_t(i)].size()));
  }
  for (const std::string &n : names) buttons += int(n.size()) + 4;
  int width = std::max(longest + 8, buttons + 13);
  // The first button at the left, the last at the right, a middle one between.
  for (size_t b = 0; b < names.size(); b++) {
    int w = int(names[b].size()) + 4;
    int x = b == 0 ? 2 : b + 1 == names.size() ? width - 4 - w : (width - 4 - w) / 2;
    items.push_back(dy_text_item(DY_KBUTTON, x, count + 1, names[b]));
  }
  return dy_run_modal(items, "");
}

int dy_ask(const std::string &title, const std::string &label, std::string &text) {
  if (no_screen()) return -1;
  int width = std::max(40, int(text.size()) + 2);
  std::vector<dy_item> items;
  items.push_back(dy_text_item(DY_KLABEL, 1, 0, label));
  dy_item in = dy_text_item(DY_KINPUT, 1, 1, text);
  in.width = width;
  items.push_back(in);
  items.push_back(dy_text_item(DY_KBUTTON, 2, 3, "OK"));
  items.push_back(dy_text_item(DY_KBUTTON, width - 8, 3, "Cancel"));
  if (dy_run_modal(items, title) != 1) return 0;
  text = items[1].text;
  return 1;
}
