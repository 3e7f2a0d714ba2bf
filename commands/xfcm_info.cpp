// Messages and the command line: MSG and EMSG, CMSG and DELAY, PRompt, QID,
// PWD, REFRESH, DEFINE, the remembered commands (=, ?, HIStory, SET =), the
// service words of SYSCMD, and the handler of commands still to be built.
#include "commands/commands.h"
#include "commands/xfsettings.h"
#include "tools/tools.h"
#include "fields/dialogs/dialogs.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "session/xed.h"

#include <climits>
#include <cstdlib>
#include <unistd.h>

namespace {

std::vector<std::string> history; // oldest first
size_t history_max = 10;          // HIStory size, 0 off
long history_pos = -1;            // where ? stands, -1 at rest

// A special form looks at the line itself: it is its own when it begins so.
bool starts(std::string_view line, std::string_view with)
{
    return line.substr(0, with.size()) == with;
}

void put_cmdline(std::string_view text)
{
    if (!xv)
        return;
    xv->cmdline.assign(text);
    xv->cmdcursor = (int)text.size();
}

} // namespace

void xfhist_add(std::string_view line)
{
    std::string_view t = xftrim(line);
    if (history_max == 0 || t.empty() || t.front() == '=')
        return;
    if (!history.empty() && history.back() == line)
        return;
    history.emplace_back(line);
    if (history.size() > history_max)
        history.erase(history.begin());
    history_pos = -1;
    if (xfset_text("SHOWHistory") == "ON")
        tl_history_follow(std::string(line));
}

bool xfhist_get(size_t back, std::string &out)
{
    if (back >= history.size())
        return false;
    out = history[history.size() - 1 - back];
    return true;
}

int xfcm_notimpl(const xfcmd &c)
{
    xftrace("Commande notimpl");
    (void)c;
    xfmsg(164, 1);
    cmd_rc = 1;
    return 1;
}

int xfcm_msg(const xfcmd &c)
{
    xftrace("Commande xfcm_msg");
    std::string_view text = c.ops();
    // EMSG and MSG share this handler: the entry tells them apart.
    int level = c.ent && c.ent->name[0] == 'E' ? 1 : 0;
    if (text.empty() && level == 0) {
        if (xv)
            xv->msgs.clear();
        if (xf)
            xf->pmsgs.clear();
        return 1;
    }
    xfmsgs(text, level);
    return 1;
}

int xfcm_cmsg(const xfcmd &c)
{
    xftrace("Commande xfcm_cmsg");
    // The text stands behind the word as typed, blanks included.
    std::string_view t = c.norm.substr(std::min(c.norm.size(), (size_t)c.typed));
    if (!t.empty() && t.front() == ' ')
        t.remove_prefix(1);
    put_cmdline(t);
    return 1;
}

int xfcm_prompt(const xfcmd &c)
{
    xftrace("Commande xfcm_prompt");
    std::string_view t = c.ops();
    std::vector<std::string> parts;
    while (true) {
        size_t p = t.find("\\n");
        if (parts.size() == 4) {
            xfmsg(90, 1);
            cmd_rc = 1;
            return 1;
        }
        parts.emplace_back(t.substr(0, p));
        if (p == std::string_view::npos)
            break;
        t.remove_prefix(p + 2);
    }
    no_redisplay = 1;
    // Continue answers yes; Cancel, a closed box or no screen to ask on, no.
    cmd_rc = !batch && asf_alert(1, parts) == 1 ? 0 : 1;
    return 1;
}

int xfcm_qid(const xfcmd &c)
{
    xftrace("Commande xfcm_qid");
    (void)c;
    xfmsgs("..... VORTA 0.1 for Linux", 0);
    return 1;
}

int xfcm_pwd(const xfcmd &c)
{
    xftrace("Commande xfcm_pwd");
    (void)c;
    char buf[PATH_MAX];
    if (!getcwd(buf, sizeof buf)) {
        xfmsg(13, 1);
        cmd_rc = 1;
        return 1;
    }
    xfmsgs(buf, 0);
    return 1;
}

int xfcm_refresh(const xfcmd &c)
{
    xftrace("Commande xfcm_refresh");
    (void)c;
    return 1;
}

int xfcm_define(const xfcmd &c)
{
    xftrace("Commande xfcm_define");
    (void)c;
    return 1;
}

// "=": run the text behind it, then the last remembered command again.
int xfcm_equal(const xfcmd &c)
{
    if (!starts(c.line, "="))
        return 0;
    xftrace("Commande =");
    std::string_view rest = xftrim(c.line.substr(1));
    if (!rest.empty()) {
        xfcmdline(rest, c.ctx1, c.ctx2);
        if (cmd_rc != 0)
            return 1;
    }
    if (history.empty()) {
        xfmsg(180, 1);
        cmd_rc = 1;
        return 1;
    }
    std::string last = history.back();
    xfcmdline(last, c.ctx1, c.ctx2);
    return 1;
}

// SET = text: remember without running.
int xfcm_set_equal(const xfcmd &c)
{
    xftrace("Commande SET =");
    std::string_view t = c.line;
    t = xftrim(t.substr(std::min(t.size(), t.find('=') + 1)));
    xfhist_add(t);
    return 1;
}

// "?" steps back through the remembered commands, "?i" forward, wrapping.
int xfcm_qmark(const xfcmd &c)
{
    if (!starts(c.line, "?"))
        return 0;
    xftrace("Commande ?");
    if (history.empty()) {
        xfmsg(180, 1);
        cmd_rc = 1;
        return 1;
    }
    long n = (long)history.size();
    bool fwd = c.lline.size() > 1 && c.lline[1] == 'i';
    if (history_pos < 0)
        history_pos = fwd ? 0 : n - 1;
    else
        history_pos = fwd ? (history_pos + 1) % n : (history_pos + n - 1) % n;
    put_cmdline(history[(size_t)history_pos]);
    no_redisplay = 1;
    return 1;
}

int xfcm_history(const xfcmd &c)
{
    xftrace("Commande xfcm_history");
    std::string_view rest = c.ops();
    if (rest.empty()) {
        xfmsgs("..... Is " + std::to_string(history_max), 0);
        return 1;
    }
    long n;
    if (!xfnumber(rest, n)) {
        xfmsg(16, 1);
        cmd_rc = 1;
        return 1;
    }
    history_max = (size_t)n;
    if (history.size() > history_max)
        history.erase(history.begin(), history.end() - (long)history_max);
    history_pos = -1;
    return 1;
}

// The maintainers' service words: "check" runs the store check, "debug"
// traces dispatches, "halt" writes the trace and ends at once.
bool xfsyscmd_word(std::string_view line)
{
    std::string w = xffold(xftrim(line));
    if (w == "check") {
        xfcm_check();
        return true;
    }
    if (w == "debug") {
        debug_cmds = 2;
        return true;
    }
    if (w == "halt") {
        xftrace_dump();
        std::abort();
    }
    if (w == "intter" || w == "intiot" || w == "dump" || w == "malloc" || w == "bcd" ||
        w == "startd") {
        xftrace_dump();
        return true;
    }
    return false;
}

int xfcm_syscmd(const xfcmd &c)
{
    xftrace("Commande xfcm_syscmd");
    int on = debug_cmds ? 1 : 0;
    int r = xfonoff(c, on);
    debug_cmds = on;
    return r;
}

