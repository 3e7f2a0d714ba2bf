// The socket family: IPv4 TCP and UDP sockets under their Sock... names and
// the Berkeley aliases. A call that the system refuses gives -1 (or 0 for
// the host lookups) and keeps the error for SockSock_Errno and the variable
// ERRNO; argument faults are errors 40 and 88 to 96. Only sockets this
// family made can be used or closed through it, so a stray number never
// reaches the program's own files. Waits (connect, accept, receive,
// select) give way to the editor's events and to a halt.
#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <set>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "rexx/builtins/bu_system.h"

namespace {

std::set<int> ours;    // sockets made by SockSocket or SockAccept
int last_err = 0;      // the last error, for SockSock_Errno

constexpr long long CONNECT_MS = 30000;  // a connection not made by then is ETIMEDOUT

struct err_word {
  int num;           // errno value
  const char* word;  // its name for ERRNO
};
constexpr err_word err_words[] = {
    {EINTR, "EINTR"}, {EBADF, "EBADF"}, {EACCES, "EACCES"}, {EFAULT, "EFAULT"}, {EINVAL, "EINVAL"},
    {EMFILE, "EMFILE"}, {EWOULDBLOCK, "EWOULDBLOCK"}, {EINPROGRESS, "EINPROGRESS"}, {EALREADY, "EALREADY"},
    {ENOTSOCK, "ENOTSOCK"}, {EDESTADDRREQ, "EDESTADDRREQ"}, {EMSGSIZE, "EMSGSIZE"}, {EPROTOTYPE, "EPROTOTYPE"},
    {ENOPROTOOPT, "ENOPROTOOPT"}, {EPROTONOSUPPORT, "EPROTONOSUPPORT"}, {ESOCKTNOSUPPORT, "ESOCKTNOSUPPORT"},
    {EOPNOTSUPP, "EOPNOTSUPP"}, {EPFNOSUPPORT, "EPFNOSUPPORT"}, {EAFNOSUPPORT, "EAFNOSUPPORT"},
    {EADDRINUSE, "EADDRINUSE"}, {EADDRNOTAVAIL, "EADDRNOTAVAIL"}, {ENETDOWN, "ENETDOWN"},
    {ENETUNREACH, "ENETUNREACH"}, {ENETRESET, "ENETRESET"}, {ECONNABORTED, "ECONNABORTED"},
    {ECONNRESET, "ECONNRESET"}, {ENOBUFS, "ENOBUFS"}, {EISCONN, "EISCONN"}, {ENOTCONN, "ENOTCONN"},
    {ESHUTDOWN, "ESHUTDOWN"}, {ETOOMANYREFS, "ETOOMANYREFS"}, {ETIMEDOUT, "ETIMEDOUT"},
    {ECONNREFUSED, "ECONNREFUSED"}, {ELOOP, "ELOOP"}, {ENAMETOOLONG, "ENAMETOOLONG"}, {EHOSTDOWN, "EHOSTDOWN"},
    {EHOSTUNREACH, "EHOSTUNREACH"}, {ENOTEMPTY, "ENOTEMPTY"}, {EUSERS, "EUSERS"}, {EDQUOT, "EDQUOT"},
    {ESTALE, "ESTALE"}, {EREMOTE, "EREMOTE"}, {EPIPE, "ECONNRESET"},
};

// Keeps a failure and gives the -1 the caller returns.
int failed(value& r, int err) {
  last_err = err;
  const char* word = "EINVAL";
  for (const err_word& w : err_words)
    if (w.num == err) word = w.word;
  bu_set_var(bu_symbol_case("ERRNO"), word);
  r.set_num(-1, 0);
  return 0;
}

int ok(value& r, long long n) {
  r.set_num((double)n, 0);
  return 0;
}

// A socket argument: a whole number naming one of ours; else EBADF (or
// ENOTSOCK for a descriptor that is not ours) is the call's result.
int sock_arg(bu_frame& f, int i, int& s, bool& known) {
  long long n;
  if (int e = bu_whole(f, i, 0, 0, n)) return e;
  s = (int)n;
  known = ours.count(s) != 0;
  return 0;
}

#define SOCK_ARG(i, s)                             \
  int s;                                           \
  {                                                \
    bool known_;                                   \
    if (int e_ = sock_arg(f, i, s, known_)) return e_; \
    if (!known_) return failed(r, EBADF);          \
  }

std::string upper(std::string_view t) {
  std::string u(t);
  for (char& c : u) c = (char)toupper((unsigned char)c);
  return u;
}

// An address stem: stem.family, stem.port and stem.addr.
int read_addr(bu_frame& f, int i, sockaddr_in& a) {
  std::string stem;
  if (int e = bu_stem(f, i, stem)) return e;
  memset(&a, 0, sizeof a);
  std::string fam = upper(bu_get_text(bu_tail(stem, "FAMILY")));
  if (fam != "AF_INET" && fam != "PF_INET")
    return bu_fail_num(f, 94, i, "family must be \"AF_INET\" or \"PF_INET\".");
  std::string port = bu_get_text(bu_tail(stem, "PORT"));
  char* end = nullptr;
  long p = port.empty() ? -1 : strtol(port.c_str(), &end, 10);
  if (p < 0 || p > 65535 || (end && *end)) return bu_fail_num(f, 95, i, "invalid port \"" + port + "\".");
  std::string addr = bu_get_text(bu_tail(stem, "ADDR"));
  a.sin_family = AF_INET;
  a.sin_port = htons((uint16_t)p);
  if (upper(addr) == "INADDR_ANY") a.sin_addr.s_addr = htonl(INADDR_ANY);
  else if (inet_pton(AF_INET, addr.c_str(), &a.sin_addr) != 1)
    return bu_fail_num(f, 96, i, "invalid address \"" + addr + "\".");
  return 0;
}

void write_addr(const std::string& stem, const sockaddr_in& a) {
  char buf[INET_ADDRSTRLEN] = "";
  inet_ntop(AF_INET, &a.sin_addr, buf, sizeof buf);
  bu_set_var(bu_tail(stem, "FAMILY"), "AF_INET");
  bu_set_var(bu_tail(stem, "PORT"), std::to_string(ntohs(a.sin_port)));
  bu_set_var(bu_tail(stem, "ADDR"), buf);
}

bool nonblocking(int s) { return (fcntl(s, F_GETFL) & O_NONBLOCK) != 0; }

// Waits for a blocking socket to be ready; a halt gives EINTR.
int ready(int s, short events, long long ms) {
  if (nonblocking(s)) return 0;
  int w = bu_wait_fd(s, events, ms);
  return w == 1 ? 0 : w == 0 ? ETIMEDOUT : EINTR;
}

struct flag_word {
  const char* word;  // MSG_ name
  int bit;           // its bit
};
constexpr flag_word msg_flags[] = {{"MSG_OOB", MSG_OOB}, {"MSG_PEEK", MSG_PEEK}, {"MSG_DONTROUTE", MSG_DONTROUTE}};

int read_flags(bu_frame& f, int i, int& flags) {
  flags = 0;
  if (!bu_has(f, i)) return 0;
  std::string t = upper(bu_text(f, i));
  size_t b = 0;
  while ((b = t.find_first_not_of(' ', b)) != std::string::npos) {
    size_t e = t.find(' ', b);
    std::string w = t.substr(b, e == std::string::npos ? std::string::npos : e - b);
    bool found = false;
    for (const flag_word& m : msg_flags)
      if (w == m.word) flags |= m.bit, found = true;
    if (!found) return bu_fail(f, i, "invalid flag \"" + w + "\".");
    b = e;
  }
  return 0;
}

struct opt_row {
  const char* word;  // SO_ name
  int opt;           // the option
};
constexpr opt_row opts[] = {
    {"SO_BROADCAST", SO_BROADCAST}, {"SO_DEBUG", SO_DEBUG},         {"SO_DONTLINGER", SO_LINGER},
    {"SO_DONTROUTE", SO_DONTROUTE}, {"SO_KEEPALIVE", SO_KEEPALIVE}, {"SO_LINGER", SO_LINGER},
    {"SO_OOBINLINE", SO_OOBINLINE}, {"SO_RCVBUF", SO_RCVBUF},       {"SO_REUSEADDR", SO_REUSEADDR},
    {"SO_SNDBUF", SO_SNDBUF},
};

int read_opt(bu_frame& f, int lvl, int& opt, std::string& word) {
  if (upper(bu_text(f, lvl)) != "SOL_SOCKET") return bu_fail_num(f, 91, lvl, "level must be \"SOL_SOCKET\".");
  word = upper(bu_text(f, lvl + 1));
  for (const opt_row& o : opts)
    if (word == o.word) return opt = o.opt, 0;
  return bu_fail_num(f, 92, lvl + 1, "invalid option \"" + std::string(bu_text(f, lvl + 1)) + "\".");
}

// A socket list stem for SockSelect: the sockets named in stem.1 to stem.n.
int read_list(bu_frame& f, int i, std::string& stem, std::vector<int>& socks) {
  if (!bu_has(f, i) || bu_text(f, i).empty()) return 0;
  if (int e = bu_stem(f, i, stem)) return e;
  long n = strtol(bu_get_text(stem + "0").c_str(), nullptr, 10);
  for (long k = 1; k <= n && k <= 1024; k++) socks.push_back((int)strtol(bu_get_text(stem + std::to_string(k)).c_str(), nullptr, 10));
  return 0;
}

void fill_host(const std::string& stem, const hostent* h) {
  bu_set_var(bu_tail(stem, "NAME"), h->h_name ? h->h_name : "");
  std::vector<std::string> aliases, addrs;
  for (char** a = h->h_aliases; a && *a; a++) aliases.push_back(*a);
  char buf[INET_ADDRSTRLEN];
  for (char** a = h->h_addr_list; a && *a; a++)
    if (inet_ntop(AF_INET, *a, buf, sizeof buf)) addrs.push_back(buf);
  bu_set_var(bu_tail(stem, "ADDR"), addrs.empty() ? "" : addrs[0]);
  bu_set_list(bu_tail(stem, "ALIAS") + ".", aliases);
  bu_set_list(bu_tail(stem, "ADDR") + ".", addrs);
}

int host_failed(value& r, int herr) {
  static const char* const words[] = {"", "HOST_NOT_FOUND", "TRY_AGAIN", "NO_RECOVERY", "NO_DATA"};
  bu_set_var(bu_symbol_case("H_ERRNO"), herr >= 1 && herr <= 4 ? words[herr] : "HOST_NOT_FOUND");
  r.set_num(0, 0);
  return 0;
}

}  // namespace

