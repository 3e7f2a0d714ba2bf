// Colouring a line: comments (over lines where the style allows), strings,
// brackets by depth, preprocessor lines by depth and keywords, the first
// that starts at a column winning. The state that crosses line ends is all
// in syn_state, so a line coloured from the state at its start is coloured
// as one pass over the whole file from its top would colour it.
#include "syntax/syn.h"

#include <cctype>
#include <cstring>

namespace {

constexpr char brackets[] = "([{)]}";  // openers, then their closers

struct line_pass {
  const syn_block &b;
  const char *t;
  int32_t n;
  syn_state &st;
  uint8_t *out;

  void paint(int32_t from, int32_t to, int colour) {
    if (out && colour)
      for (int32_t k = from; k < to && k < n; k++) out[k] = uint8_t(colour);
  }
  bool at(int32_t c, const char *s) const {
    size_t l = std::strlen(s);
    return c + int32_t(l) <= n && std::memcmp(t + c, s, l) == 0;
  }
  // Letters, digits, @ # $ ! ? _ and byte 168; '.' too unless variables
  // are objects (then in a.b the b can be a keyword).
  bool word_char(int32_t c) const {
    unsigned char ch = static_cast<unsigned char>(t[c]);
    if (std::isalnum(ch) || ch == 168) return true;
    if (ch && std::strchr("@#$!?_", ch)) return true;
    return ch == '.' && b.variable == 0;
  }

  // A block comment from column c (its opener already counted in
  // st.comment): to the end of its closer, or to the line's end while it
  // stays open. Answers the column after it.
  int32_t block_comment(int32_t c) {
    int32_t from = c;
    bool nested = b.comment_style == SYN_REXX;
    if (!nested) {
      const void *e = memmem(t + c, size_t(n - c), "*/", 2);
      c = e ? int32_t(static_cast<const char *>(e) - t) + 2 : n;
      if (e) st.comment = 0;
      paint(from, c, b.comment_colour);
      return c;
    }
    while (c < n) {
      if (nested && at(c, "/*")) {
        st.comment++;
        c += 2;
      } else if (at(c, "*/")) {
        c += 2;
        if (!nested || --st.comment == 0) {
          st.comment = 0;
          break;
        }
      } else {
        c++;
      }
    }
    paint(from, c, b.comment_colour);
    return c;
  }

  // Length of a comment that starts at column c, -1 for none; a block
  // comment answers 0 and leaves st.comment set.
  int32_t comment_at(int32_t c) {
    char ch = t[c];
    switch (b.comment_style) {
      case SYN_C:
        if (at(c, "//")) return n - c;
        break;
      case SYN_SH:
        if (ch == '#' && (c == 0 || t[c - 1] != '$')) return n - c;
        return -1;
      case SYN_FORTRAN:
        if (ch == '!' || (c == 0 && std::strchr("cCdD*", ch) && ch)) return n - c;
        break;
      case SYN_REXX:
        if (ch == '#' && c == 0) return n - c;
        break;
      case SYN_LATEX:
        if (ch == '%' && (c == 0 || t[c - 1] != '\\')) return n - c;
        return -1;
      case SYN_APLC:
        return static_cast<unsigned char>(ch) == 169 ? n - c : -1;
      case SYN_COBOL:
        return c == 6 && n >= 7 && ch != ' ' && ch != '-' ? n - c : -1;
      case SYN_AUTOIT:
        return ch == ';' ? n - c : -1;
    }
    if (at(c, "/*")) {
      st.comment = 1;
      return 0;
    }
    return -1;
  }

  // The column after a string opened at c.
  int32_t string_end(int32_t c) {
    char q = t[c];
    int s = b.string_style;
    bool escapes = s == SYN_STR_C || s == SYN_STR_FORTRAN;
    bool doubled = s == SYN_STR_REXX || s == SYN_STR_FORTRAN || s == SYN_STR_APL;
    for (int32_t k = c + 1; k < n; k++) {
      if (escapes && t[k] == '\\') {
        k++;
        continue;
      }
      if (t[k] == q) {
        if (doubled && k + 1 < n && t[k + 1] == q) {
          k++;
          continue;
        }
        return k + 1;
      }
    }
    return n;
  }

