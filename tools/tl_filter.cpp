// Filters: lines given to a command on its input and its output taken back,
// both at once so that neither side waits on a full pipe, within a time
// limit.
#include "tools/tools.h"

#include "platform/platform.h"

#include <cerrno>
#include <ctime>

namespace {

long long now_ms()
{
    timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return (long long)t.tv_sec * 1000 + t.tv_nsec / 1000000;
}

} // namespace

int tl_filter(const std::string &command, const std::vector<std::string> &in, long timeout_ms,
              std::vector<std::string> &out)
{
    std::string feed;
    for (const std::string &l : in) {
        feed += l;
        feed += '\n';
    }
    pl_child c;
    if (int e = pl_spawn(pl_shell_argv(command), PL_FEED | PL_CAPTURE | PL_GROUP, c))
        return e == EMFILE || e == ENFILE ? TL_FILTER_PIPE : TL_FILTER_START;
    size_t given = 0;
    std::string got;
    long long end = timeout_ms > 0 ? now_ms() + timeout_ms : -1;
    bool eof = false;
    while (!eof || !pl_child_done(c)) {
        if (given < feed.size() && c.in >= 0)
            given += pl_child_write(c, feed.data() + given, feed.size() - given);
        if (given >= feed.size())
            pl_child_close_input(c);
        if (!eof) {
            pl_child_read(c, got, SIZE_MAX);
            eof = c.out < 0;
        }
        long long left = end < 0 ? 200 : end - now_ms();
        if (left <= 0) {
            pl_child_release(c);
            return TL_FILTER_TIMEOUT;
        }
        pollfd p[2];
        int n = 0;
        if (c.out >= 0)
            p[n++] = {c.out, POLLIN, 0};
        if (c.in >= 0)
            p[n++] = {c.in, POLLOUT, 0};
        int wait = (int)(left < 50 ? left : 50);
        if (n > 0)
            poll(p, (nfds_t)n, wait);
        else if (!pl_child_done(c)) {
            timespec t{0, 5 * 1000 * 1000};
            nanosleep(&t, nullptr);
        }
    }
    pl_child_release(c);
    if (c.status != 0)
        return TL_FILTER_FAILED;
    out.clear();
    size_t b = 0, nl;
    while ((nl = got.find('\n', b)) != std::string::npos) {
        out.emplace_back(got, b, nl - b);
        b = nl + 1;
    }
    if (b < got.size())
        out.emplace_back(got, b);
    return TL_FILTER_OK;
}
