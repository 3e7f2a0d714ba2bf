// The scan: a level's directory (or all directories of the table, or the
// tree beneath it) read into the level's list.
#include "flist/flist.h"
#include "flist/fl_status.h"

#include "fields/fields.h"

#include <algorithm>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <unordered_map>

std::deque<fl_level> fl_levels;
size_t fl_share_least = 4096;

void fl_list::clear()
{
    name.clear();
    cmd.clear();
    st.clear();
    dir.clear();
    order.clear();
    first.clear();
}

bool fl_list::reserve(size_t want)
{
    if (want <= name.capacity())
        return true;
    // Growth by at least double keeps a tree of many small folders linear.
    want = std::max(want, name.capacity() * 2);
    // A block the size the arrays will take is asked of the system first,
    // so that a shortage ends the scan instead of the program.
    size_t bytes = want * (2 * sizeof(std::string) + sizeof(fl_status) + 2 * sizeof(int32_t) + 32);
    void *probe = std::malloc(bytes);
    if (!probe)
        return false;
    std::free(probe);
    name.reserve(want);
    cmd.reserve(want);
    st.reserve(want);
    dir.reserve(want);
    return true;
}

bool fl_list::add(std::string path, const fl_status &s, int32_t d)
{
    // The arrays double when full.
    if (name.size() == name.capacity() && !reserve(name.capacity() ? name.capacity() * 2 : 1024))
        return false;
    name.push_back(std::move(path));
    cmd.emplace_back();
    st.push_back(s);
    dir.push_back(d);
    return true;
}

void fl_list::keep(size_t to, size_t from)
{
    if (to == from)
        return;
    name[to] = std::move(name[from]);
    cmd[to] = std::move(cmd[from]);
    st[to] = st[from];
    dir[to] = dir[from];
}

void fl_list::truncate(size_t n)
{
    name.resize(n);
    cmd.resize(n);
    st.resize(n);
    dir.resize(n);
    if (first.size() > n)
        first.resize(n);
}

bool fl_is_parent(const fl_list &l, size_t i) { return l.name[i] == ".."; }
bool fl_is_dir(const fl_status &s) { return S_ISDIR(s.mode); }
bool fl_removed(const fl_status &s) { return s.size < 0; }

namespace {

// The message line during a scan, on a page that exists.
void progress(const std::string &text)
{
    if (fs_curpage() != FL_PAGE)
        return;
    std::string t = fl_shown(text);
    ascput_utf8(2, int(t.size()), t.c_str());
    asrefresh();
}

struct scanner {
    explicit scanner(fl_level &l) : lv(l) {}
    fl_level &lv;
    int code = 0;       // 29 when a directory would not open
    bool full = false;  // the arrays could not grow
    std::vector<int> pending; // directories still to read, for a tree
    std::vector<bool> met;    // places of the table already walked

    bool seen(int di)
    {
        if (met.size() <= size_t(di))
            met.resize(size_t(di) + 1);
        bool was = met[size_t(di)];
        met[size_t(di)] = true;
        return was;
    }

