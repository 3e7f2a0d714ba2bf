// Child processes: starting a shell command with pipes on its input and
// output, reading and writing them without blocking, ending a child and the
// whole group it may have started, and the descriptors that a screen's wait
// polls beside its own input so that a child's output arrives while the user
// types.
#include "platform/platform.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

extern char **environ;

namespace {

void close_fd(int &fd)
{
    if (fd >= 0)
        close(fd);
    fd = -1;
}

void close_pair(int p[2])
{
    close_fd(p[0]);
    close_fd(p[1]);
}

// The words of the child's environment: ours, with each NAME=VALUE of
// `extra` in place of ours of that name.
std::vector<std::string> child_env(const std::vector<std::string> &extra)
{
    std::vector<std::string> env;
    for (char **e = environ; e && *e; e++) {
        std::string_view v(*e);
        bool replaced = false;
        for (const std::string &x : extra) {
            size_t eq = x.find('=');
            if (eq != std::string::npos && v.size() > eq && v.substr(0, eq + 1) == std::string_view(x).substr(0, eq + 1))
                replaced = true;
        }
        if (!replaced)
            env.emplace_back(v);
    }
    env.insert(env.end(), extra.begin(), extra.end());
    return env;
}

// The pointers exec takes, made before the fork: a child of a process with
// threads must not allocate.
std::vector<char *> pointers(const std::vector<std::string> &words)
{
    std::vector<char *> p;
    for (const std::string &w : words)
        p.push_back(const_cast<char *>(w.c_str()));
    p.push_back(nullptr);
    return p;
}

// How the child is set up before it runs: its standard files, its group,
// and the signals the editor changed for itself put back to the usual
// defaults (exec resets caught signals, not ignored ones or the mask).
// posix_spawn does this without copying the editor's page tables, which
// for a process holding a large file costs more than the child's whole run.
struct spawnsetup {
    posix_spawn_file_actions_t fa;
    posix_spawnattr_t attr;
    spawnsetup(int flags, const int in[2], const int out[2], const int ep[2])
    {
        posix_spawn_file_actions_init(&fa);
        posix_spawnattr_init(&attr);
        if (flags & PL_FEED)
            posix_spawn_file_actions_adddup2(&fa, in[0], 0);
        else if (!(flags & PL_KEEPIN))
            posix_spawn_file_actions_addopen(&fa, 0, "/dev/null", O_RDONLY, 0);
        if (flags & PL_CAPTURE) {
            posix_spawn_file_actions_adddup2(&fa, out[1], 1);
            if (flags & PL_ERRPIPE)
                posix_spawn_file_actions_adddup2(&fa, ep[1], 2);
            else if (flags & PL_NOERR)
                posix_spawn_file_actions_addopen(&fa, 2, "/dev/null", O_WRONLY, 0);
            else
                posix_spawn_file_actions_adddup2(&fa, out[1], 2);
        }
        short aflags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
        if (flags & PL_GROUP) {
            aflags |= POSIX_SPAWN_SETPGROUP;
            posix_spawnattr_setpgroup(&attr, 0);
        }
        sigset_t none, dfl;
        sigemptyset(&none);
        sigemptyset(&dfl);
        for (int sig : {SIGPIPE, SIGINT, SIGQUIT, SIGTSTP})
            sigaddset(&dfl, sig);
        posix_spawnattr_setsigmask(&attr, &none);
        posix_spawnattr_setsigdefault(&attr, &dfl);
        posix_spawnattr_setflags(&attr, aflags);
    }
    ~spawnsetup()
    {
        posix_spawn_file_actions_destroy(&fa);
        posix_spawnattr_destroy(&attr);
    }
    spawnsetup(const spawnsetup &) = delete;
    spawnsetup &operator=(const spawnsetup &) = delete;
};

struct watch {
    int fd;                 // descriptor polled for input or its end
    void (*ready)(void *);  // called when it is readable or closed
    void *ctx;              // handed to ready
};
std::vector<watch> watches; // in order of addition

} // namespace

