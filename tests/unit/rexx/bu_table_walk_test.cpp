// Every row of the built-in table has a handler, except the families that
// belong to other parts of the system: dialog boxes (dy_*), panels (tb*) and
// the editor's data (getfile, flfiles). The system families (sockets,
// registry, services, processes, files, usage, console) all answer, if
// only with "not available" where Linux has no such service. Functions that
// read the interpreter's own state (ARG, VALUE, ...) are built into the
// interpreter and count as handled.
#include <gtest/gtest.h>

#include <cctype>
#include <set>
#include <string>

#include "rexx/builtins/builtins.h"
#include "rexx/exec_int.h"

namespace {

std::string lower(std::string s) {
  for (char& c : s) c = (char)std::tolower((unsigned char)c);
  return s;
}

const std::set<std::string>& owned_elsewhere() {
  static const std::set<std::string> s = {
      // the editor's data
      "getfile", "flfiles",
  };
  return s;
}

bool elsewhere(const std::string& name) {
  std::string n = lower(name);
  return n.rfind("dy_", 0) == 0 || n.rfind("tb", 0) == 0 || owned_elsewhere().count(n);
}

TEST(BuiltinTable, EveryRowOfThisLibraryHasAHandler) {
  std::string missing;
  for (int i = 0; i < bu_table_rows; i++) {
    const bu_row& r = bu_table[i];
    if (elsewhere(r.name) || r.handler || rx_find_bif(r.name)) continue;
    missing += std::string(" ") + r.name;
  }
  EXPECT_EQ(missing, "") << "rows still \"Routine not found\":" << missing;
}

TEST(BuiltinTable, ExclusionListNamesOnlyRealRows) {
  // A misspelt exclusion would hide a row of this library from the walk.
  std::set<std::string> rows;
  for (int i = 0; i < bu_table_rows; i++) rows.insert(lower(bu_table[i].name));
  for (const std::string& n : owned_elsewhere()) EXPECT_TRUE(rows.count(n)) << n;
}

TEST(BuiltinTable, LookupFindsEveryHandledRowInEachCaseMode) {
  for (int i = 0; i < bu_table_rows; i++) {
    const bu_row& r = bu_table[i];
    if (!r.handler) continue;
    EXPECT_NE(bu_lookup(lower(r.name), BU_CASE_LOWER), nullptr) << r.name;
    std::string up = r.name;
    for (char& c : up) c = (char)std::toupper((unsigned char)c);
    EXPECT_NE(bu_lookup(up, BU_CASE_UPPER), nullptr) << r.name;
    EXPECT_NE(bu_lookup(r.name, BU_CASE_MIXED), nullptr) << r.name;
  }
}

}  // namespace
