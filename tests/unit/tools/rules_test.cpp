// Compile rules, shell-window names and filters, with no screen: the rule
// file's errors and their misspelt text, chains of patterns, offsets and
// file names, the shipped rules against real compiler lines, the names of
// output files, and filters that fail, hang or pass a lot of text.
#include <gtest/gtest.h>

#include "tools/tools.h"

#include <cstdio>
#include <fstream>
#include <string>
#include <unistd.h>

namespace {

std::string write_rules(const std::string &text)
{
    char tmpl[] = "/tmp/rules_test.XXXXXX";
    int fd = mkstemp(tmpl);
    EXPECT_GE(fd, 0);
    EXPECT_EQ(write(fd, text.data(), text.size()), (ssize_t)text.size());
    close(fd);
    return tmpl;
}

struct read_result {
    int rc;
    std::string err, detail;
    std::vector<tl_rule> rules;
};

read_result read(const std::string &text, std::vector<tl_rule> before = {})
{
    std::string path = write_rules(text);
    read_result r;
    r.rules = std::move(before);
    r.rc = tl_rules_read(path, r.rules, r.err, r.detail);
    // The message names the file; the tests compare the rest.
    size_t at = r.err.find(path);
    if (at != std::string::npos)
        r.err.replace(at, path.size(), "F");
    unlink(path.c_str());
    return r;
}

TEST(Rules, FileFormat)
{
    read_result r = read("# comment\n* comment too\n\t \n"
                         "c: 2 NoSource\n ^a\n\tb\n"
                         "py:\n"
                         ":3\n x\n");
    ASSERT_EQ(r.rc, 0);
    ASSERT_EQ(r.rules.size(), 3u);
    EXPECT_EQ(r.rules[0].type, "c");
    EXPECT_EQ(r.rules[0].offset, 2);
    EXPECT_TRUE(r.rules[0].nosource);
    EXPECT_EQ(r.rules[0].pats, (std::vector<std::string>{"^a", "b"}));
    EXPECT_EQ(r.rules[1].type, "py"); // nothing behind the colon: offset 1, no patterns
    EXPECT_EQ(r.rules[1].offset, 1);
    EXPECT_TRUE(r.rules[1].pats.empty());
    EXPECT_EQ(r.rules[2].type, "");
    EXPECT_EQ(r.rules[2].offset, 3);
}

TEST(Rules, BadLinesAndWhatIsKept)
{
    std::vector<tl_rule> old(1);
    old[0].type = "old";
    read_result r = read("c: 1\n x\nno colon here\n", old);
    EXPECT_EQ(r.rc, 2);
    EXPECT_EQ(r.err, "file F: invalid filetype on line 3");
    ASSERT_EQ(r.rules.size(), 1u); // a bad head keeps the table as it was
    EXPECT_EQ(r.rules[0].type, "old");

    EXPECT_EQ(read("c: one\n").err, "file F: invalid numerical ofset on line 1");
    EXPECT_EQ(read("\n\nc: 1 nosourcex\n").err, "file F: invalid rule on line 3");
    EXPECT_EQ(read("c: 1 nosource extra\n").err, "file F: invalid rule on line 1");
    EXPECT_EQ(read(" pattern before any head\n").err, "file F: invalid filetype on line 1");

    r = read("c: 1\n ok\n a\\(b\n", old);
    EXPECT_EQ(r.rc, 2);
    EXPECT_EQ(r.err, "file F: syntax error on rule line 3");
    EXPECT_FALSE(r.detail.empty());
    EXPECT_TRUE(r.rules.empty()); // a bad pattern empties it

    std::vector<tl_rule> keep = old;
    std::string e, d;
    EXPECT_EQ(tl_rules_read("/no/such/rules", keep, e, d), 1);
    EXPECT_EQ(keep.size(), 1u);
}

TEST(Rules, ChainsOffsetsAndTypes)
{
    read_result r = read("c: 2\n at \n line\n"   // second number behind "line"
                         "c: 1\n\n"              // a rule with no patterns matches nothing
                         "h: 1\n error\n"
                         "c: 1\n warn\n"
                         "x: 0\n ERR\n");
    ASSERT_EQ(r.rc, 0);
    tl_hit hit;
    EXPECT_TRUE(tl_rules_match(r.rules, "c", "at 7 line 10 col 20", hit));
    EXPECT_EQ(hit.line, 20);
    EXPECT_EQ(hit.file, "");
    // The chain's parts must come in order: "line" before "at" is no match.
    EXPECT_FALSE(tl_rules_match(r.rules, "c", "line 10 at 7", hit));
    // Rules of another type are not tried.
    EXPECT_FALSE(tl_rules_match(r.rules, "c", "error 5", hit));
    EXPECT_TRUE(tl_rules_match(r.rules, "h", "Error 5", hit)); // case ignored
    EXPECT_EQ(hit.line, 5);
    // In file order: the second rule of type c answers when the first does not.
    EXPECT_TRUE(tl_rules_match(r.rules, "c", "warn at 9", hit));
    EXPECT_EQ(hit.line, 9);
    // Offset 0: the number before the match.
    EXPECT_TRUE(tl_rules_match(r.rules, "x", "line 12 ERR 99", hit));
    EXPECT_EQ(hit.line, 12);
    // No number where the offset points: the line is an error without one.
    EXPECT_TRUE(tl_rules_match(r.rules, "h", "error here", hit));
    EXPECT_EQ(hit.line, -1);
}

// The rule file that ships with the editor, against lines the tools write.
TEST(Rules, ShippedRulesKnowTheCompilers)
{
    std::vector<tl_rule> rules;
    std::string e, d;
    ASSERT_EQ(tl_rules_read(SHIPPED_RULES, rules, e, d), 0) << e << " " << d;
    const struct {
        const char *type, *line, *file;
        long at;
    } cases[] = {
        {"c", "main.c:12:5: error: 'x' undeclared (first use in this function)", "main.c", 12},
        {"c", "src/t2.h:3: fatal error: nothing.h: No such file or directory", "src/t2.h", 3},
        {"cpp", "a.cpp:40:1: error: expected ';' before '}' token", "a.cpp", 40},
        {"c", "Makefile:8: *** missing separator.  Stop.", "Makefile", 8},
        {"", "make: *** [Makefile:4: all] Error 1", "Makefile", 4},
        {"py", "  File \"tool.py\", line 31, in main", "tool.py", 31},
        {"sh", "build.sh: line 6: syntax error near unexpected token `fi'", "build.sh", 6},
        {"rexx", "Error 41 on line 3 in file \"/x/y.rexx\": Bad arithmetic conversion.", "/x/y.rexx", 3},
    };
    for (auto &c : cases) {
        tl_hit hit;
        ASSERT_TRUE(tl_rules_match(rules, c.type, c.line, hit)) << c.line;
        EXPECT_EQ(hit.file, c.file) << c.line;
        EXPECT_EQ(hit.line, c.at) << c.line;
    }
    const char *not_errors[] = {
        "main.c: In function 'main':",
        "main.c:12:5: warning: unused variable 'y' [-Wunused-variable]",
        "main.c:12:5: note: each undeclared identifier is reported only once",
        "gcc -c main.c",
    };
    for (const char *l : not_errors) {
        tl_hit hit;
        EXPECT_FALSE(tl_rules_match(rules, "c", l, hit)) << l;
    }
}

bool taken_two(const std::string &n) { return n == "/d/1.xshell" || n == "/d/2.xshell"; }
bool taken_none(const std::string &) { return false; }

TEST(ShellNames, ByWindowAndSource)
{
    EXPECT_EQ(tl_outname("/s/a.c", "compile", "/d", "", 10, taken_none), "/s/a.compile");
    EXPECT_EQ(tl_outname("/s/Makefile", "compile", "/d", "", 10, taken_none), "/s/Makefile.compile");
    EXPECT_EQ(tl_outname("/s.x/Makefile", "compile", "/d", "", 10, taken_none), "/s.x/Makefile.compile");
    EXPECT_EQ(tl_outname("/s/a.c", "@messages", "/d", "", 10, taken_none), "/s/a.@messages");
    EXPECT_EQ(tl_outname("/s/a.c", "history", "/d", "", 10, taken_none), "/s/a.c.history");
    EXPECT_EQ(tl_outname("", "", "/d", "", 10, taken_none), "/d/no_file.xshell");
    EXPECT_EQ(tl_outname("/s/a.c", "", "/d", "", 10, taken_none), "/s/a.c");
    // MESsagesdir takes the names by their last part.
    EXPECT_EQ(tl_outname("/s/a.c", "compile", "/d", "/m", 10, taken_none), "/m/a.compile");
}

TEST(ShellNames, NumberedFilesCycle)
{
    EXPECT_EQ(tl_outname("/s/a.c", "xshell", "/d", "", 10, taken_none), "/d/1.xshell");
    EXPECT_EQ(tl_outname("/s/a.c", "xshell", "/d/", "", 10, taken_two), "/d/3.xshell");
    EXPECT_EQ(tl_outname("/s/a.c", "xshell", "/d", "/m/", 10, taken_none), "/m/1.xshell");
    // All taken: the numbers go round, 1 then 2 then 1 again.
    std::string a = tl_outname("", "xshell", "/d", "", 2, taken_two);
    std::string b = tl_outname("", "xshell", "/d", "", 2, taken_two);
    std::string c = tl_outname("", "xshell", "/d", "", 2, taken_two);
    EXPECT_NE(a, b);
    EXPECT_EQ(a, c);
    // With one file allowed, the same name every time.
    EXPECT_EQ(tl_outname("", "xshell", "/d", "", 1, taken_two), "/d/1.xshell");
    EXPECT_EQ(tl_outname("", "xshell", "/d", "", 1, taken_two), "/d/1.xshell");
}

TEST(Filter, OutputFailureAndTimeOut)
{
    std::vector<std::string> out;
    EXPECT_EQ(tl_filter("sort", {"pear", "apple", "fig"}, 0, out), TL_FILTER_OK);
    EXPECT_EQ(out, (std::vector<std::string>{"apple", "fig", "pear"}));
    // A last line without a line end is kept; an empty input is fine.
    EXPECT_EQ(tl_filter("printf 'a\\nb'", {}, 0, out), TL_FILTER_OK);
    EXPECT_EQ(out, (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(tl_filter("cat >/dev/null; exit 2", {"x"}, 0, out), TL_FILTER_FAILED);
    EXPECT_EQ(tl_filter("no-such-command-xyz", {"x"}, 0, out), TL_FILTER_FAILED);
    EXPECT_EQ(tl_filter("kill -TERM $$", {"x"}, 0, out), TL_FILTER_FAILED);
    // A child that never ends, and one that does not read its input at all.
    EXPECT_EQ(tl_filter("sleep 30", {"x"}, 300, out), TL_FILTER_TIMEOUT);
    std::vector<std::string> big(100000, std::string(60, 'q'));
    EXPECT_EQ(tl_filter("sleep 30", big, 300, out), TL_FILTER_TIMEOUT);
}

TEST(Filter, LargeTextBothWays)
{
    std::vector<std::string> in;
    for (int i = 0; i < 100000; i++)
        in.push_back(std::to_string(99999 - i));
    std::vector<std::string> out;
    ASSERT_EQ(tl_filter("sort -n", in, 0, out), TL_FILTER_OK);
    ASSERT_EQ(out.size(), in.size());
    EXPECT_EQ(out.front(), "0");
    EXPECT_EQ(out.back(), "99999");
}

} // namespace
