// Syntax errors: numbers, positions, further messages, the report text,
// and inputs that must fail cleanly (deep nesting, binary data).
#include "rexx/rexx.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

rx_err parse_err(const std::string& text)
{
  rx_prog p;
  rx_err e;
  int rc = rx_parse(p, text.data(), text.size(), e);
  EXPECT_EQ(rc, e.err_num) << text;
  if (rc) {
    EXPECT_EQ(p.block_head, nullptr) << text;
  }
  return e;
}

struct errcase {
  const char* text;  // program
  int num;           // error number
  int line;          // line from 0
  int col;           // column from 0
  const char* msg;   // further message, "" for none
};

void check(const errcase* cases, size_t n)
{
  for (size_t i = 0; i < n; i++) {
    const errcase& c = cases[i];
    rx_err e = parse_err(c.text);
    EXPECT_EQ(e.err_num, c.num) << c.text;
    EXPECT_EQ(e.err_line, c.line) << c.text;
    EXPECT_EQ(e.err_col, c.col) << c.text;
    EXPECT_EQ(e.err_msg, c.msg) << c.text;
  }
}

TEST(ParseErrors, StructureErrors)
{
  const errcase cases[] = {
    {"if then nop", 50, 0, 3, ""},
    {"if a say 1\nnop", 18, 0, 10, ""},
    {"select\nwhen a nop\nend", 18, 1, 10, ""},
    {"select\nend", 7, 1, 0, ""},
    {"select\nsay 1\nend", 7, 1, 0, ""},
    {"select\nwhen a then nop\nsay 1\nend", 7, 2, 0, ""},
    {"select\notherwise nop\nend", 53, 1, 0, ""},
    {"if a then select x\nend", 52, 0, 17, ""},
    {"say 1; else nop", 8, 0, 7, ""},
    {"then = 1\nif a then; else nop", 8, 1, 11, ""},
    {"drop 5", 20, 0, 5, ""},
    {"upper a 'b'", 20, 0, 8, ""},
    {"numeric form sci", 25, 0, 13, ""},
    {"option lower junk", 25, 0, 13, ""},
    {"say 1 +\nnop", 55, 0, 7, ""},
    {"end", 55, 0, 0, ""},
    {"call on syntax", 55, 0, 8, ""},
    {"signal on nothing", 55, 0, 10, ""},
    {"say a[1][2]", 55, 0, 8, ""},
  };
  check(cases, std::size(cases));
}

TEST(ParseErrors, DoErrorsWithTheirMessages)
{
  const errcase cases[] = {
    {"do i = 1 to 3 to 4\nend", 27, 0, 14, "\"TO\" has been used twice."},
    {"do i = 1 by 1 to 2 by 3\nend", 27, 0, 19, "\"BY\" has been used twice."},
    {"do i = 1 for 1 for 3\nend", 27, 0, 15, "\"FOR\" has been used twice."},
    {"do while a while b\nend", 27, 0, 11, "\"WHILE\" has been used twice."},
    {"do until a until b\nend", 27, 0, 11, "\"UNTIL\" has been used twice."},
    {"do 3\nend i", 27, 1, 4,
     "A \"END symbol\" clause may only be used with a controlled repetitive loop"},
    {"do i = 1\nend j", 27, 1, 4, "Only the controlling variable I can be specified."},
    {"do i = 1 to\nend", 27, 0, 11, ""},
    {"do forever 3\nend", 27, 0, 11, ""},
    {"do i = 1; leave i + 1; end", 28, 0, 16,
     "LEAVE or ITERATE may only be followed by a SYMBOL."},
    {"iterate a b", 28, 0, 8, "LEAVE or ITERATE may only be followed by a SYMBOL."},
  };
  check(cases, std::size(cases));
  EXPECT_EQ(parse_err("do i = 1\nend I").err_num, 0);
  EXPECT_EQ(parse_err("leave 3").err_num, 0);
}

TEST(ParseErrors, ProgramEndingInsideAStructure)
{
  const errcase cases[] = {
    {"say 1\ndo i = 1\n  say i\n", 64, 1, 0, ""},
    {"select\n when a then do\n", 64, 1, 13, ""},
    {"select\n when a then nop\n", 65, 0, 0, ""},
    {"nop\nif a then", 66, 1, 0, ""},
    {"if a then if b then", 66, 0, 10, ""},
    {"do\nif a then", 66, 1, 0, ""},
    {"say (1", 55, 0, 6, ""},
  };
  check(cases, std::size(cases));
}

TEST(ParseErrors, NestingLimitStopsBeforeTheStack)
{
  std::string dos;
  for (int i = 0; i < 5000; i++) dos += "do\n";
  dos += "nop\n";
  for (int i = 0; i < 5000; i++) dos += "end\n";
  EXPECT_EQ(parse_err(dos).err_num, 61);
  std::string parens = "x = " + std::string(100000, '(') + "1" + std::string(100000, ')');
  EXPECT_EQ(parse_err(parens).err_num, 61);
  std::string minus = "x = " + std::string(100000, '-') + "1";
  EXPECT_EQ(parse_err(minus).err_num, 61);
  std::string chain = "x = 1";
  for (int i = 0; i < 20000; i++) chain += "+1";
  EXPECT_EQ(parse_err(chain).err_num, 61);
  std::string ifs;
  for (int i = 0; i < 5000; i++) ifs += "if a then ";
  EXPECT_EQ(parse_err(ifs + "nop").err_num, 61);
  // Depths that real programs use parse.
  std::string ok;
  for (int i = 0; i < 100; i++) ok += "do\n";
  for (int i = 0; i < 100; i++) ok += "end\n";
  EXPECT_EQ(parse_err(ok).err_num, 0);
  EXPECT_EQ(parse_err("x = " + std::string(200, '(') + "1" + std::string(200, ')')).err_num, 0);
}

