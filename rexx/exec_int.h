// Internal to the running half of the interpreter: the state of a run, the
// per-level record that internal routines save, the jump tags, and the entry
// points the walker, the expression walker, PARSE and TRACE share.
//
// Non-local exits: RETURN, LEAVE and ITERATE travel as status codes of the
// clause walker. EXIT, SIGNAL and run-time errors throw one of the private
// tag types below; they are caught only by the level runner and by the run
// entry, and never leave rx_run_prog.
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "rexx/builtins/builtins.h"
#include "rexx/rexx.h"
#include "rexx/run.h"
#include "rexx/value.h"
#include "rexx/vars.h"

// ---- conditions -------------------------------------------------------------------

enum : int {
  CN_ERROR, CN_FAILURE, CN_HALT, CN_NOVALUE, CN_NOTREADY, CN_SYNTAX, CN_COUNT
};

enum : int {
  CS_OFF = 0,        // not trapped
  CS_SIGNAL = 1,     // SIGNAL ON
  CS_CALL = 2,       // CALL ON
  CS_RUNNING = -2,   // its CALL ON routine is running
};

struct rx_cond {
  int state = CS_OFF;  // CS_*
  std::string label;   // label to go to
};

// ---- trace bits --------------------------------------------------------------------

enum : int {
  TR_C = 1, TR_E = 2, TR_I = 4, TR_L = 8, TR_N = 16, TR_R = 32, TR_S = 64, TR_A = 128,
  TR_INTERACTIVE = 256, TR_INHIBIT = 512, TR_Y = 2048,
  TR_LETTERS = TR_C | TR_E | TR_I | TR_L | TR_N | TR_R | TR_S | TR_A | TR_Y,
};

// ---- levels ------------------------------------------------------------------------

// What an internal routine call saves and gives back.
struct rx_level {
  rx_cond cond[CN_COUNT];           // condition states and labels
  rx_numeric_t num;                 // NUMERIC DIGITS, FUZZ, FORM
  int trace = TR_E;                 // trace setting
  int env_cur = 0;                  // current environment index
  int env_prev = 0;                 // previous environment index
  std::vector<value> args;          // the arguments of this level
  std::vector<char> omitted;        // 1 for an argument left out
  var_frame* frame = nullptr;       // variable frame in force
  bool new_frame = false;           // PROCEDURE pushed `frame` at this level
  bool in_routine = false;          // an internal routine, not the main level
  int interp = 0;                   // nested INTERPRET count
};

// ---- jump tags -----------------------------------------------------------------------

struct rx_exit_jump {};                 // EXIT: the result is in the run state
struct rx_signal_jump {
  const rx_label* target;               // label to resume at
};
struct rx_error_jump {
  int num;                              // error number
};

// Walker status of a block.
enum rx_flow : int { FL_NEXT, FL_LEAVE, FL_ITERATE, FL_RETURN };

// A resolved call target, cached per name token.
struct rx_target {
  int kind;            // 0 label, 1 interpreter built-in, 2 library built-in, 3 external file
  const void* p;       // rx_label, rx_bif, bu_row, or the file's path (std::string)
};

// An external file merged into the running program: its text and its
// tree live as long as the run, and its labels are the program's.
struct rx_merged {
  std::unique_ptr<rx_src> src;    // the file's text behind its entry label
  std::unique_ptr<rx_prog> prog;  // its tree
};

// ---- run state ---------------------------------------------------------------------

