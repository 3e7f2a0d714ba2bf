// Built-in functions that read or change the interpreter's own state:
// ARG, QUEUED, CONDITION, VALUE, SYMBOL, SOURCELINE, ISMAIN, CVTAILS,
// ADDRESS, TRACE and ERRORTEXT. The library's functions live in builtins/.
#include <cctype>
#include <cstring>

#include "rexx/exec_int.h"

namespace {

struct args_t {
  std::vector<value> v;        // evaluated arguments
  std::vector<char> given;     // 1 when the argument was written
  std::vector<const rx_tok*> t;  // their tokens
};

void eval_all(const rx_tok* chain, args_t& a)
{
  for (const rx_tok* p = chain; p; p = p->tok_next) a.t.push_back(p);
  if (a.t.size() == 1 && a.t[0]->tok_type == VIDE) a.t.clear();
  a.v.resize(a.t.size());
  a.given.resize(a.t.size());
  for (size_t i = 0; i < a.t.size(); i++) {
    a.given[i] = a.t[i]->tok_type != VIDE;
    if (a.given[i]) rx_eval(a.t[i], a.v[i]);
  }
}

[[noreturn]] void bad_call(const args_t& a, size_t i, const char* name, const std::string& msg)
{
  if (i < a.t.size()) rx_at(a.t[i]);
  rx_raise(40, std::string(name) + "(): " + msg);
}

void count(const args_t& a, const char* name, size_t lo, size_t hi, const char* msg)
{
  if (a.t.size() < lo || a.t.size() > hi) bad_call(a, 0, name, msg);
  for (size_t i = 0; i < lo; i++)
    if (!a.given[i]) bad_call(a, i, name, msg);
}

long long whole(args_t& a, size_t i, const char* name, long long min)
{
  long long n;
  int r = rx_whole(a.v[i], n);
  if (r == 1) bad_call(a, i, name, "argument " + std::to_string(i + 1) + " must be a whole number.");
  if (r == 2 || n < min)
    bad_call(a, i, name, "argument " + std::to_string(i + 1) + " must be a positive integer.");
  return n;
}

void set_int(value& out, long long n) { out.set_num((double)n, 0); }

char option(args_t& a, size_t i, char dflt)
{
  if (i >= a.t.size() || !a.given[i]) return dflt;
  std::string s = rx_text(a.v[i]);
  return s.empty() ? dflt : (char)std::toupper((unsigned char)s[0]);
}

bool bif_arg(const rx_tok* chain, value& out)
{
  const rx_level& lv = rx_st->lv;
  if (chain && chain->tok_type != VIDE && !chain->tok_next) {
    // ARG(n), the common form, without the general argument arrays.
    value v;
    rx_eval(chain, v);
    long long n;
    if (rx_whole(v, n) == 0 && n >= 1) {
      if ((size_t)n <= lv.args.size() && !lv.omitted[(size_t)n - 1]) out = lv.args[(size_t)n - 1];
      else out.set_str("", 0);
      return true;
    }
  }
  args_t a;
  eval_all(chain, a);
  count(a, "ARG", 0, 2, "must receive 0, 1 or 2 arguments.");
  if (a.t.empty()) {
    size_t n = lv.args.size();
    while (n && lv.omitted[n - 1]) n--;
    set_int(out, (long long)n);
    return true;
  }
  long long n = whole(a, 0, "ARG", 1);
  bool exists = (size_t)n <= lv.args.size() && !lv.omitted[(size_t)n - 1];
  char opt = option(a, 1, 0);
  if (opt == 'E') set_int(out, exists);
  else if (opt == 'O') set_int(out, !exists);
  else if (opt) bad_call(a, 1, "ARG", "argument 2 must be 'E' or 'O'.");
  else if (exists) out = lv.args[(size_t)n - 1];
  else out.set_str("", 0);
  return true;
}

bool bif_queued(const rx_tok* chain, value& out)
{
  args_t a;
  eval_all(chain, a);
  count(a, "QUEUED", 0, 0, "does not take any argument.");
  set_int(out, (long long)rx_stack_count());
  return true;
}

constexpr const char* cond_names[] = {"ERROR", "FAILURE", "HALT", "NOVALUE", "NOTREADY", "SYNTAX"};
static_assert(sizeof cond_names / sizeof cond_names[0] == CN_COUNT);

bool bif_condition(const rx_tok* chain, value& out)
{
  args_t a;
  eval_all(chain, a);
  count(a, "CONDITION", 0, 1, "must receive 0 or 1 argument.");
  const rx_run_state& st = *rx_st;
  char opt = option(a, 0, 'I');
  if (st.cond_which < 0) {
    out.set_str("", 0);
    return true;
  }
  switch (opt) {
  case 'C': out.set_str(cond_names[st.cond_which]); break;
  case 'D': out.set_str(st.cond_desc); break;
  case 'I': out.set_str(st.cond_by_call ? "CALL" : "SIGNAL"); break;
  case 'S': {
    int s = st.lv.cond[st.cond_which].state;
    out.set_str(s == CS_OFF ? "OFF" : s == CS_RUNNING ? "DELAY" : "ON");
    break;
  }
  default: bad_call(a, 0, "CONDITION", "argument 1 must be one of C, D, I or S.");
  }
  return true;
}

std::string upper_name(std::string s)
{
  int symcase = rx_st->prog->opts.symcase;
  if (symcase == CASE_LOWER)
    for (char& c : s) c = (char)std::tolower((unsigned char)c);
  else if (symcase != CASE_MIXED)
    for (char& c : s) c = (char)std::toupper((unsigned char)c);
  return s;
}

bool bif_value(const rx_tok* chain, value& out)
{
  args_t a;
  eval_all(chain, a);
  count(a, "VALUE", 1, 3, "must receive 1, 2 or 3 arguments.");
  std::string name = upper_name(rx_text(a.v[0]));
  if (a.t.size() > 2 && a.given[2]) {
    std::string pool = rx_text(a.v[2]);
    for (char& c : pool) c = (char)std::toupper((unsigned char)c);
    if (pool == "ENVIRONMENT" || pool == "SYSTEM") {
      const char* e = std::getenv(rx_text(a.v[0]).c_str());
      out.set_str(e ? e : "");
      if (a.given[1]) setenv(rx_text(a.v[0]).c_str(), rx_text(a.v[1]).c_str(), 1);
      return true;
    }
    bad_call(a, 2, "VALUE", "argument 3 must be ENVIRONMENT.");
  }
  if (!vars_valid_name(name)) bad_call(a, 0, "VALUE", "\"" + name + "\" is not a valid REXX symbol.");
  value* v = rx_peek_name(name);
  if (v) out = *v;
  else out.set_str(vars_unset_text(name));
  if (a.t.size() > 1 && a.given[1]) rx_set_name(name, value(a.v[1]));
  return true;
}

bool bif_symbol(const rx_tok* chain, value& out)
{
  args_t a;
  eval_all(chain, a);
  count(a, "SYMBOL", 1, 1, "must receive 1 argument.");
  std::string name = upper_name(rx_text(a.v[0]));
  if (name.empty()) out.set_str("BAD");
  else if ((name[0] >= '0' && name[0] <= '9') || name[0] == '.') {
    bool ok = true;
    for (unsigned char c : name) ok = ok && (std::isalnum(c) || c == '.' || c == '_' || c == '!' || c == '?');
    out.set_str(ok ? "LIT" : "BAD");
  } else if (!vars_valid_name(name)) out.set_str("BAD");
  else out.set_str(rx_peek_name(name) ? "VAR" : "LIT");
  return true;
}

bool bif_sourceline(const rx_tok* chain, value& out)
{
  args_t a;
  eval_all(chain, a);
  count(a, "SOURCELINE", 0, 1, "must receive 0 or 1 argument.");
  const rx_src& src = *rx_st->main_src;
  std::vector<size_t> starts{0};
  for (size_t i = 0; i < src.text.size(); i++)
    if (src.text[i] == '\n' && i + 1 < src.text.size()) starts.push_back(i + 1);
  long long total = (long long)starts.size() - src.prelude_lines;
  if (a.t.empty()) {
    set_int(out, total);
    return true;
  }
  long long n = whole(a, 0, "SOURCELINE", 1);
  if (n > total) bad_call(a, 0, "SOURCELINE", "argument 1 must be a line of the program.");
  size_t b = starts[(size_t)(n - 1 + src.prelude_lines)];
  size_t e = src.text.find('\n', b);
  if (e == std::string::npos) e = src.text.size();
  if (e > b && src.text[e - 1] == '\r') e--;
  out.set_str(src.text.data() + b, e - b);
  return true;
}

bool bif_ismain(const rx_tok* chain, value& out)
{
  args_t a;
  eval_all(chain, a);
  count(a, "ISMAIN", 0, 0, "does not take any argument.");
  set_int(out, rx_st->depth == 0);
  return true;
}

bool bif_cvtails(const rx_tok* chain, value& out)
{
  args_t a;
  eval_all(chain, a);
  if (a.t.size() != 1 || !a.given[0]) bad_call(a, 0, "CVTAILS", "must receive 1 argument.");
  std::string name = upper_name(rx_text(a.v[0]));
  if (!name.empty() && name.back() == '.') name.pop_back();
  if (!vars_valid_name(name) || name.find('.') != std::string::npos)
    bad_call(a, 0, "CVTAILS", name + " is not a valid REXX symbol.");
  out.set_str(vars_tails(rx_st->lv.frame, name));
  return true;
}

bool bif_address(const rx_tok* chain, value& out)
{
  args_t a;
  eval_all(chain, a);
  count(a, "ADDRESS", 0, 0, "does not take any argument.");
  out.set_str(rx_env_name(rx_st->lv.env_cur));
  return true;
}

bool bif_trace(const rx_tok* chain, value& out)
{
  args_t a;
  eval_all(chain, a);
  count(a, "TRACE", 0, 1, "must receive 0 or 1 argument.");
  out.set_str(rx_trace_text());
  if (!a.t.empty() && a.given[0] && rx_trace_set(rx_text(a.v[0])))
    bad_call(a, 0, "TRACE", "argument 1 is not a valid trace setting.");
  return true;
}

bool bif_errortext(const rx_tok* chain, value& out)
{
  args_t a;
  eval_all(chain, a);
  count(a, "ERRORTEXT", 1, 1, "must receive 1 argument.");
  long long n = whole(a, 0, "ERRORTEXT", 0);
  out.set_str(rx_error_text((int)n));
  return true;
}

struct bifrow {
  const char* name;  // upper-case name
  rx_bif fn;         // handler
};

constexpr bifrow biftab[] = {
  {"ARG", bif_arg},           {"QUEUED", bif_queued},   {"CONDITION", bif_condition},
  {"VALUE", bif_value},       {"SYMBOL", bif_symbol},   {"SOURCELINE", bif_sourceline},
  {"ISMAIN", bif_ismain},     {"CVTAILS", bif_cvtails}, {"ADDRESS", bif_address},
  {"TRACE", bif_trace},       {"ERRORTEXT", bif_errortext},
};
static_assert(sizeof biftab / sizeof biftab[0] == 11);

}  // namespace

rx_bif rx_find_bif(std::string_view name)
{
  if (name.size() > 16) return nullptr;
  char up[17];
  for (size_t i = 0; i < name.size(); i++) up[i] = (char)std::toupper((unsigned char)name[i]);
  for (const bifrow& r : biftab)
    if (std::strlen(r.name) == name.size() && std::memcmp(r.name, up, name.size()) == 0) return r.fn;
  return nullptr;
}

bool rx_builtin_ready(std::string_view name)
{
  std::string up(name), low(name);
  for (char& c : up) c = (char)std::toupper((unsigned char)c);
  for (char& c : low) c = (char)std::tolower((unsigned char)c);
  return rx_find_bif(name) != nullptr || bu_lookup(name, BU_CASE_MIXED) != nullptr ||
         bu_lookup(up, BU_CASE_UPPER) != nullptr || bu_lookup(low, BU_CASE_LOWER) != nullptr;
}
