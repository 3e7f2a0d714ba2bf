// The rewriting passes over the token array: keywords settled by context,
// tokens the grammar needs inserted (VALUE, VIDE, ';', abuttal), blanks
// without meaning removed, symbols case-folded and split at their dots.
//
// Words of the language are reserved only where they open or shape a clause,
// so "say = 1" or "end + 1" stay ordinary symbols.
#include "rexx/tree_int.h"

namespace {

// Operators that cannot start an expression: after a keyword they show that
// the keyword is really a variable ("say = 1", "do / 2").
bool in_b(int32_t t)
{
  switch (t) {
  case '/': case '^': case '*': case '|': case '=': case '<': case '>':
  case '&': case '%': case ':': case RX_EQIC_BYTE:
    return true;
  default:
    return t >= OP_XOR && t <= OP_NOT && t != OP_NOT && t != OP_RHO;
  }
}

// B together with the prefix operators.
bool in_w(int32_t t)
{
  if (in_b(t)) return true;
  switch (t) {
  case '\\': case '~': case RX_RHO_BYTE: case '+': case '-': case OP_NOT: case OP_RHO:
    return true;
  default:
    return false;
  }
}

bool is_keyword(int32_t t) { return t >= ADDRESS && t <= NOGLOBALV && (t < OP_XOR || t > OP_NOT); }

bool is_condition(int32_t t)
{
  return t == ERROR || t == FAILURE || t == HALT || t == NOVALUE || t == NOTREADY || t == SYNTAX;
}

// What the token just settled expects of the next one.
enum sub_state {
  SUB_NONE,
  SUB_PARSE,     // PARSE header: UPPER, then the source keyword
  SUB_SIGNAL,    // right after SIGNAL: ON, OFF or VALUE, else a label
  SUB_ONOFF,     // SIGNAL ON/OFF: a condition, then NAME
  SUB_CALLON,    // CALL ON/OFF: everything as it is up to NAME
  SUB_NAMED,     // after NAME: keywords are plain symbols
  SUB_CALL,      // right after CALL: ON, OFF, or the routine name
  SUB_FORM,      // after NUMERIC FORM
  SUB_TRACE,     // after TRACE or ADDRESS: a written VALUE is kept
  SUB_ENVIRON,   // after ADDRESS and a blank: the environment name
  SUB_EXPOSE,    // after PROCEDURE
};

struct pass1 {
  rx_prog& prog;                 // options are set here
  rx_arena& a;                   // for inserted tokens
  const std::vector<rx_tok*>& in;  // lexer output
  std::vector<rx_tok*> out;      // rewritten tokens
  size_t k = 0;                  // index of the token being settled
  int32_t last = ';';            // last emitted token that is not a blank
  int depth = 0;                 // '[' nesting, where ':' is no label mark
  bool tmpl = false;             // template mode: blanks dropped, no calls
  bool optmode = false;          // OPTION clause
  bool dohdr = false;            // DO header
  bool do_wu = false;            // WHILE or UNTIL seen in the DO header
  bool then_wait = false;        // an IF or WHEN waits for its THEN
  bool with_wait = false;        // PARSE VALUE waits for WITH
  bool fparen = false;           // the last '(' opened a function call
  sub_state sub = SUB_NONE;      // expectation for the next token
  long call_name = -1;           // index in out of the name after CALL

  size_t next_idx(size_t from) const
  {
    size_t j = from + 1;
    while (j < in.size() && (in[j]->tok_type == RX_BLANK || in[j]->tok_type == NOLEX)) j++;
    return j;
  }
  int32_t next_type(size_t from) const
  {
    size_t j = next_idx(from);
    return j < in.size() ? in[j]->tok_type : 0;
  }
  bool blank_after(size_t from) const
  {
    return from + 1 < in.size() && in[from + 1]->tok_type == RX_BLANK;
  }

  bool clause_start() const
  {
    return last == ';' || (last == ':' && depth == 0) || last == THEN || last == ELSE ||
           last == OTHERWISE;
  }

  void emit(rx_tok* t)
  {
    out.push_back(t);
    if (t->tok_type != RX_BLANK) last = t->tok_type;
  }

  void insert(int32_t type, const rx_tok* near, const char* text = nullptr, size_t n = 0)
  {
    emit(rx_newtok(a, type, near->tok_line, near->tok_col, text, n));
  }

  void end_clause()
  {
    tmpl = optmode = dohdr = do_wu = with_wait = then_wait = fparen = false;
    depth = 0;
    sub = SUB_NONE;
    call_name = -1;
  }

