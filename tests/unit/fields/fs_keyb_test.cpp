// The keyboard table file read by asfkeyb: good files change what typing
// shows, bad ones name the file and line, and a failure keeps what was loaded.
#include "fs_fixture.h"
#include <cstdio>
#include <unistd.h>

class Keyb : public FieldsTest {
 protected:
  std::vector<std::string> made;

  std::string file(const std::string &text) {
    std::string tmpl = ::testing::TempDir() + "fs_keybXXXXXX";
    std::vector<char> path(tmpl.begin(), tmpl.end());
    path.push_back(0);
    int fd = mkstemp(path.data());
    EXPECT_GE(fd, 0);
    EXPECT_EQ(write(fd, text.data(), text.size()), ssize_t(text.size()));
    close(fd);
    made.push_back(path.data());
    return path.data();
  }
  void SetUp() override {
    FieldsTest::SetUp();
    define({fld(1, 1, 1, 1, 10)});
  }
  void TearDown() override {
    for (const std::string &p : made) unlink(p.c_str());
    FieldsTest::TearDown();
  }
  // What typing these characters shows in field 1.
  std::string typed(const std::string &chars) {
    put(1, "");
    asfcur(1, 1, 1);
    read("type " + chars + "\nkey enter");
    return get(1).substr(0, chars.size());
  }
  // Loads a file that must fail; returns the message.
  std::string bad(const std::string &text) {
    std::string p = file(text);
    EXPECT_EQ(asfkeyb(p.c_str(), 0), 1);
    EXPECT_EQ(as_errno, 1);
    std::string m = as_lastmsg;
    std::string head = "asfkeyb: file " + p + ", line ";
    EXPECT_EQ(m.substr(0, head.size()), head);
    return m.substr(head.size());
  }
};

TEST_F(Keyb, StartValues) {
  EXPECT_EQ(typed("aQ1!"), "aQ1!");
}

TEST_F(Keyb, DisplayedCharactersAndSkippedLines) {
  std::string p = file(
      "* comment\n"
      "# another\n"
      "+ and another\n"
      "\n"
      "f1 : \\E[11~\n"
      "cu:\\EOA\n"
      "0 : 'q' : 0x71\n"
      "0:'w':'W'\n"
      "1 : 'w' : 0X5a\n"
      "0:';':':'\n");
  EXPECT_EQ(asfkeyb(p.c_str(), 0), 0);
  EXPECT_EQ(as_errno, 0);
  EXPECT_EQ(typed("qwW;"), "qWZ:");
}

TEST_F(Keyb, PairsRebuildTheEmittedTables) {
  std::string p = file(
      "6:'a':'b'\n"
      "6:'x':'y'\n"
      "1:'x':'#'\n");
  EXPECT_EQ(asfkeyb(p.c_str(), 0), 0);
  // a and x are the only keys: b and y are their shifted forms, the rest pass as they are.
  EXPECT_EQ(typed("abxyq"), "abx#q");
}

TEST_F(Keyb, CtrlShiftGivesRankOneAfterATable) {
  result r = read("key s+c-a");
  EXPECT_EQ(r.code, 22);
  EXPECT_EQ(r.value, 'a');
  std::string p = file("1:'a':'@'\n");
  asfkeyb(p.c_str(), 0);
  r = read("key s+c-a");
  EXPECT_EQ(r.code, 22);
  EXPECT_EQ(r.value, '@');
  r = read("key c-a");
  EXPECT_EQ(r.value, 'a');
}

TEST_F(Keyb, ErrorsNameFileAndLine) {
  EXPECT_EQ(bad("0:'a'\n"), "1: invalid format");
  EXPECT_EQ(bad("# c\n0:'a':'b':'c'\n"), "2: invalid format");
  EXPECT_EQ(bad("7:'a':'b'\n"), "1: invalid rank");
  EXPECT_EQ(bad("x:'a':'b'\n"), "1: invalid rank");
  EXPECT_EQ(bad("6:a:'b'\n"), "1: invalid lowercase character format");
  EXPECT_EQ(bad("6:'a':0xZZ\n"), "1: invalid uppercase character format");
  EXPECT_EQ(bad("\n\n0:'!':'b'\n"), "3: emitted character not found");
  EXPECT_EQ(bad("0:'ab':'b'\n"), "1: invalid emitted character format");
  EXPECT_EQ(bad("0:'a':b\n"), "1: invalid displayed character format");
  EXPECT_EQ(bad("f1:\n"), "1: invalid escape format");
  EXPECT_EQ(bad("r3:a:b\n"), "1: invalid escape format");
}

TEST_F(Keyb, AFailureKeepsWhatWasLoaded) {
  std::string good = file("0:'q':'Q'\n");
  ASSERT_EQ(asfkeyb(good.c_str(), 0), 0);
  // A first-pass error changes nothing.
  bad("0:'w':'W'\n9:'e':'E'\n");
  EXPECT_EQ(typed("qw"), "Qw");
  // A second-pass error keeps the lines before it.
  bad("0:'w':'W'\n0:'%':'E'\n0:'e':'E'\n");
  EXPECT_EQ(typed("qwe"), "QWe");
}

TEST_F(Keyb, MissingFileAndType) {
  EXPECT_EQ(asfkeyb("/nonexistent/kb", 0), 28);
  EXPECT_STREQ(as_lastmsg, "asfkeyb: File /nonexistent/kb not found");
  EXPECT_EQ(asfkeyb(nullptr, 3), 28);
  EXPECT_STREQ(as_lastmsg, "asfkeyb: invalid type");
  EXPECT_EQ(asfkeyb(nullptr, 0), 0);
  EXPECT_EQ(as_errno, 0);
  // A directory opens but cannot be read.
  std::string dir = ::testing::TempDir();
  EXPECT_EQ(asfkeyb(dir.c_str(), 0), 28);
  EXPECT_EQ(std::string(as_lastmsg), "Error while reading file " + dir);
}

TEST_F(Keyb, TypeOneMakesPrintScrollPauseFunctionKeys) {
  EXPECT_EQ(read("key printscreen").code, 9);
  read("key enter");
  asfkeyb(nullptr, 1);
  result r = read("key scrolllock");
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.value, 11);
  asfkeyb(nullptr, 2);
}

TEST_F(Keyb, MovementKeysFollowTheKeyboardType) {
  define({fld(2, 5, 1, 1, 5), fld(3, 9, 1, 1, 5)});
  asfcur(0, 12, 1);
  read("key home\nkey enter");  // standard: first field
  int l, c;
  cursor(&l, &c);
  EXPECT_EQ(l, 1);
  asfkbtype(0);
  asfcur(0, 12, 1);
  read("key pageup\nkey enter");  // type 0: Page Up is first field
  cursor(&l, &c);
  EXPECT_EQ(l, 1);
  read("key m-pageup\nkey enter");  // and with Alt, last field
  cursor(&l, &c);
  EXPECT_EQ(l, 9);
  asfkbtype(-1);
}
