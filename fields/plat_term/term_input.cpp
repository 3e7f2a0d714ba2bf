// Terminal input: what a character terminal sends, turned into the events of
// the field manager. Curses matches the keys its terminal description knows
// and the xterm sequences of modified keys the layer adds; what it leaves as
// plain characters after an escape (the mouse, focus reports, sequences no
// one knows) is taken apart here, so that no stray sequence is ever typed.
#define NCURSES_NOMACROS 1
#include "fields/plat_term/term_int.h"
#include "platform/platform.h"
#include <cstdio>
#include <curses.h>

namespace {

constexpr int DELKEY = -1;  // the delete-character key, whose code is a setting
constexpr int BSKEY = -2;   // the backspace key, likewise
constexpr int IGNORE = -3;  // a key that is no event

// xterm's modifier parameter minus one holds these bits.
constexpr int XM_SHIFT = 1;
constexpr int XM_ALT = 2;
constexpr int XM_CTRL = 4;

struct cursekey {
  int key;        // curses key code
  int code;       // event code, or DELKEY/BSKEY/IGNORE
  uint16_t mods;  // modifiers the key implies
};
constexpr cursekey cursekeys[] = {
    {KEY_UP, FSK_UP, 0},
    {KEY_DOWN, FSK_DOWN, 0},
    {KEY_LEFT, FSK_LEFT, 0},
    {KEY_RIGHT, FSK_RIGHT, 0},
    {KEY_HOME, FSK_HOME, 0},
    {KEY_END, FSK_END, 0},
    {KEY_PPAGE, FSK_PGUP, 0},
    {KEY_NPAGE, FSK_PGDN, 0},
    {KEY_IC, FSK_INSERT, 0},
    {KEY_DC, DELKEY, 0},
    {KEY_BACKSPACE, BSKEY, 0},
    {KEY_ENTER, 10, 0},
    {KEY_BTAB, 9, FSM_SHIFT},
    {KEY_SR, FSK_UP, FSM_SHIFT},
    {KEY_SF, FSK_DOWN, FSM_SHIFT},
    {KEY_SLEFT, FSK_LEFT, FSM_SHIFT},
    {KEY_SRIGHT, FSK_RIGHT, FSM_SHIFT},
    {KEY_SHOME, FSK_HOME, FSM_SHIFT},
    {KEY_SEND, FSK_END, FSM_SHIFT},
    {KEY_SPREVIOUS, FSK_PGUP, FSM_SHIFT},
    {KEY_SNEXT, FSK_PGDN, FSM_SHIFT},
    {KEY_SIC, FSK_INSERT, FSM_SHIFT},
    {KEY_SDC, DELKEY, FSM_SHIFT},
    {KEY_A1, FSK_HOME, 0},
    {KEY_A3, FSK_PGUP, 0},
    {KEY_C1, FSK_END, 0},
    {KEY_C3, FSK_PGDN, 0},
    {KEY_PRINT, FSK_PRINT, 0},
    {KEY_RESIZE, IGNORE, 0},
    {KEY_MOUSE, IGNORE, 0},
};
static_assert(sizeof cursekeys / sizeof cursekeys[0] == 30, "thirty curses keys");

// Function keys past F12 in the numbering of xterm's terminal description:
// twelve keys a shift state, in this order. Curses numbers only F0 to F63;
// the codes after those are other keys.
constexpr int LASTF = 63;
constexpr uint16_t fbanks[] = {0, FSM_SHIFT, FSM_CTRL, FSM_CTRL | FSM_SHIFT, FSM_ALT,
                               FSM_ALT | FSM_SHIFT};
static_assert(sizeof fbanks / sizeof fbanks[0] * 12 > LASTF, "a bank for each of F1 to F63");

// The three-byte forms after ESC O: keys of the application keypad mode.
struct ss3key {
  char final;     // byte after ESC O
  uint16_t code;  // event code
};
constexpr ss3key ss3keys[] = {
    {'A', FSK_UP},       {'B', FSK_DOWN},     {'C', FSK_RIGHT},    {'D', FSK_LEFT},
    {'H', FSK_HOME},     {'F', FSK_END},      {'M', 10},           {'P', FSK_F0 + 1},
    {'Q', FSK_F0 + 2},   {'R', FSK_F0 + 3},   {'S', FSK_F0 + 4},
};
static_assert(sizeof ss3keys / sizeof ss3keys[0] == 11, "eleven keypad keys");

// Ctrl with 28 to 31 gives these characters.
constexpr char ctrlhigh[] = {'\\', ']', '^', '_'};

uint16_t xmods(int m) {
  int b = m - 1;
  return uint16_t(((b & XM_SHIFT) ? FSM_SHIFT : 0) | ((b & XM_ALT) ? FSM_ALT : 0) |
                  ((b & XM_CTRL) ? FSM_CTRL : 0));
}

// A key: its press and, straight after, its release, since a terminal
// never says when a key goes up.
// A character past Latin-1 comes with code FSK_CHAR and the character.
void key(std::vector<tk_out> &out, int code, uint16_t mods, int ch = -1) {
  if (code == DELKEY) code = as_delkey;
  if (code == BSKEY) code = as_bskey;
  if (code == IGNORE || code <= 0) return;
  tk_out o{};
  o.ev.code = uint16_t(code);
  o.ev.modifiers = mods;
  o.ev.source = FS_SRC_NONE;
  o.ch = code < 256 ? code : ch;
  out.push_back(o);
  o.ev.released = 1;
  out.push_back(o);
}

// A character as typed: control characters become Ctrl with their letter.
void character(std::vector<tk_out> &out, int c, uint16_t mods) {
  if (c == 9 || c == 10 || c == 13 || c == 27) return key(out, c, mods);
  if (c == 8 || c == 127) return key(out, BSKEY, mods);
  if (c == 0) return key(out, ' ', mods | FSM_CTRL);
  if (c < 27) return key(out, 'a' + c - 1, mods | FSM_CTRL);
  if (c < 32) return key(out, ctrlhigh[c - 28], mods | FSM_CTRL);
  if (c >= 128 && c < 160) return;  // C1 controls: nothing a user types
  if (c > 255) {
    // The field that gets it decides whether it can hold it.
    if (c <= 0x10ffff && (c < 0xd800 || c > 0xdfff)) key(out, FSK_CHAR, mods, c);
    return;
  }
  key(out, c, mods);
}

void cursesunit(std::vector<tk_out> &out, int k, uint16_t mods) {
  if (k >= TK_XTERM && k < TK_XTERM + tk_nxkeys * TK_XSTRIDE) {
    int i = (k - TK_XTERM) / TK_XSTRIDE, m = (k - TK_XTERM) % TK_XSTRIDE;
    return key(out, tk_xkeys[i].code, uint16_t(mods | xmods(m)));
  }
  if (k > KEY_F0 && k <= KEY_F(LASTF)) {
    int n = k - KEY_F0 - 1;
    return key(out, FSK_F0 + 1 + n % 12, uint16_t(mods | fbanks[n / 12]));
  }
  for (const cursekey &c : cursekeys)
    if (c.key == k) return key(out, c.code, uint16_t(mods | c.mods));
}

// Parameters of a control sequence, as numbers split at ';'.
std::vector<int> params(const std::vector<int> &p, size_t from) {
  std::vector<int> n(1, 0);
  for (size_t i = from; i < p.size(); i++) {
    if (p[i] == ';') n.push_back(0);
    else if (p[i] >= '0' && p[i] <= '9') n.back() = n.back() * 10 + (p[i] - '0');
    else return {};
  }
  return n;
}

void mouse(std::vector<tk_out> &out, int b, int col, int row, bool release, int *held) {
  tk_out o{};
  o.ch = -1;
  o.ev.source = FS_SRC_NONE;
  o.ev.modifiers = uint16_t(((b & 4) ? FSM_SHIFT : 0) | ((b & 8) ? FSM_ALT : 0) |
                            ((b & 16) ? FSM_CTRL : 0));
  o.ev.x = int16_t((col - 1) * TK_CELL_W + TK_CELL_W / 2);
  o.ev.y = int16_t((row - 1) * TK_CELL_H + TK_CELL_H / 2);
  int button = b & 3;
  if (b & 64) {
    if (button > 1) return;  // sideways wheel: nothing to scroll
    o.ev.code = button == 0 ? FSK_WHEELUP : FSK_WHEELDOWN;
  } else if (b & 32) {
    if (button == 3) return;  // moves with no button down are not wanted
    o.ev.code = FSK_DRAG;
  } else {
    if (button == 3) {  // the old encoding's release names no button
      if (*held < 0) return;
      button = *held;
      release = true;
    }
    o.ev.code = uint16_t(FSK_LEFT_B + button);
    o.ev.released = release ? 1 : 0;
    *held = release ? -1 : button;
  }
  out.push_back(o);
}

// A control sequence: ESC [, parameters, intermediates, a final byte.
// Returns the index after it.
size_t csi(const std::vector<int> &u, size_t i, std::vector<tk_out> &out, int *held) {
  std::vector<int> p;
  for (; i < u.size(); i++) {
    int c = u[i];
    if (c >= 0x20 && c <= 0x3F) {
      p.push_back(c);
      continue;
    }
    if (c < 0x40 || c > 0x7E) return i;  // broken off: drop it, go on from here
    i++;
    if (!p.empty() && p[0] == '<' && (c == 'M' || c == 'm')) {
      std::vector<int> n = params(p, 1);
      if (n.size() == 3) mouse(out, n[0], n[1], n[2], c == 'm', held);
      return i;
    }
    if (p.empty() && c == 'M') {  // the old mouse encoding: three bytes plus 32
      if (i + 3 > u.size()) return u.size();
      mouse(out, u[i] - 32, u[i + 1] - 32, u[i + 2] - 32, false, held);
      return i + 3;
    }
    if (p.empty() && (c == 'I' || c == 'O')) {
      tk_out o{};
      o.ev.code = c == 'I' ? FSK_FOCUSIN : FSK_FOCUSOUT;
      o.ev.source = FS_SRC_NONE;
      o.ch = -1;
      out.push_back(o);  // focus has no release
      return i;
    }
    // A modified key curses was not told about.
    std::vector<int> n = params(p, 0);
    if (n.size() == 2 && n[1] >= 2 && n[1] <= 8)
      for (int k = 0; k < tk_nxkeys; k++)
        if (tk_xkeys[k].final == c && tk_xkeys[k].number == n[0]) {
          key(out, tk_xkeys[k].code, xmods(n[1]));
          break;
        }
    return i;
  }
  return i;
}

}  // namespace

