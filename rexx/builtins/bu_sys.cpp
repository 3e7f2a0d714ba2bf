// The Sys family and the folder functions of the library: CHDIR, CWD,
// USERID, MKLISTFILES and SysVersion, SysMkDir, SysRmDir, SysFileDelete,
// SysSearchPath, SysTempFileName, SysSetPriority, SysFileSearch and
// SysFileTree. The Sys members give the system's error number, 0 for
// success, as macros written for them expect.
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fnmatch.h>
#include <fstream>
#include <pwd.h>
#include <random>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>
#include <vector>

#include "rexx/builtins/bu_system.h"

namespace {

int errno_result(value& r, bool ok) {
  r.set_num(ok ? 0 : errno, 0);
  return 0;
}

void set_count(const std::string& stem, size_t n) { bu_set_var(stem + "0", std::to_string(n)); }

}  // namespace

int bu_chdir(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string d(bu_text(f, 0));
  if (d == "~" || d.rfind("~/", 0) == 0) d = std::string(getenv("HOME") ? getenv("HOME") : "") + d.substr(1);
  return errno_result(r, chdir(d.c_str()) == 0);
}

int bu_cwd(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  char buf[PATH_MAX];
  r.set_str(getcwd(buf, sizeof buf) ? buf : "");
  return 0;
}

int bu_userid(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  passwd* p = getpwuid(geteuid());
  const char* u = p ? p->pw_name : getenv("USER");
  r.set_str(u ? u : "");
  return 0;
}

// SysVersion(): the kernel's name and release, "Linux 6.1.0".
int bu_sysversion(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  utsname u;
  if (uname(&u) != 0) return r.set_str("Linux"), 0;
  r.set_str(std::string(u.sysname) + " " + u.release);
  return 0;
}

int bu_sysmkdir(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  return errno_result(r, mkdir(std::string(bu_text(f, 0)).c_str(), 0777) == 0);
}

int bu_sysrmdir(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  return errno_result(r, rmdir(std::string(bu_text(f, 0)).c_str()) == 0);
}

int bu_sysfiledelete(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  return errno_result(r, unlink(std::string(bu_text(f, 0)).c_str()) == 0);
}

// SysSearchPath(variable, file): the first folder of the variable's list
// (colon-separated) holding the file, joined to it; empty when none.
int bu_syssearchpath(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 2)) return e;
  const char* list = getenv(std::string(bu_text(f, 0)).c_str());
  std::string file(bu_text(f, 1)), s = list ? list : "";
  r.set_str("", 0);
  for (size_t p = 0; p <= s.size();) {
    size_t e = s.find(':', p);
    if (e == std::string::npos) e = s.size();
    std::string d = e > p ? s.substr(p, e - p) : ".";
    std::string path = d + "/" + file;
    struct stat sb;
    if (stat(path.c_str(), &sb) == 0 && S_ISREG(sb.st_mode)) {
      r.set_str(path);
      return 0;
    }
    p = e + 1;
  }
  return 0;
}

// SysTempFileName(template [, filler]): each filler character ("?" by
// default) becomes a random digit, until the name is free.
int bu_systempfilename(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 2)) return e;
  char filler;
  if (bu_has(f, 1)) {
    if (int e = bu_pad(f, 1, filler)) return e;
  } else {
    filler = '?';
  }
  std::string t(bu_text(f, 0));
  static std::mt19937 rng(std::random_device{}());
  r.set_str("", 0);
  if (t.find(filler) == std::string::npos) return 0;
  for (int tries = 0; tries < 1000; tries++) {
    std::string name = t;
    for (char& c : name)
      if (c == filler) c = (char)('0' + rng() % 10);
    struct stat sb;
    if (lstat(name.c_str(), &sb) != 0) {
      r.set_str(name);
      return 0;
    }
  }
  return 0;
}

// SysSetPriority(class, delta): class 0 to 4 from idle to time-critical, a
// delta of -31 to 31 within it, mapped onto the nice values.
int bu_syssetpriority(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 2)) return e;
  long long cls, delta;
  if (int e = bu_whole(f, 0, 0, 0, cls)) return e;
  if (int e = bu_integer(f, 1, 0, delta)) return e;
  if (cls > 4) return bu_fail(f, 0, "argument 1 must be 0 to 4.");
  if (delta < -31 || delta > 31) return bu_fail(f, 1, "argument 2 must be -31 to 31.");
  static const int base_nice[] = {0, 19, 0, -10, -20};
  long long n = base_nice[cls] - delta * 10 / 31;
  if (n > 19) n = 19;
  if (n < -20) n = -20;
  return errno_result(r, setpriority(PRIO_PROCESS, 0, (int)n) == 0);
}

