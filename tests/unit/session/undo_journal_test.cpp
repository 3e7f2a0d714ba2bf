// Undo and redo: groups, text pointers moved rather than copied, the change
// counters, the redo list's lifetime, the cursor, and the commands.
#include <gtest/gtest.h>

#include "commands/commands.h"
#include "session/xed.h"

#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace {

class Undo : public ::testing::Test {
protected:
    void SetUp() override
    {
        static bool once = false;
        if (!once) {
            cmd_init();
            once = true;
        }
        xfsession_reset();
        topline = -1;
        saveclearundo = 0;
        xfnewfile();
        xv->fileidx = xfidx;
        for (const char *t : {"l0", "l1", "l2", "l3", "l4"})
            push(t);
        xfclearundo(xf);
        xf->chgcount = 0;
        xf->chgsince = 0;
    }
    void TearDown() override { xfsession_reset(); }
    void push(const char *t)
    {
        xf->lines.open(xf->nbli(), 1);
        xf->lines[xf->nbli() - 1] = {xfstrdup(t), (int32_t)std::strlen(t), 0, 0};
    }
    // What the read cycle does at each command.
    void command() { xf->group_open = 1; }
    std::string text()
    {
        std::string s;
        for (int i = 0; i < nbli(); i++)
            s += std::string(xf->lines[i].text, (size_t)xf->lines[i].len) + (i + 1 < nbli() ? "," : "");
        return s;
    }
    void run(const char *cmd)
    {
        cmd_rc = 0;
        xfcmdline(cmd);
    }
};

TEST_F(Undo, OneGroupPerCommand)
{
    command();
    xf_do('r', std::string_view("A"), 0, "t");
    xf_do('d', nullptr, 1, 1, 1, nullptr, "t");
    command();
    xf_do('i', std::string_view("new"), 2, "t");
    EXPECT_EQ(text(), "A,l2,l3,new,l4");
    EXPECT_TRUE(xf_undo());
    EXPECT_EQ(text(), "A,l2,l3,l4");
    EXPECT_TRUE(xf_undo());
    EXPECT_EQ(text(), "l0,l1,l2,l3,l4");
    EXPECT_FALSE(xf_undo()) << "nothing left";
    EXPECT_EQ(xf->chgcount, 0) << "all undone counts as unchanged";
    EXPECT_TRUE(xf_redo());
    EXPECT_EQ(text(), "A,l2,l3,l4") << "redo takes the first group again, whole";
    EXPECT_TRUE(xf_redo());
    EXPECT_EQ(text(), "A,l2,l3,new,l4");
    EXPECT_FALSE(xf_redo());
}

TEST_F(Undo, PointersMoveNeverCopies)
{
    char *l1 = xf->lines[1].text;
    command();
    xf_do('r', std::string_view("R"), 1, "t");
    char *r = xf->lines[1].text;
    xf_undo();
    EXPECT_EQ(xf->lines[1].text, l1);
    xf_redo();
    EXPECT_EQ(xf->lines[1].text, r);

    std::vector<char *> before;
    for (int i = 0; i < 5; i++)
        before.push_back(xf->lines[i].text);
    command();
    xf_do('D', nullptr, 1, 3, 1, nullptr, "t");
    ASSERT_EQ(nbli(), 2);
    xf_undo();
    ASSERT_EQ(nbli(), 5);
    for (int i = 0; i < 5; i++)
        EXPECT_EQ(xf->lines[i].text, before[(size_t)i]) << "line " << i;
}

TEST_F(Undo, BulkInsertUndoneAndRedone)
{
    std::vector<xfline> nl(3);
    for (int i = 0; i < 3; i++)
        nl[(size_t)i] = {xfstrdup("n" + std::to_string(i)), 2, 0, 0};
    command();
    xf_do('I', nullptr, -1, 3, 1, nl.data(), "t");
    EXPECT_EQ(text(), "n0,n1,n2,l0,l1,l2,l3,l4");
    char *first = xf->lines[0].text;
    xf_undo();
    EXPECT_EQ(text(), "l0,l1,l2,l3,l4");
    xf_redo();
    EXPECT_EQ(text(), "n0,n1,n2,l0,l1,l2,l3,l4");
    EXPECT_EQ(xf->lines[0].text, first);
}

TEST_F(Undo, StopMarksAndRestoredLines)
{
    command();
    xf_do('s', nullptr, 2, 3, 1, nullptr, "t");
    EXPECT_EQ(xf->lines[2].stopmark(), 3);
    command();
    xf_do('d', nullptr, 2, 1, 1, nullptr, "t");
    xv->select_new = 7;
    xf_undo();
    EXPECT_EQ(text(), "l0,l1,l2,l3,l4");
    EXPECT_EQ(xf->lines[2].stopmark(), 0) << "a line brought back has no stop mark";
    EXPECT_EQ(xf->lines[2].selevel, 7) << "and the view's selection level";
    xf_do('s', nullptr, 2, 3, 0, nullptr, "t");
    xf_undo();
    EXPECT_EQ(xf->lines[2].stopmark(), 0) << "the mark's own undo gives the old mark";
    xf_redo();
    EXPECT_EQ(xf->lines[2].stopmark(), 3);
}

