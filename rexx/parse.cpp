// Clauses: the statement grammar and the building of the program tree.
//
// Each clause appends its record to the block being built; DO, IF, SELECT
// and OTHERWISE open nested blocks. The error number of a plain syntax
// error follows the construct being read, so that "do i = 1 to" reports an
// invalid DO and "if a say" a missing THEN.
#include "rexx/parse_int.h"

#include <cstring>
#include <new>

namespace {

template <class T> T* clause_rec(rx_arena& a, int32_t kind, const rx_tok* at)
{
  T* c = a.make<T>();
  c->kind = kind;
  c->line = at->tok_line;
  return c;
}

bool is_condition(int32_t t)
{
  return t == ERROR || t == FAILURE || t == HALT || t == NOVALUE || t == NOTREADY || t == SYNTAX;
}

bool is_option_word(int32_t t)
{
  switch (t) {
  case UPPER: case LOWER: case MIXED: case SETENV: case UNSETENV: case LOAD: case NOLOAD:
  case GLOBALV: case NOGLOBALV:
    return true;
  default:
    return false;
  }
}

// Clause kinds that are a keyword and an optional expression.
struct exprkw {
  int32_t tok;    // the keyword
  int32_t kind;   // the clause kind it makes
};

constexpr exprkw exprkw_tab[] = {
  {SAY, K_SAY}, {SAYN, K_SAYN}, {SAYX, K_SAYX}, {SAYR, K_SAYR}, {EXIT, K_EXIT},
  {RETURN, K_RETURN}, {PUSH, K_PUSH}, {QUEUE, K_QUEUE}, {CD, K_CD},
};
static_assert(sizeof exprkw_tab / sizeof exprkw_tab[0] == 9);

struct parsesrc {
  int32_t tok;    // source keyword after PARSE
  int32_t mode;   // PS_* source mode
};

constexpr parsesrc parsesrc_tab[] = {
  {ARG, PS_ARG}, {LINEIN, PS_LINEIN}, {PULL, PS_PULL}, {SOURCE, PS_SOURCE},
  {VALUE, PS_VALUE}, {VAR, PS_VAR}, {VERSION, PS_VERSION}, {NUMERIC, PS_NUMERIC},
};
static_assert(sizeof parsesrc_tab / sizeof parsesrc_tab[0] == 8);

unsigned label_hash(const char* s, size_t n)
{
  if (n == 0) return 0;
  int h = static_cast<signed char>(s[0]);
  for (size_t i = 1; i <= n; i++) {
    int b = i < n ? static_cast<signed char>(s[i]) : 0;
    h = (h * 31 + b) & 127;
  }
  return static_cast<unsigned>(h);
}

// The clauses proper, kept apart from the engine's plumbing in parser.
struct clauses {
  parser& p;

  rx_clause* if_clause();
  rx_clause* do_clause();
  rx_clause* select_clause();
  rx_clause* leave_clause(int32_t kind);
  rx_clause* signal_clause();
  rx_clause* call_clause();
  rx_clause* call_on(const rx_tok* at);
  rx_clause* parse_clause();
  rx_clause* template_clause(int32_t source);
  rx_clause* address_clause();
  rx_clause* vars_clause(int32_t kind, bool need_one);
  rx_clause* numeric_clause();
  rx_clause* trace_clause();
  rx_clause* option_clause();
  rx_clause* label(rx_tok* name);
  rx_clause* assignment(rx_tok* target);
  rx_clause* command();
  rx_tok* varlist(bool need_one);
  rx_tok* tmpl();
  bool paren_call_args() const;
};

}  // namespace

bool parser::at_end() const
{
  return pos >= t.size() || (pos + 1 == t.size() && t[pos]->tok_type == ';');
}

void parser::fail(int32_t num, const rx_tok* at, const char* msg)
{
  if (!at && at_end()) {
    for (size_t i = open.size(); i-- > 0;) {
      err.err_num = open[i].num;
      err.err_line = open[i].tok->tok_line;
      err.err_col = open[i].tok->tok_col;
      throw parse_fail{};
    }
  }
  if (!at) at = pos < t.size() ? t[pos] : (t.empty() ? nullptr : t.back());
  err.err_num = num;
  err.err_line = at ? at->tok_line : 0;
  err.err_col = at ? at->tok_col : 0;
  if (msg) err.err_msg = msg;
  throw parse_fail{};
}

