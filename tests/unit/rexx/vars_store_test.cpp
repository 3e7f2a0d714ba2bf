// The variable store: simple and compound names, stem defaults, DROP,
// EXPOSE across frames, tail derivation, CVTAILS, the environment hook.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

#include "rexx/vars.h"

namespace {

struct VarsFrames : ::testing::Test {
  var_frame* top = vars_push(nullptr);
  ~VarsFrames() override { vars_pop(top); }

  static void set(var_frame* f, std::string_view name, const char* v) {
    size_t dot = name.find('.');
    size_t stem = dot == std::string_view::npos || dot + 1 == name.size() ? 0 : dot;
    vars_set(f, name.data(), name.size(), stem, value(v, strlen(v)));
  }
  // What a read gives: the value's text, or the unset name.
  static std::string get(var_frame* f, std::string_view name) {
    size_t dot = name.find('.');
    size_t stem = dot == std::string_view::npos ? 0 : dot;
    var_ref r = vars_get(f, name.data(), name.size(), stem);
    return r.val ? val_string(*r.val) : vars_unset_text(name);
  }
};

TEST_F(VarsFrames, SimpleVariables) {
  EXPECT_EQ(vars_get(top, "X").val, nullptr);
  EXPECT_EQ(get(top, "X"), "X");
  set(top, "X", "1");
  EXPECT_EQ(get(top, "X"), "1");
  var_ref r = vars_get(top, "X");
  EXPECT_EQ(r.changes, 0u);
  set(top, "X", "2");
  EXPECT_EQ(vars_get(top, "X").changes, 1u);
  EXPECT_EQ(vars_get(top, "X").entry, r.entry);  // entries never move
  vars_drop(top, "X", 1, 0);
  EXPECT_EQ(get(top, "X"), "X");
  set(top, "X", "3");
  EXPECT_EQ(get(top, "X"), "3");
  EXPECT_GT(vars_get(top, "X").changes, 1u);  // a dropped entry keeps counting
}

TEST_F(VarsFrames, AssignRejectsDigitAndDotNames) {
  EXPECT_EQ(vars_assign(top, "1A", 0, value("x", 1)), 31);
  EXPECT_EQ(vars_assign(top, ".A", 0, value("x", 1)), 31);
  EXPECT_EQ(vars_assign(top, "A1", 0, value("x", 1)), 0);
  EXPECT_EQ(get(top, "A1"), "x");
}

TEST_F(VarsFrames, StemDefaults) {
  set(top, "A.1", "2");
  vars_set_stem(top, "A", value("5", 1));  // a.1 = 2; a. = 5
  EXPECT_EQ(get(top, "A.1") + " " + get(top, "A.2"), "5 5");
  var_ref r = vars_get(top, "A.7", 1);
  EXPECT_TRUE(r.from_default);
  EXPECT_EQ(get(top, "A+"), "5");  // the stem itself
  set(top, "A.2", "x");
  EXPECT_EQ(get(top, "A.2"), "x");
  EXPECT_FALSE(vars_get(top, "A.2", 1).from_default);
  vars_drop(top, "A.2", 3, 1);
  EXPECT_EQ(get(top, "A.2"), "5");  // a dropped compound falls back to the default
  vars_drop_stem(top, "A");
  EXPECT_EQ(get(top, "A.2"), "A.2");
  EXPECT_EQ(get(top, "A+"), "A.");
  // A stem of another name that shares a prefix is untouched.
  set(top, "AB.1", "k");
  vars_drop_stem(top, "A");
  EXPECT_EQ(get(top, "AB.1"), "k");
}

TEST_F(VarsFrames, DerivedNames) {
  set(top, "I", "3");
  vars_set(top, "J", 1, 0, value(1.5, 2));
  std::string name;
  var_part parts[] = {{"I", 1}, {"J", 1}, {"K", 1}, {"", 0}, {"7", 1}};
  vars_derive(top, "A", parts, 5, name);
  EXPECT_EQ(name, "A.3.1.5.K..7");  // numbers rendered, unset elements as written
  set(top, "7", "no");            // a constant element is never looked up
  vars_derive(top, "A", parts + 4, 1, name);
  EXPECT_EQ(name, "A.7");
}

TEST_F(VarsFrames, ExposeSimpleAndHidden) {
  set(top, "X", "1");
  set(top, "Y", "outer");
  var_frame* in = vars_push(top);
  vars_expose(in, "X");
  EXPECT_EQ(get(in, "X"), "1");
  EXPECT_EQ(get(in, "Y"), "Y");  // not exposed: a fresh variable
  set(in, "X", "2");
  set(in, "Y", "inner");
  vars_pop(in);
  EXPECT_EQ(get(top, "X"), "2");
  EXPECT_EQ(get(top, "Y"), "outer");
}

TEST_F(VarsFrames, ExposeAcrossTwoLevelsAndDrop) {
  set(top, "X", "1");
  var_frame* mid = vars_push(top);
  vars_expose(mid, "X");
  var_frame* in = vars_push(mid);
  vars_expose(in, "X");
  EXPECT_EQ(get(in, "X"), "1");
  vars_drop(in, "X", 1, 0);  // drops the real variable
  EXPECT_EQ(get(top, "X"), "X");
  set(in, "X", "9");
  EXPECT_EQ(get(top, "X"), "9");
  vars_pop(in);
  vars_pop(mid);
}

TEST_F(VarsFrames, ExposeStem) {
  set(top, "S.1", "one");
  vars_set_stem(top, "T", value("dflt", 4));
  var_frame* in = vars_push(top);
  vars_expose(in, "S+");
  vars_expose(in, "T+");
  EXPECT_EQ(get(in, "S.1"), "one");
  EXPECT_EQ(get(in, "T.anything"), "dflt");
  set(in, "S.2", "two");
  vars_set_stem(in, "T", value("new", 3));
  EXPECT_EQ(vars_tails(in, "S"), vars_tails(top, "S"));
  vars_pop(in);
  EXPECT_EQ(get(top, "S.2"), "two");
  EXPECT_EQ(get(top, "T.x"), "new");
  std::string tails = vars_tails(top, "S");
  EXPECT_TRUE(tails == "1 2" || tails == "2 1") << tails;
}

TEST_F(VarsFrames, ExposeOneCompound) {
  set(top, "A.1", "a1");
  set(top, "A.2", "a2");
  var_frame* in = vars_push(top);
  vars_expose(in, "A.1");
  EXPECT_EQ(get(in, "A.1"), "a1");
  EXPECT_EQ(get(in, "A.2"), "A.2");
  set(in, "A.1", "changed");
  set(in, "A.2", "local");
  vars_pop(in);
  EXPECT_EQ(get(top, "A.1"), "changed");
  EXPECT_EQ(get(top, "A.2"), "a2");
}

// Number tails live in a per-stem array once the stem is dense enough; an
// entry made before the array reached it must stay the one found.
TEST_F(VarsFrames, NumberTailsDenseAndSparse) {
  set(top, "A.500", "early");  // sparse so far: kept in the index
  set(top, "A.01", "zero-one");
  set(top, "A.0", "zero");
  char name[32];
  for (int i = 1; i <= 1000; i++) {
    int n = snprintf(name, sizeof name, "A.%d", i);
    if (i != 500) vars_set(top, name, (size_t)n, 1, value((double)i));
  }
  EXPECT_EQ(get(top, "A.500"), "early");
  var_entry* e500 = vars_get(top, "A.500", 1).entry;
  set(top, "A.500", "again");
  EXPECT_EQ(vars_get(top, "A.500", 1).entry, e500);  // not a second entry
  EXPECT_EQ(get(top, "A.500"), "again");
  EXPECT_EQ(get(top, "A.01"), "zero-one");  // not the same name as A.1
  EXPECT_EQ(get(top, "A.1"), "1");
  EXPECT_EQ(get(top, "A.0"), "zero");
  EXPECT_EQ(get(top, "A.1001"), "A.1001");
  set(top, "A.4000000000", "big");  // beyond nine digits
  EXPECT_EQ(get(top, "A.4000000000"), "big");
  std::string tails = vars_tails(top, "A");
  EXPECT_EQ(std::count(tails.begin(), tails.end(), ' '), 1002);  // 1003 tails
  vars_set_stem(top, "A", value("d", 1));
  EXPECT_EQ(get(top, "A.500"), "d");
  EXPECT_EQ(get(top, "A.999"), "d");
  EXPECT_EQ(get(top, "A.01"), "d");
  EXPECT_EQ(vars_tails(top, "A"), "");
}

TEST_F(VarsFrames, Cvtails) {
  EXPECT_EQ(vars_tails(top, "Q"), "");
  set(top, "Q.B", "1");
  set(top, "Q.A.Z", "1");
  set(top, "QQ.X", "1");
  set(top, "Q.C", "1");
  vars_drop(top, "Q.C", 3, 1);
  std::string t = vars_tails(top, "Q");
  EXPECT_EQ(t.size(), 5u) << t;  // "B" and "A.Z" in bucket order
  EXPECT_NE(t.find("A.Z"), std::string::npos);
  EXPECT_NE(t.find('B'), std::string::npos);
  // The listing follows the classic buckets of the full names.
  for (const char* tail : {"X", "Y", "Z", "10", "11", "KEY", "A.B"}) {
    std::string full = "Q." + std::string(tail);
    set(top, full, "1");
  }
  std::string all = vars_tails(top, "Q");
  uint32_t last = 0;
  size_t at = 0;
  while (at < all.size()) {
    size_t sp = all.find(' ', at);
    if (sp == std::string::npos) sp = all.size();
    std::string full = "Q." + all.substr(at, sp - at);
    uint32_t h = var_hash(full.data(), full.size());
    EXPECT_GE(h, last) << full;
    last = h;
    at = sp + 1;
  }
}

TEST_F(VarsFrames, HashStaysInItsMask) {
  EXPECT_EQ(var_hash("A", 1), (uint32_t)((65 * 31) & 0x9FFF));
  EXPECT_EQ(var_hash("AB", 2), (uint32_t)(((65 * 31 + 66) * 31) & 0x9FFF));
  for (const char* n : {"\xff", "\x80\x80\x80", "ZZZZZZZZZZZZZZZZZZZZ", "a.b.c"}) {
    uint32_t h = var_hash(n, strlen(n));
    EXPECT_LT(h, (uint32_t)VAR_BUCKETS);
    EXPECT_EQ(h & 0x6000u, 0u) << n;
  }
}

TEST_F(VarsFrames, ManyVariablesAndFrameReuse) {
  char name[32];
  for (int i = 0; i < 50000; i++) {
    int n = snprintf(name, sizeof name, "V%d", i);
    vars_set(top, name, (size_t)n, 0, value((double)i));
  }
  for (int i = 0; i < 50000; i += 997) {
    int n = snprintf(name, sizeof name, "V%d", i);
    var_ref r = vars_get(top, name, (size_t)n, 0);
    ASSERT_NE(r.val, nullptr);
    EXPECT_EQ(r.val->val_num, i);
  }
  for (int round = 0; round < 3; round++) {  // a popped table comes back empty
    var_frame* in = vars_push(top);
    EXPECT_EQ(get(in, "V1"), "V1");
    set(in, "V1", "x");
    EXPECT_EQ(get(in, "V1"), "x");
    vars_pop(in);
  }
}

TEST_F(VarsFrames, EnvironmentHook) {
  vars_setenv_hook = true;
  unsetenv("XEDVARTEST");
  set(top, "$XEDVARTEST", "hello");
  EXPECT_STREQ(getenv("XEDVARTEST"), "hello");
  EXPECT_EQ(get(top, "$?XEDVARTEST"), "1");
  setenv("XEDVARTEST", "changed", 1);
  EXPECT_EQ(get(top, "$XEDVARTEST"), "changed");
  unsetenv("XEDVARTEST");
  EXPECT_EQ(get(top, "$XEDVARTEST"), "");
  EXPECT_EQ(get(top, "$?XEDVARTEST"), "0");
  vars_setenv_hook = false;
  set(top, "$XEDVARTEST", "off");
  EXPECT_EQ(getenv("XEDVARTEST"), nullptr);
}

std::string sub(var_frame* f, const char* i, const char* j, bool colon, const char* v) {
  value vi = i ? value(i, strlen(i)) : value(), vj = j ? value(j, strlen(j)) : value();
  int e = vars_set_sub(f, "X", 0, i ? &vi : nullptr, j ? &vj : nullptr, colon, value(v, strlen(v)));
  if (e) return "E" + std::to_string(e) + ":" + rx_err_text;
  return val_string(*vars_get(f, "X").val);
}

TEST_F(VarsFrames, SubstringAssignment) {
  set(top, "X", "abc");
  EXPECT_EQ(sub(top, "5", nullptr, false, "z"), "abc z");
  set(top, "X", "xxxxx");
  EXPECT_EQ(sub(top, "2", "4", true, "ab"), "xabax");  // repeated to fill
  EXPECT_EQ(sub(top, nullptr, "2", true, "-"), "--bax");
  EXPECT_EQ(sub(top, "4", nullptr, true, "*"), "--b**");
  EXPECT_EQ(sub(top, "1", nullptr, false, ""), " -b**");  // an empty value writes a blank
  vars_set(top, "X", 1, 0, value(12.5, 1));
  EXPECT_EQ(sub(top, "2", nullptr, false, "9"), "19.5");  // a number turns into its text
  vars_drop(top, "X", 1, 0);
  EXPECT_EQ(sub(top, "3", nullptr, false, "!"), "X !");   // unset: starts as its name
  EXPECT_EQ(sub(top, "3", "2", true, "a"), "E78:The second index must be greater than the first.");
  EXPECT_EQ(sub(top, "0", nullptr, false, "a"), "E78:The first index must be a positive integer.");
  EXPECT_EQ(sub(top, "q", nullptr, false, "a"), "E78:The first index evaluates to \"q\"");
  EXPECT_EQ(sub(top, "1", "2.5", true, "a"), "E78:The second index must be a positive integer.");
  EXPECT_EQ(sub(top, "9", nullptr, true, "a"), "E78:The second index must be greater than the first.");
}

TEST(VarsNames, Classes) {
  EXPECT_FALSE(vars_novalue_applies("123"));
  EXPECT_TRUE(vars_novalue_applies("A1"));
  EXPECT_TRUE(vars_novalue_applies("1.5"));
  EXPECT_TRUE(vars_valid_name("A.b!?_$#@"));
  EXPECT_FALSE(vars_valid_name("1A"));
  EXPECT_FALSE(vars_valid_name(".A"));
  EXPECT_FALSE(vars_valid_name("A-B"));
  EXPECT_FALSE(vars_valid_name(""));
  EXPECT_EQ(vars_unset_text("ABC+"), "ABC.");
  EXPECT_EQ(vars_unset_text("A.B"), "A.B");
}

TEST_F(VarsFrames, Dump) {
  set(top, "X", "1");
  set(top, "Y", "2");
  vars_drop(top, "Y", 1, 0);
  set(top, "A.1", "z");  // its stem key is internal and not listed
  var_frame* in = vars_push(top);
  vars_expose(in, "X");
  char* buf = nullptr;
  size_t len = 0;
  FILE* f = open_memstream(&buf, &len);
  vars_dump(top, 1, f);
  vars_dump(in, 2, f);
  fclose(f);
  std::string out(buf, len);
  free(buf);
  vars_pop(in);
  EXPECT_EQ(out.rfind("\n.......... show: level 1\n\n", 0), 0u);
  EXPECT_NE(out.find("\"X\" = \"1\"\n"), std::string::npos);
  EXPECT_NE(out.find("\"Y\" is DROPPED\n"), std::string::npos);
  EXPECT_NE(out.find("\"A.1\" = \"z\"\n"), std::string::npos);
  EXPECT_EQ(out.find("A+"), std::string::npos);
  EXPECT_NE(out.find("level 2\n\n\"X\" is EXPOSED\n"), std::string::npos);
}

}  // namespace