    // A directory itself, not a link to one.
    static bool real_dir(int fd, const struct dirent *e)
    {
        if (e->d_type != DT_UNKNOWN)
            return e->d_type == DT_DIR;
        struct stat sb;
        return fstatat(fd, e->d_name, &sb, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(sb.st_mode);
    }

    // Reads one directory of the table into the list.
    void read_dir(int di, bool with_parent)
    {
        const std::string d = fl_dirs[size_t(di)];
        progress("****** Scanning " + d + " ******");
        DIR *dp = opendir(d.c_str());
        if (!dp) {
            lv.msg = ".... Can't open directory " + fl_mode_letters(di);
            code = 29;
            return;
        }
        if (lv.dirtime == 0 || !lv.recursive)
            lv.dirtime = fl_dirtime(d);
        if (with_parent && d != "/" && lv.filter != FL_FILESONLY) {
            int pi = 0;
            if (fl_dir_enter(d + "/..", pi) == 0)
                full = full || !lv.list.add("..", fl_stat_of(fl_dirs[size_t(pi)]), pi);
        }
        int fd = dirfd(dp);
        // Taking the status is most of a scan's time: it runs beside the
        // reading of the names (see fl_status.h). The names are all read
        // before the list takes them, so that its arrays grow once; what
        // the status rules out leaves the list again after.
        fl_status_taker taker(fd);
        bool dot = false, dotdot = false;
        while (struct dirent *e = readdir(dp)) {
            std::string_view nm(e->d_name);
            if ((nm == "." && !dot && (dot = true)) || (nm == ".." && !dotdot && (dotdot = true)))
                continue;
            bool realdir = lv.recursive && real_dir(fd, e);
            if (!realdir && !fl_accept(lv.npat, lv.epat, nm))
                continue;
            taker.add(nm, realdir);
        }
        const std::deque<fl_batch> &batches = taker.finish();
        size_t count = 0;
        for (const fl_batch &b : batches)
            count += b.starts.size();
        const size_t first = lv.list.count();
        full = full || !lv.list.reserve(first + count);
        std::vector<uint32_t> name_at; // where each entry's name starts in its path
        std::vector<bool> realdirs;
        for (const fl_batch &b : batches) {
            for (size_t k = 0; k < b.starts.size() && !full; k++) {
                std::string_view nm(b.names.c_str() + b.starts[k]);
                std::string path;
                path.reserve(d.size() + 1 + nm.size());
                path += d;
                if (d.size() != 1)
                    path += '/';
                path += nm;
                name_at.push_back(uint32_t(path.size() - nm.size()));
                realdirs.push_back(b.realdir[k]);
                full = !lv.list.add(std::move(path), b.st[k], di);
            }
        }
        name_at.resize(lv.list.count() - first);
        size_t kept = first;
        for (size_t k = 0; k < name_at.size(); k++) {
            size_t i = first + k;
            std::string_view nm(lv.list.name[i].c_str() + name_at[k]);
            bool isdir = S_ISDIR(lv.list.st[i].mode);
            if (realdirs[k]) {
                // The tree is walked through real directories only: a link
                // to one above would never end.
                int sub = 0;
                int rc = fl_dir_enter(d + "/" + std::string(nm), sub);
                if (rc == 0 && !seen(sub))
                    pending.push_back(sub);
                else if (rc == 5)
                    lv.msg = fl_dir_message(5);
                if (!fl_accept(lv.npat, lv.epat, nm))
                    continue;
            }
            if ((lv.filter == FL_DIRSONLY && !isdir) || (lv.filter == FL_FILESONLY && isdir))
                continue;
            lv.list.keep(kept++, i);
        }
        lv.list.truncate(kept);
        closedir(dp);
    }
};

} // namespace

fl_status fl_stat_of(const std::string &path)
{
    struct stat sb;
    return stat(path.c_str(), &sb) == 0 ? fl_status_from(sb) : fl_status{};
}

int64_t fl_dirtime(const std::string &dir)
{
    struct stat sb;
    if (stat(dir.c_str(), &sb) != 0)
        return 0;
    return int64_t(sb.st_mtim.tv_sec) * 1000000000 + sb.st_mtim.tv_nsec;
}

int fl_scan(fl_level &lv)
{
    // Commands typed on lines survive a new scan of the same level.
    std::unordered_map<std::string, std::string> typed;
    for (size_t i = 0; i < lv.list.count(); i++)
        if (!lv.list.cmd[i].empty())
            typed.emplace(lv.list.name[i], lv.list.cmd[i]);
    lv.list.clear();
    lv.dirtime = 0;
    lv.msg.clear();
    scanner sc(lv);
    if (lv.dirindex < 0) {
        for (size_t i = 0; i < fl_dirs.size() && !sc.full; i++)
            sc.read_dir(int(i), false);
    } else {
        sc.seen(lv.dirindex);
        sc.read_dir(lv.dirindex, fl_parent != 0 && !lv.recursive);
        for (size_t k = 0; k < sc.pending.size() && !sc.full; k++)
            sc.read_dir(sc.pending[k], false);
    }
    for (size_t i = 0; i < lv.list.count() && !typed.empty(); i++)
        if (auto t = typed.find(lv.list.name[i]); t != typed.end())
            lv.list.cmd[i] = t->second;
    lv.list.order.resize(lv.list.count());
    for (size_t i = 0; i < lv.list.count(); i++)
        lv.list.order[i] = int32_t(i);
    fl_sort(lv);
    lv.rebuild = true;
    if (sc.full) {
        lv.msg = ".... No more memory for the list";
        return 1;
    }
    // Something found clears a directory that would not open.
    if (lv.list.count() == 0) {
        if (sc.code == 0)
            lv.msg = ".... File not found";
        return sc.code ? sc.code : 28;
    }
    if (sc.code == 29 && lv.dirindex < 0)
        sc.code = 0;
    return sc.code;
}
