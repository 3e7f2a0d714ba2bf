// The read driven by key scripts: typing, insert and overwrite, delete,
// backspace, erase, moving by field, toggles, push buttons, hexadecimal twin
// cells, modified flags, return codes and the shift rule.
#include "fs_fixture.h"

class Input : public FieldsTest {
 protected:
  void SetUp() override {
    FieldsTest::SetUp();
    asfinsert(0);
  }
  void TearDown() override {
    asfinsert(0);
    asfreverse(0);
    asfonekey(0);
    FieldsTest::TearDown();
  }
  int line() {
    int l, c;
    cursor(&l, &c);
    return l;
  }
  int col() {
    int l, c;
    cursor(&l, &c);
    return c;
  }
};

TEST_F(Input, TypingOverwritesAndMovesOn) {
  define({fld(1, 2, 5, 1, 6), fld(2, 4, 5, 1, 4)});
  put(1, "abcdef");
  asfcur(1, 1, 2);
  result r = read("type XY\nkey enter");
  EXPECT_EQ(r.code, 0);
  EXPECT_EQ(r.modified, 1);
  EXPECT_EQ(get(1), "aXYdef");
  EXPECT_EQ(col(), 8);
  // The last cell of a field jumps to the next field.
  asfcur(1, 1, 6);
  read("type Z\nkey enter");
  EXPECT_EQ(get(1), "aXYdeZ");
  EXPECT_EQ(line(), 4);
  EXPECT_EQ(col(), 5);
}

TEST_F(Input, LongTypingKeepsOrder) {
  define({fld(1, 1, 1, 1, 60)});
  asfcur(1, 1, 1);
  std::string text = "the quick brown fox jumps over the lazy dog 0123456789";
  read("type " + text + "\nkey enter");
  EXPECT_EQ(get(1).substr(0, text.size()), text);
}

TEST_F(Input, LastCellOfLastFieldWrapsToFirstUsableField) {
  define({fld(1, 1, 1, 1, 5, 2), fld(2, 3, 1, 1, 3), fld(3, 10, 1, 1, 2)});
  asfcur(3, 1, 2);
  read("type q\nkey enter");
  EXPECT_EQ(get(3).substr(1), "q");
  EXPECT_EQ(line(), 3);
  EXPECT_EQ(col(), 1);
}

TEST_F(Input, RefusedKeysFlash) {
  define({fld(1, 1, 1, 1, 5, 2), fld(2, 2, 1, 1, 5, 1)});
  asfcur(1, 1, 1);
  read("type a\nkey enter");
  EXPECT_EQ(get(1), "     ");
  asfcur(0, 10, 10);
  read("type a\nkey enter");
  asfcur(2, 1, 1);
  result r = read("type 1x.\nkey enter");
  EXPECT_EQ(get(2), "1.   ");
  EXPECT_EQ(rec->flashes, 3);
  EXPECT_EQ(r.modified, 1);
}

TEST_F(Input, NoFieldsEnterStillWorksAndArrowsMove) {
  asfcur(0, 1, 1);
  result r = read("type x\nkey uparrow\nkey leftarrow\nkey enter");
  EXPECT_EQ(r.code, 0);
  EXPECT_EQ(rec->flashes, 1);
  EXPECT_EQ(line(), 23);  // up from line 1 wraps to 24, left from column 1 to 23/80
  EXPECT_EQ(col(), 80);
  read("key rightarrow\nkey downarrow\nkey enter");
  EXPECT_EQ(line(), 1);
  EXPECT_EQ(col(), 1);
}

TEST_F(Input, InsertMode) {
  define({fld(1, 1, 1, 1, 6), fld(2, 3, 1, 1, 6)});
  put(1, "abcd");
  asfinsert(1);
  asfcur(1, 1, 2);
  read("type XY\nkey enter");
  EXPECT_EQ(get(1), "aXYbcd");
  // Full field: the character is dropped with a flash and nothing moves.
  int flashes = rec->flashes;
  asfcur(1, 1, 1);
  read("type Q\nkey enter");
  EXPECT_EQ(get(1), "aXYbcd");
  EXPECT_EQ(col(), 1);
  EXPECT_EQ(rec->flashes, flashes + 1);
  // The insert key toggles the mode, and the status line says so.
  asrefresh();
  EXPECT_NE(rec->statusline.find("< INS > "), std::string::npos);
  read("key insert\nkey enter");
  EXPECT_EQ(asqinsert(), 0);
  EXPECT_EQ(rec->statusline.find("< INS >"), std::string::npos);
}

