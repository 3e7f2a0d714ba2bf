// The expression walker: operand slots, variables by token, the fx_*
// operators, the conditional | and &, brackets and calls.
//
// Simple variables are found through a small direct-mapped cache keyed by
// the token, so that `i = i + 1` in a loop costs no hash probe. Entries never
// move while their frame lives; the cache is flushed whenever a frame goes.
#include <cctype>
#include <cstring>

#include "rexx/exec_int.h"

namespace {

struct fxrow {
  rx_fx fx;       // operator
  fx_bin bin;     // binary routine, or null
  fx_un un;       // unary routine, or null
  bool arith;     // converts its operands to numbers anyway
};

constexpr fxrow fxtab[] = {
  {FX_OR, fx_or, nullptr, false},         {FX_XOR, fx_xor, nullptr, false},
  {FX_AND, fx_and, nullptr, false},       {FX_NEQ, fx_neq, nullptr, false},
  {FX_NNEQ, fx_nneq, nullptr, false},     {FX_SUP, fx_sup, nullptr, false},
  {FX_SSUP, fx_ssup, nullptr, false},     {FX_INF, fx_inf, nullptr, false},
  {FX_IINF, fx_iinf, nullptr, false},     {FX_SUPEQ, fx_supeq, nullptr, false},
  {FX_SSUPEQ, fx_ssupeq, nullptr, false}, {FX_INFEQ, fx_infeq, nullptr, false},
  {FX_IINFEQ, fx_iinfeq, nullptr, false}, {FX_EQ, fx_eq, nullptr, false},
  {FX_EEQ, fx_eeq, nullptr, false},       {FX_BL, fx_bl, nullptr, false},
  {FX_CONC, fx_conc, nullptr, false},     {FX_PLUS, fx_plus, nullptr, true},
  {FX_MIN, fx_min, nullptr, true},        {FX_MULT, fx_mult, nullptr, true},
  {FX_DIV, fx_div, nullptr, true},        {FX_IDIV, fx_idiv, nullptr, true},
  {FX_REM, fx_rem, nullptr, true},        {FX_EXP, fx_exp, nullptr, true},
  {FX_CONC_RHO, fx_conc_rho, nullptr, false}, {FX_EQIC, fx_eqic, nullptr, false},
  {FX_NEQIC, fx_neqic, nullptr, false},   {FX_CONC_NOT, fx_conc_not, nullptr, false},
  {FX_NOT, nullptr, fx_not, false},       {FX_UPLUS, nullptr, fx_uplus, true},
  {FX_UMIN, nullptr, fx_umin, true},      {FX_RHO, nullptr, fx_rho, false},
  {FX_BACKQ, nullptr, fx_backq, false},   {FX_BR, nullptr, nullptr, false},
  {FX_BR2, nullptr, nullptr, false},      {FX_CALL, nullptr, nullptr, false},
};
static_assert(sizeof fxtab / sizeof fxtab[0] == FX_COUNT);

constexpr bool table_in_order()
{
  for (int i = 0; i < FX_COUNT; i++)
    if (fxtab[i].fx != i) return false;
  return true;
}
static_assert(table_in_order());

// ---- variables ------------------------------------------------------------------

struct cacherow {
  const rx_tok* tok;  // the symbol token
  var_frame* frame;   // the frame the entry was found in
  var_entry* entry;   // the entry
  uint32_t gen;       // cache generation when stored
};

constexpr int CACHE_ROWS = 4096;
cacherow cache[CACHE_ROWS];
uint32_t cache_gen = 1;
int depth = 0;
std::string namebuf;  // derived compound names; used before any further evaluation

inline cacherow& row_of(const rx_tok* t)
{
  return cache[(reinterpret_cast<uintptr_t>(t) >> 4) & (CACHE_ROWS - 1)];
}

inline bool is_const_sym(const rx_tok* t)
{
  char c = t->tok_value[0];
  return (c >= '0' && c <= '9') || c == '.';
}

inline bool is_stem_ref(const rx_tok* t)
{
  const rx_part* p = t->tok_sym->part_next;
  return p && p->part_len == 0 && !p->part_next;
}

// The entry of a simple variable in the current frame, when it is not exposed.
var_entry* simple_entry(const rx_tok* t)
{
  var_frame* f = rx_st->lv.frame;
  cacherow& r = row_of(t);
  if (r.tok == t && r.frame == f && r.gen == cache_gen) return r.entry;
  var_entry* e = vars_find(f, t->tok_value, (size_t)t->tok_len);
  if (!e || e->var_state == VAR_EXPOSED) return nullptr;
  r = {t, f, e, cache_gen};
  return e;
}

// Name and stem length of a variable token.
std::string_view name_of(const rx_tok* t, size_t& stem_len)
{
  stem_len = 0;
  if (!t->tok_sym) return {t->tok_value, (size_t)t->tok_len};
  if (is_stem_ref(t)) return {t->tok_stem, (size_t)t->tok_stem_len};
  var_part parts[16];
  std::vector<var_part> big;
  var_part* pp = parts;
  int n = 0;
  for (const rx_part* p = t->tok_sym->part_next; p; p = p->part_next) n++;
  if (n > 16) {
    big.resize((size_t)n);
    pp = big.data();
  }
  int i = 0;
  for (const rx_part* p = t->tok_sym->part_next; p; p = p->part_next) pp[i++] = {p->part_text, p->part_len};
  vars_derive(rx_st->lv.frame, {t->tok_sym->part_text, (size_t)t->tok_sym->part_len}, pp, n, namebuf);
  stem_len = (size_t)t->tok_sym->part_len;
  if (rx_tracing(TR_I)) rx_trace_var(">C>", value(namebuf));
  return namebuf;
}

void blame(const rx_slot& s, value& v)
{
  if (!rx_err_text.empty() || s.slot_type == RX_NODE || s.slot_type == NOLEX) return;
  std::string text = rx_text(v);
  if (s.slot_type == SYMBOL && !is_const_sym(s.slot_tok))
    rx_err_text = "Variable \"" + rx_var_name(s.slot_tok) + "\" = \"" + text + "\" is invalid.";
  else
    rx_err_text = "String \"" + text + "\" is invalid.";
}

// An operand: constants of arithmetic operators are made ready once.
void eval_slot(rx_slot& s, value& out, bool arith)
{
  if (s.slot_val) {
    out = *s.slot_val;
    return;
  }
  const rx_tok* t = s.slot_tok;
  bool constant = s.slot_type == STRING || (s.slot_type == SYMBOL && is_const_sym(t));
  if (!constant) {
    rx_eval(t, out);
    return;
  }
  out.set_str(t->tok_value, (size_t)t->tok_len);
  if (!arith) return;
  rx_st->consts.emplace_back(out);
  value& c = rx_st->consts.back();
  val_make_num(c);
  s.slot_val = &c;
  rx_st->touched.push_back(&s);
  out = c;
}

[[noreturn]] void op_failed(rx_op* op, int bad, value& a, value* b, const rx_tok* at)
{
  if (bad == 1) blame(op->op_slot[0], a);
  else if (bad == 2 && b) blame(op->op_slot[1], *b);
  rx_at(at);
  rx_raise_current();
}

void eval_call(const rx_tok* t, value& out)
{
  rx_op* op = t->tok_op;
  if (!rx_call(op->op_fname, op->op_args, out, true)) {
    rx_at(op->op_fname);
    rx_raise(44);
  }
}

void eval_bracket(const rx_tok* t, value& out)
{
  rx_op* op = t->tok_op;
  value i, j;
  eval_slot(op->op_slot[0], out, false);
  bool has_i = op->op_slot[1].slot_type != NOLEX;
  bool has_j = op->op_slot[2].slot_type != NOLEX;
  if (has_i) eval_slot(op->op_slot[1], i, false);
  if (has_j) eval_slot(op->op_slot[2], j, false);
  int bad = 0;
  rx_at(t);
  if (!fx_br(out, out, has_i ? &i : nullptr, has_j ? &j : nullptr, op->op_fx == FX_BR2, bad))
    rx_raise_current();
}

void eval_node(const rx_tok* t, value& out)
{
  rx_op* op = t->tok_op;
  const fxrow& row = fxtab[op->op_fx];
  int bad = 0;
  switch (op->op_class) {
  case OPC_UNARY:
    eval_slot(op->op_slot[0], out, row.arith);
    if (rx_tracing(TR_I)) {
      value before(out);
      if (!row.un(out, out, bad)) op_failed(op, bad, out, nullptr, t);
      rx_trace_op(op->op_name, before, nullptr, out);
    } else if (!row.un(out, out, bad)) {
      op_failed(op, bad, out, nullptr, t);
    }
    return;
  case OPC_BINARY: {
    value rhs;
    eval_slot(op->op_slot[0], out, row.arith);
    bool cond = op->op_fx == FX_OR || op->op_fx == FX_AND;
    if (cond && val_make_num(out) && (out.val_num != 0) == (op->op_fx == FX_OR)) rhs.set_num(1);
    else eval_slot(op->op_slot[1], rhs, row.arith);
    if (rx_tracing(TR_I)) {
      value before(out);
      if (!row.bin(out, out, rhs, bad)) op_failed(op, bad, before, &rhs, t);
      rx_trace_op(op->op_name, before, &rhs, out);
    } else if (!row.bin(out, out, rhs, bad)) {
      op_failed(op, bad, out, &rhs, t);
    }
    return;
  }
  case OPC_CALL: eval_call(t, out); return;
  case OPC_BRACKET: eval_bracket(t, out); return;
  }
}

}  // namespace

