// The service family through systemd: each call runs systemctl (the system
// manager for root, the user's own manager for anyone else), bounded in
// time and ended by a halt. service_create writes a unit file for the
// program and reloads the manager; service_delete disables and removes it.
// A failure is a message on the error stream and a non-zero result.
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/platform.h"
#include "rexx/builtins/bu_system.h"

namespace {

constexpr int SYSTEMCTL_MS = 30000;  // longest wait for one systemctl call

bool system_manager() { return geteuid() == 0; }

bool stop_asked() { return bu_halted(); }

// Runs systemctl with the words; the exit status, or a negative errno value.
int systemctl(std::vector<std::string> words, std::string& out) {
  words.insert(words.begin(), "systemctl");
  if (!system_manager()) words.insert(words.begin() + 1, "--user");
  pl_run_opts o;
  o.timeout_ms = SYSTEMCTL_MS;
  o.stop = stop_asked;
  return pl_run_capture(words, out, o);
}

std::string unit(std::string_view name) {
  std::string u(name);
  if (u.find('.') == std::string::npos) u += ".service";
  return u;
}

// A name that can be a unit's: no slash, no blank, not empty.
bool good_name(std::string_view n) {
  return !n.empty() && n.find_first_of("/ \t\n\\") == std::string_view::npos && n[0] != '.';
}

// Where unit files are written: the first folder of SYSTEMD_UNIT_PATH when
// that is set (systemd searches it first), else the manager's own folder.
std::string unit_dir() {
  if (const char* p = getenv("SYSTEMD_UNIT_PATH"); p && *p == '/') {
    std::string d(p);
    return d.substr(0, d.find(':'));
  }
  if (system_manager()) return "/etc/systemd/system";
  const char* x = getenv("XDG_CONFIG_HOME");
  const char* h = getenv("HOME");
  return (x && *x == '/' ? std::string(x) : std::string(h ? h : "") + "/.config") + "/systemd/user";
}

int failed(bu_frame& f, value& r, const std::string& why, int code) {
  bu_message(std::string(f.name) + " Error: " + why);
  r.set_num(code ? code : 1, 0);
  return 0;
}

std::string first_line(const std::string& s) {
  std::string l = s.substr(0, s.find('\n'));
  return l.empty() ? "systemctl failed" : l;
}

// service_start and service_stop: one systemctl verb on the unit.
int verb(bu_frame& f, value& r, const char* word) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string_view n = bu_text(f, 0);
  if (!good_name(n)) return failed(f, r, "Invalid service name \"" + std::string(n) + "\"", 1);
  std::string out;
  int rc = systemctl({word, unit(n)}, out);
  if (rc < 0) return failed(f, r, rc == -ETIMEDOUT ? "systemctl did not answer" : "not available", 1);
  if (rc != 0) return failed(f, r, first_line(out), rc);
  r.set_num(0, 0);
  return 0;
}

struct state_row {
  const char* active;  // systemd's ActiveState
  const char* answer;  // the status word
};
constexpr state_row states[] = {
    {"active", "SERVICE_RUNNING"},          {"reloading", "SERVICE_CONTINUE_PENDING"},
    {"inactive", "SERVICE_STOPPED"},        {"failed", "SERVICE_STOPPED"},
    {"activating", "SERVICE_START_PENDING"}, {"deactivating", "SERVICE_STOP_PENDING"},
    {"maintenance", "SERVICE_PAUSED"},
};

std::string property(const std::string& out, const std::string& name) {
  size_t p = out.find(name + "=");
  if (p == std::string::npos || (p > 0 && out[p - 1] != '\n')) return "";
  p += name.size() + 1;
  return out.substr(p, out.find('\n', p) - p);
}

}  // namespace

int bu_service_start(bu_frame& f, value& r) { return verb(f, r, "start"); }
int bu_service_stop(bu_frame& f, value& r) { return verb(f, r, "stop"); }

