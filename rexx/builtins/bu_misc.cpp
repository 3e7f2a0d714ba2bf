// The library's own string extensions (RPOS, UPPERW, C2O, OBF, DEOBF), the
// stem functions SORT and PARG, the classic regular expressions (REGCOMP,
// REGEXEC, RCHANGE), and small queries (LINESIZE, EXTERNALS).
#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <regex.h>
#include <string>
#include <sys/ioctl.h>
#include <unistd.h>
#include <vector>

#include "rexx/builtins/builtins.h"

namespace {

// ---- scrambling ---------------------------------------------------------------
//
// OBF and DEOBF: a keyed byte scrambling, stable across runs and hosts, so
// that a text scrambled once can be unscrambled by any later run. The key
// stream is made at run time from a fixed seed text; each byte is XORed with
// the stream and with the previous clear byte, so equal bytes do not show.

uint32_t key_seed() {
  static const char seed_text[] = "molba keyed scrambling, first form";
  uint32_t h = 2166136261u;
  for (const char* p = seed_text; *p; p++) h = (h ^ (unsigned char)*p) * 16777619u;
  return h;
}

unsigned char key_byte(uint32_t& state) {
  state ^= state << 13;
  state ^= state >> 17;
  state ^= state << 5;
  return (unsigned char)(state >> 8);
}

int hexval(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  c = (char)tolower((unsigned char)c);
  return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

// ---- SORT -----------------------------------------------------------------------

struct sort_key {
  char kind;            // a, n, x, z (lower case)
  bool descending;
  long first, last;     // columns from 1; last 0 for the end
};

// The kinds: a compares bytes, n numbers, x bytes ignoring case, z numbers
// where text that is not one sorts after every number, by its bytes.
bool parse_columns(std::string_view spec, std::vector<sort_key>& keys) {
  std::vector<std::string> w;
  size_t p = 0;
  while (p < spec.size()) {
    while (p < spec.size() && spec[p] == ' ') p++;
    size_t s = p;
    while (p < spec.size() && spec[p] != ' ') p++;
    if (p > s) w.emplace_back(spec.substr(s, p - s));
  }
  if (w.size() % 3) return false;
  for (size_t i = 0; i < w.size(); i += 3) {
    if (w[i].size() != 1 || !strchr("aAnNxXzZ", w[i][0])) return false;
    char* e;
    long a = strtol(w[i + 1].c_str(), &e, 10);
    if (*e || a < 1) return false;
    long b = 0;
    if (w[i + 2] != "*") {
      b = strtol(w[i + 2].c_str(), &e, 10);
      if (*e || b < a) return false;
    }
    keys.push_back({(char)tolower((unsigned char)w[i][0]), (bool)isupper((unsigned char)w[i][0]), a, b});
  }
  return true;
}

std::string_view field(const std::string& s, const sort_key& k) {
  if ((size_t)k.first > s.size()) return {};
  size_t n = k.last ? (size_t)(k.last - k.first + 1) : std::string::npos;
  return std::string_view(s).substr((size_t)k.first - 1, n);
}

bool as_number(std::string_view t, double& d) {
  int dec;
  while (!t.empty() && t.front() == ' ') t.remove_prefix(1);
  while (!t.empty() && t.back() == ' ') t.remove_suffix(1);
  return rx_text_num(t.data(), t.size(), d, dec);
}

int compare_bytes(std::string_view a, std::string_view b, bool fold) {
  size_t n = std::min(a.size(), b.size());
  for (size_t i = 0; i < n; i++) {
    int x = (unsigned char)a[i], y = (unsigned char)b[i];
    if (fold) x = tolower(x), y = tolower(y);
    if (x != y) return x < y ? -1 : 1;
  }
  return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

}  // namespace

// RPOS(needle, haystack [, start]): the position of the last occurrence of
// needle that begins at or before start (default: the end), searching from
// the right; 0 when none. The same answer LASTPOS gives, under the name the
// library's users know.
int bu_rpos(bu_frame& f, value& r) { return bu_lastpos(f, r); }

// UPPERW(string): every word with its first letter in upper case and the
// rest as it was.
int bu_upperw(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string_view s = bu_text(f, 0);
  char* out = r.make_str(s.size());
  bool start = true;
  for (size_t i = 0; i < s.size(); i++) {
    char c = s[i];
    out[i] = start && c != ' ' ? (char)toupper((unsigned char)c) : c;
    start = c == ' ' || c == '\t';
  }
  return 0;
}

// C2O(string): the bytes read as one unsigned binary number, written in
// octal without leading zeros ("0" for an empty string), as C2X writes hex.
int bu_c2o(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string_view s = bu_text(f, 0);
  std::string out;
  int acc = 0, bits = 0;
  for (size_t i = s.size(); i-- > 0;) {
    acc |= (unsigned char)s[i] << bits;
    bits += 8;
    while (bits >= 3) {
      out += (char)('0' + (acc & 7));
      acc >>= 3;
      bits -= 3;
    }
  }
  if (bits) out += (char)('0' + acc);
  while (out.size() > 1 && out.back() == '0') out.pop_back();
  if (out.empty()) out = "0";
  std::reverse(out.begin(), out.end());
  r.set_str(out);
  return 0;
}

int bu_obf(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string_view s = bu_text(f, 0);
  static const char hx[] = "0123456789abcdef";
  char* out = r.make_str(s.size() * 2);
  uint32_t st = key_seed();
  unsigned char prev = 0x5a;
  for (size_t i = 0; i < s.size(); i++) {
    unsigned char c = (unsigned char)s[i];
    unsigned char o = (unsigned char)(c ^ key_byte(st) ^ prev);
    prev = c;
    out[2 * i] = hx[o >> 4];
    out[2 * i + 1] = hx[o & 15];
  }
  return 0;
}

int bu_deobf(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string_view s = bu_text(f, 0);
  if (s.size() % 2) return bu_fail(f, 0, "argument 1 must be a scrambled text.");
  std::string out(s.size() / 2, '\0');
  uint32_t st = key_seed();
  unsigned char prev = 0x5a;
  for (size_t i = 0; i < out.size(); i++) {
    int h = hexval(s[2 * i]), l = hexval(s[2 * i + 1]);
    if (h < 0 || l < 0) return bu_fail(f, 0, "argument 1 must be a scrambled text.");
    unsigned char c = (unsigned char)((h * 16 + l) ^ key_byte(st) ^ prev);
    out[i] = (char)c;
    prev = c;
  }
  r.set_str(out);
  return 0;
}

int bu_sort(bu_frame& f, value& r) {
  if (f.argc > 4) return bu_fail(f, 4, "up to 4 arguments allowed.");
  if (!bu_has(f, 0)) return bu_fail(f, 0, "must receive 1 to 4 arguments.");
  std::string stem = bu_symbol_case(bu_text(f, 0));
  if (!stem.empty() && stem.back() == '.') stem.pop_back();
  if (stem.empty() || !bu_valid_symbol(stem) || stem.find('.') != std::string::npos)
    return bu_fail(f, 0, "\"" + std::string(bu_text(f, 0)) + "\" is not a valid REXX symbol.");
  std::vector<sort_key> keys;
  if (bu_has(f, 1) && !parse_columns(bu_text(f, 1), keys))
    return bu_fail(f, 1, "Invalid columns \"" + std::string(bu_text(f, 1)) + "\" SORT() parameters.");
  if (keys.empty()) keys.push_back({'a', false, 1, 0});
  long long first = 1, last = 0;  // last comes from argument 4 or the stem's count
  for (int i = 2; i < 4; i++) {
    if (!bu_has(f, i)) continue;
    long long n;
    if (rx_whole(*f.args[i], n) != 0 || n < 0)
      return bu_fail(f, i, "Argument " + std::to_string(i + 1) + " (" + std::string(bu_text(f, i)) +
                               ") is not a valid number.");
    (i == 2 ? first : last) = n;
  }
  if (!bu_has(f, 3)) {
    std::string n0 = bu_get_text(stem + ".0");
    double d;
    if (!as_number(n0, d) || d != (double)(long long)d || d < 0)
      return bu_fail(f, 0, stem + ".0 (" + n0 + ") is not a valid number.");
    last = (long long)d;
  }
  std::vector<std::string> items;
  for (long long i = first; i <= last; i++) items.push_back(bu_get_text(stem + "." + std::to_string(i)));
  // Numeric keys are read once, before the sort, so a bad one is reported.
  std::vector<std::vector<double>> nums(items.size(), std::vector<double>(keys.size(), 0));
  std::vector<std::vector<char>> isnum(items.size(), std::vector<char>(keys.size(), 0));
  for (size_t i = 0; i < items.size(); i++)
    for (size_t k = 0; k < keys.size(); k++) {
      if (keys[k].kind != 'n' && keys[k].kind != 'z') continue;
      std::string_view t = field(items[i], keys[k]);
      isnum[i][k] = as_number(t, nums[i][k]);
      if (!isnum[i][k] && keys[k].kind == 'n')
        return bu_fail(f, 1, "Invalid number (\"" + std::string(t) + "\") for " + stem + "." +
                                 std::to_string(first + (long long)i) + " on columns " +
                                 std::to_string(keys[k].first) + "-" +
                                 (keys[k].last ? std::to_string(keys[k].last) : "*"));
    }
  std::vector<size_t> order(items.size());
  for (size_t i = 0; i < order.size(); i++) order[i] = i;
  std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) {
    for (size_t k = 0; k < keys.size(); k++) {
      const sort_key& key = keys[k];
      int c;
      if ((key.kind == 'n' || key.kind == 'z') && isnum[a][k] && isnum[b][k])
        c = nums[a][k] < nums[b][k] ? -1 : nums[a][k] > nums[b][k] ? 1 : 0;
      else if (key.kind == 'z' && isnum[a][k] != isnum[b][k])
        c = isnum[a][k] ? -1 : 1;
      else
        c = compare_bytes(field(items[a], key), field(items[b], key), key.kind == 'x');
      if (c) return key.descending ? c > 0 : c < 0;
    }
    return false;
  });
  for (size_t i = 0; i < order.size(); i++) {
    std::string at = std::to_string(first + (long long)i);
    bu_set_var(stem + "." + at, items[order[i]]);
    bu_set_var(stem + "." + bu_symbol_case("SortOrder") + "." + at, std::to_string(order[i] + 1));
  }
  r.set_num((double)items.size(), 0);
  return 0;
}

