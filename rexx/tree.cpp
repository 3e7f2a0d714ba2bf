// Renderings of tokens and of the program tree: token names for tracing,
// the lexer's trace lines, and compact texts that tests compare against.
#include "rexx/tree_int.h"

#include <cstdio>

namespace {

constexpr const char* tok_names[] = {
  "SYMBOL", "STRING", "VIDE", "ADDRESS", "ARG", "BY", "CALL", "DIGITS", "DO", "DROP",
  "ELSE", "END", "ENGINEERING", "EXIT", "EXPOSE", "FOR", "FOREVER", "FORM", "FUZZ", "IF",
  "INTERPRET", "ITERATE", "LEAVE", "LINEIN", "NOP", "NUMERIC", "OFF", "ON", "OTHERWISE",
  "PARSE", "PROCEDURE", "PULL", "PUSH", "QUEUE", "RETURN", "SAY", "SAYN", "SAYX", "SAYR",
  "SCIENTIFIC", "SELECT", "SIGNAL", "SOURCE", "THEN", "TO", "TRACE", "UNTIL", "UPPER",
  "VALUE", "VAR", "VERSION", "WHILE", "WITH", "WHEN", "ERROR", "FAILURE", "HALT",
  "NOVALUE", "SYNTAX", "TEMPLATE", "ENVIRON", "LOWER", "CD", "FUNCTION", "NAME",
  "NOTREADY", "SFUNCTION", "IN", "OPTION", "MIXED", "SETENV", "UNSETENV", "LOAD", "NOLOAD",
  "OP_XOR", "OP_IINF_EQ", "OP_INF_EQ", "OP_SSUP_EQ", "OP_SUP_EQ", "OP_IINF", "OP_SSUP",
  "OP_NNEQ", "OP_NEQ", "OP_EEQ", "OP_CONC", "OP_REMAIN", "OP_EXP", "OP_RHO", "OP_NEQIC",
  "OP_EQIC", "OP_NOT", "GLOBALV", "NOGLOBALV",
};
static_assert(sizeof tok_names / sizeof tok_names[0] == NOGLOBALV - SYMBOL + 1);

struct kindname {
  int32_t kind;       // clause kind
  const char* name;   // its word in tree texts
};

constexpr kindname kind_names[] = {
  {K_COMMAND, "command"}, {K_SAY, "say"}, {K_EXIT, "exit"}, {K_RETURN, "return"},
  {K_PUSH, "push"}, {K_QUEUE, "queue"}, {K_INTERPRET, "interpret"}, {K_SAYN, "sayn"},
  {K_CD, "cd"}, {K_SAYX, "sayx"}, {K_SAYR, "sayr"}, {K_DROP, "drop"}, {K_UPPER, "upper"},
  {K_LOWER, "lower"}, {K_PROCEDURE, "procedure"}, {K_LEAVE, "leave"},
  {K_ITERATE, "iterate"},
};
static_assert(sizeof kind_names / sizeof kind_names[0] == 17);

const char* kind_name(int32_t kind)
{
  for (const kindname& k : kind_names)
    if (k.kind == kind) return k.name;
  return "?";
}

constexpr const char* do_modes[] = {"counted", "forever", "controlled", "plain", "in"};
constexpr const char* sig_modes[] = {"string", "symbol", "onoff", "value", "callon"};
constexpr const char* parse_srcs[] = {"arg",   "linein", "pull",    "source",
                                      "value", "var",    "version", "numeric"};
constexpr const char* num_modes[] = {"digits", "scientific", "engineering", "formvalue",
                                     "fuzz"};

std::string leaf_text(const rx_tok* t)
{
  if (!t) return "-";
  std::string v(t->tok_value ? t->tok_value : "", t->tok_value ? t->tok_len : 0);
  switch (t->tok_type) {
  case VIDE: return "_";
  case STRING: return t->tok_quoted ? "'" + v + "'" : v;
  default: return v;
  }
}

void slot_text(std::string& out, const rx_slot& s)
{
  out += s.slot_type == NOLEX ? "_" : rx_expr_text(s.slot_tok);
}

std::string chain_text(const rx_tok* t, const char* sep)
{
  std::string out;
  for (; t; t = t->tok_next) {
    if (!out.empty()) out += sep;
    if (t->tok_quoted == 2) out += "(" + leaf_text(t) + ")";
    else if (t->tok_type == SYMBOL || t->tok_type == STRING || t->tok_type == VIDE ||
             t->tok_type == RX_NODE || t->tok_type == FUNCTION || t->tok_type == SFUNCTION)
      out += rx_expr_text(t);
    else out += t->tok_value ? leaf_text(t) : rx_tok_name(t->tok_type);
  }
  return out;
}

void block_text(std::string& out, const rx_cell* b, int indent);

void line(std::string& out, int indent, const std::string& text)
{
  out.append(indent * 2, ' ');
  out += text;
  out += '\n';
}

void clause_text(std::string& out, const rx_clause* c, int ind)
{
  switch (c->kind) {
  case K_ASSIGN: {
    auto* a = static_cast<const rx_cl_assign*>(c);
    std::string s = "assign " + leaf_text(a->target);
    if (a->has_index) {
      s += "[" + (a->index1 ? rx_expr_text(a->index1) : std::string("_"));
      if (a->index2_mode) s += ":" + (a->index2 ? rx_expr_text(a->index2) : std::string("_"));
      s += "]";
    }
    line(out, ind, s + " = " + (a->val ? rx_expr_text(a->val) : "-"));
    break;
  }
  case K_IF: {
    auto* f = static_cast<const rx_cl_if*>(c);
    line(out, ind, "if " + rx_expr_text(f->cond));
    line(out, ind, "then");
    block_text(out, f->then_block, ind + 1);
    if (f->else_block) {
      line(out, ind, "else");
      block_text(out, f->else_block, ind + 1);
    }
    break;
  }
  case K_DO: {
    auto* d = static_cast<const rx_cl_do*>(c);
    std::string s = std::string("do ") + do_modes[d->loop_mode - DO_COUNTED];
    if (d->control) s += " var=" + leaf_text(d->control);
    if (d->start) s += " start=" + rx_expr_text(d->start);
    if (d->to) s += " to=" + rx_expr_text(d->to);
    if (d->by) s += " by=" + rx_expr_text(d->by);
    if (d->for_) s += " for=" + rx_expr_text(d->for_);
    if (d->n_options >= 0) {
      s += " order=";
      for (int i = 0; i <= d->n_options; i++) s += static_cast<char>('0' + d->order[i]);
    }
    if (d->cond_mode != COND_NONE)
      s += (d->cond_mode == COND_WHILE ? " while=" : " until=") + rx_expr_text(d->cond);
    line(out, ind, s);
    block_text(out, d->body, ind + 1);
    break;
  }
  case K_SELECT: {
    auto* s = static_cast<const rx_cl_select*>(c);
    line(out, ind, "select");
    for (const rx_when* w = s->first_when; w && w->cond; w = w->next) {
      line(out, ind + 1, "when " + rx_expr_text(w->cond));
      block_text(out, w->block, ind + 2);
    }
    if (s->otherwise_block) {
      line(out, ind + 1, "otherwise");
      block_text(out, s->otherwise_block, ind + 2);
    }
    break;
  }
  case K_LABEL:
    line(out, ind, std::string("label ") + static_cast<const rx_cl_label*>(c)->name);
    break;
  case K_LEAVE:
  case K_ITERATE: {
    auto* l = static_cast<const rx_cl_leave*>(c);
    line(out, ind, std::string(kind_name(c->kind)) + (l->name ? std::string(" ") + l->name : ""));
    break;
  }
  case K_SIGNAL: {
    auto* s = static_cast<const rx_cl_signal*>(c);
    std::string t = std::string("signal ") + sig_modes[s->mode] + " " + rx_expr_text(s->op1);
    if (s->op2) t += " " + leaf_text(s->op2);
    if (s->name) t += " name " + leaf_text(s->name);
    line(out, ind, t);
    break;
  }
  case K_CALL: {
    auto* k = static_cast<const rx_cl_call*>(c);
    line(out, ind, "call " + leaf_text(k->fname) + (k->args ? " " + chain_text(k->args, ",") : ""));
    break;
  }
  case K_PARSE: {
    auto* p = static_cast<const rx_cl_parse*>(c);
    std::string s = std::string("parse ") + (p->upper ? "upper " : "") + parse_srcs[p->source];
    if (p->operand) s += " " + rx_expr_text(p->operand);
    s += " tmpl:" + chain_text(p->tmpl, " ");
    line(out, ind, s);
    break;
  }
  case K_ADDRESS: {
    auto* a = static_cast<const rx_cl_address*>(c);
    std::string s = "address";
    if (a->env) s += (a->env->tok_type == ENVIRON ? " " + leaf_text(a->env)
                                                   : " value " + rx_expr_text(a->env));
    if (a->cmd) s += " cmd=" + rx_expr_text(a->cmd);
    line(out, ind, s);
    break;
  }
  case K_NUMERIC: {
    auto* n = static_cast<const rx_cl_numeric*>(c);
    line(out, ind, std::string("numeric ") + num_modes[n->mode] +
                       (n->expr ? " " + rx_expr_text(n->expr) : ""));
    break;
  }
  case K_TRACE: {
    auto* t = static_cast<const rx_cl_trace*>(c);
    std::string s = "trace";
    if (t->first) s += " " + leaf_text(t->first);
    if (t->expr) s += " value " + rx_expr_text(t->expr);
    line(out, ind, s);
    break;
  }
  case K_DROP:
  case K_UPPER:
  case K_LOWER:
  case K_PROCEDURE: {
    auto* v = static_cast<const rx_cl_vars*>(c);
    std::string s = kind_name(c->kind);
    if (v->vars) s += (c->kind == K_PROCEDURE ? " expose " : " ") + chain_text(v->vars, " ");
    line(out, ind, s);
    break;
  }
  default: {
    auto* e = static_cast<const rx_cl_expr*>(c);
    line(out, ind, std::string(kind_name(c->kind)) + (e->expr ? " " + rx_expr_text(e->expr) : ""));
    break;
  }
  }
}

void block_text(std::string& out, const rx_cell* b, int indent)
{
  for (; b && b->cl; b = b->next) clause_text(out, b->cl, indent);
}

}  // namespace

