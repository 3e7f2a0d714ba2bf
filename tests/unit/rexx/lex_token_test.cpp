// Token streams of the scanner and of the rewriting passes.
#include "rexx/rexx.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// Tokens after rx_lex and rx_lex2, rendered by rx_toks_text.
std::string toks(const std::string& text, rx_prog* keep = nullptr)
{
  rx_prog local;
  rx_prog& p = keep ? *keep : local;
  rx_err e;
  int rc = rx_lex(p, text.data(), text.size(), 0, e);
  if (rc) return "error " + std::to_string(rc);
  rx_lex2(p);
  return rx_toks_text(p.toks);
}

// Tokens straight from the scanner.
std::string raw(const std::string& text)
{
  rx_prog p;
  rx_err e;
  int rc = rx_lex(p, text.data(), text.size(), 0, e);
  if (rc) return "error " + std::to_string(rc);
  return rx_toks_text(p.toks);
}

struct lexfail {
  int num, line, col;
};

lexfail lex_error(const std::string& text)
{
  rx_prog p;
  rx_err e;
  int rc = rx_lex(p, text.data(), text.size(), 0, e);
  return {rc, e.err_line, e.err_col};
}

TEST(LexScanner, SymbolsConstantsAndExponents)
{
  EXPECT_EQ(raw("a. = 1"), "s:a. _ = n:1 ;");
  EXPECT_EQ(raw("x = .5 + 1"), "s:x _ = n:.5 _ + n:1 ;");
  EXPECT_EQ(raw("x = 1e-3x"), "s:x _ = n:1e-3x ;");
  EXPECT_EQ(raw("x = 1.5E+10"), "s:x _ = n:1.5E+10 ;");
  // The sign joins only after a number: "ae-1" is a subtraction.
  EXPECT_EQ(raw("x = ae-1"), "s:x _ = s:ae - n:1 ;");
  EXPECT_EQ(raw("x = 1.2.3e-1"), "s:x _ = n:1.2.3e - n:1 ;");
  EXPECT_EQ(raw("say @#$!?_x"), "SAY _ s:@#$!?_x ;");
}

TEST(LexScanner, KeywordsAreFoundInAnyCaseWithTextAsWritten)
{
  rx_prog p;
  rx_err e;
  std::string text = "Say eXternal";
  ASSERT_EQ(rx_lex(p, text.data(), text.size(), 0, e), 0);
  ASSERT_EQ(p.toks.size(), 4u);
  EXPECT_EQ(p.toks[0]->tok_type, SAY);
  EXPECT_STREQ(p.toks[0]->tok_value, "Say");
  EXPECT_EQ(p.toks[2]->tok_type, LINEIN);
  EXPECT_STREQ(p.toks[2]->tok_value, "eXternal");
}

TEST(LexScanner, StringsQuotesHexAndBinary)
{
  EXPECT_EQ(raw("say 'a''b'"), "SAY _ 'a'b' ;");
  EXPECT_EQ(raw("say \"it's\""), "SAY _ 'it's' ;");
  EXPECT_EQ(raw("say 'ab cd'x"), std::string("SAY _ '\xab\xcd' ;"));
  EXPECT_EQ(raw("say '4142'X"), "SAY _ 'AB' ;");
  EXPECT_EQ(raw("say ''x"), "SAY _ '' ;");
  EXPECT_EQ(raw("say '0100 0001'b"), "SAY _ 'A' ;");
  EXPECT_EQ(raw("say '1 01000010'b"), std::string("SAY _ '\x01" "B' ;"));
  // The leftmost group of a binary string may be short: zero bits fill it.
  EXPECT_EQ(raw("say '101'b"), std::string("SAY _ '\x05' ;"));
  // A letter that continues a symbol makes the x a separate symbol.
  EXPECT_EQ(raw("say 'ab'xy"), "SAY _ 'ab' s:xy ;");
  rx_prog p;
  rx_err e;
  std::string text = "'41'x";
  ASSERT_EQ(rx_lex(p, text.data(), text.size(), 0, e), 0);
  EXPECT_EQ(p.toks[0]->tok_quoted, 1);
}

