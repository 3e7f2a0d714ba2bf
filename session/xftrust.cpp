// Code found in a folder the user did not choose (a profile or a reprofile
// macro in the current folder, as a cloned repository may carry one) runs
// only when that folder is trusted: the home folder, the user's data folder,
// the program's own folder, a folder listed in the user's `trusted` file, or
// a file the user agreed to run on the page. That agreement is kept with the
// file's digest, so a file that changes is asked about again. A profile named
// on the command line and a macro the user calls by name are the user's own
// choice and never come here.
#include "session/xftrust.h"
#include "session/xed.h"
#include "session/xfpage.h"
#include "commands/commands.h"
#include "fields/fields.h"
#include "platform/platform.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <map>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Answers given in this session, by entry: a file skipped is said once, and
// one the user let run runs again even if it could not be remembered.
std::map<std::string, bool> answered;

constexpr const char *STATE_FILE = "trusted-files"; // in the state folder

std::string real(const std::string &p)
{
    char buf[PATH_MAX];
    return !p.empty() && realpath(p.c_str(), buf) ? std::string(buf) : std::string();
}

// An environment folder that counts: set and absolute, as the XDG rules ask.
std::string absolute_env(const char *name)
{
    const char *v = std::getenv(name);
    return v && *v == '/' ? std::string(v) : std::string();
}

// The whole of a regular file; false for anything else (a pipe or a device
// would never end), or one reached through a link when `nofollow`.
bool read_regular(const std::string &path, std::string &out, bool nofollow)
{
    out.clear();
    int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | (nofollow ? O_NOFOLLOW : 0));
    if (fd < 0)
        return false;
    struct stat st;
    bool ok = fstat(fd, &st) == 0 && S_ISREG(st.st_mode);
    char buf[65536];
    for (ssize_t n; ok && (n = read(fd, buf, sizeof buf)) != 0;) {
        if (n < 0 && errno == EINTR)
            continue;
        ok = n > 0;
        if (ok)
            out.append(buf, (size_t)n);
    }
    close(fd);
    return ok;
}

// Folders that are the user's or the program's own: what is found there
// was put there by the user.
bool own_folder(const std::string &dir)
{
    std::string data = absolute_env("XDG_DATA_HOME");
    std::string home = absolute_env("HOME");
    if (data.empty() && !home.empty())
        data = home + "/.local/share";
    for (const std::string &f : {home, data.empty() ? data : data + "/vorta", installdir})
        if (!f.empty() && real(f) == dir)
            return true;
    return false;
}

std::string remembered()
{
    std::string state = pl_state_dir(""), text;
    if (!state.empty())
        read_regular(state + STATE_FILE, text, true);
    return text;
}

// Appends the agreement to the state file, made 0600 in the private state
// folder, never through a link. A path that would break the file's lines is
// not remembered: that file is asked about again next time.
void remember(const std::string &entry)
{
    for (char ch : entry)
        if ((unsigned char)ch < 32)
            return;
    std::string state = pl_state_dir("");
    if (state.empty())
        return;
    int fd = open((state + STATE_FILE).c_str(),
                  O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600);
    if (fd < 0)
        return;
    struct stat st;
    if (fstat(fd, &st) == 0 && S_ISREG(st.st_mode)) {
        if (st.st_mode & 077)
            (void)!fchmod(fd, 0600);
        std::string line = entry + "\n";
        (void)!pl_write_all(fd, line.data(), line.size());
    }
    close(fd);
}

// On the page the user is asked; one key answers, Y runs the file. The
// folder comes last: a narrow message line cuts it, not the question.
bool user_agrees(const std::string &name, const std::string &dir)
{
    return xv &&
           xfask("..... Y runs " + name + " from an untrusted folder, other keys skip it: " + dir, true) &&
           aid == AS_ONEKEY && (aid_value == 'Y' || aid_value == 'y');
}

// The one line that says a file was skipped and how to trust its folder.
void say_skipped(const std::string &name, const std::string &dir)
{
    std::string list = xftrust_list_path();
    std::string why = name + " in " + dir + " not run: the folder is not trusted (list it in " +
                      (list.empty() ? std::string("$XDG_CONFIG_HOME/vorta/trusted") : list) + ")";
    if (!batch && fs_layer() && xv)
        xfmsgs("..... " + why, 1);
    else
        std::fprintf(stderr, "vorta: %s\n", why.c_str());
}

} // namespace

std::string xftrust_list_path()
{
    std::string base = absolute_env("XDG_CONFIG_HOME");
    if (base.empty()) {
        std::string home = absolute_env("HOME");
        if (home.empty())
            return "";
        base = home + "/.config";
    }
    return base + "/vorta/trusted";
}

bool xftrust_listed(std::string_view list, const std::string &dir)
{
    std::string home = absolute_env("HOME");
    while (!list.empty()) {
        size_t nl = list.find('\n');
        std::string_view line = list.substr(0, nl);
        list.remove_prefix(nl == std::string_view::npos ? list.size() : nl + 1);
        size_t a = line.find_first_not_of(" \t"), b = line.find_last_not_of(" \t\r");
        if (a == std::string_view::npos || line[a] == '#')
            continue;
        std::string d(line.substr(a, b - a + 1));
        if (d.rfind("~/", 0) == 0 && !home.empty())
            d = home + d.substr(1);
        if (d[0] != '/')
            continue;
        std::string r = real(d);
        if (!r.empty() && r == dir)
            return true;
    }
    return false;
}

std::string xftrust_entry(std::string_view content, const std::string &path)
{
    return pl_sha256(std::string(content)) + " " + path;
}

bool xftrust_agreed(std::string_view remembered_text, const std::string &entry)
{
    while (!remembered_text.empty()) {
        size_t nl = remembered_text.find('\n');
        if (remembered_text.substr(0, nl) == entry)
            return true;
        remembered_text.remove_prefix(nl == std::string_view::npos ? remembered_text.size() : nl + 1);
    }
    return false;
}

bool xftrusted(const std::string &path)
{
    // The folder the file was found in decides, not where a link in it
    // leads: a link out of a cloned repository borrows no one's trust.
    size_t s = path.rfind('/');
    std::string name = s == std::string::npos ? path : path.substr(s + 1);
    std::string dir = real(s == std::string::npos ? "." : s == 0 ? "/" : path.substr(0, s));
    if (dir.empty())
        return false;
    std::string list;
    read_regular(xftrust_list_path(), list, false);
    if (own_folder(dir) || xftrust_listed(list, dir))
        return true;
    std::string content;
    bool readable = read_regular(path, content, false);
    std::string entry = xftrust_entry(content, (dir == "/" ? "" : dir) + "/" + name);
    if (readable && xftrust_agreed(remembered(), entry))
        return true;
    if (auto it = answered.find(entry); it != answered.end())
        return it->second;
    bool yes = readable && user_agrees(name, dir);
    answered[entry] = yes;
    if (yes)
        remember(entry);
    else
        say_skipped(name, dir);
    return yes;
}
