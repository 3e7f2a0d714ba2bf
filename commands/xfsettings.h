// Settings kept as values until the features that use them are built, the
// operand shapes every setting's handler shares, and what EXTRACT and the
// listing of all settings read from them.
#pragma once

#include "commands/commands.h"

#include <cstdint>
#include <string>
#include <string_view>

// Operand shapes. Each gives false after message 16 with cmd_rc 1, so that
// a handler only says what its operand is.
int xfbad();                                                   // message 16, cmd_rc 1; returns 1
int xfonoff_word(std::string_view w);                          // ON 1, OFF (OF) 0, else -1; no message
int xfreport_onoff(int on);                                    // "..... Is ON" or "..... Is OFF"; returns 1
bool xfop_onoff(std::string_view w, int &out);                 // ON, OFF (OF)
bool xfop_number(std::string_view w, long lo, long hi, long &out); // a number in [lo, hi]
bool xfop_star(std::string_view w, long lo, long hi, long &out);   // the same, or `*` as 0
// A column pair "a b" (b may be `*`, given as 0), 1 <= a <= b; nothing else after.
bool xfop_pair(std::string_view ops, long &a, long &b);
// The index of a word in a list of "word/min" entries (min letters needed).
bool xfop_word(std::string_view w, const char *const *words, int n, int &out);
// SCALe-like rows: [ON|OFF] [row] on a row word, `defrow` when never set.
int xfrow_setting(const xfcmd &c, int32_t &v, int32_t defrow);
// The report of a value: "..... Is " + text.
int xfreport(const std::string &text);

// A stored setting's value as its query gives it ("ON", "EUROPE", "10"...),
// and whether an ON/OFF one is on; "" and 0 for a name that isn't stored.
std::string xfset_text(const char *name);
int xfset_flag(const char *name);
int xfset_insert(); // the page's insert mode

// Stored settings are one table with one handler.
int xfcm_stored(const xfcmd &c);
// The settings of later features that a file or view keeps.
int xfcm_alt(const xfcmd &c);
int xfcm_lrecl(const xfcmd &c);
int xfcm_trunc(const xfcmd &c);
int xfcm_margins(const xfcmd &c);
int xfcm_format(const xfcmd &c);
int xfcm_powerinput(const xfcmd &c);
int xfcm_verify(const xfcmd &c);
int xfcm_verify_screen(const xfcmd &c);
int xfcm_number_screen(const xfcmd &c);
int xfcm_scale_screen(const xfcmd &c);
int xfcm_tabline_screen(const xfcmd &c);
int xfcm_select(const xfcmd &c);
int xfcm_tabset(const xfcmd &c);
int xfcm_fnameparts(const xfcmd &c);
int xfcm_setp(const xfcmd &c);
int xfcm_extract(const xfcmd &c);

// EXTract's items for a macro: 0, or -1 at the first item that fails.
int xfextract(std::string_view text);
// Host calls need a macro: true, or message 173 with cmd_rc 1.
bool xfmacro_active();
// READSCREEN: the screen's rows queued on the macro's stack; 0.
int xfreadscreen();
int xfcm_readscreen(const xfcmd &c);

extern std::string profile_name, profile_args; // the profile that ran, and its arguments
extern std::string last_menu;                  // the last menu entry chosen
extern std::vector<std::string> setp_hints;   // SETP: the key hints of the screen