int bu_sockloadfuncs(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 1)) return e;
  r.set_str("", 0);
  return 0;
}

int bu_sockdropfuncs(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  r.set_str("", 0);
  return 0;
}

int bu_sockversion(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  r.set_str("2.1");
  return 0;
}

int bu_sockinit(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  return ok(r, 0);
}

// SockSocket(domain, type, protocol)
int bu_socksocket(bu_frame& f, value& r) {
  if (int e = bu_count(f, 3, 3)) return e;
  if (upper(bu_text(f, 0)) != "AF_INET") return bu_fail_num(f, 88, 0, "domain must be \"AF_INET\".");
  std::string type = upper(bu_text(f, 1)), proto = upper(bu_text(f, 2));
  int t = type == "SOCK_STREAM" ? SOCK_STREAM : type == "SOCK_DGRAM" ? SOCK_DGRAM : -1;
  if (t < 0) return bu_fail_num(f, 89, 1, "type must be \"SOCK_STREAM\" or \"SOCK_DGRAM\".");
  long long p = -1;
  if (proto == "IPPROTO_UDP") p = IPPROTO_UDP;
  else if (proto == "IPPROTO_TCP") p = IPPROTO_TCP;
  else if (proto == "0") p = 0;
  else if (rx_whole(*f.args[2], p) != 0 || p < 0 || p > 255)
    return bu_fail_num(f, 90, 2, "protocol must be a number, \"IPPROTO_UDP\" or \"IPPROTO_TCP\".");
  int s = socket(AF_INET, t | SOCK_CLOEXEC, (int)p);
  if (s < 0) return failed(r, errno);
  ours.insert(s);
  return ok(r, s);
}

