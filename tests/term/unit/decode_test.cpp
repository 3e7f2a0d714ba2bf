// What the terminal sends, turned into field-manager events: keys with their
// releases, control and Alt characters, curses key codes, the xterm modified
// keys, SGR and old-style mouse reports, focus, and sequences nobody knows.
#define NCURSES_NOMACROS 1
#include "fields/plat_term/term_int.h"
#include <curses.h>
#include <gtest/gtest.h>
#include <string>

namespace {

std::vector<int> units(const std::string &s) {
  std::vector<int> u;
  for (unsigned char c : s) u.push_back(c);
  return u;
}

std::vector<tk_out> decode(const std::vector<int> &u, int *held = nullptr) {
  int h = -1;
  std::vector<tk_out> out;
  tk_decode(u, out, held ? held : &h);
  return out;
}

// Presses only: every key press is checked to be followed by its release.
std::vector<tk_out> presses(const std::vector<tk_out> &all) {
  std::vector<tk_out> p;
  for (size_t i = 0; i < all.size(); i++) {
    if (all[i].ev.released) continue;
    EXPECT_LT(i + 1, all.size());
    if (i + 1 < all.size()) {
      EXPECT_EQ(all[i + 1].ev.code, all[i].ev.code);
      EXPECT_EQ(all[i + 1].ev.released, 1);
      EXPECT_EQ(all[i + 1].ev.modifiers, all[i].ev.modifiers);
    }
    p.push_back(all[i]);
  }
  return p;
}

struct want {
  int code;       // event code
  uint16_t mods;  // modifiers
};

void expect_keys(const std::vector<tk_out> &got, std::initializer_list<want> w) {
  std::vector<tk_out> p = presses(got);
  ASSERT_EQ(p.size(), w.size());
  size_t i = 0;
  for (const want &k : w) {
    EXPECT_EQ(p[i].ev.code, k.code) << "key " << i;
    EXPECT_EQ(p[i].ev.modifiers, k.mods) << "key " << i;
    i++;
  }
}

TEST(TermDecode, PlainAndControlCharacters) {
  std::vector<tk_out> out = decode(units("aZ \x01\x1a\t\r\n\x1c"));
  expect_keys(out, {{'a', 0}, {'Z', 0}, {' ', 0}, {'a', FSM_CTRL}, {'z', FSM_CTRL},
                    {9, 0}, {13, 0}, {10, 0}, {'\\', FSM_CTRL}});
  EXPECT_EQ(out[0].ch, 'a');  // the character travels with the event
  EXPECT_EQ(out[0].ev.source, FS_SRC_NONE);
}

TEST(TermDecode, BackspaceAndDeleteFollowTheirSettings) {
  int bs = as_bskey, del = as_delkey;
  as_bskey = 8;
  as_delkey = 127;
  expect_keys(decode({127, 8, TK_KEY + KEY_BACKSPACE, TK_KEY + KEY_DC}),
              {{8, 0}, {8, 0}, {8, 0}, {127, 0}});
  as_bskey = 127;
  as_delkey = FSK_F0 + 40;
  expect_keys(decode({127, TK_KEY + KEY_DC}), {{127, 0}, {FSK_F0 + 40, 0}});
  as_bskey = bs;
  as_delkey = del;
}

TEST(TermDecode, CharactersPastLatin1ComeWithTheirCodePoint) {
  // Latin-1 letters are their own codes; C1 controls are dropped; a
  // character past 255 (the euro sign, a wide one, one outside the BMP) is
  // FSK_CHAR with the character beside it; a lone surrogate or a value past
  // U+10FFFF is no character at all.
  std::vector<tk_out> out = decode({0xE9, 0x85, 0x20AC, 0x65E5, 0x1F600, 0xD800, 0x110000, 'x'});
  expect_keys(out, {{0xE9, 0}, {FSK_CHAR, 0}, {FSK_CHAR, 0}, {FSK_CHAR, 0}, {'x', 0}});
  std::vector<tk_out> p = presses(out);
  EXPECT_EQ(p[0].ch, 0xE9);
  EXPECT_EQ(p[1].ch, 0x20AC);
  EXPECT_EQ(p[2].ch, 0x65E5);
  EXPECT_EQ(p[3].ch, 0x1F600);
  // With Alt the character keeps it.
  expect_keys(decode({27, 0x20AC}), {{FSK_CHAR, FSM_ALT}});
}

TEST(TermDecode, EscapeAloneAndAltWithACharacter) {
  expect_keys(decode(units("\x1b")), {{27, 0}});
  expect_keys(decode(units("\x1bx")), {{'x', FSM_ALT}});
  expect_keys(decode(units("\x1b\x1b")), {{27, 0}, {27, 0}});
  expect_keys(decode(units("\x1b\x01")), {{'a', FSM_ALT | FSM_CTRL}});
  expect_keys(decode({27, TK_KEY + KEY_UP}), {{FSK_UP, FSM_ALT}});
}

TEST(TermDecode, CursesKeysAndTheirShiftedForms) {
  expect_keys(decode({TK_KEY + KEY_UP, TK_KEY + KEY_NPAGE, TK_KEY + KEY_BTAB,
                      TK_KEY + KEY_SLEFT, TK_KEY + KEY_ENTER, TK_KEY + KEY_IC}),
              {{FSK_UP, 0}, {FSK_PGDN, 0}, {9, FSM_SHIFT}, {FSK_LEFT, FSM_SHIFT}, {10, 0},
               {FSK_INSERT, 0}});
  // The resize key is the layer's business, not an event.
  EXPECT_TRUE(decode({TK_KEY + KEY_RESIZE, TK_KEY + KEY_MOUSE}).empty());
}

TEST(TermDecode, FunctionKeyBanksOfTheTerminalDescription) {
  expect_keys(decode({TK_KEY + KEY_F(1), TK_KEY + KEY_F(12), TK_KEY + KEY_F(13),
                      TK_KEY + KEY_F(29), TK_KEY + KEY_F(48), TK_KEY + KEY_F(49)}),
              {{FSK_F0 + 1, 0},
               {FSK_F0 + 12, 0},
               {FSK_F0 + 1, FSM_SHIFT},
               {FSK_F0 + 5, FSM_CTRL},
               {FSK_F0 + 12, FSM_CTRL | FSM_SHIFT},
               {FSK_F0 + 1, FSM_ALT}});
}

// The codes the layer gives to the sequences it adds with define_key.
int xcode(const char *seq) {
  char buf[32];
  for (int i = 0; i < tk_nxkeys; i++)
    for (int m = 2; m <= 8; m++) {
      tk_xseq(i, m, buf, sizeof buf);
      if (std::string(buf) == seq) return TK_KEY + TK_XTERM + i * TK_XSTRIDE + m;
    }
  return -1;
}

TEST(TermDecode, XtermModifiedKeysWhetherCursesMatchedThemOrNot) {
  const struct {
    const char *seq;  // what xterm sends
    want key;         // the event
  } rows[] = {
      {"\x1b[1;2P", {FSK_F0 + 1, FSM_SHIFT}},
      {"\x1b[15;5~", {FSK_F0 + 5, FSM_CTRL}},
      {"\x1b[24;8~", {FSK_F0 + 12, FSM_SHIFT | FSM_ALT | FSM_CTRL}},
      {"\x1b[1;3A", {FSK_UP, FSM_ALT}},
      {"\x1b[6;2~", {FSK_PGDN, FSM_SHIFT}},
      {"\x1b[1;5H", {FSK_HOME, FSM_CTRL}},
  };
  for (const auto &r : rows) {
    int code = xcode(r.seq);
    ASSERT_GT(code, 0) << r.seq + 1;
    expect_keys(decode({code}), {r.key});
    expect_keys(decode(units(r.seq)), {r.key});
  }
  int bs = as_delkey;
  as_delkey = 127;
  expect_keys(decode(units("\x1b[3;2~")), {{127, FSM_SHIFT}});
  as_delkey = bs;
  // Every sequence is distinct, so define_key never binds one twice.
  std::vector<std::string> seen;
  char buf[32];
  for (int i = 0; i < tk_nxkeys; i++)
    for (int m = 2; m <= 8; m++) {
      tk_xseq(i, m, buf, sizeof buf);
      for (const std::string &s : seen) EXPECT_NE(s, buf);
      seen.push_back(buf);
    }
}

TEST(TermDecode, KeypadApplicationForms) {
  expect_keys(decode(units("\x1bOA\x1bOR\x1bOM")), {{FSK_UP, 0}, {FSK_F0 + 3, 0}, {10, 0}});
}

TEST(TermDecode, UnknownSequencesAreSwallowedWhole) {
  expect_keys(decode(units("a\x1b[99;99zb\x1b[?25$pc\x1bOxd")), {{'a', 0}, {'b', 0}, {'c', 0},
                                                                 {'d', 0}});
  // Broken off by the end of the input: nothing of it is typed.
  EXPECT_TRUE(decode(units("\x1b[12;3")).empty());
  // Broken off by a key: the key still counts.
  expect_keys(decode({27, '[', '1', TK_KEY + KEY_UP}), {{FSK_UP, 0}});
}

TEST(TermDecode, SgrMousePressDragRelease) {
  int held = -1;
  std::vector<tk_out> out = decode(units("\x1b[<0;10;3M\x1b[<32;12;4M\x1b[<0;12;4m"), &held);
  ASSERT_EQ(out.size(), 3u);
  EXPECT_EQ(out[0].ev.code, FSK_LEFT_B);
  EXPECT_EQ(out[0].ev.released, 0);
  EXPECT_EQ(out[0].ev.x, 9 * TK_CELL_W + TK_CELL_W / 2);
  EXPECT_EQ(out[0].ev.y, 2 * TK_CELL_H + TK_CELL_H / 2);
  EXPECT_EQ(out[0].ch, -1);
  EXPECT_EQ(out[1].ev.code, FSK_DRAG);
  EXPECT_EQ(out[1].ev.x, 11 * TK_CELL_W + TK_CELL_W / 2);
  EXPECT_EQ(out[1].ev.y, 3 * TK_CELL_H + TK_CELL_H / 2);
  EXPECT_EQ(out[2].ev.code, FSK_LEFT_B);
  EXPECT_EQ(out[2].ev.released, 1);
  EXPECT_EQ(held, -1);
}

TEST(TermDecode, MouseButtonsModifiersAndWheel) {
  std::vector<tk_out> out =
      decode(units("\x1b[<2;1;1M\x1b[<1;1;1M\x1b[<20;5;5M\x1b[<65;1;1M\x1b[<68;1;1M\x1b[<81;1;1M"));
  ASSERT_EQ(out.size(), 6u);
  EXPECT_EQ(out[0].ev.code, FSK_RIGHT_B);
  EXPECT_EQ(out[1].ev.code, FSK_MIDDLE_B);
  EXPECT_EQ(out[2].ev.code, FSK_LEFT_B);
  EXPECT_EQ(out[2].ev.modifiers, FSM_SHIFT | FSM_CTRL);
  EXPECT_EQ(out[3].ev.code, FSK_WHEELDOWN);
  EXPECT_EQ(out[3].ev.modifiers, 0);
  EXPECT_EQ(out[4].ev.code, FSK_WHEELUP);
  EXPECT_EQ(out[4].ev.modifiers, FSM_SHIFT);
  EXPECT_EQ(out[5].ev.code, FSK_WHEELDOWN);
  EXPECT_EQ(out[5].ev.modifiers, FSM_CTRL);
  // Moves with no button down and the sideways wheel give nothing.
  EXPECT_TRUE(decode(units("\x1b[<35;3;3M\x1b[<66;1;1M")).empty());
}

TEST(TermDecode, OldMouseEncodingReleasesTheButtonHeld) {
  int held = -1;
  std::vector<tk_out> out =
      decode(units(std::string("\x1b[M") + char(32 + 2) + char(32 + 7) + char(32 + 3) +
                   "\x1b[M" + char(32 + 3) + char(32 + 7) + char(32 + 3)),
             &held);
  ASSERT_EQ(out.size(), 2u);
  EXPECT_EQ(out[0].ev.code, FSK_RIGHT_B);
  EXPECT_EQ(out[0].ev.x, 6 * TK_CELL_W + TK_CELL_W / 2);
  EXPECT_EQ(out[1].ev.code, FSK_RIGHT_B);
  EXPECT_EQ(out[1].ev.released, 1);
  // A release with nothing held is dropped.
  EXPECT_TRUE(decode(units(std::string("\x1b[M") + char(35) + char(33) + char(33)), &held).empty());
}

TEST(TermDecode, FocusReportsHaveNoRelease) {
  std::vector<tk_out> out = decode(units("\x1b[I\x1b[O"));
  ASSERT_EQ(out.size(), 2u);
  EXPECT_EQ(out[0].ev.code, FSK_FOCUSIN);
  EXPECT_EQ(out[1].ev.code, FSK_FOCUSOUT);
  EXPECT_EQ(out[0].ev.released, 0);
  EXPECT_EQ(out[1].ev.released, 0);
}

}  // namespace

