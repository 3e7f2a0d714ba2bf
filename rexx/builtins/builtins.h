// The built-in function frame: the table of built-in functions, the call
// record a handler receives, and the shared helpers through which every
// handler checks its arguments and reports a bad call.
//
// The caller (the expression walker) evaluates the arguments into value
// records, fills a bu_frame, and calls the row's handler. A handler gives 0
// with its result in r, BU_NORESULT when it returns nothing, or an error
// number; then rx_err_num/rx_err_text hold the error and bad_arg names the
// argument whose token the error position should point at.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "rexx/value.h"

constexpr int BU_NORESULT = -1;

struct bu_frame {
  const char* name = "";                  // the function's upper-case name, for messages
  value** args = nullptr;                 // evaluated arguments; null for an omitted one
  int argc = 0;                           // number of arguments, omitted ones included
  int bad_arg = 0;                        // zero-based argument blamed by the last failure
  char scratch[4][VAL_NUMBUF];            // slots for rendering numeric arguments
};

using bu_handler = int (*)(bu_frame& f, value& r);

enum : uint32_t {
  BU_ALIAS = 1u << 0,  // a second name for the handler of an earlier row
};

struct bu_row {
  const char* name;    // the name as written
  bu_handler handler;  // null while the function's family is not built in
  uint32_t flag;       // BU_* bits
};

enum bu_case {
  BU_CASE_MIXED = 0,  // names compared as written
  BU_CASE_UPPER = 1,  // names folded to upper case (the default)
  BU_CASE_LOWER = 2,  // names folded to lower case
};

// The whole table, in its fixed order.
extern const bu_row bu_table[];
extern const int bu_table_rows;

// The row of a name under a symbol case mode, or null when no built-in of
// that name has a handler.
const bu_row* bu_lookup(std::string_view name, bu_case mode);

// Calls the handler of a row of bu_table with evaluated arguments (null for an omitted one):
// fills the frame with the upper-case name for messages. Gives the handler's
// code; *bad_arg gets the blamed argument after a failure.
int bu_call(const bu_row* row, value** args, int argc, value& r, int* bad_arg);

// ---- shared helpers ----------------------------------------------------------

// Reports a bad call: error 40 (or num) with "NAME(): " + msg, blaming argument index.
int bu_fail(bu_frame& f, int index, std::string_view msg);
int bu_fail_num(bu_frame& f, int num, int index, std::string_view msg);
// Checks the count and that the first `min` arguments are present; on
// failure reports "must receive N arguments." and the like.
int bu_count(bu_frame& f, int min, int max);
// Whether argument i was given.
inline bool bu_has(const bu_frame& f, int i) { return i < f.argc && f.args[i]; }
// Text of argument i (a number is rendered into scratch slot i % 4).
std::string_view bu_text(bu_frame& f, int i);
// A whole-number argument, rounded to 9 digits, not below `min`.
// Not a number, or more than 9 digits: "argument N must be a whole
// number."; not whole or below min: "argument N must be a positive
// integer.". An omitted one gives dflt.
int bu_whole(bu_frame& f, int i, long long min, long long dflt, long long& out);
// A whole number of any sign ("argument N must be a whole number.").
int bu_integer(bu_frame& f, int i, long long dflt, long long& out);
// A padding character, blank when omitted.
int bu_pad(bu_frame& f, int i, char& pad);
// A 0/1 flag argument (0 when omitted).
int bu_flag(bu_frame& f, int i, bool& out);
// The first letter of an option argument, upper-cased; dflt when omitted.
// `allowed` lists the accepted letters.
int bu_option(bu_frame& f, int i, const char* allowed, char dflt, char& out);

// The variable pool by name (names are folded to the program's symbol case
// by bu_symbol_case; the others take names as they are).
std::string bu_symbol_case(std::string_view name);
bool bu_valid_symbol(std::string_view name);
std::string bu_get_text(std::string_view name);  // an unset name reads as itself
bool bu_var_set(std::string_view name);
void bu_set_var(std::string_view name, std::string_view text);

// ---- handlers of the string, word and conversion family ------------------------

int bu_abbrev(bu_frame& f, value& r);
int bu_center(bu_frame& f, value& r);
int bu_change(bu_frame& f, value& r);
int bu_compare(bu_frame& f, value& r);
int bu_copies(bu_frame& f, value& r);
int bu_delstr(bu_frame& f, value& r);
int bu_index(bu_frame& f, value& r);
int bu_insert(bu_frame& f, value& r);
int bu_justify(bu_frame& f, value& r);
int bu_lastpos(bu_frame& f, value& r);
int bu_left(bu_frame& f, value& r);
int bu_length(bu_frame& f, value& r);
int bu_lower(bu_frame& f, value& r);
int bu_overlay(bu_frame& f, value& r);
int bu_pos(bu_frame& f, value& r);
int bu_reverse(bu_frame& f, value& r);
int bu_right(bu_frame& f, value& r);
int bu_strip(bu_frame& f, value& r);
int bu_substr(bu_frame& f, value& r);
int bu_translate(bu_frame& f, value& r);
int bu_upper(bu_frame& f, value& r);
int bu_verify(bu_frame& f, value& r);
int bu_xrange(bu_frame& f, value& r);
int bu_comma(bu_frame& f, value& r);
int bu_fwc(bu_frame& f, value& r);

