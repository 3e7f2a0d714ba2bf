// The clause walker through short programs: each case is a program text and
// the lines it must say (or the error it must end with). Cases are grouped
// by the part of the walker they exercise.
#include <gtest/gtest.h>

#include <string>

#include "rexx/rexx.h"
#include "rexx/run.h"

namespace {

std::string said;     // SAY output
std::string traced;   // trace and error output

struct outcome {
  int rc;             // the run's result
  std::string out;    // what it said
  std::string err;    // what went to the trace console
};

outcome run(const std::string& text)
{
  said.clear();
  traced.clear();
  rx_console.say = [](const char* s, size_t n) { said.append(s, n); };
  rx_console.trace = [](const char* s, size_t n) { traced.append(s, n); };
  rx_prog prog;
  rx_src src;
  src.text = text;
  src.file_name = "case.rexx";
  rx_err err;
  int e = rx_parse(prog, src.text.data(), src.text.size(), err);
  EXPECT_EQ(e, 0) << text;
  int rc = e ? e : rx_run_prog(prog, src, nullptr, 0);
  rx_console = rx_io{};
  rx_stack_clear();
  return {rc, said, traced};
}

struct prog_case {
  const char* text;  // the program
  const char* out;   // what it must say
};

void run_all(const prog_case* cases, size_t n)
{
  for (size_t i = 0; i < n; i++) {
    outcome o = run(cases[i].text);
    EXPECT_EQ(o.out, cases[i].out) << "program:\n" << cases[i].text << "\ntrace:\n" << o.err;
  }
}

TEST(ExecClauses, Loops)
{
  static const prog_case cases[] = {
    // The control variable is read back only when the body changed it.
    {"do i = 1 to 5; if i = 2 then i = 4; say i; end", "1\n4\n5\n"},
    {"do i = 1 to 3; end; say i", "4\n"},
    {"do i = 3 to 1; say 'never'; end; say i", "3\n"},
    {"do i = 5 to 1 by -2; say i; end", "5\n3\n1\n"},
    {"do i = 1 for 0; say 'never'; end; say 'done'", "done\n"},
    {"do i = 1 by 1 to 2 for 5; say i; end", "1\n2\n"},
    {"n = 0; do until n = 3; n = n + 1; end; say n", "3\n"},
    {"n = 5; do while n < 3; n = n + 1; end; say n", "5\n"},
    {"n = 5; do until 1; n = n + 1; end; say n", "6\n"},
    // LEAVE and ITERATE by name pass through inner loops.
    {"do a = 1 to 3; do b = 1 to 3; if b = 2 then leave a; say a b; end; end", "1 1\n"},
    {"do a = 1 to 2; do b = 1 to 3; if b = 2 then iterate a; say a b; end; end", "1 1\n2 1\n"},
    {"do 2; do i = 1 to 5; if i > 1 then leave; say i; end; end", "1\n1\n"},
    {"do w in '  x  y '; say '['w']'; end", "[x]\n[y]\n"},
    {"n = 0; do forever; n = n + 1; if n = 3 then leave; end; say n", "3\n"},
  };
  run_all(cases, sizeof cases / sizeof cases[0]);
}

TEST(ExecClauses, SelectAndIf)
{
  static const prog_case cases[] = {
    {"x = 2; select; when x = 1 then say 'one'; when x = 2 then say 'two'; when x = 2 then say 'again'; end",
     "two\n"},
    {"select; when 0 then nop; otherwise say 'other'; say 'more'; end", "other\nmore\n"},
    {"if 1 then if 0 then say 'a'; else say 'b'; else say 'c'", "b\n"},
    {"if 1.0 then say 'one point zero is true'", "one point zero is true\n"},
    {"numeric digits 3; if 1.0001 then say 'rounded to 1'", "rounded to 1\n"},
  };
  run_all(cases, sizeof cases / sizeof cases[0]);
}

TEST(ExecClauses, CallsAndLevels)
{
  static const prog_case cases[] = {
    // NUMERIC, TRACE and condition settings come back after a routine.
    {"call r; say digits() trace()\nexit\nr: numeric digits 4; trace r; return", "9 E\n"},
    {"signal on novalue\ncall r\nsay 'after'\nexit\nr: signal off novalue; return\nnovalue: say 'trap'",
     "after\n"},
    // RETURN inside a loop inside a routine leaves the routine.
    {"say f()\nexit\nf: do i = 1; if i = 3 then return i * 10; end", "30\n"},
    // EXIT deep inside a function call ends the run.
    {"say 1 + f()\nsay 'not reached'\nexit\nf: exit 9", ""},
    {"call r 'a', 'b'\nsay result\nexit\nr: return arg(2) || arg(1) || arg()", "ba2\n"},
    {"x = 1; call r; say x y\nexit\nr: procedure expose y; x = 2; y = 3; return", "1 3\n"},
    {"l = 'p q'; p = 1; q = 2; call r; say p q\nexit\nr: procedure expose (l); p = 10; q = 20; return",
     "10 20\n"},
    {"procedure\nx = 1; say x", "1\n"},
    {"say ismain() f()\nexit\nf: return ismain()", "1 0\n"},
    // A quoted name skips the labels and goes to the built-ins.
    {"call 'LENGTH' 'abc'\nsay result\nexit\nLENGTH: return 'label'", "3\n"},
    {"call r\nsay symbol('RESULT')\nexit\nr: return", "LIT\n"},
  };
  run_all(cases, sizeof cases / sizeof cases[0]);
}

TEST(ExecClauses, SignalAndConditions)
{
  static const prog_case cases[] = {
    // A label nested two levels down: the rest of each block runs once.
    {"signal in\ndo 2\n  if 1 then do\n    say 'x'\nin: say 'in'\n  end\n  say 'tail'\nend\nsay 'out'",
     "in\ntail\nout\n"},
    {"signal value 'L' || 2\nL1: say 1\nL2: say 2", "2\n"},
    {"say condition('C') '|'", " |\n"},
    {"signal on syntax name bad\nx = 'a' * 1\nbad: say condition('C') condition('I') rc", "SYNTAX SIGNAL 41\n"},
    {"call on novalue name nv\nx = y\nsay 'x is' x\nexit\nnv: say 'novalue' condition('D'); return",
     "novalue Y\nx is Y\n"},
    // Only names that are not numbers raise NOVALUE.
    {"signal on novalue\na.1 = 5; say a.1 a.2\nnovalue: say 'trap' condition('D')", "trap A.2\n"},
    {"signal on syntax\ncall r\nexit\nr: x = 1 / 0\nsyntax: say 'trapped in routine' rc", "trapped in routine 51\n"},
  };
  run_all(cases, sizeof cases / sizeof cases[0]);
}

TEST(ExecClauses, VariablesAndValues)
{
  static const prog_case cases[] = {
    {"x = 'ab'; upper x; say x; lower x; say x", "AB\nab\n"},
    {"a.1 = 'q'; upper a.1; say a.1", "Q\n"},
    {"l = 'x y'; x = 1; y = 2; drop (l); say x y l", "X Y x y\n"},
    {"a. = 0; a.1 = 1; drop a.; say a.1 a.", "A.1 A.\n"},
    {"say value('z', 'new') z", "Z new\n"},
    {"x = 5; say symbol('x') symbol('nope') symbol('1a')", "VAR LIT LIT\n"},
    {"x = 1.50; say x (x + 0)", "1.5 1.5\n"},
    {"x = '1.50'; say x (x + 0)", "1.50 1.5\n"},
    {"say 1 | nonexistent_is_not_read", "1\n"},
    {"signal on novalue; say 0 & also_not_read\nexit\nnovalue: say 'read'", "0\n"},
    {"signal on novalue; say nv | 1\nexit\nnovalue: say 'read'", "read\n"},
    {"interpret 'a = 1'; interpret 'say a + 1'", "2\n"},
    {"say f(3)\nexit\nf: interpret 'return arg(1) * 2'", "6\n"},
  };
  run_all(cases, sizeof cases / sizeof cases[0]);
}

TEST(ExecClauses, ErrorReports)
{
  outcome o = run("x = 1\nsay x / 0\n");
  EXPECT_EQ(o.rc, 51);
  EXPECT_EQ(o.out, "");
  EXPECT_EQ(o.err,
            "    2 +++ say x / 0\n"
            "              ^\n"
            "Error 51 on line 2 in file \"case.rexx\": Zero divide.\n"
            "molba: String \"0\" is invalid.\n");
  o = run("interpret 'say 1; x = 1 + ''a'''");
  EXPECT_EQ(o.rc, 41);
  EXPECT_EQ(o.out, "1\n");
  EXPECT_NE(o.err.find("    *interpreted* say 1; x = 1 + 'a'\n"), std::string::npos) << o.err;
  EXPECT_NE(o.err.find("Error 41: Bad arithmetic conversion.\n"), std::string::npos) << o.err;
  o = run("do i = 1 to 3\n  iterate j\nend\n");
  EXPECT_EQ(o.rc, 28);
  o = run("signal on syntax name gone\nx = 1 / 0\n");
  EXPECT_EQ(o.rc, 16);
  EXPECT_NE(o.err.find("\"GONE\" is missing."), std::string::npos) << o.err;
  o = run("signal on novalue name gone\nsay y\n");
  EXPECT_EQ(o.rc, 71);
  o = run("x = 'abc'\nx[3:2] = 'z'\n");
  EXPECT_EQ(o.rc, 78);
  o = run("numeric fuzz 9\n");
  EXPECT_EQ(o.rc, 26);
  o = run("numeric form value 'odd'\n");
  EXPECT_EQ(o.rc, 25);
  o = run("trace z\n");
  EXPECT_EQ(o.rc, 24);
}

TEST(ExecClauses, TemplateErrors)
{
  struct bad {
    const char* text;  // the program
    int rc;            // the error it must end with
  };
  static const bad cases[] = {
    {"parse value 'abc' with a + b", 38},
    {"parse value 'abc' with a - 'x' b", 38},
    {"parse value 'abc' with a 1.5 b", 38},
    {"parse value 'abc' with a ( b", 46},
    {"parse value 'abc' with a (b c", 46},
    {"n = -1; parse value 'abc' with a +(n) b", 26},
    {"n = 1.5; parse value 'abc' with a =(n) b", 26},
    {"parse value 'abc' with a, b", 38},
  };
  for (const bad& c : cases) EXPECT_EQ(run(c.text).rc, c.rc) << c.text;
  // The same patterns written well.
  EXPECT_EQ(run("n = 2; parse value 'abcd' with a +(n) b =(n) c; say a b c").out, "ab cd bcd\n");
}

TEST(ExecClauses, TraceLines)
{
  outcome o = run("trace i\nx = 'a' || 1\n");
  EXPECT_EQ(o.err,
            "  2 *-* x = 'a' || 1\n"
            "    >O> \"a\" fx_conc \"1\" --> \"a1\"\n"
            "    >>> X <-- \"a1\"\n");
  o = run("trace r\nparse value 'p q' with . b\n");
  EXPECT_EQ(o.err,
            "  2 *-* parse value 'p q' with . b\n"
            "    >>> \"p q\"\n"
            "    >.> . <-- \"p\"\n"
            "    >>> B <-- \"q\"\n");
  o = run("trace -1\ntrace r\nsay 1\n");
  EXPECT_EQ(o.err, "    >>> \"1\"\n");
}

}  // namespace
