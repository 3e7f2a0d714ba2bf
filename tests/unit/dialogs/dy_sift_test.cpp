// A list's lines sifted by a pattern: wildcard and expression alternatives,
// a pattern that does not compile, the first line kept first, and the sort
// by bytes.
#include "fields/dialogs/dialogs.h"

#include <gtest/gtest.h>

namespace {

using lines = std::vector<std::string>;

const lines fruit = {"pear", "apple", "fig", "plum", "banana", "Apricot"};

TEST(Sift, AlternativesOfWildcardsAndExpressions) {
  // Each alternative keeps its own lines; a line kept by two comes once.
  EXPECT_EQ(dy_sift(fruit, "p*;*an*;pl??", false, true), (lines{"banana", "pear", "plum"}));
  // A wildcard is for the whole line: "p" alone keeps nothing.
  EXPECT_EQ(dy_sift(fruit, "p", false, true), lines{});
  // An expression is found anywhere in the line, and is extended.
  EXPECT_EQ(dy_sift(fruit, "r/^[aA]p+", false, true), (lines{"Apricot", "apple"}));
  EXPECT_EQ(dy_sift(fruit, "r/(an){2};fig", false, true), (lines{"banana", "fig"}));
  // Empty alternatives are nothing; "*" keeps everything.
  EXPECT_EQ(dy_sift(fruit, ";fig;", false, false), lines{"fig"});
  EXPECT_EQ(dy_sift(fruit, "*", false, false), fruit);
}

TEST(Sift, APatternThatDoesNotCompileKeepsEverything) {
  const lines sorted = {"Apricot", "apple", "banana", "fig", "pear", "plum"};
  EXPECT_EQ(dy_sift(fruit, "fig;r/(unclosed", false, true), sorted);
  EXPECT_EQ(dy_sift(fruit, "r/[z-a]", false, true), sorted);
  EXPECT_EQ(dy_sift(fruit, "", false, true), sorted);
  EXPECT_EQ(dy_sift(fruit, ";;", false, false), fruit);
}

TEST(Sift, TheFirstLineStaysFirstWhenAsked) {
  // The first line is kept whatever the pattern and is not sorted in.
  EXPECT_EQ(dy_sift(fruit, "*a*", true, true), (lines{"pear", "apple", "banana"}));
  EXPECT_EQ(dy_sift(fruit, "zzz", true, true), lines{"pear"});
  EXPECT_EQ(dy_sift(fruit, "*", true, true),
            (lines{"pear", "Apricot", "apple", "banana", "fig", "plum"}));
  EXPECT_EQ(dy_sift({}, "*", true, true), lines{});
  // Without the sort the kept lines stay in their order.
  EXPECT_EQ(dy_sift(fruit, "*a*", false, false), (lines{"pear", "apple", "banana"}));
}

TEST(Sift, TheSortIsByBytes) {
  // Upper case before lower, and bytes above 127 after both.
  const lines mixed = {"\xc3\xa9t\xc3\xa9", "zebra", "Zulu", "10", "9"};
  EXPECT_EQ(dy_sift(mixed, "*", false, true),
            (lines{"10", "9", "Zulu", "zebra", "\xc3\xa9t\xc3\xa9"}));
}

}  // namespace
