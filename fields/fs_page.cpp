// Pages and field definition: start-up of the model, the page table, asrfmt
// and its layout rules, removal of fields, the colour tables and the error
// reporting every call shares.
#include "fields/fs_int.h"
#include <cstdarg>
#include <cstdlib>
#include <cstring>

fs_state fs;
int as_errno = 0;
char as_lastmsg[161] = "..... No error";
int as_msgs = 1;

namespace {

constexpr int PAGE_STEP = 10;    // page slots added at a time
constexpr int FIELD_STEP = 100;  // field slots added at a time

// Window options taken out of the command line, with the words they take.
struct winopt {
  const char *name;  // without the leading - or /
  int nargs;         // words after it
};
constexpr winopt winopts[] = {
    {"font", 1},          {"Wt", 1},  {"dy_font", 1}, {"height", 1}, {"Wh", 1},
    {"width", 1},         {"Ww", 1},  {"position", 2}, {"Wp", 2},    {"icon_position", 2},
    {"WP", 2},            {"iconic", 0}, {"noauto", 0},
};
static_assert(sizeof winopts / sizeof winopts[0] == 13, "thirteen window options");

const winopt *findopt(const char *arg) {
  if (arg[0] != '-' && arg[0] != '/') return nullptr;
  for (const winopt &o : winopts)
    if (strcmp(arg + 1, o.name) == 0) return &o;
  return nullptr;
}

void colourinit() {
  for (int i = 0; i < 65; i++) fs.fwd[i] = fs.back[i] = i;
  fs.fwd[7] = 64;
  fs.fwd[64] = 7;
  fs.back[7] = 64;
  fs.back[64] = 7;
  fs.fwd[0] = 4;
  // The usual eight colours low, black background at 0, light grey text at 64.
  static const int base[8][3] = {{0, 0, 0},     {0, 0, 205},   {205, 0, 0},   {205, 0, 205},
                                 {0, 205, 0},   {0, 205, 205}, {205, 205, 0}, {229, 229, 229}};
  for (int i = 0; i < 65; i++) {
    const int *c = base[i % 8];
    for (int k = 0; k < 3; k++) fs.pal[i][k] = i >= 8 && c[k] ? 255 : c[k];
  }
  fs.pal[64][0] = fs.pal[64][1] = fs.pal[64][2] = 229;
}

void pagealloc(fs_pagerec &p) {
  size_t n = size_t(fs.nb_lines) * size_t(fs.nb_cols);
  p.text.assign(n, 32);
  p.owner.assign(n, 0);
  p.hilite.assign(n, 0);
  p.colour.assign(n, 64);
  p.intensity.assign(n, 1);
  p.mouse_line = p.mouse_col = 1;
  p.cur_line = p.cur_col = 1;
  p.bells = 0;
  p.repaint = true;
}

void cellreset(fs_pagerec &p, int ix) {
  p.text[ix] = 32;
  p.owner[ix] = 0;
  p.hilite[ix] = 0;
  p.colour[ix] = 64;
  p.intensity[ix] = 1;
}

// Undoes the cells placed so far for field pos.
void unplace(fs_pagerec &p, fs_cells &c) {
  for (size_t i = 0; i < c.line.size(); i++) cellreset(p, cellix(c.line[i], c.col[i]));
  c.line.clear();
  c.col.clear();
}

// Takes one cell for field pos; false when another field owns it.
bool place(fs_pagerec &p, int pos, int line, int col, fs_cells &c) {
  int ix = cellix(line, col);
  const fsfield &f = p.fld[pos - 1];
  if (p.owner[ix] != 0) {
    int other = p.fld[p.owner[ix] - 1].id;
    unplace(p, c);
    fs_err(1, "as(x)fmt: field %d overlaps field %d", f.id, other);
    return false;
  }
  p.owner[ix] = pos;
  fs_cellattr(ix, f);
  c.line.push_back(int16_t(line));
  c.col.push_back(int16_t(col));
  return true;
}

// Lays out field pos; false on failure, with the message given.
bool layout(int pos) {
  fs_pagerec &p = pg();
  const fsfield &f = p.fld[pos - 1];
  fs_cells &c = p.cells[pos - 1];
  c.line.clear();
  c.col.clear();
  if (f.x1 > fs.nb_cols || f.x1 < 1) {
    fs_err(1, "as(x)fmt: Field %d: x1 = %d  nb_cols = %d.", f.id, f.x1, fs.nb_cols);
    return false;
  }
  if (f.y1 > fs.nb_lines || f.y1 < 1) {
    fs_err(1, "as(x)fmt: Field %d: y1 = %d  nb_lines = %d.", f.id, f.y1, fs.nb_lines);
    return false;
  }
  if (f.nb_lines < 1 || f.nb_cols < 1) {
    fs_err(1, "as(x)fmt: Field %d: y2 = %d  nb_lines = %d.", f.id, f.y1 + f.nb_lines - 1,
           fs.nb_lines);
    return false;
  }
  long x2 = long(f.x1) + f.nb_cols - 1;
  if (f.nb_lines == 1 && x2 > fs.nb_cols) {
    int py = f.y1, px = f.x1;
    for (int n = 0; n < f.nb_cols; n++) {
      if (px > fs.nb_cols) {
        px = 1;
        py++;
      }
      if (py > fs.nb_lines) {
        unplace(p, c);
        fs_err(1, "as(x)fmt: Field %d: py = %d  nb_lines = %d.", f.id, py, fs.nb_lines);
        return false;
      }
      if (!place(p, pos, py, px, c)) return false;
      px++;
    }
    return true;
  }
  long y2 = long(f.y1) + f.nb_lines - 1;
  if (y2 > fs.nb_lines) {
    fs_err(1, "as(x)fmt: Field %d: y2 = %ld  nb_lines = %d.", f.id, y2, fs.nb_lines);
    return false;
  }
  // The right edge of a block is the caller's responsibility; cut it rather
  // than write past the grid.
  if (x2 > fs.nb_cols) x2 = fs.nb_cols;
  for (int y = f.y1; y <= y2; y++)
    for (int x = f.x1; x <= x2; x++)
      if (!place(p, pos, y, x, c)) return false;
  return true;
}

void growfields(fs_pagerec &p, int need) {
  if (need <= p.capacity) return;
  int cap = p.capacity + FIELD_STEP;
  if (cap < need) cap = need;
  p.fld.reserve(cap);
  p.capacity = cap;
}

void appendfield(fs_pagerec &p, const fsfield &f) {
  growfields(p, int(p.fld.size()) + 1);
  p.fld.push_back(f);
  p.modified.push_back(0);
  p.dirty.push_back(0);
  p.menu.push_back(nullptr);
  fsxfield x{};
  x.limit = -1;
  p.ext.push_back(x);
  p.cells.emplace_back();
}

void dropfields(fs_pagerec &p, size_t n) {
  p.fld.resize(n);
  p.modified.resize(n);
  p.dirty.resize(n);
  p.menu.resize(n);
  p.ext.resize(n);
  p.cells.resize(n);
}

}  // namespace

