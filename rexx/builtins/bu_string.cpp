// Built-in functions of the string family: cutting, padding, searching,
// replacing and case-folding texts, and the digit-grouping pair COMMA/FWC.
#include <cctype>
#include <cstring>
#include <string>
#include <vector>

#include "rexx/builtins/builtins.h"

namespace {

char up(char c) { return (char)toupper((unsigned char)c); }
char low(char c) { return (char)tolower((unsigned char)c); }

// First position (from 0) of needle in hay at or after `from`, or npos.
size_t find_at(std::string_view hay, std::string_view needle, size_t from, bool ic) {
  if (needle.size() > hay.size()) return std::string_view::npos;
  for (size_t i = from; i + needle.size() <= hay.size(); i++) {
    size_t k = 0;
    while (k < needle.size() &&
           (ic ? low(hay[i + k]) == low(needle[k]) : hay[i + k] == needle[k]))
      k++;
    if (k == needle.size()) return i;
  }
  return std::string_view::npos;
}

// `n` bytes of s padded with pad, placed into r.
void left_pad(value& r, std::string_view s, size_t n, char pad) {
  char* p = r.make_str(n);
  size_t k = s.size() < n ? s.size() : n;
  memcpy(p, s.data(), k);
  memset(p + k, pad, n - k);
}

void set_count(value& r, size_t n) { r.set_num((double)n, -1); }

int string_fold(bu_frame& f, value& r, char (*conv)(char)) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string_view s = bu_text(f, 0);
  std::string out(s);
  for (char& c : out) c = conv(c);
  r.set_str(out);
  return 0;
}

// A comma after every three characters counted from the right.
void group(value& r, std::string_view s) {
  std::string out;
  size_t n = s.size();
  for (size_t i = 0; i < n; i++) {
    if (i && (n - i) % 3 == 0) out += ',';
    out += s[i];
  }
  r.set_str(out);
}

}  // namespace

int bu_abbrev(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 3)) return e;
  std::string_view info = bu_text(f, 0), ab = bu_text(f, 1);
  long long min;
  if (int e = bu_whole(f, 2, 0, (long long)ab.size(), min)) return e;
  bool ok = ab.size() <= info.size() && (long long)ab.size() >= min &&
            info.compare(0, ab.size(), ab) == 0;
  r.set_num(ok ? 1 : 0);
  return 0;
}

int bu_center(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 3)) return e;
  std::string_view s = bu_text(f, 0);
  long long n;
  char pad;
  if (int e = bu_whole(f, 1, 0, 0, n)) return e;
  if (int e = bu_pad(f, 2, pad)) return e;
  size_t len = (size_t)n;
  char* p = r.make_str(len);
  if (s.size() >= len) {
    memcpy(p, s.data() + (s.size() - len) / 2, len);
  } else {
    size_t before = (len - s.size()) / 2;
    memset(p, pad, len);
    memcpy(p + before, s.data(), s.size());
  }
  return 0;
}

int bu_change(bu_frame& f, value& r) {
  if (int e = bu_count(f, 3, 4)) return e;
  std::string_view s = bu_text(f, 0), from = bu_text(f, 1), to = bu_text(f, 2);
  bool ic;
  if (int e = bu_flag(f, 3, ic)) return e;
  if (from.empty()) {
    r.set_str(s);
    return 0;
  }
  std::string out;
  size_t at = 0;
  for (size_t k; (k = find_at(s, from, at, ic)) != std::string_view::npos; at = k + from.size()) {
    out.append(s.substr(at, k - at));
    out.append(to);
  }
  out.append(s.substr(at));
  r.set_str(out);
  return 0;
}

int bu_compare(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 3)) return e;
  std::string_view a = bu_text(f, 0), b = bu_text(f, 1);
  char pad;
  if (int e = bu_pad(f, 2, pad)) return e;
  size_t n = a.size() > b.size() ? a.size() : b.size();
  for (size_t i = 0; i < n; i++) {
    char ca = i < a.size() ? a[i] : pad, cb = i < b.size() ? b[i] : pad;
    if (ca != cb) {
      set_count(r, i + 1);
      return 0;
    }
  }
  set_count(r, 0);
  return 0;
}

int bu_copies(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 2)) return e;
  std::string_view s = bu_text(f, 0);
  long long n;
  if (int e = bu_whole(f, 1, 0, 0, n)) return e;
  if (s.size() * (size_t)n > VAL_MAX_LEN) return bu_fail_num(f, 5, 1, "the result is too long.");
  char* p = r.make_str(s.size() * (size_t)n);
  for (long long i = 0; i < n; i++, p += s.size()) memcpy(p, s.data(), s.size());
  return 0;
}

int bu_delstr(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 3)) return e;
  std::string_view s = bu_text(f, 0);
  long long start, len;
  if (int e = bu_whole(f, 1, 1, 1, start)) return e;
  if (int e = bu_whole(f, 2, 0, (long long)s.size(), len)) return e;
  size_t from = (size_t)start - 1;
  if (from >= s.size()) {
    r.set_str(s);
    return 0;
  }
  std::string out(s.substr(0, from));
  if ((size_t)len < s.size() - from) out.append(s.substr(from + (size_t)len));
  r.set_str(out);
  return 0;
}

