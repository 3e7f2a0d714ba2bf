// molba: the stand-alone REXX interpreter.
//
//   molba file [args]
//
// Finds the program, puts the prelude in front, lexes and parses it. A syntax
// error is reported on standard error and its number is the exit status.
#include "rexx/rexx.h"
#include "rexx/run.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

namespace {

// The installation directory: REXXHOME, else the folder of this program.
std::string install_dir()
{
  if (const char* h = std::getenv("REXXHOME"); h && *h) return h;
  char buf[4096];
  ssize_t n = readlink("/proc/self/exe", buf, sizeof buf - 1);
  if (n <= 0) return "";
  std::string exe(buf, static_cast<size_t>(n));
  size_t slash = exe.rfind('/');
  return slash == std::string::npos ? "" : exe.substr(0, slash);
}

// Programs are searched in XPATH, or PATH when XPATH is not set.
std::string macro_path()
{
  if (const char* x = std::getenv("XPATH")) return x;
  if (const char* p = std::getenv("PATH")) return p;
  return "";
}

// The words after the program's name form its one argument string.
std::string program_argument(int argc, char** argv)
{
  std::string arg;
  for (int i = 2; i < argc; i++) {
    if (i > 2) arg += ' ';
    arg += argv[i];
  }
  return arg;
}

}  // namespace

int main(int argc, char** argv)
{
  if (argc < 2) {
    std::fprintf(stderr, "molba: no program given\n");
    return 1;
  }
  std::string path = rx_find_program(argv[1], macro_path());
  rx_src src;
  std::string msgs;
  int rc = rx_read_program(path, install_dir(), src, msgs);
  std::fputs(msgs.c_str(), stderr);
  if (rc) return rc;
  rx_prog prog;
  rx_err err;
  if (int e = rx_parse(prog, src.text.data(), src.text.size(), err)) {
    std::string report = rx_error_report(src, err);
    std::fwrite(report.data(), 1, report.size(), stderr);
    return e;
  }
  return rx_run_main(prog, src, program_argument(argc, argv), argc > 2);
}
