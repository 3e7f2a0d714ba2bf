// The process family: programs started and kept in a table of handles
// (FORK, WAITPID, STILL_ACTIVE), commands whose output comes back as the
// result (POPEN and its names, the named shells), signals (KILL, QPID), the
// process's priority, and files opened with the desktop's opener. Every
// wait gives way to the editor's events and to a halt.
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/platform.h"
#include "rexx/builtins/bu_system.h"

namespace {

struct child {
  pid_t pid;        // the process
  bool done;        // it has ended and been waited for
  int code;         // its exit status (128 + signal when killed)
};
std::vector<child> children;  // handle i is children[i - 1]

constexpr long long POLL_MS = 20;  // between looks at a running child

int status_code(int st) { return WIFEXITED(st) ? WEXITSTATUS(st) : WIFSIGNALED(st) ? 128 + WTERMSIG(st) : 255; }

// Looks at a child without waiting; true when it has ended.
bool reap(child& c) {
  if (c.done) return true;
  int st;
  pid_t w = waitpid(c.pid, &st, WNOHANG);
  if (w == c.pid || (w < 0 && errno == ECHILD)) {
    c.done = true;
    c.code = w == c.pid ? status_code(st) : 255;
  }
  return c.done;
}

// Starts sh -c cmd in its own process group, input from /dev/null.
pid_t start(const std::string& cmd, bool quiet) {
  fflush(stdout);
  fflush(stderr);
  pid_t pid = fork();
  if (pid != 0) return pid;
  setpgid(0, 0);
  int nul = open("/dev/null", O_RDWR);
  if (nul >= 0) {
    dup2(nul, 0);
    if (quiet) dup2(nul, 1), dup2(nul, 2);
  }
  signal(SIGPIPE, SIG_DFL);
  execl("/bin/sh", "sh", "-c", cmd.c_str(), (char*)nullptr);
  _exit(127);
}

// Waits for a child to end: its status, or -1 when a halt came first.
int wait_child(child& c) {
  while (!reap(c))
    if (!bu_wait_ms(POLL_MS)) return -1;
  return c.code;
}

// The handle argument of WAITPID, STILL_ACTIVE and QPID.
int handle_arg(bu_frame& f, child*& c) {
  long long h;
  if (!bu_has(f, 0) || rx_whole(*f.args[0], h) != 0)
    return bu_fail_num(f, 41, 0, "the first argument must be a whole number.");
  if (h < 1 || h > (long long)children.size()) return bu_fail(f, 0, "invalid handlde.");
  c = &children[(size_t)h - 1];
  return 0;
}

bool halted() { return bu_halted(); }

// Runs a command through `shell` and gives its output: the whole text with
// its last line end cut, or with a stem the lines in it and their count.
// RC is the command's exit status.
int capture(bu_frame& f, value& r, const std::string& shell) {
  if (int e = bu_count(f, 1, 2)) return e;
  std::string stem;
  if (bu_has(f, 1))
    if (int e = bu_stem(f, 1, stem)) return e;
  pl_run_opts o;
  o.stop = halted;
  std::string out;
  int rc = pl_run_capture({shell, "-c", std::string(bu_text(f, 0))}, out, o);
  bu_set_rc(rc < 0 ? -1 : rc);
  if (!out.empty() && out.back() == '\n') out.pop_back();
  if (stem.empty()) {
    r.set_str(out);
    return 0;
  }
  std::vector<std::string> lines;
  for (size_t b = 0; !out.empty() && b <= out.size();) {
    size_t e = out.find('\n', b);
    if (e == std::string::npos) e = out.size();
    lines.push_back(out.substr(b, e - b));
    b = e + 1;
  }
  bu_set_list(stem, lines);
  r.set_num((double)lines.size(), 0);
  return 0;
}

std::string shell_of(const char* var, const char* dflt) {
  const char* s = getenv(var);
  return s && *s ? s : dflt;
}

struct sig_row {
  const char* word;  // the name without SIG
  int sig;           // its number
};
constexpr sig_row signals[] = {
    {"HUP", SIGHUP}, {"INT", SIGINT}, {"QUIT", SIGQUIT}, {"KILL", SIGKILL}, {"TERM", SIGTERM},
    {"USR1", SIGUSR1}, {"USR2", SIGUSR2}, {"STOP", SIGSTOP}, {"CONT", SIGCONT}, {"ALRM", SIGALRM},
};

struct prio_row {
  const char* word;  // the priority class
  int nice;          // the nice value it means
};
constexpr prio_row priorities[] = {
    {"IDLE_PRIORITY_CLASS", 19},          {"BELOW_NORMAL_PRIORITY_CLASS", 10},
    {"NORMAL_PRIORITY_CLASS", 0},         {"ABOVE_NORMAL_PRIORITY_CLASS", -5},
    {"HIGH_PRIORITY_CLASS", -10},         {"REALTIME_PRIORITY_CLASS", -20},
    {"PROCESS_MODE_BACKGROUND_BEGIN", 19}, {"PROCESS_MODE_BACKGROUND_END", 0},
};

std::string upper(std::string_view t) {
  std::string u(t);
  for (char& c : u) c = (char)toupper((unsigned char)c);
  return u;
}

}  // namespace

