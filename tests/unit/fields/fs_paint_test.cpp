// The shadow comparison seen from the layer: only lines that differ reach it,
// from their first difference, in runs of equal attributes; the status line
// texts; bells and colours; the headless layer's script and screen dump.
#include "fs_fixture.h"
#include <cstdio>
#include <cstring>
#include <set>
#include <unistd.h>

using Paint = FieldsTest;

namespace {
std::set<int> runlines(const fs_plat_rec *r) {
  std::set<int> s;
  for (const fs_rec_call &c : r->calls)
    if (c.op == 'r') s.insert(c.line);
  return s;
}
}  // namespace

TEST_F(Paint, NothingChangedDrawsNothing) {
  define({fld(1, 2, 1, 1, 10), fld(2, 5, 1, 1, 10)});
  put(1, "hello");
  asrefresh();
  EXPECT_EQ(rec->text[1].substr(0, 5), "hello");
  rec->forget();
  asrefresh();
  EXPECT_EQ(rec->runs(), 0);
  EXPECT_TRUE(rec->calls.empty());
  // Rewriting the same text marks the field but shows no difference.
  put(1, "hello");
  asrefresh();
  EXPECT_EQ(rec->runs(), 0);
}

TEST_F(Paint, OnlyChangedLinesFromTheFirstDifference) {
  define({fld(1, 2, 1, 1, 20), fld(2, 5, 1, 1, 20), fld(3, 9, 1, 1, 20)});
  put(1, "one");
  put(2, "two two two");
  put(3, "three");
  asrefresh();
  rec->forget();
  put(2, "two TWO two");
  asrefresh();
  EXPECT_EQ(runlines(rec), std::set<int>{5});
  // From the first difference to the line's end: the field's cells, then the
  // cells outside it, which have the default colour.
  ASSERT_EQ(rec->runs(), 2);
  EXPECT_EQ(rec->calls[0].col, 5);
  EXPECT_EQ(rec->calls[0].count, 16);
  EXPECT_EQ(rec->calls[1].col, 21);
  EXPECT_EQ(rec->calls[1].count, 60);
  EXPECT_EQ(rec->text[4].substr(0, 11), "two TWO two");
}

TEST_F(Paint, RunsSplitAtAttributeChanges) {
  define({fld(1, 3, 1, 1, 6)});
  put(1, "abcdef");
  asrefresh();
  rec->forget();
  const int32_t c[6] = {-1, -1, 2, 2, -1, -1};
  asccol(1, 6, c);
  asrefresh();
  // From column 3: the two cells of colour 2, the field's colour, then the rest of the line.
  ASSERT_EQ(rec->runs(), 3);
  EXPECT_EQ(rec->calls[0].col, 3);
  EXPECT_EQ(rec->calls[0].text, "cd");
  EXPECT_EQ(rec->calls[1].col, 5);
  EXPECT_EQ(rec->calls[1].text, "ef");
  EXPECT_EQ(rec->calls[2].col, 7);
  EXPECT_EQ(rec->colour[2][2], 2);
  EXPECT_EQ(rec->colour[2][4], 4);  // logical 0 shows as physical 4
}

TEST_F(Paint, SpecialCellsAreShownSafely) {
  define({fld(1, 1, 1, 1, 6), fld(2, 2, 1, 1, 2)});
  const uint16_t cells[5] = {'a', '\t', '\n', '\f', FS_NULL};
  ascput_short(1, 5, cells);
  asrefresh();
  EXPECT_EQ(rec->text[0].substr(0, 6), "a...  ");
  int flashes = rec->flashes;
  rec->forget();
  // A hilite 1 field looks like hilite 0: nothing to redraw.
  asfhlt(1, 1);
  asrefresh();
  EXPECT_EQ(rec->runs(), 0);
  EXPECT_EQ(rec->flashes, flashes);
}