const tk_xkey tk_xkeys[] = {
    {1, 'A', FSK_UP},       {1, 'B', FSK_DOWN},     {1, 'C', FSK_RIGHT},
    {1, 'D', FSK_LEFT},     {1, 'H', FSK_HOME},     {1, 'F', FSK_END},
    {1, 'P', FSK_F0 + 1},   {1, 'Q', FSK_F0 + 2},   {1, 'R', FSK_F0 + 3},
    {1, 'S', FSK_F0 + 4},   {15, '~', FSK_F0 + 5},  {17, '~', FSK_F0 + 6},
    {18, '~', FSK_F0 + 7},  {19, '~', FSK_F0 + 8},  {20, '~', FSK_F0 + 9},
    {21, '~', FSK_F0 + 10}, {23, '~', FSK_F0 + 11}, {24, '~', FSK_F0 + 12},
    {2, '~', FSK_INSERT},   {3, '~', DELKEY},            {5, '~', FSK_PGUP},
    {6, '~', FSK_PGDN},
};
const int tk_nxkeys = int(sizeof tk_xkeys / sizeof tk_xkeys[0]);
static_assert(sizeof tk_xkeys / sizeof tk_xkeys[0] == 22, "twenty-two modifiable keys");

void tk_xseq(int i, int m, char *buf, int size) {
  const tk_xkey &k = tk_xkeys[i];
  snprintf(buf, size_t(size), "\033[%d;%d%c", k.number, m, k.final);
}

