// Numbers and their text: reading a text as a number, rendering a double at
// the current NUMERIC DIGITS and FORM, and rounding to digits through text.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "rexx/value.h"

namespace {

// Powers of ten that a double holds exactly.
constexpr double exact10[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                              1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

double scaled(double a, int k) { return k >= 0 ? a * exact10[k] : a / exact10[-k]; }

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Appends the padding zeros that a positive val_dec asks for: the integer
// part's length counts against the decimals, so "1.50" shows as "1.5" and a
// whole-number text recovers its zeros.
int pad_decimals(char* buf, int n, int dec, int digits) {
  if (dec <= 0 || memchr(buf, 'E', (size_t)n)) return n;
  const char* dot = (const char*)memchr(buf, '.', (size_t)n);
  int i = dot ? (int)(dot - buf) : n;
  int d = dot ? n - i - 1 : 0;
  if (d >= dec) return n;
  int count = std::min(digits - (d + i), dec - (d + i)) + (dot ? 0 : 1);
  if (count < 1) return n;
  if (!dot) buf[n++] = '.';
  while (count-- > 0 && n < VAL_NUMBUF - 1) buf[n++] = '0';
  buf[n] = 0;
  return n;
}

// Moves an exponent to a multiple of 3 by scaling the mantissa.
int engineering(char* buf, int n, int digits) {
  char* e = (char*)memchr(buf, 'E', (size_t)n);
  if (!e) return n;
  int ex = atoi(e + 1);
  int k = ex > 0 ? ex % 3 : (3 - (-ex) % 3) % 3;
  if (k == 0) return n;
  *e = 0;
  double m = strtod(buf, nullptr);
  for (int j = 0; j < k; j++) m *= 10;
  ex -= k;
  char mant[VAL_NUMBUF];
  snprintf(mant, sizeof mant, "%.*G", digits, m);
  if (ex < 0) return snprintf(buf, VAL_NUMBUF, "%sE-%d", mant, -ex);
  return snprintf(buf, VAL_NUMBUF, "%sE%d", mant, ex);
}

}  // namespace

bool rx_text_num(const char* s, size_t n, double& out, int& dec) {
  // Fast path: up to 15 plain digits, no blanks or sign, read exactly.
  if (n && n <= 15) {
    uint64_t v = 0;
    size_t i = 0;
    for (; i < n && is_digit(s[i]); i++) v = v * 10 + (uint64_t)(s[i] - '0');
    if (i == n) {
      out = (double)v;
      dec = 0;
      return true;
    }
  }
  while (n && s[n - 1] == ' ') n--;
  size_t p = 0;
  while (p < n && s[p] == ' ') p++;
  // The compacted text: a leading sign directly before the rest.
  char small[64];
  std::string big;
  char* buf = small;
  if (n - p + 2 > sizeof small) {
    big.resize(n - p + 2);
    buf = big.data();
  }
  size_t k = 0;
  if (p < n && (s[p] == '+' || s[p] == '-')) {
    buf[k++] = s[p++];
    while (p < n && s[p] == ' ') p++;
  }
  if (p == n) return false;
  bool dot = false, exp = false;
  int decs = 0;
  for (; p < n; p++) {
    char c = s[p];
    if (is_digit(c)) {
      if (dot && !exp) decs++;
    } else if (c == '.' && !dot && !exp) {
      dot = true;
    } else if ((c == 'e' || c == 'E') && !exp) {
      exp = true;
    } else if ((c == '+' || c == '-') && exp && (s[p - 1] == 'e' || s[p - 1] == 'E')) {
      // a sign directly after the exponent letter
    } else {
      return false;
    }
    buf[k++] = c;
  }
  char last = buf[k - 1];
  if (last == '+' || last == '-') return false;
  buf[k] = 0;
  char* end = nullptr;
  double d = strtod(buf, &end);
  if (end == buf || std::isinf(d) || std::isnan(d)) return false;
  out = d;
  dec = exp ? 0 : std::min(decs, RX_MAX_DIGITS);
  return true;
}

bool val_make_num(value& v) {
  if (v.val_type == VAL_NUM) return true;
  double d;
  int dec;
  if (!rx_text_num(v.val_text, (size_t)v.val_len, d, dec)) return false;
  v.set_num(d, dec);
  return true;
}

int rx_num_text(double d, int dec, char* buf) {
  if (d == 0) d = 0.0;  // never show "-0"
  int digits = rx_numeric.digits;
  if (d == std::floor(d) && std::fabs(d) < exact10[digits]) {
    // A whole number within DIGITS prints as its plain digits.
    char tmp[24];
    int k = 0;
    unsigned long long u = (unsigned long long)std::fabs(d);
    do {
      tmp[k++] = (char)('0' + u % 10);
      u /= 10;
    } while (u);
    int n = 0;
    if (d < 0) buf[n++] = '-';
    while (k) buf[n++] = tmp[--k];
    buf[n] = 0;
    return pad_decimals(buf, n, dec, digits);
  }
  int n = snprintf(buf, VAL_NUMBUF, "%.*G", digits, d);
  char* e = (char*)memchr(buf, 'E', (size_t)n);
  if (e && (e[1] == '+' || e[1] == '-') && e[2] == '0') {
    memmove(e + 2, e + 3, (size_t)(buf + n - (e + 3)) + 1);
    n--;
  }
  if (rx_numeric.engineering) n = engineering(buf, n, digits);
  return pad_decimals(buf, n, dec, digits);
}

std::string_view val_text_of(const value& v, char* scratch) {
  if (v.val_type == VAL_STR) return {v.val_text, (size_t)v.val_len};
  int n = rx_num_text(v.val_num, v.val_dec, scratch);
  return {scratch, (size_t)n};
}

std::string val_string(const value& v) {
  char buf[VAL_NUMBUF];
  return std::string(val_text_of(v, buf));
}

double rx_round_frac(double d, int digits) {
  if (digits >= RX_MAX_DIGITS || !(std::fabs(d) < 9e15) || (double)(long long)d == d) return d;
  // Fast path with the same result as the text round trip: scale by an
  // exact power of ten to an integer part of `digits` digits, round, and
  // scale back with one correctly rounded operation, which is what reading
  // the rounded text back would give. Values too close to a tie for the
  // scaling error to be ruled out take the text path.
  double a = std::fabs(d);
  if (digits >= 1 && a >= 1e-7 && a < 1e15) {
    int k = digits - 1 - (int)std::floor(std::log10(a));
    double lo = exact10[digits - 1], hi = exact10[digits];
    double t = scaled(a, k);
    if (t < lo) {
      t = scaled(a, ++k);
    } else if (t >= hi) {
      t = scaled(a, --k);
    }
    double fl = std::floor(t), fr = t - fl;
    if (t >= lo && t < hi && std::fabs(fr - 0.5) > t * 4e-16 + 1e-12) {
      double m = fr > 0.5 ? fl + 1 : fl;
      double r = k >= 0 ? m / exact10[k] : m * exact10[-k];
      return d < 0 ? -r : r;
    }
  }
  char buf[VAL_NUMBUF];
  snprintf(buf, sizeof buf, "%.*g", digits, d);
  return strtod(buf, nullptr);
}

int rx_whole(value& v, long long& out) {
  if (!val_make_num(v)) return 1;
  double d = rx_round(v.val_num, 9);
  if (d != std::floor(d) || std::fabs(d) > 9.2e18) return 2;
  out = (long long)d;
  return 0;
}