int pl_spawn(const std::vector<std::string> &argv, int flags, pl_child &c, const std::vector<std::string> &env)
{
    c = pl_child{};
    if (argv.empty())
        return EINVAL;
    bool errpipe = (flags & PL_CAPTURE) && (flags & PL_ERRPIPE);
    int in[2] = {-1, -1}, out[2] = {-1, -1}, ep[2] = {-1, -1};
    auto close_all = [&] {
        close_pair(in);
        close_pair(out);
        close_pair(ep);
    };
    if (((flags & PL_FEED) && pipe2(in, O_CLOEXEC) != 0) || ((flags & PL_CAPTURE) && pipe2(out, O_CLOEXEC) != 0) ||
        (errpipe && pipe2(ep, O_CLOEXEC) != 0)) {
        int e = errno;
        close_all();
        return e;
    }
    std::vector<char *> av = pointers(argv);
    std::vector<std::string> envw;
    if (!env.empty())
        envw = child_env(env);
    std::vector<char *> evp = pointers(envw);
    pid_t pid = -1;
    int e;
    {
        spawnsetup setup(flags, in, out, ep);
        e = posix_spawnp(&pid, av[0], &setup.fa, &setup.attr, av.data(), env.empty() ? environ : evp.data());
    }
    if (e != 0) {
        close_all();
        return e;
    }
    // Set here too: whichever runs first, the group exists before a signal
    // is sent to it.
    if (flags & PL_GROUP)
        setpgid(pid, pid);
    close_fd(in[0]);
    close_fd(out[1]);
    close_fd(ep[1]);
    c.pid = pid;
    c.group = (flags & PL_GROUP) != 0;
    c.in = in[1];
    c.out = out[0];
    c.err = ep[0];
    for (int fd : {c.in, c.out, c.err})
        if (fd >= 0)
            fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
    return 0;
}

std::vector<std::string> pl_shell_argv(const std::string &command)
{
    return {"/bin/sh", "-c", command};
}

std::string pl_shell_background(const std::string &command)
{
    return "(" + command + ") >/dev/null 2>&1 </dev/null &";
}

namespace {

// Appends what the pipe holds, at most `most` bytes, without waiting: the
// bytes added, 0 when nothing is there yet, -1 at its end (then closed).
long drain(int &fd, std::string &into, size_t most)
{
    if (fd < 0)
        return 0;
    size_t start = into.size();
    for (;;) {
        size_t room = std::min<size_t>(65536, most - (into.size() - start));
        if (room == 0)
            return (long)(into.size() - start);
        size_t at = into.size();
        into.resize(at + room);
        ssize_t n = read(fd, &into[at], room);
        into.resize(at + (n > 0 ? (size_t)n : 0));
        if (n > 0)
            continue;
        if (n < 0 && errno == EINTR)
            continue;
        if (n == 0 || (errno != EAGAIN && errno != EWOULDBLOCK)) {
            close_fd(fd);
            return into.size() > start ? (long)(into.size() - start) : -1;
        }
        return (long)(into.size() - start);
    }
}

} // namespace

long pl_child_read(pl_child &c, std::string &into, size_t most) { return drain(c.out, into, most); }

size_t pl_child_write(pl_child &c, const char *data, size_t n)
{
    if (c.in < 0)
        return 0;
    // A child that has gone makes the write fail, not end us: the signal
    // is held off for the call whatever the process does with it.
    struct sigaction ign{}, old{};
    ign.sa_handler = SIG_IGN;
    sigemptyset(&ign.sa_mask);
    sigaction(SIGPIPE, &ign, &old);
    size_t done = 0;
    while (done < n) {
        ssize_t w = write(c.in, data + done, n - done);
        if (w > 0) {
            done += (size_t)w;
            continue;
        }
        if (w < 0 && errno == EINTR)
            continue;
        if (w < 0 && (errno == EAGAIN || errno == EWOULDBLOCK))
            break;
        // The child closed its input: what is left cannot be given to it.
        close_fd(c.in);
        done = n;
    }
    sigaction(SIGPIPE, &old, nullptr);
    return done;
}

void pl_child_close_input(pl_child &c) { close_fd(c.in); }

bool pl_child_done(pl_child &c)
{
    if (c.pid <= 0)
        return true;
    int st = 0;
    pid_t r;
    while ((r = waitpid(c.pid, &st, WNOHANG)) < 0 && errno == EINTR) {
    }
    if (r == 0)
        return false;
    c.pid = -1;
    if (r < 0) {
        c.status = -1;
        return true;
    }
    if (WIFEXITED(st)) {
        c.status = WEXITSTATUS(st);
    } else if (WIFSIGNALED(st)) {
        c.signal = WTERMSIG(st);
        c.status = 128 + c.signal;
    }
    return true;
}

void pl_child_stop(pl_child &c)
{
    if (c.pid <= 0)
        return;
    pid_t target = c.group ? -c.pid : c.pid;
    kill(target, SIGTERM);
    // A child that ignores the request gets a short grace, then the end it
    // cannot refuse: a command that never ends never holds the editor.
    for (int i = 0; i < 50 && !pl_child_done(c); i++) {
        timespec t{0, 10 * 1000 * 1000};
        nanosleep(&t, nullptr);
    }
    if (c.pid > 0) {
        kill(target, SIGKILL);
        while (!pl_child_done(c)) {
            timespec t{0, 1000 * 1000};
            nanosleep(&t, nullptr);
        }
    }
}

void pl_child_release(pl_child &c)
{
    close_fd(c.in);
    close_fd(c.out);
    close_fd(c.err);
    if (c.pid > 0 && !pl_child_done(c))
        pl_child_stop(c);
}

