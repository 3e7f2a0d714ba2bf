// The reader: a file's bytes come in whole, into one block that the line
// texts then point into.  Binary detection, record endings, blank stripping
// and the byte translation are done on that block in place, in one pass over
// each record, so loading costs little more than reading.
#include "session/xed.h"
#include "commands/commands.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

int autobin = 1;
std::string autobin_allowed = std::string("\x09\x0a\x0c\x0d\x1a", 5);
int64_t load_limit = 0;
int fileconv_read = 2;
int eol_empty = 1;
int isoconv = 0;
unsigned char readtab[256];
unsigned char writetab[256];

namespace {

constexpr int32_t max_lines = xfmax_lines;  // lines a file may have
constexpr int64_t max_linelen = xfmax_cols; // bytes a line may have
constexpr int32_t est_cap = 100000000;     // the estimate stops doubling here

// Every block that line texts point into, for xftext_free.
std::vector<const xftextblock *> blocks;
const xftextblock *last_hit = nullptr;

bool inside(const xftextblock *b, const char *p)
{
    return b->base && p >= b->base && p < b->base + b->size;
}

// ISOCONV ON: the file on disk is in the PC code page 850, the text in the
// editor in ISO 8859-1.  Row k gives the ISO byte of PC byte 128 + k; the
// PC characters that ISO lacks (box drawing and a few others) take the
// ISO control range 0x80-0x9F in order, so that the two tables are each
// other's inverse and any file comes back unchanged.
constexpr unsigned char pc_to_iso[128] = {
    0xC7, 0xFC, 0xE9, 0xE2, 0xE4, 0xE0, 0xE5, 0xE7, 0xEA, 0xEB, 0xE8, 0xEF, 0xEE, 0xEC, 0xC4, 0xC5,
    0xC9, 0xE6, 0xC6, 0xF4, 0xF6, 0xF2, 0xFB, 0xF9, 0xFF, 0xD6, 0xDC, 0xF8, 0xA3, 0xD8, 0xD7, 0x80,
    0xE1, 0xED, 0xF3, 0xFA, 0xF1, 0xD1, 0xAA, 0xBA, 0xBF, 0xAE, 0xAC, 0xBD, 0xBC, 0xA1, 0xAB, 0xBB,
    0x81, 0x82, 0x83, 0x84, 0x85, 0xC1, 0xC2, 0xC0, 0xA9, 0x86, 0x87, 0x88, 0x89, 0xA2, 0xA5, 0x8A,
    0x8B, 0x8C, 0x8D, 0x8E, 0x8F, 0x90, 0xE3, 0xC3, 0x91, 0x92, 0x93, 0x94, 0x95, 0x96, 0x97, 0xA4,
    0xF0, 0xD0, 0xCA, 0xCB, 0xC8, 0x98, 0xCD, 0xCE, 0xCF, 0x99, 0x9A, 0x9B, 0x9C, 0xA6, 0xCC, 0x9D,
    0xD3, 0xDF, 0xD4, 0xD2, 0xF5, 0xD5, 0xB5, 0xFE, 0xDE, 0xDA, 0xDB, 0xD9, 0xFD, 0xDD, 0xAF, 0xB4,
    0xAD, 0xB1, 0x9E, 0xBE, 0xB6, 0xA7, 0xF7, 0xB8, 0xB0, 0xA8, 0xB7, 0xB9, 0xB3, 0xB2, 0x9F, 0xA0,
};

struct tables_init {
    tables_init() { xfisoconv_set(0); }
} tables_once;

} // namespace

void xfisoconv_set(int on)
{
    isoconv = on;
    for (int i = 0; i < 256; i++)
        readtab[i] = writetab[i] = (unsigned char)i;
    if (!on)
        return;
    for (int k = 0; k < 128; k++) {
        readtab[128 + k] = pc_to_iso[k];
        writetab[pc_to_iso[k]] = (unsigned char)(128 + k);
    }
}

// ---------------------------------------------------------------------------
// Text blocks.

void xftextblock::adopt(char *b, size_t n)
{
    release();
    base = b;
    size = n;
    blocks.push_back(this);
}

void xftextblock::release()
{
    if (!base)
        return;
    blocks.erase(std::remove(blocks.begin(), blocks.end(), this), blocks.end());
    if (last_hit == this)
        last_hit = nullptr;
    std::free(base);
    base = nullptr;
    size = 0;
}

xftextblock::~xftextblock() { release(); }

