// The colour settings: the colour and hilite of each item of the page, the
// palette behind the colour names, their listing, and setcols.vorta, the
// macro that sets them all again.
#include "session/xfcolours.h"
#include "session/xflistpage.h"
#include "session/xfpage.h"

#include "fields/fields.h"
#include "syntax/syn.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace {

constexpr const char *COLOURS_FILE = "setcols.vorta";
constexpr uint32_t COLOURS_PAGE = 0x636f6c73; // a page number of its own
constexpr int NAME_CUT = 118;                  // longest name a line holds

// The words of the hilites a colour line may end with.
struct hilite_word {
    const char *name;
    int value;
};
constexpr hilite_word hilites[] = {
    {"NORmal", 0}, {"REVerse", 2}, {"REVUnderline", 3}, {"UNDerline", 4},
};

// A name shortened to at least its leading capitals, digits and `_`.
bool fits(std::string_view w, const char *name)
{
    size_t least = 0, len = 0;
    while (name[least] && (std::isupper((unsigned char)name[least]) ||
                           std::isdigit((unsigned char)name[least]) || name[least] == '_'))
        least++;
    while (name[len])
        len++;
    if (w.size() < least || w.size() > len || w.empty())
        return false;
    for (size_t k = 0; k < w.size(); k++)
        if (std::tolower((unsigned char)w[k]) != std::tolower((unsigned char)name[k]))
            return false;
    return true;
}

std::string upper(std::string s)
{
    for (char &ch : s)
        ch = (char)std::toupper((unsigned char)ch);
    return s;
}

// The name of a colour as the listing writes it: upper case, or the number
// for a colour without a name.
std::string colour_word(int colour)
{
    const char *n = syn_colour_name(colour);
    return *n ? upper(n) : std::to_string(colour);
}

// Palette entries in listing order, with the words that name them.
struct entry {
    std::string name;
    int index;
};
std::vector<entry> palette_entries()
{
    std::vector<entry> out;
    for (int c = 1; c <= 64; c++)
        if (*syn_colour_name(c))
            out.push_back({upper(syn_colour_name(c)), c});
    out.push_back({"BACKGROUND", XFCOLOUR_BACKGROUND});
    out.push_back({"FOREGROUND", XFCOLOUR_FOREGROUND});
    return out;
}

std::vector<std::string> listing(bool screen)
{
    std::vector<entry> pal = palette_entries();
    size_t width = 0;
    for (int i = 0; colour_items[i].name[0]; i++)
        width = std::max(width, std::string(colour_items[i].name).size());
    for (const entry &e : pal)
        width = std::max(width, e.name.size());
    width = std::min(width, (size_t)NAME_CUT);
    auto head = [width](std::string name) {
        name = upper(name).substr(0, NAME_CUT);
        name.resize(std::max(width, name.size()), ' ');
        return "color " + name + "  ";
    };
    std::vector<std::string> out{"color on"};
    for (int i = 0; colour_items[i].name[0]; i++) {
        std::string line = head(colour_items[i].name) + colour_word(colour_items[i].colour);
        for (const hilite_word &h : hilites)
            if (h.value == colour_items[i].hilite && h.value != 0)
                line += std::string(" ") + upper(h.name);
        out.push_back(line);
    }
    char buf[48];
    for (const entry &e : pal) {
        int r, g, b;
        asqmap(e.index, &r, &g, &b);
        snprintf(buf, sizeof buf, screen ? "%3d  %3d  %3d" : "%d %d %d", r, g, b);
        out.push_back(head(e.name) + buf);
    }
    return out;
}

} // namespace

int xfcolour_item_find(std::string_view w)
{
    for (int i = 0; colour_items[i].name[0]; i++)
        if (fits(w, colour_items[i].name))
            return i;
    return -1;
}

int xfcolour_entry_find(std::string_view w)
{
    if (fits(w, "BACKGround"))
        return XFCOLOUR_BACKGROUND;
    if (fits(w, "FOREGround"))
        return XFCOLOUR_FOREGROUND;
    return syn_colour(w) > 0 ? syn_colour(w) : -1;
}

int xfhilite_find(std::string_view w)
{
    for (const hilite_word &h : hilites)
        if (fits(w, h.name))
            return h.value;
    return -1;
}

std::string xfcolour_item_text(int item)
{
    std::string s = upper(colour_items[item].name) + " " + colour_word(colour_items[item].colour);
    for (const hilite_word &h : hilites)
        if (h.value == colour_items[item].hilite && h.value != 0)
            s += std::string(" ") + upper(h.name);
    return s;
}

std::vector<std::string> xfcolours_list(bool screen) { return listing(screen); }

int xfcolours_write(const std::string &path)
{
    return xflist_write(path, "Colours: call this macro to set them again", listing(false));
}

int xfshow_colours()
{
    return xflist_show(listing(true), COLOURS_PAGE, [] { return xfcolours_write(COLOURS_FILE); });
}
