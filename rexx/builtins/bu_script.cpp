// SCRIPT and the TEE family: everything the process writes on its standard
// output (and, for SCRIPT, its error output) is copied to a file as well.
// Both descriptors are pointed at a pipe, and a copier thread, the one
// thread the program starts, moves each byte from the pipe to the kept
// standard output and to the file. The thread shares only the pipe, the
// file and one stop flag with the interpreter, and takes no lock.
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "platform/platform.h"
#include "rexx/builtins/bu_system.h"

namespace {

struct copier {
  int file = -1;               // the log file
  int pipe_r = -1;             // the copier's end of the pipe
  int kept_out = -1;           // standard output as it was
  int kept_err = -1;           // standard error as it was, -1 when not taken
  std::atomic<bool> stop{false};  // set by the interpreter when closing
  std::thread th;              // the copier
};
copier cur;

constexpr int IDLE_MS = 10;  // the copier's pause when the pipe is empty

void copy_loop(int in, int out, int file, std::atomic<bool>* stop) {
  char buf[4096];
  for (;;) {
    pollfd p = {in, POLLIN, 0};
    int n = poll(&p, 1, IDLE_MS);
    if (n == 0) {
      if (stop->load()) break;
      continue;
    }
    if (n < 0 && errno == EINTR) continue;
    ssize_t got = n < 0 ? -1 : read(in, buf, sizeof buf);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    pl_write_all(out, buf, (size_t)got);
    pl_write_all(file, buf, (size_t)got);
  }
}

void close_copier() {
  if (cur.pipe_r < 0) return;
  fflush(stdout);
  fflush(stderr);
  dup2(cur.kept_out, 1);
  if (cur.kept_err >= 0) dup2(cur.kept_err, 2);
  // With every write end gone, the copier drains the pipe and sees its end.
  cur.stop = true;
  if (cur.th.joinable()) cur.th.join();
  close(cur.pipe_r);
  close(cur.file);
  close(cur.kept_out);
  if (cur.kept_err >= 0) close(cur.kept_err);
  cur.pipe_r = cur.file = cur.kept_out = cur.kept_err = -1;
}

// Opens the log and starts the copier; 0, or 1 after a message.
int open_copier(bu_frame& f, const std::string& name, bool append, bool with_err) {
  std::string who(f.name);
  close_copier();
  struct stat st;
  if (name.empty() || (stat(name.c_str(), &st) == 0 && S_ISDIR(st.st_mode))) {
    bu_message(who + ": Invalid \"" + name + "\" file");
    return 1;
  }
  int file = open(name.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | (append ? O_APPEND : O_TRUNC), 0666);
  if (file < 0) {
    bu_message(who + ": Unable to open file \"" + name + "\": " + strerror(errno));
    return 1;
  }
  int p[2];
  if (pipe(p) != 0) {
    close(file);
    bu_message(who + ": Unable to create pipe");
    return 1;
  }
  fcntl(p[0], F_SETFD, FD_CLOEXEC);
  fflush(stdout);
  fflush(stderr);
  cur.kept_out = fcntl(1, F_DUPFD_CLOEXEC, 3);
  cur.kept_err = with_err ? fcntl(2, F_DUPFD_CLOEXEC, 3) : -1;
  cur.file = file;
  cur.pipe_r = p[0];
  cur.stop = false;
  try {
    cur.th = std::thread(copy_loop, p[0], cur.kept_out, file, &cur.stop);
  } catch (...) {
    close(p[1]);
    close_copier();
    bu_message(who + ": Unable to create a child");
    return 1;
  }
  dup2(p[1], 1);
  if (with_err) dup2(p[1], 2);
  close(p[1]);
  setvbuf(stdout, nullptr, _IONBF, 0);
  static bool registered = false;
  if (!registered) registered = atexit(close_copier) == 0;
  return 0;
}

int start(bu_frame& f, value& r, bool with_err, bool append_always) {
  if (int e = bu_count(f, 0, 2)) return e;
  if (!bu_has(f, 0)) {
    close_copier();
    r.set_num(0, 0);
    return 0;
  }
  std::string_view mode = bu_text(f, 1);
  bool append = append_always || (!mode.empty() && (mode[0] == 'a' || mode[0] == 'A'));
  r.set_num(open_copier(f, std::string(bu_text(f, 0)), append, with_err), 0);
  return 0;
}

}  // namespace

// SCRIPT(file [, mode]): output and errors copied to the file (appended
// with a mode beginning with A); SCRIPT() stops the copy.
int bu_script(bu_frame& f, value& r) { return start(f, r, true, false); }
// TEE(file [, mode]): the same for standard output only.
int bu_tee(bu_frame& f, value& r) { return start(f, r, false, false); }
// TEEK(file): keeps what the file held, appending to it.
int bu_teek(bu_frame& f, value& r) { return start(f, r, false, true); }
// TEEC(): closes the copy.
int bu_teec(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  close_copier();
  r.set_num(0, 0);
  return 0;
}
