// Internal to the parser: the parser's state, shared by the clause half
// (parse.cpp) and the expression half (parse_expr.cpp).
//
// The parser is hand-written recursive descent over the finished token
// array. Every recursion step counts against RX_MAX_DEPTH, so no input can
// run the machine stack out. A syntax error throws parse_fail, which is
// caught in rx_parse_tokens and nowhere else.
#pragma once

#include "rexx/tree_int.h"

struct parse_fail {};

// A structure still open while its body is read; the innermost one names
// the error when the program ends too early.
struct open_struct {
  int32_t num;         // 64 DO, 65 SELECT, 66 IF
  const rx_tok* tok;   // its keyword
};

struct parser {
  rx_prog& prog;                  // the program being built
  rx_arena& a;                    // its arena
  rx_err& err;                    // error report
  const std::vector<rx_tok*>& t;  // the tokens
  size_t pos = 0;                 // cursor
  int32_t cur_err = 55;           // number for a plain syntax error here
  int depth = 0;                  // recursion depth
  rx_cell* current_cell = nullptr;  // closing cell of the block being built
  rx_cell* block_head = nullptr;    // first cell of that block
  rx_frame* frame = nullptr;        // frames of the enclosing blocks
  rx_cl_do* cur_do = nullptr;       // innermost DO being built
  rx_cl_select* cur_select = nullptr;  // innermost SELECT being built
  std::vector<open_struct> open;    // open DO, SELECT and IF structures

  parser(rx_prog& p, rx_err& e) : prog(p), a(*p.arena), err(e), t(p.toks) {}

  int32_t peek(size_t ahead = 0) const
  {
    return pos + ahead < t.size() ? t[pos + ahead]->tok_type : 0;
  }
  rx_tok* tok() const { return pos < t.size() ? t[pos] : nullptr; }
  bool at_end() const;

  [[noreturn]] void fail(int32_t num, const rx_tok* at = nullptr, const char* msg = nullptr);
  [[noreturn]] void fail_msg(int32_t num, const rx_tok* at, const std::string& msg);
  void expect(int32_t type);
  void enter();
  void leave() { depth--; }

  // Blocks
  void open_block();
  rx_cell* close_block();
  void append(rx_clause* c);

  // Clauses (parse.cpp)
  void program();
  void clause_list(bool stop_at_end, bool stop_at_when);
  rx_clause* clause();
  rx_cell* single_clause_block();

  // Expressions (parse_expr.cpp)
  static bool starts_expr(int32_t type);
  rx_tok* expr();
  rx_tok* opt_expr();
  rx_tok* binary(int level);
  rx_tok* unary();
  rx_tok* primary();
  rx_tok* bracket(rx_tok* base);
  rx_tok* args();
  rx_tok* node(int32_t cls, rx_fx fx, const rx_tok* pos_of);
};

// Fills an operand slot of a node.
void rx_set_slot(rx_slot& s, rx_tok* operand);
