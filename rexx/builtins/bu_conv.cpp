// Built-in functions of the conversion family: between characters, hex,
// binary and decimal (C2X, X2C, B2X, X2B, C2D, D2C, D2X, X2D), the bitwise
// BITAND/BITOR/BITXOR, and the type test DATATYPE.
#include <cctype>
#include <cmath>
#include <cstring>
#include <string>

#include "rexx/builtins/builtins.h"

namespace {

const char hexdig[] = "0123456789ABCDEF";

int hexval(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// The digits of a hex or binary text with its blanks removed, or false when
// a character is not a digit of that base. Blanks may only separate groups:
// every group after the first holds a whole byte (hex) or nibble (binary).
bool digits_of(std::string_view s, int base, std::string& out) {
  out.clear();
  size_t group = base == 16 ? 2 : 4, run = 0;
  bool first = true;
  for (size_t i = 0; i <= s.size(); i++) {
    if (i == s.size() || s[i] == ' ') {
      if (run == 0 || (!first && run != group)) return s.empty();
      first = false;
      run = 0;
      continue;
    }
    int v = hexval(s[i]);
    if (v < 0 || v >= base) return false;
    out += s[i];
    run++;
  }
  return true;
}

// The bytes a hex text stands for, the first byte taking a lone digit.
std::string hex_bytes(const std::string& h) {
  std::string out;
  size_t i = 0;
  if (h.size() % 2) out += (char)hexval(h[i++]);
  for (; i < h.size(); i += 2) out += (char)(hexval(h[i]) * 16 + hexval(h[i + 1]));
  return out;
}

int not_hex(bu_frame& f) { return bu_fail(f, 0, "argument 1 must be a hexadecimal string."); }

// Bytes as an unsigned or, with a length, two's-complement signed number.
int bytes_to_number(bu_frame& f, value& r, const std::string& bytes) {
  long long n;
  if (int e = bu_whole(f, 1, 0, -1, n)) return e;
  std::string b = bytes;
  if (n >= 0) {
    if (b.size() > (size_t)n) b = b.substr(b.size() - (size_t)n);
    b.insert(0, (size_t)n - b.size(), '\0');
  }
  double v = 0;
  for (char c : b) v = v * 256 + (unsigned char)c;
  if (n > 0 && ((unsigned char)b[0] & 0x80)) v -= std::pow(256.0, (double)n);
  if (!std::isfinite(v)) return bu_fail_num(f, 42, 0, "the result is too large.");
  r.set_num(v);
  return 0;
}

// A whole number as bytes: minimal when unsigned, exactly `len` bytes of
// two's complement when a length is given.
int number_to_bytes(bu_frame& f, std::string& out) {
  if (int e = bu_count(f, 1, 2)) return e;
  long long v, len;
  if (int e = bu_integer(f, 0, 0, v)) return e;
  if (int e = bu_whole(f, 1, 0, -1, len)) return e;
  if (v < 0 && len < 0) return bu_fail(f, 0, "argument 1 must be a positive integer.");
  unsigned long long u = (unsigned long long)v;
  out.clear();
  if (len < 0) {
    do {
      out.insert(out.begin(), (char)(u & 255));
      u >>= 8;
    } while (u);
  } else {
    for (long long i = 0; i < len; i++) {
      out.insert(out.begin(), (char)(i < 8 ? (u & 255) : (v < 0 ? 255 : 0)));
      if (i < 8) u >>= 8;
    }
  }
  return 0;
}

std::string to_hex(std::string_view s) {
  std::string out;
  for (unsigned char c : s) {
    out += hexdig[c >> 4];
    out += hexdig[c & 15];
  }
  return out;
}

int bitop(bu_frame& f, value& r, int op) {
  if (int e = bu_count(f, 1, 3)) return e;
  std::string a(bu_text(f, 0));
  std::string_view b = bu_text(f, 1);
  char pad;
  if (int e = bu_pad(f, 2, pad)) return e;
  bool padded = bu_has(f, 2);
  std::string lon = a.size() >= b.size() ? a : std::string(b);
  std::string_view sh = a.size() >= b.size() ? b : std::string_view(a);
  for (size_t i = 0; i < lon.size(); i++) {
    if (i >= sh.size() && !padded) break;
    unsigned char x = (unsigned char)lon[i], y = i < sh.size() ? (unsigned char)sh[i] : (unsigned char)pad;
    lon[i] = (char)(op == 0 ? x & y : op == 1 ? x | y : x ^ y);
  }
  r.set_str(lon);
  return 0;
}

bool all_of(std::string_view s, int (*test)(int)) {
  for (unsigned char c : s)
    if (!test(c)) return false;
  return true;
}

bool symbol_text(std::string_view s) {
  if (s.empty()) return false;
  for (unsigned char c : s)
    if (!isalnum(c) && !strchr("@#$.!?_", c) && c != 0xA8) return false;
  return true;
}

}  // namespace

int bu_b2x(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string bits;
  if (!digits_of(bu_text(f, 0), 2, bits)) return bu_fail(f, 0, "argument 1 must be a binary string.");
  bits.insert(0, (4 - bits.size() % 4) % 4, '0');
  std::string out;
  for (size_t i = 0; i < bits.size(); i += 4)
    out += hexdig[(bits[i] - '0') * 8 + (bits[i + 1] - '0') * 4 + (bits[i + 2] - '0') * 2 + (bits[i + 3] - '0')];
  r.set_str(out);
  return 0;
}

int bu_bitand(bu_frame& f, value& r) { return bitop(f, r, 0); }
int bu_bitor(bu_frame& f, value& r) { return bitop(f, r, 1); }
int bu_bitxor(bu_frame& f, value& r) { return bitop(f, r, 2); }

int bu_c2d(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 2)) return e;
  return bytes_to_number(f, r, std::string(bu_text(f, 0)));
}

