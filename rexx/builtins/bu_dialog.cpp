// DY_START to DY_END: a dialog box described item by item. The items go to
// one open description; DY_END checks the box's own arguments, makes it,
// attaches the callback macro and gives the handle.
#include <memory>
#include <strings.h>

#include "fields/dialogs/dialogs.h"
#include "fields/fields.h"
#include "platform/platform.h"
#include "rexx/builtins/bu_dialog.h"
#include "rexx/builtins/bu_system.h"
#include "rexx/run.h"

namespace {

std::unique_ptr<std::vector<dy_item>> desc;  // the open description, null when none

constexpr const char* ordinals[] = {"first", "second", "third", "fourth", "fifth", "sixth"};

// The interpreter alone runs a callback as a program file of that name.
int run_callback(const std::string& macro, const std::string& event) {
  return run_rx(macro + event, nullptr, 0, pl_exedir());
}

// The open description, else the message of the function that needs one.
int need_desc(bu_frame& f) {
  if (desc) return 0;
  return bu_fail(f, 0, "no initialized dyalog box.");
}

// The six colour values from argument i, when the item was given them.
int item_colours(bu_frame& f, int i, dy_item& it) {
  if (f.argc < i + 6) return 0;
  int rgb[6];
  if (int e = bu_dy_colours(f, i, rgb)) return e;
  std::copy(rgb, rgb + 3, it.col.fg);
  std::copy(rgb + 3, rgb + 6, it.col.bg);
  return 0;
}

// x, y and text for a label or a button, with the optional colours.
int simple_item(bu_frame& f, value& r, int kind) {
  if (int e = bu_dy_needs(f, (f.argc == 3 || f.argc == 9) && bu_has(f, 2), "needs 3 or 9 arguments.")) return e;
  if (int e = need_desc(f)) return e;
  dy_item it;
  it.kind = kind;
  if (int e = bu_dy_number(f, 0, true, it.x)) return e;
  if (int e = bu_dy_number(f, 1, true, it.y)) return e;
  it.text = std::string(bu_text(f, 2));
  if (int e = item_colours(f, 3, it)) return e;
  desc->push_back(std::move(it));
  r.set_str("");
  return 0;
}

std::vector<std::string> stem_lines(const std::string& stem) {
  std::vector<std::string> out;
  std::string count = bu_get_text(stem + "0");
  long n = 0;
  for (char c : count) {
    if (c < '0' || c > '9') return out;
    n = n * 10 + (c - '0');
    if (n > 1000000) return out;
  }
  for (long i = 1; i <= n; i++) out.push_back(bu_get_text(stem + std::to_string(i)));
  return out;
}

}  // namespace

int bu_dy_needs(bu_frame& f, bool ok, const char* words) { return ok ? 0 : bu_fail(f, 0, words); }

int bu_dy_number(bu_frame& f, int i, bool ordinal, double& out) {
  if (bu_has(f, i) && val_make_num(*f.args[i])) {
    out = f.args[i]->val_num;
    return 0;
  }
  if (ordinal && i < 6) return bu_fail(f, i, std::string("the ") + ordinals[i] + " argument must be a number.");
  return bu_fail(f, i, "argument " + std::to_string(i + 1) + " must be a number.");
}

int bu_dy_whole(bu_frame& f, int i, int& out) {
  double d = 0;
  if (int e = bu_dy_number(f, i, false, d)) return e;
  if (d < -2147483647.0 || d > 2147483647.0 || d != (double)(long long)d)
    return bu_fail(f, i, "argument " + std::to_string(i + 1) + " must be a number.");
  out = int(d);
  return 0;
}

int bu_dy_colours(bu_frame& f, int i, int rgb[6]) {
  for (int k = 0; k < 6; k++) {
    double d = 0;
    if (int e = bu_dy_number(f, i + k, false, d)) return e;
    if (d < -1 || d >= 256)
      return bu_fail(f, i + k, "argument " + std::to_string(i + k + 1) +
                                   " must be greater or equal than -1 and lower than 256.");
    rgb[k] = int(d);
  }
  return 0;
}

int bu_dy_result(value& r, int rc, const std::string& text) {
  if (rc < 0) {
    bu_message(as_lastmsg);
    r.set_str("");
  } else {
    r.set_str(text);
  }
  return 0;
}

