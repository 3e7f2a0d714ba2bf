// Files in and out as commands: the SAve and FIle families (with their
// forced, time-keeping, CR LF and VERIFY_ forms), GET, and UNDo and REDo.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "session/xed.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

enum : unsigned {
    SV_FORCE = 1,  // overwrite another file without asking
    SV_KEEP = 2,   // keep the file's disk time
    SV_DOS = 4,    // CR LF record endings
    SV_VERIFY = 8, // only the VERIFY columns
};

struct save_form {
    const char *word; // command name as in the table, folded
    unsigned how;     // its flags
};

constexpr save_form save_forms[] = {
    {"save", 0},          {"ssave", SV_FORCE},  {"ksave", SV_KEEP}, {"dossave", SV_DOS},
    {"file", 0},          {"ffile", SV_FORCE},  {"kfile", SV_KEEP}, {"dosfile", SV_DOS},
    {"verify_save", SV_VERIFY}, {"verify_ssave", SV_VERIFY | SV_FORCE},
    {"verify_ksave", SV_VERIFY | SV_KEEP},
};
static_assert(sizeof save_forms / sizeof save_forms[0] == 11, "four saves, four files, three VERIFY_");

unsigned flags_of(const xfcmd &c)
{
    if (!c.ent)
        return 0;
    std::string name = xffold(c.ent->name);
    for (auto &f : save_forms)
        if (name == f.word)
            return f.how;
    return 0;
}

std::string current_dir()
{
    char buf[PATH_MAX];
    return getcwd(buf, sizeof buf) ? std::string(buf) : std::string("/");
}

// The target of SAve fn ft fm: each operand replaces that part of the
// file's name (base name, extension, directory), "=" keeps it.  A first
// operand that holds a '.' or a '/' is a whole name.
bool target_of(std::string_view ops, std::string &out, bool &named)
{
    std::vector<std::string> w;
    for (std::string_view rest = ops, word; !(word = xfword(rest)).empty();)
        w.emplace_back(word);
    if (w.size() > 3)
        return false;
    named = !w.empty();
    const std::string &fname = xf->fname;
    size_t slash = fname.rfind('/');
    std::string dir = fname.substr(0, slash + 1);
    std::string base = fname.substr(slash + 1);
    size_t dot = base.rfind('.');
    std::string fn = dot == std::string::npos ? base : base.substr(0, dot);
    std::string ft = dot == std::string::npos ? "" : base.substr(dot + 1);
    bool whole = false;
    if (w.size() > 0 && w[0] != "=") {
        if (w[0].find('/') != std::string::npos) {
            std::string p = w[0][0] == '/' ? w[0] : current_dir() + "/" + w[0];
            out = xfcanon(p);
            return true;
        }
        whole = w[0].find('.') != std::string::npos;
        fn = w[0];
    }
    if (w.size() > 1 && w[1] != "=") {
        ft = w[1];
        whole = false;
    }
    if (w.size() > 2 && w[2] != "=")
        dir = w[2].back() == '/' ? w[2] : w[2] + "/";
    out = dir + fn + (whole || ft.empty() ? "" : "." + ft);
    return true;
}

// Profile macros: saving one asks no question, and its macro table entry
// is dropped rather than refreshed.
constexpr const char *profiles[] = {"profile.vorta", "prof_pdf.vorta", "prof_xedit.vorta",
                                    "pdfprof.vorta", "xeditprof.vorta"};

bool is_profile(const std::string &path)
{
    std::string base = xffold(path.substr(path.rfind('/') + 1));
    for (const char *p : profiles)
        if (base == p)
            return true;
    return false;
}

// A saved macro or command file runs its new text from the next call on.
void refresh_macros(const std::string &path)
{
    bool drop = is_profile(path);
    for (auto *list : {&rexx_macros, &cmd_files, &flist_macros}) {
        for (auto &m : *list)
            if (m.path == path) {
                m.loaded = false;
                m.lines.clear();
            }
        if (drop)
            list->erase(std::remove_if(list->begin(), list->end(),
                                       [&](const xfmacro &m) { return m.path == path; }),
                        list->end());
    }
}

// SAve and FIle alike: 0 when the text is on disk, else the status of the
// save (3: the user kept the file's protection) or 1.
int save(const xfcmd &c, unsigned how)
{
    if (xf->rw == 0) {
        xfmsg(118, 1);
        cmd_rc = 1;
        return 1;
    }
    std::string target;
    bool named = false;
    if (!target_of(c.ops(), target, named)) {
        xfmsg(16, 1);
        cmd_rc = 5;
        return 1;
    }
    // Operands that spell the file's own name make a plain save.
    named = named && target != xf->fname;
    if (is_profile(target))
        how |= SV_FORCE;
    int st = xfsave(target, how & SV_FORCE, how & SV_KEEP, how & SV_DOS, how & SV_VERIFY, named);
    if (st == 0)
        refresh_macros(target);
    return st;
}

} // namespace

