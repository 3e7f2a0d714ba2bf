// The process: splitting and regrouping the command line, the option table,
// the program's name and directories, the profile, the queue of start-up
// commands, the batch run with its @messages file, and the end.
#include "session/xed.h"
#include "session/xffiles.h"
#include "commands/commands.h"
#include "commands/xfsettings.h"
#include "platform/platform.h"
#include "session/xfkeys.h"
#include "session/xfpage.h"
#include "fields/fields.h"
#include "fields/plat.h"
#include "fields/dialogs/dialogs.h"
#include "fields/plat_term/plat_term.h"
#include "session/xfwindow_load.h"

#include <cerrno>
#include <climits>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <deque>
#include <sys/stat.h>
#include <unistd.h>

std::vector<std::string> cmd_queue;
std::vector<std::string> macro_stack_cmds;
std::string startdir;
std::vector<std::string> cdpath;
std::vector<std::string> xpath;
std::string installdir;
std::string xhome;
std::vector<std::string> raw_argv;
std::vector<std::string> regrouped_argv;
bool opt_pdf = false;
bool opt_kedit = false;

void xftimeload_start();
void xfcrash_install();
// Weak: programs linked without the terminal layer (the unit tests) find none.
fs_plat *fs_plat_term(fs_term_gonehook onhangup, std::string &err) __attribute__((weak));

void xfqueue(std::string_view text) { cmd_queue.emplace_back(text); }
void xfqueue_clear() { cmd_queue.clear(); }