  void set_option(int32_t word)
  {
    rx_options& o = prog.opts;
    switch (word) {
    case UPPER: if (o.symcase == OPT_UNSET) o.symcase = CASE_UPPER; break;
    case LOWER: if (o.symcase == OPT_UNSET) o.symcase = CASE_LOWER; break;
    case MIXED: if (o.symcase == OPT_UNSET) o.symcase = CASE_MIXED; break;
    case SETENV: if (o.setenv == OPT_UNSET) o.setenv = 1; break;
    case UNSETENV: if (o.setenv == OPT_UNSET) o.setenv = 0; break;
    case LOAD: if (o.load == OPT_UNSET) o.load = 1; break;
    case NOLOAD: if (o.load == OPT_UNSET) o.load = 0; break;
    case GLOBALV: if (o.globalv == OPT_UNSET) o.globalv = 1; break;
    case NOGLOBALV: if (o.globalv == OPT_UNSET) o.globalv = 0; break;
    default: break;
    }
  }

  // A VALUE goes in when an expression follows straight away.
  bool value_needed(int32_t nt) const { return nt == '(' || in_w(nt); }

  // Keywords under a sub-keyword expectation. Returns true when settled.
  bool settle_sub(rx_tok* t)
  {
    int32_t ty = t->tok_type;
    int32_t nt = next_type(k);
    switch (sub) {
    case SUB_NONE:
      return false;
    case SUB_PARSE:
      if (ty == UPPER) return emit(t), true;
      sub = SUB_NONE;
      switch (ty) {
      case ARG: case PULL: case LINEIN: case SOURCE: case VERSION: case NUMERIC: case VAR:
        tmpl = true;
        return emit(t), true;
      case VALUE:
        with_wait = true;
        return emit(t), true;
      default:
        return false;
      }
    case SUB_SIGNAL:
      sub = SUB_NONE;
      if (ty == ON || ty == OFF) {
        sub = SUB_ONOFF;
        return emit(t), true;
      }
      if (ty == VALUE) return emit(t), true;
      if (is_keyword(ty)) t->tok_type = SYMBOL;
      return emit(t), true;
    case SUB_ONOFF:
      if (ty == NAME) sub = SUB_NAMED;
      else if (is_keyword(ty) && !is_condition(ty)) t->tok_type = SYMBOL;
      return emit(t), true;
    case SUB_CALLON:
      if (ty == NAME) sub = SUB_NAMED;
      return emit(t), true;
    case SUB_NAMED:
      if (is_keyword(ty)) t->tok_type = SYMBOL;
      return emit(t), true;
    case SUB_CALL:
      sub = SUB_NONE;
      if (ty == ON || ty == OFF) {
        sub = SUB_CALLON;
        return emit(t), true;
      }
      if (is_keyword(ty)) t->tok_type = SYMBOL;
      emit(t);
      call_name = static_cast<long>(out.size()) - 1;
      return true;
    case SUB_FORM:
      sub = SUB_NONE;
      if (ty == SCIENTIFIC || ty == ENGINEERING || ty == VALUE) return emit(t), true;
      return false;
    case SUB_TRACE:
      sub = SUB_NONE;
      if (ty == VALUE) return emit(t), true;
      return false;
    case SUB_ENVIRON:
      sub = SUB_NONE;
      if (ty == VALUE) return emit(t), true;
      if (ty == SYMBOL || ty == STRING || is_keyword(ty)) {
        for (int32_t i = 0; i < t->tok_len; i++)
          if (t->tok_value[i] >= 'a' && t->tok_value[i] <= 'z') t->tok_value[i] -= 32;
        t->tok_type = ENVIRON;
        return emit(t), true;
      }
      return false;
    case SUB_EXPOSE:
      sub = SUB_NONE;
      if (ty == EXPOSE) return emit(t), true;
      return false;
    }
    (void)nt;
    return false;
  }

