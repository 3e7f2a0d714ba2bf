// The crash report: on a fatal signal the ring of the last commands goes to
// xed.trace with nothing but write(2); the changed files are then kept as
// ".check" copies if that can still be done, and the signal takes its course.
#include "session/xed.h"

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

const char *const *xftrace_ring(int &first, int &count); // in xftrace.cpp

namespace {

char altstack[64 * 1024]; // the handler's own stack, for stack overflows

void put(int fd, const char *s)
{
    if (s)
        (void)!write(fd, s, std::strlen(s));
}

void on_fatal(int sig)
{
    int fd = open("xed.trace", O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW, 0600);
    if (fd >= 0) {
        int first, count;
        const char *const *ring = xftrace_ring(first, count);
        for (int k = 0; k < count; k++) {
            put(fd, ring[(first + k) % 500]);
            put(fd, "\n");
        }
        close(fd);
    }
    // The changed files as ".check" copies: a last chance that may find the
    // heap broken, so the alarm ends the attempt if it hangs.
    if (!recovering && xfnomem_hook) {
        alarm(3);
        xfnomem_hook(1);
    }
    signal(sig, SIG_DFL);
    raise(sig);
}

} // namespace

void xfcrash_install()
{
    stack_t ss{};
    ss.ss_sp = altstack;
    ss.ss_size = sizeof altstack;
    sigaltstack(&ss, nullptr);
    struct sigaction sa{};
    sa.sa_handler = on_fatal;
    sa.sa_flags = SA_ONSTACK | SA_RESETHAND;
    for (int sig : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT})
        sigaction(sig, &sa, nullptr);
}