void rx_cache_flush() { cache_gen++; }

var_entry* rx_var_entry(const rx_tok* t)
{
  if (t->tok_type != SYMBOL || t->tok_sym || rx_const_sym(t) || (vars_setenv_hook && t->tok_value[0] == '$'))
    return nullptr;
  return simple_entry(t);
}

std::string rx_text(const value& v)
{
  char buf[VAL_NUMBUF];
  return std::string(val_text_of(v, buf));
}

std::string rx_var_name(const rx_tok* t)
{
  size_t sl;
  return std::string(name_of(t, sl));
}

value* rx_peek_var(const rx_tok* t)
{
  if (!t->tok_sym && !(vars_setenv_hook && t->tok_value[0] == '$')) {
    var_entry* e = simple_entry(t);
    if (e) return e->var_state == VAR_SET ? &e->var_value : nullptr;
  }
  size_t sl;
  std::string_view name = name_of(t, sl);
  return vars_get(rx_st->lv.frame, name.data(), name.size(), sl).val;
}

void rx_get_var(const rx_tok* t, value& out)
{
  if (is_const_sym(t)) {
    out.set_str(t->tok_value, (size_t)t->tok_len);
    return;
  }
  if (!t->tok_sym && !(vars_setenv_hook && t->tok_value[0] == '$')) {
    var_entry* e = simple_entry(t);
    if (e && e->var_state == VAR_SET) {
      out = e->var_value;
      if (rx_tracing(TR_I)) rx_trace_var(t->tok_value, out);
      return;
    }
  }
  size_t sl;
  std::string_view name = name_of(t, sl);
  var_ref r = vars_get(rx_st->lv.frame, name.data(), name.size(), sl);
  if (r.val) {
    out = *r.val;
    if (rx_tracing(TR_I)) rx_trace_var(t->tok_value, out);
    return;
  }
  std::string unset = vars_unset_text(name);
  const rx_cond& nv = rx_st->lv.cond[CN_NOVALUE];
  if ((nv.state == CS_SIGNAL || nv.state == CS_CALL) && vars_novalue_applies(unset)) {
    rx_at(t);
    rx_condition(CN_NOVALUE, unset);
  }
  out.set_str(unset);
  if (rx_tracing(TR_I)) rx_trace_var(t->tok_value, out);
}

