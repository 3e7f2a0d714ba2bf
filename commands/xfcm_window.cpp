// The window's own commands: MENu and MENUBar (menus from files), TOolbar
// and FONt. In a run with no window they are accepted and do nothing.
#include "commands/handlers.h"
#include "commands/xfsettings.h"
#include "commands/internal.h"
#include "fields/fields.h"
#include "fields/plat.h"
#include "session/xed.h"

namespace {

// Reads a menu file into the bar (0) or the page's pop-up (1); "off" removes.
int menucmd(const xfcmd &c, int which)
{
    std::string name(xftrim(c.ops()));
    if (name.empty()) {
        xfmsg(16, 1);
        cmd_rc = 5;
        return 1;
    }
    if (!fs_layer())
        return 1;
    if (xffold(name) == "off") {
        fs_menuset(which, nullptr);
        return 1;
    }
    std::vector<std::string> errors;
    std::unique_ptr<fs_menu> m = fs_menuread(name, xhome, errors);
    for (const std::string &e : errors)
        xfmsgs(e, 1);
    if (!m) { // the present menu stays
        cmd_rc = 1;
        return 1;
    }
    if (!errors.empty()) {
        xfmsg(47, 1);
        cmd_rc = 1;
    }
    fs_menuset(which, std::move(m));
    return 1;
}

} // namespace

int xfcm_menu(const xfcmd &c)
{
    xftrace("Commande xfcm_menu");
    return menucmd(c, 1);
}

int xfcm_menubar(const xfcmd &c)
{
    xftrace("Commande xfcm_menubar");
    return menucmd(c, 0);
}

int xfcm_toolbar(const xfcmd &c)
{
    xftrace("Commande xfcm_toolbar");
    fs_plat *l = fs_layer();
    int on = l ? l->toolbar(-1) : 0;
    std::string w = xffold(xftrim(c.ops()));
    if (w.empty())
        return xfreport_onoff(on);
    int want = w == "switch" ? !on : xfonoff_word(w);
    if (want < 0)
        return xfbad();
    if (l && want != on)
        l->toolbar(want);
    return 1;
}

namespace {
std::string font_set; // the text font FONt set last, "" none yet
} // namespace

const std::string &xffont_now() { return font_set; }

const char *const XF_TERMINAL_FONT =
    "..... The terminal shows its own font: change it in the terminal's settings";

int xfcm_font(const xfcmd &c)
{
    xftrace("Commande xfcm_font");
    std::string name(xftrim(c.ops()));
    if (!fs_layer())
        return 1;
    if (name.empty()) {
        xfmsg(16, 1);
        cmd_rc = 5;
        return 1;
    }
    if (asffont(name.c_str()) != 0) {
        xfmsgs("Invalid font\n" + name, 1);
        cmd_rc = 1;
    } else {
        font_set = name;
    }
    return 1;
}