  // The keyword rules proper. Returns true when the keyword stays.
  bool keep_keyword(rx_tok* t)
  {
    int32_t ty = t->tok_type;
    int32_t nt = next_type(k);
    bool cs = clause_start();
    if (optmode) {
      switch (ty) {
      case MIXED: case SETENV: case UNSETENV: case LOAD: case NOLOAD: case GLOBALV:
      case NOGLOBALV: case UPPER: case LOWER:
        set_option(ty);
        return true;
      default:
        return false;
      }
    }
    switch (ty) {
    case ADDRESS:
      if (!cs || in_b(nt)) return false;
      if (value_needed(nt)) {
        emit(t);
        insert(VALUE, t, "VALUE", 5);
        return true;
      }
      if (blank_after(k)) sub = SUB_ENVIRON;
      return true;
    case ARG: case PULL:
      if (!cs || in_w(nt) || nt == ':') return false;
      tmpl = true;
      return true;
    case END:
      return cs && !in_w(nt) && nt != ':';
    case CALL:
      if (!cs || in_w(nt) || nt == ';' || nt == ':' || nt == 0) return false;
      sub = SUB_CALL;
      return true;
    case DO:
      if (!cs || in_b(nt)) return false;
      dohdr = true;
      do_wu = false;
      return true;
    case DROP: case INTERPRET: case UPPER: case LOWER:
      return cs && !in_w(nt) && nt != ';';
    case IF:
      // A prefix operator may open the condition ("if \found then").
      if (!cs || in_b(nt) || nt == ';') return false;
      then_wait = true;
      return true;
    case THEN:
      if (nt == ':' || last == CALL || !then_wait) return false;
      then_wait = false;
      return true;
    case ELSE:
      return nt != ':' && last != CALL;
    case EXIT: case PUSH: case QUEUE: case RETURN: case SAY: case SAYN: case SAYX:
    case SAYR: case CD: case ITERATE: case LEAVE:
      return cs && !in_b(nt);
    case FOREVER:
      return last == DO;
    case NOP:
      return cs && nt == ';';
    case NUMERIC:
      if (!cs || (nt != DIGITS && nt != FORM && nt != FUZZ)) return false;
      emit(t);
      k = next_idx(k);
      emit(in[k]);
      if (in[k]->tok_type == FORM) {
        int32_t after = next_type(k);
        if (value_needed(after)) insert(VALUE, in[k], "VALUE", 5);
        else sub = SUB_FORM;
      }
      return true;
    case OTHERWISE:
      return cs && nt != ':' && last != CALL;
    case PARSE:
      switch (nt) {
      case UPPER: case ARG: case LINEIN: case PULL: case SOURCE: case VALUE: case VAR:
      case VERSION: case NUMERIC:
        if (!cs) return false;
        sub = SUB_PARSE;
        return true;
      default:
        return false;
      }
    case PROCEDURE:
      if (!cs || nt == ':' || in_w(nt)) return false;
      sub = SUB_EXPOSE;
      return true;
    case SELECT:
      return ((last == ';' || last == OTHERWISE) && nt == ';') || last == THEN || last == ELSE;
    case SIGNAL: case TRACE:
      if (!cs || in_b(nt)) return false;
      if (value_needed(nt)) {
        emit(t);
        insert(VALUE, t, "VALUE", 5);
        return true;
      }
      sub = ty == SIGNAL ? SUB_SIGNAL : SUB_TRACE;
      return true;
    case TO: case BY: case FOR:
      return dohdr && !do_wu && nt != '=';
    case WHILE: case UNTIL:
      if (!dohdr || nt == '=') return false;
      do_wu = true;
      return true;
    case WITH:
      if (nt == ':' || last == CALL || !with_wait) return false;
      with_wait = false;
      tmpl = true;
      return true;
    case WHEN:
      if (!cs || in_b(nt)) return false;
      then_wait = true;
      return true;
    case IN:
      return dohdr && last == SYMBOL;
    case OPTION:
      if (!cs || in_b(nt)) return false;
      optmode = true;
      return true;
    default:
      return false;
    }
  }

  void keyword(rx_tok* t)
  {
    if (settle_sub(t)) return;
    size_t before = out.size();
    bool keep = keep_keyword(t);
    if (out.size() != before) return;  // the rule emitted the tokens itself
    if (!keep) t->tok_type = SYMBOL;
    emit(t);
  }

  void semicolon(rx_tok* t)
  {
    if (last == ';' || last == THEN || last == ELSE || last == OTHERWISE) return;
    size_t j = next_idx(k);
    if (j < in.size() && (in[j]->tok_type == THEN || in[j]->tok_type == ELSE)) {
      int32_t after = next_type(j);
      if (after != ':' && after != '=') return;
    }
    emit(t);
    end_clause();
  }

  void open_paren(rx_tok* t)
  {
    rx_tok* prev = out.empty() ? nullptr : out.back();
    fparen = false;
    if (!tmpl && prev && (prev->tok_type == SYMBOL || prev->tok_type == STRING)) {
      if (prev->tok_type == STRING) {
        prev->tok_type = SFUNCTION;
        rx_fold_case(prev->tok_value, prev->tok_len, prog.opts.symcase);
      } else {
        prev->tok_type = FUNCTION;
      }
      fparen = true;
    }
    emit(t);
    if (fparen && next_type(k) == ')') insert(VIDE, t);
  }

