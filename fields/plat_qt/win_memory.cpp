// Window memory: a key of the settings store for each screen size, and the
// fallback key "0x0"; a damaged key only loses its values.
#include "fields/plat_qt/plat_qt.h"
#include "platform/platform.h"
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

constexpr int MIN_LINES = 6;
constexpr int MIN_COLS = 38;
constexpr int KEEP_PX = 10;  // what stays on the screen of a window put off it

bool number(const std::string &s, int &out) {
  if (s.empty()) return false;
  errno = 0;
  char *end;
  long v = strtol(s.c_str(), &end, 10);
  if (errno || *end || v < INT_MIN / 2 || v > INT_MAX / 2) return false;
  out = int(v);
  return true;
}

std::string key(int sw, int sh) {
  char b[32];
  snprintf(b, sizeof b, "%dx%d", sw, sh);
  return b;
}

const char KEY[] = "HKEY_CURRENT_USER\\SOFTWARE\\NORDAVEN\\VORTA\\";

// Fills what m still lacks from one key.
void readkey(const std::string &k, qw_memory &m) {
  std::vector<pl_value> vals;
  if (pl_key_values(KEY + k, vals) != 0) return;
  for (const pl_value &pv : vals) {
    const std::string &name = pv.name, &v = pv.text;
    int a, b;
    if (name == "Wp" && !m.has_pos) {
      size_t sp = v.find(' ');
      if (sp != std::string::npos && number(v.substr(0, sp), a) && number(v.substr(sp + 1), b))
        m.has_pos = true, m.left = a, m.top = b;
    } else if (name == "Ww" && !m.cols && number(v, a) && a > 0) {
      m.cols = a;
    } else if (name == "Wh" && !m.lines && number(v, a) && a > 0) {
      m.lines = a;
    } else if (name == "Wt" && m.font.empty()) {
      qw_fontname f;
      if (qw_fontparse(v, f)) m.font = v;
    }
  }
}

}  // namespace

std::string qw_memdir() {
  std::string d = pl_settings_dir();
  return d.empty() ? d : d + "/HKEY_CURRENT_USER/SOFTWARE/NORDAVEN/VORTA";
}

qw_memory qw_memread(int sw, int sh) {
  qw_memory m;
  readkey(key(sw, sh), m);
  readkey(key(0, 0), m);
  return m;
}

bool qw_memwrite(int sw, int sh, const qw_memory &m) {
  std::vector<pl_value> vals;
  char b[64];
  if (m.has_pos) snprintf(b, sizeof b, "%d %d", m.left, m.top), vals.push_back({"Wp", b});
  if (m.cols) vals.push_back({"Ww", std::to_string(m.cols)});
  if (m.lines) vals.push_back({"Wh", std::to_string(m.lines)});
  if (!m.font.empty()) vals.push_back({"Wt", m.font});
  bool ok = true;
  for (const std::string &k : {key(sw, sh), key(0, 0)}) ok = pl_key_put(KEY + k, vals) == 0 && ok;
  return ok;
}

void qw_memclamp(qw_memory &m, int sw, int sh, int w, int h) {
  if (m.lines && m.lines < MIN_LINES) m.lines = MIN_LINES;
  if (m.cols && m.cols < MIN_COLS) m.cols = MIN_COLS;
  if (!m.has_pos) return;
  if (m.left > sw - KEEP_PX) m.left = sw - KEEP_PX;
  if (m.top > sh - KEEP_PX) m.top = sh - KEEP_PX;
  if (m.left + w < KEEP_PX) m.left = KEEP_PX - w;
  if (m.top + h < KEEP_PX) m.top = KEEP_PX - h;
  if (m.left < 0) m.left = 0;
  if (m.top < 0) m.top = 0;
}

bool qw_fontparse(const std::string &name, qw_fontname &out) {
  qw_fontname f;
  std::vector<std::string> part;
  size_t b = 0;
  for (;;) {
    size_t p = name.find('%', b);
    part.push_back(name.substr(b, p == std::string::npos ? std::string::npos : p - b));
    if (p == std::string::npos) break;
    b = p + 1;
  }
  if (part.size() > 4) return false;
  f.face = part[0];
  if (part.size() > 1 && !part[1].empty()) f.style = part[1];
  else f.style = "Regular";
  if (part.size() > 2 && !part[2].empty() && (!number(part[2], f.width) || f.width < 1 || f.width > 400))
    return false;
  if (part.size() > 3 && !part[3].empty() && (!number(part[3], f.height) || f.height < 1 || f.height > 400))
    return false;
  out = f;
  return true;
}

std::string qw_fontformat(const qw_fontname &f) {
  char b[32];
  snprintf(b, sizeof b, "%%%d%%%d", f.width, f.height);
  return f.face + "%" + f.style + b;
}
