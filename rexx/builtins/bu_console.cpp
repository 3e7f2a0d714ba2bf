// The console and the rest of the system rows: asking on the console,
// clearing it, the machine's name, adapters and folders, the environment,
// waits, and changing an argument of the running routine. Rows for
// services Linux does not have answer "not available".
#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <ifaddrs.h>
#include <linux/if_packet.h>
#include <map>
#include <net/if.h>
#include <poll.h>
#include <unistd.h>

#include "platform/platform.h"
#include "rexx/builtins/bu_system.h"
#include "rexx/exec_int.h"

namespace {

constexpr const char* NOT_AVAILABLE = "not available";

int text(value& r, const std::string& s) {
  r.set_str(s);
  return 0;
}

std::string env_or(const char* var, const std::string& dflt) {
  const char* v = getenv(var);
  return v && *v == '/' ? std::string(v) : dflt;
}

std::string home() { return env_or("HOME", "/"); }

// A folder of ~/.config/user-dirs.dirs ("$HOME/Music"), or the default
// under the home folder.
std::string user_dir(const char* key, const char* dflt) {
  std::ifstream in(env_or("XDG_CONFIG_HOME", home() + "/.config") + "/user-dirs.dirs");
  std::string line, want = std::string(key) + "=\"";
  while (std::getline(in, line)) {
    if (line.rfind(want, 0) != 0) continue;
    std::string v = line.substr(want.size());
    if (!v.empty() && v.back() == '"') v.pop_back();
    if (v.rfind("$HOME", 0) == 0) v = home() + v.substr(5);
    return v;
  }
  return home() + "/" + dflt;
}

struct folder_row {
  const char* word;                 // the known-folder word
  std::string (*where)();           // its folder; null: no such folder here
};
constexpr folder_row folders[] = {
    {"Profile", [] { return home(); }},
    {"LocalAppData", [] { return env_or("XDG_DATA_HOME", home() + "/.local/share"); }},
    {"RoamingAppData", [] { return env_or("XDG_CONFIG_HOME", home() + "/.config"); }},
    {"LocalAppDataLow", [] { return env_or("XDG_CACHE_HOME", home() + "/.cache"); }},
    {"ProgramData", [] { return std::string("/etc/xdg"); }},
    {"Desktop", [] { return user_dir("XDG_DESKTOP_DIR", "Desktop"); }},
    {"Documents", [] { return user_dir("XDG_DOCUMENTS_DIR", "Documents"); }},
    {"Downloads", [] { return user_dir("XDG_DOWNLOAD_DIR", "Downloads"); }},
    {"Music", [] { return user_dir("XDG_MUSIC_DIR", "Music"); }},
    {"Pictures", [] { return user_dir("XDG_PICTURES_DIR", "Pictures"); }},
    {"Videos", [] { return user_dir("XDG_VIDEOS_DIR", "Videos"); }},
    {"Templates", [] { return user_dir("XDG_TEMPLATES_DIR", "Templates"); }},
    {"Public", [] { return user_dir("XDG_PUBLICSHARE_DIR", "Public"); }},
    {"Fonts", [] { return env_or("XDG_DATA_HOME", home() + "/.local/share") + "/fonts"; }},
    {"Startup", [] { return env_or("XDG_CONFIG_HOME", home() + "/.config") + "/autostart"; }},
    {"RecycleBinFolder", [] { return pl_trash_dir(); }},
    {"ProgramFiles", [] { return std::string("/usr/local"); }},
    {"System", [] { return std::string("/usr/bin"); }},
    {"Windows", nullptr},
    {"AdminTools", nullptr},
    {"CommonAdminTools", nullptr},
    {"Cookies", nullptr},
    {"History", nullptr},
    {"NetHood", nullptr},
    {"PrintHood", nullptr},
};

// The default route's gateway of an interface from /proc/net/route
// ("0.0.0.0" when it has none).
std::string gateway(const std::string& ifname) {
  std::ifstream in("/proc/net/route");
  std::string line;
  std::getline(in, line);  // the heading
  while (std::getline(in, line)) {
    char name[64];
    unsigned dest, gw;
    if (sscanf(line.c_str(), "%63s %x %x", name, &dest, &gw) != 3 || ifname != name || dest != 0) continue;
    in_addr a;
    a.s_addr = gw;  // the kernel writes it in network order
    char buf[INET_ADDRSTRLEN];
    return inet_ntop(AF_INET, &a, buf, sizeof buf) ? buf : "0.0.0.0";
  }
  return "0.0.0.0";
}

}  // namespace

