// The pieces of the folder trust (xftrust.cpp) that read the user's list of
// trusted folders and the agreements remembered on the page. xftrusted, the
// decision itself, is declared with the session in xed.h.
#pragma once
#include <string>
#include <string_view>

// The user's list of trusted folders: `$XDG_CONFIG_HOME/vorta/trusted`, or
// `~/.config/vorta/trusted`; "" when neither folder is absolute.
std::string xftrust_list_path();

// Whether the real folder `dir` stands in `list`, the text of that file: one
// absolute folder a line, `~/` for the home folder, blanks around a line and
// lines starting with # ignored; each entry counts by its real path, and
// only the folder itself, not what lies below it.
bool xftrust_listed(std::string_view list, const std::string &dir);

// The line that remembers the user's agreement to run `content`, found as
// `path`: its SHA-256 and the path, so another text at the same place, or
// the same text elsewhere, is a new question.
std::string xftrust_entry(std::string_view content, const std::string &path);

// Whether `entry` is one of the lines of `remembered`.
bool xftrust_agreed(std::string_view remembered, const std::string &entry);
