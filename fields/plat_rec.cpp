// The recording layer: a headless layer that also keeps the screen it was
// told to draw, as text and attributes, and a log of every call, so that
// tests can check what reached the layer and not only what the model holds.
#include "fields/plat_test.h"

fs_plat_rec::fs_plat_rec(int lines, int cols) : fs_nullplat(lines, cols) {
  quiet = true;
  clear();
}

void fs_plat_rec::run(int line, int col, const uint16_t *t, int count, int hilite, int colr,
                      int) {
  fs_rec_call c{'r', line, col, count, std::string()};
  for (int i = 0; i < count; i++) c.text += char(t[i] & 0xFF);
  calls.push_back(c);
  if (line < 1 || line > int(text.size())) return;
  for (int i = 0; i < count; i++) {
    size_t x = size_t(col - 1 + i);
    if (x >= text[line - 1].size()) break;
    text[line - 1][x] = c.text[i];
    hl[line - 1][x] = char('0' + hilite % 10);
    colour[line - 1][x] = colr;
  }
}

void fs_plat_rec::cursor(int line, int col, int) {
  calls.push_back({'c', line, col, 0, std::string()});
  curline = line;
  curcol = col;
}

void fs_plat_rec::tick(int line, int col, int on) {
  calls.push_back({'t', line, col, on, std::string()});
  if (line >= 1 && line <= int(ticks.size()) && col >= 1 && col <= cols_)
    ticks[line - 1][col - 1] = on ? '\'' : ' ';
}

void fs_plat_rec::status(const std::string &t) {
  calls.push_back({'s', 0, 0, 0, t});
  statusline = t;
}

void fs_plat_rec::bell() {
  calls.push_back({'b', 0, 0, 0, std::string()});
  bells++;
}

void fs_plat_rec::flash() {
  calls.push_back({'f', 0, 0, 0, std::string()});
  flashes++;
}

void fs_plat_rec::alert(const std::string &t) { calls.push_back({'a', 0, 0, 0, t}); }

void fs_plat_rec::clear() {
  calls.push_back({'x', 0, 0, 0, std::string()});
  text.assign(size_t(lines_), std::string(size_t(cols_), ' '));
  hl.assign(size_t(lines_), std::string(size_t(cols_), '0'));
  colour.assign(size_t(lines_), std::vector<int>(size_t(cols_), 64));
  ticks.assign(size_t(lines_), std::string(size_t(cols_), ' '));
}

void fs_plat_rec::palette(int entry, int red, int green, int) {
  calls.push_back({'p', entry, red, green, std::string()});
}

int fs_plat_rec::runs() const {
  int n = 0;
  for (const fs_rec_call &c : calls) n += c.op == 'r';
  return n;
}
