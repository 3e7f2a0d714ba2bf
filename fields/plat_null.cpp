// The headless screen layer: batch runs and tests. The refresh compares and
// stops here, alerts go to standard error, and events come from a key script.
//
// Key script: one event a line; blank lines and lines starting with # are
// skipped. Words are separated by blanks; key names ignore case.
//
//   type TEXT              each character of TEXT typed (TEXT runs to the end
//                          of the line, blanks included; UTF-8)
//   key NAME               a key pressed and released
//   press NAME             a key pressed and held (until a release line)
//   release NAME           a key released
//   click LINE COL [BUTTON]  a button (1 left, 2 middle, 3 right; 1 if not
//                          given) pressed and released on a cell
//   dclick LINE COL        two left clicks in quick succession
//   drag LINE COL LINE COL [s-|c-|m-]  the left button pressed on the first
//                          cell, moved to the second and released there,
//                          optionally with Shift, Ctrl or Alt held
//   wheel up|down [s-|c-]  the wheel, optionally with Shift or Ctrl
//   resize ROWS COLS       the window now has this grid
//   focus in|out           the window gains or loses the input focus
//   close                  the close box
//   menu TITLE             the item of the menu bar (else of the page's pop-up
//                          menu) titled TITLE (to the end of the line) chosen
//   tool N                 the tool bar's button at position N (from 0) pressed
//   wait MS                nothing happens for a while (ends a read with a
//                          time-out when one is set)
//   settle                 the children started so far have ended and all
//                          their output has been taken in (at most 20 s)
//   dump                   write the screen: one row a line (trailing blanks
//                          cut), then the status line
//   dumpattr               as dump, then the hilite, colour and intensity
//                          planes, one symbol a cell
//
// A key NAME is an optional prefix s-, c-, m- (l- and r- are m- too) or a
// combination of two or three of s, c, m joined by + (s+c-, c+m-, s+c+m-, ...),
// then one of: enter, return, tab, backspace, delete, escape, space, insert, home,
// end, pageup, pagedown, uparrow, downarrow, leftarrow, rightarrow,
// printscreen, scrolllock, pause, rctrl (right Ctrl alone), ralt (right Alt
// alone), f1 to f24 (or pf1 to pf24), l1 to l12, r1 to r15, or a single
// character.
// Each script line takes one second of the layer's clock, so two clicks on
// different lines are never a double click.
#include "fields/fields.h"
#include "fields/plat_test.h"
#include "platform/platform.h"
#include <cstdio>
#include <cstdlib>
#include <chrono>
#include <cstring>
#include <fstream>
#include <sstream>
#include <strings.h>

