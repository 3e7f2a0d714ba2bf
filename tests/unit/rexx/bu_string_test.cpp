// Built-ins of the string and word families, called through the table as
// the interpreter calls them, errors included.
#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "rexx/builtins/builtins.h"

namespace {

constexpr const char* OMIT = nullptr;

// The result text, or "E<number>@<blamed argument>: <message>".
std::string call(const char* name, std::initializer_list<const char*> args) {
  const bu_row* row = bu_lookup(name, BU_CASE_LOWER);
  if (!row) return "no such built-in";
  std::vector<value> vals;
  vals.reserve(args.size());
  std::vector<value*> ptrs;
  for (const char* a : args) {
    if (a) {
      vals.emplace_back(a, strlen(a));
      ptrs.push_back(&vals.back());
    } else {
      ptrs.push_back(nullptr);
    }
  }
  value r;
  int bad = -1;
  int rc = bu_call(row, ptrs.data(), (int)ptrs.size(), r, &bad);
  if (rc > 0) return "E" + std::to_string(rc) + "@" + std::to_string(bad) + ": " + rx_err_text;
  EXPECT_EQ(rc, 0);
  return val_string(r);
}

TEST(BuLeft, AsDescribed) {
  EXPECT_EQ(call("left", {"abc", "5"}), "abc  ");
  EXPECT_EQ(call("left", {"abc", "5", "*"}), "abc**");
  EXPECT_EQ(call("left", {"abcdef", "2"}), "ab");
  EXPECT_EQ(call("left", {"abc", "0"}), "");
  EXPECT_EQ(call("left", {"abc", "2.0000000001"}), "ab");  // rounded to 9 digits
  EXPECT_EQ(call("left", {"abc", "5", "xy"}), "E40@2: LEFT(): the padding expression must be one character wide.");
  EXPECT_EQ(call("left", {"abc"}), "E40@0: LEFT(): must receive 2 or 3 arguments.");
  EXPECT_EQ(call("left", {"abc", OMIT}), "E40@0: LEFT(): must receive 2 or 3 arguments.");
  EXPECT_EQ(call("left", {"a", "1", "x", "y"}), "E40@0: LEFT(): must receive 2 or 3 arguments.");
  EXPECT_EQ(call("left", {"abc", "x"}), "E40@1: LEFT(): argument 2 must be a whole number.");
  EXPECT_EQ(call("left", {"abc", "-1"}), "E40@1: LEFT(): argument 2 must be a positive integer.");
  EXPECT_EQ(call("left", {"abc", "1.5"}), "E40@1: LEFT(): argument 2 must be a positive integer.");
}

TEST(BuPadding, RightCenterCopies) {
  EXPECT_EQ(call("right", {"abc", "5", "*"}), "**abc");
  EXPECT_EQ(call("right", {"abcdef", "2"}), "ef");
  EXPECT_EQ(call("center", {"abc", "6"}), " abc  ");
  EXPECT_EQ(call("centre", {"ab", "5", "*"}), "*ab**");
  EXPECT_EQ(call("center", {"abcde", "3"}), "bcd");
  EXPECT_EQ(call("center", {"abcd", "2"}), "bc");
  EXPECT_EQ(call("copies", {"ab", "3"}), "ababab");
  EXPECT_EQ(call("copies", {"ab", "0"}), "");
  EXPECT_EQ(call("copies", {"ab"}), "E40@0: COPIES(): must receive 2 arguments.");
  EXPECT_EQ(call("justify", {"The blue sky", "14"}), "The  blue  sky");
  EXPECT_EQ(call("justify", {"The blue sky", "15", "+"}), "The+++blue++sky");
  EXPECT_EQ(call("justify", {"  a  b  ", "9", "."}), "a.......b");
  EXPECT_EQ(call("justify", {"abc def", "3"}), "abc");
  EXPECT_EQ(call("justify", {"one", "5"}), "one  ");
}

TEST(BuSubstrings, SubstrDelstrInsertOverlay) {
  EXPECT_EQ(call("substr", {"abc", "2"}), "bc");
  EXPECT_EQ(call("substr", {"abc", "5"}), "");
  EXPECT_EQ(call("substr", {"abc", "2", "4", "."}), "bc..");
  EXPECT_EQ(call("substr", {"abc", "0"}), "E40@1: SUBSTR(): argument 2 must be a positive integer.");
  EXPECT_EQ(call("substr", {"abc"}), "E40@0: SUBSTR(): must receive 2 to 4 arguments.");
  EXPECT_EQ(call("delstr", {"abcdef", "3", "2"}), "abef");
  EXPECT_EQ(call("delstr", {"abcdef", "3"}), "ab");
  EXPECT_EQ(call("delstr", {"abc", "5"}), "abc");
  EXPECT_EQ(call("insert", {"ab", "123", "1"}), "1ab23");
  EXPECT_EQ(call("insert", {"ab", "", "2"}), "  ab");
  EXPECT_EQ(call("insert", {"ab", "123", "5", "3", "."}), "123..ab.");
  EXPECT_EQ(call("insert", {"ab", "123"}), "ab123");
  EXPECT_EQ(call("overlay", {"ab", "12345", "4"}), "123ab");
  EXPECT_EQ(call("overlay", {"ab", "123", "5", "3", "."}), "123.ab.");
  EXPECT_EQ(call("overlay", {"ab", "1", "3"}), "1 ab");
  EXPECT_EQ(call("overlay", {"ab", "12345"}), "ab345");
}

TEST(BuSearch, PosIndexLastposVerifyCompare) {
  EXPECT_EQ(call("pos", {"a", "banana", "3"}), "4");
  EXPECT_EQ(call("pos", {"x", "banana"}), "0");
  EXPECT_EQ(call("pos", {"", "abc"}), "0");
  EXPECT_EQ(call("index", {"hello", "l", "4"}), "4");
  EXPECT_EQ(call("index", {"hello", "L"}), "0");
  EXPECT_EQ(call("index", {"hello", "L", OMIT, "1"}), "3");
  EXPECT_EQ(call("index", {"hello", "l", "0"}), "E40@2: INDEX(): argument 3 must be a positive integer.");
  EXPECT_EQ(call("index", {"hello", "l", "1", "2"}), "E40@3: INDEX(): argument 4 must be 0 or 1.");
  EXPECT_EQ(call("lastpos", {"a", "banana"}), "6");
  EXPECT_EQ(call("lastpos", {"an", "banana", "3"}), "2");
  EXPECT_EQ(call("lastpos", {"", "abc"}), "0");
  EXPECT_EQ(call("lastpos", {"abcd", "abc"}), "0");
  EXPECT_EQ(call("verify", {"123", "0123456789"}), "0");
  EXPECT_EQ(call("verify", {"12a3", "0123456789"}), "3");
  EXPECT_EQ(call("verify", {"abc", "ab", "M"}), "1");
  EXPECT_EQ(call("verify", {"abc", "cb", "N", "2"}), "0");
  EXPECT_EQ(call("verify", {"abc", ""}), "1");
  EXPECT_EQ(call("verify", {"", "a"}), "0");
  EXPECT_EQ(call("verify", {"abc", "a", "Q"}).substr(0, 6), "E40@2:");
  EXPECT_EQ(call("compare", {"abc", "abd"}), "3");
  EXPECT_EQ(call("compare", {"ab ", "ab"}), "0");
  EXPECT_EQ(call("compare", {"ab*", "ab", "*"}), "0");
  EXPECT_EQ(call("compare", {"a", ""}), "1");
  EXPECT_EQ(call("abbrev", {"print", "pri"}), "1");
  EXPECT_EQ(call("abbrev", {"print", "pre"}), "0");
  EXPECT_EQ(call("abbrev", {"print", "", "0"}), "1");
  EXPECT_EQ(call("abbrev", {"print", "p", "2"}), "0");
}

TEST(BuChange, ChangeAndCase) {
  EXPECT_EQ(call("change", {"a-b-c", "-", "+="}), "a+=b+=c");
  EXPECT_EQ(call("change", {"aAa", "a", "x"}), "xAx");
  EXPECT_EQ(call("change", {"aAa", "a", "x", "1"}), "xxx");
  EXPECT_EQ(call("change", {"abc", "", "x"}), "abc");
  EXPECT_EQ(call("change", {"aaa", "aa", "a"}), "aa");  // no rescanning of replaced text
  EXPECT_EQ(call("change", {"abc", "b"}), "E40@0: CHANGE(): must receive 3 or 4 arguments.");
  EXPECT_EQ(call("upper", {"abc\xe9"}), "ABC\xe9");
  EXPECT_EQ(call("lower", {"ABC"}), "abc");
  EXPECT_EQ(call("lower", {"A", "1"}), "E40@0: LOWER(): must receive 1 argument.");
  EXPECT_EQ(call("reverse", {"abc"}), "cba");
  EXPECT_EQ(call("length", {"hello"}), "5");
  EXPECT_EQ(call("length", {""}), "0");
}

TEST(BuTranslate, TablesAndPad) {
  EXPECT_EQ(call("translate", {"abc"}), "ABC");
  EXPECT_EQ(call("translate", {"aabbcc", "12", "ab"}), "1122cc");
  EXPECT_EQ(call("translate", {"abc", OMIT, OMIT, "*"}), "ABC");
  EXPECT_EQ(call("translate", {"abcd", "1", "abc", "*"}), "1**d");
  EXPECT_EQ(call("translate", {"aa", "12", "aa"}), "11");  // the first occurrence wins
  EXPECT_EQ(call("translate", {"ab", "xy"}), "  ");  // input table of all bytes: a, b map past "xy" to the pad
}

TEST(BuStrip, OptionsAndCharacter) {
  EXPECT_EQ(call("strip", {"  a  "}), "a");
  EXPECT_EQ(call("strip", {"  a  ", "L"}), "a  ");
  EXPECT_EQ(call("strip", {"  a  ", "t"}), "  a");
  EXPECT_EQ(call("strip", {"xxaxx", OMIT, "x"}), "a");
  EXPECT_EQ(call("strip", {""}), "");
  EXPECT_EQ(call("strip", {"a", "X"}).substr(0, 6), "E40@1:");
  EXPECT_EQ(call("strip", {"a", "B", "xy"}), "E40@2: STRIP(): the padding expression must be one character wide.");
}

TEST(BuXrangeComma, Ranges) {
  EXPECT_EQ(call("xrange", {"a", "e"}), "abcde");
  EXPECT_EQ(call("xrange", {"\xfe", "\x01"}), std::string("\xfe\xff\x00\x01", 4));
  EXPECT_EQ(call("xrange", {}).size(), 256u);
  EXPECT_EQ(call("xrange", {"ab"}).substr(0, 6), "E40@0:");
  EXPECT_EQ(call("fwc", {"1234567"}), "1,234,567");
  EXPECT_EQ(call("fwc", {"123"}), "123");
  EXPECT_EQ(call("fwc", {"1234"}), "1,234");
  EXPECT_EQ(call("fwc", {"abcdef"}), "abc,def");  // characters are not looked at
  EXPECT_EQ(call("fwc", {}), "E40@0: FWC(): needs 1 argument.");
  EXPECT_EQ(call("comma", {"123456"}), "123456");
  EXPECT_EQ(call("comma", {"1234567"}), "1,234,567");
  EXPECT_EQ(call("comma", {"-1234567"}), "-1,234,567");
  EXPECT_EQ(call("comma", {"1", "2"}), "E40@0: COMMA(): must receive 1 argument.");
}

TEST(BuWords, Extraction) {
  EXPECT_EQ(call("words", {"a b  c"}), "3");
  EXPECT_EQ(call("words", {"   "}), "0");
  EXPECT_EQ(call("word", {" a b c", "2"}), "b");
  EXPECT_EQ(call("word", {"a b c", "4"}), "");
  EXPECT_EQ(call("word", {"a b c", "0"}), "E40@1: WORD(): argument 2 must be a positive integer.");
  EXPECT_EQ(call("wordlength", {"ab cde", "2"}), "3");
  EXPECT_EQ(call("wordindex", {"ab cde", "3"}), "0");
  EXPECT_EQ(call("wordindex", {"  a  b", "2"}), "6");
  EXPECT_EQ(call("subword", {" a b  c d ", "2", "2"}), "b  c");
  EXPECT_EQ(call("subword", {"a b c", "2"}), "b c");
  EXPECT_EQ(call("subword", {"a b c", "4"}), "");
  EXPECT_EQ(call("subword", {"a b c", "1", "0"}), "");
}

TEST(BuWords, Editing) {
  EXPECT_EQ(call("delword", {"Now is the time", "2", "2"}), "Now time");
  EXPECT_EQ(call("delword", {"Now is the time ", "3"}), "Now is ");
  EXPECT_EQ(call("delword", {"  a b c  ", "2"}), "  a ");
  EXPECT_EQ(call("delword", {"a b c", "1", "1"}), "b c");
  EXPECT_EQ(call("delword", {"a b c", "5"}), "a b c");
  EXPECT_EQ(call("space", {"  a   b  c ", "2", "-"}), "a--b--c");
  EXPECT_EQ(call("space", {"a b", "0"}), "ab");
  EXPECT_EQ(call("space", {"  a   b "}), "a b");
}

TEST(BuWords, PhraseSearch) {
  EXPECT_EQ(call("wordpos", {"b c", "a b c d"}), "2");
  EXPECT_EQ(call("wordpos", {"b", "a b a b", "3"}), "4");
  EXPECT_EQ(call("wordpos", {"b  c", "a b   c"}), "2");  // blanks between words don't matter
  EXPECT_EQ(call("wordpos", {"", "a"}), "0");
  EXPECT_EQ(call("find", {"now is the time", "is the"}), "2");
  EXPECT_EQ(call("find", {"now is the time", "is time"}), "0");
  EXPECT_EQ(call("find", {"a"}), "E40@0: FIND(): must receive 2 arguments.");
}

}  // namespace
