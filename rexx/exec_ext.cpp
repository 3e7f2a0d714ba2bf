// External functions: a routine that is neither a label nor a built-in is
// looked for as a file, by path or along PATH. The file is merged into the
// running program behind a label of the name it was called by, so that it
// runs as an internal routine and its labels become the program's; under
// OPTION NOLOAD it runs apart as a nested run with the caller's arguments
// instead, its result coming back as the function's value.
//
// A file needs the extension .mlbx, or a first line that starts with "#!"
// and names molba, so that no ordinary program on PATH runs by accident.
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <sys/stat.h>

#include "rexx/exec_int.h"

namespace {

constexpr const char* ext = ".mlbx";

bool regular_file(const std::string& p)
{
  struct stat st;
  return stat(p.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

bool has_ext(const std::string& p)
{
  size_t n = std::char_traits<char>::length(ext);
  return p.size() > n && p.compare(p.size() - n, n, ext) == 0;
}

// Whether a file may run as an external routine.
bool acceptable(const std::string& p)
{
  if (has_ext(p)) return true;
  std::ifstream f(p);
  std::string first;
  std::getline(f, first);
  return first.rfind("#!", 0) == 0 && first.find("molba") != std::string::npos;
}

bool path_like(std::string_view n)
{
  return !n.empty() && (n[0] == '.' || n[0] == '/' || n[0] == '~');
}

std::string expand(std::string_view n)
{
  if (n[0] != '~') return std::string(n);
  const char* home = std::getenv("HOME");
  return std::string(home ? home : "") + std::string(n.substr(1));
}

bool trapped() { return rx_st->lv.cond[CN_SYNTAX].state == CS_SIGNAL; }

}  // namespace

bool rx_find_external(std::string_view name, bool quoted, std::string& path)
{
  std::string n(name);
  if (!quoted)
    for (char& c : n) c = (char)std::tolower((unsigned char)c);
  if (path_like(n)) {
    path = expand(n);
    if (!regular_file(path)) {
      if (!trapped()) rx_out_trace("molba: warning: unable to open file \"" + path + "\"\n");
      return false;
    }
    if (!acceptable(path)) {
      rx_out_trace("molba: warning: file " + path + " is not a valid \"molba\" file\n");
      return false;
    }
    return true;
  }
  const char* env = std::getenv("PATH");
  std::string dirs = env ? env : "";
  size_t start = 0;
  while (start <= dirs.size()) {
    size_t end = dirs.find(':', start);
    if (end == std::string::npos) end = dirs.size();
    std::string dir = dirs.substr(start, end - start);
    start = end + 1;
    if (dir.empty()) continue;
    std::string p = dir + "/" + n;
    if (regular_file(p) && acceptable(p)) {
      path = p;
      return true;
    }
    if (!has_ext(p) && regular_file(p + ext)) {
      path = p + ext;
      return true;
    }
  }
  return false;
}

namespace {

std::string read_all(const std::string& path)
{
  std::ifstream f(path, std::ios::binary);
  std::ostringstream text;
  text << f.rdbuf();
  return text.str();
}

// The entry label as a string label, so that any name can be one.
std::string entry_label(std::string_view name)
{
  std::string l = "\"";
  for (char c : name) {
    l += c;
    if (c == '"') l += '"';
  }
  return l + "\":;";
}

}  // namespace

const rx_label* rx_merge_external(std::string_view name, const std::string& path, const rx_tok* at)
{
  rx_merged m;
  m.src = std::make_unique<rx_src>();
  // The label goes on the file's first line, so that its line numbers stay
  // the file's own; a "#!" line after it is a comment to the lexer.
  m.src->text = entry_label(name) + read_all(path);
  m.src->file_name = path;
  m.prog = std::make_unique<rx_prog>();
  m.prog->opts = rx_st->prog->opts;
  rx_err err;
  if (int e = rx_parse(*m.prog, m.src->text.data(), m.src->text.size(), err)) {
    std::fflush(stdout);
    rx_out_trace(rx_error_report(*m.src, err));
    rx_at(at);
    rx_raise(e, err.err_msg);
  }
  const rx_label* l = rx_label_find(*m.prog, name.data(), name.size());
  rx_st->merged.push_back(std::move(m));
  return l;
}

const rx_label* rx_merged_label(std::string_view name)
{
  for (const rx_merged& m : rx_st->merged)
    if (const rx_label* l = rx_label_find(*m.prog, name.data(), name.size())) return l;
  return nullptr;
}

const rx_src* rx_label_src(const rx_label* l)
{
  for (const rx_merged& m : rx_st->merged)
    if (rx_label_find(*m.prog, l->name, (size_t)l->len) == l) return m.src.get();
  return rx_st->prog_src;
}

bool rx_call_external(const std::string& path, std::vector<value>& args, std::vector<char>& omitted,
                      const rx_tok* at, value& out)
{
  rx_src src;
  src.text = read_all(path);
  src.file_name = path;
  rx_prog prog;
  rx_err err;
  if (int e = rx_parse(prog, src.text.data(), src.text.size(), err)) {
    std::fflush(stdout);
    rx_out_trace(rx_error_report(src, err));
    rx_at(at);
    rx_raise(e);
  }
  std::vector<std::string> texts(args.size());
  std::vector<rx_arg> list(args.size());
  for (size_t i = 0; i < args.size(); i++) {
    texts[i] = omitted[i] ? std::string() : rx_text(args[i]);
    list[i] = {texts[i].data(), texts[i].size()};
  }
  rx_result res;
  rx_run_prog(prog, src, list.data(), (int)list.size(), &res);
  if (res.error) {
    rx_at(at);
    rx_raise(res.error, "in the routine " + path);
  }
  if (!res.has_text) return false;
  out.set_str(res.text);
  return true;
}
