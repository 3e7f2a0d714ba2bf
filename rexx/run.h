// Running REXX programs: the run entry, the host environments a command
// clause talks to, and the process stack shared by every run.
//
// run_rx may be called again while a run is active (a host command that
// starts another macro); the inner run saves the whole interpreter state
// and gives it back when it ends, so nothing of one run leaks into another.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

struct rx_prog;
struct rx_src;

// One argument handed by a caller: text and length.
struct rx_arg {
  const char* text;  // the argument's bytes
  size_t len;        // their count
};

// Where a run's output goes. Tests and the editor may point these elsewhere.
struct rx_io {
  void (*say)(const char* s, size_t n) = nullptr;    // SAY lines, the newline included; null: stdout
  void (*trace)(const char* s, size_t n) = nullptr;  // trace and error reports; null: stderr
  // Reads one console line without its newline; false at end of input.
  // Null: standard input.
  bool (*read_line)(std::string& out) = nullptr;
  // Called before something uses the terminal itself (a process run in the
  // foreground, a prompt read from the terminal). Null: nothing to do.
  void (*claim)() = nullptr;
  // Called when that use has ended. Null: nothing to do.
  void (*release)() = nullptr;
};
extern rx_io rx_console;  // the console of every run in the process

// The macro's result after a run: the text EXIT or RETURN gave, when any.
struct rx_result {
  bool has_text = false;  // a value was returned
  std::string text;       // its text
  int error = 0;          // the error number when an error ended the run
};

// Runs a program file. `command` is the file name followed by its argument
// string; args/nargs, when given, replace that argument string. `home` is the
// installation directory (where the prelude may live). Gives the numeric
// result, -1 when the file cannot be opened or read, or the error number of
// a syntax or run-time error. `result` receives the text result if given.
int run_rx(const std::string& command, const rx_arg* args, int nargs, const std::string& home,
           rx_result* result = nullptr);

// Runs an already parsed program with its source; the same results as
// run_rx. The program is not changed by the run, except for the constant
// caches that the run fills and empties again.
int rx_run_prog(rx_prog& prog, const rx_src& src, const rx_arg* args, int nargs,
                rx_result* result = nullptr);

// The stand-alone entry for a parsed program: its one argument string from
// the command line (has_arg false when none was given), unless the
// molba_NB_ARGS and molba_ARGn variables hand it the arguments instead.
int rx_run_main(rx_prog& prog, const rx_src& src, const std::string& arg, bool has_arg);

// Whether a run is active (a call of run_rx from a host command nests).
bool rx_running();

// Sets a variable of the innermost run's current routine, as a host command
// does that hands values to the macro (EXTRACT): a compound name's stem is
// folded the way the program folds its symbols, its tail is kept. Nothing
// happens outside a run.
void rx_host_set(std::string_view name, std::string_view val);
// The program file the innermost run executes, "" outside a run.
std::string rx_source_name();

// Called once as the next run starts, before its first clause: a caller
// hands the run values of its own through rx_host_set. The run clears it,
// so it never reaches a run it was not meant for.
extern void (*rx_start_hook)();

// The editor's event poll, called every 20 clauses; null for none.
extern void (*rx_poll_hook)();
// The file of the editor's macro of a name, "" when it has none.
extern std::string (*rx_macro_path_hook)(std::string_view name);

// The program's out-of-memory path, given the size of the block the
// interpreter could not get; it should not return (the editor's saves the
// changed files and ends the process). Null, or when it returns: the run
// ends with error 5.
extern void (*rx_nomem_hook)(size_t size);

// Asks the running macro to stop at its next clause: the HALT condition
// when trapped, else error 4. Safe to call from a signal handler.
void rx_request_halt();

// ---- host environments --------------------------------------------------------

// A handler runs a command and gives its return code. Setting *stop asks
// the macro to end.
using rx_env_handler = int (*)(const char* cmd, size_t len, void* ctx, bool* stop);

// Adds or replaces an environment (names are kept in upper case); a null
// handler deletes it. With make_current it becomes the current one.
void rx_env_register(std::string_view name, rx_env_handler h, void* ctx, bool make_current);

// ---- the process stack -----------------------------------------------------------

void rx_stack_push(std::string_view s);   // PUSH: to the top
void rx_stack_queue(std::string_view s);  // QUEUE: to the bottom
// Takes the top entry; false when the stack is empty.
bool rx_stack_pull(std::string& out);
size_t rx_stack_count();                  // QUEUED()
void rx_stack_clear();                    // every entry and buffer gone
// MAKEBUF: sets the current entries aside; gives the new buffer count.
int rx_stack_makebuf();
// DROPBUF n (-1 for none given): drops buffers n and up, giving back the
// entries set aside before n; n = 0 also empties the first list. Gives 0, 1
// for a negative n, 2 for an n past the buffers.
int rx_stack_dropbuf(long long n);
// DESBUF: empties the current buffer.
void rx_stack_desbuf();

// ---- commands every environment runs itself --------------------------------------

// MAKEBUF, DROPBUF, DESBUF, SENTRIES, EXECIO and GLOBALV: gives true with
// the return code in rc when the command is one of them. An environment of
// the host calls it before anything of its own.
bool rx_local_command(const char* cmd, size_t len, int& rc);
// EXECIO and GLOBALV themselves (the operands after the command word).
int rx_execio(std::string_view operands);
int rx_globalv(std::string_view operands);
// Closes the files EXECIO keeps open (the outermost run's end).
void rx_execio_close_all();
