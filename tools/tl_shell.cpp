// Shell windows: a command's output collected line by line in a file of the
// ring, named after the window, while the page keeps living. The child's
// pipe is watched by the screen's wait; each time output comes it is cut
// into lines and added, and the read ends so that the page is drawn again.
// A run that must finish first (batch, a macro, a compile) polls the same
// way in a loop of its own.
#include "tools/tools.h"

#include "commands/commands.h"
#include "commands/xfsettings.h"
#include "fields/fields.h"
#include "fields/plat.h"
#include "platform/platform.h"
#include "rexx/run.h"
#include "session/xed.h"
#include "session/xfpage.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace {

struct shellrun {
    pl_child child;       // the command and its output pipe
    int exitfd = -1;      // readable when the child ends, once the output is done
    int32_t fileid = -1;  // the output file's session number
    std::string command;  // as the user gave it
    std::string partial;  // bytes after the last line feed
    bool echo = false;    // batch: each line to standard output too
    bool async = false;   // taken by the screen's wait rather than a loop of the caller
    bool finished = false;
    bool stopped = false; // ended by the editor (CLOSECONSOLE, the halt key), not by itself
};
std::vector<std::unique_ptr<shellrun>> runs; // started and not yet finished
int32_t history_fileid = -1;                 // the last history window shown

// Each wakeup takes at most this much, so that keys are read between the
// pieces of a fast child's output.
constexpr size_t SLICE = 1 << 20;

int index_of(int32_t fileid)
{
    for (int i = 0; i < nbfiles(); i++)
        if (files[(size_t)i]->fileid == fileid)
            return i;
    return -1;
}

// Binds the file of `fileid` for the life of the object, and the caller's
// file again at its end.
struct bound {
    int before;
    xfile *was;
    bool ok;
    explicit bound(int32_t fileid) : before(xfidx), was(xf)
    {
        int i = index_of(fileid);
        ok = i >= 0;
        if (ok)
            xfsetfile(i);
    }
    ~bound()
    {
        for (int i = 0; i < nbfiles(); i++)
            if (files[(size_t)i] == was) {
                xfsetfile(i);
                return;
            }
        xfsetfile(before < nbfiles() ? before : -1);
    }
};

// Adds lines at the end of the bound file, as loading does: not journalled,
// not a change the user made. Views that stood on the last line follow.
void add_lines(const std::vector<std::string> &lines)
{
    if (lines.empty())
        return;
    int32_t last = nbli() - 1;
    std::vector<xfline> add;
    add.reserve(lines.size());
    for (const std::string &l : lines) {
        bool high;
        if (xf->utf8 && !xfutf8_text(l.data(), l.size(), high))
            xf->utf8 = 0; // bytes that are not UTF-8 show one cell a byte
        add.push_back({xfstrdup(l), (int32_t)l.size(), 0, 0});
    }
    xf_do('I', nullptr, last, (int32_t)add.size(), 0, add.data(), "Shell output");
    for (xview *v : views)
        if (v->fileidx == xfidx && v->perfile[(size_t)xfidx].curline >= last)
            v->perfile[(size_t)xfidx].curline = nbli() - 1;
}

// Cuts the bytes after the partial line into lines; the rest stays.
std::vector<std::string> cut_lines(shellrun &r, bool all)
{
    std::vector<std::string> out;
    size_t b = 0, nl;
    while ((nl = r.partial.find('\n', b)) != std::string::npos) {
        size_t e = nl > b && r.partial[nl - 1] == '\r' ? nl - 1 : nl;
        out.emplace_back(r.partial, b, e - b);
        b = nl + 1;
    }
    r.partial.erase(0, b);
    if (all && !r.partial.empty()) {
        out.push_back(r.partial);
        r.partial.clear();
    }
    return out;
}

