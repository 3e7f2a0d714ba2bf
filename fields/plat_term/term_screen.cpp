// The terminal screen layer: the grid drawn through curses, which keeps its
// own copy of the screen and sends only the cells that changed; the 65
// logical colours mapped onto what the terminal has; the read's wait made of
// poll on the terminal and on a pipe the signal handlers write to. Hang-up,
// SIGTERM and a closed terminal end the session through the gone mark after
// the hook has saved what it can; SIGTSTP gives the terminal back while
// stopped; the terminal is restored at exit and before a crash report.
#define NCURSES_NOMACROS 1
#include "fields/plat_term/plat_term.h"
#include "fields/plat_term/term_int.h"
#include "platform/platform.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <cstring>
#include <ctime>
#include <curses.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace {

// Mouse reports with buttons held and drags, in the SGR encoding, and focus.
// Pasted text comes bracketed, so that it is never taken for keys.
constexpr char MOUSE_ON[] = "\033[?1000h\033[?1002h\033[?1006h\033[?1004h\033[?2004h";
constexpr char MOUSE_OFF[] = "\033[?2004l\033[?1004l\033[?1006l\033[?1002l\033[?1000l";
constexpr int ESC_WAIT_MS = 30;   // how long the rest of an escape sequence may take
constexpr int STATUS_COLOUR = 64; // the status line is in the default text colour

// The eight colours of a terminal without more, as most show them.
constexpr uint8_t basic[8][3] = {{0, 0, 0},     {205, 0, 0},   {0, 205, 0},   {205, 205, 0},
                                 {0, 0, 238},   {205, 0, 205}, {0, 205, 205}, {229, 229, 229}};
// The steps of the six-level colour cube of 256-colour terminals.
constexpr uint8_t cube[6] = {0, 95, 135, 175, 215, 255};

constexpr int FATAL[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};
constexpr int NFATAL = int(sizeof FATAL / sizeof FATAL[0]);

// What the signal handlers leave for the wait.
volatile sig_atomic_t got_winch = 0;  // the terminal changed size
volatile sig_atomic_t got_hup = 0;    // the terminal went away
volatile sig_atomic_t got_tstp = 0;   // asked to stop
volatile sig_atomic_t got_cont = 0;   // continued after a stop
int wakefd[2] = {-1, -1};             // the handlers write a byte here

// Kept for the crash path, where only write(2) and tcsetattr may be used.
struct termios shell_tio;             // the terminal modes before we started
bool have_tio = false;                // shell_tio holds them
volatile sig_atomic_t in_curses = 0;  // the screen is ours now
int outfd = 1;                        // where the screen goes
char restore[256];                    // what gives the terminal back
size_t restore_len = 0;               // bytes of restore
struct sigaction oldfatal[NFATAL];    // the crash handlers we stand in front of

long long now_ms() {
  timespec t;
  clock_gettime(CLOCK_MONOTONIC, &t);
  return (long long)t.tv_sec * 1000 + t.tv_nsec / 1000000;
}

void on_signal(int sig) {
  int e = errno;
  if (sig == SIGWINCH) got_winch = 1;
  else if (sig == SIGTSTP) got_tstp = 1;
  else if (sig == SIGCONT) got_cont = 1;
  else got_hup = 1;
  if (wakefd[1] >= 0) (void)!write(wakefd[1], "s", 1);
  errno = e;
}

void on_fatal(int sig, siginfo_t *info, void *ctx) {
  if (in_curses) {
    (void)!write(outfd, restore, restore_len);
    if (have_tio) tcsetattr(0, TCSANOW, &shell_tio);
    in_curses = 0;
  }
  for (int i = 0; i < NFATAL; i++) {
    if (FATAL[i] != sig) continue;
    const struct sigaction &o = oldfatal[i];
    if (o.sa_flags & SA_SIGINFO) o.sa_sigaction(sig, info, ctx);
    else if (o.sa_handler != SIG_DFL && o.sa_handler != SIG_IGN) o.sa_handler(sig);
  }
  signal(sig, SIG_DFL);
  raise(sig);
}

void catchsig(int sig) {
  struct sigaction sa{};
  sa.sa_handler = on_signal;
  sa.sa_flags = SA_RESTART;
  sigemptyset(&sa.sa_mask);
  sigaction(sig, &sa, nullptr);
}

