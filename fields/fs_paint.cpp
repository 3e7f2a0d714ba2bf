// Painting: the shadow of what the layer shows, the comparison that hands the
// layer only the runs that differ, the refresh, the cursor bar, the status
// line, and a dump of the screen for headless runs and tests.
#include "fields/fs_int.h"
#include <cstring>

namespace {

// What a cell looks like on the screen; compared with the shadow.
struct look {
  uint16_t ch;   // displayable character
  uint8_t hl;    // hilite, 1 folded into 0
  uint8_t col;   // physical colour
  uint8_t in;    // intensity, 2 folded into 1 when drawn once
  bool operator==(const look &o) const { return ch == o.ch && hl == o.hl && col == o.col && in == o.in; }
};

uint16_t shown(uint16_t c) {
  if (c == FS_NULL) return ' ';
  if (c == '\t' || c == '\n' || c == '\f') return '.';
  return c;
}

// The cells of one line of the page, as the screen would show them.
struct linecells {
  const uint16_t *text;      // characters
  const int32_t *hilite;     // hilites
  const int32_t *colour;     // physical colours
  const int32_t *intensity;  // intensities
  bool acol;                 // colours on
  bool int2;                 // intensity 2 drawn twice
  look at(int i) const {
    look l;
    l.ch = shown(text[i]);
    l.hl = uint8_t(hilite[i] == 1 ? 0 : hilite[i]);
    l.col = uint8_t(acol ? colour[i] : 64);
    l.in = uint8_t(intensity[i] == 2 && !int2 ? 1 : intensity[i]);
    return l;
  }
};

// The shadow of one line.
struct lineshadow {
  uint16_t *text;      // characters drawn
  uint8_t *hilite;     // hilites drawn
  uint8_t *colour;     // colours drawn
  uint8_t *intensity;  // intensities drawn
  look at(int i) const { return look{text[i], hilite[i], colour[i], intensity[i]}; }
  void set(int i, const look &l) {
    text[i] = l.ch;
    hilite[i] = l.hl;
    colour[i] = l.col;
    intensity[i] = l.in;
  }
};

void put(std::string &s, int col, const char *text) {
  for (int i = 0; text[i] && col - 1 + i < int(s.size()); i++)
    if (col - 1 + i >= 0) s[col - 1 + i] = text[i];
}

// The cursor position as the status line reports it, with the cell's value.
std::string position() {
  const fs_pagerec &p = pg();
  int line = p.cur_line, col = p.cur_col;
  uint16_t cell = p.text[cellix(line, col)];
  uint32_t c = cell == FS_NULL ? 0 : fs_cellchar(cell);  // the character's code point
  if (as_poshook) as_poshook(&line, &col);
  char buf[64];
  bool narrow = fs.nb_cols < 57;
  if (cell == FS_NULL) {
    if (narrow)
      snprintf(buf, sizeof buf, "Line=%d  Hex=--", line);
    else
      snprintf(buf, sizeof buf, "Line=%d  Col=%d  Hex=--", line, col);
  } else if (narrow) {
    snprintf(buf, sizeof buf, "Line=%d  Hex=%2.2X", line, c);
  } else {
    snprintf(buf, sizeof buf, "Line=%d  Col=%d  Hex=%2.2X", line, col, c);
  }
  return buf;
}

// A cell of the dump: a substitute shows as U+FFFD, as it does on a screen.
void dumpplane(FILE *out, const char *name, const std::vector<uint8_t> &plane) {
  static const char digits[] =
      "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ@#$";
  static_assert(sizeof digits - 1 == 65, "one symbol per colour");
  fprintf(out, "%s:\n", name);
  for (int l = 1; l <= fs.nb_lines; l++) {
    for (int c = 1; c <= fs.nb_cols; c++) fputc(digits[plane[cellix(l, c)] % 65], out);
    fputc('\n', out);
  }
}

}  // namespace