// FORK(command): the command started beside the macro; gives its handle
// for WAITPID, or -1 when it could not start.
int bu_fork(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  pid_t pid = start(std::string(bu_text(f, 0)), false);
  if (pid < 0) return r.set_num(-1, 0), 0;
  children.push_back({pid, false, 0});
  r.set_num((double)children.size(), 0);
  return 0;
}

// WAITPID(handle [, wait]): the exit status; with wait 0 and the process
// still running, -1.
int bu_waitpid(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 2)) return e;
  child* c;
  if (int e = handle_arg(f, c)) return e;
  bool wait = true;
  if (bu_has(f, 1)) {
    bool flag;
    if (int e = bu_flag(f, 1, flag)) return e;
    wait = flag;
  }
  r.set_num(wait ? wait_child(*c) : reap(*c) ? c->code : -1, 0);
  return 0;
}

// STILL_ACTIVE(handle): 1 while the process runs.
int bu_still_active(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  child* c;
  if (int e = handle_arg(f, c)) return e;
  r.set_num(reap(*c) ? 0 : 1, 0);
  return 0;
}

// KILL(pid [, signal]): a signal by number or name (TERM by default);
// 0, or the system's error number.
int bu_kill(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 2)) return e;
  long long pid, sig = SIGTERM;
  if (int e = bu_whole(f, 0, 2, 0, pid)) return e;
  if (bu_has(f, 1)) {
    std::string w = upper(bu_text(f, 1));
    if (w.rfind("SIG", 0) == 0) w = w.substr(3);
    bool found = false;
    for (const sig_row& s : signals)
      if (w == s.word) sig = s.sig, found = true;
    if (!found && (rx_whole(*f.args[1], sig) != 0 || sig < 0 || sig > 64))
      return bu_fail(f, 1, "invalid signal \"" + std::string(bu_text(f, 1)) + "\".");
  }
  r.set_num(kill((pid_t)pid, (int)sig) == 0 ? 0 : errno, 0);
  return 0;
}

// QPID(handle): the process number of a started program, for KILL.
int bu_qpid(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  child* c;
  if (int e = handle_arg(f, c)) return e;
  r.set_num(c->pid, 0);
  return 0;
}

int bu_getpid(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  r.set_num(getpid(), 0);
  return 0;
}

// POPEN(command [, stem]) and SH, UNIX, WINDOWS: through /bin/sh.
int bu_popen(bu_frame& f, value& r) { return capture(f, r, "/bin/sh"); }
// CSH, TCSH, KSH: through the shell the environment names, or that shell.
int bu_csh(bu_frame& f, value& r) { return capture(f, r, shell_of("CSH", "csh")); }
int bu_tcsh(bu_frame& f, value& r) { return capture(f, r, shell_of("TCSH", "tcsh")); }
int bu_ksh(bu_frame& f, value& r) { return capture(f, r, shell_of("KSH", "ksh")); }

namespace {

int run_waiting(bu_frame& f, value& r, bool quiet) {
  if (int e = bu_count(f, 1, 1)) return e;
  pid_t pid = start(std::string(bu_text(f, 0)), quiet);
  if (pid < 0) return r.set_num(-1, 0), 0;
  child c{pid, false, 0};
  int code = wait_child(c);
  if (code < 0) {
    kill(-pid, SIGTERM);
    while (waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
    }
  }
  r.set_num(code, 0);
  return 0;
}

}  // namespace

// EXEC(command): runs it with the macro's output and waits: its status.
int bu_exec(bu_frame& f, value& r) { return run_waiting(f, r, false); }
// WINDOWS_NE(command): the same with its output thrown away.
int bu_windows_ne(bu_frame& f, value& r) { return run_waiting(f, r, true); }

// SETPRIORITY(class): the process's priority class; 0, or the error number.
int bu_setpriority(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string w = upper(bu_text(f, 0));
  for (const prio_row& p : priorities)
    if (w == p.word) {
      r.set_num(setpriority(PRIO_PROCESS, 0, p.nice) == 0 ? 0 : errno, 0);
      return 0;
    }
  return bu_fail(f, 0, "invalid priority class \"" + std::string(bu_text(f, 0)) + "\".");
}

// SHELLEXECUTE(file [, verb [, parameters [, folder]]]): "open" (and
// "explore") through the desktop's opener, "print" through lp; 0, or the
// error number of the start.
int bu_shellexecute(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 4)) return e;
  std::string verb = bu_has(f, 1) ? upper(bu_text(f, 1)) : "OPEN";
  std::string file(bu_text(f, 0));
  std::vector<std::string> argv;
  if (verb == "OPEN" || verb == "EXPLORE" || verb.empty()) argv = {"xdg-open", file};
  else if (verb == "PRINT") argv = {"lp", file};
  else return bu_fail(f, 1, "verb must be \"open\", \"explore\" or \"print\".");
  char cwd[4096];
  std::string dir = bu_has(f, 3) && !bu_text(f, 3).empty() ? std::string(bu_text(f, 3)) : getcwd(cwd, sizeof cwd) ? cwd : "/";
  r.set_num(pl_start_detached(argv, dir), 0);
  return 0;
}
