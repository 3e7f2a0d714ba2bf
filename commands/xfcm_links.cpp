// Links to outside programming environments: the source-level debugger's
// daemon, the CenterLine message server and the workbench's edit server.
// None of those environments exists on this system, so every command of the
// family says plainly which session is missing and starts nothing.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "session/xed.h"

namespace {

int no_session(const char *label, int message)
{
    xftrace(label);
    xfmsg(message, 1);
    cmd_rc = 1;
    return 1;
}

} // namespace

int xfcm_saber(const xfcmd &)
{
    return no_session("Commande xfcm_saber", 113);
}

int xfcm_clms(const xfcmd &)
{
    return no_session("Commande xfcm_clms", 132);
}

int xfcm_wb(const xfcmd &)
{
    return no_session("Commande xfcm_wb", 138);
}
