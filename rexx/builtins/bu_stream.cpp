// Streams: LINEIN, LINEOUT, CHARIN, CHAROUT, LINES, CHARS, STREAM, LINELAST
// and the console functions STDIN, STDOUT, STDERR.
//
// A stream is opened on first use and kept in a table by name. Each holds
// one file descriptor with a read buffer and a write buffer of its own, so
// a LINEIN loop costs one memchr and one copy per line, and a LINEOUT loop
// one memcpy per line; the system is called once per 256 KB. Positions
// are byte offsets from 0; the line number of the read position is known
// while reading goes forward from a known place.
//
// Failures raise NOTREADY with the failure text as the condition's
// description; without a trap the function gives its failure value.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <iostream>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <unordered_map>
#include <vector>

#include "rexx/exec_int.h"

namespace {

constexpr size_t BUF = 256 * 1024;

enum st_state { ST_UNKNOWN, ST_READY, ST_NOTREADY, ST_ERROR };
const char* const state_names[] = {"UNKNOWN", "READY", "NOTREADY", "ERROR"};

struct stream {
  std::string name;
  int fd = -1;
  bool writable = false;
  st_state state = ST_UNKNOWN;
  std::string desc;             // the last failure, for STREAM(name, 'D')
  // Reading: rbuf[rpos, rend) holds the file's bytes from roff - (rend - rpos).
  std::unique_ptr<char[]> rbuf;
  size_t rpos = 0, rend = 0;
  long long roff = 0;           // file offset just past rbuf's end
  long long rline = 1;          // line number at the read position; 0 unknown
  long long left = -1;          // lines left after the read position; -1 unknown
  // Writing: wbuf[0, wlen) waits to go at woff.
  std::unique_ptr<char[]> wbuf;
  size_t wlen = 0;
  long long woff = -1;          // -1: the end of the file at the first write
  long long wline = 0;          // line number of the write position; 0 unknown

  long long read_at() const { return roff - (long long)(rend - rpos); }
};

std::unordered_map<std::string, std::unique_ptr<stream>>& table() {
  static std::unordered_map<std::string, std::unique_ptr<stream>> t;
  return t;
}

bool eq_nocase(std::string_view a, const char* b) { return a.size() == strlen(b) && strncasecmp(a.data(), b, a.size()) == 0; }

enum { CON_NONE, CON_IN, CON_OUT, CON_ERR };

int console_of(std::string_view name) {
  if (eq_nocase(name, "stdin")) return CON_IN;
  if (eq_nocase(name, "stdout")) return CON_OUT;
  if (eq_nocase(name, "stderr")) return CON_ERR;
  return CON_NONE;
}

// Puts the stream in NOTREADY with a text, and raises the condition; gives
// false so that callers can `return fail(...)` into their failure value.
bool notready(stream& s, std::string text, bool error = false) {
  s.state = error ? ST_ERROR : ST_NOTREADY;
  s.desc = std::move(text);
  if (rx_st) rx_condition(CN_NOTREADY, s.desc);
  return false;
}

std::string quoted(const char* fn, const char* what, const std::string& name) {
  return std::string(fn) + "(): " + what + " \"" + name + "\"";
}

bool flush_writes(stream& s, const char* fn) {
  if (!s.wlen) return true;
  size_t done = 0;
  while (done < s.wlen) {
    ssize_t n = pwrite(s.fd, s.wbuf.get() + done, s.wlen - done, s.woff);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      s.wlen = 0;
      return notready(s, quoted(fn, "error while writing file", s.name) + ": " + strerror(n < 0 ? errno : ENOSPC),
                      true);
    }
    done += (size_t)n;
    s.woff += n;
  }
  s.wlen = 0;
  // What was read ahead may be stale now.
  long long at = s.read_at();
  s.rpos = s.rend = 0;
  s.roff = at;
  s.left = -1;
  return true;
}

stream* find(std::string_view name) {
  auto it = table().find(std::string(name));
  return it == table().end() ? nullptr : it->second.get();
}

