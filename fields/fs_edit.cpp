// Editing inside fields, done by the read with no caller involved: typing,
// insert and overwrite, delete, backspace, the erase keys, the toggles, the
// hexadecimal twin cells, and moving the cursor by arrow and by field.
#include "fields/fs_int.h"
#include <cctype>
#include <cstdlib>
#include <cstring>

namespace {

struct at {
  int pos = 0;  // 1-based field position, 0 outside every field
  int k = -1;   // 0-based cell of the field
  int n = 0;    // cells of the field
};

at here() {
  fs_pagerec &p = pg();
  at a;
  a.pos = p.owner[cellix(p.cur_line, p.cur_col)];
  if (!a.pos) return a;
  a.k = fs_cellk(a.pos, p.cur_line, p.cur_col);
  a.n = int(p.cells[a.pos - 1].line.size());
  return a;
}

const fsfield &fld(int pos) { return pg().fld[pos - 1]; }
const fsxfield &ext(int pos) { return pg().ext[pos - 1]; }
int cix(int pos, int k) {
  const fs_cells &c = pg().cells[pos - 1];
  return cellix(c.line[k], c.col[k]);
}
uint16_t &txt(int pos, int k) { return pg().text[cix(pos, k)]; }

void gocell(int pos, int k) {
  const fs_cells &c = pg().cells[pos - 1];
  pg().cur_line = c.line[k];
  pg().cur_col = c.col[k];
}

// Source column of a cell of an extended field: >0 text, <0 hex digit, 0 none.
int source(int pos, int k) {
  const fs_verify *v = ext(pos).verify;
  return v && v->cell ? v->cell[k] : 0;
}

// Segment holding cell k, or null.
const fs_segment *segment(int pos, int k) {
  const fs_verify *v = ext(pos).verify;
  if (!v || !v->seg) return nullptr;
  for (int i = 0; i < v->count; i++)
    if (k >= v->seg[i].cell0 && k < v->seg[i].cell0 + v->seg[i].ncells) return &v->seg[i];
  return nullptr;
}

bool onesegment(int pos) {
  const fs_verify *v = ext(pos).verify;
  return v && v->count == 1 && v->seg && v->seg[0].mode != 1;
}

void repaintfrom(int pos, int k) {
  if (fs.batch) {
    pg().dirty[pos - 1] = 1;
    return;
  }
  const fs_cells &c = pg().cells[pos - 1];
  int last = 0;
  for (size_t i = size_t(k); i < c.line.size(); i++)
    if (c.line[i] != last) fs_paintline(last = c.line[i]);
  pg().dirty[pos - 1] = 0;
}

void setmodified(int pos) {
  if (!pg().modified[pos - 1]) fs.readmod++;
  pg().modified[pos - 1] = 1;
}

void fieldattrs(int pos, int ix) {
  pg().hilite[ix] = fld(pos).hilite;
  pg().colour[ix] = fs_phys(fld(pos).colour);
}

int hexval(int c) { return isdigit(c) ? c - '0' : c == ' ' ? 0 : tolower(c) - 'a' + 10; }

// The two digit cells of a source column, high first; -1 when absent.
void digits(int pos, int src, int *hi, int *lo) {
  *hi = *lo = -1;
  const fs_verify *v = ext(pos).verify;
  int n = int(pg().cells[pos - 1].line.size());
  for (int k = 0; v && v->cell && k < n; k++)
    if (v->cell[k] == -src) (*hi < 0 ? *hi : *lo) = k;
}

// Keeps the text cell and the hex digit cells of one source column in step.
void twin(int pos, int k) {
  int src = source(pos, k);
  if (!src) return;
  int col = src < 0 ? -src : src, hi, lo;
  digits(pos, col, &hi, &lo);
  if (hi < 0 || lo < 0) return;
  static const char hex[] = "0123456789ABCDEF";
  int n = int(pg().cells[pos - 1].line.size());
  if (src > 0) {
    int v = txt(pos, k) == FS_NULL ? ' ' : txt(pos, k) & 0xFF;
    txt(pos, hi) = uint16_t(hex[v >> 4]);
    txt(pos, lo) = uint16_t(hex[v & 15]);
    repaintfrom(pos, hi < lo ? hi : lo);
    return;
  }
  int v = hexval(txt(pos, hi)) * 16 + hexval(txt(pos, lo));
  for (int t = 0; t < n; t++)
    if (source(pos, t) == col) {
      txt(pos, t) = uint16_t(v);
      repaintfrom(pos, t);
    }
}

bool hexrefused(int pos, int k, int c) {
  if (!strchr("0123456789abcdefABCDEF ", c) || c == 0) return true;
  int hi, lo;
  digits(pos, -source(pos, k), &hi, &lo);
  if (hi < 0 || lo < 0) return false;
  int h = k == hi ? c : txt(pos, hi), l = k == lo ? c : txt(pos, lo);
  return (h == '0' || h == ' ') && (l == 'a' || l == 'A');
}

int callback(int pos, int op, int k) {
  const fsxfield &x = ext(pos);
  if (!x.on_change) return -1;
  int n = 0;
  char *s = ascget_char(fld(pos).id, &n, 0);
  int r = x.on_change(s, n, x.change_arg, x.line, op, k);
  free(s);
  return r ? 60 : -1;
}

// Moves cells [from, end) one place down and frees the end cell.
void closegap(int pos, int from, int end) {
  fs_pagerec &p = pg();
  bool own = fs.rem == 0 || (fld(pos).flags & FSF_NOINS);
  for (int i = from; i < end; i++) {
    int a = cix(pos, i), b = cix(pos, i + 1);
    p.text[a] = p.text[b];
    p.colour[a] = p.colour[b];
    if (fs.rem == 2) p.hilite[a] = p.hilite[b];
    if (own) fieldattrs(pos, a);
  }
  uint16_t &last = txt(pos, end);
  last = last == 0 && !ext(pos).show_blanks ? 0 : FS_NULL;
}

int segend(int pos, int k, int n) {
  const fs_segment *s = segment(pos, k);
  return s ? s->cell0 + s->ncells - 1 : n - 1;
}

bool reversed(int pos) { return fs.reverse && !(fld(pos).flags & FSF_LTR); }

// Insert at the cursor: 1 done, -2 dropped, or a read code. In reverse
// direction the text moves towards the field's start.
int insert(int pos, int k, int n, int c) {
  const fsfield &f = fld(pos);
  int dir = reversed(pos) ? -1 : 1;
  int end = dir < 0 ? 0 : n - 1;
  if (dir > 0 && ext(pos).limit >= 0 && onesegment(pos) && ext(pos).limit + 2 < end)
    end = ext(pos).limit + 2;
  uint16_t e = txt(pos, end);
  bool room = ext(pos).show_blanks ? e == FS_NULL
                                   : e == ' ' || e == '\t' || e == '\f' || e == 0 || e == FS_NULL;
  if (!room) {
    const fs_verify *v = ext(pos).verify;
    if ((f.flags & FSF_REPEND) && (!v || v->count <= 1)) return 26;
    if (fs.plat) fs.plat->flash();
    return -2;
  }
  if (f.flags & FSF_REPDEL) return 26;
  fs_pagerec &p = pg();
  for (int i = end; i != k; i -= dir) {
    int a = cix(pos, i), b = cix(pos, i - dir);
    p.text[a] = p.text[b];
    p.colour[a] = p.colour[b];
    p.hilite[a] = fs.rem == 0 ? f.hilite : p.hilite[b];
  }
  int ix = cix(pos, k);
  p.text[ix] = uint16_t(c);
  if (fs.rem != 1) fieldattrs(pos, ix);
  return 1;
}

bool atend(int pos, int k, int n) {
  if (reversed(pos)) return k == 0;
  if (ext(pos).limit >= 0 && onesegment(pos) && k + 1 >= ext(pos).limit) return true;
  return k == n - 1;
}

// Scans the grid from cell ix (exclusive) in direction step for a usable cell
// that pass() accepts; -1 when it comes round.
template <class F>
int scan(int ix, int step, F pass) {
  int total = fs.nb_lines * fs.nb_cols;
  for (int i = 1; i <= total; i++) {
    int j = ((ix + step * i) % total + total) % total;
    int pos = pg().owner[j];
    if (pos && fld(pos).type != 2 && pass(j, pos)) return j;
  }
  return -1;
}

void goix(int ix) {
  pg().cur_line = ix / fs.nb_cols + 1;
  pg().cur_col = ix % fs.nb_cols + 1;
}

// First cell of a field on a given line.
int firston(int pos, int line) {
  const fs_cells &c = pg().cells[pos - 1];
  for (size_t i = 0; i < c.line.size(); i++)
    if (c.line[i] == line) return cellix(line, c.col[i]);
  return cix(pos, 0);
}

// In reverse direction a move by field lands on the target field's right end
// on that line, except in a left-to-right field, where it lands on its start.
void revend() {
  fs_pagerec &p = pg();
  int pos = p.owner[cellix(p.cur_line, p.cur_col)];
  if (!fs.reverse || !pos) return;
  const fs_cells &c = p.cells[pos - 1];
  int at = -1;
  for (size_t i = 0; i < c.line.size(); i++)
    if (c.line[i] == p.cur_line && (at < 0 || !(fld(pos).flags & FSF_LTR))) at = int(i);
  if (at >= 0) gocell(pos, at);
}

void toggle(int pos, int c) {
  const fsfield &f = fld(pos);
  bool yes = c == 'O' || c == 'o' || c == 'Y' || c == 'y';
  bool no = c == 'N' || c == 'n';
  if (!yes && !no) {
    if (fs.plat) fs.plat->bell();
    return;
  }
  bool oui = f.flags & FSF_OUINON;
  fs_settext(pos, yes ? (oui ? "OUI" : "YES") : (oui ? "NON" : "NO"));
  setmodified(pos);
}

}  // namespace

