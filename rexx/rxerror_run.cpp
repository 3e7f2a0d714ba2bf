// Run-time errors: the error position, the report printed when nothing
// traps an error, and the SIGNAL ON SYNTAX trap that turns an error into a
// jump to a label with RC and SIGL set.
#include <cstdio>

#include "rexx/exec_int.h"

rx_io rx_console;

void rx_out_trace(std::string_view s)
{
  if (rx_console.trace) rx_console.trace(s.data(), s.size());
  else std::fwrite(s.data(), 1, s.size(), stderr);
}

void rx_out_say(std::string_view s)
{
  if (rx_console.say) {
    std::string line(s);
    line += '\n';
    rx_console.say(line.data(), line.size());
    return;
  }
  std::fwrite(s.data(), 1, s.size(), stdout);
  std::fputc('\n', stdout);
}

void rx_at(const rx_tok* t)
{
  if (!t) return;
  rx_st->cur_line = t->tok_line;
  rx_st->cur_col = t->tok_col;
}

std::string rx_run_report(int num, std::string_view text)
{
  rx_err err;
  err.err_num = num;
  err.err_line = rx_st->cur_line;
  err.err_col = rx_st->cur_col;
  err.err_msg = std::string(text);
  return rx_error_report(*rx_st->src, err);
}

namespace {

// SIGL and the like count lines from 1 without the prelude.
int shown_line(int line0) { return line0 + 1 - rx_st->main_src->prelude_lines; }

void set_number(const char* name, long long n)
{
  char buf[32];
  int len = std::snprintf(buf, sizeof buf, "%lld", n);
  rx_set_name(name, value(buf, (size_t)len));
}

}  // namespace

[[noreturn]] void rx_raise(int num, std::string_view text)
{
  rx_err_num = num;
  rx_err_text = std::string(text);
  rx_raise_current();
}

[[noreturn]] void rx_raise_current()
{
  rx_run_state& st = *rx_st;
  int num = rx_err_num;
  std::string text = rx_err_text;
  rx_cond& syn = st.lv.cond[CN_SYNTAX];
  if (syn.state == CS_SIGNAL) {
    syn.state = CS_OFF;
    st.sigl = shown_line(st.main_line);
    bool lower = st.prog->opts.symcase == CASE_LOWER;
    set_number(lower ? "rc" : "RC", num);
    set_number(lower ? "sigl" : "SIGL", st.sigl);
    if (!text.empty()) rx_out_trace("molba: " + text + "\n");
    st.cond_which = CN_SYNTAX;
    st.cond_by_call = false;
    st.cond_desc = text;
    const rx_label* l = rx_label_find(*st.prog, syn.label.data(), syn.label.size());
    if (!l) rx_raise(16, "\"" + syn.label + "\" is missing.");
    throw rx_signal_jump{l};
  }
  rx_out_trace(rx_run_report(num, text));
  throw rx_error_jump{num};
}