// The stream of a name, opened for reading or writing as the caller needs;
// null (with NOTREADY raised) when the file cannot be had.
stream* open_stream(std::string_view name, bool for_write, const char* fn) {
  stream* s = find(name);
  if (s && s->fd >= 0 && (!for_write || s->writable)) return s;
  if (!s) {
    auto p = std::make_unique<stream>();
    p->name = std::string(name);
    s = p.get();
    table()[p->name] = std::move(p);
  }
  std::string path(name);
  int fd = open(path.c_str(), (for_write ? O_RDWR | O_CREAT : O_RDWR) | O_CLOEXEC, 0666);
  bool writable = fd >= 0;
  if (fd < 0 && !for_write) fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat sb;
  if (fd >= 0 && fstat(fd, &sb) == 0 && S_ISDIR(sb.st_mode)) {
    close(fd);
    fd = -1;
  }
  if (fd < 0) {
    notready(*s, quoted(fn, "unable to open file", s->name));
    return nullptr;
  }
  if (s->fd >= 0) {
    flush_writes(*s, fn);
    close(s->fd);
  }
  s->fd = fd;
  s->writable = writable;
  s->state = ST_READY;
  if (!s->rbuf) s->rbuf.reset(new char[BUF]);
  if (writable && !s->wbuf) s->wbuf.reset(new char[BUF]);
  return s;
}

void close_stream(stream& s, const char* fn) {
  if (s.fd >= 0) {
    flush_writes(s, fn);
    close(s.fd);
  }
  table().erase(s.name);
}

// Fills the read buffer with what follows; false at the end or on error.
bool refill(stream& s, const char* fn) {
  if (s.wlen && !flush_writes(s, fn)) return false;
  if (s.rpos < s.rend) memmove(s.rbuf.get(), s.rbuf.get() + s.rpos, s.rend - s.rpos);
  s.rend -= s.rpos;
  s.rpos = 0;
  if (s.rend == BUF) return true;
  for (;;) {
    ssize_t n = pread(s.fd, s.rbuf.get() + s.rend, BUF - s.rend, s.roff);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) return notready(s, quoted(fn, "error while reading file", s.name), true);
    s.rend += (size_t)n;
    s.roff += n;
    return n > 0;
  }
}

void seek_read(stream& s, long long off, long long line) {
  s.rpos = s.rend = 0;
  s.roff = off;
  s.rline = line;
  s.left = -1;
}

// Moves the read position to the start of line n (from 1); false when the
// file has fewer lines.
bool seek_read_line(stream& s, long long n, const char* fn) {
  if (!(s.rline > 0 && s.rline <= n)) seek_read(s, 0, 1);
  while (s.rline < n) {
    if (s.rpos == s.rend && !refill(s, fn)) return false;
    char* p = (char*)memchr(s.rbuf.get() + s.rpos, '\n', s.rend - s.rpos);
    if (!p) {
      s.rpos = s.rend;
      continue;
    }
    s.rpos = (size_t)(p - s.rbuf.get()) + 1;
    s.rline++;
  }
  return true;
}

// Reads the next line into r (without its end, a CR before LF dropped);
// false at the end of the file.
bool read_line(stream& s, value& r, const char* fn) {
  for (;;) {
    char* b = s.rbuf.get();
    char* p = (char*)memchr(b + s.rpos, '\n', s.rend - s.rpos);
    if (p) {
      size_t n = (size_t)(p - (b + s.rpos));
      size_t k = n && p[-1] == '\r' ? n - 1 : n;
      r.set_str(b + s.rpos, k);
      s.rpos += n + 1;
      if (s.rline) s.rline++;
      if (s.left > 0) s.left--;
      return true;
    }
    size_t had = s.rend - s.rpos;
    if (had == BUF) {
      // A line longer than the buffer: gather it in the value.
      std::string line(b + s.rpos, had);
      s.rpos = s.rend;
      for (;;) {
        if (!refill(s, fn)) break;
        char* q = (char*)memchr(s.rbuf.get(), '\n', s.rend);
        size_t n = q ? (size_t)(q - s.rbuf.get()) : s.rend;
        line.append(s.rbuf.get(), n);
        s.rpos = q ? n + 1 : s.rend;
        if (q) break;
      }
      if (!line.empty() && line.back() == '\r') line.pop_back();
      r.set_str(line);
      if (s.rline) s.rline++;
      s.left = -1;
      return true;
    }
    if (!refill(s, fn)) {
      if (s.rpos < s.rend) {
        // The last line has no line end.
        r.set_str(b + s.rpos, s.rend - s.rpos);
        s.rpos = s.rend;
        if (s.rline) s.rline++;
        s.left = 0;
        return true;
      }
      return false;
    }
  }
}

