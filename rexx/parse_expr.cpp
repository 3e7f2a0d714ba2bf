// Expressions: precedence, prefix operators, calls, brackets, backquotes.
//
// Binary levels, loosest first:
//   1 | &&   2 &   3 comparisons other than = ==   4 = ==   5 blank ||
//   6 + -    7 * / % //   8 ** (right to left)   9 length, =ic, \=ic
//   10 binary \ (concatenation with a negated right side)
// Prefix \ + - bind tightest; prefix length takes a level-9 operand.
#include "rexx/parse_int.h"

namespace {

struct binop {
  int32_t tok;     // operator token
  int level;       // binding level, 1 loosest
  rx_fx fx;        // what computes it
};

constexpr binop bintab[] = {
  {'|', 1, FX_OR}, {OP_XOR, 1, FX_XOR},
  {'&', 2, FX_AND},
  {OP_NEQ, 3, FX_NEQ}, {OP_NNEQ, 3, FX_NNEQ}, {'>', 3, FX_SUP}, {OP_SSUP, 3, FX_SSUP},
  {'<', 3, FX_INF}, {OP_IINF, 3, FX_IINF}, {OP_SUP_EQ, 3, FX_SUPEQ},
  {OP_SSUP_EQ, 3, FX_SSUPEQ}, {OP_INF_EQ, 3, FX_INFEQ}, {OP_IINF_EQ, 3, FX_IINFEQ},
  {'=', 4, FX_EQ}, {OP_EEQ, 4, FX_EEQ},
  {RX_BLANK, 5, FX_BL}, {OP_CONC, 5, FX_CONC},
  {'+', 6, FX_PLUS}, {'-', 6, FX_MIN},
  {'*', 7, FX_MULT}, {'/', 7, FX_DIV}, {'%', 7, FX_IDIV}, {OP_REMAIN, 7, FX_REM},
  {OP_EXP, 8, FX_EXP},
  {OP_RHO, 9, FX_CONC_RHO}, {OP_EQIC, 9, FX_EQIC}, {OP_NEQIC, 9, FX_NEQIC},
  {OP_NOT, 10, FX_CONC_NOT},
};
static_assert(sizeof bintab / sizeof bintab[0] == 28);
constexpr int POWER_LEVEL = 8;
constexpr int RHO_LEVEL = 9;

const binop* find_binop(int32_t tok)
{
  for (const binop& b : bintab)
    if (b.tok == tok) return &b;
  return nullptr;
}

constexpr const char* fx_names[] = {
  "fx_or", "fx_xor", "fx_and",
  "fx_neq", "fx_nneq", "fx_sup", "fx_ssup", "fx_inf", "fx_iinf", "fx_supeq", "fx_ssupeq",
  "fx_infeq", "fx_iinfeq",
  "fx_eq", "fx_eeq", "fx_bl", "fx_conc", "fx_plus", "fx_min", "fx_mult", "fx_div", "fx_idiv",
  "fx_rem", "fx_exp", "fx_conc_rho", "fx_eqic", "fx_neqic", "fx_conc_not",
  "fx_not", "fx_uplus", "fx_umin", "fx_rho", "fx_backq", "fx_br", "fx_br2", "fx_call",
};
static_assert(sizeof fx_names / sizeof fx_names[0] == FX_COUNT);

}  // namespace

const char* rx_fx_name(rx_fx fx)
{
  return fx >= 0 && fx < FX_COUNT ? fx_names[fx] : "?";
}

void rx_set_slot(rx_slot& s, rx_tok* operand)
{
  s.slot_tok = operand;
  s.slot_type = operand ? (operand->tok_type == RX_NODE ? RX_NODE : operand->tok_type) : NOLEX;
}

bool parser::starts_expr(int32_t type)
{
  switch (type) {
  case STRING: case SYMBOL: case FUNCTION: case SFUNCTION: case '(': case '`':
  case OP_NOT: case '+': case '-': case OP_RHO:
    return true;
  default:
    return false;
  }
}

rx_tok* parser::node(int32_t cls, rx_fx fx, const rx_tok* pos_of)
{
  rx_tok* n = rx_newtok(a, RX_NODE, pos_of->tok_line, pos_of->tok_col);
  rx_op* op = a.make<rx_op>();
  op->op_class = cls;
  op->op_fx = fx;
  op->op_name = rx_fx_name(fx);
  for (rx_slot& s : op->op_slot) s.slot_type = NOLEX;
  n->tok_op = op;
  return n;
}

