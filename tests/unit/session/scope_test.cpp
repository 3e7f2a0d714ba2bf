// The scope test against the display range and the three scopes, and the
// store's permutation code that SORT uses, with its undo and redo.
#include "fixture.h"

#include <algorithm>
#include <cstdio>
#include <random>

using Scope = EditorTest;

namespace {
void levels(std::initializer_list<int32_t> v)
{
    int32_t i = 0;
    for (int32_t s : v)
        xf->lines[i++].selevel = s;
}
} // namespace

TEST_F(Scope, DisplayRangeIsInclusiveAtBothEnds)
{
    file({"a", "b", "c", "d"});
    levels({0, 1, 2, 3});
    xv->display_lo = 1;
    xv->display_hi = 2;
    xv->scope = 0;
    EXPECT_FALSE(xfinscope(0));
    EXPECT_TRUE(xfinscope(1));
    EXPECT_TRUE(xfinscope(2));
    EXPECT_FALSE(xfinscope(3));
}

// Levels are never negative, and the line record holds the highest level
// (the one that hides a line from a `*` range) exactly.
TEST_F(Scope, StarRangeShowsEveryLevelUpToTheHighest)
{
    file({"a", "b", "c"});
    levels({0, 1, 2147483647});
    xv->display_lo = 1;
    xv->display_hi = 2147483647;
    xv->scope = 0;
    EXPECT_FALSE(xfinscope(0));
    EXPECT_TRUE(xfinscope(1));
    EXPECT_TRUE(xfinscope(2));
    EXPECT_EQ((int32_t)xf->lines[2].selevel, 2147483647);
}

TEST_F(Scope, AllSeesHiddenLinesAndInverseTurnsTheAnswerRound)
{
    file({"a", "b"});
    levels({0, 1});
    xv->display_lo = xv->display_hi = 0;
    xv->scope = 1;
    EXPECT_TRUE(xfinscope(0));
    EXPECT_TRUE(xfinscope(1));
    xv->scope = 2;
    EXPECT_FALSE(xfinscope(0));
    EXPECT_TRUE(xfinscope(1));
}

TEST_F(Scope, EndRowsAreInScopeAndFartherIndexesAreNot)
{
    file({"a", "b"});
    xv->display_lo = xv->display_hi = 0;
    for (int scope : {0, 1}) {
        xv->scope = scope;
        EXPECT_TRUE(xfinscope(-1)) << scope;
        EXPECT_TRUE(xfinscope(2)) << scope;
        EXPECT_FALSE(xfinscope(-2)) << scope;
        EXPECT_FALSE(xfinscope(3)) << scope;
    }
    xv->scope = 2;
    EXPECT_FALSE(xfinscope(-1));
    EXPECT_FALSE(xfinscope(2));
    EXPECT_TRUE(xfinscope(-2));
    EXPECT_TRUE(xfinscope(3));
}

TEST_F(Scope, PermutationMovesLinesWithTheirLevelsAndUndoes)
{
    file({"x", "c", "a", "b", "y"});
    levels({0, 1, 2, 3, 4});
    std::vector<int32_t> order = {1, 2, 0}; // c a b -> a b c
    xf_do('P', nullptr, 1, 3, 1, nullptr, "t", &order);
    EXPECT_TRUE(order.empty()) << "the journal takes the order itself";
    EXPECT_EQ(text(), (std::vector<std::string>{"x", "a", "b", "c", "y"}));
    EXPECT_EQ((int32_t)xf->lines[1].selevel, 2);
    EXPECT_EQ((int32_t)xf->lines[3].selevel, 1);
    ASSERT_TRUE(xf_undo());
    EXPECT_EQ(text(), (std::vector<std::string>{"x", "c", "a", "b", "y"}));
    ASSERT_TRUE(xf_redo());
    EXPECT_EQ(text(), (std::vector<std::string>{"x", "a", "b", "c", "y"}));
}

// Keys that repeat over a long range: lines of equal key keep the file's
// order from end to end, excluded lines keep their places, a named line
// goes with its line, and one undo gives the file back.
TEST_F(Scope, SortOfRepeatedKeysIsStableAroundExcludedLinesAndUndoes)
{
    std::vector<std::string> in;
    std::mt19937 rnd(5);
    for (int i = 0; i < 30000; i++) {
        char b[16];
        std::snprintf(b, sizeof b, "%c %06d", "cab"[rnd() % 3], i);
        in.push_back(b);
    }
    file(in);
    for (int32_t i = 0; i < (int32_t)in.size(); i += 7)
        xf->lines[i].selevel = 1;
    xv->display_lo = xv->display_hi = 0;
    xv->scope = 0;
    xfpoint_set(".m", 12345);
    // Stop marks with either of their two bits, or both.
    const std::pair<int32_t, int32_t> marks[] = {{100, 1}, {201, 2}, {12345, 3}};
    for (auto [li, mark] : marks)
        xf_do('s', nullptr, li, mark, 0, nullptr, "t");
    xfcmdline("sort all 1 1");
    EXPECT_EQ(cmd_rc, 0);

    std::vector<std::string> shown;
    for (size_t i = 0; i < in.size(); i++)
        if (i % 7)
            shown.push_back(in[i]);
    std::stable_sort(shown.begin(), shown.end(),
                     [](const std::string &a, const std::string &b) { return a[0] < b[0]; });
    std::vector<std::string> now = text();
    size_t k = 0;
    for (size_t i = 0; i < in.size(); i++) {
        ASSERT_EQ(now[i], i % 7 ? shown[k++] : in[i]) << "line " << i;
        // A level lent out during the sort comes back to its own line, and
        // a stop mark goes with it.
        ASSERT_EQ((int32_t)xf->lines[(int32_t)i].selevel, i % 7 ? 0 : 1) << "line " << i;
        int32_t want = 0;
        for (auto [li, mark] : marks)
            if (now[i] == in[(size_t)li])
                want = mark;
        ASSERT_EQ(xf->lines[(int32_t)i].stopmark(), want) << "line " << i;
    }
    int p = xfpoint_find(".m");
    ASSERT_GE(p, 0);
    EXPECT_EQ(now[(size_t)xf->points[(size_t)p].li], in[12345]);

    ASSERT_TRUE(xf_undo());
    EXPECT_EQ(text(), in);
    EXPECT_EQ(xf->points[(size_t)p].li, 12345);
}

// NSort: the first key's numbers are read once, a later key's at each
// compare of equal first keys; a word that is no number sorts first.
TEST_F(Scope, NumericSortOnTwoKeysTheSecondDescending)
{
    std::vector<std::string> in = {"3 10", "1 5", "3 20", "x 1", "1 7"};
    file(in);
    xfcmdline("nsort all 1 1 d 3 4");
    EXPECT_EQ(cmd_rc, 0);
    const std::vector<std::string> sorted = {"x 1", "1 7", "1 5", "3 20", "3 10"};
    EXPECT_EQ(text(), sorted);
    // Sorted where they stand (all lines alike), the journal still has it.
    ASSERT_TRUE(xf_undo());
    EXPECT_EQ(text(), in);
    ASSERT_TRUE(xf_redo());
    EXPECT_EQ(text(), sorted);
}
