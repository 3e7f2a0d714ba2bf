// The calls on open dialog boxes: map and unmap, the values of the items
// read into variables and set from the macro, the lists' lines, colours,
// focus, font, header, and the few that need no box (clipboard, folder,
// printer, bell, repaint, the hand-out of events).
#include <cstring>
#include <strings.h>

#include "fields/dialogs/dialogs.h"
#include "fields/fields.h"
#include "platform/platform.h"
#include "rexx/builtins/bu_dialog.h"
#include "rexx/builtins/bu_system.h"

namespace {

// A stem at argument i: "NAME(): argument N is not a valid REXX symbol.".
int stem_arg(bu_frame& f, int i, std::string& stem) {
  stem = bu_symbol_case(bu_text(f, i));
  if (!stem.empty() && stem.back() == '.') stem.pop_back();
  if (stem.empty() || stem.find('.') != std::string::npos || !bu_valid_symbol(stem))
    return bu_fail(f, i, "argument " + std::to_string(i + 1) + " is not a valid REXX symbol.");
  stem += '.';
  return 0;
}

// The handle and the item number of the first two arguments.
int handle_item(bu_frame& f, int& h, int& n) {
  if (int e = bu_dy_whole(f, 0, h)) return e;
  return bu_dy_whole(f, 1, n);
}

int needs_exactly(bu_frame& f, int n, const char* words) {
  bool ok = f.argc == n;
  for (int i = 0; ok && i < n; i++) ok = bu_has(f, i);
  return bu_dy_needs(f, ok, words);
}

// Calls with one argument, a handle.
struct handle_row {
  const char* name;   // upper-case function name
  int (*call)(int);   // the manager's call
};
constexpr handle_row handle_calls[] = {{"DY_UNMAP", dy_unmap}, {"DY_DESTROY", dy_destroy}};

// Setters of a text: handle, item, text.
struct text_row {
  const char* name;                                // upper-case function name
  int (*call)(int, int, const std::string&);       // the manager's call
};
constexpr text_row text_calls[] = {{"DY_SINPUT", dy_stext}, {"DY_SLABEL", dy_slabel}};

// Setters of a number: handle, item, number.
struct number_row {
  const char* name;            // upper-case function name
  int (*call)(int, int, int);  // the manager's call
};
constexpr number_row number_calls[] = {{"DY_SCH", bu_dy_sch}, {"DY_PSCL", bu_dy_pscl}};

// Colour calls: the function's name up to "_COL".
struct colour_row {
  const char* name;                     // upper-case name without the suffix
  int (*call)(int, int, const int*);    // the manager's call
};
constexpr colour_row colour_calls[] = {
    {"DY_BUTTON", dy_Cbutton}, {"DY_CH", dy_Cch},   {"DY_INPUT", dy_Ctext},
    {"DY_LABEL", dy_Clabel},   {"DY_SCL", dy_Cscl}, {"DY_TG", dy_Ctg},
};

bool screen() { return fs_layer() != nullptr && !dy_noscreen; }

// A box that asks for one name, with an optional title as the only
// argument: the name chosen, "" when none was.
int ask_name(bu_frame& f, value& r, const char* title,
             int (*box)(const std::string& title, std::string& name)) {
  if (int e = bu_dy_needs(f, f.argc <= 1, "needs 0 to 1 arguments.")) return e;
  std::string name;
  if (box(bu_has(f, 0) ? std::string(bu_text(f, 0)) : title, name) != 1) name.clear();
  r.set_str(name);
  return 0;
}

}  // namespace

// DY_MAP(handle): "x y width height" of the box shown.
int bu_dy_map(bu_frame& f, value& r) {
  if (int e = needs_exactly(f, 1, "needs 1 argument.")) return e;
  int h = 0, geo[4];
  if (int e = bu_dy_whole(f, 0, h)) return e;
  char buf[64] = "";
  int rc = dy_map(h, geo);
  if (rc == 0) snprintf(buf, sizeof buf, "%d %d %d %d", geo[0], geo[1], geo[2], geo[3]);
  return bu_dy_result(r, rc, buf);
}