// PARG(string, layout, stem [, strip]): cuts a record of fixed fields into a
// stem. The layout lists pairs of a field name and its width; each field
// takes the next width characters (a width of * takes the rest) and is put
// in stem.name, with trailing blanks removed when strip is 1. Gives the
// count of characters used.
int bu_parg(bu_frame& f, value& r) {
  if (int e = bu_count(f, 3, 4)) return e;
  std::string_view rec = bu_text(f, 0);
  std::string layout(bu_text(f, 1));
  std::vector<std::string> w;
  for (size_t p = 0; p < layout.size();) {
    while (p < layout.size() && layout[p] == ' ') p++;
    size_t s = p;
    while (p < layout.size() && layout[p] != ' ') p++;
    if (p > s) w.push_back(layout.substr(s, p - s));
  }
  if (w.size() % 2) return bu_fail(f, 1, "argument 2 must have an even number of elements.");
  std::string stem = bu_symbol_case(bu_text(f, 2));
  if (!stem.empty() && stem.back() == '.') stem.pop_back();
  if (stem.empty() || !bu_valid_symbol(stem) || stem.find('.') != std::string::npos)
    return bu_fail(f, 2, "\"" + std::string(bu_text(f, 2)) + "\" is not a valid REXX symbol.");
  bool strip = false;
  if (bu_has(f, 3)) {
    long long n;
    if (rx_whole(*f.args[3], n) != 0 || (n != 0 && n != 1)) return bu_fail(f, 3, "argument 4 muste be 0 or 1.");
    strip = n == 1;
  }
  size_t at = 0;
  for (size_t i = 0; i < w.size(); i += 2) {
    size_t width = std::string::npos;
    if (w[i + 1] != "*") {
      char* e;
      long n = strtol(w[i + 1].c_str(), &e, 10);
      if (*e || n < 0 || w[i + 1].empty())
        return bu_fail(f, 1, "bad associated length \"" + w[i + 1] + "\" for element \"" + w[i] + "\".");
      width = (size_t)n;
    }
    std::string_view v = at < rec.size() ? rec.substr(at, width) : std::string_view();
    at += v.size();
    if (strip)
      while (!v.empty() && v.back() == ' ') v.remove_suffix(1);
    bu_set_var(stem + "." + bu_symbol_case(w[i]), v);
  }
  r.set_num((double)at, 0);
  return 0;
}

