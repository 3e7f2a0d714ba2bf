// The variable pool as the library's handlers see it: names by text under
// the program's symbol case, read and written in the current frame.
#include <cctype>

#include "rexx/exec_int.h"

std::string bu_symbol_case(std::string_view name) {
  std::string s(name);
  int symcase = rx_st ? rx_st->prog->opts.symcase : CASE_UPPER;
  if (symcase == CASE_LOWER)
    for (char& c : s) c = (char)std::tolower((unsigned char)c);
  else if (symcase != CASE_MIXED)
    for (char& c : s) c = (char)std::toupper((unsigned char)c);
  return s;
}

bool bu_valid_symbol(std::string_view name) { return vars_valid_name(name); }

std::string bu_get_text(std::string_view name) {
  value* v = rx_st ? rx_peek_name(name) : nullptr;
  return v ? val_string(*v) : vars_unset_text(name);
}

bool bu_var_set(std::string_view name) { return rx_st && rx_peek_name(name); }

void bu_set_var(std::string_view name, std::string_view text) {
  if (rx_st) rx_set_name(name, value(text));
}

