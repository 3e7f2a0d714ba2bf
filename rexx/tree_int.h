// Internal to the lexer and parser: the program arena and token helpers.
//
// A program makes a great many small records that all die together, so they
// are carved from large chunks instead of being allocated one by one.
#pragma once

#include "rexx/rexx.h"

#include <cstring>
#include <new>
#include <type_traits>

#ifdef XED_TINY_GROWTH
constexpr size_t RX_ARENA_CHUNK = 256;  // chunk changes all the time in tests
#else
constexpr size_t RX_ARENA_CHUNK = 64 * 1024;
#endif

struct rx_arena {
  static constexpr size_t CHUNK = RX_ARENA_CHUNK;  // bytes per ordinary chunk

  std::vector<std::unique_ptr<char[]>> chunks;  // every chunk handed out
  char* cur = nullptr;                          // free space of the last chunk
  size_t left = 0;                              // bytes free at cur

  void* raw(size_t n, size_t align)
  {
    size_t pad = (align - (reinterpret_cast<uintptr_t>(cur) & (align - 1))) & (align - 1);
    if (cur == nullptr || pad + n > left) {
      if (n > CHUNK / 4) {
        chunks.emplace_back(new char[n + align]);
        char* p = chunks.back().get();
        p += (align - (reinterpret_cast<uintptr_t>(p) & (align - 1))) & (align - 1);
        return p;
      }
      chunks.emplace_back(new char[CHUNK]);
      cur = chunks.back().get();
      left = CHUNK;
      pad = (align - (reinterpret_cast<uintptr_t>(cur) & (align - 1))) & (align - 1);
    }
    char* p = cur + pad;
    cur = p + n;
    left -= pad + n;
    return p;
  }

  // A zero-filled record of trivially destructible type T.
  template <class T> T* make()
  {
    static_assert(std::is_trivially_destructible_v<T>);
    void* p = raw(sizeof(T), alignof(T));
    std::memset(p, 0, sizeof(T));
    return static_cast<T*>(p);
  }

  // A NUL-ended copy of n bytes.
  char* text(const char* s, size_t n)
  {
    char* p = static_cast<char*>(raw(n + 1, 1));
    if (n) std::memcpy(p, s, n);
    p[n] = 0;
    return p;
  }
};

// A token of the given type at a position, with an optional copy of a text.
inline rx_tok* rx_newtok(rx_arena& a, int32_t type, int32_t line, int32_t col,
                         const char* s = nullptr, size_t n = 0)
{
  rx_tok* t = a.make<rx_tok>();
  t->tok_type = type;
  t->tok_line = line;
  t->tok_col = col;
  if (s) {
    t->tok_value = a.text(s, n);
    t->tok_len = static_cast<int32_t>(n);
  }
  return t;
}

// True for the operator tokens after which a blank carries no meaning.
bool rx_is_operator(int32_t type);

// The keyword token of a word (compared in upper case), or 0.
int32_t rx_keyword(const char* s, size_t n);

// Folds a symbol's text to the program's case option, in place.
void rx_fold_case(char* s, size_t n, int32_t symcase);

// The byte values of the three tokens read from single bytes.
constexpr unsigned char RX_EQIC_BYTE = 0xAD;  // equal ignoring case
constexpr unsigned char RX_RHO_BYTE = 0xBD;   // length
constexpr unsigned char RX_SYM_BYTE = 0xA8;   // extra symbol character

// Nesting of clauses and expressions deeper than this is a parser overflow,
// so that no input can exhaust the machine stack.
constexpr int RX_MAX_DEPTH = 1000;
