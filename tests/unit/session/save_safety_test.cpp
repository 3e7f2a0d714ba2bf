// What a save may never do: lose the disk text or the last good backup when
// the write fails, write over what another program changed, replace a
// device, or make a copy that is more open than the file or that follows a
// link someone planted.
#include "save_fixture.h"
#include "session/xffiles.h"
#include "platform/platform.h"

#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Runs `body` in a child whose files may not grow past `limit` bytes and
// returns its exit status: the limit must not reach the test itself.
template <class Body> int with_size_limit(rlim_t limit, Body body)
{
    pid_t pid = fork();
    if (pid == 0) {
        pl_endsig_install(nullptr); // as the editor starts: a write past the limit fails
        struct rlimit rl = {limit, limit};
        setrlimit(RLIMIT_FSIZE, &rl);
        _exit(body());
    }
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

TEST_F(Save, FailedWriteAndItsRetryLoseNothing)
{
    spit(path("f.txt%"), "older text\n");
    load("old text\n");
    std::string big(200000, 'n');
    int rc = with_size_limit(65536, [&] {
        change(0, big);
        int fails = save_failures;
        run("save");
        bool first = cmd_rc == 1 && last_message == "..... Unable to save file";
        run("save"); // the retry: still too big
        bool second = cmd_rc == 1 && save_failures == fails + 2;
        bool kept = nbli() == 1 && xf->lines[0].len == 200000 && xf->chgcount != 0;
        return first && second && kept ? 0 : 1;
    });
    EXPECT_EQ(rc, 0) << "no SIGXFSZ death, the failure reported, the text still in the editor";
    EXPECT_TRUE(slurp(path("f.txt")) == "old text\n") << "the file keeps its old text";
    EXPECT_TRUE(slurp(path("f.txt%")) == "older text\n") << "the old backup is not replaced by a broken file";
    for (auto &e : {"f.txt", "f.txt%"})
        EXPECT_TRUE(there(path(e)));
}

TEST_F(Save, FailedWriteInPlacePutsTheOldTextBack)
{
    load("old text\n");
    ASSERT_EQ(link(path("f.txt").c_str(), path("g.txt").c_str()), 0);
    std::string big(200000, 'n');
    int rc = with_size_limit(65536, [&] {
        change(0, big);
        run("save");
        return cmd_rc == 1 ? 0 : 1;
    });
    EXPECT_EQ(rc, 0);
    EXPECT_TRUE(slurp(path("f.txt")) == "old text\n") << "the old text is put back";
    EXPECT_TRUE(slurp(path("g.txt")) == "old text\n") << "the other name sees the same text";
    struct stat a, b;
    stat(path("f.txt").c_str(), &a);
    stat(path("g.txt").c_str(), &b);
    EXPECT_EQ(a.st_ino, b.st_ino) << "still one file";
    EXPECT_EQ(slurp(path("f.txt%")), "old text\n");
}

TEST_F(Save, ChangedOnDiskIsNotOverwrittenInBatch)
{
    load("mine\n");
    change(0, "edited");
    // Another program writes within the same second and keeps the size:
    // only the nanoseconds tell.
    struct stat st;
    stat(path("f.txt").c_str(), &st);
    spit(path("f.txt"), "thei\n");
    struct timespec ts[2] = {st.st_mtim, st.st_mtim};
    ts[1].tv_nsec = (ts[1].tv_nsec + 1) % 1000000000;
    utimensat(AT_FDCWD, path("f.txt").c_str(), ts, 0);
    int fails = save_failures;
    run("save");
    EXPECT_EQ(cmd_rc, 1);
    EXPECT_EQ(save_failures, fails + 1);
    EXPECT_NE(last_message.find("changed on disk since it was loaded"), std::string::npos) << last_message;
    EXPECT_EQ(slurp(path("f.txt")), "thei\n");
    run("ssave");
    EXPECT_EQ(cmd_rc, 0) << "the forcing form writes anyway";
    EXPECT_EQ(slurp(path("f.txt")), "edited\n");
    change(0, "again");
    run("save");
    EXPECT_EQ(cmd_rc, 0) << "after our own save the disk is ours again";
}

TEST_F(Save, DeletedOrCreatedOnDiskAsks)
{
    load("mine\n");
    change(0, "edited");
    unlink(path("f.txt").c_str());
    run("save");
    EXPECT_EQ(cmd_rc, 1);
    EXPECT_NE(last_message.find("deleted on disk"), std::string::npos) << last_message;
    EXPECT_FALSE(there(path("f.txt"))) << "a deleted file is not silently made again";
    run("ffile");
    EXPECT_EQ(slurp(path("f.txt")), "edited\n");

    ASSERT_EQ(xfedit("new.txt"), 0);
    xf->group_open = 1;
    xf_do('i', std::string_view("new"), -1, "test"); // before the first line
    spit(path("new.txt"), "someone else's\n");
    run("save");
    EXPECT_EQ(cmd_rc, 1);
    EXPECT_EQ(slurp(path("new.txt")), "someone else's\n");
}

TEST_F(Save, DevicesAndPipesAreNeverReplaced)
{
    ASSERT_EQ(mkfifo(path("pipe.txt").c_str(), 0600), 0);
    load("text\n");
    run("save pipe");
    EXPECT_EQ(cmd_rc, 2) << "another existing name is refused in batch";
    run("ssave pipe");
    EXPECT_EQ(cmd_rc, 1);
    struct stat st;
    ASSERT_EQ(lstat(path("pipe.txt").c_str(), &st), 0);
    EXPECT_TRUE(S_ISFIFO(st.st_mode)) << "the pipe is still a pipe";
    EXPECT_FALSE(there(path("pipe.txt%")));
    // Nor is a pipe loaded: with no writer the read would never end.
    EXPECT_EQ(xfedit("pipe.txt"), 1);
    EXPECT_EQ(last_message, "..... Not an editable file");
}

TEST_F(Save, CopiesAreNeverMoreOpenThanTheFile)
{
    load("secret\n");
    chmod(path("f.txt").c_str(), 0600);
    change(0, "secret 2");
    run("save");
    struct stat st;
    ASSERT_EQ(stat(path("f.txt").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
    ASSERT_EQ(stat(path("f.txt%").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);

    // A hard-linked file's backup is a copy: it takes the file's mode too.
    ASSERT_EQ(link(path("f.txt").c_str(), path("h.txt").c_str()), 0);
    change(0, "secret 3");
    run("save");
    ASSERT_EQ(stat(path("f.txt%").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
    EXPECT_EQ(slurp(path("f.txt%")), "secret 2\n");
}

TEST_F(Save, ReloadBackupKeepsTheFilesMode)
{
    load("as loaded\n");
    chmod(path("f.txt").c_str(), 0600);
    spit(path("f.txt"), "their text\n");
    ASSERT_TRUE(xfreload_all());
    EXPECT_EQ(xf->lines[0].len, 10) << "the new text is in";
    EXPECT_EQ(slurp(path("f.txt%")), "as loaded\n");
    struct stat st;
    ASSERT_EQ(stat(path("f.txt%").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
}

TEST_F(Save, PlantedLinksAreReplacedNotFollowed)
{
    spit(path("victim"), "precious\n");
    load("text\n");
    ASSERT_EQ(symlink(path("victim").c_str(), path("f.txt%").c_str()), 0);
    ASSERT_EQ(symlink(path("victim").c_str(), path("f.txt.check").c_str()), 0);
    change(0, "changed");
    run("save");
    EXPECT_EQ(cmd_rc, 0);
    EXPECT_EQ(slurp(path("victim")), "precious\n") << "the backup went through a planted link";
    change(0, "changed again");
    std::string where;
    ASSERT_EQ(xfwrite_check(where), 0);
    EXPECT_EQ(where, path("f.txt.check"));
    EXPECT_EQ(slurp(path("victim")), "precious\n") << "the recovery copy went through a planted link";
    EXPECT_EQ(slurp(path("f.txt.check")), "changed again\n");
}

TEST_F(Save, RecoveryCopyFallsBackToThePrivateFolder)
{
    // A name that leaves no room for ".check" in its folder.
    std::string state = dir + "/state";
    setenv("XDG_STATE_HOME", state.c_str(), 1);
    std::string name(250, 'n');
    load("text\n", name);
    chmod(path(name).c_str(), 0640);
    change(0, "changed");
    std::string where;
    int e = xfwrite_check(where);
    unsetenv("XDG_STATE_HOME");
    ASSERT_EQ(e, 0);
    EXPECT_EQ(where.rfind(state + "/vorta/recovery/", 0), 0u) << where;
    EXPECT_EQ(slurp(where), "changed\n");
    struct stat st;
    ASSERT_EQ(stat(where.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0640u) << "the file's mode, no wider";
    ASSERT_EQ(stat((state + "/vorta/recovery").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0700u);
    // A second rescue of the same file keeps the first copy.
    std::string again;
    ASSERT_EQ(xfwrite_check(again), 0);
    EXPECT_NE(again, where);
    EXPECT_TRUE(there(where));
}

} // namespace
