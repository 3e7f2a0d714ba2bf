// The line commands that change files: erase (into the Trash with RECYCLE
// ON), copy and rename with their target words, and diff.
#include "flist/flist.h"

#include "commands/commands.h"
#include "platform/platform.h"
#include "session/xed.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

std::string shown_path(const fl_level &lv, size_t i)
{
    return fl_shown(fl_is_parent(lv.list, i) ? std::string("..") : lv.list.name[i]);
}

// A level showing the directory `dir` (a real path), or null.
fl_level *level_of(const std::string &dir)
{
    for (auto it = fl_levels.rbegin(); it != fl_levels.rend(); ++it)
        if (it->dirindex >= 0 && !it->recursive && it->dir == dir)
            return &*it;
    return nullptr;
}

// A change the list made itself is no change to scan again for.
void absorb(const std::string &dir)
{
    if (fl_level *lv = level_of(dir))
        lv->dirtime = fl_dirtime(dir);
}

std::string real_dir_of(const std::string &path)
{
    char buf[PATH_MAX];
    std::string d = fl_dirname(path);
    return realpath(d.c_str(), buf) ? std::string(buf) : d;
}

// The message of a failed erase, by the errno value.
std::string erase_message(int err, const std::string &name)
{
    static const struct {
        int err;
        const char *before, *after;
    } texts[] = {
        {ENOENT, "..... File ", " already erased"},     {EACCES, "..... Access for ", " denied"},
        {EPERM, "..... Access for ", " denied"},        {EROFS, "..... Access for ", " denied"},
        {EIO, "..... I/O error while processing ", ""},
    };
    for (const auto &t : texts)
        if (t.err == err)
            return t.before + name + t.after;
    return "..... Error while erasing " + name;
}

// The words of a copy, rename or diff: the target and the options.
struct target_words {
    std::string path;       // the target's full path
    bool rep = false;       // (REP: an existing target is replaced
    bool oldd = false;      // (OLDD: the file's dates are kept
    bool empty_name = false;
};

// Reads "newname [newext [newmode]] (options"; false on wrong words.
bool parse_target(std::string_view args, const std::string &src, target_words &t)
{
    std::string_view words = args, opts;
    if (size_t paren = args.find('('); paren != std::string_view::npos) {
        words = args.substr(0, paren);
        opts = args.substr(paren + 1);
    }
    for (std::string o : fl_words(opts)) {
        if (!o.empty() && o.back() == ')')
            o.pop_back();
        if (strcasecmp(o.c_str(), "rep") == 0)
            t.rep = true;
        else if (strcasecmp(o.c_str(), "oldd") == 0)
            t.oldd = true;
        else if (!o.empty())
            return false;
    }
    std::vector<std::string> w = fl_words(words);
    if (w.empty() || w.size() > 3)
        return false;
    std::string dir = fl_dirname(src), base = fl_basename(src);
    std::string_view stem, ext;
    fl_split(base, stem, ext);
    // "/n" before an extension stands for the stem: cp /n.bak.
    for (std::string &x : w)
        if (x.size() >= 2 && x.compare(0, 2, "/n") == 0 && (x.size() == 2 || x[2] == '.'))
            x = std::string(stem) + x.substr(2);
    auto in = [&dir](const std::string &p) { return p.empty() || p[0] == '/' ? p : dir + "/" + p; };
    std::string name;
    if (w.size() == 1) {
        // One word: a whole name, `=` the same, a directory to copy into.
        struct stat sb;
        std::string p = w[0] == "=" ? in(base) : in(w[0]);
        if (w[0] != "=" && stat(p.c_str(), &sb) == 0 && S_ISDIR(sb.st_mode))
            p += "/" + base;
        t.path = p;
        t.empty_name = fl_basename(p).empty();
        return true;
    }
    name = w[0] == "=" ? std::string(stem) : w[0];
    if (w[1] == "=")
        name += ext;
    else if (w[1] != ".")
        name += (w[1][0] == '.' ? "" : ".") + w[1];
    std::string where = dir;
    if (w.size() == 3 && w[2] != "=") {
        int mi = fl_mode_index(w[2]);
        struct stat sb;
        if (mi >= 0 && size_t(mi) < fl_dirs.size() && stat(in(w[2]).c_str(), &sb) != 0)
            where = fl_dirs[size_t(mi)];
        else
            where = in(w[2]);
    }
    t.empty_name = name.empty();
    t.path = where + "/" + name;
    return true;
}

// The source must be a regular file; the message names the command.
bool regular_source(const fl_level &lv, size_t i, const char *dirmsg, const char *othermsg)
{
    const fl_status &s = lv.list.st[i];
    if (fl_is_dir(s) || fl_is_parent(lv.list, i)) {
        fl_say(dirmsg);
        return false;
    }
    if (!S_ISREG(s.mode)) {
        fl_say(othermsg);
        return false;
    }
    return true;
}

// The new file in the list of the level that shows its directory.
void enter_new(const std::string &path, const fl_status &s)
{
    std::string d = real_dir_of(path);
    fl_level *lv = level_of(d);
    if (!lv)
        return;
    std::string name = (d == "/" ? d : d + "/") + fl_basename(path);
    for (size_t k = 0; k < lv->list.count(); k++)
        if (lv->list.name[k] == name) {
            lv->list.st[k] = s;
            lv->rebuild = true;
            return;
        }
    if (!fl_accept(lv->npat, lv->epat, fl_basename(path)) || lv->filter == FL_DIRSONLY)
        return;
    if (lv->list.add(name, s, lv->dirindex))
        fl_sort_insert(*lv, int32_t(lv->list.count() - 1));
}