TEST(ParseErrors, OddInputsFailCleanlyOrParse)
{
  EXPECT_EQ(parse_err("").err_num, 0);
  EXPECT_EQ(parse_err("\n\n\n").err_num, 0);
  EXPECT_EQ(parse_err("say 1").err_num, 0);  // no final newline
  EXPECT_EQ(parse_err("say '" + std::string(100000, 'x') + "'").err_num, 0);
  std::string bin;
  for (int i = 0; i < 256; i++) bin += static_cast<char>(i);
  rx_err e = parse_err(bin);
  EXPECT_NE(e.err_num, 0);
  std::string nul("say 1\0 2", 8);
  EXPECT_EQ(parse_err(nul).err_num, 55);
}

TEST(ParseErrors, ExhaustedMemoryIsError62)
{
#if defined(XED_SANITIZED)
  GTEST_SKIP() << "the address sanitizer needs more address space than the limit leaves";
#else
  // In a child: with the address space capped, a large program cannot be
  // held, and the parse must end with 62 instead of dying.
  pid_t pid = fork();
  ASSERT_GE(pid, 0);
  if (pid == 0) {
    std::string text;
    for (int i = 0; i < 200000; i++) text += "say a b c d e f g h i j k l m n o p q r s t u v w x y z\n";
    rlimit lim{};
    getrlimit(RLIMIT_AS, &lim);
    rlimit cap = lim;
    cap.rlim_cur = 160u << 20;
    if (setrlimit(RLIMIT_AS, &cap) != 0) _exit(2);
    rx_prog p;
    rx_err e;
    int rc = rx_parse(p, text.data(), text.size(), e);
    _exit(rc == 62 ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(pid, &status, 0), pid);
  ASSERT_TRUE(WIFEXITED(status)) << "child died instead of reporting";
  EXPECT_EQ(WEXITSTATUS(status), 0);
#endif
}

TEST(ErrorReport, ProgramPreludeAndInterpretedForms)
{
  rx_src src;
  src.text = "say 1\nsay 2 +\n";
  src.file_name = "prog.rexx";
  rx_err e;
  e.err_num = 55;
  e.err_line = 1;
  e.err_col = 7;
  EXPECT_EQ(rx_error_report(src, e),
            "    2 +++ say 2 +\n"
            "                 ^\n"
            "Error 55 on line 2 in file \"prog.rexx\": Syntax error.\n");
  src.prelude_lines = 1;
  e.err_msg = "\"TO\" has been used twice.";
  e.err_num = 27;
  EXPECT_EQ(rx_error_report(src, e),
            "    1 +++ say 2 +\n"
            "                 ^\n"
            "Error 27 on line 1 in file \"prog.rexx\": Invalid DO syntax.\n"
            "molba: \"TO\" has been used twice.\n");
  e.err_line = 0;
  e.err_col = 99;  // cut to the line's length
  e.err_msg.clear();
  EXPECT_EQ(rx_error_report(src, e),
            "    1 (.molbarc) +++ say 1\n"
            "                          ^\n"
            "Error 27 on line 1 in file \"prog.rexx\" (while processing \".molbarc\"): "
            "Invalid DO syntax.\n");
  rx_src in;
  in.text = "do i = 1 to";
  in.interpreted = true;
  rx_err ie;
  ie.err_num = 27;
  ie.err_col = 11;
  EXPECT_EQ(rx_error_report(in, ie),
            "    *interpreted* do i = 1 to\n"
            "                             ^\n"
            "Error 27: Invalid DO syntax.\n");
}

TEST(ErrorReport, ErrorTexts)
{
  EXPECT_STREQ(rx_error_text(1), "Unmatched Quote.");
  EXPECT_STREQ(rx_error_text(42), "Arithmetics overflow/underflow.");
  EXPECT_STREQ(rx_error_text(98), "Invalid SIGNAL name.");
  EXPECT_STREQ(rx_error_text(3), "Unknown error.");
  EXPECT_STREQ(rx_error_text(77), "Unknown error.");
  EXPECT_STREQ(rx_error_text(0), "Unknown error.");
  EXPECT_STREQ(rx_error_text(1000), "Unknown error.");
}

// A program of the given number of four-line blocks; processor seconds of
// its parse, which a busy machine does not inflate the way it does wall time.
double parse_seconds(int blocks)
{
  std::string text;
  for (int i = 0; i < blocks; i++) {
    text += "do i = 1 to 10 by 2 while x.i < 5\n";
    text += "  if a.i = 'abc' then say substr(x, i, 2) || y.i.j; else call foo a, b, (c)\n";
    text += "  parse var line w1 w2 ',' rest\n";
    text += "end\n";
  }
  std::clock_t t0 = std::clock();
  rx_prog p;
  rx_err e;
  EXPECT_EQ(rx_parse(p, text.data(), text.size(), e), 0);
  double secs = static_cast<double>(std::clock() - t0) / CLOCKS_PER_SEC;
  int n = 0;
  for (const rx_cell* c = p.block_head; c && c->cl; c = c->next) n++;
  EXPECT_EQ(n, blocks);
  return secs;
}

TEST(ParsePerformance, TimeGrowsLinearlyWithTheProgram)
{
  double small = parse_seconds(6250);   // 25,000 lines
  double large = parse_seconds(25000);  // 100,000 lines
  // Four times the text: a linear parser takes about four times as long, a
  // quadratic one sixteen. The bound leaves room for a busy machine.
  EXPECT_LT(large, small * 10 + 0.05);
#if !defined(XED_SANITIZED)
  EXPECT_LT(large, 2.0);  // about 0.4 s
#endif
}

}  // namespace
