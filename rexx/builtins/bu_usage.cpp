// The usage family: processor, disk and network use measured over an
// interval from the kernel's counters in /proc. The wait keeps the
// editor's events flowing and ends early on a halt (the result is then
// empty). A counter the kernel does not show answers "not available".
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>
#include <algorithm>

#include "rexx/builtins/bu_system.h"

namespace {

// The processor's busy share since the last look, from /proc/stat.
class CCpuUsage {
 public:
  CCpuUsage() { sample(busy0, total0); }
  virtual ~CCpuUsage() = default;
  // The percentage of processor time spent busy since construction (or
  // the previous call), -1 when the counters cannot be read.
  virtual double percent() {
    unsigned long long busy, total;
    if (!sample(busy, total) || total <= total0) return total0 ? 0 : -1;
    double p = 100.0 * (double)(busy - busy0) / (double)(total - total0);
    busy0 = busy, total0 = total;
    return p;
  }

 private:
  static bool sample(unsigned long long& busy, unsigned long long& total) {
    std::ifstream in("/proc/stat");
    std::string cpu;
    unsigned long long v[8] = {};
    busy = total = 0;
    if (!(in >> cpu) || cpu != "cpu") return false;
    for (unsigned long long& x : v) in >> x;
    for (unsigned long long x : v) total += x;
    busy = total - v[3] - v[4];  // all but idle and waiting for I/O
    return total > 0;
  }
  unsigned long long busy0 = 0, total0 = 0;
};

int seconds_arg(bu_frame& f, int i, long long& s) { return bu_whole(f, i, 0, 1, s); }

// Two counters of one device (or of all with "" or "_Total") from a /proc
// table: the numbers in columns a and b after the device's name.
bool counters(const char* file, const std::string& dev, int a, int b, bool net, double& x, double& y) {
  std::ifstream in(file);
  std::string line;
  bool all = dev.empty() || dev == "_Total" || dev == "*", found = false;
  x = y = 0;
  while (std::getline(in, line)) {
    if (net) {
      size_t c = line.find(':');
      if (c == std::string::npos) continue;
      line[c] = ' ';
    }
    std::istringstream ls(line);
    std::string name, w;
    std::vector<std::string> cols;
    if (!net) ls >> w >> w;  // major and minor numbers
    ls >> name;
    while (ls >> w) cols.push_back(w);
    if ((int)cols.size() <= std::max(a, b)) continue;
    bool take = all ? (net ? name != "lo" : access(("/sys/block/" + name).c_str(), F_OK) == 0) : name == dev;
    if (!take) continue;
    found = true;
    x += std::stod(cols[(size_t)a]);
    y += std::stod(cols[(size_t)b]);
  }
  return found;
}

// IOUSAGE and NETUSAGE: "in out" in bytes per second over the interval.
int rates(bu_frame& f, value& r, const char* file, int a, int b, double scale, bool net) {
  if (f.argc != 2 || !bu_has(f, 1)) return bu_fail(f, 0, "must receive 2 argument.");
  long long secs;
  if (int e = seconds_arg(f, 1, secs)) return e;
  std::string dev(bu_text(f, 0));
  double x0, y0, x1, y1;
  if (!counters(file, dev, a, b, net, x0, y0)) return r.set_str("not available"), 0;
  r.set_str("", 0);
  if (!bu_wait_ms(secs * 1000)) return 0;
  if (!counters(file, dev, a, b, net, x1, y1)) return r.set_str("not available"), 0;
  double span = secs > 0 ? (double)secs : 1;
  char buf[80];
  snprintf(buf, sizeof buf, "%.0f %.0f", (x1 - x0) * scale / span, (y1 - y0) * scale / span);
  r.set_str(buf);
  return 0;
}

}  // namespace

// CPUUSAGE(seconds): the processor's busy percentage over the interval.
int bu_cpuusage(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  long long secs;
  if (int e = seconds_arg(f, 0, secs)) return e;
  CCpuUsage u;
  r.set_str("", 0);
  if (!bu_wait_ms(secs * 1000)) return 0;
  double p = u.percent();
  if (p < 0) return r.set_str("not available"), 0;
  char buf[40];
  snprintf(buf, sizeof buf, "%.0f", p);
  r.set_str(buf);
  return 0;
}

// IOUSAGE(disk, seconds): bytes read and written per second ("" or
// "_Total" for every disk), from the sectors of /proc/diskstats.
int bu_iousage(bu_frame& f, value& r) { return rates(f, r, "/proc/diskstats", 2, 6, 512, false); }

// NETUSAGE(interface, seconds): bytes received and sent per second (""
// or "_Total" for every interface but the loopback).
int bu_netusage(bu_frame& f, value& r) { return rates(f, r, "/proc/net/dev", 0, 8, 1, true); }
