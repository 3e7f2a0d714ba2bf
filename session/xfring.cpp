// The file ring: creating, binding, switching and removing files, the ring
// order, and the per-extension defaults of a new file.
#include "session/xed.h"

#include <algorithm>
#include <cstdlib>

std::vector<xfile *> files;
std::vector<xview *> views;
xfile *xf = nullptr;
int xfidx = -1;
xview *xv = nullptr;
int xvidx = -1;
int topline = -1;
bool batch = false;
bool timeload = false;
bool autoexit = false;
int reload_default = 1;
int eol_default = 1;
int keepblanks_global = -1;
int bin_global = -1;
int cmd_source = 0;
std::vector<int32_t> chg_snapshot;
std::vector<int32_t> ringpos;
xfcursor ptcu;
xfcursor ptmo;
void (*xfreload_hook)() = nullptr;

std::vector<xfextdef> ext_tabs, ext_case, ext_lrecl, ext_trunc, ext_keepblanks,
    ext_bin{{"exe", "ON"}, {"lib", "ON"}, {"obj", "ON"}, {"dll", "ON"}, {"com", "ON"}},
    ext_powerinput;

static int32_t next_fileid = 0;

std::string xfext(std::string_view name)
{
    size_t slash = name.rfind('/');
    size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || (slash != std::string_view::npos && dot < slash))
        return "";
    return std::string(name.substr(dot + 1));
}

void xfsetfile(int index)
{
    if (index < 0 || index >= nbfiles()) {
        xf = nullptr;
        xfidx = -1;
        return;
    }
    xf = files[(size_t)index];
    xfidx = index;
}

void xfsetview(int index)
{
    xv = views[(size_t)index];
    xvidx = index;
    xfsetfile(files.empty() ? -1 : xv->fileidx);
}

int xfnewfile()
{
    auto *f = new xfile;
    f->reload_ok = reload_default;
    f->eol_kind = eol_default;
    f->fileid = next_fileid;
    next_fileid = next_fileid == 2147483647 ? 0 : next_fileid + 1;
    f->ptcur_i.ec = xvidx;
    f->ptcur_i.fld = 1; // the command line of the current view
    f->ptcur_i.li = -1;
    f->pend1.reserve(1000);
    f->pend2.reserve(1000);
    files.push_back(f);
    chg_snapshot.push_back(0);
    ringpos.push_back(0);
    for (xview *v : views)
        v->perfile.push_back(v->screen);
    int k = nbfiles() - 1;
    xfsetfile(k);
    return k;
}

namespace {

// The value of a per-extension list for a name: its own extension's entry,
// else the "*" entry, else null.
const std::string *ext_value(const std::vector<xfextdef> &list, const std::string &ext)
{
    for (auto &e : list)
        if (e.ext == ext)
            return &e.value;
    for (auto &e : list)
        if (e.ext == "*")
            return &e.value;
    return nullptr;
}

bool is_on(const std::string *v) { return v && (*v == "ON" || *v == "on" || *v == "1"); }

} // namespace

void xfdefaults(const std::string &name, int previous)
{
    std::string ext = xfext(name);
    if (auto *v = ext_value(ext_tabs, ext)) {
        xf->tabset.clear();
        for (const char *p = v->c_str(); *p;) {
            char *end;
            long c = std::strtol(p, &end, 10);
            if (end == p)
                break;
            xf->tabset.push_back((int32_t)c);
            p = end;
        }
    }
    if (auto *v = ext_value(ext_case, ext)) {
        // Four letters: Mixed or Uppercase, then Respect or Ignore for the
        // search, the change and the sort.
        auto letter = [&](size_t i, char dflt) { return i < v->size() ? (char)std::toupper((unsigned char)(*v)[i]) : dflt; };
        xf->case_mode = (letter(0, 'M') == 'U' ? 2 : 0) + (letter(1, 'R') == 'R' ? 1 : 0);
        xf->case_c = letter(2, 'R') == 'R';
        xf->case_s = letter(3, 'R') == 'R';
    }
    if (auto *v = ext_value(ext_lrecl, ext))
        xf->lrecl = *v == "*" ? 0 : std::atoi(v->c_str());
    if (auto *v = ext_value(ext_trunc, ext))
        xf->trunc = *v == "*" ? 0 : std::atoi(v->c_str());
    xf->keepblanks = is_on(ext_value(ext_keepblanks, ext));
    xf->bin = is_on(ext_value(ext_bin, ext));
    if (keepblanks_global >= 0)
        xf->keepblanks = keepblanks_global;
    if (bin_global >= 0)
        xf->bin = bin_global;
    if (xf->bin)
        xf->keepblanks = 1;
    // Until its bytes are read, a file's text is the locale's.
    xf->utf8 = utf8_global >= 0 ? utf8_global : xflocale_utf8() && !xf->bin;
    // Ring order: right after the file that was current.
    int32_t &me = ringpos[(size_t)xfidx];
    if (previous < 0 || previous >= nbfiles() || previous == xfidx) {
        int32_t top = 0;
        for (size_t i = 0; i < ringpos.size(); i++)
            if ((int)i != xfidx)
                top = std::max(top, ringpos[i]);
        me = top + 1;
        return;
    }
    int32_t base = ringpos[(size_t)previous];
    for (size_t i = 0; i < ringpos.size(); i++)
        if ((int)i != xfidx && ringpos[i] > base)
            ringpos[i]++;
    me = base + 1;
}

