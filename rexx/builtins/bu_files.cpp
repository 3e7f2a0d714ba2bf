// The file family, its acting half: copying, removing, moving, linking,
// making and removing folders, wiping, the Trash, joining files, line-end
// conversion and times. Names may hold wildcards where several files make
// sense. Failures are results (an error number, or a count of failures
// with a message for each), never errors of the program.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <glob.h>
#include <limits.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include "platform/platform.h"
#include "rexx/builtins/bu_system.h"

namespace {

// The names a pattern stands for; a pattern that matches nothing stands
// for itself, so that its failure is reported by name.
std::vector<std::string> expand(const std::string& pattern) {
  glob_t g;
  std::vector<std::string> out;
  if (glob(pattern.c_str(), GLOB_NOCHECK | GLOB_TILDE, nullptr, &g) == 0)
    for (size_t i = 0; i < g.gl_pathc; i++) out.push_back(g.gl_pathv[i]);
  else
    out.push_back(pattern);
  globfree(&g);
  return out;
}

std::string base_name(const std::string& p) {
  std::string s = p;
  while (s.size() > 1 && s.back() == '/') s.pop_back();
  size_t k = s.rfind('/');
  return k == std::string::npos ? s : s.substr(k + 1);
}

bool is_dir(const std::string& p) {
  struct stat st;
  return stat(p.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

int errno_result(value& r, int err) {
  r.set_num(err, 0);
  return 0;
}

// The whole of a plain file into out, or false (a pipe or a device could
// keep the read waiting for ever).
bool read_all(const std::string& p, std::string& out) {
  int fd = open(p.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) return false;
  struct stat st;
  if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
    close(fd);
    errno = EINVAL;
    return false;
  }
  char buf[65536];
  ssize_t n;
  out.clear();
  while ((n = read(fd, buf, sizeof buf)) > 0 || (n < 0 && errno == EINTR))
    if (n > 0) out.append(buf, (size_t)n);
  int e = errno;
  close(fd);
  errno = e;
  return n == 0;
}

bool same_content(const std::string& a, const std::string& b) {
  struct stat sa, sb;
  if (stat(a.c_str(), &sa) != 0 || stat(b.c_str(), &sb) != 0) return false;
  if (sa.st_dev == sb.st_dev && sa.st_ino == sb.st_ino) return true;
  if (sa.st_size != sb.st_size || !S_ISREG(sb.st_mode)) return false;
  std::string x, y;
  return read_all(a, x) && read_all(b, y) && x == y;
}

// A plain file copied with its mode: 0 or the errno value.
int copy_file(const std::string& from, const std::string& to, mode_t mode) {
  int in = open(from.c_str(), O_RDONLY | O_CLOEXEC);
  if (in < 0) return errno;
  int out = open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK, mode & 07777);
  if (out < 0) {
    int e = errno;
    close(in);
    return e;
  }
  char buf[65536];
  int err = 0;
  for (;;) {
    ssize_t n = read(in, buf, sizeof buf);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      err = n < 0 ? errno : 0;
      break;
    }
    if ((err = pl_write_all(out, buf, (size_t)n)) != 0) break;
  }
  close(in);
  if (close(out) != 0 && !err) err = errno;
  return err;
}

// One source copied to one destination, folders with all they hold; the
// count of failures, each told on the error stream.
int copy_tree(const std::string& from, const std::string& to, int depth = 0) {
  struct stat st;
  if (stat(from.c_str(), &st) != 0) {
    bu_message("Unable to state \"" + from + "\": " + strerror(errno));
    return 1;
  }
  if (S_ISDIR(st.st_mode)) {
    if (depth > 64 || (mkdir(to.c_str(), st.st_mode & 07777) != 0 && errno != EEXIST)) {
      bu_message("Unable to create \"" + to + "\": " + strerror(depth > 64 ? ELOOP : errno));
      return 1;
    }
    DIR* d = opendir(from.c_str());
    if (!d) {
      bu_message("Unable to read \"" + from + "\": " + strerror(errno));
      return 1;
    }
    std::vector<std::string> names;
    while (dirent* e = readdir(d))
      if (strcmp(e->d_name, ".") != 0 && strcmp(e->d_name, "..") != 0) names.push_back(e->d_name);
    closedir(d);
    int fails = 0;
    for (const std::string& n : names) fails += copy_tree(from + "/" + n, to + "/" + n, depth + 1);
    return fails;
  }
  if (!S_ISREG(st.st_mode)) {
    bu_message("Unable to copy \"" + from + "\": not a plain file");
    return 1;
  }
  if (same_content(from, to)) {
    bu_message("\"" + from + "\" and \"" + to + "\" are identical (not copied).");
    return 0;
  }
  if (int e = copy_file(from, to, st.st_mode)) {
    bu_message("Unable to copy \"" + from + "\" to \"" + to + "\": " + strerror(e));
    return 1;
  }
  return 0;
}

// Each file the pattern names, acted on by `one`; the failures counted.
template <class F>
int each(const std::string& pattern, F one) {
  int fails = 0;
  for (const std::string& p : expand(pattern)) fails += one(p) ? 0 : 1;
  return fails;
}

}  // namespace

