// Field definition and layout, pages, text and attribute calls, queries and
// their exact failure words and codes.
#include "fs_fixture.h"
#include <cstring>

using Layout = FieldsTest;

TEST_F(Layout, EdgeColumnAndOnePast) {
  EXPECT_EQ(define({fld(1, 1, 80, 1, 1)}), 0);
  EXPECT_EQ(as_errno, 0);
  EXPECT_EQ(define({fld(2, 2, 81, 1, 1)}), 1);  // the one field already laid out
  EXPECT_EQ(as_errno, 1);
  EXPECT_STREQ(as_lastmsg, "as(x)fmt: Field 2: x1 = 81  nb_cols = 80.");
  EXPECT_EQ(define({fld(3, 25, 1, 1, 1)}), 1);
  EXPECT_STREQ(as_lastmsg, "as(x)fmt: Field 3: y1 = 25  nb_lines = 24.");
  EXPECT_EQ(define({fld(4, 20, 1, 6, 10)}), 1);
  EXPECT_STREQ(as_lastmsg, "as(x)fmt: Field 4: y2 = 25  nb_lines = 24.");
}

TEST_F(Layout, WrappedFieldReachesLastCellAndNoFurther) {
  // From line 24 column 71: 10 cells fit exactly, 11 run off the grid.
  EXPECT_EQ(define({fld(1, 23, 71, 1, 90)}), 0);
  int id, l, c;
  asfcur(1, 1, 90);
  EXPECT_EQ(as_errno, 0);
  asqcur(0, &id, &l, &c);
  EXPECT_EQ(l, 24);
  EXPECT_EQ(c, 80);
  asqcur(1, &id, &l, &c);
  EXPECT_EQ(id, 1);
  EXPECT_EQ(l, 1);
  EXPECT_EQ(c, 90);
  asfcur(1, 2, 1);
  EXPECT_EQ(as_errno, 1);
  EXPECT_STREQ(as_lastmsg, "asfcur : invalid specification");

  asfclr();
  EXPECT_EQ(define({fld(2, 1, 1, 1, 5), fld(3, 24, 75, 1, 7)}), 1);
  EXPECT_STREQ(as_lastmsg, "as(x)fmt: Field 3: py = 25  nb_lines = 24.");
  // The failed field left no cell behind: a field may take its place.
  EXPECT_EQ(define({fld(4, 24, 75, 1, 6)}), 1);
  EXPECT_EQ(as_errno, 0);
}

TEST_F(Layout, WrappedTextRunsAcrossLines) {
  define({fld(1, 1, 78, 1, 6)});
  put(1, "abcdef");
  asrefresh();
  EXPECT_EQ(rec->text[0].substr(77), "abc");
  EXPECT_EQ(rec->text[1].substr(0, 3), "def");
}

TEST_F(Layout, OverlapNamesBothFieldsAndUndoes) {
  define({fld(1, 5, 10, 2, 10)});
  EXPECT_EQ(define({fld(2, 1, 1, 1, 3), fld(3, 6, 5, 1, 10)}), 2);
  EXPECT_EQ(as_errno, 1);
  EXPECT_STREQ(as_lastmsg, "as(x)fmt: field 3 overlaps field 1");
  // Field 3's cells before the overlap (6,5..6,9) are free again.
  EXPECT_EQ(define({fld(5, 6, 5, 1, 5)}), 2);
  EXPECT_EQ(as_errno, 0);
}

TEST_F(Layout, DuplicateTestSkipsTheLastRow) {
  EXPECT_EQ(define({fld(1, 1, 1, 1, 5), fld(1, 2, 1, 1, 5), fld(2, 3, 1, 1, 5)}), -1);
  EXPECT_EQ(as_errno, 3);
  EXPECT_STREQ(as_lastmsg, "asrfmt: duplicate field 1");
  // The repeated id in the last row passes, and the later row wins.
  EXPECT_EQ(define({fld(1, 1, 1, 1, 5), fld(2, 3, 1, 1, 5), fld(1, 2, 1, 1, 5)}), 1);
  EXPECT_EQ(as_errno, 0);
  int32_t w[5];
  asqfld(0, 1, 5, w);
  EXPECT_EQ(w[1], 2);
  EXPECT_EQ(asq_ff(1), 2);
}

