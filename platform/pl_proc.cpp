// Child processes: a program started in its own session and left to run (a
// file opened with the desktop's opener), and a program run to its end with
// its output gathered, bounded in time and stoppable by the caller.
#include "platform/platform.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// The argument vector made before the fork: a child of a process with
// threads must not allocate.
std::vector<char *> arg_vector(const std::vector<std::string> &argv)
{
    std::vector<char *> av;
    for (const std::string &a : argv)
        av.push_back(const_cast<char *>(a.c_str()));
    av.push_back(nullptr);
    return av;
}

// In a child: the program of av[0] (searched on PATH) replaces this one,
// with SIGPIPE back to its default; returns only when exec failed.
void exec_args(const std::vector<char *> &av)
{
    signal(SIGPIPE, SIG_DFL);
    execvp(av[0], av.data());
}

} // namespace

// Starts `argv` in its own session with `dir` as its working directory and
// does not wait for it: 0, or the errno value of the start.
int pl_start_detached(const std::vector<std::string> &argv, const std::string &dir)
{
    int pfd[2];
    if (pipe2(pfd, O_CLOEXEC) != 0)
        return errno;
    std::vector<char *> av = arg_vector(argv);
    pid_t mid = fork();
    if (mid < 0) {
        int e = errno;
        close(pfd[0]);
        close(pfd[1]);
        return e;
    }
    if (mid == 0) {
        // A second fork, so that the program is nobody's zombie; the pipe
        // carries back the errno of a failed exec and closes on success.
        close(pfd[0]);
        setsid();
        pid_t run = fork();
        if (run != 0)
            _exit(run < 0 ? 1 : 0);
        int nul = open("/dev/null", O_RDWR);
        if (nul >= 0) {
            dup2(nul, 0);
            dup2(nul, 1);
            dup2(nul, 2);
        }
        if (chdir(dir.c_str()) != 0) {
            int e = errno;
            (void)!write(pfd[1], &e, sizeof e);
            _exit(127);
        }
        exec_args(av);
        int e = errno;
        (void)!write(pfd[1], &e, sizeof e);
        _exit(127);
    }
    close(pfd[1]);
    int status = 0;
    while (waitpid(mid, &status, 0) < 0 && errno == EINTR) {
    }
    int err = 0;
    ssize_t n;
    while ((n = read(pfd[0], &err, sizeof err)) < 0 && errno == EINTR) {
    }
    close(pfd[0]);
    return n == (ssize_t)sizeof err ? err : 0;
}

namespace {

long long now_ms()
{
    timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return (long long)t.tv_sec * 1000 + t.tv_nsec / 1000000;
}

// The child's side: its own process group, standard input from /dev/null,
// output and error into the pipe (error to /dev/null when not wanted).
[[noreturn]] void child(const std::vector<char *> &av, int out, bool with_err)
{
    setpgid(0, 0);
    int nul = open("/dev/null", O_RDWR);
    if (nul >= 0)
        dup2(nul, 0);
    dup2(out, 1);
    dup2(with_err ? out : (nul >= 0 ? nul : out), 2);
    exec_args(av);
    _exit(127);
}

} // namespace

int pl_run_capture(const std::vector<std::string> &argv, std::string &out, const pl_run_opts &o)
{
    out.clear();
    if (argv.empty())
        return -EINVAL;
    int pfd[2];
    if (pipe2(pfd, O_CLOEXEC) != 0)
        return -errno;
    std::vector<char *> av = arg_vector(argv);
    pid_t pid = fork();
    if (pid < 0) {
        int e = errno;
        close(pfd[0]);
        close(pfd[1]);
        return -e;
    }
    if (pid == 0)
        child(av, pfd[1], o.with_stderr);
    close(pfd[1]);
    long long end = o.timeout_ms >= 0 ? now_ms() + o.timeout_ms : -1;
    bool open_pipe = true, stopped = false;
    char buf[16384];
    while (open_pipe) {
        if ((end >= 0 && now_ms() >= end) || (o.stop && o.stop())) {
            kill(-pid, SIGKILL);
            kill(pid, SIGKILL);
            stopped = true;
            break;
        }
        pollfd p = {pfd[0], POLLIN, 0};
        int n = poll(&p, 1, 50);
        if (n < 0 && errno != EINTR)
            break;
        if (n <= 0)
            continue;
        ssize_t r = read(pfd[0], buf, sizeof buf);
        if (r > 0) {
            if (out.size() < o.max_out)
                out.append(buf, (size_t)r);
        } else if (r == 0 || errno != EINTR) {
            open_pipe = false;
        }
    }
    close(pfd[0]);
    int status = 0;
    // The output has ended; the program itself gets the rest of the time.
    for (;;) {
        pid_t w = waitpid(pid, &status, stopped ? 0 : WNOHANG);
        if (w == pid)
            break;
        if (w < 0 && errno != EINTR)
            return -ECHILD;
        if (w == 0 && ((end >= 0 && now_ms() >= end) || (o.stop && o.stop()))) {
            kill(-pid, SIGKILL);
            kill(pid, SIGKILL);
            stopped = true;
        } else if (w == 0) {
            poll(nullptr, 0, 10);
        }
    }
    if (stopped)
        return -ETIMEDOUT;
    if (WIFEXITED(status))
        return WEXITSTATUS(status);
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : 255;
}
