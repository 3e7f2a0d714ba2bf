// The table of open dialog boxes: making one from its description, mapping,
// unmapping, destroying, and where a mapped box stands on the screen.
#include "fields/dialogs/dialogs.h"
#include "fields/dialogs/dy_int.h"
#include "fields/fields.h"
#include "fields/fs_int.h"
#include "fields/plat.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>

namespace {

std::map<int, std::unique_ptr<dy_box>> boxes;  // open boxes by handle
int last_handle = 0;                           // handles are never reused in a run
std::string font_name = "Courier New";         // the dialog font

constexpr int CELL_W = 8;   // cell size assumed when no screen tells us
constexpr int CELL_H = 16;  // cell size assumed when no screen tells us

int len(const std::string &s) { return int(s.size()); }
int ceil_of(double d) { return d <= 0 ? 0 : int(d + 0.999); }

}  // namespace

// The columns and lines an item covers, from the box's corner.
void dy_extent(const dy_item &it, int &right, int &bottom) {
  int x = ceil_of(it.x), y = ceil_of(it.y);
  switch (it.kind) {
    case DY_KLABEL:
      right = x + len(it.text);
      bottom = y + 1;
      break;
    case DY_KINPUT:
      right = x + (it.width > 0 ? ceil_of(it.width) : DY_MULTI_COLS);
      bottom = y + (it.width > 0 ? 1 : std::max(3, ceil_of(it.height)));
      break;
    case DY_KBUTTON:
      right = x + len(it.text) + 4;
      bottom = y + 1;
      break;
    case DY_KTG:
      right = x + len(it.text);
      bottom = y + 1;
      for (size_t i = 0; i < it.lines.size(); i++) {
        right = std::max(right, ceil_of(it.tx[i]) + 4 + len(it.lines[i]));
        bottom = std::max(bottom, ceil_of(it.ty[i]) + 1);
      }
      break;
    case DY_KCH: {
      int widest = 0;
      for (const auto &t : it.lines) widest = std::max(widest, len(t));
      right = x + len(it.text) + 1 + widest + 4;
      bottom = y + 1;
      break;
    }
    default:  // a list: its title line, then its lines and a column for the bar
      right = x + std::max(ceil_of(it.width), len(it.text)) + 1;
      bottom = y + 1 + std::max(1, ceil_of(it.height));
      break;
  }
}

namespace {

void cell_size(int &w, int &h, int &cols, int &lines) {
  w = CELL_W, h = CELL_H, cols = 0, lines = 0;
  fs_plat *p = fs_layer();
  if (!p || !fs.started) return;
  fs_metrics m{};
  p->geometry(m);
  if (m.cell_w > 0) w = m.cell_w;
  if (m.cell_h > 0) h = m.cell_h;
  fs_grid(&lines, &cols);
}

}  // namespace

void (*dy_viewhook)(dy_box &b) = nullptr;
int (*dy_viewread)() = nullptr;

dy_item dy_text_item(int kind, double x, double y, const std::string &text) {
  dy_item it;
  it.kind = kind;
  it.x = x;
  it.y = y;
  it.text = text;
  return it;
}

std::vector<std::string> dy_split(const std::string &s, char sep) {
  std::vector<std::string> out(1);
  for (char c : s) {
    if (c == sep)
      out.emplace_back();
    else
      out.back() += c;
  }
  return out;
}

void dy_view_changed(dy_box &b) {
  if (dy_viewhook) dy_viewhook(b);
}

dy_box *dy_get(const char *call, int h) {
  auto it = boxes.find(h);
  if (it != boxes.end()) return it->second.get();
  fs_err(1, "%s: invalid \"%d\" handle", call, h);
  return nullptr;
}

dy_box *dy_find(int h) {
  auto it = boxes.find(h);
  return it == boxes.end() ? nullptr : it->second.get();
}

std::vector<int> dy_handles() {
  std::vector<int> out;
  for (const auto &kv : boxes) out.push_back(kv.first);
  return out;
}

int dy_make(std::vector<dy_item> items, const dy_opts &o) {
  auto b = std::make_unique<dy_box>();
  b->handle = ++last_handle;
  b->opts = o;
  b->items = std::move(items);
  int right = 0, bottom = 0, widest = len(o.title);
  int control = 100;
  for (dy_item &it : b->items) {
    it.control = control++;
    int r = 0, bt = 0;
    dy_extent(it, r, bt);
    right = std::max(right, r);
    bottom = std::max(bottom, bt);
    widest = std::max(widest, len(it.text));
    for (const auto &t : it.lines) widest = std::max(widest, len(t));
  }
  b->cols = std::max(right + 3, widest + 8);  // a blank before the right frame
  b->lines = bottom + 2;
  b->focus = -1;
  for (size_t i = 0; i < b->items.size() && b->focus < 0; i++)
    if (b->items[i].kind != DY_KLABEL) b->focus = int(i);
  dy_template_trace(*b);
  int h = b->handle;
  boxes[h] = std::move(b);
  return h;
}

