// Signals from outside that would end the process (hang-up, terminate,
// interrupt, quit, the user signals, a terminal that went away) end it only
// after the rescue: every changed file kept as a ".check" copy. The handler
// asks a running macro to halt; the rescue itself runs at the next safe
// point: between two commands, every few clauses of a macro (even one that
// traps the halt), or in the screen's wait.
#include "session/xed.h"
#include "session/xfpage.h"
#include "fields/fields.h"
#include "fields/plat.h"
#include "platform/platform.h"
#include "rexx/run.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

bool rescued = false; // the rescue ran

void on_end() { rx_request_halt(); }

const char *signame(int sig)
{
    static constexpr struct {
        int sig;
        const char *name;
    } names[] = {{SIGHUP, "SIGHUP"}, {SIGTERM, "SIGTERM"}, {SIGINT, "SIGINT"},
                 {SIGQUIT, "SIGQUIT"}, {SIGUSR1, "SIGUSR1"}, {SIGUSR2, "SIGUSR2"}};
    for (auto &n : names)
        if (n.sig == sig)
            return n.name;
    return "a signal";
}

} // namespace

void xfendsig_install()
{
    pl_endsig_install(on_end);
    rx_poll_hook = xfmacro_poll;
}

void xfendsig_rescue()
{
    if (rescued)
        return;
    rescued = true;
    if (int sig = pl_endsig()) {
        char m[80];
        int n = std::snprintf(m, sizeof m, "VORTA: ended by %s\n", signame(sig));
        (void)!write(2, m, (size_t)n);
    }
    if (xv)
        xfack_commit(); // typed text is part of what is saved
    if (xfnomem_hook)
        xfnomem_hook(1);
}

void xfendsig_point()
{
    int sig = pl_endsig();
    if (!sig || recovering)
        return;
    // A terminal is given back first, and rescues through its own path.
    if (fs_plat *p = fs_layer())
        p->wait(0);
    xfendsig_rescue();
    std::fflush(stdout);
    xfsession_end();
    std::exit(128 + sig);
}
