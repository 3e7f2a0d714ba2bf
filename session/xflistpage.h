// A listing on a page of its own: the keys and the colours are shown this
// way, and each can be written out as a macro that sets them again.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Writes `lines` as a macro: the comment, then each line as a command
// string. 0, or 1 when the file could not be written whole.
int xflist_write(const std::string &path, const char *comment,
                 const std::vector<std::string> &lines);

// The line as a REXX string, its quotes doubled: a command of such a macro.
std::string xflist_quoted(const std::string &line);

// Shows `lines` (screen) and reads keys until F1 or Ctrl+C: F7 and F8
// scroll, Shift-F11 and Shift-F12 go to the ends, F2 calls `make` (a
// failure rings the bell). Returns 1 when the window was resized meanwhile
// (the caller's pages were rebuilt by the field manager), else 0.
int xflist_show(const std::vector<std::string> &lines, uint32_t page, int (*make)());
