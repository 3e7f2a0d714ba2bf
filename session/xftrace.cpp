// Maintainers' traces: the ring of the last 500 command labels written to
// xed.trace, the TIMELOAD clock lines, the interval timers, and the store
// check that compares every line's length with its text.
#include "session/xed.h"
#include "commands/commands.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <cstring>
#include <ctime>
#include <sys/resource.h>
#include <sys/time.h>

namespace {
constexpr int RING = 500;
const char *ring[RING];    // constant labels, never freed
int ring_w = 0;            // next slot to write
int ring_r = 0;            // oldest slot
bool ring_full = false;    // the write index has wrapped

struct timeval clock0;     // taken at start-up

void hms(char *buf, size_t n)
{
    time_t t = time(nullptr);
    struct tm tmv;
    localtime_r(&t, &tmv);
    std::snprintf(buf, n, "%2.2d:%2.2d:%2.2d", tmv.tm_hour, tmv.tm_min, tmv.tm_sec);
}

int since_start()
{
    struct timeval now;
    gettimeofday(&now, nullptr);
    return (int)(now.tv_sec - clock0.tv_sec);
}
} // namespace

void xftrace(const char *label)
{
    ring[ring_w] = label;
    ring_w = (ring_w + 1) % RING;
    if (ring_w == 0)
        ring_full = true;
    if (ring_full)
        ring_r = ring_w;
}

const char *const *xftrace_ring(int &first, int &count)
{
    first = ring_r;
    count = ring_full ? RING : ring_w;
    return ring;
}

bool xftrace_dump()
{
    // Never written through a link someone left in the folder.
    int fd = open("xed.trace", O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600);
    FILE *f = fd >= 0 ? fdopen(fd, "w") : nullptr;
    if (!f) {
        if (fd >= 0)
            close(fd);
        xfmsgs("..... Unable to create \"xed.trace\"", 1);
        return false;
    }
    int n = ring_full ? RING : ring_w;
    for (int k = 0, i = ring_r; k < n; k++, i = (i + 1) % RING)
        std::fprintf(f, "%s\n", ring[i] ? ring[i] : "");
    std::fclose(f);
    return true;
}

void xftimeload_start() { gettimeofday(&clock0, nullptr); }

void xftimeload(const char *what)
{
    if (!timeload)
        return;
    char t[16];
    hms(t, sizeof t);
    std::printf("%s (%+d) %s\n", t, since_start(), what);
    std::fflush(stdout);
}

void dttime(int stop, int level, const char *text)
{
    struct stamp {
        struct timeval wall;
        double user_ms, sys_ms;
    };
    static stamp levels[10];
    if (level < 0 || level > 9) {
        std::printf("dttime : niveau interdit\n");
        return;
    }
    struct rusage ru;
    getrusage(RUSAGE_SELF, &ru);
    double u = ru.ru_utime.tv_sec * 1000.0 + ru.ru_utime.tv_usec / 1000.0;
    double s = ru.ru_stime.tv_sec * 1000.0 + ru.ru_stime.tv_usec / 1000.0;
    struct timeval now;
    gettimeofday(&now, nullptr);
    if (stop == 0) {
        levels[level] = {now, u, s};
        return;
    }
    stamp &b = levels[level];
    double du = u - b.user_ms, ds = s - b.sys_ms;
    long wall_ms = (now.tv_sec - b.wall.tv_sec) * 1000L + (now.tv_usec - b.wall.tv_usec) / 1000L;
    char t[16];
    hms(t, sizeof t);
    std::printf("%s (%+d) %s: ", t, since_start(), text);
    bool cpu_sec = du > 10000 || ds > 10000;
    if (cpu_sec) {
        du /= 1000;
        ds /= 1000;
    }
    if (wall_ms < 1000)
        std::printf(cpu_sec ? "%.0f/%.0f sec   %d ms" : "%.0f/%.0f ms    %d ms", du, ds, (int)wall_ms);
    else
        std::printf(cpu_sec ? "%.0f/%.0f sec   %d sec" : "%.0f/%.0f ms    %d sec", du, ds,
                    (int)(wall_ms / 1000));
    std::printf("\n");
    std::fflush(stdout);
}

int xfcm_check()
{
    int bad = 0;
    for (int fi = 0; fi < nbfiles(); fi++) {
        xfile *f = files[(size_t)fi];
        for (int32_t i = 0; i < f->nbli(); i++) {
            const xfline &l = f->lines[i];
            int32_t sl = (int32_t)std::strlen(l.text);
            // A shorter C string is a binary line holding NUL bytes: fine as
            // long as the recorded length ends on the terminating NUL.
            bool ok = sl == l.len || (sl < l.len && l.text[l.len] == 0);
            if (!ok) {
                std::fprintf(stderr, "VORTA: internal error on line %d : lentr = %d   strlen = %d\n",
                             i, l.len, sl);
                std::fprintf(stderr, "%s\n", l.text);
                bad++;
            }
        }
    }
    if (bad) {
        xfmsg(29, 1);
        xftrace_dump();
    }
    return bad;
}