struct rx_run_state {
  rx_prog* prog = nullptr;             // the program being run
  const rx_src* src = nullptr;         // source for reports (changes under INTERPRET)
  const rx_src* main_src = nullptr;    // source of the routine running (a merged file's)
  const rx_src* prog_src = nullptr;    // the program's own source
  var_frame* top = nullptr;            // the top-level variable frame
  rx_level lv;                         // the current level
  int depth = 0;                       // internal routine nesting
  int cur_line = 0;                    // line of the error position (from 0, in src)
  int main_line = 0;                   // line of the program's clause running (from 0)
  int cur_col = 0;                     // column of the current error position
  bool has_result = false;             // RETURN or EXIT gave a value
  value result;                        // that value
  const char* pending = nullptr;       // LEAVE/ITERATE loop name, null for innermost
  long clauses = 0;                    // clause counter for the poll
  int sigl = 0;                        // line of the last transfer
  std::string last_cmd;                // last command text, for CONDITION('D')
  int cond_which = -1;                 // condition last trapped, CN_*
  bool cond_by_call = false;           // it was trapped by CALL ON
  std::string cond_desc;               // its description
  std::deque<value> consts;            // constants made ready for operand slots
  std::vector<rx_slot*> touched;       // slots whose slot_val points into consts
  std::deque<std::string> externals;   // paths of external routines run apart
  std::deque<rx_merged> merged;        // external files merged, in order
  int tr_skip = 0;                     // trace lines to suppress (negative TRACE n)
  int pause_skip = 0;                  // interactive pauses to skip (positive TRACE n)
  bool in_pause = false;               // console lines of a pause are running
};
extern rx_run_state* rx_st;  // the run in progress, null outside any run

constexpr int RX_MAX_CALL_DEPTH = 2000;    // internal routine nesting
constexpr int RX_MAX_RUN_DEPTH = 250;      // programs started from programs (macros)
constexpr int RX_MAX_INTERP_DEPTH = 200;   // INTERPRET nesting
constexpr int RX_MAX_EXPR_DEPTH = 3000;    // expression nesting across calls

// ---- errors (rxerror_run.cpp) -----------------------------------------------------------

// Raises a run-time error at the current position: traps it under SIGNAL
// ON SYNTAX, else reports it and ends the run. Never returns.
[[noreturn]] void rx_raise(int num, std::string_view text = {});
// Raises the error that rx_err_num/rx_err_text hold (set by fx_* and bu_*).
[[noreturn]] void rx_raise_current();
// Sets the error position to a token.
void rx_at(const rx_tok* t);
// The report of an error at the current position, as printed.
std::string rx_run_report(int num, std::string_view text);
// Prints a text on the trace console.
void rx_out_trace(std::string_view s);
// Prints a SAY line (the newline added).
void rx_out_say(std::string_view s);

// ---- expressions (eval.cpp) ----------------------------------------------------------------

// Evaluates an expression into out.
void rx_eval(const rx_tok* t, value& out);
// Evaluates a condition to 0 or 1; error 34's text is what + value + after.
int rx_eval_truth(const rx_tok* t, const char* what, const char* after);
// Text of a value into a string.
std::string rx_text(const value& v);
// Reads a variable by its token; an unset one gives its name (or NOVALUE).
void rx_get_var(const rx_tok* t, value& out);
// The value of a variable or null when unset; no NOVALUE.
value* rx_peek_var(const rx_tok* t);
// Assigns to a variable token (simple, compound or stem); gives the entry.
var_entry* rx_set_var(const rx_tok* t, value&& v);
// Whether a SYMBOL token is a constant (starts with a digit or a dot).
inline bool rx_const_sym(const rx_tok* t)
{
  char c = t->tok_value[0];
  return (c >= '0' && c <= '9') || c == '.';
}
// The derived name of a variable token (compound tails substituted).
std::string rx_var_name(const rx_tok* t);
// Reads and assigns variables by name, as VALUE() and EXPOSE lists do.
value* rx_peek_name(std::string_view name);
void rx_set_name(std::string_view name, value&& v);
// The entry of a simple variable in the current frame (not exposed), or null.
var_entry* rx_var_entry(const rx_tok* t);
// Forgets cached variable entries (a frame went away).
void rx_cache_flush();

// ---- calls (exec_call.cpp) -------------------------------------------------------------------

