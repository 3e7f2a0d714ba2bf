// Opening files: a name typed by the user becomes a file of the ring.  Name
// resolution through the current directory and XCDPATH, a file already open
// found again (through links too), the refusals, the size estimate, the
// reload of a file changed on disk, and the list of last files.
#include "session/xffiles.h"
#include "commands/commands.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

int lastfiles_on = 1;
int lastfiles_max = 30;
int noreload_once = 0;

namespace {

constexpr size_t name_max = 1199;        // a path holds at most this many bytes
constexpr const char *bad_chars = "\"*<>?|"; // never in a file's last component

std::string home()
{
    const char *h = std::getenv("HOME");
    std::string s = h && *h ? h : "/";
    if (s.back() != '/')
        s += '/';
    return s;
}

std::string cwd()
{
    char buf[PATH_MAX];
    return getcwd(buf, sizeof buf) ? std::string(buf) : std::string("/");
}

std::string join(const std::string &dir, const std::string &name)
{
    if (dir.empty())
        return name;
    return dir.back() == '/' ? dir + name : dir + "/" + name;
}

bool exists(const std::string &p, struct stat &st) { return stat(p.c_str(), &st) == 0; }

// Status of a resolution: 0 found, 1 too long, 4 a directory, 28 absent.
struct resolved {
    std::string path; // where the file is or is to be
    int status = 28;  // as above
};

resolved xfname(const std::string &name, const std::string &dir)
{
    resolved r;
    std::string n = name;
    if (n == "~" || n.rfind("~/", 0) == 0)
        n = home() + (n.size() > 2 ? n.substr(2) : "");
    std::vector<std::string> places;
    if (n[0] == '/')
        places.push_back(n);
    else if (n.rfind("./", 0) == 0 || n.rfind("../", 0) == 0 || n.find('/') != std::string::npos)
        places.push_back(join(dir, n));
    else {
        places.push_back(join(dir, n));
        for (auto &d : cdpath)
            places.push_back(join(d, n));
    }
    for (auto &p : places) {
        std::string c = xfcanon(p);
        if (c.size() > name_max) {
            r.status = 1;
            r.path = c;
            return r;
        }
        struct stat st;
        if (exists(c, st)) {
            r.path = c;
            r.status = S_ISDIR(st.st_mode) ? 4 : 0;
            return r;
        }
    }
    r.path = xfcanon(places[0]);
    r.status = r.path.size() > name_max ? 1 : 28;
    return r;
}

bool ends_with_ci(const std::string &s, const char *tail)
{
    size_t n = std::strlen(tail);
    if (s.size() < n)
        return false;
    for (size_t i = 0; i < n; i++)
        if (std::tolower((unsigned char)s[s.size() - n + i]) != tail[i])
            return false;
    return true;
}

// The path with its links resolved; for a file that does not exist yet, its
// directory resolved and the last component kept.
std::string unlinked(const std::string &p)
{
    if (char *r = realpath(p.c_str(), nullptr)) {
        std::string s = r;
        std::free(r);
        return s;
    }
    std::string d = xfdirof(p);
    if (char *r = realpath(d.c_str(), nullptr)) {
        std::string s = join(r, xfbaseof(p));
        std::free(r);
        return s;
    }
    return p;
}

int find_open(const std::string &path)
{
    std::string real = unlinked(path);
    for (int i = 0; i < nbfiles(); i++) {
        const std::string &f = files[(size_t)i]->fname;
        if (f == path || f == real)
            return i;
    }
    return -1;
}

void refuse(int msg)
{
    xfmsg(msg, 1);
    cmd_rc = 1;
}

} // namespace

void xfrun_reprofile()
{
    for (auto &m : rexx_macros)
        if (m.name == "reprofile") {
            // One from the folder we started in is the folder's, not the user's.
            if (xfdirof(m.path) == xfdirof(startdir + "/x") && !xftrusted(m.path))
                return;
            xfcom2("macro reprofile");
            return;
        }
}

std::string xfdirof(const std::string &path)
{
    size_t s = path.rfind('/');
    return s == std::string::npos ? std::string("./") : path.substr(0, s + 1);
}

std::string xfbaseof(const std::string &path)
{
    size_t s = path.rfind('/');
    return s == std::string::npos ? path : path.substr(s + 1);
}

std::string xfcanon(const std::string &path)
{
    bool abs = !path.empty() && path[0] == '/';
    std::vector<std::string> parts;
    size_t i = 0;
    while (i <= path.size()) {
        size_t j = path.find('/', i);
        if (j == std::string::npos)
            j = path.size();
        std::string c = path.substr(i, j - i);
        if (c == "..") {
            if (!parts.empty() && parts.back() != "..")
                parts.pop_back();
            else if (!abs)
                parts.push_back(c);
        } else if (!c.empty() && c != ".") {
            parts.push_back(c);
        }
        i = j + 1;
    }
    std::string out = abs ? "/" : "";
    for (size_t k = 0; k < parts.size(); k++)
        out += (k ? "/" : "") + parts[k];
    return out.empty() ? "." : out;
}