TEST_F(Layout, RowArgumentChecks) {
  std::vector<int32_t> t = {1, 1, 1, 1, 5};
  EXPECT_EQ(asrfmt(1, 4, t.data()), -1);
  EXPECT_STREQ(as_lastmsg, "asrfmt : invalid count number");
  EXPECT_EQ(asrfmt(-1, 5, t.data()), -1);
  EXPECT_EQ(as_errno, 2);
  EXPECT_STREQ(as_lastmsg, "asrfmt : invalid n_fields number");
  EXPECT_EQ(asrfmt(0, 5, t.data()), -1);
  EXPECT_EQ(as_errno, 0);
  EXPECT_EQ(define({fld(1, 1, 1, 1, 5), fld(0, 2, 1, 1, 5)}), -1);
  EXPECT_EQ(as_errno, 4);
  EXPECT_STREQ(as_lastmsg, "asrfmt: field 2 invalid");
  // Five words per row: the rest are zero.
  EXPECT_EQ(asrfmt(1, 5, t.data()), 0);
  int32_t w[14];
  asqfld(0, 1, 14, w);
  EXPECT_EQ(w[5], 0);
  EXPECT_EQ(w[13], 0);
}

TEST_F(Layout, ZeroSizeRowOnlyRemoves) {
  define({fld(1, 1, 1, 1, 5), fld(2, 2, 1, 1, 5)});
  put(2, "kept");
  EXPECT_EQ(define({fld(1, 0, 0, 0, 0)}), -1);
  EXPECT_EQ(as_errno, 0);
  EXPECT_EQ(asq_ff(2), 1);
  EXPECT_EQ(get(2), "kept ");
  asq_ff(1);
  EXPECT_STREQ(as_lastmsg, "asq_ff: invalid field");
  // The freed cells are blank and free.
  EXPECT_EQ(define({fld(3, 1, 1, 1, 5)}), 1);
}

TEST_F(Layout, LastFieldOfACallStartsAsNullCells) {
  define({fld(1, 1, 1, 1, 4), fld(2, 2, 1, 1, 4)});
  uint16_t c[4];
  ascget_short(1, 4, c);
  EXPECT_EQ(c[0], 32);
  ascget_short(2, 4, c);
  EXPECT_EQ(c[0], FS_NULL);
  EXPECT_EQ(c[3], FS_NULL);
  EXPECT_EQ(get(2), "    ");
  int ids[3], lens[3], used[3];
  EXPECT_EQ(asqmod(3, ids, lens, used), 0);
}

TEST_F(Layout, ClearResetsEveryCell) {
  define({fld(1, 1, 1, 1, 4)});
  put(1, "abcd");
  asfclr();
  EXPECT_EQ(as_errno, 0);
  EXPECT_EQ(asq_ff(1), 1);  // not found any more
  EXPECT_EQ(define({fld(2, 1, 1, 1, 4)}), 0);
  define({fld(3, 2, 1, 1, 1)});
  EXPECT_EQ(get(2), "    ");
}

