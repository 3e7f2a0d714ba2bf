// PARSE, ARG and PULL: fetching the source string by mode, and walking the
// raw template chain at run time: runs of variables split into words,
// literal patterns, absolute and relative columns, variable patterns and,
// for PARSE ARG, commas that move to the next argument.
#include <cctype>
#include <cstdio>
#include <iostream>

#include "rexx/exec_int.h"

namespace {

struct pstate {
  std::string_view s;    // the source text
  long long first = 0;   // start of the next field
  long long anchor = 0;  // where a relative pattern counts from
  bool upper = false;    // fold fields as they are assigned
};

enum : int { PAT_NONE, PAT_LIT, PAT_REL, PAT_ABS, PAT_COMMA };

struct pattern {
  int kind = PAT_NONE;   // PAT_*
  std::string_view lit;  // literal text: the token's, or own_lit
  std::string own_lit;   // a variable pattern's value
  long long n = 0;       // column or offset, signed for relative ones
};

bool is_placeholder(const rx_tok* t)
{
  return t->tok_type == SYMBOL && t->tok_len == 1 && t->tok_value[0] == '.';
}

bool is_number_tok(const rx_tok* t)
{
  if (!(t->tok_type == SYMBOL || (t->tok_type == STRING && !t->tok_quoted))) return false;
  for (int i = 0; i < t->tok_len; i++)
    if (!std::isdigit((unsigned char)t->tok_value[i])) return false;
  return t->tok_len > 0;
}

bool is_var(const rx_tok* t) { return t->tok_type == SYMBOL && !is_number_tok(t); }

long long column_of(const rx_tok* t, std::string_view text)
{
  value v(text);
  long long n;
  if (rx_whole(v, n) != 0 || n < 0) {
    rx_at(t);
    rx_raise(26, "Expression evaluates to \"" + std::string(text) + "\"");
  }
  return n;
}

// A column written as digits; short ones need no conversion through text.
long long digits_of(const rx_tok* t)
{
  if (t->tok_len > 9) return column_of(t, {t->tok_value, (size_t)t->tok_len});
  long long n = 0;
  for (int i = 0; i < t->tok_len; i++) n = n * 10 + (t->tok_value[i] - '0');
  return n;
}

// Reads the pattern at *pt, moving past it.
pattern read_pattern(const rx_tok*& t)
{
  pattern p;
  if (!t) return p;
  if (t->tok_type == ',') {
    p.kind = PAT_COMMA;
    t = t->tok_next;
    return p;
  }
  if (t->tok_type == STRING && t->tok_quoted) {
    p.kind = PAT_LIT;
    p.lit = {t->tok_value, (size_t)t->tok_len};
    t = t->tok_next;
    return p;
  }
  if (is_number_tok(t)) {
    p.kind = PAT_ABS;
    p.n = digits_of(t);
    t = t->tok_next;
    return p;
  }
  int sign = 0;
  if (t->tok_type == '+' || t->tok_type == '-' || t->tok_type == '=') {
    sign = t->tok_type;
    const rx_tok* at = t;
    t = t->tok_next;
    if (!t || !(is_number_tok(t) || t->tok_type == '(')) {
      rx_at(t ? t : at);
      rx_raise(38);
    }
  } else if (t->tok_type != '(') {
    rx_at(t);
    rx_raise(38);
  }
  if (t->tok_type == '(') {
    const rx_tok* name = t->tok_next;
    if (!name || name->tok_type != SYMBOL || !name->tok_next || name->tok_next->tok_type != ')') {
      rx_at(t);
      rx_raise(46);
    }
    value v;
    rx_get_var(name, v);
    std::string text = rx_text(v);
    t = name->tok_next->tok_next;
    if (!sign) {
      p.kind = PAT_LIT;
      p.own_lit = std::move(text);
      p.lit = p.own_lit;
      return p;
    }
    p.n = column_of(name, text);
  } else {
    p.n = digits_of(t);
    t = t->tok_next;
  }
  if (sign == '=') p.kind = PAT_ABS;
  else {
    p.kind = PAT_REL;
    if (sign == '-') p.n = -p.n;
  }
  return p;
}

void assign(const rx_tok* t, std::string_view field, bool upper)
{
  if (is_placeholder(t)) {
    if (rx_tracing(TR_R | TR_I)) rx_trace_placeholder(field);
    return;
  }
  value v(field);
  if (upper)
    for (int i = 0; i < v.val_len; i++) v.val_text[i] = (char)std::toupper((unsigned char)v.val_text[i]);
  if (rx_tracing(TR_R | TR_I)) rx_trace_assign(rx_var_name(t), v);
  rx_at(t);
  rx_set_var(t, std::move(v));
}

// Splits [first, end) over the variables of a run.
struct varrun {
  const rx_tok* v[32];             // the run's variables, the first 32
  std::vector<const rx_tok*> more; // all of them, once there are more than 32
  size_t n = 0;                    // count
  void add(const rx_tok* t)
  {
    if (n == 32) more.assign(v, v + 32);
    if (n >= 32) more.push_back(t);
    else v[n] = t;
    n++;
  }
  size_t size() const { return n; }
  const rx_tok* operator[](size_t i) const { return n > 32 ? more[i] : v[i]; }
};

void split(pstate& ps, const varrun& vars, long long end)
{
  long long pos = ps.first;
  long long len = (long long)ps.s.size();
  if (end > len) end = len;
  if (end < pos) end = pos;
  for (size_t i = 0; i < vars.size(); i++) {
    bool last = i + 1 == vars.size();
    if (i > 0 || !last)
      while (pos < end && ps.s[(size_t)pos] == ' ') pos++;
    if (last) {
      assign(vars[i], ps.s.substr((size_t)pos, (size_t)(end - pos)), ps.upper);
      break;
    }
    long long w = pos;
    while (w < end && ps.s[(size_t)w] != ' ') w++;
    assign(vars[i], ps.s.substr((size_t)pos, (size_t)(w - pos)), ps.upper);
    pos = w;
  }
}

long long clamp(long long v, long long len) { return v < 0 ? 0 : v > len ? len : v; }

// Walks the template until its end or a comma; gives the token after the comma.
const rx_tok* walk(pstate& ps, const rx_tok* t)
{
  long long len = (long long)ps.s.size();
  for (;;) {
    varrun vars;
    while (t && (t->tok_type == RX_BLANK || is_var(t))) {
      if (t->tok_type != RX_BLANK) vars.add(t);
      t = t->tok_next;
    }
    pattern p = read_pattern(t);
    long long end = len;
    switch (p.kind) {
    case PAT_LIT: {
      size_t at = p.lit.empty() ? std::string_view::npos : ps.s.find(p.lit, (size_t)ps.first);
      if (at != std::string_view::npos) {
        end = (long long)at;
        split(ps, vars, end);
        ps.anchor = (long long)at;
        ps.first = (long long)(at + p.lit.size());
      } else {
        split(ps, vars, len);
        ps.first = len;
      }
      break;
    }
    case PAT_REL:
      end = p.n > 0 ? ps.first + p.n : len;
      split(ps, vars, end);
      ps.first = clamp(ps.anchor + p.n, len);
      ps.anchor = ps.first;
      break;
    case PAT_ABS:
      end = p.n - 1 > ps.first && p.n - 1 <= len ? p.n - 1 : len;
      split(ps, vars, end);
      ps.first = clamp(p.n - 1, len);
      ps.anchor = ps.first;
      break;
    default:
      split(ps, vars, len);
      ps.first = len;
      if (p.kind == PAT_COMMA) return t;
      return nullptr;
    }
  }
}

bool read_console(std::string& line)
{
  std::fflush(stdout);
  if (rx_console.read_line) return rx_console.read_line(line);
  if (!std::getline(std::cin, line)) {
    line.clear();
    return false;
  }
  return true;
}

std::string source_text()
{
  const std::string& f = rx_st->main_src->file_name;
  size_t slash = f.rfind('/');
  std::string base = slash == std::string::npos ? f : f.substr(slash + 1);
  std::string dir = slash == std::string::npos ? "." : f.substr(0, slash);
  size_t dot = base.rfind('.');
  std::string type = dot == std::string::npos || dot == 0 ? "?" : base.substr(dot + 1);
  return "VORTA MACRO " + (base.empty() ? std::string("?") : base) + " " + type + " " +
         (dir.empty() ? "/" : dir) + " molba";
}

}  // namespace