// SockBind(socket, address.)
int bu_sockbind(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 2)) return e;
  sockaddr_in a;
  if (int e = read_addr(f, 1, a)) return e;
  SOCK_ARG(0, s);
  if (bind(s, (sockaddr*)&a, sizeof a) != 0) return failed(r, errno);
  return ok(r, 0);
}

// SockConnect(socket, address.): bounded in time, and a halt ends it.
int bu_sockconnect(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 2)) return e;
  sockaddr_in a;
  if (int e = read_addr(f, 1, a)) return e;
  SOCK_ARG(0, s);
  bool was_nb = nonblocking(s);
  if (!was_nb) fcntl(s, F_SETFL, fcntl(s, F_GETFL) | O_NONBLOCK);
  int rc = connect(s, (sockaddr*)&a, sizeof a), err = rc == 0 ? 0 : errno;
  if (rc != 0 && err == EINPROGRESS && !was_nb) {
    int w = bu_wait_fd(s, POLLOUT, CONNECT_MS);
    socklen_t len = sizeof err;
    if (w == 1) getsockopt(s, SOL_SOCKET, SO_ERROR, &err, &len);
    else err = w == 0 ? ETIMEDOUT : EINTR;
  }
  if (!was_nb) fcntl(s, F_SETFL, fcntl(s, F_GETFL) & ~O_NONBLOCK);
  if (err) return failed(r, err);
  return ok(r, 0);
}

