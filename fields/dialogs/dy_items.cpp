// The values and colours of the items of an open box: what the getters read
// back and the setters change, each call naming itself in its complaint.
#include "fields/dialogs/dy_int.h"
#include "fields/fs_int.h"

#include <algorithm>

namespace {

// What the complaint about a bad number calls an item of each kind.
constexpr const char *kind_words[DY_NKINDS] = {"label", "input", "button", "toggle group",
                                               "choice", "scrolled list"};

// The box and the item, or null with the message already given.
dy_item *item(const char *call, int h, int kind, int n, dy_box **box = nullptr) {
  dy_box *b = dy_get(call, h);
  if (box) *box = b;
  return b ? dy_nth(call, b, kind, n) : nullptr;
}

bool line_ok(const char *call, const dy_item &it, int line, bool end_too = false) {
  int last = int(it.lines.size()) + (end_too ? 1 : 0);
  if (line >= 1 && line <= last) return true;
  fs_err(1, "%s: invalid \"%d\" line number", call, line);
  return false;
}

void keep_cursor(dy_item &it) {
  int n = int(it.lines.size());
  it.cursor = std::clamp(it.cursor, 0, std::max(0, n - 1));
  it.top = std::clamp(it.top, 0, std::max(0, n - 1));
  it.on.resize(it.lines.size(), 0);
}

int colour(const char *call, int h, int kind, int n, const int rgb[6]) {
  dy_box *b = nullptr;
  dy_item *it = item(call, h, kind, n, &b);
  if (!it) return -1;
  std::copy(rgb, rgb + 3, it->col.fg);
  std::copy(rgb + 3, rgb + 6, it->col.bg);
  dy_view_changed(*b);
  return 0;
}

int set_text(const char *call, int h, int kind, int n, const std::string &text) {
  dy_box *b = nullptr;
  dy_item *it = item(call, h, kind, n, &b);
  if (!it) return -1;
  it->text = text;
  dy_view_changed(*b);
  return 0;
}

}  // namespace

int dy_nkind(const dy_box &b, int kind) {
  return int(std::count_if(b.items.begin(), b.items.end(),
                           [kind](const dy_item &it) { return it.kind == kind; }));
}

dy_item *dy_nth(const char *call, dy_box *b, int kind, int n) {
  int seen = 0;
  for (dy_item &it : b->items)
    if (it.kind == kind && ++seen == n) return &it;
  fs_err(1, "%s: invalid \"%d\" %s number", call, n, kind_words[kind]);
  return nullptr;
}

int dy_qtext(int h, int n, std::string &out) {
  dy_item *it = item("dy_qtext", h, DY_KINPUT, n);
  if (!it) return -1;
  out = it->text;
  return 0;
}

int dy_stext(int h, int n, const std::string &text) { return set_text("dy_stext", h, DY_KINPUT, n, text); }

int dy_slabel(int h, int n, const std::string &text) { return set_text("dy_slabel", h, DY_KLABEL, n, text); }

int dy_qtg(int h, int group, std::vector<int> &states) {
  dy_item *it = item("dy_qtg", h, DY_KTG, group);
  if (!it) return -1;
  states = it->on;
  return 0;
}

int bu_dy_stg(int h, int group, int toggle, int on) {
  dy_box *b = nullptr;
  dy_item *it = item("dy_qtg", h, DY_KTG, group, &b);
  if (!it) return -1;
  if (toggle < 1 || toggle > int(it->on.size())) {
    fs_err(1, "dy_qtg: invalid \"%d\" toggle number", toggle);
    return -1;
  }
  if (it->exclusive && on) std::fill(it->on.begin(), it->on.end(), 0);
  it->on[toggle - 1] = on ? 1 : 0;
  dy_view_changed(*b);
  return 0;
}

int dy_qch(int h, int n, int &selected) {
  dy_item *it = item("dy_qch", h, DY_KCH, n);
  if (!it) return -1;
  selected = it->selected;
  return 0;
}

int bu_dy_sch(int h, int n, int value) {
  dy_box *b = nullptr;
  dy_item *it = item("bu_dy_sch", h, DY_KCH, n, &b);
  if (!it) return -1;
  if (value < 1 || value > int(it->lines.size())) {
    fs_err(1, "bu_dy_sch: invalid \"%d\" choice value", value);
    return -1;
  }
  it->selected = value;
  dy_view_changed(*b);
  return 0;
}