TEST_F(Input, InsertReportsToCaller) {
  define({fld(1, 1, 1, 1, 4, 0, FSF_REPDEL), fld(2, 2, 1, 1, 4, 0, FSF_REPEND)});
  put(1, "ab");
  put(2, "abcd");
  asfinsert(1);
  asfcur(1, 1, 1);
  result r = read("type z");
  EXPECT_EQ(r.code, 26);
  EXPECT_EQ(r.value, 'z');
  EXPECT_EQ(get(1), "ab  ");
  asfcur(2, 1, 2);
  r = read("type w");
  EXPECT_EQ(r.code, 26);
  EXPECT_EQ(get(2), "abcd");
}

TEST_F(Input, QueuedKeysInInsertModeRepaintOnce) {
  define({fld(1, 1, 1, 1, 10), fld(2, 2, 1, 1, 10)});
  asrefresh();
  asfcur(1, 1, 1);
  rec->forget();
  read("type aaaa\nkey enter");
  // Each key repaints from its cell to the line's end: the field, then the rest.
  EXPECT_EQ(rec->runs(), 8);
  asfinsert(1);
  asfcur(2, 1, 1);
  rec->forget();
  read("type bbbb\nkey enter");
  EXPECT_EQ(rec->runs(), 4);  // the first key, then the three queued behind it at once
  EXPECT_EQ(get(2).substr(0, 4), "bbbb");
  EXPECT_EQ(col(), 5);
  // A different key ends the batch; both are typed.
  asfcur(2, 1, 1);
  read("type xy\nkey enter");
  EXPECT_EQ(get(2).substr(0, 6), "xybbbb");
}

TEST_F(Input, NoInsertFlagOverwritesInInsertMode) {
  define({fld(1, 1, 1, 1, 4, 0, FSF_NOINS)});
  put(1, "abcd");
  asfinsert(1);
  asfcur(1, 1, 1);
  read("type Z\nkey enter");
  EXPECT_EQ(get(1), "Zbcd");
}

TEST_F(Input, DeleteAndBackspace) {
  define({fld(1, 1, 1, 1, 6), fld(2, 3, 1, 1, 6)});
  put(1, "abcdef");
  asfcur(1, 1, 2);
  result r = read("key delete\nkey enter");
  EXPECT_EQ(get(1), "acdef ");
  uint16_t c[6];
  ascget_short(1, 6, c);
  EXPECT_EQ(c[5], FS_NULL);
  EXPECT_EQ(r.modified, 1);
  // Backspace in overwrite mode leaves a null cell behind and steps back.
  asfcur(1, 1, 3);
  read("key backspace\nkey enter");
  ascget_short(1, 6, c);
  EXPECT_EQ(c[1], FS_NULL);
  EXPECT_EQ(col(), 2);
  // In insert mode it closes the gap.
  put(1, "abcdef");
  asfinsert(1);
  asfcur(1, 1, 3);
  read("key backspace\nkey enter");
  EXPECT_EQ(get(1), "acdef ");
  EXPECT_EQ(col(), 2);
}

TEST_F(Input, BackspaceAtFirstCellDoesNothing) {
  define({fld(1, 1, 5, 1, 6), fld(2, 3, 1, 1, 6)});
  put(1, "abc");
  asfcur(1, 1, 1);
  result r = read("key backspace\nkey enter");
  EXPECT_EQ(r.modified, 0);
  EXPECT_EQ(get(1), "abc   ");
  EXPECT_EQ(col(), 5);
}

TEST_F(Input, HeldKeysRepeatUntilReleased) {
  define({fld(1, 1, 1, 1, 8)});
  put(1, "abcdefgh");
  asfcur(1, 1, 1);
  // A press followed at once by its release deletes once.
  read("press delete\nrelease delete\nkey enter");
  EXPECT_EQ(get(1), "bcdefgh ");
  // So does one ended by another key before the first delay has passed.
  put(1, "abcdefgh");
  read("press delete\nwait 100\ntype Z\nkey enter");
  EXPECT_EQ(get(1), "Zcdefgh ");
  // Held for 400 ms: once, ten slices of 25 ms, then every 50 ms.
  put(1, "abcdefgh");
  asfcur(1, 1, 1);
  read("press delete\nwait 400\nrelease delete\nkey enter");
  EXPECT_EQ(get(1), "fgh     ");
}

TEST_F(Input, DeletionReports) {
  define({fld(1, 1, 1, 1, 5, 0, FSF_REPDEL)});
  put(1, "abc");
  asfcur(1, 1, 2);
  EXPECT_EQ(read("key delete").code, 44);
  EXPECT_EQ(read("key backspace").code, 44);
  EXPECT_EQ(read("key escape").code, 45);
  EXPECT_EQ(get(1), "abc  ");
}

