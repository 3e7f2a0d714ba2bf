// State and helpers shared by the files of the command interpreter only.
#pragma once

#include "commands/commands.h"

#include <string>
#include <string_view>
#include <vector>

struct xfsynonym {
    std::string name;                    // as typed, case kept
    int minlen;                          // minimum length of a match
    std::vector<std::string> expansions; // commands it runs
    char linend;                         // LINEND character at definition
};
extern std::vector<xfsynonym> synonyms;  // in order of definition

extern int arbchar_on;                   // ARBchar ON
extern char arbchar;                     // the arbitrary character
extern int debug_cmds;                   // SYSCMD ON: service words, traces
extern std::string lastlorc;             // the last locate text

std::string xffold(std::string_view s);
void xfmacro_stack_remove(size_t index);
void xfline_number(std::string_view line, int ctx1, int ctx2);
void xflocate_line(std::string_view line, int ctx1, int ctx2);
bool xfsyscmd_word(std::string_view line);

// The word-character test of whole-word searches and changes (`\` targets,
// CN, the ISPF word options): letters, digits and `_`, and in a UTF-8 file
// every character past ASCII (letters of other scripts), so that a word is
// never cut inside a character. `ch` is a byte, or a code point in UTF-8.
bool xfwordchar(uint32_t ch);

// Run one handler on a text as if it had been dispatched (SET uses it).
int xfcall(const cmd_entry *e, xfcm_fn fn, std::string_view text, int ctx1, int ctx2);

// Targets: the scanner gives the length of a target at the start of a line;
// the parser gives a line index, -2 not found, -3 invalid.
size_t xftarget_scan(std::string_view line);
int xftarget_parse(std::string_view target, bool move);

// Handlers of on/off settings share this: no operand reports the state with
// message 9 or 10; ON or OFF sets it; anything else is message 16.
int xfonoff(const xfcmd &c, int &flag);