TEST_F(Undo, ANewGroupDropsRedoButNotWithinAGroup)
{
    command();
    xf_do('r', std::string_view("A"), 0, "t");
    command();
    xf_do('r', std::string_view("B"), 1, "t");
    xf_undo();
    ASSERT_EQ(xf->journal.redo.size(), 1u);
    // A change that continues an open group keeps the redo list.
    xf->group_open = 0;
    xf_do('r', std::string_view("C"), 2, "t");
    EXPECT_EQ(xf->journal.redo.size(), 1u);
    command();
    xf_do('r', std::string_view("D"), 3, "t");
    EXPECT_TRUE(xf->journal.redo.empty());
    EXPECT_FALSE(xf_redo());
}

TEST_F(Undo, CountersAcrossASave)
{
    command();
    xf_do('r', std::string_view("A"), 0, "t");
    command();
    xf_do('r', std::string_view("B"), 1, "t");
    EXPECT_EQ(xf->chgcount, 2);
    xf->chgcount = 0; // as a save leaves it
    xf_undo();
    EXPECT_EQ(xf->chgcount, 1) << "undo past a save makes the file changed";
    xf_undo();
    EXPECT_EQ(xf->chgcount, 0);
    EXPECT_EQ(xf->chgsince, 0);
    xf_redo();
    EXPECT_EQ(xf->chgcount, 1);
}

TEST_F(Undo, CursorGoesToTheLineThatOpenedTheGroup)
{
    command();
    xf->ptcur_i = {0, 0, 3, 5, {0, 0}, -1, 0, 30};
    xf_do('r', std::string_view("A"), 3, "t");
    xf->ptcur_i = {0, 0, 1, 2, {0, 0}, -1, 0, 30};
    xf_do('r', std::string_view("B"), 1, "t");
    xf->ptcur_i = {0, 1, -1, 0, {0, 0}, -1, 0, 20};
    xf_undo();
    EXPECT_EQ(xf->ptcur_i.li, 3);
    EXPECT_EQ(xf->ptcur_i.col, 5);
    EXPECT_EQ(xf->ptcur_i.fld, 0);
    EXPECT_EQ(xf->ptcur_i.prio, 257);
}

TEST_F(Undo, PendingEntriesAreDropped)
{
    xf->pend1.push_back({0, 2, 'd', 1, 0, false, {}, {}});
    xf->pfxtexts.push_back({"dd", 2});
    command();
    xf_do('r', std::string_view("A"), 0, "t");
    xf_undo();
    EXPECT_TRUE(xf->pend1.empty());
    EXPECT_TRUE(xf->pfxtexts.empty());
}

TEST_F(Undo, CurrentLineStaysInTheFile)
{
    curline() = 4;
    command();
    xf_do('i', std::string_view("x"), 4, "t");
    curline() = 5;
    xf_undo();
    EXPECT_EQ(curline(), 4);
}

TEST_F(Undo, Commands)
{
    for (int i = 0; i < 4; i++) {
        command();
        xf_do('r', std::string_view("c" + std::to_string(i)), i, "t");
    }
    run("undo 2");
    EXPECT_EQ(text(), "c0,c1,l2,l3,l4");
    run("redo");
    EXPECT_EQ(text(), "c0,c1,c2,l3,l4");
    run("undo all");
    EXPECT_EQ(text(), "l0,l1,l2,l3,l4");
    EXPECT_EQ(cmd_rc, 0);
    run("undo");
    EXPECT_EQ(cmd_rc, 0) << "an empty journal is no error";
    run("undo x");
    EXPECT_EQ(cmd_rc, 1);
    EXPECT_EQ(last_message, "..... Invalid parameters");
}

TEST_F(Undo, SaveClearUndoEmptiesTheJournal)
{
    char t[] = "/tmp/xed-undo.XXXXXX";
    std::string dir = mkdtemp(t);
    xf->fname = xf->fname2 = dir + "/u.txt";
    command();
    xf_do('r', std::string_view("A"), 0, "t");
    saveclearundo = 1;
    run("save");
    EXPECT_EQ(cmd_rc, 0);
    EXPECT_FALSE(xf_undo());
    EXPECT_EQ(text(), "A,l1,l2,l3,l4");
    (void)!std::system(("rm -rf '" + dir + "'").c_str());
}

} // namespace