void parser::fail_msg(int32_t num, const rx_tok* at, const std::string& msg)
{
  err.err_msg = msg;
  fail(num, at);
}

void parser::expect(int32_t type)
{
  if (peek() != type) fail(cur_err);
  pos++;
}

void parser::enter()
{
  if (++depth > RX_MAX_DEPTH) fail(61, tok());
}

void parser::open_block()
{
  rx_frame* f = a.make<rx_frame>();
  f->fr_current = current_cell;
  f->fr_head = block_head;
  f->fr_prev = frame;
  frame = f;
  block_head = current_cell = a.make<rx_cell>();
}

rx_cell* parser::close_block()
{
  rx_cell* head = block_head;
  current_cell = frame->fr_current;
  block_head = frame->fr_head;
  frame = frame->fr_prev;
  return head;
}

void parser::append(rx_clause* c)
{
  if (c->kind == K_LABEL) {
    auto* lab = static_cast<rx_cl_label*>(c);
    if (!rx_label_find(prog, lab->name, lab->len)) {
      rx_label* l = a.make<rx_label>();
      l->name = lab->name;
      l->len = lab->len;
      l->cell = current_cell;
      unsigned h = label_hash(lab->name, lab->len);
      l->next = prog.labels[h];
      prog.labels[h] = l;
    }
  }
  current_cell->cl = c;
  current_cell->next = a.make<rx_cell>();
  current_cell = current_cell->next;
}

// program: { clause ; }
void parser::program()
{
  block_head = current_cell = a.make<rx_cell>();
  clause_list(false, false);
  prog.block_head = block_head;
}

// list: { clause ; } up to END (and WHEN, OTHERWISE inside SELECT)
void parser::clause_list(bool stop_at_end, bool stop_at_when)
{
  for (;;) {
    int32_t ty = peek();
    if (ty == 0) return;
    if (ty == ';') {
      pos++;
      continue;
    }
    if (stop_at_end && ty == END) return;
    if (stop_at_when && (ty == WHEN || ty == OTHERWISE)) return;
    if (rx_clause* c = clause()) append(c);
    if (peek() == ELSE) fail(8);
    expect(';');
  }
}

// A block holding the one clause after THEN, ELSE.
rx_cell* parser::single_clause_block()
{
  open_block();
  if (peek() == ';') fail(cur_err);
  if (rx_clause* c = clause()) append(c);
  return close_block();
}

rx_clause* parser::clause()
{
  enter();
  cur_err = 55;
  clauses c{*this};
  rx_tok* t0 = tok();
  int32_t ty = peek();
  rx_clause* r = nullptr;
  for (const exprkw& k : exprkw_tab) {
    if (k.tok == ty) {
      pos++;
      auto* e = clause_rec<rx_cl_expr>(a, k.kind, t0);
      e->expr = opt_expr();
      leave();
      return e;
    }
  }
  switch (ty) {
  case SYMBOL:
    if (peek(1) == ':') r = c.label(t0);
    else if (peek(1) == '=' || peek(1) == '[') r = c.assignment(t0);
    else r = c.command();
    break;
  case STRING:
    r = peek(1) == ':' ? c.label(t0) : c.command();
    break;
  case IF: r = c.if_clause(); break;
  case DO: r = c.do_clause(); break;
  case SELECT: r = c.select_clause(); break;
  case LEAVE: r = c.leave_clause(K_LEAVE); break;
  case ITERATE: r = c.leave_clause(K_ITERATE); break;
  case SIGNAL: r = c.signal_clause(); break;
  case CALL: r = c.call_clause(); break;
  case PROCEDURE: {
    pos++;
    auto* v = clause_rec<rx_cl_vars>(a, K_PROCEDURE, t0);
    if (peek() == EXPOSE) {
      pos++;
      v->vars = c.varlist(true);
    }
    r = v;
    break;
  }
  case NOP: pos++; break;
  case PARSE: r = c.parse_clause(); break;
  case ARG: pos++; r = c.template_clause(PS_ARG); break;
  case PULL: pos++; r = c.template_clause(PS_PULL); break;
  case ADDRESS: r = c.address_clause(); break;
  case DROP: r = c.vars_clause(K_DROP, true); break;
  case UPPER: r = c.vars_clause(K_UPPER, true); break;
  case LOWER: r = c.vars_clause(K_LOWER, true); break;
  case INTERPRET: {
    pos++;
    auto* e = clause_rec<rx_cl_expr>(a, K_INTERPRET, t0);
    e->expr = expr();
    r = e;
    break;
  }
  case NUMERIC: r = c.numeric_clause(); break;
  case TRACE: r = c.trace_clause(); break;
  case OPTION: r = c.option_clause(); break;
  case THEN:
  case ELSE:
    fail(8);
  case END:
  case WHEN:
  case OTHERWISE:
    fail(cur_err);
  default:
    r = c.command();
    break;
  }
  leave();
  return r;
}

