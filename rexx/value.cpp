// The value record's storage: inline short texts, heap texts beyond that,
// numbers in the same slot; the NUMERIC settings and the current error.
#include "rexx/value.h"

#include "rexx/run.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <strings.h>

rx_numeric_t rx_numeric;
int rx_err_num = 0;
std::string rx_err_text;

int rx_fail(int num, std::string_view text) {
  rx_err_num = num;
  rx_err_text.assign(text.data(), text.size());
  return num;
}

void value::release() {
  if (val_type == VAL_STR && val_cap) free(val_text);
  val_cap = 0;
}

void value::take(value& o) noexcept {
  val_type = o.val_type;
  val_dec = o.val_dec;
  val_len = o.val_len;
  val_cap = 0;
  if (o.val_type == VAL_NUM) {
    val_num = o.val_num;
  } else if (o.val_cap) {
    val_text = o.val_text;
    val_cap = o.val_cap;
    o.val_cap = 0;
    o.val_text = o.val_small;
    o.val_small[0] = 0;
    o.val_len = 0;
  } else {
    memcpy(val_small, o.val_small, (size_t)o.val_len + 1);
    val_text = val_small;
  }
}

value& value::operator=(const value& o) {
  if (this == &o) return *this;
  if (o.val_type == VAL_NUM) {
    set_num(o.val_num, o.val_dec);
  } else {
    set_str(o.val_text, (size_t)o.val_len);
  }
  return *this;
}

value& value::operator=(value&& o) noexcept {
  if (this == &o) return *this;
  release();
  take(o);
  return *this;
}

void (*rx_nomem_hook)(size_t size) = nullptr;

void rx_nomem(size_t size) {
  if (rx_nomem_hook) rx_nomem_hook(size);
  throw std::bad_alloc();
}

char* value::make_str(size_t n) {
  if (val_type != VAL_STR) {
    val_type = VAL_STR;
    val_cap = 0;
    val_text = val_small;
  }
  val_dec = -1;
  if (n < (size_t)VAL_INLINE) {
    if (val_cap) free(val_text);
    val_cap = 0;
    val_text = val_small;
  } else if ((size_t)val_cap <= n) {
    if (val_cap) free(val_text);
    size_t cap = n + 1 + n / 4;
    val_text = (char*)malloc(cap);
    if (!val_text) {
      val_text = val_small; // the record stays whole for whoever unwinds it
      val_cap = val_len = 0;
      val_small[0] = 0;
      rx_nomem(cap);
    }
    val_cap = (int32_t)cap;
  }
  val_len = (int32_t)n;
  val_text[n] = 0;
  return val_text;
}

void value::set_str(const char* s, size_t n) {
  // s may point into this record's own text: keep it alive while copying.
  if (val_type == VAL_STR && s >= val_text && s <= val_text + val_len) {
    memmove(val_text, s, n);
    val_text[n] = 0;
    val_len = (int32_t)n;
    return;
  }
  char* p = make_str(n);
  if (n) memcpy(p, s, n);
}

void value::append(const char* s, size_t n) {
  if (val_type == VAL_NUM) {
    char buf[VAL_NUMBUF];
    int k = rx_num_text(val_num, val_dec, buf);
    set_str(buf, (size_t)k);
  }
  size_t old = (size_t)val_len, need = old + n;
  if (need < (size_t)(val_cap ? val_cap : VAL_INLINE)) {
    memmove(val_text + old, s, n);
  } else {
    size_t cap = need + 1 + need / 2;
    char* p = (char*)malloc(cap);
    if (!p) rx_nomem(cap);
    memcpy(p, val_text, old);
    memcpy(p + old, s, n);  // s may be our own text: copy before freeing it
    if (val_cap) free(val_text);
    val_text = p;
    val_cap = (int32_t)cap;
  }
  val_len = (int32_t)need;
  val_text[need] = 0;
}

// ---- NUMERIC ---------------------------------------------------------------

namespace {

// A NUMERIC operand as a whole number, or the error text's prefix when not.
bool numeric_whole(value* v, long long& n) {
  return rx_whole(*v, n) == 0;
}

std::string evaluates(value& v) {
  return "Expression evaluates to \"" + val_string(v);
}

}  // namespace

int rx_set_digits(value* v) {
  if (!v) {
    if (rx_numeric.fuzz >= 9)
      return rx_fail(26, "Expression evaluates to \"9\"; must be a positive integer > to the current \"" +
                             std::to_string(rx_numeric.fuzz) + "\" NUMERIC DIGITS setting.");
    rx_numeric.digits = 9;
    return 0;
  }
  long long n = 0;
  if (!numeric_whole(v, n) || n < 1 || n > RX_MAX_DIGITS)
    return rx_fail(26, evaluates(*v) + "\"; must be a positive integer <= 15");
  if (n <= rx_numeric.fuzz)
    return rx_fail(26, evaluates(*v) + "\"; must be a positive integer > to the current \"" +
                           std::to_string(rx_numeric.fuzz) + "\" NUMERIC DIGITS setting.");
  rx_numeric.digits = (int)n;
  return 0;
}

int rx_set_fuzz(value* v) {
  if (!v) {
    rx_numeric.fuzz = 0;
    return 0;
  }
  long long n = 0;
  if (!numeric_whole(v, n) || n < 0 || n >= rx_numeric.digits)
    return rx_fail(26, evaluates(*v) + "\"; must be a positive integer < " +
                           std::to_string(rx_numeric.digits));
  rx_numeric.fuzz = (int)n;
  return 0;
}

int rx_set_form(value* v) {
  if (!v) {
    rx_numeric.engineering = false;
    return 0;
  }
  std::string t = val_string(*v);
  if (strcasecmp(t.c_str(), "SCIENTIFIC") == 0) {
    rx_numeric.engineering = false;
  } else if (strcasecmp(t.c_str(), "ENGINEERING") == 0) {
    rx_numeric.engineering = true;
  } else {
    return rx_fail(25, evaluates(*v) + "\"");
  }
  return 0;
}

std::string rx_numeric_text() {
  char buf[64];
  snprintf(buf, sizeof buf, rx_numeric.engineering ? "%d %d ENGINEERING" : "%d %d SCIENTIFIC",
           rx_numeric.digits, rx_numeric.fuzz);
  return buf;
}