// ASKCONS([prompt]): a line typed on the console; the wait ends on a halt.
int bu_askcons(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 1)) return e;
  if (rx_console.claim) rx_console.claim();
  int fd = open("/dev/tty", O_RDWR | O_CLOEXEC);
  int in = fd >= 0 ? fd : 0, out = fd >= 0 ? fd : 2;
  std::string_view prompt = bu_text(f, 0);
  if (!prompt.empty()) pl_write_all(out, prompt.data(), prompt.size());
  std::string line;
  char c;
  while (bu_wait_fd(in, POLLIN, -1) == 1 && read(in, &c, 1) == 1 && c != '\n') line += c;
  if (fd >= 0) close(fd);
  if (rx_console.release) rx_console.release();
  return text(r, line);
}

// OPEN_CONS(): the program's console is the terminal it runs on.
int bu_open_cons(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  if (isatty(0) || isatty(1) || isatty(2)) return r.set_num(0, 0), 0;
  return text(r, NOT_AVAILABLE);
}

int bu_close_cons(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  r.set_num(0, 0);
  return 0;
}

// CLS(), CLEAR(), SysCls(): the terminal cleared when output goes to one.
int bu_cls(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  if (isatty(1)) {
    fflush(stdout);
    pl_write_all(1, "\x1b[H\x1b[2J", 7);
  }
  r.set_num(0, 0);
  return 0;
}

int bu_activatekeyboardlayout(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 2)) return e;
  return text(r, NOT_AVAILABLE);
}

// GetAdaptersInfo(stem): one entry per network interface, with its index,
// name, hardware address, type, first IPv4 address and mask, and gateway.
int bu_getadaptersinfo(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string stem;
  if (int e = bu_stem(f, 0, stem)) return e;
  ifaddrs* all = nullptr;
  if (getifaddrs(&all) != 0) return text(r, NOT_AVAILABLE);
  struct adapter {
    std::string mac, ip, mask;  // texts of the entry
    unsigned flags = 0;         // IFF_ bits
  };
  std::map<std::string, adapter> byname;
  for (ifaddrs* a = all; a; a = a->ifa_next) {
    adapter& ad = byname[a->ifa_name];
    ad.flags = a->ifa_flags;
    if (!a->ifa_addr) continue;
    char buf[INET_ADDRSTRLEN];
    if (a->ifa_addr->sa_family == AF_PACKET) {
      const sockaddr_ll* l = (const sockaddr_ll*)a->ifa_addr;
      std::string mac;
      for (int i = 0; i < l->sll_halen && i < 8; i++) {
        snprintf(buf, sizeof buf, "%s%2.2X", i ? "-" : "", l->sll_addr[i]);
        mac += buf;
      }
      ad.mac = mac;
    } else if (a->ifa_addr->sa_family == AF_INET && ad.ip.empty()) {
      inet_ntop(AF_INET, &((sockaddr_in*)a->ifa_addr)->sin_addr, buf, sizeof buf);
      ad.ip = buf;
      if (a->ifa_netmask) inet_ntop(AF_INET, &((sockaddr_in*)a->ifa_netmask)->sin_addr, buf, sizeof buf), ad.mask = buf;
    }
  }
  freeifaddrs(all);
  int n = 0;
  for (const auto& [name, ad] : byname) {
    std::string at = stem + std::to_string(++n) + ".";
    unsigned index = if_nametoindex(name.c_str());
    bu_set_var(bu_tail(at, "ComboIndex"), std::to_string(index));
    bu_set_var(bu_tail(at, "Index"), std::to_string(index));
    bu_set_var(bu_tail(at, "AdapterName"), name);
    bu_set_var(bu_tail(at, "Description"), name);
    bu_set_var(bu_tail(at, "Address"), ad.mac);
    bu_set_var(bu_tail(at, "Type"), ad.flags & IFF_LOOPBACK ? "LOOPBACK" : ad.mac.empty() ? "OTHER" : "ETHERNET");
    bu_set_var(bu_tail(at, "IpAddress"), ad.ip.empty() ? "0.0.0.0" : ad.ip);
    bu_set_var(bu_tail(at, "IpMask"), ad.mask.empty() ? "0.0.0.0" : ad.mask);
    bu_set_var(bu_tail(at, "GatewayAddress"), gateway(name));
  }
  bu_set_var(stem + "0", std::to_string(n));
  r.set_num(0, 0);
  return 0;
}