int bu_c2x(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  r.set_str(to_hex(bu_text(f, 0)));
  return 0;
}

int bu_d2c(bu_frame& f, value& r) {
  std::string bytes;
  if (int e = number_to_bytes(f, bytes)) return e;
  r.set_str(bytes);
  return 0;
}

int bu_d2x(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 2)) return e;
  long long v, len;
  if (int e = bu_integer(f, 0, 0, v)) return e;
  if (int e = bu_whole(f, 1, 0, -1, len)) return e;
  if (v < 0 && len < 0) return bu_fail(f, 0, "argument 1 must be a positive integer.");
  unsigned long long u = (unsigned long long)v;
  std::string h;
  if (len < 0) {
    do {
      h.insert(h.begin(), hexdig[u & 15]);
      u >>= 4;
    } while (u);
  } else {
    // Exactly len hex digits of two's complement.
    for (long long i = 0; i < len; i++) h.insert(h.begin(), i < 16 ? hexdig[(u >> (4 * i)) & 15] : v < 0 ? 'F' : '0');
  }
  r.set_str(h);
  return 0;
}

int bu_x2b(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string h;
  if (!digits_of(bu_text(f, 0), 16, h)) return not_hex(f);
  std::string out;
  for (char c : h) {
    int v = hexval(c);
    for (int b = 3; b >= 0; b--) out += (char)('0' + ((v >> b) & 1));
  }
  r.set_str(out);
  return 0;
}

int bu_x2c(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string h;
  if (!digits_of(bu_text(f, 0), 16, h)) return not_hex(f);
  r.set_str(hex_bytes(h));
  return 0;
}

int bu_x2d(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 2)) return e;
  std::string h;
  if (!digits_of(bu_text(f, 0), 16, h)) return not_hex(f);
  long long n;
  if (int e = bu_whole(f, 1, 0, -1, n)) return e;
  double v = 0;
  if (n >= 0) {
    // n hex digits, the top bit of the first one being the sign.
    if (h.size() > (size_t)n) h = h.substr(h.size() - (size_t)n);
    h.insert(0, (size_t)n - h.size(), '0');
    for (char c : h) v = v * 16 + hexval(c);
    if (n > 0 && hexval(h[0]) >= 8) v -= std::pow(16.0, (double)n);
  } else {
    for (char c : h) v = v * 16 + hexval(c);
  }
  if (!std::isfinite(v)) return bu_fail_num(f, 42, 0, "the result is too large.");
  r.set_num(v);
  return 0;
}

int bu_datatype(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 2)) return e;
  std::string_view s = bu_text(f, 0);
  double d;
  int dec;
  if (!bu_has(f, 1)) {
    r.set_str(f.args[0]->is_num() || rx_text_num(s.data(), s.size(), d, dec) ? "NUM" : "CHAR");
    return 0;
  }
  char t;
  if (int e = bu_option(f, 1, "ABLMNSUWX", 'N', t)) return e;
  std::string tmp;
  bool ok = false;
  switch (t) {
    case 'A': ok = !s.empty() && all_of(s, isalnum); break;
    case 'B': ok = digits_of(s, 2, tmp); break;
    case 'L': ok = !s.empty() && all_of(s, islower); break;
    case 'M': ok = !s.empty() && all_of(s, isalpha); break;
    case 'N': ok = f.args[0]->is_num() || rx_text_num(s.data(), s.size(), d, dec); break;
    case 'S': ok = symbol_text(s); break;
    case 'U': ok = !s.empty() && all_of(s, isupper); break;
    case 'W':
      if (f.args[0]->is_num() || rx_text_num(s.data(), s.size(), d, dec)) {
        if (f.args[0]->is_num()) d = f.args[0]->val_num;
        d = rx_round(d, rx_numeric.digits);
        ok = d == std::floor(d);
      }
      break;
    case 'X': ok = digits_of(s, 16, tmp); break;
  }
  r.set_num(ok ? 1 : 0);
  return 0;
}