// DY_START(): opens a description, dropping one left open with a warning.
int bu_dy_start(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  if (desc) bu_message("DY_START(): Warning: unterminated dyalog box.");
  desc = std::make_unique<std::vector<dy_item>>();
  r.set_str("");
  return 0;
}

int bu_dy_label(bu_frame& f, value& r) { return simple_item(f, r, DY_KLABEL); }
int bu_dy_button(bu_frame& f, value& r) { return simple_item(f, r, DY_KBUTTON); }

// DY_INPUT(x, y, width [, text [, six colours]]); width 0 is a multi-line input.
int bu_dy_input(bu_frame& f, value& r) {
  bool ok = (f.argc == 3 || f.argc == 4 || f.argc == 10) && bu_has(f, 2);
  if (int e = bu_dy_needs(f, ok, "needs 3, 4 or 10 arguments.")) return e;
  if (int e = need_desc(f)) return e;
  dy_item it;
  it.kind = DY_KINPUT;
  if (int e = bu_dy_number(f, 0, true, it.x)) return e;
  if (int e = bu_dy_number(f, 1, true, it.y)) return e;
  if (int e = bu_dy_number(f, 2, true, it.width)) return e;
  if (it.width < 0) it.width = 0;
  it.height = 3;
  it.text = std::string(bu_text(f, 3));
  if (int e = item_colours(f, 4, it)) return e;
  desc->push_back(std::move(it));
  r.set_str("");
  return 0;
}

// DY_TG(title, x, y, exclusive, then x, y, text of each toggle).
int bu_dy_tg(bu_frame& f, value& r) {
  if (int e = bu_dy_needs(f, f.argc >= 7, "needs at least 7 arguments.")) return e;
  if (int e = bu_dy_needs(f, (f.argc - 4) % 3 == 0, "invalid argument count.")) return e;
  if (int e = need_desc(f)) return e;
  dy_item it;
  it.kind = DY_KTG;
  it.text = std::string(bu_text(f, 0));
  if (int e = bu_dy_number(f, 1, true, it.x)) return e;
  if (int e = bu_dy_number(f, 2, true, it.y)) return e;
  std::string_view ex = bu_text(f, 3);
  if (ex != "0" && ex != "1") return bu_fail(f, 3, "the fourth argument must be 0 or 1.");
  it.exclusive = ex == "1";
  for (int k = 0, i = 4; i < f.argc; k++, i += 3) {
    double x = 0, y = 0;
    char msg[64];
    if (!bu_has(f, i) || !val_make_num(*f.args[i])) {
      snprintf(msg, sizeof msg, "the X argument for toggle %d must be a number.", k + 1);
      return bu_fail(f, i, msg);
    }
    x = f.args[i]->val_num;
    if (!bu_has(f, i + 1) || !val_make_num(*f.args[i + 1])) {
      snprintf(msg, sizeof msg, "the Y argument for toggle %d must be a number.", k + 1);
      return bu_fail(f, i + 1, msg);
    }
    y = f.args[i + 1]->val_num;
    it.tx.push_back(x);
    it.ty.push_back(y);
    it.lines.emplace_back(bu_text(f, i + 2));
    it.on.push_back(it.exclusive && k == 0);
  }
  desc->push_back(std::move(it));
  r.set_str("");
  return 0;
}

// DY_CH(title, x, y, texts...): the first text chosen.
int bu_dy_ch(bu_frame& f, value& r) {
  if (int e = bu_dy_needs(f, f.argc >= 4, "needs at least 4 arguments.")) return e;
  if (int e = need_desc(f)) return e;
  dy_item it;
  it.kind = DY_KCH;
  it.text = std::string(bu_text(f, 0));
  if (int e = bu_dy_number(f, 1, true, it.x)) return e;
  if (int e = bu_dy_number(f, 2, true, it.y)) return e;
  for (int i = 3; i < f.argc; i++) it.lines.emplace_back(bu_text(f, i));
  it.selected = 1;
  desc->push_back(std::move(it));
  r.set_str("");
  return 0;
}

