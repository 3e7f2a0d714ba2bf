// Reading a program: the prelude in front, its line count in reports, and
// the search for the program file.
#include "rexx/rexx.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

void put(const fs::path& p, const std::string& text)
{
  std::ofstream f(p, std::ios::binary);
  f << text;
}

// A scratch folder with its own HOME and installation folder.
class PreludeTest : public ::testing::Test {
protected:
  fs::path dir, home, inst;
  std::string old_home;
  bool had_home = false;

  void SetUp() override
  {
    char tmpl[] = "/tmp/rx-prelude-XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    dir = tmpl;
    home = dir / "home";
    inst = dir / "inst";
    fs::create_directories(home);
    fs::create_directories(inst);
    if (const char* h = std::getenv("HOME")) {
      had_home = true;
      old_home = h;
    }
    setenv("HOME", home.c_str(), 1);
  }
  void TearDown() override
  {
    if (had_home) setenv("HOME", old_home.c_str(), 1);
    else unsetenv("HOME");
    fs::remove_all(dir);
  }

  // Reads and parses; gives the report, or "" when it parses.
  std::string report(const fs::path& prog, rx_src& src, std::string& msgs)
  {
    if (rx_read_program(prog.string(), inst.string(), src, msgs)) return "read failed";
    rx_prog p;
    rx_err e;
    if (!rx_parse(p, src.text.data(), src.text.size(), e)) return "";
    return rx_error_report(src, e);
  }
};

TEST_F(PreludeTest, PreludeLinesShiftReportedNumbers)
{
  put(home / ".molbarc", "x = 1\ny = 2");  // no final newline: one is supplied
  put(dir / "p.rexx", "say 1\ndo\n");
  rx_src src;
  std::string msgs;
  std::string r = report(dir / "p.rexx", src, msgs);
  EXPECT_EQ(src.prelude_lines, 2);
  EXPECT_EQ(src.text, "x = 1\ny = 2\nsay 1\ndo\n");
  EXPECT_EQ(msgs, "");
  std::string name = (dir / "p.rexx").string();
  EXPECT_EQ(r, "    2 +++ do\n"
               "          ^\n"
               "Error 64 on line 2 in file \"" + name + "\": Incomplete DO.\n");
}

TEST_F(PreludeTest, ErrorInsideThePrelude)
{
  put(home / ".molbarc", "nop\nsay 'open\n");
  put(dir / "p.rexx", "say 1\n");
  rx_src src;
  std::string msgs;
  std::string r = report(dir / "p.rexx", src, msgs);
  std::string name = (dir / "p.rexx").string();
  EXPECT_EQ(r, "    2 (.molbarc) +++ say 'open\n"
               "                         ^\n"
               "Error 1 on line 2 in file \"" + name +
               "\" (while processing \".molbarc\"): Unmatched Quote.\n");
}

TEST_F(PreludeTest, InstalledPreludeAndTinyFiles)
{
  put(home / ".molbarc", "\n");  // under 2 bytes: absent
  put(inst / "vorta.molbarc", "option mixed\n");
  put(dir / "p.rexx", "Abc = 1\n");
  rx_src src;
  std::string msgs;
  ASSERT_EQ(rx_read_program((dir / "p.rexx").string(), inst.string(), src, msgs), 0);
  EXPECT_EQ(src.prelude_lines, 1);
  rx_prog p;
  rx_err e;
  ASSERT_EQ(rx_parse(p, src.text.data(), src.text.size(), e), 0);
  EXPECT_EQ(rx_tree_text(p.block_head), "assign Abc = 1\n");
}

TEST_F(PreludeTest, CompiledProgramsTakeNoPrelude)
{
  put(home / ".molbarc", "say 'prelude'\n");
  put(dir / "c.mlbx", "#!molba\n@ccsr 1\n");
  rx_src src;
  std::string msgs;
  ASSERT_EQ(rx_read_program((dir / "c.mlbx").string(), inst.string(), src, msgs), 0);
  EXPECT_EQ(src.prelude_lines, 0);
  EXPECT_EQ(src.text, "#!molba\n@ccsr 1\n");
}

TEST_F(PreludeTest, UnreadableFilesAreReported)
{
  rx_src src;
  std::string msgs;
  std::string missing = (dir / "none.rexx").string();
  EXPECT_EQ(rx_read_program(missing, inst.string(), src, msgs), 1);
  EXPECT_EQ(msgs, "molba: unable to open file " + missing + "\n");
}

TEST_F(PreludeTest, UnreadablePreludeIsReportedAndSkipped)
{
  if (geteuid() == 0) GTEST_SKIP() << "root can read a file without read permission";
  put(home / ".molbarc", "say 1\n");
  fs::permissions(home / ".molbarc", fs::perms::none);
  put(dir / "p.rexx", "say 2\n");
  rx_src src;
  std::string msgs;
  ASSERT_EQ(rx_read_program((dir / "p.rexx").string(), inst.string(), src, msgs), 0);
  EXPECT_EQ(msgs, "molba: unable to open file " + (home / ".molbarc").string() + "\n");
  EXPECT_EQ(src.text, "say 2\n");
}

TEST_F(PreludeTest, InstallationFolderIsRequired)
{
  put(dir / "p.rexx", "say 2\n");
  std::string old;
  const char* h = std::getenv("REXXHOME");
  if (h) old = h;
  unsetenv("REXXHOME");
  rx_src src;
  std::string msgs;
  EXPECT_EQ(rx_read_program((dir / "p.rexx").string(), "", src, msgs), 1);
  EXPECT_EQ(msgs, "run_rx: you must pass the installation directoryor set up a REXXHOME "
                  "environmentvariable pointing to that directory.\n");
  setenv("REXXHOME", inst.c_str(), 1);
  msgs.clear();
  EXPECT_EQ(rx_read_program((dir / "p.rexx").string(), "", src, msgs), 0);
  if (h) setenv("REXXHOME", old.c_str(), 1);
  else unsetenv("REXXHOME");
}

TEST_F(PreludeTest, ProgramSearch)
{
  fs::create_directories(dir / "a");
  fs::create_directories(dir / "b");
  put(dir / "b" / "tool.rexx", "nop\n");
  put(dir / "a" / "other.rexx", "nop\n");
  std::string xpath = "relative:" + (dir / "a").string() + ":" + (dir / "b").string();
  EXPECT_EQ(rx_find_program("tool.rexx", xpath), (dir / "b" / "tool.rexx").string());
  EXPECT_EQ(rx_find_program("nowhere.rexx", xpath), "nowhere.rexx");
  EXPECT_EQ(rx_find_program("./tool.rexx", xpath), "./tool.rexx");
  fs::path cwd = fs::current_path();
  fs::current_path(dir / "a");
  EXPECT_EQ(rx_find_program("other.rexx", (dir / "b").string()), "other.rexx");
  fs::current_path(cwd);
}

}  // namespace