TEST_F(Input, EraseKeys) {
  define({fld(1, 1, 1, 1, 6)});
  put(1, "abcdef");
  asfcur(1, 1, 3);
  read("key escape\nkey enter");
  EXPECT_EQ(get(1), "ab    ");
  EXPECT_EQ(col(), 3);
  put(1, "abcdef");
  asfcur(1, 1, 4);
  read("key s-escape\nkey enter");
  EXPECT_EQ(get(1), "      ");
  EXPECT_EQ(col(), 1);
  asfcur(0, 10, 10);
  read("key escape\nkey enter");
  EXPECT_STREQ(as_lastmsg, "del_end_f : position curseur invalide");
  read("key s-escape\nkey enter");
  EXPECT_STREQ(as_lastmsg, "del_all_f : position curseur invalide");
  // Ctrl with Escape is the caller's.
  result r = read("key c-escape");
  EXPECT_EQ(r.code, 5);
}

TEST_F(Input, ShiftRightDeletesUnderTheCursor) {
  define({fld(1, 1, 1, 1, 5)});
  put(1, "abcde");
  asfcur(1, 1, 2);
  as_shiftright = 1;
  read("key s-rightarrow\nkey enter");
  as_shiftright = 0;
  EXPECT_EQ(get(1), "acde ");
  EXPECT_EQ(col(), 2);
}

TEST_F(Input, TabAndBackTab) {
  define({fld(1, 1, 10, 1, 5), fld(2, 1, 30, 1, 5, 2), fld(3, 5, 2, 2, 5)});
  asfcur(1, 1, 3);
  read("key tab\nkey enter");
  EXPECT_EQ(line(), 5);
  EXPECT_EQ(col(), 2);
  // The second line of a block field is a stop of its own.
  read("key tab\nkey enter");
  EXPECT_EQ(line(), 6);
  read("key tab\nkey enter");
  EXPECT_EQ(line(), 1);
  EXPECT_EQ(col(), 10);
  // Back tab: first to the start of the present field, then to the previous.
  asfcur(3, 1, 3);
  read("key s-tab\nkey enter");
  EXPECT_EQ(line(), 5);
  EXPECT_EQ(col(), 2);
  read("key s-tab\nkey enter");
  EXPECT_EQ(line(), 1);
  EXPECT_EQ(col(), 10);
  read("key s-tab\nkey enter");
  EXPECT_EQ(line(), 6);
  EXPECT_EQ(col(), 2);
}

TEST_F(Input, BackTabOnProtectedPageGoesHome) {
  define({fld(1, 4, 10, 1, 5, 2), fld(2, 8, 3, 1, 5, 2)});
  asfcur(0, 8, 4);
  read("key s-tab\nkey enter");
  EXPECT_EQ(line(), 1);
  EXPECT_EQ(col(), 1);
  // Tab finds nothing and stays.
  asfcur(0, 8, 4);
  read("key tab\nkey enter");
  EXPECT_EQ(line(), 8);
  EXPECT_EQ(col(), 4);
}

TEST_F(Input, FirstLastAndLineKeys) {
  define({fld(1, 2, 10, 1, 5, 2), fld(2, 3, 20, 1, 5), fld(3, 7, 4, 1, 5), fld(4, 9, 1, 1, 3)});
  asfcur(0, 12, 12);
  read("key home\nkey enter");
  EXPECT_EQ(line(), 3);
  EXPECT_EQ(col(), 20);
  read("key end\nkey enter");
  EXPECT_EQ(line(), 9);
  EXPECT_EQ(col(), 1);
  asfcur(0, 1, 1);
  read("key rctrl\nkey enter");  // next line: first usable cell below
  EXPECT_EQ(line(), 3);
  read("key rctrl\nkey enter");
  EXPECT_EQ(line(), 7);
  read("key ralt\nkey enter");  // previous line
  EXPECT_EQ(line(), 3);
  read("key s-ralt\nkey enter");  // Shift exchanges them
  EXPECT_EQ(line(), 7);
}

TEST_F(Input, ArrowsReportAndSkip) {
  define({fld(1, 5, 1, 1, 10, 0, FSF_REPUP), fld(2, 6, 1, 1, 10, 0, FSF_REPDOWN),
          fld(3, 10, 20, 1, 5)});
  asfcur(0, 6, 3);
  EXPECT_EQ(read("key uparrow").code, 47);
  asfcur(0, 5, 3);
  EXPECT_EQ(read("key downarrow").code, 48);
  EXPECT_EQ(line(), 5);
  asfskip(1);
  asfcur(3, 1, 5);
  read("key rightarrow\nkey enter");  // nothing usable to the right on line 10
  EXPECT_EQ(col(), 25);
  asfcur(0, 10, 10);
  read("key rightarrow\nkey enter");
  EXPECT_EQ(col(), 20);
  asfskip(0);
}

