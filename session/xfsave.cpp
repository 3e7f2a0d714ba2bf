// Saving: the writer with its backup rules, and the save of the bound file
// under its own name or another.  The text is built whole in memory before
// the target is touched, and the old text survives as the backup until the
// new one is written.
#include "session/xffiles.h"
#include "commands/commands.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

int backup_on = 1;
std::string bak_suffix = "%";
std::string reload_suffix = "%";
int recycle_on = 1;
int preservlinks = 0;
int saveclearundo = 0;
bool recovering = false;

namespace {

constexpr unsigned B_CRLF = 1;   // records end in CR LF
constexpr unsigned B_VERIFY = 2; // only the view's VERIFY columns
constexpr unsigned B_PLAIN = 4;  // every line as it stands, LF endings (autosave)

// The bound file's text as it goes to disk, handed to `put` piece by piece.
template <class Put> void emit(unsigned how, Put &&put)
{
    int32_t n = xf->nbli();
    int32_t vfrom = 1, vto = 0;
    if ((how & B_VERIFY) && xv && xfidx >= 0 && xfidx < (int)xv->perfile.size()) {
        vfrom = xv->perfile[(size_t)xfidx].verify[0];
        vto = xv->perfile[(size_t)xfidx].verify[1];
    }
    static char tbuf[4096];
    auto text = [&](const char *t, int32_t len) {
        if (!isoconv) {
            put(t, (size_t)len);
            return;
        }
        for (int32_t k = 0; k < len;) {
            int32_t m = std::min<int32_t>(len - k, (int32_t)sizeof tbuf);
            for (int32_t j = 0; j < m; j++)
                tbuf[j] = (char)writetab[(unsigned char)t[k + j]];
            put(tbuf, (size_t)m);
            k += m;
        }
    };
    for (int32_t i = 0; i < n; i++) {
        const xfline &l = xf->lines[i];
        const char *t = l.text;
        int32_t len = l.len;
        if (how & B_VERIFY) {
            int32_t a = vfrom > 0 ? vfrom - 1 : 0;
            int32_t b = vto > 0 && vto < 2147483646 ? std::min(vto, len) : len;
            if (a < b)
                text(t + a, b - a);
        } else {
            if (!(how & B_PLAIN) && xf->trunc > 0 && len > xf->trunc)
                len = xf->trunc;
            text(t, len);
            for (int32_t k = len; !(how & B_PLAIN) && k < xf->lrecl; k++)
                put(" ", 1);
        }
        bool last = i == n - 1;
        if (how & B_PLAIN) {
            put("\n", 1);
            continue;
        }
        if (last && xf->bin)
            break; // a binary file's end stays exactly as it was
        bool eof_mark = last && len > 0 && t[len - 1] == 26;
        put((how & B_CRLF) && !eof_mark ? "\r\n" : "\n", (how & B_CRLF) && !eof_mark ? 2 : 1);
    }
}

void build(std::string &out, unsigned how)
{
    out.clear();
    out.reserve((size_t)xf->nbli() * 80 + 16);
    emit(how, [&](const char *p, size_t n) { out.append(p, n); });
}

int write_all(int fd, const std::string &data)
{
    size_t done = 0;
    while (done < data.size()) {
        ssize_t w = write(fd, data.data() + done, data.size() - done);
        if (w < 0 && errno == EINTR)
            continue;
        if (w <= 0)
            return w < 0 ? errno : EIO;
        done += (size_t)w;
    }
    return 0;
}

// The text straight to the file through a fixed buffer: no allocation.
int stream(int fd, unsigned how)
{
    static char buf[65536];
    size_t used = 0;
    int err = 0;
    auto flush = [&] {
        size_t done = 0;
        while (done < used && !err) {
            ssize_t w = write(fd, buf + done, used - done);
            if (w < 0 && errno == EINTR)
                continue;
            if (w <= 0)
                err = w < 0 ? errno : EIO;
            else
                done += (size_t)w;
        }
        used = 0;
    };
    emit(how, [&](const char *p, size_t n) {
        while (n > 0) {
            size_t m = std::min(n, sizeof buf - used);
            std::memcpy(buf + used, p, m);
            used += m;
            p += m;
            n -= m;
            if (used == sizeof buf)
                flush();
        }
    });
    flush();
    return err;
}

// Where a write to `path` lands: the end of its chain of links.  ELOOP for
// a link that leads back to itself.
int follow(const std::string &path, std::string &target)
{
    target = path;
    for (int hops = 0; hops < 40; hops++) {
        struct stat st;
        if (lstat(target.c_str(), &st) != 0 || !S_ISLNK(st.st_mode))
            return 0;
        char buf[4096];
        ssize_t n = readlink(target.c_str(), buf, sizeof buf - 1);
        if (n < 0)
            return errno;
        buf[n] = 0;
        target = buf[0] == '/' ? std::string(buf) : xfdirof(target) + buf;
    }
    return ELOOP;
}

void say(const std::string &m)
{
    std::fprintf(stderr, "%s\n", m.c_str());
    xfmsgs(m, 1);
}

} // namespace