namespace {

constexpr int CELL_W = 8;   // pretended cell width in pixels
constexpr int CELL_H = 16;  // pretended cell height in pixels

struct keyname {
  const char *name;  // name in the script
  int code;          // event code; 0 for the two keys with their own setting
};
constexpr keyname keynames[] = {
    {"enter", 13},          {"return", 10},         {"tab", 9},           {"backspace", 0},
    {"delete", 0},          {"escape", 27}, {"space", 32},        {"insert", FSK_INSERT}, {"home", FSK_HOME},
    {"end", FSK_END},       {"pageup", FSK_PGUP},   {"pagedown", FSK_PGDN}, {"uparrow", FSK_UP},
    {"downarrow", FSK_DOWN}, {"leftarrow", FSK_LEFT}, {"rightarrow", FSK_RIGHT},
    {"printscreen", FSK_PRINT}, {"scrolllock", FSK_SCROLL}, {"pause", FSK_PAUSE},
    {"rctrl", 10},          {"ralt", 6},
};
static_assert(sizeof keynames / sizeof keynames[0] == 21, "twenty-one named keys");

// Parses NAME with its prefix into an event; false when unknown.
bool parsekey(std::string w, fs_event &e, int &ch) {
  e = fs_event{};
  e.source = FS_SRC_NONE;
  ch = -1;
  size_t dash = w.find('-');
  if (dash != std::string::npos && dash > 0 && dash + 1 < w.size()) {
    for (size_t i = 0; i < dash; i++) {
      char c = char(tolower(w[i]));
      if (i % 2 == 1) {
        if (c != '+') return false;
        continue;
      }
      if (c == 's') e.modifiers |= FSM_SHIFT;
      else if (c == 'c') e.modifiers |= FSM_CTRL;
      else if (c == 'm' || c == 'l' || c == 'r') e.modifiers |= FSM_ALT;
      else return false;
    }
    if (dash % 2 == 0) return false;
    w = w.substr(dash + 1);
  }
  if (w.size() == 1) {
    e.code = static_cast<unsigned char>(w[0]);
    ch = e.code;
    return true;
  }
  for (const keyname &k : keynames)
    if (strcasecmp(w.c_str(), k.name) == 0) {
      e.code = uint16_t(k.code ? k.code : strcasecmp(k.name, "delete") == 0 ? as_delkey : as_bskey);
      if (e.code < 256) ch = e.code;
      return true;
    }
  static const struct {
    char letter;  // bank
    int max;      // keys
    int base;     // code of key 0
  } banks[] = {{'f', 24, FSK_F0}, {'l', 12, FSK_EXTRA1 - 1}, {'r', 15, FSK_PRINT - 1}};
  if (w.size() > 2 && tolower(w[0]) == 'p' && tolower(w[1]) == 'f') w = w.substr(1);
  char b = char(tolower(w[0]));
  for (const auto &k : banks) {
    if (b != k.letter) continue;
    char *end = nullptr;
    long n = strtol(w.c_str() + 1, &end, 10);
    if (*end || n < 1 || n > k.max) return false;
    e.code = uint16_t(k.base + n);
    return true;
  }
  return false;
}

std::vector<std::string> words(const std::string &s) {
  std::istringstream in(s);
  std::vector<std::string> w;
  std::string t;
  while (in >> t) w.push_back(t);
  return w;
}

bool number(const std::string &s, int &v) {
  char *end = nullptr;
  long n = strtol(s.c_str(), &end, 10);
  if (s.empty() || *end) return false;
  v = int(n);
  return true;
}

// The id of the first item titled `title` in a menu and its sub-menus; -1
// when there is none.
int titled(const fs_menu *m, const std::string &title) {
  if (!m) return -1;
  for (auto &it : m->items) {
    if (!it.sub && it.title == title) return it.id;
    if (int s = titled(it.sub.get(), title); s >= 0) return s;
  }
  return -1;
}

}  // namespace

fs_nullplat::fs_nullplat(int lines, int cols) : lines_(lines), cols_(cols) {}

void fs_nullplat::bell() { bells++; }
void fs_nullplat::flash() { flashes++; }
void fs_nullplat::alert(const std::string &text) {
  if (!quiet) fprintf(stderr, "%s\n", text.c_str());
}

void fs_nullplat::geometry(fs_metrics &m) {
  m = fs_metrics{};
  m.cell_w = CELL_W;
  m.cell_h = CELL_H;
  m.client_w = cols_ * CELL_W;
  m.client_h = (lines_ + 1) * CELL_H;
  m.screen_w = 1920;
  m.screen_h = 1080;
}

void fs_nullplat::size(int lines, int cols) {
  if (lines > 0) lines_ = lines;
  if (cols > 0) cols_ = cols;
}

void fs_nullplat::script(const std::string &text) {
  std::istringstream in(text);
  std::string l;
  while (std::getline(in, l)) todo.push_back(l);
}

// A wait line lets time pass: each call takes its slice of it as a time-out.
int fs_nullplat::wait(int ms) {
  if (fs_evpending()) return FS_WAIT_EVENT;
  // Output a child has written by now is taken before the next script line.
  if (pl_watch_poll(0)) return FS_WAIT_EVENT;
  for (;;) {
    if (waitleft > 0) {
      waitleft = ms < 0 ? 0 : waitleft - (ms > 0 ? ms : 1);
      return FS_WAIT_TIMEOUT;
    }
    if (todo.empty()) return FS_WAIT_GONE;
    int r = step();
    if (marked || fs_evpending()) {
      marked = false;
      return FS_WAIT_EVENT;
    }
    if (r == FS_WAIT_GONE) return r;
  }
}

// Key lines that come next were typed ahead: a running macro sees them.
// Other lines (a dump, a wait) keep their place after the macro.
void fs_nullplat::peek() {
  static const char *const typed[] = {"key", "type", "press", "release"};
  while (!todo.empty()) {
    std::vector<std::string> w = words(todo.front());
    bool input = false;
    for (const char *t : typed)
      if (!w.empty() && strcasecmp(w[0].c_str(), t) == 0) input = true;
    if (!input) return;
    step();
  }
}

