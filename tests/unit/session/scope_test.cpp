// The scope test against the display range and the three scopes, and the
// store's permutation code that SORT uses, with its undo and redo.
#include "fixture.h"

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
    file({"a", "b", "c", "d", "e"});
    levels({-1, 0, 1, 2, 3});
    xv->display_lo = 1;
    xv->display_hi = 2;
    xv->scope = 0;
    EXPECT_FALSE(xfinscope(0));
    EXPECT_FALSE(xfinscope(1));
    EXPECT_TRUE(xfinscope(2));
    EXPECT_TRUE(xfinscope(3));
    EXPECT_FALSE(xfinscope(4));
}

TEST_F(Scope, StarRangeShowsEverythingButNegativeLevels)
{
    file({"a", "b", "c"});
    levels({-5, 0, 2147483647});
    xv->display_lo = 0;
    xv->display_hi = 2147483647;
    xv->scope = 0;
    EXPECT_FALSE(xfinscope(0));
    EXPECT_TRUE(xfinscope(1));
    EXPECT_TRUE(xfinscope(2));
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
    const int32_t order[] = {1, 2, 0}; // c a b -> a b c
    xf_do('P', nullptr, 1, 3, 1, nullptr, "t", order);
    EXPECT_EQ(text(), (std::vector<std::string>{"x", "a", "b", "c", "y"}));
    EXPECT_EQ(xf->lines[1].selevel, 2);
    EXPECT_EQ(xf->lines[3].selevel, 1);
    ASSERT_TRUE(xf_undo());
    EXPECT_EQ(text(), (std::vector<std::string>{"x", "c", "a", "b", "y"}));
    ASSERT_TRUE(xf_redo());
    EXPECT_EQ(text(), (std::vector<std::string>{"x", "a", "b", "c", "y"}));
}