void deliver(shellrun &r, const std::vector<std::string> &lines)
{
    if (r.echo)
        for (const std::string &l : lines) {
            std::fwrite(l.data(), 1, l.size(), stdout);
            std::fputc('\n', stdout);
        }
    if (r.echo)
        std::fflush(stdout);
    bound b(r.fileid);
    if (b.ok)
        add_lines(lines);
}

void finish(shellrun &r)
{
    r.finished = true;
    std::vector<std::string> last = cut_lines(r, true);
    char buf[64];
    std::snprintf(buf, sizeof buf, "\" exiting with return status = %d", r.child.status);
    std::string end = "Shell \"" + r.command + buf;
    // The shell's own status for a command it could not find.
    if (r.child.status == 127)
        end += "  (Not found)";
    last.push_back(end);
    deliver(r, last);
    {
        bound b(r.fileid);
        if (b.ok) {
            xf->chgcount = 0;
            xf->chgsince = 0;
        }
    }
    // The shell may report a command it lost to a signal as a plain
    // status, so one the editor stopped says so itself.
    // "Running" stands while output comes; it goes with the end.
    for (xview *v : views)
        if (v->msgline == xfmsg_text(105))
            v->msgline.clear();
    if (r.child.signal || r.stopped)
        xfmsg(101, 1);
    if (!batch)
        asnudge();
}

void on_exit_ready(void *ctx);

// Takes what the child has written; at the end of its output, waits for
// its end (watching for it when it outlives its output).
void on_output(void *ctx)
{
    shellrun &r = *static_cast<shellrun *>(ctx);
    int fd = r.child.out;
    pl_child_read(r.child, r.partial, SLICE);
    std::vector<std::string> lines = cut_lines(r, false);
    if (!lines.empty())
        deliver(r, lines);
    if (r.child.out >= 0) {
        if (!lines.empty() && !batch)
            asnudge();
        return;
    }
    pl_watch_remove(fd);
    if (pl_child_done(r.child))
        return finish(r);
    r.exitfd = pl_child_exitfd(r.child);
    if (r.exitfd >= 0) {
        if (r.async)
            pl_watch_add(r.exitfd, on_exit_ready, &r);
        return;
    }
    while (!pl_child_done(r.child)) {
        timespec t{0, 10 * 1000 * 1000};
        nanosleep(&t, nullptr);
    }
    finish(r);
}

void on_exit_ready(void *ctx)
{
    shellrun &r = *static_cast<shellrun *>(ctx);
    if (!pl_child_done(r.child))
        return;
    pl_watch_remove(r.exitfd);
    close(r.exitfd);
    r.exitfd = -1;
    finish(r);
}

// Forgets runs that are over; a run whose file has left the ring is ended.
void sweep()
{
    for (size_t i = 0; i < runs.size();) {
        shellrun &r = *runs[i];
        if (!r.finished && index_of(r.fileid) < 0) {
            pl_watch_remove(r.child.out);
            if (r.exitfd >= 0) {
                pl_watch_remove(r.exitfd);
                close(r.exitfd);
            }
            pl_child_release(r.child);
            r.finished = true;
        }
        if (r.finished) {
            pl_child_release(r.child);
            runs.erase(runs.begin() + (long)i);
        } else {
            i++;
        }
    }
}

bool in_ring(const std::string &name)
{
    for (xfile *f : files)
        if (f->fname == name)
            return true;
    return false;
}

