// Numbered interpreter errors: their texts and the report of a syntax or
// scanning error (header with the source line, caret, error line).
#include "rexx/rexx.h"

#include <cstdio>

namespace {

struct errrow {
  int num;           // error number
  const char* text;  // its text; null for a number reserved but never raised
};

constexpr errrow errtab[] = {
  {1, "Unmatched Quote."},
  {2, "Unmatched Double Quote."},
  {4, "Program interrupted."},
  {5, "Machine resources exhausted."},
  {6, "Unmatched /*."},
  {7, "WHEN or OTHERWISE expected."},
  {8, "Unexpected THEN or ELSE."},
  {15, "Invalid hexadecimal constant."},
  {16, "Label not found."},
  {18, "THEN expected."},
  {20, "Symbol expected."},
  {24, "Invalid TRACE request."},
  {25, "Invalid sub-keyword found."},
  {26, "Invalid whole number."},
  {27, "Invalid DO syntax."},
  {28, "Invalid LEAVE or ITERATE."},
  {31, "Name starts with number or dot."},
  {34, "Logical value not 0 or 1."},
  {38, "Invalid template or pattern."},
  {40, "Incorrect call to routine."},
  {41, "Bad arithmetic conversion."},
  {42, "Arithmetics overflow/underflow."},
  {43, "Routine not found."},
  {44, "Function did not return data."},
  {46, "Invalid variable reference."},
  {50, "Invalid IF syntax."},
  {51, "Zero divide."},
  {52, "Invalid SELECT syntax."},
  {53, "WHEN expected before OTHERWISE."},
  {54, "Invalid CALL label."},
  {55, "Syntax error."},
  {56, "Environment not found."},
  {57, "No match: OTHERWISE expected."},
  {58, "Unable to create a pipe."},
  {59, "Error while reading a pipe."},
  {60, "Command not found."},
  {61, "Parser stack overflow."},
  {62, "Out of memory."},
  {63, "Invalid directory."},
  {64, "Incomplete DO."},
  {65, "Incomplete SELECT."},
  {66, "Incomplete IF."},
  {67, "Invalid binary string."},
  {68, "Unable to display panel."},
  {69, "No opened panel."},
  {70, "Unable to save panel."},
  {71, "Uninitialized variable."},
  {72, "Handle not found."},
  {73, "Invalid input number."},
  {74, "Invalid toggle number."},
  {75, "Invalid toggle rank."},
  {76, "Invalid compiled file."},
  {77, nullptr},
  {78, "Index error."},
  {79, "Index overflow."},
  {80, "Invalid choice number."},
  {81, "Invalid list number."},
  {82, "Invalid list rank."},
  {83, "Item not found."},
  {84, "Invalid RGB value."},
  {85, "Unable to start thread."},
  {86, "Program does not start."},
  {87, nullptr},
  {88, "Invalid SOCKET domain."},
  {89, "Invalid SOCKET type."},
  {90, "Invalid SOCKET protocol."},
  {91, "Invalid SOCKET level."},
  {92, "Invalid socket-level option."},
  {93, "Invalid socket-level parameter."},
  {94, "Invalid family address."},
  {95, "Invalid HOST address."},
  {96, "Invalid SOCKET port number."},
  {98, "Invalid SIGNAL name."},
};
static_assert(sizeof errtab / sizeof errtab[0] == 73);

constexpr const char* unknown_error = "Unknown error.";

template <class... A> std::string format(const char* fmt, A... args)
{
  int n = std::snprintf(nullptr, 0, fmt, args...);
  std::string out(n > 0 ? n : 0, '\0');
  std::snprintf(out.data(), out.size() + 1, fmt, args...);
  return out;
}

// Line ln (from 0) of a text, without its line end.
std::string nth_line(const std::string& text, int ln)
{
  size_t start = 0;
  for (int i = 0; i < ln; i++) {
    size_t nl = text.find('\n', start);
    if (nl == std::string::npos) return "";
    start = nl + 1;
  }
  size_t end = text.find('\n', start);
  if (end == std::string::npos) end = text.size();
  if (end > start && text[end - 1] == '\r') end--;
  return text.substr(start, end - start);
}

}  // namespace

const char* rx_error_text(int n)
{
  for (const errrow& r : errtab)
    if (r.num == n) return r.text ? r.text : unknown_error;
  return unknown_error;
}

std::string rx_error_report(const rx_src& src, const rx_err& err)
{
  std::string source = nth_line(src.text, err.err_line);
  bool in_prelude = !src.interpreted && err.err_line < src.prelude_lines;
  int shown = in_prelude ? err.err_line + 1 : err.err_line - src.prelude_lines + 1;
  const char* text = rx_error_text(err.err_num);
  const char* file = src.file_name.c_str();
  std::string header, last;
  if (src.interpreted) {
    header = "    *interpreted* ";
    last = format("Error %d: %s", err.err_num, text);
  } else if (in_prelude) {
    header = format("    %d (.molbarc) +++ ", shown);
    last = format("Error %d on line %d in file \"%s\" (while processing \".molbarc\"): %s",
                  err.err_num, shown, file, text);
  } else {
    header = format("    %d +++ ", shown);
    last = format("Error %d on line %d in file \"%s\": %s", err.err_num, shown, file, text);
  }
  size_t col = err.err_col < 0 ? 0 : static_cast<size_t>(err.err_col);
  if (col > source.size()) col = source.size();
  std::string out = header + source + "\n";
  out.append(header.size() + col, ' ');
  out += "^\n";
  out += last + "\n";
  if (!err.err_msg.empty()) out += "molba: " + err.err_msg + "\n";
  return out;
}
