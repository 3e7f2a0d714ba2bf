// The macro console while the editor's page is up. A macro's SAY lines, its
// traces and error reports, and the output of the programs it runs would
// otherwise be written over the page in a terminal, and stay there, wrong,
// until those cells were drawn again. The first of them gives the terminal
// to the console, as a foreground shell command does; when the outermost
// macro ends, or the page is wanted again before that, the user reads what
// was written and presses Enter. A lone SAY line that fits needs no such
// trip: it becomes the message line. A program the macro runs gets the
// terminal too (it may ask something), but when nothing of the macro's own
// was written the page comes back without the question. With no terminal
// to give (the window, the headless screen) the standard streams serve as
// before.
#include <cerrno>
#include <cstdio>
#include <iostream>
#include <poll.h>
#include <unistd.h>

#include "commands/commands.h"
#include "fields/fields.h"
#include "fields/plat.h"
#include "platform/platform.h"
#include "rexx/run.h"
#include "session/xed.h"
#include "tools/tools.h"

namespace {

int depth = 0;          // macro runs under way from the page
bool engaged = false;   // the outermost run has a page to keep clean
bool given = false;     // the terminal is the console's now
bool held = false;      // a first SAY line is kept back
std::string held_line;  // its text, without its newline
bool spoke = false;     // the run has written to the console already
bool wrote = false;     // the macro wrote on the terminal since it was given

// Gives the terminal to the console; false when the layer has none to give.
bool give()
{
    if (given)
        return true;
    fs_plat *layer = fs_layer();
    if (!layer || !layer->console(true))
        return false;
    given = true;
    return true;
}

// Writes the kept line where the next output goes, ahead of it.
void let_go()
{
    if (!held)
        return;
    held = false;
    give();
    spoke = true;
    wrote = given;
    std::fwrite(held_line.data(), 1, held_line.size(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

// A line may wait for the message line when it is the first output of the
// run, one line, and no wider than the page.
bool may_hold(std::string_view s)
{
    if (held || given || spoke || s.empty() || s.back() != '\n')
        return false;
    s.remove_suffix(1);
    if (s.find('\n') != std::string_view::npos)
        return false;
    int lines = 0, cols = 0;
    fs_grid(&lines, &cols);
    return (int)s.size() <= cols;
}

void on_say(const char *s, size_t n)
{
    std::string_view text(s, n);
    if (n == 0)
        return;
    if (engaged && may_hold(text)) {
        held = true;
        held_line.assign(text.substr(0, n - 1));
        return;
    }
    if (engaged) {
        let_go();
        give();
        wrote = wrote || given;
    }
    spoke = true;
    std::fwrite(s, 1, n, stdout);
    std::fflush(stdout);
}

void on_trace(const char *s, size_t n)
{
    if (n == 0)
        return;  // nothing to show is no reason to leave the page
    if (engaged) {
        let_go();
        give();
        wrote = wrote || given;
    }
    spoke = true;
    // On the terminal the report goes where the page was, even when the
    // error stream was sent elsewhere at start.
    FILE *f = given ? stdout : stderr;
    std::fflush(stdout);
    std::fwrite(s, 1, n, f);
    std::fflush(f);
}

void on_claim()
{
    if (!engaged)
        return;
    let_go();
    give();
}

bool on_read_line(std::string &line)
{
    on_claim();
    std::fflush(stdout);
    bool got = static_cast<bool>(std::getline(std::cin, line));
    if (!got) {
        std::cin.clear();
        line.clear();
    }
    return got;
}

// The page is wanted while the console has the terminal: the user reads
// first, then the page comes back whole.
void on_screen()
{
    if (!given)
        return;
    if (wrote)
        tl_console_pause();
    given = false;
    wrote = false;
    if (fs_plat *layer = fs_layer())
        layer->console(false);
}

// A program or a prompt had the terminal: when the macro itself wrote
// nothing there, the page comes back at once rather than at its end.
void on_release()
{
    if (given && !wrote)
        on_screen();
}

} // namespace

void tl_console_init()
{
    rx_console.say = on_say;
    rx_console.trace = on_trace;
    rx_console.claim = on_claim;
    rx_console.release = on_release;
    rx_console.read_line = on_read_line;
    as_screenhook = on_screen;
}

void tl_console_begin()
{
    if (depth++ == 0) {
        engaged = !batch && fs_layer() != nullptr;
        spoke = false;
    }
}

void tl_console_end()
{
    if (--depth > 0)
        return;
    if (held && !given) {
        held = false;
        xfmsgs(held_line, 1);
    }
    let_go();
    on_screen();
    engaged = false;
}

bool tl_console_given()
{
    return given;
}

void tl_console_pause()
{
    // An editor on its way out (a hang-up, a TERM signal) has no one to
    // wait for.
    if (pl_endsig())
        return;
    std::fputs("\n[Press Enter to return to the editor]", stdout);
    std::fflush(stdout);
    char ch = 0;
    for (;;) {
        pollfd p[2] = {{0, POLLIN, 0}, {pl_endsig_fd(), POLLIN, 0}};
        if (poll(p, p[1].fd >= 0 ? 2 : 1, -1) < 0 && errno != EINTR)
            break;
        if (pl_endsig())
            break;
        if (!(p[0].revents & (POLLIN | POLLHUP | POLLERR)))
            continue;
        ssize_t n = read(0, &ch, 1);
        if ((n < 0 && errno != EINTR && errno != EAGAIN) || n == 0 || ch == '\n' || ch == '\r')
            break;
    }
}
