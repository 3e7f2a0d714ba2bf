// Transfers of control: internal routine calls and function calls with
// their level records, the level runner that resumes at SIGNAL targets,
// RETURN and EXIT, SIGNAL and CALL ON conditions, and INTERPRET.
#include <cctype>
#include <cstdio>
#include <sys/resource.h>
#include <cstring>
#include <memory>
#include <new>

#include "rexx/exec_int.h"

namespace {

bool lower_case() { return rx_st->prog->opts.symcase == CASE_LOWER; }

int shown(int line0) { return line0 + 1 - rx_st->main_src->prelude_lines; }

void set_special(const char* upper, const char* lower, long long n)
{
  rx_set_name(lower_case() ? lower : upper, value((double)n, 0));
}

void set_sigl()
{
  rx_st->sigl = shown(rx_st->main_line);
  set_special("SIGL", "sigl", rx_st->sigl);
}

// Keeps the machine stack safe whatever the counters allow: three quarters
// of the process's stack limit, and never more than 6 MB.
char* stack_base = nullptr;

size_t stack_budget()
{
  static size_t budget = [] {
    size_t b = 6u << 20;
    struct rlimit rl;
    if (getrlimit(RLIMIT_STACK, &rl) == 0 && rl.rlim_cur != RLIM_INFINITY && rl.rlim_cur / 4 * 3 < b)
      b = (size_t)(rl.rlim_cur / 4 * 3);
    return b;
  }();
  return budget;
}

bool stack_low()
{
  char here;
  if (!stack_base) stack_base = &here;
  size_t used = stack_base > &here ? (size_t)(stack_base - &here) : 0;
  return used > stack_budget();
}

void check_stack()
{
  if (stack_low() || rx_st->depth >= RX_MAX_CALL_DEPTH)
    rx_raise(5, "routine calls nested too deeply");
}

// What an internal call saves; given back however the routine ends.
struct level_guard {
  rx_level saved;
  rx_numeric_t num;
  explicit level_guard(rx_level&& lv) : saved(std::move(lv)), num(rx_numeric) {}
  ~level_guard()
  {
    rx_level& lv = rx_st->lv;
    if (lv.new_frame) {
      vars_pop(lv.frame);
      rx_cache_flush();
    }
    int debug = lv.trace & TR_INTERACTIVE;
    lv = std::move(saved);
    lv.trace |= debug;
    rx_numeric = num;
    rx_st->depth--;
  }
};

struct src_guard {
  const rx_src* src = rx_st->src;        // the source in force at the call
  const rx_src* main = rx_st->main_src;  // and the routine's
  ~src_guard()
  {
    rx_st->src = src;
    rx_st->main_src = main;
  }
};

bool call_label(const rx_label* l, std::vector<value>&& args, std::vector<char>&& omitted, value& out)
{
  check_stack();
  rx_run_state& st = *rx_st;
  rx_level next;
  for (int i = 0; i < CN_COUNT; i++) next.cond[i] = st.lv.cond[i];
  next.trace = st.lv.trace;
  next.env_cur = st.lv.env_cur;
  next.env_prev = st.lv.env_prev;
  next.args = std::move(args);
  next.omitted = std::move(omitted);
  next.frame = st.lv.frame;
  next.in_routine = true;
  set_sigl();
  st.depth++;
  level_guard g(std::move(st.lv));
  // Reports and SIGL read the lines of the source the routine comes from.
  src_guard sg;
  st.src = st.main_src = rx_label_src(l);
  st.lv = std::move(next);
  st.has_result = false;
  rx_run_level(l->cell);
  bool has = st.has_result;
  if (has) out = std::move(st.result);
  st.has_result = false;
  return has;
}

// The argument tokens of a chain; a lone empty argument means none.
void arg_tokens(const rx_tok* args, std::vector<const rx_tok*>& out)
{
  for (const rx_tok* a = args; a; a = a->tok_next) out.push_back(a);
  if (out.size() == 1 && out[0]->tok_type == VIDE) out.clear();
}

void eval_args(const rx_tok* args, std::vector<value>& vals, std::vector<char>& omitted,
               std::vector<const rx_tok*>& toks)
{
  arg_tokens(args, toks);
  vals.resize(toks.size());
  omitted.resize(toks.size());
  for (size_t i = 0; i < toks.size(); i++) {
    omitted[i] = toks[i]->tok_type == VIDE;
    if (!omitted[i]) rx_eval(toks[i], vals[i]);
  }
}

bool path_like(std::string_view n)
{
  return !n.empty() && (n[0] == '.' || n[0] == '/' || n[0] == '~' || (n.size() > 1 && n[1] == ':'));
}

// Resolved names, direct-mapped by token; a new generation forgets them all
// (interpreted code's tokens die, and a run's tokens die with the run).
struct callrow {
  const rx_tok* tok;  // the name token
  uint32_t gen;       // generation when stored
  rx_target t;        // what it resolved to
};
constexpr int CALL_ROWS = 1024;
callrow callcache[CALL_ROWS];
uint32_t call_gen = 1;

rx_target resolve(const rx_tok* fname)
{
  rx_run_state& st = *rx_st;
  callrow& row = callcache[(reinterpret_cast<uintptr_t>(fname) >> 4) & (CALL_ROWS - 1)];
  if (row.tok == fname && row.gen == call_gen) return row.t;
  std::string_view name(fname->tok_value, (size_t)fname->tok_len);
  bool quoted = fname->tok_type == STRING || fname->tok_type == SFUNCTION;
  rx_target t{-1, nullptr};
  if (!quoted || path_like(name)) {
    if (const rx_label* l = rx_label_find(*st.prog, name.data(), name.size())) {
      if (static_cast<const rx_cl_label*>(l->cell->cl)->frame) {
        rx_at(fname);
        rx_raise(54, "The label \"" + std::string(name) + "\" is nested within a control structure.");
      }
      t = {0, l};
    }
  }
  if (t.kind < 0)
    if (const rx_label* l = rx_merged_label(name)) t = {0, l};
  if (t.kind < 0)
    if (rx_bif b = rx_find_bif(name)) t = {1, reinterpret_cast<const void*>(b)};
  if (t.kind < 0) {
    bu_case mode = st.prog->opts.symcase == CASE_LOWER   ? BU_CASE_LOWER
                   : st.prog->opts.symcase == CASE_MIXED ? BU_CASE_MIXED
                                                         : BU_CASE_UPPER;
    if (const bu_row* r = bu_lookup(name, mode)) t = {2, r};
  }
  // Under NOLOAD a macro of the editor calls the editor's other macros, and
  // only those, as functions.
  bool editor_only = st.prog->opts.load == 0 && rx_macro_path_hook && st.lv.env_cur == rx_env_find("VORTA");
  if (t.kind < 0 && editor_only) {
    std::string folded(name);
    if (!quoted)
      for (char& c : folded) c = (char)std::tolower((unsigned char)c);
    std::string path = rx_macro_path_hook(folded);
    if (!path.empty()) {
      st.externals.push_back(path);
      t = {3, &st.externals.back()};
    }
  }
  if (t.kind < 0 && !editor_only) {
    std::string path;
    if (rx_find_external(name, quoted, path)) {
      if (st.prog->opts.load == 0) {
        st.externals.push_back(path);
        t = {3, &st.externals.back()};
      } else if (const rx_label* l = rx_merge_external(name, path, fname)) {
        t = {0, l};
      }
    }
  }
  if (t.kind < 0) {
    std::fflush(stdout);
    rx_out_trace("molba: \"" + std::string(name) + "\" routine not found.\n");
    rx_at(fname);
    rx_raise(43);
  }
  row = {fname, call_gen, t};
  return t;
}

// Up to 8 evaluated arguments on the stack, made only as far as needed.
struct small_args {
  alignas(value) unsigned char mem[8 * sizeof(value)];  // room for the values
  int made = 0;                                        // values constructed so far
  value* at(int i) { return reinterpret_cast<value*>(mem) + i; }
  ~small_args()
  {
    for (int i = 0; i < made; i++) at(i)->~value();
  }
};

bool call_small(const bu_row* row, const rx_tok* fname, const rx_tok* const* toks, int n, value& out)
{
  small_args vals;
  value* ptrs[8];
  for (int i = 0; i < n; i++) {
    new (vals.at(i)) value();
    vals.made++;
    ptrs[i] = toks[i]->tok_type == VIDE ? nullptr : vals.at(i);
    if (ptrs[i]) rx_eval(toks[i], *ptrs[i]);
  }
  int bad = 0;
  int rc = bu_call(row, ptrs, n, out, &bad);
  if (rc == BU_NORESULT) return false;
  if (rc != 0) {
    rx_at(bad >= 0 && bad < n ? toks[bad] : fname);
    rx_raise_current();
  }
  return true;
}

bool call_library(const bu_row* row, const rx_tok* fname, const rx_tok* args, value& out)
{
  const rx_tok* few[8];
  int n = 0;
  for (const rx_tok* a = args; a && n < 8; a = a->tok_next) few[n++] = a;
  if (n == 1 && few[0]->tok_type == VIDE) n = 0;
  if (n < 8) return call_small(row, fname, few, n, out);
  std::vector<value> vals;
  std::vector<char> omitted;
  std::vector<const rx_tok*> toks;
  eval_args(args, vals, omitted, toks);
  value* ptrs[32];
  std::vector<value*> big;
  value** pp = ptrs;
  if (vals.size() > 32) {
    big.resize(vals.size());
    pp = big.data();
  }
  for (size_t i = 0; i < vals.size(); i++) pp[i] = omitted[i] ? nullptr : &vals[i];
  int bad = 0;
  int rc = bu_call(row, pp, (int)vals.size(), out, &bad);
  if (rc == BU_NORESULT) return false;
  if (rc != 0) {
    rx_at(bad >= 0 && (size_t)bad < toks.size() ? toks[(size_t)bad] : fname);
    rx_raise_current();
  }
  return true;
}

const rx_label* find_label(std::string_view name, int missing_num)
{
  const rx_label* l = rx_label_find(*rx_st->prog, name.data(), name.size());
  if (!l) rx_raise(missing_num, "\"" + std::string(name) + "\" is missing.");
  return l;
}

// Resumes after a SIGNAL: the rest of the label's block, then the rest of
// each enclosing block after the clause that holds it, innermost first.
rx_flow run_from(const rx_label* l)
{
  rx_flow f = rx_run_block(l->cell);
  if (f != FL_NEXT) return f;
  for (const rx_frame* fr = static_cast<const rx_cl_label*>(l->cell->cl)->frame; fr; fr = fr->fr_prev) {
    f = rx_run_block(fr->fr_current->next);
    if (f != FL_NEXT) return f;
  }
  return FL_NEXT;
}

// ---- conditions -------------------------------------------------------------------

struct condrow {
  int32_t tok;        // condition keyword token
  int which;          // CN_*
  const char* upper;  // default label, upper case
  const char* lower;  // default label, lower case
};

constexpr condrow condtab[] = {
  {ERROR, CN_ERROR, "ERROR", "error"},
  {FAILURE, CN_FAILURE, "FAILURE", "failure"},
  {HALT, CN_HALT, "HALT", "halt"},
  {NOVALUE, CN_NOVALUE, "NOVALUE", "novalue"},
  {NOTREADY, CN_NOTREADY, "NOTREADY", "notready"},
  {SYNTAX, CN_SYNTAX, "SYNTAX", "syntax"},
};
static_assert(sizeof condtab / sizeof condtab[0] == CN_COUNT);

void exec_onoff(const rx_cl_signal* s)
{
  const condrow* row = nullptr;
  for (const condrow& r : condtab)
    if (r.tok == s->op2->tok_type) row = &r;
  if (!row) rx_raise(25);
  rx_cond& c = rx_st->lv.cond[row->which];
  if (s->op1->tok_type == OFF) {
    c.state = CS_OFF;
    return;
  }
  c.state = s->mode == SIG_CALLON ? CS_CALL : CS_SIGNAL;
  c.label = s->name ? std::string(s->name->tok_value, (size_t)s->name->tok_len)
                    : std::string(lower_case() ? row->lower : row->upper);
}

rx_flow exec_signal(const rx_cl_signal* s)
{
  if (s->mode == SIG_ONOFF || s->mode == SIG_CALLON) {
    exec_onoff(s);
    return FL_NEXT;
  }
  std::string name;
  if (s->mode == SIG_VALUE) {
    value v;
    rx_eval(s->op1, v);
    name = rx_text(v);
  } else {
    name.assign(s->op1->tok_value, (size_t)s->op1->tok_len);
  }
  rx_at(s->op1);
  const rx_label* l = find_label(name, 16);
  set_sigl();
  throw rx_signal_jump{l};
}

// ---- INTERPRET --------------------------------------------------------------------

// Puts the run state back after interpreted code, however it ends: its
// tree dies here, so nothing may keep pointing into it.
struct interp_guard {
  const rx_src* saved_src;
  size_t touched;
  interp_guard() : saved_src(rx_st->src), touched(rx_st->touched.size()) { rx_st->lv.interp++; }
  ~interp_guard()
  {
    rx_run_state& st = *rx_st;
    for (size_t i = touched; i < st.touched.size(); i++) st.touched[i]->slot_val = nullptr;
    st.touched.resize(touched);
    rx_calls_flush();
    rx_cache_flush();
    st.src = saved_src;
    st.lv.interp--;
  }
};

rx_flow exec_interpret(const rx_cl_expr* c)
{
  value v;
  rx_eval(c->expr, v);
  return rx_interpret(rx_text(v), c->expr);
}

}  // namespace