namespace {

TEST(TermColours, PaletteEntriesGoToTheNearestTerminalColour) {
  const struct {
    int r, g, b;  // palette entry
    int c256;     // nearest of the 256
    int c8;       // nearest of the eight
  } rows[] = {
      {0, 0, 0, 16, 0},           // black: the cube's corner, not a system colour
      {255, 255, 255, 231, 7},    // white
      {255, 0, 0, 196, 1},        // red
      {0, 0, 255, 21, 4},         // blue
      {128, 128, 128, 244, 7},    // mid grey: the ramp beats the cube; white, not yellow
      {60, 60, 60, 237, 0},       // dark grey: black of the eight
      {95, 135, 175, 67, 6},      // exactly a cube colour; of the eight, cyan
      {200, 200, 0, 184, 3},      // dark yellow
  };
  for (const auto &r : rows) {
    EXPECT_EQ(tk_nearest256(r.r, r.g, r.b), r.c256) << r.r << "," << r.g << "," << r.b;
    EXPECT_EQ(tk_nearest8(r.r, r.g, r.b), r.c8) << r.r << "," << r.g << "," << r.b;
  }
}

}  // namespace

// A title is shown as it is when it is plain text, UTF-8 included; anything
// a terminal would act on comes out escaped, so a file name cannot set the
// title, move the cursor or clear the screen.
TEST(TitleText, ControlsComeOutEscaped) {
  EXPECT_EQ(tk_title_text("notes.txt  - VORTA"), "notes.txt  - VORTA");
  EXPECT_EQ(tk_title_text("caf\xc3\xa9 \xe6\x97\xa5\xe6\x9c\xac"), "caf\xc3\xa9 \xe6\x97\xa5\xe6\x9c\xac");
  EXPECT_EQ(tk_title_text("a\x1b]2;x\x07" "b"), "a^[]2;x^Gb");
  EXPECT_EQ(tk_title_text(std::string("nul\0end", 7)), "nul^@end");
  EXPECT_EQ(tk_title_text("del\x7f"), "del^?");
  // C1 controls: as UTF-8 (U+009B) and as a bare byte, which some
  // terminals take as the start of a sequence.
  EXPECT_EQ(tk_title_text("x\xc2\x9b" "2J"), "x\\x9B2J");
  EXPECT_EQ(tk_title_text("x\x9b" "2J"), "x\\x9B2J");
  // Truncated and overlong sequences are bytes, not characters.
  EXPECT_EQ(tk_title_text("end\xe6\x97"), "end\\xE6\\x97");
  EXPECT_EQ(tk_title_text("\xc0\xaf"), "\\xC0\\xAF");
}
