// The REXX interpreter's public interface: token records, the program tree,
// syntax error reports, and reading a program file with its prelude.
//
// A program goes text -> rx_lex (characters to tokens) -> rx_lex2 (keyword
// settling, inserted and removed tokens) -> rx_parse_tokens (the tree).
// Everything a program owns lives in its rx_prog arena and dies with it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct value;  // the value record of the arithmetic family (rexx/value.h)

// ---------------------------------------------------------------------------
// Token numbers. A single-character token's number is the character itself.

enum : int32_t {
  NOLEX = -2,      // a deleted token
  RX_NODE = -3,    // an expression node
  RX_BLANK = 32,   // a significant blank (the blank-concatenation operator)
  SYMBOL = 258,
  STRING = 259,
  VIDE = 260,      // an empty argument
  ADDRESS = 261,
  ARG, BY, CALL, DIGITS, DO, DROP, ELSE, END, ENGINEERING, EXIT, EXPOSE, FOR,
  FOREVER, FORM, FUZZ, IF, INTERPRET, ITERATE, LEAVE,
  LINEIN,          // 281, also the word EXTERNAL
  NOP, NUMERIC, OFF, ON, OTHERWISE, PARSE, PROCEDURE, PULL, PUSH, QUEUE,
  RETURN, SAY, SAYN, SAYX, SAYR, SCIENTIFIC, SELECT, SIGNAL, SOURCE, THEN,
  TO, TRACE, UNTIL, UPPER, VALUE, VAR, VERSION, WHILE, WITH, WHEN,
  ERROR, FAILURE, HALT, NOVALUE, SYNTAX,
  TEMPLATE,        // 317
  ENVIRON, LOWER, CD, FUNCTION, NAME, NOTREADY, SFUNCTION, IN, OPTION, MIXED,
  SETENV, UNSETENV, LOAD, NOLOAD,  // 331
  OP_XOR = 332,
  OP_IINF_EQ, OP_INF_EQ, OP_SSUP_EQ, OP_SUP_EQ, OP_IINF, OP_SSUP, OP_NNEQ,
  OP_NEQ, OP_EEQ, OP_CONC, OP_REMAIN, OP_EXP, OP_RHO, OP_NEQIC, OP_EQIC,
  OP_NOT,          // 348
  GLOBALV = 349,
  NOGLOBALV = 350,
};
static_assert(LINEIN == 281 && TEMPLATE == 317 && NOLOAD == 331 && OP_NOT == 348);

// The trace name of a token number ("SYMBOL", "OP_CONC", ...); a character
// token gives its own one-character text in a static buffer.
const char* rx_tok_name(int32_t type);

// ---------------------------------------------------------------------------
// Token record. Fields as the rest of the interpreter expects them.

struct rx_op;
struct rx_part;

struct rx_tok {
  int32_t tok_type;       // token number, NOLEX, or RX_NODE
  char* tok_value;        // NUL-ended text, null for operators and punctuation
  int32_t tok_len;        // length of tok_value
  rx_part* tok_sym;       // compound symbol: head of its part list, else null
  char* tok_stem;         // compound symbol: stem text followed by '+', else null
  int32_t tok_reserved;   // always 0
  int32_t tok_stem_len;   // length of tok_stem
  int32_t tok_line;       // source line, from 0
  int32_t tok_col;        // source column, from 0
  int32_t tok_quoted;     // 1 quoted literal, 0 not, 2 "(name)" in a variable list
  rx_op* tok_op;          // expression node: its operator record
  rx_tok* tok_next;       // next in an argument chain or a template chain
};

// One element of a compound symbol: the stem name first, then each tail part.
struct rx_part {
  char* part_text;        // the element's text (not NUL-ended for tails)
  int32_t part_len;       // its length; 0 for an empty tail element
  rx_part* part_next;     // next element, or null
};

// ---------------------------------------------------------------------------
// Expression nodes.

enum rx_opclass : int32_t {
  OPC_UNARY = 1,          // one operand in slot 0
  OPC_BINARY = 2,         // operands in slots 0 and 1
  OPC_CALL = 3,           // op_fname and op_args
  OPC_BRACKET = 4,        // base in slot 0, indexes in slots 1 and 2
};

