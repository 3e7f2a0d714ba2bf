// Autosave: changes are counted per file between command cycles, and every
// AUTOSAVE changes the file's text is copied aside under a name that tells
// the process, the directory and the file.  The file itself is untouched.
#include "session/xffiles.h"
#include "commands/commands.h"

#include <cstdio>
#include <cstring>
#include <unistd.h>

int autosave_count = 0;
std::string autosave_dir = "./";

void xfcycle_begin()
{
    chg_snapshot.resize(files.size());
    for (size_t i = 0; i < files.size(); i++)
        chg_snapshot[i] = files[i]->chgcount;
    xfopen_groups();
}

void xfcycle_end()
{
    if (!autosave_count)
        return;
    // xf_do counts each journalled change in chgsince and undo takes it back,
    // so the counter already holds the changes since the last autosave.
    int cur = xfidx;
    for (int i = 0; i < nbfiles(); i++) {
        xfile *f = files[(size_t)i];
        if (f->chgcount != 0 && f->chgsince >= autosave_count) {
            xfautosave(i);
            f->chgsince = 0;
        }
    }
    xfsetfile(cur);
}

std::string xfautoname(int index)
{
    const std::string &fname = files[(size_t)index]->fname;
    std::string dir = xfdirof(fname);
    for (auto &c : dir)
        if (c == '/' || c == ':')
            c = '_';
    char pid[32];
    std::snprintf(pid, sizeof pid, "%d", (int)getpid());
    return autosave_dir + "autosave" + pid + dir + "_" + xfbaseof(fname) + "_";
}

int xfautosave(int index)
{
    int cur = xfidx;
    xfsetfile(index);
    std::string name = xfautoname(index);
    int err = xfwrite_copy(name, 0600, XF_PLAIN);
    xfsetfile(cur);
    if (err < 0) {
        xfmsgs("..... Unable to open " + name + " (" + std::strerror(-err) + ")", 1);
        return 1;
    }
    if (err > 0) {
        xfmsgs("..... Unable to write in " + name + " (" + std::strerror(err) + ")", 1);
        return 1;
    }
    xfmsgs("..... Autosaved as " + name, 0);
    return 0;
}