// LINESIZE(): the width of the terminal on standard output, else COLUMNS,
// else 80.
int bu_linesize(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  winsize ws{};
  long n = 80;
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &ws) == 0 && ws.ws_col > 0) n = ws.ws_col;
  else if (const char* c = getenv("COLUMNS"); c && atol(c) > 0) n = atol(c);
  r.set_num((double)n, 0);
  return 0;
}

// EXTERNALS(): lines typed ahead and waiting outside the program; a batch
// run reads its console only when asked, so there are never any.
int bu_externals(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  r.set_num(0, 0);
  return 0;
}

// ---- classic regular expressions ----------------------------------------------------

namespace {

struct slot {
  regex_t re;
  bool used = false;
  slot() = default;
  slot(const slot&) = delete;
  slot& operator=(const slot&) = delete;
  ~slot() {
    if (used) regfree(&re);
  }
};

std::vector<std::unique_ptr<slot>>& slots() {
  static std::vector<std::unique_ptr<slot>> s;
  return s;
}

}  // namespace

// REGCOMP(expression, slot): compiles into the numbered slot; 0, or 1 when
// the expression is not valid.
int bu_regcomp(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 2)) return e;
  long long n;
  if (int e = bu_whole(f, 1, 1, 1, n)) return e;
  if (n > 1000) return bu_fail(f, 1, "argument 2 must be a positive integer.");
  auto& s = slots();
  if (s.size() < (size_t)n) s.resize((size_t)n);
  auto& sl = s[(size_t)n - 1];
  if (!sl) sl = std::make_unique<slot>();
  if (sl->used) regfree(&sl->re);
  std::string ex(bu_text(f, 0));
  sl->used = regcomp(&sl->re, ex.c_str(), REG_EXTENDED | REG_NOSUB) == 0;
  r.set_num(sl->used ? 0 : 1, 0);
  return 0;
}

