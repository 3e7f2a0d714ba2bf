// The editor's side of the dialog boxes: a box's callback runs as an editor
// macro, and the editor's own questions are asked in boxes.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "fields/dialogs/dialogs.h"
#include "fields/fields.h"
#include "rexx/run.h"
#include "session/xed.h"

namespace {

// Inside a macro (DY_DISPATCH) the callback runs at once, nested as any
// macro command does; otherwise it waits its turn among the queued
// commands, so that it never cuts into what the user is typing.
int editor_callback(const std::string &macro, const std::string &event)
{
    // A macro that is not there would leave the box deaf for ever: say so,
    // and the box is taken off the screen.
    if (rx_macro_path_hook && rx_macro_path_hook(macro).empty()) {
        xfmsgs("..... dy_dispatch: unable to run the \"" + macro + "\" macro", 1);
        return -1;
    }
    std::string cmd = "MACRO " + macro + event;
    if (rx_running()) {
        xfcmdline(cmd);
        return cmd_rc < 0 ? -1 : 0;
    }
    cmd_queue.push_back(cmd);
    return 0;
}

// The selection commands the string box can run, by the name it was called by.
struct select_row {
    const char *name;    // the dialog command
    const char *command; // what it runs
};
constexpr select_row select_rows[] = {
    {"DY_All", "all"}, {"DY_Exclude", "exclude"}, {"DY_SHow", "show"}};

// The string box: the text, "Consider Case" and "Whole Word", with up a
// choice of direction, OK and Cancel, and a line for the complaint about a
// string that was not right. The text is item 1, the toggles item 2.
std::vector<dy_item> string_box(const std::string &text, bool consider, bool word,
                                const std::string &complaint, const int *up)
{
    std::vector<dy_item> items;
    items.push_back(dy_text_item(DY_KLABEL, 1, 0, "String:"));
    dy_item in = dy_text_item(DY_KINPUT, 9, 0, text);
    in.width = 30;
    items.push_back(in);
    dy_item tg = dy_text_item(DY_KTG, 1, 2, "");
    tg.lines = {"Consider Case", "Whole Word"};
    tg.tx = {1, 20};
    tg.ty = {2, 2};
    tg.on = {consider, word};
    items.push_back(tg);
    int y = 3;
    if (up) {
        dy_item dir = dy_text_item(DY_KTG, 1, 3, "");
        dir.lines = {"Down", "Up"};
        dir.tx = {1, 20};
        dir.ty = {3, 3};
        dir.on = {!*up, *up};
        dir.exclusive = true;
        items.push_back(dir);
        y++;
    }
    items.push_back(dy_text_item(DY_KLABEL, 1, y, complaint));
    items.push_back(dy_text_item(DY_KBUTTON, 2, y + 2, "OK"));
    items.push_back(dy_text_item(DY_KBUTTON, 24, y + 2, "Cancel"));
    return items;
}

// A delimiter the text does not hold, so that a "/" in it is searched for
// as itself; a whole word is asked for by the backslash.
std::string delimited(const std::string &text, bool word)
{
    char d = '\\';
    if (!word)
        for (char c : std::string_view("/!#%:;|"))
            if (text.find(c) == std::string::npos) {
                d = c;
                break;
            }
    return d + text + d;
}

// Runs a search command on the text with the file's case set as the box
// says; quiet keeps its messages out of the file's pending list. The
// return code.
int run_search(const std::string &command, const std::string &text, bool consider, bool word,
               bool quiet)
{
    int32_t was = xf->case_mode;
    xf->case_mode = (was & ~1) | (consider ? 1 : 0);
    std::string got, *before = xfmsg_capture;
    if (quiet)
        xfmsg_capture = &got;
    xfcmdline(command + delimited(text, word));
    xfmsg_capture = before;
    if (xf)
        xf->case_mode = was;
    return cmd_rc;
}

// Asks for a string until one the command takes; up, when given, asks the
// direction too and the command is made for it.
int string_dialog(const std::string &command, int *up)
{
    std::string text, complaint;
    bool consider = !xfcase_ignore(), word = false;
    dy_modal how;
    how.panel_keys = true;
    for (;;) {
        std::vector<dy_item> items = string_box(text, consider, word, complaint, up);
        int answer = dy_run_modal(items, "", how);
        if (answer < 0) {
            cmd_rc = 1; // nobody to ask
            return 1;
        }
        text = items[1].text;
        consider = items[2].on[0];
        word = items[2].on[1];
        if (up)
            *up = items[3].on[1];
        if (answer != 1 || text.empty() || !xf) {
            cmd_rc = 1;
            return 1;
        }
        std::string run = up ? command + (*up ? " -" : " ") : command + " ";
        if (run_search(run, text, consider, word, !up) != 5)
            return 1;
        complaint = "Invalid string.";
    }
}

} // namespace

int xfcm_dy_all(const xfcmd &c)
{
    xftrace("Commande xfcm_dy_all");
    const char *command = "all";
    for (const select_row &r : select_rows)
        if (c.ent && std::string_view(c.ent->name) == r.name)
            command = r.command;
    if (!xf)
        return 1;
    return string_dialog(command, nullptr);
}

// DY_FInd: the string, its case, a whole word and the direction, found as
// LOCATE finds it from the current line.
int xfcm_dy_find(const xfcmd &c)
{
    xftrace("Commande xfcm_dy_find");
    (void)c;
    if (!xf)
        return 1;
    int up = 0;
    return string_dialog("locate", &up);
}

bool xfconfirm(const std::string &what, const std::vector<std::string> &lines)
{
    if (cmd_source == 1 && !rx_running())
        return xfconfirm_key(what);
    if (batch || !fs_layer())
        return false;
    return asf_alert(1, lines) == 1;
}

void xfdialog_init()
{
    dy_callhook = editor_callback;
    dy_noscreen = batch;
}
