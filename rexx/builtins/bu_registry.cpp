// The registry family on the settings store: HKEY_CURRENT_USER keys live in
// the store; the other roots are valid words with no store behind them, so
// opening one fails as a key that cannot be opened does. A value's text
// says its type: plain text, "dword:" and 8 hexadecimal digits, "hex:" and
// byte pairs each followed by a comma, or "hex(n):" for the other types.
// A failure is a message on the error stream and the result 1 (RC 1);
// success gives the value or 0 (RC 0).
#include <cctype>
#include <cstdio>
#include <cstring>

#include "platform/platform.h"
#include "rexx/builtins/bu_system.h"

namespace {

constexpr const char* roots[] = {"HKEY_CLASSES_ROOT",  "HKEY_CURRENT_CONFIG", "HKEY_CURRENT_USER",
                                 "HKEY_DYN_DATA",      "HKEY_LOCAL_MACHINE",  "HKEY_USERS"};
constexpr const char* STORED_ROOT = "HKEY_CURRENT_USER";

// The root word of argument 0: its index in roots.
int read_root(bu_frame& f, int& root) {
  std::string w(bu_text(f, 0));
  for (char& c : w) c = (char)toupper((unsigned char)c);
  for (int i = 0; i < (int)(sizeof roots / sizeof roots[0]); i++)
    if (w == roots[i]) return root = i, 0;
  std::string list;
  for (const char* r : roots) list += std::string(list.empty() ? "" : ", ") + r;
  return bu_fail(f, 0, "Invalid key. Must be one of the " + list + ".");
}

// The full key in the store, or "" for a root with no store behind it.
std::string full_key(int root, std::string_view key) {
  if (strcmp(roots[root], STORED_ROOT) != 0) return "";
  return std::string(STORED_ROOT) + "\\" + std::string(key);
}

int refused(bu_frame& f, value& r, const char* what) {
  bu_message(std::string(f.name) + " Error: " + what);
  bu_set_rc(1);
  r.set_num(1, 0);
  return 0;
}

int done(value& r) {
  bu_set_rc(0);
  r.set_num(0, 0);
  return 0;
}

bool hex_digits(std::string_view s, size_t min, size_t max) {
  if (s.size() < min || s.size() > max) return false;
  for (char c : s)
    if (!isxdigit((unsigned char)c)) return false;
  return true;
}

// Byte pairs separated (and optionally ended) by commas, written back as
// "%2.2x," each; false on anything else.
bool byte_list(std::string_view s, std::string& out) {
  out.clear();
  size_t i = 0;
  while (i < s.size()) {
    size_t e = s.find(',', i);
    std::string_view b = s.substr(i, e == std::string_view::npos ? std::string_view::npos : e - i);
    while (!b.empty() && b.front() == ' ') b.remove_prefix(1);
    while (!b.empty() && b.back() == ' ') b.remove_suffix(1);
    if (!hex_digits(b, 1, 2)) return false;
    char buf[8];
    snprintf(buf, sizeof buf, "%2.2x,", (unsigned)strtoul(std::string(b).c_str(), nullptr, 16));
    out += buf;
    if (e == std::string_view::npos) break;
    i = e + 1;
  }
  return true;
}

// The value text in its stored form, or the message of its fault.
const char* normal_form(std::string_view v, std::string& out) {
  std::string low(v.substr(0, 7));
  for (char& c : low) c = (char)tolower((unsigned char)c);
  if (low.rfind("dword:", 0) == 0) {
    std::string_view d = v.substr(6);
    if (!hex_digits(d, 1, 8)) return "Invalid REG_DWORD format.";
    char buf[16];
    snprintf(buf, sizeof buf, "dword:%8.8lx", strtoul(std::string(d).c_str(), nullptr, 16));
    out = buf;
    return nullptr;
  }
  if (low.rfind("hex:", 0) == 0) {
    std::string bytes;
    if (!byte_list(v.substr(4), bytes)) return "Invalid REG_BINARY format.";
    out = "hex:" + bytes;
    return nullptr;
  }
  if (low.rfind("hex(", 0) == 0 && v.size() >= 7 && v[5] == ')' && v[6] == ':') {
    char t = (char)tolower((unsigned char)v[4]);
    std::string bytes;
    if (!strchr("056789a", t)) return "Invalid value type.";
    if (!byte_list(v.substr(7), bytes)) return "Invalid hex() format.";
    out = std::string("hex(") + t + "):" + bytes;
    return nullptr;
  }
  out = v;
  return nullptr;
}

}  // namespace