void xftext_free(char *text)
{
    if (!text)
        return;
    if (last_hit && inside(last_hit, text))
        return;
    for (const xftextblock *b : blocks)
        if (inside(b, text)) {
            last_hit = b;
            return;
        }
    std::free(text);
}

// ---------------------------------------------------------------------------

int64_t xfstat_ns(const struct stat &st)
{
    return (int64_t)st.st_mtim.tv_sec * 1000000000 + st.st_mtim.tv_nsec;
}

bool xfwritable(const struct stat &st)
{
    // Decided from the mode bits: as root every access test says yes.
    uid_t uid = geteuid();
    if (uid == 0)
        return (st.st_mode & 0222) != 0;
    if (st.st_uid == uid)
        return (st.st_mode & S_IWUSR) != 0;
    gid_t groups[256];
    int n = getgroups(256, groups);
    bool member = st.st_gid == getegid();
    for (int i = 0; i < n && !member; i++)
        member = groups[i] == st.st_gid;
    if (member)
        return (st.st_mode & S_IWGRP) != 0;
    return (st.st_mode & S_IWOTH) != 0;
}

namespace {

// The whole file into one heap block, one byte more than its length so that
// the last record can be NUL-ended too.  False on a read error.
bool slurp(int fd, size_t hint, char *&buf, size_t &n)
{
    size_t cap = hint + 1;
    buf = (char *)xfmalloc(cap);
    n = 0;
    for (;;) {
        if (n + 1 >= cap) {
            cap = cap + cap / 2 + 65536;
            buf = (char *)xfrealloc(buf, cap);
        }
        ssize_t r = read(fd, buf + n, cap - 1 - n);
        if (r < 0 && errno == EINTR)
            continue;
        if (r < 0) {
            std::free(buf);
            buf = nullptr;
            return false;
        }
        if (r == 0)
            break;
        n += (size_t)r;
    }
    return true;
}

// The first control byte that makes the file binary, or -1.
int binary_byte(const char *p, size_t n)
{
    n = std::min<size_t>(n, 1024);
    for (size_t i = 0; i < n; i++) {
        unsigned char b = (unsigned char)p[i];
        if (b < 32 && b != 10 && autobin_allowed.find((char)b) == std::string::npos)
            return b;
    }
    return -1;
}

// One record [p, p+len): CRs and blanks go as the settings ask, the text is
// NUL-ended in place.  `keep` is the least length the blank stripping leaves.
int64_t trim_record(char *p, int64_t len, const xfreadstate &st, int keep, bool &cr)
{
    if (fileconv_read == 2 && len > 0 && !st.bin)
        while (len > 0 && p[len - 1] == '\r') {
            len--;
            cr = true;
        }
    if (!st.keepblanks)
        while (len > keep && p[len - 1] == ' ')
            len--;
    p[len] = 0;
    return len;
}

} // namespace

