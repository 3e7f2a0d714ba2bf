// Cursor, text and attribute calls on the current page, the queries, and the
// behaviour switches. Everything works through a field's cell list.
#include "fields/fs_int.h"
#include <cstdlib>
#include <cstring>

int as_msgfield = 0;

namespace {

// Looks a field up for a call; reports words (with the id) and code 28 when absent.
int need(int id, const char *words) {
  int pos = fs_find(id);
  if (!pos) fs_err(AS_ENOTFOUND, words, id);
  return pos;
}

const fsfield &fld(int pos) { return pg().fld[pos - 1]; }
const fs_cells &cl(int pos) { return pg().cells[pos - 1]; }
int ncells(int pos) { return int(cl(pos).line.size()); }
int cix(int pos, int k) { return cellix(cl(pos).line[k], cl(pos).col[k]); }

bool wrapped(const fsfield &f) { return f.nb_lines == 1 && f.x1 + f.nb_cols - 1 > fs.nb_cols; }

int upcase(int c, const fsfield &f) { return f.upper == 1 && c >= 'a' && c <= 'z' ? c - 32 : c; }

// Position inside a field of an absolute cell: k is the 0-based cell.
void infield(int pos, int line, int col, int code, int *fl, int *ln, int *cn) {
  const fsfield &f = fld(pos);
  *fl = f.id;
  if (wrapped(f)) {
    *ln = 1;
    *cn = cellix(line, col) - cellix(f.y1, f.x1) + 1;
    return;
  }
  *ln = line - f.y1 + 1;
  *cn = col - f.x1 + 1;
  if (code == 2) *cn = (*ln - 1) * f.nb_cols + *cn;
}

void query(int code, int line, int col, int *fl, int *ln, int *cn) {
  *fl = 0;
  *ln = line;
  *cn = col;
  as_errno = 0;
  if (code == 0 || pg().fld.empty()) return;
  int pos = pg().owner[cellix(line, col)];
  if (pos) infield(pos, line, col, code, fl, ln, cn);
}

bool setcur(int id, int line, int col) {
  fs_pagerec &p = pg();
  if (id == 0) {
    if (line < 1 || line > fs.nb_lines || col < 1 || col > fs.nb_cols) return false;
    p.cur_line = line;
    p.cur_col = col;
    return true;
  }
  int pos = fs_find(id);
  const fsfield &f = fld(pos);
  long k;
  if (wrapped(f)) {
    if (line != 1) return false;
    k = col - 1L;
  } else {
    if (line < 1 || line > f.nb_lines || col < 1 || col > f.nb_cols) return false;
    k = (line - 1L) * f.nb_cols + col - 1;
  }
  if (k < 0 || k >= ncells(pos)) return false;
  p.cur_line = cl(pos).line[k];
  p.cur_col = cl(pos).col[k];
  return true;
}

void cursorcall(int id, int line, int col, bool quiet) {
  if (!fs_started("asfcur : call fsinit() first")) return;
  if (id != 0 && !need(id, "asfcur: field %d not found.")) return;
  as_errno = 0;
  if (setcur(id, line, col)) return;
  if (quiet)
    as_errno = 1;
  else
    fs_err(1, "asfcur : invalid specification");
}

// Writes cells through the list: src(i) gives cell i, fill after len.
template <class T>
int putcells(int id, int len, const T *src, uint16_t fill) {
  if (!fs_started("ascput : call fsinit() first")) return -1;
  int pos = need(id, "ascput_short: field %d does not exist");
  if (!pos) return -1;
  as_errno = 0;
  fs_pagerec &p = pg();
  const fsfield &f = fld(pos);
  int n = ncells(pos);
  for (int i = 0; i < n; i++) {
    int ix = cix(pos, i);
    p.text[ix] = i < len && src ? uint16_t(src[i]) : fill;
    p.hilite[ix] = f.hilite;
    p.colour[ix] = fs_phys(f.colour);
  }
  fs_markdirty(pos);
  return pos - 1;
}

// Sets one attribute on the definition and every cell of a field.
void fieldattr(int id, const char *notstarted, const char *missing, int32_t fsfield::*word,
               int value, std::vector<int32_t> fs_pagerec::*cells, int cellvalue) {
  if (!fs_started(notstarted)) return;
  int pos = need(id, missing);
  if (!pos) return;
  as_errno = 0;
  fs_pagerec &p = pg();
  p.fld[pos - 1].*word = value;
  if (cells) {
    for (int i = 0; i < ncells(pos); i++) (p.*cells)[cix(pos, i)] = cellvalue;
    fs_markdirty(pos);
  }
}

template <class T>
void cellcolours(int id, int len, const T *c) {
  if (!fs_started("asccol : call fsinit() first")) return;
  int pos = need(id, "asccol: field %d does not exist.");
  if (!pos) return;
  as_errno = 0;
  int n = len < ncells(pos) ? len : ncells(pos);
  for (int i = 0; i < n; i++)
    pg().colour[cix(pos, i)] = c[i] < 0 ? fs_phys(fld(pos).colour) : fs_phys(c[i]);
  if (n > 0) fs_markdirty(pos);
}

// Behaviour switches: which values each accepts and how it complains.
struct switchrow {
  int fs_state::*var;  // the switch
  uint32_t allowed;    // bit v set: value v accepted
  const char *bad;     // complaint
  int code;            // as_errno for a bad value, -1 leaves it alone
};
enum { SW_UP, SW_UPM, SW_SKIP, SW_INT2, SW_REM, SW_BLK, SW_APL, SW_VETO, SW_VIEW, SW_ACOL,
       SW_REPEAT, SW_COUNT };
constexpr switchrow switches[] = {
    {&fs_state::up, 3, "asfup : invalid flagg", 1},
    {&fs_state::upm, 3, "asfupm : invalid flagg", 1},
    {&fs_state::skip, 3, "asfmod : invalid flagg", -1},
    {&fs_state::int2, 3, "asfint2 : invalid flagg", 1},
    {&fs_state::rem, 7, "asfrem : invalid parameter", 1},
    {&fs_state::blk, 3, "asfblk : invalid mode", -1},
    {&fs_state::apl, 3, "asfapl : invalid mode", 1},
    {&fs_state::veto, 0x37, "asfveto : Invalid parameter", 1},
    {&fs_state::view, 3, "asfview : invalid parameter", 1},
    {&fs_state::acol, 3, "asfacol : invalid argument", 1},
    {&fs_state::repeat, 3, "asfrepeat: invalid parameter", 1},
};
static_assert(sizeof switches / sizeof switches[0] == SW_COUNT, "one row per switch");

bool setswitch(int which, int value) {
  const switchrow &r = switches[which];
  if (value < 0 || value > 31 || !(r.allowed >> value & 1)) {
    fs_err(r.code, "%s", r.bad);
    return false;
  }
  if (r.code >= 0) as_errno = 0;
  bool changed = fs.*r.var != value;
  fs.*r.var = value;
  return changed;
}

}  // namespace