const char* rx_tok_name(int32_t type)
{
  static char one[2];
  if (type >= SYMBOL && type <= NOGLOBALV) return tok_names[type - SYMBOL];
  switch (type) {
  case NOLEX: return "NOLEX";
  case RX_NODE: return "NODE";
  case RX_BLANK: return "BLANK";
  default: break;
  }
  one[0] = static_cast<char>(type);
  one[1] = 0;
  return one;
}

std::string rx_expr_text(const rx_tok* t)
{
  if (!t) return "-";
  if (t->tok_type != RX_NODE) return leaf_text(t);
  const rx_op* op = t->tok_op;
  if (op->op_class == OPC_CALL) {
    std::string name = leaf_text(op->op_fname);
    if (op->op_fname->tok_type == SFUNCTION) name = "'" + name + "'";
    return name + "(" + chain_text(op->op_args, ",") + ")";
  }
  std::string out = "(";
  out += op->op_name + 3;  // without the "fx_" prefix
  int n = op->op_class == OPC_UNARY ? 1 : op->op_class == OPC_BINARY ? 2
        : op->op_fx == FX_BR ? 2 : 3;
  for (int i = 0; i < n; i++) {
    out += ' ';
    slot_text(out, op->op_slot[i]);
  }
  return out + ")";
}