TEST_F(Layout, PagesKeepTheirContents) {
  define({fld(1, 1, 1, 1, 5)});
  put(1, "zero");
  fspcrt(7);
  EXPECT_EQ(as_errno, 0);
  EXPECT_EQ(fs_curpage(), 7u);
  EXPECT_EQ(asq_ff(1), 1);
  fspcrt(7);
  EXPECT_EQ(as_errno, 2);
  EXPECT_STREQ(as_lastmsg, "fspcrt: Page 7 already exists.");
  fspsel(9);
  EXPECT_EQ(as_errno, 28);
  EXPECT_STREQ(as_lastmsg, "fspdel: Page 9 not found.");
  fspsel(0);
  EXPECT_EQ(get(1), "zero ");
  fspdel(0);
  EXPECT_STREQ(as_lastmsg, "fspdel : page 0 cannot be destroyed");
  fspdel(7);
  EXPECT_EQ(as_errno, 0);
  EXPECT_EQ(fs_curpage(), 0u);
  fspsel(7);
  EXPECT_EQ(as_errno, 28);
  // Many pages grow the table in steps and stay apart.
  for (uint32_t p = 100; p < 125; p++) {
    fspcrt(p);
    define({fld(1, 1, 1, 1, 4)});
    put(1, std::to_string(p));
  }
  fspsel(111);
  EXPECT_EQ(get(1), "111 ");
  fspdel(111);
  EXPECT_EQ(fs_curpage(), 0u);
  EXPECT_EQ(get(1), "zero ");
}

TEST_F(Layout, NotStartedWords) {
  fsend();
  EXPECT_EQ(define({fld(1, 1, 1, 1, 1)}), -1);
  EXPECT_STREQ(as_lastmsg, "asrfmt : call fsinit() first");
  asfclr();
  EXPECT_STREQ(as_lastmsg, "fsalrm : call fsinit() first");
  int a, b, c;
  asqmou(0, &a, &b, &c);
  EXPECT_STREQ(as_lastmsg, "fspdel : call fsinit() first");
  fspsel(1);
  EXPECT_STREQ(as_lastmsg, "fspcrt : call fsinit() first");
  EXPECT_EQ(ascget_int(1, &a), -1);
  EXPECT_STREQ(as_lastmsg, "ascget_int : call fsinit() first");
  EXPECT_EQ(as_errno, 1);
  char prog[] = "t";
  char *argv[] = {prog, nullptr};
  fsinit(1, argv, rec);
  EXPECT_EQ(fsinit(1, argv, rec), -1);
  EXPECT_STREQ(as_lastmsg, "fsinit : secondary entrance forbidden");
}

TEST_F(Layout, MeasuringAgainMakesAFreshPageZero) {
  define({fld(1, 1, 1, 1, 5)});
  fspcrt(4);
  fsinit2();
  EXPECT_EQ(fs_curpage(), 0u);
  EXPECT_EQ(asq_ff(1), 1);
  EXPECT_STREQ(as_lastmsg, "asq_ff: invalid field");
  fspsel(4);  // same size: other pages stay
  EXPECT_EQ(as_errno, 0);
  fspdel(4);
  fspsel(0);
  fspcrt(4);
  EXPECT_EQ(as_errno, 0);  // only one page 4, only one page 0
  fspdel(4);
  fspsel(4);
  EXPECT_EQ(as_errno, 28);
  rec->size(10, 30);
  fsinit2();
  fspsel(4);
  EXPECT_EQ(as_errno, 28);
  int l, c;
  fs_grid(&l, &c);
  EXPECT_EQ(l, 10);
  EXPECT_EQ(c, 30);
}

TEST_F(Layout, WindowOptionsAreTakenOut) {
  fsend();
  char a0[] = "xed", a1[] = "-height", a2[] = "30", a3[] = "file", a4[] = "/Ww", a5[] = "100",
       a6[] = "-noauto", a7[] = "-width";
  char *argv[] = {a0, a1, a2, a3, a4, a5, a6, a7, nullptr};
  EXPECT_EQ(fsinit(8, argv, rec), 3);
  EXPECT_STREQ(argv[1], "file");
  EXPECT_STREQ(argv[2], "-width");  // its number is missing: left alone
  int l, c;
  fs_grid(&l, &c);
  EXPECT_EQ(l, 30);
  EXPECT_EQ(c, 100);
}