TEST_F(Input, ReportEndAndHiliteTwo) {
  define({fld(1, 1, 1, 1, 3, 0, FSF_REPEND)});
  asfcur(1, 1, 3);
  result r = read("type k");
  EXPECT_EQ(r.code, 32);
  EXPECT_EQ(r.value, 'k');
  EXPECT_EQ(get(1).substr(2), "k");
  const int32_t h[1] = {2};
  aschlt(1, 1, h);
  asfcur(1, 1, 1);
  r = read("type m");
  EXPECT_EQ(r.code, 36);
  EXPECT_EQ(r.value, 'm');
  EXPECT_EQ(get(1)[0], ' ');
}

TEST_F(Input, KeystrokeFieldReportsEachCharacter) {
  define({fld(4, 1, 1, 1, 6, 0, FSF_KEYSTROKE)});
  put(4, "abcdef");
  asfcur(4, 1, 2);
  result r = read("type Q");
  EXPECT_EQ(r.code, 39);
  EXPECT_EQ(r.value, 4);
  EXPECT_EQ(get(4), "aQ    ");
  EXPECT_EQ(col(), 3);
}

TEST_F(Input, OneKeyEndsTheReadWhateverTheKeyAndTypesNothing) {
  define({fld(1, 1, 1, 1, 6), fld(2, 3, 1, 1, 6)});
  put(1, "abcdef");
  asfcur(1, 1, 2);
  asfonekey(1);
  const struct {
    const char *script;
    int value;  // the character, 0 for a key that types no printable one plainly
  } keys[] = {
      {"type Y", 'Y'},       {"type y", 'y'},     {"key downarrow", 0}, {"key tab", 0},
      {"key c-y", 0},        {"key m-y", 0},      {"key f3", 0},        {"key enter", 0},
      {"key backspace", 0},  {"key home", 0},
  };
  for (auto &k : keys) {
    result r = read(k.script);
    EXPECT_EQ(r.code, AS_ONEKEY) << k.script;
    EXPECT_EQ(r.value, k.value) << k.script;
    EXPECT_EQ(get(1), "abcdef") << k.script;
    EXPECT_EQ(line(), 1) << k.script;
    EXPECT_EQ(col(), 2) << k.script;
  }
  // The wheel is no answer: it keeps its own code.
  EXPECT_EQ(read("wheel down").code, FSK_WHEELDOWN);
  asfonekey(0);
  result r = read("type Y\nkey enter");
  EXPECT_EQ(r.code, 0);
  EXPECT_EQ(get(1), "aYcdef");
}

TEST_F(Input, Toggles) {
  define({fld(1, 1, 1, 1, 3, 0, FSF_OUINON), fld(2, 2, 1, 1, 3, 0, FSF_YESNO)});
  asfcur(1, 1, 1);
  result r = read("type y\nkey enter");
  EXPECT_EQ(get(1), "OUI");
  EXPECT_EQ(r.modified, 1);
  read("type n\nkey enter");
  EXPECT_EQ(get(1), "NON");
  read("type x\nkey enter");
  EXPECT_EQ(get(1), "NON");
  EXPECT_EQ(rec->bells, 1);
  asfcur(2, 1, 1);
  read("type O\nkey enter");
  EXPECT_EQ(get(2), "YES");
  read("type N\nkey enter");
  EXPECT_EQ(get(2), "NO ");
  // A click toggles too.
  read("click 2 2\nkey enter");
  EXPECT_EQ(get(2), "YES");
  read("click 1 1\nkey enter");
  EXPECT_EQ(get(1), "OUI");
}

TEST_F(Input, PushButtons) {
  define({fld(5, 3, 10, 1, 6, 2, FSF_BUTTON), fld(6, 3, 20, 1, 6, 2, FSF_BUTTON)});
  put(5, "Ok");
  result r = read("click 3 12");
  EXPECT_EQ(r.code, 38);
  EXPECT_EQ(r.value, 5);
  // Drawn swapped while pressed, restored after.
  r = read("drag 3 11 3 40\nkey enter");
  EXPECT_EQ(r.code, 0);
  EXPECT_EQ(rec->hl[2].substr(9, 6), "000000");
  // Pressed on one, released on the other: the second takes over and fires.
  r = read("drag 3 12 3 22");
  EXPECT_EQ(r.code, 38);
  EXPECT_EQ(r.value, 6);
}

TEST_F(Input, PushButtonHiliteWhilePressed) {
  define({fld(5, 3, 10, 1, 6, 2, FSF_BUTTON), fld(1, 10, 1, 1, 1)});
  fs_event e{};
  e.code = FSK_LEFT_B;
  e.x = 9 * 8 + 1;
  e.y = 2 * 16 + 1;
  fs_postev(e, -1);
  EXPECT_EQ(read("key enter").code, 0);  // the button is still held
  EXPECT_EQ(rec->hl[2].substr(9, 6), "222222");
}

