// The read: the event queue gdet_ev, asread's steps and its dispatch of keys,
// the shift rule for key numbers, repeat of held keys, and the mouse (press,
// drag, release, push buttons, span selection, positioning, chording).
#include "fields/fs_int.h"
#include <cstdlib>
#include <cstring>

fs_evqueue gdet_ev = {nullptr, nullptr, 0, 0, 0};
fs_pendhook as_pendhook = nullptr;
fs_readhook as_readhook = nullptr;
void (*as_screenhook)() = nullptr;
int as_delkey = 127;
int as_bskey = 8;
int as_nbkeys[3] = {10, 12, 15};
int as_shiftright = 0;
int as_retreport = 0;
int as_evmods = 0;
unsigned char as_altdef[256];

namespace {

enum { BANK_L, BANK_F, BANK_R };
constexpr int EV_STEP = 10;  // queue slots added at a time

bool released(const fs_event &e) { return e.released & 1; }
bool shiftd(const fs_event &e) { return e.modifiers & FSM_SHIFT; }
bool ctrld(const fs_event &e) { return e.modifiers & FSM_CTRL; }
bool altd(const fs_event &e) { return e.modifiers & FSM_ALT; }

// The shift rule: Shift, Ctrl and Alt choose a multiple of the bank's count.
int keynumber(const fs_event &e, int bank, int k) {
  static const int mult[8] = {0, 1, 2, 4, 3, 5, 6, 7};  // by S + 2C + 4A
  int s = (shiftd(e) ? 1 : 0) | (ctrld(e) ? 2 : 0) | (altd(e) ? 4 : 0);
  return mult[s] * as_nbkeys[bank] + k;
}

int button(int code) {
  return code >= FSK_LEFT_B && code <= FSK_RIGHT_B ? code - FSK_LEFT_B + 1 : 0;
}

long evtime(const fs_event &e) { return long(e.seconds) * 100000 + long(e.microseconds) / 10; }

bool marked() {
  return fs.gone || fs.resized || fs.timedout || fs.posted || fs.posted43 || fs.pending || fs.nudged;
}

// Waits until the queue holds an event or a mark is set; false when a mark
// (or the end of all input) must be looked at first.
bool await() {
  while (gdet_ev.count == 0) {
    if (marked()) return false;
    if (!fs.plat) {
      fs.gone = true;
      return false;
    }
    int r = fs.plat->wait(fs.timeout > 0 ? fs.timeout : -1);
    if (r == FS_WAIT_GONE && gdet_ev.count == 0) fs.gone = true;
    if (r == FS_WAIT_TIMEOUT && gdet_ev.count == 0 && fs.timeout > 0) fs.timedout = true;
  }
  return !marked();
}

// Looks at the queue during a held key: 1 the key was released (taken), 2 a
// different event waits, 0 nothing came.
int peekheld(const fs_event &key, int us) {
  if (gdet_ev.count == 0 && fs.plat && !fs.gone) {
    if (fs.plat->wait(us / 1000) == FS_WAIT_GONE && gdet_ev.count == 0) return 1;
  }
  if (gdet_ev.count == 0) return fs.gone || !fs.plat ? 1 : 0;
  const fs_event &e = gdet_ev.ev[gdet_ev.head];
  if (e.code == key.code && released(e)) {
    fs_event dummy;
    int ch;
    fs_evtake(dummy, ch);
    return 1;
  }
  return 2;
}

// Runs an action for a held key until it is released or another key comes.
template <class F>
int held(const fs_event &key, F action) {
  int r = action();
  if (r >= 0) return r;
  for (int round = 0; round < 10; round++) {
    int p = peekheld(key, fs.delays[0]);
    if (p) return -1;
  }
  for (int round = 0;; round++) {
    r = action();
    if (r >= 0) return r;
    if (peekheld(key, round < 10 ? fs.delays[1] : fs.delays[2])) return -1;
  }
}

// ---- mouse -----------------------------------------------------------------

void mousecell(const fs_event &e, int *line, int *col) {
  int cw = fs.m.cell_w > 0 ? fs.m.cell_w : 1, ch = fs.m.cell_h > 0 ? fs.m.cell_h : 1;
  *col = e.x / cw + 1;
  *line = e.y / ch + 1;
  if (*col < 1) *col = 1;
  if (*col > fs.nb_cols) *col = fs.nb_cols;
  if (*line < 1) *line = 1;
  if (*line > fs.nb_lines) *line = fs.nb_lines;
}

std::vector<int32_t> pushsaved;  // hilites of the pressed field before the swap

void pushdraw(int pos, bool on) {
  fs_pagerec &p = pg();
  const fs_cells &c = p.cells[pos - 1];
  if (on) pushsaved.clear();
  for (size_t i = 0; i < c.line.size(); i++) {
    int ix = cellix(c.line[i], c.col[i]);
    if (on) {
      pushsaved.push_back(p.hilite[ix]);
      int h = p.hilite[ix];
      p.hilite[ix] = h == 0 || h == 1 || h == 4 ? 2 : 0;
    } else if (i < pushsaved.size()) {
      p.hilite[ix] = pushsaved[i];
    }
  }
  int last = 0;
  for (size_t i = 0; i < c.line.size(); i++)
    if (c.line[i] != last) fs_paintline(last = c.line[i]);
}

constexpr int32_t PUSHLIKE = FSF_BUTTON | FSF_OUINON | FSF_YESNO;

void skipright() {
  fs_pagerec &p = pg();
  if (!fs.skip || p.fld.empty() || fs_usable(p.cur_line, p.cur_col)) return;
  for (int c = p.cur_col + 1; c <= fs.nb_cols; c++)
    if (fs_usable(p.cur_line, c)) {
      p.cur_col = c;
      return;
    }
}

// Moves the end of the span; the anchor is the first non-blank cell met
// between the press and here.
void selend(int line, int col) {
  fs_pagerec &p = pg();
  int pos = p.owner[cellix(line, col)];
  if (pos != fs.selfld) return;
  fs.sel[3] = p.fld[pos - 1].id;
  fs.sel[4] = line;
  fs.sel[5] = col;
  int from = cellix(p.mouse_line, p.mouse_col), to = cellix(line, col);
  int step = to >= from ? 1 : -1;
  for (int ix = from; !fs.sel[0]; ix += step) {
    uint16_t c = p.text[ix];
    if (p.owner[ix] == pos && c != ' ' && c != FS_NULL) {
      fs.sel[0] = fs.sel[3];
      fs.sel[1] = ix / fs.nb_cols + 1;
      fs.sel[2] = ix % fs.nb_cols + 1;
    }
    if (ix == to) break;
  }
}

int press(const fs_event &e, int b) {
  fs_pagerec &p = pg();
  int line, col;
  mousecell(e, &line, &col);
  p.mouse_line = line;
  p.mouse_col = col;
  fs.btn_down = b;
  fs.btn_eaten = false;
  fs.drag_x = e.x;
  fs.drag_y = e.y;
  int pos = p.owner[cellix(line, col)];
  const fsfield *f = pos ? &p.fld[pos - 1] : nullptr;
  bool plain = !shiftd(e) && !ctrld(e);
  if (plain && (fs_menupress(pos, b, altd(e), e, line, col) ||
                (as_menuhook && as_menuhook(f ? f->id : 0, b, line, col)))) {
    fs.btn_eaten = true;
    return -1;
  }
  if (b == 1 && f && (f->flags & PUSHLIKE)) {
    fs.pushfld = pos;
    pushdraw(pos, true);
    fs.btn_eaten = true;
    return -1;
  }
  if (b == 1 && f && (f->flags & FSF_SELECT)) {
    fs.selecting = true;
    fs.selfld = pos;
    memset(fs.sel, 0, sizeof fs.sel);
    selend(line, col);
    fs.btn_eaten = true;
    return -1;
  }
  bool noclick = f && (f->flags & FSF_NOCLICK);
  if (plain && !altd(e) && !noclick) {
    bool positions = fs.clickpos && ((fs.rightpos && b == 3) || (fs.leftpos && b == 1));
    if (positions && fs.leftpos && b == 1) {
      long now = evtime(e);
      if (fs.lastclick >= 0 && now - fs.lastclick < fs.clickdelay) {
        fs.lastclick = -1;
        return 20;
      }
      fs.lastclick = now;
    }
    if (positions) {
      p.cur_line = line;
      p.cur_col = col;
      skipright();
      fs.btn_eaten = true;
      return -1;
    }
  }
  return 20;
}

int release(const fs_event &e, int b, int *value) {
  fs_pagerec &p = pg();
  int line, col;
  mousecell(e, &line, &col);
  bool eaten = fs.btn_eaten;
  fs.btn_down = 0;
  fs.btn_eaten = false;
  if (fs.pushfld && b == 1) {
    int pos = fs.pushfld;
    fs.pushfld = 0;
    pushdraw(pos, false);
    if (p.owner[cellix(line, col)] != pos) return -1;
    const fsfield &f = p.fld[pos - 1];
    if (f.flags & (FSF_OUINON | FSF_YESNO)) {
      char now[4] = {0, 0, 0, 0};
      ascget(f.id, 3, now);
      bool oui = f.flags & FSF_OUINON;
      bool yes = strncmp(now, oui ? "OUI" : "YES", 3) == 0;
      fs_settext(pos, oui ? (yes ? "NON" : "OUI") : (yes ? "NO" : "YES"));
      if (!p.modified[pos - 1]) fs.readmod++;
      p.modified[pos - 1] = 1;
    }
    *value = f.id;
    return f.flags & FSF_BUTTON ? 38 : -1;
  }
  if (fs.selecting && b == 1) {
    fs.selecting = false;
    return 68;
  }
  if (eaten || !fs.upm) return -1;
  return 21;
}

int drag(const fs_event &e) {
  fs_pagerec &p = pg();
  int line, col;
  mousecell(e, &line, &col);
  int pos = p.owner[cellix(line, col)];
  if (fs.pushfld) {
    if (pos == fs.pushfld) return -1;
    pushdraw(fs.pushfld, false);
    fs.pushfld = 0;
    if (pos && (p.fld[pos - 1].flags & PUSHLIKE)) {
      fs.pushfld = pos;
      pushdraw(pos, true);
    }
    return -1;
  }
  if (fs.selecting) {
    selend(line, col);
    return -1;
  }
  if (!fs.btn_down) return -1;
  if (std::abs(e.x - fs.drag_x) < 2 && std::abs(e.y - fs.drag_y) < 2) return -1;
  if (fs.btn_eaten) {
    if (fs.clickpos && fs.rightpos && fs.btn_down == 3 && !shiftd(e) && !ctrld(e)) {
      p.cur_line = line;
      p.cur_col = col;
      skipright();
    }
    // The left button that placed the cursor and is now dragged stretches
    // a selection from there: the caller is told where the mouse is.
    if (fs.btn_down != 1) return -1;
  }
  fs.drag_x = e.x;
  fs.drag_y = e.y;
  // The mouse query tells where the drag has got to.
  p.mouse_line = line;
  p.mouse_col = col;
  return 24;
}

bool exact(const fs_event &e, int i) {
  const int *r = fs.movetab[i];
  return !!shiftd(e) == !!r[1] && !!ctrld(e) == !!r[2] && !!altd(e) == !!r[3];
}

// The field movement record of a key, the one with exactly its modifiers
// first (a key may be bound twice, with and without Alt); -1 for none.
int binding(const fs_event &e) {
  int any = -1;
  for (int i = 0; i < 9; i++) {
    if (fs.movetab[i][0] < 0 || fs.movetab[i][0] != e.code) continue;
    if (exact(e, i)) return i;
    if (any < 0) any = i;
  }
  return any;
}

// Dispatch of one event; a read code, or -1 to go on reading.
int dispatch(const fs_event &e, int ch, int *value) {
  int code = e.code;
  as_evmods = (shiftd(e) ? 1 : 0) | (ctrld(e) ? 2 : 0) | (altd(e) ? 4 : 0);
  bool rel = released(e);
  *value = 0;
  switch (code) {
    case FSK_CLOSE: case FSK_MENUBAR: case FSK_TOOLBAR: case FSK_SCROLLBAR:
      *value = ch > 0 ? ch : 0;
      // The page's pop-up menu shares the bar's event; its ids say which.
      if (code == FSK_MENUBAR && *value >= FS_POPUP_ID && *value < FS_FIELDMENU_ID) return 31;
      if (code == FSK_MENUBAR && *value >= FS_FIELDMENU_ID) return fs_fieldchoice(*value, value);
      return code == FSK_CLOSE ? 672 : code == FSK_MENUBAR ? 63 : code == FSK_TOOLBAR ? 64 : 40;
    case FSK_PAINT:
      return fs.askpaint ? 29 : -1;
    case FSK_FOCUSIN:
      fs.curs_line = fs.curs_col = 0;
      return fs.askfocus ? 42 : -1;
    case FSK_FOCUSOUT:
      return 67;
    default:
      break;
  }
  if (fs.onekey && !rel && !button(code) && code != FSK_MOVE && code != FSK_DRAG &&
      code != FSK_WHEELUP && code != FSK_WHEELDOWN) {
    int c = ch >= 0 ? ch : code;
    bool printable = (code < 256 || code == FSK_CHAR) && code != as_delkey && code != as_bskey &&
                     c >= 32 && c != 127;
    *value = printable && !ctrld(e) && !altd(e) ? c : 0;
    return AS_ONEKEY;
  }
  bool arrow = code == FSK_UP || code == FSK_DOWN || code == FSK_LEFT || code == FSK_RIGHT;
  bool mods = shiftd(e) || ctrld(e) || altd(e);
  if (arrow && (!mods || (code == FSK_RIGHT && as_shiftright && shiftd(e) && !ctrld(e) && !altd(e)))) {
    if (rel) return -1;
    if (shiftd(e)) {
      fs_shiftright();
      return -1;
    }
    return fs_arrow(code);
  }
  if (code == '\t' && !ctrld(e)) {
    if (rel) return -1;
    bool back = shiftd(e);
    return held(e, [back] { fs_tab(back); return -1; });
  }
  int b = binding(e);
  if (b >= 0 && !rel) {
    enum { FIRST, LAST, BACKTAB, INSERT, APL, NEXTLINE, PREVLINE, ERASE };
    bool ex = exact(e, b);
    if (b == FIRST && ex) return fs_firstfield(false), -1;
    if (b == LAST && ex) return fs_firstfield(true), -1;
    if (b == BACKTAB && ex) return held(e, [] { fs_tab(true); return -1; });
    if ((b == INSERT || b == APL) && ex) {
      int &mode = b == INSERT ? fs.insert : fs.apl;
      mode = !mode;
      fs_drawstatus();
      return -1;
    }
    if ((b == NEXTLINE || b == PREVLINE) && !altd(e)) {
      bool prev = (b == PREVLINE) != shiftd(e);
      if (b == PREVLINE && ctrld(e)) return fs_type('\f', fs_event{}, value);
      // A caller that splits lines on RETURN hears of it instead.
      if (!ctrld(e) && b == NEXTLINE && !shiftd(e) && as_retreport) return 34;
      if (!ctrld(e)) return fs_nextline(prev), -1;
    }
    if (b == ERASE) {
      if ((ctrld(e) && shiftd(e)) || altd(e)) return -1;  // print screen belongs to the window layer
      if (!ctrld(e)) return fs_erase(shiftd(e));
      if (code >= 256) return fs_erase(true);  // Ctrl with a character is the caller's
    }
  }
  if (code == '\r') return rel ? -1 : 0;
  if (ctrld(e) && code < 256) {
    if (rel) return -1;
    *value = code == 27 ? 27 : shiftd(e) ? fs_ctrlchar(ch >= 0 ? ch : code) : (ch >= 0 ? ch : code);
    return code == 27 ? 5 : 22;
  }
  if (altd(e) && code < 256 && as_altdef[code] && !fs.apl) {
    if (rel) return -1;
    *value = code;
    return 65;
  }
  if (code == as_delkey || code == as_bskey) {
    if (rel) return -1;
    bool bs = code == as_bskey;
    return held(e, [bs] { return fs_delete(bs); });
  }
  int fkey = 0;
  if (code > FSK_F0 && code <= FSK_F0 + 24) fkey = code - FSK_F0;
  if (fs_kbmode() == 1 && code >= FSK_PRINT && code <= FSK_PAUSE) fkey = code - 32560;
  if (fkey) {
    *value = keynumber(e, BANK_F, fkey);
    return rel ? (fs.up ? 11 : -1) : 1;
  }
  if (button(code) || code == FSK_MOVE || code == FSK_DRAG) {
    int bt = button(code);
    if (code == FSK_MOVE) {
      int line, col;
      mousecell(e, &line, &col);
      int pos = pg().owner[cellix(line, col)];
      if (fs.plat) fs.plat->pointer(pos > 1 && (pg().fld[pos - 1].flags & FSF_TEXTPTR) ? 3 : 1);
      return -1;
    }
    if (code == FSK_DRAG) {
      *value = fs.btn_down;
      return drag(e);
    }
    *value = bt;
    return rel ? release(e, bt, value) : press(e, bt);
  }
  // The left bank is the extra keys; its releases are always told, since the
  // editor's selection keys act on them.
  if (code >= FSK_EXTRA1 && code < FSK_EXTRA1 + as_nbkeys[BANK_L] && code < FSK_PRINT) {
    *value = keynumber(e, BANK_L, code - FSK_EXTRA1 + 1);
    return rel ? 18 : 8;
  }
  if (code >= FSK_PRINT && code < FSK_PRINT + as_nbkeys[BANK_R]) {
    *value = keynumber(e, BANK_R, code - FSK_PRINT + 1);
    return rel ? (fs.up ? 19 : -1) : 9;
  }
  if (code == FSK_WHEELUP || code == FSK_WHEELDOWN) return rel ? -1 : code;
  if (code == FSK_CHAR && ch > 0) return rel ? -1 : fs_type(ch, e, value);
  if (code >= 256 || rel) return -1;
  return fs_type(ch >= 0 ? ch : code, e, value);
}

}  // namespace

