// The fx_* operators: arithmetic with its decimals and errors, logic,
// comparisons under FUZZ, concatenation, the length operator and brackets.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "rexx/value.h"

namespace {

struct NumericGuard {
  rx_numeric_t saved = rx_numeric;
  ~NumericGuard() { rx_numeric = saved; }
};

value S(const char* s) { return value(s, strlen(s)); }

// Result text, or "E<number>/<blamed operand>" after a failure.
std::string bin(fx_bin fn, value a, value b) {
  value r;
  int bad = 0;
  rx_err_num = 0;
  if (!fn(r, a, b, bad)) return "E" + std::to_string(rx_err_num) + "/" + std::to_string(bad);
  return val_string(r);
}
std::string bin(fx_bin fn, const char* a, const char* b) { return bin(fn, S(a), S(b)); }

std::string un(fx_un fn, const char* a) {
  value r, x = S(a);
  int bad = 0;
  if (!fn(r, x, bad)) return "E" + std::to_string(rx_err_num) + "/" + std::to_string(bad);
  return val_string(r);
}

TEST(ArithOps, Basics) {
  NumericGuard g;
  EXPECT_EQ(bin(fx_div, "1", "3"), "0.333333333");
  EXPECT_EQ(bin(fx_exp, "2", "0.5"), "1.41421356");
  EXPECT_EQ(bin(fx_exp, "2", "-1"), "0.5");
  EXPECT_EQ(bin(fx_exp, "2", "10"), "1024");
  EXPECT_EQ(bin(fx_plus, " 12 ", "1"), "13");
  EXPECT_EQ(bin(fx_min, "5", "7.25"), "-2.25");
  EXPECT_EQ(bin(fx_plus, "123456789012", "0"), "1.23456789E+11");
  EXPECT_EQ(bin(fx_mult, "1e3", "2"), "2000");
  EXPECT_EQ(un(fx_umin, "0"), "0");
  EXPECT_EQ(un(fx_umin, "2.50"), "-2.5");
  EXPECT_EQ(un(fx_uplus, " 7 "), "7");
}

TEST(ArithOps, DecimalsOfResults) {
  NumericGuard g;
  EXPECT_EQ(bin(fx_plus, "1.50", "0"), "1.5");     // the other side's decimals
  EXPECT_EQ(bin(fx_plus, "0", "1.500"), "1.50");
  EXPECT_EQ(bin(fx_mult, "1.50", "2.0"), "3.000"); // decimals add
  EXPECT_EQ(bin(fx_plus, "1.5", "1.5"), "3.0");    // the larger count
  EXPECT_EQ(bin(fx_min, "1.50", "1.50"), "0");     // a zero result has none
  EXPECT_EQ(bin(fx_plus, "0.1", "0.2"), "0.3");
  EXPECT_EQ(bin(fx_div, "3.00", "1"), "3");        // division computes its own
}

TEST(ArithOps, IntegerDivisionAndRemainder) {
  NumericGuard g;
  EXPECT_EQ(bin(fx_idiv, "7", "2"), "3");
  EXPECT_EQ(bin(fx_idiv, "-7", "2"), "-3");
  EXPECT_EQ(bin(fx_rem, "7", "2"), "1");
  EXPECT_EQ(bin(fx_rem, "-7", "2"), "-1");
  EXPECT_EQ(bin(fx_rem, "7", "-2"), "1");
  EXPECT_EQ(bin(fx_rem, "5.5", "2"), "1.5");
  EXPECT_EQ(bin(fx_rem, "3", "3"), "0");
  EXPECT_EQ(bin(fx_idiv, "1e10", "1"), "E26/3");
  EXPECT_EQ(rx_err_text.substr(0, 50), "MOLBA: the result of the integer division is\n     ");
  EXPECT_EQ(bin(fx_rem, "1e10", "3"), "E26/3");
  EXPECT_NE(rx_err_text.find("remainder operation"), std::string::npos);
  EXPECT_EQ(bin(fx_idiv, "999999999", "1"), "999999999");
}

TEST(ArithOps, Failures) {
  NumericGuard g;
  EXPECT_EQ(bin(fx_plus, "a", "1"), "E41/1");
  EXPECT_EQ(bin(fx_plus, "1", "1e400"), "E41/2");  // too large for a double
  EXPECT_EQ(bin(fx_mult, "1e300", "1e300"), "E42/3");
  EXPECT_EQ(bin(fx_div, "1", "0"), "E51/2");
  EXPECT_EQ(bin(fx_idiv, "1", "0.0"), "E51/2");
  EXPECT_EQ(bin(fx_rem, "1", " 0 "), "E51/2");
  EXPECT_EQ(un(fx_umin, "x"), "E41/1");
}

TEST(ArithOps, OperandsRoundedToDigitsPlusOne) {
  NumericGuard g;
  rx_numeric.digits = 5;
  EXPECT_EQ(bin(fx_plus, "1.000001", "0"), "1.00000");  // 1.00000 after rounding to 6 digits
  EXPECT_EQ(bin(fx_div, "2", "3"), "0.66667");
  EXPECT_EQ(bin(fx_plus, "123456", "1"), "1.2346E+5");  // whole: kept, shown at 5 digits
}

TEST(ArithOps, Logic) {
  NumericGuard g;
  EXPECT_EQ(bin(fx_and, "1", "0"), "0");
  EXPECT_EQ(bin(fx_or, "1", "0"), "1");
  EXPECT_EQ(bin(fx_xor, "1", "1"), "0");
  EXPECT_EQ(un(fx_not, " 0 "), "1");
  EXPECT_EQ(bin(fx_or, "2", "1"), "E34/1");
  EXPECT_EQ(bin(fx_and, "1", "x"), "E34/2");
  EXPECT_EQ(bin(fx_or, "1.0000000001", "0"), "1");  // rounded to DIGITS before the test
  int t;
  value v = S("0.5");
  EXPECT_FALSE(rx_truth(v, t));
}

TEST(ArithOps, Concatenation) {
  EXPECT_EQ(bin(fx_conc, "ab", "cd"), "abcd");
  EXPECT_EQ(bin(fx_bl, "ab", "cd"), "ab cd");
  EXPECT_EQ(bin(fx_conc, value(1.5, 2), S("x")), "1.5x");
  EXPECT_EQ(bin(fx_conc_not, "a", "1"), "a 0");
  EXPECT_EQ(bin(fx_conc_not, "a", "b"), "E34/2");
  EXPECT_EQ(un(fx_rho, "hello"), "5");
  EXPECT_EQ(bin(fx_conc_rho, "ab", "xyz"), "ab 3");
  // Appending in place to the left operand, long enough to leave the record.
  value r = S("0123456789"), b = S("abcdefghijklmnop");
  int bad = 0;
  for (int i = 0; i < 3; i++) ASSERT_TRUE(fx_conc(r, r, b, bad));
  EXPECT_EQ(r.val_len, 58);
  EXPECT_EQ(r.str().substr(r.val_len - 4), "mnop");
  ASSERT_TRUE(fx_conc(r, b, r, bad));  // result as right operand
  EXPECT_EQ(r.str().substr(0, 20), "abcdefghijklmnop0123");
}

TEST(ArithCompare, Normal) {
  NumericGuard g;
  EXPECT_EQ(bin(fx_eq, "abc", " abc "), "1");
  EXPECT_EQ(bin(fx_eq, "1.0", "1"), "1");
  EXPECT_EQ(bin(fx_sup, "10", "9"), "1");           // numbers, not texts
  EXPECT_EQ(bin(fx_sup, "10a", "9a"), "0");         // texts
  EXPECT_EQ(bin(fx_inf, "ab", "ab "), "0");         // padded with blanks
  EXPECT_EQ(bin(fx_inf, "ab", "ab!"), "1");         // "ab " against "ab!"
  EXPECT_EQ(bin(fx_supeq, "b", "b"), "1");
  EXPECT_EQ(bin(fx_infeq, "a", "b"), "1");
  EXPECT_EQ(bin(fx_neq, "a", "A"), "1");
  EXPECT_EQ(bin(fx_eqic, "Hello", "hELLO "), "1");
  EXPECT_EQ(bin(fx_neqic, "a", "b"), "1");
  EXPECT_EQ(bin(fx_eq, "0.1e1", "1"), "1");
  EXPECT_EQ(bin(fx_eq, value(0.1 + 0.2), S("0.3")), "1");  // equal once rounded to DIGITS
  EXPECT_EQ(bin(fx_eeq, value(0.1 + 0.2), S("0.3")), "1");
}

TEST(ArithCompare, TextNotConvertedWhenOtherSideIsNot) {
  value a = S(" 01 "), b = S("01x"), r;
  int bad = 0;
  ASSERT_TRUE(fx_eq(r, a, b, bad));
  EXPECT_FALSE(a.is_num());  // the number's spelling survives a text comparison
  EXPECT_EQ(a.str(), " 01 ");
}

TEST(ArithCompare, Fuzz) {
  NumericGuard g;
  EXPECT_EQ(bin(fx_eq, "1.00000001", "1"), "0");
  rx_numeric.fuzz = 1;
  EXPECT_EQ(bin(fx_eq, "1.00000001", "1"), "1");
  EXPECT_EQ(bin(fx_sup, "1.00000001", "1"), "0");
  EXPECT_EQ(bin(fx_eeq, "1.00000001", "1"), "0");  // strict ignores FUZZ
}

TEST(ArithCompare, Strict) {
  EXPECT_EQ(bin(fx_eeq, "abc", " abc "), "0");
  EXPECT_EQ(bin(fx_eeq, "1.0", "1"), "0");
  EXPECT_EQ(bin(fx_nneq, "a", "a"), "0");
  EXPECT_EQ(bin(fx_ssup, "10", "9"), "0");   // bytes: '1' < '9'
  EXPECT_EQ(bin(fx_ssup, "ab", "a"), "1");   // the longer is greater
  EXPECT_EQ(bin(fx_iinf, "a", "ab"), "1");
  EXPECT_EQ(bin(fx_ssupeq, "a", "a"), "1");
  EXPECT_EQ(bin(fx_iinfeq, "b", "a"), "0");
  EXPECT_EQ(bin(fx_ssup, "\xe9", "a"), "1");  // bytes are unsigned
  EXPECT_EQ(bin(fx_eeq, value(1.5, 2), S("1.5")), "1");  // a number is rendered first
}

std::string br(const char* x, const char* i, const char* j, bool colon) {
  value vx = S(x), vi = i ? S(i) : value(), vj = j ? S(j) : value(), r;
  int bad = 0;
  if (!fx_br(r, vx, i ? &vi : nullptr, j ? &vj : nullptr, colon, bad))
    return "E" + std::to_string(rx_err_num) + ":" + rx_err_text;
  return val_string(r);
}

TEST(ArithBrackets, Positions) {
  EXPECT_EQ(br("hello", "2", nullptr, false), "e");
  EXPECT_EQ(br("hello", "2", "4", true), "ell");
  EXPECT_EQ(br("hello", "2", nullptr, true), "ello");
  EXPECT_EQ(br("hello", nullptr, "3", true), "hel");
  EXPECT_EQ(br("ab", "2", "4", true), "b  ");
  EXPECT_EQ(br("ab", "9", "10", true), "");
  EXPECT_EQ(br("ab", "9", "3", true), "");  // beyond the text: empty, no order check
  EXPECT_EQ(br("hello", "4", "2", true), "E78:The second index must be greater than the first.");
  EXPECT_EQ(br("hello", "0", nullptr, false), "E78:The index must be a positive integer.");
  EXPECT_EQ(br("hello", "1.5", "2", true), "E78:The first index evaluates to \"1.5\"");
  EXPECT_EQ(br("hello", "1", "x", true), "E78:The last index evaluates to \"x\"");
  value n(3.25, 2), one = S("1"), four = S("4"), r;
  int bad = 0;
  ASSERT_TRUE(fx_br2(r, n, one, four, bad));
  EXPECT_EQ(val_string(r), "3.25");
}

TEST(ArithBackquote, JoinsOutputLines) {
  value cmd = S("printf 'a\\nb\\n'"), r;
  int bad = 0;
  ASSERT_TRUE(fx_backq(r, cmd, bad));
  EXPECT_EQ(val_string(r), "a\nb");
  value none = S("true");
  ASSERT_TRUE(fx_backq(r, none, bad));
  EXPECT_EQ(val_string(r), "");
}

}  // namespace