// if: IF expr THEN clause [ELSE clause]
rx_clause* clauses::if_clause()
{
  rx_tok* kw = p.tok();
  p.pos++;
  p.open.push_back({66, kw});
  auto* c = clause_rec<rx_cl_if>(p.a, K_IF, kw);
  p.cur_err = 50;
  c->cond = p.expr();
  p.cur_err = 18;
  p.expect(THEN);
  p.cur_err = 55;
  c->then_block = p.single_clause_block();
  if (p.peek() == ELSE) {
    p.pos++;
    p.cur_err = 55;
    c->else_block = p.single_clause_block();
  }
  p.open.pop_back();
  return c;
}

// do: DO [repetitor] [cond] ; list END [SYMBOL]
// repetitor: expr | FOREVER | SYMBOL = expr {TO expr | BY expr | FOR expr}
//     | SYMBOL IN expr
// cond: WHILE expr | UNTIL expr
rx_clause* clauses::do_clause()
{
  rx_tok* kw = p.tok();
  p.pos++;
  p.open.push_back({64, kw});
  auto* d = clause_rec<rx_cl_do>(p.a, K_DO, kw);
  d->loop_mode = DO_PLAIN;
  d->cond_mode = COND_NONE;
  d->n_options = -1;
  p.cur_err = 27;
  if (p.peek() == SYMBOL && p.peek(1) == '=') {
    d->loop_mode = DO_CONTROLLED;
    d->control = p.tok();
    p.pos += 2;
    d->start = p.expr();
    for (;;) {
      int32_t ty = p.peek();
      rx_tok** slot;
      int32_t code;
      const char* twice;
      if (ty == TO) slot = &d->to, code = 1, twice = "\"TO\" has been used twice.";
      else if (ty == BY) slot = &d->by, code = 2, twice = "\"BY\" has been used twice.";
      else if (ty == FOR) slot = &d->for_, code = 3, twice = "\"FOR\" has been used twice.";
      else break;
      if (*slot) p.fail(27, p.tok(), twice);
      p.pos++;
      *slot = p.expr();
      d->order[++d->n_options] = code;
    }
  } else if (p.peek() == SYMBOL && p.peek(1) == IN) {
    d->loop_mode = DO_IN;
    d->control = p.tok();
    p.pos += 2;
    d->start = p.expr();
  } else if (p.peek() == FOREVER) {
    d->loop_mode = DO_FOREVER;
    p.pos++;
  } else if (p.peek() != WHILE && p.peek() != UNTIL && p.peek() != ';') {
    d->loop_mode = DO_COUNTED;
    d->start = p.expr();
  }
  if (p.peek() == WHILE || p.peek() == UNTIL) {
    d->cond_mode = p.peek() == WHILE ? COND_WHILE : COND_UNTIL;
    p.pos++;
    d->cond = p.expr();
    if (p.peek() == WHILE) p.fail(27, p.tok(), "\"WHILE\" has been used twice.");
    if (p.peek() == UNTIL) p.fail(27, p.tok(), "\"UNTIL\" has been used twice.");
  }
  p.expect(';');
  d->outer = p.cur_do;
  p.cur_do = d;
  p.open_block();
  p.clause_list(true, false);
  if (p.peek() != END) p.fail(27);
  d->body = p.close_block();
  d->end_line = p.tok()->tok_line;
  p.pos++;
  p.cur_err = 27;
  if (p.peek() == SYMBOL) {
    rx_tok* name = p.tok();
    if (!d->control)
      p.fail(27, name,
             "A \"END symbol\" clause may only be used with a controlled repetitive loop");
    if (std::strcmp(name->tok_value, d->control->tok_value) != 0)
      p.fail_msg(27, name,
                 std::string("Only the controlling variable ") + d->control->tok_value +
                     " can be specified.");
    p.pos++;
  }
  p.cur_do = d->outer;
  p.open.pop_back();
  return d;
}

