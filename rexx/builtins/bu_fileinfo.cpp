// The file family, its reading half: listings, the status of a file, locks
// and other holders of a file, disk space, links, and the parts of a name.
// DOFOLLOW says whether the status functions and listings follow symbolic
// links. A failure is RC (or an empty result), never an error.
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <glob.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "rexx/builtins/bu_system.h"

namespace {

bool follow_links = true;  // DOFOLLOW ON

int status_of(const std::string& p, struct stat& st, bool follow) {
  return (follow ? stat(p.c_str(), &st) : lstat(p.c_str(), &st)) == 0 ? 0 : errno;
}

char type_letter(const struct stat& st) {
  return S_ISDIR(st.st_mode) ? 'D' : S_ISLNK(st.st_mode) ? 'L' : S_ISREG(st.st_mode) ? 'F' : 'O';
}

// A list as the result: with a stem, the stem filled and the count given;
// without, the names separated by blanks.
int give_list(bu_frame& f, value& r, int stem_at, std::vector<std::string> names) {
  std::sort(names.begin(), names.end());
  if (!bu_has(f, stem_at)) {
    std::string all;
    for (const std::string& n : names) all += (all.empty() ? "" : " ") + n;
    r.set_str(all);
    return 0;
  }
  std::string stem;
  if (int e = bu_stem(f, stem_at, stem)) return e;
  bu_set_list(stem, names);
  r.set_num((double)names.size(), 0);
  return 0;
}

// STATE, LSTATE: "type size mtime mode links uid gid inode", the time in
// seconds since 1970 and the mode in octal.
int state(bu_frame& f, value& r, bool follow) {
  if (int e = bu_count(f, 1, 1)) return e;
  struct stat st;
  int err = status_of(std::string(bu_text(f, 0)), st, follow);
  bu_set_rc(err);
  if (err) return r.set_str("", 0), 0;
  char buf[200];
  snprintf(buf, sizeof buf, "%c %lld %lld %o %lu %u %u %llu", type_letter(st), (long long)st.st_size,
           (long long)st.st_mtime, (unsigned)(st.st_mode & 07777), (unsigned long)st.st_nlink, (unsigned)st.st_uid,
           (unsigned)st.st_gid, (unsigned long long)st.st_ino);
  r.set_str(buf);
  return 0;
}

}  // namespace

int bu_state(bu_frame& f, value& r) { return state(f, r, follow_links); }
int bu_lstate(bu_frame& f, value& r) { return state(f, r, false); }

// STATEW(file): the status in words: "type size yyyy-mm-dd hh:mm:ss
// permissions", the permissions as ls shows them.
int bu_statew(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  struct stat st;
  int err = status_of(std::string(bu_text(f, 0)), st, follow_links);
  bu_set_rc(err);
  if (err) return r.set_str("", 0), 0;
  tm t;
  localtime_r(&st.st_mtime, &t);
  char perm[10];
  static const char letters[] = "rwxrwxrwx";
  for (int i = 0; i < 9; i++) perm[i] = st.st_mode & (0400 >> i) ? letters[i] : '-';
  char buf[200];
  snprintf(buf, sizeof buf, "%c %lld %4.4d-%2.2d-%2.2d %2.2d:%2.2d:%2.2d %.9s", type_letter(st), (long long)st.st_size,
           t.tm_year + 1900, t.tm_mon + 1, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec, perm);
  r.set_str(buf);
  return 0;
}

// LS(pattern [, stem]) and DIR: the names a pattern matches (a folder's
// entries for a folder), sorted.
int bu_ls(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 2)) return e;
  std::string pat = bu_has(f, 0) && !bu_text(f, 0).empty() ? std::string(bu_text(f, 0)) : "*";
  struct stat st;
  if (pat.find_first_of("*?[") == std::string::npos && status_of(pat, st, follow_links) == 0 && S_ISDIR(st.st_mode))
    pat += pat.back() == '/' ? "*" : "/*";
  glob_t g;
  std::vector<std::string> names;
  if (glob(pat.c_str(), GLOB_TILDE, nullptr, &g) == 0)
    for (size_t i = 0; i < g.gl_pathc; i++) names.push_back(g.gl_pathv[i]);
  globfree(&g);
  return give_list(f, r, 1, names);
}

// SUBDIRS(dir [, stem]): the names of the folder's sub-folders.
int bu_subdirs(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 2)) return e;
  std::string d(bu_text(f, 0));
  std::vector<std::string> names;
  DIR* h = opendir(d.empty() ? "." : d.c_str());
  bu_set_rc(h ? 0 : errno);
  if (h) {
    while (dirent* e = readdir(h)) {
      if (!strcmp(e->d_name, ".") || !strcmp(e->d_name, "..")) continue;
      struct stat st;
      if (status_of(d + "/" + e->d_name, st, follow_links) == 0 && S_ISDIR(st.st_mode)) names.push_back(e->d_name);
    }
    closedir(h);
  }
  return give_list(f, r, 1, names);
}