namespace {

bool pasting = false;    // between the start and the end of a bracketed paste
std::vector<int> pasted; // what came so far, line ends as 10

// Whether units from i spell s.
bool spells(const std::vector<int> &u, size_t i, const char *s) {
  for (; *s; s++, i++)
    if (i >= u.size() || u[i] != (unsigned char)*s) return false;
  return true;
}

void utf8(std::string &o, int c) {
  if (c < 0x80) {
    o += char(c);
  } else if (c < 0x800) {
    o += char(0xC0 | (c >> 6));
    o += char(0x80 | (c & 63));
  } else if (c < 0x10000) {
    o += char(0xE0 | (c >> 12));
    o += char(0x80 | ((c >> 6) & 63));
    o += char(0x80 | (c & 63));
  } else {
    o += char(0xF0 | (c >> 18));
    o += char(0x80 | ((c >> 12) & 63));
    o += char(0x80 | ((c >> 6) & 63));
    o += char(0x80 | (c & 63));
  }
}

// A paste has ended. One line is typed, character by character (a tab as a
// blank, other controls dropped, so nothing acts as a key); more lines wait
// for the editor as text, announced by one event.
void paste_end(std::vector<tk_out> &out) {
  bool lines = false;
  for (int c : pasted) lines = lines || c == 10;
  if (!lines) {
    for (int c : pasted)
      if (c == 9) character(out, ' ', 0);
      else if (c >= 32 && c != 127) character(out, c, 0);
  } else {
    std::string text;
    for (int c : pasted) {
      if (c == 9 || c == 10 || c >= 32) utf8(text, c == 9 ? ' ' : c);
    }
    pl_paste_put(text);
    // One event, with no release, as a button of a tool bar sends.
    tk_out o{};
    o.ev.code = FSK_TOOLBAR;
    o.ev.source = FS_SRC_NONE;
    o.ch = FS_PASTE_ID;
    out.push_back(o);
  }
  pasted.clear();
}

}  // namespace