// Lines after the read position, counted once and then kept up by LINEIN.
long long lines_left(stream& s, const char* fn) {
  if (s.left >= 0 && !s.wlen) return s.left;
  if (s.wlen && !flush_writes(s, fn)) return 0;
  long long n = 0;
  long long off = s.read_at();
  char last = '\n';
  bool any = false;
  // Count with a separate cursor so that the read buffer stays as it is.
  std::unique_ptr<char[]> tmp(new char[BUF]);
  for (;;) {
    ssize_t k = pread(s.fd, tmp.get(), BUF, off);
    if (k < 0 && errno == EINTR) continue;
    if (k <= 0) break;
    any = true;
    for (const char* p = tmp.get(); (p = (const char*)memchr(p, '\n', (size_t)(tmp.get() + k - p))); p++) n++;
    last = tmp[(size_t)k - 1];
    off += k;
  }
  if (any && last != '\n') n++;
  s.left = n;
  return n;
}

void write_bytes(stream& s, const char* p, size_t n, const char* fn) {
  if (s.woff < 0) {
    struct stat sb;
    s.woff = fstat(s.fd, &sb) == 0 ? sb.st_size : 0;
  }
  if (s.wlen + n > BUF) flush_writes(s, fn);
  if (n >= BUF) {
    // Too big to buffer: straight out.
    while (n) {
      ssize_t k = pwrite(s.fd, p, n, s.woff);
      if (k < 0 && errno == EINTR) continue;
      if (k <= 0) {
        notready(s, quoted(fn, "error while writing file", s.name) + ": " + strerror(k < 0 ? errno : ENOSPC), true);
        return;
      }
      p += k, n -= (size_t)k, s.woff += k;
    }
    return;
  }
  memcpy(s.wbuf.get() + s.wlen, p, n);
  s.wlen += n;
}

bool console_write(int con, std::string_view text, bool newline, const char* fn) {
  FILE* f = con == CON_ERR ? stderr : stdout;
  if (con == CON_OUT && rx_console.say && newline) {
    rx_out_say(text);
    return true;
  }
  if (rx_console.claim) rx_console.claim();
  bool ok = fwrite(text.data(), 1, text.size(), f) == text.size();
  if (newline) ok = fputc('\n', f) != EOF && ok;
  if (!ok) {
    stream tmp;
    tmp.name = con == CON_ERR ? "stderr" : "stdout";
    notready(tmp, std::string(fn) + "(): error while writing " + tmp.name + ": " + strerror(errno), true);
  }
  return ok;
}

bool console_line(std::string& line) {
  fflush(stdout);
  if (rx_console.read_line) return rx_console.read_line(line);
  return (bool)std::getline(std::cin, line);
}

int no_start(bu_frame& f, int i, std::string_view name) {
  return bu_fail(f, i, "no start value may be given for \"" + std::string(name) + "\".");
}

}  // namespace

void bu_streams_close_all() {
  std::vector<stream*> all;
  for (auto& kv : table()) all.push_back(kv.second.get());
  for (stream* s : all) {
    if (s->fd >= 0 && s->wlen) {
      std::string name = s->name;
      size_t n = s->wlen;
      if (!flush_writes(*s, "LINEOUT")) {
        std::string msg = "molba: " + std::to_string(n) + " bytes could not be written to \"" + name + "\"\n";
        fputs(msg.c_str(), stderr);
      }
    }
    if (s->fd >= 0) close(s->fd);
  }
  table().clear();
  fflush(stdout);
}

int bu_linein(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 3)) return e;
  std::string_view name = bu_has(f, 0) ? bu_text(f, 0) : "stdin";
  long long line, count;
  if (int e = bu_whole(f, 1, 1, 0, line)) return e;
  if (bu_has(f, 2)) {
    if (int e = bu_whole(f, 2, 0, 1, count)) return e;
    if (count > 1) return bu_fail(f, 2, "argument 3 must be 0 or 1.");
  } else {
    count = 1;
  }
  r.set_str("", 0);
  if (name.empty() || console_of(name) == CON_IN) {
    if (line) return no_start(f, 1, "stdin");
    std::string l;
    if (count && !console_line(l)) {
      stream tmp;
      tmp.name = "stdin";
      notready(tmp, "stdin");
      return 0;
    }
    r.set_str(l);
    return 0;
  }
  stream* s = open_stream(name, false, "LINEIN");
  if (!s) return 0;
  if (line && !seek_read_line(*s, line, "LINEIN")) {
    notready(*s, quoted("LINEIN", "unable to lseek() in file", s->name));
    return 0;
  }
  if (!count) return 0;
  if (!read_line(*s, r, "LINEIN")) {
    if (s->state != ST_ERROR) notready(*s, s->name);
    return 0;
  }
  s->state = ST_READY;
  return 0;
}