TEST_F(Layout, TextCalls) {
  define({fld(1, 1, 1, 2, 3), fld(2, 5, 1, 1, 6)});
  EXPECT_EQ(ascput(1, 4, "abcdXYZ"), 0);
  EXPECT_EQ(get(1), "abcd  ");
  char buf[8];
  ascget(1, 8, buf);
  EXPECT_EQ(std::string(buf, 8), "abcd    ");
  EXPECT_EQ(ascput(9, 1, "x"), -1);
  EXPECT_EQ(as_errno, 28);
  EXPECT_STREQ(as_lastmsg, "ascput_short: field 9 does not exist");
  ascget(9, 1, buf);
  EXPECT_STREQ(as_lastmsg, "ascget: field 9 does not exist");
  EXPECT_EQ(ascget_char(9, nullptr, 0), nullptr);
  EXPECT_STREQ(as_lastmsg, "ascget_char: field 9 does not exist.");

  put(2, " \tab \t");
  int n;
  char *s = ascget_char(2, &n, 1);
  EXPECT_STREQ(s, " \tab");
  free(s);
  s = ascget_char(2, &n, 2);
  EXPECT_STREQ(s, "\tab");
  EXPECT_EQ(n, 3);
  free(s);

  // Upper-case delivery of the upper word.
  row r = fld(3, 7, 1, 1, 4);
  r[13] = 1;
  define({r});
  put(3, "aZ1q");
  EXPECT_EQ(get(3), "AZ1Q");
  uint16_t sh[6];
  ascget_short(3, 6, sh);
  EXPECT_EQ(sh[0], 'A');
  EXPECT_EQ(sh[4], FS_NULL);
}

TEST_F(Layout, UsedLengthsIgnoreBlanksAndNulls) {
  define({fld(1, 1, 1, 1, 8), fld(2, 2, 1, 1, 8), fld(3, 3, 1, 1, 8)});
  put(1, "ab c");
  ascput(2, 0, "");
  const uint16_t cells[3] = {'x', FS_NULL, 'y'};
  ascput_short(3, 3, cells);
  asfmod(1, 1);
  asfmod(2, 1);
  asfmod(3, 1);
  asfmod(3, 2);
  EXPECT_STREQ(as_lastmsg, "asfmod: Invalid parameter.");
  int ids[4], lens[4], used[4];
  EXPECT_EQ(asqmod(4, ids, lens, used), 3);
  EXPECT_EQ(ids[0], 1);
  EXPECT_EQ(used[0], 4);
  EXPECT_EQ(lens[0], 8);
  EXPECT_EQ(used[1], 0);
  EXPECT_EQ(used[2], 3);
  EXPECT_EQ(ids[3], 0);
  EXPECT_EQ(asqmod(4, ids, lens, used), 0);  // flags were cleared
  asqmod(-1, ids, lens, used);
  EXPECT_STREQ(as_lastmsg, "asqmod : count is negative");
  // A count smaller than the modified fields leaves the rest set.
  asfmod(1, 1);
  asfmod(2, 1);
  EXPECT_EQ(asqmod(1, ids, lens, used), 1);
  EXPECT_EQ(asqmod(1, ids, lens, used), 1);
  EXPECT_EQ(ids[0], 2);
}

TEST_F(Layout, IntegerReading) {
  define({fld(1, 1, 1, 1, 6), fld(9, 24, 1, 1, 40), fld(2, 3, 1, 1, 6)});
  as_msgfield = 9;
  int v = 0;
  put(1, " -42 ");
  EXPECT_EQ(ascget_int(1, &v), 0);
  EXPECT_EQ(v, -42);
  put(2, "4x");
  asfcur(1, 1, 3);
  EXPECT_EQ(ascget_int(2, &v), 1);
  EXPECT_EQ(get(9).substr(0, 30), "Donn\xe9" "e manquante ou incorrecte");
  int id, l, c;
  asqcur(1, &id, &l, &c);
  EXPECT_EQ(id, 2);
  EXPECT_EQ(c, 1);
  asrefresh();
  EXPECT_EQ(rec->bells, 1);
  EXPECT_EQ(ascget_int(5, &v), -1);
  EXPECT_STREQ(as_lastmsg, "ascget_int: field 5 does not exist.");
  as_msgfield = 0;
}