rx_flow rx_interpret(std::string text, const rx_tok* at)
{
  if (rx_st->lv.interp >= RX_MAX_INTERP_DEPTH) {
    rx_at(at);
    rx_raise(5, "INTERPRET nested too deeply");
  }
  auto isrc = std::make_unique<rx_src>();
  isrc->text = std::move(text);
  isrc->file_name = rx_st->main_src->file_name;
  isrc->interpreted = true;
  auto ip = std::make_unique<rx_prog>();
  ip->opts = rx_st->prog->opts;
  rx_err err;
  if (int e = rx_parse(*ip, isrc->text.data(), isrc->text.size(), err)) {
    std::fflush(stdout);
    rx_out_trace(rx_error_report(*isrc, err));
    rx_at(at);
    rx_raise(e, err.err_msg);
  }
  interp_guard g;
  rx_st->src = isrc.get();
  return rx_run_block(ip->block_head);
}

namespace {

rx_flow exec_exit(const rx_cl_expr* c, bool is_return)
{
  rx_run_state& st = *rx_st;
  st.has_result = false;
  if (c->expr) {
    value v;  // routines called while evaluating use st.result themselves
    rx_eval(c->expr, v);
    if (rx_tracing(TR_R | TR_I)) rx_trace_result(v);
    st.result = std::move(v);
    st.has_result = true;
  }
  if (is_return && st.lv.in_routine) return FL_RETURN;
  throw rx_exit_jump{};
}

void exec_call(const rx_cl_call* c)
{
  value out;
  bool has = rx_call(c->fname, c->args, out, false);
  const char* name = lower_case() ? "result" : "RESULT";
  if (has) {
    if (rx_tracing(TR_R | TR_I)) rx_trace_result(out);
    rx_set_name(name, std::move(out));
  } else {
    vars_drop(rx_st->lv.frame, name, std::strlen(name), 0);
  }
}

}  // namespace

