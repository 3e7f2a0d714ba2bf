// Characters past Latin-1 in the cells of a page: the UTF-8 decoding and
// encoding shared by the field manager and the editor's column service, the
// terminal width of a character, and the page's table of substitute cells
// that keeps what a cell cannot hold.
#include "fields/fs_int.h"
#include <cstdlib>
#include <cstring>

namespace {

struct range {
    uint32_t lo, hi;
};

// Characters that take no cell of their own: combining marks, zero-width
// spaces and joiners, the byte-order mark.
constexpr range zero_width[] = {
    {0x0300, 0x036f}, {0x0483, 0x0489}, {0x0591, 0x05bd}, {0x05bf, 0x05bf}, {0x05c1, 0x05c2},
    {0x05c4, 0x05c5}, {0x05c7, 0x05c7}, {0x0610, 0x061a}, {0x064b, 0x065f}, {0x0670, 0x0670},
    {0x06d6, 0x06dc}, {0x06df, 0x06e4}, {0x06e7, 0x06e8}, {0x06ea, 0x06ed}, {0x0900, 0x0902},
    {0x093a, 0x093a}, {0x093c, 0x093c}, {0x0941, 0x0948}, {0x094d, 0x094d}, {0x0951, 0x0957},
    {0x0e31, 0x0e31}, {0x0e34, 0x0e3a}, {0x0e47, 0x0e4e}, {0x1ab0, 0x1aff}, {0x1dc0, 0x1dff},
    {0x200b, 0x200f}, {0x202a, 0x202e}, {0x2060, 0x2064}, {0x20d0, 0x20ff}, {0xfe00, 0xfe0f},
    {0xfe20, 0xfe2f}, {0xfeff, 0xfeff}, {0xe0100, 0xe01ef},
};

// Characters that take two cells: East Asian wide and full-width forms,
// and the pictographs terminals draw wide.
constexpr range wide[] = {
    {0x1100, 0x115f},   {0x231a, 0x231b},   {0x2329, 0x232a},   {0x23e9, 0x23ec},
    {0x2614, 0x2615},   {0x2e80, 0x303e},   {0x3041, 0x33ff},   {0x3400, 0x4dbf},
    {0x4e00, 0x9fff},   {0xa000, 0xa4cf},   {0xa960, 0xa97f},   {0xac00, 0xd7a3},
    {0xf900, 0xfaff},   {0xfe10, 0xfe19},   {0xfe30, 0xfe6f},   {0xff00, 0xff60},
    {0xffe0, 0xffe6},   {0x16fe0, 0x16fe4}, {0x17000, 0x18cff}, {0x1b000, 0x1b2ff},
    {0x1f004, 0x1f004}, {0x1f0cf, 0x1f0cf}, {0x1f18e, 0x1f18e}, {0x1f191, 0x1f19a},
    {0x1f200, 0x1f251}, {0x1f300, 0x1f64f}, {0x1f680, 0x1f6ff}, {0x1f900, 0x1f9ff},
    {0x1fa70, 0x1faff}, {0x20000, 0x2fffd}, {0x30000, 0x3fffd},
};

template <size_t N> bool in(const range (&t)[N], uint32_t cp)
{
    size_t lo = 0, hi = N;
    while (lo < hi) {
        size_t mid = (lo + hi) / 2;
        if (cp < t[mid].lo)
            hi = mid;
        else if (cp > t[mid].hi)
            lo = mid + 1;
        else
            return true;
    }
    return false;
}

} // namespace

int fs_utf8_put(uint32_t cp, char out[4]) {
  if (cp < 0x80) {
    out[0] = char(cp);
    return 1;
  }
  if (cp < 0x800) {
    out[0] = char(0xc0 | cp >> 6);
    out[1] = char(0x80 | (cp & 0x3f));
    return 2;
  }
  if (cp < 0x10000) {
    out[0] = char(0xe0 | cp >> 12);
    out[1] = char(0x80 | (cp >> 6 & 0x3f));
    out[2] = char(0x80 | (cp & 0x3f));
    return 3;
  }
  out[0] = char(0xf0 | cp >> 18);
  out[1] = char(0x80 | (cp >> 12 & 0x3f));
  out[2] = char(0x80 | (cp >> 6 & 0x3f));
  out[3] = char(0x80 | (cp & 0x3f));
  return 4;
}