bool is_dir(const std::string &d)
{
    struct stat st;
    return !d.empty() && stat(d.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

// A fresh file of the ring under `name` holding `first` (at least one
// line), made current in the view; one already there under that name goes
// first, with the child still writing into it.
void make_outfile(const std::string &name, const std::vector<std::string> &first)
{
    for (int i = 0; i < nbfiles(); i++)
        if (files[(size_t)i]->fname == name) {
            for (auto &r : runs)
                if (r->fileid == files[(size_t)i]->fileid)
                    pl_child_stop(r->child);
            xfsetfile(i);
            xfdelfile();
            break;
        }
    int previous = xfidx;
    int k = xfnewfile();
    xfdefaults(name, previous);
    xf->fname = xf->fname2 = name;
    xf->reload_ok = 0; // never on disk: nothing to reload
    xf->lines.open(0, 1);
    xf->lines[0] = {xfstrdup(first[0]), (int32_t)first[0].size(), 0, 0};
    xf->utf8 = xftext_mode();
    add_lines(std::vector<std::string>(first.begin() + 1, first.end()));
    xf->loadmark = 0;
    xf->chgcount = 0;
    for (xview *v : views)
        v->perfile[(size_t)k].curline = 0;
    xfswitchto(k);
}

// The session's folder for numbered output files: private to the user.
std::string own_dir()
{
    std::string d = pl_state_dir("xshell");
    if (d.empty()) {
        const char *t = std::getenv("TMPDIR");
        d = t && *t ? t : "/tmp";
    }
    return d.back() == '/' ? d : d + "/";
}

} // namespace

std::string tl_outname(const std::string &source, const std::string &window, const std::string &dir,
                       const std::string &msgdir, int max, bool (*taken)(const std::string &))
{
    std::string name;
    std::string base = dir.empty() || dir.back() == '/' ? dir : dir + "/";
    if (window.empty()) {
        name = source.empty() ? base + "no_file.xshell" : source;
    } else if (window == "history") {
        name = source + ".history";
    } else if (window == "compile" || window == "@messages") {
        size_t slash = source.rfind('/');
        size_t dot = source.rfind('.');
        bool ext = dot != std::string::npos && (slash == std::string::npos || dot > slash) &&
                   dot + 1 < source.size() && dot != (slash == std::string::npos ? 0 : slash + 1);
        name = (ext ? source.substr(0, dot) : source) + "." + window;
    } else {
        static int counter = 0; // where the cycling goes on when all are taken
        int n = max < 1 ? 1 : max;
        std::string where = msgdir.empty() ? base : (msgdir.back() == '/' ? msgdir : msgdir + "/");
        for (int i = 1; i <= n && name.empty(); i++) {
            std::string cand = where + std::to_string(i) + ".xshell";
            if (!taken || !taken(cand))
                name = cand;
        }
        if (name.empty()) {
            counter = counter % n + 1;
            name = where + std::to_string(counter) + ".xshell";
        }
        return name;
    }
    if (!msgdir.empty()) {
        size_t slash = name.rfind('/');
        name = (msgdir.back() == '/' ? msgdir : msgdir + "/") + (slash == std::string::npos ? name : name.substr(slash + 1));
    }
    return name;
}

int tl_xshell(const std::string &command, const std::string &source, const std::string &window, bool wait)
{
    sweep();
    // The folder as the ring names files: absolute, so that a name
    // compares with those already there.
    std::string msgdir = xfset_text("MESsagesdir");
    char *real = is_dir(msgdir) ? realpath(msgdir.c_str(), nullptr) : nullptr;
    msgdir = real ? real : "";
    std::free(real);
    long max = std::atol(xfset_text("XSHELLMax").c_str());
    std::string name = tl_outname(source, window, own_dir(), msgdir, (int)max, in_ring);
    int caller_view = xvidx;
    make_outfile(xfcanon(name), {command});
    xfmsg(105, 2);

    auto r = std::make_unique<shellrun>();
    r->command = command;
    r->fileid = xf->fileid;
    r->echo = batch;
    if (int e = pl_spawn(pl_shell_argv(command), PL_CAPTURE | PL_GROUP, r->child)) {
        xfmsgs("..... Unable to create new process; Error is: \"" + std::string(std::strerror(e)) + "\"", 1);
        cmd_rc = 1;
        return 1;
    }
    shellrun &run = *r;
    runs.push_back(std::move(r));
    xfrun_reprofile();
    xfsetview(caller_view);
    if (!wait) {
        run.async = true;
        pl_watch_add(run.child.out, on_output, &run);
        return 0;
    }
    // The page is drawn now and then while the output comes, from this
    // loop: the command's caller goes on only at its end.
    timespec last{};
    while (!run.finished) {
        bool output = run.child.out >= 0;
        pollfd p{output ? run.child.out : run.exitfd, POLLIN, 0};
        poll(&p, p.fd >= 0 ? 1 : 0, 100);
        if (xfhalt_key()) {
            // The macro that waits is halted too: the user meant both.
            rx_request_halt();
            run.stopped = true;
            pl_child_stop(run.child);
        }
        if (output)
            on_output(&run);
        else if (run.exitfd >= 0)
            on_exit_ready(&run);
        timespec now;
        clock_gettime(CLOCK_MONOTONIC, &now);
        if (!batch && fs_layer() && (now.tv_sec - last.tv_sec) * 1000 + (now.tv_nsec - last.tv_nsec) / 1000000 > 200) {
            last = now;
            xfdisplay();
            asrefresh();
        }
    }
    sweep();
    return 0;
}

int tl_show_lines(const std::string &source, const std::string &window, const std::vector<std::string> &lines)
{
    std::string name = tl_outname(source.empty() ? own_dir() + "no_file" : source, window, own_dir(), std::string(), 1, in_ring);
    make_outfile(xfcanon(name), lines.empty() ? std::vector<std::string>{std::string()} : lines);
    if (window == "history")
        history_fileid = xf->fileid;
    return 0;
}

void tl_history_follow(const std::string &line)
{
    bound b(history_fileid);
    if (!b.ok)
        return;
    // An empty history shows as one empty line: the first command takes it.
    if (nbli() == 1 && xf->lines[0].len == 0)
        xf->lines[0] = {xfstrdup(line), (int32_t)line.size(), 0, 0};
    else
        add_lines({line});
    xf->chgcount = 0;
    xf->chgsince = 0;
}

int tl_running()
{
    sweep();
    return (int)runs.size();
}

int tl_close_all()
{
    int n = 0;
    for (auto &r : runs)
        if (!r->finished && r->child.pid > 0) {
            r->stopped = true;
            pl_child_stop(r->child);
            n++;
        }
    // What they wrote before the end is kept, with their last line.
    for (auto &r : runs)
        if (!r->finished) {
            if (r->child.out >= 0) {
                pl_watch_remove(r->child.out);
                pl_child_read(r->child, r->partial, SIZE_MAX);
            }
            if (r->exitfd >= 0) {
                pl_watch_remove(r->exitfd);
                close(r->exitfd);
                r->exitfd = -1;
            }
            pl_child_done(r->child);
            finish(*r);
        }
    sweep();
    return n;
}

int tl_foreground(const std::string &command, bool pause, int &status)
{
    fs_plat *layer = batch ? nullptr : fs_layer();
    // A macro's console may have the terminal already: the command shares
    // it, and the macro's end gives it back.
    bool shared = tl_console_given();
    bool tty = shared || (layer && layer->console(true));
    std::fflush(stdout);
    // The terminal's interrupt and quit keys are the command's while it
    // runs; the editor lets them pass.
    struct sigaction ign{}, oldint{}, oldquit{};
    ign.sa_handler = SIG_IGN;
    sigemptyset(&ign.sa_mask);
    sigaction(SIGINT, &ign, &oldint);
    sigaction(SIGQUIT, &ign, &oldquit);
    pl_child c;
    int e = pl_run_wait(pl_shell_argv(command), tty ? PL_KEEPIN : 0, nullptr, c);
    sigaction(SIGINT, &oldint, nullptr);
    sigaction(SIGQUIT, &oldquit, nullptr);
    status = c.signal ? -c.signal : c.status;
    if (tty && !shared) {
        if (pause)
            tl_console_pause();
        layer->console(false);
    }
    return e;
}