bool rx_call(const rx_tok* fname, const rx_tok* args, value& out, bool as_function)
{
  rx_target t = resolve(fname);
  bool has;
  switch (t.kind) {
  case 0: {
    std::vector<value> vals;
    std::vector<char> omitted;
    std::vector<const rx_tok*> toks;
    eval_args(args, vals, omitted, toks);
    has = call_label(static_cast<const rx_label*>(t.p), std::move(vals), std::move(omitted), out);
    break;
  }
  case 1: has = reinterpret_cast<rx_bif>(const_cast<void*>(t.p))(args, out); break;
  case 3: {
    std::vector<value> vals;
    std::vector<char> omitted;
    std::vector<const rx_tok*> toks;
    eval_args(args, vals, omitted, toks);
    has = rx_call_external(*static_cast<const std::string*>(t.p), vals, omitted, fname, out);
    break;
  }
  default: has = call_library(static_cast<const bu_row*>(t.p), fname, args, out); break;
  }
  if (as_function && rx_tracing(TR_I))
    rx_trace_func(std::string_view(fname->tok_value, (size_t)fname->tok_len), has ? &out : nullptr);
  return has;
}

rx_flow rx_run_level(rx_cell* start)
{
  const rx_label* resume = nullptr;
  for (;;) {
    try {
      rx_flow f = resume ? run_from(resume) : rx_run_block(start);
      if (f == FL_LEAVE || f == FL_ITERATE) rx_raise(28);
      return f;
    } catch (const rx_signal_jump& j) {
      resume = j.target;
      rx_st->pending = nullptr;
    }
  }
}