int bu_index(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 4)) return e;
  std::string_view hay = bu_text(f, 0), needle = bu_text(f, 1);
  long long start;
  bool ic;
  if (int e = bu_whole(f, 2, 1, 1, start)) return e;
  if (int e = bu_flag(f, 3, ic)) return e;
  size_t k = needle.empty() ? std::string_view::npos : find_at(hay, needle, (size_t)start - 1, ic);
  set_count(r, k == std::string_view::npos ? 0 : k + 1);
  return 0;
}

int bu_insert(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 5)) return e;
  std::string_view ins = bu_text(f, 0), target = bu_text(f, 1);
  long long at, len;
  char pad;
  if (int e = bu_whole(f, 2, 0, 0, at)) return e;
  if (int e = bu_whole(f, 3, 0, (long long)ins.size(), len)) return e;
  if (int e = bu_pad(f, 4, pad)) return e;
  std::string out(target.substr(0, (size_t)at < target.size() ? (size_t)at : target.size()));
  out.resize((size_t)at, pad);
  std::string piece(ins.substr(0, (size_t)len < ins.size() ? (size_t)len : ins.size()));
  piece.resize((size_t)len, pad);
  out += piece;
  if ((size_t)at < target.size()) out.append(target.substr((size_t)at));
  r.set_str(out);
  return 0;
}

int bu_justify(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 3)) return e;
  std::string_view s = bu_text(f, 0);
  long long n;
  char pad;
  if (int e = bu_whole(f, 1, 0, 0, n)) return e;
  if (int e = bu_pad(f, 2, pad)) return e;
  std::vector<std::string_view> words;
  size_t total = 0;
  for (size_t i = 0; i < s.size();) {
    while (i < s.size() && s[i] == ' ') i++;
    size_t b = i;
    while (i < s.size() && s[i] != ' ') i++;
    if (i > b) {
      words.push_back(s.substr(b, i - b));
      total += i - b;
    }
  }
  size_t len = (size_t)n, gaps = words.empty() ? 0 : words.size() - 1;
  std::string out;
  if (gaps == 0 || total + gaps >= len) {
    for (size_t w = 0; w < words.size(); w++) {
      if (w) out += pad;
      out.append(words[w]);
    }
  } else {
    // The spare room goes to the gaps, the leftmost ones getting the extra.
    size_t room = len - total, each = room / gaps, extra = room % gaps;
    for (size_t w = 0; w < words.size(); w++) {
      if (w) out.append(each + (w <= extra ? 1 : 0), pad);
      out.append(words[w]);
    }
  }
  out.resize(len, pad);
  r.set_str(out);
  return 0;
}

int bu_lastpos(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 3)) return e;
  std::string_view needle = bu_text(f, 0), hay = bu_text(f, 1);
  long long start;
  if (int e = bu_whole(f, 2, 1, (long long)hay.size(), start)) return e;
  size_t res = 0;
  if (!needle.empty() && needle.size() <= hay.size()) {
    size_t last = (size_t)start < hay.size() ? (size_t)start : hay.size();
    for (size_t i = last >= needle.size() ? last - needle.size() + 1 : 0; i > 0; i--)
      if (hay.compare(i - 1, needle.size(), needle) == 0) {
        res = i;
        break;
      }
  }
  set_count(r, res);
  return 0;
}

int bu_left(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 3)) return e;
  std::string_view s = bu_text(f, 0);
  long long n;
  char pad;
  if (int e = bu_whole(f, 1, 0, 0, n)) return e;
  if (int e = bu_pad(f, 2, pad)) return e;
  left_pad(r, s, (size_t)n, pad);
  return 0;
}

int bu_length(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  set_count(r, bu_text(f, 0).size());
  return 0;
}

int bu_lower(bu_frame& f, value& r) { return string_fold(f, r, low); }
int bu_upper(bu_frame& f, value& r) { return string_fold(f, r, up); }

int bu_overlay(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 5)) return e;
  std::string_view ov = bu_text(f, 0), target = bu_text(f, 1);
  long long at, len;
  char pad;
  if (int e = bu_whole(f, 2, 1, 1, at)) return e;
  if (int e = bu_whole(f, 3, 0, (long long)ov.size(), len)) return e;
  if (int e = bu_pad(f, 4, pad)) return e;
  std::string out(target);
  size_t from = (size_t)at - 1, end = from + (size_t)len;
  if (out.size() < end) out.resize(end, pad);
  for (size_t i = 0; i < (size_t)len; i++) out[from + i] = i < ov.size() ? ov[i] : pad;
  r.set_str(out);
  return 0;
}

