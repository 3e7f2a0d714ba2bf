// run_rx and nested runs: a host command that starts another run while one
// is active must get a clean interpreter state, and the outer run must find
// its own state (variables, NUMERIC, trace, conditions, stack) as it left it.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "rexx/rexx.h"
#include "rexx/run.h"

namespace {

std::string said;  // SAY output of the runs under test

void capture(const char* s, size_t n) { said.append(s, n); }

struct ran {
  int rc;             // the run's numeric result
  std::string out;    // what it said
  rx_result result;   // its text result
};

// Parses and runs a program text with the given arguments.
ran run_text(const std::string& text, std::vector<std::string> args = {})
{
  rx_prog prog;
  rx_src src;
  src.text = text;
  src.file_name = "test.rexx";
  rx_err err;
  EXPECT_EQ(rx_parse(prog, src.text.data(), src.text.size(), err), 0) << err.err_msg;
  std::vector<rx_arg> list;
  for (const std::string& a : args) list.push_back({a.data(), a.size()});
  std::string before;
  before.swap(said);
  ran r;
  r.rc = rx_run_prog(prog, src, list.data(), (int)list.size(), &r.result);
  r.out = said;
  said = before + said;
  return r;
}

// The handler of the NEST environment: the command is a program text that
// runs as a nested run; its result is the command's RC.
int nest_handler(const char* cmd, size_t len, void*, bool*)
{
  ran r = run_text(std::string(cmd, len));
  return r.rc;
}

struct RunNested : ::testing::Test {
  void SetUp() override
  {
    said.clear();
    rx_console.say = capture;
    rx_env_register("NEST", nest_handler, nullptr, false);
  }
  void TearDown() override
  {
    rx_console.say = nullptr;
    rx_env_register("NEST", nullptr, nullptr, false);
    rx_stack_clear();
  }
};

TEST_F(RunNested, ResultsOfARun)
{
  EXPECT_EQ(run_text("exit 42").rc, 42);
  EXPECT_EQ(run_text("say 'x'").rc, 0);
  ran s = run_text("exit 'ab'");
  EXPECT_TRUE(s.result.has_text);
  EXPECT_EQ(s.result.text, "ab");
  EXPECT_EQ(s.rc, 'a' | 'b' << 8 | ' ' << 16 | ' ' << 24);
  EXPECT_EQ(run_text("return 7").rc, 7);
  EXPECT_EQ(run_text("say 1/0").rc, 51);
  ran a = run_text("parse arg x, y; say y x; exit arg()", {"one", "two"});
  EXPECT_EQ(a.out, "two one\n");
  EXPECT_EQ(a.rc, 2);
}

TEST_F(RunNested, InnerRunSeesNoOuterState)
{
  ran r = run_text(
      "x = 'outer'; numeric digits 5; signal on novalue\n"
      "address nest \"say symbol('X') digits(); numeric digits 12; x = 'inner'; exit 3\"\n"
      "say rc x digits() 2/3\n"
      "exit\n"
      "novalue: say 'novalue trap lost'\n");
  EXPECT_EQ(r.rc, 0);
  EXPECT_EQ(r.out, "LIT 9\n3 outer 5 0.66667\n");
}

TEST_F(RunNested, OuterConditionsAndTraceSurvive)
{
  ran r = run_text(
      "signal on syntax\n"
      "address nest \"signal off syntax; trace r; exit 0\"\n"
      "say trace()\n"
      "x = 1 / 0\n"
      "say 'not reached'\n"
      "syntax: say 'trapped' rc\n");
  EXPECT_EQ(r.out, "E\ntrapped 51\n");
}

TEST_F(RunNested, ErrorInInnerRunReturnsItsNumberOnly)
{
  ran r = run_text("address nest 'say 1 + ''a'''\nsay 'outer goes on, rc' rc\n");
  EXPECT_EQ(r.rc, 0);
  EXPECT_EQ(r.out, "outer goes on, rc 41\n");
}

TEST_F(RunNested, StackIsSharedBetweenRuns)
{
  ran r = run_text("queue 'from outer'\naddress nest \"pull l; push 'from inner'; exit length(l)\"\n"
                   "parse pull back; say rc back\n");
  EXPECT_EQ(r.out, "10 from inner\n");
}

// A program that runs itself through a command, one level deeper each time,
// and adds its own argument to what the inner level gave: each level's
// variable x must still be its own when the inner run has ended.
const char* const summing =
    "parse arg n; x = n; if n = 0 then exit 0\n"
    "address deep n - 1\n"
    "exit rc + x\n";

int deep_handler(const char* cmd, size_t len, void*, bool*)
{
  return run_text(summing, {std::string(cmd, len)}).rc;
}

TEST_F(RunNested, RunsNestManyLevels)
{
  rx_env_register("DEEP", deep_handler, nullptr, false);
  EXPECT_EQ(run_text(summing, {"30"}).rc, 30 * 31 / 2);
  ran r = run_text("x = 'keep'\naddress nest 'y = 1; address nest ''exit 6''; exit rc + 1'\nsay rc x\n");
  EXPECT_EQ(r.out, "7 keep\n");
  rx_env_register("DEEP", nullptr, nullptr, false);
}

TEST_F(RunNested, RunRxReadsAFile)
{
  std::string path = ::testing::TempDir() + "/run_nested_prog.rexx";
  {
    std::ofstream f(path);
    f << "parse arg a\nsay 'got' a\nexit 5\n";
  }
  rx_result res;
  int rc = run_rx(path + " hello there", nullptr, 0, ::testing::TempDir(), &res);
  EXPECT_EQ(rc, 5);
  EXPECT_EQ(said, "got hello there\n");
  EXPECT_EQ(run_rx(::testing::TempDir() + "/no_such_program.rexx", nullptr, 0, ::testing::TempDir()), -1);
  std::remove(path.c_str());
}

TEST_F(RunNested, ArgumentsFromTheEnvironment)
{
  rx_prog prog;
  rx_src src;
  src.text = "say arg() '[' || arg(1) || '][' || arg(2) || '][' || arg(3) || ']'";
  rx_err err;
  ASSERT_EQ(rx_parse(prog, src.text.data(), src.text.size(), err), 0);
  setenv("molba_NB_ARGS", "3", 1);
  setenv("molba_ARG0", "41620a", 1);  // "Ab" and a newline
  setenv("molba_ARG1", "", 1);
  unsetenv("molba_ARG2");
  EXPECT_EQ(rx_run_main(prog, src, "ignored", true), 0);
  EXPECT_EQ(std::getenv("molba_NB_ARGS"), nullptr);
  EXPECT_EQ(said, "3 [Ab\n][][]\n");
  said.clear();
  rx_run_main(prog, src, "plain words", true);
  EXPECT_EQ(said, "1 [plain words][][]\n");
  unsetenv("molba_ARG0");
  unsetenv("molba_ARG1");
}

TEST_F(RunNested, ExternalRoutinesAlongPath)
{
  std::string dir = ::testing::TempDir();
  std::string path = dir + "/pathfn.mlbx";
  {
    std::ofstream f(path);
    f << "parse arg a, b\nx = 'inner'\nreturn a + b\n";
  }
  std::string old = std::getenv("PATH") ? std::getenv("PATH") : "";
  setenv("PATH", (dir + ":" + old).c_str(), 1);
  // Merged into the program, the file runs as an internal routine and sets
  // the caller's x; under NOLOAD it runs apart and x stays the caller's.
  ran merged = run_text("x = 'outer'\nsay pathfn(3, 4) x\ncall pathfn 1, 1\nsay result\n");
  ran apart = run_text("option noload\nx = 'outer'\nsay pathfn(3, 4) x\n");
  setenv("PATH", old.c_str(), 1);
  std::remove(path.c_str());
  EXPECT_EQ(merged.rc, 0);
  EXPECT_EQ(merged.out, "7 inner\n2\n");
  EXPECT_EQ(apart.rc, 0);
  EXPECT_EQ(apart.out, "7 outer\n");
}

}  // namespace
