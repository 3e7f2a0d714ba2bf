// Platform services with no screen: the digest that identifies a trusted
// file, the creation of files beside the user's that must never go through
// a planted link or over an existing name, and the private state folder.
#include <gtest/gtest.h>

#include "platform/platform.h"

#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

TEST(Sha256, KnownAnswers)
{
    EXPECT_EQ(pl_sha256(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(pl_sha256("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(pl_sha256("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    EXPECT_EQ(pl_sha256(std::string(1000000, 'a')),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Sha256, LengthsAroundTheBlockEdges)
{
    // Where the padding needs a second block, and where a block is full.
    const struct {
        size_t n;
        const char *digest;
    } cases[] = {
        {55, "85528b5baff5639cb8e7daca79d085ac29ac0978e873ed7527158616b2b6c379"},
        {56, "f8ce2f8d6990c639668fe404262f35ed72d8bb145ad6bae786af7284447386df"},
        {63, "9b49777003a4143d8c3f4d3002eb631c6bda8b030a3ccc87f8a21d5f61c89e87"},
        {64, "ee8e658590c9a5e119400a774415a01db104de1ee6e2c29ec69aa73ef46544d2"},
        {65, "2b6c3f7f12b1b12fc5409626dc4e5302d8d37082cbeddea7755eac43aba039c8"},
        {119, "c8bc8a6e9626586bb888ad131d44ed2bd37fc608e902904ade3c566c4208e6ca"},
        {120, "77a2d49d72a11e41678c51f8f0cb67f5cb570f30370c3aeffe266a0d1ee43209"},
    };
    for (auto &c : cases)
        EXPECT_EQ(pl_sha256(std::string(c.n, 'q')), c.digest) << c.n << " bytes";
}

class Files : public ::testing::Test {
protected:
    std::string dir;
    void SetUp() override
    {
        char t[] = "/tmp/xed-platform.XXXXXX";
        ASSERT_NE(mkdtemp(t), nullptr);
        dir = t;
    }
    void TearDown() override { (void)!system(("rm -rf '" + dir + "'").c_str()); }
};

TEST_F(Files, NewFilesNeverGoThroughLinksOrOverNames)
{
    std::string victim = dir + "/victim", link = dir + "/f.check";
    ASSERT_EQ(symlink(victim.c_str(), link.c_str()), 0);
    EXPECT_EQ(pl_create_new(link, 0600), -EEXIST) << "a dangling link is not followed to make its target";
    struct stat st;
    EXPECT_NE(lstat(victim.c_str(), &st), 0);
    int fd = pl_create_new(dir + "/plain", 0600);
    ASSERT_GE(fd, 0);
    close(fd);
    EXPECT_EQ(pl_create_new(dir + "/plain", 0600), -EEXIST);

    std::string tmp;
    fd = pl_create_temp(dir + "/" + std::string(200, 'n'), 0640, tmp);
    ASSERT_GE(fd, 0) << "a long name still gets a temporary beside it";
    close(fd);
    EXPECT_EQ(tmp.rfind(dir + "/.", 0), 0u) << tmp;
    ASSERT_EQ(stat(tmp.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777 & ~0640u, 0u) << "no wider than asked";
}

TEST_F(Files, StateFolderIsPrivate)
{
    setenv("XDG_STATE_HOME", (dir + "/a/b/state").c_str(), 1);
    std::string d = pl_state_dir("recovery");
    EXPECT_EQ(d, dir + "/a/b/state/vorta/recovery/");
    struct stat st;
    ASSERT_EQ(stat(d.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0700u);
    // A folder others may enter, or a link in its place, is not used.
    chmod((dir + "/a/b/state/vorta").c_str(), 0755);
    EXPECT_EQ(pl_state_dir("recovery"), "");
    setenv("XDG_STATE_HOME", (dir + "/l").c_str(), 1);
    ASSERT_EQ(mkdir((dir + "/elsewhere").c_str(), 0700), 0);
    ASSERT_EQ(mkdir((dir + "/l").c_str(), 0700), 0);
    ASSERT_EQ(symlink((dir + "/elsewhere").c_str(), (dir + "/l/vorta").c_str()), 0);
    EXPECT_EQ(pl_state_dir(""), "");
    unsetenv("XDG_STATE_HOME");
}

} // namespace
