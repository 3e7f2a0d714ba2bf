// Requests from outside to end the process. The handler does as little as a
// handler may: it notes the signal, wakes whoever polls the pipe, and calls
// the one hook (which asks a running macro to halt). What the request leads
// to, the rescue of changed files, runs later at a safe point.
#include "platform/platform.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

volatile sig_atomic_t noted = 0; // the signal that came, 0 none
int wake[2] = {-1, -1};          // the handler writes a byte here
void (*hook)() = nullptr;        // called from the handler

void on_end(int sig)
{
    int e = errno;
    if (!noted)
        noted = sig;
    if (wake[1] >= 0)
        (void)!write(wake[1], "e", 1);
    if (hook)
        hook();
    errno = e;
}

// Caught rather than ignored: a write then fails with its error, and a
// program we start gets the usual default back at its exec.
void on_write_fault(int) {}

} // namespace

void pl_endsig_install(void (*onsignal)())
{
    hook = onsignal;
    if (wake[0] < 0 && pipe2(wake, O_NONBLOCK | O_CLOEXEC) != 0)
        wake[0] = wake[1] = -1;
    struct sigaction sa{};
    sa.sa_handler = on_end;
    sigemptyset(&sa.sa_mask);
    // No SA_RESTART: a wait for a child or a blocking read returns, so the
    // request is seen at once.
    sa.sa_flags = 0;
    for (int s : {SIGHUP, SIGTERM, SIGINT, SIGQUIT, SIGUSR1, SIGUSR2})
        sigaction(s, &sa, nullptr);
    sa.sa_handler = on_write_fault;
    sigaction(SIGXFSZ, &sa, nullptr);
    sigaction(SIGPIPE, &sa, nullptr);
}

int pl_endsig() { return noted; }

int pl_endsig_fd() { return wake[0]; }