int bu_delword(bu_frame& f, value& r);
int bu_find(bu_frame& f, value& r);
int bu_space(bu_frame& f, value& r);
int bu_subword(bu_frame& f, value& r);
int bu_word(bu_frame& f, value& r);
int bu_wordindex(bu_frame& f, value& r);
int bu_wordlength(bu_frame& f, value& r);
int bu_wordpos(bu_frame& f, value& r);
int bu_words(bu_frame& f, value& r);

int bu_b2x(bu_frame& f, value& r);
int bu_bitand(bu_frame& f, value& r);
int bu_bitor(bu_frame& f, value& r);
int bu_bitxor(bu_frame& f, value& r);
int bu_c2d(bu_frame& f, value& r);
int bu_c2x(bu_frame& f, value& r);
int bu_d2c(bu_frame& f, value& r);
int bu_d2x(bu_frame& f, value& r);
int bu_datatype(bu_frame& f, value& r);
int bu_x2b(bu_frame& f, value& r);
int bu_x2c(bu_frame& f, value& r);
int bu_x2d(bu_frame& f, value& r);

int bu_abs(bu_frame& f, value& r);
int bu_digits(bu_frame& f, value& r);
int bu_form(bu_frame& f, value& r);
int bu_format(bu_frame& f, value& r);
int bu_fuzz(bu_frame& f, value& r);
int bu_max(bu_frame& f, value& r);
int bu_min(bu_frame& f, value& r);
int bu_sign(bu_frame& f, value& r);
int bu_trunc(bu_frame& f, value& r);

int bu_date(bu_frame& f, value& r);
int bu_time(bu_frame& f, value& r);

int bu_sin(bu_frame& f, value& r);
int bu_cos(bu_frame& f, value& r);
int bu_tan(bu_frame& f, value& r);
int bu_asin(bu_frame& f, value& r);
int bu_acos(bu_frame& f, value& r);
int bu_atan(bu_frame& f, value& r);
int bu_pi(bu_frame& f, value& r);
int bu_random(bu_frame& f, value& r);

int bu_rpos(bu_frame& f, value& r);
int bu_upperw(bu_frame& f, value& r);
int bu_c2o(bu_frame& f, value& r);
int bu_obf(bu_frame& f, value& r);
int bu_deobf(bu_frame& f, value& r);
int bu_sort(bu_frame& f, value& r);
int bu_parg(bu_frame& f, value& r);
int bu_linesize(bu_frame& f, value& r);
int bu_externals(bu_frame& f, value& r);
int bu_regcomp(bu_frame& f, value& r);
int bu_regexec(bu_frame& f, value& r);
int bu_rchange(bu_frame& f, value& r);

// Streams: the handlers, and the closing of every open stream (pending
// output written) when the outermost run ends.
void bu_streams_close_all();
int bu_linein(bu_frame& f, value& r);
int bu_lineout(bu_frame& f, value& r);
int bu_charin(bu_frame& f, value& r);
int bu_charout(bu_frame& f, value& r);
int bu_lines(bu_frame& f, value& r);
int bu_chars(bu_frame& f, value& r);
int bu_linelast(bu_frame& f, value& r);
int bu_stream(bu_frame& f, value& r);
int bu_stdin(bu_frame& f, value& r);
int bu_stdout(bu_frame& f, value& r);
int bu_stderr(bu_frame& f, value& r);

int bu_chdir(bu_frame& f, value& r);
int bu_cwd(bu_frame& f, value& r);
int bu_userid(bu_frame& f, value& r);
int bu_mklistfiles(bu_frame& f, value& r);
int bu_sysversion(bu_frame& f, value& r);
int bu_sysmkdir(bu_frame& f, value& r);
int bu_sysrmdir(bu_frame& f, value& r);
int bu_sysfiledelete(bu_frame& f, value& r);
int bu_syssearchpath(bu_frame& f, value& r);
int bu_systempfilename(bu_frame& f, value& r);
int bu_syssetpriority(bu_frame& f, value& r);
int bu_sysfilesearch(bu_frame& f, value& r);
int bu_sysfiletree(bu_frame& f, value& r);
int bu_dup2(bu_frame& f, value& r);
