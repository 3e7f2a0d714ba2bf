// The two regular-expression engines behind REGtype: LEGACY's grammar, its
// error texts and its backtracking, ECMASCRIPT's JavaScript syntax, and
// what both share (groups, context before the start, lines of any length).
#include <gtest/gtest.h>

#include "commands/xfregex.h"

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

struct opts {
    bool icase = false;
    bool utf8 = false;
    int32_t start = 0;
    bool bol = true;
    int32_t n = -1; // the text's length given to the engine, -1 for all of it
};

// "offset:matched text", "-" for no match, or "error: text".
std::string find(const xfre_engine &e, std::string_view pat, std::string_view text, opts o = {})
{
    if (const char *err = e.compile(pat, o.icase, o.utf8))
        return std::string("error: ") + err;
    e.reset(true);
    int32_t n = o.n < 0 ? int32_t(text.size()) : o.n;
    int32_t at = e.execute(text.data(), n, o.start, o.bol);
    if (at < 0)
        return "-";
    int32_t s = -1, len = -1;
    e.last_match(s, len);
    EXPECT_EQ(s, at) << pat;
    if (len < 0 || s + len > n)
        return "bad length " + std::to_string(len);
    return std::to_string(at) + ":" + std::string(text.substr(size_t(s), size_t(len)));
}

std::string legacy(std::string_view pat, std::string_view text, opts o = {})
{
    return find(xfre_legacy(), pat, text, o);
}

std::string ecma(std::string_view pat, std::string_view text, opts o = {})
{
    return find(xfre_ecma(), pat, text, o);
}

// Group i of the last match as "offset:text", or "unset".
std::string grp(const xfre_engine &e, std::string_view text, int i)
{
    int32_t s = 0, len = 0;
    if (!e.group(i, s, len))
        return "unset";
    return std::to_string(s) + ":" + std::string(text.substr(size_t(s), size_t(len)));
}

struct row {
    const char *pat;
    const char *text;
    const char *want;
};

void check_rows(const xfre_engine &e, std::initializer_list<row> rows, opts o = {})
{
    for (const row &r : rows)
        EXPECT_EQ(find(e, r.pat, r.text, o), r.want) << "pattern " << r.pat << " on " << r.text;
}

TEST(Switch, RegtypeChoosesTheEngine)
{
    EXPECT_EQ(regtype, 1);
    EXPECT_STREQ(xfre().name, "ECMASCRIPT");
    regtype = 0;
    EXPECT_STREQ(xfre().name, "LEGACY");
    EXPECT_EQ(&xfre(), &xfre_legacy());
    regtype = 1;
    EXPECT_EQ(&xfre(), &xfre_ecma());
}

