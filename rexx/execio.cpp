// EXECIO: lines of a file to and from the stack or variables.
//
//   lines DISKR  fn [ft [fm [linenum]]]            [( read options]
//   lines DISKRU fn [ft [fm [linenum]]]            [( read options]
//   lines DISKW  fn [ft [fm [linenum [recfm [lrecl]]]]] [( write options]
//   lines DISKI  (as DISKW: inserts before linenum)
//   lines DISKD  fn [ft [fm [linenum]]]            [( FINIS]
//   lines PRINT  printer [linenum [recfm [lrecl]]]  [( write options]
//
// The operands are read by a small lexer (blank-separated words, a name may
// be quoted) into an operand block, driven by two tables: the positional
// words of each mode, and the options with the modes that take them.
//
// A file read or written without FINIS stays open, so the next EXECIO on it
// goes on where this one stopped. fn, ft and fm make the name "fm/fn.ft";
// an fm of one letter and an optional digit names the current folder; fn
// alone, or an fn holding a '/' or a '.', is the whole path, and the next
// word after such a name is the line number.
//
// PRINT gathers lines into a job for the printer (* the one set up) and
// hands the job to the printing service at FINIS, or at the end of the
// program; with no printer set up the job becomes a PDF document in the
// current folder. LINESPAGE starts a page after that many lines.
//
// Return codes: 0 done, 2 the end of the file came before the count (or a
// FIND/LOCATE/AVOID target was not met), 24 a bad operand (with its
// message), 28 the file does not exist, 31 a read or write failed.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <unordered_map>
#include <vector>

#include "platform/platform.h"
#include "rexx/exec_int.h"