fs_menuhook as_menuhook = nullptr;
fs_poshook as_poshook = nullptr;
fs_typehook as_typehook = nullptr;

void fs_paintline(int line) {
  if (fs.cur < 0 || !fs.plat) return;
  fs_pagerec &p = pg();
  size_t base = size_t(cellix(line, 1));
  const linecells now = {&p.text[base], &p.hilite[base], &p.colour[base], &p.intensity[base],
                         fs.acol != 0, fs.int2 != 0};
  lineshadow was = {&fs.sh.text[base], &fs.sh.hilite[base], &fs.sh.colour[base],
                    &fs.sh.intensity[base]};
  const int n = fs.nb_cols;
  int c = 0;
  while (c < n && now.at(c) == was.at(c)) c++;
  static std::vector<uint16_t> buf;
  if (c < n && buf.size() < size_t(n)) buf.resize(size_t(n));
  while (c < n) {
    look a = now.at(c);
    int start = c, len = 0;
    for (; c < n; c++) {
      look b = now.at(c);
      if (b.hl != a.hl || b.col != a.col || b.in != a.in) break;
      was.set(c, b);
      buf[size_t(len++)] = b.ch;
    }
    fs.plat->run(line, start + 1, buf.data(), len, a.hl, a.col, a.in);
  }
}

// Marks the trailing blanks of each segment (or of the whole field) of the
// fields that ask for it, and hands the layer the marks that changed.
static void ticks() {
  fs_pagerec &p = pg();
  bool any = false;
  for (const fsxfield &x : p.ext) any = any || x.show_blanks;
  if (!any && fs.sh.ticks == 0) return;
  std::vector<uint8_t> want(fs.sh.tick.size(), 0);
  for (size_t f = 0; f < p.fld.size(); f++) {
    if (!p.ext[f].show_blanks) continue;
    const fs_cells &c = p.cells[f];
    const fs_verify *v = p.ext[f].verify;
    int nseg = v && v->seg ? v->count : 1;
    for (int s = 0; s < nseg; s++) {
      int first = v && v->seg ? v->seg[s].cell0 : 0;
      int last = v && v->seg ? first + v->seg[s].ncells - 1 : int(c.line.size()) - 1;
      if (last >= int(c.line.size())) last = int(c.line.size()) - 1;
      // Null cells hold nothing: the text ends before them.
      int k = last;
      while (k >= first && k >= 0 && p.text[cellix(c.line[k], c.col[k])] == FS_NULL) k--;
      for (; k >= first && k >= 0; k--) {
        int ix = cellix(c.line[k], c.col[k]);
        if (p.text[ix] != ' ') break;
        want[ix] = 1;
      }
    }
  }
  fs.sh.ticks = 0;
  for (size_t ix = 0; ix < want.size(); ix++) {
    fs.sh.ticks += want[ix];
    if (want[ix] == fs.sh.tick[ix]) continue;
    fs.sh.tick[ix] = want[ix];
    fs.plat->tick(int(ix) / fs.nb_cols + 1, int(ix) % fs.nb_cols + 1, want[ix]);
  }
}

void fs_compare() {
  if (fs.cur < 0) return;
  fs_pagerec &p = pg();
  if (fs.full || fs.colchange) {
    if (fs.plat) fs.plat->clear();
    std::fill(fs.sh.text.begin(), fs.sh.text.end(), uint16_t(' '));
    std::fill(fs.sh.hilite.begin(), fs.sh.hilite.end(), uint8_t(0));
    std::fill(fs.sh.colour.begin(), fs.sh.colour.end(), uint8_t(64));
    std::fill(fs.sh.intensity.begin(), fs.sh.intensity.end(), uint8_t(1));
    std::fill(fs.sh.tick.begin(), fs.sh.tick.end(), uint8_t(0));
    fs.sh.ticks = 0;
    fs.curs_line = fs.curs_col = 0;
    fs.full = fs.colchange = false;
    p.repaint = true;
  }
  bool dirty = p.repaint;
  for (uint8_t d : p.dirty) dirty = dirty || d;
  if (!dirty) return;
  for (int l = 1; l <= fs.nb_lines; l++) fs_paintline(l);
  if (fs.plat) ticks();
  std::fill(p.dirty.begin(), p.dirty.end(), uint8_t(0));
  p.repaint = false;
}

