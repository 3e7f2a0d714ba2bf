// The variable store: hashed frames, lookup with stem defaults and exposure
// links, assignment, DROP, EXPOSE, tail derivation and CVTAILS.
#include "rexx/vars.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>

bool vars_setenv_hook = false;

namespace {

// Names are short: a byte loop beats a call to memcmp.
inline bool same(const char* a, const char* b, size_t n) {
  if (n > 16) return memcmp(a, b, n) == 0;
  for (size_t i = 0; i < n; i++)
    if (a[i] != b[i]) return false;
  return true;
}

uint64_t wide_hash(const char* name, size_t len) {
  uint64_t h = 0xcbf29ce484222325ull;
  for (size_t i = 0; i < len; i++) h = (h ^ (unsigned char)name[i]) * 0x100000001b3ull;
  return h ^ (h >> 29);
}

void grow(var_frame* f) {
  uint32_t cap = f->cap ? f->cap * 2 : 16;
  var_slot* slots = (var_slot*)calloc(cap, sizeof(var_slot));
  if (!slots) rx_nomem((size_t)cap * sizeof(var_slot));
  for (uint32_t i = 0; i < f->cap; i++) {
    if (!f->slots[i].entry) continue;
    uint32_t k = (uint32_t)f->slots[i].hash & (cap - 1);
    while (slots[k].entry) k = (k + 1) & (cap - 1);
    slots[k] = f->slots[i];
  }
  free(f->slots);
  f->slots = slots;
  f->cap = cap;
}

var_entry* index_find(var_frame* f, const char* name, size_t len) {
  if (!f->cap) return nullptr;
  uint64_t h = wide_hash(name, len);
  for (uint32_t k = (uint32_t)h & (f->cap - 1);; k = (k + 1) & (f->cap - 1)) {
    const var_slot& s = f->slots[k];
    if (!s.entry) return nullptr;
    if (s.hash == h && (size_t)s.entry->var_name_len == len && same(s.entry->var_name, name, len))
      return s.entry;
  }
}

void index_add(var_frame* f, var_entry* e) {
  if ((f->used + 1) * 2 > f->cap) grow(f);
  uint64_t h = wide_hash(e->var_name, (size_t)e->var_name_len);
  uint32_t k = (uint32_t)h & (f->cap - 1);
  while (f->slots[k].entry) k = (k + 1) & (f->cap - 1);
  f->slots[k] = {h, e};
  f->used++;
}

// The stem key of a compound: the stem, then '+'.
struct key_buf {
  char small[64];  // the key when short
  std::string big; // the key when long
  const char* p;   // the key's text
  size_t n;        // its length
  key_buf(const char* stem, size_t len) : n(len + 1) {
    char* b = small;
    if (n > sizeof small) {
      big.resize(n);
      b = big.data();
    }
    memcpy(b, stem, len);
    b[len] = '+';
    p = b;
  }
};

// A compound whose whole tail is one plain number ("A.17", not "A.017" nor
// "A.1.2"): gives the stem length and the number.
bool number_tail(const char* name, size_t len, size_t& stem_len, uint32_t& n) {
  const char* dot = (const char*)memchr(name, '.', len);
  if (!dot || dot == name) return false;
  size_t p = (size_t)(dot - name) + 1, digits = len - p;
  if (digits == 0 || digits > 9 || (digits > 1 && name[p] == '0')) return false;
  uint32_t v = 0;
  for (size_t i = p; i < len; i++) {
    if (name[i] < '0' || name[i] > '9') return false;
    v = v * 10 + (uint32_t)(name[i] - '0');
  }
  stem_len = p - 1;
  n = v;
  return true;
}

// Whether a stem's number array should take tail n: it grows while it stays
// at most half empty, so a sparse stem never holds a huge array.
bool array_takes(const var_stem* st, uint32_t n) {
  return n < st->nums.size() || n < 2 * st->tails.size() + 64;
}

var_entry* new_entry(var_frame* f, const char* name, size_t len) {
  size_t size = sizeof(var_entry) + len + 1;
  void* mem = malloc(size);
  if (!mem) rx_nomem(size);
  var_entry* e = new (mem) var_entry{};
  e->var_name = (char*)(e + 1);
  memcpy(e->var_name, name, len);
  e->var_name[len] = 0;
  e->var_name_len = (int32_t)len;
  e->var_seq = (uint32_t)f->all.size();
  f->all.push_back(e);
  return e;
}

// Makes an entry in this frame. A compound is also listed under its stem
// key, made here when missing, and a plain-number tail goes to the stem's
// array rather than the index.
var_entry* make_entry(var_frame* f, const char* name, size_t len) {
  var_entry* e = new_entry(f, name, len);
  const char* dot = (const char*)memchr(name, '.', len);
  if (!dot || dot == name || (size_t)(dot - name) + 1 == len) {
    index_add(f, e);
    return e;
  }
  size_t stem_len = (size_t)(dot - name);
  key_buf k(name, stem_len);
  var_entry* key = index_find(f, k.p, k.n);
  if (!key) {
    key = new_entry(f, k.p, k.n);
    index_add(f, key);
  }
  if (!key->stem) key->stem = new var_stem;
  var_stem* st = key->stem;
  st->tails.push_back(e);
  uint32_t n;
  if (number_tail(name, len, stem_len, n) && array_takes(st, n)) {
    if (n >= st->nums.size()) st->nums.resize(std::max<size_t>(n + 1, st->nums.size() * 2), nullptr);
    st->nums[n] = e;
  } else {
    index_add(f, e);
  }
  return e;
}

// The entries of a frame in the classic bucket order: by bucket, and the
// newest first within one.
std::vector<var_entry*> in_bucket_order(var_frame* f) {
  std::vector<std::pair<uint64_t, var_entry*>> keyed;
  keyed.reserve(f->all.size());
  for (var_entry* e : f->all) {
    uint64_t bucket = var_hash(e->var_name, (size_t)e->var_name_len);
    keyed.push_back({(bucket << 32) | (0xFFFFFFFFu - e->var_seq), e});
  }
  std::sort(keyed.begin(), keyed.end(),
            [](const auto& x, const auto& y) { return x.first < y.first; });
  std::vector<var_entry*> out;
  out.reserve(keyed.size());
  for (auto& k : keyed) out.push_back(k.second);
  return out;
}

void free_entry(var_entry* e) {
  delete e->stem;
  e->~var_entry();
  free(e);
}

void unset(var_entry* e) {
  e->var_state = VAR_DROPPED;
  e->var_value.set_str("", 0);
}

// The frame that really holds a stem: exposure links followed outwards.
var_frame* stem_home(var_frame* f, const key_buf& k, var_entry*& key) {
  for (;;) {
    key = vars_find(f, k.p, k.n);
    if (!key || key->var_state != VAR_EXPOSED || !f->outer) return f;
    f = f->outer;
  }
}

var_entry* store(var_frame* f, const char* name, size_t len, size_t stem_len, value&& v) {
  for (;;) {
    var_entry* key = nullptr;
    if (stem_len) {
      key_buf k(name, stem_len);
      key = vars_find(f, k.p, k.n);
      if (key && key->var_state == VAR_EXPOSED && f->outer) {
        f = f->outer;
        continue;
      }
    }
    var_entry* e = vars_find(f, name, len);
    if (e && e->var_state == VAR_EXPOSED && f->outer) {
      f = f->outer;
      continue;
    }
    if (!e) {
      e = make_entry(f, name, len);
    } else {
      e->var_changes++;
    }
    e->var_value = std::move(v);
    e->var_state = VAR_SET;
    return e;
  }
}

// With the environment hook on, '$NAME' mirrors the environment variable
// NAME, and '$?NAME' says whether it exists.
void env_refresh(var_frame* f, const char* name, size_t len) {
  std::string env(name + 1, len - 1);
  if (len >= 3 && name[1] == '?') {
    bool there = getenv(env.c_str() + 1) != nullptr;
    store(f, name, len, 0, value(there ? "1" : "0", 1));
    return;
  }
  const char* s = getenv(env.c_str());
  store(f, name, len, 0, s ? value(s, strlen(s)) : value());
}

void env_publish(const char* name, size_t len, const value& v) {
  if (!vars_setenv_hook || len < 2 || name[0] != '$' || name[1] == '?') return;
  std::string env(name + 1, len - 1);
  std::string text = val_string(v);
  setenv(env.c_str(), text.c_str(), 1);
}

// A substring index: a positive whole number taken to 9 digits.
int sub_index(value& v, const char* which, long long& out) {
  if (!val_make_num(v)) return rx_fail(78, std::string("The ") + which + " index evaluates to \"" + val_string(v) + "\"");
  double d = rx_round(v.val_num, 9);
  if (d != std::floor(d) || d < 1 || d > 2e9)
    return rx_fail(78, std::string("The ") + which + " index must be a positive integer.");
  out = (long long)d;
  return 0;
}

bool symbol_char(unsigned char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         strchr("@#$.!?_", c) != nullptr || c == 0xA8;
}

}  // namespace

