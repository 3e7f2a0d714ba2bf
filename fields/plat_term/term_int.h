// Inside the terminal layer: the decoding of what the terminal sends (keys
// already matched by curses, and the escape sequences it leaves to us: the
// mouse, focus, unknown sequences) into field-manager events.
#pragma once
#include "fields/fields.h"
#include <string>
#include <vector>

// One unit of input: a character (a code point), or a curses key code with
// TK_KEY added.
constexpr int TK_KEY = 0x1000000;
// Key codes given to the xterm sequences of modified keys: TK_XTERM plus
// key index times TK_XSTRIDE plus the xterm modifier parameter (2 to 8).
constexpr int TK_XTERM = 0x6000;
constexpr int TK_XSTRIDE = 16;  // more than the highest modifier parameter

struct tk_out {
  fs_event ev;  // the event, time not yet set
  int ch;       // its input character, -1 for none
};

// The keys sent by xterm with a modifier parameter: the sequence is CSI, then
// either "1;m" and the final byte, or the number, ";m" and "~".
struct tk_xkey {
  int number;       // number before ';', 1 for the letter forms
  char final;       // final byte
  int code;         // event code; -1 the delete-character key
};
extern const tk_xkey tk_xkeys[];
extern const int tk_nxkeys;
// Writes the sequence of xterm key i with modifier parameter m into buf.
void tk_xseq(int i, int m, char *buf, int size);

// The pointer position of a cell, in the pretended pixels of the layer.
constexpr int TK_CELL_W = 8;  // pretended cell width
constexpr int TK_CELL_H = 16; // pretended cell height

// Turns units into events. A lone escape at the end is the Escape key: the
// caller waits for the rest of a sequence before it calls. Mouse press state
// is kept between calls in *held (the button of an X10 release).
void tk_decode(const std::vector<int> &units, std::vector<tk_out> &out, int *held);

// The terminal colour nearest to a palette entry: of the six-level cube (16
// to 231) and the grey ramp (232 to 255) of 256-colour terminals, or of the
// eight basic colours.
int tk_nearest256(int red, int green, int blue);
int tk_nearest8(int red, int green, int blue);

// A title as it may go to the terminal: control characters, C1 controls and
// bytes that are not UTF-8 shown escaped (^[ , \x9B), so that a file name
// cannot send the terminal a sequence of its own.
std::string tk_title_text(const std::string &text);

// The OSC 52 sequence that puts text on the terminal's clipboard (and so,
// through ssh and tmux, on the desktop's): the text in base 64. A terminal
// that does not know the sequence ignores it.
std::string tk_osc52(const std::string &text);

