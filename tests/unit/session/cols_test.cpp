// The column service: characters of UTF-8 text, bytes of any other text;
// offsets past the end, bytes inside a character, stray bytes, and the
// well-formedness test that decides a file's mode.
#include <gtest/gtest.h>

#include "session/xed.h"

#include <string>

namespace {

int32_t len(const std::string &s, bool u = true) { return xfcol_len(s.data(), (int32_t)s.size(), u); }
int32_t off(const std::string &s, int32_t c, bool u = true) { return xfcol_off(s.data(), (int32_t)s.size(), c, u); }
int32_t at(const std::string &s, int32_t o, bool u = true) { return xfcol_at(s.data(), (int32_t)s.size(), o, u); }
bool valid(const std::string &s, bool &high) { return xfutf8_text(s.data(), s.size(), high); }

TEST(Columns, BytesAreColumnsInAByteFile)
{
    std::string s = "caf\xc3\xa9";
    EXPECT_EQ(len(s, false), 5);
    EXPECT_EQ(off(s, 4, false), 4);
    EXPECT_EQ(at(s, 4, false), 4);
}

TEST(Columns, CharactersAreColumnsInAUtf8File)
{
    std::string cafe = "caf\xc3\xa9!";
    EXPECT_EQ(len(cafe), 5);
    EXPECT_EQ(off(cafe, 3), 3);
    EXPECT_EQ(off(cafe, 4), 5) << "the column after the two-byte character";
    EXPECT_EQ(off(cafe, 7), 8) << "past the end each column is one byte";
    EXPECT_EQ(at(cafe, 4), 3) << "a byte inside a character belongs to it";
    EXPECT_EQ(at(cafe, 5), 4);
    EXPECT_EQ(at(cafe, 8), 7);
    std::string nihongo = "\xe6\x97\xa5\xe6\x9c\xac\xe8\xaa\x9e";
    EXPECT_EQ(len(nihongo), 3);
    EXPECT_EQ(off(nihongo, 2), 6);
    EXPECT_EQ(at(nihongo, 6), 2);
}

TEST(Columns, TheAsciiStrideKeepsCountAcrossItsEdges)
{
    // Characters just before, on and after the eight-byte steps.
    for (int lead = 0; lead < 18; lead++) {
        std::string s = std::string((size_t)lead, 'a') + "\xc3\xa9" + std::string(9, 'b');
        ASSERT_EQ(len(s), lead + 10) << lead;
        ASSERT_EQ(off(s, lead), lead) << lead;
        ASSERT_EQ(off(s, lead + 1), lead + 2) << lead;
        ASSERT_EQ(off(s, lead + 10), lead + 11) << lead;
        ASSERT_EQ(at(s, lead + 2), lead + 1) << lead;
    }
}

TEST(Columns, WalkingAlongALine)
{
    std::string s = "a\xff" "b\xf0\x9f\x98\x80";
    int32_t next = 0;
    std::vector<uint32_t> seen;
    for (int32_t o = 0; o < (int32_t)s.size(); o = next)
        seen.push_back(xfcol_char(s.data(), (int32_t)s.size(), o, next, true));
    EXPECT_EQ(seen, (std::vector<uint32_t>{'a', 0xff, 'b', 0x1f600})) << "a stray byte stands for itself";
    EXPECT_EQ(len(s), 4);
}

TEST(Columns, CellWidths)
{
    EXPECT_EQ(xfcol_width('a'), 1);
    EXPECT_EQ(xfcol_width(0xe9), 1);
    EXPECT_EQ(xfcol_width(0x301), 0) << "a combining accent";
    EXPECT_EQ(xfcol_width(0x200d), 0) << "the zero-width joiner";
    EXPECT_EQ(xfcol_width(0x65e5), 2) << "a CJK ideograph";
    EXPECT_EQ(xfcol_width(0xac00), 2) << "a Hangul syllable";
    EXPECT_EQ(xfcol_width(0x1f600), 2) << "an emoji";
    EXPECT_EQ(xfcol_width(0x20ac), 1) << "the euro sign";
}

TEST(Columns, WellFormedUtf8DecidesTheMode)
{
    bool high = true;
    EXPECT_TRUE(valid("plain text\n", high));
    EXPECT_FALSE(high);
    EXPECT_TRUE(valid("caf\xc3\xa9 \xe6\x97\xa5 \xf0\x9f\x98\x80", high));
    EXPECT_TRUE(high);
    const char *bad[] = {
        "latin-1 caf\xe9 here",  // a lone high byte
        "\xc0\xaf",              // overlong slash
        "\xe0\x80\xaf",          // overlong, three bytes
        "\xed\xa0\x80",          // a surrogate
        "\xf4\x90\x80\x80",      // past U+10FFFF
        "cut \xe6\x97",          // a character cut short
        "\x80 leading continuation",
    };
    for (const char *b : bad)
        EXPECT_FALSE(valid(b, high)) << b;
    std::string nul("a\0b", 3);
    EXPECT_TRUE(valid(nul, high)) << "a NUL is ASCII";
}

TEST(Columns, LongLinesCountOnce)
{
    std::string s;
    for (int i = 0; i < 1000000; i++)
        s += "\xc3\xa9";
    EXPECT_EQ(len(s), 1000000);
    EXPECT_EQ(off(s, 999999), 1999998);
    EXPECT_EQ(at(s, 1999998), 999999);
}

} // namespace
