// The target scanner and parser, the search of a line, and the change
// engine as commands reach them.
#include "commands/internal.h"
#include "tests/unit/session/fixture.h"

#include <gtest/gtest.h>
#include <cstring>

namespace {

struct Targets : EditorTest {
    void SetUp() override
    {
        EditorTest::SetUp();
        wrap_on = 1;
        stay_on = 0;
        varblank_on = 0;
        hex_on = 0;
        span_on = 0;
        span_blank = 1;
        span_lines = 0;
        arbchar_on = 0;
        arbchar = '$';
        memo_str.clear();
        file({"alpha one", "beta two", "gamma alpha", "delta", "Alpha five"});
    }
    int parse(const char *t) { return xftarget_parse(t, false, true); }
};

TEST_F(Targets, ScannerFindsWhereTheCommandBegins)
{
    struct row {
        const char *line;
        size_t len;
    };
    const row rows[] = {
        {"12 del", 2},          {":12 del", 3},         {": 12", 4},
        {"+3 c/a/b/", 2},       {"- 3", 3},             {"-*", 2},
        {"+ *x", 3},            {"*", 1},               {".lab del 2", 4},
        {".lab*", 4},           {"/a/ c/x/y/", 10},     {"/a/ del", 3},
        {"/abc", 4},            {"-/x/ del", 4},        {"~/x/ del", 4},
        {"/a/ & /b/ del", 9},   {"/a/ |", 3},           {"/a/ & ~/", 8},
        {"/a/ & ~/b/", 10},     {"1\xc3\xa9", 1},
    };
    for (auto &r : rows)
        EXPECT_EQ(xftarget_scan(r.line), r.len) << r.line;
}

TEST_F(Targets, NumbersAndEnds)
{
    curline() = 1;
    EXPECT_EQ(parse("2"), 3);
    EXPECT_EQ(parse("+1"), 2);
    EXPECT_EQ(parse("-1"), 0);
    EXPECT_EQ(parse(":1"), 0);
    EXPECT_EQ(parse(": 3"), 2);
    EXPECT_EQ(parse(":0"), -1);   // the top of the file
    EXPECT_EQ(parse("*"), 5);     // the end: the number of lines
    EXPECT_EQ(parse("+*"), 5);
    EXPECT_EQ(parse("-*"), -1);
    cmd_rc = 0;
    EXPECT_EQ(parse("1234567890"), -3); // ten digits: quietly invalid
    EXPECT_EQ(cmd_rc, 1);
    EXPECT_EQ(parse(":x"), -3);
    EXPECT_EQ(lastmsg(), "..... Invalid line number");
}

TEST_F(Targets, MovingPastAnEndStopsThereQuietly)
{
    curline() = 3;
    cmd_rc = 0;
    EXPECT_EQ(xftarget_parse("+5", true, false), 5);
    EXPECT_EQ(curline(), 4);
    EXPECT_EQ(cmd_rc, 1);
    EXPECT_EQ(keep_rc_quiet, 1);
    xfcmdline("*");
    EXPECT_EQ(curline(), 4); // * leaves the last line current
}

TEST_F(Targets, LabelsAndTheBuiltInNames)
{
    curline() = 2;
    xfcmdline("point .here");
    curline() = 0;
    EXPECT_EQ(parse(".here"), 2);
    EXPECT_EQ(parse(".HERE"), -2); // labels keep their case
    EXPECT_EQ(lastmsg(), "..... Target Not found");
    EXPECT_EQ(parse(".ZLast"), 4);
    EXPECT_EQ(parse(".zf"), 0);
    xfcmdline("point .here off");
    EXPECT_EQ(parse(".here"), -2);
    xfcmdline("point .gone off");
    EXPECT_EQ(cmd_rc, 2);
    xfcmdline("point .a");
    curline() = 3;
    xfcmdline("point .a");
    EXPECT_EQ(lastmsg(), "..... Name .a already in use.");
}

TEST_F(Targets, StringsForwardBackwardAndNegated)
{
    EXPECT_EQ(parse("/alpha/"), 0);
    EXPECT_EQ(parse("/alpha"), 0); // the closing delimiter may be left out
    curline() = 0;
    EXPECT_EQ(parse("/alpha/"), 2);
    EXPECT_EQ(parse("-/two/"), 1);
    EXPECT_EQ(parse("~/a/"), -2); // every line holds an a
    EXPECT_EQ(parse("!gamma!"), 2);
    EXPECT_EQ(parse("/ALPHA/"), -2);
    xfcmdline("case mixed ignore");
    EXPECT_EQ(parse("/ALPHA/"), 2);
}

TEST_F(Targets, CompoundsEvaluateFromTheLeft)
{
    curline() = -1;
    EXPECT_EQ(parse("/alpha/ & /one/"), 0);
    EXPECT_EQ(parse("/alpha/ & ~/one/"), 2);
    EXPECT_EQ(parse("/delta/ | /beta/"), 1); // the first line holding either
    EXPECT_EQ(parse("/zz/ | /yy/"), -2);
    EXPECT_EQ(lastmsg(), "..... Target \"/zz/ | /yy/\" not found.");
    EXPECT_EQ(parse("/a/ &"), -3); // a connector with nothing after it
    EXPECT_EQ(lastmsg(), "..... Invalid target");
}

TEST_F(Targets, EmptyStringRepeatsTheLastOne)
{
    EXPECT_EQ(parse("//"), -3);
    EXPECT_EQ(lastmsg(), "..... No memorised string for an empty locate request");
    curline() = -1;
    EXPECT_EQ(parse("/delta/"), 3);
    curline() = 0;
    EXPECT_EQ(parse("/"), 3);
}

TEST_F(Targets, WrapEndsOnTheCurrentLine)
{
    curline() = 3;
    xfcmdline("/delta/");
    EXPECT_EQ(curline(), 3);
    EXPECT_EQ(lastmsg(), "..... Wrapped");
    xfcmdline("wrap off");
    xfcmdline("/beta/");
    EXPECT_EQ(cmd_rc, 1);
    EXPECT_EQ(curline(), 4); // moved to the end it ran into
    xfcmdline("stay on");
    curline() = 3;
    xfcmdline("/beta/");
    EXPECT_EQ(curline(), 3);
}

TEST_F(Targets, CommandRangesStopBeforeTheTarget)
{
    curline() = 0;
    std::string_view ops = "/delta/ 2 1";
    int32_t first;
    int64_t n;
    EXPECT_EQ(xftarget_lines(ops, false, first, n), 0);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(n, 3);
    EXPECT_EQ(ops, "2 1");
    curline() = 3;
    ops = "-2";
    EXPECT_EQ(xftarget_lines(ops, false, first, n), -3);
    EXPECT_EQ(lastmsg(), "..... The specified target is before the current line");
    ops = "-2";
    EXPECT_EQ(xftarget_lines(ops, true, first, n), 0);
    EXPECT_EQ(first, 2);
    EXPECT_EQ(n, 2);
}

struct LineSearch : ::testing::Test {
    void SetUp() override
    {
        varblank_on = 0;
        arbchar_on = 0;
        arbchar = '$';
    }
    bool find(const char *s, const char *line, int32_t &ms, int32_t &me, bool icase = false,
              bool word = false, int32_t zl = 0, int32_t zr = -1, int32_t from = 0)
    {
        xfpat p;
        EXPECT_TRUE(xfpat_init(p, s, icase, word, false));
        int32_t n = (int32_t)std::strlen(line);
        return xfpat_find(p, line, n, zl, zr < 0 ? n : zr, from, ms, me);
    }
};

TEST_F(LineSearch, PlainFoldedAndWholeWords)
{
    int32_t ms, me;
    ASSERT_TRUE(find("bc", "abcbc", ms, me, false, false, 0, -1, 2));
    EXPECT_EQ(ms, 3);
    ASSERT_TRUE(find("beta", "alpha BeTa", ms, me, true));
    EXPECT_EQ(ms, 6);
    EXPECT_FALSE(find("beta", "alpha BeTa", ms, me));
    EXPECT_FALSE(find("a", "ab", ms, me, false, true));
    ASSERT_TRUE(find("a", "ab a", ms, me, false, true));
    EXPECT_EQ(ms, 3);
    EXPECT_FALSE(find("caf", "caf\xc3\xa9", ms, me, false, true)); // é is part of the word
}

TEST_F(LineSearch, ZoneAndBlanksBeyondTheEnd)
{
    int32_t ms, me;
    EXPECT_FALSE(find("ab", "xxab", ms, me, false, false, 0, 3)); // ends past the zone
    ASSERT_TRUE(find("end  ", "the end", ms, me));
    EXPECT_EQ(ms, 4);
    EXPECT_EQ(me, 7);
    ASSERT_TRUE(find("  ", "ab", ms, me, false, false, 5, 10)); // short line, all blanks
    EXPECT_EQ(ms, 5);
}

TEST_F(LineSearch, BlankRunsAndArbitraryPieces)
{
    int32_t ms, me;
    varblank_on = 1;
    ASSERT_TRUE(find("a b", "xa    b", ms, me));
    EXPECT_EQ(ms, 1);
    EXPECT_EQ(me, 7);
    EXPECT_FALSE(find("a b", "ab", ms, me));
    varblank_on = 0;
    arbchar_on = 1;
    xfpat p;
    ASSERT_TRUE(xfpat_init(p, "a$c", false, false, false));
    std::vector<std::pair<int32_t, int32_t>> gaps;
    const char *t = "xxabbbc";
    ASSERT_TRUE(xfpat_find_arb(p, t, 0, 7, 0, ms, me, &gaps));
    EXPECT_EQ(ms, 2);
    EXPECT_EQ(me, 7);
    ASSERT_EQ(gaps.size(), 1u);
    EXPECT_EQ(gaps[0], std::make_pair(3, 6));
    EXPECT_FALSE(xfpat_init(p, "$$", false, false, false)); // only the character
}

struct Changes : Targets {};

TEST_F(Changes, OneUndoStepForAWholeChange)
{
    xfopen_groups();
    xfcmdline("c/a/A/ * *");
    EXPECT_EQ(lastmsg(), "9 occurrences changed");
    EXPECT_EQ(text()[0], "AlphA one");
    EXPECT_EQ(text()[4], "AlphA five");
    ASSERT_TRUE(xf_undo());
    EXPECT_EQ(text()[0], "alpha one");
    EXPECT_EQ(text()[2], "gamma alpha");
    EXPECT_FALSE(xf_undo());
}

TEST_F(Changes, CountFirstAndNotFound)
{
    xfcmdline(":3 c/a/_/ 1 * 2");
    EXPECT_EQ(text()[2], "gamm_ _lph_");
    xfcmdline(":1 c/zz/y/ *");
    EXPECT_EQ(lastmsg(), "..... String \"zz\" not found");
    EXPECT_EQ(cmd_rc, 1);
    xfcmdline(":4 c/delta//");
    EXPECT_EQ(text()[3], " "); // an emptied line keeps one blank
}

TEST_F(Changes, RegularExpressionFailureLeavesTheFile)
{
    xfcmdline(":1 rchange /(a/x/ *");
    EXPECT_EQ(lastmsg(), "..... Invalid Regular Expression");
    EXPECT_EQ(text()[0], "alpha one");
    xfcmdline(":1 rchange /a(l|m)/<>/ *");
    EXPECT_EQ(text()[0], "<>pha one");
    EXPECT_EQ(text()[2], "g<>ma <>pha");
}

} // namespace