uint32_t var_hash(const char* name, size_t len) {
  // Bytes are read as signed; the final step takes the terminating NUL.
  int h = (signed char)name[0];
  for (size_t i = 1; i < len; i++) h = (h * 31 + (signed char)name[i]) & VAR_HASH_MASK;
  h = (h * 31) & VAR_HASH_MASK;
  return (uint32_t)h;
}

var_frame* vars_push(var_frame* outer) {
  var_frame* f = new var_frame;
  f->outer = outer;
  return f;
}

void vars_clear(var_frame* f) {
  for (var_entry* e : f->all) free_entry(e);
  std::vector<var_entry*>().swap(f->all);
  free(f->slots);
  f->slots = nullptr;
  f->cap = f->used = 0;
}

void vars_pop(var_frame* f) {
  vars_clear(f);
  delete f;
}

var_entry* vars_find(var_frame* f, const char* name, size_t len) {
  size_t stem_len;
  uint32_t n;
  if (len > 2 && name[len - 1] >= '0' && name[len - 1] <= '9' && number_tail(name, len, stem_len, n)) {
    key_buf k(name, stem_len);
    var_entry* key = index_find(f, k.p, k.n);
    if (!key || !key->stem) return nullptr;
    if (n < key->stem->nums.size() && key->stem->nums[n]) return key->stem->nums[n];
  }
  return index_find(f, name, len);
}