int fs_cellk(int pos, int line, int col) {
  const fs_cells &c = pg().cells[pos - 1];
  for (size_t i = 0; i < c.line.size(); i++)
    if (c.line[i] == line && c.col[i] == col) return int(i);
  return -1;
}

bool fs_usable(int line, int col) {
  int pos = pg().owner[cellix(line, col)];
  return pos && fld(pos).type != 2;
}

void fs_settext(int pos, const char *text) {
  int n = int(pg().cells[pos - 1].line.size()), len = int(strlen(text));
  for (int k = 0; k < n; k++) txt(pos, k) = uint16_t(k < len ? static_cast<unsigned char>(text[k]) : ' ');
  repaintfrom(pos, 0);
}

int fs_type(int ch, const fs_event &ev, int *value) {
  int c = fs_translate(ch, ev.modifiers & FSM_SHIFT, ev.modifiers & FSM_ALT, 0);
  if (c == 0) return -1;
  *value = c;
  at a = here();
  auto refuse = [] {
    if (fs.plat) fs.plat->flash();
    return -1;
  };
  if (!a.pos || a.k < 0) return refuse();
  const fsfield &f = fld(a.pos);
  if (f.type == 2) return refuse();
  if (f.type == 1 && !isdigit(c) && c != '.' && c != ' ') return refuse();
  bool hex = source(a.pos, a.k) < 0;
  if (hex && hexrefused(a.pos, a.k, c)) return refuse();
  if (f.flags & (FSF_OUINON | FSF_YESNO)) {
    toggle(a.pos, c);
    return -1;
  }
  // Past Latin-1 only a field of UTF-8 text takes a character; there every
  // character past ASCII has its cell, a substitute where it needs one.
  int cell = c;
  if (c >= 128 && (f.flags & FSF_UTF8)) {
    char b[4];
    cell = fs_cell(uint32_t(c), b, fs_utf8_put(uint32_t(c), b));
    if (cell == FS_NULL) return refuse();
  } else if (c > 255) {
    return refuse();
  }
  if (as_typehook && as_typehook(c)) return AS_TYPEDOVER;
  int ix = cix(a.pos, a.k);
  if ((f.flags & FSF_REPEND) && pg().hilite[ix] == 2) return 36;
  bool inserting = fs.insert && !(f.flags & FSF_NOINS) && !hex;
  if (inserting) {
    int r = insert(a.pos, a.k, a.n, cell);
    if (r == -2) return -1;
    if (r != 1) return r;
  } else {
    pg().text[ix] = uint16_t(cell);
    if (fs.rem == 0 || (f.flags & FSF_NOINS)) fieldattrs(a.pos, ix);
  }
  bool rev = reversed(a.pos);
  repaintfrom(a.pos, rev ? 0 : a.k);
  twin(a.pos, a.k);
  setmodified(a.pos);
  int pos = a.pos, id = f.id, flags = f.flags;
  if (atend(pos, a.k, a.n)) {
    if (flags & FSF_REPEND) return 32;
    fs_tab(rev);
  } else {
    gocell(pos, rev ? a.k - 1 : a.k + 1);
  }
  int r = callback(pos, inserting ? FS_OP_INSERT : FS_OP_OVER, a.k);
  if (r >= 0) return r;
  if (inserting && !fs.batch) {
    // Keys the platform has already queued are typed with one repaint for all.
    fs.batch = true;
    while (r < 0 && gdet_ev.count > 0) {
      const fs_event &next = gdet_ev.ev[gdet_ev.head];
      if (next.code != ev.code || (next.released & 1)) break;
      fs_event e;
      int nch;
      fs_evtake(e, nch);
      r = fs_type(nch >= 0 ? nch : e.code, e, value);
    }
    fs.batch = false;
    fs_compare();
    if (r >= 0) return r;
  }
  if (flags & FSF_KEYSTROKE) {
    at b = here();
    if (b.pos == pos)
      for (int k = b.k; k < b.n; k++) txt(pos, k) = ' ';
    repaintfrom(pos, 0);
    *value = id;
    return 39;
  }
  return -1;
}