// CP(from [, to]): files and folders copied (to the current folder by
// default); 0, or the number of failures.
int bu_cp(bu_frame& f, value& r) {
  if (f.argc < 1 || f.argc > 2 || !bu_has(f, 0)) return bu_fail(f, 0, "must receive 1 or 2 argument.");
  std::vector<std::string> from = expand(std::string(bu_text(f, 0)));
  std::string to = bu_has(f, 1) && !bu_text(f, 1).empty() ? std::string(bu_text(f, 1)) : ".";
  bool into = is_dir(to) || from.size() > 1;
  int fails = 0;
  for (const std::string& s : from) fails += copy_tree(s, into ? to + "/" + base_name(s) : to);
  r.set_num(fails, 0);
  return 0;
}

// RM(files): 0, or the number of files that could not be removed.
int bu_rm(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  r.set_num(each(std::string(bu_text(f, 0)), [](const std::string& p) {
              if (unlink(p.c_str()) == 0) return true;
              bu_message("Unable to remove \"" + p + "\": " + strerror(errno));
              return false;
            }),
            0);
  return 0;
}

// WIPE(files): each overwritten with zeros before it is removed.
int bu_wipe(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  r.set_num(each(std::string(bu_text(f, 0)), [](const std::string& p) {
              struct stat st;
              int fd = lstat(p.c_str(), &st) == 0 && S_ISREG(st.st_mode) ? open(p.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW) : -1;
              bool ok = fd >= 0;
              static const char zeros[65536] = {};
              for (off_t left = ok ? st.st_size : 0; ok && left > 0; left -= (off_t)sizeof zeros)
                ok = pl_write_all(fd, zeros, left < (off_t)sizeof zeros ? (size_t)left : sizeof zeros) == 0;
              if (fd >= 0) ok = fsync(fd) == 0 && ok, close(fd);
              if (ok && unlink(p.c_str()) == 0) return true;
              bu_message("Unable to wipe \"" + p + "\": " + strerror(errno ? errno : EIO));
              return false;
            }),
            0);
  return 0;
}

// RECYCLE(files): each moved into the Trash with the note of where it was.
int bu_recycle(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  r.set_num(each(std::string(bu_text(f, 0)), [](const std::string& p) {
              char abs[PATH_MAX];
              std::string dir = p.substr(0, p.rfind('/') == std::string::npos ? 0 : p.rfind('/') + 1);
              int err = ENOENT;
              if (realpath(dir.empty() ? "." : dir.c_str(), abs)) {
                std::string full = std::string(abs) + (abs[1] ? "/" : "") + base_name(p);
                err = pl_trash(full);
              } else {
                err = errno;
              }
              if (err == 0) return true;
              bu_message("Unable to recycle \"" + p + "\": " + strerror(err < 0 ? -err : err));
              return false;
            }),
            0);
  return 0;
}

// MV(from, to): renamed, or copied and removed across file systems; into
// a folder when `to` is one. 0, or the error number.
int bu_mv(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 2)) return e;
  std::string from(bu_text(f, 0)), to(bu_text(f, 1));
  if (is_dir(to) && !is_dir(from)) to += "/" + base_name(from);
  if (rename(from.c_str(), to.c_str()) == 0) return errno_result(r, 0);
  int err = errno;
  struct stat st;
  if (err == EXDEV && lstat(from.c_str(), &st) == 0 && S_ISREG(st.st_mode)) {
    err = copy_file(from, to, st.st_mode);
    if (!err && unlink(from.c_str()) != 0) err = errno;
  }
  return errno_result(r, err);
}

// LN(target, name [, hard]): a symbolic link, or with 1 a hard one.
int bu_ln(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 3)) return e;
  bool hard;
  if (int e = bu_flag(f, 2, hard)) return e;
  std::string a(bu_text(f, 0)), b(bu_text(f, 1));
  return errno_result(r, (hard ? link(a.c_str(), b.c_str()) : symlink(a.c_str(), b.c_str())) == 0 ? 0 : errno);
}

// MKDIR(dir): the folder and every missing parent.
int bu_mkdir(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string d(bu_text(f, 0));
  if (d.empty()) return errno_result(r, ENOENT);
  for (size_t i = 1; i <= d.size(); i++)
    if (i == d.size() || d[i] == '/')
      if (mkdir(d.substr(0, i).c_str(), 0777) != 0 && errno != EEXIST) return errno_result(r, errno);
  return errno_result(r, is_dir(d) ? 0 : ENOTDIR);
}

// RMDIR(dir [, keep]): the folder with all it holds; with 1 the folder
// itself stays, emptied.
int bu_rmdir(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 2)) return e;
  bool keep;
  if (int e = bu_flag(f, 1, keep)) return e;
  std::string d(bu_text(f, 0));
  struct stat st;
  if (lstat(d.c_str(), &st) != 0) return errno_result(r, errno);
  if (!S_ISDIR(st.st_mode)) return errno_result(r, ENOTDIR);
  if (!keep) return errno_result(r, pl_remove_tree(d));
  int err = 0;
  if (DIR* h = opendir(d.c_str())) {
    std::vector<std::string> names;
    while (dirent* e = readdir(h))
      if (strcmp(e->d_name, ".") != 0 && strcmp(e->d_name, "..") != 0) names.push_back(e->d_name);
    closedir(h);
    for (const std::string& n : names)
      if (int e = pl_remove_tree(d + "/" + n); e && !err) err = e;
  } else {
    err = errno;
  }
  return errno_result(r, err);
}

