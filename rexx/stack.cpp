// The process stack: PUSH puts a line on top, QUEUE at the bottom, PULL
// and PARSE PULL take from the top. One stack serves the whole process, so
// nested runs and the editor's macros see the same entries.
//
// MAKEBUF sets the entries present aside and starts an empty list; DROPBUF
// throws the newer lists away and gives the older one back, so a macro that
// brackets its use of the stack with the two leaves its caller's entries as
// they were. QUEUED() and SENTRIES count the current list.
#include <deque>
#include <string>
#include <vector>

#include "rexx/run.h"

namespace {

std::vector<std::deque<std::string>>& lists()
{
  static std::vector<std::deque<std::string>> l(1);
  return l;
}

std::deque<std::string>& entries() { return lists().back(); }

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

void rx_stack_clear()
{
  lists().resize(1);
  lists()[0].clear();
}

int rx_stack_makebuf()
{
  lists().emplace_back();
  return (int)lists().size() - 1;
}

int rx_stack_dropbuf(long long n)
{
  auto& l = lists();
  long long depth = (long long)l.size() - 1;
  if (n == -1) n = depth;
  if (n < 0) return 1;
  if (n > depth) return 2;
  l.resize((size_t)(n > 0 ? n : 1));
  if (n == 0) l[0].clear();
  return 0;
}

void rx_stack_desbuf() { entries().clear(); }
