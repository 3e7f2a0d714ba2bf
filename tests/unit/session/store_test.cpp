// The line store: every xf_do code, text treatment, journal entries, named
// points, current-line clamping, and the gapped array against a plain model.
#include "fixture.h"

#include <cstring>
#include <random>

using Store = EditorTest;

TEST_F(Store, InsertAfterTopPutsLineFirst)
{
    file({"b", "c"});
    xf_do('i', "a", -1, "t");
    EXPECT_EQ(text(), (std::vector<std::string>{"a", "b", "c"}));
    xf_do('i', "d", 2, "t");
    EXPECT_EQ(text().back(), "d");
}

TEST_F(Store, BulkInsertAndDeleteShiftOnce)
{
    file({"1", "5"});
    std::vector<xfline> nl;
    for (const char *s : {"2", "3", "4"})
        nl.push_back({xfstrdup(s), 1, 0, 0});
    xf_do('I', nullptr, 0, 3, 1, nl.data(), "t");
    EXPECT_EQ(text(), (std::vector<std::string>{"1", "2", "3", "4", "5"}));
    xf_do('D', nullptr, 1, 3, 1, nullptr, "t");
    EXPECT_EQ(text(), (std::vector<std::string>{"1", "5"}));
    // count 0 in mode 1 does nothing, not even a journal entry
    size_t entries = xf->journal.undo.size();
    xf_do('D', nullptr, 0, 0, 1, nullptr, "t");
    xf_do('I', nullptr, 0, 0, 1, nullptr, "t");
    EXPECT_EQ(xf->journal.undo.size(), entries);
    EXPECT_EQ(xf->nbli(), 2);
}

TEST_F(Store, ReplaceAndStopMark)
{
    file({"old"});
    xf_do('r', xfstrdup("new"), 0, 1, 1, nullptr, "t");
    EXPECT_EQ(text()[0], "new");
    xf_do('s', nullptr, 0, 3, 1, nullptr, "t");
    EXPECT_EQ(xf->lines[0].stopmark(), 3);
    ASSERT_EQ(xf->journal.undo.size(), 2u);
    EXPECT_EQ(xf->journal.undo[1].oldmark, 0);
    ASSERT_EQ(xf->journal.undo[0].old.size(), 1u);
    EXPECT_STREQ(xf->journal.undo[0].old[0].text, "old"); // the old text lives on
}

// The record packs the stop mark beside the length and the level: the
// longest line and the highest level sit next to every mark untouched.
TEST_F(Store, RecordHoldsTheLongestLineAndHighestLevelBesideEachMark)
{
    for (int32_t mark = 0; mark < 4; mark++) {
        xfline l(nullptr, xfmax_cols, mark, 2147483647);
        EXPECT_EQ((int32_t)l.len, xfmax_cols);
        EXPECT_EQ((int32_t)l.selevel, 2147483647);
        EXPECT_EQ(l.stopmark(), mark);
        l.set_stopmark(3 - mark);
        l.len = 0;
        l.selevel = 0;
        EXPECT_EQ(l.stopmark(), 3 - mark);
        l.len = (uint32_t)xfmax_cols;
        EXPECT_EQ(l.stopmark(), 3 - mark);
        EXPECT_EQ((int32_t)l.selevel, 0);
    }
}

TEST_F(Store, UnknownCodeChangesNothing)
{
    file({"x"});
    testing::internal::CaptureStderr();
    xf_do('z', nullptr, 0, 1, 1, nullptr, "t");
    std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(err, "vorta: xf_do: internal error, wrong argument: cd = z\n");
    EXPECT_EQ(text(), std::vector<std::string>{"x"});
}

TEST_F(Store, JournalGroupsFollowGroupOpen)
{
    file({"a"});
    xf->group_open = 1;
    xf_do('i', "b", 0, "t");
    xf_do('i', "c", 1, "t");
    xf->group_open = 1;
    xf_do('d', nullptr, 0, 1, 1, nullptr, "t");
    auto &u = xf->journal.undo;
    ASSERT_EQ(u.size(), 3u);
    EXPECT_TRUE(u[0].groupstart);
    EXPECT_FALSE(u[1].groupstart);
    EXPECT_TRUE(u[2].groupstart);
    EXPECT_EQ(xf->group_open, 0);
    // mode 0 is never journalled and does not count as a change
    int before = xf->chgcount;
    xf_do('i', xfstrdup("z"), -1, 1, 0, nullptr, "t");
    EXPECT_EQ(u.size(), 3u);
    EXPECT_EQ(xf->chgcount, before);
}

TEST_F(Store, NegativeChangeCountResetsOnNormalChange)
{
    file({"a"});
    xf->chgcount = -4;
    xf_do('i', "b", 0, "t");
    EXPECT_EQ(xf->chgcount, 1);
}

TEST_F(Store, UppercaseAndCuttingTreatNewText)
{
    file({});
    xf->case_mode = 2;
    xf->lrecl = 10;
    xf->trunc = 5;
    xf_do('i', "abc   defgh", -1, "t");
    EXPECT_EQ(text()[0], "ABC"); // cut at 5, then trailing blanks stripped
    xf->keepblanks = 1;
    xf_do('i', "abc   defgh", 0, "t");
    EXPECT_EQ(text()[1], "ABC  ");
    // an unchanged length leaves the text alone, blanks and all
    xf->keepblanks = 0;
    xf_do('i', "ab  ", 1, "t");
    EXPECT_EQ(text()[2], "AB  ");
    // either limit at 0 means no limit from it
    xf->trunc = 0;
    xf_do('i', "123456789012", 2, "t");
    EXPECT_EQ(text()[3], "1234567890");
}