// SockListen(socket, backlog)
int bu_socklisten(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 2)) return e;
  long long backlog;
  if (int e = bu_whole(f, 1, 0, 5, backlog)) return e;
  SOCK_ARG(0, s);
  if (listen(s, (int)backlog) != 0) return failed(r, errno);
  return ok(r, 0);
}

// SockAccept(socket [, address.]): the new socket, the peer in the stem.
int bu_sockaccept(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 2)) return e;
  std::string stem;
  if (bu_has(f, 1))
    if (int e = bu_stem(f, 1, stem)) return e;
  SOCK_ARG(0, s);
  if (int e = ready(s, POLLIN, -1)) return failed(r, e);
  sockaddr_in a{};
  socklen_t len = sizeof a;
  int n = accept4(s, (sockaddr*)&a, &len, SOCK_CLOEXEC);
  if (n < 0) return failed(r, errno);
  ours.insert(n);
  if (!stem.empty()) write_addr(stem, a);
  return ok(r, n);
}

// SockClose(socket)
int bu_sockclose(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  SOCK_ARG(0, s);
  ours.erase(s);
  if (close(s) != 0) return failed(r, errno);
  return ok(r, 0);
}

// SockShutDown(socket, how): 0 receiving, 1 sending, 2 both.
int bu_sockshutdown(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 2)) return e;
  long long how;
  if (int e = bu_whole(f, 1, 0, 2, how)) return e;
  if (how > 2) return bu_fail(f, 1, "argument 2 must be 0, 1 or 2.");
  SOCK_ARG(0, s);
  if (shutdown(s, (int)how) != 0) return failed(r, errno);
  return ok(r, 0);
}

// SockSend(socket, data [, flags]): the bytes sent.
int bu_socksend(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 3)) return e;
  int flags;
  if (int e = read_flags(f, 2, flags)) return e;
  SOCK_ARG(0, s);
  std::string_view d = bu_text(f, 1);
  if (int e = ready(s, POLLOUT, -1)) return failed(r, e);
  ssize_t n = send(s, d.data(), d.size(), flags | MSG_NOSIGNAL);
  if (n < 0) return failed(r, errno);
  return ok(r, n);
}