// ---- shared helpers --------------------------------------------------------

void fs_err(int code, const char *fmt, ...) {
  char buf[512];
  va_list ap;
  va_start(ap, fmt);
  vsnprintf(buf, sizeof buf, fmt, ap);
  va_end(ap);
  if (code >= 0) as_errno = code;
  size_t n = strnlen(buf, sizeof as_lastmsg - 1);
  memcpy(as_lastmsg, buf, n);
  as_lastmsg[n] = 0;
  if (as_msgs && fs.plat) fs.plat->alert(as_lastmsg);
}

bool fs_started(const char *words) {
  if (fs.started && fs.cur >= 0) return true;
  fs_err(1, "%s", words);
  return false;
}

int fs_find(int id) {
  if (fs.cur < 0) return 0;
  const std::vector<fsfield> &t = pg().fld;
  for (size_t i = 0; i < t.size(); i++)
    if (t[i].id == id) return int(i) + 1;
  return 0;
}

int fs_phys(int logical) {
  int l = logical % 65;
  if (l < 0) l += 65;
  return fs.fwd[l];
}

void fs_cellattr(int ix, const fsfield &f) {
  fs_pagerec &p = pg();
  p.hilite[ix] = f.hilite;
  p.colour[ix] = fs_phys(f.colour);
  p.intensity[ix] = f.intensity;
}

