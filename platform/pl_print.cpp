// Printing: a text goes to the printing system's `lp` when a printer is set
// up (the printing system names a default destination, or PRINTER or
// LPDEST names one); with none it is written as a PDF document under a name
// no file has yet, and the message says where.
#include "platform/platform.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace {

std::string trim(std::string_view s)
{
    size_t b = s.find_first_not_of(" \t\r\n");
    if (b == std::string_view::npos)
        return "";
    size_t e = s.find_last_not_of(" \t\r\n");
    return std::string(s.substr(b, e - b + 1));
}

// What the printing system's lpstat says with one option: its status (or
// minus an errno value, -ENOENT when it is not installed) and its output.
// A printing system that does not answer is not waited for long.
int lpstat(const char *option, std::string &out)
{
    pl_run_opts o;
    o.with_stderr = false;
    o.max_out = 1 << 20;
    o.timeout_ms = 10000;
    return pl_run_capture({"lpstat", option}, out, o);
}

std::string env_printer()
{
    for (const char *v : {"PRINTER", "LPDEST"})
        if (const char *p = std::getenv(v); p && *p)
            return p;
    return "";
}

// The printing system's own default destination, "" none.
std::string system_default()
{
    std::string out;
    if (lpstat("-d", out) != 0)
        return "";
    size_t c = out.find("destination:");
    if (c == std::string::npos)
        return "";
    std::string rest = trim(std::string_view(out).substr(c + 12));
    return rest.substr(0, rest.find_first_of(" \t\n"));
}

// The printer to use, or "" when none is set up: the one the environment
// names comes first, as it does for lp itself.
std::string default_printer()
{
    std::string p = env_printer();
    return p.empty() ? system_default() : p;
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

int to_pdf(const pl_print_job &job, std::string &message)
{
    std::string pdf = job.render ? job.render() : std::string(), path;
    if (pdf.empty())
        pdf = pl_text_pdf(job.lines, job.title, job.utf8);
    int fd = new_pdf(job.dir, job.base, job.mode, path);
    if (fd < 0) {
        // A folder we cannot write to: the user's state folder instead.
        std::string alt = pl_state_dir("print");
        if (!alt.empty())
            fd = new_pdf(alt.back() == '/' ? alt.substr(0, alt.size() - 1) : alt, job.base, job.mode, path);
    }
    if (fd < 0) {
        message = "..... Unable to write the PDF file for " + job.title + ": " + std::strerror(-fd);
        return 1;
    }
    int e = pl_write_all(fd, pdf.data(), pdf.size());
    if (close(fd) != 0 && e == 0)
        e = errno;
    if (e != 0) {
        unlink(path.c_str());
        message = "..... Unable to write " + path + ": " + std::strerror(e);
        return 1;
    }
    message = "..... No printer set up; written to " + path;
    return 0;
}

int to_printer(const std::string &dest, const pl_print_job &job, std::string &message)
{
    std::string dir = pl_state_dir("print"), tmp;
    int fd = dir.empty() ? -1 : pl_create_temp(dir + (dir.back() == '/' ? "" : "/") + "job", 0600, tmp);
    if (fd < 0) {
        message = "..... Unable to make a copy to print";
        return 1;
    }
    std::string text;
    for (const std::string &l : job.lines)
        text += l + "\n";
    int e = pl_write_all(fd, text.data(), text.size());
    close(fd);
    std::string out, err;
    pl_run_opts o;
    o.max_out = 65536;
    int rc = e ? -e : pl_run_capture({"lp", "-d", dest, "-t", job.title, "--", tmp}, out, o, &err);
    unlink(tmp.c_str());
    if (rc == -ENOENT) {
        message = "..... The lp command is not installed (Debian package cups-client)";
        return 1;
    }
    if (rc != 0) {
        std::string why = trim(err.substr(0, err.find('\n')));
        message = "..... The printer refused the job" + (why.empty() ? std::string() : ": " + why);
        return 1;
    }
    message = "..... Printed on " + dest;
    return 0;
}

} // namespace

int pl_print(const pl_print_job &job, std::string &message)
{
    std::string dest = job.dest.empty() ? default_printer() : job.dest;
    return dest.empty() ? to_pdf(job, message) : to_printer(dest, job, message);
}

int pl_print_queues(std::vector<std::string> &names, std::string &dflt)
{
    names.clear();
    dflt.clear();
    std::string out;
    int rc = lpstat("-e", out);
    if (rc == -ENOENT)
        return rc;
    // A printing system that is down answers with an error and no names.
    size_t a = 0;
    while (rc == 0 && a < out.size()) {
        size_t e = out.find('\n', a);
        if (e == std::string::npos)
            e = out.size();
        std::string name = trim(std::string_view(out).substr(a, e - a));
        if (!name.empty())
            names.push_back(name);
        a = e + 1;
    }
    // The one a print with no destination goes to; a system that did not
    // list its queues is not asked again.
    dflt = rc == 0 ? default_printer() : env_printer();
    return 0;
}