// Where a mapped box goes: its corner in cells, kept inside the grid; a box
// larger than the grid is cut to it, so that it never draws off the screen.
void dy_place(dy_box &b, int &col, int &line, int &cols, int &lines) {
  int cw, ch, gcols, glines;
  cell_size(cw, ch, gcols, glines);
  cols = b.cols, lines = b.lines;
  if (gcols <= 0 || glines <= 0) {
    col = line = 0;
    return;
  }
  cols = std::min(cols, gcols);
  lines = std::min(lines, glines);
  if (b.opts.centre) {
    col = (gcols - cols) / 2 + int(b.opts.x);
    line = (glines - lines) / 2 + int(b.opts.y);
  } else {
    col = int(b.opts.x);
    line = int(b.opts.y);
  }
  col = std::clamp(col, 0, gcols - cols);
  line = std::clamp(line, 0, glines - lines);
}

int dy_map(int h, int geo[4]) {
  dy_box *b = dy_get("dy_map", h);
  if (!b) return -1;
  b->mapped = true;
  if (!dy_viewhook) as_readhook = dy_page_read;
  int cw, ch, gc, gl;
  cell_size(cw, ch, gc, gl);
  int col, line, cols, lines;
  dy_place(*b, col, line, cols, lines);
  b->placed = gc > 0;
  b->px = col * cw;
  b->py = line * ch;
  b->pw = cols * cw;
  b->ph = lines * ch;
  // A window layer that shows the box as a window of its own tells where
  // that went.
  dy_view_changed(*b);
  geo[0] = b->placed ? b->px : 0;
  geo[1] = b->placed ? b->py : 0;
  geo[2] = b->pw;
  geo[3] = b->ph;
  return 0;
}

int dy_unmap(int h) {
  dy_box *b = dy_get("dy_unmap", h);
  if (!b) return -1;
  b->mapped = false;
  dy_view_changed(*b);
  return 0;
}

int dy_qmap(int h) {
  dy_box *b = dy_get("dy_qmap", h);
  return b ? int(b->mapped) : -1;
}

int dy_destroy(int h) {
  auto it = boxes.find(h);
  if (it == boxes.end()) {
    fs_err(1, "dy_destroy: invalid \"%d\" handle", h);
    return -1;
  }
  it->second->mapped = false;
  it->second->gone = true;
  dy_view_changed(*it->second);
  dy_forget(h);
  boxes.erase(h);
  return 0;
}

void dy_destroy_all() {
  for (int h : dy_handles()) dy_destroy(h);
}

int dy_sheader(int h, const std::string &text) {
  dy_box *b = dy_get("dy_sheader", h);
  if (!b) return -1;
  b->opts.title = text;
  b->cols = std::max(b->cols, len(text) + 8);
  dy_view_changed(*b);
  return 0;
}

int dy_sfocus(int h, int item) {
  dy_box *b = dy_get("dy_focus", h);
  if (!b) return -1;
  if (item < 1 || item > int(b->items.size())) {
    fs_err(1, "dy_focus: invalid \"%d\" item number", item);
    return -1;
  }
  b->focus = item - 1;
  dy_view_changed(*b);
  return 0;
}

int dy_setfont(const std::string &name) {
  // face, or face%style%width%height with a whole width and height
  std::vector<std::string> parts = dy_split(name, '%');
  auto whole = [](const std::string &s) {
    return !s.empty() && s.find_first_not_of("0123456789") == std::string::npos;
  };
  bool ok = !parts[0].empty() && (parts.size() == 1 || parts.size() == 4) &&
            (parts.size() == 1 || (whole(parts[2]) && whole(parts[3])));
  fs_plat *p = fs_layer();
  if (ok && p && p->font_known(parts[0]) == 0) ok = false;
  if (!ok) return 1;
  font_name = name;
  // Boxes the window already shows take the new font too.
  for (int h : dy_handles())
    if (dy_box *b = dy_find(h)) dy_view_changed(*b);  // one may have gone meanwhile
  return 0;
}

const std::string &dy_font() { return font_name; }

int asffont_dy(const char *font) {
  if (!fs.started) {
    fs_err(1, "asffont_dy: call fsinit() first.");
    return 1;
  }
  std::string name = font ? font : "";
  if (dy_setfont(name) != 0) {
    fs_err(1, "asffont_dy : invalid font %s", name.c_str());
    return 1;
  }
  as_errno = 0;
  return 0;
}