// SERVICE_STATUS(name): one of the SERVICE_ words.
int bu_service_status(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string_view n = bu_text(f, 0);
  if (!good_name(n)) return r.set_str("SERVICE_DOES_NOT_EXIST"), 0;
  std::string out;
  int rc = systemctl({"show", "--property=LoadState", "--property=ActiveState", unit(n)}, out);
  if (rc < 0) return failed(f, r, rc == -ETIMEDOUT ? "systemctl did not answer" : "not available", 1);
  std::string load = property(out, "LoadState"), active = property(out, "ActiveState");
  const char* answer = "SERVICE_DOES_NOT_EXIST";
  if (rc == 0 && load != "not-found" && !load.empty())
    for (const state_row& s : states)
      if (active == s.active) answer = s.answer;
  r.set_str(answer);
  return 0;
}

namespace {

struct word_row {
  const char* word;   // the argument's word
  const char* line;   // what it becomes in the unit file ("" nothing)
};
constexpr word_row start_types[] = {
    {"SERVICE_AUTO_START", "enable"}, {"SERVICE_BOOT_START", "enable"}, {"SERVICE_SYSTEM_START", "enable"},
    {"SERVICE_DEMAND_START", ""},     {"SERVICE_DISABLED", ""},
};
constexpr word_row error_controls[] = {
    {"SERVICE_ERROR_IGNORE", "Restart=no"},        {"SERVICE_ERROR_NORMAL", "Restart=on-failure"},
    {"SERVICE_ERROR_SEVERE", "Restart=on-failure"}, {"SERVICE_ERROR_CRITICAL", "Restart=always"},
};
constexpr word_row accesses[] = {
    {"SERVICE_ALL_ACCESS", ""},   {"SERVICE_CHANGE_CONFIG", ""}, {"SERVICE_ENUMERATE_DEPENDENTS", ""},
    {"SERVICE_INTERROGATE", ""},  {"SERVICE_PAUSE_CONTINUE", ""}, {"SERVICE_QUERY_CONFIG", ""},
    {"SERVICE_QUERY_STATUS", ""}, {"SERVICE_START", ""},         {"SERVICE_STOP", ""},
    {"SERVICE_USER_DEFINED_CONTROL", ""}, {"DELETE", ""},        {"GENERIC_READ", ""},
    {"GENERIC_WRITE", ""},        {"GENERIC_EXECUTE", ""},       {"GENERIC_ALL", ""},
};
constexpr word_row service_types[] = {
    {"SERVICE_WIN32_OWN_PROCESS", ""},   {"SERVICE_WIN32_SHARE_PROCESS", ""}, {"SERVICE_KERNEL_DRIVER", ""},
    {"SERVICE_FILE_SYSTEM_DRIVER", ""},  {"SERVICE_INTERACTIVE_PROCESS", ""},
};
constexpr const char* arg_names[] = {"lpServiceName",   "lpDisplayName",   "dwDesiredAccess", "dwServiceType",
                                     "dwStartType",     "dwErrorControl",  "lpBinaryPathName", "lpLoadOrderGroup",
                                     "lpDependencies",  "lpServiceStartName", "lpPassword"};

template <size_t N>
const word_row* find_word(const word_row (&rows)[N], std::string_view w) {
  std::string u(w);
  for (char& c : u) c = (char)toupper((unsigned char)c);
  for (const word_row& r : rows)
    if (u == r.word) return &r;
  return nullptr;
}

// Words joined by '|' (or blanks), each one of the table's.
template <size_t N>
bool all_words(const word_row (&rows)[N], std::string_view t) {
  bool any = false;
  for (size_t b = 0; (b = t.find_first_not_of(" |", b)) != std::string_view::npos;) {
    size_t e = t.find_first_of(" |", b);
    if (!find_word(rows, t.substr(b, e == std::string_view::npos ? std::string_view::npos : e - b))) return false;
    any = true;
    b = e;
  }
  return any;
}

int bad(bu_frame& f, int i) {
  return bu_fail(f, i, std::string(arg_names[i]) + " is invalid: \"" + std::string(bu_text(f, i)) + "\".");
}

}  // namespace

