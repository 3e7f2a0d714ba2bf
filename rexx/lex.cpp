// The character scanner: program text to an array of token records.
//
// One pass over the text. Comments, continuation commas and line ends are
// settled here; keywords are recognised by spelling only and are settled by
// context afterwards (lex2.cpp).
#include "rexx/tree_int.h"

#include <cstring>

namespace {

struct kwrow {
  const char* word;  // the keyword in upper case
  int32_t tok;       // its token number
};

constexpr kwrow kwtab[] = {
  {"ADDRESS", ADDRESS}, {"ARG", ARG}, {"BY", BY}, {"CALL", CALL}, {"CD", CD},
  {"DIGITS", DIGITS}, {"DO", DO}, {"DROP", DROP}, {"ELSE", ELSE}, {"END", END},
  {"ENGINEERING", ENGINEERING}, {"ERROR", ERROR}, {"EXIT", EXIT},
  {"EXPOSE", EXPOSE}, {"FAILURE", FAILURE}, {"FOR", FOR}, {"FOREVER", FOREVER},
  {"FORM", FORM}, {"FUZZ", FUZZ}, {"HALT", HALT}, {"IF", IF},
  {"INTERPRET", INTERPRET}, {"ITERATE", ITERATE}, {"LEAVE", LEAVE},
  {"EXTERNAL", LINEIN}, {"LINEIN", LINEIN}, {"LOWER", LOWER}, {"NAME", NAME},
  {"NOP", NOP}, {"NOTREADY", NOTREADY}, {"NOVALUE", NOVALUE},
  {"NUMERIC", NUMERIC}, {"OFF", OFF}, {"ON", ON}, {"OTHERWISE", OTHERWISE},
  {"PARSE", PARSE}, {"PROCEDURE", PROCEDURE}, {"PULL", PULL}, {"PUSH", PUSH},
  {"QUEUE", QUEUE}, {"RETURN", RETURN}, {"SAY", SAY}, {"SAYN", SAYN},
  {"SAYX", SAYX}, {"SAYR", SAYR}, {"SCIENTIFIC", SCIENTIFIC},
  {"SELECT", SELECT}, {"SIGNAL", SIGNAL}, {"SOURCE", SOURCE},
  {"SYNTAX", SYNTAX}, {"TEMPLATE", TEMPLATE}, {"THEN", THEN}, {"TO", TO},
  {"TRACE", TRACE}, {"UNTIL", UNTIL}, {"UPPER", UPPER}, {"VALUE", VALUE},
  {"VAR", VAR}, {"VERSION", VERSION}, {"WHEN", WHEN}, {"WHILE", WHILE},
  {"WITH", WITH}, {"IN", IN}, {"OPTION", OPTION}, {"MIXED", MIXED},
  {"SETENV", SETENV}, {"UNSETENV", UNSETENV}, {"LOAD", LOAD},
  {"NOLOAD", NOLOAD}, {"GLOBALV", GLOBALV}, {"NOGLOBALV", NOGLOBALV},
};
static_assert(sizeof kwtab / sizeof kwtab[0] == 71);

struct oprow {
  const char* spelling;  // the characters as written
  int32_t tok;           // the operator token
};

#define EQIC "\xAD"
#define RHO "\xBD"
constexpr oprow optab[] = {
  {"~", OP_NOT}, {"\\", OP_NOT}, {"^", OP_NOT},
  {"**", OP_EXP},
  {"//", OP_REMAIN},
  {"||", OP_CONC},
  {"==", OP_EEQ},
  {"\\=", OP_NEQ}, {"/=", OP_NEQ}, {"~=", OP_NEQ}, {"^=", OP_NEQ},
  {"<>", OP_NEQ}, {"><", OP_NEQ},
  {"\\==", OP_NNEQ}, {"/==", OP_NNEQ}, {"~==", OP_NNEQ}, {"^==", OP_NNEQ},
  {">>", OP_SSUP},
  {"<<", OP_IINF},
  {">=", OP_SUP_EQ}, {"/<", OP_SUP_EQ}, {"\\<", OP_SUP_EQ}, {"~<", OP_SUP_EQ},
  {"^<", OP_SUP_EQ},
  {">>=", OP_SSUP_EQ}, {"/<<", OP_SSUP_EQ}, {"\\<<", OP_SSUP_EQ},
  {"~<<", OP_SSUP_EQ}, {"^<<", OP_SSUP_EQ},
  {"<=", OP_INF_EQ}, {"/>", OP_INF_EQ}, {"\\>", OP_INF_EQ}, {"~>", OP_INF_EQ},
  {"^>", OP_INF_EQ},
  {"<<=", OP_IINF_EQ}, {"/>>", OP_IINF_EQ}, {"\\>>", OP_IINF_EQ},
  {"~>>", OP_IINF_EQ}, {"^>>", OP_IINF_EQ},
  {"&&", OP_XOR},
  {EQIC, OP_EQIC},
  {"~" EQIC, OP_NEQIC}, {"\\" EQIC, OP_NEQIC},
  {RHO, OP_RHO},
};
#undef EQIC
#undef RHO
static_assert(sizeof optab / sizeof optab[0] == 44);
constexpr int OP_LONGEST = 3;  // the longest spelling in optab

// Byte classes of the scanner, as named bits.
enum : unsigned char {
  C_SYM = 1,    // may start or continue a symbol
  C_OP = 2,     // may be part of an operator spelling
  C_DIGIT = 4,  // a decimal digit
};

struct classtab {
  unsigned char c[256];  // C_* bits per byte
  constexpr classtab() : c()
  {
    for (int i = 'a'; i <= 'z'; i++) c[i] = C_SYM;
    for (int i = 'A'; i <= 'Z'; i++) c[i] = C_SYM;
    for (int i = '0'; i <= '9'; i++) c[i] = C_SYM | C_DIGIT;
    for (unsigned char ch : {'@', '#', '$', '.', '!', '?', '_'}) c[ch] = C_SYM;
    c[RX_SYM_BYTE] = C_SYM;
    for (unsigned char ch : {'\\', '~', '/', '^', '*', '|', '=', '<', '>', '&'}) c[ch] = C_OP;
    c[RX_EQIC_BYTE] = C_OP;
    c[RX_RHO_BYTE] = C_OP;
  }
};
constexpr classtab cls;

inline bool is_sym(unsigned char ch) { return cls.c[ch] & C_SYM; }
inline bool is_op(unsigned char ch) { return cls.c[ch] & C_OP; }
inline bool is_digit(unsigned char ch) { return cls.c[ch] & C_DIGIT; }

// Single characters that are tokens by themselves.
constexpr char single_chars[] = "()[],:;=<>*/%+-|&`";

// Digits with at most one dot, and at least one digit: the part of a symbol
// in front of an exponent letter that lets a sign join the symbol.
bool plain_number(const char* s, size_t n)
{
  bool digit = false, dot = false;
  for (size_t i = 0; i < n; i++) {
    if (is_digit(s[i])) digit = true;
    else if (s[i] == '.' && !dot) dot = true;
    else return false;
  }
  return digit;
}

int hexval(unsigned char c)
{
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Hexadecimal literal to bytes. Groups between blanks must hold whole digit
// pairs; no blank at either end. Returns false for a bad literal.
bool hex_literal(const std::string& in, std::string& out)
{
  out.clear();
  if (in.empty()) return true;
  if (in.front() == ' ' || in.back() == ' ') return false;
  std::string digits;
  size_t group = 0;
  for (char c : in) {
    if (c == ' ') {
      if (group % 2) return false;
      group = 0;
      continue;
    }
    if (hexval(static_cast<unsigned char>(c)) < 0) return false;
    digits += c;
    group++;
  }
  if (group % 2) return false;
  for (size_t i = 0; i < digits.size(); i += 2)
    out += static_cast<char>(hexval(digits[i]) * 16 + hexval(digits[i + 1]));
  return true;
}

// Binary literal to bytes. Groups after the first hold 4 or 8 digits; the
// leftmost part short of a byte is filled with zero bits on the left.
bool bin_literal(const std::string& in, std::string& out)
{
  out.clear();
  if (in.empty()) return true;
  if (in.front() == ' ' || in.back() == ' ') return false;
  std::string bits;
  size_t group = 0;
  bool first = true;
  for (size_t i = 0; i <= in.size(); i++) {
    char c = i < in.size() ? in[i] : ' ';
    if (c == ' ') {
      if (group == 0) continue;  // a run of blanks
      if (!first && group != 4 && group != 8) return false;
      first = false;
      group = 0;
      continue;
    }
    if (c != '0' && c != '1') return false;
    bits += c;
    group++;
  }
  size_t pad = (8 - bits.size() % 8) % 8;
  bits.insert(0, pad, '0');
  for (size_t i = 0; i < bits.size(); i += 8) {
    int v = 0;
    for (size_t k = 0; k < 8; k++) v = v * 2 + (bits[i + k] - '0');
    out += static_cast<char>(v);
  }
  return true;
}

struct scanner {
  rx_arena& a;                  // where tokens go
  std::vector<rx_tok*>& out;    // the token array being built
  rx_err& err;                  // error report
  const unsigned char* s;       // the text
  size_t n;                     // its length, without a final newline
  size_t i = 0;                 // read position
  int32_t line;                 // current line
  size_t line_start = 0;        // position where the current line starts
  std::string buf;              // text of the token being scanned

  int32_t col(size_t pos) const { return static_cast<int32_t>(pos - line_start); }
  int32_t last() const { return out.empty() ? ';' : out.back()->tok_type; }

  rx_tok* emit(int32_t type, size_t pos, const char* text = nullptr, size_t len = 0)
  {
    rx_tok* t = rx_newtok(a, type, line, col(pos), text, len);
    out.push_back(t);
    return t;
  }

  // ';' never starts the program and never doubles.
  void semi(size_t pos)
  {
    if (last() != ';') emit(';', pos);
  }

  void blank(size_t pos)
  {
    int32_t l = last();
    if (l == RX_BLANK || l == ';' || rx_is_operator(l)) return;
    emit(RX_BLANK, pos);
  }

  int fail(int num, int32_t ln, int32_t c)
  {
    err.err_num = num;
    err.err_line = ln;
    err.err_col = c;
    return num;
  }

  void newline()
  {
    line++;
    line_start = i;
  }

  // Skips a comment that starts at i ("/*"); comments nest. Returns false
  // when the text ends inside it.
  bool skip_comment()
  {
    int depth = 0;
    while (i < n) {
      if (s[i] == '/' && i + 1 < n && s[i + 1] == '*') {
        depth++;
        i += 2;
      } else if (s[i] == '*' && i + 1 < n && s[i + 1] == '/') {
        i += 2;
        if (--depth == 0) return true;
      } else {
        if (s[i] == '\n') {
          i++;
          newline();
          continue;
        }
        i++;
      }
    }
    return false;
  }

  int string_tok()
  {
    unsigned char q = s[i];
    size_t start = i;
    int32_t ln = line, c = col(i);
    buf.clear();
    i++;
    for (;;) {
      if (i >= n || s[i] == '\n') return fail(q == '\'' ? 1 : 2, ln, c);
      if (s[i] == q) {
        if (i + 1 < n && s[i + 1] == q) {
          buf += static_cast<char>(q);
          i += 2;
          continue;
        }
        i++;
        break;
      }
      buf += static_cast<char>(s[i++]);
    }
    if (i < n && (s[i] | 0x20) == 'x' && (i + 1 >= n || !is_sym(s[i + 1]))) {
      std::string conv;
      if (!hex_literal(buf, conv)) return fail(15, ln, c);
      buf.swap(conv);
      i++;
    } else if (i < n && (s[i] | 0x20) == 'b' && (i + 1 >= n || !is_sym(s[i + 1]))) {
      std::string conv;
      if (!bin_literal(buf, conv)) return fail(67, ln, c);
      buf.swap(conv);
      i++;
    }
    emit(STRING, start, buf.data(), buf.size())->tok_quoted = 1;
    return 0;
  }

  int symbol_tok()
  {
    size_t start = i;
    bool at_clause = last() == ';';
    buf.clear();
    while (i < n) {
      unsigned char ch = s[i];
      if (is_sym(ch)) {
        buf += static_cast<char>(ch);
        i++;
      } else if ((ch == '+' || ch == '-') && !buf.empty() && (buf.back() | 0x20) == 'e' &&
                 plain_number(buf.data(), buf.size() - 1)) {
        buf += static_cast<char>(ch);
        i++;
      } else {
        break;
      }
    }
    bool constant = is_digit(buf[0]) || (buf[0] == '.' && buf.size() > 1 && is_digit(buf[1]));
    if (constant) {
      if (at_clause) {
        size_t k = i;
        while (k < n && (s[k] == ' ' || s[k] == '\t')) k++;
        if (k < n && s[k] == '=') return fail(31, line, col(start));
      }
      emit(STRING, start, buf.data(), buf.size());
      return 0;
    }
    int32_t kw = rx_keyword(buf.data(), buf.size());
    emit(kw ? kw : SYMBOL, start, buf.data(), buf.size());
    return 0;
  }

  void operator_tok()
  {
    size_t start = i;
    char got[OP_LONGEST];
    size_t ends[OP_LONGEST];
    int k = 0;
    size_t p = i;
    while (k < OP_LONGEST && p < n && is_op(s[p])) {
      got[k] = static_cast<char>(s[p]);
      ends[k++] = ++p;
      while (p < n && (s[p] == ' ' || s[p] == '\t')) p++;
    }
    for (int len = k; len >= 1; len--) {
      for (const oprow& r : optab) {
        if (std::strlen(r.spelling) == static_cast<size_t>(len) &&
            std::memcmp(r.spelling, got, len) == 0) {
          i = ends[len - 1];
          emit(r.tok, start);
          return;
        }
      }
    }
    i = ends[0];
    emit(static_cast<unsigned char>(got[0]), start);
  }

  // After a comma: a line end (past blanks and comments) makes it a
  // continuation. Returns true when it was one.
  bool continuation()
  {
    size_t save_i = i, save_ls = line_start;
    int32_t save_line = line;
    while (i < n) {
      if (s[i] == ' ' || s[i] == '\t' || s[i] == '\r') {
        i++;
      } else if (s[i] == '/' && i + 1 < n && s[i + 1] == '*') {
        if (!skip_comment()) break;
      } else {
        break;
      }
    }
    if (i < n && s[i] == '\n') {
      i++;
      newline();
      return true;
    }
    i = save_i;
    line = save_line;
    line_start = save_ls;
    return false;
  }

  int run()
  {
    while (i < n) {
      unsigned char ch = s[i];
      if (ch == '\r' || ch == 26) {
        i++;
        continue;
      }
      if (last() == ';') {
        if (ch == ' ' || ch == '\t') {
          i++;
          continue;
        }
        if (ch == '#') {
          while (i < n && s[i] != '\n') i++;
          continue;
        }
      }
      if (ch == '\n') {
        semi(i);
        i++;
        newline();
        continue;
      }
      if (ch == '/' && i + 1 < n && s[i + 1] == '*') {
        int32_t ln = line, c = col(i);
        if (!skip_comment()) return fail(6, ln, c);
        continue;
      }
      if (ch == '\'' || ch == '"') {
        if (int e = string_tok()) return e;
        continue;
      }
      if (is_sym(ch)) {
        if (int e = symbol_tok()) return e;
        continue;
      }
      if (ch == ' ' || ch == '\t') {
        blank(i++);
        continue;
      }
      if (ch == '{') {
        emit(DO, i, "DO", 2);
        semi(i++);
        continue;
      }
      if (ch == '}') {
        semi(i);
        emit(END, i++, "END", 3);
        continue;
      }
      if (ch == ',') {
        size_t at = i++;
        if (continuation()) blank(at);
        else emit(',', at);
        continue;
      }
      if (ch == ';') {
        semi(i++);
        continue;
      }
      if (is_op(ch)) {
        operator_tok();
        continue;
      }
      if (std::strchr(single_chars, ch) && ch) {
        emit(ch, i++);
        continue;
      }
      // A byte that belongs to no token: kept so that the parser reports it.
      emit(1, i, reinterpret_cast<const char*>(s + i), 1);
      i++;
    }
    if (out.empty() || last() != ';') emit(';', n);
    return 0;
  }
};

}  // namespace

bool rx_is_operator(int32_t t)
{
  switch (t) {
  case '\\': case '~': case '/': case '^': case '*': case '|': case '=':
  case '<': case '>': case '&': case RX_EQIC_BYTE: case RX_RHO_BYTE:
  case '+': case '-': case '%':
    return true;
  default:
    return t >= OP_XOR && t <= OP_NOT;
  }
}

int32_t rx_keyword(const char* s, size_t n)
{
  char up[16];
  if (n == 0 || n >= sizeof up) return 0;
  for (size_t i = 0; i < n; i++) {
    unsigned char c = static_cast<unsigned char>(s[i]);
    up[i] = (c >= 'a' && c <= 'z') ? static_cast<char>(c - 32) : static_cast<char>(c);
  }
  up[n] = 0;
  for (const kwrow& r : kwtab)
    if (r.word[0] == up[0] && std::strcmp(r.word, up) == 0) return r.tok;
  return 0;
}

int rx_lex(rx_prog& prog, const char* text, size_t len, int line0, rx_err& err)
{
  prog.toks.clear();
  if (len > 0 && text[len - 1] == '\n') len--;
  prog.toks.reserve(len / 4 + 16);
  scanner sc{*prog.arena, prog.toks, err, reinterpret_cast<const unsigned char*>(text), len,
             0, line0, 0, {}};
  int e = sc.run();
  if (e) prog.toks.clear();
  else if (prog.lex_trace) prog.lex_log += rx_toks_trace(prog.toks, " ..... lex()");
  return e;
}
