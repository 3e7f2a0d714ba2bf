// A file's colours, worked out only as far as they are asked for: the state
// at the start of every 256th line is kept, a line is coloured from the
// nearest kept state before it, and an edit forgets only the states after
// it. What the page shows is what one pass from the file's top gives.
#include "syntax/syn.h"

namespace {
constexpr int32_t STEP = 256;  // lines between kept states
}

void syn_colouring::reset() {
  marks_.clear();
  last_line_ = -1;
}

void syn_colouring::changed(int32_t line) {
  // The state at the start of line k * STEP depends only on the lines above it.
  size_t keep = line < 0 ? 0 : size_t(line / STEP) + 1;
  if (marks_.size() > keep) marks_.resize(keep);
  if (last_line_ >= line - 1) last_line_ = -1;
}

syn_state syn_colouring::state_at(const syn_block &b, const syn_lines &f, int32_t i) {
  if (last_line_ >= 0 && last_line_ == i - 1) return last_end_;  // the next row of a page
  if (marks_.empty()) marks_.push_back(syn_state{});
  int32_t k = i / STEP;
  while (int32_t(marks_.size()) <= k) {
    syn_state st = marks_.back();
    int32_t from = (int32_t(marks_.size()) - 1) * STEP;
    for (int32_t l = from; l < from + STEP && l < f.count(); l++) {
      std::string_view t = f.line(l);
      st = syn_line(b, t.data(), int32_t(t.size()), st, nullptr);
    }
    marks_.push_back(st);
  }
  syn_state st = marks_[size_t(k)];
  for (int32_t l = k * STEP; l < i && l < f.count(); l++) {
    std::string_view t = f.line(l);
    st = syn_line(b, t.data(), int32_t(t.size()), st, nullptr);
  }
  return st;
}

bool syn_colouring::colours(const syn_block &b, const syn_lines &f, int32_t i, std::vector<uint8_t> &out) {
  if (i < 0 || i >= f.count()) return false;
  syn_state st = state_at(b, f, i);
  std::string_view t = f.line(i);
  out.resize(t.size());
  last_end_ = syn_line(b, t.data(), int32_t(t.size()), st, out.data());
  last_line_ = i;
  return true;
}