int fs_delete(bool backspace) {
  at a = here();
  if (!a.pos || a.k < 0 || fld(a.pos).type == 2) {
    if (fs.plat) fs.plat->flash();
    return -1;
  }
  const fsfield &f = fld(a.pos);
  if (f.flags & FSF_REPDEL) return 44;
  int op = FS_OP_DELETE, k = a.k;
  if (backspace) {
    if (k == 0) return -1;
    k--;
    gocell(a.pos, k);
    if (fs.insert && !(f.flags & FSF_NOINS)) {
      op = FS_OP_BACKINS;
      closegap(a.pos, k, segend(a.pos, k, a.n));
    } else {
      op = FS_OP_BACK;
      int src = source(a.pos, k);
      int hi, lo;
      if (src < 0) digits(a.pos, -src, &hi, &lo);
      txt(a.pos, k) = src < 0 ? (k == hi ? '2' : '0') : FS_NULL;
      if (fs.rem == 0 || (f.flags & FSF_NOINS)) fieldattrs(a.pos, cix(a.pos, k));
    }
  } else {
    closegap(a.pos, k, segend(a.pos, k, a.n));
  }
  repaintfrom(a.pos, k);
  twin(a.pos, k);
  setmodified(a.pos);
  return callback(a.pos, op, k);
}

