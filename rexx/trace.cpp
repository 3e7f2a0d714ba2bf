// TRACE: the setting's bits and its text, and the trace lines: a source
// line as "  3 *-* text", then detail lines indented like the line number
// with their prefixes (>>> results, >V> variables, >O> operations, ...).
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "rexx/exec_int.h"

namespace {

struct letter {
  char c;    // the letter
  int bits;  // its setting
};

constexpr letter letters[] = {
  {'A', TR_A}, {'C', TR_C}, {'E', TR_E}, {'N', TR_N}, {'F', TR_N},
  {'I', TR_I}, {'L', TR_L}, {'O', 0},    {'R', TR_R}, {'S', TR_S}, {'Y', TR_Y},
};
static_assert(sizeof letters / sizeof letters[0] == 11);

int width = 3;  // width of the last traced line number

std::string line_text(const rx_src& src, int ln)
{
  size_t start = 0;
  for (int i = 0; i < ln; i++) {
    size_t nl = src.text.find('\n', start);
    if (nl == std::string::npos) return "";
    start = nl + 1;
  }
  size_t end = src.text.find('\n', start);
  if (end == std::string::npos) end = src.text.size();
  if (end > start && src.text[end - 1] == '\r') end--;
  return src.text.substr(start, end - start);
}

bool suppressed()
{
  if (rx_st->tr_skip <= 0) return false;
  rx_st->tr_skip--;
  return true;
}

void detail(const char* prefix, const std::string& body)
{
  if (suppressed()) return;
  std::string s(width, ' ');
  s += ' ';
  s += prefix;
  s += ' ';
  s += body;
  s += '\n';
  std::fflush(stdout);
  rx_out_trace(s);
}

std::string quoted(const value& v) { return "\"" + rx_text(v) + "\""; }

void source_line(int ln)
{
  if (suppressed()) return;
  const rx_run_state& st = *rx_st;
  std::string s;
  if (st.src->interpreted) {
    s = "*interpreted*  *-* " + line_text(*st.src, ln);
  } else {
    int shown = ln + 1 - st.src->prelude_lines;
    bool prelude = shown < 1;
    if (prelude) shown = ln + 1;
    char num[16];
    int n = std::snprintf(num, sizeof num, "%d", shown);
    width = n < 3 ? 3 : n > 7 ? 7 : n;
    char head[32];
    std::snprintf(head, sizeof head, "%*d", width, shown);
    s = head;
    if (prelude) s += " (.molbarc)";
    s += " *-* " + line_text(*st.src, ln);
  }
  s += '\n';
  std::fflush(stdout);
  rx_out_trace(s);
}

}  // namespace

int rx_trace_set(std::string_view s)
{
  rx_level& lv = rx_st->lv;
  size_t p = 0;
  while (p < s.size() && s[p] == ' ') p++;
  if (p == s.size()) {
    lv.trace = (lv.trace & (TR_INTERACTIVE | TR_INHIBIT)) | TR_E;
    return 0;
  }
  char c0 = s[p];
  if (c0 == '-' || c0 == '+' || std::isdigit((unsigned char)c0)) {
    long n = std::strtol(std::string(s.substr(p)).c_str(), nullptr, 10);
    rx_st->tr_skip = n < 0 ? (int)-n : 0;
    rx_st->pause_skip = n > 0 ? (int)n : 0;
    return 0;
  }
  int keep = lv.trace & (TR_INTERACTIVE | TR_INHIBIT);
  for (; p < s.size() && (s[p] == '?' || s[p] == '!'); p++) keep ^= s[p] == '?' ? TR_INTERACTIVE : TR_INHIBIT;
  if (p == s.size()) {
    lv.trace = (lv.trace & TR_LETTERS) | keep;
    return 0;
  }
  char c = (char)std::toupper((unsigned char)s[p]);
  if (c == 'X') {
    lv.trace = (lv.trace & TR_LETTERS) | keep;
    return 0;
  }
  for (const letter& l : letters)
    if (l.c == c) {
      lv.trace = l.bits | keep;
      return 0;
    }
  return 24;
}

std::string rx_trace_text()
{
  int t = rx_st->lv.trace;
  std::string s;
  if (t & TR_INTERACTIVE) s += '?';
  if (t & TR_INHIBIT) s += '!';
  char c = 'O';
  for (const letter& l : letters)
    if (l.bits && (t & TR_LETTERS) == l.bits) {
      c = l.c;
      break;
    }
  s += c;
  return s;
}

void rx_trace_clause(const rx_clause* c)
{
  int t = rx_st->lv.trace;
  if (t & (TR_A | TR_R | TR_I | TR_S)) source_line(c->line);
  else if ((t & TR_L) && c->kind == K_LABEL) source_line(c->line);
  else if ((t & TR_C) && (c->kind == K_COMMAND || c->kind == K_SAYX)) source_line(c->line);
}

rx_flow rx_trace_pause()
{
  rx_run_state& st = *rx_st;
  if (st.pause_skip > 0) {
    st.pause_skip--;
    return FL_NEXT;
  }
  std::fflush(stdout);
  for (;;) {
    std::string line;
    bool got = rx_console.read_line ? rx_console.read_line(line) : static_cast<bool>(std::getline(std::cin, line));
    if (!got || line.empty()) return FL_NEXT;
    st.in_pause = true;
    struct reset {
      ~reset() { rx_st->in_pause = false; }
    } r;
    rx_flow f = rx_interpret(line, nullptr);
    if (f != FL_NEXT) return f;
    if (!(st.lv.trace & TR_INTERACTIVE)) return FL_NEXT;
  }
}

void rx_trace_result(const value& v) { detail(">>>", quoted(v)); }

void rx_trace_assign(std::string_view name, const value& v)
{
  detail(">>>", std::string(name) + " <-- " + quoted(v));
}

void rx_trace_placeholder(std::string_view v) { detail(">.>", ". <-- \"" + std::string(v) + "\""); }

void rx_trace_var(std::string_view name, const value& v)
{
  if (name == ">C>") {
    detail(">C>", quoted(v));
    return;
  }
  detail(">V>", std::string(name) + " --> " + quoted(v));
}

void rx_trace_op(const char* name, const value& l, const value* r, const value& res)
{
  if (r) detail(">O>", quoted(l) + " " + name + " " + quoted(*r) + " --> " + quoted(res));
  else if (std::string_view(name) == rx_fx_name(FX_BACKQ)) detail(">U>", quoted(l) + " --> " + quoted(res));
  else detail(">P>", std::string(name) + " " + quoted(l) + " --> " + quoted(res));
}

void rx_trace_func(std::string_view name, const value* res)
{
  detail(">F>", std::string(name) + "() --> " + (res ? quoted(*res) : std::string("No Result")));
}

void rx_trace_command_rc(std::string_view cmd, int rc)
{
  source_line(rx_st->cur_line);
  detail(">>>", "\"" + std::string(cmd) + "\"");
  char buf[32];
  std::snprintf(buf, sizeof buf, "RC(%d)", rc);
  detail("+++", buf);
}
