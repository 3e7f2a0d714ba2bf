// SYNTax: colouring on or off, for all files or the current one, and the
// rule file that says how.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "session/xed.h"

#include <sys/stat.h>

namespace {

// A rule file named without a folder is also looked for where the user's and
// the shipped rules live.
std::string rule_path(const std::string &name)
{
    struct stat st;
    if (name.find('/') != std::string::npos || stat(name.c_str(), &st) == 0)
        return name;
    for (const std::string &dir : {xfuser_data(), installdir + "share/vorta/", installdir + "../share/vorta/"})
        if (stat((dir + name).c_str(), &st) == 0)
            return dir + name;
    return name;
}

} // namespace

int xfcm_syntax(const xfcmd &c)
{
    xftrace("Commande xfcm_syntax");
    std::string_view rest = c.ops();
    std::string_view w = xfword(rest);
    if (w.empty()) {
        std::string m = syntax_global ? "..... Is GON" : "..... Is GOFF";
        if (xf)
            m += xf->synstale != 0 ? " ON" : " OFF";
        xfmsgs(m, 0);
        return 1;
    }
    std::string f = xffold(w);
    if (f == "gon" || f == "goff") {
        syntax_global = f == "gon";
        return 1;
    }
    if (f == "on" || f == "off") {
        if (!xf) {
            xfmsg(16, 1);
            cmd_rc = 1;
            return 1;
        }
        xf->syn.reset();
        xf->synstale = f == "on" ? -1 : 0;
        return 1;
    }
    std::string name = rule_path(std::string(xftrim(c.ops())));
    std::string err;
    int line = 0;
    if (xfsyn_load(name, err, line) != 0) {
        xfmsgs(err, 1);
        cmd_rc = 1;
        // The user goes straight to what is wrong.
        if (line > 0) {
            xfcmdline("xed \"" + name + "\"");
            xfcmdline(":" + std::to_string(line));
        }
    }
    return 1;
}