// select: SELECT ; {WHEN expr THEN clause ;} [OTHERWISE list] END
rx_clause* clauses::select_clause()
{
  rx_tok* kw = p.tok();
  p.pos++;
  auto* s = clause_rec<rx_cl_select>(p.a, K_SELECT, kw);
  s->otherwise_line = -1;
  p.cur_err = 52;
  p.expect(';');
  p.open.push_back({65, kw});
  s->outer = p.cur_select;
  p.cur_select = s;
  rx_when** link = &s->first_when;
  bool any = false;
  p.cur_err = 7;
  for (;;) {
    int32_t ty = p.peek();
    if (ty == ';') {
      p.pos++;
      continue;
    }
    if (ty == WHEN) {
      rx_tok* w = p.tok();
      p.pos++;
      rx_when* rec = p.a.make<rx_when>();
      rec->line = w->tok_line;
      rec->col = w->tok_col;
      p.cur_err = 55;
      rec->cond = p.expr();
      p.cur_err = 18;
      p.expect(THEN);
      p.cur_err = 55;
      rec->block = p.single_clause_block();
      if (p.peek() == ELSE) p.fail(8);
      p.expect(';');
      *link = rec;
      link = &rec->next;
      any = true;
      p.cur_err = 7;
      continue;
    }
    if (ty == OTHERWISE) {
      if (!any) p.fail(53);
      s->otherwise_line = p.tok()->tok_line;
      p.pos++;
      p.open_block();
      p.clause_list(true, false);
      s->otherwise_block = p.close_block();
    }
    if (p.peek() != END || !any) p.fail(7);
    break;
  }
  s->last_when = p.a.make<rx_when>();
  *link = s->last_when;
  s->end_line = p.tok()->tok_line;
  p.pos++;
  p.cur_select = s->outer;
  p.open.pop_back();
  return s;
}

// leave: LEAVE [expr] ; the expression must be a single symbol
rx_clause* clauses::leave_clause(int32_t kind)
{
  rx_tok* kw = p.tok();
  p.pos++;
  auto* c = clause_rec<rx_cl_leave>(p.a, kind, kw);
  rx_tok* e = p.opt_expr();
  if (e && e->tok_type == RX_NODE)
    p.fail(28, e, "LEAVE or ITERATE may only be followed by a SYMBOL.");
  c->name = e ? e->tok_value : nullptr;
  return c;
}

// signal: SIGNAL STRING | SIGNAL SYMBOL | SIGNAL ON|OFF condition [NAME SYMBOL]
//       | SIGNAL VALUE expr
rx_clause* clauses::signal_clause()
{
  rx_tok* kw = p.tok();
  p.pos++;
  auto* s = clause_rec<rx_cl_signal>(p.a, K_SIGNAL, kw);
  switch (p.peek()) {
  case STRING: s->mode = SIG_STRING; s->op1 = p.tok(); p.pos++; break;
  case SYMBOL: s->mode = SIG_SYMBOL; s->op1 = p.tok(); p.pos++; break;
  case VALUE: s->mode = SIG_VALUE; p.pos++; s->op1 = p.expr(); break;
  case ON:
  case OFF:
    s->mode = SIG_ONOFF;
    s->op1 = p.tok();
    p.pos++;
    if (!is_condition(p.peek())) p.fail(p.cur_err);
    s->op2 = p.tok();
    p.pos++;
    if (p.peek() == NAME) {
      p.pos++;
      if (p.peek() != SYMBOL) p.fail(p.cur_err);
      s->name = p.tok();
      p.pos++;
    }
    break;
  default:
    p.fail(p.cur_err);
  }
  return s;
}

