// CREAte and REPlace: a file name that waits for a CC or MM block in the
// prefix area, and the block written through the save's writer. What a
// screen case shows poorly is checked here: the bytes and the mode on disk,
// a refusal that changes nothing, a move that keeps its lines when the
// write fails.
#include "commands/internal.h"
#include "tests/unit/session/fixture.h"
#include "tests/unit/session/save_fixture.h"

#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

using savetest::slurp;
using savetest::spit;

struct WriteBlock : EditorTest {
    std::string dir;
    void SetUp() override
    {
        EditorTest::SetUp();
        char t[] = "/tmp/xed-wblock.XXXXXX";
        ASSERT_NE(mkdtemp(t), nullptr);
        dir = t;
        file({"a", "b", "c", "d", "e"});
        pdf_parked = {};
    }
    void TearDown() override
    {
        pdf_parked = {};
        EditorTest::TearDown();
        std::string cmd = "rm -rf '" + dir + "'";
        (void)!std::system(cmd.c_str());
    }
    std::string path(const char *name) const { return dir + "/" + name; }
    bool exists(const std::string &p) const
    {
        struct stat st;
        return lstat(p.c_str(), &st) == 0;
    }
};

TEST_F(WriteBlock, CreateWaitsForABlockThenWritesItsLines)
{
    xfcmdline("create " + path("new.txt"));
    EXPECT_EQ(cmd_rc, 0);
    EXPECT_EQ(lastmsg(), "..... PDF CREATE pending");
    EXPECT_FALSE(exists(path("new.txt")));
    // A destination in the file does not take the block from the parked file.
    xfack2(1, "cc", -1);
    xfack2(2, "cc", -1);
    xfack2(4, "f", -1);
    xfapply();
    EXPECT_EQ(slurp(path("new.txt")), "b\nc\n");
    EXPECT_EQ(text(), (std::vector<std::string>{"a", "b", "c", "d", "e"}));
    EXPECT_EQ(xf->chgcount, 0);
    EXPECT_EQ(pdf_parked.kind, PARK_NONE);
    // The file is served once: the next source takes the F as before.
    xfack2(0, "c", -1);
    xfapply();
    EXPECT_EQ(text(), (std::vector<std::string>{"a", "b", "c", "d", "e", "a"}));
}

TEST_F(WriteBlock, ReplaceWithAnMmBlockMovesTheLinesOutAndKeepsTheMode)
{
    spit(path("old.txt"), "old text\nmore\nand more\n");
    chmod(path("old.txt").c_str(), 0640);
    xfcmdline("pdfreplace " + path("old.txt"));
    EXPECT_EQ(lastmsg(), "..... PDF REPLACE pending");
    xfack2(3, "mm", -1);
    xfack2(1, "mm", -1);
    xfapply();
    EXPECT_EQ(slurp(path("old.txt")), "b\nc\nd\n");
    struct stat st;
    ASSERT_EQ(stat(path("old.txt").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0640u);
    EXPECT_EQ(text(), (std::vector<std::string>{"a", "e"}));
    // The removal is one step of undo; the file written stays written.
    ASSERT_TRUE(xf_undo());
    EXPECT_EQ(text(), (std::vector<std::string>{"a", "b", "c", "d", "e"}));
    EXPECT_EQ(slurp(path("old.txt")), "b\nc\nd\n");
}

TEST_F(WriteBlock, ABlockAlreadyWaitingIsTakenByTheCommand)
{
    modes.command_ispf = 1;
    xfack2(0, "cc", -1);
    xfack2(1, "cc", -1);
    xfapply();
    EXPECT_EQ(xf->pend2.size(), 2u); // no destination: it waits
    xfcmdline("replace " + path("r.txt"));
    EXPECT_EQ(slurp(path("r.txt")), "a\nb\n");
    EXPECT_TRUE(xf->pend2.empty());
    EXPECT_EQ(pdf_parked.kind, PARK_NONE);
    modes.command_ispf = 0;
}

TEST_F(WriteBlock, CreateRefusesANameThatIsTaken)
{
    spit(path("there"), "keep\n");
    ASSERT_EQ(symlink(path("nowhere").c_str(), path("dangling").c_str()), 0);
    for (const char *name : {"there", "dangling"}) {
        xfcmdline(std::string("create ") + path(name));
        EXPECT_EQ(cmd_rc, 1) << name;
        EXPECT_EQ(lastmsg(), "..... File exists. Use the REPLACE command") << name;
        EXPECT_EQ(pdf_parked.kind, PARK_NONE) << name;
    }
    EXPECT_FALSE(exists(path("nowhere")));
    EXPECT_EQ(slurp(path("there")), "keep\n");
    // A file made while the name waited is refused when the block comes,
    // and the moved lines stay.
    xfcmdline("create " + path("late"));
    spit(path("late"), "someone else's\n");
    xfack2(0, "mm", -1);
    xfack2(1, "mm", -1);
    xfapply();
    EXPECT_EQ(lastmsg(), "..... File exists. Use the REPLACE command");
    EXPECT_EQ(slurp(path("late")), "someone else's\n");
    EXPECT_EQ(text(), (std::vector<std::string>{"a", "b", "c", "d", "e"}));
    EXPECT_TRUE(xf->pend2.empty());
}

TEST_F(WriteBlock, AFailedReplaceKeepsTheMovedLines)
{
    ASSERT_EQ(mkdir(path("adir").c_str(), 0755), 0);
    xfcmdline("pdfreplace " + path("adir"));
    xfack2(2, "m2", -1);
    xfapply();
    EXPECT_EQ(lastmsg(), "..... Unable to save file");
    EXPECT_EQ(cmd_rc, 1);
    EXPECT_EQ(text(), (std::vector<std::string>{"a", "b", "c", "d", "e"}));
    EXPECT_EQ(pdf_parked.kind, PARK_NONE);
}

TEST_F(WriteBlock, OperandsAndLabels)
{
    struct row {
        const char *ops;
        const char *msg;
        int rc;
    };
    const row rows[] = {
        {"", "..... Missing Operand", 5},
        {"x .a", "..... Invalid parameters", 5},
        {"x .a .b .c", "..... Invalid parameters", 5},
        {"x .a .nowhere", "..... Invalid label", 5},
    };
    xfpoint_set(".a", 3);
    xfpoint_set(".b", 1);
    for (auto &r : rows) {
        xfcmdline(std::string("create ") + r.ops);
        EXPECT_EQ(lastmsg(), r.msg) << r.ops;
        EXPECT_EQ(cmd_rc, r.rc) << r.ops;
        EXPECT_EQ(pdf_parked.kind, PARK_NONE) << r.ops;
    }
    EXPECT_FALSE(exists("x"));
    // Two labels write their lines at once, in either order.
    xfcmdline("create " + path("lab.txt") + " .a .b");
    EXPECT_EQ(cmd_rc, 0);
    EXPECT_EQ(slurp(path("lab.txt")), "b\nc\nd\n");
    EXPECT_EQ(pdf_parked.kind, PARK_NONE);
    EXPECT_EQ(text(), (std::vector<std::string>{"a", "b", "c", "d", "e"}));
}

TEST_F(WriteBlock, OnlyLinesInScopeAreWritten)
{
    xfack2(2, "x", -1);
    xfapply();
    ASSERT_FALSE(xfinscope(2));
    xfcmdline("create " + path("scope.txt"));
    xfack2(1, "cc", -1);
    xfack2(3, "cc", -1);
    xfapply();
    EXPECT_EQ(slurp(path("scope.txt")), "b\nd\n");
}

} // namespace