void fs_markdirty(int pos) {
  if (pos >= 1 && pos <= int(pg().dirty.size())) pg().dirty[pos - 1] = 1;
}

int fs_slot(uint32_t number) {
  for (size_t i = 0; i < fs.pages.size(); i++)
    if (fs.pages[i].number == number) return int(i);
  return -1;
}

void fs_select(int slot) {
  fs.cur = slot;
  fs.curnum = fs.pages[slot].number;
  fs.full = true;
}

void fs_newpage(uint32_t number) {
  int slot = fs_slot(FS_NOPAGE);
  if (slot < 0) {
    slot = int(fs.pages.size());
    fs.pages.resize(fs.pages.size() + PAGE_STEP);
  }
  fs_pagerec &p = fs.pages[slot];
  p = fs_pagerec();
  p.number = number;
  pagealloc(p);
  fs_select(slot);
}

void fs_removefield(int pos) {
  fs_pagerec &p = pg();
  fs_cells &c = p.cells[pos - 1];
  for (size_t i = 0; i < c.line.size(); i++) cellreset(p, cellix(c.line[i], c.col[i]));
  for (int32_t &o : p.owner)
    if (o > pos) o--;
  p.fld.erase(p.fld.begin() + pos - 1);
  p.modified.erase(p.modified.begin() + pos - 1);
  p.dirty.erase(p.dirty.begin() + pos - 1);
  p.menu.erase(p.menu.begin() + pos - 1);
  p.ext.erase(p.ext.begin() + pos - 1);
  p.cells.erase(p.cells.begin() + pos - 1);
  p.repaint = true;
}

void fs_clearall() {
  fs_pagerec &p = pg();
  if (p.fld.empty()) return;
  dropfields(p, 0);
  p.fld.shrink_to_fit();
  p.capacity = 0;
  for (size_t i = 0; i < p.text.size(); i++) cellreset(p, int(i));
  p.subst.clear();
  p.subst_cell.clear();
  // Every line is compared again, against the shadow as it stands: the
  // editor clears and rebuilds its page on every turn, and only the cells
  // that come out different are worth drawing.
  p.repaint = true;
}

// ---- start -------------------------------------------------------------

int fsinit(int argc, char **argv, fs_plat *layer) {
  if (fs.started) {
    fs_err(1, "fsinit : secondary entrance forbidden");
    return -1;
  }
  fs = fs_state();
  fs.plat = layer;
  colourinit();
  fs_keybinit();
  fs_movetab_set(-1);
  fs_evreset();
  int lines = 0, cols = 0, out = 1;
  for (int i = 1; i < argc; i++) {
    const winopt *o = findopt(argv[i]);
    if (!o || i + o->nargs >= argc) {
      argv[out++] = argv[i];
      continue;
    }
    if (strcmp(o->name, "height") == 0 || strcmp(o->name, "Wh") == 0) lines = atoi(argv[i + 1]);
    if (strcmp(o->name, "width") == 0 || strcmp(o->name, "Ww") == 0) cols = atoi(argv[i + 1]);
    i += o->nargs;
  }
  if (out < argc) argv[out] = nullptr;
  if (layer && lines > 0 && cols > 0) layer->size(lines, cols);
  if (layer)
    for (int i = 0; i < 65; i++) layer->palette(i, fs.pal[i][0], fs.pal[i][1], fs.pal[i][2]);
  fs.started = true;
  fsinit2();
  return out;
}