TEST_F(Paint, TrailingBlanksGetTicks) {
  fsxfield x{};
  x.limit = -1;
  x.show_blanks = 1;
  row r = fld(1, 2, 1, 1, 8);
  asxfmt(14, r.data(), x);
  const uint16_t cells[6] = {'a', ' ', 'b', ' ', ' ', FS_NULL};
  ascput_short(1, 6, cells);
  asrefresh();
  EXPECT_EQ(rec->ticks[1].substr(0, 8), "   ''   ");
  rec->forget();
  asrefresh();
  EXPECT_TRUE(rec->calls.empty());
  put(1, "abc");  // blanks to the end now
  asrefresh();
  EXPECT_EQ(rec->ticks[1].substr(0, 8), "   '''''");
  asfclr();
  asrefresh();
  EXPECT_EQ(rec->ticks[1].substr(0, 8), "        ");
}

TEST_F(Paint, PageSwitchRepaintsWhole) {
  define({fld(1, 1, 1, 1, 5)});
  put(1, "abc");
  asrefresh();
  fspcrt(2);
  rec->forget();
  asrefresh();
  ASSERT_FALSE(rec->calls.empty());
  EXPECT_EQ(rec->calls[0].op, 'x');
  EXPECT_EQ(rec->runs(), 0);  // an empty page matches the cleared screen
  fspsel(0);
  rec->forget();
  asrefresh();
  EXPECT_EQ(runlines(rec), std::set<int>{1});
  EXPECT_EQ(rec->text[0].substr(0, 3), "abc");
}

TEST_F(Paint, TypingRepaintsAtOnce) {
  define({fld(1, 4, 1, 1, 8)});
  asrefresh();
  asfcur(1, 1, 1);
  rec->forget();
  rec->script("type ab");
  rec->script("key enter");
  int code, value, mod;
  asread(&code, &value, &mod);
  EXPECT_EQ(runlines(rec), std::set<int>{4});
  EXPECT_EQ(rec->text[3].substr(0, 2), "ab");
}

TEST_F(Paint, StatusLineTexts) {
  define({fld(1, 3, 1, 1, 10)});
  put(1, "A");
  asfcur(1, 1, 1);
  asrefresh();
  EXPECT_EQ(rec->statusline.substr(0, 23), "Line=3  Col=1  Hex=41  ");
  EXPECT_EQ(rec->statusline.size(), 80u);
  ascput_short(1, 0, nullptr);
  asfro(1);
  asfapl(1);
  asfinsert(1);
  asrefresh();
  EXPECT_EQ(rec->statusline.substr(0, 21), "Line=3  Col=1  Hex=--");
  EXPECT_EQ(rec->statusline.substr(35, 8), "< INS > ");
  EXPECT_EQ(rec->statusline.substr(64, 14), "READ ONLY FILE");
  EXPECT_EQ(rec->statusline.substr(55, 3), "APL");
  asfreverse(1);
  asrefresh();
  EXPECT_EQ(rec->statusline.substr(35, 8), "< RINS >");
  asfreverse(0);
  asfinsert(0);
  asfapl(0);
  asfro(0);
  asrefresh();
  EXPECT_EQ(rec->statusline.find_first_not_of(' ', 21), std::string::npos);
}

TEST_F(Paint, NarrowStatusLine) {
  fsend();
  delete rec;
  start(10, 40);
  define({fld(1, 2, 1, 1, 10)});
  put(1, "z");
  asfcur(1, 1, 1);
  asfro(1);
  asrefresh();
  EXPECT_EQ(rec->statusline.substr(0, 14), "Line=2  Hex=7A");
  EXPECT_EQ(rec->statusline.substr(35, 3), "R/O");
  EXPECT_EQ(rec->statusline.find("READ ONLY"), std::string::npos);
  asfro(0);
}

TEST_F(Paint, PositionHookMapsTheStatusLine) {
  as_poshook = [](int *l, int *c) {
    *l += 100;
    *c += 7;
  };
  asfcur(0, 2, 3);
  asrefresh();
  as_poshook = nullptr;
  EXPECT_EQ(rec->statusline.substr(0, 16), "Line=102  Col=10");
}

