// Characters past Latin-1 in the cells: UTF-8 text in and out of a field
// with substitutes for what one cell cannot show, typing such characters
// into fields of UTF-8 text and of bytes, and the code point on the status
// line.
#include "fs_fixture.h"

#include <cstdlib>

class Utf8 : public FieldsTest {
 protected:
  void TearDown() override {
    asfinsert(0);
    FieldsTest::TearDown();
  }
  std::string get8(int id, int trim = 1) {
    int n = 0;
    char *s = ascget_utf8(id, &n, trim);
    std::string r = s ? std::string(s, size_t(n)) : std::string("<none>");
    free(s);
    return r;
  }
  uint16_t cell(int id, int k) {
    std::vector<uint16_t> c(80);
    ascget_short(id, 80, c.data());
    return c[size_t(k)];
  }
};

TEST_F(Utf8, TextReadsBackByteForByte) {
  define({fld(1, 1, 1, 1, 40, 0, FSF_UTF8)});
  // Accented letters, a wide character, a combining mark, an emoji outside
  // the BMP, a private-use character and a stray byte of broken UTF-8.
  const std::string text = "caf\xC3\xA9 \xE6\x97\xA5 e\xCC\x81 \xF0\x9F\x98\x80 \xEE\x80\x80 \xFFz";
  ASSERT_GE(ascput_utf8(1, int(text.size()), text.c_str()), 0);
  EXPECT_EQ(get8(1), text);
  // One cell a character: é is one cell, the wide one one substitute cell.
  EXPECT_EQ(cell(1, 3), 0xE9);
  EXPECT_TRUE(fs_subst(cell(1, 5)));
  EXPECT_EQ(cell(1, 7), 'e');
  EXPECT_TRUE(fs_subst(cell(1, 8)));   // the combining acute, alone
  EXPECT_TRUE(fs_subst(cell(1, 10)));  // the emoji
  EXPECT_TRUE(fs_subst(cell(1, 12)));  // private use: never mistaken for a substitute
  EXPECT_TRUE(fs_subst(cell(1, 14)));  // the stray byte is not Latin-1 ÿ
  EXPECT_EQ(cell(1, 15), 'z');
  EXPECT_EQ(fs_cellchar(cell(1, 5)), 0x65E5u);
  EXPECT_EQ(fs_cellchar(cell(1, 10)), 0x1F600u);
  EXPECT_EQ(fs_cellchar(cell(1, 14)), 0xFFu);
  // The same character twice takes one entry of the table.
  const std::string twice = "\xE6\x97\xA5\xE6\x97\xA5";
  define({fld(2, 3, 1, 1, 10, 0, FSF_UTF8)});
  ascput_utf8(2, int(twice.size()), twice.c_str());
  EXPECT_EQ(cell(2, 0), cell(2, 1));
}

TEST_F(Utf8, ByteFieldsKeepLatin1) {
  define({fld(1, 1, 1, 1, 10)});
  put(1, "ab\xE9");
  EXPECT_EQ(cell(1, 2), 0xE9);
  EXPECT_EQ(get(1).substr(0, 3), "ab\xE9");
}

TEST_F(Utf8, AFullTableIsReported) {
  // More distinct wide characters than the table holds, put one row after
  // the other into the same field: the table keeps them all until the page
  // is cleared, so at last the put says it is full.
  define({fld(1, 1, 1, 1, 80, 0, FSF_UTF8)});
  uint32_t cp = 0x4E00;
  int full = 0, first_full = -1;
  for (int r = 0; r < 120; r++) {
    std::string t;
    for (int k = 0; k < 80; k++) {
      char b[4];
      t.append(b, size_t(fs_utf8_put(cp++, b)));
    }
    if (ascput_utf8(1, int(t.size()), t.c_str()) == -2) {
      full++;
      if (first_full < 0) first_full = r;
    }
  }
  EXPECT_EQ(first_full, 105);  // 8448 substitutes: 105 rows and a part
  EXPECT_GT(full, 0);
  // Clearing the page empties the table: a row fits again.
  asfclr();
  define({fld(1, 1, 1, 1, 10, 0, FSF_UTF8)});
  EXPECT_EQ(ascput_utf8(1, 3, "\xE4\xB8\x80"), 0);
}