// Measures the grid and makes a fresh page 0. Called by fsinit, and again by
// a caller that measures anew: pages made for another grid size cannot stay.
void fsinit2() {
  if (!fs.started) return;
  if (fs.plat) fs.plat->geometry(fs.m);
  int cw = fs.m.cell_w > 0 ? fs.m.cell_w : 1;
  int ch = fs.m.cell_h > 0 ? fs.m.cell_h : 1;
  int lines = fs.plat ? fs.m.client_h / ch - 1 : 24;
  int cols = fs.plat ? fs.m.client_w / cw : 80;
  if (cols < 1) cols = 1;
  if (lines < 1) lines = 1;
  if (lines != fs.nb_lines || cols != fs.nb_cols) fs.pages.clear();
  int zero = fs_slot(0);
  if (zero >= 0) fs.pages[zero] = fs_pagerec();
  fs.nb_lines = lines;
  fs.nb_cols = cols;
  size_t n = size_t(fs.nb_lines) * size_t(fs.nb_cols);
  fs.sh.text.assign(n, 32);
  fs.sh.hilite.assign(n, 0);
  fs.sh.colour.assign(n, 64);
  fs.sh.intensity.assign(n, 1);
  fs.sh.tick.assign(n, 0);
  fs.sh.ticks = 0;
  fs.status.clear();
  fs.curs_line = fs.curs_col = 0;
  fs.cur = -1;
  fs.curnum = FS_NOPAGE;
  fs_newpage(0);
  if (fs.plat) fs.plat->clear();
}

void fsresize() {
  if (!fs.started) return;
  fs.shutdown = true;
  for (size_t i = 0; i < fs.pages.size(); i++) {
    fs.pages[i] = fs_pagerec();
  }
  fs.pages.clear();
  fs.shutdown = false;
  fs.resized = false;
  fsinit2();
}

void fsend() {
  fs.pages.clear();
  fs.cur = -1;
  fs.started = false;
  fs_evreset();
}

fs_plat *fs_layer() { return fs.plat; }

uint32_t fs_curpage() { return fs.curnum; }

void fs_grid(int *lines, int *cols) {
  *lines = fs.nb_lines;
  *cols = fs.nb_cols;
}

// ---- pages ---------------------------------------------------------------

void fspcrt(uint32_t page, int, int, int) {
  if (!fs_started("fspcrt : call fsinit() first")) return;
  if (fs_slot(page) >= 0) {
    fs_err(2, "fspcrt: Page %d already exists.", int(page));
    return;
  }
  fs_newpage(page);
  as_errno = 0;
}

void fspsel(uint32_t page) {
  if (!fs_started("fspcrt : call fsinit() first")) return;
  as_errno = 0;
  if (page == fs.curnum) return;
  int slot = fs_slot(page);
  if (slot < 0) {
    fs_err(AS_ENOTFOUND, "fspdel: Page %d not found.", int(page));
    return;
  }
  fs_select(slot);
}

void fspdel(uint32_t page) {
  if (!fs_started("fspdel : call fsinit() first")) return;
  if (page == 0 && !fs.shutdown) {
    fs_err(1, "fspdel : page 0 cannot be destroyed");
    return;
  }
  int slot = fs_slot(page);
  if (slot < 0) {
    fs_err(AS_ENOTFOUND, "fspdel: Page %d not found.", int(page));
    return;
  }
  as_errno = 0;
  int prev = fs.cur;
  bool full = fs.full;
  fs.cur = slot;
  fs_clearall();
  fs.pages[slot] = fs_pagerec();
  if (prev == slot) {
    int zero = fs_slot(0);
    if (zero >= 0) {
      fs_select(zero);
    } else {
      fs.cur = -1;
      fs.curnum = FS_NOPAGE;
    }
    return;
  }
  fs.cur = prev;
  fs.full = full;
}

// ---- definition ------------------------------------------------------------