TEST_F(Input, ModifiedFlagsAcrossReads) {
  define({fld(1, 1, 1, 1, 5)});
  asfcur(1, 1, 1);
  EXPECT_EQ(read("type a\nkey enter").modified, 1);
  // Same page again: the flags were cleared at the start of the read.
  EXPECT_EQ(read("key enter").modified, 0);
  read("type b\nkey enter");
  asfkeepmod(1);
  EXPECT_EQ(read("key enter").modified, 1);
  // After a page switch the flags stand.
  read("type c\nkey enter");
  fspcrt(3);
  read("key enter");
  fspsel(0);
  EXPECT_EQ(read("key enter").modified, 1);
  int ids[2], lens[2], used[2];
  EXPECT_EQ(asqmod(2, ids, lens, used), 1);
}

// The typing hook: a character it takes ends the read with the character
// and leaves the cell; one it declines is typed. It sees the cursor where
// the character would go.
int hook_calls = 0;
int hook_col = 0;
int take_over_b(int ch) {
  hook_calls++;
  int id, l, c;
  asqcur(1, &id, &l, &c);
  hook_col = c;
  return ch == 'b';
}

TEST_F(Input, TypingHookTakesWhatItWants) {
  define({fld(1, 2, 5, 1, 6)});
  put(1, "abcdef");
  asfcur(1, 1, 3);
  hook_calls = 0;
  as_typehook = take_over_b;
  result r = read("type ab\nkey enter");
  EXPECT_EQ(r.code, AS_TYPEDOVER);
  EXPECT_EQ(r.value, 'b');
  EXPECT_EQ(hook_col, 4);
  EXPECT_EQ(get(1), "abadef");  // 'a' typed, 'b' not
  EXPECT_EQ(col(), 5 + 3);     // the cursor stays where 'b' would have gone
  EXPECT_EQ(read("").code, 0);  // the Enter after it is still there
  EXPECT_EQ(hook_calls, 2);
  // A refused character never reaches the hook.
  define({fld(1, 2, 5, 1, 6, 2)});
  asfcur(1, 1, 1);
  read("type b\nkey enter");
  EXPECT_EQ(hook_calls, 2);
  as_typehook = nullptr;
}

TEST_F(Input, LeftBankPressAndReleaseAlwaysTold) {
  asfup(0);
  const char *pre[3] = {"", "s-", "c-"};
  for (int i = 0; i < 3; i++) {
    result r = read(std::string("key ") + pre[i] + "l6");
    EXPECT_EQ(r.code, 8);
    EXPECT_EQ(r.value, i * 10 + 6) << pre[i];
    r = read("");
    EXPECT_EQ(r.code, 18);
    EXPECT_EQ(r.value, i * 10 + 6);
  }
  // Keys past the bank's count are no keys.
  EXPECT_EQ(read("key l11\nkey enter").code, 0);
}

TEST_F(Input, ShiftRuleForAllEightStates) {
  asfup(1);
  const char *pre[8] = {"", "s-", "c-", "m-", "s+c-", "s+m-", "c+m-", "s+c+m-"};
  const int mult[8] = {0, 1, 2, 3, 4, 5, 6, 7};
  for (int i = 0; i < 8; i++) {
    result r = read(std::string("key ") + pre[i] + "f5");
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.value, mult[i] * 12 + 5) << pre[i];
    r = read("");
    EXPECT_EQ(r.code, 11);
    EXPECT_EQ(r.value, mult[i] * 12 + 5);
    r = read(std::string("key ") + pre[i] + "r2");
    EXPECT_EQ(r.code, 9);
    EXPECT_EQ(r.value, mult[i] * 15 + 2) << pre[i];
    EXPECT_EQ(read("").code, 19);
  }
  asfup(0);
  // Without asfup the release is not reported.
  read("key f1");
  EXPECT_EQ(read("key enter").code, 0);
  // The other spellings of the key grammar.
  EXPECT_EQ(read("key l-pf2").value, 3 * 12 + 2);
  EXPECT_EQ(read("key C+S-F2").value, 4 * 12 + 2);
  // Bank counts change the numbers.
  as_nbkeys[1] = 24;
  EXPECT_EQ(read("key s-f3").value, 27);
  as_nbkeys[1] = 12;
}