TEST_F(Layout, ColourTables) {
  define({fld(1, 1, 1, 1, 3)});
  int32_t out[3];
  const int cases[][2] = {{0, 4}, {7, 64}, {64, 7}, {65, 4}, {72, 64}, {3, 3}, {-1, 7}};
  for (const auto &cs : cases) {
    asfcol(1, cs[0]);
    asrefresh();
    EXPECT_EQ(rec->colour[0][0], cs[1]) << "logical " << cs[0];
  }
  // Cell colours read back as logical, 0 where the field's own.
  asfcol(1, 2);
  const int32_t cc[2] = {7, -5};
  asccol(1, 2, cc);
  asqcol(1, 3, out);
  EXPECT_EQ(out[0], 7);
  EXPECT_EQ(out[1], 0);
  EXPECT_EQ(out[2], 0);
  const int8_t bytes[1] = {64};
  asccol(1, 1, bytes);
  asqcol(1, 1, out);
  EXPECT_EQ(out[0], 64);
  asscol(1);
  asqcol(1, 1, out);
  EXPECT_EQ(out[0], 0);
  // Colour above 64 at definition is cut to 64.
  row r = fld(2, 2, 1, 1, 1);
  r[7] = 90;
  define({r});
  int32_t w[8];
  asqfld(0, 2, 8, w);
  EXPECT_EQ(w[7], 64);
  asccol(9, 1, cc);
  EXPECT_STREQ(as_lastmsg, "asccol: field 9 does not exist.");
}

TEST_F(Layout, AttributeCallsAndTheirWords) {
  define({fld(1, 1, 1, 1, 3)});
  struct {
    void (*call)(int, int);
    const char *words;
  } calls[] = {
      {asfcol, "asfcol: field 4 does not exist."}, {asfhlt, "asfhlt: field 4 does not exist"},
      {asfint, "asfint: field 4 does not exist"},  {asftyp, "asftyp: field 4 does not exist."},
      {asfmgd, "asfmgd: field 4 does not exist"},  {asfmod, "asfmod: field 4 does not exist."},
  };
  for (const auto &c : calls) {
    as_errno = 0;
    c.call(4, 1);
    EXPECT_EQ(as_errno, 28);
    EXPECT_STREQ(as_lastmsg, c.words);
  }
  asfhlt(1, 2);
  asrefresh();
  EXPECT_EQ(rec->hl[0].substr(0, 3), "222");
  const int32_t h[2] = {4, -1};
  aschlt(1, 2, h);
  asrefresh();
  EXPECT_EQ(rec->hl[0].substr(0, 3), "422");
  asshlt(1);
  asrefresh();
  EXPECT_EQ(rec->hl[0].substr(0, 3), "222");
}