int bu_pos(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 3)) return e;
  std::string_view needle = bu_text(f, 0), hay = bu_text(f, 1);
  long long start;
  if (int e = bu_whole(f, 2, 1, 1, start)) return e;
  size_t k = needle.empty() ? std::string_view::npos : find_at(hay, needle, (size_t)start - 1, false);
  set_count(r, k == std::string_view::npos ? 0 : k + 1);
  return 0;
}

int bu_reverse(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string out(bu_text(f, 0));
  std::string(out.rbegin(), out.rend()).swap(out);
  r.set_str(out);
  return 0;
}

int bu_right(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 3)) return e;
  std::string_view s = bu_text(f, 0);
  long long n;
  char pad;
  if (int e = bu_whole(f, 1, 0, 0, n)) return e;
  if (int e = bu_pad(f, 2, pad)) return e;
  size_t len = (size_t)n;
  value t;
  char* p = t.make_str(len);
  if (s.size() >= len) {
    memcpy(p, s.data() + s.size() - len, len);
  } else {
    memset(p, pad, len - s.size());
    memcpy(p + len - s.size(), s.data(), s.size());
  }
  r = std::move(t);
  return 0;
}

int bu_strip(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 3)) return e;
  std::string_view s = bu_text(f, 0);
  char opt, ch;
  if (int e = bu_option(f, 1, "BLT", 'B', opt)) return e;
  if (int e = bu_pad(f, 2, ch)) return e;
  size_t b = 0, n = s.size();
  if (opt != 'T')
    while (b < n && s[b] == ch) b++;
  if (opt != 'L')
    while (n > b && s[n - 1] == ch) n--;
  value t(s.data() + b, n - b);
  r = std::move(t);
  return 0;
}

int bu_substr(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 4)) return e;
  std::string_view s = bu_text(f, 0);
  long long start, len;
  char pad;
  if (int e = bu_whole(f, 1, 1, 1, start)) return e;
  size_t from = (size_t)start - 1;
  long long rest = from < s.size() ? (long long)(s.size() - from) : 0;
  if (int e = bu_whole(f, 2, 0, rest, len)) return e;
  if (int e = bu_pad(f, 3, pad)) return e;
  value t;
  char* p = t.make_str((size_t)len);
  for (size_t i = 0; i < (size_t)len; i++) p[i] = from + i < s.size() ? s[from + i] : pad;
  r = std::move(t);
  return 0;
}

int bu_translate(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 4)) return e;
  std::string out(bu_text(f, 0));
  if (!bu_has(f, 1) && !bu_has(f, 2)) {  // no tables: upper case
    for (char& c : out) c = up(c);
    r.set_str(out);
    return 0;
  }
  std::string_view to = bu_text(f, 1);
  char pad;
  if (int e = bu_pad(f, 3, pad)) return e;
  std::string from;
  if (bu_has(f, 2)) {
    from = std::string(bu_text(f, 2));
  } else {
    for (int c = 0; c < 256; c++) from += (char)c;
  }
  // Last-to-first so that the first occurrence in the input table wins.
  short map[256];
  for (int c = 0; c < 256; c++) map[c] = (short)c;
  for (size_t i = from.size(); i-- > 0;)
    map[(unsigned char)from[i]] = (unsigned char)(i < to.size() ? to[i] : pad);
  for (char& c : out) c = (char)map[(unsigned char)c];
  r.set_str(out);
  return 0;
}

int bu_verify(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 4)) return e;
  std::string_view s = bu_text(f, 0), ref = bu_text(f, 1);
  char opt;
  long long start;
  if (int e = bu_option(f, 2, "MN", 'N', opt)) return e;
  if (int e = bu_whole(f, 3, 1, 1, start)) return e;
  bool in[256] = {};
  for (char c : ref) in[(unsigned char)c] = true;
  size_t res = 0;
  for (size_t i = (size_t)start - 1; i < s.size(); i++)
    if (in[(unsigned char)s[i]] == (opt == 'M')) {
      res = i + 1;
      break;
    }
  set_count(r, res);
  return 0;
}

int bu_xrange(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 2)) return e;
  unsigned char ends[2] = {0, 255};
  for (int i = 0; i < 2; i++) {
    if (!bu_has(f, i)) continue;
    std::string_view t = bu_text(f, i);
    if (t.size() != 1) return bu_fail(f, i, "argument " + std::to_string(i + 1) + " must be one character wide.");
    ends[i] = (unsigned char)t[0];
  }
  std::string out;
  for (unsigned c = ends[0];; c = (c + 1) & 255) {
    out += (char)c;
    if (c == ends[1]) break;
  }
  r.set_str(out);
  return 0;
}

int bu_comma(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string_view s = bu_text(f, 0);
  if (s.size() <= 6) {
    r.set_str(s);
  } else {
    group(r, s);
  }
  return 0;
}

int bu_fwc(bu_frame& f, value& r) {
  if (f.argc != 1 || !f.args[0]) return bu_fail(f, 0, "needs 1 argument.");
  group(r, bu_text(f, 0));
  return 0;
}