TEST_F(Input, CtrlAltAndOtherCodes) {
  result r = read("key c-a");
  EXPECT_EQ(r.code, 22);
  EXPECT_EQ(r.value, 'a');
  as_altdef['x'] = 1;
  r = read("key m-x");
  EXPECT_EQ(r.code, 65);
  EXPECT_EQ(r.value, 'x');
  as_altdef['x'] = 0;
  EXPECT_EQ(read("wheel up").code, 670);
  EXPECT_EQ(read("wheel down").code, 671);
  EXPECT_EQ(read("focus out").code, 67);
  asfreports(0, 1, 0);
  EXPECT_EQ(read("focus in").code, 42);
  asfreports(0, 0, 0);
  asfveto(4);
  EXPECT_EQ(read("close").code, 672);
  asfveto(1);
  EXPECT_EQ(read("close\nkey enter").code, 0);
  asfveto(0);
  aspost(77);
  r = read("");
  EXPECT_EQ(r.code, 28);
  EXPECT_EQ(r.value, 77);
  asftimeout(50);
  EXPECT_EQ(read("wait 100").code, 27);
  asftimeout(0);
  EXPECT_EQ(read("resize 30 90").code, 25);
  fsresize();
  int l, c;
  fs_grid(&l, &c);
  EXPECT_EQ(l, 30);
  EXPECT_EQ(c, 90);
  EXPECT_EQ(read("").code, 23);  // the script has ended: the window is gone
}

TEST_F(Input, MouseModesAndClicks) {
  define({fld(1, 5, 1, 1, 20), fld(2, 8, 1, 1, 20, 0, FSF_NOCLICK)});
  // WINDOWS: a left click positions and is consumed; a double click is returned.
  asfmousemode("WINDOWS");
  result r = read("click 5 7\nkey enter");
  EXPECT_EQ(r.code, 0);
  EXPECT_EQ(line(), 5);
  EXPECT_EQ(col(), 7);
  r = read("dclick 5 9");
  EXPECT_EQ(r.code, 20);
  EXPECT_EQ(r.value, 1);
  r = read("click 8 3");
  EXPECT_EQ(r.code, 20);
  EXPECT_EQ(line(), 5);
  r = read("click 5 3 3");
  EXPECT_EQ(r.code, 20);
  EXPECT_EQ(r.value, 3);
  // MOTIF: the right button positions instead.
  EXPECT_EQ(asfmousemode("motif"), 0);
  read("click 5 11 3\nkey enter");
  EXPECT_EQ(col(), 11);
  EXPECT_EQ(read("click 5 2").code, 20);
  EXPECT_EQ(asfmousemode("bogus"), 1);
  // With positioning switched off no button moves the cursor: the press
  // comes back to the caller, and switched on again the mode holds.
  asfclickpos(0);
  r = read("click 5 15 3");
  EXPECT_EQ(r.code, 20);
  EXPECT_EQ(r.value, 3);
  EXPECT_EQ(col(), 11);
  asfclickpos(1);
  read("click 5 13 3\nkey enter");
  EXPECT_EQ(col(), 13);
  // Releases are reported only with asfupm.
  read("key enter");  // the release of the last click goes unreported
  asfupm(1);
  r = read("click 5 2");
  EXPECT_EQ(r.code, 20);
  r = read("");
  EXPECT_EQ(r.code, 21);
  asfupm(0);
  asfmousemode("WINDOWS");
  char q[32];
  asfclickdelay(0.25);
  asqclickdelay(q, sizeof q);
  EXPECT_STREQ(q, "..... is 0.25");
  asfclickdelay(0.5);
  int id, l, c;
  asqmou(1, &id, &l, &c);
  EXPECT_EQ(id, 1);
  EXPECT_EQ(c, 2);
}

TEST_F(Input, DragBeyondThreshold) {
  asfmousemode("MOTIF");
  result r = read("drag 4 4 6 9");
  EXPECT_EQ(r.code, 20);
  r = read("");
  EXPECT_EQ(r.code, 24);
  EXPECT_EQ(r.value, 1);
  asfmousemode("WINDOWS");
}

TEST_F(Input, SpanSelection) {
  define({fld(1, 4, 1, 1, 30, 2, FSF_SELECT)});
  put(1, "   hello world");
  result r = read("drag 4 2 4 9");
  EXPECT_EQ(r.code, 68);
  int s[6];
  asqsel(s);
  EXPECT_EQ(s[0], 1);
  EXPECT_EQ(s[2], 4);  // anchor: the first non-blank reached
  EXPECT_EQ(s[5], 9);
}

TEST_F(Input, Chording) {
  asfmousemode("MOTIF");
  asfchord(1, 3, 2, 0);
  fs_event e{};
  e.code = FSK_LEFT_B;
  fs_postev(e, -1);
  e.code = FSK_RIGHT_B;
  fs_postev(e, -1);
  e.released = 1;
  fs_postev(e, -1);
  e.code = FSK_LEFT_B;
  fs_postev(e, -1);
  asfupm(1);
  result r = read("");
  EXPECT_EQ(r.code, 20);
  EXPECT_EQ(r.value, 2);
  r = read("");
  EXPECT_EQ(r.code, 21);
  EXPECT_EQ(r.value, 2);
  asfupm(0);
  asfchord(0, 0, 0, 0);
  asfmousemode("WINDOWS");
}