// ---- queue -----------------------------------------------------------------

void fs_evreset() {
  gdet_ev.head = gdet_ev.count = 0;
  fs.chordrel = 0;
}

void fs_postev(const fs_event &ev, int ch) {
  if (gdet_ev.head + gdet_ev.count == gdet_ev.cap && gdet_ev.head > 0) {
    memmove(gdet_ev.ev, gdet_ev.ev + gdet_ev.head, size_t(gdet_ev.count) * sizeof(fs_event));
    memmove(gdet_ev.ch, gdet_ev.ch + gdet_ev.head, size_t(gdet_ev.count) * sizeof(int));
    gdet_ev.head = 0;
  }
  if (gdet_ev.count == gdet_ev.cap) {
    int cap = gdet_ev.cap + EV_STEP;
    void *a = realloc(gdet_ev.ev, size_t(cap) * sizeof(fs_event));
    if (a) gdet_ev.ev = static_cast<fs_event *>(a);
    void *b = a ? realloc(gdet_ev.ch, size_t(cap) * sizeof(int)) : nullptr;
    if (b) gdet_ev.ch = static_cast<int *>(b);
    if (!a || !b) {
      fs_err(1, "gdet_ev : no more memory");
      fs.gone = true;
      return;
    }
    gdet_ev.cap = cap;
  }
  int at = gdet_ev.head + gdet_ev.count++;
  gdet_ev.ev[at] = ev;
  gdet_ev.ch[at] = ch;
}

