// Rule files: blocks and their aliases, every keyword of the format, the
// load's messages (the table is empty after any of them), and the choice of
// a block for a file.
#include <gtest/gtest.h>

#include "syntax/syn.h"

#include <cstdio>
#include <fstream>

namespace {

struct loaded {
  int rc;
  std::string err;
  int line;
};

loaded parse(const std::string &text) {
  loaded l{0, "", 0};
  l.rc = syn_parse(text, "r.rules", l.err, l.line);
  return l;
}

const char *good =
    "* a comment line\n"
    "\n"
    "# another\n"
    "filetype c h cpp\n"
    "  comment Green c\n"
    "  string Yellow c\n"
    "  keyword Indigo if else\n"
    "  keyword Red if while\n"
    "  match BLUe Red Green\n"
    "  cpp MAGenta\n"
    "  case respect\n"
    "  variable object\n"
    "end\n"
    "firstline \"#!/bin/sh\" rexx\n"
    "  comment Green sh\n"
    "  keyword Indigo IF\n"
    "  case ignore\n"
    "end\n"
    "apl\n"
    "  comment Green apl\n"
    "end\n";

TEST(SynColours, NamesAndTheirShortForms) {
  EXPECT_EQ(syn_colour("BLUe"), 1);
  EXPECT_EQ(syn_colour("blu"), 1);
  EXPECT_EQ(syn_colour("bl"), 0) << "shorter than the capitals";
  EXPECT_EQ(syn_colour("black"), 7);
  EXPECT_EQ(syn_colour("MAG"), 9);
  EXPECT_EQ(syn_colour("magenta2"), 11);
  EXPECT_EQ(syn_colour("PUrple"), 64);
  EXPECT_EQ(syn_colour("blues"), 0) << "longer than the name";
  EXPECT_EQ(syn_colour(""), 0);
  EXPECT_STREQ(syn_colour_name(8), "");
}

TEST(SynLoad, BlocksAliasesAndSettings) {
  loaded l = parse(good);
  ASSERT_EQ(l.rc, 0) << l.err;
  ASSERT_EQ(syn_table.size(), 6u);  // c h cpp, two first lines, apl
  const syn_block &c = syn_table[0];
  EXPECT_EQ(c.name, "c");
  EXPECT_FALSE(c.alias);
  EXPECT_EQ(c.comment_style, SYN_C);
  EXPECT_EQ(c.comment_colour, 4);
  EXPECT_EQ(c.string_style, SYN_STR_C);
  EXPECT_EQ(c.variable, 1);
  EXPECT_EQ(c.t->match, (std::vector<int>{1, 2, 4}));
  EXPECT_EQ(c.t->cpp, (std::vector<int>{9}));
  // Aliases share the tables and the settings of their block.
  EXPECT_TRUE(syn_table[1].alias);
  EXPECT_EQ(syn_table[1].t.get(), c.t.get()) << "every extension of a line shares one table";
  EXPECT_EQ(syn_table[2].name, "cpp");
  EXPECT_EQ(syn_table[2].t.get(), c.t.get());
  EXPECT_EQ(syn_table[2].comment_colour, 4);
  // A word given twice keeps its first colour.
  EXPECT_EQ(c.t->first.at("if"), 5);
  EXPECT_EQ(c.t->first.at("while"), 2);
  // case ignore lower-cases the block's keywords.
  EXPECT_EQ(syn_table[3].kind, SYN_FIRSTLINE);
  EXPECT_EQ(syn_table[3].name, "#!/bin/sh");
  EXPECT_EQ(syn_table[3].t->first.count("if"), 1u);
  EXPECT_EQ(syn_table[5].kind, SYN_APL);
}

TEST(SynLoad, EveryErrorEmptiesTheTable) {
  struct {
    const char *text;
    const char *err;
    int line;
  } rows[] = {
      {"bogus x\n", "Invalid block start in file \"r.rules\" on line 1", 1},
      {"filetype\n", "Invalid block start in file \"r.rules\" on line 1", 1},
      {"filetype c\n comment Grene c\nend\n", "Syntax error on line 2: invalid color.", 2},
      {"filetype c\n comment Green pascal\nend\n", "Syntax error on line 2: invalid \"comment\" keyword.", 2},
      {"filetype c\n string Green\nend\n", "Syntax error on line 2: invalid \"string\" keyword.", 2},
      {"filetype c\n string Green perl\nend\n", "Syntax error on line 2: invalid \"string\" keyword.", 2},
      {"filetype c\n keyword Green\nend\n", "Syntax error on line 2: missing \"keyword\" arguments.", 2},
      {"filetype c\n match\nend\n", "Syntax error on line 2: missing \"match\" arguments.", 2},
      {"filetype c\n match Red Nocolour\nend\n", "Syntax error on line 2: invalid color.", 2},
      {"filetype c\n cpp\nend\n", "Syntax error on line 2: missing \"cpp\" arguments.", 2},
      {"filetype c\n case\nend\n", "Syntax error on line 2: missing \"case\" argument.", 2},
      {"filetype c\n case sometimes\nend\n", "Syntax error on line 2: invalid \"case\" keyword.", 2},
      {"filetype c\n variable\nend\n", "Syntax error on line 2: missing \"variable\" argument.", 2},
      {"filetype c\n variable global\nend\n", "Syntax error on line 2: invalid variable.", 2},
      {"filetype c\n colour Red\nend\n", "Syntax error on line 2: unknown keyword \"colour\".", 2},
      {"\nfiletype c\n comment Green c\n", "Syntax error on line 2: missing \"end\".", 2},
  };
  for (auto &r : rows) {
    ASSERT_EQ(parse(good).rc, 0);
    loaded l = parse(r.text);
    EXPECT_EQ(l.rc, 1) << r.text;
    EXPECT_EQ(l.err, r.err) << r.text;
    EXPECT_EQ(l.line, r.line) << r.text;
    EXPECT_TRUE(syn_table.empty()) << "no old rule stays: " << r.text;
  }
}

TEST(SynLoad, EmptyFileAndUnreadableFile) {
  ASSERT_EQ(parse(good).rc, 0);
  EXPECT_EQ(parse("").rc, 0);
  EXPECT_TRUE(syn_table.empty());
  EXPECT_EQ(parse("* only comments\n\n# here\n").rc, 0);
  std::string err;
  int line = -1;
  EXPECT_EQ(syn_load("/nonexistent/rules", err, line), 1);
  EXPECT_EQ(err, "Unable to open file \"/nonexistent/rules\" (No such file or directory)");
  EXPECT_EQ(line, 0);
  EXPECT_EQ(syn_load("/", err, line), 1) << "a folder cannot be read";
}

TEST(SynChoose, FirstFittingBlockWins) {
  ASSERT_EQ(parse("firstline perl\n case respect\nend\n"
                  "filetype txt\n case respect\nend\n"
                  "filetype TXT pl\n case respect\nend\n"
                  "apl\nend\n").rc, 0);
  EXPECT_EQ(syn_choose("/d/a.txt", "", false, false), 1);
  EXPECT_EQ(syn_choose("/d/a.TXT", "", false, false), 2);
  EXPECT_EQ(syn_choose("/d/a.TXT", "", false, true), 1) << "names compared ignoring case";
  EXPECT_EQ(syn_choose("/d/a.pl", "#!/usr/bin/perl -w", false, false), 0) << "the earlier block wins";
  EXPECT_EQ(syn_choose("/d/a.pl", "#!/usr/bin/perlx", false, false), 3) << "a whole word only";
  EXPECT_EQ(syn_choose("/d.txt/a", "", false, false), -1) << "a / ends the search";
  EXPECT_EQ(syn_choose("/d/txt", "", false, false), -1);
  EXPECT_EQ(syn_choose("/d/a", "", true, false), 4);
  std::string far(1200, ' ');
  EXPECT_EQ(syn_choose("/d/a", far + "perl", false, false), -1) << "only the first 1000 columns";
}

}  // namespace