// Attributes of the hilite values 0 to 4 (1 never reaches a layer).
constexpr attr_t hilites[] = {A_NORMAL, A_NORMAL, A_REVERSE, A_REVERSE | A_UNDERLINE,
                              A_UNDERLINE};
static_assert(sizeof hilites / sizeof hilites[0] == 5, "hilites 0 to 4");

bool wide = false;  // the locale can show characters past ASCII

// A cell as a character of the screen: a byte of a file of bytes is taken
// as Latin-1, a cell of UTF-8 text is its character; controls, and what the
// locale cannot show in one column, become '?'. A substitute cell (a wide or
// zero-width character kept aside) is the replacement character.
wchar_t glyph(uint16_t c) {
  if (fs_subst(c)) return wide ? L'\uFFFD' : L'?';
  if (c < 32 || (c >= 127 && c < 160) || (c > 127 && !wide)) return L'?';
  if (c > 255 && wcwidth(wchar_t(c)) != 1) return L'?';
  return wchar_t(c);
}

// The string a capability holds, or "" where the terminal has none.
std::string cap(const char *name) {
  char *s = tigetstr(name);
  return s && s != (char *)-1 ? s : "";
}

class termplat : public fs_plat {
 public:
  explicit termplat(fs_term_gonehook hook) : hook_(hook) {
    for (int i = 0; i < 65; i++) rgb_[i][0] = rgb_[i][1] = rgb_[i][2] = i ? 255 : 0;
    colours_ = has_colors() && start_color() == OK && COLORS >= 8;
    perpair_ = colours_ && COLOR_PAIRS > 66;
    for (int i = 0; i < 65; i++) map(i);
    // The title goes where the terminal says, or as xterm takes it.
    tsl_ = cap("tsl");
    fsl_ = cap("fsl");
    if (tsl_.empty() && tigetflag("XT") > 0) tsl_ = "\033]2;", fsl_ = "\007";
    if (fsl_.empty()) tsl_.clear();
    const char *b = getenv("XED_TERM_BYTES");
    if (b && *b) bytesto_ = fopen(b, "a");
  }
  ~termplat() override { leave(); }

  void run(int line, int col, const uint16_t *text, int count, int hilite, int colour,
           int intensity) override {
    if (down_ || line < 1 || line >= LINES || col < 1 || count < 1) return;
    attr_t a = hilite >= 0 && hilite <= 4 ? hilites[hilite] : A_NORMAL;
    if (intensity == 2) a |= A_BOLD;
    bool blank = intensity == 0 || colour == 0;
    short pair = pairof(colour);
    if (cells_.size() < size_t(count)) cells_.resize(size_t(count));
    for (int i = 0; i < count; i++) {
      wchar_t w[2] = {blank ? L' ' : glyph(text[i]), 0};
      // A substitute stands out from the text around it.
      attr_t ca = !blank && fs_subst(text[i]) ? a ^ (A_REVERSE | A_DIM) : a;
      setcchar(&cells_[size_t(i)], w, ca, pair, nullptr);
    }
    mvwadd_wchnstr(stdscr, line - 1, col - 1, cells_.data(), count);
  }

  void cursor(int line, int col, int) override {
    curline_ = line;
    curcol_ = col;
  }
  // A terminal cell has no room for a mark beside its character.
  void tick(int, int, int) override {}

  void status(const std::string &text) override {
    status_ = text;
    drawstatus(status_, A_NORMAL);
  }
  void bell() override {
    if (!down_) beep();
  }
  void flash() override {
    if (!down_) ::flash();
  }
  // The message stands on the status line, reversed, until the status changes.
  void alert(const std::string &text) override {
    if (down_) return;
    drawstatus(text, A_REVERSE);
    beep();
  }
  int wait(int ms) override;
  void peek() override;
  void title(const std::string &text) override {
    std::string t = tk_title_text(text);
    if (t != title_) titlewanted_ = true;
    title_ = t;
  }
  void geometry(fs_metrics &m) override {
    m = fs_metrics{};
    m.cell_w = TK_CELL_W;
    m.cell_h = TK_CELL_H;
    m.client_w = COLS * TK_CELL_W;
    m.client_h = LINES * TK_CELL_H;
    m.screen_w = m.client_w;
    m.screen_h = m.client_h;
  }
  // The terminal's size is the user's to change, not ours.
  void size(int, int) override {}
  void show(int) override {}
  void palette(int entry, int red, int green, int blue) override {
    if (entry < 0 || entry > 64) return;
    rgb_[entry][0] = red;
    rgb_[entry][1] = green;
    rgb_[entry][2] = blue;
    map(entry);
    if (entry == 0)
      for (int i = 1; i < 65; i++) map(i);
  }
  void clear() override {
    if (!down_) werase(stdscr);
  }
  void pointer(int) override {}
  void flush() override;
  bool font_families(std::vector<std::string> &) override { return false; }