int xfreadlines(int fd, xflines &L, xftextblock &blk, xfreadstate &st)
{
    struct stat sb;
    if (fstat(fd, &sb) != 0) {
        st.status = 3;
        return st.status;
    }
    // Only a regular file has an end to read to: a pipe may never send
    // one, and a device like /dev/zero never ends.
    if (!S_ISREG(sb.st_mode)) {
        st.status = 4;
        return st.status;
    }
    st.mtime = (int64_t)sb.st_mtime;
    st.mtime_ns = xfstat_ns(sb);
    st.size = (int64_t)sb.st_size;
    char *buf;
    size_t n;
    if (!slurp(fd, S_ISREG(sb.st_mode) ? (size_t)sb.st_size : 0, buf, n)) {
        st.status = 3;
        st.err = errno;
        return st.status;
    }
    if (autobin && !st.bin) {
        int b = binary_byte(buf, n);
        if (b >= 0) {
            char m[64];
            std::snprintf(m, sizeof m, "..... Binary mode (Found x'%2.2X') set for file ", b);
            st.msgs.push_back(m + st.name);
            st.bin = 1;
            st.keepblanks = 1;
        }
    }
    if (isoconv)
        for (size_t i = 0; i < n; i++)
            if (buf[i] != '\n')
                buf[i] = (char)readtab[(unsigned char)buf[i]];

    st.ended_lf = n > 0 && buf[n - 1] == '\n'; // the split below overwrites it
    int32_t est = std::max<int32_t>(st.sizeest, 16);
    L.reserve(L.size() + est);
    int32_t sel = xv ? xv->select_new : 0;
    bool cr = false;
    char *p = buf, *end = buf + n;
    // Slots are opened a chunk at a time; the unused rest is closed after.
    // The chunk is small: its slots are written at once, and those of the
    // last chunk that no line takes would stay in memory for nothing.
    int32_t used = L.size();
    auto store = [&](char *text, int64_t len) {
        if (used == L.size()) {
            if (L.size() >= L.capacity() - 1) {
                L.reserve(L.capacity() + est);
                if (est < est_cap)
                    est *= 2;
            }
            L.open(used, std::min<int32_t>(1024, L.capacity() - 1 - used));
        }
        L[used++] = {text, (int32_t)len, 0, sel};
    };
    while (p < end) {
        char *q = (char *)std::memchr(p, '\n', (size_t)(end - p));
        bool last = q == nullptr;
        int64_t len = (last ? end : q) - p;
        if (len > max_linelen || L.size() >= max_lines) {
            st.status = len > max_linelen ? 5 : 6;
            L.close(0, L.size());
            used = 0;
            std::free(buf);
            return st.status;
        }
        len = trim_record(p, len, st, last ? 2 : 1, cr);
        store(p, len);
        p = last ? end : q + 1;
    }
    // A binary file that ends in a line feed gets an empty last line, so
    // that the writer can give back exactly the same bytes.
    if (st.bin && st.ended_lf) {
        buf[n] = 0;
        store(buf + n, 0);
    }
    L.close(used, L.size() - used);
    st.eol_kind = cr ? 0 : 1;
    if (L.size() == 1 && L[0].len == 1 && L[0].text[0] == 26 && fileconv_read == 2 && !st.bin) {
        L[0].text[0] = 0;
        L[0].len = 0;
        st.eol_kind = 0;
    }
    if (L.size() == 0) {
        std::free(buf);
        return 0;
    }
    blk.adopt(buf, n + 1);
    return 0;
}

int xftr1(int &status, const std::string &path, bool noreport)
{
    xftimeload("VORTA: starting xftr1");
    status = 0;
    // The write open only tests our access. Only regular files are read,
    // and nothing opened here may block: a pipe with no writer waits forever.
    struct stat pre;
    if (stat(path.c_str(), &pre) == 0 && !S_ISREG(pre.st_mode)) {
        status = 4;
        return status;
    }
    constexpr int ro = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    int wfd = open(path.c_str(), O_RDWR | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    int werr = wfd < 0 ? errno : 0;
    int fd = wfd >= 0 ? wfd : open(path.c_str(), ro);
    if (fd < 0) {
        status = errno == EISDIR ? 4 : 3;
        return status;
    }
    struct stat sb;
    bool ro_attr = fstat(fd, &sb) == 0 && S_ISREG(sb.st_mode) && !xfwritable(sb);

    xfreadstate st;
    st.name = path;
    st.bin = xf->bin;
    st.keepblanks = xf->keepblanks;
    st.sizeest = (int32_t)std::max<int64_t>(1000, std::min<int64_t>(xf->lines.capacity(), est_cap));
    xfreadlines(fd, xf->lines, xf->textblock, st);
    close(fd);
    status = st.status;
    if (status != 0)
        return status;
    xf->bin = st.bin;
    xf->keepblanks = st.keepblanks;
    xf->mtime = st.mtime;
    xf->disk_ns = st.mtime_ns;
    xf->disk_size = st.size;
    xf->eol_kind = st.eol_kind;
    int32_t n = xf->nbli();
    if (n == 0) {
        xf->eol_kind = eol_empty;
        if (topline == 0) {
            xf->lines.open(0, 1);
            xf->lines[0] = {xfstrdup(""), 0, 0, xv ? xv->select_new : 0};
        }
    } else if (n == 1 && st.eol_kind == 1 && eol_default == 0 && !st.bin) {
        // One record and no line feed at all: nothing says it is unix.
        if (!st.ended_lf)
            xf->eol_kind = 0;
    }
    if (xf->bin)
        xf->eol_kind = 1;
    if (ro_attr || wfd < 0) {
        xf->rw = 0;
        if (ro_attr)
            st.msgs.push_back("..... File \"" + path + "\" is read-only - RW OFF");
        else if (werr == EACCES || werr == EPERM)
            st.msgs.push_back("..... No write access to the file: loaded read-only (RW OFF)");
        else
            st.msgs.push_back("..... File loaded read-only (RW OFF)");
    }
    if (!noreport)
        for (auto &m : st.msgs)
            xfmsgs(m, 0);
    return 0;
}
