// libFuzzer entry: any bytes as a program through the lexer, the rewriting
// passes and the parser; then the tree or the error report is rendered, so
// that every pointer the parser left behind is followed once.
#include "rexx/rexx.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
  rx_src src;
  src.text.assign(reinterpret_cast<const char*>(data), size);
  src.file_name = "fuzz";
  // The first byte, when present, chooses a prelude length so that the
  // prelude form of the report runs too.
  src.prelude_lines = size ? data[0] % 3 : 0;
  rx_prog prog;
  rx_err err;
  int rc = rx_parse(prog, src.text.data(), src.text.size(), err);
  if (rc) {
    if (err.err_num <= 0) std::abort();  // a failure must carry its number
    std::string report = rx_error_report(src, err);
    if (report.empty()) std::abort();
  } else {
    std::string tree = rx_tree_text(prog.block_head);
    std::string toks = rx_toks_text(prog.toks);
    (void)tree;
    (void)toks;
  }
  return 0;
}