// FILEISLOCKED(file): 1 when another process holds a lock on it.
int bu_fileislocked(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  int fd = open(std::string(bu_text(f, 0)).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  bu_set_rc(fd < 0 ? errno : 0);
  struct flock l = {};
  l.l_type = F_WRLCK;
  l.l_whence = SEEK_SET;
  bool locked = fd >= 0 && fcntl(fd, F_OFD_GETLK, &l) == 0 && l.l_type != F_UNLCK;
  if (fd >= 0) close(fd);
  r.set_num(locked ? 1 : 0, 0);
  return 0;
}

// ISFILEOPENED(file): 1 when a process has the file open, as far as
// /proc lets us see.
int bu_isfileopened(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  struct stat want;
  r.set_num(0, 0);
  if (stat(std::string(bu_text(f, 0)).c_str(), &want) != 0) return bu_set_rc(errno), 0;
  bu_set_rc(0);
  DIR* procs = opendir("/proc");
  if (!procs) return 0;
  bool found = false;
  while (dirent* p = readdir(procs)) {
    if (found || !isdigit((unsigned char)p->d_name[0])) continue;
    std::string fds = std::string("/proc/") + p->d_name + "/fd";
    DIR* h = opendir(fds.c_str());
    if (!h) continue;
    while (dirent* e = readdir(h)) {
      struct stat st;
      if (e->d_name[0] != '.' && stat((fds + "/" + e->d_name).c_str(), &st) == 0 && st.st_dev == want.st_dev &&
          st.st_ino == want.st_ino)
        found = true;
    }
    closedir(h);
  }
  closedir(procs);
  r.set_num(found ? 1 : 0, 0);
  return 0;
}

// GETDISKSPACE([path]): "total free available block-size" of the file
// system holding the path (the current folder by default), in bytes.
int bu_getdiskspace(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 1)) return e;
  std::string p = bu_has(f, 0) && !bu_text(f, 0).empty() ? std::string(bu_text(f, 0)) : ".";
  struct statvfs v;
  if (statvfs(p.c_str(), &v) != 0) {
    bu_set_rc(errno);
    return r.set_str("", 0), 0;
  }
  bu_set_rc(0);
  char buf[100];
  snprintf(buf, sizeof buf, "%li %li %li %i", (long)(v.f_blocks * v.f_frsize), (long)(v.f_bfree * v.f_frsize),
           (long)(v.f_bavail * v.f_frsize), (int)v.f_frsize);
  r.set_str(buf);
  return 0;
}

namespace {

// What a symbolic link holds (only one to a folder when dirs_only); RC 0,
// or -1 and "".
int link_text(bu_frame& f, value& r, bool dirs_only) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string p(bu_text(f, 0));
  struct stat st;
  char buf[PATH_MAX];
  bool fits = !dirs_only || (stat(p.c_str(), &st) == 0 && S_ISDIR(st.st_mode));
  ssize_t n = fits ? readlink(p.c_str(), buf, sizeof buf) : -1;
  bu_set_rc(n < 0 ? -1 : 0);
  r.set_str(n < 0 ? "" : std::string(buf, (size_t)n));
  return 0;
}

}  // namespace

// READLINK(path), and READJUNC(path) for a link to a folder.
int bu_readlink(bu_frame& f, value& r) { return link_text(f, r, false); }
int bu_readjunc(bu_frame& f, value& r) { return link_text(f, r, true); }

// FOLLOW(path): the path with every link resolved; RC 0, or -1 and the
// path as given.
int bu_follow(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string p(bu_text(f, 0));
  char buf[PATH_MAX];
  bool ok = !p.empty() && realpath(p.c_str(), buf);
  bu_set_rc(ok ? 0 : -1);
  r.set_str(ok ? std::string(buf) : p);
  return 0;
}

// DOFOLLOW(["ON" | "OFF"]): the setting before the call.
int bu_dofollow(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 1)) return e;
  r.set_str(follow_links ? "ON" : "OFF");
  if (!bu_has(f, 0)) return 0;
  std::string w(bu_text(f, 0));
  for (char& c : w) c = (char)toupper((unsigned char)c);
  if (w != "ON" && w != "OFF") return bu_fail(f, 0, "argument 1 must be \"ON\" or \"OFF\".");
  follow_links = w == "ON";
  return 0;
}

namespace {

// The parts of a path: folder (without its last slash), name, type.
void split(std::string_view p, std::string& dir, std::string& name, std::string& type) {
  size_t s = p.rfind('/');
  dir = s == std::string_view::npos ? "" : std::string(p.substr(0, s == 0 ? 1 : s));
  std::string base(s == std::string_view::npos ? p : p.substr(s + 1));
  size_t dot = base.rfind('.');
  if (dot == std::string::npos || dot == 0) dot = base.size();
  name = base.substr(0, dot);
  type = dot < base.size() ? base.substr(dot + 1) : "";
}

int part(bu_frame& f, value& r, int which) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string p[3];
  split(bu_text(f, 0), p[0], p[1], p[2]);
  r.set_str(p[which]);
  return 0;
}

}  // namespace

// FD, FN, FT: a path's folder, its name without the type, and the type.
int bu_fd(bu_frame& f, value& r) { return part(f, r, 0); }
int bu_fn(bu_frame& f, value& r) { return part(f, r, 1); }
int bu_ft(bu_frame& f, value& r) { return part(f, r, 2); }