int bu_lineout(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 3)) return e;
  std::string_view name = bu_has(f, 0) ? bu_text(f, 0) : "stdout";
  long long line;
  if (int e = bu_whole(f, 2, 1, 0, line)) return e;
  r.set_num(0, 0);
  if (name.empty() || console_of(name) == CON_OUT || console_of(name) == CON_ERR) {
    if (line) return no_start(f, 2, name.empty() ? "stdout" : name);
    if (bu_has(f, 1)) r.set_num(console_write(name.empty() ? CON_OUT : console_of(name), bu_text(f, 1), true, "LINEOUT") ? 0 : 1, 0);
    return 0;
  }
  if (!bu_has(f, 1) && !line) {
    // No data: the stream is closed.
    if (stream* s = find(name)) {
      bool ok = s->fd < 0 || flush_writes(*s, "LINEOUT");
      close_stream(*s, "LINEOUT");
      r.set_num(ok ? 0 : 1, 0);
    }
    return 0;
  }
  stream* s = open_stream(name, true, "LINEOUT");
  if (!s) {
    r.set_num(1, 0);
    return 0;
  }
  if (line) {
    // The write position goes to the start of that line.
    if (!flush_writes(*s, "LINEOUT")) {
      r.set_num(1, 0);
      return 0;
    }
    long long keep_off = s->read_at(), keep_line = s->rline;
    if (!seek_read_line(*s, line, "LINEOUT")) {
      seek_read(*s, keep_off, keep_line);
      notready(*s, quoted("LINEOUT", "unable to lseek() in file", s->name));
      r.set_num(1, 0);
      return 0;
    }
    s->woff = s->read_at();
    seek_read(*s, keep_off, keep_line);
  }
  if (!bu_has(f, 1)) return 0;
  std::string_view t = bu_text(f, 1);
  st_state before = s->state;
  write_bytes(*s, t.data(), t.size(), "LINEOUT");
  write_bytes(*s, "\n", 1, "LINEOUT");
  if (s->state == ST_ERROR && before != ST_ERROR) r.set_num(1, 0);
  else s->state = ST_READY;
  return 0;
}

int bu_charin(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 3)) return e;
  std::string_view name = bu_has(f, 0) ? bu_text(f, 0) : "stdin";
  long long start, count;
  if (int e = bu_whole(f, 1, 1, 0, start)) return e;
  if (int e = bu_whole(f, 2, 0, 1, count)) return e;
  r.set_str("", 0);
  if (name.empty() || console_of(name) == CON_IN) {
    if (start) return no_start(f, 1, "stdin");
    std::string got;
    fflush(stdout);
    for (long long i = 0; i < count; i++) {
      int c = std::cin.get();
      if (c == EOF) break;
      got += (char)c;
    }
    if ((long long)got.size() < count) std::cin.clear();
    r.set_str(got);
    return 0;
  }
  stream* s = open_stream(name, false, "CHARIN");
  if (!s) return 0;
  if (start) {
    struct stat sb;
    if (fstat(s->fd, &sb) != 0) {
      notready(*s, quoted("CHARIN", "unable to get information for file", s->name));
      return 0;
    }
    if (start > sb.st_size + 1) {
      notready(*s, quoted("CHARIN", "invalid start position for file", s->name));
      return 0;
    }
    seek_read(*s, start - 1, start == 1 ? 1 : 0);
  }
  char* out = r.make_str((size_t)count);
  size_t got = 0;
  while (got < (size_t)count) {
    if (s->rpos == s->rend && !refill(*s, "CHARIN")) break;
    size_t n = std::min((size_t)count - got, s->rend - s->rpos);
    const char* src = s->rbuf.get() + s->rpos;
    if (s->rline)
      for (const char* p = src; (p = (const char*)memchr(p, '\n', (size_t)(src + n - p))); p++) s->rline++;
    memcpy(out + got, src, n);
    s->rpos += n;
    got += n;
  }
  s->left = -1;
  if (got < (size_t)count) {
    std::string keep(out, got);
    r.set_str(keep);
    if (s->state != ST_ERROR) notready(*s, s->name);
    return 0;
  }
  s->state = ST_READY;
  return 0;
}

