// The interpreter's value record, the NUMERIC state, the current run-time
// error, and the operators (fx_*) that compute over value records.
//
// A value is either an IEEE double or a string; there is no decimal
// arithmetic. NUMERIC DIGITS is imitated by rounding doubles through text.
// Short texts live inside the record so that most values never touch the heap.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

enum : int32_t {
  VAL_NUM = 0,  // val_num holds the value
  VAL_STR = 1,  // val_text holds the value
};

constexpr int VAL_INLINE = 24;   // texts up to 23 bytes stay inside the record
constexpr int VAL_NUMBUF = 40;   // room for any rendered number, NUL included
constexpr int RX_MAX_DIGITS = 15;
constexpr size_t VAL_MAX_LEN = (size_t)1 << 30;  // longest text; beyond it error 5

struct value {
  int32_t val_type = VAL_STR;  // VAL_NUM or VAL_STR
  int32_t val_dec = -1;        // for a number: decimals to show 0..15, -1 as computed
  union {
    double val_num;   // the number, when val_type is VAL_NUM
    char* val_text;   // NUL-ended text, when val_type is VAL_STR
  };
  int32_t val_len = 0;         // text length, for a string
  int32_t val_cap = 0;         // heap capacity of val_text; 0 while it points at val_small
  char val_small[VAL_INLINE];  // inline storage for short texts

  value() : val_text(val_small) { val_small[0] = 0; }
  explicit value(double d, int dec = -1) : val_type(VAL_NUM), val_dec(dec), val_num(d) {}
  value(const char* s, size_t n) : val_text(val_small) { set_str(s, n); }
  explicit value(std::string_view s) : value(s.data(), s.size()) {}
  value(const value& o) : val_text(val_small) { *this = o; }
  value(value&& o) noexcept : val_text(val_small) { take(o); }
  ~value() { release(); }
  value& operator=(const value& o);
  value& operator=(value&& o) noexcept;

  bool is_num() const { return val_type == VAL_NUM; }
  void set_num(double d, int dec = -1) {
    release();
    val_type = VAL_NUM;
    val_num = d;
    val_dec = dec;
  }
  void set_str(const char* s, size_t n);
  void set_str(std::string_view s) { set_str(s.data(), s.size()); }
  // Makes the record a string of n bytes (content undefined, NUL placed) and
  // gives the buffer to fill.
  char* make_str(size_t n);
  // Appends to a string value (a number is rendered first).
  void append(const char* s, size_t n);
  // The text of a string value; only valid when !is_num().
  std::string_view str() const { return {val_text, (size_t)val_len}; }

 private:
  void release();
  void take(value& o) noexcept;
};

// ---- memory ------------------------------------------------------------------

// A block of `size` bytes the interpreter could not get: rx_nomem_hook (see
// run.h) when the program set one, else std::bad_alloc, which ends the run
// with error 5.
[[noreturn]] void rx_nomem(size_t size);

// ---- NUMERIC settings ------------------------------------------------------

struct rx_numeric_t {
  int digits = 9;            // NUMERIC DIGITS, 1..15
  int fuzz = 0;              // NUMERIC FUZZ, 0..digits-1
  bool engineering = false;  // NUMERIC FORM: false scientific, true engineering
};
extern rx_numeric_t rx_numeric;  // the settings in force; saved per internal routine

// Validate and apply NUMERIC DIGITS / FUZZ / FORM. A null value means the
// operand was omitted. They return 0 or an error number (rx_err_text set).
int rx_set_digits(value* v);
int rx_set_fuzz(value* v);
int rx_set_form(value* v);
// The PARSE NUMERIC text: "%d %d SCIENTIFIC" or "%d %d ENGINEERING".
std::string rx_numeric_text();

// ---- the current run-time error ---------------------------------------------

extern int rx_err_num;           // number of the error being raised, 0 none
extern std::string rx_err_text;  // its supplementary text, may be empty

// Records an error and gives its number, so a failing path can end with
// `return rx_fail(41, "...")`.
int rx_fail(int num, std::string_view text = {});

// ---- numbers and text --------------------------------------------------------