void fs_shiftright() {
  at a = here();
  if (!a.pos || a.k < 0 || fld(a.pos).type == 2) return;
  closegap(a.pos, a.k, a.n - 1);
  repaintfrom(a.pos, a.k);
  setmodified(a.pos);
}

int fs_erase(bool all) {
  at a = here();
  if (!a.pos || a.k < 0) {
    fs_err(-1, all ? "del_all_f : position curseur invalide" : "del_end_f : position curseur invalide");
    return -1;
  }
  const fsfield &f = fld(a.pos);
  if (f.flags & FSF_REPDEL) return 45;
  const fs_segment *s = segment(a.pos, a.k);
  int first = all ? (s ? s->cell0 : 0) : a.k;
  int last = s ? s->cell0 + s->ncells - 1 : a.n - 1;
  uint16_t fill = txt(a.pos, a.n - 1) == 0 ? 0 : FS_NULL;
  for (int k = first; k <= last; k++) {
    txt(a.pos, k) = fill;
    if (fs.rem != 1) fieldattrs(a.pos, cix(a.pos, k));
  }
  gocell(a.pos, fs.reverse && !(f.flags & FSF_LTR) ? last : first);
  repaintfrom(a.pos, first);
  setmodified(a.pos);
  return -1;
}

static void tabmove(bool back);
static void linemove(bool prev);

