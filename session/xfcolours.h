// The colour settings of the page: each item's colour and hilite, and the
// palette entries behind the colour names.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// The palette entries that have no colour name: the page's ground colours.
// The text colour shares its entry with the last name of the table, which
// is the colour a field without one is drawn in.
constexpr int XFCOLOUR_BACKGROUND = 0;
constexpr int XFCOLOUR_FOREGROUND = 64;

int xfcolour_item_find(std::string_view w);  // index in colour_items, or -1
int xfcolour_entry_find(std::string_view w); // palette entry of a colour name or ground, or -1
int xfhilite_find(std::string_view w);       // hilite value of a word, or -1
std::string xfcolour_item_text(int item);    // "NAME COLOUR [HILITE]"

// "color on", each item with its colour, then each palette entry with red,
// green and blue: "%3d  %3d  %3d" on the screen, "%d %d %d" in the file.
std::vector<std::string> xfcolours_list(bool screen);
int xfcolours_write(const std::string &path); // 0, or 1 when not written
// The listing on its own page; 1 when the window was resized meanwhile.
int xfshow_colours();
