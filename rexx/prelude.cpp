// Finding a program file and reading it with the prelude in front.
//
// The prelude (".molbarc" in the home directory, else "vorta.molbarc" in the
// installation directory) is plain program text put before every program,
// so that its settings and routines apply everywhere; its lines are counted
// so that reports can give the program's own line numbers.
#include "rexx/rexx.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>

namespace {

constexpr const char* prelude_name = ".molbarc";
constexpr const char* installed_prelude_name = "vorta.molbarc";
constexpr const char* compiled_mark = "@ccsr";
constexpr const char* no_home_text =
    "run_rx: you must pass the installation directoryor set up a REXXHOME "
    "environmentvariable pointing to that directory.";

bool is_file(const std::string& path)
{
  struct stat st;
  return stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

enum read_result { READ_OK, READ_NOFILE, READ_NOOPEN, READ_FAILED };

read_result read_file(const std::string& path, std::string& out)
{
  out.clear();
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (!f) return errno == ENOENT ? READ_NOFILE : READ_NOOPEN;
  char buf[65536];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) out.append(buf, n);
  bool bad = std::ferror(f);
  std::fclose(f);
  return bad ? READ_FAILED : READ_OK;
}

// A program in compiled form carries a mark at the start of its second line.
bool is_compiled(const std::string& text)
{
  size_t nl = text.find('\n');
  return nl != std::string::npos && text.compare(nl + 1, 5, compiled_mark) == 0;
}

std::string note(const char* fmt, const std::string& path)
{
  int n = std::snprintf(nullptr, 0, fmt, path.c_str());
  std::string out(n, '\0');
  std::snprintf(out.data(), out.size() + 1, fmt, path.c_str());
  return out + "\n";
}

// Reads the first usable prelude; a file of fewer than 2 bytes counts as absent.
bool load_prelude(const std::string& home, std::string& text, std::string& msgs)
{
  std::string candidates[2];
  if (const char* h = std::getenv("HOME")) candidates[0] = std::string(h) + "/" + prelude_name;
  candidates[1] = home + "/" + installed_prelude_name;
  for (const std::string& path : candidates) {
    if (path.empty()) continue;
    switch (read_file(path, text)) {
    case READ_NOFILE:
      continue;
    case READ_NOOPEN:
      msgs += note("molba: unable to open file %s", path);
      return false;
    case READ_FAILED:
      msgs += note("molba: unable to read file %s", path);
      return false;
    case READ_OK:
      if (text.size() < 2) continue;
      if (text.back() != '\n') text += '\n';
      return true;
    }
  }
  text.clear();
  return false;
}

}  // namespace

std::string rx_find_program(const std::string& name, const std::string& xpath)
{
  if (name.find('/') != std::string::npos || is_file(name)) return name;
  size_t start = 0;
  while (start <= xpath.size()) {
    size_t end = xpath.find(':', start);
    if (end == std::string::npos) end = xpath.size();
    std::string dir = xpath.substr(start, end - start);
    if (!dir.empty() && dir[0] == '/' && is_file(dir + "/" + name)) return dir + "/" + name;
    start = end + 1;
  }
  return name;
}

int rx_read_program(const std::string& path, const std::string& home, rx_src& src,
                    std::string& msgs)
{
  std::string install = home;
  if (install.empty()) {
    const char* env = std::getenv("REXXHOME");
    if (!env || !*env) {
      msgs += std::string(no_home_text) + "\n";
      return 1;
    }
    install = env;
  }
  std::string text;
  read_result r = read_file(path, text);
  if (r != READ_OK) {
    msgs += note(r == READ_FAILED ? "molba: unable to read file %s" : "molba: unable to open file %s",
                 path);
    return 1;
  }
  src.file_name = path;
  src.interpreted = false;
  src.prelude_lines = 0;
  src.text.clear();
  std::string prelude;
  if (!is_compiled(text) && load_prelude(install, prelude, msgs)) {
    for (char c : prelude)
      if (c == '\n') src.prelude_lines++;
    src.text = prelude;
  }
  src.text += text;
  return 0;
}
