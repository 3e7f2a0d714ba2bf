// Timing of the refresh on a full page of 60 by 200 cells, with nothing
// changed and with every cell changed. Not part of the test run: start it with
// --gtest_also_run_disabled_tests --gtest_filter='*Bench*'.
#include "fs_fixture.h"
#include <chrono>

namespace {

using clk = std::chrono::steady_clock;

double micros(const clk::time_point &t0, int n) {
  return std::chrono::duration<double, std::micro>(clk::now() - t0).count() / n;
}

}  // namespace

// The headless layer draws nothing, so what is timed is the model's work.
class Bench : public FieldsTest {
 protected:
  fs_nullplat *null = nullptr;
  void SetUp() override {
    null = new fs_nullplat(60, 200);
    char prog[] = "bench";
    char *argv[] = {prog, nullptr};
    ASSERT_EQ(fsinit(1, argv, null), 1);
  }
  void TearDown() override {
    fsend();
    delete null;
  }
};

TEST_F(Bench, DISABLED_FullPageRefresh) {
  std::vector<row> rows;
  for (int l = 1; l <= 60; l++) rows.push_back(fld(l, l, 1, 1, 200));
  define(rows);
  const std::string text[2] = {std::string(200, 'a'), std::string(200, 'b')};
  for (int l = 1; l <= 60; l++) put(l, text[0]);
  asrefresh();
  const int n = 2000;
  auto t0 = clk::now();
  for (int i = 0; i < n; i++) asrefresh();
  double same = micros(t0, n);
  double all = 0;
  for (int i = 0; i < n; i++) {
    for (int l = 1; l <= 60; l++) put(l, text[(i + 1) % 2]);
    t0 = clk::now();
    asrefresh();
    all += micros(t0, n);
  }
  // Redefining the whole page and writing the same text: marked, nothing drawn.
  t0 = clk::now();
  for (int i = 0; i < n; i++) {
    asfclr();
    define(rows);
    for (int l = 1; l <= 60; l++) put(l, text[n % 2]);
    asrefresh();
  }
  double rebuilt = micros(t0, n);
  printf("refresh, nothing changed:         %8.2f us\n", same);
  printf("refresh, every cell changed:      %8.2f us (60 runs of 200 cells)\n", all);
  printf("rebuild and refresh, same screen: %8.2f us\n", rebuilt);
  EXPECT_GT(same, 0);
}