  void leave();  // gives the terminal back

 private:
  fs_term_gonehook hook_;         // saves changed files when the terminal goes
  bool down_ = false;             // the terminal was given back for good
  bool gone_ = false;             // the gone mark was set
  bool colours_ = false;          // the terminal has at least eight colours
  bool perpair_ = false;          // one colour pair for each logical colour
  int rgb_[65][3];                // the palette
  short phys_[65] = {};           // terminal colour of each logical colour
  std::vector<cchar_t> cells_;    // one run, ready to draw
  int curline_ = 1, curcol_ = 1;  // where the cursor goes at the end of a refresh
  std::string status_;            // the status line as last given
  std::string title_;             // the window title
  bool titlewanted_ = false;      // the title changed since it was last sent
  std::string tsl_, fsl_;         // what goes before and after a title; none: no title
  int held_ = -1;                 // mouse button down, for the old encoding
  int empties_ = 0;               // readable input that gave nothing, in a row
  FILE *bytesto_ = nullptr;       // where the bytes of each refresh are counted

  void map(int i);
  short pairof(int colour) const;
  void drawstatus(const std::string &text, attr_t a);
  bool readinput();
  int hangup();
  int signals();
  void suspend();
  bool console(bool give) override;
  void repaint();
};

void termplat::map(int i) {
  if (!colours_) return;
  int c = COLORS >= 256 ? tk_nearest256(rgb_[i][0], rgb_[i][1], rgb_[i][2])
                        : tk_nearest8(rgb_[i][0], rgb_[i][1], rgb_[i][2]);
  phys_[i] = short(c);
  short bg = phys_[0];
  if (perpair_) {
    init_pair(short(i + 1), phys_[i], bg);
    return;
  }
  // Eight pairs, one for each terminal colour, all on the background;
  // text the colour of the background would vanish, so it takes the opposite.
  for (short p = 0; p < 8; p++) init_pair(short(p + 1), p == bg ? short(7 - bg) : p, bg);
}

short termplat::pairof(int colour) const {
  if (!colours_ || colour < 0 || colour > 64) return 0;
  return perpair_ ? short(colour + 1) : short(phys_[colour] + 1);
}

void termplat::drawstatus(const std::string &text, attr_t a) {
  if (down_ || LINES < 1) return;
  std::vector<cchar_t> cells(static_cast<size_t>(COLS));
  short pair = pairof(STATUS_COLOUR);
  for (int i = 0; i < COLS; i++) {
    wchar_t w[2] = {size_t(i) < text.size() ? glyph(uint8_t(text[size_t(i)])) : L' ', 0};
    setcchar(&cells[size_t(i)], w, a, pair, nullptr);
  }
  mvwadd_wchnstr(stdscr, LINES - 1, 0, cells.data(), COLS);
}

// Bytes written by the process so far, from the kernel's count.
long long written() {
  FILE *f = fopen("/proc/self/io", "r");
  if (!f) return 0;
  char line[128];
  long long n = 0;
  while (fgets(line, sizeof line, f))
    if (sscanf(line, "wchar: %lld", &n) == 1) break;
  fclose(f);
  return n;
}

