// Running a file by its type: a program or script with its run bit starts
// by itself; anything else goes to the desktop's opener, xdg-open.
#include "flist/flist.h"
#include "platform/platform.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// The system's words for an error, line ends, blanks and a final dot cut.
std::string reason(int err)
{
    std::string r = strerror(err);
    while (!r.empty() && std::strchr("\r\n .", r.back()))
        r.pop_back();
    return r.substr(0, 240);
}

} // namespace

bool fl_runnable(const std::string &path)
{
    struct stat sb;
    return stat(path.c_str(), &sb) == 0 && S_ISREG(sb.st_mode) && (sb.st_mode & 0111) &&
           access(path.c_str(), X_OK) == 0;
}

int fl_run_file(const std::string &path, bool open_action)
{
    struct stat sb;
    if (stat(path.c_str(), &sb) != 0) {
        fl_say(".... Cannot run it: " + reason(errno));
        return 1;
    }
    std::vector<std::string> argv;
    if (fl_runnable(path))
        argv = {path};
    else if (open_action)
        argv = {"xdg-open", path};
    else {
        fl_say(".... Do not know how to run this file");
        return 1;
    }
    if (int err = pl_start_detached(argv, fl_dirname(path))) {
        fl_say(".... Cannot run it: " + reason(err));
        return 1;
    }
    return 0;
}