int xfedit(const std::string &name) { return xfedit(name, cwd(), false); }

int xfedit(const std::string &name, const std::string &dir, bool noext)
{
    if (name.size() >= name_max) {
        refuse(2);
        return 1;
    }
    if (name.empty())
        return 0;
    // A plain name that a file of the ring bears is that file.
    if (name.find('/') == std::string::npos && name[0] != '~')
        for (int i = 0; i < nbfiles(); i++)
            if (xfbaseof(files[(size_t)i]->fname) == name) {
                xfswitchto(i);
                return 0;
            }
    resolved r = xfname(name, dir);
    if (r.status == 28 && !noext) {
        std::string other;
        if (ends_with_ci(name, ".cpp"))
            other = name.substr(0, name.size() - 4) + ".c";
        else if (ends_with_ci(name, ".c"))
            other = name.substr(0, name.size() - 2) + ".cpp";
        if (!other.empty()) {
            resolved r2 = xfname(other, dir);
            if (r2.status == 0)
                r = r2;
        }
    }
    if (r.status == 1 || r.status == 4) {
        refuse(r.status == 1 ? 2 : 1);
        return 1;
    }
    int open_k = find_open(r.path);
    if (open_k >= 0) {
        xfswitchto(open_k);
        return 0;
    }
    if (xfbaseof(r.path).find_first_of(bad_chars) != std::string::npos) {
        xfmsgs("..... File \"" + r.path + "\": not a valid file name", 1);
        cmd_rc = 1;
        return 1;
    }
    int64_t est = 1000;
    if (r.status == 0) {
        struct stat st;
        if (stat(r.path.c_str(), &st) != 0) {
            refuse(153);
            return 1;
        }
        int64_t size = (int64_t)st.st_size;
        if (load_limit > 0 && size > load_limit) {
            refuse(176);
            return 1;
        }
        est = size >= ((int64_t)1 << 31) ? 1000 : std::clamp<int64_t>(size / 20, 1000, 100000000);
    }

    int previous = xfidx;
    int k = xfnewfile();
    xfdefaults(r.path, previous);
    xf->lines.reserve((int32_t)est);
    if (r.status == 0) {
        int status = 0;
        xftr1(status, r.path, false);
        if (status != 0) {
            xfdelfile();
            xfsetfile(previous);
            if (xv)
                xv->fileidx = previous;
            static constexpr struct {
                int status, msg;
            } why[] = {{3, 0}, {4, 1}, {1, 2}};
            int msg = 0;
            for (auto &w : why)
                if (w.status == status)
                    msg = w.msg;
            if (status == 5 || status == 6) {
                char m[80];
                std::snprintf(m, sizeof m,
                              status == 5 ? "..... Line in file is larger than %d bytes."
                                          : "..... More than %d lines in file.",
                              2147483646);
                xfmsgs(m, 1);
                cmd_rc = 1;
            } else {
                refuse(msg);
            }
            return 1;
        }
    } else if (topline == 0) {
        xf->lines.open(0, 1);
        xf->lines[0] = {xfstrdup(""), 0, 0, xv ? xv->select_new : 0};
    }
    if (r.status != 0)
        xf->disk_ns = 0; // a new file: one that appears before the save is someone else's
    xf->utf8 = xftext_mode();
    xf->loadmark = xf->nbli() - 1;
    xf->fname = xfcanon(unlinked(r.path));
    xf->fname2 = xf->fname;
    xf->chgcount = 0;
    for (xview *v : views)
        v->perfile[(size_t)k].curline = topline;
    if (xv)
        xv->fileidx = k;
    xfrecover_install();
    if (!xfreload_hook)
        xfreload_hook = [] { xfreload_all(); };
    if (r.status == 0)
        xflastfiles_add(xf->fname);
    xfrun_reprofile();
    return 0;
}

int xfopen_words(std::string_view text, const std::string &dir)
{
    int rc = 0;
    size_t i = 0;
    while (i < text.size()) {
        while (i < text.size() && text[i] == ' ')
            i++;
        if (i >= text.size())
            break;
        std::string word;
        if (text[i] == '"') {
            size_t e = text.find('"', i + 1);
            if (e == std::string_view::npos)
                e = text.size();
            word.assign(text.substr(i + 1, e - i - 1));
            i = e + 1;
        } else {
            size_t e = text.find(' ', i);
            if (e == std::string_view::npos)
                e = text.size();
            word.assign(text.substr(i, e - i));
            i = e;
        }
        rc |= xfedit(word, dir, false);
    }
    xfreload_all();
    return rc;
}

// ---------------------------------------------------------------------------
// Reload of files changed on disk.

