// The recycle bin: with RECYCLE ON a deleted file goes to the user's Trash
// in the freedesktop layout (files/ and info/*.trashinfo under
// $XDG_DATA_HOME/Trash), from where a desktop's file manager can restore it.
#include "session/xffiles.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::string trash_dir()
{
    const char *xd = std::getenv("XDG_DATA_HOME");
    if (xd && *xd == '/')
        return std::string(xd) + "/Trash";
    const char *h = std::getenv("HOME");
    return std::string(h && *h ? h : "/") + "/.local/share/Trash";
}

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

bool make_dirs(const std::string &d)
{
    for (size_t i = 1; i <= d.size(); i++)
        if (i == d.size() || d[i] == '/') {
            std::string part = d.substr(0, i);
            if (mkdir(part.c_str(), 0700) != 0 && errno != EEXIST)
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
        int fd = open((info + "/" + name + ".trashinfo").c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd >= 0 || errno != EEXIST)
            return fd;
    }
    errno = EEXIST;
    return -1;
}

} // namespace

int xfrecycle(const std::string &path)
{
    std::string abs = path;
    if (abs.empty() || abs[0] != '/') {
        char buf[4096];
        abs = std::string(getcwd(buf, sizeof buf) ? buf : "/") + "/" + path;
    }
    abs = xfcanon(abs);
    struct stat st;
    if (lstat(abs.c_str(), &st) != 0)
        return errno;
    std::string top = trash_dir();
    std::string files_dir = top + "/files", info = top + "/info";
    if (!make_dirs(files_dir) || !make_dirs(info))
        return errno;
    std::string name;
    int fd = claim(info, xfbaseof(abs), name);
    if (fd < 0)
        return errno;
    char when[32];
    time_t t = time(nullptr);
    struct tm tmv;
    localtime_r(&t, &tmv);
    std::strftime(when, sizeof when, "%Y-%m-%dT%H:%M:%S", &tmv);
    std::string text = "[Trash Info]\nPath=" + escaped(abs) + "\nDeletionDate=" + when + "\n";
    bool written = write(fd, text.data(), text.size()) == (ssize_t)text.size();
    close(fd);
    std::string infofile = info + "/" + name + ".trashinfo";
    std::string dest = files_dir + "/" + name;
    int err = written ? 0 : EIO;
    if (!err && rename(abs.c_str(), dest.c_str()) != 0) {
        err = errno;
        // Another file system: a plain file is copied across, then removed.
        if (err == EXDEV && S_ISREG(st.st_mode)) {
            err = xfcopyfile(abs, dest);
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