  void comma(rx_tok* t)
  {
    bool after_name = call_name >= 0 && last == out[call_name]->tok_type &&
                      (out.back() == out[call_name] ||
                       (out.back()->tok_type == RX_BLANK && out.size() >= 2 &&
                        out[out.size() - 2] == out[call_name]));
    if (last == '(' || last == ',' || after_name) insert(VIDE, t);
    emit(t);
    int32_t nt = next_type(k);
    if (nt == ')' || nt == ';' || nt == 0) insert(VIDE, t);
  }

  void run()
  {
    out.reserve(in.size() + in.size() / 8 + 16);
    for (k = 0; k < in.size(); k++) {
      rx_tok* t = in[k];
      int32_t ty = t->tok_type;
      if (ty == NOLEX) continue;
      if (ty == RX_BLANK) {
        if (!tmpl && !optmode) out.push_back(t);
        continue;
      }
      if (is_keyword(ty)) {
        keyword(t);
        continue;
      }
      if (sub == SUB_CALL) {
        sub = SUB_NONE;
        emit(t);
        call_name = static_cast<long>(out.size()) - 1;
        continue;
      }
      if (sub == SUB_ENVIRON && (ty == SYMBOL || ty == STRING)) {
        settle_sub(t);
        continue;
      }
      if (sub != SUB_CALLON && sub != SUB_ONOFF && sub != SUB_NAMED) sub = SUB_NONE;
      switch (ty) {
      case ';':
        semicolon(t);
        break;
      case '(':
        open_paren(t);
        break;
      case ',':
        comma(t);
        break;
      case '[':
        depth++;
        emit(t);
        break;
      case ']':
        if (depth > 0) depth--;
        emit(t);
        break;
      case ':':
        emit(t);
        if (depth == 0 && next_type(k) != ';') insert(';', t);
        break;
      default:
        emit(t);
        break;
      }
    }
    if (out.empty() || out.back()->tok_type != ';') insert(';', in.empty() ? out.back() : in.back());
  }
};

bool abuts(int32_t t)
{
  return t == '(' || t == SYMBOL || t == STRING || t == FUNCTION || t == SFUNCTION;
}

// Abuttal: two expression parts written side by side are concatenated.
std::vector<rx_tok*> pass2(rx_arena& a, const std::vector<rx_tok*>& in)
{
  std::vector<rx_tok*> out;
  out.reserve(in.size() + in.size() / 16 + 16);
  bool inexpr = true;
  int32_t last = ';';     // last token that is not a blank
  int32_t before = ';';   // the one before last
  for (size_t k = 0; k < in.size(); k++) {
    rx_tok* t = in[k];
    int32_t ty = t->tok_type;
    out.push_back(t);
    if (ty != RX_BLANK) {
      before = last;
      last = ty;
    }
    switch (ty) {
    case ';': case VALUE: inexpr = true; continue;
    case ARG: case PARSE: case PULL: case WITH: inexpr = false; continue;
    default: break;
    }
    if (!inexpr || k + 1 >= in.size()) continue;
    int32_t nt = in[k + 1]->tok_type;
    if (ty == ')' || ty == ']') {
      if (abuts(nt) && before != ENVIRON) {
        out.push_back(rx_newtok(a, OP_CONC, t->tok_line, t->tok_col));
      } else if (nt == RX_BLANK && k + 2 < in.size()) {
        int32_t n2 = in[k + 2]->tok_type;
        if ((ty == ')' && n2 == '(') || (ty == ']' && abuts(n2))) {
          const rx_tok* b = in[k + 1];
          out.push_back(rx_newtok(a, OP_CONC, b->tok_line, b->tok_col));
          rx_tok* sp = rx_newtok(a, STRING, b->tok_line, b->tok_col, " ", 1);
          sp->tok_quoted = 1;
          out.push_back(sp);
          out.push_back(rx_newtok(a, OP_CONC, b->tok_line, b->tok_col));
          k++;
        }
      }
    } else if ((ty == SYMBOL || ty == STRING) && abuts(nt) && nt != '(' &&
               !(ty == SYMBOL && before == CALL)) {
      out.push_back(rx_newtok(a, OP_CONC, t->tok_line, t->tok_col));
    }
  }
  return out;
}

bool expr_start(int32_t t)
{
  return t == '(' || t == SYMBOL || t == STRING || t == FUNCTION || t == SFUNCTION;
}

bool expr_end(int32_t t) { return t == ')' || t == ']' || t == SYMBOL || t == STRING; }

// Tokens next to which a blank means nothing.
bool blank_eater(int32_t t)
{
  if (t == ',' || t == ':' || t == ';' || t == '[' || t == ']' || t == VIDE) return true;
  if (rx_is_operator(t)) return true;
  return t >= ADDRESS && t <= IN && t != FUNCTION && t != SFUNCTION;
}

// Splits a symbol at its dots into its part list and stem key.
void split_symbol(rx_arena& a, rx_tok* t)
{
  const char* v = t->tok_value;
  int32_t n = t->tok_len;
  int32_t dot = 0;
  while (dot < n && v[dot] != '.') dot++;
  if (dot == n) return;
  t->tok_stem = a.text(v, dot + 1);
  t->tok_stem[dot] = '+';
  t->tok_stem_len = dot + 1;
  rx_part* head = a.make<rx_part>();
  head->part_text = t->tok_value;
  head->part_len = dot;
  t->tok_sym = head;
  rx_part* tail = head;
  int32_t p = dot + 1;
  for (;;) {
    int32_t e = p;
    while (e < n && v[e] != '.') e++;
    rx_part* part = a.make<rx_part>();
    part->part_text = t->tok_value + p;
    part->part_len = e - p;
    tail->part_next = part;
    tail = part;
    if (e >= n) break;
    p = e + 1;
  }
}

// Blank removal, case folding and compound splitting.
std::vector<rx_tok*> pass3(rx_prog& prog, const std::vector<rx_tok*>& in)
{
  std::vector<rx_tok*> out;
  out.reserve(in.size());
  bool bq_open = false;  // inside a backquoted expression
  for (size_t k = 0; k < in.size(); k++) {
    rx_tok* t = in[k];
    int32_t ty = t->tok_type;
    if (ty == RX_BLANK) {
      int32_t prev = out.empty() ? ';' : out.back()->tok_type;
      int32_t next = k + 1 < in.size() ? in[k + 1]->tok_type : ';';
      bool prev_end = expr_end(prev) || (prev == '`' && !bq_open);
      bool next_start = expr_start(next) || (next == '`' && !bq_open);
      bool drop = blank_eater(prev) || blank_eater(next) || next == RX_BLANK ||
                  prev == '(' || next == ')' ||
                  (prev == '`' && bq_open) || (next == '`' && bq_open) ||
                  (prev == ')' && !next_start) || (next == '(' && !prev_end);
      if (!drop) out.push_back(t);
      continue;
    }
    if (ty == '`') bq_open = !bq_open;
    if (ty == SYMBOL || ty == FUNCTION) rx_fold_case(t->tok_value, t->tok_len, prog.opts.symcase);
    if (ty == SYMBOL) split_symbol(*prog.arena, t);
    out.push_back(t);
  }
  return out;
}

}  // namespace

