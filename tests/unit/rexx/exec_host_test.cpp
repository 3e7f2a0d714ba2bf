// The walker's contacts with its host: the event poll every 20 clauses
// (also for loops whose body runs nothing), console lines for PULL and
// LINEIN, the environment table, and commands with their RC and conditions.
#include <gtest/gtest.h>

#include <deque>
#include <string>

#include "rexx/rexx.h"
#include "rexx/run.h"

namespace {

std::string said;
int polls = 0;
std::deque<std::string> console_lines;
std::vector<std::string> sent;  // commands that reached the test environment

void capture(const char* s, size_t n) { said.append(s, n); }
void count_poll() { polls++; }
bool read_line(std::string& out)
{
  if (console_lines.empty()) return false;
  out = console_lines.front();
  console_lines.pop_front();
  return true;
}
// The TEST environment: records the command; its RC is the number it starts with.
int test_env(const char* cmd, size_t len, void*, bool* stop)
{
  sent.emplace_back(cmd, len);
  if (sent.back() == "stop") *stop = true;
  return std::atoi(sent.back().c_str());
}

int run(const std::string& text)
{
  rx_prog prog;
  rx_src src;
  src.text = text;
  src.file_name = "host.rexx";
  rx_err err;
  EXPECT_EQ(rx_parse(prog, src.text.data(), src.text.size(), err), 0);
  return rx_run_prog(prog, src, nullptr, 0);
}

struct ExecHost : ::testing::Test {
  void SetUp() override
  {
    said.clear();
    sent.clear();
    polls = 0;
    rx_console.say = capture;
    rx_console.read_line = read_line;
    rx_console.trace = [](const char*, size_t) {};
  }
  void TearDown() override
  {
    rx_console = rx_io{};
    rx_poll_hook = nullptr;
    rx_env_register("TEST", nullptr, nullptr, false);
    rx_stack_clear();
    console_lines.clear();
  }
};

TEST_F(ExecHost, PollRunsEveryTwentyClausesAndInEmptyLoops)
{
  rx_poll_hook = count_poll;
  run("do 200; end");
  EXPECT_GE(polls, 10);
  polls = 0;
  run("x = 1");
  EXPECT_EQ(polls, 0);
}

int halt_after = 0;  // polls until the halt request
void halt_poll()
{
  if (++polls == halt_after) rx_request_halt();
}

TEST_F(ExecHost, HaltStopsALoopOrRaisesTheCondition)
{
  rx_poll_hook = halt_poll;
  halt_after = 3;
  EXPECT_EQ(run("do forever; end"), 4);
  polls = 0;
  EXPECT_EQ(run("signal on halt\ndo i = 1; end\nhalt: say 'halted' condition('C') (i > 40)"), 0);
  EXPECT_EQ(said, "halted HALT 1\n");
  said.clear();
  polls = 0;
  EXPECT_EQ(run("call on halt\ndo i = 1 until done = 1; end\nsay 'resumed'\nexit\nhalt: done = 1; return"), 0);
  EXPECT_EQ(said, "resumed\n");
}

TEST_F(ExecHost, PullTakesTheStackFirstThenTheConsole)
{
  console_lines = {"typed line", "second"};
  run("push 'stacked'; pull a; pull b; parse linein c; say a '|' b '|' c '|' queued()");
  EXPECT_EQ(said, "STACKED | TYPED LINE | second | 0\n");
  EXPECT_TRUE(console_lines.empty());
}

TEST_F(ExecHost, StackOrder)
{
  rx_stack_queue("q1");
  rx_stack_push("p1");
  rx_stack_queue("q2");
  EXPECT_EQ(rx_stack_count(), 3u);
  std::string s;
  ASSERT_TRUE(rx_stack_pull(s));
  EXPECT_EQ(s, "p1");
  ASSERT_TRUE(rx_stack_pull(s));
  EXPECT_EQ(s, "q1");
  ASSERT_TRUE(rx_stack_pull(s));
  EXPECT_EQ(s, "q2");
  EXPECT_FALSE(rx_stack_pull(s));
}

TEST_F(ExecHost, RegisteredEnvironmentBecomesCurrentAndGetsCommands)
{
  rx_env_register("test", test_env, nullptr, true);
  run("say address(); 'hello'; '3 bad'; say rc; address unix; say address(); address; say address()");
  EXPECT_EQ(said, "TEST\n3\nUNIX\nTEST\n");
  ASSERT_EQ(sent.size(), 2u);
  EXPECT_EQ(sent[0], "hello");
  EXPECT_EQ(sent[1], "3 bad");
  rx_env_register("TEST", nullptr, nullptr, false);
  said.clear();
  run("say address()");
  EXPECT_EQ(said, "WINDOWS\n");
}

TEST_F(ExecHost, CommandConditions)
{
  rx_env_register("TEST", test_env, nullptr, true);
  run("signal on failure\n'-2 broken'\nsay 'not reached'\nfailure: say 'failure' rc condition('D')\n");
  EXPECT_EQ(said, "failure -2 -2 broken\n");
  said.clear();
  run("call on error\n'5 first'\n'0 fine'\nsay 'done'\nexit\nerror: say 'error' rc; return\n");
  EXPECT_EQ(said, "error 5\ndone\n");
  said.clear();
  run("signal on error\n'-1 negative'\nsay 'nothing'\nexit\nerror: say 'error for a negative rc'\n");
  EXPECT_EQ(said, "error for a negative rc\n");
}

TEST_F(ExecHost, HandlerCanStopTheMacro)
{
  rx_env_register("TEST", test_env, nullptr, true);
  EXPECT_EQ(run("'stop'\nsay 'after'"), 0);
  EXPECT_EQ(said, "");
}

TEST_F(ExecHost, InhibitedCommandsAreNotSent)
{
  rx_env_register("TEST", test_env, nullptr, true);
  run("trace !c\n'7 inhibited'\nsay rc\ntrace !\n'8 sent'\nsay rc");
  ASSERT_EQ(sent.size(), 1u);
  EXPECT_EQ(sent[0], "8 sent");
  EXPECT_EQ(said, "0\n8\n");
}

}  // namespace