// Calls a routine by name with an argument chain; gives false when it
// returned nothing. `line_tok` positions errors.
bool rx_call(const rx_tok* fname, const rx_tok* args, value& out, bool as_function);
// Runs the block of a level from a cell, handling SIGNAL resumption.
rx_flow rx_run_level(rx_cell* start);
// Raises a condition of the CN_* kind: traps it when on, else returns.
void rx_condition(int which, std::string_view desc);
// Interpreter built-ins that need the run state; null when not one.
using rx_bif = bool (*)(const rx_tok* args, value& out);
rx_bif rx_find_bif(std::string_view name);
// Runs a text as INTERPRET does; `at` positions its errors.
rx_flow rx_interpret(std::string text, const rx_tok* at);
// External routines (exec_ext.cpp): the file for a name, and a call of it.
bool rx_find_external(std::string_view name, bool quoted, std::string& path);
// Merges a file into the run under an entry label of the name it was called
// by, and gives that label; a file that fails to parse raises its error at
// `at`, and nothing of it stays.
const rx_label* rx_merge_external(std::string_view name, const std::string& path, const rx_tok* at);
// A label of a merged file, or null.
const rx_label* rx_merged_label(std::string_view name);
// The source a label's code belongs to.
const rx_src* rx_label_src(const rx_label* l);
bool rx_call_external(const std::string& path, std::vector<value>& args, std::vector<char>& omitted,
                      const rx_tok* at, value& out);
// Forgets resolved call targets (their tokens may be gone).
void rx_calls_flush();

// A halt asked for by rx_request_halt, not yet seen by the walker.
extern volatile int rx_halt_pending;
// Acts on a pending halt.
void rx_halted();

// ---- clauses (exec.cpp) ----------------------------------------------------------------------

rx_flow rx_run_block(rx_cell* c);
// EXIT, RETURN, SIGNAL, CALL and INTERPRET.
rx_flow rx_exec_transfer(const rx_clause* c);
// Runs a command through the current environment (or a named one).
void rx_command(const std::string& cmd, int env);
int rx_env_find(std::string_view name);
// The environment a new run starts in.
int rx_env_default();
// Forgets the machine stack's base so that the outermost run sets it again.
void rx_stack_mark();
// Raises error 5 when the machine stack is nearly used up or programs are
// nested too deeply (a macro that starts itself through the host).
void rx_check_stack();
extern int rx_runs_deep;                   // runs in progress, the outermost 1
std::string rx_env_name(int index);

// ---- PARSE (parse_tmpl.cpp) -------------------------------------------------------------------

void rx_exec_parse(const rx_cl_parse* c);
// Parses one source text with a template (a comma ends the template).
void rx_parse_text(std::string_view src, const rx_tok* tmpl, bool upper);

// ---- TRACE (trace.cpp) ---------------------------------------------------------------------------

// Applies a TRACE setting text; gives 0 or error 24.
int rx_trace_set(std::string_view s);
// The setting as TRACE() shows it.
std::string rx_trace_text();
// Traces a clause's source line when the setting asks for it.
void rx_trace_clause(const rx_clause* c);
// The interactive pause after a traced clause: console lines run as
// INTERPRET until an empty one; gives what the last of them asked for.
rx_flow rx_trace_pause();
// Trace detail lines: ">>>" results, assignments, and the like.
void rx_trace_result(const value& v);
void rx_trace_assign(std::string_view name, const value& v);
void rx_trace_placeholder(std::string_view v);
void rx_trace_var(std::string_view name, const value& v);
void rx_trace_op(const char* name, const value& l, const value* r, const value& res);
void rx_trace_func(std::string_view name, const value* res);
// A failing command under TRACE E or N: its line, its text and its RC.
void rx_trace_command_rc(std::string_view cmd, int rc);
inline bool rx_tracing(int bits) { return rx_st && (rx_st->lv.trace & bits); }