// CALL ON|OFF condition [NAME SYMBOL], made as a SIGNAL record
rx_clause* clauses::call_on(const rx_tok* at)
{
  auto* s = clause_rec<rx_cl_signal>(p.a, K_SIGNAL, at);
  s->mode = SIG_CALLON;
  s->op1 = p.tok();
  p.pos++;
  if (!is_condition(p.peek()) || p.peek() == SYNTAX) p.fail(p.cur_err);
  s->op2 = p.tok();
  p.pos++;
  if (p.peek() == NAME) {
    p.pos++;
    if (p.peek() != SYMBOL) p.fail(p.cur_err);
    s->name = p.tok();
    p.pos++;
  }
  return s;
}

// After "CALL name" and a blank: is this "( args )" closing the clause?
bool clauses::paren_call_args() const
{
  if (p.peek() != '(') return false;
  int depth = 0;
  bool comma = false;
  for (size_t i = p.pos; i < p.t.size(); i++) {
    int32_t ty = p.t[i]->tok_type;
    if (ty == '(') depth++;
    else if (ty == ',' && depth == 1) comma = true;
    else if (ty == ')' && --depth == 0) {
      int32_t after = i + 1 < p.t.size() ? p.t[i + 1]->tok_type : 0;
      return comma && (after == ';' || after == ELSE || after == 0);
    } else if (ty == ';') {
      return false;
    }
  }
  return false;
}

// call: CALL name [ ] [args] | CALL name ( args ) | CALL FUNCTION ( args )
//     | CALL SFUNCTION ( args ) | CALL ON|OFF condition [NAME SYMBOL]
rx_clause* clauses::call_clause()
{
  rx_tok* kw = p.tok();
  p.pos++;
  int32_t ty = p.peek();
  if (ty == ON || ty == OFF) return call_on(kw);
  auto* c = clause_rec<rx_cl_call>(p.a, K_CALL, kw);
  c->fname = p.tok();
  if (ty == FUNCTION || ty == SFUNCTION) {
    p.pos++;
    p.expect('(');
    c->args = p.args();
    p.expect(')');
    return c;
  }
  if (ty != SYMBOL && ty != STRING) p.fail(p.cur_err);
  p.pos++;
  if (p.peek() == RX_BLANK) p.pos++;
  if (paren_call_args()) {
    p.pos++;
    c->args = p.args();
    p.expect(')');
  } else if (p.peek() == VIDE || parser::starts_expr(p.peek())) {
    c->args = p.args();
  }
  return c;
}

// A TEMPLATE: every token up to ';' or ELSE, chained.
rx_tok* clauses::tmpl()
{
  rx_tok* head = nullptr;
  rx_tok** link = &head;
  while (p.peek() != ';' && p.peek() != ELSE && p.peek() != 0) {
    rx_tok* t = p.tok();
    t->tok_next = nullptr;
    *link = t;
    link = &t->tok_next;
    p.pos++;
  }
  return head;
}

rx_clause* clauses::template_clause(int32_t source)
{
  auto* c = clause_rec<rx_cl_parse>(p.a, K_PARSE, p.t[p.pos - 1]);
  c->upper = 1;
  c->source = source;
  c->tmpl = tmpl();
  return c;
}