int pl_run_wait(const std::vector<std::string> &argv, int flags, bool (*stop)(), pl_child &c)
{
    if (int e = pl_spawn(argv, flags & ~(PL_FEED | PL_CAPTURE), c))
        return e;
    int fd = pl_child_exitfd(c);
    for (int ms = 1; !pl_child_done(c);) {
        if (stop && stop()) {
            pl_child_stop(c);
            break;
        }
        // The end of the child wakes the poll at once where the system can
        // tell; otherwise the look grows rarer, up to five times a second.
        pollfd p{fd, POLLIN, 0};
        if (fd >= 0)
            poll(&p, 1, 200);
        else {
            timespec t{0, ms * 1000L * 1000L};
            nanosleep(&t, nullptr);
            ms = std::min(ms * 2, 200);
        }
    }
    if (fd >= 0)
        close(fd);
    return 0;
}

int pl_child_exitfd(const pl_child &c)
{
#ifdef SYS_pidfd_open
    if (c.pid > 0) {
        long fd = syscall(SYS_pidfd_open, c.pid, 0);
        if (fd >= 0) {
            fcntl((int)fd, F_SETFD, FD_CLOEXEC);
            return (int)fd;
        }
    }
#else
    (void)c;
#endif
    return -1;
}

int pl_start_detached(const std::vector<std::string> &argv, const std::string &dir)
{
    if (argv.empty())
        return EINVAL;
    int pfd[2];
    if (pipe2(pfd, O_CLOEXEC) != 0)
        return errno;
    std::vector<char *> av = pointers(argv);
    pid_t mid = fork();
    if (mid < 0) {
        int e = errno;
        close_pair(pfd);
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
        if (chdir(dir.c_str()) == 0) {
            signal(SIGPIPE, SIG_DFL);
            execvp(av[0], av.data());
        }
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

// What a pipe holds, kept up to the limit and read past it.
void take(int &fd, std::string *into, size_t limit)
{
    std::string chunk;
    while (fd >= 0 && drain(fd, chunk, 1u << 16) > 0) {
        if (into && into->size() < limit)
            into->append(chunk, 0, std::min(chunk.size(), limit - into->size()));
        chunk.clear();
    }
}

} // namespace

int pl_run_capture(const std::vector<std::string> &argv, std::string &out, const pl_run_opts &o, std::string *err)
{
    out.clear();
    if (err)
        err->clear();
    pl_child c;
    int flags = PL_CAPTURE | PL_GROUP | (err ? PL_ERRPIPE : o.with_stderr ? 0 : PL_NOERR);
    if (int e = pl_spawn(argv, flags, c, o.env))
        return -e;
    long long end = o.timeout_ms >= 0 ? now_ms() + o.timeout_ms : -1;
    // Both pipes are read as the output comes, so that a child that writes
    // much to one never blocks on the other, until the program ends: what
    // it wrote is then all in the pipes, which something it started and
    // left behind may hold open for ever.
    for (;;) {
        if ((end >= 0 && now_ms() >= end) || (o.stop && o.stop())) {
            pl_child_release(c);
            return -ETIMEDOUT;
        }
        pollfd p[2] = {{c.out, POLLIN, 0}, {c.err, POLLIN, 0}};
        if (c.out >= 0 || c.err >= 0)
            poll(p, 2, 50);
        else
            poll(nullptr, 0, 5);
        bool ended = pl_child_done(c);
        take(c.out, &out, o.max_out);
        take(c.err, err, o.max_out);
        if (ended)
            break;
    }
    int status = c.status;
    pl_child_release(c);
    return status;
}

// ---- descriptors a screen's wait polls ------------------------------------------

void pl_watch_add(int fd, void (*ready)(void *), void *ctx)
{
    pl_watch_remove(fd);
    watches.push_back({fd, ready, ctx});
}

void pl_watch_remove(int fd)
{
    watches.erase(std::remove_if(watches.begin(), watches.end(), [fd](const watch &w) { return w.fd == fd; }),
                  watches.end());
}

void pl_watch_fill(std::vector<pollfd> &p)
{
    for (const watch &w : watches)
        p.push_back({w.fd, POLLIN, 0});
}

bool pl_watch_run(const pollfd *p, size_t n)
{
    // A ready call may add or remove watches: each fd is looked up again.
    bool any = false;
    for (size_t i = 0; i < n; i++) {
        if (!(p[i].revents & (POLLIN | POLLHUP | POLLERR | POLLNVAL)))
            continue;
        for (size_t k = 0; k < watches.size(); k++)
            if (watches[k].fd == p[i].fd) {
                watch w = watches[k];
                w.ready(w.ctx);
                any = true;
                break;
            }
    }
    return any;
}

size_t pl_watch_count() { return watches.size(); }

bool pl_watch_poll(int ms)
{
    std::vector<pollfd> p;
    pl_watch_fill(p);
    if (p.empty())
        return false;
    int n = poll(p.data(), p.size(), ms);
    return n > 0 && pl_watch_run(p.data(), p.size());
}
