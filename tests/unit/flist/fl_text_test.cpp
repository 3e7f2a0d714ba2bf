// The pure parts of the file list: file modes, patterns, the substitution
// of /d /n /t, the argument words, and names made safe for the screen.
#include <gtest/gtest.h>

#include "flist/flist.h"

TEST(FlModes, LettersRunFirstLetterFastest)
{
    EXPECT_EQ(fl_mode_letters(0), "a ");
    EXPECT_EQ(fl_mode_letters(25), "z ");
    EXPECT_EQ(fl_mode_letters(26), "aa");
    EXPECT_EQ(fl_mode_letters(27), "ba");
    EXPECT_EQ(fl_mode_letters(52), "ab");
    EXPECT_EQ(fl_mode_letters(701), "zz");
    EXPECT_EQ(fl_mode_letters(702), "??");
    EXPECT_EQ(fl_mode_letters(-1), "??");
    for (int i = 0; i <= 701; i++)
        ASSERT_EQ(fl_mode_index(fl_mode_letters(i)), i) << i;
    EXPECT_EQ(fl_mode_index("B"), 1);
    EXPECT_EQ(fl_mode_index("1x"), -1);
    EXPECT_EQ(fl_mode_index("abc"), -1);
    EXPECT_EQ(fl_mode_index(""), -1);
}

TEST(FlPatterns, StemAndExtension)
{
    EXPECT_TRUE(fl_accept("*", "*", "anything.at.all"));
    // `* .` takes names without an extension only.
    EXPECT_TRUE(fl_accept("*", ".", "Makefile"));
    EXPECT_FALSE(fl_accept("*", ".", "main.c"));
    // A name pattern `.` takes an empty stem only.
    EXPECT_TRUE(fl_accept(".", "*", ".profile"));
    EXPECT_FALSE(fl_accept(".", "*", "a.profile"));
    EXPECT_TRUE(fl_accept("ma*", "c", "main.c"));
    EXPECT_TRUE(fl_accept("*", ".c", "main.c"));
    EXPECT_FALSE(fl_accept("ma*", "c", "main.cpp"));
    EXPECT_FALSE(fl_accept("*", "c", "c")); // no extension: only `.` and `*`
    EXPECT_TRUE(fl_accept("a?c", "*", "abc.d"));
    EXPECT_FALSE(fl_accept("A*", "*", "abc")); // names compare exactly
    // The last dot splits: the stem keeps the others.
    EXPECT_TRUE(fl_accept("a.b", "gz", "a.b.gz"));
}

TEST(FlPatterns, WildcardsBacktrackWithoutBlowingUp)
{
    EXPECT_TRUE(fl_wild("*a*b*c", "xxaxxbxxc"));
    EXPECT_FALSE(fl_wild("*a*b*c", "xxaxxbxx"));
    EXPECT_TRUE(fl_wild("**", ""));
    EXPECT_FALSE(fl_wild("?", ""));
    std::string longname(5000, 'a');
    EXPECT_FALSE(fl_wild("*a*a*a*a*a*a*b", longname));
}

TEST(FlSubst, FormsStandAloneOnly)
{
    const std::string p = "/home/u/src/main.c";
    EXPECT_EQ(fl_subst("cp /n bak", p), "cp \"main\" bak");
    EXPECT_EQ(fl_subst("f * /t /d", p), "f * \"c\" \"/home/u/src\"");
    EXPECT_EQ(fl_subst("x/d", p), "x/d");        // inside a word
    EXPECT_EQ(fl_subst("a/b /x /", p), "a/b /x /"); // not a form, and the lone slash waits
    EXPECT_EQ(fl_subst("/nn", p), "/nn");
    EXPECT_EQ(fl_subst("echo\t/n\t", p), "echo\t\"main\"\t");
    EXPECT_EQ(fl_subst("/n", "/home/u/.profile"), ".");
    EXPECT_EQ(fl_subst("/t", "/home/u/a."), "\"\"");
    EXPECT_EQ(fl_subst("/t", "/home/u/README"), ".");
    EXPECT_EQ(fl_subst("/d", "/top"), "\"/\"");
    EXPECT_EQ(fl_subst("/n", "/d/say \"hi\".txt"), "\"say \\\"hi\\\"\"");
}

TEST(FlWords, QuotesHoldBlanks)
{
    auto w = fl_words("  f \"a b\" \"say \\\"x\\\"\"  * ");
    ASSERT_EQ(w.size(), 4u);
    EXPECT_EQ(w[0], "f");
    EXPECT_EQ(w[1], "a b");
    EXPECT_EQ(w[2], "say \"x\"");
    EXPECT_EQ(w[3], "*");
    // What the substitution writes the words give back whole.
    auto back = fl_words(fl_subst("cp /n", "/d/it's \"q\" a.txt"));
    ASSERT_EQ(back.size(), 2u);
    EXPECT_EQ(back[1], "it's \"q\" a");
}

TEST(FlText, NamesNeverBreakThePage)
{
    EXPECT_EQ(fl_shown("plain name.txt"), "plain name.txt");
    EXPECT_EQ(fl_shown("two\nlines"), "two\\nlines");
    EXPECT_EQ(fl_shown("tab\there"), "tab\\there");
    EXPECT_EQ(fl_shown(std::string("bad\xff\xfe", 5)), "bad\\xff\\xfe");
    EXPECT_EQ(fl_shown(std::string("nul\x01", 4)), "nul\\x01");
    EXPECT_EQ(fl_shown("caf\xc3\xa9"), "caf\xc3\xa9"); // UTF-8 stays
    EXPECT_EQ(fl_cells("caf\xc3\xa9"), 4u);
    EXPECT_EQ(fl_shown("back\\slash"), "back\\\\slash");
}

TEST(FlText, SizesAndPaths)
{
    EXPECT_EQ(fl_thousands(0), "0");
    EXPECT_EQ(fl_thousands(999), "999");
    EXPECT_EQ(fl_thousands(1000), "1,000");
    EXPECT_EQ(fl_thousands(1234567), "1,234,567");
    EXPECT_EQ(fl_dirname("/a/b/c"), "/a/b");
    EXPECT_EQ(fl_dirname("/c"), "/");
    EXPECT_EQ(fl_basename("/a/b/c.d"), "c.d");
    std::string_view s, e;
    fl_split("a.", s, e);
    EXPECT_EQ(s, "a");
    EXPECT_EQ(e, ".");
    fl_split(".profile", s, e);
    EXPECT_EQ(s, "");
    EXPECT_EQ(e, ".profile");
}