// SysFileSearch(target, file, stem [, options]): the lines of the file that
// hold the target; options C (case counts) and N (line numbers in front).
int bu_sysfilesearch(bu_frame& f, value& r) {
  if (int e = bu_count(f, 3, 4)) return e;
  std::string stem;
  if (int e = bu_stem(f, 2, stem)) return e;
  std::string opts = bu_has(f, 3) ? std::string(bu_text(f, 3)) : "";
  bool exact = false, numbers = false;
  for (char c : opts) {
    c = (char)toupper((unsigned char)c);
    if (c == 'C') exact = true;
    else if (c == 'N') numbers = true;
    else return bu_fail(f, 3, "argument 4 must hold only C and N.");
  }
  std::string target(bu_text(f, 0));
  if (!exact)
    for (char& c : target) c = (char)tolower((unsigned char)c);
  std::ifstream in{std::string(bu_text(f, 1))};
  if (!in) {
    r.set_num(ENOENT, 0);
    return 0;
  }
  std::string line, folded;
  size_t n = 0;
  for (long long no = 1; std::getline(in, line); no++) {
    folded = line;
    if (!exact)
      for (char& c : folded) c = (char)tolower((unsigned char)c);
    if (folded.find(target) == std::string::npos) continue;
    bu_set_var(stem + std::to_string(++n), numbers ? std::to_string(no) + " " + line : line);
  }
  set_count(stem, n);
  r.set_num(0, 0);
  return 0;
}

namespace {

struct tree_walk {
  bool files = true, dirs = true, recurse = false, names_only = false, fold = false;
  char time_form = 0;  // 0 short, 'T' "yy/mm/dd/hh/mm", 'L' long
  std::string stem;
  size_t count = 0;
};

std::string attributes(const struct stat& sb) {
  std::string a = "-----";
  if (S_ISDIR(sb.st_mode)) a[1] = 'D';
  if (!(sb.st_mode & S_IWUSR)) a[3] = 'R';
  return a;
}

void walk(tree_walk& w, const std::string& dir, const std::string& pattern) {
  DIR* d = opendir(dir.empty() ? "." : dir.c_str());
  if (!d) return;
  std::vector<std::string> subdirs;
  while (dirent* e = readdir(d)) {
    std::string n = e->d_name;
    if (n == "." || n == "..") continue;
    std::string path = dir.empty() ? n : (dir.back() == '/' ? dir + n : dir + "/" + n);
    struct stat sb;
    if (stat(path.c_str(), &sb) != 0) continue;
    bool is_dir = S_ISDIR(sb.st_mode);
    if (is_dir && w.recurse) subdirs.push_back(path);
    if ((is_dir && !w.dirs) || (!is_dir && !w.files)) continue;
    if (fnmatch(pattern.c_str(), n.c_str(), w.fold ? FNM_CASEFOLD : 0) != 0) continue;
    std::string line = path;
    if (!w.names_only) {
      tm lt;
      time_t t = sb.st_mtime;
      localtime_r(&t, &lt);
      char when[40];
      if (w.time_form == 'T')
        snprintf(when, sizeof when, "%2.2d/%2.2d/%2.2d/%2.2d/%2.2d", lt.tm_year % 100, lt.tm_mon + 1, lt.tm_mday,
                 lt.tm_hour, lt.tm_min);
      else if (w.time_form == 'L')
        snprintf(when, sizeof when, "%4.4d-%2.2d-%2.2d %2.2d:%2.2d:%2.2d", lt.tm_year + 1900, lt.tm_mon + 1,
                 lt.tm_mday, lt.tm_hour, lt.tm_min, lt.tm_sec);
      else
        snprintf(when, sizeof when, "%2.2d/%2.2d/%2.2d %2.2d:%2.2d", lt.tm_mon + 1, lt.tm_mday, lt.tm_year % 100,
                 lt.tm_hour, lt.tm_min);
      char size[32];
      snprintf(size, sizeof size, "%11lld", (long long)sb.st_size);
      line = std::string(when) + "  " + size + "  " + attributes(sb) + "  " + path;
    }
    bu_set_var(w.stem + std::to_string(++w.count), line);
  }
  closedir(d);
  for (const std::string& s : subdirs) walk(w, s, pattern);
}

}  // namespace