void termplat::flush() {
  if (down_) return;
  long long before = bytesto_ ? written() : 0;
  int l = curline_ >= 1 && curline_ < LINES ? curline_ - 1 : 0;
  int c = curcol_ >= 1 && curcol_ <= COLS ? curcol_ - 1 : 0;
  wmove(stdscr, l, c);
  wrefresh(stdscr);
  if (titlewanted_) {
    titlewanted_ = false;
    if (!tsl_.empty()) {
      std::string t = tsl_ + title_ + fsl_;
      (void)!write(outfd, t.data(), t.size());
    }
  }
  if (bytesto_ && written() > before) {
    fprintf(bytesto_, "%lld\n", written() - before);
    fflush(bytesto_);
  }
  // A terminal that has gone away shows up as an error on its output side.
  pollfd p{outfd, 0, 0};
  if (poll(&p, 1, 0) > 0 && (p.revents & (POLLHUP | POLLERR | POLLNVAL))) got_hup = 1;
}

void termplat::leave() {
  if (down_) return;
  down_ = true;
  (void)!write(outfd, MOUSE_OFF, sizeof MOUSE_OFF - 1);
  endwin();
  in_curses = 0;
}

int termplat::hangup() {
  if (!gone_) {
    gone_ = true;
    leave();
    if (hook_) hook_();
    fs_mark(FS_MARK_GONE);
  }
  return FS_WAIT_GONE;
}

void termplat::repaint() {
  if (down_) return;
  (void)!write(outfd, MOUSE_ON, sizeof MOUSE_ON - 1);
  in_curses = 1;
  clearok(curscr, TRUE);
  wrefresh(stdscr);
}

// Stops the process with the terminal given back, and takes it again after.
void termplat::suspend() {
  if (down_) return;
  (void)!write(outfd, MOUSE_OFF, sizeof MOUSE_OFF - 1);
  endwin();
  in_curses = 0;
  signal(SIGTSTP, SIG_DFL);
  sigset_t s;
  sigemptyset(&s);
  sigaddset(&s, SIGTSTP);
  sigprocmask(SIG_UNBLOCK, &s, nullptr);
  raise(SIGTSTP);
  catchsig(SIGTSTP);
  got_cont = 0;
  repaint();
}

// A foreground command runs on the terminal as the shell would leave it:
// curses gives the modes back, and takes them again with a full redraw.
bool termplat::console(bool give) {
  if (down_) return false;
  if (give) {
    (void)!write(outfd, MOUSE_OFF, sizeof MOUSE_OFF - 1);
    endwin();
    in_curses = 0;
  } else {
    repaint();
  }
  return true;
}

// Acts on what the handlers noted; -2 when the wait goes on.
int termplat::signals() {
  if (got_hup || pl_endsig()) return hangup();
  if (got_tstp) {
    got_tstp = 0;
    suspend();
  }
  if (got_cont) {
    got_cont = 0;
    repaint();
  }
  if (got_winch) {
    got_winch = 0;
    winsize ws{};
    if (ioctl(outfd, TIOCGWINSZ, &ws) == 0 && ws.ws_row > 0 && ws.ws_col > 0 && !down_) {
      resize_term(ws.ws_row, ws.ws_col);
      clearok(curscr, TRUE);
      fs_mark(FS_MARK_RESIZE);
      return FS_WAIT_EVENT;
    }
  }
  return -2;
}

// Takes everything the terminal has sent; true when events were queued.
bool termplat::readinput() {
  std::vector<int> units;
  bool waited = false;
  for (;;) {
    wint_t wc;
    int r = wget_wch(stdscr, &wc);
    if (r == ERR) {
      // A lone escape may be the start of a sequence still on its way.
      if (!waited && !units.empty() && units.back() == 27) {
        waited = true;
        pollfd p{0, POLLIN, 0};
        if (poll(&p, 1, ESC_WAIT_MS) > 0) continue;
      }
      break;
    }
    units.push_back(r == KEY_CODE_YES ? TK_KEY + int(wc) : int(wc));
  }
  empties_ = units.empty() ? empties_ + 1 : 0;
  std::vector<tk_out> out;
  tk_decode(units, out, &held_);
  timespec t;
  clock_gettime(CLOCK_MONOTONIC, &t);
  for (tk_out &o : out) {
    o.ev.seconds = uint32_t(t.tv_sec);
    o.ev.microseconds = uint32_t(t.tv_nsec / 1000);
    fs_postev(o.ev, o.ch);
  }
  return !out.empty();
}