int fs_evpending() { return gdet_ev.count; }

int fs_evcut(bool (*hit)(const fs_event &ev)) {
  int kept = 0, cut = 0;
  for (int i = 0; i < gdet_ev.count; i++) {
    int at = gdet_ev.head + i;
    if (hit(gdet_ev.ev[at])) {
      cut++;
      continue;
    }
    gdet_ev.ev[gdet_ev.head + kept] = gdet_ev.ev[at];
    gdet_ev.ch[gdet_ev.head + kept] = gdet_ev.ch[at];
    kept++;
  }
  gdet_ev.count = kept;
  if (kept == 0) gdet_ev.head = 0;
  return cut;
}

bool fs_evtake(fs_event &ev, int &ch) {
  if (gdet_ev.count == 0) return false;
  ev = gdet_ev.ev[gdet_ev.head];
  ch = gdet_ev.ch[gdet_ev.head];
  gdet_ev.head++;
  if (--gdet_ev.count == 0) gdet_ev.head = 0;
  return true;
}

// Chording: a press of either named button looks for the other; together they
// are the third, and their two releases become one.
static void chord(fs_event &ev) {
  int b = button(ev.code);
  if (!fs.chord[2] || !b || (b != fs.chord[0] && b != fs.chord[1])) return;
  int other = FSK_LEFT_B - 1 + (b == fs.chord[0] ? fs.chord[1] : fs.chord[0]);
  if (released(ev)) {
    if (fs.chordrel == 2) {
      fs.chordrel = 1;
      ev.code = 0xFFFF;  // struck out: the first of the two releases
    } else if (fs.chordrel == 1) {
      fs.chordrel = 0;
      ev.code = uint16_t(FSK_LEFT_B - 1 + fs.chord[2]);
    }
    return;
  }
  for (int slice = 0; slice <= fs.chordslices; slice++) {
    for (int i = 0; i < gdet_ev.count; i++) {
      fs_event &o = gdet_ev.ev[gdet_ev.head + i];
      if (o.code == other && !released(o)) {
        // Strike the other press and the pointer movement before it.
        int keep = 0;
        for (int j = 0; j < gdet_ev.count; j++) {
          const fs_event &x = gdet_ev.ev[gdet_ev.head + j];
          if (j < i && (x.code == FSK_MOVE || x.code == FSK_DRAG)) continue;
          if (j == i) continue;
          gdet_ev.ev[gdet_ev.head + keep] = x;
          gdet_ev.ch[gdet_ev.head + keep] = gdet_ev.ch[gdet_ev.head + j];
          keep++;
        }
        gdet_ev.count = keep;
        ev.code = uint16_t(FSK_LEFT_B - 1 + fs.chord[2]);
        fs.chordrel = 2;
        return;
      }
    }
    if (slice < fs.chordslices && fs.plat && fs.plat->wait(100) == FS_WAIT_GONE) return;
  }
}

