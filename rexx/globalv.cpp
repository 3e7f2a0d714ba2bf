// GLOBALV: named values in groups, shared by macros, processes and later
// sessions. Everything lives under "molba.globalv/" in GLOBALVHOME, else in
// the user's data folder ($XDG_DATA_HOME, else ~/.local/share):
//
//   initial/<group>/<name>      values loaded at a process tree's first use
//   session/<group>/<name>      kept until the machine restarts
//   lasting/<group>/<name>      kept for good
//   storage.<pid>/<group>/<name> this process tree (molba_STORAGE_GL)
//
// A value is the whole contents of its file. A value is written to a
// private temporary file and renamed into place, and every change to a
// group holds an flock on the group's ".lock" file, so two processes that
// write one group at once never lose a value and a reader never sees half
// of one. A lock dies with its process, so a crashed writer blocks nobody.
//
// The session area remembers the boot it belongs to; after a restart of the
// machine it starts empty, which is the nearest thing to "until the next
// log-in" a batch process can tell.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <set>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "rexx/exec_int.h"

namespace {

enum area { A_INITIAL, A_LASTING, A_SESSION, A_STORAGE };
// Return codes by area: a failure is the area's thousand plus the system's
// error number.
constexpr int area_rc[] = {1501000, 1502000, 1503000, 1504000};
constexpr int RC_BAD_VERB = 1000004, RC_EMPTY = 1000024;

struct store {
  std::string home;     // the GLOBALVHOME (or default) this was made for
  std::string root;     // .../molba.globalv
  std::string storage;  // the storage directory of this process tree
  bool ready = false;
};

store st_;

bool make_dir(const std::string& d) { return mkdir(d.c_str(), 0740) == 0 || errno == EEXIST; }

bool make_dirs(const std::string& d) {
  for (size_t p = 1; p <= d.size(); p++)
    if (p == d.size() || d[p] == '/')
      if (!make_dir(d.substr(0, p))) return false;
  return true;
}

std::string home_setting() {
  if (const char* g = getenv("GLOBALVHOME"); g && *g) return g;
  if (const char* x = getenv("XDG_DATA_HOME"); x && *x) return x;
  const char* h = getenv("HOME");
  return std::string(h ? h : ".") + "/.local/share";
}

// A name as a file name: upper case, with '/', '%' and a leading dot
// written as %XX.
std::string file_name(std::string_view name) {
  std::string out;
  for (size_t i = 0; i < name.size(); i++) {
    unsigned char c = (unsigned char)toupper((unsigned char)name[i]);
    if (c == '/' || c == '%' || c < 32 || (i == 0 && c == '.')) {
      char b[4];
      snprintf(b, sizeof b, "%%%02X", c);
      out += b;
    } else {
      out += (char)c;
    }
  }
  return out;
}

std::string name_of_file(const std::string& f) {
  std::string out;
  for (size_t i = 0; i < f.size(); i++) {
    if (f[i] == '%' && i + 2 < f.size()) {
      out += (char)strtol(f.substr(i + 1, 2).c_str(), nullptr, 16);
      i += 2;
    } else {
      out += f[i];
    }
  }
  return out;
}

std::string area_dir(area a) {
  switch (a) {
  case A_INITIAL: return st_.root + "/initial";
  case A_LASTING: return st_.root + "/lasting";
  case A_SESSION: return st_.root + "/session";
  default: return st_.storage;
  }
}

bool read_file(const std::string& path, std::string& out) {
  int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  struct stat sb;
  if (fstat(fd, &sb) != 0 || !S_ISREG(sb.st_mode)) {
    close(fd);
    return false;
  }
  out.clear();
  char buf[8192];
  ssize_t n;
  while ((n = read(fd, buf, sizeof buf)) > 0) out.append(buf, (size_t)n);
  close(fd);
  return n == 0;
}

// Writes a whole file through a temporary one and a rename; 0 or errno.
int write_file(const std::string& path, std::string_view data) {
  std::string tmp = path + ".~" + std::to_string(getpid());
  int fd = open(tmp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0640);
  if (fd < 0) return errno;
  size_t done = 0;
  while (done < data.size()) {
    ssize_t n = write(fd, data.data() + done, data.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      int e = n < 0 ? errno : ENOSPC;
      close(fd);
      unlink(tmp.c_str());
      return e;
    }
    done += (size_t)n;
  }
  if (close(fd) != 0 || rename(tmp.c_str(), path.c_str()) != 0) {
    int e = errno;
    unlink(tmp.c_str());
    return e;
  }
  return 0;
}

void remove_tree(const std::string& d) {
  if (DIR* dir = opendir(d.c_str())) {
    while (dirent* e = readdir(dir)) {
      std::string n = e->d_name;
      if (n == "." || n == "..") continue;
      std::string p = d + "/" + n;
      struct stat sb;
      if (lstat(p.c_str(), &sb) == 0 && S_ISDIR(sb.st_mode)) remove_tree(p);
      else unlink(p.c_str());
    }
    closedir(dir);
  }
  rmdir(d.c_str());
}

std::vector<std::string> entries(const std::string& d, bool dirs) {
  std::vector<std::string> out;
  if (DIR* dir = opendir(d.c_str())) {
    while (dirent* e = readdir(dir)) {
      std::string n = e->d_name;
      if (n[0] == '.' || n.find(".~") != std::string::npos) continue;
      struct stat sb;
      if (stat((d + "/" + n).c_str(), &sb) != 0) continue;
      if (dirs == S_ISDIR(sb.st_mode)) out.push_back(n);
    }
    closedir(dir);
  }
  return out;
}

// Holds the group's lock for the life of the object.
struct group_lock {
  int fd = -1;
  explicit group_lock(const std::string& gdir) {
    fd = open((gdir + "/.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0640);
    if (fd >= 0) flock(fd, LOCK_EX);
  }
  ~group_lock() {
    if (fd >= 0) close(fd);  // closing releases the lock
  }
};

void copy_initial();

// Sets up the store on the first GLOBALV of the process, or again when
// GLOBALVHOME has changed since.
int ready() {
  std::string home = home_setting();
  if (st_.ready && st_.home == home) return 0;
  st_.home = home;
  st_.root = home + "/molba.globalv";
  if (!make_dirs(st_.root)) return area_rc[A_STORAGE] + errno % 1000;
  for (area a : {A_INITIAL, A_LASTING, A_SESSION})
    if (!make_dir(area_dir(a))) return area_rc[a] + errno % 1000;
  // The session area is emptied when the machine has restarted since.
  std::string boot, seen;
  if (read_file("/proc/sys/kernel/random/boot_id", boot)) {
    std::string mark = area_dir(A_SESSION) + "/.boot";
    if (!read_file(mark, seen) || seen != boot) {
      for (const std::string& g : entries(area_dir(A_SESSION), true)) remove_tree(area_dir(A_SESSION) + "/" + g);
      write_file(mark, boot);
    }
  }
  const char* inherited = getenv("molba_STORAGE_GL");
  struct stat sb;
  if (inherited && *inherited && std::string(inherited).rfind(st_.root + "/", 0) == 0 &&
      stat(inherited, &sb) == 0 && S_ISDIR(sb.st_mode)) {
    st_.storage = inherited;
  } else {
    // Storage directories of processes that are gone are removed.
    for (const std::string& d : entries(st_.root, true)) {
      if (d.rfind("storage.", 0) != 0) continue;
      long pid = atol(d.c_str() + 8);
      if (pid > 0 && (kill((pid_t)pid, 0) == 0 || errno == EPERM)) continue;
      remove_tree(st_.root + "/" + d);
    }
    st_.storage = st_.root + "/storage." + std::to_string(getpid());
    if (!make_dir(st_.storage)) return area_rc[A_STORAGE] + errno % 1000;
    setenv("molba_STORAGE_GL", st_.storage.c_str(), 1);
    unsetenv("molba_GL_INI_IS_DONE");
  }
  st_.ready = true;
  if (!getenv("molba_GL_INI_IS_DONE")) copy_initial();
  return 0;
}

// Loads initial/ into the storage area, leaving values already set alone.
void copy_initial() {
  std::string ini = area_dir(A_INITIAL);
  for (const std::string& g : entries(ini, true)) {
    std::string to = st_.storage + "/" + g;
    make_dir(to);
    for (const std::string& v : entries(ini + "/" + g, false)) {
      std::string val;
      struct stat sb;
      if (stat((to + "/" + v).c_str(), &sb) != 0 && read_file(ini + "/" + g + "/" + v, val)) write_file(to + "/" + v, val);
    }
  }
  setenv("molba_GL_INI_IS_DONE", "1", 1);
}

std::string current_group() {
  const char* g = getenv("molba_GROUP_GL");
  return g && *g ? g : "UNNAMED";
}

// ---- the verbs ------------------------------------------------------------------

struct word {
  std::string text;
  size_t end;  // offset just past it in the command
};

struct request {
  std::string group;         // as a file name
  std::vector<word> w;       // the words after the verb
  std::string_view line;     // the command, for SETL's rest of line
};

// Sets or removes (value null) one name in an area.
int put_value(area a, const std::string& group, std::string_view name, const std::string* val) {
  std::string gdir = area_dir(a) + "/" + group;
  if (!make_dir(gdir)) return area_rc[a] + errno % 1000;
  group_lock lock(gdir);
  std::string path = gdir + "/" + file_name(name);
  if (!val) {
    if (unlink(path.c_str()) != 0 && errno != ENOENT) {
      remove_tree(path);  // a directory where a value should be
    }
    return 0;
  }
  int e = write_file(path, *val);
  if (e == EISDIR || e == ENOTEMPTY) {
    remove_tree(path);
    e = write_file(path, *val);
  }
  return e ? area_rc[a] + e % 1000 : 0;
}

// An area and, when it is not storage, storage too.
int put_both(area a, const std::string& group, std::string_view name, const std::string* val) {
  int rc = put_value(a, group, name, val);
  if (!rc && a != A_STORAGE) rc = put_value(A_STORAGE, group, name, val);
  return rc;
}

bool get_value(const std::string& group, std::string_view name, std::string& out) {
  for (area a : {A_STORAGE, A_SESSION, A_LASTING})
    if (read_file(area_dir(a) + "/" + group + "/" + file_name(name), out)) return true;
  return false;
}

int v_set_pairs(request& r, area a) {
  for (size_t i = 0; i < r.w.size(); i += 2) {
    std::string val = i + 1 < r.w.size() ? r.w[i + 1].text : std::string();
    if (int rc = put_both(a, r.group, r.w[i].text, i + 1 < r.w.size() ? &val : nullptr)) return rc;
  }
  return 0;
}

int v_set_line(request& r, area a) {
  if (r.w.empty()) return 0;
  std::string_view rest = r.line.substr(r.w[0].end);
  if (!rest.empty() && rest[0] == ' ') rest.remove_prefix(1);
  if (rest.empty()) return put_both(a, r.group, r.w[0].text, nullptr);
  std::string val(rest);
  return put_both(a, r.group, r.w[0].text, &val);
}

int v_set(request& r) { return v_set_pairs(r, A_STORAGE); }
int v_sets(request& r) { return v_set_pairs(r, A_SESSION); }
int v_setp(request& r) { return v_set_pairs(r, A_LASTING); }
int v_setl(request& r) { return v_set_line(r, A_STORAGE); }
int v_setls(request& r) { return v_set_line(r, A_SESSION); }
int v_setlp(request& r) { return v_set_line(r, A_LASTING); }

int v_get(request& r) {
  std::string val;
  for (const word& w : r.w)
    if (get_value(r.group, w.text, val)) rx_set_name(bu_symbol_case(w.text), value(val));
  return 0;
}

int put_vars(request& r, area a) {
  for (const word& w : r.w) {
    std::string val = bu_get_text(bu_symbol_case(w.text));
    if (int rc = put_both(a, r.group, w.text, &val)) return rc;
  }
  return 0;
}

int v_put(request& r) { return put_vars(r, A_STORAGE); }
int v_puts(request& r) { return put_vars(r, A_SESSION); }
int v_putp(request& r) { return put_vars(r, A_LASTING); }

// The names of a group in all areas, or those asked for.
std::set<std::string> names_of(request& r) {
  std::set<std::string> names;
  if (!r.w.empty()) {
    for (const word& w : r.w) names.insert(file_name(w.text));
    return names;
  }
  for (area a : {A_STORAGE, A_SESSION, A_LASTING})
    for (const std::string& n : entries(area_dir(a) + "/" + r.group, false)) names.insert(n);
  return names;
}

int v_list(request& r) {
  std::string val;
  for (const std::string& n : names_of(r)) {
    std::string name = name_of_file(n);
    if (get_value(r.group, name, val)) rx_out_say(name + " = \"" + val + "\"");
  }
  return 0;
}

int v_stack(request& r) {
  std::string val;
  for (const std::string& n : names_of(r))
    if (get_value(r.group, name_of_file(n), val)) rx_stack_queue(val);
  return 0;
}

int v_purge(request& r) {
  for (area a : {A_STORAGE, A_SESSION, A_LASTING}) {
    std::string gdir = area_dir(a) + "/" + r.group;
    group_lock lock(gdir);
    for (const std::string& n : entries(gdir, false)) unlink((gdir + "/" + n).c_str());
  }
  return 0;
}

std::set<std::string> groups() {
  std::set<std::string> g;
  for (area a : {A_STORAGE, A_SESSION, A_LASTING})
    for (const std::string& n : entries(area_dir(a), true)) g.insert(name_of_file(n));
  return g;
}

int v_grplist(request&) {
  for (const std::string& g : groups()) rx_out_say(g);
  return 0;
}

int v_grpstack(request&) {
  for (const std::string& g : groups()) rx_stack_queue(g);
  return 0;
}

int v_init(request&) {
  copy_initial();
  return 0;
}

struct verb_row {
  const char* word;  // upper case
  int (*run)(request& r);
};

constexpr verb_row verbs[] = {
    {"SET", v_set},     {"SETS", v_sets},     {"SETP", v_setp},   {"SETL", v_setl},       {"SETLS", v_setls},
    {"SETSL", v_setls}, {"SETLP", v_setlp},   {"SETPL", v_setlp}, {"GET", v_get},         {"PUT", v_put},
    {"PUTS", v_puts},   {"PUTP", v_putp},     {"LIST", v_list},   {"STACK", v_stack},     {"PURGE", v_purge},
    {"GRPLIST", v_grplist}, {"GRPSTACK", v_grpstack}, {"INIT", v_init},
};

const verb_row* find_verb(const std::string& w) {
  std::string u = w;
  for (char& c : u) c = (char)toupper((unsigned char)c);
  for (const verb_row& v : verbs)
    if (u == v.word) return &v;
  return nullptr;
}

}  // namespace

int rx_globalv(std::string_view ops) {
  std::vector<word> w;
  for (size_t p = 0; p < ops.size();) {
    while (p < ops.size() && ops[p] == ' ') p++;
    size_t b = p;
    while (p < ops.size() && ops[p] != ' ') p++;
    if (p > b) w.push_back({std::string(ops.substr(b, p - b)), p});
  }
  if (w.empty()) return RC_EMPTY;
  if (int rc = ready()) return rc;
  size_t i = 0;
  std::string group = current_group();
  std::string first = w[0].text;
  for (char& c : first) c = (char)toupper((unsigned char)c);
  // SELECT group, or a first word that is no verb: a group name.
  if (first == "SELECT" || !find_verb(w[0].text)) {
    if (first == "SELECT") i++;
    if (i >= w.size()) return RC_BAD_VERB;
    group = w[i++].text;
    for (char& c : group) c = (char)toupper((unsigned char)c);
    if (i >= w.size()) {
      setenv("molba_GROUP_GL", group.c_str(), 1);
      return 0;
    }
  }
  const verb_row* v = find_verb(w[i].text);
  if (!v) return RC_BAD_VERB;
  request r;
  r.group = file_name(group);
  r.w.assign(w.begin() + (long)i + 1, w.end());
  r.line = ops;
  return v->run(r);
}
