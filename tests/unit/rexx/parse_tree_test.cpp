// Shapes of the program tree: every clause kind, expression precedence,
// blocks, labels and the records of DO and SELECT.
#include "rexx/rexx.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string tree(const std::string& text)
{
  rx_prog p;
  rx_err e;
  if (int rc = rx_parse(p, text.data(), text.size(), e))
    return "error " + std::to_string(rc) + " " + e.err_msg;
  return rx_tree_text(p.block_head);
}

// The expression of a one-clause "say" program.
std::string ex(const std::string& expr)
{
  std::string t = tree("say " + expr);
  if (t.rfind("say ", 0) != 0) return t;
  return t.substr(4, t.size() - 5);
}

TEST(ParseExpr, PrecedenceAndAssociativity)
{
  EXPECT_EQ(ex("2 ** 3 ** 2"), "(exp 2 (exp 3 2))");
  EXPECT_EQ(ex("-2 ** 2"), "(exp (umin 2) 2)");
  EXPECT_EQ(ex("a \\= b = c"), "(neq A (eq B C))");
  EXPECT_EQ(ex("1 + 2 * 3 - 4"), "(min (plus 1 (mult 2 3)) 4)");
  EXPECT_EQ(ex("a | b & c && d"), "(xor (or A (and B C)) D)");
  EXPECT_EQ(ex("a || b c + 1"), "(bl (conc A B) (plus C 1))");
  EXPECT_EQ(ex("a < b == c"), "(inf A (eeq B C))");
  EXPECT_EQ(ex("10 % 3 // 2 / 1"), "(div (rem (idiv 10 3) 2) 1)");
  EXPECT_EQ(ex("\\a & b"), "(and (not A) B)");
  EXPECT_EQ(ex("+a - -b"), "(min (uplus A) (umin B))");
  EXPECT_EQ(ex("(1 + 2) * 3"), "(mult (plus 1 2) 3)");
}

TEST(ParseExpr, TightOperators)
{
  EXPECT_EQ(ex("a \xbd b + 1"), "(plus (conc_rho A B) 1)");
  EXPECT_EQ(ex("a \xad b"), "(eqic A B)");
  EXPECT_EQ(ex("a ~\xad b"), "(neqic A B)");
  // "a ~b": blank concatenation with the negated right side, tighter still.
  EXPECT_EQ(ex("a ~b * 2"), "(mult (conc_not A B) 2)");
  // Prefix length takes everything that binds at its own level or tighter.
  EXPECT_EQ(ex("\xbd a \xbd b || c"), "(conc (rho (conc_rho A B)) C)");
}

TEST(ParseExpr, CallsBracketsAndBackquotes)
{
  EXPECT_EQ(ex("f(1, g(2), )"), "F(1,G(2),_)");
  EXPECT_EQ(ex("f()"), "F(_)");
  EXPECT_EQ(ex("'lower'(x)"), "'LOWER'(X)");
  EXPECT_EQ(ex("x[1]"), "(br X 1)");
  EXPECT_EQ(ex("x[1:2]"), "(br2 X 1 2)");
  EXPECT_EQ(ex("x[:2] 'ab'[2:]"), "(conc (conc (br2 X _ 2) ' ') (br2 'ab' 2 _))");
  EXPECT_EQ(ex("(a b)[2]"), "(br (bl A B) 2)");
  EXPECT_EQ(ex("`'ls' d`"), "(backq (bl 'ls' D))");
  EXPECT_EQ(ex("a /* note */ + b"), "(plus A B)");
}

