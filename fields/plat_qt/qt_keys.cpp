// Keys of the window: the toolkit's key numbers turned into the field
// manager's codes by table, and characters taken from the text the key types.
#include "fields/plat_qt/qt_int.h"

namespace {

constexpr int DELKEY = -1;  // the delete-character key, whose code is a setting
constexpr int BSKEY = -2;   // the backspace key, likewise

struct keyrow {
  int qt;    // Qt::Key
  int code;  // event code, or DELKEY/BSKEY
};
constexpr keyrow keys[] = {
    {Qt::Key_Up, FSK_UP},         {Qt::Key_Down, FSK_DOWN},      {Qt::Key_Left, FSK_LEFT},
    {Qt::Key_Right, FSK_RIGHT},   {Qt::Key_Home, FSK_HOME},      {Qt::Key_End, FSK_END},
    {Qt::Key_PageUp, FSK_PGUP},   {Qt::Key_PageDown, FSK_PGDN},  {Qt::Key_Insert, FSK_INSERT},
    {Qt::Key_Delete, DELKEY},     {Qt::Key_Backspace, BSKEY},    {Qt::Key_Return, 13},
    {Qt::Key_Enter, 13},          {Qt::Key_Tab, 9},              {Qt::Key_Backtab, 9},
    {Qt::Key_Escape, 27},         {Qt::Key_Print, FSK_PRINT},    {Qt::Key_SysReq, 6},
    {Qt::Key_ScrollLock, FSK_SCROLL}, {Qt::Key_Pause, FSK_PAUSE},
};
static_assert(sizeof keys / sizeof keys[0] == 20, "twenty named keys");

int named(int qt) {
  for (const keyrow &k : keys)
    if (k.qt == qt) return k.code == DELKEY ? as_delkey : k.code == BSKEY ? as_bskey : k.code;
  if (qt >= Qt::Key_F1 && qt <= Qt::Key_F24) return FSK_F0 + 1 + (qt - Qt::Key_F1);
  return 0;
}

}  // namespace

uint16_t qk_mods(Qt::KeyboardModifiers m) {
  return uint16_t(((m & Qt::ShiftModifier) ? FSM_SHIFT : 0) |
                  ((m & Qt::ControlModifier) ? FSM_CTRL : 0) |
                  ((m & Qt::AltModifier) ? FSM_ALT : 0));
}

bool qk_map(const QKeyEvent &e, qk_key &out) {
  out.mods = qk_mods(e.modifiers());
  out.ch = -1;
  if (int c = named(e.key())) {
    if (e.key() == Qt::Key_Backtab) out.mods |= FSM_SHIFT;
    out.code = c;
    out.ch = c < 256 ? c : -1;
    return true;
  }
  // Ctrl with a letter types a control character: the letter is the key.
  if ((e.modifiers() & Qt::ControlModifier) && e.key() >= Qt::Key_A && e.key() <= Qt::Key_Z) {
    out.code = out.ch = 'a' + (e.key() - Qt::Key_A);
    return true;
  }
  QString t = e.text();
  if (t.isEmpty()) {
    // Ctrl or Alt with a key that types nothing of its own: its plain symbol.
    if (e.key() >= 0x20 && e.key() < 0x7f && (out.mods & (FSM_CTRL | FSM_ALT))) {
      out.code = out.ch = e.key() >= 'A' && e.key() <= 'Z' ? e.key() + 32 : e.key();
      return true;
    }
    return false;
  }
  uint cp = t.toUcs4().value(0);
  if (cp < 32 || cp == 127 || (cp >= 128 && cp < 160)) return false;
  // The character carries Shift already; Shift stays for key definitions.
  if (cp < 256) {
    out.code = out.ch = int(cp);
    return true;
  }
  if (cp > 0x10ffff || (cp >= 0xd800 && cp <= 0xdfff)) return false;
  out.code = FSK_CHAR;
  out.ch = int(cp);
  return true;
}
