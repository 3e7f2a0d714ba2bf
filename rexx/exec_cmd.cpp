// Command clauses and host environments: the environment table, the
// commands every environment runs itself, running a process through the
// shell, and what follows a command: trace, RC, ERROR and FAILURE.
#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "platform/platform.h"
#include "rexx/exec_int.h"

namespace {

struct envrow {
  std::string name;   // upper-case name
  rx_env_handler h;   // its handler
  void* ctx;          // context word handed to the handler
};

int run_process(std::string cmd)
{
  std::fflush(stdout);
  std::fflush(stderr);
  // A command ending in '&' runs in the background: the shell starts it and
  // returns at once, so RC is 0 and nothing waits for it. Its output goes
  // nowhere: it would land on the editor's page at any moment.
  size_t end = cmd.find_last_not_of(" \t");
  bool background = end != std::string::npos && cmd[end] == '&' && (end == 0 || cmd[end - 1] != '&');
  if (background) cmd = pl_shell_background(cmd.substr(0, end));
  else if (rx_console.claim) rx_console.claim();
  // A halt asked while the command runs (the user, or a signal that ends
  // the editor) ends the command too: it is not waited for to the end.
  pl_child c;
  int e = pl_run_wait(pl_shell_argv(cmd), PL_KEEPIN, [] { return rx_halt_pending != 0; }, c);
  if (!background && rx_console.release) rx_console.release();
  if (e != 0) {
    std::string msg = "Unable to create process; Error is: \"";
    msg += std::strerror(e);
    msg += "\"\n";
    rx_out_trace(msg);
    return 28;
  }
  return c.signal ? -c.signal : c.status;
}

// Commands that no environment sends to a process: the stack's buffers,
// EXECIO and GLOBALV. Each gets the operands after its word.
int cmd_sentries(std::string_view) { return (int)rx_stack_count(); }
int cmd_makebuf(std::string_view) { return rx_stack_makebuf(); }
int cmd_desbuf(std::string_view)
{
  rx_stack_desbuf();
  return 0;
}
int cmd_dropbuf(std::string_view ops)
{
  while (!ops.empty() && ops.front() == ' ') ops.remove_prefix(1);
  while (!ops.empty() && ops.back() == ' ') ops.remove_suffix(1);
  if (ops.empty()) return rx_stack_dropbuf(-1);
  long long n = 0;
  for (char c : ops) {
    if (c < '0' || c > '9' || n > 999999999) return 1;
    n = n * 10 + (c - '0');
  }
  return rx_stack_dropbuf(n);
}

struct local_row {
  const char* word;  // lower case
  int (*run)(std::string_view operands);
};

constexpr local_row local_rows[] = {
  {"sentries", cmd_sentries}, {"makebuf", cmd_makebuf}, {"dropbuf", cmd_dropbuf},
  {"desbuf", cmd_desbuf},     {"execio", rx_execio},    {"globalv", rx_globalv},
};

}  // namespace

bool rx_local_command(const char* cmd, size_t len, int& rc)
{
  size_t p = 0;
  while (p < len && cmd[p] == ' ') p++;
  size_t b = p;
  while (p < len && cmd[p] != ' ') p++;
  if (p - b > 8) return false;
  char word[9];
  for (size_t i = b; i < p; i++) word[i - b] = (char)std::tolower((unsigned char)cmd[i]);
  word[p - b] = 0;
  for (const local_row& r : local_rows)
    if (std::strcmp(r.word, word) == 0) {
      if (r.run == rx_globalv && rx_st && rx_st->prog->opts.globalv == 0) return false;
      rc = r.run(std::string_view(cmd + p, len - p));
      return true;
    }
  return false;
}

namespace {

int direct_handler(const char* cmd, size_t len, void*, bool*)
{
  int rc;
  if (rx_local_command(cmd, len, rc)) return rc;
  return run_process(std::string(cmd, len));
}

// SH, CSH, TCSH, KSH: the variable of that name, when set, goes in front.
int shell_handler(const char* cmd, size_t len, void* ctx, bool*)
{
  int rc;
  if (rx_local_command(cmd, len, rc)) return rc;
  std::string line(cmd, len);
  if (const char* pre = std::getenv(static_cast<const char*>(ctx))) line = std::string(pre) + " " + line;
  return run_process(line);
}

std::vector<envrow>& table()
{
  static std::vector<envrow> t = {
    {"WINDOWS", direct_handler, nullptr}, {"UNIX", direct_handler, nullptr},
    {"SH", shell_handler, (void*)"SH"},   {"CSH", shell_handler, (void*)"CSH"},
    {"TCSH", shell_handler, (void*)"TCSH"}, {"KSH", shell_handler, (void*)"KSH"},
    {"EXEC", direct_handler, nullptr},
  };
  return t;
}

int default_env = 0;

}  // namespace

int rx_env_default() { return default_env; }

int rx_env_find(std::string_view name)
{
  std::string up(name);
  for (char& c : up) c = (char)std::toupper((unsigned char)c);
  auto& t = table();
  for (size_t i = 0; i < t.size(); i++)
    if (t[i].name == up) return (int)i;
  return -1;
}

std::string rx_env_name(int index)
{
  auto& t = table();
  return index >= 0 && (size_t)index < t.size() ? t[(size_t)index].name : std::string();
}

void rx_env_register(std::string_view name, rx_env_handler h, void* ctx, bool make_current)
{
  auto& t = table();
  int i = rx_env_find(name);
  if (!h) {
    if (i >= 0) t.erase(t.begin() + i);
    if ((size_t)default_env >= t.size()) default_env = 0;
    return;
  }
  if (i < 0) {
    std::string up(name);
    for (char& c : up) c = (char)std::toupper((unsigned char)c);
    t.push_back({up, h, ctx});
    i = (int)t.size() - 1;
  } else {
    t[(size_t)i].h = h;
    t[(size_t)i].ctx = ctx;
  }
  if (make_current) default_env = i;
}

void rx_command(const std::string& cmd, int env)
{
  rx_run_state& st = *rx_st;
  auto& t = table();
  int rc = 0;
  if (!(st.lv.trace & TR_INHIBIT) && env >= 0 && (size_t)env < t.size()) {
    bool stop = false;
    rc = t[(size_t)env].h(cmd.data(), cmd.size(), t[(size_t)env].ctx, &stop);
    if (stop) throw rx_exit_jump{};
  }
  int tr = st.lv.trace;
  if (((tr & TR_E) && rc != 0) || ((tr & TR_N) && rc < 0)) rx_trace_command_rc(cmd, rc);
  st.last_cmd = cmd;
  char buf[32];
  int n = std::snprintf(buf, sizeof buf, "%d", rc);
  rx_set_name(st.prog->opts.symcase == CASE_LOWER ? "rc" : "RC", value(buf, (size_t)n));
  if (rc < 0 && st.lv.cond[CN_FAILURE].state != CS_OFF) rx_condition(CN_FAILURE, cmd);
  else if (rc != 0) rx_condition(CN_ERROR, cmd);
}