void rx_condition(int which, std::string_view desc)
{
  rx_run_state& st = *rx_st;
  rx_cond& c = st.lv.cond[which];
  if (c.state != CS_SIGNAL && c.state != CS_CALL) return;
  st.cond_which = which;
  st.cond_desc = std::string(desc);
  st.cond_by_call = c.state == CS_CALL;
  const rx_label* l = rx_label_find(*st.prog, c.label.data(), c.label.size());
  if (!l) {
    c.state = CS_OFF;
    if (which == CN_NOVALUE)
      rx_raise(71, "variable \"" + std::string(desc) + "\" (line " + std::to_string(shown(st.main_line)) + ")");
    rx_raise(16, "\"" + c.label + "\" is missing.");
  }
  if (c.state == CS_SIGNAL) {
    c.state = CS_OFF;
    set_sigl();
    throw rx_signal_jump{l};
  }
  c.state = CS_RUNNING;
  value ignored;
  call_label(l, {}, {}, ignored);
  if (st.lv.cond[which].state == CS_RUNNING) st.lv.cond[which].state = CS_CALL;
}

rx_flow rx_exec_transfer(const rx_clause* c)
{
  switch (c->kind) {
  case K_EXIT: return exec_exit(static_cast<const rx_cl_expr*>(c), false);
  case K_RETURN: return exec_exit(static_cast<const rx_cl_expr*>(c), true);
  case K_SIGNAL: return exec_signal(static_cast<const rx_cl_signal*>(c));
  case K_CALL: exec_call(static_cast<const rx_cl_call*>(c)); return FL_NEXT;
  case K_INTERPRET: return exec_interpret(static_cast<const rx_cl_expr*>(c));
  default: return FL_NEXT;
  }
}

volatile int rx_halt_pending = 0;

void rx_request_halt() { rx_halt_pending = 1; }

void rx_halted()
{
  rx_halt_pending = 0;
  rx_cond& c = rx_st->lv.cond[CN_HALT];
  if (c.state == CS_SIGNAL || c.state == CS_CALL) {
    rx_condition(CN_HALT, "");
    return;
  }
  if (c.state != CS_RUNNING) rx_raise(4);
}

void rx_stack_mark() { stack_base = nullptr; }

int rx_runs_deep = 0;

void rx_check_stack()
{
  if (stack_low() || rx_runs_deep > RX_MAX_RUN_DEPTH)
    rx_raise(5, "programs nested too deeply");
}

void rx_calls_flush() { call_gen++; }