TEST(LexScanner, ScanningErrorsAndTheirPositions)
{
  struct {
    const char* text;
    int num, line, col;
  } cases[] = {
    {"say 'abc", 1, 0, 4},
    {"say \"abc", 2, 0, 4},
    {"say 'ab\ncd'", 1, 0, 4},
    {"x = 1\n  /* a /* b */\nsay", 6, 1, 2},
    {"say 'abc'x", 15, 0, 4},
    {"say 'a bc'x", 15, 0, 4},
    {"say ' ab'x", 15, 0, 4},
    {"say 'ag'x", 15, 0, 4},
    {"say '0101 1'b", 67, 0, 4},
    {"say '0102'b", 67, 0, 4},
    {"say '0101 'b", 67, 0, 4},
    {"5 = 3", 31, 0, 0},
    {"x = 1;  .5  = 3", 31, 0, 8},
  };
  for (const auto& c : cases) {
    lexfail f = lex_error(c.text);
    EXPECT_EQ(f.num, c.num) << c.text;
    EXPECT_EQ(f.line, c.line) << c.text;
    EXPECT_EQ(f.col, c.col) << c.text;
  }
  EXPECT_EQ(lex_error("x = 5 = 3").num, 0);
  EXPECT_EQ(lex_error("say '0101 1111'b '01 0101'b").num, 0);
}

TEST(LexScanner, LinesCommentsAndSemicolons)
{
  EXPECT_EQ(raw("#!/usr/bin/molba\nsay 1"), "SAY _ n:1 ;");
  EXPECT_EQ(raw(";;say 1;;\n\n;say 2\n"), "SAY _ n:1 ; SAY _ n:2 ;");
  EXPECT_EQ(raw("say 1\r\nsay 2\x1a"), "SAY _ n:1 ; SAY _ n:2 ;");
  EXPECT_EQ(raw("say a/**/b"), "SAY _ s:a s:b ;");
  EXPECT_EQ(raw("say /* x /* y */ z */ 1"), "SAY _ n:1 ;");
  EXPECT_EQ(raw("x = 4 /"), "s:x _ = n:4 _ / ;");
  EXPECT_EQ(raw(""), ";");
  EXPECT_EQ(raw("\n"), ";");
}

TEST(LexScanner, ContinuationCommas)
{
  EXPECT_EQ(raw("say a,\n  b"), "SAY _ s:a _ s:b ;");
  EXPECT_EQ(raw("say a, /* note */\n  b"), "SAY _ s:a _ s:b ;");
  EXPECT_EQ(raw("say a, /* two\nlines */\n  b"), "SAY _ s:a _ s:b ;");
  EXPECT_EQ(raw("call f a, b"), "CALL _ s:f _ s:a , _ s:b ;");
  rx_prog p;
  rx_err e;
  std::string text = "say a,\n b\nsay c";
  ASSERT_EQ(rx_lex(p, text.data(), text.size(), 0, e), 0);
  EXPECT_EQ(p.toks[4]->tok_line, 1);
  EXPECT_EQ(p.toks[6]->tok_line, 2);
}

TEST(LexScanner, OperatorsGatherAcrossBlanks)
{
  EXPECT_EQ(raw("a > = b"), "s:a _ OP_SUP_EQ s:b ;");
  EXPECT_EQ(raw("a \\ = b"), "s:a _ OP_NEQ s:b ;");
  EXPECT_EQ(raw("a ^== b <> c >< d"), "s:a _ OP_NNEQ s:b _ OP_NEQ s:c _ OP_NEQ s:d ;");
  EXPECT_EQ(raw("a >>= b /<< c"), "s:a _ OP_SSUP_EQ s:b _ OP_SSUP_EQ s:c ;");
  EXPECT_EQ(raw("a ** b // c || d && e"),
            "s:a _ OP_EXP s:b _ OP_REMAIN s:c _ OP_CONC s:d _ OP_XOR s:e ;");
  EXPECT_EQ(raw("a =\\ b"), "s:a _ = OP_NOT s:b ;");
  EXPECT_EQ(raw("a*/*c*/b"), "s:a * s:b ;");
  EXPECT_EQ(raw("a \xad b ~\xad c \xbd d"), "s:a _ OP_EQIC s:b _ OP_NEQIC s:c _ OP_RHO s:d ;");
  EXPECT_EQ(raw("x = a % b - c"), "s:x _ = s:a _ % s:b _ - s:c ;");
}