int fs_nullplat::step() {
  if (todo.empty()) return FS_WAIT_GONE;
  std::string l = todo.front(), err;
  todo.pop_front();
  lineno++;
  clock++;
  int r = exec(l, err);
  if (r < 0) {
    char buf[32];
    snprintf(buf, sizeof buf, "line %d: ", lineno);
    errors.push_back(buf + err);
    if (!quiet) fprintf(stderr, "key script: %s%s\n", buf, err.c_str());
    return FS_WAIT_EVENT;
  }
  return r;
}

// Runs one script line: FS_WAIT_EVENT, FS_WAIT_TIMEOUT for a wait, -1 on error.
int fs_nullplat::exec(const std::string &line, std::string &err) {
  std::vector<std::string> w = words(line);
  if (w.empty() || w[0][0] == '#') return FS_WAIT_EVENT;
  const std::string &verb = w[0];
  fs_event e{};
  e.source = FS_SRC_NONE;
  e.seconds = clock;
  int ch = -1;
  auto post = [&](fs_event ev, int c) {
    ev.seconds = clock;
    fs_postev(ev, c);
  };
  auto at = [&](int l, int c, fs_event &ev) {
    ev.x = int16_t((c - 1) * CELL_W + CELL_W / 2);
    ev.y = int16_t((l - 1) * CELL_H + CELL_H / 2);
  };
  if (verb == "type") {
    size_t p = line.find("type") + 4;
    if (p < line.size() && line[p] == ' ') p++;
    // The script is UTF-8 text, decoded as a terminal in a UTF-8 locale
    // would: a character past Latin-1 comes as FSK_CHAR; a byte that is not
    // UTF-8 is typed as it stands.
    const unsigned char *t = reinterpret_cast<const unsigned char *>(line.data());
    for (size_t i = p; i < line.size();) {
      uint32_t cp;
      int n = fs_utf8_seq(t + i, long(line.size() - i), cp);
      if (n == 0) cp = t[i], n = 1;
      e.code = cp > 255 ? uint16_t(FSK_CHAR) : uint16_t(cp);
      post(e, int(cp));
      i += size_t(n);
    }
    return FS_WAIT_EVENT;
  }
  if (verb == "key" || verb == "press" || verb == "release") {
    if (w.size() != 2 || !parsekey(w[1], e, ch)) {
      err = "unknown key: " + (w.size() > 1 ? w[1] : std::string());
      return -1;
    }
    if (verb != "release") post(e, ch);
    e.released = 1;
    if (verb != "press") post(e, ch);
    return FS_WAIT_EVENT;
  }
  if (verb == "click" || verb == "dclick") {
    int l, c, b = 1;
    if (w.size() < 3 || w.size() > 4 || !number(w[1], l) || !number(w[2], c) ||
        (w.size() == 4 && (!number(w[3], b) || b < 1 || b > 3))) {
      err = "bad " + verb;
      return -1;
    }
    at(l, c, e);
    e.code = uint16_t(FSK_LEFT_B + b - 1);
    for (int n = verb == "dclick" ? 2 : 1; n > 0; n--) {
      e.released = 0;
      post(e, -1);
      e.released = 1;
      post(e, -1);
    }
    return FS_WAIT_EVENT;
  }
  if (verb == "drag") {
    int l1, c1, l2, c2;
    static const struct {
      const char *word;  // the optional last word
      uint16_t mods;     // the modifier held through the drag
    } held[] = {{"s-", FSM_SHIFT}, {"c-", FSM_CTRL}, {"m-", FSM_ALT}};
    if (w.size() == 6)
      for (const auto &h : held)
        if (strcasecmp(w[5].c_str(), h.word) == 0) e.modifiers = h.mods;
    if ((w.size() != 5 && (w.size() != 6 || !e.modifiers)) || !number(w[1], l1) ||
        !number(w[2], c1) || !number(w[3], l2) || !number(w[4], c2)) {
      err = "bad drag";
      return -1;
    }
    e.code = FSK_LEFT_B;
    at(l1, c1, e);
    post(e, -1);
    e.code = FSK_DRAG;
    at(l2, c2, e);
    post(e, -1);
    e.code = FSK_LEFT_B;
    e.released = 1;
    post(e, -1);
    return FS_WAIT_EVENT;
  }
  if (verb == "wheel") {
    if (w.size() < 2 || w.size() > 3 || (w[1] != "up" && w[1] != "down") ||
        (w.size() == 3 && w[2] != "s-" && w[2] != "c-")) {
      err = "bad wheel";
      return -1;
    }
    e.code = w[1] == "up" ? FSK_WHEELUP : FSK_WHEELDOWN;
    if (w.size() == 3) e.modifiers = w[2] == "s-" ? FSM_SHIFT : FSM_CTRL;
    post(e, -1);
    return FS_WAIT_EVENT;
  }
  if (verb == "resize") {
    int l, c;
    if (w.size() != 3 || !number(w[1], l) || !number(w[2], c) || l < 1 || c < 1) {
      err = "bad resize";
      return -1;
    }
    size(l, c);
    fs_mark(FS_MARK_RESIZE);
    marked = true;
    return FS_WAIT_EVENT;
  }
  // A choice in the menus by its title, a tool bar button by its position
  // from 0: what the window posts when the user makes them.
  if (verb == "menu" && w.size() > 1) {
    size_t p = line.find("menu") + 4;
    std::string title = line.substr(line.find_first_not_of(" \t", p));
    title.erase(title.find_last_not_of(" \t") + 1);
    int id = titled(fs_menuget(0), title);
    if (id < 0) id = titled(fs_menuget(1), title);
    if (id < 0) {
      err = "no menu item " + title;
      return -1;
    }
    e.code = FSK_MENUBAR;
    post(e, id);
    return FS_WAIT_EVENT;
  }
  if (verb == "tool") {
    int n;
    if (w.size() != 2 || !number(w[1], n) || n < 0 || n >= FS_PASTE_ID) {
      err = "bad tool";
      return -1;
    }
    e.code = FSK_TOOLBAR;
    post(e, n);
    return FS_WAIT_EVENT;
  }
  if (verb == "focus") {
    if (w.size() != 2 || (w[1] != "in" && w[1] != "out")) {
      err = "bad focus";
      return -1;
    }
    e.code = w[1] == "in" ? FSK_FOCUSIN : FSK_FOCUSOUT;
    post(e, -1);
    return FS_WAIT_EVENT;
  }
  if (verb == "close" && w.size() == 1) {
    fs_closebox();
    marked = true;
    return FS_WAIT_EVENT;
  }
  if (verb == "wait") {
    int ms;
    if (w.size() != 2 || !number(w[1], ms) || ms < 0) {
      err = "bad wait";
      return -1;
    }
    clock += uint32_t(ms / 1000);
    waitleft += ms;
    return FS_WAIT_EVENT;
  }
  if (verb == "settle" && w.size() == 1) {
    // Real time, unlike wait: the children run outside the script's clock.
    // Up to a minute: a fast child fills many reads, each of a pipe's worth.
    auto until = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (pl_watch_count() > 0 && std::chrono::steady_clock::now() < until) pl_watch_poll(10);
    marked = true;
    return FS_WAIT_EVENT;
  }
  if ((verb == "dump" || verb == "dumpattr") && w.size() == 1) {
    fs_dump(out, verb == "dumpattr");
    fflush(out);
    return FS_WAIT_EVENT;
  }
  err = "unknown line: " + line;
  return -1;
}

fs_plat *fs_plat_null(int lines, int cols) { return new fs_nullplat(lines, cols); }

int fs_null_script(fs_plat *layer, const char *path, std::FILE *out) {
  fs_nullplat *n = dynamic_cast<fs_nullplat *>(layer);
  if (!n) return -1;
  std::string text;
  if (strcmp(path, "-") == 0) {
    std::ostringstream s;
    char buf[4096];
    size_t got;
    while ((got = fread(buf, 1, sizeof buf, stdin)) > 0) s.write(buf, std::streamsize(got));
    text = s.str();
  } else {
    std::ifstream in(path);
    if (!in) return -1;
    std::ostringstream s;
    s << in.rdbuf();
    text = s.str();
  }
  n->script(text);
  if (out) n->out = out;
  return 0;
}
