// The halt key: while a macro runs, the interpreter's poll looks at what the
// user has typed, and Ctrl+C or Ctrl+Break halts the macro (the HALT
// condition, which the macro may trap). A command the editor waits for in
// a shell window looks the same way and is stopped by it. Other keys typed
// meanwhile stay queued for after the macro.
#include "session/xed.h"
#include "fields/fields.h"
#include "fields/plat.h"
#include "rexx/run.h"

#include <chrono>

namespace {

struct halt_key {
    uint16_t code; // event code
    uint16_t mods; // modifier bits that must be down
};
constexpr halt_key halt_keys[] = {
    {'c', FSM_CTRL},
    {'C', FSM_CTRL},
    {FSK_PAUSE, FSM_CTRL},
};

bool is_halt(const fs_event &ev)
{
    for (const halt_key &k : halt_keys)
        if (ev.code == k.code && (ev.modifiers & k.mods) && !(ev.modifiers & FSM_ALT))
            return true;
    return false;
}

} // namespace

bool xfhalt_key()
{
    xfendsig_point();
    fs_plat *p = batch ? nullptr : fs_layer();
    if (!p)
        return false;
    // A look at the input costs a system call: a few times a second is
    // soon enough for a person and keeps a busy macro fast.
    using clock = std::chrono::steady_clock;
    static clock::time_point last;
    clock::time_point now = clock::now();
    if (now - last < std::chrono::milliseconds(50))
        return false;
    last = now;
    p->peek();
    return fs_evcut(is_halt) > 0;
}

void xfmacro_poll()
{
    if (xfhalt_key())
        rx_request_halt();
}
