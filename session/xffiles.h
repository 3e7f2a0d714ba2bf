// Shared by the files of loading, saving and recovery only.
#pragma once

#include "session/xed.h"

#include <string>

// The bound file's text as the writer builds it, into `path`, with no
// backup; returns 0 or an errno value.
int xfwrite_plain(const std::string &path, bool dosmode);

// Plain LF records through the write table, as autosave copies are kept;
// returns 0, an errno value of the write, or minus that of the open.
int xfwrite_autosave(const std::string &path);

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