// DY_SCL(x, y, height, width [, stem [, mode [, title]]]), or the same seven
// and six colours.
int bu_dy_scl(bu_frame& f, value& r) {
  if (int e = bu_dy_needs(f, f.argc >= 4, "needs at least 4 arguments.")) return e;
  if (int e = bu_dy_needs(f, f.argc <= 7 || f.argc == 13, "needs 13 arguments.")) return e;
  if (int e = need_desc(f)) return e;
  dy_item it;
  it.kind = DY_KSCL;
  if (int e = bu_dy_number(f, 0, true, it.x)) return e;
  if (int e = bu_dy_number(f, 1, true, it.y)) return e;
  if (!bu_has(f, 2) || !val_make_num(*f.args[2]) || f.args[2]->val_num <= 0)
    return bu_fail(f, 2, "the third argument must be a positive number.");
  it.height = f.args[2]->val_num;
  if (!bu_has(f, 3) || !val_make_num(*f.args[3]) || f.args[3]->val_num <= 0 ||
      f.args[3]->val_num != (double)(long long)f.args[3]->val_num)
    return bu_fail(f, 3, "the fourth argument must be a whole positive number.");
  it.width = f.args[3]->val_num;
  if (bu_has(f, 4)) {
    std::string stem = bu_symbol_case(bu_text(f, 4));
    if (!stem.empty() && stem.back() == '.') stem.pop_back();
    if (stem.empty() || stem.find('.') != std::string::npos || !bu_valid_symbol(stem))
      return bu_fail(f, 4, "argument 5 is not a valid REXX symbol.");
    it.lines = stem_lines(stem + ".");
  }
  if (bu_has(f, 5)) {
    std::string mode(bu_text(f, 5));
    if (strcasecmp(mode.c_str(), "Single") != 0 && strcasecmp(mode.c_str(), "Multiple") != 0)
      return bu_fail(f, 5, "the sixth argument must be either \"Single\" or \"Multiple\".");
    it.multiple = strcasecmp(mode.c_str(), "Multiple") == 0;
  }
  it.text = std::string(bu_text(f, 6));
  it.on.assign(it.lines.size(), 0);
  if (int e = item_colours(f, 7, it)) return e;
  desc->push_back(std::move(it));
  r.set_str("");
  return 0;
}

// DY_END(callback, x, y, framed, title, grab [, centre [, red, green, blue]]).
int bu_dy_end(bu_frame& f, value& r) {
  bool ok = (f.argc == 6 || f.argc == 7 || f.argc == 10);
  if (int e = bu_dy_needs(f, ok, "needs 6, 7 or 10 arguments.")) return e;
  if (int e = need_desc(f)) return e;
  dy_opts o;
  double framed = 0;
  if (int e = bu_dy_number(f, 1, false, o.x)) return e;
  if (int e = bu_dy_number(f, 2, false, o.y)) return e;
  if (int e = bu_dy_number(f, 3, false, framed)) return e;
  o.framed = framed != 0;
  o.title = std::string(bu_text(f, 4));
  static constexpr const char* grabs[] = {"Grab", "Nograb", "Display"};
  std::string g(bu_text(f, 5));
  o.grab = -1;
  for (int k = 0; k < 3; k++)
    if (strcasecmp(g.c_str(), grabs[k]) == 0) o.grab = k;
  if (o.grab < 0) return bu_fail(f, 5, "argument 6 must be \"Grab\", \"Nograb\" or \"Display\".");
  if (f.argc >= 7) {
    std::string_view c = bu_text(f, 6);
    if (c != "0" && c != "1") return bu_fail(f, 6, "argument 7 must be 0 or 1.");
    o.centre = c == "1";
  }
  for (int k = 0; f.argc == 10 && k < 3; k++) {
    double d = -1;
    if (!bu_has(f, 7 + k) || !val_make_num(*f.args[7 + k]) || (d = f.args[7 + k]->val_num) < 0 || d >= 256)
      return bu_fail(f, 7 + k, "argument " + std::to_string(8 + k) +
                                   " must be greater or equal than 0 and lower than 256.");
    o.bg[k] = int(d);
  }
  int h = dy_make(std::move(*desc), o);
  desc.reset();
  if (!dy_callhook) dy_callhook = run_callback;
  dy_attach(h, std::string(bu_text(f, 0)), rx_source_name());
  r.set_str(std::to_string(h));
  return 0;
}
