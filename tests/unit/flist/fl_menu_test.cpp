// The list's action texts of the window's menus and tool bar: what each text
// stands for, and what the actions do to a scanned level with no page.
#include "tests/unit/flist/fl_fixture.h"

#include "fields/fields.h"

namespace {

struct expected {
    const char *text;
    int what;
    int sort;         // the sort code, -1 when no sort
    const char *line; // the internal command on the cursor's line
    bool editor_too;  // the editor has the same command
};

constexpr expected table[] = {
    {"REFRESH", FLA_REFRESH, -1, nullptr, true},
    {"Sort by NAME", FLA_SORT, FL_BYNAME, nullptr, false},
    {"Sort by NAME Reversed", FLA_SORT, FL_BYNAME | FL_REVERSED, nullptr, false},
    {"Sort by TYPE", FLA_SORT, FL_BYTYPE, nullptr, false},
    {"Sort by TYPE Reversed", FLA_SORT, FL_BYTYPE | FL_REVERSED, nullptr, false},
    {"Sort by SIZE", FLA_SORT, FL_BYSIZE, nullptr, false},
    {"Sort by SIZE Reversed", FLA_SORT, FL_BYSIZE | FL_REVERSED, nullptr, false},
    {"Sort by TIME", FLA_SORT, FL_BYTIME, nullptr, false},
    {"Sort by TIME Reversed", FLA_SORT, FL_BYTIME | FL_REVERSED, nullptr, false},
    {"TOP", FLA_TOP, -1, nullptr, true},
    {"BOT", FLA_BOTTOM, -1, nullptr, true},
    {"RETURN", FLA_RETURN, -1, nullptr, false},
    {"f /n *", FLA_LINE, -1, "*f /n * /d", false},
    {"f * /t", FLA_LINE, -1, "*f * /t /d", false},
    {"f * * /d", FLA_LINE, -1, "*f * * /d", false},
    {"Make File", FLA_FILE, -1, nullptr, false},
};

TEST(FlMenuTexts, EachTextStandsForItsAction)
{
    for (const expected &e : table) {
        const fl_action *a = fl_menu_action(e.text);
        ASSERT_NE(a, nullptr) << e.text;
        EXPECT_EQ(a->what, e.what) << e.text;
        if (e.sort >= 0) {
            EXPECT_EQ(fl_sort_action(a->sort), e.sort) << e.text;
        }
        EXPECT_STREQ(a->line, e.line) << e.text;
        EXPECT_EQ(fl_menu_refusal(e.text).empty(), e.editor_too) << e.text;
    }
}

TEST(FlMenuTexts, CaseAndSurroundingBlanksDoNotCountOtherTextsFallThrough)
{
    EXPECT_EQ(fl_menu_action("  sort by size reversed\t"), fl_menu_action("Sort by SIZE Reversed"));
    EXPECT_EQ(fl_menu_action("MAKE FILE"), fl_menu_action("Make File"));
    EXPECT_EQ(fl_menu_action(" F * * /D "), fl_menu_action("f * * /d"));
    for (const char *other : {"", "   ", "Sort by SIZE Reversedx", "Sort  by SIZE", "Sort by", "f /n",
                              "f /n * /d", "BOTtom", "SAVE", "TOP 3"})
        EXPECT_EQ(fl_menu_action(other), nullptr) << '"' << other << '"';
    EXPECT_EQ(fl_menu_refusal(" make file "), ".... Only in a file list: make file");
    EXPECT_EQ(fl_menu_refusal("SAVE"), "");
}

class FlMenuRun : public FlScan {
protected:
    fl_level *lv = nullptr;
    void SetUp() override
    {
        FlScan::SetUp();
        make("big.c", 30, 1000);
        make("mid.b", 20, 3000);
        make("small.a", 10, 2000);
        lv = &level();
        ASSERT_EQ(fl_scan(*lv), 0);
        fl_end_level = false;
    }
    void TearDown() override
    {
        fl_end_level = false;
        fl_lay = fl_layout{};
        FlScan::TearDown();
    }
};

TEST_F(FlMenuRun, SortsAreTheSortMenusOrders)
{
    const std::pair<const char *, names> cases[] = {
        {"Sort by SIZE Reversed", {"..", "big.c", "mid.b", "small.a"}},
        {"Sort by SIZE", {"..", "small.a", "mid.b", "big.c"}},
        {"Sort by TIME", {"..", "big.c", "small.a", "mid.b"}},
        {"Sort by TIME Reversed", {"..", "mid.b", "small.a", "big.c"}},
        {"Sort by TYPE", {"..", "small.a", "mid.b", "big.c"}},
        {"Sort by TYPE Reversed", {"..", "big.c", "mid.b", "small.a"}},
        {"Sort by NAME Reversed", {"..", "small.a", "mid.b", "big.c"}},
        {"Sort by NAME", {"..", "big.c", "mid.b", "small.a"}},
    };
    for (const auto &[text, want] : cases) {
        fl_menu_run(*lv, text, -1);
        EXPECT_EQ(shown(*lv), want) << text;
        EXPECT_EQ(lv->sort, fl_sort_action(fl_menu_action(text)->sort)) << text;
    }
}

TEST_F(FlMenuRun, RefreshReadsTheFolderAgainKeepingWhatWasTyped)
{
    lv->list.cmd[find(*lv, "mid.b")] = "xed";
    make("new.d", 1);
    EXPECT_EQ(find(*lv, "new.d"), size_t(-1));
    fl_menu_run(*lv, "refresh", -1);
    EXPECT_NE(find(*lv, "new.d"), size_t(-1));
    EXPECT_EQ(lv->list.cmd[find(*lv, "mid.b")], "xed");
    EXPECT_TRUE(lv->rebuild);
}

TEST_F(FlMenuRun, EndsTopBottomAndReturn)
{
    for (int k = 0; k < 40; k++)
        make("f" + std::to_string(k), 1);
    fl_menu_run(*lv, "REFRESH", -1);
    fl_lay.lines = 24; // 16 rows of the list
    fl_menu_run(*lv, "BOT", -1);
    EXPECT_EQ(lv->top, int(lv->list.count()) - 16);
    fl_menu_run(*lv, "TOP", -1);
    EXPECT_EQ(lv->top, 0);
    EXPECT_FALSE(fl_end_level);
    fl_menu_run(*lv, "RETURN", -1);
    EXPECT_TRUE(fl_end_level);
}

TEST_F(FlMenuRun, LineActionsNeedTheCursorOnAListLine)
{
    fl_menu_run(*lv, "f * /t", -1);
    EXPECT_EQ(lv->msg, ".... Invalid cursor position");
    EXPECT_EQ(fl_levels.size(), 1u) << "no list was started";
    lv->msg.clear();
    fl_menu_run(*lv, "f * * /d", int(lv->list.count()));
    EXPECT_EQ(lv->msg, ".... Invalid cursor position");
}

TEST_F(FlMenuRun, ToolBarButtonsByPosition)
{
    // Buttons with nothing to do in a list leave it as it was.
    names before = shown(*lv);
    for (int pos : {-1, 1, 3, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 17, 18, FS_PASTE_ID}) {
        fl_tool_run(*lv, pos, -1);
        EXPECT_FALSE(fl_end_level) << pos;
        EXPECT_EQ(shown(*lv), before) << pos;
        EXPECT_EQ(lv->msg, "") << pos;
    }
    // Find is the list of the name under the cursor: it needs a line.
    fl_tool_run(*lv, 16, -1);
    EXPECT_EQ(lv->msg, ".... Invalid cursor position");
    // Quit ends the level.
    fl_tool_run(*lv, 0, -1);
    EXPECT_TRUE(fl_end_level);
}

} // namespace