int fs_cwidth(uint32_t cp) {
  if (cp < 0x300) return 1;
  if (in(zero_width, cp)) return 0;
  return in(wide, cp) ? 2 : 1;
}

uint16_t fs_cell(uint32_t cp, const char *bytes, int n) {
  bool plain = cp < 0x10000 && !fs_subst(uint16_t(cp)) && cp != FS_NULL && fs_cwidth(cp) == 1 &&
               (cp < 0x80) == (n == 1);  // a stray byte is never its Latin-1 twin
  if (plain) return uint16_t(cp);
  fs_pagerec &p = pg();
  std::string key(bytes, size_t(n));
  auto it = p.subst_cell.find(key);
  if (it != p.subst_cell.end()) return it->second;
  if (p.subst.size() > size_t(FS_SUBST_LAST - FS_SUBST_FIRST)) return FS_NULL;
  uint16_t cell = uint16_t(FS_SUBST_FIRST + p.subst.size());
  p.subst.push_back(key);
  p.subst_cell.emplace(std::move(key), cell);
  return cell;
}

uint32_t fs_cellchar(uint16_t cell) {
  if (!fs_subst(cell) || fs.cur < 0) return cell;
  const fs_pagerec &p = pg();
  size_t i = size_t(cell - FS_SUBST_FIRST);
  if (i >= p.subst.size()) return 0xfffd;
  const std::string &b = p.subst[i];
  uint32_t cp;
  if (fs_utf8_seq(reinterpret_cast<const unsigned char *>(b.data()), long(b.size()), cp) == 0)
    cp = static_cast<unsigned char>(b[0]);  // a stray byte: its value
  return cp;
}

int ascput_utf8(int id, int len, const char *text) {
  if (!fs_started("ascput_utf8 : call fsinit() first")) return -1;
  if (!fs_find(id)) return ascput_short(id, 0, nullptr);  // the same complaint as ascput's
  std::vector<uint16_t> cells;
  cells.reserve(size_t(len));
  const unsigned char *t = reinterpret_cast<const unsigned char *>(text);
  bool full = false;
  for (long i = 0; i < len;) {
    uint32_t cp;
    int n = fs_utf8_seq(t + i, len - i, cp);
    if (n == 0) {
      cp = t[i];
      n = 1;
    }
    uint16_t c = n == 1 && cp < 0x80 ? uint16_t(cp) : fs_cell(cp, text + i, n);
    if (c == FS_NULL) {
      full = true;
      c = '?';
    }
    cells.push_back(c);
    i += n;
  }
  int r = ascput_short(id, int(cells.size()), cells.data());
  // Blanks, not null cells, after the text: as ascput fills.
  if (r >= 0) {
    int pos = fs_find(id);
    for (int k = int(cells.size()); k < int(pg().cells[size_t(pos) - 1].line.size()); k++) {
      const fs_cells &c = pg().cells[size_t(pos) - 1];
      pg().text[size_t(cellix(c.line[size_t(k)], c.col[size_t(k)]))] = ' ';
    }
  }
  return full && r >= 0 ? -2 : r;
}

char *ascget_utf8(int id, int *len, int trim) {
  if (!fs_started("ascget_utf8 : call fsinit() first")) return nullptr;
  int pos = fs_find(id);
  if (!pos) return ascget_char(id, len, trim);  // its complaint
  const fs_cells &c = pg().cells[size_t(pos) - 1];
  std::string out;
  for (size_t k = 0; k < c.line.size(); k++) {
    uint16_t cell = pg().text[size_t(cellix(c.line[k], c.col[k]))];
    if (cell == FS_NULL) cell = ' ';
    if (fs_subst(cell) && size_t(cell - FS_SUBST_FIRST) < pg().subst.size()) {
      out += pg().subst[size_t(cell - FS_SUBST_FIRST)];
      continue;
    }
    char b[4];
    out.append(b, size_t(fs_utf8_put(cell, b)));
  }
  size_t e = out.size(), s = 0;
  if (trim >= 1)
    while (e > 0 && (out[e - 1] == ' ' || out[e - 1] == '\t')) e--;
  if (trim >= 2)
    while (s < e && out[s] == ' ') s++;
  char *r = static_cast<char *>(malloc(e - s + 1));
  if (!r) return nullptr;
  memcpy(r, out.data() + s, e - s);
  r[e - s] = 0;
  if (len) *len = int(e - s);
  return r;
}
