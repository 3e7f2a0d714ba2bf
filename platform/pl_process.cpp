// Running another program and taking its output: the editor's lookups
// through outside tools (manual pages, the printing system) start a program
// by its argument vector, never through a shell, so that a word the user
// typed is never read as shell syntax.
#include "platform/platform.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace {

// The environment of the child: ours, with each NAME=VALUE of `extra` put
// in place of ours of that name.
std::vector<std::string> child_env(const std::vector<std::string> &extra)
{
    std::vector<std::string> env;
    for (char **e = environ; e && *e; e++) {
        std::string_view v(*e);
        bool replaced = false;
        for (const std::string &x : extra) {
            size_t eq = x.find('=');
            if (eq != std::string::npos && v.size() > eq && v.substr(0, eq + 1) == x.substr(0, eq + 1))
                replaced = true;
        }
        if (!replaced)
            env.emplace_back(v);
    }
    env.insert(env.end(), extra.begin(), extra.end());
    return env;
}

std::vector<char *> pointers(std::vector<std::string> &words)
{
    std::vector<char *> p;
    for (std::string &w : words)
        p.push_back(w.data());
    p.push_back(nullptr);
    return p;
}

} // namespace

int pl_run_capture(const std::vector<std::string> &argv, const std::vector<std::string> &env_extra,
                   std::string &out, std::string *err, size_t limit)
{
    out.clear();
    if (err)
        err->clear();
    if (argv.empty())
        return -EINVAL;
    int po[2], pe[2] = {-1, -1};
    if (pipe2(po, O_CLOEXEC) != 0)
        return -errno;
    if (err && pipe2(pe, O_CLOEXEC) != 0) {
        int e = errno;
        close(po[0]);
        close(po[1]);
        return -e;
    }
    posix_spawn_file_actions_t fa;
    posix_spawn_file_actions_init(&fa);
    posix_spawn_file_actions_addopen(&fa, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&fa, po[1], 1);
    if (err)
        posix_spawn_file_actions_adddup2(&fa, pe[1], 2);
    else
        posix_spawn_file_actions_addopen(&fa, 2, "/dev/null", O_WRONLY, 0);
    std::vector<std::string> args(argv), env = child_env(env_extra);
    std::vector<char *> av = pointers(args), ev = pointers(env);
    pid_t pid = -1;
    int e = posix_spawnp(&pid, av[0], &fa, nullptr, av.data(), ev.data());
    posix_spawn_file_actions_destroy(&fa);
    close(po[1]);
    if (err)
        close(pe[1]);
    if (e != 0) {
        close(po[0]);
        if (err)
            close(pe[0]);
        return -e;
    }
    // Both pipes are drained together, so that a child that writes much to
    // one never blocks on the other.
    struct pollfd fds[2] = {{po[0], POLLIN, 0}, {err ? pe[0] : -1, POLLIN, 0}};
    std::string *sinks[2] = {&out, err};
    int open_fds = err ? 2 : 1;
    char buf[65536];
    while (open_fds > 0) {
        if (poll(fds, 2, -1) < 0) {
            if (errno == EINTR)
                continue;
            break;
        }
        for (int i = 0; i < 2; i++) {
            if (fds[i].fd < 0 || !(fds[i].revents & (POLLIN | POLLHUP | POLLERR)))
                continue;
            ssize_t n = read(fds[i].fd, buf, sizeof buf);
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0) {
                close(fds[i].fd);
                fds[i].fd = -1;
                open_fds--;
                continue;
            }
            std::string &s = *sinks[i];
            if (s.size() < limit)
                s.append(buf, std::min((size_t)n, limit - s.size()));
        }
    }
    for (auto &f : fds)
        if (f.fd >= 0)
            close(f.fd);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR)
            return -errno;
    }
    if (WIFEXITED(status))
        return WEXITSTATUS(status);
    return 128 + (WIFSIGNALED(status) ? WTERMSIG(status) : 0);
}