bool xfreload_all()
{
    if (noreload_once) {
        noreload_once = 0;
        return false;
    }
    if (macro_depth > 0 || files.empty())
        return false;
    xftimeload("vorta: starting xf_reload");
    int cur = xfidx;
    bool any = false;
    for (int i = 0; i < nbfiles(); i++)
        any |= xfreload_one(i, 0, -1);
    xfsetfile(cur < nbfiles() ? cur : nbfiles() - 1);
    xftimeload("vorta: ending xf_reload");
    return any;
}

bool xfreload_one(int index, int force, int return_to)
{
    xfile *f = files[(size_t)index];
    if (!f->reload_ok || f->fname != f->fname2)
        return false;
    struct stat st;
    if (stat(f->fname.c_str(), &st) != 0)
        return false;
    // Nanoseconds and size: a change within the second of the load counts.
    bool changed = f->disk_ns > 0 ? xfstat_ns(st) != f->disk_ns || (int64_t)st.st_size != f->disk_size
                                  : (int64_t)st.st_mtime > f->mtime;
    if (!changed)
        return false;
    if (f->chgcount != 0 || force) {
        // There is nobody to ask here: the text in the editor is kept. The
        // disk's identity stays the old one, so that a save still sees the
        // change and asks before writing over it.
        f->mtime = (int64_t)st.st_mtime;
        noreload_once = 1;
        return false;
    }
    std::string name = f->fname;
    std::vector<std::vector<int32_t>> cur(views.size());
    std::vector<int> shown(views.size());
    for (size_t v = 0; v < views.size(); v++) {
        for (auto &pf : views[v]->perfile)
            cur[v].push_back(pf.curline);
        shown[v] = views[v]->fileidx;
    }
    std::vector<xfpoint> points = f->points;
    std::vector<int32_t> order = ringpos;

    xfsetfile(index);
    // The editor's text as a backup, no more open to others than the file.
    mode_t mode = (mode_t)(st.st_mode & 0666);
    xfwrite_copy(name + (f->chgcount ? bak_suffix : reload_suffix), mode,
                 f->eol_kind == 0 ? XF_SAVED_CRLF : XF_SAVED);
    xfdelfile();
    if (xfedit(name, xfdirof(name), true) != 0 || nbfiles() != (int)order.size())
        return false;
    xfsortring(nbfiles() - 1, index);
    ringpos = order;
    xfsetfile(index);
    xf->points = points;
    for (size_t v = 0; v < views.size(); v++) {
        views[v]->fileidx = shown[v];
        for (size_t i = 0; i < cur[v].size() && i < views[v]->perfile.size(); i++)
            views[v]->perfile[i].curline = cur[v][i];
    }
    xfclampcur();
    xfmsgs(".... Warning: reloaded \"" + name + "\" file; previous version saved in backup format.", 0);
    if (return_to != -1)
        xfsetfile(return_to);
    return true;
}

// ---------------------------------------------------------------------------
// ~/vorta.lastfiles: the newest load first, each path once.

void xflastfiles_add(const std::string &path)
{
    if (!lastfiles_on || lastfiles_max <= 0)
        return;
    std::string list = home() + "vorta.lastfiles";
    struct entry {
        std::string path, when;
    };
    std::vector<entry> all;
    time_t t = time(nullptr);
    struct tm tmv;
    localtime_r(&t, &tmv);
    char when[64];
    std::snprintf(when, sizeof when, " %d, %d   %2.2d:%2.2d:%2.2d", tmv.tm_mday, tmv.tm_year + 1900,
                  tmv.tm_hour, tmv.tm_min, tmv.tm_sec);
    all.push_back({path, when});
    if (FILE *in = std::fopen(list.c_str(), "r")) {
        char line[4096];
        while (std::fgets(line, sizeof line, in)) {
            std::string s = line;
            if (s.size() < 2 || s[0] != '"')
                continue;
            size_t q = s.find('"', 1);
            if (q == std::string::npos)
                continue;
            std::string p = s.substr(1, q - 1);
            if (p == path)
                continue;
            size_t w = s.find(' ', q);
            std::string rest = w == std::string::npos ? "" : s.substr(w);
            while (!rest.empty() && (rest.back() == '\n' || rest.back() == '\r'))
                rest.pop_back();
            size_t first = rest.find_first_not_of(' ');
            rest = first == std::string::npos ? "" : " " + rest.substr(first);
            all.push_back({p, rest});
        }
        std::fclose(in);
    }
    if ((int)all.size() > lastfiles_max)
        all.resize((size_t)lastfiles_max);
    size_t width = 0;
    for (auto &e : all)
        width = std::max(width, e.path.size() + 2);
    FILE *out = std::fopen(list.c_str(), "w");
    if (!out)
        return;
    for (auto &e : all) {
        std::string q = "\"" + e.path + "\"";
        q.resize(width, ' ');
        std::fprintf(out, "%s%s\n", q.c_str(), e.when.c_str());
    }
    std::fclose(out);
}
