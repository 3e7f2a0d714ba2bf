// Built-in functions of the word family: texts seen as words separated by
// blanks (WORD, WORDS, SUBWORD, DELWORD, SPACE, WORDPOS, FIND and the rest).
#include <cstring>
#include <string>
#include <vector>

#include "rexx/builtins/builtins.h"

namespace {

struct span {
  size_t at;   // offset of the word's first byte
  size_t len;  // its length
};

std::vector<span> split(std::string_view s) {
  std::vector<span> w;
  for (size_t i = 0; i < s.size();) {
    while (i < s.size() && s[i] == ' ') i++;
    size_t b = i;
    while (i < s.size() && s[i] != ' ') i++;
    if (i > b) w.push_back({b, i - b});
  }
  return w;
}

// The n-th word (from 1) without building the whole list; false when the
// text has fewer words.
bool nth_word(std::string_view s, size_t n, span& out) {
  for (size_t i = 0, k = 0; i < s.size();) {
    while (i < s.size() && s[i] == ' ') i++;
    size_t b = i;
    while (i < s.size() && s[i] != ' ') i++;
    if (i > b && ++k == n) {
      out = {b, i - b};
      return true;
    }
  }
  return false;
}

// The word number where the phrase's words occur in sequence, from word
// `first` (1-based), or 0.
size_t phrase_at(std::string_view s, std::string_view phrase, size_t first) {
  std::vector<span> ws = split(s), wp = split(phrase);
  if (wp.empty() || wp.size() > ws.size()) return 0;
  for (size_t i = first - 1; i + wp.size() <= ws.size(); i++) {
    size_t k = 0;
    for (; k < wp.size(); k++) {
      const span &a = ws[i + k], &b = wp[k];
      if (a.len != b.len || memcmp(s.data() + a.at, phrase.data() + b.at, a.len) != 0) break;
    }
    if (k == wp.size()) return i + 1;
  }
  return 0;
}

// A string and a word number: the two-argument shape of WORD and its kin.
// Gives whether that word exists, and the word.
int word_n(bu_frame& f, bool& found, span& w) {
  if (int e = bu_count(f, 2, 2)) return e;
  long long n;
  if (int e = bu_whole(f, 1, 1, 1, n)) return e;
  found = nth_word(bu_text(f, 0), (size_t)n, w);
  return 0;
}

}  // namespace

int bu_delword(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 3)) return e;
  std::string_view s = bu_text(f, 0);
  long long n, len;
  if (int e = bu_whole(f, 1, 1, 1, n)) return e;
  if (int e = bu_whole(f, 2, 0, -1, len)) return e;
  std::vector<span> ws = split(s);
  if ((size_t)n > ws.size() || len == 0) {
    r.set_str(s);
    return 0;
  }
  size_t from = ws[(size_t)n - 1].at;
  size_t last = len < 0 || (size_t)(n - 1 + len) >= ws.size() ? ws.size() : (size_t)(n - 1 + len);
  std::string out(s.substr(0, from));
  if (last < ws.size()) out.append(s.substr(ws[last].at));
  r.set_str(out);
  return 0;
}

int bu_find(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 2)) return e;
  r.set_num((double)phrase_at(bu_text(f, 0), bu_text(f, 1), 1));
  return 0;
}

int bu_space(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 3)) return e;
  std::string_view s = bu_text(f, 0);
  long long n;
  char pad;
  if (int e = bu_whole(f, 1, 0, 1, n)) return e;
  if (int e = bu_pad(f, 2, pad)) return e;
  std::string out;
  std::vector<span> ws = split(s);
  for (size_t i = 0; i < ws.size(); i++) {
    if (i) out.append((size_t)n, pad);
    out.append(s.substr(ws[i].at, ws[i].len));
  }
  r.set_str(out);
  return 0;
}

int bu_subword(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 3)) return e;
  std::string_view s = bu_text(f, 0);
  long long n, len;
  if (int e = bu_whole(f, 1, 1, 1, n)) return e;
  if (int e = bu_whole(f, 2, 0, -1, len)) return e;
  std::vector<span> ws = split(s);
  if ((size_t)n > ws.size() || len == 0) {
    r.set_str("", 0);
    return 0;
  }
  size_t last = len < 0 || (size_t)(n - 1 + len) >= ws.size() ? ws.size() : (size_t)(n - 1 + len);
  size_t from = ws[(size_t)n - 1].at, to = ws[last - 1].at + ws[last - 1].len;
  r.set_str(s.substr(from, to - from));
  return 0;
}

int bu_word(bu_frame& f, value& r) {
  bool found;
  span w;
  if (int e = word_n(f, found, w)) return e;
  if (found) {
    r.set_str(bu_text(f, 0).substr(w.at, w.len));
  } else {
    r.set_str("", 0);
  }
  return 0;
}

int bu_wordindex(bu_frame& f, value& r) {
  bool found;
  span w;
  if (int e = word_n(f, found, w)) return e;
  r.set_num(found ? (double)w.at + 1 : 0);
  return 0;
}

int bu_wordlength(bu_frame& f, value& r) {
  bool found;
  span w;
  if (int e = word_n(f, found, w)) return e;
  r.set_num(found ? (double)w.len : 0);
  return 0;
}

int bu_wordpos(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 3)) return e;
  long long start;
  if (int e = bu_whole(f, 2, 1, 1, start)) return e;
  r.set_num((double)phrase_at(bu_text(f, 1), bu_text(f, 0), (size_t)start));
  return 0;
}

int bu_words(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string_view s = bu_text(f, 0);
  size_t n = 0;
  for (size_t i = 0; i < s.size(); i++)
    if (s[i] != ' ' && (i == 0 || s[i - 1] == ' ')) n++;
  r.set_num((double)n);
  return 0;
}
