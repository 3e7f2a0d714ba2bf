// Paths of the running program.
#include "platform/platform.h"

#include <climits>
#include <unistd.h>

std::string pl_exedir()
{
    char buf[PATH_MAX];
    ssize_t n = readlink("/proc/self/exe", buf, sizeof buf - 1);
    if (n <= 0)
        return "";
    std::string p(buf, (size_t)n);
    size_t s = p.rfind('/');
    return s == std::string::npos ? "" : p.substr(0, s + 1);
}