// DY_UNMAP(handle), DY_DESTROY(handle).
int bu_dy_unmap(bu_frame& f, value& r) {
  if (int e = needs_exactly(f, 1, "needs 1 argument.")) return e;
  int h = 0;
  if (int e = bu_dy_whole(f, 0, h)) return e;
  for (const handle_row& row : handle_calls)
    if (strcmp(row.name, f.name) == 0) return bu_dy_result(r, row.call(h));
  return bu_dy_result(r, -1);
}
int bu_dy_destroy(bu_frame& f, value& r) { return bu_dy_unmap(f, r); }

// DY_VINPUT(handle, input): the text.
int bu_dy_vinput(bu_frame& f, value& r) {
  if (int e = needs_exactly(f, 2, "needs 2 arguments.")) return e;
  int h = 0, n = 0;
  if (int e = handle_item(f, h, n)) return e;
  std::string text;
  int rc = dy_qtext(h, n, text);
  return bu_dy_result(r, rc, text);
}

// DY_VCH(handle, choice): the number of the text chosen.
int bu_dy_vch(bu_frame& f, value& r) {
  if (int e = needs_exactly(f, 2, "needs 2 arguments.")) return e;
  int h = 0, n = 0, sel = 0;
  if (int e = handle_item(f, h, n)) return e;
  int rc = dy_qch(h, n, sel);
  return bu_dy_result(r, rc, std::to_string(sel));
}

// DY_VTG(handle, group, stem): stem.i is 1 for each toggle on; gives how many.
int bu_dy_vtg(bu_frame& f, value& r) {
  if (int e = needs_exactly(f, 3, "needs 3 arguments.")) return e;
  int h = 0, n = 0;
  std::string stem;
  if (int e = handle_item(f, h, n)) return e;
  if (int e = stem_arg(f, 2, stem)) return e;
  std::vector<int> on;
  int rc = dy_qtg(h, n, on);
  int count = 0;
  std::vector<std::string> texts;
  for (int v : on) {
    texts.push_back(std::to_string(v));
    count += v;
  }
  if (rc == 0) bu_set_list(stem, texts);
  return bu_dy_result(r, rc, std::to_string(count));
}

// DY_VSCL(handle, list, stem [, stem]): the selected lines, and their numbers.
int bu_dy_vscl(bu_frame& f, value& r) {
  bool ok = (f.argc == 3 || f.argc == 4) && bu_has(f, 0) && bu_has(f, 1) && bu_has(f, 2);
  if (int e = bu_dy_needs(f, ok, "needs 3 arguments.")) return e;
  int h = 0, n = 0;
  std::string lines, numbers;
  if (int e = handle_item(f, h, n)) return e;
  if (int e = stem_arg(f, 2, lines)) return e;
  if (bu_has(f, 3))
    if (int e = stem_arg(f, 3, numbers)) return e;
  std::vector<int> sel;
  int rc = dy_qscl(h, n, sel);
  if (rc == 0) {
    std::vector<std::string> texts, nums;
    dy_box* b = dy_get("dy_qscl", h);
    dy_item* it = b ? dy_nth("dy_qscl", b, DY_KSCL, n) : nullptr;
    for (int k : sel) {
      texts.push_back(it ? it->lines[size_t(k - 1)] : std::string());
      nums.push_back(std::to_string(k));
    }
    bu_set_list(lines, texts);
    if (!numbers.empty()) bu_set_list(numbers, nums);
  }
  return bu_dy_result(r, rc, std::to_string(sel.size()));
}

// DY_SINPUT(handle, input, text), DY_SLABEL(handle, label, text).
int bu_dy_sinput(bu_frame& f, value& r) {
  if (int e = needs_exactly(f, 3, "needs 3 arguments.")) return e;
  int h = 0, n = 0;
  if (int e = handle_item(f, h, n)) return e;
  std::string text(bu_text(f, 2));
  for (const text_row& row : text_calls)
    if (strcmp(row.name, f.name) == 0) return bu_dy_result(r, row.call(h, n, text));
  return bu_dy_result(r, -1);
}
int bu_dy_slabel(bu_frame& f, value& r) { return bu_dy_sinput(f, r); }

