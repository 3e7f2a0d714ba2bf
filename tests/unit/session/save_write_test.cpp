// Saving: backups by rename or copy, links, permissions, other names, record
// endings, failed writes, autosave, and the recovery saves.
#include <gtest/gtest.h>
#include "save_fixture.h"

#include "commands/commands.h"
#include "session/xed.h"

#include <csignal>
#include <fcntl.h>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

int xfrestart_write();

namespace {

TEST_F(Save, BackupHoldsTheOldTextAndModeIsKept)
{
    load("one\ntwo\n");
    chmod(path("f.txt").c_str(), 0640);
    change(0, "ONE");
    run("save");
    EXPECT_EQ(cmd_rc, 0);
    EXPECT_EQ(slurp(path("f.txt")), "ONE\ntwo\n");
    EXPECT_EQ(slurp(path("f.txt%")), "one\ntwo\n");
    struct stat st;
    ASSERT_EQ(stat(path("f.txt").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0640u) << "a renamed backup must not leave default permissions";
    EXPECT_EQ(xf->chgcount, 0);
    EXPECT_EQ(xf->mtime, (int64_t)st.st_mtime);
}

TEST_F(Save, HardLinksKeepTheirIdentity)
{
    load("a\n");
    ASSERT_EQ(link(path("f.txt").c_str(), path("g.txt").c_str()), 0);
    struct stat before, after;
    stat(path("f.txt").c_str(), &before);
    change(0, "b");
    run("save");
    stat(path("f.txt").c_str(), &after);
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_EQ(slurp(path("g.txt")), "b\n") << "both names see the new text";
    EXPECT_EQ(slurp(path("f.txt%")), "a\n") << "the backup is a copy";
}

TEST_F(Save, PreserveLinksCopiesEvenForOneName)
{
    load("a\n");
    struct stat before, after;
    stat(path("f.txt").c_str(), &before);
    preservlinks = 1;
    change(0, "b");
    run("save");
    stat(path("f.txt").c_str(), &after);
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_EQ(slurp(path("f.txt%")), "a\n");
}

TEST_F(Save, SymbolicLinkIsWrittenThrough)
{
    spit(path("target.txt"), "t\n");
    ASSERT_EQ(symlink("target.txt", path("ln.txt").c_str()), 0);
    ASSERT_EQ(xfedit("ln.txt"), 0);
    change(0, "through");
    // Save under the link's own name: the target takes the text.
    xf->fname = path("ln.txt");
    EXPECT_EQ(xfwrite(false, false), 0);
    struct stat st;
    ASSERT_EQ(lstat(path("ln.txt").c_str(), &st), 0);
    EXPECT_TRUE(S_ISLNK(st.st_mode)) << "the link stays a link";
    EXPECT_EQ(slurp(path("target.txt")), "through\n");
    EXPECT_EQ(slurp(path("target.txt%")), "t\n");
}

TEST_F(Save, ALinkToItselfIsRefused)
{
    ASSERT_EQ(symlink("loop.txt", path("loop.txt").c_str()), 0);
    load("x\n", "x.txt");
    xf->fname = path("loop.txt");
    EXPECT_EQ(xfwrite(false, false), 2);
}

TEST_F(Save, OtherNameLeavesTheFileAlone)
{
    load("a\r\nb\r\n");
    change(1, "B");
    int changes = xf->chgcount;
    run("save other.txt");
    EXPECT_EQ(cmd_rc, 0);
    EXPECT_EQ(slurp(path("other.txt")), "a\r\nB\r\n");
    EXPECT_EQ(xf->fname, path("f.txt"));
    EXPECT_EQ(xf->chgcount, changes);
    run("save other.txt");
    EXPECT_EQ(cmd_rc, 2) << "overwriting another file needs a forced form";
    run("ssave other");
    EXPECT_EQ(cmd_rc, 0) << "fn alone keeps the extension";
    run("save = dat");
    EXPECT_TRUE(there(path("f.dat")));
    run("save f.txt");
    EXPECT_EQ(xf->chgcount, 0) << "its own name is a plain save";
    run("save a b c d");
    EXPECT_EQ(cmd_rc, 5);
    EXPECT_EQ(last_message, "..... Invalid parameters");
}

TEST_F(Save, RecordEndings)
{
    load("a\nb\n");
    run("dossave");
    EXPECT_EQ(slurp(path("f.txt")), "a\r\nb\r\n");
    EXPECT_EQ(xf->eol_kind, 1) << "DOSSave does not change the file's kind";
    run("save");
    EXPECT_EQ(slurp(path("f.txt")), "a\nb\n");
    load("x\r\n\x1a", "eof.txt");
    run("save");
    EXPECT_EQ(slurp(path("eof.txt")), "x\r\n\x1a\n") << "the end-of-file mark ends in LF alone";
}

TEST_F(Save, BinaryComesBackByteForByte)
{
    std::string data;
    for (int i = 0; i < 3000; i++)
        data += (char)((i * 7919) % 256);
    for (std::string end : {std::string(""), std::string("\n"), std::string("\r\n  ")}) {
        std::string name = "bin" + std::to_string(end.size()) + ".dat";
        load(data + end, name);
        ASSERT_EQ(xf->bin, 1);
        run("save");
        EXPECT_EQ(slurp(path(name)), data + end) << "ending of " << end.size() << " bytes";
    }
}

TEST_F(Save, WriteProtectedOnDiskIsRefused)
{
    load("a\n");
    change(0, "b");
    chmod(path("f.txt").c_str(), 0444);
    run("save");
    EXPECT_EQ(cmd_rc, 1);
    EXPECT_EQ(slurp(path("f.txt")), "a\n") << "the disk file is untouched";
    EXPECT_FALSE(there(path("f.txt%")));
    run("file");
    EXPECT_EQ(cmd_rc, 3);
    EXPECT_EQ(nbfiles(), 1);
}

// Read-only decided from the mode bits for a user who is not the owner:
// run in a child as an ordinary user.
TEST_F(Save, ModeBitsForAnotherUser)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root to become another user";
    chmod(dir.c_str(), 0777);
    spit(path("theirs.txt"), "t\n");
    spit(path("shared.txt"), "s\n");
    chmod(path("theirs.txt").c_str(), 0644);
    chmod(path("shared.txt").c_str(), 0666);
    pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        if (setgid(65534) != 0 || setuid(65534) != 0)
            _exit(2);
        int bad = 0;
        if (xfedit("theirs.txt") != 0 || xf->rw != 0 ||
            last_message != "..... File \"" + path("theirs.txt") + "\" is read-only - RW OFF")
            bad |= 4;
        if (xfedit("shared.txt") != 0 || xf->rw != 1)
            bad |= 8;
        _exit(bad);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

// Random files through load and save: a binary file must come back byte for
// byte whatever it holds; a text file that is already in the form the writer
// gives (records ended, no trailing blanks) too.
TEST_F(Save, RandomFilesRoundTrip)
{
    unsigned seed = 12345;
    auto next = [&] { return (seed = seed * 1103515245u + 12345u) >> 16; };
    for (int round = 0; round < 60; round++) {
        std::string bin(1, '\0');
        for (unsigned n = next() % 3000; n > 0; n--)
            bin += (char)(next() % 256);
        std::string name = "r" + std::to_string(round) + ".dat";
        load(bin, name);
        run("save");
        ASSERT_EQ(slurp(path(name)), bin) << "binary round " << round;

        const char *eol = round % 2 ? "\r\n" : "\n";
        std::string text;
        for (unsigned n = next() % 50 + 1; n > 0; n--) {
            std::string l;
            for (unsigned k = next() % 40; k > 0; k--)
                l += "ab \t~x"[next() % 6];
            while (!l.empty() && l.back() == ' ')
                l.pop_back();
            text += l + eol;
        }
        name = "t" + std::to_string(round) + ".txt";
        load(text, name);
        run("save");
        ASSERT_EQ(slurp(path(name)), text) << "text round " << round;
    }
}

TEST_F(Save, BackupOffRemovesTheBackup)
{
    load("a\n");
    backup_on = 0;
    run("save");
    EXPECT_FALSE(there(path("f.txt%")));
    EXPECT_EQ(slurp(path("f.txt")), "a\n");
}

TEST_F(Save, KsaveKeepsTheDiskTime)
{
    load("a\n");
    struct timespec ts[2] = {{1000000000, 0}, {1000000000, 0}};
    utimensat(AT_FDCWD, path("f.txt").c_str(), ts, 0);
    xf->mtime = 1000000000;
    xf->disk_ns = 1000000000LL * 1000000000; // as if loaded with that time
    change(0, "b");
    run("ksave");
    struct stat st;
    stat(path("f.txt").c_str(), &st);
    EXPECT_EQ(st.st_mtime, 1000000000);
    EXPECT_EQ(slurp(path("f.txt")), "b\n");
}

TEST_F(Save, FileLeavesTheRingOnlyWhenSaved)
{
    load("a\n");
    load("b\n", "g.txt");
    run("file");
    EXPECT_EQ(cmd_rc, 0);
    EXPECT_EQ(nbfiles(), 1);
    xf->rw = 0;
    run("file");
    EXPECT_EQ(cmd_rc, 1);
    EXPECT_EQ(nbfiles(), 1);
}

TEST_F(Save, VerifySaveTakesTheVerifyColumns)
{
    load("abcdef\nxy\n");
    xv->perfile[(size_t)xfidx].verify[0] = 2;
    xv->perfile[(size_t)xfidx].verify[1] = 4;
    run("verify_ssave cols.txt");
    EXPECT_EQ(slurp(path("cols.txt")), "bcd\ny\n");
}

// A write cut short by a file-size limit: the old text stays in the backup
// and the new one in the ring.  Run in a child, which reports by status.
TEST_F(Save, AutosaveEveryNChanges)
{
    load("a\nb\n");
    autosave_count = 5;
    std::string name = xfautoname(xfidx);
    std::string flat = dir + "/";
    for (auto &c : flat)
        if (c == '/')
            c = '_';
    EXPECT_EQ(name, "./autosave" + std::to_string(getpid()) + flat + "_f.txt_");
    for (int i = 0; i < 4; i++) {
        xfcycle_begin();
        change(0, "x" + std::to_string(i));
        xfcycle_end();
    }
    EXPECT_FALSE(there(name));
    xfcycle_begin();
    change(1, "fifth");
    xfcycle_end();
    ASSERT_TRUE(there(name));
    EXPECT_EQ(slurp(name), "x3\nfifth\n");
    EXPECT_EQ(last_message, "..... Autosaved as " + name);
    EXPECT_EQ(xf->chgsince, 0);
    EXPECT_NE(xf->chgcount, 0) << "the file itself stays changed";
    run("save");
    EXPECT_FALSE(there(name)) << "a save removes the autosave copy";
}

TEST_F(Save, AutosaveCommand)
{
    run("autosave");
    EXPECT_EQ(last_message, "..... is OFF ./");
    run("autosave 5 " + dir);
    EXPECT_EQ(autosave_count, 5);
    EXPECT_EQ(autosave_dir, dir + "/");
    run("autosave");
    EXPECT_EQ(last_message, "..... is 5 " + dir + "/");
    run("autosave 5 " + dir + "/none");
    EXPECT_EQ(last_message, "..... Invalid directory");
    run("autosave off");
    EXPECT_EQ(autosave_count, 0);
}

// The memory wrapper's failure path, in a child with a small address space:
// every changed file must be found again as ".check" with all its changes.
TEST_F(Save, OutOfMemoryLeavesCheckCopies)
{
#if defined(XED_SANITIZED)
    GTEST_SKIP() << "the address sanitizer needs more address space than the limit leaves";
#endif
    load("a1\na2\n", "a.txt");
    load("b1\n", "b.txt");
    load("c1\n", "c.txt");
    pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        xfsetfile(0);
        xf->group_open = 1;
        xf_do('r', std::string_view("A1"), 0, "test");
        xf_do('i', std::string_view("A3"), 1, "test");
        xfsetfile(2);
        xf_do('d', nullptr, 0, 1, 1, nullptr, "test");
        xfsetfile(1);
        struct rlimit rl = {1ul << 31, 1ul << 31};
        setrlimit(RLIMIT_AS, &rl);
        for (;;)
            (void)!xfmalloc((size_t)1 << 30);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(slurp(path("a.txt.check")), "A1\na2\nA3\n");
    EXPECT_EQ(slurp(path("c.txt.check")), "");
    EXPECT_TRUE(there(path("c.txt.check")));
    EXPECT_FALSE(there(path("b.txt.check"))) << "an unchanged file is not copied";
    EXPECT_EQ(slurp(path("a.txt")), "a1\na2\n") << "the file itself is untouched";
}

TEST_F(Save, InternalErrorRescuesChangedFiles)
{
    load("x1\n", "x.txt");
    load("y1\n", "y.txt");
    pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        change(0, "Y1");
        xfinterr(7);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_NE(WEXITSTATUS(status), 0);
    EXPECT_EQ(slurp(path("y.txt.check")), "Y1\n");
    EXPECT_FALSE(there(path("x.txt.check")));
    EXPECT_EQ(slurp(path("y.txt")), "y1\n");
}

TEST_F(Save, RestartListsTheRing)
{
    load("x\n", "one.txt");
    load("y\n", "m.vorta");
    load("z\n", "two.txt");
    xv->perfile[0].curline = 4;
    xfsetfile(0);
    ASSERT_EQ(xfrestart_write(), 0);
    std::string want = "xed \"" + path("one.txt") + "\":5\n" + "xed \"" + path("m.vorta") + "\":0\n" +
                       "macro \"m\"\n" + "xed \"" + path("two.txt") + "\":0\n" + "xed \"" +
                       path("one.txt") + "\"\n";
    EXPECT_EQ(slurp(path("restart.x")), want);
    ASSERT_EQ(xfrestart_write(), 0);
    EXPECT_EQ(slurp(path("restart.x%")), want) << "the previous list is kept aside";
}

} // namespace
