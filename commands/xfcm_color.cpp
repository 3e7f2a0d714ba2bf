// COLor: the colours of the page. `color` alone lists every setting on a
// page of its own (F2 writes setcols.vorta); `color on|off` switches colours;
// `color ITEM colour [hilite]` colours an item of the page and `color ITEM`
// tells its colour; `color NAME r g b` (BACKGROUND and FOREGROUND too) sets
// what a colour name looks like.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "fields/fields.h"
#include "session/xed.h"
#include "session/xfcolours.h"
#include "session/xfpage.h"
#include "syntax/syn.h"

#include <cstdlib>

namespace {

int refuse(int msg)
{
    xfmsg(msg, 1);
    cmd_rc = 1;
    return 1;
}

// A colour as a name or as its number.
int colour_value(std::string_view w)
{
    int c = syn_colour(w);
    if (c > 0)
        return c;
    if (w.empty() || w.size() > 2 || w.find_first_not_of("0123456789") != std::string_view::npos)
        return -1;
    c = std::atoi(std::string(w).c_str());
    return c <= 64 ? c : -1;
}

// Red, green and blue, each 0 to 255, and nothing behind them.
bool rgb_values(std::string_view rest, int v[3])
{
    for (int k = 0; k < 3; k++) {
        std::string_view w = xfword(rest);
        if (w.empty() || w.size() > 3 || w.find_first_not_of("0123456789") != std::string_view::npos)
            return false;
        v[k] = std::atoi(std::string(w).c_str());
        if (v[k] > 255)
            return false;
    }
    return xftrim(rest).empty();
}

int list()
{
    if (batch) { // no page to show it on: the lines go to the messages
        for (const std::string &line : xfcolours_list(true))
            xfmsgs(line, 0);
        return 1;
    }
    if (xfshow_colours() == 1)
        xfgeom(false);
    return 1;
}

int item(int it, std::string_view rest)
{
    std::string_view w = xfword(rest);
    if (w.empty()) {
        xfmsgs("..... " + xfcolour_item_text(it), 0);
        return 1;
    }
    int c = colour_value(w);
    if (c < 0)
        return refuse(59);
    int hl = colour_items[it].hilite;
    std::string_view h = xfword(rest);
    if (!h.empty() && (hl = xfhilite_find(h)) < 0)
        return refuse(11);
    if (!xftrim(rest).empty())
        return refuse(16);
    colour_items[it].colour = c;
    colour_items[it].hilite = hl;
    return 1;
}

} // namespace

int xfcm_color(const xfcmd &c)
{
    xftrace("Commande xfcm_color");
    std::string_view rest = c.ops();
    std::string_view w = xfword(rest);
    if (w.empty())
        return list();
    std::string f = xffold(w);
    if ((f == "on" || f == "off") && xftrim(rest).empty()) {
        if (!batch)
            asfacol(f == "on");
        return 1;
    }
    int it = xfcolour_item_find(w);
    std::string_view probe = rest;
    int v[3];
    int entry = xfcolour_entry_find(w);
    if (entry >= 0 && (it < 0 || rgb_values(probe, v))) {
        if (!rgb_values(rest, v))
            return refuse(16);
        if (!batch)
            asfmap(entry, v[0], v[1], v[2]);
        return 1;
    }
    if (it < 0)
        return refuse(11);
    return item(it, rest);
}
