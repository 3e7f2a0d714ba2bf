// What the files of the dialog boxes share and nobody else needs.
#pragma once
#include "fields/dialogs/dialogs.h"

dy_box *dy_find(int h);         // the box, or null, quietly
std::vector<int> dy_handles();  // the open boxes, oldest first
// The corner and size in cells of a mapped box, kept inside the grid.
void dy_place(dy_box &b, int &col, int &line, int &cols, int &lines);
// The box changed: its page, when shown, is drawn again.
void dy_view_changed(dy_box &b);
// The box goes: its callback and its pending events with it.
void dy_forget(int h);

// The pieces of s between the separators.
std::vector<std::string> dy_split(const std::string &s, char sep);
// The columns and lines an item covers, from the box's corner.
void dy_extent(const dy_item &it, int &right, int &bottom);