int bu_charout(bu_frame& f, value& r) {
  if (int e = bu_count(f, 0, 3)) return e;
  std::string_view name = bu_has(f, 0) ? bu_text(f, 0) : "stdout";
  long long start;
  if (int e = bu_whole(f, 2, 1, 0, start)) return e;
  std::string_view t = bu_text(f, 1);
  r.set_num(0, 0);
  if (name.empty() || console_of(name) == CON_OUT || console_of(name) == CON_ERR) {
    if (start) return no_start(f, 2, name.empty() ? "stdout" : name);
    if (!console_write(name.empty() ? CON_OUT : console_of(name), t, false, "CHAROUT")) r.set_num((double)t.size(), 0);
    return 0;
  }
  if (!bu_has(f, 1) && !start) {
    if (stream* s = find(name)) close_stream(*s, "CHAROUT");
    return 0;
  }
  stream* s = open_stream(name, true, "CHAROUT");
  if (!s) {
    r.set_num((double)t.size(), 0);
    return 0;
  }
  if (start) {
    if (!flush_writes(*s, "CHAROUT")) {
      r.set_num((double)t.size(), 0);
      return 0;
    }
    s->woff = start - 1;
  }
  st_state before = s->state;
  write_bytes(*s, t.data(), t.size(), "CHAROUT");
  if (s->state == ST_ERROR && before != ST_ERROR) r.set_num((double)t.size(), 0);
  else s->state = ST_READY;
  return 0;
}

int bu_lines(bu_frame& f, value& r) {
  if (f.argc > 2) return bu_fail(f, 0, "must receive 0 to 2 arguments.");
  std::string_view name = bu_has(f, 0) ? bu_text(f, 0) : "stdin";
  char opt;
  if (int e = bu_option(f, 1, "CN", 'C', opt)) return e;
  if (name.empty() || console_of(name) == CON_IN) {
    // The console has a line while its input has not ended.
    r.set_num(std::cin.peek() == EOF ? 0 : 1, 0);
    std::cin.clear();
    return 0;
  }
  stream* s = open_stream(name, false, "LINES");
  if (!s) {
    r.set_num(0, 0);
    return 0;
  }
  if (opt == 'N') {
    bool more = s->rpos < s->rend || refill(*s, "LINES");
    r.set_num(more ? 1 : 0, 0);
    return 0;
  }
  r.set_num((double)lines_left(*s, "LINES"), 0);
  return 0;
}

int bu_chars(bu_frame& f, value& r) {
  if (f.argc > 1) return bu_fail(f, 1, "1 argument allowed.");
  std::string_view name = bu_has(f, 0) ? bu_text(f, 0) : "stdin";
  if (name.empty() || console_of(name) == CON_IN) {
    r.set_num(std::cin.peek() == EOF ? 0 : 1, 0);
    std::cin.clear();
    return 0;
  }
  r.set_num(0, 0);
  stream* s = open_stream(name, false, "CHARS");
  if (!s) return 0;
  if (s->wlen) flush_writes(*s, "CHARS");
  struct stat sb;
  if (fstat(s->fd, &sb) != 0) {
    notready(*s, quoted("CHARS", "unable to stat() file", s->name));
    return 0;
  }
  long long left = (long long)sb.st_size - s->read_at();
  r.set_num((double)(left < 0 ? 0 : left), 0);
  return 0;
}

// LINELAST(name): the last line of a file, read from its end without
// touching the stream's read position; empty for an empty file.
int bu_linelast(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string path(bu_text(f, 0));
  r.set_str("", 0);
  int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat sb;
  if (fd < 0 || fstat(fd, &sb) != 0 || S_ISDIR(sb.st_mode)) {
    if (fd >= 0) close(fd);
    stream tmp;
    tmp.name = path;
    notready(tmp, quoted("LINELAST", "unable to open file", path));
    return 0;
  }
  std::string tail;
  long long end = sb.st_size;
  char buf[4096];
  bool skipped_end = false;
  while (end > 0) {
    size_t n = (size_t)std::min<long long>(end, sizeof buf);
    if (pread(fd, buf, n, end - (long long)n) != (ssize_t)n) break;
    end -= (long long)n;
    std::string_view chunk(buf, n);
    if (!skipped_end) {
      if (!chunk.empty() && chunk.back() == '\n') chunk.remove_suffix(1);
      skipped_end = true;
    }
    size_t nl = chunk.rfind('\n');
    if (nl != std::string_view::npos) {
      tail.insert(0, chunk.substr(nl + 1));
      break;
    }
    tail.insert(0, chunk);
  }
  close(fd);
  if (!tail.empty() && tail.back() == '\r') tail.pop_back();
  r.set_str(tail);
  return 0;
}