// SHGetKnownFolderPath(word): the folder the word stands for here.
int bu_shgetknownfolderpath(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string_view w = bu_text(f, 0);
  for (const folder_row& row : folders)
    if (strcasecmp(std::string(w).c_str(), row.word) == 0) return text(r, row.where ? row.where() : NOT_AVAILABLE);
  return bu_fail(f, 0, "unknown folder \"" + std::string(w) + "\".");
}

int bu_hostname(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  char buf[256] = "";
  gethostname(buf, sizeof buf - 1);
  return text(r, buf);
}

// XHOME(): the folder of the running program.
int bu_xhome(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  std::string d = pl_exedir();
  if (d.size() > 1 && d.back() == '/') d.pop_back();
  return text(r, d);
}

int bu_arch(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  return text(r, "linux");
}

int bu_version(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  return text(r, "VORTA 1.0");
}

int bu_getenv(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  const char* v = getenv(std::string(bu_text(f, 0)).c_str());
  return text(r, v ? v : "");
}

// SETENV(name, value) and PUTENV("name=value"): 0, or the error number.
int bu_setenv(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 2)) return e;
  std::string name(bu_text(f, 0)), val(bu_text(f, 1));
  if (!bu_has(f, 1)) {
    size_t eq = name.find('=');
    if (eq == std::string::npos) return bu_fail(f, 0, "argument 1 must be \"name=value\".");
    val = name.substr(eq + 1);
    name.resize(eq);
  }
  if (name.empty() || name.find('=') != std::string::npos) return r.set_num(EINVAL, 0), 0;
  r.set_num(setenv(name.c_str(), val.c_str(), 1) == 0 ? 0 : errno, 0);
  return 0;
}

int bu_unsetenv(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string name(bu_text(f, 0));
  r.set_num(!name.empty() && unsetenv(name.c_str()) == 0 ? 0 : EINVAL, 0);
  return 0;
}

namespace {

// A wait of a whole number of units; short ones sleep outright, longer ones
// keep the editor's events flowing and end on a halt.
int pause(bu_frame& f, value& r, long long unit_us) {
  if (int e = bu_count(f, 1, 1)) return e;
  long long n;
  if (int e = bu_whole(f, 0, 0, 0, n)) return e;
  long long us = n * unit_us;
  if (us < 50000) usleep((useconds_t)us);
  else bu_wait_ms((us + 999) / 1000);
  r.set_num(0, 0);
  return 0;
}

}  // namespace

// SLEEP(seconds) and SysSleep, USLEEP(microseconds).
int bu_sleep(bu_frame& f, value& r) { return pause(f, r, 1000000); }
int bu_usleep(bu_frame& f, value& r) { return pause(f, r, 1); }

// SETARG(n, value): argument n of the running routine becomes value (left
// out when value is); ARG() sees the change.
int bu_setarg(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 2)) return e;
  long long n;
  if (int e = bu_whole(f, 0, 1, 1, n)) return e;
  if (!rx_st) return bu_fail(f, 0, "no routine is running.");
  if (n > 1000) return bu_fail(f, 0, "argument 1 must be 1000 or less.");
  rx_level& lv = rx_st->lv;
  if ((size_t)n > lv.args.size()) {
    lv.args.resize((size_t)n);
    lv.omitted.resize((size_t)n, 1);
  }
  lv.omitted[(size_t)n - 1] = !bu_has(f, 1);
  lv.args[(size_t)n - 1] = bu_has(f, 1) ? value(bu_text(f, 1)) : value();
  r.set_num(0, 0);
  return 0;
}