// ---- the read --------------------------------------------------------------

void asread(int *code, int *value, int *modified) {
  *code = 23;
  *value = 0;
  *modified = 0;
  if (!fs.started || fs.cur < 0 || fs.gone) return;
  if (as_screenhook) as_screenhook();
  if (as_readhook) as_readhook();
  fs_pagerec &p = pg();
  fs.readmod = 0;
  if (!fs.keepmod && fs.curnum == fs.lastread) {
    std::fill(p.modified.begin(), p.modified.end(), uint8_t(0));
  } else {
    for (uint8_t m : p.modified) fs.readmod += m;
  }
  fs.keepmod = false;
  fs.lastread = fs.curnum;
  if (!fs.refreshed) asrefresh();
  fs.refreshed = false;
  fs.movedl = p.cur_line;
  fs.movedc = p.cur_col;
  auto finish = [&](int c, int v) {
    *code = c;
    *value = v;
    *modified = fs.readmod;
  };
  if (fs.repeat && fs.havelast && !released(fs.last) && fs.last.code != '\r') {
    bool up = false;
    for (int slice = 0; slice < 4 && !up; slice++) {
      for (int i = 0; i < gdet_ev.count; i++) {
        const fs_event &x = gdet_ev.ev[gdet_ev.head + i];
        if (x.code == fs.last.code && released(x)) up = true;
      }
      if (!up && gdet_ev.count == 0 && fs.plat && fs.plat->wait(fs.delays[0] / 1000) == FS_WAIT_GONE)
        up = true;
      if (gdet_ev.count) up = true;
    }
    if (!up) {
      int v = 0, r = dispatch(fs.last, fs.lastch, &v);
      if (r >= 0) return finish(r, v);
    }
  }
  for (;;) {
    if (fs.askmove && (p.cur_line != fs.movedl || p.cur_col != fs.movedc)) {
      asrefresh();
      return finish(673, 0);
    }
    if (!await()) {
      int hv = 0, hc = -1;
      if (fs.timedout) return fs.timedout = false, finish(27, 0);
      if (fs.pending && as_pendhook && (hc = as_pendhook(FS_PEND_DIALOG, &hv)) >= 0)
        return finish(hc, hv);
      if (fs.posted) return fs.posted = false, finish(28, fs.postval);
      if (fs.pending && as_pendhook && (hc = as_pendhook(FS_PEND_MENU, &hv)) >= 0)
        return finish(hc, hv);
      fs.pending = false;
      if (fs.posted43) return fs.posted43 = false, finish(43, fs.post43val);
      if (fs.nudged) return fs.nudged = false, finish(AS_NUDGED, 0);
      if (fs.gone) return finish(23, 0);
      if (fs.resized) {
        p.mouse_line = p.mouse_col = 1;
        return finish(25, 0);
      }
      continue;
    }
    fs_event ev;
    int ch;
    fs_evtake(ev, ch);
    chord(ev);
    if (ev.code == 0xFFFF) continue;
    if (fs.droprel && released(ev)) {
      fs.droprel = false;
      continue;
    }
    int v = 0, r = dispatch(ev, ch, &v);
    fs.last = ev;
    fs.lastch = ch;
    fs.havelast = true;
    if (r >= 0) return finish(r, v);
    fs_showcursor();
  }
}