void rx_parse_text(std::string_view src, const rx_tok* tmpl, bool upper)
{
  pstate ps;
  ps.s = src;
  ps.upper = upper;
  if (const rx_tok* rest = walk(ps, tmpl)) {
    rx_at(rest);
    rx_raise(38, "A comma may be used only within a PARSE ARG instructin");
  }
}

void rx_exec_parse(const rx_cl_parse* c)
{
  std::string text;
  switch (c->source) {
  case PS_ARG: {
    const rx_level& lv = rx_st->lv;
    const rx_tok* t = c->tmpl;
    size_t i = 0;
    do {
      std::string arg = i < lv.args.size() && !lv.omitted[i] ? rx_text(lv.args[i]) : std::string();
      pstate ps;
      ps.s = arg;
      ps.upper = c->upper != 0;
      t = walk(ps, t);
      i++;
    } while (t);
    return;
  }
  case PS_LINEIN: read_console(text); break;
  case PS_PULL:
    if (!rx_stack_pull(text)) read_console(text);
    break;
  case PS_SOURCE: text = source_text(); break;
  case PS_VALUE:
    if (c->operand) {
      value v;
      rx_eval(c->operand, v);
      if (rx_tracing(TR_R | TR_I)) rx_trace_result(v);
      text = rx_text(v);
    }
    break;
  case PS_VAR: {
    value v;
    rx_get_var(c->operand, v);
    text = rx_text(v);
    break;
  }
  case PS_VERSION: text = "REXX 4.00 22 Nov 2026 VORTA 1.0"; break;
  case PS_NUMERIC: text = rx_numeric_text(); break;
  }
  rx_parse_text(text, c->tmpl, c->upper != 0);
}
