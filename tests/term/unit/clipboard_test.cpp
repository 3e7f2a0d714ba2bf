// The terminal's side of the clipboard: the sequence a copy sends (its frame
// and the text in base 64), and bracketed pastes, which must come in as text
// and never as keys.
#define NCURSES_NOMACROS 1
#include "fields/plat_term/term_int.h"
#include "platform/platform.h"
#include <curses.h>
#include <gtest/gtest.h>
#include <string>

namespace {

TEST(Osc52, FrameAndBase64) {
  EXPECT_EQ(tk_osc52("hi"), "\033]52;c;aGk=\a");
  EXPECT_EQ(tk_osc52("ab\ncd"), "\033]52;c;YWIKY2Q=\a");
  // UTF-8 goes through byte for byte: "é" is C3 A9.
  EXPECT_EQ(tk_osc52("\xc3\xa9"), "\033]52;c;w6k=\a");
  EXPECT_EQ(tk_osc52(""), "\033]52;c;\a");
}

std::vector<int> units(const std::string &s) {
  std::vector<int> u;
  for (unsigned char c : s) u.push_back(c);
  return u;
}

std::string typed(const std::vector<tk_out> &out) {
  std::string s;
  for (const tk_out &o : out)
    if (!(o.ev.released & 1)) s += char(o.ev.code);
  return s;
}

TEST(BracketedPaste, OneLineIsTypedWithNoKeys) {
  std::vector<tk_out> out;
  int held = 0;
  // The escape, tab and return inside would otherwise be keys.
  tk_decode(units("x\033[200~a\tb\033c\033[201~y"), out, &held);
  EXPECT_EQ(typed(out), "xa bcy");
  std::string left;
  EXPECT_FALSE(pl_paste_take(left));
}

TEST(BracketedPaste, ManyLinesWaitAsTextAcrossReads) {
  std::vector<tk_out> out;
  int held = 0;
  tk_decode(units("\033[200~one\r\ntw"), out, &held);
  EXPECT_TRUE(out.empty());
  tk_decode(units("o\rthree\n"), out, &held);
  EXPECT_TRUE(out.empty());
  tk_decode(units("\033[201~"), out, &held);
  ASSERT_EQ(out.size(), 1u);
  EXPECT_EQ(out[0].ev.code, FSK_TOOLBAR);
  EXPECT_EQ(out[0].ch, FS_PASTE_ID);
  std::string text;
  ASSERT_TRUE(pl_paste_take(text));
  EXPECT_EQ(text, "one\ntwo\nthree\n");
  EXPECT_FALSE(pl_paste_take(text)); // taken once
  // After the paste, keys are keys again.
  out.clear();
  tk_decode(units("\r"), out, &held);
  ASSERT_EQ(out.size(), 2u); // press and release
  EXPECT_EQ(out[0].ev.code, 13);
}

}  // namespace