void fs_tab(bool back) {
  tabmove(back);
  revend();
}

void fs_nextline(bool prev) {
  linemove(prev);
  revend();
}

void fs_firstfield(bool last) {
  int total = fs.nb_lines * fs.nb_cols;
  int j = scan(last ? 0 : total - 1, last ? -1 : 1, [](int, int) { return true; });
  if (j < 0) return;
  goix(last ? cix(pg().owner[j], 0) : j);
  revend();
}

static void tabmove(bool back) {
  fs_pagerec &p = pg();
  if (p.fld.empty()) return;
  int ix = cellix(p.cur_line, p.cur_col), line = p.cur_line;
  at a = here();
  if (!back) {
    const int32_t *tabs = a.pos ? ext(a.pos).tabs : nullptr;
    for (int i = 1; tabs && i <= tabs[0]; i++) {
      int k = tabs[i] - 1;
      if (k > a.k && k < a.n && (!segment(a.pos, k) || segment(a.pos, k)->cell0 == k)) {
        gocell(a.pos, k);
        return;
      }
    }
    int j = scan(ix, 1, [&](int c, int pos) { return !(pos == a.pos && c / fs.nb_cols + 1 == line); });
    if (j >= 0) goix(j);
    return;
  }
  if (a.pos && fld(a.pos).type != 2 && !fs.reverse) {
    int start = firston(a.pos, line);
    if (start != ix) {
      goix(start);
      return;
    }
  }
  int j = scan(ix, -1, [&](int c, int pos) { return !(pos == a.pos && c / fs.nb_cols + 1 == line); });
  if (j < 0) {
    if (!a.pos || fld(a.pos).type == 2) goix(0);
    return;
  }
  int pos = p.owner[j];
  const int32_t *tabs = ext(pos).tabs;
  if (tabs && tabs[0] > 0) {
    gocell(pos, tabs[tabs[0]] - 1 < int(p.cells[pos - 1].line.size()) ? tabs[tabs[0]] - 1 : 0);
    return;
  }
  goix(firston(pos, j / fs.nb_cols + 1));
}

static void linemove(bool prev) {
  fs_pagerec &p = pg();
  int line = p.cur_line;
  for (int i = 1; i <= fs.nb_lines; i++) {
    int l = ((line - 1 + (prev ? -i : i)) % fs.nb_lines + fs.nb_lines) % fs.nb_lines + 1;
    for (int c = 1; c <= fs.nb_cols; c++)
      if (fs_usable(l, c)) {
        p.cur_line = l;
        p.cur_col = c;
        return;
      }
  }
}

int fs_arrow(int code) {
  fs_pagerec &p = pg();
  int line = p.cur_line, col = p.cur_col;
  if (code == FSK_UP || code == FSK_DOWN) {
    int l = code == FSK_UP ? (line == 1 ? fs.nb_lines : line - 1) : (line == fs.nb_lines ? 1 : line + 1);
    int pos = p.owner[cellix(l, col)];
    if (pos && code == FSK_UP && (fld(pos).flags & FSF_REPUP)) return 47;
    if (pos && code == FSK_DOWN && (fld(pos).flags & FSF_REPDOWN)) return 48;
    p.cur_line = l;
    return -1;
  }
  int step = code == FSK_LEFT ? -1 : 1;
  int ix = (cellix(line, col) + step + fs.nb_lines * fs.nb_cols) % (fs.nb_lines * fs.nb_cols);
  goix(ix);
  if (!fs.skip || p.fld.empty() || fs_usable(p.cur_line, p.cur_col)) return -1;
  for (int c = p.cur_col; c >= 1 && c <= fs.nb_cols; c += step)
    if (fs_usable(p.cur_line, c)) {
      p.cur_col = c;
      break;
    }
  return -1;
}
