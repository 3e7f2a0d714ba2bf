// Built-in functions over numbers: ABS, SIGN, TRUNC, MAX, MIN, FORMAT and
// the NUMERIC settings as functions (DIGITS, FUZZ, FORM).
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "rexx/builtins/builtins.h"

namespace {

int number_arg(bu_frame& f, int i) {
  if (!val_make_num(*f.args[i]))
    return bu_fail(f, i, "argument " + std::to_string(i + 1) + " must be a number.");
  return 0;
}

// Decimals written in a plain number text.
int decimals_of(const std::string& t) {
  size_t dot = t.find('.');
  return dot == std::string::npos ? 0 : (int)(t.size() - dot - 1);
}

// Removes the zeros after an exponent's sign, keeping one digit.
void tidy_exponent(std::string& t) {
  size_t e = t.find('E');
  if (e == std::string::npos || e + 2 >= t.size()) return;
  size_t d = e + 2;
  while (d + 1 < t.size() && t[d] == '0') t.erase(d, 1);
}

// "%.*E" of v at a precision, with trailing zeros of the mantissa cut unless
// `keep`, and an exponent of 0 cut.
std::string exponential(double v, int prec, bool keep) {
  std::string t((size_t)snprintf(nullptr, 0, "%.*E", prec, v), ' ');
  snprintf(t.data(), t.size() + 1, "%.*E", prec, v);
  size_t e = t.find('E');
  std::string mant = t.substr(0, e), ex = t.substr(e);
  if (!keep && mant.find('.') != std::string::npos) {
    while (mant.back() == '0') mant.pop_back();
    if (mant.back() == '.') mant.pop_back();
  }
  if (atoi(ex.c_str() + 1) == 0) return mant;
  t = mant + ex;
  tidy_exponent(t);
  return t;
}

// v in plain notation with `after` decimals, rounded half up on its decimal
// digits at the current DIGITS, so 1.005 gives 1.01 although the double is
// a shade below it.
std::string fixed(double v, int after) {
  char buf[64];
  snprintf(buf, sizeof buf, "%.*e", rx_numeric.digits - 1, std::fabs(v));
  char* e = strchr(buf, 'e');
  std::string d(1, buf[0]);
  if (buf[1] == '.') d.append(buf + 2, (size_t)(e - buf - 2));
  int point = atoi(e + 1) + 1;  // digits before the decimal point
  if (v == 0) point = 1;
  long keep = (long)point + after;
  if (keep < 0) {
    d.clear();
  } else if ((size_t)keep < d.size()) {
    bool up = d[(size_t)keep] >= '5';
    d.resize((size_t)keep);
    for (size_t i = d.size(); up && i-- > 0;) {
      up = d[i] == '9';
      d[i] = up ? '0' : (char)(d[i] + 1);
    }
    if (up) {
      d.insert(d.begin(), '1');
      point++;
    }
  }
  std::string ip, fp;
  if (point > 0) {
    d.resize(std::max(d.size(), (size_t)point + (size_t)after), '0');
    ip = d.substr(0, (size_t)point);
    fp = d.substr((size_t)point, (size_t)after);
  } else {
    ip = "0";
    fp = std::string((size_t)-point, '0') + d;
    fp.resize((size_t)after, '0');
  }
  bool nonzero = (ip + fp).find_first_not_of('0') != std::string::npos;
  return (v < 0 && nonzero ? "-" : "") + ip + (after ? "." + fp : "");
}

int extreme(bu_frame& f, value& r, int sign) {
  if (f.argc < 1) return bu_fail(f, 0, "must receive at least 1 argument.");
  int best = -1;
  for (int i = 0; i < f.argc; i++) {
    if (!f.args[i]) return bu_fail(f, i, "argument " + std::to_string(i + 1) + " must be a number.");
    if (int e = number_arg(f, i)) return e;
    if (best < 0 || rx_compare(*f.args[i], *f.args[best]) * sign > 0) best = i;
  }
  r.set_num(rx_round(f.args[best]->val_num, rx_numeric.digits), f.args[best]->val_dec);
  return 0;
}

int setting(bu_frame& f, value& r, double v) {
  if (int e = bu_count(f, 0, 0)) return e;
  r.set_num(v);
  return 0;
}

}  // namespace

int bu_abs(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  if (int e = number_arg(f, 0)) return e;
  r.set_num(std::fabs(rx_round(f.args[0]->val_num, rx_numeric.digits)), f.args[0]->val_dec);
  return 0;
}