  bool opens_string(char ch) const {
    switch (b.string_style) {
      case SYN_STR_APL: return ch == '\'';
      case SYN_STR_NONE: return false;
      default: return ch == '\'' || ch == '"';
    }
  }

  // A preprocessor line at column 0: the column after its word.
  int32_t preprocessor() {
    const std::vector<int> &cpp = b.t->cpp;
    int32_t c = 1;
    while (c < n && (t[c] == ' ' || t[c] == '\t')) c++;
    int32_t w = c;
    while (c < n && !std::strchr(" \t(\"'/<", t[c])) c++;
    std::string_view word(t + w, size_t(c - w));
    int cnt = int(cpp.size());
    if (word == "if" || word == "ifdef" || word == "ifndef") {
      st.cpp++;
      paint(0, c, cpp[size_t(st.cpp % cnt)]);
    } else if ((word == "else" || word == "elif") && st.cpp >= 0) {
      paint(0, c, cpp[size_t(st.cpp % cnt)]);
    } else if (word == "endif" && st.cpp >= 0) {
      paint(0, c, cpp[size_t(st.cpp % cnt)]);
      st.cpp--;
    }
    return std::max<int32_t>(c, 1);
  }

  // The length of a keyword at c, 0 for none.
  int32_t keyword(int32_t c) {
    const syn_tables &kt = *b.t;
    if (kt.keywords.empty()) return 0;
    if (c > 0 && word_char(c - 1) && word_char(c)) return 0;
    int32_t e = c + 1;
    while (e < n && word_char(e)) e++;
    std::string w(t + c, size_t(e - c));
    int colour = 0;
    if (b.kind == SYN_APL) {
      colour = static_cast<unsigned char>(w[0]) == 243 ? kt.keywords.front().second : 0;
    } else {
      if (b.icase)
        for (char &ch : w) ch = char(std::tolower(static_cast<unsigned char>(ch)));
      auto it = kt.first.find(w);
      colour = it == kt.first.end() ? 0 : it->second;
    }
    if (!colour) return 0;
    paint(c, e, colour);
    return e - c;
  }

  void run() {
    int32_t c = 0;
    if (st.comment > 0) c = block_comment(0);
    const std::vector<int> &match = b.t->match;
    // Only the state wanted: bytes that start nothing are passed over.
    bool fast = !out && b.skip_words;
    while (c < n) {
      if (fast && c > 0) {
        while (c < n && !b.special[static_cast<unsigned char>(t[c])]) c++;
        if (c >= n) break;
      }
      int32_t len = comment_at(c);
      if (len > 0) {
        paint(c, n, b.comment_colour);
        return;
      }
      if (len == 0) {
        paint(c, c + 2, b.comment_colour);
        c = block_comment(c + 2);
        continue;
      }
      char ch = t[c];
      if (opens_string(ch)) {
        int32_t e = string_end(c);
        paint(c, e, b.string_colour);
        c = e;
        continue;
      }
      const char *br = match.empty() ? nullptr : static_cast<const char *>(std::memchr(brackets, ch, 6));
      if (br) {
        int k = int(br - brackets) % 3;
        int32_t &d = st.depth[k];
        int cnt = int(match.size());
        if (br - brackets < 3) {
          d++;
          paint(c, c + 1, match[size_t(d % cnt)]);
        } else if (d < 0) {
          d = -1;
        } else {
          paint(c, c + 1, match[size_t(d % cnt)]);
          d--;
        }
        c++;
        continue;
      }
      if (c == 0 && ch == '#' && !b.t->cpp.empty()) {
        c = preprocessor();
        continue;
      }
      int32_t kw = fast ? 0 : keyword(c);
      c += kw > 0 ? kw : 1;
    }
  }
};

}  // namespace

syn_state syn_line(const syn_block &b, const char *text, int32_t n, syn_state st, uint8_t *out) {
  if (out) std::memset(out, SYN_NONE, size_t(n));
  line_pass p{b, text, n, st, out};
  p.run();
  return st;
}