var_entry* rx_set_var(const rx_tok* t, value&& v)
{
  if (is_const_sym(t)) {
    rx_at(t);
    rx_raise(31);
  }
  bool hook = vars_setenv_hook && t->tok_value[0] == '$';
  var_frame* f = rx_st->lv.frame;
  if (!t->tok_sym) {
    if (!hook) {
      if (var_entry* e = simple_entry(t)) {
        e->var_value = std::move(v);
        if (e->var_state == VAR_SET) e->var_changes++;
        e->var_state = VAR_SET;
        return e;
      }
    }
    return vars_set(f, t->tok_value, (size_t)t->tok_len, 0, std::move(v));
  }
  if (is_stem_ref(t))
    return vars_set_stem(f, {t->tok_sym->part_text, (size_t)t->tok_sym->part_len}, std::move(v));
  size_t sl;
  std::string_view name = name_of(t, sl);
  return vars_set(f, name.data(), name.size(), sl, std::move(v));
}

value* rx_peek_name(std::string_view name)
{
  size_t dot = name.find('.');
  size_t sl = dot == std::string_view::npos || dot + 1 == name.size() ? 0 : dot;
  if (dot != std::string_view::npos && dot + 1 == name.size()) {
    std::string key(name.substr(0, dot));
    key += '+';
    return vars_get(rx_st->lv.frame, key, 0).val;
  }
  return vars_get(rx_st->lv.frame, name.data(), name.size(), sl).val;
}