TEST(ParseExpr, NodesCarryOperandSlots)
{
  rx_prog p;
  rx_err e;
  std::string text = "say x + 'a' f(1)";
  ASSERT_EQ(rx_parse(p, text.data(), text.size(), e), 0);
  auto* c = static_cast<const rx_cl_expr*>(p.block_head->cl);
  ASSERT_EQ(c->kind, K_SAY);
  const rx_tok* n = c->expr;
  ASSERT_EQ(n->tok_type, RX_NODE);
  EXPECT_EQ(n->tok_op->op_fx, FX_BL);
  EXPECT_STREQ(n->tok_op->op_name, "fx_bl");
  EXPECT_EQ(n->tok_op->op_class, OPC_BINARY);
  const rx_slot& left = n->tok_op->op_slot[0];
  ASSERT_EQ(left.slot_type, RX_NODE);
  const rx_op* plus = left.slot_tok->tok_op;
  EXPECT_EQ(plus->op_fx, FX_PLUS);
  EXPECT_EQ(plus->op_slot[0].slot_type, SYMBOL);
  EXPECT_EQ(plus->op_slot[1].slot_type, STRING);
  EXPECT_EQ(plus->op_slot[2].slot_type, NOLEX);
  const rx_slot& right = n->tok_op->op_slot[1];
  ASSERT_EQ(right.slot_type, RX_NODE);
  EXPECT_EQ(right.slot_tok->tok_op->op_class, OPC_CALL);
  EXPECT_EQ(right.slot_tok->tok_op->op_fname->tok_type, FUNCTION);
  // A node stands where its first operand does.
  EXPECT_EQ(n->tok_col, 4);
}

TEST(ParseClauses, AssignmentsAndSubstringTargets)
{
  EXPECT_EQ(tree("x = 1"), "assign X = 1\n");
  EXPECT_EQ(tree("x ="), "assign X = -\n");
  EXPECT_EQ(tree("x[1:2] = 'ab'"), "assign X[1:2] = 'ab'\n");
  EXPECT_EQ(tree("x[3] = 'ab'"), "assign X[3] = 'ab'\n");
  EXPECT_EQ(tree("x[2:] = 'ab'"), "assign X[2:_] = 'ab'\n");
  EXPECT_EQ(tree("x[:2] = 'ab'"), "assign X[_:2] = 'ab'\n");
  EXPECT_EQ(tree("x[1]"), "command (br X 1)\n");
  EXPECT_EQ(tree("x[1] == 2"), "command (eeq (br X 1) 2)\n");
  rx_prog p;
  rx_err e;
  std::string text = "s[2:] =";
  ASSERT_EQ(rx_parse(p, text.data(), text.size(), e), 0);
  auto* a = static_cast<const rx_cl_assign*>(p.block_head->cl);
  EXPECT_EQ(a->has_index, 1);
  EXPECT_EQ(a->index2_mode, -1);
  EXPECT_EQ(a->index2, nullptr);
  EXPECT_EQ(a->val, nullptr);
}

TEST(ParseClauses, IfThenElseNesting)
{
  EXPECT_EQ(tree("if a then say 1; else say 2"), "if A\nthen\n  say 1\nelse\n  say 2\n");
  EXPECT_EQ(tree("if a then if b then x = 1; else x = 2"),
            "if A\nthen\n  if B\n  then\n    assign X = 1\n  else\n    assign X = 2\n");
  EXPECT_EQ(tree("if a\nthen do\n  say 1\n  end\nelse nop"),
            "if A\nthen\n  do plain\n    say 1\nelse\n");
}

TEST(ParseClauses, DoLoopForms)
{
  EXPECT_EQ(tree("do; say 1; end"), "do plain\n  say 1\n");
  EXPECT_EQ(tree("do 3; end"), "do counted start=3\n");
  EXPECT_EQ(tree("do forever while a; end"), "do forever while=A\n");
  EXPECT_EQ(tree("do i = 1 for 5 to 9 by 2 until i > 3; end i"),
            "do controlled var=I start=1 to=9 by=2 for=5 order=312 until=(sup I 3)\n");
  EXPECT_EQ(tree("do k in s.; end k"), "do in var=K start=S.\n");
  EXPECT_EQ(tree("do until x; end"), "do plain until=X\n");
  rx_prog p;
  rx_err e;
  std::string text = "do i = 1 to 2\n  do j = 1\n  end\nend";
  ASSERT_EQ(rx_parse(p, text.data(), text.size(), e), 0);
  auto* outer = static_cast<const rx_cl_do*>(p.block_head->cl);
  EXPECT_EQ(outer->n_options, 0);
  EXPECT_EQ(outer->end_line, 3);
  auto* inner = static_cast<const rx_cl_do*>(outer->body->cl);
  EXPECT_EQ(inner->outer, outer);
  EXPECT_EQ(inner->n_options, -1);
  EXPECT_EQ(inner->line, 1);
  EXPECT_EQ(inner->end_line, 2);
  EXPECT_EQ(outer->outer, nullptr);
}

