// The window's menus and tool bar over a list. A menu item whose command is
// one of the list's action texts does that action on the shown level; any
// other text runs as an editor command would from the list. The tool bar's
// buttons are given the list's actions where one fits.
#include "flist/flist.h"

#include "commands/commands.h"

#include <iterator>
#include <strings.h>

namespace {

// The action texts, in the order the menus show them. A sort names the sort
// menu's own action, so that both sort alike; a line action names the
// internal command it runs on the entry under the cursor.
constexpr fl_action actions[] = {
    {"REFRESH", FLA_REFRESH, 0, nullptr, FLA_EDITOR_TOO},
    {"Sort by NAME", FLA_SORT, '0', nullptr, 0},
    {"Sort by NAME Reversed", FLA_SORT, 'a', nullptr, 0},
    {"Sort by TYPE", FLA_SORT, '1', nullptr, 0},
    {"Sort by TYPE Reversed", FLA_SORT, 'b', nullptr, 0},
    {"Sort by SIZE", FLA_SORT, '2', nullptr, 0},
    {"Sort by SIZE Reversed", FLA_SORT, 'c', nullptr, 0},
    {"Sort by TIME", FLA_SORT, '3', nullptr, 0},
    {"Sort by TIME Reversed", FLA_SORT, 'd', nullptr, 0},
    {"TOP", FLA_TOP, 0, nullptr, FLA_EDITOR_TOO},
    {"BOT", FLA_BOTTOM, 0, nullptr, FLA_EDITOR_TOO},
    {"RETURN", FLA_RETURN, 0, nullptr, 0},
    {"f /n *", FLA_LINE, 0, "*f /n * /d", 0},
    {"f * /t", FLA_LINE, 0, "*f * /t /d", 0},
    {"f * * /d", FLA_LINE, 0, "*f * * /d", 0},
    {"Make File", FLA_FILE, 0, nullptr, 0},
};
static_assert(std::size(actions) == 16, "sixteen action texts");

// What a tool bar button does in a list.
enum how {
    IGNORED, // nothing: the list has no text to save, cut, print or undo
    LIST,    // the list's menu text
    EDIT,    // an editor command that brings a file to edit
};
struct button {
    how what;
    const char *text;
};
// By position, as the window shows them.
constexpr button buttons[] = {
    {LIST, "RETURN"},         // Quit: this level ends
    {IGNORED, nullptr},       // New
    {EDIT, "dy_open //last"}, // Open: the file box, the file chosen edited
    {IGNORED, nullptr},       // Save
    {LIST, "Make File"},      // File: the list's FILE key does the same
    {IGNORED, nullptr},       // Cut to Clipboard
    {IGNORED, nullptr},       // Copy to Clipboard
    {IGNORED, nullptr},       // Paste from Clipboard
    {IGNORED, nullptr},       // Overlay from Clipboard
    {IGNORED, nullptr},       // Upper Selection
    {IGNORED, nullptr},       // Lower Selection
    {IGNORED, nullptr},       // Left Shift from Selection
    {IGNORED, nullptr},       // Right Shift from Selection
    {IGNORED, nullptr},       // Print
    {IGNORED, nullptr},       // Undo
    {IGNORED, nullptr},       // Redo
    {LIST, "f /n *"},         // Find: the files named as the one under the cursor
    {IGNORED, nullptr},       // Find UP
};
static_assert(std::size(buttons) == 18, "a row for each of the 18 buttons");

void run(fl_level &lv, const fl_action &a, int entry)
{
    fl_fetch(lv);
    switch (a.what) {
    case FLA_REFRESH: fl_scan(lv); break;
    case FLA_SORT: fl_resort(lv, fl_sort_action(a.sort)); break;
    case FLA_TOP: fl_scroll(lv, 0); break;
    case FLA_BOTTOM: fl_scroll(lv, int(lv.list.count())); break;
    case FLA_RETURN: fl_end_level = true; break;
    case FLA_FILE: xfcom2("flfile"); break;
    case FLA_LINE:
        if (entry < 0 || size_t(entry) >= lv.list.count())
            fl_say(".... Invalid cursor position");
        else
            fl_line_command(size_t(entry), a.line);
        break;
    default: break;
    }
}

} // namespace

const fl_action *fl_menu_action(std::string_view text)
{
    std::string_view t = xftrim(text);
    for (const fl_action &a : actions)
        if (t.size() == std::char_traits<char>::length(a.text) && strncasecmp(t.data(), a.text, t.size()) == 0)
            return &a;
    return nullptr;
}

void fl_menu_run(fl_level &lv, std::string_view text, int entry)
{
    // What an earlier action said is no longer news.
    lv.msg.clear();
    lv.notes.clear();
    if (const fl_action *a = fl_menu_action(text))
        run(lv, *a, entry);
    else if (!xftrim(text).empty())
        fl_editor_command(std::string(xftrim(text)));
    lv.rebuild = true;
}

void fl_tool_run(fl_level &lv, int pos, int entry)
{
    if (pos < 0 || size_t(pos) >= std::size(buttons))
        return;
    const button &b = buttons[pos];
    switch (b.what) {
    case LIST: fl_menu_run(lv, b.text, entry); break;
    case EDIT: fl_fetch(lv); fl_edit(b.text); lv.rebuild = true; break;
    default: break;
    }
}

std::string fl_menu_refusal(std::string_view text)
{
    const fl_action *a = fl_menu_action(text);
    if (!a || (a->flags & FLA_EDITOR_TOO))
        return std::string();
    return ".... Only in a file list: " + std::string(xftrim(text));
}
