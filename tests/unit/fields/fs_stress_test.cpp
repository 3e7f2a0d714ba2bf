// Bad arguments and random input never break the model: thousands of calls
// with ids, positions, counts and events drawn at random, after each of which
// the cell owners must still agree with the fields' cell lists.
#include "fs_fixture.h"
#include "fields/fs_int.h"
#include <random>

namespace {

// Every listed cell is owned by its field, and no other cell is owned.
::testing::AssertionResult consistent() {
  const fs_pagerec &p = fs.pages[fs.cur];
  size_t listed = 0;
  for (size_t f = 0; f < p.fld.size(); f++) {
    const fs_cells &c = p.cells[f];
    listed += c.line.size();
    for (size_t i = 0; i < c.line.size(); i++) {
      int ix = cellix(c.line[i], c.col[i]);
      if (p.owner[ix] != int(f) + 1)
        return ::testing::AssertionFailure() << "cell of field " << p.fld[f].id << " owned by "
                                             << p.owner[ix];
    }
  }
  size_t owned = 0;
  for (int32_t o : p.owner) owned += o != 0;
  if (owned != listed)
    return ::testing::AssertionFailure() << owned << " owned cells, " << listed << " listed";
  for (uint16_t t : p.text)
    if (t != FS_NULL && t > 255) return ::testing::AssertionFailure() << "cell value " << t;
  return ::testing::AssertionSuccess();
}

}  // namespace

using Stress = FieldsTest;

TEST_F(Stress, RandomCallsKeepTheGridConsistent) {
  std::mt19937 rng(12345);
  auto any = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
  auto wild = [&] {
    static const int edge[] = {-2147483647, -5, -1, 0, 1, 2, 23, 24, 25, 79, 80, 81, 1000, 2147483647};
    return any(0, 3) == 0 ? edge[any(0, 13)] : any(-3, 90);
  };
  char buf[256];
  uint16_t cells[256];
  int32_t words[16];
  for (int round = 0; round < 3000; round++) {
    int id = any(-1, 12);
    switch (any(0, 13)) {
      case 0: {
        std::vector<row> rows;
        for (int n = any(1, 4); n > 0; n--) {
          row r = fld(any(1, 12), any(1, 24), any(1, 80), any(0, 3), any(0, 120), any(0, 2),
                      any(0, 1) ? 0 : 1 << any(0, 13));
          if (any(0, 5) == 0) r[any(1, 4)] = wild();
          rows.push_back(r);
        }
        define(rows);
        break;
      }
      case 1: ascput(id, wild() % 300, "some text that is long enough for any field of this page and then a good deal more than that, so that every length has text behind it up to three hundred bytes................................................................................................................");
        break;
      case 2: ascget(id, any(-5, 255), buf); break;
      case 3: ascget_short(id, any(-5, 255), cells); break;
      case 4: asfcur(id, wild(), wild()); break;
      case 5: asccol(id, any(-3, 200), std::vector<int32_t>(200, wild()).data()); break;
      case 6: aschlt(id, any(-3, 200), std::vector<int32_t>(200, any(-1, 4)).data()); break;
      case 7: asqfld(any(-1, 1), id, wild(), words); break;
      case 8: asfcol(id, wild()); asfhlt(id, wild()); asfint(id, any(0, 2)); break;
      case 9: if (any(0, 20) == 0) asfclr(); break;
      case 10: {
        int ids[4], lens[4], used[4];
        asqmod(any(-1, 4), ids, lens, used);
        break;
      }
      case 11: {
        static const uint16_t codes[] = {'a', 'Z', '1', ' ', 9, 13, 27, 127, 8, 10, 6,
                                         FSK_UP, FSK_DOWN, FSK_LEFT, FSK_RIGHT, FSK_HOME,
                                         FSK_END, FSK_INSERT, FSK_LEFT_B, FSK_RIGHT_B,
                                         FSK_DRAG, FSK_MOVE, FSK_F0 + 3, FSK_PRINT, 0xFFFE};
        for (int n = any(1, 12); n > 0; n--) {
          fs_event e{};
          e.code = codes[any(0, 24)];
          e.released = uint16_t(any(0, 3) == 0);
          e.modifiers = uint16_t(any(0, 3) == 0 ? (1 << any(1, 6)) : 0);
          e.x = int16_t(wild());
          e.y = int16_t(wild());
          fs_postev(e, e.code < 256 ? e.code : -1);
        }
        asfinsert(any(0, 1));
        asfreverse(any(0, 4) == 0);
        asfrem(any(0, 2));
        int code = 0, value, mod;
        for (int guard = 0; guard < 50 && code != 23; guard++) asread(&code, &value, &mod);
        fs.gone = false;
        break;
      }
      case 12: {
        int n;
        free(ascget_char(id, &n, any(0, 2)));
        int v;
        ascget_int(id, &v);
        break;
      }
      case 13: {
        const uint16_t c[3] = {FS_NULL, 0, 'x'};
        ascput_short(id, any(0, 3), c);
        break;
      }
    }
    ASSERT_TRUE(consistent()) << "round " << round;
  }
  asfinsert(0);
  asfreverse(0);
  asfrem(1);
}