// SockSendTo(socket, data, [flags,] address.)
int bu_socksendto(bu_frame& f, value& r) {
  if (int e = bu_count(f, 3, 4)) return e;
  int flags = 0, at = f.argc == 4 ? 3 : 2;
  if (f.argc == 4)
    if (int e = read_flags(f, 2, flags)) return e;
  sockaddr_in a;
  if (int e = read_addr(f, at, a)) return e;
  SOCK_ARG(0, s);
  std::string_view d = bu_text(f, 1);
  ssize_t n = sendto(s, d.data(), d.size(), flags | MSG_NOSIGNAL, (sockaddr*)&a, sizeof a);
  if (n < 0) return failed(r, errno);
  return ok(r, n);
}

namespace {

// The receiving half of SockRecv and SockRecvFrom.
int receive(bu_frame& f, value& r, bool from) {
  if (int e = bu_count(f, from ? 4 : 3, from ? 5 : 4)) return e;
  std::string var = bu_symbol_case(bu_text(f, 1)), stem;
  if (!bu_valid_symbol(var)) return bu_fail(f, 1, "\"" + std::string(bu_text(f, 1)) + "\" is not a valid REXX symbol.");
  long long len;
  if (int e = bu_whole(f, 2, 0, 0, len)) return e;
  int flags = 0, at = f.argc == 5 ? 4 : 3;
  if (!from || f.argc == 5)
    if (int e = read_flags(f, 3, flags)) return e;
  if (from)
    if (int e = bu_stem(f, at, stem)) return e;
  SOCK_ARG(0, s);
  if (len > (1 << 24)) len = 1 << 24;
  if (int e = ready(s, POLLIN, -1)) return failed(r, e);
  std::string buf((size_t)len, '\0');
  sockaddr_in a{};
  socklen_t alen = sizeof a;
  ssize_t n = recvfrom(s, buf.data(), buf.size(), flags, from ? (sockaddr*)&a : nullptr, from ? &alen : nullptr);
  if (n < 0) return failed(r, errno);
  bu_set_var(var, std::string_view(buf.data(), (size_t)n));
  if (from) write_addr(stem, a);
  return ok(r, n);
}

}  // namespace

// SockRecv(socket, var, length [, flags]): the bytes received into var, 0
// when the peer has closed.
int bu_sockrecv(bu_frame& f, value& r) { return receive(f, r, false); }

// SockRecvFrom(socket, var, length, [flags,] address.)
int bu_sockrecvfrom(bu_frame& f, value& r) { return receive(f, r, true); }

// SockSelect(reads., writes., excepts. [, timeout]): the stems keep the
// sockets that are ready; the result is how many are.
int bu_sockselect(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 4)) return e;
  std::string stems[3];
  std::vector<int> lists[3];
  for (int i = 0; i < 3; i++)
    if (int e = read_list(f, i, stems[i], lists[i])) return e;
  long long timeout = -1;
  if (bu_has(f, 3) && !bu_text(f, 3).empty()) {
    if (int e = bu_whole(f, 3, 0, 0, timeout)) return e;
    timeout *= 1000;
  }
  static const short events[3] = {POLLIN, POLLOUT, POLLPRI};
  std::vector<pollfd> fds;
  for (int i = 0; i < 3; i++)
    for (int s : lists[i]) {
      if (!ours.count(s)) return failed(r, EBADF);
      fds.push_back({s, events[i], 0});
    }
  long long waited = 0;
  int n = 0;
  for (;;) {
    n = poll(fds.data(), fds.size(), 0);
    if (n != 0 || (timeout >= 0 && waited >= timeout)) break;
    long long step = timeout < 0 ? 50 : std::min(50LL, timeout - waited);
    if (!bu_wait_ms(step)) return failed(r, EINTR);
    waited += step;
  }
  if (n < 0) return failed(r, errno);
  size_t k = 0;
  for (int i = 0; i < 3; i++) {
    std::vector<std::string> keep;
    for (size_t j = 0; j < lists[i].size(); j++, k++)
      if (fds[k].revents & (events[i] | POLLHUP | POLLERR)) keep.push_back(std::to_string(lists[i][j]));
    if (!stems[i].empty()) bu_set_list(stems[i], keep);
  }
  return ok(r, n);
}