// DY_SCH(handle, choice, number of the text to choose), DY_PSCL(handle,
// list, line): the line shown first and under the cursor.
int bu_dy_sch_fn(bu_frame& f, value& r) {
  if (int e = needs_exactly(f, 3, "needs 3 arguments.")) return e;
  int h = 0, n = 0, v = 0;
  if (int e = handle_item(f, h, n)) return e;
  if (int e = bu_dy_whole(f, 2, v)) return e;
  for (const number_row& row : number_calls)
    if (strcmp(row.name, f.name) == 0) return bu_dy_result(r, row.call(h, n, v));
  return bu_dy_result(r, -1);
}
int bu_dy_pscl_fn(bu_frame& f, value& r) { return bu_dy_sch_fn(f, r); }

// DY_STG(handle, group, toggle, 0 or 1).
int bu_dy_stg_fn(bu_frame& f, value& r) {
  if (int e = needs_exactly(f, 4, "needs 4 arguments.")) return e;
  int h = 0, n = 0, t = 0, v = 0;
  if (int e = handle_item(f, h, n)) return e;
  if (int e = bu_dy_whole(f, 2, t)) return e;
  if (int e = bu_dy_whole(f, 3, v)) return e;
  return bu_dy_result(r, bu_dy_stg(h, n, t, v != 0));
}

// DY_SSCL(handle, list, stem [, sorted]): the list's lines from a stem.
int bu_dy_sscl_fn(bu_frame& f, value& r) {
  bool ok = (f.argc == 3 || f.argc == 4) && bu_has(f, 0) && bu_has(f, 1) && bu_has(f, 2);
  if (int e = bu_dy_needs(f, ok, "needs 3 to 4 arguments.")) return e;
  int h = 0, n = 0;
  std::string stem;
  if (int e = handle_item(f, h, n)) return e;
  if (int e = stem_arg(f, 2, stem)) return e;
  std::string_view sort = bu_has(f, 3) ? bu_text(f, 3) : "0";
  if (sort != "0" && sort != "1") return bu_fail(f, 3, "the fourth argument must be a logical value.");
  std::vector<std::string> lines;
  long count = 0;
  std::string c = bu_get_text(stem + "0");
  if (!c.empty() && c.size() < 8 && c.find_first_not_of("0123456789") == std::string::npos)
    count = std::stol(c);
  for (long i = 1; i <= count; i++) lines.push_back(bu_get_text(stem + std::to_string(i)));
  return bu_dy_result(r, bu_dy_sscl(h, n, std::move(lines), sort == "1"));
}

// DY_ASCL(handle, list, text [, before line [, select]]).
int bu_dy_ascl_fn(bu_frame& f, value& r) {
  bool ok = f.argc >= 3 && f.argc <= 5 && bu_has(f, 0) && bu_has(f, 1) && bu_has(f, 2);
  if (int e = bu_dy_needs(f, ok, "needs between 3 and 5 arguments.")) return e;
  int h = 0, n = 0, at = 0, sel = 0;
  if (int e = handle_item(f, h, n)) return e;
  if (bu_has(f, 3))
    if (int e = bu_dy_whole(f, 3, at)) return e;
  if (bu_has(f, 4))
    if (int e = bu_dy_whole(f, 4, sel)) return e;
  return bu_dy_result(r, bu_dy_ascl(h, n, std::string(bu_text(f, 2)), at, sel));
}

// DY_DSCL(handle, list, line [, count]).
int bu_dy_dscl_fn(bu_frame& f, value& r) {
  bool ok = (f.argc == 3 || f.argc == 4) && bu_has(f, 0) && bu_has(f, 1) && bu_has(f, 2);
  if (int e = bu_dy_needs(f, ok, "needs 3 to 4 arguments.")) return e;
  int h = 0, n = 0, line = 0, count = 1;
  if (int e = handle_item(f, h, n)) return e;
  if (int e = bu_dy_whole(f, 2, line)) return e;
  if (bu_has(f, 3))
    if (int e = bu_dy_whole(f, 3, count)) return e;
  return bu_dy_result(r, bu_dy_dscl(h, n, line, count));
}

