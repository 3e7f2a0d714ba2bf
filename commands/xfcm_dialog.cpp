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

} // namespace

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