// SockIoctl(socket, "FIONBIO" | "FIONREAD", var): FIONBIO sets blocking
// from var (1 not blocking), FIONREAD puts the bytes waiting into var.
int bu_sockioctl(bu_frame& f, value& r) {
  if (int e = bu_count(f, 3, 3)) return e;
  std::string cmd = upper(bu_text(f, 1)), var = bu_symbol_case(bu_text(f, 2));
  if (cmd != "FIONBIO" && cmd != "FIONREAD") return bu_fail(f, 1, "command must be \"FIONBIO\" or \"FIONREAD\".");
  SOCK_ARG(0, s);
  if (cmd == "FIONREAD") {
    if (!bu_valid_symbol(var)) return bu_fail(f, 2, "\"" + std::string(bu_text(f, 2)) + "\" is not a valid REXX symbol.");
    int n = 0;
    if (ioctl(s, FIONREAD, &n) != 0) return failed(r, errno);
    bu_set_var(var, std::to_string(n));
    return ok(r, 0);
  }
  std::string v = bu_valid_symbol(var) && bu_var_set(var) ? bu_get_text(var) : std::string(bu_text(f, 2));
  int on = v != "0" && !v.empty();
  if (ioctl(s, FIONBIO, &on) != 0) return failed(r, errno);
  return ok(r, 0);
}

// SockGetSockOpt(socket, level, option, var)
int bu_sockgetsockopt(bu_frame& f, value& r) {
  if (int e = bu_count(f, 4, 4)) return e;
  int opt;
  std::string word, var = bu_symbol_case(bu_text(f, 3));
  if (int e = read_opt(f, 1, opt, word)) return e;
  if (!bu_valid_symbol(var)) return bu_fail(f, 3, "\"" + std::string(bu_text(f, 3)) + "\" is not a valid REXX symbol.");
  SOCK_ARG(0, s);
  if (opt == SO_LINGER) {
    linger l{};
    socklen_t len = sizeof l;
    if (getsockopt(s, SOL_SOCKET, opt, &l, &len) != 0) return failed(r, errno);
    char b[40];
    if (word == "SO_DONTLINGER") snprintf(b, sizeof b, "%d", !l.l_onoff);
    else snprintf(b, sizeof b, "%d %d", l.l_onoff, l.l_linger);
    bu_set_var(var, b);
    return ok(r, 0);
  }
  int v = 0;
  socklen_t len = sizeof v;
  if (getsockopt(s, SOL_SOCKET, opt, &v, &len) != 0) return failed(r, errno);
  bu_set_var(var, std::to_string(v));
  return ok(r, 0);
}

// SockSetSockOpt(socket, level, option, value): SO_LINGER takes "on seconds".
int bu_socksetsockopt(bu_frame& f, value& r) {
  if (int e = bu_count(f, 4, 4)) return e;
  int opt;
  std::string word;
  if (int e = read_opt(f, 1, opt, word)) return e;
  std::string v(bu_text(f, 3));
  int a = 0, b = 0, used = 0;
  bool two = opt == SO_LINGER && word == "SO_LINGER";
  int got = two ? sscanf(v.c_str(), "%d %d%n", &a, &b, &used) : sscanf(v.c_str(), "%d%n", &a, &used);
  if (got != (two ? 2 : 1) || v.find_first_not_of(' ', (size_t)used) != std::string::npos)
    return bu_fail_num(f, 93, 3, "invalid value \"" + v + "\".");
  SOCK_ARG(0, s);
  int rc;
  if (opt == SO_LINGER) {
    linger l{};
    l.l_onoff = two ? a != 0 : a == 0;
    l.l_linger = two ? b : 0;
    rc = setsockopt(s, SOL_SOCKET, opt, &l, sizeof l);
  } else {
    rc = setsockopt(s, SOL_SOCKET, opt, &a, sizeof a);
  }
  if (rc != 0) return failed(r, errno);
  return ok(r, 0);
}