// parse: PARSE [UPPER] ARG|LINEIN|PULL|SOURCE|VERSION|NUMERIC template
//      | PARSE [UPPER] VAR SYMBOL template | PARSE [UPPER] VALUE [expr] WITH template
rx_clause* clauses::parse_clause()
{
  rx_tok* kw = p.tok();
  p.pos++;
  auto* c = clause_rec<rx_cl_parse>(p.a, K_PARSE, kw);
  if (p.peek() == UPPER) {
    c->upper = 1;
    p.pos++;
  }
  int32_t ty = p.peek();
  const parsesrc* src = nullptr;
  for (const parsesrc& s : parsesrc_tab)
    if (s.tok == ty) src = &s;
  if (!src) p.fail(p.cur_err);
  c->source = src->mode;
  p.pos++;
  if (src->mode == PS_VAR) {
    if (p.peek() != SYMBOL) p.fail(p.cur_err);
    c->operand = p.tok();
    p.pos++;
  } else if (src->mode == PS_VALUE) {
    c->operand = p.peek() == WITH ? nullptr : p.expr();
    p.expect(WITH);
  }
  c->tmpl = tmpl();
  return c;
}

// address: ADDRESS | ADDRESS ENVIRON [expr] | ADDRESS VALUE expr
rx_clause* clauses::address_clause()
{
  rx_tok* kw = p.tok();
  p.pos++;
  auto* c = clause_rec<rx_cl_address>(p.a, K_ADDRESS, kw);
  if (p.peek() == ENVIRON) {
    c->mode = 1;
    c->env = p.tok();
    p.pos++;
    c->cmd = p.opt_expr();
  } else if (p.peek() == VALUE) {
    c->mode = 1;
    p.pos++;
    c->env = p.expr();
  }
  return c;
}

// varlist: item { sep item }  item: SYMBOL | ( SYMBOL )  sep: blank | || STRING ||
rx_tok* clauses::varlist(bool need_one)
{
  rx_tok* head = nullptr;
  rx_tok** link = &head;
  for (;;) {
    rx_tok* v;
    if (p.peek() == SYMBOL) {
      v = p.tok();
      p.pos++;
    } else if (p.peek() == '(' && p.peek(1) == SYMBOL && p.peek(2) == ')') {
      v = p.t[p.pos + 1];
      v->tok_quoted = 2;
      p.pos += 3;
    } else {
      if (head || !need_one) break;
      p.fail(p.cur_err);
    }
    v->tok_next = nullptr;
    *link = v;
    link = &v->tok_next;
    if (p.peek() == RX_BLANK) {
      p.pos++;
    } else if (p.peek() == OP_CONC && p.peek(1) == STRING && p.peek(2) == OP_CONC) {
      p.pos += 3;
    } else {
      break;
    }
  }
  return head;
}

// drop: DROP varlist (and UPPER, LOWER)
rx_clause* clauses::vars_clause(int32_t kind, bool need_one)
{
  rx_tok* kw = p.tok();
  p.pos++;
  p.cur_err = 20;
  auto* c = clause_rec<rx_cl_vars>(p.a, kind, kw);
  c->vars = varlist(need_one);
  return c;
}

// numeric: NUMERIC DIGITS [expr] | NUMERIC FORM SCIENTIFIC | NUMERIC FORM ENGINEERING
//        | NUMERIC FORM VALUE expr | NUMERIC FUZZ [expr]
rx_clause* clauses::numeric_clause()
{
  rx_tok* kw = p.tok();
  p.pos++;
  p.cur_err = 25;
  auto* c = clause_rec<rx_cl_numeric>(p.a, K_NUMERIC, kw);
  int32_t ty = p.peek();
  p.pos++;
  if (ty == DIGITS || ty == FUZZ) {
    c->mode = ty == DIGITS ? NUM_DIGITS : NUM_FUZZ;
    c->expr = p.opt_expr();
    return c;
  }
  if (ty != FORM) p.fail(25, p.t[p.pos - 1]);
  ty = p.peek();
  p.pos++;
  if (ty == SCIENTIFIC) c->mode = NUM_SCIENTIFIC;
  else if (ty == ENGINEERING) c->mode = NUM_ENGINEERING;
  else if (ty == VALUE) c->mode = NUM_FORMVALUE, c->expr = p.expr();
  else p.fail(25, p.t[p.pos - 1]);
  return c;
}