// ---- cursor ----------------------------------------------------------------

void asfcur(int id, int line, int col) { cursorcall(id, line, col, false); }
void asfcur_quiet(int id, int line, int col) { cursorcall(id, line, col, true); }

void asqcur(int code, int *id, int *line, int *col) {
  if (!fs_started("asqcur : call fsinit() first")) return;
  if (code < 0 || code > 2) {
    fs_err(2, "asqcur : Invalid code");
    return;
  }
  query(code, pg().cur_line, pg().cur_col, id, line, col);
}

void asqmou(int code, int *id, int *line, int *col) {
  if (!fs_started("fspdel : call fsinit() first")) return;
  if (code < 0 || code > 2) {
    fs_err(-1, "asqmou : Invalid code");
    return;
  }
  query(code, pg().mouse_line, pg().mouse_col, id, line, col);
}

// ---- text ------------------------------------------------------------------

int ascput(int id, int len, const char *text) {
  return putcells(id, len, reinterpret_cast<const unsigned char *>(text), 32);
}

int ascput_short(int id, int len, const uint16_t *cells) { return putcells(id, len, cells, FS_NULL); }

void ascget(int id, int len, char *buf) {
  if (!fs_started("ascget : call fsinit() first")) return;
  int pos = need(id, "ascget: field %d does not exist");
  if (!pos) return;
  as_errno = 0;
  for (int i = 0; i < len; i++) {
    int c = 32;
    if (i < ncells(pos)) {
      c = pg().text[cix(pos, i)];
      if (c == FS_NULL) c = 32;
    }
    buf[i] = char(upcase(c, fld(pos)));
  }
}

void ascget_short(int id, int len, uint16_t *buf) {
  if (!fs_started("ascget_short : call fsinit() first")) return;
  int pos = need(id, "ascget_short: field %d does not exist");
  if (!pos) return;
  as_errno = 0;
  for (int i = 0; i < len; i++)
    buf[i] = i < ncells(pos) ? uint16_t(upcase(pg().text[cix(pos, i)], fld(pos))) : FS_NULL;
}