// SERVICE_CREATE(lpServiceName, lpDisplayName, dwDesiredAccess,
// dwServiceType, dwStartType, dwErrorControl, lpBinaryPathName
// [, lpLoadOrderGroup, lpDependencies, lpServiceStartName, lpPassword])
int bu_service_create(bu_frame& f, value& r) {
  if (int e = bu_count(f, 7, 11)) return e;
  std::string_view name = bu_text(f, 0), bin = bu_text(f, 6);
  if (!good_name(name)) return bad(f, 0);
  const word_row* start = find_word(start_types, bu_text(f, 4));
  const word_row* errc = find_word(error_controls, bu_text(f, 5));
  if (!all_words(accesses, bu_text(f, 2))) return bad(f, 2);
  if (!all_words(service_types, bu_text(f, 3))) return bad(f, 3);
  if (!start) return bad(f, 4);
  if (!errc) return bad(f, 5);
  if (bin.empty() || bin.find('\n') != std::string_view::npos) return bad(f, 6);
  std::string dir = unit_dir(), file = dir + "/" + unit(name);
  std::string text = "[Unit]\nDescription=" + std::string(bu_has(f, 1) ? bu_text(f, 1) : name) + "\n";
  if (bu_has(f, 8) && !bu_text(f, 8).empty()) text += "Wants=" + std::string(bu_text(f, 8)) + "\nAfter=" + std::string(bu_text(f, 8)) + "\n";
  text += "\n[Service]\nExecStart=" + std::string(bin) + "\n" + errc->line + "\n";
  if (system_manager() && bu_has(f, 9) && !bu_text(f, 9).empty()) text += "User=" + std::string(bu_text(f, 9)) + "\n";
  text += std::string("\n[Install]\nWantedBy=") + (system_manager() ? "multi-user.target" : "default.target") + "\n";
  for (size_t i = 1; i <= dir.size(); i++)
    if (i == dir.size() || dir[i] == '/') mkdir(dir.substr(0, i).c_str(), 0755);
  int fd = pl_create_new(file, 0644);
  if (fd == -EEXIST) return failed(f, r, "The service already exists", 1);
  if (fd < 0) return failed(f, r, "Unable to create \"" + file + "\"", 1);
  int err = pl_write_all(fd, text.data(), text.size());
  if (close(fd) != 0 || err) {
    unlink(file.c_str());
    return failed(f, r, "Unable to write \"" + file + "\"", 1);
  }
  std::string out;
  int rc = systemctl({"daemon-reload"}, out);
  if (rc == 0 && *start->line) rc = systemctl({start->line, unit(name)}, out);
  if (rc != 0) return failed(f, r, rc < 0 ? "not available" : first_line(out), rc < 0 ? 1 : rc);
  r.set_num(0, 0);
  return 0;
}

// SERVICE_DELETE(name): stopped, disabled, and its unit file removed.
int bu_service_delete(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string_view n = bu_text(f, 0);
  std::string file = unit_dir() + "/" + unit(n);
  if (!good_name(n) || access(file.c_str(), F_OK) != 0) return failed(f, r, "SERVICE_DOES_NOT_EXIST", 1);
  std::string out;
  systemctl({"stop", unit(n)}, out);
  systemctl({"disable", unit(n)}, out);
  if (unlink(file.c_str()) != 0) return failed(f, r, "Unable to remove \"" + file + "\"", 1);
  int rc = systemctl({"daemon-reload"}, out);
  if (rc != 0) return failed(f, r, rc < 0 ? "not available" : first_line(out), rc < 0 ? 1 : rc);
  r.set_num(0, 0);
  return 0;
}