TEST(ParseClauses, SelectRecords)
{
  EXPECT_EQ(tree("select\n when a then say 1\n when b then nop\n otherwise say 3; say 4\nend"),
            "select\n  when A\n    say 1\n  when B\n  otherwise\n    say 3\n    say 4\n");
  rx_prog p;
  rx_err e;
  std::string text = "select\nwhen a then nop\nend";
  ASSERT_EQ(rx_parse(p, text.data(), text.size(), e), 0);
  auto* s = static_cast<const rx_cl_select*>(p.block_head->cl);
  EXPECT_EQ(s->otherwise_line, -1);
  EXPECT_EQ(s->otherwise_block, nullptr);
  EXPECT_EQ(s->end_line, 2);
  ASSERT_NE(s->first_when, nullptr);
  EXPECT_EQ(s->first_when->line, 1);
  EXPECT_EQ(s->first_when->next, s->last_when);
  EXPECT_EQ(s->last_when->cond, nullptr);
}

TEST(ParseClauses, SimpleKeywordClauses)
{
  EXPECT_EQ(tree("say; sayn 1; sayx 'ls'; sayr 2; exit; return x; push a; queue b; cd '/'"),
            "say\nsayn 1\nsayx 'ls'\nsayr 2\nexit\nreturn X\npush A\nqueue B\ncd '/'\n");
  EXPECT_EQ(tree("interpret 'say' 1"), "interpret (bl 'say' 1)\n");
  EXPECT_EQ(tree("nop"), "");
  EXPECT_EQ(tree("do i = 1; leave i; iterate; end"), "do controlled var=I start=1\n  leave I\n  iterate\n");
  EXPECT_EQ(tree("'ls' '-l'"), "command (bl 'ls' '-l')\n");
}

TEST(ParseClauses, SignalAndCall)
{
  EXPECT_EQ(tree("signal done"), "signal symbol DONE\n");
  EXPECT_EQ(tree("signal 'done'"), "signal string 'done'\n");
  EXPECT_EQ(tree("signal value 'l' || n"), "signal value (conc 'l' N)\n");
  EXPECT_EQ(tree("signal off novalue"), "signal onoff off novalue\n");
  EXPECT_EQ(tree("call on error name oops"), "signal callon on error name OOPS\n");
  EXPECT_EQ(tree("call f"), "call F\n");
  EXPECT_EQ(tree("call f 1, 'a' b,"), "call F 1,(bl 'a' B),_\n");
  EXPECT_EQ(tree("call f(1, 2)"), "call F 1,2\n");
  EXPECT_EQ(tree("call f (1, 2)"), "call F 1,2\n");
  EXPECT_EQ(tree("call f (1) 2"), "call F (bl 1 2)\n");
  EXPECT_EQ(tree("call 'ext' x"), "call 'ext' X\n");
}

TEST(ParseClauses, ParseArgPullAndTemplates)
{
  EXPECT_EQ(tree("parse arg a b"), "parse arg tmpl:A B\n");
  EXPECT_EQ(tree("parse upper linein x"), "parse upper linein tmpl:X\n");
  EXPECT_EQ(tree("parse external x"), "parse linein tmpl:X\n");
  EXPECT_EQ(tree("parse source s; parse version v; parse numeric n"),
            "parse source tmpl:S\nparse version tmpl:V\nparse numeric tmpl:N\n");
  EXPECT_EQ(tree("parse var line w1 ',' rest"), "parse var LINE tmpl:W1 ',' REST\n");
  EXPECT_EQ(tree("parse value f(x) with a 3 b"), "parse value F(X) tmpl:A 3 B\n");
  EXPECT_EQ(tree("arg a . (b)"), "parse upper arg tmpl:A . ( B )\n");
  EXPECT_EQ(tree("pull"), "parse upper pull tmpl:\n");
  EXPECT_EQ(tree("if a then parse arg x else nop"), "if A\nthen\n  parse arg tmpl:X\nelse\n");
}

