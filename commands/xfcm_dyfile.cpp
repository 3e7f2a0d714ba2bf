// The boxes that ask for a file or a font: DY_Open (the tool bar's Open),
// DY_FOnt, and the names PDFCOpy, CREAte and REPlace ask for when none was
// typed.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "fields/dialogs/dialogs.h"
#include "fields/fields.h"
#include "fields/plat.h"
#include "session/xed.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <sys/stat.h>

namespace {

bool can_ask() { return !batch && fs_layer(); }

// The folder of the current file: where its neighbours are looked for.
std::string file_folder()
{
    if (!xf)
        return "";
    size_t s = xf->fname.rfind('/');
    return s == std::string::npos ? "" : xf->fname.substr(0, s ? s : 1);
}

// Where a file box starts: the folder asked for; "//last" before any box
// has ended, and nothing, stand for the current file's folder.
std::string start_of(std::string from)
{
    if (from.empty() || (from == "//last" && dy_lastfolder().empty()))
        return file_folder();
    return from;
}

// ---- the font box ---------------------------------------------------------------

// Cell sizes offered, in pixels, smallest first.
struct cell_size {
    int w, h;
};
constexpr cell_size sizes[] = {{6, 12}, {7, 14}, {8, 16}, {9, 18},
                               {10, 20}, {11, 23}, {12, 24}, {14, 28}};
constexpr const char *styles[] = {"Regular", "Bold", "Italic", "Bold Italic"};
// Families offered when the layer cannot list those installed.
constexpr const char *usual_families[] = {"Courier New", "DejaVu Sans Mono", "Liberation Mono",
                                          "Lucida Console", "monospace"};

enum : int { F_FAMILY = 1, F_SIZE = 2, F_STYLE = 3 };

std::vector<dy_item> font_box(const std::vector<std::string> &families, int family, int size,
                              int style, const std::string &complaint)
{
    int gl = 24, gc = 80;
    fs_grid(&gl, &gc);
    std::vector<dy_item> items;
    items.push_back(dy_text_item(DY_KLABEL, 1, 0, "Family:"));
    dy_item l = dy_text_item(DY_KSCL, 1, 0, "");
    l.lines = families;
    l.on.assign(families.size(), 0);
    l.on[(size_t)family] = 1;
    l.cursor = family;
    l.height = std::clamp(gl - 12, 3, 10);
    l.top = std::max(0, family - (int)l.height + 1);
    l.width = 32;
    items.push_back(l);
    int y = (int)l.height + 2;
    dy_item sz = dy_text_item(DY_KCH, 1, y, "Size: ");
    for (const cell_size &c : sizes)
        sz.lines.push_back(std::to_string(c.w) + " x " + std::to_string(c.h));
    sz.selected = size + 1;
    items.push_back(sz);
    dy_item st = dy_text_item(DY_KCH, 1, y + 1, "Style:");
    st.lines.assign(std::begin(styles), std::end(styles));
    st.selected = style + 1;
    items.push_back(st);
    items.push_back(dy_text_item(DY_KLABEL, 1, y + 2, complaint));
    items.push_back(dy_text_item(DY_KBUTTON, 2, y + 4, "OK"));
    items.push_back(dy_text_item(DY_KBUTTON, 24, y + 4, "Cancel"));
    return items;
}

// The present font (face%style%width%height) as places in the box's lists.
void font_now(const std::vector<std::string> &families, int &family, int &size, int &style)
{
    std::vector<std::string> part;
    std::string now = xffont_now(), cur;
    for (char ch : now + "%") {
        if (ch == '%') {
            part.push_back(cur);
            cur.clear();
        } else {
            cur += ch;
        }
    }
    family = size = style = 0;
    for (size_t i = 0; i < families.size(); i++)
        if (xffold(families[i]) == xffold(part[0]))
            family = (int)i;
    for (size_t i = 0; part.size() > 1 && i < std::size(styles); i++)
        if (xffold(styles[i]) == xffold(part[1]))
            style = (int)i;
    int h = part.size() > 3 ? std::atoi(part[3].c_str()) : 0;
    for (size_t i = 0; i < std::size(sizes); i++)
        if (sizes[i].h <= h)
            size = (int)i;
}

// ---- the COPY panel -------------------------------------------------------------

enum : int { C_FILE = 1, C_FIRST = 3, C_LAST = 5 };
constexpr int BROWSE_BUTTON = 3; // after OK and Cancel

std::vector<dy_item> copy_box(const std::string &file, const std::string &first,
                              const std::string &last, const std::string &complaint)
{
    std::vector<dy_item> items;
    auto field = [&](int y, const char *label, const std::string &text, int width) {
        items.push_back(dy_text_item(DY_KLABEL, 1, y, label));
        dy_item in = dy_text_item(DY_KINPUT, 21, y, text);
        in.width = width;
        items.push_back(in);
    };
    field(0, "Copy from file ===>", file, 40);
    field(1, "First line     ===>", first, 8);
    field(2, "Last  line     ===>", last, 8);
    items.push_back(dy_text_item(DY_KLABEL, 1, 4, "Press Enter to copy, F3 or ^c to cancel"));
    items.push_back(dy_text_item(DY_KLABEL, 1, 5, complaint));
    items.push_back(dy_text_item(DY_KBUTTON, 2, 7, "OK"));
    items.push_back(dy_text_item(DY_KBUTTON, 24, 7, "Cancel"));
    items.push_back(dy_text_item(DY_KBUTTON, 44, 7, "Browse"));
    return items;
}

// A line number typed in the panel: empty is the default, else a whole
// number from 1.
bool line_number(const std::string &text, long dflt, long &out)
{
    std::string_view t = xftrim(text);
    if (t.empty()) {
        out = dflt;
        return true;
    }
    if (t.size() > 9 || !std::all_of(t.begin(), t.end(), [](char ch) { return ch >= '0' && ch <= '9'; }))
        return false;
    out = std::atol(std::string(t).c_str());
    return out >= 1;
}

bool readable_file(const std::string &name)
{
    struct stat st;
    std::string path = xfpath_of(name);
    return stat(path.c_str(), &st) == 0 && !S_ISDIR(st.st_mode);
}

} // namespace