// The computing operator of a node; execution maps each to its fx_* routine.
enum rx_fx : int32_t {
  FX_OR, FX_XOR, FX_AND,
  FX_NEQ, FX_NNEQ, FX_SUP, FX_SSUP, FX_INF, FX_IINF, FX_SUPEQ, FX_SSUPEQ,
  FX_INFEQ, FX_IINFEQ,
  FX_EQ, FX_EEQ, FX_BL, FX_CONC, FX_PLUS, FX_MIN, FX_MULT, FX_DIV, FX_IDIV,
  FX_REM, FX_EXP, FX_CONC_RHO, FX_EQIC, FX_NEQIC, FX_CONC_NOT,
  FX_NOT, FX_UPLUS, FX_UMIN, FX_RHO, FX_BACKQ, FX_BR, FX_BR2, FX_CALL,
  FX_COUNT
};

// The routine name of an operator, as tracing shows it ("fx_plus").
const char* rx_fx_name(rx_fx fx);

struct rx_slot {
  int32_t slot_type;      // RX_NODE, SYMBOL, STRING, or NOLEX when absent
  rx_tok* slot_tok;       // the node or leaf token
  value* slot_val;        // a constant's ready-made value, made by the run step
};

struct rx_op {
  int32_t op_class;       // rx_opclass
  rx_fx op_fx;            // which operator computes the node
  const char* op_name;    // routine name for tracing
  rx_slot op_slot[3];     // operands; unused slots have NOLEX
  rx_tok* op_fname;       // call: the name token (FUNCTION or SFUNCTION)
  rx_tok* op_args;        // call: head of the argument chain (VIDE for empty)
};

// ---------------------------------------------------------------------------
// Program tree. Clauses hang on blocks: chains of cells ending in an empty
// cell (rx_cell with cl == null).

enum rx_kind : int32_t {
  K_COMMAND = 0, K_ASSIGN = 1, K_IF = 2, K_SAY = 3, K_DO = 4, K_LEAVE = 5,
  K_ITERATE = 6, K_SELECT = 7, K_LABEL = 8, K_EXIT = 9, K_RETURN = 10,
  K_SIGNAL = 11, K_CALL = 12, K_PUSH = 13, K_QUEUE = 14, K_PROCEDURE = 15,
  K_PARSE = 16, K_ADDRESS = 17, K_DROP = 18, K_INTERPRET = 19, K_NUMERIC = 20,
  K_SAYN = 21, K_UPPER = 22, K_LOWER = 23, K_TRACE = 25, K_CD = 26,
  K_SAYX = 27, K_SAYR = 29,
};

struct rx_clause;

struct rx_cell {
  rx_clause* cl;          // the clause, or null in the closing empty cell
  rx_cell* next;          // next cell, null after the closing one
};

// A nested block's frame: where the enclosing block stood when it was left.
struct rx_frame {
  rx_cell* fr_current;    // enclosing block's closing cell at that moment
  rx_cell* fr_head;       // enclosing block's first cell
  rx_frame* fr_prev;      // frame of the block around that one, or null
};

struct rx_clause {
  int32_t kind;           // rx_kind
  int32_t line;           // source line of the clause, from 0
};

// Kinds 0, 3, 9, 10, 13, 14, 19, 21, 26, 27, 29: one optional expression.
struct rx_cl_expr : rx_clause {
  rx_tok* expr;           // the expression, null when omitted
};

struct rx_cl_assign : rx_clause {
  rx_tok* target;         // the SYMBOL assigned to
  rx_tok* val;            // value expression, null for "name ="
  int32_t has_index;      // 0 plain assignment, 1 a substring target
  rx_tok* index1;         // first index, null when none or written empty ("[:e]")
  rx_tok* index2;         // second index expression, or null
  int32_t index2_mode;    // 0 no second index, -1 written empty ("[e:]"), 1 given
};

struct rx_cl_if : rx_clause {
  rx_tok* cond;           // condition
  rx_cell* then_block;    // block of the THEN clause
  rx_cell* else_block;    // block of the ELSE clause, null without ELSE
};

enum : int32_t {
  DO_COUNTED = 7, DO_FOREVER = 8, DO_CONTROLLED = 9, DO_PLAIN = 10, DO_IN = 11,
  COND_UNTIL = 5, COND_WHILE = 4, COND_NONE = 6,
};

