// Files in the ring: XEDit/EDIT to open or switch, SWitch and ISWitch to
// step through the ring, and the QUIT family to leave a file.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "rexx/run.h"
#include "session/xed.h"
#include "session/xfpage.h"
#include "fields/fields.h"

#include <cstdio>
#include <unistd.h>

namespace {

enum : unsigned {
    QUIT_ANYWAY = 1, // leave even when changed
    QUIT_ASK = 2,    // ask for confirmation (AQUIT)
    QUIT_EMPTY = 4,  // empty the macro stack afterwards
};

// The name of the key that asread reported, for the confirmation.
std::string key_name(int code, int value)
{
    static const char *const prefixes[8] = {"", "S-", "C-", "M-", "S+C-", "S+M-", "C+M-", "S+C+M-"};
    int bank = code == 8 ? 0 : code == 1 ? 1 : code == 9 ? 2 : -1;
    if (bank < 0)
        return "ENTER";
    int n = as_nbkeys[bank] > 0 ? as_nbkeys[bank] : 1;
    int state = (value - 1) / n, k = (value - 1) % n + 1;
    char buf[32];
    std::snprintf(buf, sizeof buf, "%s%c%d", prefixes[state & 7], "LFR"[bank], k);
    return buf;
}

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
    if ((how & QUIT_ASK) && xf->chgcount != 0 && !batch && fs_layer()) {
        // A changed file is left only when the user says so: from a key by
        // pressing it again, from a macro or a menu in a box.
        bool yes = xfconfirm("to confirm quit",
                             {"The file " + xf->fname + " has been modified.",
                              "Quitting now will discard unsaved changes."});
        // The nested read may have changed the ring.
        if (!yes || !xf) {
            // A macro learns of the refusal; a key's is its own answer.
            if (cmd_source != 1 || rx_running())
                cmd_rc = 12;
            return 1;
        }
        how |= QUIT_ANYWAY;
    }
    // With nobody to confirm, asking refuses as PQUIT does.
    if (how & QUIT_ASK)
        how = (how & ~QUIT_ASK) | (batch ? (unsigned)QUIT_EMPTY : 0u);
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
        keep_rc_quiet = 1; // the empty ring is a normal state, not a failure
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

bool xfask(const std::string &question, bool onekey)
{
    if (batch || !fs_layer())
        return false;
    xfmsgs(question, 2);
    xfdisplay();
    asfonekey(onekey);
    xfread(0);
    asfonekey(0);
    return true;
}

bool xfconfirm_key(const std::string &what)
{
    if (cmd_source != 1)
        return false;
    int code = aid, value = aid_value;
    return xfask("..... " + key_name(code, value) + " " + what, false) && aid == code &&
           aid_value == value;
}

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
    if (op.empty())
        return 1;
    char buf[4096];
    xfopen_words(op, getcwd(buf, sizeof buf) ? std::string(buf) : startdir);
    return 1;
}
