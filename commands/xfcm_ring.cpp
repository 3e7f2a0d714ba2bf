// Files in the ring: XEDit/EDIT to open or switch, SWitch and ISWitch to
// step through the ring, and the QUIT family to leave a file.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "session/xed.h"

namespace {

enum : unsigned {
    QUIT_ANYWAY = 1, // leave even when changed
    QUIT_ASK = 2,    // ask for confirmation (AQUIT)
    QUIT_EMPTY = 4,  // empty the macro stack afterwards
};

int quit(const xfcmd &c, unsigned how)
{
    std::string_view op = xftrim(c.ops());
    long code = 0;
    bool has_code = !op.empty();
    if (has_code && !xfnumber(op, code)) {
        xfmsg(16, 1);
        cmd_rc = 5;
        return 1;
    }
    if (!xf) {
        if (autoexit)
            xfexit(0);
        return 1;
    }
    // With no screen there is nobody to confirm: asking refuses as PQUIT does.
    if ((how & QUIT_ASK) && batch)
        how = (how & ~QUIT_ASK) | QUIT_EMPTY;
    if (xf->chgcount != 0 && !(how & QUIT_ANYWAY)) {
        xfmsg(174, 1);
        cmd_rc = 12;
        if (how & QUIT_EMPTY)
            macro_stack_cmds.clear();
        return 1;
    }
    xfdelfile();
    if (xv)
        xv->cmdline.clear();
    if (nbfiles() == 0) {
        if (autoexit)
            xfexit(0);
        cmd_rc = 1;
    }
    if (has_code)
        cmd_rc = (int)code;
    if (how & QUIT_EMPTY)
        macro_stack_cmds.clear();
    return 1;
}

void bind_other(int k)
{
    if (k == xfidx || k < 0)
        return;
    xv->cmdline.clear();
    xv->fileidx = k;
    xfsetfile(k);
    if (xfreload_hook)
        xfreload_hook();
}

} // namespace

int xfcm_quit(const xfcmd &c)
{
    xftrace("Commande xfcm_quit");
    return quit(c, QUIT_ANYWAY);
}

int xfcm_pquit(const xfcmd &c)
{
    xftrace("Commande xfcm_pquit");
    return quit(c, QUIT_EMPTY);
}

int xfcm_aquit(const xfcmd &c)
{
    xftrace("Commande xfcm_aquit");
    return quit(c, QUIT_ASK);
}

int xfcm_sw(const xfcmd &c)
{
    xftrace("Commande xfcm_sw");
    (void)c;
    if (xf)
        bind_other(xfprevfile());
    return 1;
}

int xfcm_iswitch(const xfcmd &c)
{
    xftrace("Commande xfcm_iswitch");
    (void)c;
    if (xf)
        bind_other(xfnextfile());
    return 1;
}

int xfcm_xedit(const xfcmd &c)
{
    xftrace("Commande xfcm_xedit");
    std::string_view op = xftrim(c.ops());
    if (op.size() >= 2 && op.front() == '"' && op.back() == '"')
        op = op.substr(1, op.size() - 2);
    if (op.empty())
        return 1;
    xfedit(std::string(op));
    return 1;
}