char *ascget_char(int id, int *len, int trim) {
  if (!fs_started("ascget_char : call fsinit() first")) return nullptr;
  int pos = need(id, "ascget_char: field %d does not exist.");
  if (!pos) return nullptr;
  int n = ncells(pos);
  char *s = static_cast<char *>(malloc(size_t(n) + 1));
  ascget(id, n, s);
  int b = 0, e = n;
  if (trim >= 1)
    while (e > 0 && (s[e - 1] == ' ' || s[e - 1] == '\t')) e--;
  if (trim >= 2)
    while (b < e && s[b] == ' ') b++;
  memmove(s, s + b, size_t(e - b));
  s[e - b] = 0;
  if (len) *len = e - b;
  return s;
}

int ascget_int(int id, int *value) {
  if (!fs_started("ascget_int : call fsinit() first")) return -1;
  if (!need(id, "ascget_int: field %d does not exist.")) return -1;
  as_errno = 0;
  int n = 0;
  char *s = ascget_char(id, &n, 2);
  char *end = s;
  long v = strtol(s, &end, 10);
  bool ok = end != s && *end == 0;
  free(s);
  if (ok) {
    *value = int(v);
    return 0;
  }
  // Always this wording, whatever the installation's language.
  static const char bad[] = "Donn\xe9" "e manquante ou incorrecte";
  if (as_msgfield && fs_find(as_msgfield)) ascput(as_msgfield, int(sizeof bad) - 1, bad);
  as_errno = 0;
  setcur(id, 1, 1);
  fsalrm();
  return 1;
}

// ---- attributes of a field -------------------------------------------------

void asfcol(int id, int colour) {
  int c = colour % 65;
  if (c < 0) c += 65;
  fieldattr(id, "asfcol : call fsinit() first", "asfcol: field %d does not exist.",
            &fsfield::colour, c, &fs_pagerec::colour, fs_phys(c));
}
void asfhlt(int id, int hilite) {
  fieldattr(id, "asfhlt : call fsinit() first", "asfhlt: field %d does not exist",
            &fsfield::hilite, hilite, &fs_pagerec::hilite, hilite);
}
void asfint(int id, int intensity) {
  fieldattr(id, "asfint : call fsinit() first", "asfint: field %d does not exist",
            &fsfield::intensity, intensity, &fs_pagerec::intensity, intensity);
}
void asftyp(int id, int type) {
  fieldattr(id, "asftyp : call fsinit() first", "asftyp: field %d does not exist.",
            &fsfield::type, type, nullptr, 0);
}
void asfmgd(int id, int value) {
  fieldattr(id, "asfmgd : call fsinit() first", "asfmgd: field %d does not exist",
            &fsfield::mgd, value, nullptr, 0);
}

void asfmod(int id, int value) {
  if (!fs_started("asfmod : call fsinit() first")) return;
  if (value != 0 && value != 1) {
    fs_err(1, "asfmod: Invalid parameter.");
    return;
  }
  int pos = need(id, "asfmod: field %d does not exist.");
  if (!pos) return;
  as_errno = 0;
  pg().modified[pos - 1] = uint8_t(value);
}

void asftypall(int type) {
  if (!fs_started("asftypall : call fsinit() first")) return;
  as_errno = 0;
  for (size_t i = 0; i < pg().fld.size(); i++) {
    pg().fld[i].type = type;
    pg().dirty[i] = 1;
  }
}

void asccol(int id, int len, const int32_t *colours) { cellcolours(id, len, colours); }
void asccol(int id, int len, const int8_t *colours) { cellcolours(id, len, colours); }

void aschlt(int id, int len, const int32_t *hilites) {
  if (!fs_started("aschlt : call fsinit() first")) return;
  int pos = need(id, "aschlt: field %d does not exist.");
  if (!pos) return;
  as_errno = 0;
  int n = len < ncells(pos) ? len : ncells(pos);
  for (int i = 0; i < n; i++) pg().hilite[cix(pos, i)] = hilites[i] < 0 ? fld(pos).hilite : hilites[i];
  if (n > 0) fs_markdirty(pos);
}

void asscol(int id) {
  if (!fs_started("asscol : call fsinit() first")) return;
  int pos = need(id, "asscol: field %d does not exist.");
  if (!pos) return;
  as_errno = 0;
  for (int i = 0; i < ncells(pos); i++) pg().colour[cix(pos, i)] = fs_phys(fld(pos).colour);
  fs_markdirty(pos);
}

