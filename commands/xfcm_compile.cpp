// Compiling and stepping through errors: COMPIle runs a command on the
// current file with its output in a shell window, NEXTError finds the next
// output line that a rule of the source's type calls an error and shows the
// erring line of its source, CLEARErrors removes the labels that hold those
// lines through later edits.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "commands/xfsettings.h"
#include "fields/fields.h"
#include "session/xed.h"
#include "session/xfpage.h"
#include "tools/tools.h"

#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::vector<tl_rule> rules;   // the table as last read
bool rules_read = false;      // read at the first compile, or by -l
std::string out_name;         // the output file of the last compile
std::string src_name;         // the file compiled
std::string src_ext;          // its extension then, "" none
std::vector<int32_t> view_pos; // per view: the output line of the current error
// Labels the last compile set: the file's session number and the label.
std::vector<std::pair<int32_t, std::string>> labels;

int fail(int msg)
{
    xfmsg(msg, 1);
    cmd_rc = 1;
    return 1;
}

int find_file(const std::string &name)
{
    for (int i = 0; i < nbfiles(); i++)
        if (files[(size_t)i]->fname == name)
            return i;
    return -1;
}

// A file named in the output, as the ring names it.
std::string full_name(const std::string &name)
{
    if (name.empty())
        return src_name;
    if (name[0] == '/')
        return xfcanon(name);
    char buf[4096];
    std::string cwd = getcwd(buf, sizeof buf) ? buf : ".";
    return xfcanon(cwd + "/" + name);
}

std::string label_of(long line) { return "." + std::to_string(line); }

void clear_labels()
{
    for (auto &[id, name] : labels)
        for (xfile *f : files)
            if (f->fileid == id)
                for (size_t k = 0; k < f->points.size(); k++)
                    if (f->points[k].name == name) {
                        f->points.erase(f->points.begin() + (long)k);
                        break;
                    }
    labels.clear();
}

// Reads the rule file: 0, or 1 after its message.
int read_rules(bool listed)
{
    const char *home = std::getenv("HOME");
    std::string path;
    for (const std::string &p : tl_rules_places(home ? home : "", xhome))
        if (access(p.c_str(), F_OK) == 0) {
            path = p;
            break;
        }
    // A file that failed is read again at the next compile.
    if (path.empty()) {
        rules_read = true;
        if (listed)
            return fail(103);
        return 0;
    }
    std::string err, detail;
    int r = tl_rules_read(path, rules, err, detail);
    if (r == 1)
        return fail(104);
    if (r == 2) {
        xfmsgs(err, 1);
        if (!detail.empty())
            std::fprintf(stderr, "vorta: %s\n..... %s\n", err.c_str(), detail.c_str());
        cmd_rc = 1;
        return 1;
    }
    rules_read = true;
    return 0;
}

int32_t &pos_of_view()
{
    if (view_pos.size() <= (size_t)xvidx)
        view_pos.resize((size_t)xvidx + 1, -1);
    return view_pos[(size_t)xvidx];
}

// Marks the line an error names, in a file already in the ring, so that it
// is found again after edits above it.
void mark(const tl_hit &hit)
{
    if (hit.line <= 0)
        return;
    int fi = find_file(full_name(hit.file));
    if (fi < 0)
        return;
    int was = xfidx;
    xfsetfile(fi);
    if (hit.line - 1 < nbli()) {
        std::string l = label_of(hit.line);
        xfpoint_set(l, (int32_t)(hit.line - 1));
        labels.push_back({xf->fileid, l});
    }
    xfsetfile(was);
}

std::string line_text(int oi, int32_t li);

// Marks the errors of the output that name `name` (all of them when empty).
void mark_all(int oi, const std::string &name)
{
    tl_hit hit;
    int32_t n = files[(size_t)oi]->nbli();
    for (int32_t li = 0; li < n; li++)
        if (tl_rules_match(rules, src_ext, line_text(oi, li), hit) && (name.empty() || full_name(hit.file) == name))
            mark(hit);
}