TEST(LexScanner, BracesAreDoBlocks)
{
  EXPECT_EQ(raw("if a then { say 1 }"), "IF _ s:a _ THEN _ DO ; SAY _ n:1 _ ; END ;");
  EXPECT_EQ(toks("if a then { say 1 }"), "IF s:A THEN DO ; SAY n:1 ; END ;");
}

TEST(Lex2Keywords, KeywordsUsedAsVariables)
{
  EXPECT_EQ(toks("do = 3"), "s:DO = n:3 ;");
  EXPECT_EQ(toks("if: nop"), "s:IF : ; NOP ;");
  EXPECT_EQ(toks("say = 1"), "s:SAY = n:1 ;");
  EXPECT_EQ(toks("end + 1"), "s:END + n:1 ;");
  EXPECT_EQ(toks("x = then"), "s:X = s:THEN ;");
  EXPECT_EQ(toks("value = to + by"), "s:VALUE = s:TO + s:BY ;");
  EXPECT_EQ(toks("nop = 2"), "s:NOP = n:2 ;");
  EXPECT_EQ(toks("template = 1"), "s:TEMPLATE = n:1 ;");
  EXPECT_EQ(toks("call say"), "CALL s:SAY ;");
  EXPECT_EQ(toks("x = value('y')"), "s:X = f:VALUE ( 'y' ) ;");
}

TEST(Lex2Keywords, ThenElseSettling)
{
  EXPECT_EQ(toks("if a\nthen\nsay 1\nelse\nsay 2"), "IF s:A THEN SAY n:1 ELSE SAY n:2 ;");
  EXPECT_EQ(toks("if a then x = 1; else x = 2"),
            "IF s:A THEN s:X = n:1 ELSE s:X = n:2 ;");
  // Without a waiting IF, THEN is a symbol; a THEN that labels stays a label.
  EXPECT_EQ(toks("say then"), "SAY s:THEN ;");
  // A prefix operator may open a condition; other operators make IF a variable.
  EXPECT_EQ(toks("if \\found then nop"), "IF OP_NOT s:FOUND THEN NOP ;");
  EXPECT_EQ(toks("if -x > 0 then nop"), "IF - s:X > n:0 THEN NOP ;");
  EXPECT_EQ(toks("if * 2"), "s:IF * n:2 ;");
  EXPECT_EQ(toks("x = 1\nthen: nop"), "s:X = n:1 ; s:THEN : ; NOP ;");
  EXPECT_EQ(toks("x = 1\nelse = 2"), "s:X = n:1 ; ELSE = n:2 ;");
  EXPECT_EQ(toks("select\nwhen a\nthen nop\notherwise\nnop\nend"),
            "SELECT ; WHEN s:A THEN NOP ; OTHERWISE NOP ; END ;");
}

TEST(Lex2Keywords, EndDoAndLoopWords)
{
  EXPECT_EQ(toks("do i = 1 to 3 by 1 for 2 while i < 4\nend i"),
            "DO s:I = n:1 TO n:3 BY n:1 FOR n:2 WHILE s:I < n:4 ; END s:I ;");
  // After WHILE, TO is no longer a loop word.
  EXPECT_EQ(toks("do while a to b\nend"), "DO WHILE s:A _ s:TO _ s:B ; END ;");
  EXPECT_EQ(toks("do forever\nend"), "DO FOREVER ; END ;");
  EXPECT_EQ(toks("x = forever"), "s:X = s:FOREVER ;");
  EXPECT_EQ(toks("do x in s.\nend"), "DO s:X IN s:S. ; END ;");
  EXPECT_EQ(toks("say to by for"), "SAY s:TO _ s:BY _ s:FOR ;");
}

