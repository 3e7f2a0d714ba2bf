// The window memory in the settings store and the reading of menu files:
// plain files, no window needed.
#include "fields/fields.h"
#include "fields/plat_qt/plat_qt.h"
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class TempDir : public ::testing::Test {
 protected:
  std::string dir;
  std::string oldcfg;
  void SetUp() override {
    char t[] = "/tmp/xedmemXXXXXX";
    dir = mkdtemp(t);
    const char *c = getenv("XDG_CONFIG_HOME");
    oldcfg = c ? c : "";
    setenv("XDG_CONFIG_HOME", dir.c_str(), 1);
  }
  void TearDown() override {
    if (oldcfg.empty()) unsetenv("XDG_CONFIG_HOME");
    else setenv("XDG_CONFIG_HOME", oldcfg.c_str(), 1);
    std::string cmd = "rm -rf '" + dir + "'";
    (void)!system(cmd.c_str());
  }
  std::string write(const std::string &name, const std::string &text) {
    std::string p = dir + "/" + name;
    std::ofstream(p) << text;
    return p;
  }
};

using Memory = TempDir;

TEST_F(Memory, WrittenValuesComeBackForTheScreenAndAsFallback) {
  qw_memory m;
  m.has_pos = true;
  m.left = 120;
  m.top = 40;
  m.cols = 100;
  m.lines = 30;
  m.font = "DejaVu Sans Mono%Regular%10%20";
  ASSERT_TRUE(qw_memwrite(1920, 1080, m));
  qw_memory r = qw_memread(1920, 1080);
  EXPECT_TRUE(r.has_pos);
  EXPECT_EQ(r.left, 120);
  EXPECT_EQ(r.top, 40);
  EXPECT_EQ(r.cols, 100);
  EXPECT_EQ(r.lines, 30);
  EXPECT_EQ(r.font, m.font);
  // A screen size never seen gets the fallback key.
  qw_memory other = qw_memread(800, 600);
  EXPECT_EQ(other.cols, 100);
  // The screen's own key wins over the fallback.
  m.cols = 50;
  ASSERT_TRUE(qw_memwrite(1024, 768, m));
  EXPECT_EQ(qw_memread(1024, 768).cols, 50);
  EXPECT_EQ(qw_memread(1920, 1080).cols, 100);
}

TEST_F(Memory, CorruptKeysGiveNothingAndNeverFail) {
  std::string keydir = qw_memdir();
  std::string cmd = "mkdir -p '" + keydir + "'";
  ASSERT_EQ(system(cmd.c_str()), 0);
  std::ofstream(keydir + "/640x480") << "Wp=12\nWw=abc\nWh=-4\nWt=%%%%%\n\x01\x02garbage\nWw=99999999999\n";
  qw_memory r = qw_memread(640, 480);
  EXPECT_FALSE(r.has_pos);
  EXPECT_EQ(r.cols, 0);
  EXPECT_EQ(r.lines, 0);
  EXPECT_TRUE(r.font.empty());
  // A key that is a folder cannot be read either.
  mkdir((keydir + "/0x0").c_str(), 0700);
  EXPECT_EQ(qw_memread(1, 1).cols, 0);
}

TEST(MemoryClamp, OffScreenPositionsComeBackTenPixelsIn) {
  qw_memory m;
  m.has_pos = true;
  m.left = 5000;
  m.top = 3000;
  m.lines = 2;
  m.cols = 10;
  qw_memclamp(m, 1920, 1080, 400, 300);
  EXPECT_EQ(m.left, 1910);
  EXPECT_EQ(m.top, 1070);
  EXPECT_EQ(m.lines, 6);
  EXPECT_EQ(m.cols, 38);
  m.left = -900;
  m.top = -5;
  qw_memclamp(m, 1920, 1080, 400, 300);
  EXPECT_EQ(m.left, 0);
  EXPECT_EQ(m.top, 0);
}

TEST(FontNames, PartsDefaultsAndErrors) {
  qw_fontname f;
  ASSERT_TRUE(qw_fontparse("Courier New%*%11%23", f));
  EXPECT_EQ(f.face, "Courier New");
  EXPECT_EQ(f.style, "*");
  EXPECT_EQ(f.width, 11);
  EXPECT_EQ(f.height, 23);
  ASSERT_TRUE(qw_fontparse("Mono", f));
  EXPECT_EQ(f.style, "Regular");
  EXPECT_EQ(f.width, 9);
  EXPECT_EQ(f.height, 15);
  EXPECT_EQ(qw_fontformat(f), "Mono%Regular%9%15");
  EXPECT_FALSE(qw_fontparse("a%b%x%12", f));
  EXPECT_FALSE(qw_fontparse("a%b%12%0", f));
  EXPECT_FALSE(qw_fontparse("a%b%1%2%3", f));
}