TEST(ParseClauses, VariableListsAddressNumericTrace)
{
  EXPECT_EQ(tree("drop a (b) c."), "drop A (B) C.\n");
  EXPECT_EQ(tree("drop (a) (b)"), "drop (A) (B)\n");
  EXPECT_EQ(tree("procedure"), "procedure\n");
  EXPECT_EQ(tree("procedure expose x y"), "procedure expose X Y\n");
  EXPECT_EQ(tree("upper a; lower b"), "upper A\nlower B\n");
  EXPECT_EQ(tree("address"), "address\n");
  EXPECT_EQ(tree("address sh"), "address SH\n");
  EXPECT_EQ(tree("address sh 'ls' x"), "address SH cmd=(bl 'ls' X)\n");
  EXPECT_EQ(tree("address value e"), "address value E\n");
  EXPECT_EQ(tree("numeric digits; numeric digits 5; numeric fuzz 1"),
            "numeric digits\nnumeric digits 5\nnumeric fuzz 1\n");
  EXPECT_EQ(tree("numeric form scientific; numeric form engineering; numeric form value x"),
            "numeric scientific\nnumeric engineering\nnumeric formvalue X\n");
  EXPECT_EQ(tree("trace; trace ?r; trace 'o'; trace value t"),
            "trace\ntrace ?R\ntrace 'o'\ntrace value T\n");
  EXPECT_EQ(tree("option upper nogloballv"), "error 25 ");
  EXPECT_EQ(tree("option mixed setenv\nsay 1"), "say 1\n");
}

TEST(ParseClauses, LabelsEnterTheLabelTable)
{
  rx_prog p;
  rx_err e;
  std::string text = "start: nop\ndo\n inner: say 1\nend\n'Quoted': nop\nstart: nop";
  ASSERT_EQ(rx_parse(p, text.data(), text.size(), e), 0);
  EXPECT_EQ(rx_tree_text(p.block_head),
            "label START\ndo plain\n  label INNER\n  say 1\nlabel Quoted\nlabel START\n");
  const rx_label* l = rx_label_find(p, "START", 5);
  ASSERT_NE(l, nullptr);
  // The first of two equal labels stays.
  EXPECT_EQ(l->cell, p.block_head);
  // Running on from the label reaches the clauses after it.
  ASSERT_NE(l->cell->next, nullptr);
  EXPECT_EQ(l->cell->next->cl->kind, K_DO);
  auto* lab = static_cast<const rx_cl_label*>(l->cell->cl);
  EXPECT_EQ(lab->frame, nullptr);
  const rx_label* in = rx_label_find(p, "INNER", 5);
  ASSERT_NE(in, nullptr);
  EXPECT_NE(static_cast<const rx_cl_label*>(in->cell->cl)->frame, nullptr);
  EXPECT_NE(rx_label_find(p, "Quoted", 6), nullptr);
  EXPECT_EQ(rx_label_find(p, "QUOTED", 6), nullptr);
  EXPECT_EQ(rx_label_find(p, "start", 5), nullptr);
}

TEST(ParseClauses, SymbolCaseOptionsReachTheTree)
{
  EXPECT_EQ(tree("option mixed; abc = 1; say ABC"), "assign abc = 1\nsay ABC\n");
  EXPECT_EQ(tree("option lower; Abc = F(1)"), "assign abc = f(1)\n");
  EXPECT_EQ(tree("option lower upper\nx = 1"), "assign x = 1\n");
}

}  // namespace
