// The queues the printer box offers: the names the printing system lists,
// its default destination or else the environment's printer, a printing
// system that is down, and none installed. A stand-in lpstat first on PATH
// answers each option from a file of the test's.
#include "platform/platform.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <sys/stat.h>

namespace {

class PrintQueues : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string tmpl = ::testing::TempDir() + "queues.XXXXXX";
    ASSERT_NE(mkdtemp(tmpl.data()), nullptr);
    dir = tmpl;
    for (const char *v : {"PATH", "PRINTER", "LPDEST"}) {
      const char *now = getenv(v);
      saved.push_back(now ? std::optional<std::string>(now) : std::nullopt);
    }
    setenv("PATH", dir.c_str(), 1);
    unsetenv("PRINTER");
    unsetenv("LPDEST");
  }
  void TearDown() override {
    const char *vars[] = {"PATH", "PRINTER", "LPDEST"};
    for (size_t i = 0; i < saved.size(); i++) {
      if (saved[i])
        setenv(vars[i], saved[i]->c_str(), 1);
      else
        unsetenv(vars[i]);
    }
    pl_remove_tree(dir);
  }
  // An lpstat that prints the text given for its option and ends with the
  // status given (only shell built-ins: PATH holds nothing else).
  void lpstat(const std::string &list, const std::string &default_line, int status = 0) {
    std::ofstream(dir + "/out-e") << list;
    std::ofstream(dir + "/out-d") << default_line;
    std::ofstream(dir + "/lpstat") << "#!/bin/sh\nwhile IFS= read -r l || [ -n \"$l\" ]; do\n"
                                      "  printf '%s\\n' \"$l\"\ndone < \"${0%/*}/out$1\"\nexit "
                                   << status << "\n";
    chmod((dir + "/lpstat").c_str(), 0755);
  }
  std::string dir;
  std::vector<std::optional<std::string>> saved;
  std::vector<std::string> names;
  std::string dflt;
};

TEST_F(PrintQueues, NamesOneALineAndTheDefaultAPrintWouldTake) {
  lpstat("hall\n\n  lab-colour \r\nroom-101", "system default destination: lab-colour\n");
  ASSERT_EQ(pl_print_queues(names, dflt), 0);
  EXPECT_EQ(names, (std::vector<std::string>{"hall", "lab-colour", "room-101"}));
  EXPECT_EQ(dflt, "lab-colour");
  // The environment's printer comes first, as it does for a print itself.
  setenv("PRINTER", "hall", 1);
  ASSERT_EQ(pl_print_queues(names, dflt), 0);
  EXPECT_EQ(dflt, "hall");
}

TEST_F(PrintQueues, WithNoSystemDefaultPrinterThenLpdest) {
  lpstat("hall\nlab\n", "no system default destination\n");
  setenv("LPDEST", "lab", 1);
  ASSERT_EQ(pl_print_queues(names, dflt), 0);
  EXPECT_EQ(dflt, "lab");
  setenv("PRINTER", "hall", 1);
  ASSERT_EQ(pl_print_queues(names, dflt), 0);
  EXPECT_EQ(dflt, "hall");
  unsetenv("PRINTER");
  unsetenv("LPDEST");
  ASSERT_EQ(pl_print_queues(names, dflt), 0);
  EXPECT_EQ(dflt, "");
  EXPECT_EQ(names.size(), 2u);
}

TEST_F(PrintQueues, APrintingSystemThatFailsHasNoQueues) {
  lpstat("half a name", "", 1);
  names = {"left over"};
  EXPECT_EQ(pl_print_queues(names, dflt), 0);
  EXPECT_TRUE(names.empty());
}

TEST_F(PrintQueues, NoPrintingSystemInstalled) {
  names = {"left over"};
  setenv("PRINTER", "hall", 1);
  EXPECT_EQ(pl_print_queues(names, dflt), -ENOENT);
  EXPECT_TRUE(names.empty());
}

}  // namespace
