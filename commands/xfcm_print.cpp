// Printing: PRINTFile prints the file (or the lines of a target), PRINTScreen
// the page as it is shown, through the printing service; with no printer
// set up the PDF goes beside the file for PRINTFile and in the current
// folder for PRINTScreen.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "commands/xfsettings.h"
#include "fields/fields.h"
#include "fields/plat.h"
#include "platform/platform.h"
#include "session/xed.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace {

int say(const std::string &text, int level, int rc)
{
    xfmsgs(text, level);
    cmd_rc = rc;
    return 1;
}

// `screen`: the window may draw the page itself rather than its text.
int print(const std::vector<std::string> &lines, const std::string &title, const std::string &dir,
          const std::string &base, mode_t mode, bool utf8, bool screen = false)
{
    pl_print_job job;
    if (fs_plat *layer = batch ? nullptr : fs_layer())
        job.render = [layer, &lines, &title, screen] { return layer->pdf(screen ? nullptr : &lines, title); };
    job.lines = lines;
    job.title = title;
    job.dir = dir;
    job.base = base;
    job.mode = mode;
    job.utf8 = utf8;
    std::string message;
    int rc = pl_print(job, message);
    return say(message, rc ? 1 : 0, rc);
}

} // namespace

int xfcm_printfile(const xfcmd &c)
{
    xftrace("Commande xfcm_printfile");
    if (!xf)
        return say("..... No current file", 1, 1);
    std::string_view ops = xftrim(c.ops());
    int32_t first = 0;
    int64_t n = nbli();
    if (!ops.empty()) {
        int rc = xftarget_lines(ops, true, first, n);
        if (rc != 0)
            return 1;
        if (!xftrim(ops).empty())
            return xfbad();
    }
    std::vector<std::string> lines;
    for (int64_t i = 0; i < n; i++) {
        int32_t li = first + (int32_t)i;
        if (li >= 0 && li < nbli())
            lines.emplace_back(xf->lines[li].text, (size_t)xf->lines[li].len);
    }
    xfname_parts p = xfsplit_name(xf->fname);
    std::string dir = xf->fname.substr(0, xf->fname.rfind('/'));
    struct stat st;
    mode_t mode = stat(xf->fname.c_str(), &st) == 0 ? (st.st_mode & 0666) : 0644;
    std::string base = p.fn + (p.ft.empty() ? "" : "." + p.ft);
    return print(lines, base, dir.empty() ? "/" : dir, base, mode | 0600, xf->utf8);
}

int xfcm_printscreen(const xfcmd &c)
{
    xftrace("Commande xfcm_printscreen");
    if (!xftrim(c.ops()).empty())
        return xfbad();
    char *buf = nullptr;
    size_t size = 0;
    FILE *mem = open_memstream(&buf, &size);
    if (!mem)
        return say("..... Unable to read the screen", 1, 1);
    fs_dump(mem, 0);
    std::fclose(mem);
    std::string shown(buf ? buf : "", size);
    std::free(buf);
    if (shown.empty())
        return say("..... No screen to print", 1, 1);
    std::vector<std::string> lines;
    for (size_t at = 0; at < shown.size();) {
        size_t e = shown.find('\n', at);
        if (e == std::string::npos)
            e = shown.size();
        lines.push_back(shown.substr(at, e - at));
        at = e + 1;
    }
    return print(lines, "screen", startdir, "screen", 0644, true, true);
}