TEST_F(Store, BinaryTextKeepsEveryByte)
{
    file({});
    std::string bin("a\0b\0", 4);
    xf_do('i', bin, -1, "t");
    EXPECT_EQ(xf->lines[0].len, 4);
    EXPECT_EQ(std::string(xf->lines[0].text, 4), bin);
    EXPECT_EQ(xfcm_check(), 0);
}

TEST_F(Store, CheckFindsLengthMismatch)
{
    file({"abc"});
    xf->lines[0].len = 2;
    testing::internal::CaptureStderr();
    EXPECT_EQ(xfcm_check(), 1);
    std::string err = testing::internal::GetCapturedStderr();
    EXPECT_NE(err.find("VORTA: internal error on line 0 : lentr = 2   strlen = 3"), std::string::npos);
    xf->lines[0].len = 3;
}

TEST_F(Store, NamedPointsFollowInsertsAndDeletes)
{
    file({"a", "b", "c", "d"});
    xfpoint_set(".x", 1);
    xfpoint_set(".y", 3);
    xf_do('i', "new", 0, "t"); // after line 0: both points move down
    EXPECT_EQ(xf->points[(size_t)xfpoint_find(".x")].li, 2);
    EXPECT_EQ(xf->points[(size_t)xfpoint_find(".y")].li, 4);
    xf_do('D', nullptr, 1, 2, 1, nullptr, "t"); // deletes .x's line
    EXPECT_EQ(xfpoint_find(".x"), -1);
    EXPECT_EQ(xf->points[(size_t)xfpoint_find(".y")].li, 2);
}

TEST_F(Store, CurrentLineClampedInEveryView)
{
    file({"only"});
    views.push_back(new xview);
    views[1]->perfile.push_back({});
    views[1]->perfile[0].curline = 0;
    curline() = 0;
    xf_do('d', nullptr, 0, 1, 1, nullptr, "t");
    EXPECT_EQ(xf->nbli(), 0);
    EXPECT_EQ(curline(), topline);
    EXPECT_EQ(views[1]->perfile[0].curline, topline);
}

TEST_F(Store, LastLineCurrentDropsWhenLastLineGoes)
{
    file({"a", "b", "c"});
    curline() = 2;
    xf_do('d', nullptr, 2, 1, 1, nullptr, "t");
    EXPECT_EQ(curline(), 1);
}

TEST_F(Store, ShiftUpMovesReferencesOutOfDeletedRange)
{
    file({"a", "b", "c", "d", "e"});
    curline() = 3;
    xf->pend1.push_back({0, 4, 1, 1, 0, false, {}, {}});
    xf->pend1.push_back({0, 2, 1, 1, 0, false, {}, {}});
    xfshift_up(1, 2, 0);
    EXPECT_EQ(curline(), 1);
    ASSERT_EQ(xf->pend1.size(), 1u); // the entry on a deleted line is gone
    EXPECT_EQ(xf->pend1[0].li, 2);
}

TEST_F(Store, AddSkipsExcludedLinesAndProposesCursor)
{
    file({"a", "b", "c"});
    xf->lines[1].selevel = 5; // not in DISPLAY 0 0
    xfadd(0, 2, 1);
    EXPECT_EQ(text(), (std::vector<std::string>{"a", "b", "", "", "c"}));
    ASSERT_FALSE(xf->curstack.empty());
    EXPECT_EQ(xf->curstack.back().li, 2);
    EXPECT_EQ(xf->curstack.back().prio, 60);
}

// The gapped array must behave exactly like a plain vector under any mix of
// inserts and deletes, wherever they fall.
TEST_F(Store, GappedArrayMatchesPlainModel)
{
    file({});
    std::vector<std::string> model;
    std::mt19937 rng(12345);
    for (int step = 0; step < 4000; step++) {
        int op = (int)(rng() % 3);
        int32_t n = (int32_t)model.size();
        if (op < 2 || n == 0) {
            int32_t after = n ? (int32_t)(rng() % (n + 1)) - 1 : -1;
            std::string t = std::to_string(step);
            xf_do('i', t, after, "t");
            model.insert(model.begin() + (after + 1), t);
        } else {
            int32_t at = (int32_t)(rng() % n);
            int32_t cnt = 1 + (int32_t)(rng() % std::min<int32_t>(5, n - at));
            xf_do('D', nullptr, at, cnt, 1, nullptr, "t");
            model.erase(model.begin() + at, model.begin() + at + cnt);
        }
    }
    EXPECT_EQ(text(), model);
    EXPECT_EQ(xfcm_check(), 0);
}

TEST_F(Store, ScopeTest)
{
    file({"a", "b"});
    xf->lines[1].selevel = 3;
    EXPECT_TRUE(xfinscope(0));
    EXPECT_FALSE(xfinscope(1));
    EXPECT_TRUE(xfinscope(-1));
    EXPECT_TRUE(xfinscope(2));
    xv->scope = 2;
    EXPECT_FALSE(xfinscope(0));
    EXPECT_TRUE(xfinscope(1));
    EXPECT_FALSE(xfinscope(-1)); // the end lines are out with the inverse
    xv->scope = 1;
    EXPECT_TRUE(xfinscope(1));
}
