// The user's Trash in the freedesktop layout: files/ holds what was deleted
// and info/<name>.trashinfo says where it came from, so that a desktop's file
// manager can restore it. The editor's deletions and the file list's erase
// both come here.
#include "platform/platform.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// The path as the info file holds it: bytes outside the unreserved set and
// '/' are percent-encoded.
std::string escaped(const std::string &p)
{
    static const char hex[] = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : p) {
        bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                     c == '/' || c == '-' || c == '_' || c == '.' || c == '~';
        if (plain) {
            out += (char)c;
        } else {
            out += '%';
            out += hex[c >> 4];
            out += hex[c & 15];
        }
    }
    return out;
}

// Each missing folder of `d` made, none of them through a link.
bool make_dirs(const std::string &d)
{
    for (size_t i = 1; i <= d.size(); i++)
        if (i == d.size() || d[i] == '/') {
            std::string part = d.substr(0, i);
            if (mkdir(part.c_str(), 0700) != 0 && errno != EEXIST)
                return false;
        }
    struct stat st;
    if (lstat(d.c_str(), &st) != 0)
        return false;
    if (!S_ISDIR(st.st_mode)) {
        errno = ENOTDIR;
        return false;
    }
    return true;
}

// Claims a name in info/ by creating its .trashinfo exclusively; returns
// the descriptor, the name chosen in `name`.
int claim(const std::string &info, const std::string &base, std::string &name)
{
    for (int n = 1; n < 10000; n++) {
        name = n == 1 ? base : base + "." + std::to_string(n);
        int fd = pl_create_new(info + "/" + name + ".trashinfo", 0600);
        if (fd >= 0 || fd != -EEXIST)
            return fd;
    }
    return -EEXIST;
}

// A regular file copied to a new name of files/, for a Trash on another
// file system.
int copy_new(const std::string &from, const std::string &to, mode_t mode)
{
    int in = open(from.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (in < 0)
        return errno;
    int out = pl_create_new(to, mode & 07777);
    if (out < 0) {
        close(in);
        return -out;
    }
    static char buf[65536];
    int err = 0;
    for (;;) {
        ssize_t n = read(in, buf, sizeof buf);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            err = n < 0 ? errno : 0;
            break;
        }
        if ((err = pl_write_all(out, buf, (size_t)n)) != 0)
            break;
    }
    close(in);
    if (close(out) != 0 && !err)
        err = errno;
    if (err)
        unlink(to.c_str());
    return err;
}

} // namespace

std::string pl_trash_dir()
{
    const char *xd = std::getenv("XDG_DATA_HOME");
    if (xd && *xd == '/')
        return std::string(xd) + "/Trash";
    const char *h = std::getenv("HOME");
    return std::string(h && *h ? h : "/") + "/.local/share/Trash";
}

int pl_trash(const std::string &abs)
{
    struct stat st;
    if (lstat(abs.c_str(), &st) != 0)
        return errno;
    std::string top = pl_trash_dir();
    std::string files_dir = top + "/files", info = top + "/info";
    if (!make_dirs(files_dir) || !make_dirs(info))
        return -errno;
    size_t slash = abs.rfind('/');
    std::string name;
    int fd = claim(info, slash == std::string::npos ? abs : abs.substr(slash + 1), name);
    if (fd < 0)
        return fd;
    char when[32];
    time_t t = time(nullptr);
    struct tm tmv;
    localtime_r(&t, &tmv);
    std::strftime(when, sizeof when, "%Y-%m-%dT%H:%M:%S", &tmv);
    std::string text = "[Trash Info]\nPath=" + escaped(abs) + "\nDeletionDate=" + when + "\n";
    int err = pl_write_all(fd, text.data(), text.size()) ? -EIO : 0;
    if (close(fd) != 0 && !err)
        err = -EIO;
    std::string infofile = info + "/" + name + ".trashinfo";
    std::string dest = files_dir + "/" + name;
    if (!err && rename(abs.c_str(), dest.c_str()) != 0) {
        err = errno;
        // Another file system: a plain file is copied across, then removed.
        if (err == EXDEV && S_ISREG(st.st_mode)) {
            err = copy_new(abs, dest, st.st_mode);
            if (!err && unlink(abs.c_str()) != 0) {
                err = errno;
                unlink(dest.c_str());
            }
        }
    }
    if (err)
        unlink(infofile.c_str());
    return err;
}
