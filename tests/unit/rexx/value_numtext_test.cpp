// Value records, reading texts as numbers, rendering numbers, rounding
// through text, and the NUMERIC settings.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "rexx/value.h"

namespace {

struct NumericGuard {
  rx_numeric_t saved = rx_numeric;
  ~NumericGuard() { rx_numeric = saved; }
};

bool num(const char* s, double& d, int& dec) { return rx_text_num(s, strlen(s), d, dec); }

std::string text(double d, int dec = -1) {
  char buf[VAL_NUMBUF];
  int n = rx_num_text(d, dec, buf);
  EXPECT_EQ((size_t)n, strlen(buf));
  return std::string(buf, (size_t)n);
}

TEST(ValueRecord, ShortAndLongTextsCopyAndMove) {
  value a("short", 5);
  EXPECT_EQ(a.val_cap, 0);  // inline
  std::string big(1000, 'x');
  value b(big);
  EXPECT_GT(b.val_cap, 0);
  value c = b;
  EXPECT_EQ(c.str(), big);
  EXPECT_NE(c.val_text, b.val_text);
  value d = std::move(c);
  EXPECT_EQ(d.str(), big);
  EXPECT_EQ(c.str(), "");
  value e = a;
  EXPECT_EQ(e.val_text, e.val_small);  // the inline pointer is the record's own
  a = std::move(e);
  EXPECT_EQ(a.str(), "short");
  EXPECT_EQ(a.val_text, a.val_small);
}

TEST(ValueRecord, AppendGrowsAndHandlesItsOwnText) {
  value v("ab", 2);
  for (int i = 0; i < 6; i++) v.append(v.val_text, (size_t)v.val_len);  // doubles each time
  EXPECT_EQ(v.val_len, 128);
  EXPECT_EQ(v.str().substr(0, 6), "ababab");
  EXPECT_EQ(v.val_text[128], 0);
  value n(1.5, 2);
  n.append("x", 1);
  EXPECT_EQ(n.str(), "1.5x");
  v.set_str(v.val_text + 120, 8);  // a slice of its own text
  EXPECT_EQ(v.str(), "abababab");
}

TEST(ValueNumber, AcceptedSpellings) {
  double d;
  int dec;
  ASSERT_TRUE(num("  12  ", d, dec));
  EXPECT_EQ(d, 12);
  EXPECT_EQ(dec, 0);
  ASSERT_TRUE(num("- 5", d, dec));  // blanks after a leading sign
  EXPECT_EQ(d, -5);
  ASSERT_TRUE(num("+.5", d, dec));
  EXPECT_EQ(d, 0.5);
  EXPECT_EQ(dec, 1);
  ASSERT_TRUE(num("1.500", d, dec));
  EXPECT_EQ(dec, 3);
  ASSERT_TRUE(num("1.5E+3", d, dec));
  EXPECT_EQ(d, 1500);
  EXPECT_EQ(dec, 0);  // an exponent shows no decimals
  ASSERT_TRUE(num("2e-2", d, dec));
  EXPECT_DOUBLE_EQ(d, 0.02);
  ASSERT_TRUE(num("0.12345678901234567890", d, dec));
  EXPECT_EQ(dec, 15);  // capped
}

TEST(ValueNumber, RefusedSpellings) {
  double d;
  int dec;
  for (const char* s : {"", "   ", "abc", "1 2", "1..2", "1.2.3", "+-1", "--1", "1-", "1e+", "+",
                        "0x10", "inf", "nan", "1e5e3", "\t1", "1\xe9", "1e400", ".", "1e2.5"})
    EXPECT_FALSE(num(s, d, dec)) << '"' << s << '"';
}

TEST(ValueNumber, MakeNumInPlaceDropsTheSpelling) {
  value v("1.50", 4);
  ASSERT_TRUE(val_make_num(v));
  EXPECT_TRUE(v.is_num());
  EXPECT_EQ(v.val_dec, 2);
  EXPECT_EQ(val_string(v), "1.5");
  value s("x1", 2);
  EXPECT_FALSE(val_make_num(s));
  EXPECT_EQ(s.str(), "x1");
}

TEST(ValueText, DefaultDigits) {
  NumericGuard g;
  EXPECT_EQ(text(1.0 / 3), "0.333333333");
  EXPECT_EQ(text(123456789012.0), "1.23456789E+11");
  EXPECT_EQ(text(1e-5), "1E-5");   // one leading zero of the exponent goes
  EXPECT_EQ(text(1e100), "1E+100");
  EXPECT_EQ(text(-0.0), "0");
  EXPECT_EQ(text(100000000), "100000000");
  EXPECT_EQ(text(1e9), "1E+9");
}

TEST(ValueText, DecimalsPaddedByTheIntegerPartRule) {
  NumericGuard g;
  EXPECT_EQ(text(1.5, 2), "1.5");     // 1.50 + 0
  EXPECT_EQ(text(1.5, 3), "1.50");    // 1.500 + 0
  EXPECT_EQ(text(3, 3), "3.000");     // 1.50 * 2.0
  EXPECT_EQ(text(25, 1), "25");       // the integer part eats the decimal
  EXPECT_EQ(text(-1.5, 3), "-1.5");   // and so does the sign
  EXPECT_EQ(text(0.3, 1), "0.3");
  EXPECT_EQ(text(1e20, 5), "1E+20");  // never with an exponent
  rx_numeric.digits = 3;
  EXPECT_EQ(text(2, 5), "2.000");     // DIGITS caps the padding
}

TEST(ValueText, FewerDigits) {
  NumericGuard g;
  rx_numeric.digits = 4;
  EXPECT_EQ(text(1.0 / 3), "0.3333");
  EXPECT_EQ(text(2.0 / 3), "0.6667");
  EXPECT_EQ(text(12346), "1.235E+4");
}

TEST(ValueText, Engineering) {
  NumericGuard g;
  rx_numeric.engineering = true;
  EXPECT_EQ(text(123456789012.0), "123.456789E9");
  EXPECT_EQ(text(1.5e10), "15E9");
  EXPECT_EQ(text(1e-5), "10E-6");
  EXPECT_EQ(text(1e-4 * 2), "0.0002");
  EXPECT_EQ(text(1.5e-7), "150E-9");
  EXPECT_EQ(text(1e12), "1E+12");  // already a multiple of 3
}

TEST(ValueRound, ThroughText) {
  EXPECT_EQ(rx_round(1.0 / 3, 3), 0.333);
  EXPECT_EQ(rx_round(2.0 / 3, 3), 0.667);
  EXPECT_EQ(rx_round(123456789012.0, 3), 123456789012.0);  // whole numbers keep all digits
  EXPECT_EQ(rx_round(1.0 / 3, 15), 1.0 / 3);               // 15 and more: untouched
  EXPECT_EQ(rx_round(1.26e-10, 2), 1.3e-10);
}

TEST(ValueRound, WholeArgument) {
  long long n;
  value a("12", 2), b("1.5", 3), c("x", 1), d("2.0000000001", 12);
  EXPECT_EQ(rx_whole(a, n), 0);
  EXPECT_EQ(n, 12);
  EXPECT_EQ(rx_whole(b, n), 2);
  EXPECT_EQ(rx_whole(c, n), 1);
  EXPECT_EQ(rx_whole(d, n), 0);  // rounded to 9 digits first
  EXPECT_EQ(n, 2);
}

TEST(ValueNumeric, DigitsFuzzForm) {
  NumericGuard g;
  value v16("16", 2), v15("15", 2), v0("0", 1), half("2.5", 3);
  EXPECT_EQ(rx_set_digits(&v16), 26);
  EXPECT_EQ(rx_err_text, "Expression evaluates to \"16\"; must be a positive integer <= 15");
  EXPECT_EQ(rx_set_digits(&half), 26);
  EXPECT_EQ(rx_set_digits(&v0), 26);
  EXPECT_EQ(rx_set_digits(&v15), 0);
  EXPECT_EQ(rx_numeric.digits, 15);

  value f15("15", 2), f3("3", 1);
  EXPECT_EQ(rx_set_fuzz(&f15), 26);
  EXPECT_EQ(rx_err_text, "Expression evaluates to \"15\"; must be a positive integer < 15");
  EXPECT_EQ(rx_set_fuzz(&f3), 0);
  value d3("3", 1);
  EXPECT_EQ(rx_set_digits(&d3), 26);
  EXPECT_EQ(rx_err_text,
            "Expression evaluates to \"3\"; must be a positive integer > to the current \"3\" NUMERIC DIGITS setting.");
  EXPECT_EQ(rx_set_fuzz(nullptr), 0);
  EXPECT_EQ(rx_set_digits(nullptr), 0);
  EXPECT_EQ(rx_numeric.digits, 9);

  value eng("engineering", 11), bad("metric", 6);
  EXPECT_EQ(rx_set_form(&eng), 0);
  EXPECT_EQ(rx_numeric_text(), "9 0 ENGINEERING");
  EXPECT_EQ(rx_set_form(&bad), 25);
  EXPECT_EQ(rx_set_form(nullptr), 0);
  EXPECT_EQ(rx_numeric_text(), "9 0 SCIENTIFIC");
}

}  // namespace