int bu_sysfiletree(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 3)) return e;
  tree_walk w;
  if (int e = bu_stem(f, 1, w.stem)) return e;
  std::string opts = bu_has(f, 2) ? std::string(bu_text(f, 2)) : "";
  for (char c : opts) {
    switch (toupper((unsigned char)c)) {
    case 'F': w.files = true, w.dirs = false; break;
    case 'D': w.dirs = true, w.files = false; break;
    case 'B': w.files = w.dirs = true; break;
    case 'S': w.recurse = true; break;
    case 'T': w.time_form = 'T'; break;
    case 'L': w.time_form = 'L'; break;
    case 'O': w.names_only = true; break;
    case 'I': w.fold = true; break;
    default: return bu_fail(f, 2, "argument 3 must hold only the letters FDBSTLOI.");
    }
  }
  std::string spec(bu_text(f, 0));
  size_t slash = spec.rfind('/');
  std::string dir = slash == std::string::npos ? "" : spec.substr(0, slash + 1);
  std::string pattern = slash == std::string::npos ? spec : spec.substr(slash + 1);
  struct stat sb;
  if (!spec.empty() && pattern.empty()) pattern = "*";
  else if (stat(spec.c_str(), &sb) == 0 && S_ISDIR(sb.st_mode) && spec.find_first_of("*?[") == std::string::npos) {
    dir = spec, pattern = "*";
  }
  walk(w, dir, pattern.empty() ? "*" : pattern);
  set_count(w.stem, w.count);
  r.set_num(0, 0);
  return 0;
}

// MKLISTFILES(dir, depth, stem [, pattern [, max]]): the files under dir, to
// depth levels of folders (1 the folder itself), matching the pattern (all
// by default), at most max of them. stem.i is the path, stem.i.size the
// size with thousands commas, stem.i.size_raw the bytes; stem.0 the count.
int bu_mklistfiles(bu_frame& f, value& r) {
  if (f.argc < 3 || f.argc > 5 || !bu_has(f, 0) || !bu_has(f, 1) || !bu_has(f, 2))
    return bu_fail(f, 0, "needs 3, 4 or 5 arguments.");
  long long depth, max;
  if (int e = bu_whole(f, 1, 1, 1, depth)) return e;
  if (int e = bu_whole(f, 4, 1, 999999999, max)) return e;
  std::string stem;
  if (int e = bu_stem(f, 2, stem)) return e;
  std::string dir(bu_text(f, 0)), pattern = bu_has(f, 3) ? std::string(bu_text(f, 3)) : "*";
  struct stat sb;
  if (stat(dir.c_str(), &sb) != 0 || !S_ISDIR(sb.st_mode)) {
    f.bad_arg = 0;
    return rx_fail(40, "mklistfiles(): Invalid directory \"" + dir + "\"");
  }
  size_t n = 0;
  std::vector<std::pair<std::string, long long>> todo{{dir, 1}};
  while (!todo.empty() && n < (size_t)max) {
    auto [d, level] = todo.back();
    todo.pop_back();
    DIR* h = opendir(d.c_str());
    if (!h) continue;
    while (dirent* e = readdir(h)) {
      std::string name = e->d_name;
      if (name == "." || name == "..") continue;
      std::string path = d + (d.back() == '/' ? "" : "/") + name;
      if (lstat(path.c_str(), &sb) != 0) continue;
      if (S_ISDIR(sb.st_mode)) {
        if (level < depth) todo.push_back({path, level + 1});
        continue;
      }
      if (fnmatch(pattern.c_str(), name.c_str(), 0) != 0 || n >= (size_t)max) continue;
      std::string at = stem + std::to_string(++n);
      bu_set_var(at, path);
      std::string raw = std::to_string((long long)sb.st_size), commas;
      for (size_t i = 0; i < raw.size(); i++) {
        if (i && (raw.size() - i) % 3 == 0) commas += ',';
        commas += raw[i];
      }
      bu_set_var(at + "." + bu_symbol_case("SIZE"), commas);
      bu_set_var(at + "." + bu_symbol_case("SIZE_RAW"), raw);
    }
    closedir(h);
  }
  set_count(stem, n);
  r.set_num((double)n, 0);
  return 0;
}

// DUP2(old, new): makes descriptor new a copy of old, as a script does
// before it runs a command with its output sent elsewhere; gives new, or
// -1 when the system refuses.
int bu_dup2(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 2)) return e;
  long long a, b;
  if (int e = bu_whole(f, 0, 0, 0, a)) return e;
  if (int e = bu_whole(f, 1, 0, 0, b)) return e;
  fflush(stdout);
  fflush(stderr);
  r.set_num(dup2((int)a, (int)b), 0);
  return 0;
}