// REGISTRY_GET(root, key, name): the value's text.
int bu_registry_get(bu_frame& f, value& r) {
  if (int e = bu_count(f, 3, 3)) return e;
  int root;
  if (int e = read_root(f, root)) return e;
  std::string key = full_key(root, bu_text(f, 1));
  std::vector<pl_value> vals;
  if (key.empty() || pl_key_values(key, vals) != 0) return refused(f, r, "Unable to Open Key");
  std::string_view name = bu_text(f, 2);
  for (const pl_value& v : vals)
    if (v.name == name) {
      bu_set_rc(0);
      r.set_str(v.text);
      return 0;
    }
  return refused(f, r, "Unable to Query Key");
}

// REGISTRY_SET(root, key, name, value): the key made where missing.
int bu_registry_set(bu_frame& f, value& r) {
  if (int e = bu_count(f, 4, 4)) return e;
  int root;
  if (int e = read_root(f, root)) return e;
  std::string text;
  if (const char* fault = normal_form(bu_text(f, 3), text)) return refused(f, r, fault);
  std::string key = full_key(root, bu_text(f, 1));
  if (key.empty()) return refused(f, r, "Unable to Open Key");
  std::vector<pl_value> vals;
  pl_key_values(key, vals);
  std::string name(bu_text(f, 2));
  bool found = false;
  for (pl_value& v : vals)
    if (v.name == name) v.text = text, found = true;
  if (!found) vals.push_back({name, text});
  if (pl_key_put(key, vals) != 0) return refused(f, r, "Unable to Set Value");
  return done(r);
}

// REGISTRY_DEL(root, key [, name]): one value, or the key with its
// subkeys; a whole root is never removed.
int bu_registry_del(bu_frame& f, value& r) {
  if (int e = bu_count(f, 2, 3)) return e;
  int root;
  if (int e = read_root(f, root)) return e;
  std::string_view k = bu_text(f, 1);
  if (!bu_has(f, 2) && k.find_first_not_of('\\') == std::string_view::npos)
    return refused(f, r, "Unable to delete a root key");
  std::string key = full_key(root, k);
  std::vector<pl_value> vals;
  if (key.empty() || pl_key_values(key, vals) != 0) return refused(f, r, "Unable to Open Key");
  if (!bu_has(f, 2)) {
    if (pl_key_delete(key) != 0) return refused(f, r, "Unable to Delete Key");
    return done(r);
  }
  std::string_view name = bu_text(f, 2);
  size_t before = vals.size();
  std::erase_if(vals, [&](const pl_value& v) { return v.name == name; });
  if (vals.size() == before || pl_key_put(key, vals) != 0) return refused(f, r, "Unable to Delete Value");
  return done(r);
}

namespace {

int list(bu_frame& f, value& r, bool keys) {
  if (int e = bu_count(f, 3, 3)) return e;
  int root;
  if (int e = read_root(f, root)) return e;
  std::string stem;
  if (int e2 = bu_stem(f, 2, stem)) return e2;
  std::string key = full_key(root, bu_text(f, 1));
  std::vector<std::string> names;
  std::vector<pl_value> vals;
  if (key.empty() || (keys ? pl_key_subkeys(key, names) : pl_key_values(key, vals)) != 0)
    return refused(f, r, "Unable to Open Key");
  for (const pl_value& v : vals) names.push_back(v.name);
  bu_set_list(stem, names);
  for (size_t i = 0; i < vals.size(); i++) bu_set_var(stem + std::to_string(i + 1) + "." + bu_symbol_case("VALUE"), vals[i].text);
  return done(r);
}

}  // namespace

// REGISTRY_KEYS(root, key, stem.): the subkeys' names.
int bu_registry_keys(bu_frame& f, value& r) { return list(f, r, true); }

// REGISTRY_VALUES(root, key, stem.): the values' names, and stem.i.VALUE
// their texts.
int bu_registry_values(bu_frame& f, value& r) { return list(f, r, false); }
