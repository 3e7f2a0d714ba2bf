// Code found in a folder the user did not choose (a profile or a reprofile
// macro in the current folder, as a cloned repository may carry one) runs
// only when that folder is trusted: the home folder, a folder listed in the
// user's `trusted` file, or a file the user agreed to run on the page. That
// agreement is kept with the file's digest, so a file that changes is asked
// about again. A profile named on the command line and a macro the user
// calls by name are the user's own choice and never come here.
#include "session/xed.h"
#include "session/xfpage.h"
#include "commands/commands.h"
#include "fields/fields.h"
#include "platform/platform.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <set>
#include <sstream>
#include <unistd.h>

namespace {

std::set<std::string> told; // files skipped in this session: said once

std::string real(const std::string &p)
{
    char buf[PATH_MAX];
    return realpath(p.c_str(), buf) ? std::string(buf) : std::string();
}

std::string config_list()
{
    const char *x = std::getenv("XDG_CONFIG_HOME");
    const char *h = std::getenv("HOME");
    std::string base = x && *x == '/' ? std::string(x) : std::string(h ? h : "") + "/.config";
    return base + "/vorta/trusted";
}

std::string slurp(const std::string &p)
{
    std::ifstream in(p, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

// One absolute folder a line; blank lines and # comments are skipped, and
// a leading ~/ stands for the home folder.
bool listed(const std::string &dir)
{
    std::istringstream in(slurp(config_list()));
    const char *h = std::getenv("HOME");
    for (std::string line; std::getline(in, line);) {
        size_t a = line.find_first_not_of(" \t"), b = line.find_last_not_of(" \t\r");
        if (a == std::string::npos || line[a] == '#')
            continue;
        std::string d = line.substr(a, b - a + 1);
        if (d.rfind("~/", 0) == 0 && h)
            d = std::string(h) + d.substr(1);
        if (!d.empty() && d[0] == '/' && real(d) == dir)
            return true;
    }
    return false;
}

std::string agreed_list() { return pl_state_dir("") + "trusted-files"; }

bool agreed(const std::string &entry)
{
    std::istringstream in(slurp(agreed_list()));
    for (std::string line; std::getline(in, line);)
        if (line == entry)
            return true;
    return false;
}

void remember(const std::string &entry)
{
    if (pl_state_dir("").empty())
        return;
    int fd = open(agreed_list().c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0)
        return;
    std::string line = entry + "\n";
    (void)!pl_write_all(fd, line.data(), line.size());
    close(fd);
}

// On the page the user is asked; ENTER runs the file and remembers it.
bool ask(const std::string &name)
{
    xfmsgs("..... ENTER runs " + name + " from this folder, now and later; another key skips it", 2);
    xfdisplay();
    xfread(0);
    return aid == 0;
}

} // namespace

bool xftrusted(const std::string &path)
{
    std::string file = real(path);
    if (file.empty())
        return false;
    std::string dir = file.substr(0, file.rfind('/'));
    const char *h = std::getenv("HOME");
    if (dir.empty() || (h && real(h) == dir) || listed(dir))
        return true;
    std::string entry = pl_sha256(slurp(file)) + " " + file;
    if (agreed(entry))
        return true;
    if (told.count(entry))
        return false;
    told.insert(entry);
    std::string name = file.substr(file.rfind('/') + 1);
    if (!batch && fs_layer() && xv && ask(name)) {
        remember(entry);
        xfmsgs("", 2);
        return true;
    }
    std::string why = name + " in " + dir + " not run: the folder is not trusted (list it in " +
                      config_list() + ")";
    if (!batch && fs_layer() && xv)
        xfmsgs("..... " + why, 1);
    else
        std::fprintf(stderr, "vorta: %s\n", why.c_str());
    return false;
}
