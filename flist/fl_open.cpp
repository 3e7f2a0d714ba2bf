// Running a file by its type: a program or script with its run bit starts
// by itself; anything else goes to the desktop's opener, xdg-open.
#include "flist/flist.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Starts `argv` in its own session with `dir` as its working directory and
// does not wait for it: 0, or the errno value of the start.
int start_detached(const std::vector<std::string> &argv, const std::string &dir)
{
    int pfd[2];
    if (pipe2(pfd, O_CLOEXEC) != 0)
        return errno;
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
        signal(SIGPIPE, SIG_DFL);
        std::vector<char *> av;
        for (const std::string &a : argv)
            av.push_back(const_cast<char *>(a.c_str()));
        av.push_back(nullptr);
        execvp(av[0], av.data());
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

// The system's words for an error, line ends, blanks and a final dot cut.
std::string reason(int err)
{
    std::string r = strerror(err);
    while (!r.empty() && std::strchr("\r\n .", r.back()))
        r.pop_back();
    return r.substr(0, 240);
}

} // namespace

int fl_run_file(const std::string &path, bool open_action)
{
    struct stat sb;
    if (stat(path.c_str(), &sb) != 0) {
        fl_say(".... Cannot run it: " + reason(errno));
        return 1;
    }
    std::vector<std::string> argv;
    if (S_ISREG(sb.st_mode) && (sb.st_mode & 0111) && access(path.c_str(), X_OK) == 0)
        argv = {path};
    else if (open_action)
        argv = {"xdg-open", path};
    else {
        fl_say(".... Do not know how to run this file");
        return 1;
    }
    if (int err = start_detached(argv, fl_dirname(path))) {
        fl_say(".... Cannot run it: " + reason(err));
        return 1;
    }
    return 0;
}