// ---- settings of the read ----------------------------------------------------

void asqsel(int out[6]) { memcpy(out, fs.sel, sizeof fs.sel); }

void asfrepdelay(int d1, int d2, int d3, int d4) {
  const int d[4] = {d1, d2, d3, d4};
  for (int v : d)
    if (v < 1) return;
  fs.delays[0] = d1 * 1000 / 4;
  fs.delays[1] = d2 * 1000;
  fs.delays[2] = d3 * 1000;
  fs.delays[3] = d4 * 1000;
}

int asfmousemode(const char *mode) {
  static const struct {
    const char *name;  // MOUSEMode word
    int right;         // button 3 positions
  } modes[] = {{"OPENLOOK", 1}, {"OPENLOOKW", 1}, {"MOTIF", 1}, {"WINDOWS", 0}};
  for (const auto &m : modes)
    if (mode && strcasecmp(mode, m.name) == 0) {
      fs.rightpos = m.right;
      fs.leftpos = !m.right;
      return 0;
    }
  return 1;
}

void asfclickpos(int on) { fs.clickpos = on != 0; }

void asfclickdelay(double seconds) { fs.clickdelay = long(seconds * 100000 + 0.5); }

void asqclickdelay(char *buf, size_t size) {
  snprintf(buf, size, "..... is %.2f", double(fs.clickdelay) / 100000);
}

