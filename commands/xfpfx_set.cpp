// The prefix area's settings: PREfix (side, nulls, off, prefix synonyms)
// for the current file and PREFIX_Screen for the view's default.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "session/xed.h"

#include <algorithm>
#include <cctype>

namespace {

std::string upper(std::string_view s)
{
    std::string u(s);
    for (auto &c : u)
        c = (char)std::toupper((unsigned char)c);
    return u;
}

int bad()
{
    xfmsg(16, 1);
    cmd_rc = 1;
    return 1;
}

// PREfix SYNONYM new macro | SYNONYM name | SYNONYM *
int synonym(std::string_view rest)
{
    std::string name = upper(xfword(rest));
    std::string_view macro = xfword(rest);
    if (name.empty() || !xftrim(rest).empty())
        return bad();
    if (!macro.empty()) {
        for (auto &s : pfx_synonyms)
            if (s.first == name) {
                s.second = std::string(macro);
                return 1;
            }
        pfx_synonyms.emplace_back(name, std::string(macro));
        return 1;
    }
    bool any = false;
    for (auto &s : pfx_synonyms)
        if (name == "*" || s.first == name) {
            xfmsgs(s.first + " = " + s.second, 0);
            any = true;
        }
    if (!any && name != "*")
        xfmsgs(name, 0);
    return 1;
}

// ON|OFf|NULls [Left|Right] on one file's (or the default's) setting.
int set(xfviewfile &pf, std::string_view rest)
{
    std::string a = xffold(xfword(rest)), b = xffold(xfword(rest));
    if (a.empty()) {
        xfmsg(pf.prefix == 0 ? 10 : pf.prefix == 2 ? 92 : 91, 0);
        return 1;
    }
    if (!xftrim(rest).empty())
        return bad();
    int side = pf.prefix_side;
    if (abbrev(b, "left", 1) && !b.empty())
        side = 1;
    else if (abbrev(b, "right", 1) && !b.empty())
        side = 2;
    else if (!b.empty())
        return bad();
    if (a == "on" || abbrev(a, "nulls", 3)) {
        pf.prefix = side;
        pf.prefix_nulls = a != "on";
    } else if (abbrev(a, "off", 2)) {
        pf.prefix = 0;
    } else {
        return bad();
    }
    pf.prefix_side = side;
    return 1;
}

} // namespace

int xfcm_prefix(const xfcmd &c)
{
    xftrace("Commande xfcm_prefix");
    std::string_view rest = c.ops();
    std::string_view r2 = rest;
    if (abbrev(xfword(r2), "synonym", 3))
        return synonym(r2);
    return set(xf ? xv->perfile[(size_t)xfidx] : xv->screen, rest);
}

int xfcm_prefix_screen(const xfcmd &c)
{
    xftrace("Commande xfcm_prefix_screen");
    return set(xv->screen, c.ops());
}