namespace {

struct options {
    std::string profile;              // -p name, "" none
    bool no_profile = false;          // -np
    std::vector<std::string> cmds;    // -c, in order
    std::string filec;                // -filec name
    std::string id = "VORTA";         // -id
    std::string keys;                 // -keys: a key script for the headless screen
    std::vector<std::string> files;   // every word from the first non-option
};

enum : unsigned {
    OPT_PROFILE = 1, OPT_NOPROFILE, OPT_CMD, OPT_PDF, OPT_KEDIT, OPT_BATCH, OPT_FILEC, OPT_ID,
    OPT_KEYS,
    OPT_WINDOW, // read by the field manager
    OPT_IGNORED,
};

struct option_row {
    const char *word; // compared exactly, case included
    int words;        // words consumed behind it
    unsigned what;    // its effect
};

constexpr option_row option_table[] = {
    {"-Ww", 1, OPT_WINDOW},      {"-width", 1, OPT_WINDOW},     {"-Wh", 1, OPT_WINDOW},
    {"-height", 1, OPT_WINDOW},  {"-Wp", 2, OPT_WINDOW},        {"-position", 2, OPT_WINDOW},
    {"-WP", 2, OPT_WINDOW},      {"-icon_position", 2, OPT_WINDOW}, {"-Wf", 3, OPT_IGNORED},
    {"-font", 1, OPT_WINDOW},    {"-dy_font", 1, OPT_WINDOW},   {"-iconic", 0, OPT_WINDOW},
    {"-noauto", 0, OPT_WINDOW},  {"-display", 1, OPT_IGNORED},  {"-geometry", 1, OPT_IGNORED},
    {"-xrm", 1, OPT_IGNORED},    {"-scope", 1, OPT_IGNORED},    {"-synchronous", 0, OPT_IGNORED},
    {"-p", 1, OPT_PROFILE},      {"-P", 1, OPT_PROFILE},        {"-np", 0, OPT_NOPROFILE},
    {"-c", 1, OPT_CMD},          {"-pdf", 0, OPT_PDF},          {"-kedit", 0, OPT_KEDIT},
    {"-batch", 0, OPT_BATCH},    {"-filec", 1, OPT_FILEC},      {"-id", 1, OPT_ID},
    {"-term", 0, OPT_WINDOW},    {"-keys", 1, OPT_KEYS},
};

[[noreturn]] void die(const char *msg)
{
    std::fprintf(stderr, "%s\n", msg);
    std::exit(1);
}

// A word beginning with a double quote runs to the word that ends with one,
// joined by single blanks, quotes removed; anything else stands as it is.
std::vector<std::string> regroup(const std::vector<std::string> &in)
{
    std::vector<std::string> out;
    for (size_t i = 0; i < in.size(); i++) {
        const std::string &w = in[i];
        if (w.size() >= 2 && w.front() == '"' && w.back() == '"') {
            out.push_back(w.substr(1, w.size() - 2));
            continue;
        }
        if (w.empty() || w.front() != '"') {
            out.push_back(w);
            continue;
        }
        size_t j = i + 1;
        while (j < in.size() && (in[j].empty() || in[j].back() != '"'))
            j++;
        if (j >= in.size()) { // never closed: accepted as it stands
            out.push_back(w);
            continue;
        }
        std::string joined = w.substr(1);
        for (size_t k = i + 1; k <= j; k++)
            joined += " " + in[k];
        joined.pop_back();
        out.push_back(joined);
        i = j;
    }
    return out;
}

options parse_options(const std::vector<std::string> &argv)
{
    options o;
    size_t i = 1;
    for (; i < argv.size(); i++) {
        const std::string &w = argv[i];
        if (w.empty() || w[0] != '-')
            break;
        const option_row *row = nullptr;
        for (auto &r : option_table)
            if (w == r.word)
                row = &r;
        if (!row || i + (size_t)row->words >= argv.size())
            die("VORTA: invalid option");
        const std::string arg = row->words ? argv[i + 1] : std::string();
        switch (row->what) {
        case OPT_PROFILE: o.profile = arg; break;
        case OPT_NOPROFILE: o.no_profile = true; break;
        case OPT_CMD: o.cmds.push_back(arg); break;
        case OPT_PDF: opt_pdf = true; break;
        case OPT_KEDIT: opt_kedit = true; break;
        case OPT_BATCH: batch = true; break;
        case OPT_FILEC: batch = true; o.filec = arg; break;
        case OPT_ID: o.id = arg; break;
        case OPT_KEYS: o.keys = arg; break;
        default: break;
        }
        i += (size_t)row->words;
    }
    for (; i < argv.size(); i++)
        o.files.push_back(argv[i]);
    return o;
}

std::string home_dir()
{
    const char *h = std::getenv("HOME");
    std::string s = h && *h ? h : "/";
    if (s.back() != '/')
        s += '/';
    return s;
}


bool is_dir(const std::string &p)
{
    struct stat st;
    return stat(p.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

std::vector<std::string> split_colon(const char *v)
{
    std::vector<std::string> out;
    std::string cur;
    for (const char *p = v; ; p++) {
        if (*p == ':' || *p == 0) {
            out.push_back(cur);
            cur.clear();
            if (!*p)
                break;
        } else {
            cur += *p;
        }
    }
    return out;
}

void build_paths(const std::string &argv0)
{
    char buf[PATH_MAX];
    startdir = getcwd(buf, sizeof buf) ? buf : "/";
    if (startdir.size() > 1 && startdir[1] == ':')
        startdir[0] = (char)std::toupper((unsigned char)startdir[0]);

    cdpath.clear();
    if (const char *v = std::getenv("XCDPATH"))
        for (auto &e : split_colon(v))
            if (!e.empty() && e[0] == '/')
                cdpath.push_back(e == "/" || e.back() == '/' ? e : e + "/");
    if (cdpath.empty())
        cdpath.push_back(home_dir());

    xpath.clear();
    const char *pv = std::getenv("XPATH");
    if (!pv)
        pv = std::getenv("PATH");
    if (pv) {
        for (auto &e : split_colon(pv)) {
            if (e.empty() || e[0] != '/')
                continue;
            if (!is_dir(e)) {
                xpath.push_back(e);
                continue;
            }
            char *r = realpath(e.c_str(), nullptr);
            xpath.push_back(r ? r : e);
            std::free(r);
        }
    } else {
        xpath.push_back(startdir);
    }

    installdir = pl_exedir();
    if (installdir.empty()) {
        for (auto &d : xpath) {
            std::string p = d + "/" + argv0;
            if (access(p.c_str(), X_OK) == 0) {
                installdir = d + "/";
                break;
            }
        }
    }
    if (installdir.empty())
        installdir = "/usr/local/share/vorta/";
    xhome = installdir;
}

void xfini()
{
    static bool once = false;
    if (once) {
        xfsession_reset();
        return;
    }
    once = true;
    cmd_init();
    xfsession_reset();
    if (batch)
        impcmscp = 0;
    macro_path.clear();
    macro_path.push_back(startdir);
    for (auto &d : xpath)
        macro_path.push_back(d);
    xfhash_path();
    xfkeys_init();
    xfrexx_init();
    xfdialog_init();
    xfcmdline("synonym quit 4 command aquit");
}

std::string with_vorta_ext(const std::string &name)
{
    size_t slash = name.rfind('/');
    size_t dot = name.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash))
        return name + ".vorta";
    return name;
}

namespace {

// Looks for a profile as it stands, in the home directory, the user's data
// folder and the program's folder, and runs the first found; false when
// none is. `asked`: the name was given with -p.
bool run_profile(const std::string &name, bool asked, const std::vector<std::string> &argv)
{
    std::vector<std::string> tries;
    tries.push_back(name);
    if (name[0] != '/') {
        tries.push_back(home_dir() + name);
        tries.push_back(xfuser_data() + name);
        tries.push_back(installdir + name);
    }
    for (auto &t : tries) {
        struct stat st;
        if (stat(t.c_str(), &st) != 0 || S_ISDIR(st.st_mode))
            continue;
        // The default profile of the current folder is the folder's, not
        // the user's: it runs only where the user trusts it.
        if (!asked && &t == &tries[0] && !xftrusted(t))
            continue;
        xfcmdline("hash " + t);
        size_t s = t.rfind('/');
        std::string base = s == std::string::npos ? t : t.substr(s + 1);
        base = base.substr(0, base.rfind('.'));
        std::string args;
        for (size_t i = 1; i < argv.size(); i++)
            args += (args.empty() ? "" : " ") + argv[i];
        std::string cmd = "macro " + base + (args.empty() ? "" : " " + args);
        // EXTRACT /profile/ tells the first one that ran, the common one.
        if (profile_name.empty()) {
            profile_name = t;
            profile_args = args;
        }
        profile_pending = 1;
        xfcom2(cmd);
        if (cmd_rc != 0) {
            xfmsgs("Warning: unable to complete profile \"" + t + "\"", 1);
            if (xv)
                xv->cmdline.clear();
        }
        return true;
    }
    return false;
}

} // namespace

// The profile: the one asked for with -p, or else the common profile
// followed by the profile of the vocabulary the editor starts in (the ISPF
// one under -pdf, the XEDIT one otherwise), so that a user keeps what both
// vocabularies share in one file and what differs in the other.
void xfprofile(const std::string &asked, const std::vector<std::string> &argv)
{
    if (!asked.empty()) {
        std::string name = with_vorta_ext(asked);
        if (!run_profile(name, true, argv)) {
            std::fprintf(stderr, "File %s not found.\n", name.c_str());
            std::exit(1);
        }
        return;
    }
    run_profile("profile.vorta", false, argv);
    run_profile(opt_pdf ? "prof_pdf.vorta" : "prof_xedit.vorta", false, argv);
}

bool ends_with(const std::string &s, const char *tail)
{
    size_t n = std::strlen(tail);
    return s.size() >= n && s.compare(s.size() - n, n, tail) == 0;
}

// The messages of a batch run, and every ".@messages" file appended to.
void save_batch_messages()
{
    if (xv && !xv->msgs.empty()) {
        std::string dir = startdir + "/vorta";
        mkdir(dir.c_str(), 0777);
        std::string path = dir + "/@messages";
        FILE *f = std::fopen(path.c_str(), "w");
        if (!f) {
            std::fprintf(stderr, "VORTA: Unable to save \"%s\" (%s).\n", path.c_str(), std::strerror(errno));
            return;
        }
        for (auto &m : xv->msgs)
            std::fprintf(f, "%s\n", m.c_str());
        std::fclose(f);
    }
    for (xfile *fl : files) {
        size_t s = fl->fname.rfind('/');
        std::string base = s == std::string::npos ? fl->fname : fl->fname.substr(s + 1);
        if (!ends_with(base, ".@messages"))
            continue;
        FILE *f = std::fopen(fl->fname.c_str(), "a");
        const char *eol = fl->eol_kind == 0 ? "\r\n" : "\n";
        if (!f) {
            std::fprintf(stderr, "VORTA: Unable to save \"%s\" (%s).\n", fl->fname.c_str(), std::strerror(errno));
            return;
        }
        time_t t = time(nullptr);
        struct tm tmv;
        localtime_r(&t, &tmv);
        std::fprintf(f, "****** VORTA batch run %2.2d/%2.2d/%4.4d %2.2d:%2.2d:%2.2d%s", tmv.tm_mday,
                     tmv.tm_mon + 1, tmv.tm_year + 1900, tmv.tm_hour, tmv.tm_min, tmv.tm_sec, eol);
        for (int32_t i = 0; i < fl->nbli(); i++) {
            std::fwrite(fl->lines[i].text, 1, (size_t)fl->lines[i].len, f);
            std::fputs(eol, f);
        }
        if (std::fclose(f) != 0) {
            std::fprintf(stderr, "VORTA: Unable to save \"%s\" (%s).\n", fl->fname.c_str(), std::strerror(errno));
            return;
        }
    }
}

// A batch run in which a save failed ends with status 1 and says so; what it
// could not save is kept as a ".check" copy rather than dropped at the end.
int batch_failed()
{
    std::fprintf(stderr, "vorta: %d save%s failed\n", save_failures, save_failures == 1 ? "" : "s");
    for (int i = 0; i < nbfiles(); i++) {
        if (files[(size_t)i]->chgcount == 0)
            continue;
        xfsetfile(i);
        std::string where;
        if (xfwrite_check(where) == 0)
            std::fprintf(stderr, "vorta: changes to %s kept in %s\n", xf->fname.c_str(), where.c_str());
        else
            std::fprintf(stderr, "vorta: changes to %s lost: no copy could be written\n", xf->fname.c_str());
    }
    return 1;
}

// The dialog boxes' font of -dy_font; one that cannot be had leaves the
// default in place, as a bad text font does.
void dialogfont(const std::vector<std::string> &words)
{
    for (size_t i = 1; i + 1 < words.size(); i++) {
        if (words[i] != "-dy_font" && words[i] != "/dy_font")
            continue;
        if (asffont_dy(words[i + 1].c_str()) != 0)
            std::fprintf(stderr, "Unable to load font %s\n", words[i + 1].c_str());
        return;
    }
}

} // namespace