void rx_fold_case(char* s, size_t n, int32_t symcase)
{
  if (symcase == CASE_MIXED) return;
  bool lower = symcase == CASE_LOWER;
  for (size_t i = 0; i < n; i++) {
    unsigned char c = static_cast<unsigned char>(s[i]);
    if (lower && c >= 'A' && c <= 'Z') s[i] = static_cast<char>(c + 32);
    else if (!lower && c >= 'a' && c <= 'z') s[i] = static_cast<char>(c - 32);
  }
}

void rx_lex2(rx_prog& prog)
{
  if (prog.toks.empty()) return;
  // Each array is let go as soon as the next one is made, so that at most
  // two arrays of pointers exist at a time.
  std::vector<rx_tok*> p1out;
  {
    pass1 p1{prog, *prog.arena, prog.toks, {}};
    p1.run();
    p1out.swap(p1.out);
  }
  if (prog.lex_trace) prog.lex_log += rx_toks_trace(p1out, " ..... lex2(1)");
  std::vector<rx_tok*>().swap(prog.toks);
  std::vector<rx_tok*> p2 = pass2(*prog.arena, p1out);
  std::vector<rx_tok*>().swap(p1out);
  if (prog.lex_trace) prog.lex_log += rx_toks_trace(p2, " ..... lex2(2)");
  prog.toks = pass3(prog, p2);
  if (prog.lex_trace) prog.lex_log += rx_toks_trace(prog.toks, " ..... lex2(3)");
}