int termplat::wait(int ms) {
  if (gone_) return FS_WAIT_GONE;
  if (fs_evpending()) return FS_WAIT_EVENT;
  // The read refreshes the screen only when it returns: an event it takes
  // in itself (a click that places the cursor, a typed or deleted
  // character) changes the page with nothing drawn. A window would paint
  // those changes at its next paint message; the terminal's paint is this
  // refresh before sleeping. With nothing changed it sends nothing.
  if (!down_) asrefresh();
  long long end = ms >= 0 ? now_ms() + ms : -1;
  for (;;) {
    int r = signals();
    if (r != -2) return r;
    if (down_) return hangup();
    long long left = end < 0 ? -1 : end - now_ms();
    if (end >= 0 && left < 0) left = 0;
    // The terminal, the wake pipe, the end requests, then the children's
    // pipes: their output is taken here so that it arrives while keys work.
    std::vector<pollfd> p = {{0, POLLIN, 0}, {wakefd[0], POLLIN, 0}, {pl_endsig_fd(), POLLIN, 0}};
    pl_watch_fill(p);
    int n = poll(p.data(), p.size(), int(left));
    if (n < 0 && errno != EINTR) return hangup();
    if (n > 0 && p.size() > 3 && pl_watch_run(p.data() + 3, p.size() - 3) && !(p[0].revents & POLLIN))
      return FS_WAIT_EVENT;
    if (n > 0 && (p[1].revents & POLLIN)) {
      char buf[64];
      while (read(wakefd[0], buf, sizeof buf) > 0) {
      }
    }
    if (n > 0 && (p[0].revents & (POLLHUP | POLLERR | POLLNVAL))) return hangup();
    if (n > 0 && (p[0].revents & POLLIN)) {
      if (readinput()) return FS_WAIT_EVENT;
      // Readable again and again with nothing to read: the end of the input.
      if (empties_ > 20) return hangup();
    }
    if (end >= 0 && now_ms() >= end && !got_winch && !got_hup) return FS_WAIT_TIMEOUT;
  }
}

// What was typed while a macro runs: read whatever is there, events queued
// or not, and draw nothing (the page stays as it was until the macro ends).
void termplat::peek() {
  if (gone_ || down_) return;
  pollfd p = {0, POLLIN, 0};
  if (poll(&p, 1, 0) > 0 && (p.revents & POLLIN)) readinput();
}

termplat *layer = nullptr;  // the one terminal layer of the process

// Every copy also goes to the terminal's clipboard; lines end as on Linux.
void osc52_put(const pl_clip &c) {
  if (!in_curses) return;
  std::string text;
  for (size_t i = 0; i < c.lines.size(); i++) text += (i ? "\n" : "") + c.lines[i];
  std::string seq = tk_osc52(text);
  (void)!write(outfd, seq.data(), seq.size());
}

void atexit_restore() {
  if (layer) layer->leave();
}

}  // namespace

std::string tk_title_text(const std::string &text) {
  std::string out;
  size_t i = 0, n = text.size();
  auto hex = [&](unsigned char c) {
    char b[8];
    snprintf(b, sizeof b, "\\x%02X", c);
    out += b;
  };
  while (i < n) {
    unsigned char c = (unsigned char)text[i];
    if (c < 0x20 || c == 0x7f) {
      out += '^';
      out += char(c == 0x7f ? '?' : c + 64);
      i++;
      continue;
    }
    if (c < 0x80) {
      out += char(c);
      i++;
      continue;
    }
    // A whole UTF-8 sequence passes, unless it spells a C1 control.
    size_t len = c >= 0xf0 && c < 0xf5 ? 4 : c >= 0xe0 ? 3 : c >= 0xc2 ? 2 : 0;
    bool ok = len > 0 && i + len <= n;
    for (size_t k = 1; ok && k < len; k++) ok = ((unsigned char)text[i + k] & 0xc0) == 0x80;
    if (ok && c == 0xc2 && (unsigned char)text[i + 1] < 0xa0) {
      hex((unsigned char)text[i + 1]);
      i += 2;
      continue;
    }
    if (!ok) {
      hex(c);
      i++;
      continue;
    }
    out.append(text, i, len);
    i += len;
  }
  return out;
}