struct rx_cl_do : rx_clause {
  int32_t end_line;       // line of the END
  int32_t loop_mode;      // DO_COUNTED .. DO_IN
  rx_tok* start;          // repeat count, initial value, or IN collection
  rx_tok* to;             // TO expression or null
  rx_tok* by;             // BY expression or null
  rx_tok* for_;           // FOR expression or null
  int32_t cond_mode;      // COND_NONE, COND_WHILE, COND_UNTIL
  rx_tok* cond;           // WHILE/UNTIL expression or null
  rx_tok* control;        // control variable SYMBOL or null
  rx_cell* body;          // the loop body
  rx_cl_do* outer;        // enclosing DO that was being built, or null
  int32_t order[3];       // 1 TO, 2 BY, 3 FOR in the order written; 0 unused
  int32_t n_options;      // index of the last used order slot, -1 for none
};

struct rx_when {
  int32_t line;           // line of the WHEN
  int32_t col;            // column of the WHEN
  rx_tok* cond;           // condition; null in the closing empty record
  rx_cell* block;         // block of the THEN clause
  rx_when* next;          // next WHEN, null after the closing one
};

struct rx_cl_select : rx_clause {
  int32_t end_line;       // line of the END
  int32_t otherwise_line; // line of OTHERWISE, -1 without one
  rx_when* first_when;    // chain of WHEN records ending in an empty one
  rx_when* last_when;     // the closing empty record
  rx_cell* otherwise_block;  // OTHERWISE body, null without OTHERWISE
  rx_cl_select* outer;    // enclosing SELECT being built, or null
};

struct rx_cl_label : rx_clause {
  const char* name;       // label text, case-folded unless it was quoted
  int32_t len;            // length of name
  rx_frame* frame;        // block frame at this point, null at top level
};

// LEAVE, ITERATE
struct rx_cl_leave : rx_clause {
  const char* name;       // the loop's name, null when none given
};

enum : int32_t {
  SIG_STRING = 0, SIG_SYMBOL = 1, SIG_ONOFF = 2, SIG_VALUE = 3, SIG_CALLON = 4,
};

struct rx_cl_signal : rx_clause {
  int32_t mode;           // SIG_STRING .. SIG_CALLON
  rx_tok* op1;            // label token, ON/OFF token, or VALUE expression
  rx_tok* op2;            // condition keyword token for ON/OFF
  rx_tok* name;           // the NAME symbol, or null
};

struct rx_cl_call : rx_clause {
  rx_tok* fname;          // SYMBOL, STRING, FUNCTION or SFUNCTION token
  rx_tok* args;           // head of the argument chain, null for none
};

// PROCEDURE, DROP, UPPER, LOWER
struct rx_cl_vars : rx_clause {
  rx_tok* vars;           // SYMBOL chain through tok_next; null for none
};

enum : int32_t {
  PS_ARG = 0, PS_LINEIN = 1, PS_PULL = 2, PS_SOURCE = 3, PS_VALUE = 4,
  PS_VAR = 5, PS_VERSION = 6, PS_NUMERIC = 7,
};

struct rx_cl_parse : rx_clause {
  int32_t upper;          // 1 for PARSE UPPER, ARG and PULL
  int32_t source;         // PS_ARG .. PS_NUMERIC
  rx_tok* operand;        // VAR symbol or VALUE expression, else null
  rx_tok* operand2;       // reserved for sources with a second operand; null
  rx_tok* tmpl;           // head of the template chain, null when empty
};

struct rx_cl_address : rx_clause {
  int32_t mode;           // 0 swap, 1 named environment or value
  rx_tok* env;            // ENVIRON token, or the VALUE expression
  rx_tok* cmd;            // command expression, or null
};

enum : int32_t {
  NUM_DIGITS = 0, NUM_SCIENTIFIC = 1, NUM_ENGINEERING = 2, NUM_FORMVALUE = 3,
  NUM_FUZZ = 4,
};

struct rx_cl_numeric : rx_clause {
  int32_t mode;           // NUM_DIGITS .. NUM_FUZZ
  rx_tok* expr;           // its expression, or null
};

struct rx_cl_trace : rx_clause {
  rx_tok* first;          // the SYMBOL or STRING setting, or null
  rx_tok* expr;           // VALUE expression, or null
  rx_tok* value_tok;      // the VALUE token, or null
};

// ---------------------------------------------------------------------------
// Program options, settled while lexing.

enum : int32_t { OPT_UNSET = -1 };
enum : int32_t { CASE_UPPER = 0, CASE_LOWER = 1, CASE_MIXED = 2 };

struct rx_options {
  int32_t symcase = OPT_UNSET;   // CASE_* once OPTION gave one
  int32_t setenv = OPT_UNSET;    // 1 environment hook on, 0 off
  int32_t load = OPT_UNSET;      // 1 external files merged, 0 run apart
  int32_t globalv = OPT_UNSET;   // 1 GLOBALV command available, 0 not
};