std::string xfuser_data()
{
    const char *xd = std::getenv("XDG_DATA_HOME");
    std::string data = xd && *xd ? std::string(xd) : home_dir() + ".local/share";
    return data + "/vorta/";
}

void xfexit(int code)
{
    (void)code; // the status through this route is 0, unless a batch lost a save
    xfendsig_point(); // a signal that came last still has its rescue
    std::fflush(stdout);
    int status = batch && save_failures > 0 ? batch_failed() : 0;
    xfsession_end();
    std::exit(status);
}

int xfmain(int argc, char **argv)
{
    raw_argv.assign(argv, argv + argc);
    xfcrash_install();
    xfmem_install();
    xfendsig_install();
    // Characters come in and go out in the user's character set; numbers
    // are always written the one way.
    std::setlocale(LC_CTYPE, "");
    std::setlocale(LC_NUMERIC, "C");
    xftimeload_start();
    const char *tl = std::getenv("TIMELOAD");
    timeload = tl && std::strcmp(tl, "ON") == 0;

    size_t quotes = 0;
    for (auto &w : raw_argv)
        for (char ch : w)
            quotes += ch == '"';
    if (quotes % 2)
        die("Invalid \" count on invocation.");
    std::vector<std::string> words = regroup(raw_argv);
    std::string prog = words.empty() ? "xed" : words[0];
    if (size_t s = prog.rfind('/'); s != std::string::npos)
        prog = prog.substr(s + 1);
    if (prog == "xeda")
        die("xeda: not supported");
    bool fli = prog == "fli";

    build_paths(words.empty() ? "xed" : words[0]);
    options o = parse_options(words);
    regrouped_argv = words;

    // The screen: none in batch; the headless layer for a key script; the
    // window when a display answers (and -term does not say otherwise); the
    // terminal with -term, or when standard input is one. With none of these
    // there is no screen to be had, and the run goes on without one: its
    // start-up commands run, their messages go to standard error.
    fs_plat *layer = nullptr;
    bool window = false; // the window, which has no terminal keyboard file
    size_t nopts = words.size() - o.files.size();
    bool term = false;
    for (size_t i = 1; i < nopts; i++)
        term = term || words[i] == "-term";
    std::vector<char *> av;
    for (auto &w : words)
        av.push_back(const_cast<char *>(w.c_str()));
    av.push_back(nullptr);
    if (!batch && o.keys.empty() && !term && xfwindow_named()) {
        std::string why = "the display does not answer";
        // When the display goes, every changed file is kept as a ".check" copy.
        layer = xfwindow_open((int)words.size(), av.data(), xfendsig_rescue, why);
        window = layer != nullptr;
        if (!layer)
            std::fprintf(stderr, "vorta: no window (%s): the terminal is used\n", why.c_str());
    }
    if (!layer && !batch && o.keys.empty() && (term || isatty(0))) {
        std::string why = "no terminal layer in this program";
        // When the terminal goes, every changed file is kept as a ".check" copy.
        layer = fs_plat_term ? fs_plat_term(xfendsig_rescue, why) : nullptr;
        if (!layer) {
            std::fprintf(stderr, "vorta: can't initialize\n%s\n", why.c_str());
            std::exit(1);
        }
    } else if (!batch && !o.keys.empty()) {
        layer = fs_plat_null(24, 80);
    }
    if (layer) {
        if (fsinit((int)words.size(), av.data(), layer) < 0)
            die("vorta: can't initialize");
        fsinit2();
        dialogfont(words);
        asfmousemode("WINDOWS"); // the left button places the cursor
        as_retreport = 1;        // RETURN splits lines: the read must hear of it
        if (!o.keys.empty() && fs_null_script(layer, o.keys.c_str(), stdout) != 0)
            die("vorta: can't initialize");
    }
    xfini();
    if (!layer)
        impcmscp = 0; // with no screen the shell is never implicit
    if (layer) {
        if (o.keys.empty() && !window)
            xfkeys_term(); // the terminal's keyboard file
        xfgeom(true);
        if (!pageok)
            die("vorta: too small window");
        xfwin_start();
    }

    xfsyn_defaults(); // before the profile, which may read other rules
    bool run_profile = !o.no_profile && (!batch || !o.profile.empty());
    if (run_profile)
        xfprofile(o.profile, raw_argv);

    // In batch the start-up commands go to the macro stack, else to the queue.
    std::vector<std::string> &start = batch ? macro_stack_cmds : cmd_queue;
    for (auto &f : o.files) {
        // `fli dir` lists the directory: an edit of it would only fail and
        // take the queued list with it.
        struct stat sb;
        if (fli && stat(f.c_str(), &sb) == 0 && S_ISDIR(sb.st_mode))
            continue;
        start.push_back("xed \"" + f + "\"");
    }
    for (auto &c : o.cmds)
        start.push_back(c);
    if (!o.filec.empty()) {
        std::string name = o.filec;
        for (auto &ch : name)
            if (ch == '\\')
                ch = '/';
        std::string full = with_vorta_ext(name);
        macro_stack_cmds.push_back("hash " + full);
        size_t s = full.rfind('/');
        std::string base = s == std::string::npos ? full : full.substr(s + 1);
        macro_stack_cmds.push_back(base.substr(0, base.rfind('.')));
    }
    if (fli && !batch) {
        std::string all;
        for (auto &f : o.files)
            all += (all.empty() ? "" : " ") + f;
        cmd_queue.push_back("f " + all);
    }
    if (layer)
        xfx();

    std::string cmd;
    cmd_source = 2;
    while (xfnext_queued(cmd)) {
        xfendsig_point();
        xfcycle_begin(); // each command is one undo group and one AUTOSAVE step
        xfcmdline(cmd);
        xfcycle_end();
    }

    if (batch)
        save_batch_messages();
    else if (xv)
        for (auto &m : xv->msgs)
            std::fprintf(stderr, "vorta: %s\n", m.c_str());
    xfexit(0);
}
