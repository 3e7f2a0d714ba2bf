// The clause walker: one dispatch over the clause kinds of the tree, the
// loops of DO in their five modes, IF and SELECT, assignment, the SAY
// family, the stack clauses, NUMERIC, DROP, UPPER/LOWER, PROCEDURE and
// ADDRESS. Calls, SIGNAL and INTERPRET live in exec_call.cpp.
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include "rexx/exec_int.h"

namespace {

const rx_tok* expr_of(const rx_clause* c) { return static_cast<const rx_cl_expr*>(c)->expr; }

std::string text_of(const rx_tok* e)
{
  if (!e) return "";
  value v;
  rx_eval(e, v);
  if (rx_tracing(TR_R | TR_I)) rx_trace_result(v);
  return rx_text(v);
}

// ---- loops ---------------------------------------------------------------------------

// After a body: 0 go on, 1 leave this loop, 2 pass the status outwards.
int loop_status(rx_flow f, const rx_cl_do* d, rx_flow& out)
{
  out = f;
  if (f == FL_NEXT) return 0;
  if (f == FL_RETURN) return 2;
  const char* want = rx_st->pending;
  bool mine = !want || (d->control && std::strcmp(want, d->control->tok_value) == 0);
  if (!mine) return 2;
  rx_st->pending = nullptr;
  out = FL_NEXT;
  return f == FL_LEAVE ? 1 : 0;
}

bool while_ok(const rx_cl_do* d)
{
  return d->cond_mode != COND_WHILE ||
         rx_eval_truth(d->cond, "WHILE expression evaluates to \"", "\"") == 1;
}

bool until_done(const rx_cl_do* d)
{
  return d->cond_mode == COND_UNTIL &&
         rx_eval_truth(d->cond, "UNTIL expression evaluates to \"", "\"") == 1;
}

long long whole_count(const rx_tok* e, const char* after)
{
  value v;
  rx_eval(e, v);
  long long n;
  if (rx_whole(v, n) != 0 || n < 0) {
    rx_at(e);
    rx_raise(26, "Expression evaluates to \"" + rx_text(v) + after);
  }
  return n;
}

// Counts a loop pass for the poll even when the body ran no clause.
inline void tick()
{
  if (++rx_st->clauses % 20 == 0 && rx_poll_hook) rx_poll_hook();
  if (rx_halt_pending) rx_halted();
}

rx_flow do_simple(const rx_cl_do* d)
{
  long long count = -1;
  if (d->loop_mode == DO_COUNTED) count = whole_count(d->start, "\"; must be a positive integer or zero");
  // A plain DO with WHILE or UNTIL repeats like DO FOREVER.
  bool once = d->loop_mode == DO_PLAIN && d->cond_mode == COND_NONE;
  if (once) return rx_run_block(d->body);
  for (long long i = 0; count < 0 || i < count; i++) {
    if (!while_ok(d)) break;
    tick();
    rx_flow f = rx_run_block(d->body);
    rx_flow out;
    int s = loop_status(f, d, out);
    if (s == 2) return out;
    if (s == 1) break;
    if (until_done(d)) break;
  }
  return FL_NEXT;
}

rx_flow do_in(const rx_cl_do* d)
{
  value v;
  rx_eval(d->start, v);
  std::string text = rx_text(v);
  size_t p = 0;
  for (;;) {
    while (p < text.size() && (text[p] == ' ' || text[p] == '\t' || text[p] == '\n')) p++;
    if (p >= text.size()) break;
    size_t e = p;
    while (e < text.size() && text[e] != ' ' && text[e] != '\t' && text[e] != '\n') e++;
    rx_set_var(d->control, value(text.data() + p, e - p));
    p = e;
    if (!while_ok(d)) break;
    tick();
    rx_flow out;
    int s = loop_status(rx_run_block(d->body), d, out);
    if (s == 2) return out;
    if (s == 1) break;
    if (until_done(d)) break;
  }
  return FL_NEXT;
}

rx_flow do_controlled(const rx_cl_do* d)
{
  value start;
  rx_eval(d->start, start);
  if (!val_make_num(start)) {
    rx_at(d->start);
    rx_raise(26, "The control variable " + std::string(d->control->tok_value) + " evaluates to \"" +
                     rx_text(start) + "\"");
  }
  double to = 0, by = 1;
  int by_dec = 0;
  bool has_to = false;
  long long count = -1;
  int digits = rx_numeric.digits;
  for (int k = 0; k <= d->n_options; k++) {
    value v;
    const rx_tok* e = d->order[k] == 1 ? d->to : d->order[k] == 2 ? d->by : d->for_;
    if (d->order[k] == 3) {
      count = whole_count(e, "\"; must be a positive integer or zero");
      continue;
    }
    rx_eval(e, v);
    if (!val_make_num(v)) {
      rx_at(e);
      rx_raise(41, "String \"" + rx_text(v) + "\" is invalid.");
    }
    if (d->order[k] == 1) {
      to = rx_round(v.val_num, digits);
      has_to = true;
    } else {
      by = rx_round(v.val_num, digits);
      by_dec = v.val_dec;
    }
  }
  double x = rx_round(start.val_num, digits);
  int dec = start.val_dec > by_dec ? start.val_dec : by_dec;
  var_entry* ent = rx_set_var(d->control, value(x, start.val_dec));
  uint32_t seen = ent->var_changes;
  double limit = std::pow(10.0, digits);
  for (long long n = 0;; n++) {
    if (has_to && (by >= 0 ? x > to : x < to)) break;
    if (count >= 0 && n >= count) break;
    if (!while_ok(d)) break;
    tick();
    rx_flow out;
    int s = loop_status(rx_run_block(d->body), d, out);
    if (s == 2) return out;
    if (s == 1) break;
    if (until_done(d)) break;
    if (ent->var_state == VAR_SET && ent->var_changes != seen) {
      value cur(ent->var_value);
      if (!val_make_num(cur)) {
        rx_at(d->control);
        rx_raise(41, "Variable \"" + rx_var_name(d->control) + "\" = \"" + rx_text(cur) + "\" is invalid.");
      }
      x = cur.val_num;
    }
    x += by;
    if (std::fabs(x) >= limit) x = rx_round(x, digits);
    ent = rx_set_var(d->control, value(x, dec));
    seen = ent->var_changes;
  }
  return FL_NEXT;
}

rx_flow exec_do(const rx_cl_do* d)
{
  switch (d->loop_mode) {
  case DO_CONTROLLED: return do_controlled(d);
  case DO_IN: return do_in(d);
  default: return do_simple(d);
  }
}

rx_flow exec_select(const rx_cl_select* s)
{
  for (const rx_when* w = s->first_when; w && w->cond; w = w->next) {
    rx_st->cur_line = w->line;
    if (rx_eval_truth(w->cond, "Expression evaluates to ", "") == 1) return rx_run_block(w->block);
  }
  if (s->otherwise_block) return rx_run_block(s->otherwise_block);
  rx_st->cur_line = s->end_line;
  rx_st->cur_col = 0;
  rx_raise(57);
}

// ---- assignment and variables ----

// Whether an expression leaves the variable `name` alone: it calls no
// routine (which could change it) and does not read it, not even through a
// compound's tail.
bool leaves_alone(const rx_tok* t, const rx_tok* name)
{
  if (!t) return true;
  if (t->tok_type == SYMBOL)
    return rx_const_sym(t) ||
           (!t->tok_sym && (t->tok_len != name->tok_len ||
                            std::memcmp(t->tok_value, name->tok_value, (size_t)t->tok_len) != 0));
  if (t->tok_type != RX_NODE) return true;
  const rx_op* op = t->tok_op;
  if (op->op_class == OPC_CALL || op->op_fx == FX_BACKQ) return false;
  for (const rx_slot& s : op->op_slot)
    if (s.slot_type != NOLEX && !leaves_alone(s.slot_tok, name)) return false;
  return true;
}

// `s = s || a || b` (and with blanks): appends to the variable's text in
// place instead of copying it for every clause, which makes building a
// long string linear rather than quadratic.
bool append_in_place(const rx_cl_assign* a)
{
  const rx_tok* e = a->val;
  if (!e || e->tok_type != RX_NODE || rx_tracing(TR_R | TR_I)) return false;
  const rx_tok* chain[64];
  int n = 0;
  while (e->tok_type == RX_NODE && (e->tok_op->op_fx == FX_CONC || e->tok_op->op_fx == FX_BL)) {
    if (n == 64 || !leaves_alone(e->tok_op->op_slot[1].slot_tok, a->target)) return false;
    chain[n++] = e;
    e = e->tok_op->op_slot[0].slot_tok;
  }
  if (n == 0 || e->tok_type != SYMBOL || e->tok_len != a->target->tok_len ||
      std::memcmp(e->tok_value, a->target->tok_value, (size_t)e->tok_len) != 0)
    return false;
  var_entry* ent = rx_var_entry(a->target);
  if (!ent || ent->var_state != VAR_SET) return false;
  value part;
  while (n-- > 0) {
    rx_eval(chain[n]->tok_op->op_slot[1].slot_tok, part);
    char buf[VAL_NUMBUF];
    std::string_view text = val_text_of(part, buf);
    if (chain[n]->tok_op->op_fx == FX_BL) ent->var_value.append(" ", 1);
    ent->var_value.append(text.data(), text.size());
  }
  ent->var_changes++;
  return true;
}

// ---- plain assignment ---------------------------------------------------------------

void exec_assign(const rx_cl_assign* a)
{
  if (!a->has_index && append_in_place(a)) return;
  value v;
  if (a->val) {
    rx_eval(a->val, v);
    const rx_tok* e = a->val;
    if ((e->tok_type == STRING && !e->tok_quoted) || (e->tok_type == SYMBOL && rx_const_sym(e))) val_make_num(v);
  }
  if (rx_const_sym(a->target)) {
    rx_at(a->target);
    rx_raise(31);
  }
  if (!a->has_index) {
    if (rx_tracing(TR_R | TR_I)) rx_trace_assign(rx_var_name(a->target), v);
    rx_set_var(a->target, std::move(v));
    return;
  }
  value i, j;
  if (a->index1) rx_eval(a->index1, i);
  if (a->index2) rx_eval(a->index2, j);
  std::string name = rx_var_name(a->target);
  size_t dot = name.find('.');
  size_t sl = dot == std::string::npos || dot + 1 == name.size() ? 0 : dot;
  long long pi = 0, pj = 0;
  rx_at(a->target);
  if (vars_set_sub(rx_st->lv.frame, name, sl, a->index1 ? &i : nullptr, a->index2 ? &j : nullptr,
                   a->index2_mode != 0, v, &pi, &pj))
    rx_raise_current();
  rx_cache_flush();
  if (rx_tracing(TR_R | TR_I)) {
    char pos[64];
    std::snprintf(pos, sizeof pos, "[%lld:%lld]", pi, pj);
    rx_trace_assign(name + pos, v);
  }
}

// Splits a text at blanks.
std::vector<std::string> split_words(const std::string& s)
{
  std::vector<std::string> out;
  size_t p = 0;
  for (;;) {
    while (p < s.size() && (s[p] == ' ' || s[p] == '\t')) p++;
    if (p >= s.size()) return out;
    size_t e = p;
    while (e < s.size() && s[e] != ' ' && s[e] != '\t') e++;
    out.push_back(s.substr(p, e - p));
    p = e;
  }
}

// The names of a variable list's value, folded as the program's symbols are.
std::vector<std::string> words_of(const std::string& s)
{
  std::vector<std::string> out = split_words(s);
  int symcase = rx_st->prog->opts.symcase;
  for (std::string& w : out)
    for (char& c : w) {
      if (symcase == CASE_LOWER) c = (char)tolower((unsigned char)c);
      else if (symcase != CASE_MIXED) c = (char)toupper((unsigned char)c);
    }
  return out;
}


void check_name(const std::string& n)
{
  if (!vars_valid_name(n)) rx_raise(31, "string \"" + n + "\" is not a valid REXX variable.");
}

void drop_name(const std::string& n)
{
  var_frame* f = rx_st->lv.frame;
  if (n.back() == '.') {
    vars_drop_stem(f, std::string_view(n).substr(0, n.size() - 1));
    return;
  }
  size_t dot = n.find('.');
  vars_drop(f, n.data(), n.size(), dot == std::string::npos ? 0 : dot);
}

void exec_drop(const rx_cl_vars* c)
{
  for (const rx_tok* t = c->vars; t; t = t->tok_next) {
    rx_at(t);
    if (t->tok_quoted == 2) {
      value* v = rx_peek_var(t);
      for (std::string& n : words_of(v ? rx_text(*v) : std::string())) {
        check_name(n);
        drop_name(n);
      }
      continue;
    }
    std::string n = rx_var_name(t);
    if (n.back() == '+') n.back() = '.';
    drop_name(n);
  }
}

void exec_fold(const rx_cl_vars* c, bool upper)
{
  for (const rx_tok* t = c->vars; t; t = t->tok_next) {
    value v;
    rx_get_var(t, v);
    std::string s = rx_text(v);
    for (char& ch : s) ch = (char)(upper ? toupper((unsigned char)ch) : tolower((unsigned char)ch));
    rx_set_var(t, value(s));
  }
}

void exec_procedure(const rx_cl_vars* c)
{
  rx_level& lv = rx_st->lv;
  if (!lv.in_routine || lv.new_frame) return;
  std::vector<std::string> names;
  for (const rx_tok* t = c->vars; t; t = t->tok_next) {
    rx_at(t);
    names.push_back(rx_var_name(t));
    if (t->tok_quoted == 2) {
      value* v = rx_peek_var(t);
      for (std::string& n : words_of(v ? rx_text(*v) : std::string())) {
        check_name(n);
        if (n.back() == '.') n.back() = '+';
        names.push_back(n);
      }
    }
  }
  var_frame* f = vars_push(lv.frame);
  for (const std::string& n : names) vars_expose(f, n);
  lv.frame = f;
  lv.new_frame = true;
}

// ---- ADDRESS and NUMERIC ---------------------------------------------------------------

void exec_address(const rx_cl_address* c)
{
  rx_level& lv = rx_st->lv;
  if (c->mode == 0) {
    std::swap(lv.env_cur, lv.env_prev);
    return;
  }
  int env;
  if (c->env->tok_type == ENVIRON) {
    env = rx_env_find(c->env->tok_value);
    if (env < 0) {
      rx_at(c->env);
      rx_raise(56);
    }
  } else {
    std::string name = text_of(c->env);
    for (char& ch : name) ch = (char)toupper((unsigned char)ch);
    env = rx_env_find(name);
    if (env < 0) {
      rx_at(c->env);
      rx_raise(56, "Expression evaluates to \"" + name + "\"");
    }
  }
  if (c->cmd) {
    rx_command(text_of(c->cmd), env);
    return;
  }
  lv.env_prev = lv.env_cur;
  lv.env_cur = env;
}

void exec_numeric(const rx_cl_numeric* c)
{
  value v;
  if (c->expr) rx_eval(c->expr, v);
  int rc = 0;
  switch (c->mode) {
  case NUM_DIGITS: rc = rx_set_digits(c->expr ? &v : nullptr); break;
  case NUM_FUZZ: rc = rx_set_fuzz(c->expr ? &v : nullptr); break;
  case NUM_SCIENTIFIC: rx_numeric.engineering = false; break;
  case NUM_ENGINEERING: rx_numeric.engineering = true; break;
  case NUM_FORMVALUE: rc = rx_set_form(&v); break;
  }
  if (rc) {
    if (c->expr) rx_at(c->expr);
    rx_raise_current();
  }
}

void exec_trace(const rx_cl_trace* c)
{
  std::string s;
  if (c->first) s.assign(c->first->tok_value, (size_t)c->first->tok_len);
  else if (c->expr) s = text_of(c->expr);
  if (rx_trace_set(s)) {
    if (c->first) rx_at(c->first);
    rx_raise(24);
  }
}

void exec_say(int kind, const rx_tok* e)
{
  std::string s = text_of(e);
  switch (kind) {
  case K_SAY: rx_out_say(s); break;
  case K_SAYN:
    if (rx_console.say) rx_console.say(s.data(), s.size());
    else std::fwrite(s.data(), 1, s.size(), stdout);
    break;
  case K_SAYR:
    s += '\r';
    if (rx_console.say) rx_console.say(s.data(), s.size());
    else std::fwrite(s.data(), 1, s.size(), stdout);
    break;
  case K_SAYX:
    rx_out_say(s);
    rx_command(s, rx_st->lv.env_cur);
    break;
  }
}

void exec_cd(const rx_tok* e)
{
  std::string dir = text_of(e);
  if (dir.empty()) {
    const char* home = std::getenv("HOME");
    dir = home ? home : "/";
  }
  if (chdir(dir.c_str()) != 0) rx_raise(63, "Expression evaluates to \"" + dir + "\"");
}

rx_flow exec_clause(const rx_clause* c)
{
  switch (c->kind) {
  case K_ASSIGN: exec_assign(static_cast<const rx_cl_assign*>(c)); break;
  case K_SAY:
  case K_SAYN:
  case K_SAYR:
  case K_SAYX: exec_say(c->kind, expr_of(c)); break;
  case K_COMMAND: rx_command(text_of(expr_of(c)), rx_st->lv.env_cur); break;
  case K_IF: {
    auto* i = static_cast<const rx_cl_if*>(c);
    if (rx_eval_truth(i->cond, "Expression evaluates to ", "") == 1) return rx_run_block(i->then_block);
    if (i->else_block) return rx_run_block(i->else_block);
    break;
  }
  case K_DO: return exec_do(static_cast<const rx_cl_do*>(c));
  case K_SELECT: return exec_select(static_cast<const rx_cl_select*>(c));
  case K_LEAVE:
  case K_ITERATE:
    rx_st->pending = static_cast<const rx_cl_leave*>(c)->name;
    return c->kind == K_LEAVE ? FL_LEAVE : FL_ITERATE;
  case K_LABEL: break;
  case K_PUSH: rx_stack_push(text_of(expr_of(c))); break;
  case K_QUEUE: rx_stack_queue(text_of(expr_of(c))); break;
  case K_PROCEDURE: exec_procedure(static_cast<const rx_cl_vars*>(c)); break;
  case K_PARSE: rx_exec_parse(static_cast<const rx_cl_parse*>(c)); break;
  case K_ADDRESS: exec_address(static_cast<const rx_cl_address*>(c)); break;
  case K_DROP: exec_drop(static_cast<const rx_cl_vars*>(c)); break;
  case K_UPPER: exec_fold(static_cast<const rx_cl_vars*>(c), true); break;
  case K_LOWER: exec_fold(static_cast<const rx_cl_vars*>(c), false); break;
  case K_NUMERIC: exec_numeric(static_cast<const rx_cl_numeric*>(c)); break;
  case K_TRACE: exec_trace(static_cast<const rx_cl_trace*>(c)); break;
  case K_CD: exec_cd(expr_of(c)); break;
  default: return rx_exec_transfer(c);
  }
  return FL_NEXT;
}

}  // namespace

rx_flow rx_run_block(rx_cell* c)
{
  rx_run_state& st = *rx_st;
  for (; c && c->cl; c = c->next) {
    const rx_clause* cl = c->cl;
    st.cur_line = cl->line;
    st.cur_col = 0;
    if (st.src == st.main_src) st.main_line = cl->line;
    if (++st.clauses % 20 == 0 && rx_poll_hook) rx_poll_hook();
    if (rx_halt_pending) rx_halted();
    int tr = st.lv.trace;
    if (tr & (TR_A | TR_R | TR_I | TR_L | TR_C | TR_S)) rx_trace_clause(cl);
    rx_flow f = exec_clause(cl);
    if (f != FL_NEXT) return f;
    if ((st.lv.trace & TR_INTERACTIVE) && (tr & (TR_A | TR_R | TR_I)) && cl->kind != K_TRACE && !st.in_pause) {
      f = rx_trace_pause();
      if (f != FL_NEXT) return f;
    }
  }
  return FL_NEXT;
}
