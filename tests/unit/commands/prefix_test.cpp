// Prefix entries: how a typed text is cut up and parked, the tables' limits,
// and the rules of the run that a screen case shows poorly (the order of
// deletions and blocks, undo steps, refusals that change nothing).
#include "commands/internal.h"
#include "tests/unit/session/fixture.h"

#include <gtest/gtest.h>

namespace {

struct Prefix : EditorTest {
    void SetUp() override
    {
        EditorTest::SetUp();
        file({"a", "b", "c", "d", "e", "f", "g", "h"});
    }
    // The entry of line li: "S:code:count" or "B:code:count", "" none.
    std::string entry(int32_t li)
    {
        for (int b = 0; b < 2; b++)
            for (auto &p : b ? xf->pend2 : xf->pend1)
                if (p.li == li)
                    return std::string(b ? "B:" : "S:") + std::to_string(p.code) + ":" +
                           std::to_string(p.count);
        return "";
    }
    bool error_row(int32_t li)
    {
        for (auto &p : xf->pfxerrs)
            if (p.second == li)
                return true;
        return false;
    }
};

TEST_F(Prefix, NumberBeforeOrBehindTheName)
{
    struct row {
        const char *typed;
        const char *want; // the entry parked, "" for an error row
    };
    const row rows[] = {
        {"3d", "S:2:3"},    {"d3", "S:2:3"},   {"D", "S:2:1"},     {"d*", "S:2:2147483647"},
        {"s", "S:13:0"},    {"s-2", "S:13:-2"}, {"sc", "S:14:1"},   {"scale", "S:14:1"},
        {"t", "S:15:1"},    {">5", "S:9:5"},   {"\"", "S:4:1"},    {"dd", "B:3:1"},
        {">>4", "B:11:4"},  {"\"\"", "B:9:1"}, {"f", "B:6:1"},     {"5dd5", ""},
        {"zz", ""},         {"d 3x y z w", ""}, {"3", ""},          {"ddd", ""},
    };
    for (auto &r : rows) {
        xfack2(2, r.typed, -1);
        EXPECT_EQ(entry(2), r.want) << r.typed;
        EXPECT_EQ(error_row(2), *r.want == 0) << r.typed;
    }
}

TEST_F(Prefix, VocabularyFollowsModePrefix)
{
    xfack2(1, "a", -1);
    EXPECT_EQ(entry(1), "S:1:1"); // XEDIT: A adds
    xfack2(2, "r", -1);
    EXPECT_TRUE(error_row(2));   // no R in XEDIT
    modes.prefix_ispf = 1;
    xfack2(1, "a", -1);
    EXPECT_EQ(entry(1), "B:6:1"); // ISPF: A is a destination
    xfack2(2, "r", -1);
    EXPECT_EQ(entry(2), "S:11:1");
    xfack2(3, "ucc", -1);
    EXPECT_EQ(entry(3), "B:18:1");
}

TEST_F(Prefix, MAndCOnTheTopOfTheFileAreErrors)
{
    xfack2(-1, "m", -1);
    EXPECT_TRUE(error_row(-1));
    xfack2(-1, "a2", -1);
    EXPECT_EQ(entry(-1), "S:1:2");
    EXPECT_FALSE(error_row(-1));
}

TEST_F(Prefix, BlanksTakeTheEntryAndItsTextAway)
{
    xfack2(3, "dd", -1);
    EXPECT_EQ(xfpfx_text(3), "dd");
    xfack2(3, "   ", -1);
    EXPECT_EQ(entry(3), "");
    EXPECT_EQ(xfpfx_text(3), "");
}

TEST_F(Prefix, TablesRefuseEntriesBeyondTheirSize)
{
    for (int i = 0; i < 999; i++)
        xf->pend1.push_back({0, 7, PFX_ADD, 1, -1, false, {}, {}});
    xfack2(5, "d", -1);
    EXPECT_EQ(entry(5), "");
    EXPECT_EQ(xf->pend1.size(), 999u);
    ASSERT_FALSE(msgs().empty());
    EXPECT_EQ(msgs().back(), "..... Too many prefix commands");
    // PENDing BLOCK may hold one more.
    for (int i = 0; i < 999; i++)
        xf->pend2.push_back({0, 7, PFX_CC, 1, -1, false, {}, {}});
    curline() = 4;
    xfcmdline("pending block dd");
    EXPECT_EQ(xf->pend2.size(), 1000u);
    xfcmdline("pending block mm");
    EXPECT_EQ(xf->pend2.size(), 1000u);
}

TEST_F(Prefix, LabelsAndTheirClashes)
{
    xfack2(2, ".here", -1);
    ASSERT_EQ(xfpoint_find(".here"), 0);
    EXPECT_EQ(xf->points[0].li, 2);
    xfack2(5, ".here", -1);
    EXPECT_TRUE(error_row(5));
    EXPECT_EQ(xf->points[0].li, 2);
}

TEST_F(Prefix, DeletionsRunAfterTheOthersAndEachIsOneUndoStep)
{
    xfack2(0, "d", -1);
    xfack2(3, "\"", -1);
    xfapply();
    EXPECT_EQ(text(), (std::vector<std::string>{"b", "c", "d", "d", "e", "f", "g", "h"}));
    ASSERT_TRUE(xf_undo());
    EXPECT_EQ(text(), (std::vector<std::string>{"a", "b", "c", "d", "d", "e", "f", "g", "h"}));
    ASSERT_TRUE(xf_undo());
    EXPECT_EQ(text(), (std::vector<std::string>{"a", "b", "c", "d", "e", "f", "g", "h"}));
}

TEST_F(Prefix, ABlockWhoseEndIsDeletedWaits)
{
    xfack2(1, "dd", -1);
    xfack2(4, "dd", -1);
    xfack2(3, "d2", -1); // takes line 4 and the block's end with it
    xfapply();
    EXPECT_EQ(text(), (std::vector<std::string>{"a", "b", "c", "f", "g", "h"}));
    EXPECT_EQ(entry(1), "B:3:1");
    EXPECT_EQ(xfpfx_text(1), "dd");
}

TEST_F(Prefix, RefusedDestinationsChangeNothing)
{
    std::vector<std::string> before = text();
    xfack2(1, "mm", -1);
    xfack2(5, "mm", -1);
    xfack2(3, "f", -1); // inside the block
    xfapply();
    EXPECT_EQ(text(), before);
    EXPECT_EQ(msgs().back(), "..... Invalid F, P, O or OO position");
    EXPECT_TRUE(xf->pend2.empty());
    xfack2(0, "c", -1);
    xfack2(3, "f", -1);
    xfack2(5, "p", -1); // two destinations
    xfapply();
    EXPECT_EQ(text(), before);
    EXPECT_TRUE(xf->pend2.empty());
}

TEST_F(Prefix, MoveDownPastHiddenLines)
{
    xf->lines[3].selevel = 9; // "d" hidden
    xfack2(0, "mm", -1);
    xfack2(1, "mm", -1);
    xfack2(5, "f", -1);
    xfapply();
    EXPECT_EQ(text(), (std::vector<std::string>{"c", "d", "e", "f", "a", "b", "g", "h"}));
}

TEST_F(Prefix, ShiftBlockTakesTheFirstBoundsNumber)
{
    file({"ab", "cd", "ef"});
    xfack2(0, ">>2", -1);
    xfack2(2, ">>5", -1);
    xfapply();
    EXPECT_EQ(text(), (std::vector<std::string>{"  ab", "  cd", "  ef"}));
}

TEST_F(Prefix, ExcludingTheCurrentLineMovesIt)
{
    curline() = 2;
    xfack2(2, "x3", -1);
    xfapply();
    EXPECT_FALSE(xfinscope(2));
    EXPECT_FALSE(xfinscope(4));
    EXPECT_TRUE(xfinscope(5));
    EXPECT_EQ(curline(), 5);
    xfack2(2, "s-1", -1); // the group's last line comes back
    xfapply();
    EXPECT_TRUE(xfinscope(4));
    EXPECT_FALSE(xfinscope(3));
}

TEST_F(Prefix, PendingCommandForms)
{
    curline() = 2;
    xfcmdline("pending");
    EXPECT_EQ(cmd_rc, 5);
    xfcmdline("pending nosuchmacro");
    EXPECT_EQ(cmd_rc, 5);
    xfcmdline("pending d2");
    EXPECT_EQ(entry(2), "S:2:2");
    xfcmdline("pending off");
    EXPECT_EQ(entry(2), "");
    xfcmdline("pending error what");
    EXPECT_TRUE(error_row(2));
}

TEST_F(Prefix, CopiedLinesTakeTheFirstDestinationBeforeAnyBlock)
{
    pdf_parked = {PARK_COPY, {"x", "y"}, ""};
    xfack2(0, "cc", -1);
    xfack2(1, "cc", -1);
    xfack2(4, "f", -1);
    xfapply();
    EXPECT_EQ(text(), (std::vector<std::string>{"a", "b", "c", "d", "e", "x", "y", "f", "g", "h"}));
    EXPECT_EQ(pdf_parked.kind, PARK_NONE);
    // The block found no destination left: it waits for the next one.
    EXPECT_EQ(entry(0), "B:2:1");
    EXPECT_EQ(entry(1), "B:2:1");
    xfack2(2, "p", -1);
    xfapply();
    EXPECT_EQ(text(),
              (std::vector<std::string>{"a", "b", "a", "b", "c", "d", "e", "x", "y", "f", "g", "h"}));
    // B before the top of the file has no place: refused, the lines kept.
    pdf_parked = {PARK_COPY, {"z"}, ""};
    modes.prefix_ispf = 1;
    xfack2(-1, "b", -1);
    xfapply();
    EXPECT_EQ(msgs().back(), "..... Invalid F, P, O or OO position");
    EXPECT_EQ(pdf_parked.kind, PARK_COPY);
    pdf_parked = {};
}

// A page of file rows, row r showing line r - 1 (the top of the file on
// row 0), as a draw would leave it.
void fake_rows(int n)
{
    xv->rows.clear();
    for (int r = 0; r < n; r++) {
        xview::rowmap m{r + 1, r - 1, 0, 0, 40};
        m.pli = r - 1;
        xv->rows.push_back(m);
    }
}

TEST_F(Prefix, EHoldsUpTo19LinesThatFollowTheEdits)
{
    std::vector<std::string> lines;
    for (int i = 0; i < 30; i++)
        lines.push_back("l" + std::to_string(i));
    file(lines);
    fake_rows(25);
    auto &kept = xv->perfile[(size_t)xfidx].kept;
    xfack2(-1, "e", -1); // the area's first row: scrolling starts there
    xfack2(23, "e", -1); // and its last
    xfapply();
    EXPECT_TRUE(kept.empty());
    for (int32_t li = 0; li < 20; li++)
        xfack2(li, "e", -1);
    xfapply();
    ASSERT_EQ(kept.size(), xfkept_max);
    EXPECT_EQ(kept.front().li, 1); // the oldest went
    EXPECT_EQ(kept.front().row, 2);
    xfack2(5, "e", -1); // again: let go
    xfapply();
    EXPECT_EQ(kept.size(), xfkept_max - 1);
    // Held lines follow deletions above them and go with their own.
    xfack2(0, "d", -1);
    xfack2(3, "d", -1);
    xfapply();
    EXPECT_EQ(kept.front().li, 0);
    EXPECT_EQ(kept.front().row, 2);
    EXPECT_EQ(kept.size(), xfkept_max - 2);
}

TEST_F(Prefix, FindingEntriesByNameBlockAndOldName)
{
    xfmacro mark;
    mark.name = "mark";
    mark.path = "mark.vorta"; // never run: only its name is looked up
    mark.cls = 10;
    rexx_macros.push_back(mark);
    pfx_synonyms = {{"UP", "mark"}};
    xfack2(1, "d2", -1);
    xfack2(3, "cc", -1);
    xfack2(5, "up 4 x", -1);
    bool ok;
    EXPECT_EQ(xfpfx_find("*", ok).size(), 3u);
    EXPECT_TRUE(ok);
    // A macro of a name longer than a letter waits in the block table.
    std::vector<xfpfx_row> b = xfpfx_find("block *", ok);
    ASSERT_EQ(b.size(), 2u);
    EXPECT_EQ(b[0].name, "CC");
    EXPECT_EQ(b[1].old, "UP");
    EXPECT_TRUE(xfpfx_find("up", ok).empty()); // the name after synonyms is mark
    std::vector<xfpfx_row> m = xfpfx_find("oldname up", ok);
    ASSERT_EQ(m.size(), 1u);
    EXPECT_EQ(m[0].li, 5);
    EXPECT_EQ(m[0].name, "mark");
    EXPECT_EQ(m[0].ops, (std::vector<std::string>{"4", "x"}));
    xfpfx_find("block", ok);
    EXPECT_FALSE(ok);
    pfx_synonyms.clear();
}

} // namespace
