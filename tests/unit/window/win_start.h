// The one window layer of a window test program: the offscreen platform, a
// settings folder of the tests' own, a grid of 40 columns and 10 lines in
// cells of 10 by 20 pixels, no window memory.
#pragma once
#include "fields/plat_qt/qt_window.h"
#include <cstdlib>
#include <gtest/gtest.h>

inline void win_start() {
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  static char dir[] = "/tmp/xedwinXXXXXX";
  if (!getenv("XED_WINTEST_DIR")) setenv("XED_WINTEST_DIR", mkdtemp(dir), 1);
  setenv("XDG_CONFIG_HOME", getenv("XED_WINTEST_DIR"), 1);
  if (qw_layer) return;
  const char *args[] = {"xed", "-font", "%*%10%20", "-Ww", "40", "-Wh", "10", "-noauto", nullptr};
  std::string err;
  fs_plat_qt(8, const_cast<char **>(args), nullptr, err);
  ASSERT_NE(qw_layer, nullptr) << err;
}
