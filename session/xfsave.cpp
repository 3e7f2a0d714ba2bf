// Saving: the writer with its backup rules, and the save of the bound file
// under its own name or another. The text is built whole in memory before
// anything on disk is touched; it goes into a new file that takes the
// target's name only once it is complete, so a failed write (a full disk, a
// size limit) leaves the old text where it was and the old backup too.
#include "session/xffiles.h"
#include "commands/commands.h"

#include "platform/platform.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
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

// The lines a write takes: all of the bound file's, or only those listed.
const std::vector<int32_t> *write_only = nullptr;

// The bound file's text as it goes to disk, handed to `put` piece by piece.
template <class Put> void emit(unsigned how, Put &&put)
{
    int32_t n = write_only ? (int32_t)write_only->size() : xf->nbli();
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
        const xfline &l = xf->lines[write_only ? (*write_only)[(size_t)i] : i];
        const char *t = l.text;
        int32_t len = l.len;
        // Columns, TRUNC and LRECL count characters in a UTF-8 file.
        bool u = xf->utf8 != 0;
        if (how & B_VERIFY) {
            int32_t a = std::min(len, xfcol_off(t, len, vfrom > 0 ? vfrom - 1 : 0, u));
            int32_t b = vto > 0 && vto < 2147483646 ? std::min(xfcol_off(t, len, vto, u), len) : len;
            if (a < b)
                text(t + a, b - a);
        } else {
            if (!(how & B_PLAIN) && xf->trunc > 0 && len > xf->trunc)
                len = std::min(len, xfcol_off(t, len, xf->trunc, u));
            text(t, len);
            int32_t cols = xf->lrecl > 0 && !(how & B_PLAIN) ? xfcol_len(t, len, u) : 0;
            for (int32_t k = cols; !(how & B_PLAIN) && k < xf->lrecl; k++)
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

// The text straight to the file through a fixed buffer: no allocation.
int stream(int fd, unsigned how)
{
    static char buf[65536];
    size_t used = 0;
    int err = 0;
    auto flush = [&] {
        if (!err)
            err = pl_write_all(fd, buf, used);
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

void write_error(int err)
{
    std::fprintf(stderr, "vorta: save : error occured while writing (%s)\n", std::strerror(err));
}

// Targets whose text a failed write in place left broken and that could not
// be put back: their backup is the last good text and stays as it is.
std::set<std::string> broken;

mode_t umask_now()
{
    mode_t m = umask(077);
    umask(m);
    return m;
}

// The data go into a new file beside `path`, which then takes its name:
// whoever reads `path` finds the old whole text or the new one, never part.
// `owner`, when given, is the file whose owner the new one keeps; `before`
// runs when the new text is safely on disk, just before it takes the name.
// Minus the errno value when no new file could be made, else 0 or errno.
template <class Fill, class Before = void (*)()>
int replace(const std::string &path, mode_t mode, const struct stat *owner, Fill fill,
            Before before = [] {})
{
    std::string tmp;
    int fd = pl_create_temp(path, 0600, tmp);
    if (fd < 0)
        return fd;
    if (owner)
        (void)!fchown(fd, owner->st_uid, owner->st_gid);
    int err = fchmod(fd, mode) != 0 ? errno : 0;
    if (!err)
        err = fill(fd);
    if (!err && fsync(fd) != 0 && errno != EINVAL)
        err = errno;
    if (close(fd) != 0 && !err)
        err = errno;
    if (!err)
        before();
    if (!err && rename(tmp.c_str(), path.c_str()) != 0)
        err = errno;
    if (err)
        unlink(tmp.c_str());
    return err;
}

// All of a file's bytes, for putting them back; false when unreadable.
bool slurp(const std::string &path, std::string &out)
{
    int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return false;
    char buf[65536];
    ssize_t n;
    while ((n = read(fd, buf, sizeof buf)) > 0 || (n < 0 && errno == EINTR))
        if (n > 0)
            out.append(buf, (size_t)n);
    close(fd);
    return n == 0;
}

int put_at_start(int fd, const std::string &data)
{
    if (lseek(fd, 0, SEEK_SET) != 0)
        return errno;
    if (int e = pl_write_all(fd, data.data(), data.size()))
        return e;
    if (ftruncate(fd, (off_t)data.size()) != 0)
        return errno;
    return fsync(fd) != 0 && errno != EINVAL ? errno : 0;
}

// The backup as a copy, for a file whose identity must stay (hard links,
// PRESERVLINKS): the target keeps its inode.
void backup_copy(const std::string &target, const std::string &bak)
{
    if (int e = xfcopyfile(target, bak))
        say("save: Unable to copy " + target + " into " + bak + ": " + std::strerror(e));
}

// The old disk text as the backup, for a target that the new file replaces.
// A hard link keeps the target in place until the rename; where links are
// refused the old text moves.
void backup_move(const std::string &target, const std::string &bak)
{
    struct stat bs;
    if (lstat(bak.c_str(), &bs) == 0 && !S_ISDIR(bs.st_mode))
        unlink(bak.c_str());
    if (link(target.c_str(), bak.c_str()) != 0 && rename(target.c_str(), bak.c_str()) != 0)
        say("save: Unable to rename " + target + " into " + bak);
}

// Written over the old text in the file itself, which keeps its inode: the
// old text is held in memory first and put back when the write fails.
int write_inplace(const std::string &target, const std::string &data)
{
    std::string bak = target + bak_suffix;
    if (!broken.count(target))
        backup_copy(target, bak);
    std::string old;
    bool have_old = slurp(target, old);
    int fd = open(target.c_str(), O_WRONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        say("save: Unable to write " + target + ": " + std::strerror(errno));
        return 2;
    }
    int err = put_at_start(fd, data);
    if (err) {
        write_error(err);
        if (have_old && put_at_start(fd, old) == 0)
            broken.erase(target);
        else
            broken.insert(target);
    } else {
        broken.erase(target);
    }
    if (close(fd) != 0 && !err) {
        err = errno;
        write_error(err);
    }
    return err ? 2 : 0;
}

} // namespace

int xfcopyfile(const std::string &from, const std::string &to)
{
    int in = open(from.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (in < 0)
        return errno;
    struct stat st;
    mode_t mode = fstat(in, &st) == 0 ? st.st_mode & 0777 : 0600;
    int err = replace(to, mode, nullptr, [&](int out) {
        static char buf[65536];
        for (;;) {
            ssize_t n = read(in, buf, sizeof buf);
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                return n < 0 ? errno : 0;
            if (int e = pl_write_all(out, buf, (size_t)n))
                return e;
        }
    });
    close(in);
    return err < 0 ? -err : err;
}

int xfwrite_copy(const std::string &path, mode_t mode, int form)
{
    static constexpr unsigned how[] = {0u, B_CRLF, B_PLAIN};
    return replace(path, mode, nullptr, [&](int fd) { return stream(fd, how[form]); });
}

int xfwrite(bool dosmode, bool verify, const std::vector<int32_t> *only)
{
    // Every way out of the write leaves the bound file's own text as the
    // default for the next one.
    struct restore {
        ~restore() { write_only = nullptr; }
    } reset;
    write_only = only;
    unsigned how = (dosmode || xf->eol_kind == 0 ? B_CRLF : 0u) | (verify ? B_VERIFY : 0u);
    std::string target;
    if (follow(xf->fname, target) == ELOOP) {
        say("file " + xf->fname + " linked to itself");
        return 2;
    }
    struct stat st;
    bool existed = stat(target.c_str(), &st) == 0;
    if (existed && !S_ISREG(st.st_mode)) {
        // A device, a pipe or a socket is not replaced by a plain file.
        say("save: " + target + " is not a regular file");
        return 2;
    }
    if (existed && !xfwritable(st)) {
        // Removing the protection needs the user's word, and there is no one
        // to ask without a screen.
        say("The file " + target + " is write-protected.");
        return 3;
    }
    // A file that must keep its inode, or one we may write but not own
    // (whose owner a new file would change), is written in place, from the
    // whole text built in memory first: a shortage is then met before
    // anything on disk is touched. A new file beside it is written through
    // a fixed buffer instead, which asks for no memory at all.
    bool inplace = existed && (preservlinks || st.st_nlink >= 2 ||
                               (geteuid() != 0 && st.st_uid != geteuid()));
    std::string data;
    int status = 0;
    if (inplace) {
        build(data, how);
        status = write_inplace(target, data);
    } else {
        mode_t mode = existed ? st.st_mode & 07777 : 0666 & ~umask_now();
        bool keep = existed && !broken.count(target);
        // The backup is made once the new text is safely on disk.
        int err = replace(
            target, mode, existed ? &st : nullptr,
            [&](int fd) { return stream(fd, how); },
            [&] {
                if (keep)
                    backup_move(target, target + bak_suffix);
            });
        if (err < 0 && existed) {
            // No new file can be made in the folder: the file itself is written.
            build(data, how);
            status = write_inplace(target, data);
        } else if (err < 0) {
            say("save: Unable to write " + target + ": " + std::strerror(-err));
            status = 2;
        } else if (err > 0) {
            write_error(err);
            status = 2;
        } else {
            broken.erase(target);
        }
    }
    if (status == 0 && !backup_on && existed)
        unlink((target + bak_suffix).c_str());
    return status;
}

int save_failures = 0;

namespace {

// Whether the file on disk is still the one loaded or last saved: 0 yes,
// 1 changed by someone else, 2 deleted, 3 made where there was none.
int disk_change(const std::string &path)
{
    struct stat st;
    bool there = stat(path.c_str(), &st) == 0;
    if (xf->disk_ns < 0)
        return 0;
    if (xf->disk_ns == 0)
        return there ? 3 : 0;
    if (!there)
        return errno == ENOENT ? 2 : 0;
    return xfstat_ns(st) != xf->disk_ns || (int64_t)st.st_size != xf->disk_size ? 1 : 0;
}

void note_disk()
{
    struct stat st;
    if (stat(xf->fname.c_str(), &st) == 0) {
        xf->mtime = (int64_t)st.st_mtime;
        xf->disk_ns = xfstat_ns(st);
        xf->disk_size = (int64_t)st.st_size;
    }
}

// A save over what someone else did on disk needs the user's word: asked
// from a key on the page, refused otherwise.
bool disk_allows(const std::string &path)
{
    static const char *const what[] = {"", "changed on disk since it was loaded", "deleted on disk",
                                       "created on disk by another program"};
    int why = disk_change(path);
    if (why == 0)
        return true;
    if (xfconfirm_key(std::string("to save anyway: file ") + what[why]))
        return true;
    xfmsgs("..... " + xfbaseof(path) + ": " + what[why] + "; SSAVE writes it anyway", 1);
    return false;
}

int failed(int status, int rc)
{
    save_failures++;
    cmd_rc = rc;
    return status;
}

} // namespace

int xfsave(const std::string &target, bool force, bool keeptime, bool dosmode, bool verify,
           bool named, const std::vector<int32_t> *only)
{
    struct stat st;
    if (target != xf->fname2 && stat(target.c_str(), &st) == 0 && !force && !recovering &&
        !xfconfirm("to overwrite existing file", {"Warning: you are overwriting file", target}))
        return failed(2, 2);
    if (!xf)
        return failed(2, 2);
    if (target == xf->fname2 && !force && !recovering && !disk_allows(target))
        return failed(2, 1);
    std::string oldname = xf->fname;
    int64_t oldtime = xf->mtime;
    xf->fname = target;
    int status = xfwrite(dosmode, verify, only);
    xf->fname = oldname;
    if (status != 0) {
        if (status != 3)
            xfmsg(21, 1);
        return failed(status, 1);
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
    }
    note_disk();
    return 0;
}

int xfrecycle(const std::string &path)
{
    std::string abs = path;
    if (abs.empty() || abs[0] != '/') {
        char buf[4096];
        abs = std::string(getcwd(buf, sizeof buf) ? buf : "/") + "/" + path;
    }
    int err = pl_trash(xfcanon(abs));
    return err < 0 ? -err : err;
}
