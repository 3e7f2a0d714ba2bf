// Window memory: a key of the settings store for each screen size, a file of
// "name=value" lines under $XDG_CONFIG_HOME/vorta/, and the fallback key
// "0x0". Written whole to a new file and renamed, so a crash never leaves
// half a key; read leniently, so a damaged key only loses its values.
#include "fields/plat_qt/plat_qt.h"
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <vector>
#include <sys/stat.h>
#include <unistd.h>

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

bool mkdirs(const std::string &path) {
  for (size_t i = 1; i <= path.size(); i++)
    if (i == path.size() || path[i] == '/') {
      std::string p = path.substr(0, i);
      if (mkdir(p.c_str(), 0700) != 0 && errno != EEXIST) return false;
    }
  return true;
}

// Fills what m still lacks from one key.
void readkey(const std::string &file, qw_memory &m) {
  std::ifstream in(file);
  std::string line;
  while (in && std::getline(in, line)) {
    size_t eq = line.find('=');
    if (eq == std::string::npos) continue;
    std::string name = line.substr(0, eq), v = line.substr(eq + 1);
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
  const char *x = getenv("XDG_CONFIG_HOME");
  std::string base;
  if (x && *x == '/') base = x;
  else if (const char *h = getenv("HOME"); h && *h) base = std::string(h) + "/.config";
  else return "";
  return base + "/vorta/HKEY_CURRENT_USER/SOFTWARE/NORDAVEN/VORTA";
}

qw_memory qw_memread(int sw, int sh) {
  qw_memory m;
  std::string dir = qw_memdir();
  if (dir.empty()) return m;
  readkey(dir + "/" + key(sw, sh), m);
  readkey(dir + "/" + key(0, 0), m);
  return m;
}

bool qw_memwrite(int sw, int sh, const qw_memory &m) {
  std::string dir = qw_memdir();
  if (dir.empty() || !mkdirs(dir)) return false;
  std::string text;
  char b[64];
  if (m.has_pos) snprintf(b, sizeof b, "Wp=%d %d\n", m.left, m.top), text += b;
  if (m.cols) snprintf(b, sizeof b, "Ww=%d\n", m.cols), text += b;
  if (m.lines) snprintf(b, sizeof b, "Wh=%d\n", m.lines), text += b;
  if (!m.font.empty()) text += "Wt=" + m.font + "\n";
  bool ok = true;
  for (const std::string &k : {key(sw, sh), key(0, 0)}) {
    std::string file = dir + "/" + k, tmp = file + ".new";
    FILE *f = fopen(tmp.c_str(), "w");
    if (!f) {
      ok = false;
      continue;
    }
    bool w = fwrite(text.data(), 1, text.size(), f) == text.size();
    w = fclose(f) == 0 && w;
    if (!w || rename(tmp.c_str(), file.c_str()) != 0) {
      unlink(tmp.c_str());
      ok = false;
    }
  }
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