void xfswitchto(int k)
{
    if (k != xfidx && xfidx >= 0) {
        int32_t base = ringpos[(size_t)xfidx];
        for (auto &r : ringpos)
            if (r > base)
                r++;
        ringpos[(size_t)k] = base + 1;
    }
    xv->fileidx = k;
    xfsetfile(k);
}

int xfprevfile()
{
    int cur = xfidx;
    int32_t mine = cur >= 0 ? ringpos[(size_t)cur] : 0;
    int best = -1;
    for (int i = 0; i < nbfiles(); i++)
        if (ringpos[(size_t)i] < mine && (best < 0 || ringpos[(size_t)i] > ringpos[(size_t)best]))
            best = i;
    if (best < 0)
        for (int i = 0; i < nbfiles(); i++)
            if (best < 0 || ringpos[(size_t)i] > ringpos[(size_t)best])
                best = i;
    if (best < 0)
        best = std::max(0, cur - 1);
    return best;
}

int xfnextfile()
{
    int cur = xfidx;
    int32_t mine = cur >= 0 ? ringpos[(size_t)cur] : 0;
    int best = -1;
    for (int i = 0; i < nbfiles(); i++) {
        int32_t r = ringpos[(size_t)i];
        if (r != 0 && r > mine && (best < 0 || r < ringpos[(size_t)best]))
            best = i;
    }
    if (best < 0)
        for (int i = 0; i < nbfiles(); i++) {
            int32_t r = ringpos[(size_t)i];
            if (r != 0 && (best < 0 || r < ringpos[(size_t)best]))
                best = i;
        }
    return best < 0 ? cur : best;
}

void xfdelfile()
{
    int idx = xfidx;
    if (idx < 0)
        return;
    int chosen = -1;
    if (nbfiles() > 1) {
        chosen = xfprevfile();
        if (chosen > idx)
            chosen--;
    }
    int32_t gone = ringpos[(size_t)idx];
    for (auto &r : ringpos)
        if (r > gone)
            r--;
    for (xview *v : views) {
        v->perfile.erase(v->perfile.begin() + idx);
        if (v->fileidx == idx)
            v->fileidx = chosen;
        else if (v->fileidx > idx)
            v->fileidx--;
    }
    xfile *f = files[(size_t)idx];
    for (int32_t i = 0; i < f->nbli(); i++)
        xftext_free(f->lines[i].text);
    xfclearundo(f);
    xfclearredo(f);
    delete f;
    files.erase(files.begin() + idx);
    ringpos.erase(ringpos.begin() + idx);
    chg_snapshot.erase(chg_snapshot.begin() + idx);
    xfsetfile(chosen);
}

void xfsortring(int from, int to)
{
    if (from == to || from < 0 || to < 0 || from >= nbfiles() || to >= nbfiles())
        return;
    auto move = [&](auto &vec) {
        auto item = vec[(size_t)from];
        vec.erase(vec.begin() + from);
        vec.insert(vec.begin() + to, item);
    };
    move(files);
    move(chg_snapshot);
    auto map = [&](int i) {
        if (i == from)
            return to;
        if (from < to && i > from && i <= to)
            return i - 1;
        if (to < from && i >= to && i < from)
            return i + 1;
        return i;
    };
    for (xview *v : views) {
        move(v->perfile);
        if (v->fileidx >= 0)
            v->fileidx = map(v->fileidx);
    }
    xfsetfile(xfidx >= 0 ? map(xfidx) : -1);
}

void xfsession_end()
{
    xfsel_clear(); // file numbers start again
    while (!files.empty()) {
        xfsetfile(nbfiles() - 1);
        xfdelfile();
    }
    for (xview *v : views)
        delete v;
    views.clear();
    xv = nullptr;
    xvidx = -1;
}

void xfsession_reset()
{
    xfsession_end();
    views.push_back(new xview);
    xfsetview(0);
    next_fileid = 0;
}
