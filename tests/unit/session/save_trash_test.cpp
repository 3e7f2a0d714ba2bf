// The recycle bin: deleted files go to the Trash with an info file that
// says where they came from, and names that clash get a number.
#include <gtest/gtest.h>

#include "session/xed.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::string slurp(const std::string &p)
{
    std::ifstream in(p, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

class Trash : public ::testing::Test {
protected:
    std::string dir;
    void SetUp() override
    {
        char t[] = "/tmp/xed-trash.XXXXXX";
        dir = mkdtemp(t);
        setenv("XDG_DATA_HOME", (dir + "/data").c_str(), 1);
        mkdir((dir + "/w").c_str(), 0755);
    }
    void TearDown() override
    {
        unsetenv("XDG_DATA_HOME");
        (void)!std::system(("rm -rf '" + dir + "'").c_str());
    }
    void make(const std::string &name, const std::string &text)
    {
        std::ofstream(dir + "/w/" + name, std::ios::binary) << text;
    }
};

TEST_F(Trash, FileMovesWithItsInfo)
{
    make("a b%.txt", "hello");
    ASSERT_EQ(xfrecycle(dir + "/w/a b%.txt"), 0);
    EXPECT_NE(access((dir + "/w/a b%.txt").c_str(), F_OK), 0);
    EXPECT_EQ(slurp(dir + "/data/Trash/files/a b%.txt"), "hello");
    std::string info = slurp(dir + "/data/Trash/info/a b%.txt.trashinfo");
    EXPECT_EQ(info.rfind("[Trash Info]\nPath=" + dir + "/w/a%20b%25.txt\nDeletionDate=", 0), 0u) << info;
    EXPECT_EQ(info.size(), std::string("[Trash Info]\nPath=\nDeletionDate=2026-01-01T00:00:00\n").size() +
                               dir.size() + std::string("/w/a%20b%25.txt").size());
}

TEST_F(Trash, ClashingNamesAreNumbered)
{
    make("x", "1");
    ASSERT_EQ(xfrecycle(dir + "/w/x"), 0);
    make("x", "2");
    ASSERT_EQ(xfrecycle(dir + "/w/./x"), 0);
    EXPECT_EQ(slurp(dir + "/data/Trash/files/x"), "1");
    EXPECT_EQ(slurp(dir + "/data/Trash/files/x.2"), "2");
    EXPECT_NE(slurp(dir + "/data/Trash/info/x.2.trashinfo").find("Path=" + dir + "/w/x\n"), std::string::npos);
}

TEST_F(Trash, MissingFileLeavesNoInfo)
{
    EXPECT_NE(xfrecycle(dir + "/w/none"), 0);
    EXPECT_NE(access((dir + "/data/Trash/info/none.trashinfo").c_str(), F_OK), 0);
}

} // namespace