void rx_set_name(std::string_view name, value&& v)
{
  size_t dot = name.find('.');
  if (dot != std::string_view::npos && dot + 1 == name.size()) {
    vars_set_stem(rx_st->lv.frame, name.substr(0, dot), std::move(v));
    return;
  }
  size_t sl = dot == std::string_view::npos ? 0 : dot;
  vars_set(rx_st->lv.frame, name.data(), name.size(), sl, std::move(v));
}

void rx_host_set(std::string_view name, std::string_view val)
{
  if (!rx_st) return;
  bool lower = rx_st->prog->opts.symcase == CASE_LOWER;
  size_t dot = name.find('.');
  std::string n(name);
  for (size_t i = 0; i < n.size() && i < dot; i++)
    n[i] = (char)(lower ? std::tolower((unsigned char)n[i]) : std::toupper((unsigned char)n[i]));
  rx_set_name(n, value(val.data(), val.size()));
}

std::string rx_source_name() { return rx_st && rx_st->main_src ? rx_st->main_src->file_name : std::string(); }

void rx_eval(const rx_tok* t, value& out)
{
  switch (t->tok_type) {
  case STRING: out.set_str(t->tok_value, (size_t)t->tok_len); return;
  case SYMBOL: rx_get_var(t, out); return;
  case VIDE: out.set_str("", 0); return;
  case RX_NODE: break;
  default: out.set_str(t->tok_value ? t->tok_value : "", (size_t)t->tok_len); return;
  }
  if (++depth > RX_MAX_EXPR_DEPTH) {
    depth--;
    rx_at(t);
    rx_raise(5, "expressions nested too deeply");
  }
  struct guard {
    ~guard() { depth--; }
  } g;
  eval_node(t, out);
}

int rx_eval_truth(const rx_tok* t, const char* what, const char* after)
{
  value v;
  rx_eval(t, v);
  if (rx_tracing(TR_R | TR_I)) rx_trace_result(v);
  int out;
  if (rx_truth(v, out)) return out;
  rx_at(t);
  rx_raise(34, std::string(what) + rx_text(v) + after);
}
