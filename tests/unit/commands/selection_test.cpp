// The selection and the clipboard: what each S_ command takes from and
// leaves in the file and the clipboard, the refusals that must change
// nothing, and the undo step each change makes.
#include "commands/internal.h"
#include "platform/platform.h"
#include "tests/unit/session/fixture.h"

#include <gtest/gtest.h>

namespace {

using lines = std::vector<std::string>;

struct Selection : EditorTest {
    void SetUp() override
    {
        EditorTest::SetUp();
        pl_clip_set(pl_clip());
    }
};

TEST_F(Selection, StreamCopyThenPasteSplitsTheLine)
{
    file({"abcdef", "ghijkl", "mnop"});
    xfcmdline("s_set l 1 3 2 2");
    xfcmdline("s_copy");
    EXPECT_EQ(pl_clip_own().lines, (lines{"cdef", "gh"}));
    EXPECT_FALSE(pl_clip_own().rect);
    xfcmdline("s_paste i 3 2");
    EXPECT_EQ(cmd_rc, 0);
    EXPECT_EQ(text(), (lines{"abcdef", "ghijkl", "mcdef", "ghnop"}));
}

TEST_F(Selection, StreamCutJoinsTheEndsInOneUndoStep)
{
    file({"abcdef", "ghijkl", "mnop"});
    xfcmdline("s_set l 1 3 3 2");
    xfopen_groups();
    xfcmdline("s_cut");
    EXPECT_EQ(text(), (lines{"abop"}));
    EXPECT_EQ(pl_clip_own().lines, (lines{"cdef", "ghijkl", "mn"}));
    EXPECT_LT(xfsel_file(), 0); // the cut text is no longer selected
    EXPECT_TRUE(xf_undo());
    EXPECT_EQ(text(), (lines{"abcdef", "ghijkl", "mnop"}));
}

TEST_F(Selection, RectangleCutLeavesTheOtherColumns)
{
    file({"abcdef", "gh", "ijklmn"});
    xfcmdline("s_set r 1 2 3 4");
    xfcmdline("s_cut");
    EXPECT_EQ(text(), (lines{"aef", "g", "imn"}));
    // Short lines are made up to the rectangle's width.
    EXPECT_EQ(pl_clip_own().lines, (lines{"bcd", "h  ", "jkl"}));
    EXPECT_TRUE(pl_clip_own().rect);
    // Pasted back as a rectangle where it came from, the file is as before
    // but for the blanks the short line gains.
    xfcmdline("s_paste i 1 2");
    EXPECT_EQ(text(), (lines{"abcdef", "gh", "ijklmn"}));
    xfcmdline("s_paste o s 2 1");
    EXPECT_EQ(text(), (lines{"abcdef", "bcd", "h  lmn", "jkl"}));
}

TEST_F(Selection, PasteRefusalsChangeNothing)
{
    file({"one", "two"});
    xfcmdline("s_paste");
    EXPECT_EQ(lastmsg(), "..... The Clipboard is empty");
    EXPECT_EQ(cmd_rc, 1);
    xfcmdline("s_copy r X");
    for (const char *c : {"s_paste 0", "s_paste 3", "s_paste 1 0", "s_paste -1"}) {
        xv->msgs.clear();
        xfcmdline(c);
        EXPECT_EQ(lastmsg(), "..... Invalid line/column specification.") << c;
        EXPECT_EQ(cmd_rc, 1) << c;
    }
    xfcmdline("s_paste q");
    EXPECT_EQ(lastmsg(), "..... Invalid parameters");
    EXPECT_EQ(text(), (lines{"one", "two"}));
    EXPECT_EQ(xf->chgcount, 0);
}

TEST_F(Selection, CopyWithTextNeedsNoSelection)
{
    file({"one"});
    xfcmdline("s_copy r first text");
    EXPECT_EQ(cmd_rc, 0);
    xfcmdline("s_copy a more");
    EXPECT_EQ(pl_clip_own().lines, (lines{"first text", "more"}));
    xfcmdline("s_copy r again");
    EXPECT_EQ(pl_clip_own().lines, (lines{"again"}));
    xfcmdline("s_copy x y");
    EXPECT_EQ(lastmsg(), "..... Invalid parameters");
    EXPECT_EQ(cmd_rc, 1);
    xfcmdline("s_copy");
    EXPECT_EQ(lastmsg(), "..... No current selection");
    EXPECT_EQ(pl_clip_own().lines, (lines{"again"}));
}

TEST_F(Selection, FoldingStreamAndRectangle)
{
    file({"abcdef", "ghijkl", "mnop"});
    xfcmdline("s_upper");
    EXPECT_EQ(lastmsg(), "..... No current selection");
    xfcmdline("s_set l 1 5 2 2");
    xfcmdline("s_upper");
    EXPECT_EQ(text(), (lines{"abcdEF", "GHijkl", "mnop"}));
    xfcmdline("s_set r 1 2 3 3");
    xfcmdline("s_lower");
    EXPECT_EQ(text(), (lines{"abcdEF", "Ghijkl", "mnop"}));
    xfcmdline("selectall");
    xfopen_groups();
    xfcmdline("s_upper");
    EXPECT_EQ(text(), (lines{"ABCDEF", "GHIJKL", "MNOP"}));
    EXPECT_TRUE(xf_undo());
    EXPECT_EQ(text(), (lines{"abcdEF", "Ghijkl", "mnop"}));
}

TEST_F(Selection, SetRefusesWrongWordsAndNumbers)
{
    file({"abc", "def"});
    for (const char *c : {"s_set", "s_set l 1 1 1", "s_set z 1 1 1 1", "s_set 2 1 1 1",
                          "s_set 1 1 3 1", "s_set 1 3 1 2", "s_set r 1 3 2 2", "s_set 0 1 1 1"}) {
        xv->msgs.clear();
        xfcmdline(c);
        EXPECT_EQ(lastmsg(), "..... Invalid parameters") << c;
        EXPECT_EQ(cmd_rc, 1) << c;
        EXPECT_LT(xfsel_file(), 0) << c;
    }
    xfcmdline("s_set n r 1 3 2 1");
    EXPECT_LT(xfsel_file(), 0); // a rectangle's columns must be in order
    xfcmdline("s_set p 1 2 2 1");
    EXPECT_EQ(cmd_rc, 0);
    EXPECT_TRUE(xfsel.pending);
    EXPECT_EQ(xfsel.kind, 2);
}

TEST_F(Selection, ShiftsMoveTheSelectedLines)
{
    file({"a", "b", "c"});
    xfcmdline("s_set l 2 1 3 1");
    xfcmdline("s_rshift 2");
    EXPECT_EQ(text(), (lines{"a", "  b", "  c"}));
    xfcmdline("s_lshift");
    EXPECT_EQ(text(), (lines{"a", " b", " c"}));
}

TEST_F(Selection, MatchSelectsTheStretch)
{
    file({"f(a,", " (b))"});
    xfcursor_file(0, 1);
    xfcmdline("match");
    ASSERT_GE(xfsel_file(), 0);
    EXPECT_EQ(xfsel.l1, 1);
    EXPECT_EQ(xfsel.c1, 2);
    EXPECT_EQ(xfsel.l2, 2);
    EXPECT_EQ(xfsel.c2, 5);
    xfcursor_file(1, 1);
    xfcmdline("match cursor");
    EXPECT_LT(xfsel_file(), 0);
}

TEST_F(Selection, ClosingTheFileEndsItsSelection)
{
    file({"abc"});
    file({"xyz"}, "/tmp/u.txt");
    xfcmdline("s_set l 1 1 1 2");
    xfdelfile();
    xfcmdline("s_cut");
    EXPECT_EQ(lastmsg(), "..... No current selection");
    EXPECT_EQ(text(), (lines{"abc"}));
}

TEST_F(Selection, FindTheSelectedTextWithoutVarblank)
{
    file({"a  b x", "a b", "a  b", "end"});
    xfcmdline("s_find");
    EXPECT_EQ(lastmsg(), "..... No current selection");
    varblank_on = 1;
    xfcmdline("s_set l 1 1 1 4"); // "a  b": two blanks, which VARblank would let match one
    xfcursor_file(0, 0);
    xfcmdline("s_find");
    EXPECT_EQ(cmd_rc, 0);
    EXPECT_EQ(curline(), 2);
    EXPECT_EQ(varblank_on, 1); // given back after the search
    xfcmdline("s_set l 1 1 2 1");
    xfcmdline("s_find");
    EXPECT_EQ(lastmsg(), "..... Not for multiple lines selection");
    varblank_on = 0;
}

TEST_F(Selection, ClipboardFindAcrossLines)
{
    file({"x", "tail one", "two", "three head", "one", "two", "three"});
    xfcmdline("c_find");
    EXPECT_EQ(lastmsg(), "no data in clipboard");
    // The first line ends a line, the middle is whole, the last starts one.
    xfcmdline("s_copy r one");
    xfcmdline("s_copy a two");
    xfcmdline("s_copy a three");
    xfcmdline("c_find");
    EXPECT_EQ(cmd_rc, 0);
    EXPECT_EQ(curline(), 1);
    xfcmdline("c_find");
    EXPECT_EQ(curline(), 4);
    xfcmdline("s_copy r nowhere");
    xfcmdline("s_copy a at all");
    xfcmdline("c_find");
    EXPECT_EQ(lastmsg(), "..... Not found");
    EXPECT_EQ(curline(), 4);
}

TEST_F(Selection, FollowsLinesAddedAndRemovedBeforeIt)
{
    file({"a", "b", "keep me", "c"});
    xfcmdline("s_set l 3 1 3 4");
    xfcmdline("s_copy r x");
    xfcmdline("s_copy a y");
    xfcmdline("s_paste i 1 1"); // one line more before it
    xfcmdline("s_copy");
    EXPECT_EQ(pl_clip_own().lines, (lines{"keep"}));
    xf_do('D', nullptr, 0, 2, 1, nullptr, "test"); // two lines fewer
    xfcmdline("s_copy");
    EXPECT_EQ(pl_clip_own().lines, (lines{"keep"}));
    xf_do('d', nullptr, 1, 1, 1, nullptr, "test"); // its own line goes
    EXPECT_LT(xfsel_file(), 0);
}

TEST_F(Selection, TypedOverPendingSelectionTakesItsPlace)
{
    file({"abcdef", "ghijkl", "mnop"});
    // Not pending: the character is not taken, and nothing changes.
    xfcmdline("s_set l nopending 1 3 2 2");
    EXPECT_EQ(xf_cut("X"), 0);
    xfcmdline("s_set l p 1 3 2 2");
    xf->rw = 0;
    EXPECT_EQ(xf_cut("X"), 0); // a read-only file keeps its text
    xf->rw = 1;
    EXPECT_EQ(xf_cut(""), 0);
    EXPECT_EQ(text(), (lines{"abcdef", "ghijkl", "mnop"}));
    xfopen_groups();
    EXPECT_EQ(xf_cut("X"), 1);
    EXPECT_EQ(text(), (lines{"abXijkl", "mnop"}));
    EXPECT_LT(xfsel_file(), 0);
    EXPECT_TRUE(pl_clip_own().lines.empty()); // typing over is no cut
    EXPECT_FALSE(xf->curstack.empty());
    EXPECT_EQ(xf->curstack.back().li, 0);
    EXPECT_EQ(xf->curstack.back().col, 3); // behind the character
    // One undo step brings the text back, not the selection.
    EXPECT_TRUE(xf_undo());
    EXPECT_EQ(text(), (lines{"abcdef", "ghijkl", "mnop"}));
    EXPECT_LT(xfsel_file(), 0);
    // A rectangle: the character stands at its top left corner, padded out
    // where the line is short.
    xfcmdline("s_set r p 2 8 3 9");
    EXPECT_EQ(xf_cut("\xc3\xa9"), 1);
    EXPECT_EQ(text(), (lines{"abcdef", "ghijkl \xc3\xa9", "mnop"}));
}

TEST_F(Selection, DeleteKeyKeepsTheTextOnlyWhenAsked)
{
    file({"abcdef"});
    xfcmdline("s_copy r before");
    xfcmdline("s_set l 1 2 1 3");
    EXPECT_EQ(xfsel_delete(false), 1);
    EXPECT_EQ(text(), (lines{"adef"}));
    EXPECT_EQ(pl_clip_own().lines, (lines{"before"}));
    EXPECT_EQ(xfsel_delete(false), 0); // no selection left
    xfcmdline("s_set l 1 1 1 2");
    EXPECT_EQ(xfsel_delete(true), 1);
    EXPECT_EQ(text(), (lines{"ef"}));
    EXPECT_EQ(pl_clip_own().lines, (lines{"ad"}));
}

TEST_F(Selection, PasteOfManyLinesIsOneStep)
{
    file({"head", "tail"});
    std::string big;
    for (int i = 0; i < 100000; i++)
        big += "line " + std::to_string(i) + "\n";
    xfopen_groups();
    EXPECT_EQ(xfpaste_text(big), 1);
    ASSERT_EQ(nbli(), 100002);
    EXPECT_EQ(text()[0], "line 0");
    EXPECT_EQ(text()[99999], "line 99999");
    EXPECT_EQ(text()[100000], "head"); // whole lines stay whole
    EXPECT_TRUE(xf_undo());
    EXPECT_EQ(text(), (lines{"head", "tail"}));
}

TEST(Clipboard, JoinSplitAndBase64)
{
    pl_clip c = pl_clip_split("a\r\nbc\nd\n", true);
    EXPECT_EQ(c.lines, (lines{"a", "bc", "d"}));
    EXPECT_TRUE(c.rect);
    EXPECT_EQ(pl_clip_join(c), "a\r\nbc\r\nd");
    EXPECT_EQ(pl_base64(""), "");
    EXPECT_EQ(pl_base64("f"), "Zg==");
    EXPECT_EQ(pl_base64("fo"), "Zm8=");
    EXPECT_EQ(pl_base64("foo"), "Zm9v");
    EXPECT_EQ(pl_base64("\xff\xfe\x01"), "//4B");
}

} // namespace