int bu_sign(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  if (int e = number_arg(f, 0)) return e;
  double v = rx_round(f.args[0]->val_num, rx_numeric.digits);
  r.set_num(v > 0 ? 1 : v < 0 ? -1 : 0);
  return 0;
}

int bu_trunc(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 2)) return e;
  if (int e = number_arg(f, 0)) return e;
  long long d;
  if (int e = bu_whole(f, 1, 0, 0, d)) return e;
  if (d > RX_MAX_DIGITS) d = RX_MAX_DIGITS;
  double v = rx_round(f.args[0]->val_num, rx_numeric.digits);
  // Cut the decimals in text, where 0.29 stays 0.29 rather than 0.28999...
  char buf[400];
  snprintf(buf, sizeof buf, "%.*f", (int)d + 3, v);
  char* dot = strchr(buf, '.');
  if (dot) dot[d ? d + 1 : 0] = 0;
  r.set_num(strtod(buf, nullptr), (int)d);
  return 0;
}

int bu_max(bu_frame& f, value& r) { return extreme(f, r, 1); }
int bu_min(bu_frame& f, value& r) { return extreme(f, r, -1); }

int bu_digits(bu_frame& f, value& r) { return setting(f, r, rx_numeric.digits); }
int bu_fuzz(bu_frame& f, value& r) { return setting(f, r, rx_numeric.fuzz); }

int bu_form(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  r.set_str(rx_numeric.engineering ? "ENGINEERING" : "SCIENTIFIC");
  return 0;
}

int bu_format(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 5)) return e;
  if (int e = number_arg(f, 0)) return e;
  long long before, after, expp, expt;
  if (int e = bu_whole(f, 1, 0, -1, before)) return e;
  if (int e = bu_whole(f, 2, 0, -1, after)) return e;
  if (int e = bu_whole(f, 3, 0, -1, expp)) return e;
  if (int e = bu_whole(f, 4, 0, rx_numeric.digits, expt)) return e;
  if (after > 300) after = 300;
  double v = rx_round(f.args[0]->val_num, rx_numeric.digits);
  std::string t;
  if (after >= 0) {
    t = fixed(v, (int)after);
  } else {
    char buf[VAL_NUMBUF];
    t.assign(buf, (size_t)rx_num_text(v, f.args[0]->val_dec, buf));
  }
  bool plain_only = before < 0 && after < 0 && expp < 0 && !bu_has(f, 4);
  if (!plain_only) {
    size_t e = t.find('E');
    if (expp != 0 && e == std::string::npos) {
      // Too many digits for plain notation: switch to exponential.
      size_t sign = t[0] == '-' ? 1 : 0, dot = t.find('.');
      size_t ilen = (dot == std::string::npos ? t.size() : dot) - sign;
      size_t dlen = dot == std::string::npos ? 0 : t.size() - dot - 1;
      bool tiny = ilen == 1 && t[sign] == '0';
      if ((!tiny && ilen > (size_t)expt) || dlen > 2 * (size_t)expt) {
        int prec = after >= 0 ? (int)after : (int)std::min<size_t>(t.size() - 2, RX_MAX_DIGITS);
        t = exponential(v, prec, after >= 0);
      }
    } else if (expp == 0 && e != std::string::npos) {
      // Exponent not allowed: spell the number out.
      std::string mant = t.substr(0, e);
      int decs = after >= 0 ? (int)after : std::max(0, decimals_of(mant) - atoi(t.c_str() + e + 1));
      char buf[700];
      snprintf(buf, sizeof buf, "%.*f", std::min(decs, 300), v);
      t = buf;
    }
    e = t.find('E');
    if (expp > 0 && e != std::string::npos) {
      int ex = atoi(t.c_str() + e + 1);
      char buf[64];
      int n = snprintf(buf, sizeof buf, ex < 0 ? "-%.*d" : "+%.*d", (int)expp, ex < 0 ? -ex : ex);
      if (n - 1 > expp) return bu_fail(f, 3, "not enought room for exponent");
      t = t.substr(0, e + 1) + buf;
    }
  }
  if (before >= 0) {
    size_t dot = t.find_first_of(".E");
    size_t ilen = dot == std::string::npos ? t.size() : dot;
    if (ilen > (size_t)before) return bu_fail(f, 1, "argument 2 is too small.");
    t.insert(0, (size_t)before - ilen, ' ');
  }
  r.set_str(t);
  return 0;
}
