// The variable store: frames of hashed entries, simple and compound names,
// stem defaults, DROP, and the exposure links that PROCEDURE EXPOSE makes.
//
// A compound variable is an ordinary entry named by its stem, a dot and the
// substituted tail ("A.1.X"); a stem's default lives under the stem key, the
// stem name with a '+' after it ("A+"). Entries never move once made, so a
// caller may keep a pointer to one for as long as its frame lives.
//
// Order: listings (CVTAILS, the debug dump) walk a frame in the order of the
// classic store, 40960 buckets chosen by var_hash with the newest entry of a
// bucket first. Lookups do not walk those chains: with that hash a million
// compounds make chains of sixty entries, so each frame keeps an
// open-addressing index on a wider hash instead, grown as the frame fills,
// and a stem keeps the compounds whose tail is a plain number in an array
// by that number, so that `a.i` in a loop costs no hash probe at all. The
// bucket order is rebuilt by sorting when a listing asks for it.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "rexx/value.h"

constexpr int VAR_BUCKETS = 40960;  // buckets of the listing order
constexpr int VAR_HASH_MASK = 0x9FFF;

enum : int32_t {
  VAR_DROPPED = 0,  // no value
  VAR_SET = 1,      // var_value holds the value
  VAR_EXPOSED = 2,  // the value lives in the next frame out
};

struct var_entry;

// What a stem key entry knows of its stem in its frame.
struct var_stem {
  std::vector<var_entry*> tails;  // every compound of the stem made in this frame
  std::vector<var_entry*> nums;   // compounds whose tail is a plain number, by that number
};

struct var_entry {
  int32_t var_state;               // VAR_DROPPED, VAR_SET or VAR_EXPOSED
  int32_t var_name_len;            // length of the name
  uint32_t var_changes;            // incremented at each assignment; DO reads it
  value var_value;                 // the value, when var_state is VAR_SET
  uint32_t var_seq;                // creation order within the frame
  var_stem* stem;                  // for a stem key: its compounds in this frame; else null
  char* var_name;                  // NUL-ended name, stored just after the entry
};

struct var_slot {
  uint64_t hash;     // wide hash of the entry's name
  var_entry* entry;  // null for an empty slot
};

struct var_frame {
  var_slot* slots = nullptr;     // open-addressing index, a power of two long; made on the first store
  uint32_t cap = 0;              // number of slots
  uint32_t used = 0;             // slots in use
  std::vector<var_entry*> all;   // every entry of the frame, in creation order
  var_frame* outer = nullptr;    // the next frame out; null for the top level
};

// What a lookup found.
struct var_ref {
  value* val = nullptr;        // the value, or null when the variable is unset
  var_entry* entry = nullptr;  // the entry that holds the value or the stem default
  uint32_t changes = 0;        // the change count of that entry
  bool from_default = false;   // a stem default served a compound
};

// One tail element of a compound symbol as the lexer gives it.
struct var_part {
  const char* text;  // the element's text
  int len;           // its length; 0 for an empty element
};

extern bool vars_setenv_hook;  // OPTION SETENV: names starting with '$' mirror the environment

// The classic bucket of a name, which fixes the listing order.
uint32_t var_hash(const char* name, size_t len);

// A fresh frame inside `outer` (PROCEDURE), and its release with every entry.
var_frame* vars_push(var_frame* outer);
void vars_pop(var_frame* f);
// Frees all entries of a frame but keeps the frame itself (end of a run).
void vars_clear(var_frame* f);

// The entry of exactly this name in this one frame, or null.
var_entry* vars_find(var_frame* f, const char* name, size_t len);

// Full lookup of a name. stem_len is the length of the stem part of a
// compound name (the index of its first dot), or 0 for a simple name or a
// stem key.
var_ref vars_get(var_frame* f, const char* name, size_t len, size_t stem_len);
inline var_ref vars_get(var_frame* f, std::string_view name, size_t stem_len = 0) {
  return vars_get(f, name.data(), name.size(), stem_len);
}

// Stores a value; the store follows exposure links. The rvalue form takes the
// value as it is, the other copies it. Gives the entry stored into.
var_entry* vars_set(var_frame* f, const char* name, size_t len, size_t stem_len, value&& v);
var_entry* vars_set(var_frame* f, const char* name, size_t len, size_t stem_len, const value& v);
// Assignment by the program: a name that starts with a digit or a dot is
// error 31. Gives 0 or the error number.
int vars_assign(var_frame* f, std::string_view name, size_t stem_len, value&& v);
// `stem. = v`: drops every compound of the stem, then sets its default.
// `stem` is the stem name without its dot.
var_entry* vars_set_stem(var_frame* f, std::string_view stem, value&& v);

// Substring assignment x[i] = v, x[i:j] = v, x[i:] = v (j null, colon) and
// x[:j] = v (i null): writes v, repeated as needed, over positions i to j of
// the variable's text, extending it with blanks. Gives 0 or error 78; the
// positions used come back in *pi and *pj (for trace) when given.
int vars_set_sub(var_frame* f, std::string_view name, size_t stem_len, value* i, value* j, bool colon,
                 const value& v, long long* pi = nullptr, long long* pj = nullptr);

// DROP of a simple or compound name, and of a whole stem (compounds and default).
void vars_drop(var_frame* f, const char* name, size_t len, size_t stem_len);
void vars_drop_stem(var_frame* f, std::string_view stem);

// PROCEDURE EXPOSE: marks a name in the inner frame as living further out. A
// stem is exposed through its stem key ("A+"); a compound by its derived name.
void vars_expose(var_frame* inner, std::string_view name);

// The derived name of a compound: the stem, then for each tail element a dot
// and the element's value when it is a set variable, or its own text.
void vars_derive(var_frame* f, std::string_view stem, const var_part* parts, int n,
                 std::string& out);

// The value an unset variable reads as: its name, a last '+' turned back into a dot.
std::string vars_unset_text(std::string_view name);
// Whether reading this unset name may raise NOVALUE (it is not a numeric name).
bool vars_novalue_applies(std::string_view name);
// Whether a text is a valid variable name (for EXPOSE and DROP lists).
bool vars_valid_name(std::string_view name);

// CVTAILS: the tails of all set compounds of a stem, blank-separated, in
// bucket order, following an exposed stem outwards.
std::string vars_tails(var_frame* f, std::string_view stem);

// Debug dump of one frame.
void vars_dump(var_frame* f, int level, FILE* out);
