// A box where there is no window to give it controls of its own: a page of
// fields drawn over a copy of the editor's page, in a frame. Every key comes
// to the box's own handling (the read ends at each key), so that Tab and the
// arrows move among the items, Space toggles and selects, lists scroll,
// Enter and the buttons report, Escape cancels; a click on an item acts as
// Space on it. The right button on a list offers its line or all its lines
// to the clipboard, in a pop-up box read inside the box's own read.
#include "fields/dialogs/dy_int.h"
#include "fields/fields.h"
#include "fields/fs_int.h"
#include "platform/platform.h"

#include <algorithm>
#include <cctype>

namespace {

constexpr uint32_t PAGE_BASE = 0x44590000;  // a box's page: this plus its handle
constexpr int FIRST_ID = 1000;             // ids of the items' fields; fillers below

// A place the focus can stop at: an item, and the toggle of a group.
struct stop {
  int item;  // index in the box's items
  int sub;   // toggle from 0; 0 for other kinds
};

// A field of the box's page and what it shows.
struct seg {
  int line, col, width;  // from 1, on the grid
  int hilite;            // 0 normal, 2 reverse, 3 reverse underline, 4 underline
  std::string text;      // what it shows
  int item = -1;         // the item behind it, -1 for frame, label or background
  int sub = 0;           // toggle, or list row from 0
};

struct state {
  std::vector<std::string> back;        // the editor's page behind it
  std::vector<seg> segs;                // the fields as last made
  std::vector<stop> stops;              // where the focus may stop
  int at = 0;                           // index in stops of the focus
  size_t icur = 0;                      // cursor in the focused input's text
  int box = 0;                          // the box whose keys are read now, 0 none
};
state st;

std::string fit(std::string s, int width) {
  s.resize(size_t(std::max(0, width)), ' ');
  return s;
}

// A button's text as shown: a `&` marks the letter that presses it, and
// `&&` stands for one `&`.
std::string shown_label(const std::string &t) {
  std::string out;
  for (size_t i = 0; i < t.size(); i++) {
    if (t[i] == '&' && i + 1 < t.size()) i++;
    out += t[i];
  }
  return out;
}

// The letter a button's `&` marks, in lower case; 0 for none.
int mnemonic(const std::string &t) {
  for (size_t i = 0; i + 1 < t.size(); i++) {
    if (t[i] != '&') continue;
    if (t[i + 1] != '&') return tolower((unsigned char)t[i + 1]);
    i++;
  }
  return 0;
}

std::vector<stop> stops_of(const dy_box &b) {
  std::vector<stop> out;
  for (int i = 0; i < int(b.items.size()); i++) {
    const dy_item &it = b.items[i];
    if (it.kind == DY_KTG) {
      for (int t = 0; t < int(it.lines.size()); t++) out.push_back({i, t});
    } else if (it.kind != DY_KLABEL) {
      out.push_back({i, 0});
    }
  }
  return out;
}

bool focused(int item, int sub = 0) {
  return !st.stops.empty() && st.stops[st.at].item == item &&
         (st.stops[st.at].sub == sub);
}

// The fields of one item, from the box's inner corner.
void item_segs(const dy_box &b, int i, int l0, int c0, std::vector<seg> &out) {
  const dy_item &it = b.items[i];
  int x = c0 + int(it.x), y = l0 + int(it.y);
  auto add = [&](int line, int col, std::string text, int hilite, int item, int sub) {
    out.push_back(seg{line, col, int(text.size()), hilite, std::move(text), item, sub});
  };
  switch (it.kind) {
    case DY_KLABEL:
      if (!it.text.empty()) add(y, x, it.text, 0, -1, 0);
      break;
    case DY_KINPUT:
      if (it.width > 0) {
        int w = std::max(1, int(it.width));
        size_t from = focused(i) && st.icur >= size_t(w) ? st.icur - size_t(w) + 1 : 0;
        add(y, x, fit(it.text.substr(std::min(from, it.text.size())), w), focused(i) ? 3 : 4, i, 0);
      } else {
        std::vector<std::string> ls = dy_split(it.text, '\n');
        int rows = std::max(3, int(it.height)), w = DY_MULTI_COLS;
        for (int r = 0; r < rows; r++)
          add(y + r, x, fit(r < int(ls.size()) ? ls[r] : "", w), focused(i) ? 3 : 4, i, r);
      }
      break;
    case DY_KBUTTON:
      add(y, x, "< " + shown_label(it.text) + " >", focused(i) ? 2 : 0, i, 0);
      break;
    case DY_KTG:
      if (!it.text.empty()) add(y, x, it.text, 0, -1, 0);
      for (int t = 0; t < int(it.lines.size()); t++) {
        std::string mark = it.exclusive ? (it.on[t] ? "(*) " : "( ) ") : (it.on[t] ? "[x] " : "[ ] ");
        add(l0 + int(it.ty[t]), c0 + int(it.tx[t]), mark + it.lines[t],
            focused(i, t) ? 2 : 0, i, t);
      }
      break;
    case DY_KCH: {
      size_t widest = 0;
      for (const auto &t : it.lines) widest = std::max(widest, t.size());
      int tx = x;
      if (!it.text.empty()) {
        add(y, x, it.text, 0, -1, 0);
        tx += int(it.text.size()) + 1;
      }
      const std::string &now = it.lines.empty() ? std::string() : it.lines[it.selected - 1];
      add(y, tx, "< " + fit(now, int(widest)) + " >", focused(i) ? 2 : 0, i, 0);
      break;
    }
    default: {  // a scrolled list
      if (!it.text.empty()) add(y, x, it.text, 0, -1, 0);
      int rows = std::max(1, int(it.height)), w = std::max(1, int(it.width));
      int n = int(it.lines.size());
      for (int r = 0; r < rows; r++) {
        int k = it.top + r;
        std::string text = k < n ? fit(it.lines[k], w) : fit("", w);
        bool more = (r == 0 && it.top > 0) || (r == rows - 1 && it.top + rows < n);
        text += more ? (r == 0 ? '^' : 'v') : ' ';
        int hl = k < n && it.on[k] ? 2 : 0;
        if (focused(i) && k == it.cursor) hl = hl ? 3 : 4;
        add(y + 1 + r, x, text, hl, i, r);
      }
      break;
    }
  }
}

// The page: the editor's rows with the frame and the items drawn on them;
// the items as fields of their own, the rest as protected fillers.
void compose(dy_box &b) {
  int col0, line0, cols, lines, gl = 0, gc = 0;
  dy_place(b, col0, line0, cols, lines);
  fs_grid(&gl, &gc);
  if (cols < 4 || lines < 3) cols = lines = 0;  // no room for a frame: nothing of the box shows
  std::vector<std::string> canvas(size_t(gl), std::string(size_t(gc), ' '));
  for (int l = 0; l < gl && l < int(st.back.size()); l++)
    canvas[l].replace(0, std::min(st.back[l].size(), size_t(gc)), st.back[l], 0, size_t(gc));
  for (int l = 0; l < lines; l++) {
    bool edge = l == 0 || l == lines - 1;
    std::string row = edge ? "+" + std::string(size_t(cols - 2), '-') + "+"
                           : "|" + std::string(size_t(cols - 2), ' ') + "|";
    canvas[line0 + l].replace(size_t(col0), size_t(cols), row);
  }
  std::string title = b.opts.title.empty() ? std::string() : " " + b.opts.title + " ";
  if (!title.empty() && cols > 4)
    canvas[line0].replace(size_t(col0 + 2), std::min(title.size(), size_t(cols - 4)), title, 0,
                          size_t(cols - 4));
  std::vector<seg> raw;
  for (int i = 0; i < int(b.items.size()); i++)
    item_segs(b, i, line0 + 2, col0 + 2, raw);
  // What falls outside the frame's inside is cut away: a box larger than
  // the screen shows what fits.
  st.segs.clear();
  std::vector<uint8_t> used(size_t(gl * gc), 0);
  for (seg s : raw) {
    int lo = std::max(s.col, col0 + 2), hi = std::min(s.col + s.width - 1, col0 + cols - 1);
    if (s.line < line0 + 2 || s.line > line0 + lines - 1 || hi < lo) continue;
    s.text = s.text.substr(size_t(lo - s.col), size_t(hi - lo + 1));
    s.col = lo, s.width = hi - lo + 1;
    bool clash = false;
    for (int c = s.col; c <= hi; c++) clash = clash || used[size_t((s.line - 1) * gc + c - 1)];
    if (clash) continue;  // items placed on top of each other: the first one shows
    for (int c = s.col; c <= hi; c++) used[size_t((s.line - 1) * gc + c - 1)] = 1;
    st.segs.push_back(s);
  }
  std::vector<int32_t> rows;
  auto row = [&](int id, int line, int col, int width, int hilite, int flags) {
    const int32_t r[14] = {id, line, col, 1, width, 2, 1, 0, 0, hilite, 0, flags, 0, 0};
    rows.insert(rows.end(), r, r + 14);
  };
  for (size_t k = 0; k < st.segs.size(); k++) {
    const seg &s = st.segs[k];
    row(FIRST_ID + int(k), s.line, s.col, s.width, s.hilite, s.item >= 0 ? FSF_BUTTON : 0);
  }
  std::vector<std::pair<int, std::string>> fillers;
  for (int l = 1; l <= gl; l++) {
    for (int c = 1; c <= gc;) {
      if (used[size_t((l - 1) * gc + c - 1)]) {
        c++;
        continue;
      }
      int e = c;
      while (e < gc && !used[size_t((l - 1) * gc + e)]) e++;
      int id = int(fillers.size()) + 1;
      row(id, l, c, e - c + 1, 0, 0);
      fillers.push_back({id, canvas[l - 1].substr(size_t(c - 1), size_t(e - c + 1))});
      c = e + 1;
    }
  }
  asfclr();
  asrfmt(int(rows.size() / 14), 14, rows.data());
  for (const auto &f : fillers) ascput(f.first, int(f.second.size()), f.second.c_str());
  int cur_id = 0, cur_col = 1;
  for (size_t k = 0; k < st.segs.size(); k++) {
    const seg &s = st.segs[k];
    ascput(FIRST_ID + int(k), s.width, s.text.c_str());
    if (cur_id == 0 && s.item >= 0 && focused(s.item, b.items[s.item].kind == DY_KTG ? s.sub : 0)) {
      const dy_item &it = b.items[s.item];
      bool at_row = it.kind != DY_KSCL || s.sub == it.cursor - it.top;
      if (at_row) {
        cur_id = FIRST_ID + int(k);
        if (it.kind == DY_KINPUT && it.width > 0)
          cur_col = 1 + int(std::min(st.icur, size_t(std::max(0, s.width - 1))));
      }
    }
  }
  if (cur_id) asfcur_quiet(cur_id, 1, cur_col);
}

// ---- what the keys do ------------------------------------------------------------

void move_focus(int by) {
  if (st.stops.empty()) return;
  int n = int(st.stops.size());
  st.at = ((st.at + by) % n + n) % n;
  st.icur = 0;
}

void list_to(dy_item &it, int line) {
  int n = int(it.lines.size());
  if (n == 0) return;
  it.cursor = std::clamp(line, 0, n - 1);
  int rows = std::max(1, int(it.height));
  if (it.cursor < it.top) it.top = it.cursor;
  if (it.cursor >= it.top + rows) it.top = it.cursor - rows + 1;
}

long long event_ms() { return (long long)fs.last.seconds * 1000 + fs.last.microseconds / 1000; }

// Space on an item, or a click on it: the item's own action.
void act(dy_box &b, const stop &s, int row) {
  dy_item &it = b.items[s.item];
  int h = b.handle;
  int n = 0;
  for (int i = 0; i <= s.item; i++) n += b.items[i].kind == it.kind;
  switch (it.kind) {
    case DY_KBUTTON:
      dy_button(h, n);
      break;
    case DY_KTG:
      bu_dy_stg(h, n, s.sub + 1, it.exclusive ? 1 : !it.on[s.sub]);
      break;
    case DY_KCH:
      if (!it.lines.empty()) {
        it.selected = it.selected % int(it.lines.size()) + 1;
        dy_choice(h, n, it.selected);
      }
      break;
    case DY_KSCL: {
      int line = row >= 0 ? it.top + row : it.cursor;
      if (line >= int(it.lines.size())) break;
      list_to(it, line);
      if (it.multiple) {
        it.on[line] = !it.on[line];
      } else {
        std::fill(it.on.begin(), it.on.end(), 0);
        it.on[line] = 1;
      }
      dy_listclick(h, n, line + 1, event_ms());
      break;
    }
    default:
      break;
  }
}

// Typing and editing keys in an input line; false when the key is not one.
bool edit(dy_item &it, int code, int ch) {
  std::string &t = it.text;
  st.icur = std::min(st.icur, t.size());
  if (ch > 0 && ch < 256) {
    t.insert(st.icur++, 1, char(ch));
  } else if (code == as_bskey) {
    if (st.icur > 0) t.erase(--st.icur, 1);
  } else if (code == as_delkey) {
    if (st.icur < t.size()) t.erase(st.icur, 1);
  } else if (code == FSK_LEFT) {
    if (st.icur > 0) st.icur--;
  } else if (code == FSK_RIGHT) {
    if (st.icur < t.size()) st.icur++;
  } else if (code == FSK_HOME) {
    st.icur = 0;
  } else if (code == FSK_END) {
    st.icur = t.size();
  } else if (code == '\r' && it.width <= 0) {
    t.insert(st.icur++, 1, '\n');
  } else {
    return false;
  }
  return true;
}

void key(dy_box &b, int ch) {
  int code = fs.last.code, h = b.handle;
  bool shift = as_evmods & 1, ctrl = as_evmods & 2;
  dy_item *it = st.stops.empty() ? nullptr : &b.items[st.stops[st.at].item];
  if (code == '\t') return move_focus(shift ? -1 : 1);
  if (code == 27) return dy_escape(b);
  if (code > FSK_F0 && code <= FSK_F0 + 24) return dy_key(h, 'F', code - FSK_F0);
  if (ctrl && code < 256 && code > ' ') return dy_key(h, '^', toupper(code));
  if (it && it->kind == DY_KINPUT && edit(*it, code, ch)) return;
  // A button's marked letter presses it from anywhere in the box.
  for (int i = 0; ch > ' ' && ch < 127 && i < int(st.stops.size()); i++) {
    const dy_item &x = b.items[st.stops[i].item];
    if (x.kind != DY_KBUTTON || mnemonic(x.text) != tolower(ch)) continue;
    st.at = i;
    return act(b, st.stops[i], -1);
  }
  if (it && it->kind == DY_KSCL && (code == FSK_UP || code == FSK_DOWN || code == FSK_PGUP ||
                                    code == FSK_PGDN)) {
    int page = std::max(1, int(it->height));
    int by = code == FSK_UP ? -1 : code == FSK_DOWN ? 1 : code == FSK_PGUP ? -page : page;
    list_to(*it, it->cursor + by);
    return;
  }
  if (it && it->kind == DY_KCH && (code == FSK_LEFT || code == FSK_RIGHT)) {
    int n = int(it->lines.size());
    if (n) it->selected = code == FSK_LEFT ? (it->selected + n - 2) % n + 1 : it->selected % n + 1;
    int k = 0;
    for (const dy_item &x : b.items) {
      k += x.kind == DY_KCH;
      if (&x == it) break;
    }
    if (n) dy_choice(h, k, it->selected);
    return;
  }
  if (code == FSK_UP || code == FSK_LEFT) return move_focus(-1);
  if (code == FSK_DOWN || code == FSK_RIGHT) return move_focus(1);
  if (ch == ' ' && it) return act(b, st.stops[st.at], -1);
  if (code == '\r') {
    if (it && it->kind == DY_KBUTTON) return act(b, st.stops[st.at], -1);
    return dy_key(h, 'E', 0);
  }
}

// What the list's pop-up offers: the line under the pointer, or every line.
struct copy_row {
  const char *label;
  bool all;
};
constexpr copy_row copy_rows[] = {{"Copy item", false}, {"Copy all", true}};

// The right button pressed on a list: the pop-up at the pointer, and the
// copy chosen onto the clipboard. The list's selection stays as it was, and
// the box's macro hears nothing of it.
void list_popup(dy_box &b) {
  int id = 0, line = 0, col = 0;
  asqmou(0, &id, &line, &col);
  const seg *under = nullptr;
  for (const seg &s : st.segs)
    if (s.line == line && col >= s.col && col < s.col + s.width) under = &s;
  if (!under || under->item < 0 || b.items[under->item].kind != DY_KSCL) return;
  int h = b.handle, item = under->item;
  size_t k = size_t(b.items[item].top + under->sub);
  std::vector<const copy_row *> offered;
  std::vector<std::string> labels;
  for (const copy_row &r : copy_rows) {
    if (b.items[item].lines.empty() || (!r.all && k >= b.items[item].lines.size())) continue;
    offered.push_back(&r);
    labels.push_back(r.label);
  }
  if (labels.empty()) return;
  int chosen = dy_menu(labels, "", 0, line, col);
  const dy_box *now = dy_find(h);  // looked up again: the box may have gone meanwhile
  if (!chosen || !now || item >= int(now->items.size())) return;
  const std::vector<std::string> &lines = now->items[item].lines;
  pl_clip c;
  if (offered[size_t(chosen - 1)]->all)
    c.lines = lines;
  else if (k < lines.size())
    c.lines = {lines[k]};
  if (!c.lines.empty()) pl_clip_set(c);
}

void click(dy_box &b, int id) {
  size_t k = size_t(id - FIRST_ID);
  if (id < FIRST_ID || k >= st.segs.size() || st.segs[k].item < 0) return;
  const seg &s = st.segs[k];
  const dy_item &it = b.items[s.item];
  for (int i = 0; i < int(st.stops.size()); i++)
    if (st.stops[i].item == s.item && (it.kind != DY_KTG || st.stops[i].sub == s.sub)) st.at = i;
  if (it.kind != DY_KINPUT) act(b, st.stops[st.at], it.kind == DY_KSCL ? s.sub : -1);
}

// One box's turn at the keys, on its own page, until it leaves the screen
// or has an event for its macro; false when the read is to end at once.
bool read_box(int h) {
  uint32_t page = PAGE_BASE + uint32_t(h);
  fspcrt(page);
  fspsel(page);
  bool go_on = true;
  dy_box *b = dy_find(h);
  st.stops = stops_of(*b);
  st.at = 0;
  for (int i = 0; i < int(st.stops.size()); i++)
    if (st.stops[i].item == b->focus && st.at == 0) st.at = i;
  st.icur = 0;
  st.box = h;
  while (dy_pending() == 0 && (b = dy_find(h)) && b->mapped) {
    compose(*b);
    // Every press is the box's: none places the cursor or opens the
    // editor's menus under it.
    int clickpos = fs.clickpos;
    fs_menuhook menus = as_menuhook;
    asfclickpos(0);
    as_menuhook = nullptr;
    asfonekey(1);
    int code = 0, value = 0, mod = 0;
    asread(&code, &value, &mod);
    asfonekey(0);
    asfclickpos(clickpos);
    as_menuhook = menus;
    if (code == 23 || code == 25 || code == DY_READCODE) {
      go_on = false;
      break;
    }
    if (code == 672) {
      dy_escape(*b);
    } else if (code == AS_ONEKEY) {
      key(*b, value);
    } else if (code == 38) {
      click(*b, value);
    } else if (code == 20 && value == 3) {
      list_popup(*b);
    }
    if ((b = dy_find(h))) b->focus = st.stops.empty() ? -1 : st.stops[st.at].item;
  }
  fspdel(page);
  return go_on;
}

}  // namespace

int dy_page_top() {
  if (!fs.started || dy_noscreen) return 0;
  int top = 0;
  for (int h : dy_handles()) {
    dy_box *b = dy_find(h);
    if (b->mapped && b->opts.grab != DY_DISPLAY) top = h;
  }
  return top;
}

int dy_page_read() {
  int h = dy_page_top();
  // Inside a box's read only a newer box (its pop-up) reads, on its own
  // page over it; the box under it gets its keys back where it was.
  int floor = st.box;
  if (h <= floor) return 0;
  state outer = std::move(st);
  st = state{};
  // What is typed into a box is the box's: no hook of the page under it
  // takes it.
  fs_typehook under = as_typehook;
  as_typehook = nullptr;
  uint32_t prev = fs_curpage();
  asrefresh();
  st.back = fs_rows();
  // The newest box first; when it goes, the one under it takes the keys.
  while (h > floor && dy_pending() == 0 && read_box(h)) h = dy_page_top();
  as_typehook = under;
  st = std::move(outer);
  if (prev != FS_NOPAGE) fspsel(prev);
  return 1;
}