using Menus = TempDir;

TEST_F(Menus, TitlesCommandsSubmenusAndComments) {
  std::string p = write("m", "# top\n\"Open a file\"   XEDit x  \nEdit MENU\n  # inside\n"
                             "  Undo UNDo\n  More MENU\n    Deep TOP\n  END MENU\nEND MENU\n\n"
                             "Last\tBottom\n");
  std::vector<std::string> errors;
  auto m = fs_menuread(p, "", errors);
  ASSERT_TRUE(m);
  EXPECT_TRUE(errors.empty());
  ASSERT_EQ(m->items.size(), 3u);
  EXPECT_EQ(m->items[0].title, "Open a file");
  EXPECT_EQ(m->items[0].command, "XEDit x");
  ASSERT_TRUE(m->items[1].sub);
  ASSERT_EQ(m->items[1].sub->items.size(), 2u);  // the comment is skipped
  ASSERT_TRUE(m->items[1].sub->items[1].sub);
  EXPECT_EQ(m->items[1].sub->items[1].sub->items[0].command, "TOP");
  EXPECT_EQ(m->items[2].command, "Bottom");
}

TEST_F(Menus, BadLinesAreReportedAndTheRestIsBuilt) {
  std::string p = write("m", "Alone\nGood TOP\nSub MENU\n  In Bottom\n");
  std::vector<std::string> errors;
  auto m = fs_menuread(p, "", errors);
  ASSERT_TRUE(m);
  ASSERT_EQ(errors.size(), 2u);
  EXPECT_EQ(errors[0], "..... Invalid menu string \"Alone\"");
  EXPECT_EQ(errors[1], "..... Invalid submenu \"Sub MENU\"");
  ASSERT_EQ(m->items.size(), 2u);
  EXPECT_EQ(m->items[1].sub->items[0].command, "Bottom");
}

TEST_F(Menus, IncludesWithHomeAndASelfIncludeStops) {
  write("inner", "Inner TOP\n");
  std::string p = write("outer", "INCLUDE $xhome/inner\nOther MENU " + dir + "/inner\nEND MENU\n");
  std::vector<std::string> errors;
  auto m = fs_menuread(p, dir, errors);
  ASSERT_TRUE(m);
  EXPECT_TRUE(errors.empty());
  ASSERT_EQ(m->items.size(), 2u);
  EXPECT_EQ(m->items[0].command, "TOP");
  ASSERT_TRUE(m->items[1].sub);
  EXPECT_EQ(m->items[1].sub->items[0].title, "Inner");
  std::string loop = write("loop", "A TOP\nINCLUDE " + dir + "/loop\n");
  errors.clear();
  EXPECT_FALSE(fs_menuread(loop, "", errors));
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_EQ(errors[0], "Buffer overflow: file " + loop +
                           " may contain a recursive call to another file.");
  errors.clear();
  EXPECT_FALSE(fs_menuread(dir + "/none", "", errors));
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_EQ(errors[0].rfind("Unable to read file " + dir + "/none", 0), 0u);
}

TEST_F(Menus, IdsNumberTheBarAndThePopUpApart) {
  std::string p = write("m", "A TOP\nS MENU\n B Bottom\nEND MENU\nC UP\n");
  std::vector<std::string> errors;
  fs_menuset(0, fs_menuread(p, "", errors));
  fs_menuset(1, fs_menuread(p, "", errors));
  EXPECT_STREQ(fs_menucmd(0), "TOP");
  EXPECT_STREQ(fs_menucmd(1), "Bottom");
  EXPECT_STREQ(fs_menucmd(2), "UP");
  EXPECT_EQ(fs_menucmd(3), nullptr);
  EXPECT_STREQ(fs_menucmd(FS_POPUP_ID + 2), "UP");
  fs_menuset(0, nullptr);
  fs_menuset(1, nullptr);
  EXPECT_EQ(fs_menucmd(0), nullptr);
}

}  // namespace