TEST_F(Utf8, TypingPastLatin1) {
  define({fld(1, 1, 1, 1, 10, 0, FSF_UTF8), fld(2, 3, 1, 1, 10)});
  put(2, "ab");
  asfcur(1, 1, 1);
  read("type \xC3\xB1\xE6\x97\xA5\xE2\x82\xAC\nkey enter");  // ñ 日 €
  EXPECT_EQ(get8(1), "\xC3\xB1\xE6\x97\xA5\xE2\x82\xAC");
  EXPECT_EQ(cell(1, 0), 0xF1);
  EXPECT_TRUE(fs_subst(cell(1, 1)));
  EXPECT_EQ(cell(1, 2), 0x20AC);
  // A field of bytes takes a Latin-1 letter as its byte and refuses the
  // others with a flash, leaving the text as it was.
  asfcur(2, 1, 3);
  read("type \xC3\xA9\xE2\x82\xAC\nkey enter");
  EXPECT_EQ(get(2).substr(0, 4), "ab\xE9 ");
  // Inserting shifts substitutes with the rest.
  asfinsert(1);
  asfcur(1, 1, 1);
  read("type x\nkey enter");
  EXPECT_EQ(get8(1), "x\xC3\xB1\xE6\x97\xA5\xE2\x82\xAC");
}

TEST_F(Utf8, StatusLineShowsTheCodePoint) {
  define({fld(1, 3, 1, 1, 20, 0, FSF_UTF8)});
  const std::string text = "a\xE6\x97\xA5\xC3\xA9";
  ascput_utf8(1, int(text.size()), text.c_str());
  asfcur(1, 1, 2);
  read("key enter");
  EXPECT_EQ(rec->statusline.substr(0, 25), "Line=3  Col=2  Hex=65E5  ");
  asfcur(1, 1, 3);
  read("key enter");
  EXPECT_EQ(rec->statusline.substr(0, 21), "Line=3  Col=3  Hex=E9");
}

TEST(Utf8Codec, SequencesAndWidths) {
  uint32_t cp = 0;
  auto seq = [&](const char *s) {
    return fs_utf8_seq(reinterpret_cast<const unsigned char *>(s), long(strlen(s)), cp);
  };
  EXPECT_EQ(seq("\xC3\xA9"), 2);
  EXPECT_EQ(cp, 0xE9u);
  EXPECT_EQ(seq("\xF4\x8F\xBF\xBF"), 4);  // U+10FFFF, the last
  EXPECT_EQ(seq("\xC0\xAF"), 0);          // overlong
  EXPECT_EQ(seq("\xE0\x80\xAF"), 0);      // overlong
  EXPECT_EQ(seq("\xED\xA0\x80"), 0);      // a surrogate
  EXPECT_EQ(seq("\xF4\x90\x80\x80"), 0);  // past U+10FFFF
  EXPECT_EQ(seq("\xE6\x97"), 0);          // cut short
  for (uint32_t c : {0x41u, 0xE9u, 0x7FFu, 0x800u, 0xFFFDu, 0x10000u, 0x10FFFFu}) {
    char b[4];
    int n = fs_utf8_put(c, b);
    EXPECT_EQ(fs_utf8_seq(reinterpret_cast<const unsigned char *>(b), n, cp), n) << c;
    EXPECT_EQ(cp, c);
  }
  EXPECT_EQ(fs_cwidth('a'), 1);
  EXPECT_EQ(fs_cwidth(0x65E5), 2);
  EXPECT_EQ(fs_cwidth(0x1F600), 2);
  EXPECT_EQ(fs_cwidth(0x301), 0);
  EXPECT_EQ(fs_cwidth(0x20AC), 1);
}
