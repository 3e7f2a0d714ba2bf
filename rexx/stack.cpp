// The process stack: PUSH puts a line on top, QUEUE at the bottom, PULL
// and PARSE PULL take from the top. One stack serves the whole process, so
// nested runs and the editor's macros see the same entries.
#include <deque>
#include <string>

#include "rexx/run.h"

namespace {

std::deque<std::string>& entries()
{
  static std::deque<std::string> d;
  return d;
}

}  // namespace

void rx_stack_push(std::string_view s) { entries().emplace_front(s); }

void rx_stack_queue(std::string_view s) { entries().emplace_back(s); }

bool rx_stack_pull(std::string& out)
{
  auto& d = entries();
  if (d.empty()) return false;
  out = std::move(d.front());
  d.pop_front();
  return true;
}

size_t rx_stack_count() { return entries().size(); }

void rx_stack_clear() { entries().clear(); }