// ---------------------------------------------------------------------------
// Errors.

// A syntax or scanning error: its number, where, and an optional further text.
struct rx_err {
  int32_t err_num = 0;     // error number, 0 for none
  int32_t err_line = 0;    // line from 0 in the text that was lexed
  int32_t err_col = 0;     // column from 0
  std::string err_msg;     // further message, printed after "molba: "
};

// The text of an error number, "Unknown error." for one outside the table.
const char* rx_error_text(int n);

// Where a program's text came from, for reports.
struct rx_src {
  std::string text;        // prelude followed by the program
  std::string file_name;   // the program's name as reported
  int32_t prelude_lines = 0;  // lines of the prelude in front of the program
  bool interpreted = false;   // text of an INTERPRET clause
};

// The full report of an error: header and source line, caret line, error line
// and the optional "molba: " line, each ending with a newline.
std::string rx_error_report(const rx_src& src, const rx_err& err);

// ---------------------------------------------------------------------------
// Programs.

struct rx_arena;
struct rx_label;

struct rx_prog {
  rx_prog();
  ~rx_prog();
  rx_prog(const rx_prog&) = delete;
  rx_prog& operator=(const rx_prog&) = delete;

  std::unique_ptr<rx_arena> arena;  // owns every token, node and clause
  std::vector<rx_tok*> toks;        // the token array after rx_lex2
  rx_cell* block_head = nullptr;    // the program: first cell of its block
  rx_label* labels[128] = {};       // label table, hashed as variables are
  rx_options opts;                  // options set by OPTION clauses
  bool lex_trace = false;           // collect the token trace in lex_log
  std::string lex_log;              // token trace of rx_lex and each rx_lex2 pass
};

// A label table entry. It points at the label's own cell rather than holding
// a copy, so that a jump to the label runs on through the cells after it.
struct rx_label {
  const char* name;        // folded label name
  int32_t len;             // its length
  rx_cell* cell;           // the cell that holds the label clause
  rx_label* next;          // next entry of the bucket
};

// Characters to tokens. line0 numbers the first line. Returns 0, or the error
// number with err filled in (the token array is then empty).
int rx_lex(rx_prog& prog, const char* text, size_t len, int line0, rx_err& err);

// The rewriting passes: keyword settling, inserted tokens, blank removal,
// symbol case and compound splitting. Cannot fail.
void rx_lex2(rx_prog& prog);

// Builds the tree from prog.toks. Returns 0, or the error number with err set.
int rx_parse_tokens(rx_prog& prog, rx_err& err);

// All three steps over a text. Returns 0 or the error number.
int rx_parse(rx_prog& prog, const char* text, size_t len, rx_err& err);

// The label entry for a folded name, or null.
const rx_label* rx_label_find(const rx_prog& prog, const char* name, size_t len);

// A compact one-line rendering of an expression, for tests and tracing:
// leaves as written, nodes as "(fx_name a b)", calls as "f(a,b)".
std::string rx_expr_text(const rx_tok* t);

// A compact rendering of a block, one clause per line, nested blocks indented.
std::string rx_tree_text(const rx_cell* block);

// Tokens rendered as "type:text" words separated by blanks, for tests.
std::string rx_toks_text(const std::vector<rx_tok*>& toks);

// The token trace lines of the lexer, under a banner such as " ..... lex()".
std::string rx_toks_trace(const std::vector<rx_tok*>& toks, const char* banner);

// ---------------------------------------------------------------------------
// Reading a program.

// Finds a program: a name with a '/' is taken as it is, else the current
// directory, then each directory of xpath (':'-separated). Empty when none.
std::string rx_find_program(const std::string& name, const std::string& xpath);

// Reads the program file and puts the prelude in front of it (HOME/.molbarc,
// else home/vorta.molbarc). Notes about an unreadable prelude are appended to
// msgs, one line each. Returns 0, or 1 with a message in msgs when the
// program itself can't be read or no installation directory is known.
int rx_read_program(const std::string& path, const std::string& home,
                    rx_src& src, std::string& msgs);

// ---------------------------------------------------------------------------
// Built-in functions.

// Whether a call of the built-in `name` (any case) finds a function: one of
// the interpreter's own or a row of the library's table that has a handler.
bool rx_builtin_ready(std::string_view name);
