// Files the program creates beside the user's: backups, recovery copies,
// temporaries of a save. They are made new each time (O_EXCL), never through
// a symbolic link someone planted where we write (O_NOFOLLOW), and with the
// mode asked for or stricter.
#include "platform/platform.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <vector>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

int pl_create_new(const std::string &path, mode_t mode)
{
    int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
    return fd >= 0 ? fd : -errno;
}

int pl_create_temp(const std::string &beside, mode_t mode, std::string &tmpname)
{
    size_t s = beside.rfind('/');
    std::string dir = s == std::string::npos ? std::string() : beside.substr(0, s + 1);
    std::string base = s == std::string::npos ? beside : beside.substr(s + 1);
    // A short name: the temporary must fit where the file's own name fits.
    if (base.size() > 40)
        base.resize(40);
    static unsigned long seq = 0;
    for (int tries = 0; tries < 100; tries++) {
        timespec t;
        clock_gettime(CLOCK_REALTIME, &t);
        unsigned long r = (unsigned long)t.tv_nsec ^ ((unsigned long)getpid() << 16) ^ (++seq * 2654435761UL);
        char tail[32];
        std::snprintf(tail, sizeof tail, ".%lx~", r & 0xffffffUL);
        tmpname = dir + "." + base + tail;
        int fd = pl_create_new(tmpname, mode);
        if (fd != -EEXIST)
            return fd;
    }
    return -EEXIST;
}

int pl_write_all(int fd, const void *data, size_t n)
{
    const char *p = static_cast<const char *>(data);
    while (n > 0) {
        ssize_t w = write(fd, p, n);
        if (w < 0 && errno == EINTR)
            continue;
        if (w <= 0)
            return w < 0 ? errno : EIO;
        p += w;
        n -= (size_t)w;
    }
    return 0;
}

namespace {

// One level made 0700 where missing; true when it is then a folder of ours
// (not a link to one) that no one else can enter.
bool private_dir(const std::string &d)
{
    if (mkdir(d.c_str(), 0700) != 0 && errno != EEXIST)
        return false;
    struct stat st;
    return lstat(d.c_str(), &st) == 0 && S_ISDIR(st.st_mode) && st.st_uid == geteuid() &&
           (st.st_mode & 077) == 0;
}

} // namespace

std::string pl_state_dir(const std::string &sub)
{
    const char *x = std::getenv("XDG_STATE_HOME");
    const char *h = std::getenv("HOME");
    std::string base;
    if (x && *x == '/')
        base = x;
    else if (h && *h == '/')
        base = std::string(h) + "/.local/state";
    else
        return "";
    // Missing levels above our own folder are made as the user's own.
    for (size_t i = base.find('/', 1); i != std::string::npos; i = base.find('/', i + 1))
        mkdir(base.substr(0, i).c_str(), 0700);
    mkdir(base.c_str(), 0700);
    std::string d = base + "/vorta";
    if (!private_dir(d))
        return "";
    if (!sub.empty()) {
        d += "/" + sub;
        if (!private_dir(d))
            return "";
    }
    return d + "/";
}

int pl_remove_tree(const std::string &path)
{
    struct stat st;
    if (lstat(path.c_str(), &st) != 0)
        return errno;
    if (!S_ISDIR(st.st_mode))
        return unlink(path.c_str()) == 0 ? 0 : errno;
    int err = 0;
    if (DIR *d = opendir(path.c_str())) {
        std::vector<std::string> names;
        while (dirent *e = readdir(d))
            if (std::strcmp(e->d_name, ".") != 0 && std::strcmp(e->d_name, "..") != 0)
                names.push_back(e->d_name);
        closedir(d);
        for (const std::string &n : names)
            if (int e = pl_remove_tree(path + "/" + n); e && !err)
                err = e;
    } else {
        err = errno;
    }
    if (rmdir(path.c_str()) != 0 && !err)
        err = errno;
    return err;
}
