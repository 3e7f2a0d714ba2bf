// The keyboard: the table of emitted and displayed characters with its file
// format (asfkeyb), and the field movement keys of each keyboard type.
#include "fields/fs_int.h"
#include <cctype>
#include <cstring>
#include <fstream>
#include <string>

namespace {

constexpr int RANKS = 6;  // displayed characters: plain, shift, alt, then the same in APL mode

struct keytable {
  std::string lower;         // emitted character of each key, unshifted
  std::string upper;         // emitted character of each key, shifted
  std::string rank[RANKS];   // displayed character of each key at each rank
};

keytable kt;          // the table in force
bool loaded = false;  // a file has been read: Ctrl+Shift gives the rank 1 character
int kbmode = 2;       // keyboard type of asfkeyb: 1 turns Print, Scroll, Pause into function keys

void defaults(keytable &t) {
  t.lower = "1234567890-=\\`qwertyuiop[]asdfghjkl;'zxcvbnm,./ ";
  t.upper = "!@#$%^&*()_+|~QWERTYUIOP{}ASDFGHJKL:\"ZXCVBNM<>? ";
  static_assert(sizeof "1234567890-=\\`qwertyuiop[]asdfghjkl;'zxcvbnm,./ " - 1 == 48,
                "48 keys at start");
  // The APL ranks start as the plain ones: an APL font supplies the glyphs.
  const std::string *from[RANKS] = {&t.lower, &t.upper, &t.lower, &t.lower, &t.upper, &t.lower};
  for (int r = 0; r < RANKS; r++) t.rank[r] = *from[r];
}

// Key names that mark a terminal escape definition.
constexpr const char *escnames[] = {"cu", "cr", "cd", "cl", "ins", "del", "enter", "+", "-"};

bool keyname(std::string w) {
  for (char &c : w) c = char(tolower(static_cast<unsigned char>(c)));
  for (const char *n : escnames)
    if (w == n) return true;
  static const struct {
    char letter;  // bank letter
    int max;      // keys in the bank
  } banks[] = {{'l', 12}, {'f', 24}, {'r', 15}};
  for (const auto &b : banks) {
    if (w.size() < 2 || w.size() > 3 || w[0] != b.letter) continue;
    if (!isdigit(static_cast<unsigned char>(w[1])) || w[1] == '0') continue;
    if (w.size() == 3 && !isdigit(static_cast<unsigned char>(w[2]))) continue;
    int n = atoi(w.c_str() + 1);
    if (n >= 1 && n <= b.max) return true;
  }
  return false;
}

std::string trim(const std::string &s) {
  size_t b = s.find_first_not_of(" \t\r\n"), e = s.find_last_not_of(" \t\r\n");
  return b == std::string::npos ? "" : s.substr(b, e - b + 1);
}

// Splits at ':' outside a pair of quotes.
std::vector<std::string> tokens(const std::string &line) {
  std::vector<std::string> out;
  std::string cur;
  bool quoted = false;
  for (char c : line) {
    if (c == '\'') quoted = !quoted;
    if (c == ':' && !quoted) {
      out.push_back(trim(cur));
      cur.clear();
      continue;
    }
    cur += c;
  }
  out.push_back(trim(cur));
  return out;
}

// A character written 'c' or 0xNN; -1 when unreadable.
int charval(const std::string &t) {
  if (t.size() == 3 && t[0] == '\'' && t[2] == '\'') return static_cast<unsigned char>(t[1]);
  if (t.size() < 3 || t.size() > 4 || t[0] != '0' || (t[1] != 'x' && t[1] != 'X')) return -1;
  int v = 0;
  for (size_t i = 2; i < t.size(); i++) {
    if (!isxdigit(static_cast<unsigned char>(t[i]))) return -1;
    v = v * 16 + (isdigit(static_cast<unsigned char>(t[i])) ? t[i] - '0' : tolower(t[i]) - 'a' + 10);
  }
  return v;
}

bool skipped(const std::string &line) {
  size_t b = line.find_first_not_of(" \t\r\n");
  return b == std::string::npos || line[b] == '*' || line[b] == '#' || line[b] == '+';
}

int fail(const char *file, int line, const char *what) {
  fs_err(1, "asfkeyb: file %s, line %d: %s", file, line, what);
  return as_errno;
}

// What a line holds, once split: an escape definition, a table line, or an error.
enum { L_SKIP, L_TABLE, L_ERROR };
int classify(const std::string &line, std::vector<std::string> &t, const char **why) {
  if (skipped(line)) return L_SKIP;
  t = tokens(line);
  if (t.size() >= 2 && keyname(t[0])) {
    if (t.size() != 2 || t[1].empty()) {
      *why = "invalid escape format";
      return L_ERROR;
    }
    return L_SKIP;
  }
  if (t.size() != 3) {
    *why = "invalid format";
    return L_ERROR;
  }
  if (t[0].size() != 1 || t[0][0] < '0' || t[0][0] > '6') {
    *why = "invalid rank";
    return L_ERROR;
  }
  return L_TABLE;
}

// Field movement keys by keyboard type; rows in the order of the MV_* names.
enum { MV_FIRST, MV_LAST, MV_BACKTAB, MV_INSERT, MV_APL, MV_NEXTLINE, MV_PREVLINE, MV_ERASE,
       MV_SPARE, MV_COUNT };
struct movekey {
  int code;  // key code, -1 for none
  int alt;   // Alt wanted
};
struct movecolumn {
  int kbtype;             // keyboard type, -1 for the standard keyboard
  movekey key[MV_COUNT];  // the nine records
};
constexpr movecolumn movekeys[] = {
    {-1, {{32574, 0}, {32576, 0}, {-1, 0}, {32573, 0}, {32584, 0}, {10, 0}, {6, 0}, {27, 0}, {-1, 0}}},
    {0, {{32575, 0}, {32575, 1}, {32576, 0}, {-1, 0}, {32580, 0}, {6, 0}, {10, 0}, {32556, 0}, {-1, 0}}},
    {3, {{32573, 0}, {-1, 0}, {32575, 0}, {32574, 0}, {-1, 0}, {32557, 0}, {32556, 0}, {32598, 0}, {-1, 0}}},
    {12, {{32573, 0}, {-1, 0}, {32575, 0}, {32574, 0}, {-1, 0}, {32557, 0}, {32556, 0}, {32598, 0}, {-1, 0}}},
    {4, {{32576, 0}, {-1, 0}, {32581, 0}, {32574, 0}, {-1, 0}, {6, 0}, {10, 0}, {32554, 0}, {-1, 0}}},
    {14, {{32574, 0}, {32576, 0}, {-1, 0}, {32573, 0}, {-1, 0}, {10, 0}, {6, 0}, {27, 0}, {-1, 0}}},
};
static_assert(MV_COUNT == 9, "nine field movement records");

}  // namespace