TEST_F(Paint, BellsColoursAndCursor) {
  fsalrm();
  fsalrm();
  asrefresh();
  EXPECT_EQ(rec->bells, 2);
  asrefresh();
  EXPECT_EQ(rec->bells, 2);
  define({fld(1, 1, 1, 1, 3)});
  asfcol(1, 2);
  put(1, "abc");
  asrefresh();
  EXPECT_EQ(rec->colour[0][0], 2);
  asfacol(0);
  asrefresh();
  EXPECT_EQ(rec->colour[0][0], 64);
  asfacol(1);
  asrefresh();
  EXPECT_EQ(rec->colour[0][0], 2);
  rec->forget();
  asfmap(65, 1, 2, 3);
  ASSERT_FALSE(rec->calls.empty());
  EXPECT_EQ(rec->calls[0].op, 'p');
  EXPECT_EQ(rec->calls[0].line, 0);
  asfcur(0, 7, 9);
  asrefresh();
  EXPECT_EQ(rec->curline, 7);
  EXPECT_EQ(rec->curcol, 9);
}

TEST_F(Paint, FullPageEveryCellChanged) {
  fsend();
  delete rec;
  start(60, 200);
  std::vector<row> rows;
  for (int l = 1; l <= 60; l++) rows.push_back(fld(l, l, 1, 1, 200));
  define(rows);
  std::string a(200, 'a'), b(200, 'b');
  for (int l = 1; l <= 60; l++) put(l, a);
  asrefresh();
  for (int l = 1; l <= 60; l++) put(l, b);
  rec->forget();
  asrefresh();
  EXPECT_EQ(rec->runs(), 60);
  EXPECT_EQ(rec->text[59], b);
}

TEST_F(Paint, DumpWithAttributes) {
  fsend();
  delete rec;
  start(2, 4);
  define({fld(1, 1, 2, 1, 2)});
  asfhlt(1, 2);
  asfcol(1, 3);
  asfint(1, 2);
  put(1, "ab");
  asrefresh();
  FILE *out = tmpfile();
  fs_dump(out, 1);
  rewind(out);
  char buf[256] = {0};
  size_t got = fread(buf, 1, sizeof buf - 1, out);
  fclose(out);
  EXPECT_EQ(std::string(buf, got),
            " ab\n\nLine\n"  // the status line is cut to the grid's width
            "hilite:\n0220\n0000\n"
            "colour:\n$33$\n$$$$\n"
            "intensity:\n1221\n1111\n");
}

// The headless layer reads a script file and dumps the screen to a stream.
TEST(NullLayer, ScriptAndDump) {
  fs_plat *null = fs_plat_null(5, 20);
  char prog[] = "t";
  char *argv[] = {prog, nullptr};
  fsinit(1, argv, null);
  const int32_t rows[2][5] = {{1, 2, 3, 1, 8}, {2, 4, 1, 1, 5}};
  asrfmt(2, 5, &rows[0][0]);
  ascput(1, 5, "hello");
  std::string tmpl = ::testing::TempDir() + "fs_scriptXXXXXX";
  std::vector<char> name(tmpl.begin(), tmpl.end());
  name.push_back(0);
  char *path = name.data();
  int fd = mkstemp(path);
  ASSERT_GE(fd, 0);
  const char script[] = "# a comment\n\ntype X\nkey tab\ntype yz\ndump\nkey enter\n";
  ASSERT_EQ(write(fd, script, sizeof script - 1), ssize_t(sizeof script - 1));
  close(fd);
  FILE *out = tmpfile();
  ASSERT_EQ(fs_null_script(null, path, out), 0);
  asfcur(1, 1, 1);
  int code, value, mod;
  asread(&code, &value, &mod);
  EXPECT_EQ(code, 0);
  EXPECT_EQ(mod, 2);
  asread(&code, &value, &mod);
  EXPECT_EQ(code, 23);
  rewind(out);
  char buf[512] = {0};
  size_t got = fread(buf, 1, sizeof buf - 1, out);
  fclose(out);
  unlink(path);
  EXPECT_EQ(std::string(buf, got),
            "\n  Xello\n\nyz\n\nLine=4  Hex=--\n");
  EXPECT_EQ(fs_null_script(null, "/nonexistent/script", nullptr), -1);
  fsend();
  delete null;
}