TEST_F(Input, ChangeCallback) {
  static std::string seen;
  static int ops[2];
  fsxfield x{};
  x.limit = -1;
  x.line = 17;
  x.on_change = [](const char *t, int len, intptr_t arg, int ln, int op, int pos) {
    seen = std::string(t, size_t(len));
    ops[0] = op;
    ops[1] = pos;
    return int(arg) + ln - 17;
  };
  row r = fld(1, 2, 1, 1, 4);
  asxfmt(14, r.data(), x);
  asfcur(1, 1, 2);
  result res = read("type a\nkey enter");
  EXPECT_EQ(res.code, 0);
  EXPECT_EQ(seen, " a  ");
  EXPECT_EQ(ops[0], FS_OP_OVER);
  EXPECT_EQ(ops[1], 1);
  x.change_arg = 1;
  asxfmt(14, r.data(), x);
  asfinsert(1);
  asfcur(1, 1, 1);
  res = read("type b");
  EXPECT_EQ(res.code, 60);
  EXPECT_EQ(res.value, 'b');
  EXPECT_EQ(ops[0], FS_OP_INSERT);
}

TEST_F(Input, HexTwinCells) {
  // One byte shown twice: cell 1 as text of source column 1, cells 3 and 4 as
  // its two hex digits.
  static const fs_segment seg[2] = {{1, 1, 0, 0, 1}, {1, 1, 1, 2, 2}};
  static const int32_t cells[4] = {1, 0, -1, -1};
  static const fs_verify v = {2, seg, cells};
  fsxfield x{};
  x.limit = -1;
  x.verify = &v;
  row r = fld(1, 1, 1, 1, 4);
  asxfmt(14, r.data(), x);
  put(1, "A 41");
  asfcur(1, 1, 1);
  read("type b\nkey enter");
  EXPECT_EQ(get(1), "b 62");
  asfcur(1, 1, 4);
  read("type 3\nkey enter");
  EXPECT_EQ(get(1), "c 63");
  // Not a hex digit, and the pair that would make a line feed, are refused.
  int flashes = rec->flashes;
  asfcur(1, 1, 3);
  read("type g\nkey enter");
  put(1, "c 0B");
  asfcur(1, 1, 4);
  read("type a\nkey enter");
  EXPECT_EQ(rec->flashes, flashes + 2);
  EXPECT_EQ(get(1), "c 0B");
  // Backspace from the low digit empties the high one as 2.
  asfcur(1, 1, 4);
  read("key backspace\nkey enter");
  EXPECT_EQ(get(1), "+ 2B");
}

TEST_F(Input, TabStopsOfExtendedField) {
  static const int32_t tabs[3] = {2, 5, 9};
  fsxfield x{};
  x.limit = -1;
  x.tabs = tabs;
  row r = fld(1, 2, 1, 1, 12);
  asxfmt(14, r.data(), x);
  asfcur(1, 1, 1);
  read("key tab\nkey enter");
  EXPECT_EQ(col(), 5);
  read("key tab\nkey enter");
  EXPECT_EQ(col(), 9);
}

TEST_F(Input, ReverseDirectionTypesLeftward) {
  define({fld(1, 1, 1, 1, 5), fld(2, 2, 1, 1, 5, 0, FSF_LTR)});
  asfreverse(1);
  asfcur(1, 1, 4);
  read("type ab\nkey enter");
  EXPECT_EQ(get(1), "  ba ");
  EXPECT_EQ(col(), 2);
  asfcur(2, 1, 2);
  read("type cd\nkey enter");
  EXPECT_EQ(get(2), " cd  ");
  asrefresh();
  EXPECT_NE(rec->statusline.find("  < R >   "), std::string::npos);
  // Insert in reverse direction pushes the text towards the field's start.
  put(1, "  abc");
  asfinsert(1);
  asfcur(1, 1, 4);
  read("type X\nkey enter");
  EXPECT_EQ(get(1), " abXc");
  EXPECT_EQ(col(), 3);
  // Moving by field lands on the right end, or the start of a left-to-right field.
  read("key tab\nkey enter");
  EXPECT_EQ(line(), 2);
  EXPECT_EQ(col(), 1);
  read("key tab\nkey enter");
  EXPECT_EQ(line(), 1);
  EXPECT_EQ(col(), 5);
  read("key s-tab\nkey enter");
  EXPECT_EQ(line(), 2);
}

