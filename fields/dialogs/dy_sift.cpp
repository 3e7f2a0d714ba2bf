// A list's lines sifted as they are set from a stem: kept by a pattern and
// sorted by bytes (std::string compares its chars as unsigned). The pattern's alternatives are separated by ";"; each is
// a wildcard ("*", "?" and "[...]", matched against the whole line) or,
// written "r/expression", an extended regular expression found anywhere in
// the line. The regular expression needs its own marker because a wildcard
// such as "*.txt" is also a valid, but different, expression.
#include "fields/dialogs/dialogs.h"
#include "fields/dialogs/dy_int.h"

#include <algorithm>
#include <fnmatch.h>
#include <memory>
#include <regex.h>

namespace {

struct regex_free {
  void operator()(regex_t *r) const {
    regfree(r);
    delete r;
  }
};

// One alternative, compiled once for every line.
struct alternative {
  std::string wild;                         // the wildcard, when there is no expression
  std::unique_ptr<regex_t, regex_free> re;  // the compiled expression
  bool matches(const std::string &line) const {
    if (re) return regexec(re.get(), line.c_str(), 0, nullptr, 0) == 0;
    return fnmatch(wild.c_str(), line.c_str(), 0) == 0;
  }
};

// The alternatives of a pattern; false when one of them does not compile,
// and then the pattern as a whole stands for every line. Empty alternatives
// (as in "a;;b") are dropped; a pattern with none left takes every line too.
bool compile(const std::string &pattern, std::vector<alternative> &out) {
  for (const std::string &s : dy_split(pattern, ';')) {
    if (s.empty()) continue;
    alternative a;
    if (s.rfind("r/", 0) == 0) {
      auto r = std::make_unique<regex_t>();
      if (regcomp(r.get(), s.c_str() + 2, REG_EXTENDED | REG_NOSUB) != 0) return false;
      a.re.reset(r.release());
    } else {
      a.wild = s;
    }
    out.push_back(std::move(a));
  }
  return !out.empty();
}

}  // namespace

std::vector<std::string> dy_sift(std::vector<std::string> lines, const std::string &pattern,
                                 bool keep_first, bool sort) {
  auto from = lines.begin();
  if (keep_first && from != lines.end()) ++from;
  std::vector<alternative> alts;
  if (compile(pattern, alts)) {
    from = std::stable_partition(from, lines.end(), [&](const std::string &l) {
      return std::any_of(alts.begin(), alts.end(), [&](const alternative &a) { return a.matches(l); });
    });
    // stable_partition gives the end of the kept lines; the rest go.
    lines.erase(from, lines.end());
    from = lines.begin() + (keep_first && !lines.empty() ? 1 : 0);
  }
  if (sort) std::sort(from, lines.end());
  return lines;
}