void tk_decode(const std::vector<int> &u, std::vector<tk_out> &out, int *held) {
  size_t i = 0;
  while (i < u.size()) {
    int c = u[i++];
    if (pasting) {
      if (c == 27 && spells(u, i, "[201~")) {
        i += 5;
        pasting = false;
        paste_end(out);
      } else if (c == 13 || (c == TK_KEY + KEY_ENTER)) {
        // CR LF is one line end, as is a CR alone.
        pasted.push_back(10);
        if (c == 13 && i < u.size() && u[i] == 10) i++;
      } else if (c < TK_KEY) {
        pasted.push_back(c);
      }
      continue;
    }
    if (c == 27 && spells(u, i, "[200~")) {
      i += 5;
      pasting = true;
      pasted.clear();
      continue;
    }
    if (c >= TK_KEY) {
      cursesunit(out, c - TK_KEY, 0);
      continue;
    }
    if (c != 27) {
      character(out, c, 0);
      continue;
    }
    if (i >= u.size()) {
      key(out, 27, 0);
      continue;
    }
    int n = u[i];
    if (n == '[') {
      i = csi(u, i + 1, out, held);
    } else if (n == 'O' && i + 1 < u.size()) {
      int f = u[i + 1];
      i += 2;
      for (const ss3key &s : ss3keys)
        if (s.final == f) key(out, s.code, 0);
    } else if (n >= TK_KEY) {  // ESC before a key: Alt with it
      i++;
      cursesunit(out, n - TK_KEY, FSM_ALT);
    } else if (n == 27) {
      key(out, 27, 0);
    } else {
      i++;
      character(out, n, FSM_ALT);
    }
  }
}

std::string tk_osc52(const std::string &text) { return "\033]52;c;" + pl_base64(text) + "\a"; }