namespace {

enum mode_t_ { M_NONE, M_DISKR, M_DISKRU, M_DISKW, M_DISKI, M_DISKD, M_PRINT };
enum { RC_EOF = 2, RC_SYNTAX = 24, RC_NOFILE = 28, RC_IO = 31 };

struct operands {
  long long lines = -1;       // -1 for *
  int mode = M_NONE;
  std::string fn, ft, fm;
  long long linenum = 0;      // 0 not given
  char recfm = 'V';
  long long lrecl = 0;
  bool finis = false, lifo = false, skip = false, strip = false, notype = false;
  std::string find, locate, avoid;  // targets, empty when not given
  bool has_find = false, has_locate = false, has_avoid = false;
  long long zone1 = 1, zone2 = 0;     // columns searched; 0 the end
  long long marg1 = 1, marg2 = 0;     // columns kept; 0 the end
  std::string stem, var;
  bool has_stem = false, has_var = false;
  bool fold = false;                  // CASE U: targets and lines compared folded
  long long linespage = 0;
  std::string string;                 // STRING: the text to write
  bool has_string = false;
};

int syntax(const char* msg) {
  rx_out_trace(std::string("MOLBA: ") + msg + "\n");
  return RC_SYNTAX;
}

// ---- the lexer -------------------------------------------------------------

struct lexer {
  std::string_view s;
  size_t p = 0;
  // The next word, a quoted one without its quotes; false at the end.
  bool word(std::string& out) {
    while (p < s.size() && s[p] == ' ') p++;
    if (p >= s.size()) return false;
    out.clear();
    if (s[p] == '"' || s[p] == '\'') {
      char q = s[p++];
      while (p < s.size()) {
        if (s[p] == q) {
          if (p + 1 < s.size() && s[p + 1] == q) {
            out += q;
            p += 2;
            continue;
          }
          p++;
          break;
        }
        out += s[p++];
      }
      return true;
    }
    if (s[p] == '(' ) {
      p++;
      out = "(";
      return true;
    }
    while (p < s.size() && s[p] != ' ') out += s[p++];
    return true;
  }
  // The rest of the text after one blank, for STRING.
  std::string rest() {
    if (p < s.size() && s[p] == ' ') p++;
    std::string r(s.substr(p));
    p = s.size();
    return r;
  }
  // A delimited target: /text/ with any delimiter character.
  bool target(std::string& out) {
    while (p < s.size() && s[p] == ' ') p++;
    if (p >= s.size()) return false;
    char d = s[p++];
    size_t e = s.find(d, p);
    if (e == std::string_view::npos) e = s.size();
    out = std::string(s.substr(p, e - p));
    p = e < s.size() ? e + 1 : e;
    return true;
  }
};

std::string lower(std::string s) {
  for (char& c : s) c = (char)tolower((unsigned char)c);
  return s;
}

bool number(const std::string& w, long long& n) {
  if (w.empty() || w.size() > 9) return false;
  n = 0;
  for (char c : w) {
    if (c < '0' || c > '9') return false;
    n = n * 10 + (c - '0');
  }
  return true;
}

// ---- positional words ---------------------------------------------------------

using pos_fn = int (*)(operands& o, const std::string& w);

int pos_fn_(operands& o, const std::string& w) { o.fn = w; return 0; }
int pos_ft(operands& o, const std::string& w) { o.ft = w; return 0; }
int pos_fm(operands& o, const std::string& w) { o.fm = w; return 0; }
int pos_linenum(operands& o, const std::string& w) {
  if (!number(w, o.linenum) || o.linenum < 1) return syntax("Invalid EXECIO \"LINENUM\" operand.");
  return 0;
}
// A printer's name as the printing system takes it: printable, without
// blanks, slashes or number signs; * the printer set up.
int pos_printer(operands& o, const std::string& w) {
  bool ok = !w.empty() && w.size() <= 127;
  for (char c : w)
    if ((unsigned char)c <= ' ' || c == 0x7f || c == '/' || c == '#') ok = false;
  if (!ok) return syntax("Invalid EXECIO \"PRINTER\" operand.");
  o.fn = w;
  return 0;
}
int pos_recfm(operands& o, const std::string& w) {
  if (w.size() != 1 || !strchr("FfVv", w[0])) return syntax("Invalid EXECIO \"RECFM\" value.");
  o.recfm = (char)toupper((unsigned char)w[0]);
  return 0;
}
int pos_lrecl(operands& o, const std::string& w) {
  if (!number(w, o.lrecl) || o.lrecl < 1) return syntax("Invalid EXECIO \"LRECL\" operand.");
  return 0;
}

struct mode_row {
  const char* word;      // lower case
  int mode;
  bool reads;            // takes the read options (else the write options)
  pos_fn pos[6];         // the positional words in order
};

constexpr mode_row mode_rows[] = {
    {"diskr", M_DISKR, true, {pos_fn_, pos_ft, pos_fm, pos_linenum, nullptr, nullptr}},
    {"diskru", M_DISKRU, true, {pos_fn_, pos_ft, pos_fm, pos_linenum, nullptr, nullptr}},
    {"diskw", M_DISKW, false, {pos_fn_, pos_ft, pos_fm, pos_linenum, pos_recfm, pos_lrecl}},
    {"diski", M_DISKI, false, {pos_fn_, pos_ft, pos_fm, pos_linenum, pos_recfm, pos_lrecl}},
    {"diskd", M_DISKD, false, {pos_fn_, pos_ft, pos_fm, pos_linenum, nullptr, nullptr}},
    {"print", M_PRINT, false, {pos_printer, pos_linenum, pos_recfm, pos_lrecl, nullptr, nullptr}},
};

// ---- options ------------------------------------------------------------------

enum { OPT_READ = 1, OPT_WRITE = 2, OPT_BOTH = 3 };

using opt_fn = int (*)(operands& o, lexer& lx);

int opt_finis(operands& o, lexer&) { o.finis = true; return 0; }
int opt_lifo(operands& o, lexer&) { o.lifo = true; return 0; }
int opt_fifo(operands& o, lexer&) { o.lifo = false; return 0; }
int opt_skip(operands& o, lexer&) { o.skip = true; return 0; }
int opt_strip(operands& o, lexer&) { o.strip = true; return 0; }
int opt_notype(operands& o, lexer&) { o.notype = true; return 0; }
int opt_find(operands& o, lexer& lx) {
  if (!lx.target(o.find)) return syntax("Invalid EXECIO \"FIND\" operand");
  o.has_find = true;
  return 0;
}
int opt_locate(operands& o, lexer& lx) {
  if (!lx.target(o.locate) || o.locate.empty()) return syntax("Invalid EXECIO \"LOCATE\" operand");
  o.has_locate = true;
  return 0;
}
int opt_avoid(operands& o, lexer& lx) {
  if (!lx.target(o.avoid) || o.avoid.empty()) return syntax("Invalid EXECIO \"AVOID\" operand");
  o.has_avoid = true;
  return 0;
}
// Two columns, the second a number or *.
bool columns(lexer& lx, long long& a, long long& b) {
  std::string w1, w2;
  if (!lx.word(w1) || !lx.word(w2) || !number(w1, a) || a < 1) return false;
  if (w2 == "*") b = 0;
  else if (!number(w2, b) || b < a) return false;
  return true;
}
int opt_zone(operands& o, lexer& lx) {
  return columns(lx, o.zone1, o.zone2) ? 0 : syntax("Invalid EXECIO \"ZONE\" operand.");
}
int opt_margins(operands& o, lexer& lx) {
  return columns(lx, o.marg1, o.marg2) ? 0 : syntax("Invalid EXECIO \"MARGINS\" operand.");
}
int opt_columns(operands& o, lexer& lx) {
  return columns(lx, o.marg1, o.marg2) ? 0 : syntax("Invalid EXECIO \"COLUMNS\" operand.");
}
int opt_stem(operands& o, lexer& lx) {
  if (!lx.word(o.stem)) return syntax("Missing EXECIO \"STEM\" operand.");
  std::string name = bu_symbol_case(o.stem);
  std::string base = !name.empty() && name.back() == '.' ? name.substr(0, name.size() - 1) : name;
  if (base.empty() || !vars_valid_name(name)) return syntax("Invalid EXECIO \"STEM\" operand.");
  o.stem = name;
  o.has_stem = true;
  return 0;
}
int opt_var(operands& o, lexer& lx) {
  if (!lx.word(o.var)) return syntax("Missing EXECIO \"VAR\" operand.");
  o.var = bu_symbol_case(o.var);
  if (!vars_valid_name(o.var) || o.var.back() == '.') return syntax("Invalid EXECIO \"VAR\" operand.");
  o.has_var = true;
  return 0;
}
int opt_case(operands& o, lexer& lx) {
  std::string w;
  if (!lx.word(w)) return syntax("Invalid EXECIO \"CASE\" operand.");
  w = lower(w);
  if (w != "u" && w != "m" && w != "upper" && w != "mixed") return syntax("Invalid EXECIO \"CASE\" operand.");
  o.fold = w[0] == 'u';
  return 0;
}
int opt_linespage(operands& o, lexer& lx) {
  std::string w;
  if (!lx.word(w) || !number(w, o.linespage)) return syntax("Invalid EXECIO \"LINESPAGE\" operand.");
  return 0;
}
int opt_string(operands& o, lexer& lx) {
  o.string = lx.rest();
  o.has_string = true;
  return 0;
}

struct option_row {
  const char* word;  // lower case
  int modes;         // OPT_READ, OPT_WRITE or both
  opt_fn run;
};

constexpr option_row option_rows[] = {
    {"finis", OPT_BOTH, opt_finis},    {"find", OPT_READ, opt_find},       {"locate", OPT_READ, opt_locate},
    {"avoid", OPT_READ, opt_avoid},    {"zone", OPT_READ, opt_zone},       {"lifo", OPT_READ, opt_lifo},
    {"fifo", OPT_READ, opt_fifo},      {"skip", OPT_READ, opt_skip},       {"margins", OPT_BOTH, opt_margins},
    {"columns", OPT_BOTH, opt_columns}, {"strip", OPT_BOTH, opt_strip},    {"notype", OPT_BOTH, opt_notype},
    {"stem", OPT_BOTH, opt_stem},      {"var", OPT_BOTH, opt_var},         {"case", OPT_BOTH, opt_case},
    {"linespage", OPT_WRITE, opt_linespage}, {"string", OPT_WRITE, opt_string},
};

int parse(std::string_view text, operands& o) {
  lexer lx{text};
  std::string w;
  if (!lx.word(w)) return syntax("Invalid EXECIO Parameter List.");
  if (w == "*") o.lines = -1;
  else if (!number(w, o.lines)) return syntax("Invalid EXECIO \"LINES\" operand.");
  if (!lx.word(w)) return syntax("Invalid EXECIO mode operand.");
  const mode_row* mode = nullptr;
  for (const mode_row& m : mode_rows)
    if (lower(w) == m.word) mode = &m;
  if (!mode) return syntax("Invalid EXECIO mode operand.");
  o.mode = mode->mode;
  int npos = 0;
  bool in_options = false;
  while (lx.word(w)) {
    if (w == "(") {
      in_options = true;
      break;
    }
    if (npos >= 6 || !mode->pos[npos]) return syntax("Invalid EXECIO Parameter List.");
    if (int rc = mode->pos[npos++](o, w)) return rc;
    // A path or a name with its extension is the file whole: no ft or fm
    // follow it.
    if (npos == 1 && mode->pos[1] == pos_ft && o.fn.find_first_of("/.") != std::string::npos) npos = 3;
  }
  if (o.fn.empty())
    return syntax(o.mode == M_PRINT ? "Invalid EXECIO \"PRINTER\" operand." : "Invalid EXECIO \"FN\" and \"FT\" operands.");
  while (in_options && lx.word(w)) {
    if (w == ")") continue;
    std::string lw = lower(w);
    const option_row* opt = nullptr;
    for (const option_row& r : option_rows)
      if (lw == r.word) opt = &r;
    int want = mode->reads ? OPT_READ : OPT_WRITE;
    if (!opt || !(opt->modes & want) || (o.mode == M_DISKD && opt->run != opt_finis))
      return syntax("Invalid EXECIO Parameter List.");
    if (int rc = opt->run(o, lx)) return rc;
  }
  if (o.has_var && o.has_stem) return syntax("Conflicting EXECIO \"VAR\" and \"STEM\" operands.");
  if (o.has_var && (o.has_find || o.has_locate || o.has_avoid))
    return syntax("Conflicting EXECIO \"VAR\" and \"FIND/LOCATE/AVOID\" operands.");
  if (o.has_var && o.lines != 1 && !(o.lines == 0 && o.finis)) return syntax("Invalid EXECIO \"LINES\" operand.");
  return 0;
}

// ---- files ------------------------------------------------------------------------

std::string path_of(const operands& o) {
  if (o.ft.empty()) return o.fn;
  std::string name = o.fn + "." + o.ft;
  bool disk_letter = o.fm.size() <= 2 && !o.fm.empty() && isalpha((unsigned char)o.fm[0]) &&
                     (o.fm.size() == 1 || isdigit((unsigned char)o.fm[1]));
  if (o.fm.empty() || disk_letter || o.fm == "*" || o.fm == "=") return name;
  return o.fm + (o.fm.back() == '/' ? "" : "/") + name;
}

// A file kept open between calls.
struct open_file {
  int fd = -1;
  std::unique_ptr<char[]> buf;    // read buffer
  size_t pos = 0, end = 0;        // unread bytes buf[pos, end)
  long long off = 0;              // file offset past buf's end
  long long line = 1;             // line number of the next line to read
  long long ru_line = 0;          // the last line DISKRU read, for a DISKW after it
  bool append_open = false;       // fd is the writing descriptor
};

constexpr size_t BUF = 1 << 20;

std::unordered_map<std::string, open_file>& files() {
  static std::unordered_map<std::string, open_file> f;
  return f;
}

void forget(const std::string& path) {
  auto it = files().find(path);
  if (it == files().end()) return;
  if (it->second.fd >= 0) close(it->second.fd);
  files().erase(it);
}

int io_error(const char* what, const std::string& path) {
  rx_out_trace(std::string("EXECIO: ") + what + " \"" + path + "\"\n");
  return RC_IO;
}

// Next line of an open file; false at the end. A line that is not wholly
// in the buffer (longer than it, or the last one without an end) is
// gathered in spill.
bool next_line(open_file& f, std::string_view& line, std::string& spill, bool& err) {
  bool long_line = false;
  spill.clear();
  for (;;) {
    const char* b = f.buf.get();
    if (const char* nl = (const char*)memchr(b + f.pos, '\n', f.end - f.pos)) {
      line = std::string_view(b + f.pos, (size_t)(nl - b - f.pos));
      f.pos = (size_t)(nl - b) + 1;
      f.line++;
      if (long_line) {
        spill.append(line);
        line = spill;
      }
      if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
      return true;
    }
    if (f.end - f.pos == BUF) {
      spill.append(b, BUF);
      long_line = true;
      f.pos = f.end = 0;
    }
    memmove(f.buf.get(), b + f.pos, f.end - f.pos);
    f.end -= f.pos;
    f.pos = 0;
    ssize_t n;
    do n = pread(f.fd, f.buf.get() + f.end, BUF - f.end, f.off);
    while (n < 0 && errno == EINTR);
    if (n < 0) {
      err = true;
      return false;
    }
    f.end += (size_t)n;
    f.off += n;
    if (n == 0) {
      if (f.end == 0 && !long_line) return false;
      spill.append(f.buf.get(), f.end);
      f.pos = f.end = 0;
      f.line++;
      line = spill;
      if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
      return true;
    }
  }
}

bool contains(std::string_view hay, std::string_view needle, bool fold) {
  if (!fold) return hay.find(needle) != std::string_view::npos;
  auto it = std::search(hay.begin(), hay.end(), needle.begin(), needle.end(),
                        [](char a, char b) { return toupper((unsigned char)a) == toupper((unsigned char)b); });
  return it != hay.end();
}

std::string_view columns_of(std::string_view s, long long a, long long b) {
  if ((size_t)a > s.size()) return {};
  return s.substr((size_t)a - 1, b ? (size_t)(b - a + 1) : std::string_view::npos);
}

// Whether a line meets the FIND/LOCATE/AVOID target (true when none).
bool meets(const operands& o, std::string_view line) {
  std::string_view z = columns_of(line, o.zone1, o.zone2);
  if (o.has_find) {
    std::string_view t = o.find;
    if (z.size() < t.size()) return false;
    return o.fold ? contains(z.substr(0, t.size()), t, true) : z.substr(0, t.size()) == t;
  }
  if (o.has_locate) return contains(z, o.locate, o.fold);
  if (o.has_avoid) return !contains(z, o.avoid, o.fold);
  return true;
}

int do_read(operands& o) {
  std::string path = path_of(o);
  auto it = files().find(path);
  if (it != files().end() && it->second.append_open) {
    forget(path);
    it = files().end();
  }
  if (it == files().end()) {
    int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat sb;
    if (fd < 0 || fstat(fd, &sb) != 0 || S_ISDIR(sb.st_mode)) {
      if (fd >= 0) close(fd);
      if (errno == ENOENT || fd >= 0) {
        rx_out_trace("MOLBA: File not found.\n");
        return RC_NOFILE;
      }
      return io_error("unable to read file", path);
    }
    open_file f;
    f.fd = fd;
    f.buf.reset(new char[BUF]);
    it = files().emplace(path, std::move(f)).first;
  }
  open_file& f = it->second;
  if (o.linenum) {
    if (o.linenum < f.line) {
      f.pos = f.end = 0;
      f.off = 0;
      f.line = 1;
    }
    std::string_view l;
    std::string spill;
    bool err = false;
    while (f.line < o.linenum && next_line(f, l, spill, err)) {}
    if (err) return io_error("error while scanning file", path);
  }
  long long done = 0;
  int rc = 0;
  std::string spill;
  std::string_view line;
  bool err = false;
  bool to_stem = o.has_stem;
  std::string stem = o.stem;
  if (to_stem && stem.back() != '.') stem += '.';
  std::string name = stem;
  size_t stem_len = stem.size();
  bool seeking = o.has_find || o.has_locate || o.has_avoid;
  // With a target, lines before it are passed over and the count starts
  // at the first line that meets it.
  while (o.lines < 0 || done < o.lines) {
    if (!next_line(f, line, spill, err)) {
      if (err) rc = io_error("error while reading file", path);
      else if (o.lines > 0 || seeking) rc = RC_EOF;
      break;
    }
    if (seeking) {
      if (!meets(o, line)) continue;
      seeking = false;
    }
    if (o.mode == M_DISKRU) f.ru_line = f.line - 1;
    done++;
    if (o.skip) continue;
    std::string_view v = columns_of(line, o.marg1, o.marg2);
    if (o.strip)
      while (!v.empty() && v.back() == ' ') v.remove_suffix(1);
    if (to_stem) {
      name.resize(stem_len);
      char num[24];
      int n = snprintf(num, sizeof num, "%lld", done);
      name.append(num, (size_t)n);
      rx_set_name(name, value(v));
    } else if (o.has_var) {
      rx_set_name(o.var, value(v));
    } else if (o.lifo) {
      rx_stack_push(v);
    } else {
      rx_stack_queue(v);
    }
  }
  if (to_stem && !o.skip) rx_set_name(stem + "0", value((double)done, 0));
  if (o.finis || rc == RC_IO) forget(path);
  return rc;
}

// The whole file as lines, for the writes that change it in place.
bool load_lines(const std::string& path, std::vector<std::string>& lines) {
  int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return errno == ENOENT;
  std::string all;
  char buf[65536];
  ssize_t n;
  while ((n = read(fd, buf, sizeof buf)) > 0) all.append(buf, (size_t)n);
  close(fd);
  if (n < 0) return false;
  size_t p = 0;
  while (p < all.size()) {
    size_t e = all.find('\n', p);
    if (e == std::string::npos) e = all.size();
    lines.emplace_back(all, p, e - p);
    p = e + 1;
  }
  return true;
}

bool write_all(int fd, const std::string& data) {
  size_t done = 0;
  while (done < data.size()) {
    ssize_t n = write(fd, data.data() + done, data.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    done += (size_t)n;
  }
  return true;
}

// The lines a write takes, from STRING, a stem, a variable or the stack.
void gather(const operands& o, std::vector<std::string>& out) {
  if (o.has_string) {
    out.push_back(o.string);
    return;
  }
  if (o.has_var) {
    out.push_back(bu_get_text(o.var));
    return;
  }
  if (o.has_stem) {
    std::string stem = o.stem;
    if (stem.back() != '.') stem += '.';
    // With *, the stem's lines until the first unset or empty one.
    for (long long i = 1; o.lines < 0 || i <= o.lines; i++) {
      std::string name = stem + std::to_string(i);
      value* v = rx_peek_name(name);
      if (o.lines < 0 && (!v || (!v->is_num() && v->val_len == 0))) break;
      out.push_back(v ? val_string(*v) : name);
    }
    return;
  }
  std::string line;
  for (long long i = 0; (o.lines < 0 || i < o.lines) && rx_stack_pull(line); i++) {
    if (o.lines < 0 && line.empty()) break;
    out.push_back(line);
  }
}

std::string shaped(const operands& o, std::string_view l) {
  std::string s(columns_of(l, o.marg1, o.marg2));
  if (o.strip)
    while (!s.empty() && s.back() == ' ') s.pop_back();
  if (o.recfm == 'F' && o.lrecl) s.resize((size_t)o.lrecl, ' ');
  else if (o.lrecl && s.size() > (size_t)o.lrecl) s.resize((size_t)o.lrecl);
  return s;
}

int do_write(operands& o) {
  std::string path = path_of(o);
  std::vector<std::string> out;
  if (o.mode != M_DISKD) gather(o, out);
  auto it = files().find(path);
  long long at = o.linenum;
  if (!at && o.mode == M_DISKW && it != files().end() && it->second.ru_line) at = it->second.ru_line;
  bool in_place = at || o.mode == M_DISKI || o.mode == M_DISKD;
  if (!in_place) {
    // Appending: one descriptor kept open while FINIS is not given.
    if (it != files().end() && !it->second.append_open) {
      forget(path);
      it = files().end();
    }
    if (it == files().end()) {
      int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
      struct stat sb;
      if (fd < 0 || (fstat(fd, &sb) == 0 && S_ISDIR(sb.st_mode))) {
        if (fd >= 0) close(fd);
        return io_error("unable to write in file", path);
      }
      open_file f;
      f.fd = fd;
      f.append_open = true;
      it = files().emplace(path, std::move(f)).first;
    }
    std::string data;
    for (const std::string& l : out) {
      data += shaped(o, l);
      data += '\n';
    }
    bool ok = write_all(it->second.fd, data);
    if (o.finis || !ok) forget(path);
    return ok ? 0 : io_error("unable to write in file", path);
  }
  forget(path);
  std::vector<std::string> lines;
  if (!load_lines(path, lines)) return io_error("unable to read file", path);
  if (!at) at = o.mode == M_DISKI ? (long long)lines.size() + 1 : 1;
  if (at > (long long)lines.size() + 1) return io_error("invalid linenum position for file", path);
  size_t i = (size_t)at - 1;
  if (o.mode == M_DISKD) {
    size_t n = o.lines < 0 ? lines.size() - i : std::min((size_t)o.lines, lines.size() - i);
    lines.erase(lines.begin() + (long)i, lines.begin() + (long)(i + n));
  } else if (o.mode == M_DISKI) {
    std::vector<std::string> shaped_out;
    for (const std::string& l : out) shaped_out.push_back(shaped(o, l));
    lines.insert(lines.begin() + (long)i, shaped_out.begin(), shaped_out.end());
  } else {
    for (const std::string& l : out) {
      if (i < lines.size()) lines[i] = shaped(o, l);
      else lines.push_back(shaped(o, l));
      i++;
    }
  }
  std::string tmp = path + ".execio~";
  int fd = open(tmp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (fd < 0) return io_error("unable to write in file", path);
  std::string data;
  for (const std::string& l : lines) {
    data += l;
    data += '\n';
  }
  bool ok = write_all(fd, data) && fsync(fd) == 0;
  ok = close(fd) == 0 && ok;
  if (!ok || rename(tmp.c_str(), path.c_str()) != 0) {
    unlink(tmp.c_str());
    return io_error("unable to write in file", path);
  }
  return 0;
}

// ---- the printer ------------------------------------------------------------------

// Jobs being gathered, by printer name.
struct print_job {
  std::vector<std::string> lines;
  long long on_page = 0;  // lines since the last page began
};
std::unordered_map<std::string, print_job>& jobs() {
  static std::unordered_map<std::string, print_job> j;
  return j;
}

int send_job(std::string printer) {  // a copy: the key it names goes
  auto it = jobs().find(printer);
  if (it == jobs().end()) return 0;
  pl_print_job job;
  job.lines = std::move(it->second.lines);
  jobs().erase(it);
  job.title = "My Document";
  job.base = "My Document";
  job.dest = printer == "*" ? "" : printer;
  char here[4096];
  job.dir = getcwd(here, sizeof here) ? here : ".";
  std::string message;
  if (pl_print(job, message) == 0) return 0;
  size_t text = message.find_first_not_of(". ");
  rx_out_trace("EXECIO: " + message.substr(text == std::string::npos ? 0 : text) + "\n");
  return RC_IO;
}

int do_print(operands& o) {
  std::vector<std::string> out;
  gather(o, out);
  print_job& job = jobs()[o.fn];
  for (const std::string& l : out) {
    // A form feed before a line starts a page in the document.
    bool new_page = o.linespage > 0 && job.on_page >= o.linespage;
    job.lines.push_back((new_page ? "\f" : "") + shaped(o, l));
    job.on_page = new_page ? 1 : job.on_page + 1;
  }
  return o.finis ? send_job(o.fn) : 0;
}

}  // namespace

int rx_execio(std::string_view text) {
  operands o;
  if (int rc = parse(text, o)) return rc;
  if (o.lines == 0 && o.finis) {
    // Only closes the file, or sends the job.
    if (o.mode == M_PRINT) return send_job(o.fn);
    forget(path_of(o));
    return 0;
  }
  if (o.mode == M_PRINT) return do_print(o);
  if (o.mode == M_DISKR || o.mode == M_DISKRU) return do_read(o);
  return do_write(o);
}

void rx_execio_close_all() {
  // Jobs the program left open are printed, not lost.
  while (!jobs().empty()) send_job(jobs().begin()->first);
  for (auto& kv : files())
    if (kv.second.fd >= 0) close(kv.second.fd);
  files().clear();
}
