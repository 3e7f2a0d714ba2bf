// The shell commands: SHEll (WIndows) on the terminal or in the background,
// the XSHell family whose output fills a file of the ring, XSHOwhistory,
// CLOSEConsole, and the operating-system end of the dispatcher (IMPcmscp).
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "commands/xfsettings.h"
#include "fields/fields.h"
#include "fields/plat.h"
#include "platform/platform.h"
#include "session/xed.h"
#include "tools/tools.h"

#include <cstdio>

namespace {

// A command waits for its shell window's end where the caller needs the
// output: a batch run prints it, and a macro reads the file after.
bool must_wait() { return batch || macro_depth > 0; }

std::string source_name() { return xf ? xf->fname : std::string(); }

// The operand with its trailing blanks cut.
std::string operand(const xfcmd &c)
{
    std::string s(c.ops());
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t'))
        s.pop_back();
    return s;
}

// A command ending in a lone '&' runs in the background.
bool strip_amp(std::string &cmd)
{
    if (cmd.empty() || cmd.back() != '&' || (cmd.size() > 1 && cmd[cmd.size() - 2] == '&'))
        return false;
    cmd.pop_back();
    while (!cmd.empty() && (cmd.back() == ' ' || cmd.back() == '\t'))
        cmd.pop_back();
    return true;
}

// Starts the command detached from the editor: its output goes nowhere,
// since it would land on the page at any moment.
int background(const std::string &cmd)
{
    pl_child c;
    return pl_run_wait(pl_shell_argv(pl_shell_background(cmd)), 0, nullptr, c);
}

} // namespace

void xfimpcmscp_run(std::string_view line, int ctx1, int ctx2)
{
    if (impcmscp == 2 && !batch) {
        bool wait = must_wait();
        tl_xshell(std::string(line), source_name(), "xshell", wait);
        if (wait && xf)
            curline() = 0;
        cmd_rc = 0;
        return;
    }
    const cmd_entry *sh = cmd_lookup("shell");
    xfcall(sh, sh->fn, "shell " + std::string(line), ctx1, ctx2);
    cmd_rc = 0;
}

int xfcm_shell(const xfcmd &c)
{
    xftrace("Commande xfcm_shell");
    std::string cmd = operand(c);
    if (cmd.empty())
        return xfbad();
    // In batch the shell itself puts a command with '&' in the background.
    std::string bare = cmd;
    bool amp = strip_amp(bare);
    int status = 0, e = 0;
    if (amp && !batch) {
        e = background(bare);
    } else {
        if (fs_plat *l = batch ? nullptr : fs_layer())
            l->pointer(2);
        e = tl_foreground(cmd, true, status);
        if (fs_plat *l = batch ? nullptr : fs_layer())
            l->pointer(1);
    }
    if (e != 0) {
        xfmsg(44, 1);
        cmd_rc = 1;
        return 1;
    }
    if (amp) {
        cmd_rc = 0;
        return 1;
    }
    if (status < 0) {
        xfmsg(44, 1); // killed by a signal
        cmd_rc = 1;
        return 1;
    }
    xfmsg(43, 0);
    if (status != 0) {
        char buf[40];
        std::snprintf(buf, sizeof buf, "%d", status);
        xfmsgs("Warning: command \"" + cmd + "\" exited with return " + buf, 0);
    }
    cmd_rc = status;
    return 1;
}

int xfcm_xshell(const xfcmd &c)
{
    xftrace("Commande xfcm_xshell");
    std::string cmd = operand(c);
    if (cmd.empty())
        return xfbad();
    bool wait = must_wait();
    cmd_rc = 0;
    if (tl_xshell(cmd, source_name(), "xshell", wait) != 0)
        return 1;
    if (wait && xf)
        curline() = 0;
    return 1;
}

int xfcm_xshowhistory(const xfcmd &)
{
    xftrace("Commande xfcm_xshowhistory");
    std::vector<std::string> lines;
    std::string h;
    for (size_t back = 0; xfhist_get(back, h); back++)
        lines.insert(lines.begin(), h);
    tl_show_lines(source_name(), "history", lines);
    cmd_rc = 0;
    return 1;
}

int xfcm_closeconsole(const xfcmd &)
{
    xftrace("Commande xfcm_closeconsole");
    tl_close_all();
    cmd_rc = 0;
    return 1;
}