// REGEXEC(string, slot [, "Ignore" | "Respect"]): 1 when the slot's
// expression matches the string. Ignore folds the case of both.
int bu_regexec(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 3)) return e;
  long long n;
  if (int e = bu_whole(f, 1, 1, 1, n)) return e;
  bool ignore = false;
  if (bu_has(f, 2)) {
    std::string_view w = bu_text(f, 2);
    if (w == "Ignore") ignore = true;
    else if (w != "Respect") return bu_fail(f, 2, "argument 3 must be \"Ignore\" or \"Respect\".");
  }
  auto& s = slots();
  if ((size_t)n > s.size() || !s[(size_t)n - 1] || !s[(size_t)n - 1]->used)
    return bu_fail(f, 1, "argument 2 must be a compiled expression's slot.");
  std::string text(bu_text(f, 0));
  if (ignore)
    for (char& c : text) c = (char)tolower((unsigned char)c);
  r.set_num(regexec(&s[(size_t)n - 1]->re, text.c_str(), 0, nullptr, 0) == 0, 0);
  return 0;
}

int bu_rchange(bu_frame& f, value& r) {
  if (f.argc < 3 || f.argc > 4 || !bu_has(f, 0) || !bu_has(f, 1) || !bu_has(f, 2))
    return bu_fail(f, 0, "must receive 3 or 4 arguments.");
  bool fold;
  if (int e = bu_flag(f, 3, fold)) return e;
  std::string ex(bu_text(f, 1)), text(bu_text(f, 0));
  std::string_view rep = bu_text(f, 2);
  regex_t re;
  if (regcomp(&re, ex.c_str(), REG_EXTENDED | (fold ? REG_ICASE : 0)) != 0) return bu_fail(f, 1, "Invalid regular expression.");
  std::string out;
  size_t at = 0;
  regmatch_t m;
  int flags = 0;
  while (at <= text.size() && regexec(&re, text.c_str() + at, 1, &m, flags) == 0) {
    out.append(text, at, (size_t)m.rm_so);
    out.append(rep);
    size_t adv = (size_t)m.rm_eo;
    if (m.rm_eo == m.rm_so) {
      // An empty match: keep the next character and move past it.
      if (at + adv < text.size()) out += text[at + adv];
      adv++;
    }
    at += adv;
    flags = REG_NOTBOL;
  }
  if (at < text.size()) out.append(text, at, std::string::npos);
  regfree(&re);
  r.set_str(out);
  return 0;
}