// Reads a text as a number by the language's rules; dec gets the count of
// decimals the text showed (at most 15, 0 with an exponent).
bool rx_text_num(const char* s, size_t n, double& out, int& dec);
// Converts a value to a number in place; false when it is not a number.
bool val_make_num(value& v);
// Renders a number at the current DIGITS and FORM; buf holds VAL_NUMBUF bytes.
// Gives the length.
int rx_num_text(double d, int dec, char* buf);
// Text of any value: a number is rendered into scratch (VAL_NUMBUF bytes).
std::string_view val_text_of(const value& v, char* scratch);
// Text of any value as an owned string (tests and slow paths).
std::string val_string(const value& v);
// Rounds d to `digits` significant digits through text; whole numbers and
// counts of 15 or more leave it as it is. The common whole-number case is
// settled inline; rx_round_frac does the rest.
double rx_round_frac(double d, int digits);
inline double rx_round(double d, int digits) {
  // Every double from 2^53 up is whole; below, a cast tells without a call.
  if (digits >= RX_MAX_DIGITS || !(d < 9e15 && d > -9e15) || (double)(long long)d == d) return d;
  return rx_round_frac(d, digits);
}
// Whole-number argument: numeric, rounded to 9 digits, and integral.
// Gives 0, or 1 when not a number, 2 when not whole.
int rx_whole(value& v, long long& out);

// ---- operators -------------------------------------------------------------
//
// Each writes its result into r (which may be one of the operands) and gives
// true, or gives false with rx_err_num set and `bad` naming the operand to
// blame: 1 left, 2 right, 3 none in particular. Operands may be converted to
// numbers in place, so callers pass copies of variables they must not alter.

using fx_bin = bool (*)(value& r, value& a, value& b, int& bad);
using fx_un = bool (*)(value& r, value& a, int& bad);

bool fx_plus(value& r, value& a, value& b, int& bad);
bool fx_min(value& r, value& a, value& b, int& bad);
bool fx_mult(value& r, value& a, value& b, int& bad);
bool fx_div(value& r, value& a, value& b, int& bad);
bool fx_idiv(value& r, value& a, value& b, int& bad);
bool fx_rem(value& r, value& a, value& b, int& bad);
bool fx_exp(value& r, value& a, value& b, int& bad);
bool fx_uplus(value& r, value& a, int& bad);
bool fx_umin(value& r, value& a, int& bad);

bool fx_not(value& r, value& a, int& bad);
bool fx_or(value& r, value& a, value& b, int& bad);
bool fx_and(value& r, value& a, value& b, int& bad);
bool fx_xor(value& r, value& a, value& b, int& bad);
// The logical test of IF, WHEN, WHILE and the conditional | and &: gives 0
// or 1 in out, or false (error 34) for anything else.
bool rx_truth(value& v, int& out);

bool fx_conc(value& r, value& a, value& b, int& bad);
bool fx_bl(value& r, value& a, value& b, int& bad);
bool fx_conc_not(value& r, value& a, value& b, int& bad);
bool fx_rho(value& r, value& a, int& bad);
bool fx_conc_rho(value& r, value& a, value& b, int& bad);

bool fx_eq(value& r, value& a, value& b, int& bad);
bool fx_neq(value& r, value& a, value& b, int& bad);
bool fx_sup(value& r, value& a, value& b, int& bad);
bool fx_inf(value& r, value& a, value& b, int& bad);
bool fx_supeq(value& r, value& a, value& b, int& bad);
bool fx_infeq(value& r, value& a, value& b, int& bad);
bool fx_eqic(value& r, value& a, value& b, int& bad);
bool fx_neqic(value& r, value& a, value& b, int& bad);
bool fx_eeq(value& r, value& a, value& b, int& bad);
bool fx_nneq(value& r, value& a, value& b, int& bad);
bool fx_ssup(value& r, value& a, value& b, int& bad);
bool fx_iinf(value& r, value& a, value& b, int& bad);
bool fx_ssupeq(value& r, value& a, value& b, int& bad);
bool fx_iinfeq(value& r, value& a, value& b, int& bad);
// The normal comparison itself: <0, 0, >0, with FUZZ applied.
int rx_compare(value& a, value& b);

bool fx_backq(value& r, value& a, int& bad);
// x[i] (j null, colon false), x[i:j], x[i:] (j null, colon true), x[:j] (i null).
bool fx_br(value& r, value& x, value* i, value* j, bool colon, int& bad);
// x[i:j] with both indexes; the same as fx_br with a colon.
bool fx_br2(value& r, value& x, value& i, value& j, int& bad);
