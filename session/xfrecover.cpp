// Recovery: when the session cannot go on (memory gone, the line limit
// reached, an internal error), every changed file is written away under its
// name with ".check" appended before the process goes; restart.x lists the
// ring so that a new process can take over.
#include "session/xffiles.h"
#include "commands/commands.h"
#include "platform/platform.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Written with write(2) alone: stdio may need memory we no longer have.
void err(const char *a, const std::string &b = std::string(), const char *c = "")
{
    (void)!write(2, a, std::strlen(a));
    (void)!write(2, b.data(), b.size());
    (void)!write(2, c, std::strlen(c));
    (void)!write(2, "\n", 1);
}

bool macro_kind(const std::string &name)
{
    int cls = xfext_class(name);
    return cls == 4 || cls == 10 || cls == 15;
}

// A name in the recovery folder that no copy holds yet: the file's path with
// its slashes made '%', cut from the left to fit, and a number when taken.
std::string recovery_name(const std::string &dir, int n)
{
    std::string flat = xf->fname;
    for (char &c : flat)
        if (c == '/')
            c = '%';
    if (flat.size() > 200)
        flat.erase(0, flat.size() - 200);
    char num[16] = "";
    if (n > 0)
        std::snprintf(num, sizeof num, ".%d", n);
    return dir + flat + num + ".check";
}

} // namespace

int xfwrite_check(std::string &where)
{
    struct stat st;
    mode_t mode = stat(xf->fname.c_str(), &st) == 0 ? (mode_t)(st.st_mode & 0666) : 0600;
    int form = xf->eol_kind == 0 ? XF_SAVED_CRLF : XF_SAVED;
    std::string own = xf->fname + ".check";
    int err = xfwrite_copy(own, mode, form);
    if (err == 0) {
        where = own;
        return 0;
    }
    // The file's folder cannot take it (not ours to write, a name too long,
    // someone else's file in the way): the user's own recovery folder.
    std::string dir = pl_state_dir("recovery");
    for (int n = 0; !dir.empty() && n < 1000; n++) {
        std::string name = recovery_name(dir, n);
        if (lstat(name.c_str(), &st) == 0)
            continue;
        err = xfwrite_copy(name, mode, form);
        if (err == 0)
            where = name;
        break;
    }
    return err < 0 ? -err : err;
}

void xfrecover_install() { xfnomem_hook = xfnomem_save; }

void xfnomem_save(int reason)
{
    if (recovering) {
        err("VORTA: exiting without saving files");
        return;
    }
    if (reason == 1)
        err("Edited files will be saved with a \".check\" filetype.");
    for (int i = 0; i < nbfiles(); i++) {
        if (files[(size_t)i]->chgcount == 0)
            continue;
        xfsetfile(i);
        err("VORTA: ... Trying to save ", xf->fname);
        recovering = true;
        std::string where = xf->fname + ".check";
        bool ok = xfwrite_check(where) == 0;
        xf->fname = where;
        err(" after renaming in ", xf->fname);
        err(ok ? "VORTA: ................. Save successfull" : "VORTA: ................. Save failed");
    }
}

void xfinterr(int code)
{
    if (recovering) {
        err("VORTA: Unable to save modified files");
        std::_Exit(1);
    }
    char m[64];
    std::snprintf(m, sizeof m, "VORTA internal error %d.", code);
    xftrace(m);
    xftrace_dump();
    recovering = true;
    xfrescue(code, m, false);
    std::_Exit(1);
}

void xfrescue(int code, const std::string &message, bool restart)
{
    (void)code;
    int cur = xfidx;
    bool any = false;
    for (int i = 0; i < nbfiles(); i++) {
        if (files[(size_t)i]->chgcount == 0)
            continue;
        any = true;
        xfsetfile(i);
        err(message.c_str());
        err("Trying to save ", xf->fname, " appending a \".check\" filetype.");
        std::string where = xf->fname + ".check";
        if (xfwrite_check(where) == 0) {
            xf->fname = where;
            err("Saved as ", where);
        } else {
            err("Unable to save ", xf->fname);
        }
    }
    if (!any)
        err(message.c_str());
    xfsetfile(cur < nbfiles() ? cur : nbfiles() - 1);
    if (restart)
        xfrestart();
}

int xfrestart_write()
{
    if (files.empty())
        return 0;
    struct stat st;
    if (lstat("restart.x", &st) == 0)
        rename("restart.x", "restart.x%");
    // Made new, never through a link that someone left in the folder.
    int fd = pl_create_new("restart.x", 438);
    if (fd < 0)
        return -fd;
    (void)!fchmod(fd, 438);
    FILE *f = fdopen(fd, "w");
    if (!f) {
        int e = errno;
        close(fd);
        return e;
    }
    for (int i = 0; i < nbfiles(); i++) {
        xfile *fl = files[(size_t)i];
        int32_t line = xv && (size_t)i < xv->perfile.size() ? xv->perfile[(size_t)i].curline : 0;
        std::fprintf(f, "xed \"%s\":%d\n", fl->fname.c_str(), line + 1);
        if (macro_kind(fl->fname)) {
            std::string b = xfbaseof(fl->fname);
            std::fprintf(f, "macro \"%s\"\n", b.substr(0, b.rfind('.')).c_str());
        }
    }
    if (xf)
        std::fprintf(f, "xed \"%s\"\n", xf->fname.c_str());
    return std::fclose(f) == 0 ? 0 : errno;
}

int xfrestart()
{
    int e = xfrestart_write();
    if (e || profile_pending)
        return e;
    std::vector<char *> argv;
    for (auto &a : regrouped_argv)
        argv.push_back(const_cast<char *>(a.c_str()));
    argv.push_back(nullptr);
    execv("/proc/self/exe", argv.data());
    return errno;
}