int keep_dates(const std::string &from, const std::string &to)
{
    struct stat sb;
    if (stat(from.c_str(), &sb) != 0)
        return errno;
    struct timespec ts[2] = {sb.st_atim, sb.st_mtim};
    return utimensat(AT_FDCWD, to.c_str(), ts, 0) == 0 ? 0 : errno;
}

} // namespace

int fl_erase(fl_level &lv, size_t i)
{
    std::string name = shown_path(lv, i);
    const std::string &path = lv.list.name[i];
    struct stat sb;
    if (fl_is_parent(lv.list, i) || (lstat(path.c_str(), &sb) == 0 && !S_ISREG(sb.st_mode) && !S_ISLNK(sb.st_mode))) {
        fl_say("..... File " + name + " is not a regular file");
        return 1;
    }
    int err = 0;
    if (recycle_on) {
        err = pl_trash(path);
        if (err < 0) // the Trash, not the file, failed
            err = -1;
    } else if (unlink(path.c_str()) != 0) {
        err = errno;
    }
    if (err == 0 || err == ENOENT)
        lv.list.st[i].size = -1;
    absorb(real_dir_of(path));
    lv.rebuild = true;
    if (err) {
        fl_say(erase_message(err, name));
        return 1;
    }
    return 0;
}

int fl_copy(fl_level &lv, size_t i, std::string_view args, bool rename)
{
    const std::string &src = lv.list.name[i];
    const char *bad = rename ? ".... Invalid parameters for renaming" : ".... Invalid parameters for copy";
    if (!regular_source(lv, i, ".... Can't copy a directory", ".... Can't copy that sort of file"))
        return 1;
    target_words t;
    if (!parse_target(args, src, t)) {
        fl_say(bad);
        return 1;
    }
    if (t.empty_name) {
        fl_say(rename ? bad : ".... Can't copy whith empty name");
        return 1;
    }
    std::string shown = fl_shown(t.path);
    struct stat a, b;
    if (stat(t.path.c_str(), &b) == 0) {
        if (stat(src.c_str(), &a) == 0 && a.st_dev == b.st_dev && a.st_ino == b.st_ino) {
            fl_say(rename ? ".... Identicals files" : "... Identical files");
            return 1;
        }
        if (!t.rep) {
            fl_say(".... File " + shown + " already exists;specify (rep");
            return 1;
        }
    }
    if (rename) {
        if (::rename(src.c_str(), t.path.c_str()) != 0) {
            if (errno != EXDEV) {
                fl_say(".... Unexpected error while renaming " + fl_shown(src));
                return 1;
            }
            // Across file systems: a copy with its dates, then the source goes.
            if (xfcopyfile(src, t.path) != 0 || keep_dates(src, t.path) != 0) {
                fl_say("... Error while copying " + fl_shown(src) + " into " + shown);
                return 1;
            }
            if (unlink(src.c_str()) != 0) {
                fl_say(".... Unable to remove " + fl_shown(src));
                return 1;
            }
        }
        absorb(real_dir_of(src));
        absorb(real_dir_of(t.path));
        std::string d = real_dir_of(t.path);
        int di = lv.list.dir[i];
        fl_dir_enter(d, di);
        lv.list.name[i] = (d == "/" ? d : d + "/") + fl_basename(t.path);
        lv.list.dir[i] = di;
        lv.list.st[i] = fl_stat_of(t.path);
        lv.rebuild = true;
        return 0;
    }
    if (xfcopyfile(src, t.path) != 0 || (t.oldd && keep_dates(src, t.path) != 0)) {
        fl_say("... Error while copying " + fl_shown(src) + " into " + shown);
        return 1;
    }
    if (stat(t.path.c_str(), &b) != 0) {
        fl_say("... Error looking for status of " + shown);
        return 1;
    }
    absorb(real_dir_of(t.path));
    enter_new(t.path, fl_stat_of(t.path));
    return 0;
}

int fl_diff(fl_level &lv, size_t i, std::string_view args)
{
    const std::string &first = lv.list.name[i];
    if (!regular_source(lv, i, ".... Can't \"DIFF\" a directory", ".... Can't \"DIFF\" that sort of file"))
        return 1;
    target_words t;
    if (!parse_target(args, first, t) || t.empty_name || t.rep || t.oldd) {
        fl_say(".... Invalid parameters for DIFF");
        return 1;
    }
    // The output goes to a file of the user's state folder, never beside
    // the files compared.
    std::string dir = pl_state_dir("diff");
    if (dir.empty()) {
        fl_say("... Error while copying " + fl_shown(first) + " into " + fl_shown(t.path));
        return 1;
    }
    if (dir.back() != '/')
        dir += '/';
    static int seq = 0;
    std::string out = dir + std::to_string(getpid()) + "-" + std::to_string(++seq) + ".diff";
    int fd = pl_create_new(out, 0600);
    if (fd < 0) {
        fl_say(".... Cannot run it: " + std::string(strerror(-fd)));
        return 1;
    }
    pid_t pid = fork();
    if (pid == 0) {
        dup2(fd, 1);
        dup2(fd, 2);
        execlp("diff", "diff", first.c_str(), t.path.c_str(), (char *)nullptr);
        _exit(127);
    }
    close(fd);
    int status = 0;
    if (pid < 0 || waitpid(pid, &status, 0) < 0 || !WIFEXITED(status) || WEXITSTATUS(status) > 1) {
        fl_say(".... Cannot run it: diff \"" + fl_shown(first) + "\" \"" + fl_shown(t.path) + "\"");
        unlink(out.c_str());
        return 1;
    }
    return fl_edit("xed " + fl_quote(out));
}
