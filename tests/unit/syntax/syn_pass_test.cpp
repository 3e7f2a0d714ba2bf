// Colouring lines: each comment, string, bracket, preprocessor and keyword
// rule, the state that crosses lines, and the cache of states, which must
// give what one pass from the top gives whatever is asked and edited.
#include <gtest/gtest.h>

#include "syntax/syn.h"

#include <random>

namespace {

// A block from rule lines (between "filetype x" and "end").
const syn_block &block(const std::string &body) {
  std::string err;
  int line;
  EXPECT_EQ(syn_parse("filetype x\n" + body + "\nend\n", "t", err, line), 0) << err;
  return syn_table.at(0);
}

// The colours of lines coloured in order from the top, one string a line:
// a digit or letter a byte ('.' for none), colours 1-9 as digits, 10+ as a-z.
std::vector<std::string> paint(const syn_block &b, const std::vector<std::string> &lines,
                               syn_state *end = nullptr) {
  std::vector<std::string> out;
  syn_state st;
  for (const std::string &l : lines) {
    std::vector<uint8_t> c(l.size());
    st = syn_line(b, l.data(), int32_t(l.size()), st, c.data());
    std::string s;
    for (uint8_t v : c) s += v == SYN_NONE ? '.' : v < 10 ? char('0' + v) : char('a' + v - 10);
    out.push_back(s);
  }
  if (end) *end = st;
  return out;
}

TEST(SynPass, CommentsAndStringsOfStyleC) {
  const syn_block &b = block("comment Green c\nstring Yellow c");
  auto p = paint(b, {"a /* x", "still */ b // end", "s = \"/* no\" 'q\\'x' /* \"no */", "\"open"});
  EXPECT_EQ(p[0], "..4444");
  EXPECT_EQ(p[1], "44444444...444444");
  EXPECT_EQ(p[2], "....6666666.666666.444444444");
  EXPECT_EQ(p[3], "66666") << "a string ends at the line's end";
  syn_state after_string;
  auto q = paint(b, {"s = 'open /*", "x = 1; // c"}, &after_string);
  EXPECT_EQ(q[1], ".......4444") << "the line after an unclosed string starts clean";
  EXPECT_EQ(after_string.comment, 0);
  syn_state end;
  paint(b, {"x /* never closed", "", "more"}, &end);
  EXPECT_EQ(end.comment, 1) << "an unclosed comment runs to the end of the file";
  EXPECT_EQ(paint(b, {"/*", "", "more"})[2], "4444");
}

TEST(SynPass, OtherCommentStyles) {
  EXPECT_EQ(paint(block("comment Green sh"), {"a $# b # c"})[0], ".......444");
  EXPECT_EQ(paint(block("comment Green fortran"), {"c col 0", "x ! y", " c no", "/* b */ z"}),
            (std::vector<std::string>{"4444444", "..444", ".....", "4444444.."}));
  EXPECT_EQ(paint(block("comment Green rexx"), {"#x", "a /* 1 /* 2 */ 1 */ b", "a # b"}),
            (std::vector<std::string>{"44", "..44444444444444444..", "....."}));
  EXPECT_EQ(paint(block("comment Green latex"), {"%x", "a \\% b % c"})[1], ".......444");
  EXPECT_EQ(paint(block("comment Green autoit"), {"a ; b"})[0], "..444");
  EXPECT_EQ(paint(block("comment Green cobol"), {"000100*COMMENT", "000200 MOVE", "000300-X", "short"}),
            (std::vector<std::string>{"......44444444", "...........", "........", "....."}));
  std::string lamp = "a \xA9 b";
  EXPECT_EQ(paint(block("comment Green apl"), {lamp})[0], "..444");
}

TEST(SynPass, StringStyles) {
  EXPECT_EQ(paint(block("string Yellow rexx"), {"'it''s' \"x\\\" y"})[0], "6666666.6666..") << "no escapes";
  EXPECT_EQ(paint(block("string Yellow fortran"), {"'a''b\\'c' d"})[0], "666666666..");
  EXPECT_EQ(paint(block("string Yellow apl"), {"'a''b' \"c\""})[0], "666666....");
  EXPECT_EQ(paint(block("comment Green c"), {"'a' \"b\""})[0], ".......") << "no strings";
}

TEST(SynPass, BracketsByDepth) {
  const syn_block &b = block("match BLUe Red Green");
  // Depth 3 takes the first colour again; kinds count apart; a closer with
  // no opener has no colour and leaves the depth at -1.
  EXPECT_EQ(paint(b, {"((((x))))"})[0], "1241.1421");
  EXPECT_EQ(paint(b, {") ( [ } ] )"})[0], "..1.1...1.1");
  syn_state end;
  paint(b, {"{ (", "["}, &end);
  EXPECT_EQ(end.depth[0], 0);
  EXPECT_EQ(end.depth[1], 0);
  EXPECT_EQ(end.depth[2], 0);
}

TEST(SynPass, PreprocessorByDepth) {
  const syn_block &b = block("cpp Red Green");
  auto p = paint(b, {"#endif", "#  ifdef X", "#if Y", "#elif Z", "# else", "#endif", "#endif", "#define A",
                     "x #if"});
  EXPECT_EQ(p[0], "......") << "#endif without #if: no colour";
  EXPECT_EQ(p[1], "22222222..");
  EXPECT_EQ(p[2], "444..");
  EXPECT_EQ(p[3], "44444..");
  EXPECT_EQ(p[4], "444444");
  EXPECT_EQ(p[5], "444444");
  EXPECT_EQ(p[6], "222222");
  EXPECT_EQ(p[7], ".........");
  EXPECT_EQ(p[8], ".....");
}

TEST(SynPass, Keywords) {
  const syn_block &b = block("keyword Indigo if else\nkeyword Red if -x\ncase ignore\nvariable object");
  EXPECT_EQ(paint(b, {"IF x else iffy elsewhere -x a.if"})[0], "55...5555................22...55")
      << "a keyword may begin with an operator; in a.b the b is a word";
  const syn_block &s = block("keyword Indigo if\ncase respect\nvariable standard");
  EXPECT_EQ(paint(s, {"IF if a.if if.b"})[0], "...55..........") << "'.' joins words";
}

// A file of random lines of C: comments opened and closed, strings,
// brackets, #if lines and keywords.
std::vector<std::string> random_file(std::mt19937 &rng, int n) {
  static const char *bits[] = {"/*", "*/", "//", "\"s\"", "'", "(", ")", "{", "}", "[", "]", "if", "x",
                               " ", "#if", "#endif", "else", "\\", "\""};
  std::vector<std::string> f;
  for (int i = 0; i < n; i++) {
    std::string l;
    int k = int(rng() % 8);
    for (int j = 0; j < k; j++) l += bits[rng() % (sizeof bits / sizeof bits[0])];
    f.push_back(l);
  }
  return f;
}

struct vec_lines : syn_lines {
  std::vector<std::string> *v;
  int32_t count() const override { return int32_t(v->size()); }
  std::string_view line(int32_t i) const override { return (*v)[size_t(i)]; }
};

TEST(SynColouring, TheCacheGivesWhatOnePassGives) {
  const syn_block &b = block("comment Green c\nstring Yellow c\nkeyword Indigo if else\nmatch BLUe Red\ncpp Orange");
  std::mt19937 rng(7);
  std::vector<std::string> file = random_file(rng, 2000);
  vec_lines f;
  f.v = &file;
  syn_colouring c;
  auto check = [&](const char *when) {
    std::vector<std::string> full = paint(b, file);
    std::vector<uint8_t> out;
    // In an order a user might ask for: a page, a jump, a page back.
    for (int32_t start : {1500, 10, 1999, 700, 0}) {
      for (int32_t i = start; i < start + 40 && i < int32_t(file.size()); i++) {
        ASSERT_TRUE(c.colours(b, f, i, out));
        std::string s;
        for (uint8_t v : out) s += v == SYN_NONE ? '.' : v < 10 ? char('0' + v) : char('a' + v - 10);
        ASSERT_EQ(s, full[size_t(i)]) << when << ": line " << i;
      }
    }
  };
  check("first");
  for (int round = 0; round < 20; round++) {
    int32_t at = int32_t(rng() % file.size());
    if (round % 3 == 0) {
      file.insert(file.begin() + at, "/* opened");
    } else if (round % 3 == 1) {
      file.erase(file.begin() + at);
    } else {
      file[size_t(at)] += "*/ (";
    }
    c.changed(at);
    check("after an edit");
  }
  std::vector<uint8_t> none;
  EXPECT_FALSE(c.colours(b, f, int32_t(file.size()), none)) << "past the end";
}

}  // namespace
