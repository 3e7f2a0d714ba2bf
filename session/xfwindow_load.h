// Opening the window layer, which is loaded only when a window is wanted.
#pragma once
#include "fields/plat_qt/plat_qt.h"
#include <string>

// Whether the environment names a display (answering or not).
bool xfwindow_named();
// Loads the window module and opens the window with the window options of
// argv; null with `why` saying what failed (no module, no display).
fs_plat *xfwindow_open(int argc, char **argv, fs_qt_gonehook ongone, std::string &why);
