// The terminal screen layer: the field manager's grid drawn full screen on a
// character terminal through curses, with keys, mouse, resize and the
// process's job-control and hang-up signals turned into events and marks.
#pragma once
#include "fields/plat.h"
#include <string>

// Called once when the terminal has gone (hang-up, SIGTERM, a closed
// terminal), after the screen was given back and before the read ends: the
// place to save what would otherwise be lost.
typedef void (*fs_term_gonehook)();

// Opens the terminal on standard input and output and returns the layer, or
// null with err saying why (no TERM, an unknown TERM, no terminal). The
// terminal is given back at exit, and before a crash report.
fs_plat *fs_plat_term(fs_term_gonehook onhangup, std::string &err);
