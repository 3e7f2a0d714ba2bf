// Built-ins of the conversion and numeric families, and the frame itself:
// the table, lookup by case mode, and the shared argument checks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <set>
#include <string>
#include <vector>

#include "rexx/builtins/builtins.h"

namespace {

constexpr const char* OMIT = nullptr;

struct NumericGuard {
  rx_numeric_t saved = rx_numeric;
  ~NumericGuard() { rx_numeric = saved; }
};

// The result text, or "E<number>@<blamed argument>: <message>".
std::string call(const char* name, std::initializer_list<const char*> args) {
  const bu_row* row = bu_lookup(name, BU_CASE_LOWER);
  if (!row) return "no such built-in";
  std::vector<value> vals;
  vals.reserve(args.size());
  std::vector<value*> ptrs;
  for (const char* a : args) {
    if (a) {
      vals.emplace_back(a, strlen(a));
      ptrs.push_back(&vals.back());
    } else {
      ptrs.push_back(nullptr);
    }
  }
  value r;
  int bad = -1;
  int rc = bu_call(row, ptrs.data(), (int)ptrs.size(), r, &bad);
  if (rc > 0) return "E" + std::to_string(rc) + "@" + std::to_string(bad) + ": " + rx_err_text;
  EXPECT_EQ(rc, 0);
  return val_string(r);
}

std::string bytes(const char* s, size_t n) { return std::string(s, n); }

TEST(BuConv, HexAndBinary) {
  EXPECT_EQ(call("c2x", {"abc"}), "616263");
  EXPECT_EQ(call("c2x", {""}), "");
  EXPECT_EQ(call("x2c", {"4142"}), "AB");
  EXPECT_EQ(call("x2c", {"61 62"}), "ab");
  EXPECT_EQ(call("x2c", {"1"}), bytes("\x01", 1));
  EXPECT_EQ(call("x2c", {"4 142"}), "E40@0: X2C(): argument 1 must be a hexadecimal string.");
  EXPECT_EQ(call("x2c", {"g1"}), "E40@0: X2C(): argument 1 must be a hexadecimal string.");
  EXPECT_EQ(call("x2c", {" 41"}).substr(0, 6), "E40@0:");
  EXPECT_EQ(call("x2b", {"1f"}), "00011111");
  EXPECT_EQ(call("x2b", {""}), "");
  EXPECT_EQ(call("b2x", {"1 0001"}), "11");
  EXPECT_EQ(call("b2x", {"11111111"}), "FF");
  EXPECT_EQ(call("b2x", {""}), "");
  EXPECT_EQ(call("b2x", {"102"}), "E40@0: B2X(): argument 1 must be a binary string.");
}

TEST(BuConv, CharactersAndDecimals) {
  EXPECT_EQ(call("c2d", {""}), "0");
  EXPECT_EQ(call("c2d", {"\x01"}), "1");
  EXPECT_EQ(call("c2d", {"\xff", "1"}), "-1");
  EXPECT_EQ(call("c2d", {"\x80", "1"}), "-128");
  EXPECT_EQ(call("c2d", {"\xff\x80", "2"}), "-128");
  EXPECT_EQ(call("c2d", {"\x01\x02"}), "258");
  EXPECT_EQ(call("c2d", {"\x80", "2"}), "128");  // padded on the left with zero bytes
  EXPECT_EQ(call("d2c", {"65"}), "A");
  EXPECT_EQ(call("d2c", {"0"}), bytes("\0", 1));
  EXPECT_EQ(call("d2c", {"256"}), bytes("\x01\x00", 2));
  EXPECT_EQ(call("d2c", {"-1", "2"}), "\xff\xff");
  EXPECT_EQ(call("d2c", {"-1"}), "E40@0: D2C(): argument 1 must be a positive integer.");
  EXPECT_EQ(call("d2x", {"255"}), "FF");
  EXPECT_EQ(call("d2x", {"0"}), "0");
  EXPECT_EQ(call("d2x", {"-1", "4"}), "FFFF");
  EXPECT_EQ(call("d2x", {"255", "1"}), "F");
  EXPECT_EQ(call("d2x", {"255", "4"}), "00FF");
  EXPECT_EQ(call("d2x", {"1.5"}), "E40@0: D2X(): argument 1 must be a whole number.");
  EXPECT_EQ(call("x2d", {"FF"}), "255");
  EXPECT_EQ(call("x2d", {"ff", "2"}), "-1");
  EXPECT_EQ(call("x2d", {"81", "2"}), "-127");
  EXPECT_EQ(call("x2d", {"fff", "2"}), "-1");
  EXPECT_EQ(call("x2d", {"f", "2"}), "15");
  EXPECT_EQ(call("x2d", {""}), "0");
}

TEST(BuConv, Bitwise) {
  EXPECT_EQ(call("bitand", {"\x12", "\xf0"}), "\x10");
  EXPECT_EQ(call("bitand", {"\xff\x33", "\x0f"}), "\x0f\x33");  // the rest of the longer as it is
  EXPECT_EQ(call("bitand", {"\xff\x33", "\x0f", "\x0f"}), bytes("\x0f\x03", 2));
  EXPECT_EQ(call("bitor", {"ab", "   "}), "ab ");
  EXPECT_EQ(call("bitxor", {"\x0f", OMIT, "\xff"}), "\xf0");
  EXPECT_EQ(call("bitxor", {"ab"}), "ab");
}

TEST(BuConv, Datatype) {
  EXPECT_EQ(call("datatype", {" 12 "}), "NUM");
  EXPECT_EQ(call("datatype", {""}), "CHAR");
  EXPECT_EQ(call("datatype", {"1e400"}), "CHAR");
  const char* cases[][3] = {
      {"", "X", "1"},        {"1e5", "W", "1"},    {".5", "W", "0"},     {"ab1", "A", "1"},
      {"ab 1", "A", "0"},    {"A.B", "S", "1"},    {"A-B", "S", "0"},    {"abc", "L", "1"},
      {"aBc", "L", "0"},     {"Abc", "M", "1"},    {"ABC", "U", "1"},    {"10 1010", "B", "1"},
      {"10 10", "B", "0"},   {"12", "X", "1"},     {"1g", "X", "0"},     {"-3", "n", "1"},
      {"2.0000000001", "W", "1"},
  };
  for (auto& c : cases) EXPECT_EQ(call("datatype", {c[0], c[1]}), c[2]) << c[0] << " " << c[1];
  EXPECT_EQ(call("datatype", {"1", "Q"}).substr(0, 6), "E40@1:");
}

TEST(BuNumeric, AbsSignTruncMaxMin) {
  NumericGuard g;
  EXPECT_EQ(call("abs", {"-1.50"}), "1.5");
  EXPECT_EQ(call("abs", {"x"}), "E40@0: ABS(): argument 1 must be a number.");
  EXPECT_EQ(call("sign", {"-0.0"}), "0");
  EXPECT_EQ(call("sign", {"-3"}), "-1");
  EXPECT_EQ(call("sign", {"0.5"}), "1");
  EXPECT_EQ(call("trunc", {"3.14159", "2"}), "3.14");
  EXPECT_EQ(call("trunc", {"-2.7"}), "-2");
  EXPECT_EQ(call("trunc", {"0.29", "2"}), "0.29");  // no binary fraction creeping in
  EXPECT_EQ(call("trunc", {"3", "2"}), "3.00");
  EXPECT_EQ(call("max", {"1", "3.5", "2"}), "3.5");
  EXPECT_EQ(call("min", {"2", "-1"}), "-1");
  EXPECT_EQ(call("max", {}), "E40@0: MAX(): must receive at least 1 argument.");
  EXPECT_EQ(call("min", {"1", "a"}), "E40@1: MIN(): argument 2 must be a number.");
  EXPECT_EQ(call("digits", {}), "9");
  EXPECT_EQ(call("fuzz", {}), "0");
  EXPECT_EQ(call("form", {}), "SCIENTIFIC");
  EXPECT_EQ(call("digits", {"1"}), "E40@0: DIGITS(): must receive 0 arguments.");
  rx_numeric.digits = 4;
  EXPECT_EQ(call("digits", {}), "4");
  EXPECT_EQ(call("abs", {"-1.23456"}), "1.235");
}

TEST(BuNumeric, Format) {
  NumericGuard g;
  EXPECT_EQ(call("format", {"3.14159", OMIT, "2"}), "3.14");
  EXPECT_EQ(call("format", {"1.005", OMIT, "2"}), "1.01");  // decimal rounding, not the double's
  EXPECT_EQ(call("format", {"-0.0001", OMIT, "3"}), "0.000");
  EXPECT_EQ(call("format", {"9.995", OMIT, "2"}), "10.00");
  EXPECT_EQ(call("format", {"0.0005", OMIT, "3"}), "0.001");
  EXPECT_EQ(call("format", {"0.00049", OMIT, "3"}), "0.000");
  EXPECT_EQ(call("format", {"123.456", "5", "0"}), "  123");
  EXPECT_EQ(call("format", {"0", OMIT, "2"}), "0.00");
  EXPECT_EQ(call("format", {"1234.5", "6", "3"}), "  1234.500");
  EXPECT_EQ(call("format", {"-1.5", "3", "2"}), " -1.50");
  EXPECT_EQ(call("format", {"12345678901"}), "1.23456789E+10");
  EXPECT_EQ(call("format", {"1.50"}), "1.5");  // the number's own text
  EXPECT_EQ(call("format", {"1.5e20", OMIT, OMIT, "0"}), "150000000000000000000");
  EXPECT_EQ(call("format", {"1.5e20", OMIT, OMIT, "4"}), "1.5E+0020");
  EXPECT_EQ(call("format", {"1.5e-20", OMIT, OMIT, "2"}), "1.5E-20");
  EXPECT_EQ(call("format", {"12346", OMIT, OMIT, OMIT, "2"}), "1.235E+4");
  EXPECT_EQ(call("format", {"12345678901", OMIT, "2"}), "1.23E+10");
  EXPECT_EQ(call("format", {"1.5e20", OMIT, OMIT, "1"}), "E40@3: FORMAT(): not enought room for exponent");
  EXPECT_EQ(call("format", {"123", "2"}), "E40@1: FORMAT(): argument 2 is too small.");
  EXPECT_EQ(call("format", {"abc"}), "E40@0: FORMAT(): argument 1 must be a number.");
  EXPECT_EQ(call("format", {"1", "1", "1", "1", "1", "1"}), "E40@0: FORMAT(): must receive 1 to 5 arguments.");
}

TEST(BuFrame, TableShape) {
  ASSERT_EQ(bu_table_rows, 309);
  EXPECT_STREQ(bu_table[0].name, "ActivateKeyboardLayout");
  EXPECT_STREQ(bu_table[bu_table_rows - 1].name, "dy_refresh");
  std::set<std::string> names;
  for (int i = 0; i < bu_table_rows; i++) EXPECT_TRUE(names.insert(bu_table[i].name).second) << bu_table[i].name;
  // An alias row shares its handler with an earlier row of the table.
  for (int i = 0; i < bu_table_rows; i++) {
    if (!(bu_table[i].flag & BU_ALIAS) || !bu_table[i].handler) continue;
    bool earlier = false;
    for (int j = 0; j < i; j++) earlier |= bu_table[j].handler == bu_table[i].handler;
    EXPECT_TRUE(earlier) << bu_table[i].name;
  }
}

TEST(BuFrame, LookupByCaseMode) {
  const bu_row* left = bu_lookup("LEFT", BU_CASE_UPPER);
  ASSERT_NE(left, nullptr);
  EXPECT_EQ(bu_lookup("left", BU_CASE_LOWER), left);
  EXPECT_EQ(bu_lookup("left", BU_CASE_MIXED), left);
  EXPECT_EQ(bu_lookup("Left", BU_CASE_MIXED), nullptr);
  EXPECT_EQ(bu_lookup("left", BU_CASE_UPPER), nullptr);
  const bu_row* centre = bu_lookup("CENTRE", BU_CASE_UPPER);
  ASSERT_NE(centre, nullptr);
  EXPECT_EQ(centre->handler, bu_lookup("CENTER", BU_CASE_UPPER)->handler);
  EXPECT_TRUE(centre->flag & BU_ALIAS);
  EXPECT_EQ(bu_lookup("NOSUCHFUNCTION", BU_CASE_UPPER), nullptr);
}

// Every built-in with a handler, called with assorted arguments: it either
// gives a result or fails with its own name at the front of the message.
TEST(BuFrame, EveryFailureNamesItsFunction) {
  const char* pool[] = {nullptr, "", " ", "0", "1", "2", "3", "-1", "1.5", "10", "1000", "x", "abc def", "N", "ff", "0101", "1e3", "  a  b "};
  const int npool = (int)(sizeof pool / sizeof pool[0]);
  uint32_t seed = 12345;
  auto next = [&] { return seed = seed * 1103515245u + 12345u, (seed >> 8); };
  int calls = 0, failures = 0;
  for (int row = 0; row < bu_table_rows; row++) {
    if (!bu_table[row].handler) continue;
    // Rows that act on files, folders or descriptors would act on the
    // test's own; their REXX programs cover their failures.
    static const std::set<std::string> acting = {
        "linein", "lineout", "charin", "charout", "lines", "chars", "stream", "linelast", "stdin", "stdout",
        "stderr", "SysGetKey", "chdir", "dup2", "SysMkDir", "SysRmDir", "SysFileDelete", "SysSetPriority",
        "SysFileTree", "mklistfiles", "SysFileSearch",
        // The system families start programs, wait, send signals, write
        // the settings store, touch files and the clock: their REXX
        // programs call them with arguments of their own.
        "fork", "waitpid", "still_active", "kill", "qpid", "popen", "sh", "unix", "windows", "csh", "tcsh", "ksh",
        "exec", "windows_ne", "script", "tee", "teek", "teec", "SetPriority", "ShellExecute", "cp", "copy", "rm",
        "del", "wipe", "recycle", "mv", "rename", "ln", "mkdir", "rmdir", "concat", "fileconv", "utime", "stime",
        "cpuusage", "iousage", "netusage", "askcons", "cls", "clear", "SysCls", "setenv", "putenv", "unsetenv",
        "sleep", "SysSleep", "usleep", "registry_get", "registry_set", "registry_del", "registry_keys",
        "registry_values", "service_create", "service_delete", "service_start", "service_stop", "service_status",
        "SockGetHostByName", "gethostbyname", "SockGetHostByAddr", "gethostbyaddr", "SockGetHostId", "gethostid",
        "SockAccept", "accept", "SockRecv", "recv", "SockRecvFrom", "recvfrom", "SockSelect", "select",
        "SockConnect", "connect", "SockSend", "send", "SockPSock_Errno", "ls", "dir", "subdirs", "IsFileOpened",
        "setarg"};
    if (acting.count(bu_table[row].name)) continue;
    std::string upper;
    for (const char* c = bu_table[row].name; *c; c++) upper += (char)toupper((unsigned char)*c);
    for (int round = 0; round < 300; round++) {
      int argc = (int)(next() % 6);
      std::vector<value> vals((size_t)argc);
      std::vector<value*> ptrs;
      for (int i = 0; i < argc; i++) {
        const char* a = pool[next() % npool];
        if (a) vals[(size_t)i].set_str(a, strlen(a));
        ptrs.push_back(a ? &vals[(size_t)i] : nullptr);
      }
      value r;
      int bad = -1;
      int rc = bu_call(&bu_table[row], ptrs.data(), argc, r, &bad);
      calls++;
      if (rc > 0) {
        failures++;
        // The colour calls of the dialog boxes name themselves without brackets.
        bool colour = upper.find("_COL") != std::string::npos && upper.rfind("DY_", 0) == 0;
        EXPECT_EQ(rx_err_text.rfind(upper + (colour ? ": " : "(): "), 0), 0u) << rx_err_text;
        EXPECT_TRUE(bad >= 0 && bad < std::max(argc, 1)) << upper << " blamed " << bad;
      } else {
        EXPECT_EQ(rc, 0) << upper;
      }
    }
  }
  EXPECT_GT(failures, 0);
  EXPECT_GT(calls - failures, 0);
}

TEST(BuFrame, NumericArgumentsUseTheirScratchSlots) {
  // Four numbers rendered at once keep distinct texts.
  value a(1.5, 1), b(22.0), c(-3.25, 2), d(4e20);
  value* args[] = {&a, &b, &c, &d};
  bu_frame f;
  f.name = "T";
  f.args = args;
  f.argc = 4;
  std::string_view ta = bu_text(f, 0), tb = bu_text(f, 1), tc = bu_text(f, 2), td = bu_text(f, 3);
  EXPECT_EQ(ta, "1.5");
  EXPECT_EQ(tb, "22");
  EXPECT_EQ(tc, "-3.25");
  EXPECT_EQ(td, "4E+20");
  EXPECT_EQ(bu_count(f, 1, 3), 40);
  EXPECT_EQ(rx_err_text, "T(): must receive 1 to 3 arguments.");
  // Numeric arguments reach handlers as numbers, not texts.
  EXPECT_EQ(call("length", {"12"}), "2");
  value n(1234567.0);
  value* one[] = {&n};
  value r;
  ASSERT_EQ(bu_call(bu_lookup("fwc", BU_CASE_LOWER), one, 1, r, nullptr), 0);
  EXPECT_EQ(val_string(r), "1,234,567");
}

}  // namespace
