// DATE and TIME: the current local date and time in every output form, and
// the conversion of a date or time given in one form into another. Dates are
// held as a day number from 1 January of year 1 in the Gregorian calendar,
// so every conversion is one parse into that number and one rendering out.
#include <cctype>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>
#include <sys/time.h>

#include "rexx/builtins/builtins.h"

namespace {

const char* const month_names[] = {"January", "February", "March",     "April",   "May",      "June",
                                   "July",    "August",   "September", "October", "November", "December"};
const char* const day_names[] = {"Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday", "Sunday"};

// Days from 1 January of year 1 (day 0) to y-m-d, proleptic Gregorian.
long long base_of(long long y, int m, int d) {
  y -= m <= 2;
  long long era = (y >= 0 ? y : y - 399) / 400;
  long long yoe = y - era * 400;
  long long doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  long long doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 306;  // day 0 is 0001-01-01
}

struct ymd {
  long long y;
  int m, d;
};

ymd civil_of(long long base) {
  long long z = base + 306;
  long long era = (z >= 0 ? z : z - 146096) / 146097;
  long long doe = z - era * 146097;
  long long yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  long long doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  long long mp = (5 * doy + 2) / 153;
  int d = (int)(doy - (153 * mp + 2) / 5 + 1);
  int m = (int)(mp < 10 ? mp + 3 : mp - 9);
  return {yoe + era * 400 + (m <= 2), m, d};
}

bool leap(long long y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

int month_days(long long y, int m) {
  static const int n[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return m == 2 && leap(y) ? 29 : n[m - 1];
}

// The present moment in local time, read once per call.
struct moment {
  long long base;  // day number
  long secs;       // seconds since midnight
  long usec;       // microseconds
  long long unix_secs;
};

moment now() {
  timeval tv;
  gettimeofday(&tv, nullptr);
  time_t t = tv.tv_sec;
  tm lt;
  localtime_r(&t, &lt);
  return {base_of(lt.tm_year + 1900, lt.tm_mon + 1, lt.tm_mday),
          lt.tm_hour * 3600L + lt.tm_min * 60L + lt.tm_sec, (long)tv.tv_usec, (long long)t};
}

// A two-digit year taken to the window of the 50 years before and 49 after
// the present one, as the language asks.
long long widen_year(long long yy) {
  long long cur = civil_of(now().base).y;
  long long y = cur - cur % 100 + yy;
  if (y > cur + 49) y -= 100;
  else if (y < cur - 50) y += 100;
  return y;
}

// Unsigned decimal digits only; false for anything else or nothing.
bool digits(std::string_view s, long long& out) {
  if (s.empty() || s.size() > 12) return false;
  out = 0;
  for (char c : s) {
    if (c < '0' || c > '9') return false;
    out = out * 10 + (c - '0');
  }
  return true;
}

// Seconds since the epoch, possibly negative, as local time.
bool local_of_epoch(std::string_view s, tm& lt) {
  long long a;
  bool neg = !s.empty() && s[0] == '-';
  if (!digits(neg ? s.substr(1) : s, a)) return false;
  time_t t = (time_t)(neg ? -a : a);
  return localtime_r(&t, &lt) != nullptr;
}

// Splits "a<sep>b<sep>c" into three parts.
bool three(std::string_view s, char sep, std::string_view part[3]) {
  for (int i = 0; i < 2; i++) {
    size_t k = sep ? s.find(sep) : std::string_view::npos;
    if (!sep) {
      // No separator: two-digit fields, the last one taking what is left.
      if (s.size() < 3) return false;
      k = i == 0 && s.size() == 8 ? 4 : 2;
      part[i] = s.substr(0, k);
      s.remove_prefix(k);
      continue;
    }
    if (k == std::string_view::npos) return false;
    part[i] = s.substr(0, k);
    s.remove_prefix(k + 1);
  }
  part[2] = s;
  return true;
}

bool valid_date(long long y, long long m, long long d) {
  return y >= 1 && y <= 9999 && m >= 1 && m <= 12 && d >= 1 && d <= month_days(y, (int)m);
}

// Reads a date in form `fmt` into a day number; false when it is not one.
bool parse_date(std::string_view s, char fmt, char sep, long long& base) {
  std::string_view p[3];
  long long a, b, c;
  switch (fmt) {
  case 'B':
    if (!digits(s, a) || a > 3652058) return false;
    base = a;
    return true;
  case 'C': {
    if (!digits(s, a) || a > 36524 * 2) return false;
    long long cur = civil_of(now().base).y;
    if (a < 1) return false;
    base = base_of(cur - cur % 100, 1, 1) + a - 1;
    return true;
  }
  case 'D': {
    long long cur = civil_of(now().base).y;
    if (!digits(s, a) || a < 1 || a > (leap(cur) ? 366 : 365)) return false;
    base = base_of(cur, 1, 1) + a - 1;
    return true;
  }
  case 'T': {
    tm lt;
    if (!local_of_epoch(s, lt)) return false;
    base = base_of(lt.tm_year + 1900, lt.tm_mon + 1, lt.tm_mday);
    return true;
  }
  case 'N': {
    // "dd Mon yyyy" with the month's first three letters.
    std::string_view q[3];
    if (!three(s, sep ? sep : ' ', q) || q[1].size() != 3 || !digits(q[0], a) || !digits(q[2], c) ||
        q[2].size() != 4)
      return false;
    int m = 0;
    for (int i = 0; i < 12; i++)
      if (strncmp(month_names[i], q[1].data(), 3) == 0) m = i + 1;
    if (!m || !valid_date(c, m, a)) return false;
    base = base_of(c, m, (int)a);
    return true;
  }
  case 'S':
    if (sep) {
      if (!three(s, sep, p)) return false;
    } else {
      if (s.size() != 8) return false;
      p[0] = s.substr(0, 4), p[1] = s.substr(4, 2), p[2] = s.substr(6, 2);
    }
    if (p[0].size() != 4 || !digits(p[0], a) || !digits(p[1], b) || !digits(p[2], c) || !valid_date(a, b, c))
      return false;
    base = base_of(a, (int)b, (int)c);
    return true;
  case 'I':
    if (!three(s, sep ? sep : '-', p) || p[0].size() != 4 || !digits(p[0], a) || !digits(p[1], b) ||
        !digits(p[2], c) || !valid_date(a, b, c))
      return false;
    base = base_of(a, (int)b, (int)c);
    return true;
  case 'E':
  case 'O':
  case 'U': {
    if (sep && !three(s, sep, p)) return false;
    if (!sep && (s.size() != 8 || !three(s, '/', p))) return false;
    long long v[3];
    for (int i = 0; i < 3; i++)
      if (p[i].size() != 2 || !digits(p[i], v[i])) return false;
    long long y = fmt == 'O' ? v[0] : v[2], m = fmt == 'U' ? v[0] : v[1],
              d = fmt == 'E' ? v[0] : fmt == 'U' ? v[1] : v[2];
    y = widen_year(y);
    if (!valid_date(y, m, d)) return false;
    base = base_of(y, (int)m, (int)d);
    return true;
  }
  }
  return false;
}

std::string two(long long n) {
  char b[8];
  snprintf(b, sizeof b, "%02lld", n % 100);
  return b;
}

// Renders a day number in form `fmt`; sep < 0 asks for the form's own.
std::string render_date(long long base, char fmt, int sep, long secs) {
  ymd c = civil_of(base);
  char buf[64];
  auto joined = [&](std::string a, std::string b, std::string d, char dflt) {
    char s = sep < 0 ? dflt : (char)sep;
    std::string out = a;
    if (s) out += s;
    out += b;
    if (s) out += s;
    return out + d;
  };
  switch (fmt) {
  case 'B': return std::to_string(base);
  // Days of the century so far, today included.
  case 'C': return std::to_string(base - base_of(c.y - c.y % 100, 1, 1) + 1);
  case 'D': return std::to_string(base - base_of(c.y, 1, 1) + 1);
  case 'E': return joined(two(c.d), two(c.m), two(c.y), '/');
  case 'I':
    snprintf(buf, sizeof buf, "%04lld", c.y);
    return joined(buf, two(c.m), two(c.d), '-');
  case 'J':
    snprintf(buf, sizeof buf, "%02lld%03lld", c.y % 100, base - base_of(c.y, 1, 1) + 1);
    return buf;
  case 'M': return month_names[c.m - 1];
  case 'N':
    snprintf(buf, sizeof buf, "%d", c.d);
    return joined(buf, std::string(month_names[c.m - 1], 3), std::to_string(c.y), ' ');
  case 'O': return joined(two(c.y), two(c.m), two(c.d), '/');
  case 'S':
    snprintf(buf, sizeof buf, "%04lld", c.y);
    return joined(buf, two(c.m), two(c.d), 0);
  case 'T': {
    // Seconds since the epoch at that day's local time of day.
    tm lt{};
    lt.tm_year = (int)c.y - 1900;
    lt.tm_mon = c.m - 1;
    lt.tm_mday = c.d;
    lt.tm_sec = (int)secs;
    lt.tm_isdst = -1;
    return std::to_string((long long)mktime(&lt));
  }
  case 'U': return joined(two(c.m), two(c.d), two(c.y), '/');
  case 'W': return day_names[base % 7];
  }
  return {};
}

// A separator argument: one character or empty; only the forms that have
// separators take one.
int separator(bu_frame& f, int i, char fmt, int& sep) {
  sep = -1;
  if (!bu_has(f, i)) return 0;
  std::string_view t = bu_text(f, i);
  if (t.size() > 1 || (t.size() == 1 && isalnum((unsigned char)t[0])) || !strchr("EINOSU", fmt))
    return bu_fail(f, i, "argument " + std::to_string(i + 1) + " must be one separator character for this format.");
  sep = t.empty() ? 0 : t[0];
  return 0;
}

// ---- time ----------------------------------------------------------------------

// The elapsed-time clock of the process: started by the first TIME('E') or
// TIME('R').
bool clock_started = false;
timeval clock_start;

std::string elapsed(bool reset) {
  timeval tv;
  gettimeofday(&tv, nullptr);
  std::string out = "0";
  if (clock_started) {
    long long us = (tv.tv_sec - clock_start.tv_sec) * 1000000LL + (tv.tv_usec - clock_start.tv_usec);
    char b[40];
    snprintf(b, sizeof b, "%lld.%06lld", us / 1000000, us % 1000000);
    out = b;
  }
  if (reset || !clock_started) clock_start = tv;
  clock_started = true;
  return out;
}

std::string render_time(long secs, long usec, char fmt, long long unix_secs) {
  char b[48];
  long h = secs / 3600, m = secs / 60 % 60, s = secs % 60;
  switch (fmt) {
  case 'C':
    snprintf(b, sizeof b, "%ld:%02ld%s", h % 12 == 0 ? 12 : h % 12, m, h < 12 ? "am" : "pm");
    return b;
  case 'H': return std::to_string(h);
  case 'L': snprintf(b, sizeof b, "%02ld:%02ld:%02ld.%06ld", h, m, s, usec); return b;
  case 'M': return std::to_string(secs / 60);
  case 'N': snprintf(b, sizeof b, "%02ld:%02ld:%02ld", h, m, s); return b;
  case 'S': return std::to_string(secs);
  case 'T': return std::to_string(unix_secs);
  }
  return {};
}

// Reads a time of day in form `fmt` into seconds and microseconds.
bool parse_time(std::string_view s, char fmt, long& secs, long& usec) {
  long long a, b, c;
  usec = 0;
  switch (fmt) {
  case 'H':
    if (!digits(s, a) || a > 23) return false;
    secs = (long)a * 3600;
    return true;
  case 'M':
    if (!digits(s, a) || a > 1439) return false;
    secs = (long)a * 60;
    return true;
  case 'S':
    if (!digits(s, a) || a > 86399) return false;
    secs = (long)a;
    return true;
  case 'T': {
    tm lt;
    if (!local_of_epoch(s, lt)) return false;
    secs = lt.tm_hour * 3600L + lt.tm_min * 60L + lt.tm_sec;
    return true;
  }
  case 'C': {
    size_t colon = s.find(':');
    if (colon == std::string_view::npos || s.size() != colon + 5) return false;
    std::string_view ap = s.substr(colon + 3);
    if (!digits(s.substr(0, colon), a) || !digits(s.substr(colon + 1, 2), b) || a < 1 || a > 12 || b > 59 ||
        (ap != "am" && ap != "pm"))
      return false;
    secs = (long)((a % 12 + (ap == "pm" ? 12 : 0)) * 3600 + b * 60);
    return true;
  }
  case 'N':
  case 'L': {
    if (s.size() < 8 || s[2] != ':' || s[5] != ':' || !digits(s.substr(0, 2), a) || !digits(s.substr(3, 2), b) ||
        !digits(s.substr(6, 2), c) || a > 23 || b > 59 || c > 59)
      return false;
    secs = (long)(a * 3600 + b * 60 + c);
    if (s.size() == 8) return true;
    if (fmt == 'N' || s[8] != '.' || s.size() > 15) return false;
    long long frac;
    if (!digits(s.substr(9), frac)) return false;
    for (size_t n = s.size() - 9; n < 6; n++) frac *= 10;
    usec = (long)frac;
    return true;
  }
  }
  return false;
}

int not_in_format(bu_frame& f, std::string_view in, char fmt) {
  return bu_fail(f, 1,
                 "argument 2 \"" + std::string(in) + "\" is not in the format described by \"" + fmt + "\".");
}

}  // namespace

int bu_date(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 5)) return e;
  char out;
  if (int e = bu_option(f, 0, "BCDEIJMNOSTUW", 'N', out)) return e;
  int osep, isep;
  if (int e = separator(f, 3, out, osep)) return e;
  moment m = now();
  long long base = m.base;
  long secs = m.secs;
  if (bu_has(f, 1)) {
    char in;
    if (int e = bu_option(f, 2, "BCDEINOSTU", 'N', in)) return e;
    if (int e = separator(f, 4, in, isep)) return e;
    std::string_view t = bu_text(f, 1);
    if (!parse_date(t, in, isep < 0 ? 0 : (char)isep, base)) return not_in_format(f, t, in);
    secs = 0;
    if (in == 'T') {
      long us;
      parse_time(t, 'T', secs, us);
    }
  } else if (bu_has(f, 2) || bu_has(f, 4)) {
    return bu_fail(f, 1, "argument 2 must be given with argument 3.");
  }
  if (out == 'T' && !bu_has(f, 1)) {
    r.set_num((double)m.unix_secs, 0);
    return 0;
  }
  r.set_str(render_date(base, out, osep, secs));
  return 0;
}

