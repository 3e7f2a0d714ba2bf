// The editor's page and read cycle, shared by the session's files and the
// commands that change the page.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct xfcolour_item {
    const char *name; // keyword of SET COLOR
    int colour;       // logical colour
    int hilite;       // field hilite
};
extern xfcolour_item colour_items[38]; // the last has an empty name

// SCReen's division of the grid, re-applied at each resize.
struct xfscreendef {
    int kind = 0;          // 0 n stacked, 1 n side by side, 2 heights, 3 widths, 4 rectangles
    std::vector<int> a;    // counts, sizes or rectangles (row col rows cols ...)
};

extern int page_rows, page_cols; // the grid
extern bool pageok;              // the grid has room for a page
extern int nbpf;                 // rows of the key legend
extern std::string pf_legend;    // its text
extern xfscreendef screen_def;   // the current division

int xfprefix_width(int32_t curline);
std::string xfshadow_row(int32_t count, int width);
std::string xftitle();
std::string xfscale_text(int32_t col0, int width);
std::string xftab_text(const std::vector<int32_t> &tabs, int32_t col0, int width);
bool xfgeom(bool first);
void xfdisplay();
// Makes the views of a division; 0, or 1 with its message when a view does
// not fit (the old division then stays). `check_only` tests without applying.
int xfscreen_apply(const xfscreendef &d, bool check_only);

// A macro's READ: what the next read is to report instead of (or beside)
// taking it in, and what it found.
struct xfread_item {
    const char *tag;  // "FIL" a file line, "PRF" a prefix area, "CMD" the command line
    int row, col;     // where the field stands on the screen, from 1
    int32_t li;       // the line it belongs to (the current line for CMD)
    std::string text; // the line as typed, the prefix entry, the command
};
struct xfread_req {
    bool all = false;    // file lines and prefix entries too, not only the command line
    bool commit = true;  // typed lines go into the file
    std::vector<xfread_item> items; // in the order of the screen once the read is over
};
extern xfread_req *read_req; // set while a macro's READ waits, else null

// The read cycle.
bool xfnext_queued(std::string &out); // the oldest queued, else stacked, command
void xfack_commit();  // what was typed on the page goes into the files now
void xfread(int toplevel);
void xfx();
// The same turns, until `done` answers true before one.
void xfx_until(bool (*done)());
extern int aid;        // why the last read ended (asread's code)
extern int aid_value;  // its value