void fs_drawstatus() {
  if (!fs.plat || fs.cur < 0) return;
  std::string s(size_t(fs.nb_cols), ' ');
  put(s, 1, position().c_str());
  int mc = fs.nb_cols / 2 - 4;
  if (mc < 1) mc = 1;
  // The line is composed whole each time, so a mark that is off is simply not written.
  const char *mode = fs.insert && fs.reverse ? "< RINS >"
                     : fs.insert             ? "< INS > "
                     : fs.reverse            ? "  < R >   "
                                             : "";
  put(s, mc, mode);
  if (fs.readonly && fs.nb_cols >= 57) put(s, fs.nb_cols - 15, "READ ONLY FILE");
  if (fs.readonly && fs.nb_cols < 57 && fs.nb_cols - 4 > mc + int(strlen(mode)))
    put(s, fs.nb_cols - 4, "R/O");
  if (fs.apl) put(s, fs.nb_cols / 4 * 3 - 4, "APL");
  if (s == fs.status) return;
  fs.status = s;
  fs.plat->status(s);
}

void asrefresh() {
  if (!fs.started || fs.cur < 0) return;
  if (as_screenhook) as_screenhook();
  fs_pagerec &p = pg();
  if (fs.plat && fs.view) fs.plat->show(1);
  if (fs.curnum != fs.shown) fs.full = true;
  for (; p.bells > 0; p.bells--)
    if (fs.plat && !fs.nobells) fs.plat->bell();
  fs_compare();
  fs.shown = fs.curnum;
  fs_showcursor();
  if (fs.plat) fs.plat->flush();
}

void fs_showcursor() {
  if (fs.cur < 0) return;
  fs_pagerec &p = pg();
  if (fs.plat && (p.cur_line != fs.curs_line || p.cur_col != fs.curs_col)) {
    int ix = cellix(p.cur_line, p.cur_col);
    int hl = fs.sh.hilite[ix];
    fs.plat->cursor(p.cur_line, p.cur_col, !fs.acol ? 64 : hl == 2 || hl == 3 ? 0 : 64);
    fs.curs_line = p.cur_line;
    fs.curs_col = p.cur_col;
  }
  fs_drawstatus();
}

std::vector<std::string> fs_rows() {
  std::vector<std::string> rows;
  if (fs.cur < 0) return rows;
  for (int l = 1; l <= fs.nb_lines; l++) {
    int end = fs.nb_cols;
    while (end > 0 && fs.sh.text[cellix(l, end)] == ' ') end--;
    std::string row;
    for (int c = 1; c <= end; c++) {
      unsigned ch = fs.sh.text[cellix(l, c)];
      char b[4];
      row.append(b, size_t(fs_utf8_put(fs_subst(uint16_t(ch)) ? 0xFFFD : ch, b)));
    }
    rows.push_back(std::move(row));
  }
  return rows;
}

void fs_dump(FILE *out, int attrs) {
  if (fs.cur < 0) return;
  for (const std::string &row : fs_rows()) {
    fwrite(row.data(), 1, row.size(), out);
    fputc('\n', out);
  }
  size_t end = fs.status.find_last_not_of(' ');
  fprintf(out, "%s\n", end == std::string::npos ? "" : fs.status.substr(0, end + 1).c_str());
  if (!attrs) return;
  dumpplane(out, "hilite", fs.sh.hilite);
  dumpplane(out, "colour", fs.sh.colour);
  dumpplane(out, "intensity", fs.sh.intensity);
}