int xfcm_save(const xfcmd &c)
{
    xftrace("Commande xfcm_save");
    if (!xf)
        return 1;
    save(c, flags_of(c));
    return 1;
}

int xfcm_file(const xfcmd &c)
{
    xftrace("Commande xfcm_file");
    if (!xf) {
        if (autoexit)
            xfexit(0);
        return 1;
    }
    if (int st = save(c, flags_of(c))) {
        if (st == 3)
            cmd_rc = 3;
        return 1;
    }
    xfdelfile();
    if (xv) {
        xv->cmdline.clear();
        xv->fileidx = xfidx;
    }
    if (nbfiles() == 0 && autoexit)
        xfexit(0);
    return 1;
}

std::string xfpath_of(std::string name)
{
    if (!name.empty() && name[0] == '~') {
        const char *h = std::getenv("HOME");
        name = std::string(h ? h : "") + name.substr(1);
    }
    return xfcanon(!name.empty() && name[0] == '/' ? name : current_dir() + "/" + name);
}

bool xfread_file_lines(std::string name, long first, long count, std::vector<xfline> &out)
{
    std::string path = xfpath_of(name);
    int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) {
        xfmsg(22, 1);
        return false;
    }
    xflines L;
    xftextblock blk;
    xfreadstate st;
    st.name = path;
    st.keepblanks = xf->keepblanks;
    st.bin = xf->bin;
    xfreadlines(fd, L, blk, st);
    close(fd);
    if (st.status != 0) {
        xfmsg(st.status == 4 ? 1 : 0, 1);
        return false;
    }
    if (first > L.size()) {
        char m[1400];
        std::snprintf(m, sizeof m, "..... File %s has only %d records", path.c_str(), L.size());
        xfmsgs(m, 1);
        return false;
    }
    int32_t from = (int32_t)first - 1;
    int32_t n = count < 0 ? L.size() - from : (int32_t)std::min<long>(count, L.size() - from);
    // The texts live in the scratch block: the caller gets copies.
    out.assign((size_t)n, xfline{});
    for (int32_t k = 0; k < n; k++) {
        const xfline &l = L[from + k];
        out[(size_t)k] = xfline(xfstrdup(std::string_view(l.text, (size_t)l.len)), l.len, 0, 0);
    }
    return true;
}

// GET [file [first [count]]]: lines of another file after the current line,
// as one change that one UNDo takes back.
int xfcm_get(const xfcmd &c)
{
    xftrace("Commande xfcm_get");
    if (!xf)
        return 1;
    std::string_view rest = c.ops();
    std::string name(xfword(rest));
    std::string_view w2 = xfword(rest), w3 = xfword(rest);
    long first = 1, count = -1;
    if (name.empty() || !xfword(rest).empty() || (!w2.empty() && (!xfnumber(w2, first) || first < 1)) ||
        (!w3.empty() && (!xfnumber(w3, count) || count < 0))) {
        xfmsg(name.empty() ? 159 : 16, 1);
        cmd_rc = 5;
        return 1;
    }
    std::vector<xfline> lines;
    if (!xfread_file_lines(name, first, count, lines)) {
        cmd_rc = 1;
        return 1;
    }
    int32_t n = (int32_t)lines.size();
    int32_t at = std::max(curline(), -1);
    xf_do('I', nullptr, at, n, 1, lines.data(), "xfcm_get:151");
    xfshift_down(at, n);
    if (!modes.get_stay)
        curline() = at + n;
    xfclampcur();
    return 1;
}

int xfcm_undo(const xfcmd &c)
{
    xftrace("Commande xfcm_undo");
    std::string_view rest = c.ops();
    std::string_view w = xfword(rest);
    long n = 1;
    if (!w.empty() && (w[0] == 'a' || w[0] == 'A'))
        n = LONG_MAX;
    else if (!w.empty() && (!xfnumber(w, n) || n < 0)) {
        xfmsg(16, 1);
        cmd_rc = 1;
        return 1;
    }
    if (!xfword(rest).empty()) {
        xfmsg(16, 1);
        cmd_rc = 1;
        return 1;
    }
    while (n-- > 0 && xf_undo()) {
    }
    return 1;
}

int xfcm_redo(const xfcmd &c)
{
    xftrace("Commande xfcm_redo");
    (void)c;
    xf_redo();
    return 1;
}
