// Value records, reading texts as numbers, rendering numbers, rounding
// through text, and the NUMERIC settings.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "rexx/run.h"
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

TEST(ValueText, WholeNumbersAsPrintfWouldShowThem) {
  NumericGuard g;
  char want[64];
  for (int digits : {1, 5, 9, 15}) {
    rx_numeric.digits = digits;
    for (double d : {0.0, 7.0, -42.0, 99999.0, 100000.0, 123456789.0, 999999999.0, 1e9, -1e14, 999999999999999.0}) {
      snprintf(want, sizeof want, "%.*G", digits, d);
      std::string w = want;
      size_t e = w.find("E+0");
      if (e != std::string::npos) w.erase(e + 2, 1);
      EXPECT_EQ(text(d), w) << d << " at " << digits;
    }
  }
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

// The rounding must agree bit for bit with printing "%.*g" and reading the
// text back, near ties and powers of ten included.
TEST(ValueRound, AgreesWithTheTextRoundTrip) {
  auto by_text = [](double d, int digits) {
    if (d == std::floor(d)) return d;  // whole numbers are never rounded
    char buf[64];
    snprintf(buf, sizeof buf, "%.*g", digits, d);
    return strtod(buf, nullptr);
  };
  uint64_t seed = 88172645463325252ull;
  auto next = [&] {
    seed ^= seed << 13;
    seed ^= seed >> 7;
    seed ^= seed << 17;
    return seed;
  };
  int mismatches = 0;
  for (int i = 0; i < 300000; i++) {
    int digits = 1 + (int)(next() % 14);
    double d;
    switch (i % 4) {
      case 0:  // any magnitude
        d = (double)(next() % 1000000007) / 1000000007.0 * std::pow(10.0, (int)(next() % 30) - 12);
        break;
      case 1: {  // a decimal tie at the rounding position, give or take an ulp
        double scale = std::pow(10.0, (int)(next() % 12));
        d = ((double)(next() % 100000000) + 0.5) / scale;
        d = std::nextafter(d, (next() & 1) ? 1e300 : -1e300);
        break;
      }
      case 2:  // just around a power of ten
        d = std::nextafter(std::pow(10.0, (int)(next() % 20) - 7), (next() & 1) ? 1e300 : 0.0);
        break;
      default:  // short decimals, the common case
        d = (double)(next() % 100000) / 1000.0 + 0.001;
        break;
    }
    if (next() & 1) d = -d;
    if (rx_round(d, digits) != by_text(d, digits) && ++mismatches < 5)
      ADD_FAILURE() << std::hexfloat << d << " at " << digits << " digits";
  }
  EXPECT_EQ(mismatches, 0);
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

// A block the interpreter cannot get goes to the program's out-of-memory
// path (here a hook that records the size asked for), or ends the run
// through std::bad_alloc when there is none; the value stays whole either way.
namespace {
int nomem_calls = 0;
size_t nomem_size = 0;
struct nomem_tag {};
void count_nomem(size_t size) {
  nomem_calls++;
  nomem_size = size;
  throw nomem_tag{};
}
}  // namespace

TEST(ValueMemory, AFailedBlockTakesTheOutOfMemoryPath) {
  const size_t huge = (size_t)1 << 62;  // no machine gives this much
  value v("short", 5);
  rx_nomem_hook = count_nomem;
  EXPECT_THROW(v.make_str(huge), nomem_tag);
  EXPECT_EQ(nomem_calls, 1);
  EXPECT_GT(nomem_size, huge) << "the size of the block asked for, its slack included";
  value w(std::string(100, 'w'));
  EXPECT_THROW(w.append("x", huge), nomem_tag);
  EXPECT_EQ(nomem_calls, 2);
  EXPECT_GT(nomem_size, huge + 100);
  EXPECT_EQ(w.val_len, 100) << "the value is as it was";
  rx_nomem_hook = nullptr;
  EXPECT_THROW(v.make_str(huge), std::bad_alloc);
  v.set_str("again", 5);  // still usable after the failure
  EXPECT_EQ(std::string(v.val_text, (size_t)v.val_len), "again");
}