var_ref vars_get(var_frame* f, const char* name, size_t len, size_t stem_len) {
  if (vars_setenv_hook && len >= 2 && name[0] == '$') env_refresh(f, name, len);
  for (;;) {
    var_entry* key = nullptr;
    if (stem_len) {
      key_buf k(name, stem_len);
      key = vars_find(f, k.p, k.n);
      if (key && key->var_state == VAR_EXPOSED && f->outer) {
        f = f->outer;
        continue;
      }
    }
    var_entry* e = vars_find(f, name, len);
    if (e) {
      if (e->var_state == VAR_EXPOSED && f->outer) {
        f = f->outer;
        continue;
      }
      if (e->var_state == VAR_SET) return {&e->var_value, e, e->var_changes, false};
    }
    if (key && key->var_state == VAR_SET) return {&key->var_value, key, key->var_changes, true};
    return {nullptr, e, 0, false};
  }
}

var_entry* vars_set(var_frame* f, const char* name, size_t len, size_t stem_len, value&& v) {
  env_publish(name, len, v);
  return store(f, name, len, stem_len, std::move(v));
}

var_entry* vars_set(var_frame* f, const char* name, size_t len, size_t stem_len, const value& v) {
  return vars_set(f, name, len, stem_len, value(v));
}

int vars_assign(var_frame* f, std::string_view name, size_t stem_len, value&& v) {
  if (name.empty() || name[0] == '.' || (name[0] >= '0' && name[0] <= '9')) return rx_fail(31);
  vars_set(f, name.data(), name.size(), stem_len, std::move(v));
  return 0;
}

var_entry* vars_set_stem(var_frame* f, std::string_view stem, value&& v) {
  vars_drop_stem(f, stem);
  key_buf k(stem.data(), stem.size());
  return store(f, k.p, k.n, 0, std::move(v));
}

int vars_set_sub(var_frame* f, std::string_view name, size_t stem_len, value* i, value* j, bool colon,
                 const value& v, long long* pi, long long* pj) {
  char sv[VAL_NUMBUF];
  std::string_view fill = val_text_of(v, sv);
  if (fill.empty()) fill = " ";
  long long first = 1, last = 0;
  if (i)
    if (int e = sub_index(*i, "first", first)) return e;
  if (j)
    if (int e = sub_index(*j, "second", last)) return e;
  var_ref r = vars_get(f, name.data(), name.size(), stem_len);
  std::string text = r.val ? val_string(*r.val) : vars_unset_text(name);
  if (!j) last = colon ? (long long)text.size() : first + (long long)fill.size() - 1;
  if (last < first) return rx_fail(78, "The second index must be greater than the first.");
  if ((long long)text.size() < last) text.resize((size_t)last, ' ');
  for (long long k = first; k <= last; k++) text[(size_t)(k - 1)] = fill[(size_t)(k - first) % fill.size()];
  vars_set(f, name.data(), name.size(), stem_len, value(text));
  if (pi) *pi = first;
  if (pj) *pj = last;
  return 0;
}