void fs_keybinit() {
  defaults(kt);
  loaded = false;
  kbmode = 2;
}

void fs_movetab_set(int kbtype) {
  const movecolumn *c = &movekeys[0];
  for (const movecolumn &m : movekeys)
    if (m.kbtype == kbtype) c = &m;
  fs.kbtype = c->kbtype;
  for (int i = 0; i < MV_COUNT; i++) {
    fs.movetab[i][0] = c->key[i].code;
    fs.movetab[i][1] = 0;
    fs.movetab[i][2] = 0;
    fs.movetab[i][3] = c->key[i].alt;
  }
}

void asfkbtype(int type) { fs_movetab_set(type); }

int fs_kbmode() { return kbmode; }

int fs_translate(int ch, int shift, int alt, int upperlock) {
  if (ch == ' ' || ch == '\t' || ch == '\f') return ch;
  size_t i = std::string::npos;
  bool shifted = shift != 0;
  if (shift) {
    i = kt.upper.find(char(ch));
  } else {
    i = kt.lower.find(char(ch));
    if (i == std::string::npos) {
      i = kt.upper.find(char(ch));
      shifted = i != std::string::npos;
    }
  }
  if (i == std::string::npos || ch > 255) return ch;
  int base = fs.apl ? 3 : 0;
  int r = alt ? base + 2 : shifted || upperlock ? base + 1 : base;
  return static_cast<unsigned char>(kt.rank[r][i]);
}

int fs_ctrlchar(int ch) {
  if (!loaded || ch > 255) return ch;
  size_t i = kt.lower.find(char(ch));
  if (i == std::string::npos) i = kt.upper.find(char(ch));
  return i == std::string::npos ? ch : static_cast<unsigned char>(kt.rank[1][i]);
}

int asfkeyb(const char *file, int type) {
  if (type < 0 || type > 2) {
    fs_err(AS_ENOTFOUND, "asfkeyb: invalid type");
    return as_errno;
  }
  as_errno = 0;
  if (type) kbmode = type;
  if (!file || !*file) return 0;
  std::ifstream in(file);
  if (!in) {
    fs_err(AS_ENOTFOUND, "%s", ("asfkeyb: File " + std::string(file) + " not found").c_str());
    return as_errno;
  }
  std::vector<std::string> lines;
  std::string l;
  while (std::getline(in, l)) lines.push_back(l);
  if (in.bad()) {
    fs_err(AS_ENOTFOUND, "%s", ("Error while reading file " + std::string(file)).c_str());
    return as_errno;
  }
  // First pass: the form of every line, and the pairs of emitted characters.
  keytable next;
  bool pairs = false;
  std::vector<std::string> t;
  const char *why = nullptr;
  for (size_t n = 0; n < lines.size(); n++) {
    int kind = classify(lines[n], t, &why);
    if (kind == L_ERROR) return fail(file, int(n) + 1, why);
    if (kind != L_TABLE || t[0] != "6") continue;
    int lo = charval(t[1]), up = charval(t[2]);
    if (lo < 0) return fail(file, int(n) + 1, "invalid lowercase character format");
    if (up < 0) return fail(file, int(n) + 1, "invalid uppercase character format");
    pairs = true;
    next.lower += char(lo);
    next.upper += char(up);
  }
  if (pairs) {
    const std::string *from[RANKS] = {&next.lower, &next.upper, &next.lower,
                                      &next.lower, &next.upper, &next.lower};
    for (int r = 0; r < RANKS; r++) next.rank[r] = *from[r];
    kt = next;
  }
  // Second pass: displayed characters, applied line by line.
  for (size_t n = 0; n < lines.size(); n++) {
    if (classify(lines[n], t, &why) != L_TABLE || t[0] == "6") continue;
    int emitted = charval(t[1]);
    if (emitted < 0) return fail(file, int(n) + 1, "invalid emitted character format");
    size_t i = kt.lower.find(char(emitted));
    if (i == std::string::npos) return fail(file, int(n) + 1, "emitted character not found");
    int shown = charval(t[2]);
    if (shown < 0) return fail(file, int(n) + 1, "invalid displayed character format");
    kt.rank[t[0][0] - '0'][i] = char(shown);
  }
  loaded = true;
  return 0;
}
