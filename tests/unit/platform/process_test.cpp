// The child-process service: pipes both ways without a deadlock, every byte
// of a large output, the exit status and the signal of a killed child, a
// start that fails, and a child that never ends being stopped with all it
// started.
#include <gtest/gtest.h>

#include "platform/platform.h"

#include <csignal>
#include <ctime>
#include <string>
#include <unistd.h>

namespace {

// Reads everything until the child's output ends, waiting on the pipe.
std::string drain(pl_child &c)
{
    std::string got;
    while (c.out >= 0) {
        pollfd p{c.out, POLLIN, 0};
        poll(&p, 1, 1000);
        pl_child_read(c, got, SIZE_MAX);
    }
    while (!pl_child_done(c))
        usleep(1000);
    return got;
}

TEST(Process, FeedsAndReadsMoreThanAPipeHolds)
{
    // Four megabytes each way: neither side may wait for the other.
    std::string in;
    for (int i = 0; i < 200000; i++)
        in += "line " + std::to_string(i) + "\n";
    pl_child c;
    ASSERT_EQ(pl_spawn(pl_shell_argv("cat"), PL_FEED | PL_CAPTURE | PL_GROUP, c), 0);
    size_t given = 0;
    std::string got;
    while (c.out >= 0) {
        if (given < in.size())
            given += pl_child_write(c, in.data() + given, in.size() - given);
        else
            pl_child_close_input(c);
        pl_child_read(c, got, 1 << 16);
        pollfd p[2] = {{c.out, POLLIN, 0}, {c.in, POLLOUT, 0}};
        poll(p, c.in >= 0 ? 2 : 1, 100);
    }
    while (!pl_child_done(c))
        usleep(1000);
    EXPECT_EQ(got, in);
    EXPECT_EQ(c.status, 0);
}

TEST(Process, StatusErrorOutputAndSignal)
{
    pl_child c;
    ASSERT_EQ(pl_spawn(pl_shell_argv("echo out; echo err >&2; exit 3"), PL_CAPTURE, c), 0);
    EXPECT_EQ(drain(c), "out\nerr\n");
    EXPECT_EQ(c.status, 3);
    EXPECT_EQ(c.signal, 0);

    ASSERT_EQ(pl_spawn(pl_shell_argv("kill -KILL $$"), PL_CAPTURE, c), 0);
    drain(c);
    EXPECT_EQ(c.signal, SIGKILL);
    EXPECT_EQ(c.status, 128 + SIGKILL);

    ASSERT_EQ(pl_spawn(pl_shell_argv("no-such-command-here"), PL_CAPTURE, c), 0);
    drain(c);
    EXPECT_EQ(c.status, 127);
}

// The mask of a "SigXxx:" line of a process's status.
unsigned long long statusmask(const std::string &status, const std::string &name)
{
    size_t at = status.find(name + ":\t");
    return at == std::string::npos ? ~0ULL : std::stoull(status.substr(at + name.size() + 2, 16), nullptr, 16);
}

TEST(Process, ChildStartsWithUsualSignalsAndItsOwnFiles)
{
    // What the editor changed for itself does not reach the child: signals
    // blocked or ignored here are open and default there. The shell's own
    // mask is not looked at: it blocks everything for a moment around each
    // fork; the program it starts shows what it was given.
    sigset_t block, old;
    sigemptyset(&block);
    sigaddset(&block, SIGUSR1);
    sigprocmask(SIG_BLOCK, &block, &old);
    void (*was)(int) = signal(SIGPIPE, SIG_IGN);
    pl_child c;
    int rc = pl_spawn(pl_shell_argv("cat /proc/self/status; cat; echo err >&2"), PL_CAPTURE | PL_ERRPIPE, c);
    sigprocmask(SIG_SETMASK, &old, nullptr);
    signal(SIGPIPE, was);
    ASSERT_EQ(rc, 0);
    ASSERT_GE(c.err, 0);
    std::string out = drain(c);  // cat read /dev/null: nothing added
    EXPECT_EQ(statusmask(out, "SigBlk"), 0u);
    EXPECT_EQ(statusmask(out, "SigIgn") & (1ULL << (SIGPIPE - 1)), 0u);
    EXPECT_EQ(out.find("err"), std::string::npos);
    char buf[16] = {};
    pollfd ready{c.err, POLLIN, 0};
    poll(&ready, 1, 5000);
    ssize_t n = read(c.err, buf, sizeof buf - 1);
    EXPECT_EQ(std::string(buf, n > 0 ? size_t(n) : 0), "err\n");
    close(c.err);
}

TEST(Process, StartFailureLeavesNothing)
{
    pl_child c;
    EXPECT_NE(pl_spawn({"/no/such/program"}, PL_CAPTURE, c), 0);
    EXPECT_EQ(c.pid, -1);
    EXPECT_EQ(c.out, -1);
    EXPECT_NE(pl_spawn({}, 0, c), 0);
}

TEST(Process, StopEndsTheWholeGroup)
{
    // The shell starts a grandchild that ignores the polite request; both go.
    pl_child c;
    ASSERT_EQ(pl_spawn(pl_shell_argv("trap '' TERM; sleep 30 & echo $!; wait"), PL_CAPTURE | PL_GROUP, c), 0);
    std::string got;
    while (got.find('\n') == std::string::npos) {
        pollfd p{c.out, POLLIN, 0};
        poll(&p, 1, 1000);
        ASSERT_GE(pl_child_read(c, got, SIZE_MAX), 0);
    }
    pid_t grandchild = (pid_t)std::stol(got);
    timespec t0;
    clock_gettime(CLOCK_MONOTONIC, &t0);
    pl_child_release(c);
    EXPECT_EQ(c.pid, -1);
    EXPECT_NE(c.signal, 0);
    // The grandchild, reparented, is gone soon after.
    bool gone = false;
    for (int i = 0; i < 200 && !gone; i++) {
        gone = kill(grandchild, 0) != 0;
        usleep(10000);
    }
    EXPECT_TRUE(gone);
}

TEST(Process, RunWaitGivesStatusAndHonoursStop)
{
    pl_child c;
    ASSERT_EQ(pl_run_wait(pl_shell_argv("exit 7"), 0, nullptr, c), 0);
    EXPECT_EQ(c.status, 7);
    static int asked;
    asked = 0;
    // The sleep is the child itself: with no group of its own, only the
    // child is stopped, and a sleep left behind would hold the output.
    ASSERT_EQ(pl_run_wait(pl_shell_argv("exec sleep 30"), 0, [] { return ++asked > 2; }, c), 0);
    EXPECT_NE(c.signal, 0);
}

void count_ready(void *ctx) { ++*static_cast<int *>(ctx); }

TEST(Process, WatchedDescriptorsRunTheirCall)
{
    int p[2];
    ASSERT_EQ(pipe(p), 0);
    int n = 0;
    pl_watch_add(p[0], count_ready, &n);
    pl_watch_add(p[0], count_ready, &n); // added twice, watched once
    EXPECT_EQ(pl_watch_count(), 1u);
    EXPECT_FALSE(pl_watch_poll(0));
    ASSERT_EQ(write(p[1], "x", 1), 1);
    EXPECT_TRUE(pl_watch_poll(100));
    EXPECT_EQ(n, 1);
    pl_watch_remove(p[0]);
    EXPECT_EQ(pl_watch_count(), 0u);
    EXPECT_FALSE(pl_watch_poll(0));
    close(p[0]);
    close(p[1]);
}

} // namespace
