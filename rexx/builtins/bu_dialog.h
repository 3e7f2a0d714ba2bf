// The dialog box family: DY_START to DY_END build a description item by
// item and make the box; the others map, query, change and colour open boxes.
// What they share: the argument checks in the family's own wording.
#pragma once

#include <string>

#include "rexx/builtins/builtins.h"

// A number at argument i, else "NAME(): the <ordinal> argument must be a
// number." (ordinal true) or "NAME(): argument N must be a number.".
int bu_dy_number(bu_frame& f, int i, bool ordinal, double& out);
// A whole number (a handle or an item number), checked as bu_dy_number.
int bu_dy_whole(bu_frame& f, int i, int& out);
// Six colour values from argument i: each a number from -1 to 255.
int bu_dy_colours(bu_frame& f, int i, int rgb[6]);
// "NAME(): needs ..." when the count is not one of those allowed.
int bu_dy_needs(bu_frame& f, bool ok, const char* words);
// The outcome of a manager call: an empty result and the manager's message
// on the error stream when it failed, else text.
int bu_dy_result(value& r, int rc, const std::string& text = "0");

int bu_dy_start(bu_frame& f, value& r);
int bu_dy_label(bu_frame& f, value& r);
int bu_dy_button(bu_frame& f, value& r);
int bu_dy_input(bu_frame& f, value& r);
int bu_dy_tg(bu_frame& f, value& r);
int bu_dy_ch(bu_frame& f, value& r);
int bu_dy_scl(bu_frame& f, value& r);
int bu_dy_end(bu_frame& f, value& r);

int bu_dy_map(bu_frame& f, value& r);
int bu_dy_unmap(bu_frame& f, value& r);
int bu_dy_destroy(bu_frame& f, value& r);
int bu_dy_vinput(bu_frame& f, value& r);
int bu_dy_vch(bu_frame& f, value& r);
int bu_dy_vtg(bu_frame& f, value& r);
int bu_dy_vscl(bu_frame& f, value& r);
int bu_dy_sinput(bu_frame& f, value& r);
int bu_dy_slabel(bu_frame& f, value& r);
int bu_dy_sch_fn(bu_frame& f, value& r);
int bu_dy_stg_fn(bu_frame& f, value& r);
int bu_dy_sscl_fn(bu_frame& f, value& r);
int bu_dy_ascl_fn(bu_frame& f, value& r);
int bu_dy_dscl_fn(bu_frame& f, value& r);
int bu_dy_pscl_fn(bu_frame& f, value& r);
int bu_dy_rscl_fn(bu_frame& f, value& r);
int bu_dy_colour(bu_frame& f, value& r);
int bu_dy_focus(bu_frame& f, value& r);
int bu_dy_font(bu_frame& f, value& r);
int bu_dy_header(bu_frame& f, value& r);
int bu_dy_clip(bu_frame& f, value& r);
int bu_dy_folder(bu_frame& f, value& r);
int bu_dy_printer(bu_frame& f, value& r);
int bu_dy_open(bu_frame& f, value& r);
int bu_dy_save(bu_frame& f, value& r);
int bu_dy_warp(bu_frame& f, value& r);
int bu_dy_beep(bu_frame& f, value& r);
int bu_dy_refresh(bu_frame& f, value& r);
int bu_dy_dispatch(bu_frame& f, value& r);
