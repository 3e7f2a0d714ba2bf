// Whether a display can be reached. The toolkit ends the process when it
// cannot open the display it is given, so the server's socket is tried here
// first, and a display that does not answer leaves the choice to the terminal.
#include "fields/plat_qt/plat_qt.h"
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <netdb.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

bool unixsocket(const std::string &path, bool abstract) {
  int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return false;
  sockaddr_un a{};
  a.sun_family = AF_UNIX;
  size_t off = abstract ? 1 : 0;
  if (path.size() + off >= sizeof a.sun_path) {
    close(fd);
    return false;
  }
  memcpy(a.sun_path + off, path.data(), path.size());
  socklen_t len = socklen_t(offsetof(sockaddr_un, sun_path) + off + path.size());
  bool ok = connect(fd, (sockaddr *)&a, len) == 0;
  close(fd);
  return ok;
}

bool tcp(const std::string &host, int port) {
  addrinfo hints{}, *res = nullptr;
  hints.ai_socktype = SOCK_STREAM;
  if (getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &res) != 0) return false;
  bool ok = false;
  for (addrinfo *r = res; r && !ok; r = r->ai_next) {
    int fd = socket(r->ai_family, r->ai_socktype | SOCK_CLOEXEC, r->ai_protocol);
    if (fd < 0) continue;
    ok = connect(fd, r->ai_addr, r->ai_addrlen) == 0;
    close(fd);
  }
  freeaddrinfo(res);
  return ok;
}

// DISPLAY is [host]:number[.screen]; no host (or "unix") is the local socket.
bool x11(const char *d) {
  std::string s = d;
  size_t colon = s.rfind(':');
  if (colon == std::string::npos) return false;
  std::string host = s.substr(0, colon);
  int n = atoi(s.c_str() + colon + 1);
  if (!host.empty() && host[0] == '/') return unixsocket(s.substr(0, colon), false);
  if (host.empty() || host == "unix") {
    std::string path = "/tmp/.X11-unix/X" + std::to_string(n);
    return unixsocket(path, false) || unixsocket(path, true);
  }
  return tcp(host, 6000 + n);
}

bool wayland(const char *w) {
  if (w[0] == '/') return unixsocket(w, false);
  const char *rt = getenv("XDG_RUNTIME_DIR");
  return rt && unixsocket(std::string(rt) + "/" + w, false);
}

}  // namespace

bool fs_qt_display() {
  const char *p = getenv("QT_QPA_PLATFORM");
  // Platforms that need no server (the tests' offscreen one) are always there.
  if (p && (!strcmp(p, "offscreen") || !strcmp(p, "minimal"))) return true;
  const char *w = getenv("WAYLAND_DISPLAY"), *d = getenv("DISPLAY");
  return (w && *w && wayland(w)) || (d && *d && x11(d));
}

bool fs_qt_named() {
  const char *w = getenv("WAYLAND_DISPLAY"), *d = getenv("DISPLAY");
  return (w && *w) || (d && *d);
}

// The module's entry points, found by name when the editor loads the window
// layer (plain names: the loader does not know the language's mangling).
extern "C" bool xed_qt_display() { return fs_qt_display(); }
extern "C" fs_plat *xed_qt_open(int argc, char **argv, fs_qt_gonehook ongone, std::string *err) {
  return fs_plat_qt(argc, argv, ongone, *err);
}
