// Printing: PRINTFile prints the file (or the lines of a target), PRINTScreen
// the page as it is shown. With a printer set up (the printing system names
// a default destination, or PRINTER names one) the text goes to `lp`; with
// none it is written as a PDF document, beside the file for PRINTFile and in
// the current folder for PRINTScreen, under a name no file has yet, and the
// message says where.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "commands/xfsettings.h"
#include "fields/fields.h"
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

// The printer to use, or "" when none is set up.
std::string printer()
{
    for (const char *v : {"PRINTER", "LPDEST"})
        if (const char *p = std::getenv(v); p && *p)
            return p;
    std::string out;
    pl_run_opts o;
    o.with_stderr = false;
    o.max_out = 4096;
    if (pl_run_capture({"lpstat", "-d"}, out, o) != 0)
        return "";
    size_t c = out.find("destination:");
    if (c == std::string::npos)
        return "";
    std::string_view rest = xftrim(std::string_view(out).substr(c + 12));
    return std::string(rest.substr(0, rest.find_first_of(" \t\n")));
}

// A new file `base` + ".pdf" in `dir` (or base-2.pdf and so on), never
// through a link nor over an existing file. Returns its descriptor.
int new_pdf(const std::string &dir, const std::string &base, mode_t mode, std::string &path)
{
    for (int i = 1; i < 1000; i++) {
        path = dir + "/" + base + (i == 1 ? "" : "-" + std::to_string(i)) + ".pdf";
        int fd = pl_create_new(path, mode);
        if (fd != -EEXIST)
            return fd;
    }
    return -EEXIST;
}

int to_pdf(const std::vector<std::string> &lines, const std::string &title, const std::string &dir,
           const std::string &base, mode_t mode, bool utf8)
{
    std::string pdf = pl_text_pdf(lines, title, utf8), path;
    int fd = new_pdf(dir, base, mode, path);
    if (fd < 0) {
        // A folder we cannot write to: the user's state folder instead.
        std::string alt = pl_state_dir("print");
        if (!alt.empty())
            fd = new_pdf(alt.back() == '/' ? alt.substr(0, alt.size() - 1) : alt, base, mode, path);
    }
    if (fd < 0)
        return say("..... Unable to write the PDF file for " + title + ": " + std::strerror(-fd), 1, 1);
    int e = pl_write_all(fd, pdf.data(), pdf.size());
    if (close(fd) != 0 && e == 0)
        e = errno;
    if (e != 0) {
        unlink(path.c_str());
        return say("..... Unable to write " + path + ": " + std::strerror(e), 1, 1);
    }
    return say("..... No printer set up; written to " + path, 0, 0);
}

int to_printer(const std::string &dest, const std::vector<std::string> &lines, const std::string &title)
{
    std::string dir = pl_state_dir("print"), tmp;
    if (dir.empty())
        return say("..... Unable to make a copy to print", 1, 1);
    int fd = pl_create_temp(dir + (dir.back() == '/' ? "" : "/") + "job", 0600, tmp);
    if (fd < 0)
        return say("..... Unable to make a copy to print", 1, 1);
    std::string text;
    for (const std::string &l : lines)
        text += l + "\n";
    int e = pl_write_all(fd, text.data(), text.size());
    close(fd);
    std::string out, err;
    pl_run_opts o;
    o.max_out = 65536;
    int rc = e ? -e : pl_run_capture({"lp", "-d", dest, "-t", title, "--", tmp}, out, o, &err);
    unlink(tmp.c_str());
    if (rc == -ENOENT)
        return say("..... The lp command is not installed (Debian package cups-client)", 1, 1);
    if (rc != 0) {
        std::string why(xftrim(err.substr(0, err.find('\n'))));
        return say("..... The printer refused the job" + (why.empty() ? std::string() : ": " + why), 1, 1);
    }
    return say("..... Printed on " + dest, 0, 0);
}

int print(const std::vector<std::string> &lines, const std::string &title, const std::string &dir,
          const std::string &base, mode_t mode, bool utf8)
{
    std::string dest = printer();
    return dest.empty() ? to_pdf(lines, title, dir, base, mode, utf8) : to_printer(dest, lines, title);
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
    return print(lines, "screen", startdir, "screen", 0644, true);
}