// DY_RSCL(handle, list, line, text).
int bu_dy_rscl_fn(bu_frame& f, value& r) {
  if (int e = needs_exactly(f, 4, "needs 4 arguments.")) return e;
  int h = 0, n = 0, line = 0;
  if (int e = handle_item(f, h, n)) return e;
  if (int e = bu_dy_whole(f, 2, line)) return e;
  return bu_dy_result(r, bu_dy_rscl(h, n, line, std::string(bu_text(f, 3))));
}

// DY_BUTTON_COL and its kin: handle, item, text and background colours.
int bu_dy_colour(bu_frame& f, value& r) {
  std::string name(f.name);
  std::string base = name.substr(0, name.rfind("_COL"));
  bool ok = f.argc == 8;
  for (int i = 0; ok && i < 8; i++) ok = bu_has(f, i);
  if (!ok) return rx_fail(40, name + ": needs 8 arguments.");
  int h = 0, n = 0, rgb[6];
  if (int e = handle_item(f, h, n)) return e;
  if (int e = bu_dy_colours(f, 2, rgb)) return e;
  for (const colour_row& row : colour_calls)
    if (base == row.name) return bu_dy_result(r, row.call(h, n, rgb));
  return bu_dy_result(r, -1);
}

// DY_FOCUS(handle, item): the item, from 1 in the order described.
int bu_dy_focus(bu_frame& f, value& r) {
  if (int e = needs_exactly(f, 2, "needs 2 arguments.")) return e;
  int h = 0, n = 0;
  if (int e = handle_item(f, h, n)) return e;
  return bu_dy_result(r, dy_sfocus(h, n));
}

// DY_FONT(name): the font of the boxes made from now on.
int bu_dy_font(bu_frame& f, value& r) {
  if (!bu_has(f, 0)) return bu_fail(f, 0, "argument 1 missing.");
  std::string name(bu_text(f, 0));
  if (dy_setfont(name) != 0) return bu_fail(f, 0, "invalid \"" + name + "\" font.");
  r.set_str("0");
  return 0;
}

// DY_HEADER(handle, text): the box's caption.
int bu_dy_header(bu_frame& f, value& r) {
  if (int e = needs_exactly(f, 2, "needs 2 arguments.")) return e;
  int h = 0;
  if (int e = bu_dy_whole(f, 0, h)) return e;
  return bu_dy_result(r, dy_sheader(h, std::string(bu_text(f, 1))));
}

// DY_CLIP(text): the text on the clipboard, one line a line of the text.
int bu_dy_clip(bu_frame& f, value& r) {
  if (int e = needs_exactly(f, 1, "needs 1 argument.")) return e;
  std::string text(bu_text(f, 0));
  pl_clip_set(pl_clip_split(text, false));
  r.set_str("0");
  return 0;
}

// DY_FOLDER([title]): the full path of a folder chosen by the user in the
// file box, listing folders only and starting in the working folder; ""
// when none was.
int bu_dy_folder(bu_frame& f, value& r) {
  return ask_name(f, r, "Select a Folder", [](const std::string& title, std::string& path) {
    return dy_filebox(DY_FFOLDER, title, "", path);
  });
}

// DY_PRINTER([title]): the name of a print queue chosen in a box that
// offers the default queue first; "" when the box was cancelled or there is
// no printer to choose.
int bu_dy_printer(bu_frame& f, value& r) { return ask_name(f, r, "Select a Printer", dy_printbox); }

// DY_BEEP(), DY_REFRESH(), DY_DISPATCH().
int bu_dy_beep(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  if (screen()) fsalrm();
  r.set_str("0");
  return 0;
}

int bu_dy_refresh(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  if (screen()) asrefresh();
  r.set_str("0");
  return 0;
}

int bu_dy_dispatch(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  r.set_str(std::to_string(dy_dispatch()));
  return 0;
}