int xfcopyfile(const std::string &from, const std::string &to)
{
    int in = open(from.c_str(), O_RDONLY | O_CLOEXEC);
    if (in < 0)
        return errno;
    struct stat st;
    fstat(in, &st);
    int out = open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, st.st_mode & 07777);
    if (out < 0) {
        int e = errno;
        close(in);
        return e;
    }
    int err = 0;
    static char buf[65536];
    for (;;) {
        ssize_t n = read(in, buf, sizeof buf);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            err = n < 0 ? errno : 0;
            break;
        }
        err = write_all(out, std::string(buf, (size_t)n));
        if (err)
            break;
    }
    close(in);
    if (close(out) != 0 && !err)
        err = errno;
    return err;
}

int xfwrite_plain(const std::string &path, bool dosmode)
{
    std::string data;
    build(data, dosmode ? B_CRLF : 0u);
    int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0)
        return errno;
    int err = write_all(fd, data);
    if (close(fd) != 0 && !err)
        err = errno;
    return err;
}

// Plain LF records through the write table: the form of autosave copies.
int xfwrite_autosave(const std::string &path)
{
    std::string data;
    build(data, B_PLAIN);
    int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0)
        return -errno;
    int err = write_all(fd, data);
    if (close(fd) != 0 && !err)
        err = errno;
    return err;
}

int xfwrite(bool dosmode, bool verify)
{
    unsigned how = (dosmode || xf->eol_kind == 0 ? B_CRLF : 0u) | (verify ? B_VERIFY : 0u);
    std::string target;
    if (follow(xf->fname, target) == ELOOP) {
        say("file " + xf->fname + " linked to itself");
        return 2;
    }
    // The memory first: a shortage is met before the target is touched.
    // A recovery save has no memory to spare and streams instead.
    std::string data;
    if (!recovering)
        build(data, how);

    struct stat st;
    bool existed = stat(target.c_str(), &st) == 0;
    if (existed && !xfwritable(st) && !recovering) {
        // Removing the protection needs the user's word, and there is no one
        // to ask without a screen.
        say("The file " + target + " is write-protected.");
        return 3;
    }
    std::string bak = target + bak_suffix;
    bool renamed = false;
    if (existed) {
        if (preservlinks || st.st_nlink >= 2) {
            if (int e = xfcopyfile(target, bak))
                say("save: Unable to copy " + target + " into " + bak + ": " + std::strerror(e));
        } else {
            unlink(bak.c_str());
            if (rename(target.c_str(), bak.c_str()) != 0)
                say("save: Unable to rename " + target + " into " + bak);
            else
                renamed = true;
        }
    }
    int flags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC;
    mode_t mode = existed ? (st.st_mode & 07777) : 0666;
    int fd = open(target.c_str(), flags, mode);
    if (fd < 0 && existed && !xfwritable(st)) {
        (void)!chmod(target.c_str(), mode | S_IWUSR);
        fd = open(target.c_str(), flags, mode);
    }
    int status = 0;
    if (fd < 0) {
        say("save: Unable to write " + target + ": " + std::strerror(errno));
        status = 2;
    } else {
        if (renamed) {
            // A new inode: give it the old one's permissions and owner.
            (void)!fchown(fd, st.st_uid, st.st_gid);
            (void)!fchmod(fd, mode);
        }
        int err = recovering ? stream(fd, how) : write_all(fd, data);
        if (close(fd) != 0 && !err)
            err = errno;
        if (err) {
            std::fprintf(stderr, "vorta: save : error occured while writing (%s)\n", std::strerror(err));
            status = 2;
        }
    }
    if (!backup_on && existed)
        unlink(bak.c_str());
    return status;
}

int xfsave(const std::string &target, bool force, bool keeptime, bool dosmode, bool verify,
           bool named)
{
    struct stat st;
    if (target != xf->fname2 && stat(target.c_str(), &st) == 0 && !force && !recovering) {
        // Overwriting another file needs confirmation, which a run without
        // a screen cannot give.
        cmd_rc = 2;
        return 2;
    }
    std::string oldname = xf->fname;
    int64_t oldtime = xf->mtime;
    xf->fname = target;
    int status = xfwrite(dosmode, verify);
    xf->fname = oldname;
    if (status != 0) {
        if (status != 3)
            xfmsg(21, 1);
        cmd_rc = 1;
        return status;
    }
    if (named)
        return 0;
    xf->fname2 = xf->fname;
    xf->chgcount = 0;
    if (saveclearundo && !recovering) {
        xfclearundo(xf);
        xfclearredo(xf);
    }
    if (xf->chgsince || autosave_count) {
        unlink(xfautoname(xfidx).c_str());
        xf->chgsince = 0;
    }
    if (keeptime && oldtime != 2147483647) {
        struct timespec ts[2];
        ts[0].tv_sec = ts[1].tv_sec = (time_t)oldtime;
        ts[0].tv_nsec = ts[1].tv_nsec = 0;
        utimensat(AT_FDCWD, target.c_str(), ts, 0);
    } else if (stat(target.c_str(), &st) == 0) {
        xf->mtime = (int64_t)st.st_mtime;
    }
    return 0;
}