TEST_F(Layout, CursorAndQueries) {
  define({fld(1, 3, 10, 2, 5)});
  asfcur(1, 2, 3);
  int id, l, c;
  asqcur(1, &id, &l, &c);
  EXPECT_EQ(id, 1);
  EXPECT_EQ(l, 2);
  EXPECT_EQ(c, 3);
  asqcur(2, &id, &l, &c);
  EXPECT_EQ(c, 8);
  asqcur(0, &id, &l, &c);
  EXPECT_EQ(id, 0);
  EXPECT_EQ(l, 4);
  EXPECT_EQ(c, 12);
  asqcur(3, &id, &l, &c);
  EXPECT_EQ(as_errno, 2);
  EXPECT_STREQ(as_lastmsg, "asqcur : Invalid code");
  as_errno = 0;
  asqmou(5, &id, &l, &c);
  EXPECT_EQ(as_errno, 0);
  EXPECT_STREQ(as_lastmsg, "asqmou : Invalid code");
  asfcur(2, 1, 1);
  EXPECT_EQ(as_errno, 28);
  EXPECT_STREQ(as_lastmsg, "asfcur: field 2 not found.");
  strcpy(as_lastmsg, "before");
  asfcur_quiet(1, 3, 1);
  EXPECT_EQ(as_errno, 1);
  EXPECT_STREQ(as_lastmsg, "before");
  asfcur(0, 24, 80);
  asqcur(1, &id, &l, &c);
  EXPECT_EQ(id, 0);
  EXPECT_EQ(l, 24);

  int32_t w[8];
  fsqury(0, 0, 4, w);
  EXPECT_EQ(w[2], 24);
  EXPECT_EQ(w[3], 80);
  fsqury(0, 0, 5, w);
  EXPECT_EQ(as_errno, 2);
  EXPECT_STREQ(as_lastmsg, " fsqury: Invalid count");
  fsqury(1, 0, 4, w);
  EXPECT_STREQ(as_lastmsg, "fsqury : Invalid code");
  fsqury(4, 0, 8, w);
  EXPECT_EQ(w[2], 8);
  asqfld(1, 1, 3, w);
  EXPECT_STREQ(as_lastmsg, "asqfld : Invalid code");
  asqfld(0, 1, 15, w);
  EXPECT_EQ(as_errno, 2);
  as_errno = 0;
  asqfld(0, 8, 3, w);
  EXPECT_EQ(as_errno, 0);
  EXPECT_STREQ(as_lastmsg, "asqfld: field 8 does not exist.");
}

TEST_F(Layout, CursorOnAFieldlessPage) {
  asfcur(0, 5, 6);
  int id, l, c;
  asqcur(1, &id, &l, &c);
  EXPECT_EQ(id, 0);
  EXPECT_EQ(l, 5);
  EXPECT_EQ(c, 6);
}

TEST_F(Layout, SwitchesCheckTheirValues) {
  struct {
    void (*call)(int);
    int bad;
    const char *words;
    int code;
  } sw[] = {
      {asfup, 2, "asfup : invalid flagg", 1},         {asfupm, -1, "asfupm : invalid flagg", 1},
      {asfskip, 2, "asfmod : invalid flagg", 0},      {asfint2, 3, "asfint2 : invalid flagg", 1},
      {asfrem, 3, "asfrem : invalid parameter", 1},   {asfblk, 2, "asfblk : invalid mode", 0},
      {asfapl, 2, "asfapl : invalid mode", 1},        {asfveto, 3, "asfveto : Invalid parameter", 1},
      {asfview, 2, "asfview : invalid parameter", 1}, {asfacol, 2, "asfacol : invalid argument", 1},
      {asfrepeat, 2, "asfrepeat: invalid parameter", 1},
  };
  for (const auto &s : sw) {
    as_errno = 0;
    s.call(s.bad);
    EXPECT_STREQ(as_lastmsg, s.words);
    EXPECT_EQ(as_errno, s.code) << s.words;
  }
  as_errno = 5;
  asfveto(5);
  EXPECT_EQ(as_errno, 0);
  asfrem(2);
  EXPECT_EQ(as_errno, 0);
  asfrem(1);
  asfveto(0);
}

TEST_F(Layout, MessagesReachTheAlertAndAreCutTo160) {
  define({fld(1, 1, 1, 1, 1)});
  asfmap(-1, 0, 0, 0);
  EXPECT_STREQ(as_lastmsg, "asfmap : invalid colormap entry");
  EXPECT_EQ(rec->calls.back().op, 'a');
  EXPECT_EQ(rec->calls.back().text, "asfmap : invalid colormap entry");
  std::string name = "/nonexistent/" + std::string(300, 'k');
  asfkeyb(name.c_str(), 0);
  EXPECT_EQ(strlen(as_lastmsg), 160u);
  EXPECT_EQ(std::string(as_lastmsg).substr(0, 28), "asfkeyb: File /nonexistent/k");
}