TEST(Lex2Keywords, ClauseKeywordsWithSubKeywords)
{
  EXPECT_EQ(toks("address sh 'ls'"), "ADDRESS ENVIRON:SH 'ls' ;");
  EXPECT_EQ(toks("address (e)"), "ADDRESS VALUE ( s:E ) ;");
  EXPECT_EQ(toks("address value e"), "ADDRESS VALUE s:E ;");
  EXPECT_EQ(toks("signal on error name trap"), "SIGNAL ON ERROR NAME s:TRAP ;");
  EXPECT_EQ(toks("signal end"), "SIGNAL s:END ;");
  EXPECT_EQ(toks("signal (x)"), "SIGNAL VALUE ( s:X ) ;");
  EXPECT_EQ(toks("call on halt name do"), "CALL ON HALT NAME s:DO ;");
  EXPECT_EQ(toks("numeric form (x)"), "NUMERIC FORM VALUE ( s:X ) ;");
  EXPECT_EQ(toks("numeric form scientific"), "NUMERIC FORM SCIENTIFIC ;");
  EXPECT_EQ(toks("numeric x"), "s:NUMERIC _ s:X ;");
  EXPECT_EQ(toks("trace -1"), "TRACE VALUE - n:1 ;");
  EXPECT_EQ(toks("trace value x"), "TRACE VALUE s:X ;");
  EXPECT_EQ(toks("procedure expose a (b)"), "PROCEDURE EXPOSE s:A _ ( s:B ) ;");
  EXPECT_EQ(toks("parse upper var line a b"), "PARSE UPPER VAR s:LINE s:A s:B ;");
  EXPECT_EQ(toks("parse value f(x) with a b"), "PARSE VALUE f:F ( s:X ) WITH s:A s:B ;");
  EXPECT_EQ(toks("parse x"), "s:PARSE _ s:X ;");
  EXPECT_EQ(toks("arg a(b) c"), "ARG s:A ( s:B ) s:C ;");
  EXPECT_EQ(toks("select\nend"), "SELECT ; END ;");
  EXPECT_EQ(toks("x = select"), "s:X = s:SELECT ;");
}

TEST(Lex2Keywords, OptionsTakeEffectOnceWhileLexing)
{
  rx_prog p;
  EXPECT_EQ(toks("option mixed lower; abc = 1; say ABC", &p),
            "OPTION MIXED LOWER ; s:abc = n:1 ; SAY s:ABC ;");
  EXPECT_EQ(p.opts.symcase, CASE_MIXED);
  rx_prog q;
  EXPECT_EQ(toks("option lower noload; Abc = f(1)", &q), "OPTION LOWER NOLOAD ; s:abc = f:f ( n:1 ) ;");
  EXPECT_EQ(q.opts.symcase, CASE_LOWER);
  EXPECT_EQ(q.opts.load, 0);
  EXPECT_EQ(q.opts.setenv, OPT_UNSET);
  EXPECT_EQ(toks("mixed = 1"), "s:MIXED = n:1 ;");
}

TEST(Lex2Inserted, CallsAndEmptyArguments)
{
  EXPECT_EQ(toks("x = f()"), "s:X = f:F ( VIDE ) ;");
  EXPECT_EQ(toks("x = f(,a,)"), "s:X = f:F ( VIDE , s:A , VIDE ) ;");
  EXPECT_EQ(toks("x = f(a,,b)"), "s:X = f:F ( s:A , VIDE , s:B ) ;");
  EXPECT_EQ(toks("call f ,b"), "CALL s:F VIDE , s:B ;");
  EXPECT_EQ(toks("x = 'abc'(1)"), "s:X = sf:ABC ( n:1 ) ;");
  EXPECT_EQ(toks("x = f (1)"), "s:X = s:F _ ( n:1 ) ;");
}

TEST(Lex2Inserted, AbuttalAndBlanks)
{
  EXPECT_EQ(toks("say a'b'c"), "SAY s:A OP_CONC 'b' OP_CONC s:C ;");
  EXPECT_EQ(toks("say (a)b (c) (d)"),
            "SAY ( s:A ) OP_CONC s:B _ ( s:C ) OP_CONC ' ' OP_CONC ( s:D ) ;");
  EXPECT_EQ(toks("say x[1]y x[2] z"),
            "SAY s:X [ n:1 ] OP_CONC s:Y _ s:X [ n:2 ] OP_CONC ' ' OP_CONC s:Z ;");
  EXPECT_EQ(toks("say a /* c */ b"), "SAY s:A _ s:B ;");
  EXPECT_EQ(toks("say a /* c */ + b"), "SAY s:A + s:B ;");
  EXPECT_EQ(toks("say a -1"), "SAY s:A - n:1 ;");
  EXPECT_EQ(toks("say ( a ) "), "SAY ( s:A ) ;");
  EXPECT_EQ(toks("say f(a) g(b)"), "SAY f:F ( s:A ) _ f:G ( s:B ) ;");
}