// ---- STREAM ----------------------------------------------------------------------

namespace {

std::string upper(std::string_view s) {
  std::string u(s);
  for (char& c : u) c = (char)toupper((unsigned char)c);
  return u;
}

std::vector<std::string> words_of(std::string_view s) {
  std::vector<std::string> w;
  for (size_t p = 0; p < s.size();) {
    while (p < s.size() && s[p] == ' ') p++;
    size_t b = p;
    while (p < s.size() && s[p] != ' ') p++;
    if (p > b) w.emplace_back(s.substr(b, p - b));
  }
  return w;
}

std::string datetime_of(const struct stat& sb, bool stamp) {
  tm lt;
  time_t t = sb.st_mtime;
  localtime_r(&t, &lt);
  char b[40];
  if (stamp) strftime(b, sizeof b, "%Y-%m-%d %H:%M:%S", &lt);
  else strftime(b, sizeof b, "%m-%d-%y %H:%M:%S", &lt);
  return b;
}

// QUERY words of a stream command.
std::string query(std::string_view name, const std::vector<std::string>& w) {
  std::string path(name);
  struct stat sb;
  std::string what = w.size() > 1 ? upper(w[1]) : "";
  stream* s = find(name);
  if (what == "EXISTS") {
    if (stat(path.c_str(), &sb) != 0) return "";
    char* full = realpath(path.c_str(), nullptr);
    std::string out = full ? full : path;
    free(full);
    return out;
  }
  if (what == "SIZE") return stat(path.c_str(), &sb) == 0 ? std::to_string((long long)sb.st_size) : "";
  if (what == "DATETIME" || what == "TIMESTAMP")
    return stat(path.c_str(), &sb) == 0 ? datetime_of(sb, what == "TIMESTAMP") : "";
  if (what == "HANDLE") return s && s->fd >= 0 ? std::to_string(s->fd) : "";
  if (what == "STREAMTYPE") {
    if (console_of(name)) return "TRANSIENT";
    return stat(path.c_str(), &sb) == 0 ? (S_ISREG(sb.st_mode) ? "PERSISTENT" : "TRANSIENT") : "UNKNOWN";
  }
  if (what == "POSITION" || what == "SEEK") {
    if (!s || s->fd < 0) return "";
    std::string dir = w.size() > 2 ? upper(w[2]) : "READ";
    std::string unit = w.size() > 3 ? upper(w[3]) : "CHAR";
    if (dir == "WRITE") {
      if (s->woff < 0) return stat(path.c_str(), &sb) == 0 ? std::to_string((long long)sb.st_size + 1) : "1";
      if (unit == "LINE") return s->wline ? std::to_string(s->wline) : "";
      return std::to_string(s->woff + (long long)s->wlen + 1);
    }
    if (unit == "LINE") return s->rline ? std::to_string(s->rline) : "";
    return std::to_string(s->read_at() + 1);
  }
  return "\x01";
}

// SEEK or POSITION: "[=|<|+|-]n [READ|WRITE] [CHAR|LINE]".
std::string seek(std::string_view name, const std::vector<std::string>& w) {
  stream* s = open_stream(name, false, "STREAM");
  if (!s || w.size() < 2) return "ERROR";
  std::string off = w[1];
  char how = '=';
  if (!off.empty() && strchr("=<+-", off[0])) how = off[0], off.erase(0, 1);
  char* e;
  long long n = strtoll(off.c_str(), &e, 10);
  if (off.empty() || *e || n < 0) return "ERROR";
  bool write = false, line = false;
  for (size_t i = 2; i < w.size(); i++) {
    std::string u = upper(w[i]);
    if (u == "WRITE") write = true;
    else if (u == "LINE") line = true;
    else if (u != "READ" && u != "CHAR") return "ERROR";
  }
  if (write && !s->writable) s = open_stream(name, true, "STREAM");
  if (!s) return "ERROR";
  flush_writes(*s, "STREAM");
  struct stat sb;
  fstat(s->fd, &sb);
  long long size = sb.st_size;
  long long target;
  if (line) {
    long long cur = write ? 0 : s->rline;
    target = how == '=' ? n : how == '+' ? cur + n : how == '-' ? cur - n : lines_left(*s, "STREAM") + n;
    if (target < 1) target = 1;
    if (!seek_read_line(*s, target, "STREAM")) return "ERROR";
    if (write) s->woff = s->read_at(), s->wline = target;
    return std::to_string(target);
  }
  long long cur = write ? (s->woff < 0 ? size : s->woff) : s->read_at();
  target = how == '=' ? n - 1 : how == '+' ? cur + n : how == '-' ? cur - n : size - n;
  if (target < 0 || target > size) return "ERROR";
  if (write) s->woff = target, s->wline = 0;
  else seek_read(*s, target, target == 0 ? 1 : 0);
  return std::to_string(target + 1);
}

}  // namespace