// SockGetHostByName(name, host.): 1 with host.name, host.addr and the lists
// host.alias.i and host.addr.i; 0 with H_ERRNO set.
int bu_sockgethostbyname(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 2)) return e;
  std::string stem;
  if (int e = bu_stem(f, 1, stem)) return e;
  std::string name(bu_text(f, 0));
  hostent he, *h = nullptr;
  std::vector<char> buf(8192);
  int herr = 0;
  if (gethostbyname_r(name.c_str(), &he, buf.data(), buf.size(), &h, &herr) != 0 || !h) return host_failed(r, herr);
  fill_host(stem, h);
  return ok(r, 1);
}

// SockGetHostByAddr(addr, host. [, domain])
int bu_sockgethostbyaddr(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 3)) return e;
  std::string stem;
  if (int e = bu_stem(f, 1, stem)) return e;
  if (bu_has(f, 2) && upper(bu_text(f, 2)) != "AF_INET") return bu_fail_num(f, 88, 2, "domain must be \"AF_INET\".");
  in_addr a;
  std::string text(bu_text(f, 0));
  if (inet_pton(AF_INET, text.c_str(), &a) != 1) return bu_fail_num(f, 96, 0, "invalid address \"" + text + "\".");
  hostent he, *h = nullptr;
  std::vector<char> buf(8192);
  int herr = 0;
  if (gethostbyaddr_r(&a, sizeof a, AF_INET, &he, buf.data(), buf.size(), &h, &herr) != 0 || !h)
    return host_failed(r, herr);
  fill_host(stem, h);
  return ok(r, 1);
}

// SockGetHostId(): this host's first IPv4 address, or 127.0.0.1.
int bu_sockgethostid(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  char name[256] = "";
  gethostname(name, sizeof name - 1);
  addrinfo hints{}, *res = nullptr;
  hints.ai_family = AF_INET;
  std::string out = "127.0.0.1";
  if (getaddrinfo(name, nullptr, &hints, &res) == 0 && res) {
    char buf[INET_ADDRSTRLEN];
    if (inet_ntop(AF_INET, &((sockaddr_in*)res->ai_addr)->sin_addr, buf, sizeof buf)) out = buf;
  }
  if (res) freeaddrinfo(res);
  r.set_str(out);
  return 0;
}

namespace {

int name_of(bu_frame& f, value& r, bool peer) {
  if (int e = bu_count(f, 2, 2)) return e;
  std::string stem;
  if (int e = bu_stem(f, 1, stem)) return e;
  SOCK_ARG(0, s);
  sockaddr_in a{};
  socklen_t len = sizeof a;
  if ((peer ? getpeername(s, (sockaddr*)&a, &len) : getsockname(s, (sockaddr*)&a, &len)) != 0) return failed(r, errno);
  write_addr(stem, a);
  return ok(r, 0);
}

}  // namespace

// SockGetPeerName(socket, address.), SockGetSockName(socket, address.)
int bu_sockgetpeername(bu_frame& f, value& r) { return name_of(f, r, true); }
int bu_sockgetsockname(bu_frame& f, value& r) { return name_of(f, r, false); }

// SockSock_Errno(): the last error's number.
int bu_socksock_errno(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 0)) return e;
  return ok(r, last_err);
}

// SockPSock_Errno([text]): the last error on the error stream.
int bu_sockpsock_errno(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 1)) return e;
  std::string t(bu_text(f, 0));
  bu_message((t.empty() ? "" : t + ": ") + strerror(last_err));
  r.set_str("", 0);
  return 0;
}