TEST_F(Input, ScriptErrorsAreReported) {
  read("key nosuchkey\nclick x y\nfrobnicate\nkey enter");
  ASSERT_EQ(rec->errors.size(), 3u);
  EXPECT_EQ(rec->errors[0], "line 1: unknown key: nosuchkey");
  EXPECT_EQ(rec->errors[2], "line 3: unknown line: frobnicate");
}

TEST_F(Input, ScriptChoosesMenuItemsByTitleAndToolBarButtonsByPosition) {
  auto menu = [](std::vector<std::pair<const char *, const char *>> items) {
    auto m = std::make_unique<fs_menu>();
    auto sub = std::make_unique<fs_menu>();
    for (auto &[title, cmd] : items) {
      sub->items.emplace_back();
      sub->items.back().title = title;
      sub->items.back().command = cmd;
    }
    m->items.emplace_back();
    m->items.back().title = "List";
    m->items.back().sub = std::move(sub);
    return m;
  };
  fs_menuset(0, menu({{"Refresh", "REFRESH"}, {"Sort by size, reversed", "Sort by SIZE Reversed"}}));
  fs_menuset(1, menu({{"Top", "TOP"}, {"Refresh", "the pop-up's"}}));
  result r = read("menu Sort by size, reversed  ");
  EXPECT_EQ(r.code, 63);
  ASSERT_NE(fs_menucmd(r.value), nullptr);
  EXPECT_STREQ(fs_menucmd(r.value), "Sort by SIZE Reversed");
  // The bar's item comes first; the pop-up's have codes of their own.
  EXPECT_STREQ(fs_menucmd(read("menu Refresh").value), "REFRESH");
  r = read("menu Top");
  EXPECT_EQ(r.code, 31);
  EXPECT_STREQ(fs_menucmd(r.value), "TOP");
  r = read("tool 16");
  EXPECT_EQ(r.code, 64);
  EXPECT_EQ(r.value, 16);
  EXPECT_EQ(read("tool 0").value, 0);
  rec->errors.clear();
  read("menu List\nmenu\ntool x\ntool -1\ntool 1 2\nkey enter");
  // A title of a sub-menu is no item; a script's line numbers run on.
  std::vector<std::string> said;
  for (const std::string &e : rec->errors) said.push_back(e.substr(e.find(": ") + 2));
  EXPECT_EQ(said, (std::vector<std::string>{"no menu item List", "unknown line: menu", "bad tool", "bad tool",
                                            "bad tool"}));
  fs_menuset(0, nullptr);
  fs_menuset(1, nullptr);
}

TEST_F(Input, ReadLevelRepeatReplaysAHeldKey) {
  asfrepeat(1);
  EXPECT_EQ(read("press f2").code, 1);
  // Still held after the wait: the previous event is processed again.
  result r = read("wait 100");
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.value, 2);
  // Released: nothing to replay.
  EXPECT_EQ(read("release f2\nkey enter").code, 0);
  asfrepeat(0);
}

TEST_F(Input, CursorMoveReports) {
  asfreports(0, 0, 1);
  asfcur(0, 3, 3);
  EXPECT_EQ(read("key rightarrow\nkey enter").code, 673);
  EXPECT_EQ(col(), 4);
  EXPECT_EQ(read("").code, 0);  // the Enter still waiting
  asfreports(0, 0, 0);
}

TEST_F(Input, PendingDialogAndMenuEventsInTheirOrder) {
  static int dialog, menu;
  as_pendhook = [](int stage, int *value) {
    int &left = stage == FS_PEND_DIALOG ? dialog : menu;
    if (!left) return -1;
    *value = left--;
    return stage == FS_PEND_DIALOG ? 59 : 31;
  };
  dialog = 1;
  menu = 1;
  aspost(5);
  aspend();
  result r = read("");
  EXPECT_EQ(r.code, 59);
  r = read("");
  EXPECT_EQ(r.code, 28);  // a posted number comes after the dialog, before the menu
  r = read("");
  EXPECT_EQ(r.code, 31);
  EXPECT_EQ(read("key enter").code, 0);  // nothing pending any more
  as_pendhook = nullptr;
}

TEST_F(Input, MenuHookTakesThePress) {
  static int seen[3];
  define({fld(7, 4, 1, 1, 10)});
  as_menuhook = [](int id, int button, int line, int) {
    seen[0] = id;
    seen[1] = button;
    seen[2] = line;
    return button == 3 ? 1 : 0;
  };
  result r = read("click 4 3 3\nclick 4 3 2");
  as_menuhook = nullptr;
  EXPECT_EQ(r.code, 20);
  EXPECT_EQ(r.value, 2);
  EXPECT_EQ(seen[0], 7);
  EXPECT_EQ(seen[1], 2);
  EXPECT_EQ(seen[2], 4);
}
