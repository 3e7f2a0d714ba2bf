// Rule files: their lines read into the table of blocks, with the load's
// messages, and the choice of the block that fits a file.
#include "syntax/syn.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <sys/stat.h>

std::vector<syn_block> syn_table;

namespace {

std::string lower(std::string_view w) {
  std::string s(w);
  for (char &c : s) c = char(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

// Words split at blanks and tabs; a word that begins with a quote runs to
// the same quote, which goes.
std::vector<std::string> words(std::string_view l) {
  std::vector<std::string> w;
  size_t i = 0;
  while (i < l.size()) {
    while (i < l.size() && (l[i] == ' ' || l[i] == '\t' || l[i] == '\r')) i++;
    if (i >= l.size()) break;
    if (l[i] == '"' || l[i] == '\'') {
      size_t e = l.find(l[i], i + 1);
      if (e == std::string_view::npos) e = l.size();
      w.emplace_back(l.substr(i + 1, e - i - 1));
      i = e + 1;
      continue;
    }
    size_t e = l.find_first_of(" \t\r", i);
    if (e == std::string_view::npos) e = l.size();
    w.emplace_back(l.substr(i, e - i));
    i = e;
  }
  return w;
}

constexpr const char *comment_styles[] = {"c", "sh", "fortran", "rexx", "latex", "apl", "cobol", "autoit"};
struct word_value {
  const char *word;
  int value;
};
constexpr word_value string_styles[] = {{"c", SYN_STR_C}, {"rexx", SYN_STR_REXX}, {"cobol", SYN_STR_REXX},
                                        {"fortran", SYN_STR_FORTRAN}, {"apl", SYN_STR_APL}};
constexpr word_value cases[] = {{"respect", 0}, {"ignore", 1}};
constexpr word_value variables[] = {{"standard", 0}, {"object", 1}};

template <size_t N> int lookup(const word_value (&t)[N], const std::string &w) {
  for (const word_value &r : t)
    if (w == r.word) return r.value;
  return -1;
}

struct loader {
  std::string path;
  std::vector<syn_block> blocks;
  int open = -1;        // index of the first block of the one being read, -1 outside
  int open_line = 0;    // its line
  std::string err;
  int line = 0;

  bool fail(const char *fmt, const char *what = nullptr) {
    char m[256];
    std::snprintf(m, sizeof m, fmt, line, what ? what : "");
    err = m;
    return false;
  }
  // Colours of words from index `from`; false with the message on a bad name.
  bool colours(const std::vector<std::string> &w, size_t from, std::vector<int> &out) {
    out.clear();
    for (size_t k = from; k < w.size(); k++) {
      int c = syn_colour(w[k]);
      if (!c) return fail("Syntax error on line %d: invalid color.");
      out.push_back(c);
    }
    return true;
  }
  bool start(const std::vector<std::string> &w) {
    std::string k = lower(w[0]);
    int kind = k == "filetype" ? SYN_FILETYPE : k == "firstline" ? SYN_FIRSTLINE : k == "apl" ? SYN_APL : -1;
    if (kind < 0 || (kind != SYN_APL && w.size() < 2)) {
      err = "Invalid block start in file \"" + path + "\" on line " + std::to_string(line);
      return false;
    }
    open = int(blocks.size());
    open_line = line;
    syn_block b;
    b.kind = kind;
    for (size_t n = 1; n < std::max<size_t>(w.size(), 2); n++) {
      b.name = n < w.size() ? w[n] : "";
      b.alias = n > 1;
      if (b.alias) b.t = blocks[size_t(open)].t;
      blocks.push_back(b);
    }
    return true;
  }
  bool inside(const std::vector<std::string> &w) {
    syn_block &b = blocks[size_t(open)];
    syn_tables &t = *b.t;
    std::string k = lower(w[0]);
    std::vector<int> cs;
    if (k == "end") {
      if (b.icase)
        for (auto &kw : t.keywords) kw.first = lower(kw.first);
      for (auto &kw : t.keywords) t.first.emplace(kw.first, kw.second);  // the first colour stays
      for (size_t i = size_t(open) + 1; i < blocks.size(); i++) {
        syn_block &a = blocks[i];
        int kind = a.kind;
        std::string name = a.name;
        a = b;
        a.kind = kind, a.name = name, a.alias = true;
      }
      open = -1;
      return true;
    }
    if (k == "comment" || k == "string") {
      bool com = k == "comment";
      if (w.size() < 3) return fail(com ? "Syntax error on line %d: invalid \"comment\" keyword." : "Syntax error on line %d: invalid \"string\" keyword.");
      int c = syn_colour(w[1]);
      if (!c) return fail("Syntax error on line %d: invalid color.");
      std::string s = lower(w[2]);
      int style = -1;
      if (com) {
        for (int i = 0; i < 8; i++)
          if (s == comment_styles[i]) style = i;
      } else {
        style = lookup(string_styles, s);
      }
      if (style < 0) return fail(com ? "Syntax error on line %d: invalid \"comment\" keyword." : "Syntax error on line %d: invalid \"string\" keyword.");
      (com ? b.comment_colour : b.string_colour) = c;
      (com ? b.comment_style : b.string_style) = style;
      return true;
    }
    if (k == "keyword") {
      if (w.size() < 3) return fail("Syntax error on line %d: missing \"keyword\" arguments.");
      int c = syn_colour(w[1]);
      if (!c) return fail("Syntax error on line %d: invalid color.");
      for (size_t n = 2; n < w.size(); n++) t.keywords.emplace_back(w[n], c);
      return true;
    }
    if (k == "match" || k == "cpp") {
      if (w.size() < 2) return fail(k == "match" ? "Syntax error on line %d: missing \"match\" arguments." : "Syntax error on line %d: missing \"cpp\" arguments.");
      if (!colours(w, 1, cs)) return false;
      (k == "match" ? t.match : t.cpp) = cs;
      return true;
    }
    if (k == "case" || k == "variable") {
      bool kase = k == "case";
      if (w.size() < 2) return fail(kase ? "Syntax error on line %d: missing \"case\" argument." : "Syntax error on line %d: missing \"variable\" argument.");
      int v = kase ? lookup(cases, lower(w[1])) : lookup(variables, lower(w[1]));
      if (v < 0) return fail(kase ? "Syntax error on line %d: invalid \"case\" keyword." : "Syntax error on line %d: invalid variable.");
      (kase ? b.icase : b.variable) = v;
      return true;
    }
    return fail("Syntax error on line %d: unknown keyword \"%s\".", w[0].c_str());
  }
};

// What a state-only scan must stop at: the comment starters of the style,
// the quotes, the brackets when they are coloured.
void mark_special(syn_block &b) {
  static const char *starters[] = {"/", "#", "!/", "/", "%", "\xA9", "", ";"};
  for (const char *p = starters[b.comment_style]; *p; p++) b.special[static_cast<unsigned char>(*p)] = true;
  if (b.string_style == SYN_STR_APL) b.special[static_cast<unsigned char>('\'')] = true;
  if (b.string_style != SYN_STR_NONE && b.string_style != SYN_STR_APL)
    b.special[static_cast<unsigned char>('\'')] = b.special[static_cast<unsigned char>('"')] = true;
  if (!b.t->match.empty())
    for (const char *p = "()[]{}"; *p; p++) b.special[static_cast<unsigned char>(*p)] = true;
  // In these styles no comment begins with a word character, so a keyword
  // taken whole or byte by byte leaves the same state behind.
  b.skip_words = b.comment_style == SYN_C || b.comment_style == SYN_REXX || b.comment_style == SYN_LATEX ||
                 b.comment_style == SYN_APLC || b.comment_style == SYN_AUTOIT;
}

}  // namespace

int syn_parse(std::string_view text, const std::string &path, std::string &err, int &line) {
  loader ld;
  ld.path = path;
  syn_table.clear();  // on any error no old rule stays
  size_t at = 0;
  while (at < text.size()) {
    size_t e = text.find('\n', at);
    if (e == std::string_view::npos) e = text.size();
    std::string_view l = text.substr(at, e - at);
    at = e + 1;
    ld.line++;
    std::vector<std::string> w = words(l);
    if (w.empty() || w[0][0] == '*' || w[0][0] == '#') continue;
    bool ok = ld.open < 0 ? ld.start(w) : ld.inside(w);
    if (!ok) {
      err = ld.err;
      line = ld.line;
      return 1;
    }
  }
  if (ld.open >= 0) {
    ld.line = ld.open_line;
    ld.fail("Syntax error on line %d: missing \"end\".");
    err = ld.err;
    line = ld.line;
    return 1;
  }
  for (syn_block &b : ld.blocks) mark_special(b);
  syn_table = std::move(ld.blocks);
  return 0;
}

int syn_load(const std::string &path, std::string &err, int &line) {
  syn_table.clear();
  line = 0;
  struct stat st;
  if (stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) {
    err = "Unable to read file \"" + path + "\" (" + std::strerror(EISDIR) + ")";
    return 1;
  }
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    err = "Unable to open file \"" + path + "\" (" + std::strerror(errno) + ")";
    return 1;
  }
  std::ostringstream s;
  s << in.rdbuf();
  if (in.bad()) {
    err = "Unable to read file \"" + path + "\" (" + std::strerror(errno) + ")";
    return 1;
  }
  return syn_parse(s.str(), path, err, line);
}

int syn_choose(const std::string &fname, std::string_view first, bool apl, bool icase) {
  size_t dot = fname.find_last_of("./");
  std::string ext = dot != std::string::npos && fname[dot] == '.' ? fname.substr(dot + 1) : std::string();
  bool has_ext = dot != std::string::npos && fname[dot] == '.';
  first = first.substr(0, 1000);
  auto word_char = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; };
  for (size_t i = 0; i < syn_table.size(); i++) {
    const syn_block &b = syn_table[i];
    if (b.kind == SYN_APL && apl) return int(i);
    if (b.kind == SYN_FILETYPE && has_ext && ext.size() == b.name.size() &&
        (icase ? lower(ext) == lower(b.name) : ext == b.name))
      return int(i);
    if (b.kind == SYN_FIRSTLINE && !b.name.empty()) {
      // The text must be found as a whole word of the first line.
      for (size_t p = first.find(b.name); p != std::string_view::npos; p = first.find(b.name, p + 1)) {
        size_t e = p + b.name.size();
        bool left = p == 0 || !word_char(first[p - 1]) || !word_char(b.name.front());
        bool right = e >= first.size() || !word_char(first[e]) || !word_char(b.name.back());
        if (left && right) return int(i);
      }
    }
  }
  return -1;
}
