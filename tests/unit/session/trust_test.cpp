// The trust of folders whose profile or reprofile macro would run on its
// own: the user's list of trusted folders, the remembered agreements, and
// the decision itself where no page can ask (a batch run).
#include "tempdir.h"

#include "platform/platform.h"
#include "session/xftrust.h"

#include <climits>
#include <sys/stat.h>

namespace {

std::string real(const std::string &p)
{
    char buf[PATH_MAX];
    return realpath(p.c_str(), buf) ? std::string(buf) : std::string("<" + p + " missing>");
}

void write(const std::string &path, const std::string &text)
{
    std::ofstream(path, std::ios::binary) << text;
}

class Trust : public TempDirTest {
protected:
    void SetUp() override
    {
        TempDirTest::SetUp();
        for (const char *sub : {"/config", "/config/vorta", "/data", "/data/vorta", "/state", "/repo"})
            ASSERT_EQ(mkdir((dir + sub).c_str(), 0700), 0) << sub;
        setenv("XDG_CONFIG_HOME", (dir + "/config").c_str(), 1);
        setenv("XDG_DATA_HOME", (dir + "/data").c_str(), 1);
        setenv("XDG_STATE_HOME", (dir + "/state").c_str(), 1);
        batch = true; // nobody to ask
    }
    void TearDown() override
    {
        batch = false;
        for (const char *v : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME"})
            unsetenv(v);
        TempDirTest::TearDown();
    }
    // Whether the file may run, and what the error stream said meanwhile.
    bool trusted(const std::string &path, std::string &said)
    {
        testing::internal::CaptureStderr();
        bool r = xftrusted(path);
        said = testing::internal::GetCapturedStderr();
        return r;
    }
};

TEST_F(Trust, ListNamesExactlyTheFoldersItHolds)
{
    for (const char *sub : {"/repo/sub", "/repo2", "/elsewhere"})
        ASSERT_EQ(mkdir((dir + sub).c_str(), 0700), 0);
    ASSERT_EQ(symlink("repo", (dir + "/link").c_str()), 0);
    std::string repo = real(dir + "/repo");
    std::string list = "# folders of mine\n\n   " + dir + "/repo/  \r\n" + dir + "/elsewhere";
    EXPECT_TRUE(xftrust_listed(list, repo)) << "blanks, a trailing / and CR LF around the entry";
    EXPECT_TRUE(xftrust_listed(list, real(dir + "/elsewhere"))) << "a last line with no line feed";
    EXPECT_FALSE(xftrust_listed(list, real(dir + "/repo/sub"))) << "a folder below a listed one";
    EXPECT_FALSE(xftrust_listed(list, real(dir + "/repo2"))) << "a name that only starts alike";
    EXPECT_FALSE(xftrust_listed(list, real(dir))) << "the folder above";
    EXPECT_TRUE(xftrust_listed("~/link\n", repo)) << "~/ is the home folder; a link counts as its folder";
    EXPECT_FALSE(xftrust_listed("#" + dir + "/repo\n", repo)) << "a comment";
    EXPECT_FALSE(xftrust_listed(" # " + dir + "/repo\n", repo)) << "a comment after blanks";
    EXPECT_FALSE(xftrust_listed("repo\n./repo\n", repo)) << "relative entries, even from the current folder";
    EXPECT_FALSE(xftrust_listed("", repo));
    EXPECT_FALSE(xftrust_listed(dir + "/gone\n", "")) << "a missing folder is no folder";
}

TEST_F(Trust, ListLivesUnderTheConfigFolder)
{
    EXPECT_EQ(xftrust_list_path(), dir + "/config/vorta/trusted");
    unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(xftrust_list_path(), dir + "/.config/vorta/trusted");
    setenv("XDG_CONFIG_HOME", "relative", 1);
    EXPECT_EQ(xftrust_list_path(), dir + "/.config/vorta/trusted") << "a relative XDG folder is ignored";
}

TEST(TrustEntry, HoldsTheDigestAndThePathAndMatchesWholeLines)
{
    std::string e = xftrust_entry("abc", "/r/profile.vorta");
    EXPECT_EQ(e, "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad /r/profile.vorta");
    EXPECT_TRUE(xftrust_agreed("x\n" + e + "\ny\n", e));
    EXPECT_TRUE(xftrust_agreed(e, e)) << "a last line with no line feed";
    EXPECT_FALSE(xftrust_agreed(e + ".old\n", e)) << "a longer path";
    EXPECT_FALSE(xftrust_agreed(xftrust_entry("abc", "/r/profile.vorta.x") + "\n", e));
    EXPECT_FALSE(xftrust_agreed(xftrust_entry("abc", "/other/profile.vorta") + "\n", e))
        << "the same text elsewhere";
    EXPECT_FALSE(xftrust_agreed(xftrust_entry("abd", "/r/profile.vorta") + "\n", e)) << "another text";
    EXPECT_FALSE(xftrust_agreed("", e));
}

TEST_F(Trust, WithNobodyToAskOnlyTrustedFoldersAndAgreementsRun)
{
    std::string file = dir + "/repo/profile.vorta", repo = real(dir + "/repo"), said;
    write(file, "say hi\n");
    EXPECT_FALSE(trusted(file, said));
    EXPECT_EQ(said, "vorta: profile.vorta in " + repo + " not run: the folder is not trusted (list it in " +
                        dir + "/config/vorta/trusted)\n");
    EXPECT_FALSE(trusted(file, said));
    EXPECT_EQ(said, "") << "said once a session";

    // An agreement remembered for this text at this place.
    std::string state = pl_state_dir("");
    ASSERT_FALSE(state.empty());
    write(state + "trusted-files", xftrust_entry("say hi\n", repo + "/profile.vorta") + "\n");
    EXPECT_TRUE(trusted(file, said));
    write(file, "say bye\n");
    EXPECT_FALSE(trusted(file, said)) << "a changed file is a new question";
    EXPECT_NE(said.find("not run"), std::string::npos) << said;

    // The folder listed.
    write(dir + "/config/vorta/trusted", repo + "\n");
    EXPECT_TRUE(trusted(file, said));
    EXPECT_EQ(said, "");
}

TEST_F(Trust, TheUsersOwnFoldersAreTrusted)
{
    std::string said;
    write(dir + "/profile.vorta", "say home\n");
    EXPECT_TRUE(trusted("profile.vorta", said)) << "the current folder is the home folder";
    write(dir + "/data/vorta/reprofile.vorta", "say data\n");
    EXPECT_TRUE(trusted(dir + "/data/vorta/reprofile.vorta", said));
    EXPECT_EQ(said, "");
}

TEST_F(Trust, ALinkOutOfAnUntrustedFolderBorrowsNoTrust)
{
    std::string said;
    write(dir + "/profile.vorta", "say home\n");
    ASSERT_EQ(symlink((dir + "/profile.vorta").c_str(), (dir + "/repo/profile.vorta").c_str()), 0);
    EXPECT_FALSE(trusted(dir + "/repo/profile.vorta", said));
    EXPECT_NE(said.find("in " + real(dir + "/repo") + " not run"), std::string::npos) << said;
}

TEST_F(Trust, AnUnreadableOrSpecialFileIsSkippedWithoutWaiting)
{
    std::string said, fifo = dir + "/repo/reprofile.vorta";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    // A digest that never ended would hang the start; the pipe is refused.
    EXPECT_FALSE(trusted(fifo, said));
    EXPECT_NE(said.find("not run"), std::string::npos) << said;
}

} // namespace