int tk_nearest8(int r, int g, int b) {
  // Greys have no hue to keep: by distance alone a mid grey would go to
  // yellow, so they go to black or white by their lightness.
  if (std::max({r, g, b}) - std::min({r, g, b}) < 40) return r + g + b < 3 * 96 ? 0 : 7;
  int best = 0;
  long bestd = LONG_MAX;
  for (int i = 0; i < 8; i++) {
    long dr = r - basic[i][0], dg = g - basic[i][1], db = b - basic[i][2];
    long d = dr * dr + dg * dg + db * db;
    if (d < bestd) bestd = d, best = i;
  }
  return best;
}

static int step6(int v) {
  int best = 0;
  for (int i = 1; i < 6; i++)
    if (abs(v - cube[i]) < abs(v - cube[best])) best = i;
  return best;
}

int tk_nearest256(int r, int g, int b) {
  int ri = step6(r), gi = step6(g), bi = step6(b);
  long dr = r - cube[ri], dg = g - cube[gi], db = b - cube[bi];
  long dcube = dr * dr + dg * dg + db * db;
  int avg = (r + g + b) / 3;
  int gi2 = avg < 8 ? 0 : avg > 238 ? 23 : (avg - 8) / 10;
  int gv = 8 + gi2 * 10;
  long dgrey = long(r - gv) * (r - gv) + long(g - gv) * (g - gv) + long(b - gv) * (b - gv);
  return dgrey < dcube ? 232 + gi2 : 16 + 36 * ri + 6 * gi + bi;
}

fs_plat *fs_plat_term(fs_term_gonehook onhangup, std::string &err) {
  if (layer) return layer;
  const char *t = getenv("TERM");
  if (!t || !*t) {
    err = "TERM is not set";
    return nullptr;
  }
  if (!isatty(0)) {
    err = "standard input is not a terminal";
    return nullptr;
  }
  FILE *out = stdout;
  if (!isatty(1)) {
    int fd = open("/dev/tty", O_WRONLY | O_CLOEXEC);
    out = fd >= 0 ? fdopen(fd, "w") : nullptr;
    if (!out) {
      err = "no terminal to write to";
      return nullptr;
    }
  }
  outfd = fileno(out);
  setlocale(LC_CTYPE, "");
  wide = MB_CUR_MAX > 1;
  have_tio = tcgetattr(0, &shell_tio) == 0;
  // Our handlers first: curses then leaves SIGWINCH and SIGTSTP to us.
  if (wakefd[0] < 0 && pipe2(wakefd, O_NONBLOCK | O_CLOEXEC) != 0) {
    err = "no pipe for signals";
    return nullptr;
  }
  // Hang-up and the other requests to end are the process's own (noted
  // for us in pl_endsig); the layer takes job control and resizes.
  for (int s : {SIGWINCH, SIGTSTP, SIGCONT}) catchsig(s);
  if (!newterm(t, out, stdin)) {
    err = std::string("unknown terminal type \"") + t + "\"";
    return nullptr;
  }
  raw();
  noecho();
  nonl();
  intrflush(stdscr, FALSE);
  keypad(stdscr, TRUE);
  nodelay(stdscr, TRUE);
  set_escdelay(ESC_WAIT_MS);
  // The mouse is read by the layer itself, in whatever encoding comes.
  std::string km = cap("kmous");
  if (!km.empty()) define_key(km.c_str(), 0);
  char seq[32];
  for (int i = 0; i < tk_nxkeys; i++)
    for (int m = 2; m <= 8; m++) {
      tk_xseq(i, m, seq, sizeof seq);
      define_key(seq, 0);
      define_key(seq, TK_XTERM + i * TK_XSTRIDE + m);
    }
  std::string r = std::string(MOUSE_OFF) + cap("sgr0") + cap("cnorm") + cap("rmcup");
  restore_len = std::min(r.size(), sizeof restore);
  memcpy(restore, r.data(), restore_len);
  struct sigaction sa{};
  sa.sa_sigaction = on_fatal;
  sa.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_RESETHAND;
  sigemptyset(&sa.sa_mask);
  for (int i = 0; i < NFATAL; i++) sigaction(FATAL[i], &sa, &oldfatal[i]);
  (void)!write(outfd, MOUSE_ON, sizeof MOUSE_ON - 1);
  in_curses = 1;
  layer = new termplat(onhangup);
  pl_clip_system.put = osc52_put;
  atexit(atexit_restore);
  return layer;
}