void vars_drop(var_frame* f, const char* name, size_t len, size_t stem_len) {
  for (;;) {
    if (stem_len) {
      key_buf k(name, stem_len);
      var_entry* key = vars_find(f, k.p, k.n);
      if (key && key->var_state == VAR_EXPOSED && f->outer) {
        f = f->outer;
        continue;
      }
    }
    var_entry* e = vars_find(f, name, len);
    if (!e) return;
    if (e->var_state == VAR_EXPOSED && f->outer) {
      f = f->outer;
      continue;
    }
    unset(e);
    return;
  }
}

void vars_drop_stem(var_frame* f, std::string_view stem) {
  key_buf k(stem.data(), stem.size());
  var_entry* key = nullptr;
  stem_home(f, k, key);
  if (!key) return;
  if (key->stem)
    for (var_entry* e : key->stem->tails) unset(e);
  if (key->var_state != VAR_EXPOSED) unset(key);
}

void vars_expose(var_frame* inner, std::string_view name) {
  var_entry* e = vars_find(inner, name.data(), name.size());
  if (!e) e = make_entry(inner, name.data(), name.size());
  e->var_state = VAR_EXPOSED;
  e->var_value.set_str("", 0);
}

void vars_derive(var_frame* f, std::string_view stem, const var_part* parts, int n,
                 std::string& out) {
  out.assign(stem.data(), stem.size());
  for (int i = 0; i < n; i++) {
    out += '.';
    const var_part& p = parts[i];
    if (p.len == 0) continue;
    char c = p.text[0];
    var_ref r;
    if (!(c >= '0' && c <= '9') && c != '.') r = vars_get(f, p.text, (size_t)p.len, 0);
    if (!r.val) {
      out.append(p.text, (size_t)p.len);
    } else {
      char buf[VAL_NUMBUF];
      out += val_text_of(*r.val, buf);
    }
  }
}

std::string vars_unset_text(std::string_view name) {
  std::string s(name);
  if (!s.empty() && s.back() == '+') s.back() = '.';
  return s;
}

bool vars_novalue_applies(std::string_view name) {
  for (unsigned char c : name)
    if (c < '0' || c > '9' || c < 33 || c > 127) return true;
  return false;
}

bool vars_valid_name(std::string_view name) {
  if (name.empty() || name[0] == '.' || (name[0] >= '0' && name[0] <= '9')) return false;
  for (unsigned char c : name)
    if (!symbol_char(c)) return false;
  return true;
}

std::string vars_tails(var_frame* f, std::string_view stem) {
  key_buf k(stem.data(), stem.size());
  var_entry* key = nullptr;
  f = stem_home(f, k, key);
  std::string out;
  for (var_entry* e : in_bucket_order(f)) {
    if (e->var_state != VAR_SET || (size_t)e->var_name_len <= stem.size() ||
        e->var_name[stem.size()] != '.' || memcmp(e->var_name, stem.data(), stem.size()) != 0)
      continue;
    if (!out.empty()) out += ' ';
    out.append(e->var_name + stem.size() + 1, (size_t)e->var_name_len - stem.size() - 1);
  }
  return out;
}

void vars_dump(var_frame* f, int level, FILE* out) {
  fprintf(out, "\n.......... show: level %d\n\n", level);
  for (var_entry* e : in_bucket_order(f)) {
    if (e->var_state == VAR_DROPPED) {
      if (e->var_name[e->var_name_len - 1] == '+') continue;  // a stem key made for its tails
      fprintf(out, "\"%s\" is DROPPED\n", e->var_name);
    } else if (e->var_state == VAR_EXPOSED) {
      fprintf(out, "\"%s\" is EXPOSED\n", e->var_name);
    } else {
      fprintf(out, "\"%s\" = \"%s\"\n", e->var_name, val_string(e->var_value).c_str());
    }
  }
}