std::string rx_tree_text(const rx_cell* block)
{
  std::string out;
  block_text(out, block, 0);
  return out;
}

std::string rx_toks_text(const std::vector<rx_tok*>& toks)
{
  std::string out;
  for (const rx_tok* t : toks) {
    if (!out.empty()) out += ' ';
    std::string v(t->tok_value ? t->tok_value : "", t->tok_value ? t->tok_len : 0);
    switch (t->tok_type) {
    case SYMBOL: out += "s:" + v; break;
    case STRING: out += t->tok_quoted ? "'" + v + "'" : "n:" + v; break;
    case FUNCTION: out += "f:" + v; break;
    case SFUNCTION: out += "sf:" + v; break;
    case ENVIRON: out += "ENVIRON:" + v; break;
    case RX_BLANK: out += "_"; break;
    default: out += rx_tok_name(t->tok_type); break;
    }
  }
  return out;
}

std::string rx_toks_trace(const std::vector<rx_tok*>& toks, const char* banner)
{
  std::string out = banner;
  out += '\n';
  char buf[256];
  for (const rx_tok* t : toks) {
    if (t->tok_value)
      std::snprintf(buf, sizeof buf,
                    "lex: type = %s   value = \"%.120s\"    len = %d     line = %d    col = %d\n",
                    rx_tok_name(t->tok_type), t->tok_value, t->tok_len, t->tok_line, t->tok_col);
    else
      std::snprintf(buf, sizeof buf,
                    "lex: type = %s                                line = %d    col = %d\n",
                    rx_tok_name(t->tok_type), t->tok_line, t->tok_col);
    out += buf;
  }
  return out;
}