void asshlt(int id) {
  if (!fs_started("asshlt : call fsinit() first")) return;
  int pos = need(id, "asshlt: field %d does not exist.");
  if (!pos) return;
  as_errno = 0;
  for (int i = 0; i < ncells(pos); i++) pg().hilite[cix(pos, i)] = fld(pos).hilite;
  fs_markdirty(pos);
}

void asqcol(int id, int n, int32_t *colours) {
  if (!fs_started("asqcol : call fsinit() first")) return;
  int pos = need(id, "asqcol: field %d does not exist.");
  if (!pos) return;
  as_errno = 0;
  int own = fs_phys(fld(pos).colour);
  for (int i = 0; i < n; i++) {
    colours[i] = 0;
    if (i >= ncells(pos)) continue;
    int c = pg().colour[cix(pos, i)];
    if (c != own) colours[i] = fs.back[c % 65];
  }
}

// ---- queries ---------------------------------------------------------------

int asqmod(int count, int *ids, int *lens, int *used) {
  if (!fs_started("asqmod : call fsinit() first")) return 0;
  if (count < 0) {
    fs_err(1, "asqmod : count is negative");
    return 0;
  }
  as_errno = 0;
  fs_pagerec &p = pg();
  int got = 0;
  for (size_t i = 0; i < p.fld.size() && got < count; i++) {
    if (!p.modified[i]) continue;
    int pos = int(i) + 1, n = ncells(pos), u = n;
    while (u > 0) {
      uint16_t c = p.text[cix(pos, u - 1)];
      if (c != ' ' && c != FS_NULL) break;
      u--;
    }
    ids[got] = p.fld[i].id;
    lens[got] = n;
    used[got] = u;
    p.modified[i] = 0;
    got++;
  }
  for (int i = got; i < count; i++) ids[i] = lens[i] = used[i] = 0;
  return got;
}

void asqfld(int code, int id, int count, int32_t *words) {
  if (!fs_started("asqfld : call fsinit() first")) return;
  if (code != 0) {
    fs_err(1, "asqfld : Invalid code");
    return;
  }
  if (count < 1 || count > 14) {
    fs_err(2, "asqfld : Invalid count");
    return;
  }
  int pos = fs_find(id);
  if (!pos) {
    fs_err(-1, "asqfld: field %d does not exist.", id);
    return;
  }
  as_errno = 0;
  memcpy(words, &fld(pos), size_t(count) * sizeof(int32_t));
}

void fsqury(int code, int, int count, int32_t *words) {
  if (!fs_started("fsqury : call fsinit() first")) return;
  if (code != 0 && code != 4) {
    fs_err(1, "fsqury : Invalid code");
    return;
  }
  if ((code == 0 && count != 4) || (code == 4 && count != 8)) {
    fs_err(2, " fsqury: Invalid count");
    return;
  }
  as_errno = 0;
  if (code == 0) {
    const int32_t w[4] = {0, 0, fs.nb_lines, fs.nb_cols};
    memcpy(words, w, sizeof w);
    return;
  }
  if (fs.plat) fs.plat->geometry(fs.m);
  const int32_t w[8] = {fs.m.screen_w, fs.m.screen_h, fs.m.cell_w,   fs.m.cell_h,
                        fs.m.left,     fs.m.top,      fs.m.client_w, fs.m.client_h};
  memcpy(words, w, sizeof w);
}

int asq_ff(int id) {
  if (!fs_started("asq_ff : call fsinit() first")) return 1;
  int pos = fs_find(id);
  if (!pos) {
    fs_err(-1, "asq_ff: invalid field");
    return 1;
  }
  return pos;
}

// ---- switches --------------------------------------------------------------

void asfup(int on) { setswitch(SW_UP, on); }
void asfupm(int on) { setswitch(SW_UPM, on); }
void asfskip(int on) { setswitch(SW_SKIP, on); }
void asfint2(int on) {
  if (setswitch(SW_INT2, on)) fs.full = true;
}
void asfrem(int mode) { setswitch(SW_REM, mode); }
void asfblk(int mode) { setswitch(SW_BLK, mode); }
void asfapl(int on) { setswitch(SW_APL, on); }
void asfveto(int value) { setswitch(SW_VETO, value); }
void asfview(int on) {
  if (setswitch(SW_VIEW, on) && fs.plat) fs.plat->show(on);
}
void asfacol(int on) {
  if (setswitch(SW_ACOL, on)) fs.colchange = true;
}
void asfrepeat(int on) { setswitch(SW_REPEAT, on); }
void asfro(int on) { fs.readonly = on != 0; }

void fsalrm() {
  if (!fs_started("fsalrm : call fsinit() first")) return;
  pg().bells++;
}
