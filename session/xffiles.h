// Shared by the files of loading, saving and recovery only.
#pragma once

#include "session/xed.h"

#include <string>

// The bound file's text into a new file that then takes the name `path` (a
// link found there is replaced, never written through), created with `mode`:
// in the saved form with LF or CR LF records, or as autosave keeps it, plain
// LF records through the write table. It streams through a fixed buffer and
// so needs no memory. Returns 0, an errno value of the write, or minus that
// of the file's creation.
enum { XF_SAVED = 0, XF_SAVED_CRLF = 1, XF_PLAIN = 2 };
int xfwrite_copy(const std::string &path, mode_t mode, int form);

// The bound file's text as a ".check" copy: beside the file when its folder
// takes it, else in the recovery folder of the user's state folder, never
// wider in mode than the file. `where` receives the name written. 0 or an
// errno value.
int xfwrite_check(std::string &where);

// Binds the recovery save to xfnomem; called once a file is in the ring.
void xfrecover_install();

// Remembers a loaded file at the top of ~/vorta.lastfiles.
void xflastfiles_add(const std::string &path);

// The directory part of a path, with its final '/', and the last component.
std::string xfdirof(const std::string &path);
std::string xfbaseof(const std::string &path);

// restart.x in the current directory, one line per file of the ring;
// returns 0 or an errno value.
int xfrestart_write();