int bu_time(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 3)) return e;
  char out;
  if (int e = bu_option(f, 0, "CEHLMNORST", 'N', out)) return e;
  if (out == 'E' || out == 'R') {
    if (f.argc > 1) return bu_fail(f, 1, "must receive 0 or 1 argument with option E or R.");
    r.set_str(elapsed(out == 'R'));
    return 0;
  }
  moment m = now();
  if (out == 'O') {
    // The local zone's offset from UTC in microseconds.
    time_t t = (time_t)m.unix_secs;
    tm lt;
    localtime_r(&t, &lt);
    r.set_num((double)lt.tm_gmtoff * 1e6, 0);
    return 0;
  }
  long secs = m.secs, usec = m.usec;
  long long unix_secs = m.unix_secs;
  if (bu_has(f, 1)) {
    char in;
    if (int e = bu_option(f, 2, "CHLMNST", 'N', in)) return e;
    std::string_view t = bu_text(f, 1);
    if (!parse_time(t, in, secs, usec)) return not_in_format(f, t, in);
    unix_secs = m.unix_secs - m.secs + secs;
  } else if (bu_has(f, 2)) {
    return bu_fail(f, 1, "argument 2 must be given with argument 3.");
  }
  r.set_str(render_time(secs, usec, out, unix_secs));
  return 0;
}