// Shows the error of output line `oli`: its source current in this view,
// the cursor on the erring line, the output's current line at the message.
int error_step(int oi, int32_t oli, const tl_hit &hit)
{
    for (xview *v : views)
        v->perfile[(size_t)oi].curline = oli;
    if (hit.line < 0)
        return fail(107);
    std::string name = full_name(hit.file);
    int fi = find_file(name);
    bool fresh = fi < 0;
    if (fresh) {
        // A name in the output that is no file: nothing is made up for it.
        struct stat st;
        if (stat(name.c_str(), &st) != 0 || !S_ISREG(st.st_mode))
            return fail(22);
        if (xfedit(name) != 0 || (fi = find_file(name)) < 0) {
            cmd_rc = 1;
            return 1;
        }
        // Loaded just now, so unchanged: its errors are marked as the
        // compile would have marked them.
        mark_all(oi, name);
        if ((oi = find_file(out_name)) < 0)
            return fail(139);
    }
    xfswitchto(fi);
    int k = xfpoint_find(label_of(hit.line));
    if (k < 0)
        return fail(166);
    int32_t li = std::max<int32_t>(xf->points[(size_t)k].li, 0);
    curline() = li;
    xfcursor_file(li, 0);
    cmd_rc = 0;
    return 1;
}

// The output file's lines as text, one by one.
std::string line_text(int oi, int32_t li)
{
    const xfline &l = files[(size_t)oi]->lines[li];
    return std::string(l.text, (size_t)l.len);
}

// The walk: from the start (a compile) or behind the current error.
int walk(bool from_start)
{
    int oi = out_name.empty() ? -1 : find_file(out_name);
    if (oi < 0)
        return fail(139);
    int32_t n = files[(size_t)oi]->nbli();
    tl_hit hit;
    if (from_start) {
        clear_labels();
        mark_all(oi, std::string());
        pos_of_view() = -1;
    }
    int32_t start = pos_of_view() + 1;
    for (int32_t li = start; li < n; li++)
        if (tl_rules_match(rules, src_ext, line_text(oi, li), hit)) {
            pos_of_view() = li;
            return error_step(oi, li, hit);
        }
    for (int32_t li = 0; li < std::min(start, n); li++)
        if (tl_rules_match(rules, src_ext, line_text(oi, li), hit)) {
            if (cmd_source == 1)
                xfmsg(23, 0);
            pos_of_view() = li;
            return error_step(oi, li, hit);
        }
    xfmsg(106, 0);
    pos_of_view() = -1;
    cmd_rc = 0;
    return 1;
}

bool plain_file()
{
    if (!xf || xf->fname.empty())
        return false;
    struct stat st;
    return stat(xf->fname.c_str(), &st) != 0 || S_ISREG(st.st_mode);
}

} // namespace

int xfcm_compile(const xfcmd &c)
{
    xftrace("Commande xfcm_compile");
    cmd_rc = 0;
    if (batch || !fs_layer())
        return 1;
    std::string cmd(xftrim(c.ops()));
    if (cmd.empty())
        return xfbad();
    bool listed = cmd.compare(0, 2, "-l") == 0 && (cmd.size() == 2 || cmd[2] == ' ');
    if (listed)
        cmd = std::string(xftrim(std::string_view(cmd).substr(2)));
    if ((!rules_read || listed) && read_rules(listed) != 0)
        return 1;
    if (cmd.empty())
        return 1;
    if (cmd.back() == '&')
        return xfcom2("shell " + cmd), 1;
    if (!plain_file())
        return 1;
    if (xf->chgcount > 0 && xfask("..... The current file has been modified. Do you want to save it? (y/n)", true) &&
        (aid_value == 'y' || aid_value == 'Y')) {
        xfcom2("ssave");
        if (cmd_rc != 0) {
            xfmsgs("..... Unable to save current file", 1);
            cmd_rc = 1;
            return 1;
        }
    }
    src_name = xf->fname;
    src_ext = xfext(src_name);
    if (tl_xshell(cmd, src_name, "compile", true) != 0)
        return 1;
    out_name = xf ? xf->fname : std::string();
    cmd_rc = 0;
    clear_labels();
    return walk(true);
}

int xfcm_nexterror(const xfcmd &)
{
    xftrace("Commande xfcm_nexte");
    cmd_rc = 0;
    return walk(false);
}

int xfcm_clearerrors(const xfcmd &)
{
    xftrace("Commande xfcm_clearerrors");
    clear_labels();
    cmd_rc = 0;
    return 1;
}
