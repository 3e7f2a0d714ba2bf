// What the editor does with the window's own input: menu choices run their
// command, tool bar buttons run the command of their position, the scroll bar
// moves the current line; and, at start, the shipped menu and the tool bar.
#include "session/xed.h"
#include "commands/commands.h"
#include "fields/fields.h"
#include "fields/plat.h"
#include "flist/flist.h"

#include <sys/stat.h>

namespace {

// The commands behind the tool bar's buttons, in position order. An empty
// command is the New button, which needs a name made for it.
constexpr const char *toolcmds[] = {
    "QUIT",        "",           "dy_open //last", "SAVE",       "FILE",     "S_CUt",
    "S_COpy",      "S_Paste",    "S_Paste o",   "S_Upper",    "S_Lower",  "S_LShift",
    "S_RShift",    "PRINTScreen", "UNDo",       "REDo",       "CMSG FINd ", "CMSG FUp ",
};
static_assert(sizeof toolcmds / sizeof toolcmds[0] == 18, "a command for each of 18 buttons");

bool exists(const std::string &path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0;
}

// "NewFile" and the first number free in the present file's directory.
std::string newfile()
{
    std::string dir;
    if (xf) {
        size_t s = xf->fname.rfind('/');
        if (s != std::string::npos)
            dir = xf->fname.substr(0, s + 1);
    }
    for (int n = 0;; n++) {
        std::string name = dir + "NewFile" + std::to_string(n);
        if (!exists(name))
            return name;
    }
}

} // namespace

std::string xfwin_command(int code, int value)
{
    if (code == 63 || code == 31) {
        const char *c = fs_menucmd(value);
        if (!c)
            return "";
        // The list's own actions share the menus; in the editor they would
        // be taken for other commands (a sort of the file, say).
        if (std::string no = fl_menu_refusal(c); !no.empty()) {
            xfmsgs(no, 1);
            return "";
        }
        return c;
    }
    if (code == 64 && value >= 0 && value < 18) {
        if (!*toolcmds[value])
            return "XEDit \"" + newfile() + "\"";
        return toolcmds[value];
    }
    return "";
}

void xfwin_start()
{
    fs_plat *l = fs_layer();
    if (!l || l->toolbar(1) != 1) // only a window has a tool bar
        return;
    // The user's menu file first, else the one shipped with the program.
    const std::string tries[] = {xfuser_data() + "default.menu", installdir + "share/vorta/default.menu",
                                 installdir + "../share/vorta/default.menu"};
    for (const std::string &t : tries) {
        if (!exists(t))
            continue;
        std::vector<std::string> errors;
        std::unique_ptr<fs_menu> m = fs_menuread(t, xhome, errors);
        for (const std::string &e : errors)
            xfmsgs(e, 1);
        if (m)
            fs_menuset(0, std::move(m));
        return;
    }
}