rx_tok* parser::expr() { return binary(1); }

rx_tok* parser::opt_expr() { return starts_expr(peek()) ? expr() : nullptr; }

// binary(n): an expression whose operators all bind at level n or tighter.
rx_tok* parser::binary(int level)
{
  enter();
  int spine = 1;  // each operator of a left-leaning chain deepens the tree
  rx_tok* lhs = unary();
  for (;;) {
    const binop* b = find_binop(peek());
    if (!b || b->level < level) break;
    enter();
    spine++;
    pos++;
    rx_tok* rhs = binary(b->level == POWER_LEVEL ? b->level : b->level + 1);
    rx_tok* n = node(OPC_BINARY, b->fx, lhs);
    rx_set_slot(n->tok_op->op_slot[0], lhs);
    rx_set_slot(n->tok_op->op_slot[1], rhs);
    lhs = n;
  }
  depth -= spine;
  return lhs;
}

// unary: prefix-op unary | length-op binary(9) | primary
rx_tok* parser::unary()
{
  int32_t ty = peek();
  rx_fx fx;
  switch (ty) {
  case OP_NOT: fx = FX_NOT; break;
  case '+': fx = FX_UPLUS; break;
  case '-': fx = FX_UMIN; break;
  case OP_RHO: fx = FX_RHO; break;
  default: return primary();
  }
  enter();
  pos++;
  rx_tok* operand = fx == FX_RHO ? binary(RHO_LEVEL) : unary();
  rx_tok* n = node(OPC_UNARY, fx, operand);
  rx_set_slot(n->tok_op->op_slot[0], operand);
  leave();
  return n;
}

// primary: STRING [bracket] | SYMBOL [bracket] | ( expr ) [bracket]
//        | FUNCTION ( args ) | SFUNCTION ( args ) | ` expr `
rx_tok* parser::primary()
{
  rx_tok* t0 = tok();
  switch (peek()) {
  case STRING:
  case SYMBOL:
    pos++;
    return peek() == '[' ? bracket(t0) : t0;
  case FUNCTION:
  case SFUNCTION: {
    enter();
    pos++;
    expect('(');
    rx_tok* n = node(OPC_CALL, FX_CALL, t0);
    n->tok_op->op_fname = t0;
    n->tok_op->op_args = args();
    expect(')');
    leave();
    return n;
  }
  case '(': {
    enter();
    pos++;
    rx_tok* e = expr();
    expect(')');
    leave();
    return peek() == '[' ? bracket(e) : e;
  }
  case '`': {
    enter();
    pos++;
    rx_tok* e = expr();
    expect('`');
    rx_tok* n = node(OPC_UNARY, FX_BACKQ, e);
    rx_set_slot(n->tok_op->op_slot[0], e);
    leave();
    return n;
  }
  default:
    fail(cur_err);
  }
}

// bracket: [ expr ] | [ expr : expr ] | [ expr : ] | [ : expr ]
rx_tok* parser::bracket(rx_tok* base)
{
  enter();
  pos++;
  rx_tok* first = peek() == ':' ? nullptr : expr();
  rx_tok* n;
  if (peek() == ':') {
    pos++;
    rx_tok* second = peek() == ']' ? nullptr : expr();
    if (!first && !second) fail(cur_err);
    n = node(OPC_BRACKET, FX_BR2, base);
    rx_set_slot(n->tok_op->op_slot[1], first);
    rx_set_slot(n->tok_op->op_slot[2], second);
  } else {
    n = node(OPC_BRACKET, FX_BR, base);
    rx_set_slot(n->tok_op->op_slot[1], first);
  }
  rx_set_slot(n->tok_op->op_slot[0], base);
  expect(']');
  leave();
  return n;
}

// args: arg { , arg }   where arg is expr or VIDE; chained through tok_next
rx_tok* parser::args()
{
  rx_tok* head = nullptr;
  rx_tok** link = &head;
  for (;;) {
    rx_tok* arg;
    if (peek() == VIDE) {
      arg = tok();
      pos++;
    } else {
      arg = expr();
    }
    arg->tok_next = nullptr;
    *link = arg;
    link = &arg->tok_next;
    if (peek() != ',') break;
    pos++;
  }
  return head;
}