// CONCAT(out, in1 [, in2 ...]): the inputs one after another into out.
int bu_concat(bu_frame& f, value& r) {
  if (f.argc < 2 || !bu_has(f, 0)) return bu_fail(f, 0, "must receive at least 2 arguments.");
  std::string out(bu_text(f, 0)), all, part;
  for (int i = 1; i < f.argc; i++) {
    if (!bu_has(f, i)) continue;
    if (!read_all(std::string(bu_text(f, i)), part)) return errno_result(r, errno);
    all += part;
  }
  int fd = open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (fd < 0) return errno_result(r, errno);
  int err = pl_write_all(fd, all.data(), all.size());
  if (close(fd) != 0 && !err) err = errno;
  return errno_result(r, err);
}

// FILECONV(file, form): every line end made "unix" (LF), "dos" (CR LF)
// or "mac" (CR); the file replaced whole, keeping its mode.
int bu_fileconv(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 2)) return e;
  std::string form(bu_text(f, 1));
  for (char& c : form) c = (char)tolower((unsigned char)c);
  const char* eol = form == "unix" ? "\n" : form == "dos" ? "\r\n" : form == "mac" ? "\r" : nullptr;
  if (!eol) return bu_fail(f, 1, "argument 2 must be \"unix\", \"dos\" or \"mac\".");
  std::string name(bu_text(f, 0)), in, out;
  struct stat st;
  if (stat(name.c_str(), &st) != 0 || !read_all(name, in)) return errno_result(r, errno);
  for (size_t i = 0; i < in.size(); i++) {
    if (in[i] == '\r') {
      if (i + 1 < in.size() && in[i + 1] == '\n') i++;
      out += eol;
    } else if (in[i] == '\n') {
      out += eol;
    } else {
      out += in[i];
    }
  }
  std::string tmp;
  int fd = pl_create_temp(name, st.st_mode & 07777, tmp);
  if (fd < 0) return errno_result(r, -fd);
  int err = pl_write_all(fd, out.data(), out.size());
  if (close(fd) != 0 && !err) err = errno;
  if (!err && rename(tmp.c_str(), name.c_str()) != 0) err = errno;
  if (err) unlink(tmp.c_str());
  return errno_result(r, err);
}

namespace {

// A local date and time from whole-number arguments starting at `first`
// (year, month, day, hour, minute, second), checked field by field.
int read_time(bu_frame& f, int first, int count, tm& t) {
  static const long long lo[] = {1970, 1, 1, 0, 0, 0}, hi[] = {2999, 12, 31, 23, 59, 60};
  long long v[6] = {1970, 1, 1, 0, 0, 0};
  for (int i = 0; i < count; i++) {
    if (int e = bu_whole(f, first + i, 0, 0, v[i])) return e;
    if (v[i] < lo[i] || v[i] > hi[i])
      return bu_fail(f, first + i, "argument " + std::to_string(first + i + 1) + " is out of range.");
  }
  t = tm{};
  t.tm_year = (int)v[0] - 1900, t.tm_mon = (int)v[1] - 1, t.tm_mday = (int)v[2];
  t.tm_hour = (int)v[3], t.tm_min = (int)v[4], t.tm_sec = (int)v[5], t.tm_isdst = -1;
  return 0;
}

}  // namespace

// UTIME(name, year, month, day, hour, minute, second): the file's access
// and modification times.
int bu_utime(bu_frame& f, value& r) {
  if (int e = bu_count(f, 7, 7)) return e;
  tm t;
  if (int e = read_time(f, 1, 6, t)) return e;
  timeval tv[2] = {{mktime(&t), 0}, {0, 0}};
  tv[1] = tv[0];
  return errno_result(r, utimes(std::string(bu_text(f, 0)).c_str(), tv) == 0 ? 0 : errno);
}

// STIME("dd/mm/yy"): the system's date, the time of day kept; it needs
// the right to set the clock.
int bu_stime(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string s(bu_text(f, 0));
  int d, m, y, used = 0;
  if (sscanf(s.c_str(), "%2d/%2d/%2d%n", &d, &m, &y, &used) != 3 || used != (int)s.size() || d < 1 || d > 31 || m < 1 ||
      m > 12)
    return bu_fail(f, 0, "argument 1 must be a date \"dd/mm/yy\".");
  time_t now = time(nullptr);
  tm t;
  localtime_r(&now, &t);
  t.tm_mday = d, t.tm_mon = m - 1, t.tm_year = y < 70 ? 100 + y : y, t.tm_isdst = -1;
  timespec ts = {mktime(&t), 0};
  return errno_result(r, clock_settime(CLOCK_REALTIME, &ts) == 0 ? 0 : errno);
}