// A fresh process, so that no pattern has been compiled before.
TEST(Fresh, EmptyPatternWithoutPreviousIsAnError)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            const char *e = xfre_legacy().compile("", false, false);
            std::exit(e && std::strcmp(e, "No previous RE") == 0 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_EXIT(
        {
            const char *e = xfre_ecma().compile("", false, false);
            std::exit(e && std::strcmp(e, "No previous RE") == 0 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST(Legacy, EachToken)
{
    check_rows(xfre_legacy(), {
                                  {"b", "abc", "1:b"},
                                  {"a.c", "xa-c", "1:a-c"},
                                  {"a.c", "ac", "-"},
                                  {"ab*c", "xac", "1:ac"},
                                  {"ab*c", "abbbc", "0:abbbc"},
                                  {"ab\\+c", "ac", "-"},
                                  {"ab\\+c", "abbc", "0:abbc"},
                                  {"ab\\?c", "abbc", "-"},
                                  {"ab\\?c", "xabc", "1:abc"},
                                  {"ab\\?c", "ac", "0:ac"},
                                  {"[0-9][0-9]*", "ab123c", "2:123"},
                                  {"[xyz]", "abzy", "2:z"},
                                  {"[^a-z]", "abCd", "2:C"},
                                  {"[]a]", "x]", "1:]"},
                                  {"[^]a]", "]ab", "2:b"},
                                  {"[a-]", "x-", "1:-"},
                                  {"^ab", "abab", "0:ab"},
                                  {"^ab", "xab", "-"},
                                  {"a^b", "a^b", "0:a^b"},
                                  {"b$", "bab", "2:b"},
                                  {"b$", "ba", "-"},
                                  {"a$b", "a$b", "0:a$b"},
                                  {"$", "abc", "3:"},
                                  {"\\*", "a*b", "1:*"},
                                  {"\\.", "a.b", "1:."},
                                  {"a\\x", "ax", "0:ax"},
                                  {"\\$", "a$", "1:$"},
                                  {"\\[a", "[a", "0:[a"},
                                  {"a\\", "a\\", "0:a\\"},
                                  {"\\<ab", "cab ab", "4:ab"},
                                  {"ab\\>", "abc ab", "4:ab"},
                                  {"\\<ab\\>", "ab", "0:ab"},
                              });
}

TEST(Legacy, WordCharacters)
{
    // Letters, digits, `_` and every byte from 128 up continue a word.
    check_rows(xfre_legacy(), {
                                  {"\\<x", "_x x", "3:x"},
                                  {"\\<x", "9x x", "3:x"},
                                  {"\\<x", "\xC3x x", "3:x"},
                                  {"x\\>", "x\xA9 x", "3:x"},
                                  {"\\<x", "-x", "1:x"},
                              });
}

TEST(Legacy, ErrorTexts)
{
    std::string classes, groups;
    for (int i = 0; i < 11; i++)
        classes += "[a]";
    for (int i = 0; i < 10; i++)
        groups += "\\(a\\)";
    const std::pair<std::string, const char *> cases[] = {
        {"*a", "* or \\+ or \\? follows nothing"},
        {"^*a", "* or \\+ or \\? follows nothing"},
        {"\\(\\+a\\)", "* or \\+ or \\? follows nothing"},
        {"\\(a\\)*", "* or \\+ or \\? can only follow a normal character or . or []"},
        {"\\<\\?", "* or \\+ or \\? can only follow a normal character or . or []"},
        {"a**", "* or \\+ or \\? doubled up"},
        {"a*\\+", "* or \\+ or \\? doubled up"},
        {"\\(a", "Not enough \\)s"},
        {"\\(\\(a\\)", "Not enough \\)s"},
        {"[z-a]", "Backwards span in []"},
        {"[abc", "] missing"},
        {"[]", "] missing"},
        {"[^]", "] missing"},
        {groups, "Too many \\(s"},
        {"a\\)", "Mismatched \\)"},
        {classes, "Too many []s"},
        {std::string(400000, 'a'), "Not enough memory for this RE"},
    };
    for (const auto &[pat, want] : cases)
        EXPECT_EQ(legacy(pat, "a"), std::string("error: ") + want) << pat.substr(0, 40);
    // Just inside the limits.
    EXPECT_EQ(legacy(groups.substr(5), "aaaaaaaaa"), "0:aaaaaaaaa");
    EXPECT_EQ(legacy(classes.substr(3), "aaaaaaaaaa"), "0:aaaaaaaaaa");
}

TEST(Legacy, RepeatsAreGreedyAndGiveBack)
{
    check_rows(xfre_legacy(), {
                                  {"a*ab", "aaab", "0:aaab"},
                                  {"x.*y", "xayby", "0:xayby"},
                                  {"a.*b.*c", "abcbc", "0:abcbc"},
                                  {"[ab]*b", "abab", "0:abab"},
                                  {"a\\+a", "aaa", "0:aaa"},
                                  {"a\\+a", "a", "-"},
                                  {"x\\?x", "x", "0:x"},
                                  {".*.*z", "abz", "0:abz"},
                              });
}

TEST(Legacy, Groups)
{
    const auto &e = xfre_legacy();
    std::string text = "xaabbc";
    ASSERT_EQ(legacy("\\(a*\\)\\(b\\+\\)c", text), "1:aabbc");
    EXPECT_EQ(grp(e, text, 0), "1:aabbc");
    EXPECT_EQ(grp(e, text, 1), "1:aa");
    EXPECT_EQ(grp(e, text, 2), "3:bb");
    EXPECT_EQ(grp(e, text, 3), "unset");

    // Nested, and a group whose repeat gave back.
    text = "abab";
    ASSERT_EQ(legacy("\\(a\\(b\\)\\)\\(.*\\)b", text), "0:abab");
    EXPECT_EQ(grp(e, text, 1), "0:ab");
    EXPECT_EQ(grp(e, text, 2), "1:b");
    EXPECT_EQ(grp(e, text, 3), "2:a");

    // Groups are kept only when the run asked for them.
    e.reset(false);
    ASSERT_EQ(e.execute(text.data(), 4, 0, true), 0);
    EXPECT_EQ(grp(e, text, 1), "unset");
}

TEST(Legacy, AnchorsAndLineStart)
{
    check_rows(xfre_legacy(), {{"^ab", "ab", "-"}, {"ab", "ab", "0:ab"}, {"\\<b", "ab b", "3:b"}},
               {.bol = false});
    // Anchored: the line's start only, never a later column of it.
    EXPECT_EQ(legacy("^ab", "abab", {.start = 2}), "-");
    // The text ends at n: `$` matches there, bytes behind it are not seen.
    EXPECT_EQ(legacy("b$", "abc", {.n = 2}), "1:b");
    EXPECT_EQ(legacy("c", "abc", {.n = 2}), "-");
    // Before the start is context for the word edges only.
    EXPECT_EQ(legacy("\\<ab", "xab ab", {.start = 1}), "4:ab");
    EXPECT_EQ(legacy("b", "abab", {.start = 2}), "3:b");
}

TEST(Legacy, IgnoreCase)
{
    check_rows(xfre_legacy(),
               {
                   {"AbC", "xaBc", "1:aBc"},
                   {"[A-C]\\+", "xaBc", "1:aBc"},
                   {"[^a]", "Ab", "1:b"},
                   {"Q", "xxQ", "2:Q"},
                   {"x*Y", "XXy", "0:XXy"},
               },
               {.icase = true});
    EXPECT_EQ(legacy("AbC", "xaBc"), "-");
    EXPECT_EQ(legacy("[A-C]\\+", "xaBc"), "2:B");
}

TEST(Legacy, SearchSkipsAndGivesUp)
{
    check_rows(xfre_legacy(), {
                                  // The first byte occurs early and often before the match.
                                  {"abc", "ab ab abc", "6:abc"},
                                  {"ab", "aaaxab", "4:ab"},
                                  {"\\(ab\\)", "a ab", "2:ab"},
                                  // Fewer bytes left than any match needs.
                                  {"a..", "xxxa", "-"},
                                  {"a..", "xxa..", "2:a.."},
                                  {"ab", "xab", "1:ab"},
                                  {"x*", "", "0:"},
                                  {"a*b", "ccb", "2:b"},
                              });
    EXPECT_EQ(legacy("Ab", "a aB", {.icase = true}), "2:aB");
}

TEST(Legacy, EmptyPatternReusesThePrevious)
{
    ASSERT_EQ(legacy("b\\+", "abbc"), "1:bb");
    EXPECT_EQ(legacy("", "xxbc"), "2:b");
    // A pattern that fails to compile leaves the last good one in place.
    EXPECT_EQ(legacy("[", "x"), "error: ] missing");
    EXPECT_EQ(legacy("", "cb"), "1:b");
}

TEST(Legacy, Utf8CharactersAreUnits)
{
    const opts u{.utf8 = true};
    check_rows(xfre_legacy(),
               {
                   {"^.$", "\xC3\xA9", "0:\xC3\xA9"},
                   {"a.b", "a\xC3\xA9" "b", "0:a\xC3\xA9" "b"},
                   {"[^x]", "\xE2\x82\xAC", "0:\xE2\x82\xAC"},
                   {"\xC3\xA9\\+", "x\xC3\xA9\xC3\xA9y", "1:\xC3\xA9\xC3\xA9"},
                   // A give-back steps over whole characters.
                   {".*\xA9", "\xC3\xA9", "-"},
                   {".*.$", "\xC3\xA9\xC3\xA9", "0:\xC3\xA9\xC3\xA9"},
                   {"x.*y", "x\xC3\xA9y\xC3\xA9", "0:x\xC3\xA9y"},
                   // A search never starts inside a character.
                   {".\xA9", "\xC3\xA9", "-"},
                   // A stray continuation byte is a character of its own.
                   {".*\xA9", "\xC3\xA9\xA9", "0:\xC3\xA9\xA9"},
                   {"[^a]*b", "\xA9\xF0\x9F\x98\x80" "b", "0:\xA9\xF0\x9F\x98\x80" "b"},
               },
               u);
    // The same as bytes.
    EXPECT_EQ(legacy("^.$", "\xC3\xA9"), "-");
    EXPECT_EQ(legacy(".\xA9", "\xC3\xA9"), "0:\xC3\xA9");
}

TEST(BothEngines, LongLine)
{
    // Ten megabytes in one line: matching must not grow the machine stack.
    std::string line(10 << 20, 'a');
    line += 'x';
    const std::string whole = "0:" + line;
    for (const xfre_engine *e : {&xfre_legacy(), &xfre_ecma()}) {
        for (bool u : {false, true}) {
            EXPECT_EQ(find(*e, ".*x", line, {.utf8 = u}), whole) << e->name;
            EXPECT_EQ(find(*e, ".*y", line, {.utf8 = u}), "-") << e->name;
            // Every byte is tried as the end of .*, from one start only: a
            // start that fails means every later one fails too.
            EXPECT_EQ(find(*e, ".*[y]x", line, {.utf8 = u}), "-") << e->name;
        }
        EXPECT_EQ(find(*e, "a*x", line), whole) << e->name;
        EXPECT_EQ(find(*e, "[a]*x", line), whole) << e->name;
    }
}

TEST(Ecma, JavaScriptSyntax)
{
    check_rows(xfre_ecma(), {
                                {"\\d+", "ab123c", "2:123"},
                                {"foo(?=bar)", "foobaz foobar", "7:foo"},
                                {"(?<!x)a", "xa ya", "4:a"},
                                {"\\u0041", "zA", "1:A"},
                                {"(a)?b\\1", "xb", "1:b"},
                                {"[^]", "\x01", "0:\x01"},
                                {"a[]", "a", "-"},
                                {"a|b", "cb", "1:b"},
                                {"b$", "ab", "1:b"},
                            });
}

TEST(Ecma, IgnoreCase)
{
    EXPECT_EQ(ecma("abc", "xABC", {.icase = true}), "1:ABC");
    EXPECT_EQ(ecma("abc", "xABC"), "-");
    EXPECT_EQ(ecma("\xC3\xA9", "\xC3\x89", {.icase = true, .utf8 = true}), "0:\xC3\x89");
}

TEST(Ecma, LineStartAndContext)
{
    EXPECT_EQ(ecma("^ab", "ab"), "0:ab");
    EXPECT_EQ(ecma("^ab", "ab", {.bol = false}), "-");
    EXPECT_EQ(ecma("ab", "ab", {.bol = false}), "0:ab");
    EXPECT_EQ(ecma("(?<=x)a", "xa", {.start = 1}), "1:a");
    EXPECT_EQ(ecma("(?<=x)a", "xa ya", {.start = 2}), "-");
    EXPECT_EQ(ecma("\\bb", "ab b", {.start = 1}), "3:b");
    EXPECT_EQ(ecma("b$", "abc", {.n = 2}), "1:b");
}

TEST(Ecma, BadPatternGivesItsMessage)
{
    EXPECT_EQ(ecma("a(b", "ab"), "error: missing closing parenthesis at offset 3");
    EXPECT_EQ(ecma("a[", "a"), "error: missing terminating ] for character class at offset 2");
    // The last good pattern stays for an empty one.
    ASSERT_EQ(ecma("b+", "abbc"), "1:bb");
    EXPECT_EQ(ecma("*", "x").rfind("error: ", 0), 0u);
    EXPECT_EQ(ecma("", "cb"), "1:b");
}

TEST(Ecma, Utf8)
{
    EXPECT_EQ(ecma("^.$", "\xC3\xA9", {.utf8 = true}), "0:\xC3\xA9");
    EXPECT_EQ(ecma("^.$", "\xC3\xA9"), "-");
    // Invalid UTF-8 in the text is searched past, not refused.
    EXPECT_EQ(ecma("b", "a\xFF" "b", {.utf8 = true}), "2:b");
}

TEST(Ecma, Groups)
{
    const auto &e = xfre_ecma();
    std::string text = "a12-34";
    ASSERT_EQ(ecma("(\\d+)-(x)?(\\d+)", text), "1:12-34");
    EXPECT_EQ(grp(e, text, 0), "1:12-34");
    EXPECT_EQ(grp(e, text, 1), "1:12");
    EXPECT_EQ(grp(e, text, 2), "unset");
    EXPECT_EQ(grp(e, text, 3), "4:34");
    EXPECT_EQ(grp(e, text, 4), "unset");
    // A later search that fails leaves the last match's groups.
    EXPECT_EQ(e.execute(text.data(), int32_t(text.size()), 5, true), -1);
    EXPECT_EQ(grp(e, text, 3), "4:34");

    e.reset(false);
    ASSERT_EQ(e.execute(text.data(), int32_t(text.size()), 0, true), 1);
    EXPECT_EQ(grp(e, text, 1), "unset");
}

} // namespace