TEST(Lex2Inserted, BracketsAndLabelSemicolons)
{
  EXPECT_EQ(toks("x[1:2] = 'ab'"), "s:X [ n:1 : n:2 ] = 'ab' ;");
  EXPECT_EQ(toks("say x[:2] x[2:]"),
            "SAY s:X [ : n:2 ] OP_CONC ' ' OP_CONC s:X [ n:2 : ] ;");
  EXPECT_EQ(toks("here: say 1"), "s:HERE : ; SAY n:1 ;");
  EXPECT_EQ(toks("'quoted': nop"), "'quoted' : ; NOP ;");
}

TEST(Lex2Symbols, CompoundSymbolsAreSplit)
{
  rx_prog p;
  ASSERT_EQ(toks("x = a.b..c + s.", &p), "s:X = s:A.B..C + s:S. ;");
  const rx_tok* a = p.toks[2];
  ASSERT_NE(a->tok_sym, nullptr);
  EXPECT_STREQ(a->tok_stem, "A+");
  EXPECT_EQ(a->tok_stem_len, 2);
  std::string parts;
  for (const rx_part* q = a->tok_sym; q; q = q->part_next)
    parts += "[" + std::string(q->part_text, q->part_len) + "]";
  EXPECT_EQ(parts, "[A][B][][C]");
  const rx_tok* s = p.toks[4];
  ASSERT_NE(s->tok_sym, nullptr);
  ASSERT_NE(s->tok_sym->part_next, nullptr);
  EXPECT_EQ(s->tok_sym->part_next->part_len, 0);
  EXPECT_EQ(s->tok_sym->part_next->part_next, nullptr);
  EXPECT_EQ(p.toks[0]->tok_sym, nullptr);
}

TEST(Lex2Templates, BlanksDroppedAndNoCalls)
{
  EXPECT_EQ(toks("parse arg a b . ',' c"), "PARSE ARG s:A s:B s:. ',' s:C ;");
  EXPECT_EQ(toks("pull a (b) c"), "PULL s:A ( s:B ) s:C ;");
  EXPECT_EQ(toks("parse value a'x' with b"), "PARSE VALUE s:A OP_CONC 'x' WITH s:B ;");
}

TEST(LexTrace, TraceLinesFollowTheirFormats)
{
  rx_prog p;
  rx_err e;
  std::string text = "say x";
  ASSERT_EQ(rx_lex(p, text.data(), text.size(), 0, e), 0);
  std::string tr = rx_toks_trace(p.toks, " ..... lex()");
  EXPECT_EQ(tr,
            " ..... lex()\n"
            "lex: type = SAY   value = \"say\"    len = 3     line = 0    col = 0\n"
            "lex: type = BLANK                                line = 0    col = 3\n"
            "lex: type = SYMBOL   value = \"x\"    len = 1     line = 0    col = 4\n"
            "lex: type = ;                                line = 0    col = 5\n");
}

TEST(LexTrace, EveryStepIsTracedWhenAsked)
{
  rx_prog p;
  p.lex_trace = true;
  rx_err e;
  std::string text = "say a'b'";
  ASSERT_EQ(rx_parse(p, text.data(), text.size(), e), 0);
  size_t l0 = p.lex_log.find(" ..... lex()\n");
  size_t l1 = p.lex_log.find(" ..... lex2(1)\n");
  size_t l2 = p.lex_log.find(" ..... lex2(2)\n");
  size_t l3 = p.lex_log.find(" ..... lex2(3)\n");
  ASSERT_NE(l0, std::string::npos);
  ASSERT_NE(l3, std::string::npos);
  EXPECT_LT(l0, l1);
  EXPECT_LT(l1, l2);
  EXPECT_LT(l2, l3);
  // The abuttal operator first shows after the second pass.
  EXPECT_EQ(p.lex_log.substr(l0, l2 - l0).find("OP_CONC"), std::string::npos);
  EXPECT_NE(p.lex_log.substr(l2, l3 - l2).find("OP_CONC"), std::string::npos);
  rx_prog quiet;
  ASSERT_EQ(rx_parse(quiet, text.data(), text.size(), e), 0);
  EXPECT_EQ(quiet.lex_log, "");
}

}  // namespace
