// Macros in the editor: a .vorta macro runs in the interpreter, and the
// commands it issues come back to the dispatcher through the VORTA host
// environment, their return code becoming RC.
#include "commands/commands.h"
#include "commands/internal.h"
#include "rexx/run.h"
#include "session/xed.h"

namespace {

int vorta_env(const char *cmd, size_t len, void *, bool *)
{
    // The stack's buffers, EXECIO and GLOBALV work the same in a macro of
    // the editor as in a batch run.
    int rc;
    if (rx_local_command(cmd, len, rc))
        return rc;
    xfcmdline_given(std::string_view(cmd, len));
    return cmd_rc;
}

int run_macro(const std::string &path, std::string_view rest)
{
    std::string command = path + std::string(rest);
    return run_rx(command, nullptr, -1, xhome);
}

} // namespace

void xfrexx_init()
{
    rx_env_register("VORTA", vorta_env, nullptr, true);
    // A macro that exhausts memory ends the session the way any other
    // allocation does: the changed files are kept as ".check" copies.
    rx_nomem_hook = [](size_t size) { xfnomem(size, 0); };
    xfrexx_hook = run_macro;
}