// trace: TRACE | TRACE SYMBOL | TRACE STRING | TRACE VALUE expr
rx_clause* clauses::trace_clause()
{
  rx_tok* kw = p.tok();
  p.pos++;
  auto* c = clause_rec<rx_cl_trace>(p.a, K_TRACE, kw);
  int32_t ty = p.peek();
  if (ty == SYMBOL || ty == STRING) {
    c->first = p.tok();
    p.pos++;
  } else if (ty == VALUE) {
    c->value_tok = p.tok();
    p.pos++;
    c->expr = p.expr();
  }
  return c;
}

// option: OPTION word {word}; the words took effect while lexing
rx_clause* clauses::option_clause()
{
  p.pos++;
  p.cur_err = 25;
  if (!is_option_word(p.peek())) p.fail(25);
  while (is_option_word(p.peek())) p.pos++;
  return nullptr;
}

// label: SYMBOL : | STRING :
rx_clause* clauses::label(rx_tok* name)
{
  p.pos += 2;
  auto* c = clause_rec<rx_cl_label>(p.a, K_LABEL, name);
  char* text = p.a.text(name->tok_value, name->tok_len);
  if (name->tok_type == STRING && !name->tok_quoted)
    rx_fold_case(text, name->tok_len, p.prog.opts.symcase);
  c->name = text;
  c->len = name->tok_len;
  c->frame = p.frame;
  return c;
}

// assignment: SYMBOL = [expr] | SYMBOL [ expr ] = [expr] | SYMBOL [ expr : expr ] = [expr]
//           | SYMBOL [ expr : ] = [expr] | SYMBOL [ : expr ] = [expr]
rx_clause* clauses::assignment(rx_tok* target)
{
  size_t start = p.pos;
  auto* c = clause_rec<rx_cl_assign>(p.a, K_ASSIGN, target);
  c->target = target;
  p.pos++;
  if (p.peek() == '[') {
    p.pos++;
    c->has_index = 1;
    if (p.peek() != ':') c->index1 = p.expr();
    if (p.peek() == ':') {
      p.pos++;
      c->index2_mode = -1;
      if (p.peek() != ']') {
        c->index2 = p.expr();
        c->index2_mode = 1;
      }
      if (!c->index1 && !c->index2) p.fail(p.cur_err);
    } else if (!c->index1) {
      p.fail(p.cur_err);
    }
    if (p.peek() != ']' || p.peek(1) != '=') {
      p.pos = start;
      return command();
    }
    p.pos++;
  }
  p.pos++;
  c->val = p.opt_expr();
  return c;
}

rx_clause* clauses::command()
{
  rx_tok* t0 = p.tok();
  auto* c = clause_rec<rx_cl_expr>(p.a, K_COMMAND, t0);
  c->expr = p.expr();
  return c;
}

const rx_label* rx_label_find(const rx_prog& prog, const char* name, size_t len)
{
  unsigned h = label_hash(name, len);
  for (const rx_label* l = prog.labels[h]; l; l = l->next)
    if (static_cast<size_t>(l->len) == len && std::memcmp(l->name, name, len) == 0) return l;
  return nullptr;
}

rx_prog::rx_prog() : arena(std::make_unique<rx_arena>()) {}
rx_prog::~rx_prog() = default;

int rx_parse_tokens(rx_prog& prog, rx_err& err)
{
  parser p(prog, err);
  try {
    p.program();
  } catch (const parse_fail&) {
    prog.block_head = nullptr;
    return err.err_num;
  } catch (const std::bad_alloc&) {
    prog.block_head = nullptr;
    err.err_num = 62;
    const rx_tok* at = p.tok();
    err.err_line = at ? at->tok_line : 0;
    err.err_col = at ? at->tok_col : 0;
    return err.err_num;
  }
  return 0;
}

int rx_parse(rx_prog& prog, const char* text, size_t len, rx_err& err)
{
  try {
    if (int e = rx_lex(prog, text, len, 0, err)) return e;
    rx_lex2(prog);
  } catch (const std::bad_alloc&) {
    prog.toks.clear();
    err.err_num = 62;
    err.err_line = err.err_col = 0;
    return err.err_num;
  }
  return rx_parse_tokens(prog, err);
}
