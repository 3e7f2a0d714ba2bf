// Macros in the editor: a .vorta macro runs in the interpreter, and the
// commands it issues come back to the dispatcher through the VORTA host
// environment, their return code becoming RC.
#include "commands/commands.h"
#include "commands/internal.h"
#include "commands/xfsettings.h"
#include "rexx/run.h"
#include "fields/fields.h"
#include "session/xed.h"
#include "session/xfpage.h"
#include "tools/tools.h"

#include <vector>

namespace {

// For each macro running, whether the ring had files when it began.
std::vector<bool> began_with_files;

// Whether a command word is `name` cut to no fewer than `min` letters.
bool word_is(const std::string &word, std::string_view name, size_t min)
{
    return word.size() >= min && word.size() <= name.size() && name.substr(0, word.size()) == word;
}

int vorta_env(const char *cmd, size_t len, void *, bool *)
{
    // The stack's buffers, EXECIO and GLOBALV work the same in a macro of
    // the editor as in a batch run.
    int rc;
    if (rx_local_command(cmd, len, rc))
        return rc;
    // A macro that quit the last file has nothing left to work on: the
    // editor is on its way out, and whatever it still sends gets -1.
    if (!began_with_files.empty() && began_with_files.back() && nbfiles() == 0)
        return -1;
    // EXTRACT reads the state straight into the macro's variables: no
    // dispatch, no message, nothing queued.
    std::string_view text(cmd, len);
    std::string_view rest = text;
    std::string word = xffold(xfword(rest));
    if (word_is(word, "extract", 3))
        return xfextract(rest);
    if (word_is(word, "readscreen", 5) && xftrim(rest).empty())
        return xfreadscreen();
    size_t delim = word.find_first_not_of("abcdefghijklmnopqrstuvwxyz");
    if (delim >= 3 && delim != std::string::npos && std::string_view("extract").substr(0, delim) == word.substr(0, delim))
        return xfextract(text.substr(text.find_first_not_of(' ') + delim));
    xfcmdline_given(text);
    return cmd_rc;
}

std::string editor_macro(std::string_view name)
{
    for (const xfmacro &m : rexx_macros)
        if (m.name == name && m.cls == 10)
            return m.path;
    return std::string();
}

int run_macro(const std::string &path, std::string_view rest)
{
    std::string command = path + std::string(rest);
    began_with_files.push_back(nbfiles() > 0);
    tl_console_begin();
    int rc = run_rx(command, nullptr, -1, xhome);
    tl_console_end();
    began_with_files.pop_back();
    return rc;
}

} // namespace

void xfrexx_init()
{
    rx_env_register("VORTA", vorta_env, nullptr, true);
    // A macro that exhausts memory ends the session the way any other
    // allocation does: the changed files are kept as ".check" copies.
    rx_nomem_hook = [](size_t size) { xfnomem(size, 0); };
    xfrexx_hook = run_macro;
    tl_console_init();
    rx_macro_path_hook = editor_macro;
}

// READSCREEN: the rows of the screen, as it shows the state now, queued on
// the macro's stack from the top row down.
int xfreadscreen()
{
    xfdisplay();
    asrefresh();
    for (const std::string &row : fs_rows())
        rx_stack_queue(row);
    return 0;
}

int xfcm_readscreen(const xfcmd &c)
{
    xftrace("Commande xfcm_readscreen");
    if (!xfmacro_active())
        return 1;
    if (!xftrim(c.ops()).empty())
        return xfbad();
    cmd_rc = xfreadscreen();
    return 1;
}
