// Recovery: when the session cannot go on (memory gone, the line limit
// reached, an internal error), every changed file is written away under its
// name with ".check" appended before the process goes; restart.x lists the
// ring so that a new process can take over.
#include "session/xffiles.h"
#include "commands/commands.h"

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

} // namespace

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
        xf->fname += ".check";
        err(" after renaming in ", xf->fname);
        recovering = true;
        bool ok = xfwrite(false, false) == 0;
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
        xf->fname += ".check";
        xfsave(xf->fname, true, false, false, false, false);
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
    if (stat("restart.x", &st) == 0)
        rename("restart.x", "restart.x%");
    FILE *f = std::fopen("restart.x", "w");
    if (!f)
        return errno;
    chmod("restart.x", 438);
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
