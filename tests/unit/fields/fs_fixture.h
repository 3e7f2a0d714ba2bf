// Shared set-up of the field manager tests: a started manager on a recording
// layer of 24 lines by 80 columns, and small helpers to define fields, read
// them back and drive reads by key script.
#pragma once
#include "fields/fields.h"
#include "fields/plat_test.h"
#include <gtest/gtest.h>
#include <array>
#include <string>
#include <vector>

using row = std::array<int32_t, 14>;

// id, y1, x1, lines, cols, type, then flags; intensity 1, colour and hilite 0.
inline row fld(int id, int y, int x, int h, int w, int type = 0, int flags = 0) {
  return row{id, y, x, h, w, type, 1, 0, 0, 0, 0, flags, 0, 0};
}

class FieldsTest : public ::testing::Test {
 protected:
  fs_plat_rec *rec = nullptr;

  void start(int lines, int cols) {
    rec = new fs_plat_rec(lines, cols);
    char prog[] = "test";
    char *argv[] = {prog, nullptr};
    ASSERT_EQ(fsinit(1, argv, rec), 1);
  }
  void SetUp() override { start(24, 80); }
  void TearDown() override {
    fsend();
    delete rec;
  }

  int define(const std::vector<row> &rows) {
    std::vector<int32_t> t;
    for (const row &r : rows) t.insert(t.end(), r.begin(), r.end());
    return asrfmt(int(rows.size()), 14, t.data());
  }

  std::string get(int id) {
    int n = 0;
    char *s = ascget_char(id, &n, 0);
    std::string r = s ? std::string(s, size_t(n)) : std::string("<none>");
    free(s);
    return r;
  }

  void put(int id, const std::string &s) { ascput(id, int(s.size()), s.c_str()); }

  struct result {
    int code;      // asread's code
    int value;     // asread's value
    int modified;  // asread's count
  };
  // Queues a key script and reads once.
  result read(const std::string &script) {
    rec->script(script);
    result r{};
    asread(&r.code, &r.value, &r.modified);
    return r;
  }

  void cursor(int *line, int *col) {
    int id;
    asqcur(0, &id, line, col);
  }
};
