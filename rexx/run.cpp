// The run entry: finding and reading a program, its arguments (from the
// caller, the command line or the molba_ARG variables), the top level with
// its exit and error points, the macro's result, and the saving of the
// whole interpreter state when a run starts inside another.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "rexx/exec_int.h"

rx_run_state* rx_st = nullptr;
void (*rx_poll_hook)() = nullptr;
void (*rx_start_hook)() = nullptr;
std::string (*rx_macro_path_hook)(std::string_view name) = nullptr;

namespace {

// The process-wide pieces that belong to one run and must come back when a
// nested run ends.
struct saved_globals {
  rx_run_state* st = rx_st;
  rx_numeric_t num = rx_numeric;
  int err_num = rx_err_num;
  std::string err_text = rx_err_text;
  bool hook = vars_setenv_hook;
  ~saved_globals()
  {
    rx_st = st;
    rx_numeric = num;
    rx_err_num = err_num;
    rx_err_text = err_text;
    vars_setenv_hook = hook;
    rx_cache_flush();
    rx_calls_flush();
  }
};

// Packs a string result's first four bytes, blank padded, as a number.
int packed(const std::string& s)
{
  unsigned char b[4] = {' ', ' ', ' ', ' '};
  for (size_t i = 0; i < 4 && i < s.size(); i++) b[i] = (unsigned char)s[i];
  int32_t n;
  std::memcpy(&n, b, 4);
  return n;
}

int result_of(rx_run_state& st, rx_result* result)
{
  if (!st.has_result) return 0;
  std::string text = rx_text(st.result);
  if (result) {
    result->has_text = true;
    result->text = text;
  }
  value v(st.result);
  long long n;
  if (val_make_num(v) && rx_whole(v, n) == 0) return (int)n;
  if (v.is_num()) return (int)v.val_num;
  return packed(text);
}

// Arguments given in molba_NB_ARGS and molba_ARG0..n, hexadecimal.
bool env_args(std::vector<std::string>& out)
{
  const char* nb = std::getenv("molba_NB_ARGS");
  if (!nb) return false;
  int n = std::atoi(nb);
  for (int i = 0; i < n; i++) {
    std::string name = "molba_ARG" + std::to_string(i);
    const char* hex = std::getenv(name.c_str());
    std::string arg;
    for (size_t k = 0; hex && hex[k] && hex[k + 1]; k += 2) {
      char pair[3] = {hex[k], hex[k + 1], 0};
      arg += (char)std::strtol(pair, nullptr, 16);
    }
    out.push_back(arg);
  }
  unsetenv("molba_NB_ARGS");
  return true;
}

}  // namespace

bool rx_running() { return rx_st != nullptr; }

int rx_run_prog(rx_prog& prog, const rx_src& src, const rx_arg* args, int nargs, rx_result* result)
{
  saved_globals saved;
  if (!saved.st) rx_stack_mark();
  auto st = std::make_unique<rx_run_state>();
  st->prog = &prog;
  st->src = st->main_src = st->prog_src = &src;
  st->top = vars_push(nullptr);
  st->lv.frame = st->top;
  st->lv.env_cur = st->lv.env_prev = rx_env_default();
  for (int i = 0; i < nargs; i++) st->lv.args.emplace_back(args[i].text, args[i].len);
  st->lv.omitted.assign((size_t)nargs, 0);
  rx_numeric = rx_numeric_t{};
  rx_err_num = 0;
  rx_err_text.clear();
  vars_setenv_hook = prog.opts.setenv == 1;
  rx_st = st.get();
  if (!saved.st) rx_halt_pending = 0;
  rx_cache_flush();
  rx_calls_flush();
  int rc = 0;
  // Counted before anything can throw, so that every way out counts back.
  struct run_count {
    run_count() { rx_runs_deep++; }
    ~run_count() { rx_runs_deep--; }
  } counted;
  try {
    rx_check_stack();
    if (void (*start)() = rx_start_hook) {
      rx_start_hook = nullptr;
      start();
    }
    rx_run_level(prog.block_head);
    rc = result_of(*st, result);
  } catch (const rx_exit_jump&) {
    rc = result_of(*st, result);
  } catch (const rx_error_jump& e) {
    rc = e.num;
    if (result) result->error = e.num;
  } catch (const rx_signal_jump&) {
    rc = 16;
  } catch (const std::bad_alloc&) {
    rx_out_trace(rx_run_report(5, "out of memory"));
    rc = 5;
    if (result) result->error = 5;
  }
  if (!saved.st) {
    bu_streams_close_all();
    rx_execio_close_all();
  }
  std::fflush(stdout);
  for (rx_slot* s : st->touched) s->slot_val = nullptr;
  vars_pop(st->top);
  return rc;
}

int rx_run_main(rx_prog& prog, const rx_src& src, const std::string& arg, bool has_arg)
{
  std::vector<std::string> env;
  std::vector<rx_arg> list;
  if (env_args(env)) {
    for (const std::string& a : env) list.push_back({a.data(), a.size()});
  } else if (has_arg) {
    list.push_back({arg.data(), arg.size()});
  }
  return rx_run_prog(prog, src, list.data(), (int)list.size());
}

int run_rx(const std::string& command, const rx_arg* args, int nargs, const std::string& home,
           rx_result* result)
{
  size_t sp = command.find(' ');
  std::string name = command.substr(0, sp);
  std::string argline = sp == std::string::npos ? "" : command.substr(sp + 1);
  const char* xpath = std::getenv("XPATH");
  const char* path = std::getenv("PATH");
  std::string file = rx_find_program(name, xpath ? xpath : path ? path : "");
  auto src = std::make_unique<rx_src>();
  std::string msgs;
  int rc = rx_read_program(file.empty() ? name : file, home, *src, msgs);
  rx_out_trace(msgs);
  if (rc) return -1;
  auto prog = std::make_unique<rx_prog>();
  rx_err err;
  if (int e = rx_parse(*prog, src->text.data(), src->text.size(), err)) {
    rx_out_trace(rx_error_report(*src, err));
    return e;
  }
  std::vector<std::string> env;
  std::vector<rx_arg> list;
  if (env_args(env)) {
    for (const std::string& a : env) list.push_back({a.data(), a.size()});
  } else if (args) {
    list.assign(args, args + nargs);
  } else if (sp != std::string::npos) {
    list.push_back({argline.data(), argline.size()});
  }
  return rx_run_prog(*prog, *src, list.data(), (int)list.size(), result);
}
