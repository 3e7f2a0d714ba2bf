// The operators over value records: arithmetic on doubles rounded through
// text, logic, concatenation, the length operator, normal and strict
// comparison, the backquote and the bracket operators.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "rexx/value.h"

namespace {

// Both operands as numbers rounded to DIGITS + 1, or error 41 on the first
// that is not a number.
bool operands(value& a, value& b, double& x, double& y, int& bad) {
  if (!val_make_num(a)) {
    bad = 1;
    rx_fail(41);
    return false;
  }
  if (!val_make_num(b)) {
    bad = 2;
    rx_fail(41);
    return false;
  }
  int dig = rx_numeric.digits + 1;
  x = rx_round(a.val_num, dig);
  y = rx_round(b.val_num, dig);
  return true;
}

bool result(value& r, double v, int dec, int& bad) {
  if (!std::isfinite(v)) {
    bad = 3;
    rx_fail(42);
    return false;
  }
  r.set_num(rx_round(v, rx_numeric.digits), dec);
  return true;
}

int sum_dec(double v, double x, int dx, double y, int dy) {
  if (v == 0) return 0;
  if (x == 0) return dy;
  if (y == 0) return dx;
  return dx > dy ? dx : dy;
}

// Whether an integer-division result has more whole digits than DIGITS, as
// ceil(log10(|q|)) counts them (1 for zero): that count exceeds d exactly
// when |q| exceeds 10^d, which needs no logarithm.
bool too_long(double q) {
  static constexpr double limit[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                     1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
  return std::fabs(q) > limit[rx_numeric.digits];
}

const char idiv_long[] = "MOLBA: the result of the integer division is\n        longer than the NUMERIC DIGITS setting.";
const char rem_long[] = "MOLBA: the result of the remainder operation is\n        longer than the NUMERIC DIGITS setting.";

bool divide(value& a, value& b, double& x, double& y, int& bad) {
  if (!operands(a, b, x, y, bad)) return false;
  if (y == 0) {
    bad = 2;
    rx_fail(51);
    return false;
  }
  return true;
}

// Joins two texts with an optional separator into r, appending in place
// when r is the left operand. A result beyond VAL_MAX_LEN is error 5.
bool join(value& r, value& a, std::string_view sep, std::string_view tb, int& bad) {
  size_t la = a.val_type == VAL_STR ? (size_t)a.val_len : VAL_NUMBUF;
  if (la + sep.size() + tb.size() > VAL_MAX_LEN) {
    bad = 3;
    rx_fail(5);
    return false;
  }
  if (&r == &a && a.val_type == VAL_STR) {
    if (!sep.empty()) r.append(sep.data(), sep.size());
    r.append(tb.data(), tb.size());
    return true;
  }
  char sa[VAL_NUMBUF];
  std::string_view ta = val_text_of(a, sa);
  value t;
  char* p = t.make_str(ta.size() + sep.size() + tb.size());
  if (!ta.empty()) memcpy(p, ta.data(), ta.size());
  if (!sep.empty()) memcpy(p + ta.size(), sep.data(), sep.size());
  if (!tb.empty()) memcpy(p + ta.size() + sep.size(), tb.data(), tb.size());
  r = std::move(t);
  return true;
}

void set_bool(value& r, bool b) { r.set_num(b ? 1 : 0, -1); }

// Text with leading and trailing blanks removed.
std::string_view trim(std::string_view s) {
  size_t i = 0, n = s.size();
  while (i < n && s[i] == ' ') i++;
  while (n > i && s[n - 1] == ' ') n--;
  return s.substr(i, n - i);
}

unsigned char fold(unsigned char c, bool ic) {
  return ic && c >= 'A' && c <= 'Z' ? (unsigned char)(c + 32) : c;
}

// The normal comparison: numbers when both are numbers, else blank-trimmed,
// blank-padded texts.
int compare(value& a, value& b, bool ic) {
  double x, y;
  int dx, dy;
  bool na = a.val_type == VAL_NUM || rx_text_num(a.val_text, (size_t)a.val_len, x, dx);
  bool nb = na && (b.val_type == VAL_NUM || rx_text_num(b.val_text, (size_t)b.val_len, y, dy));
  if (na && nb) {
    if (a.val_type == VAL_NUM) x = a.val_num;
    if (b.val_type == VAL_NUM) y = b.val_num;
    int dig = rx_numeric.digits - rx_numeric.fuzz;
    x = rx_round(x, dig);
    y = rx_round(y, dig);
    return x < y ? -1 : x > y ? 1 : 0;
  }
  char sa[VAL_NUMBUF], sb[VAL_NUMBUF];
  std::string_view ta = trim(val_text_of(a, sa)), tb = trim(val_text_of(b, sb));
  size_t n = ta.size() > tb.size() ? ta.size() : tb.size();
  for (size_t i = 0; i < n; i++) {
    unsigned char ca = fold(i < ta.size() ? (unsigned char)ta[i] : ' ', ic);
    unsigned char cb = fold(i < tb.size() ? (unsigned char)tb[i] : ' ', ic);
    if (ca != cb) return ca < cb ? -1 : 1;
  }
  return 0;
}

int strict(value& a, value& b) {
  char sa[VAL_NUMBUF], sb[VAL_NUMBUF];
  std::string_view ta = val_text_of(a, sa), tb = val_text_of(b, sb);
  size_t n = ta.size() < tb.size() ? ta.size() : tb.size();
  int c = memcmp(ta.data(), tb.data(), n);
  if (c) return c < 0 ? -1 : 1;
  return ta.size() < tb.size() ? -1 : ta.size() > tb.size() ? 1 : 0;
}

bool strict_eq(value& a, value& b) {
  char sa[VAL_NUMBUF], sb[VAL_NUMBUF];
  std::string_view ta = val_text_of(a, sa), tb = val_text_of(b, sb);
  return ta.size() == tb.size() && memcmp(ta.data(), tb.data(), ta.size()) == 0;
}

bool truth_of(value& v, int which, int& out, int& bad) {
  if (rx_truth(v, out)) return true;
  bad = which;
  return false;
}

// A bracket index: a positive whole number taken to 9 digits.
bool index_of(value& v, long long& n) {
  if (!val_make_num(v)) return false;
  double d = rx_round(v.val_num, 9);
  if (d != std::floor(d) || d < 1 || d > 2e9) return false;
  n = (long long)d;
  return true;
}

}  // namespace

// ---- arithmetic ------------------------------------------------------------

bool fx_plus(value& r, value& a, value& b, int& bad) {
  double x, y;
  if (!operands(a, b, x, y, bad)) return false;
  double v = x + y;
  return result(r, v, sum_dec(v, x, a.val_dec, y, b.val_dec), bad);
}

bool fx_min(value& r, value& a, value& b, int& bad) {
  double x, y;
  if (!operands(a, b, x, y, bad)) return false;
  double v = x - y;
  return result(r, v, sum_dec(v, x, a.val_dec, y, b.val_dec), bad);
}

bool fx_mult(value& r, value& a, value& b, int& bad) {
  double x, y;
  if (!operands(a, b, x, y, bad)) return false;
  int da = a.val_dec < 0 ? 0 : a.val_dec, db = b.val_dec < 0 ? 0 : b.val_dec;
  int dec = a.val_dec < 0 && b.val_dec < 0 ? -1 : da + db;
  if (dec > RX_MAX_DIGITS) dec = RX_MAX_DIGITS;
  return result(r, x * y, dec, bad);
}

bool fx_div(value& r, value& a, value& b, int& bad) {
  double x, y;
  if (!divide(a, b, x, y, bad)) return false;
  return result(r, x / y, -1, bad);
}

bool fx_idiv(value& r, value& a, value& b, int& bad) {
  double x, y;
  if (!divide(a, b, x, y, bad)) return false;
  double q = std::trunc(x / y);
  if (std::isfinite(q) && too_long(q)) {
    bad = 3;
    rx_fail(26, idiv_long);
    return false;
  }
  return result(r, q, -1, bad);
}

bool fx_rem(value& r, value& a, value& b, int& bad) {
  double x, y;
  if (!divide(a, b, x, y, bad)) return false;
  double q = std::trunc(x / y);
  if (std::isfinite(q) && too_long(q)) {
    bad = 3;
    rx_fail(26, rem_long);
    return false;
  }
  double v = x == y ? 0 : x - q * y;
  if (v != 0 && (v < 0) != (x < 0)) v = -v;
  return result(r, v, -1, bad);
}

bool fx_exp(value& r, value& a, value& b, int& bad) {
  double x, y;
  if (!operands(a, b, x, y, bad)) return false;
  return result(r, std::pow(x, y), -1, bad);
}

bool fx_uplus(value& r, value& a, int& bad) {
  if (!val_make_num(a)) {
    bad = 1;
    rx_fail(41);
    return false;
  }
  return result(r, rx_round(a.val_num, rx_numeric.digits + 1), a.val_dec, bad);
}

bool fx_umin(value& r, value& a, int& bad) {
  if (!val_make_num(a)) {
    bad = 1;
    rx_fail(41);
    return false;
  }
  return result(r, -rx_round(a.val_num, rx_numeric.digits + 1), a.val_dec, bad);
}

// ---- logic -----------------------------------------------------------------

bool rx_truth(value& v, int& out) {
  if (val_make_num(v)) {
    double d = rx_round(v.val_num, rx_numeric.digits);
    if (d == 0 || d == 1) {
      out = (int)d;
      return true;
    }
  }
  rx_fail(34);
  return false;
}

bool fx_not(value& r, value& a, int& bad) {
  int x;
  if (!truth_of(a, 1, x, bad)) return false;
  set_bool(r, !x);
  return true;
}

bool fx_or(value& r, value& a, value& b, int& bad) {
  int x, y;
  if (!truth_of(a, 1, x, bad) || !truth_of(b, 2, y, bad)) return false;
  set_bool(r, x | y);
  return true;
}

bool fx_and(value& r, value& a, value& b, int& bad) {
  int x, y;
  if (!truth_of(a, 1, x, bad) || !truth_of(b, 2, y, bad)) return false;
  set_bool(r, x & y);
  return true;
}

bool fx_xor(value& r, value& a, value& b, int& bad) {
  int x, y;
  if (!truth_of(a, 1, x, bad) || !truth_of(b, 2, y, bad)) return false;
  set_bool(r, x ^ y);
  return true;
}

// ---- concatenation and length -------------------------------------------------

bool fx_conc(value& r, value& a, value& b, int& bad) {
  char sb[VAL_NUMBUF];
  return join(r, a, {}, val_text_of(b, sb), bad);
}

bool fx_bl(value& r, value& a, value& b, int& bad) {
  char sb[VAL_NUMBUF];
  return join(r, a, " ", val_text_of(b, sb), bad);
}

bool fx_conc_not(value& r, value& a, value& b, int& bad) {
  int y;
  if (!truth_of(b, 2, y, bad)) return false;
  return join(r, a, " ", y ? "0" : "1", bad);
}

bool fx_rho(value& r, value& a, int&) {
  char sa[VAL_NUMBUF];
  r.set_num((double)val_text_of(a, sa).size(), -1);
  return true;
}

bool fx_conc_rho(value& r, value& a, value& b, int& bad) {
  char sb[VAL_NUMBUF], len[24];
  int n = snprintf(len, sizeof len, "%zu", val_text_of(b, sb).size());
  return join(r, a, " ", std::string_view(len, (size_t)n), bad);
}

// ---- comparison ------------------------------------------------------------

int rx_compare(value& a, value& b) { return compare(a, b, false); }

bool fx_eq(value& r, value& a, value& b, int&) {
  set_bool(r, compare(a, b, false) == 0);
  return true;
}
bool fx_neq(value& r, value& a, value& b, int&) {
  set_bool(r, compare(a, b, false) != 0);
  return true;
}
bool fx_sup(value& r, value& a, value& b, int&) {
  set_bool(r, compare(a, b, false) > 0);
  return true;
}
bool fx_inf(value& r, value& a, value& b, int&) {
  set_bool(r, compare(a, b, false) < 0);
  return true;
}
bool fx_supeq(value& r, value& a, value& b, int&) {
  set_bool(r, compare(a, b, false) >= 0);
  return true;
}
bool fx_infeq(value& r, value& a, value& b, int&) {
  set_bool(r, compare(a, b, false) <= 0);
  return true;
}
bool fx_eqic(value& r, value& a, value& b, int&) {
  set_bool(r, compare(a, b, true) == 0);
  return true;
}
bool fx_neqic(value& r, value& a, value& b, int&) {
  set_bool(r, compare(a, b, true) != 0);
  return true;
}
bool fx_eeq(value& r, value& a, value& b, int&) {
  set_bool(r, strict_eq(a, b));
  return true;
}
bool fx_nneq(value& r, value& a, value& b, int&) {
  set_bool(r, !strict_eq(a, b));
  return true;
}
bool fx_ssup(value& r, value& a, value& b, int&) {
  set_bool(r, strict(a, b) > 0);
  return true;
}
bool fx_iinf(value& r, value& a, value& b, int&) {
  set_bool(r, strict(a, b) < 0);
  return true;
}
bool fx_ssupeq(value& r, value& a, value& b, int&) {
  set_bool(r, strict(a, b) >= 0);
  return true;
}
bool fx_iinfeq(value& r, value& a, value& b, int&) {
  set_bool(r, strict(a, b) <= 0);
  return true;
}

// ---- backquote and brackets ----------------------------------------------------

bool fx_backq(value& r, value& a, int&) {
  std::string cmd = val_string(a);
  std::string out;
  if (FILE* f = popen(cmd.c_str(), "r")) {
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, f)) > 0) out.append(buf, n);
    pclose(f);
  }
  if (!out.empty() && out.back() == '\n') out.pop_back();
  r.set_str(out);
  return true;
}

bool fx_br(value& r, value& x, value* i, value* j, bool colon, int& bad) {
  long long first = 1, last = 0;
  if (i && !index_of(*i, first)) {
    bad = 3;
    rx_fail(78, colon || j ? "The first index evaluates to \"" + val_string(*i) + "\""
                           : std::string("The index must be a positive integer."));
    return false;
  }
  if (j && !index_of(*j, last)) {
    bad = 3;
    rx_fail(78, "The last index evaluates to \"" + val_string(*j) + "\"");
    return false;
  }
  char sx[VAL_NUMBUF];
  std::string_view t = val_text_of(x, sx);
  long long len = (long long)t.size();
  if (!j) last = colon ? len : first;
  if (first > len) {
    r.set_str("", 0);
    return true;
  }
  if (last < first) {
    bad = 3;
    rx_fail(78, "The second index must be greater than the first.");
    return false;
  }
  value out;
  char* p = out.make_str((size_t)(last - first + 1));
  for (long long k = first; k <= last; k++) *p++ = k <= len ? t[(size_t)(k - 1)] : ' ';
  r = std::move(out);
  return true;
}

bool fx_br2(value& r, value& x, value& i, value& j, int& bad) {
  return fx_br(r, x, &i, &j, true, bad);
}