void fs_mark(int what) {
  if (what == FS_MARK_RESIZE) fs.resized = true;
  if (what == FS_MARK_GONE) fs.gone = true;
}

void fs_closebox() {
  // What each asfveto value does: ask (with the buttons' order), ignore, end,
  // or let the application decide through event 672.
  struct closerow {
    int action;            // FS_MARK_GONE, 0 ignore, -1 the event, 2 ask
    int kind;              // alert kind of the question
    const char *question;  // lines of the question
  };
  static const closerow rows[6] = {
      {2, 1, "Really Quit?"},
      {0, 0, nullptr},
      {2, 3, "Quitting now will discard unsaved changes.\nReally Quit?"},
      {FS_MARK_GONE, 0, nullptr},
      {-1, 0, nullptr},
      {FS_MARK_GONE, 0, nullptr},
  };
  const closerow &r = rows[fs.veto >= 0 && fs.veto < 6 ? fs.veto : 3];
  int a = r.action;
  // A layer that cannot ask ends the window as Continue would.
  if (a == 2) a = fs.plat && fs.plat->ask(r.question, r.kind) ? 0 : FS_MARK_GONE;
  if (a > 0) fs_mark(a);
  if (a < 0) {
    fs_event e{};
    e.code = FSK_CLOSE;
    e.source = FS_SRC_SELF;
    fs_postev(e, -1);
  }
}

void asfchord(int b1, int b2, int b3, int slices) {
  fs.chord[0] = b1;
  fs.chord[1] = b2;
  fs.chord[2] = b3;
  fs.chordslices = slices;
}

void asftimeout(int ms) { fs.timeout = ms > 0 ? ms : 0; }
void aspost(int number) {
  fs.posted = true;
  fs.postval = number;
}
void asnudge() { fs.nudged = true; }
void aspost43(int number) {
  fs.posted43 = true;
  fs.post43val = number;
}
void aspend() { fs.pending = true; }
void asfkeepmod(int on) { fs.keepmod = on != 0; }
void asfonekey(int on) { fs.onekey = on != 0; }
void asfinsert(int on) { fs.insert = on != 0; }
void asfreverse(int on) { fs.reverse = on != 0; }
int asqinsert() { return fs.insert; }
void asfreports(int paint, int focus, int moves) {
  fs.askpaint = paint;
  fs.askfocus = focus;
  fs.askmove = moves;
}
