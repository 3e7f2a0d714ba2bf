// Trigonometry, PI and RANDOM. Angles are in radians unless the last
// argument says "D" (degrees); results are numbers rendered at the current
// NUMERIC DIGITS like any other.
#include <cmath>
#include <random>
#include <string>

#include "rexx/builtins/builtins.h"

namespace {

constexpr double pi_value = 3.14159265358979323846;

int number(bu_frame& f, int i, double& out) {
  if (!val_make_num(*f.args[i])) return bu_fail(f, i, "argument " + std::to_string(i + 1) + " must be a number.");
  out = f.args[i]->val_num;
  return 0;
}

bool degrees_wanted(bu_frame& f, int i, int& err) {
  char u;
  err = bu_option(f, i, "DR", 'R', u);
  return u == 'D';
}

using math_fn = double (*)(double);

struct trig_row {
  const char* name;  // for matching the frame's name
  math_fn fn;
  bool inverse;      // takes a ratio and gives an angle
};

double f_sin(double x) { return std::sin(x); }
double f_cos(double x) { return std::cos(x); }
double f_tan(double x) { return std::tan(x); }
double f_asin(double x) { return std::asin(x); }
double f_acos(double x) { return std::acos(x); }
double f_atan(double x) { return std::atan(x); }

constexpr trig_row trig_rows[] = {
    {"SIN", f_sin, false},  {"COS", f_cos, false},  {"TAN", f_tan, false},
    {"ASIN", f_asin, true}, {"ACOS", f_acos, true}, {"ATAN", f_atan, true},
};

// One body for the six: the row is found by the frame's name.
int trig(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 2)) return e;
  const trig_row* row = nullptr;
  for (const trig_row& t : trig_rows)
    if (std::string(t.name) == f.name) row = &t;
  double x = 0;
  if (int e = number(f, 0, x)) return e;
  int err = 0;
  bool deg = degrees_wanted(f, 1, err);
  if (err) return err;
  if (row->inverse && row->fn != f_atan && (x < -1 || x > 1))
    return bu_fail(f, 0, "argument 1 must be between -1 and 1.");
  double v;
  if (row->inverse) {
    v = row->fn(x);
    if (deg) v = v * 180 / pi_value;
  } else {
    if (deg) x = std::fmod(x, 360) * pi_value / 180;
    v = row->fn(x);
  }
  if (!std::isfinite(v)) return bu_fail(f, 0, "argument 1 has no result.");
  if (std::fabs(v) < 1e-15) v = 0;
  r.set_num(v);
  return 0;
}

std::mt19937& engine() {
  static std::mt19937 e(std::random_device{}());
  return e;
}

}  // namespace

int bu_sin(bu_frame& f, value& r) { return trig(f, r); }
int bu_cos(bu_frame& f, value& r) { return trig(f, r); }
int bu_tan(bu_frame& f, value& r) { return trig(f, r); }
int bu_asin(bu_frame& f, value& r) { return trig(f, r); }
int bu_acos(bu_frame& f, value& r) { return trig(f, r); }
int bu_atan(bu_frame& f, value& r) { return trig(f, r); }

int bu_pi(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  r.set_num(pi_value);
  return 0;
}

// RANDOM([min] [, max] [, seed]), or RANDOM(max) alone: a whole number in
// [min, max], 0 to 999 by default, the range at most 100000 wide. A seed
// makes the sequence that follows repeatable.
int bu_random(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 3)) return e;
  long long lo = 0, hi = 999, seed;
  if (bu_has(f, 0) && !bu_has(f, 1) && f.argc == 1) {
    if (int e = bu_whole(f, 0, 0, 0, hi)) return e;
  } else {
    if (int e = bu_whole(f, 0, 0, 0, lo)) return e;
    if (int e = bu_whole(f, 1, 0, 999, hi)) return e;
    if (!bu_has(f, 1) && lo > hi) hi = lo + 999 > 999999999 ? 999999999 : lo + 999;
  }
  if (hi < lo) return bu_fail(f, 1, "argument 2 must not be below argument 1.");
  if (hi - lo > 100000) return bu_fail(f, 1, "the range of argument 1 to argument 2 must not exceed 100000.");
  if (bu_has(f, 2)) {
    if (int e = bu_whole(f, 2, 0, 0, seed)) return e;
    engine().seed((unsigned)seed);
  }
  std::uniform_int_distribution<long long> d(lo, hi);
  r.set_num((double)d(engine()), 0);
  return 0;
}