int bu_stream(bu_frame& f, value& r) {
  if (int e = bu_count(f, 1, 3)) return e;
  std::string_view name = bu_text(f, 0);
  char op;
  if (int e = bu_option(f, 1, "CDS", 'S', op)) return e;
  if (op != 'C' && bu_has(f, 2)) return bu_fail(f, 2, "argument 3 is only allowed with option C.");
  stream* s = find(name);
  if (op == 'S') {
    r.set_str(console_of(name) ? "READY" : state_names[s ? s->state : ST_UNKNOWN]);
    return 0;
  }
  if (op == 'D') {
    r.set_str(!s ? "" : s->state == ST_READY ? "READY:" : s->desc);
    return 0;
  }
  if (!bu_has(f, 2)) return bu_fail(f, 2, "option C needs a command.");
  std::vector<std::string> w = words_of(bu_text(f, 2));
  std::string verb = w.empty() ? "" : upper(w[0]);
  std::string out = "\x01";
  if (verb == "OPEN") {
    std::string mode = w.size() > 1 ? upper(w[1]) : "BOTH";
    bool wr = mode != "READ";
    if (mode == "WRITE" && w.size() > 2 && upper(w[2]) == "REPLACE") mode = "REPLACE";
    if (mode == "REPLACE") {
      if (s) close_stream(*s, "STREAM");
      std::string path(name);
      int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
      if (fd >= 0) close(fd);
    }
    if (s && s->fd >= 0 && (!wr || s->writable)) {
      out = "READY:";
    } else {
      stream* o = open_stream(name, wr, "STREAM");
      out = o ? "READY:" : "NOTREADY:" + std::string(strerror(errno));
    }
  } else if (verb == "CLOSE") {
    if (s) {
      bool ok = s->fd < 0 || flush_writes(*s, "STREAM");
      close_stream(*s, "STREAM");
      out = ok ? "UNKNOWN" : "ERROR";
    } else {
      out = "UNKNOWN";
    }
  } else if (verb == "FLUSH") {
    out = !s || flush_writes(*s, "STREAM") ? "READY:" : "ERROR";
  } else if (verb == "QUERY") {
    out = query(name, w);
  } else if (verb == "SEEK" || verb == "POSITION") {
    out = seek(name, w);
  }
  if (out == "\x01") return bu_fail(f, 2, "argument 3 is not a valid stream command.");
  r.set_str(out);
  return 0;
}

// ---- the console ------------------------------------------------------------------

int bu_stdin(bu_frame& f, value& r) {
  if (f.argc > 0) return bu_fail(f, 0, "must receive 0 argument.");
  std::string l;
  console_line(l);
  r.set_str(l);
  return 0;
}

namespace {

int console_out(bu_frame& f, value& r, int con) {
  if (int e = bu_count(f, 1, 1)) return e;
  std::string_view t = bu_text(f, 0);
  if (rx_st && (rx_st->lv.trace & TR_I))
    rx_out_trace((con == CON_ERR ? "stderr(write): \"" : "stdout(write): \"") + std::string(t) + "\"\n");
  r.set_num(console_write(con, t, false, con == CON_ERR ? "STDERR" : "STDOUT") ? 0 : 1, 0);
  return 0;
}

}  // namespace

int bu_stdout(bu_frame& f, value& r) { return console_out(f, r, CON_OUT); }
int bu_stderr(bu_frame& f, value& r) { return console_out(f, r, CON_ERR); }