int dy_qscl(int h, int n, std::vector<int> &selected) {
  dy_item *it = item("dy_qscl", h, DY_KSCL, n);
  if (!it) return -1;
  selected.clear();
  for (size_t i = 0; i < it->on.size(); i++)
    if (it->on[i]) selected.push_back(int(i) + 1);
  return 0;
}

int bu_dy_ascl(int h, int n, const std::string &text, int at, int select) {
  dy_box *b = nullptr;
  dy_item *it = item("bu_dy_ascl", h, DY_KSCL, n, &b);
  if (!it) return -1;
  if (at == 0) at = int(it->lines.size()) + 1;
  if (!line_ok("bu_dy_ascl", *it, at, true)) return -1;
  it->on.resize(it->lines.size(), 0);
  it->lines.insert(it->lines.begin() + (at - 1), text);
  it->on.insert(it->on.begin() + (at - 1), 0);
  if (select) {
    if (!it->multiple) std::fill(it->on.begin(), it->on.end(), 0);
    it->on[at - 1] = 1;
    it->cursor = at - 1;
  }
  keep_cursor(*it);
  dy_view_changed(*b);
  return 0;
}

int bu_dy_dscl(int h, int n, int line, int count) {
  dy_box *b = nullptr;
  dy_item *it = item("bu_dy_dscl", h, DY_KSCL, n, &b);
  if (!it || !line_ok("bu_dy_dscl", *it, line)) return -1;
  it->on.resize(it->lines.size(), 0);
  int last = std::min(int(it->lines.size()), line - 1 + std::max(1, count));
  it->lines.erase(it->lines.begin() + (line - 1), it->lines.begin() + last);
  it->on.erase(it->on.begin() + (line - 1), it->on.begin() + last);
  keep_cursor(*it);
  dy_view_changed(*b);
  return 0;
}

int bu_dy_pscl(int h, int n, int line) {
  dy_box *b = nullptr;
  dy_item *it = item("bu_dy_pscl", h, DY_KSCL, n, &b);
  if (!it || !line_ok("bu_dy_pscl", *it, line)) return -1;
  it->top = line - 1;
  it->cursor = line - 1;
  keep_cursor(*it);
  dy_view_changed(*b);
  return 0;
}

int bu_dy_rscl(int h, int n, int line, const std::string &text) {
  dy_box *b = nullptr;
  dy_item *it = item("bu_dy_rscl", h, DY_KSCL, n, &b);
  if (!it || !line_ok("bu_dy_rscl", *it, line)) return -1;
  it->lines[line - 1] = text;
  dy_view_changed(*b);
  return 0;
}

int bu_dy_sscl(int h, int n, std::vector<std::string> lines, int sort, const std::string &pattern,
               bool keep_first) {
  dy_box *b = nullptr;
  dy_item *it = item("bu_dy_sscl", h, DY_KSCL, n, &b);
  if (!it) return -1;
  it->lines = dy_sift(std::move(lines), pattern, keep_first, sort != 0);
  it->on.assign(it->lines.size(), 0);
  it->top = it->cursor = 0;
  dy_view_changed(*b);
  return 0;
}

int dy_Cbutton(int h, int n, const int rgb[6]) { return colour("dy_Cbutton", h, DY_KBUTTON, n, rgb); }
int dy_Cch(int h, int n, const int rgb[6]) { return colour("dy_Cch", h, DY_KCH, n, rgb); }
int dy_Ctext(int h, int n, const int rgb[6]) { return colour("dy_Ctext", h, DY_KINPUT, n, rgb); }
int dy_Clabel(int h, int n, const int rgb[6]) { return colour("dy_Clabel", h, DY_KLABEL, n, rgb); }
int dy_Cscl(int h, int n, const int rgb[6]) { return colour("dy_Cscl", h, DY_KSCL, n, rgb); }
int dy_Ctg(int h, int n, const int rgb[6]) { return colour("dy_Ctg", h, DY_KTG, n, rgb); }