int xfask_copy(std::string &name, long &first, long &count)
{
    if (!can_ask())
        return -1;
    int gl = 0, gc = 0;
    fs_grid(&gl, &gc);
    if (gl < 8) {
        xfmsgs("The screen is to small to display the PDFCOPY panel.", 1);
        cmd_rc = 1;
        return 0;
    }
    std::string file, from, to, complaint;
    dy_modal how;
    how.panel_keys = true;
    how.focus = C_FILE;
    for (;;) {
        std::vector<dy_item> items = copy_box(file, from, to, complaint);
        int answer = dy_run_modal(items, "COPY", how);
        file = std::string(xftrim(items[C_FILE].text));
        from = items[C_FIRST].text;
        to = items[C_LAST].text;
        complaint.clear();
        if (answer == BROWSE_BUTTON) {
            std::string path = file;
            if (dy_filebox(DY_FOPEN, "Copy from file", start_of("//last"), path) == 1)
                file = path;
            continue;
        }
        if (answer != 1) {
            cmd_rc = 1; // cancelled: nothing was copied
            return 0;
        }
        long a = 1, b = -1;
        if (!line_number(from, 1, a))
            complaint = "Invalid first line number";
        else if (!line_number(to, -1, b) || (b != -1 && b < a))
            complaint = "Invalid last line number";
        else if (file.empty() || !readable_file(file))
            complaint = "File not found";
        if (!complaint.empty())
            continue;
        name = file;
        first = a;
        count = b < 0 ? -1 : b - a + 1;
        return 1;
    }
}

int xfask_target(bool create, std::string &name)
{
    if (!can_ask())
        return -1;
    std::string path;
    int r = dy_filebox(DY_FSAVE, create ? "Create" : "Replace", start_of("//last"), path);
    if (r != 1) {
        cmd_rc = 1; // cancelled: nothing is waiting for a block
        return 0;
    }
    name = path;
    return 1;
}

// DY_Open [folder | //last]: a file chosen in the file box is edited, as
// XEDit would; the box starts in the folder given, in the folder the last
// box ended in, or in the current file's.
int xfcm_dy_open(const xfcmd &c)
{
    xftrace("Commande xfcm_dy_open");
    if (!can_ask()) {
        cmd_rc = 1;
        return 1;
    }
    std::string path;
    if (dy_filebox(DY_FOPEN, "Open", start_of(std::string(xftrim(c.ops()))), path) != 1) {
        cmd_rc = 1;
        return 1;
    }
    xfcmdline("XEDit \"" + path + "\"");
    return 1;
}

// DY_FOnt: a fixed-pitch family, a cell size and a style, set as FONt sets
// them. A terminal keeps the font it has: it is told so.
int xfcm_dy_font(const xfcmd &c)
{
    xftrace("Commande xfcm_dy_font");
    (void)c;
    fs_plat *l = can_ask() ? fs_layer() : nullptr;
    std::vector<std::string> families;
    if (!l) {
        cmd_rc = 1;
        return 1;
    }
    if (!l->font_families(families)) {
        xfmsgs(XF_TERMINAL_FONT, 1);
        cmd_rc = 1;
        return 1;
    }
    if (families.empty())
        families.assign(std::begin(usual_families), std::end(usual_families));
    int family, size, style;
    font_now(families, family, size, style);
    std::string complaint;
    dy_modal how;
    how.panel_keys = true;
    how.focus = F_FAMILY;
    for (;;) {
        std::vector<dy_item> items = font_box(families, family, size, style, complaint);
        int answer = dy_run_modal(items, "Font", how);
        if (answer != 1) {
            cmd_rc = 1;
            return 1;
        }
        family = items[F_FAMILY].cursor;
        size = items[F_SIZE].selected - 1;
        style = items[F_STYLE].selected - 1;
        const cell_size &cs = sizes[size];
        std::string name = families[(size_t)family] + "%" + styles[style] + "%" +
                           std::to_string(cs.w) + "%" + std::to_string(cs.h);
        xfcmdline("FONt " + name);
        if (cmd_rc == 0)
            return 1;
        complaint = "Invalid font";
    }
}
