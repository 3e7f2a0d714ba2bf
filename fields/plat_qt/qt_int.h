// Inside the window layer: the key table and the pieces the window, the
// menus and the tests share. Toolkit types stay in this folder.
#pragma once
#include "fields/fields.h"
#include "fields/plat_qt/plat_qt.h"
#include <QFont>
#include <QKeyEvent>
#include <QString>

// The native key symbols that tell the left and right Ctrl and Alt apart.
constexpr quint32 QK_CTRL_R = 0xffe4;
constexpr quint32 QK_ALT_R = 0xffea;
constexpr quint32 QK_ALTGR = 0xfe03;

// A key as the field manager takes it: its code, its input character (-1 for
// none) and its modifiers. False for a key that is no event.
struct qk_key {
  int code;       // event code
  int ch;         // input character
  uint16_t mods;  // FSM_* bits
};
bool qk_map(const QKeyEvent &e, qk_key &out);
uint16_t qk_mods(Qt::KeyboardModifiers m);

// A font for a name of the form face%style%width%height, with the system's
// fixed-pitch face standing in for a face that is not installed; false for a
// name that cannot be a font.
bool qw_font(const std::string &name, QFont &out);
// Whether a face can be had: installed, or one of the stand-in names.
bool qw_facefound(const std::string &face);
// The default font name for a screen of this size.
std::string qw_fontdefault(int sw, int sh);
