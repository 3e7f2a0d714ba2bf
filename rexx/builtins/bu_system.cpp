// Helpers of the system families: stem arguments, waits that keep the
// editor's events flowing and give way to a halt, and the messages and RC
// of functions whose failures are results rather than errors.
#include <cerrno>
#include <ctime>
#include <poll.h>

#include "rexx/builtins/bu_system.h"
#include "rexx/exec_int.h"

int bu_stem(bu_frame& f, int i, std::string& stem) {
  std::string_view given = bu_text(f, i);
  stem = bu_symbol_case(given);
  if (stem.empty() || stem.back() != '.') stem += '.';
  std::string base = stem.substr(0, stem.size() - 1);
  if (base.empty() || base.find('.') != std::string::npos || !bu_valid_symbol(base))
    return bu_fail(f, i, "\"" + std::string(given) + "\" is not a valid REXX symbol.");
  return 0;
}

std::string bu_tail(const std::string& stem, std::string_view tail) { return stem + bu_symbol_case(tail); }

void bu_set_list(const std::string& stem, const std::vector<std::string>& items) {
  for (size_t i = 0; i < items.size(); i++) bu_set_var(stem + std::to_string(i + 1), items[i]);
  bu_set_var(stem + "0", std::to_string(items.size()));
}

bool bu_halted() { return rx_halt_pending != 0; }

namespace {

long long now_ms() {
  timespec t;
  clock_gettime(CLOCK_MONOTONIC, &t);
  return (long long)t.tv_sec * 1000 + t.tv_nsec / 1000000;
}

// The longest stretch without a look at the editor's events.
constexpr long long SLICE_MS = 50;

}  // namespace

int bu_wait_fd(int fd, short events, long long ms) {
  long long end = ms < 0 ? -1 : now_ms() + ms;
  for (;;) {
    if (bu_halted()) return -1;
    long long left = end < 0 ? SLICE_MS : end - now_ms();
    if (left <= 0 && end >= 0) left = 0;
    pollfd p = {fd, events, 0};
    int n = poll(fd >= 0 ? &p : nullptr, fd >= 0 ? 1 : 0, (int)(left < SLICE_MS ? left : SLICE_MS));
    if (n > 0) return 1;
    if (n < 0 && errno != EINTR) return 1;  // the call that follows reports the fault
    if (rx_poll_hook) rx_poll_hook();
    if (end >= 0 && now_ms() >= end) return 0;
  }
}

bool bu_wait_ms(long long ms) { return bu_wait_fd(-1, 0, ms) == 0; }

void bu_message(std::string_view text) {
  std::string line(text);
  line += '\n';
  rx_out_trace(line);
}

void bu_set_rc(long long rc) {
  if (rx_st) rx_set_name("RC", value((double)rc));
}