int asrfmt(int nrows, int words, const int32_t *table) {
  if (!fs_started("asrfmt : call fsinit() first")) return -1;
  if (words < 5 || words > 14) {
    fs_err(1, "asrfmt : invalid count number");
    return -1;
  }
  if (nrows < 0) {
    fs_err(2, "asrfmt : invalid n_fields number");
    return -1;
  }
  as_errno = 0;
  if (nrows == 0 || !table) return -1;
  auto row = [&](int r) {
    fsfield f{};
    memcpy(&f, table + size_t(r) * words, size_t(words) * sizeof(int32_t));
    return f;
  };
  for (int r = 0; r < nrows; r++)
    if (row(r).id < 1) {
      fs_err(4, "asrfmt: field %d invalid", r + 1);
      return -1;
    }
  // The last row is compared with none: a caller may repeat the final id on
  // purpose, and the later definition then wins.
  for (int r = 0; r + 2 < nrows; r++)
    for (int s = r + 1; s + 1 < nrows; s++)
      if (row(r).id == row(s).id) {
        fs_err(3, "asrfmt: duplicate field %d", row(r).id);
        return -1;
      }
  fs_pagerec &p = pg();
  size_t first = SIZE_MAX;
  for (int r = 0; r < nrows; r++) {
    fsfield f = row(r);
    int old = fs_find(f.id);
    if (old) {
      fs_removefield(old);
      if (first != SIZE_MAX && size_t(old) <= first) first--;
    }
    if (f.y1 == 0 || f.x1 == 0 || f.nb_lines == 0 || f.nb_cols == 0) continue;
    if (f.colour > 64) f.colour = 64;
    if (first == SIZE_MAX) first = p.fld.size();
    appendfield(p, f);
  }
  if (first == SIZE_MAX || first >= p.fld.size()) return -1;
  for (size_t i = first; i < p.fld.size(); i++) {
    if (!layout(int(i) + 1)) {
      dropfields(p, i);
      p.repaint = true;
      return int(i);
    }
  }
  p.repaint = true;
  for (size_t i = first; i < p.fld.size(); i++) p.dirty[i] = 1;
  const fs_cells &c = p.cells.back();
  for (size_t i = 0; i < c.line.size(); i++) p.text[cellix(c.line[i], c.col[i])] = FS_NULL;
  return int(p.fld.size()) - 1;
}

int asxfmt(int words, const int32_t *row, const fsxfield &x) {
  int r = asrfmt(1, words, row);
  if (r < 0 || as_errno) return r;
  pg().ext[r] = x;
  return r;
}

int asxset(int id, const fsxfield &x) {
  int pos = fs_find(id);
  if (!pos) return -1;
  pg().ext[size_t(pos) - 1] = x;
  return 0;
}

void asfclr() {
  if (!fs_started("fsalrm : call fsinit() first")) return;
  as_errno = 0;
  fs_clearall();
}

// ---- colours ---------------------------------------------------------------

void asfmap(int entry, int red, int green, int blue) {
  if (!fs_started("asfmap : call fsinit() first")) return;
  if (entry < 0) {
    fs_err(1, "asfmap : invalid colormap entry");
    return;
  }
  as_errno = 0;
  int e = entry % 65;
  fs.pal[e][0] = red;
  fs.pal[e][1] = green;
  fs.pal[e][2] = blue;
  if (fs.plat) fs.plat->palette(e, red, green, blue);
  if (fs.acol) fs.colchange = true;
}

void asqmap(int entry, int *red, int *green, int *blue) {
  if (!fs.started) colourinit();  // a run with no screen still lists the defaults
  int e = (entry < 0 ? 0 : entry) % 65;
  *red = fs.pal[e][0];
  *green = fs.pal[e][1];
  *blue = fs.pal[e][2];
}

int asffont(const char *font) {
  if (!fs_started("asffont : call fsinit() first")) return 1;
  std::string name = font ? font : "";
  if (fs.plat && fs.plat->font(name) != 0) {
    fs_err(1, "Invalid font\n%s", name.c_str());
    return 1;
  }
  as_errno = 0;
  return 0;
}
