// The script-driven layers: the headless layer, whose events come from a key
// script, and the recording layer that tests use to see every call the model
// makes and the screen that results.
#pragma once
#include "fields/plat.h"
#include <deque>
#include <string>
#include <vector>

class fs_nullplat : public fs_plat {
 public:
  fs_nullplat(int lines, int cols);
  void run(int, int, const uint16_t *, int, int, int, int) override {}
  void cursor(int, int, int) override {}
  void tick(int, int, int) override {}
  void status(const std::string &) override {}
  void bell() override;
  void flash() override;
  void alert(const std::string &text) override;
  int wait(int ms) override;
  void peek() override;
  void title(const std::string &) override {}
  void geometry(fs_metrics &m) override;
  void size(int lines, int cols) override;
  void show(int) override {}
  void palette(int, int, int, int) override {}
  void clear() override {}
  void pointer(int) override {}
  void flush() override {}

  void script(const std::string &text);  // appends script lines
  int step();               // runs script lines up to the next events; 0 when none left
  std::FILE *out = stdout;  // where dump writes
  std::vector<std::string> errors;  // bad script lines, with their numbers
  int bells = 0;            // bells rung
  int flashes = 0;          // refused keys

 protected:
  int lines_, cols_;              // grid size the layer offers
  std::deque<std::string> todo;   // script lines not yet run
  int lineno = 0;                 // script lines run
  uint32_t clock = 1;             // seconds of the next event
  bool quiet = false;             // alerts are not written to standard error
  bool marked = false;            // the last line set a mark of the model
  long waitleft = 0;              // milliseconds of a wait line not yet passed
  int exec(const std::string &line, std::string &err);
};

class fs_plat_rec : public fs_nullplat {
 public:
  fs_plat_rec(int lines, int cols);
  void run(int line, int col, const uint16_t *text, int count, int hilite, int colour,
           int intensity) override;
  void cursor(int line, int col, int colour) override;
  void tick(int line, int col, int on) override;
  void status(const std::string &text) override;
  void bell() override;
  void flash() override;
  void alert(const std::string &text) override;
  void clear() override;
  void palette(int entry, int red, int green, int blue) override;

  std::vector<fs_rec_call> calls;  // every call, in order
  std::vector<std::string> text;   // the screen, one string a line
  std::vector<std::string> hl;     // hilite of each cell as a digit
  std::vector<std::vector<int>> colour;  // colour of each cell
  std::string statusline;          // last status line
  int curline = 0;                 // cursor bar
  int curcol = 0;                  // cursor bar
  std::vector<std::string> ticks;  // trailing-blank marks, a quote where shown
  int runs() const;                // number of run calls logged
  void forget() { calls.clear(); }
};
