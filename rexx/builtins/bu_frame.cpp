// The built-in function frame: the flat table of every built-in in its fixed
// order, the lookup by name under the symbol case mode, and the argument
// helpers that give every handler the same checks and message wording.
#include <cctype>
#include <cstdio>
#include <cstring>
#include <string>
#include <unordered_map>
#include <vector>

#include "rexx/builtins/builtins.h"

// One row per name; a family that is not built in yet has a null handler,
// and filling it in is the only edit a new built-in needs.
constexpr bu_row bu_table[] = {
    {"ActivateKeyboardLayout", nullptr, 0},
    {"GetAdaptersInfo", nullptr, 0},
    {"SHGetKnownFolderPath", nullptr, 0},
    {"SetPriority", nullptr, 0},
    {"dy_clip", nullptr, 0},
    {"dy_folder", nullptr, 0},
    {"service_create", nullptr, 0},
    {"service_delete", nullptr, 0},
    {"service_stop", nullptr, 0},
    {"service_start", nullptr, 0},
    {"service_status", nullptr, 0},
    {"registry_get", nullptr, 0},
    {"registry_del", nullptr, 0},
    {"registry_keys", nullptr, 0},
    {"registry_values", nullptr, 0},
    {"registry_set", nullptr, 0},
    {"abbrev", bu_abbrev, 0},
    {"abs", bu_abs, 0},
    {"acos", bu_acos, 0},
    {"address", nullptr, 0},
    {"arch", nullptr, 0},
    {"arg", nullptr, 0},
    {"asin", bu_asin, 0},
    {"askcons", nullptr, 0},
    {"atan", bu_atan, 0},
    {"b2x", bu_b2x, 0},
    {"bitand", bu_bitand, 0},
    {"bitor", bu_bitor, 0},
    {"bitxor", bu_bitxor, 0},
    {"c2d", bu_c2d, 0},
    {"c2o", bu_c2o, 0},
    {"c2x", bu_c2x, 0},
    {"center", bu_center, 0},
    {"centre", bu_center, BU_ALIAS},
    {"change", bu_change, 0},
    {"charin", bu_charin, 0},
    {"charout", bu_charout, 0},
    {"chars", bu_chars, 0},
    {"chdir", bu_chdir, 0},
    {"close_cons", nullptr, 0},
    {"cls", nullptr, 0},
    {"clear", nullptr, BU_ALIAS},
    {"compare", bu_compare, 0},
    {"concat", nullptr, 0},
    {"condition", nullptr, 0},
    {"copies", bu_copies, 0},
    {"copy", nullptr, 0},
    {"cos", bu_cos, 0},
    {"cp", nullptr, BU_ALIAS},
    {"iousage", nullptr, 0},
    {"cpuusage", nullptr, 0},
    {"netusage", nullptr, 0},
    {"csh", nullptr, 0},
    {"cuserid", bu_userid, 0},
    {"cvtails", nullptr, 0},
    {"cwd", bu_cwd, 0},
    {"d2c", bu_d2c, 0},
    {"d2x", bu_d2x, 0},
    {"datatype", bu_datatype, 0},
    {"date", bu_date, 0},
    {"del", nullptr, 0},
    {"delstr", bu_delstr, 0},
    {"delword", bu_delword, 0},
    {"digits", bu_digits, 0},
    {"dir", nullptr, 0},
    {"deobf", bu_deobf, 0},
    {"dofollow", nullptr, 0},
    {"dup2", bu_dup2, 0},
    {"errortext", nullptr, 0},
    {"externals", bu_externals, 0},
    {"exec", nullptr, 0},
    {"fd", nullptr, 0},
    {"fileconv", nullptr, 0},
    {"find", bu_find, 0},
    {"fn", nullptr, 0},
    {"follow", nullptr, 0},
    {"fork", nullptr, 0},
    {"form", bu_form, 0},
    {"format", bu_format, 0},
    {"comma", bu_comma, 0},
    {"fileislocked", nullptr, 0},
    {"ft", nullptr, 0},
    {"fuzz", bu_fuzz, 0},
    {"fwc", bu_fwc, 0},
    {"getcwd", bu_cwd, BU_ALIAS},
    {"getdiskspace", nullptr, 0},
    {"getenv", nullptr, 0},
    {"getpid", nullptr, 0},
    {"getwd", bu_cwd, BU_ALIAS},
    {"hostname", nullptr, 0},
    {"index", bu_index, 0},
    {"insert", bu_insert, 0},
    {"justify", bu_justify, 0},
    {"kill", nullptr, 0},
    {"ksh", nullptr, 0},
    {"lastpos", bu_lastpos, 0},
    {"left", bu_left, 0},
    {"length", bu_length, 0},
    {"linein", bu_linein, 0},
    {"lineout", bu_lineout, 0},
    {"linelast", bu_linelast, 0},
    {"lines", bu_lines, 0},
    {"linesize", bu_linesize, 0},
    {"lower", bu_lower, 0},
    {"ls", nullptr, BU_ALIAS},
    {"ln", nullptr, 0},
    {"max", bu_max, 0},
    {"min", bu_min, 0},
    {"mklistfiles", bu_mklistfiles, 0},
    {"mkdir", nullptr, 0},
    {"mv", nullptr, 0},
    {"obf", bu_obf, 0},
    {"open_cons", nullptr, 0},
    {"overlay", bu_overlay, 0},
    {"parg", bu_parg, 0},
    {"pi", bu_pi, 0},
    {"popen", nullptr, 0},
    {"pos", bu_pos, 0},
    {"rpos", bu_rpos, 0},
    {"putenv", nullptr, 0},
    {"qpid", nullptr, 0},
    {"queued", nullptr, 0},
    {"random", bu_random, 0},
    {"readjunc", nullptr, 0},
    {"readlink", nullptr, 0},
    {"recycle", nullptr, 0},
    {"regcomp", bu_regcomp, 0},
    {"regexec", bu_regexec, 0},
    {"rename", nullptr, BU_ALIAS},
    {"reverse", bu_reverse, 0},
    {"right", bu_right, 0},
    {"rm", nullptr, BU_ALIAS},
    {"rmdir", nullptr, 0},
    {"script", nullptr, 0},
    {"sh", nullptr, BU_ALIAS},
    {"setenv", nullptr, BU_ALIAS},
    {"setarg", nullptr, 0},
    {"sign", bu_sign, 0},
    {"sin", bu_sin, 0},
    {"sleep", nullptr, 0},
    {"SockLoadFuncs", nullptr, 0},
    {"SockDropFuncs", nullptr, 0},
    {"SockVersion", nullptr, 0},
    {"SockAccept", nullptr, 0},
    {"SockBind", nullptr, 0},
    {"SockClose", nullptr, 0},
    {"SockConnect", nullptr, 0},
    {"SockGetHostByAddr", nullptr, 0},
    {"SockGetHostByName", nullptr, 0},
    {"SockGetHostId", nullptr, 0},
    {"SockGetPeerName", nullptr, 0},
    {"SockGetSockName", nullptr, 0},
    {"SockGetSockOpt", nullptr, 0},
    {"SockInit", nullptr, 0},
    {"SockIoctl", nullptr, 0},
    {"SockListen", nullptr, 0},
    {"SockPSock_Errno", nullptr, 0},
    {"SockRecv", nullptr, 0},
    {"SockRecvFrom", nullptr, 0},
    {"SockSelect", nullptr, 0},
    {"SockSend", nullptr, 0},
    {"SockSendTo", nullptr, 0},
    {"SockSetSockOpt", nullptr, 0},
    {"SockShutDown", nullptr, 0},
    {"SockSock_Errno", nullptr, 0},
    {"SockSocket", nullptr, 0},
    {"SockSoClose", nullptr, 0},
    {"accept", nullptr, BU_ALIAS},
    {"bind", nullptr, BU_ALIAS},
    {"closesocket", nullptr, BU_ALIAS},
    {"connect", nullptr, BU_ALIAS},
    {"gethostbyaddr", nullptr, BU_ALIAS},
    {"gethostbyname", nullptr, BU_ALIAS},
    {"gethostid", nullptr, BU_ALIAS},
    {"getpeername", nullptr, BU_ALIAS},
    {"getsockname", nullptr, BU_ALIAS},
    {"getsockopt", nullptr, BU_ALIAS},
    {"ioctl", nullptr, BU_ALIAS},
    {"ismain", nullptr, 0},
    {"listen", nullptr, BU_ALIAS},
    {"rchange", bu_rchange, 0},
    {"recv", nullptr, BU_ALIAS},
    {"recvfrom", nullptr, BU_ALIAS},
    {"select", nullptr, BU_ALIAS},
    {"send", nullptr, BU_ALIAS},
    {"sendto", nullptr, BU_ALIAS},
    {"setsockopt", nullptr, BU_ALIAS},
    {"shutdown", nullptr, BU_ALIAS},
    {"socket", nullptr, BU_ALIAS},
    {"sort", bu_sort, 0},
    {"sourceline", nullptr, 0},
    {"space", bu_space, 0},
    {"state", nullptr, 0},
    {"statew", nullptr, 0},
    {"still_active", nullptr, 0},
    {"lstate", nullptr, 0},
    {"stderr", bu_stderr, 0},
    {"stdin", bu_stdin, 0},
    {"stdout", bu_stdout, 0},
    {"stime", nullptr, 0},
    {"stream", bu_stream, 0},
    {"strip", bu_strip, 0},
    {"subdirs", nullptr, 0},
    {"substr", bu_substr, 0},
    {"subword", bu_subword, 0},
    {"symbol", nullptr, 0},
    {"SysCls", nullptr, BU_ALIAS},
    {"SysFileDelete", bu_sysfiledelete, 0},
    {"SysFileSearch", bu_sysfilesearch, 0},
    {"SysFileTree", bu_sysfiletree, 0},
    {"SysGetKey", bu_charin, BU_ALIAS},
    {"SysMkDir", bu_sysmkdir, 0},
    {"SysRmDir", bu_sysrmdir, 0},
    {"SysSearchPath", bu_syssearchpath, 0},
    {"SysSetPriority", bu_syssetpriority, 0},
    {"SysSleep", nullptr, BU_ALIAS},
    {"SysTempFileName", bu_systempfilename, 0},
    {"SysVersion", bu_sysversion, 0},
    {"tan", bu_tan, 0},
    {"tbadd", nullptr, 0},
    {"tbclose", nullptr, 0},
    {"tbdel", nullptr, 0},
    {"tbdispl", nullptr, 0},
    {"tbget", nullptr, 0},
    {"tbopen", nullptr, 0},
    {"tbput", nullptr, 0},
    {"tbsave", nullptr, 0},
    {"tcsh", nullptr, 0},
    {"tee", nullptr, 0},
    {"teec", nullptr, 0},
    {"teek", nullptr, 0},
    {"time", bu_time, 0},
    {"trace", nullptr, 0},
    {"translate", bu_translate, 0},
    {"trunc", bu_trunc, 0},
    {"unix", nullptr, BU_ALIAS},
    {"unsetenv", nullptr, 0},
    {"upper", bu_upper, 0},
    {"upperw", bu_upperw, 0},
    {"userid", bu_userid, BU_ALIAS},
    {"ShellExecute", nullptr, 0},
    {"usleep", nullptr, 0},
    {"utime", nullptr, 0},
    {"value", nullptr, 0},
    {"verify", bu_verify, 0},
    {"version", nullptr, 0},
    {"waitpid", nullptr, 0},
    {"windows", nullptr, BU_ALIAS},
    {"windows_ne", nullptr, 0},
    {"wipe", nullptr, 0},
    {"word", bu_word, 0},
    {"wordindex", bu_wordindex, 0},
    {"wordlength", bu_wordlength, 0},
    {"wordpos", bu_wordpos, 0},
    {"words", bu_words, 0},
    {"x2b", bu_x2b, 0},
    {"x2c", bu_x2c, 0},
    {"x2d", bu_x2d, 0},
    {"xhome", nullptr, 0},
    {"xrange", bu_xrange, 0},
    {"IsFileOpened", nullptr, 0},
    {"getfile", nullptr, 0},
    {"flfiles", nullptr, 0},
    {"dy_ascl", nullptr, 0},
    {"dy_beep", nullptr, 0},
    {"dy_button", nullptr, 0},
    {"dy_button_col", nullptr, 0},
    {"dy_button_color", nullptr, BU_ALIAS},
    {"dy_ch", nullptr, 0},
    {"dy_ch_col", nullptr, 0},
    {"dy_ch_color", nullptr, BU_ALIAS},
    {"dy_destroy", nullptr, 0},
    {"dy_dispatch", nullptr, 0},
    {"dy_dscl", nullptr, 0},
    {"dy_end", nullptr, 0},
    {"dy_focus", nullptr, 0},
    {"dy_font", nullptr, 0},
    {"dy_input", nullptr, 0},
    {"dy_input_col", nullptr, 0},
    {"dy_input_color", nullptr, BU_ALIAS},
    {"dy_label", nullptr, 0},
    {"dy_label_col", nullptr, 0},
    {"dy_label_color", nullptr, BU_ALIAS},
    {"dy_map", nullptr, 0},
    {"dy_open", nullptr, 0},
    {"dy_printer", nullptr, 0},
    {"dy_pscl", nullptr, 0},
    {"dy_rscl", nullptr, 0},
    {"dy_save", nullptr, 0},
    {"dy_scl", nullptr, 0},
    {"dy_scl_col", nullptr, 0},
    {"dy_scl_color", nullptr, BU_ALIAS},
    {"dy_sinput", nullptr, 0},
    {"dy_slabel", nullptr, 0},
    {"dy_sscl", nullptr, 0},
    {"dy_start", nullptr, 0},
    {"dy_sch", nullptr, 0},
    {"dy_stg", nullptr, 0},
    {"dy_tg", nullptr, 0},
    {"dy_tg_color", nullptr, 0},
    {"dy_tg_col", nullptr, BU_ALIAS},
    {"dy_unmap", nullptr, 0},
    {"dy_vch", nullptr, 0},
    {"dy_vinput", nullptr, 0},
    {"dy_vscl", nullptr, 0},
    {"dy_vtg", nullptr, 0},
    {"dy_warp", nullptr, 0},
    {"dy_header", nullptr, 0},
    {"dy_refresh", nullptr, 0},
};
static_assert(sizeof bu_table / sizeof bu_table[0] == 309, "the built-in table has 309 rows");

const int bu_table_rows = (int)(sizeof bu_table / sizeof bu_table[0]);

namespace {

using name_map = std::unordered_map<std::string, const bu_row*>;

std::string folded(std::string_view s, bu_case mode) {
  std::string out(s);
  for (char& c : out) {
    if (mode == BU_CASE_UPPER) c = (char)toupper((unsigned char)c);
    if (mode == BU_CASE_LOWER) c = (char)tolower((unsigned char)c);
  }
  return out;
}

// The name hash of one case mode, built on its first use.
const name_map& names_for(bu_case mode) {
  static name_map maps[3];
  static bool built[3] = {};
  if (!built[mode]) {
    for (int i = 0; i < bu_table_rows; i++)
      if (bu_table[i].handler) maps[mode].emplace(folded(bu_table[i].name, mode), &bu_table[i]);
    built[mode] = true;
  }
  return maps[mode];
}

std::string argument_n(int i, const char* rest) {
  return "argument " + std::to_string(i + 1) + rest;
}

}  // namespace

const bu_row* bu_lookup(std::string_view name, bu_case mode) {
  const name_map& m = names_for(mode);
  auto it = m.find(std::string(name));
  return it == m.end() ? nullptr : it->second;
}

int bu_call(const bu_row* row, value** args, int argc, value& r, int* bad_arg) {
  // Upper-case names for messages, made once.
  static std::vector<std::string> upper = [] {
    std::vector<std::string> v;
    for (int i = 0; i < bu_table_rows; i++) v.push_back(folded(bu_table[i].name, BU_CASE_UPPER));
    return v;
  }();
  bu_frame f;
  f.name = upper[(size_t)(row - bu_table)].c_str();
  f.args = args;
  f.argc = argc;
  int rc = row->handler(f, r);
  if (bad_arg) *bad_arg = f.bad_arg;
  return rc;
}

int bu_fail_num(bu_frame& f, int num, int index, std::string_view msg) {
  f.bad_arg = index;
  std::string text = std::string(f.name) + "(): ";
  text.append(msg.data(), msg.size());
  return rx_fail(num, text);
}

int bu_fail(bu_frame& f, int index, std::string_view msg) { return bu_fail_num(f, 40, index, msg); }

int bu_count(bu_frame& f, int min, int max) {
  bool ok = f.argc >= min && f.argc <= max;
  for (int i = 0; ok && i < min; i++) ok = f.args[i] != nullptr;
  if (ok) return 0;
  char msg[80];
  if (min == max) {
    snprintf(msg, sizeof msg, min == 1 ? "must receive %d argument." : "must receive %d arguments.", min);
  } else if (max == min + 1) {
    snprintf(msg, sizeof msg, "must receive %d or %d arguments.", min, max);
  } else {
    snprintf(msg, sizeof msg, "must receive %d to %d arguments.", min, max);
  }
  return bu_fail(f, 0, msg);
}

std::string_view bu_text(bu_frame& f, int i) {
  if (!bu_has(f, i)) return {};
  return val_text_of(*f.args[i], f.scratch[i % 4]);
}

int bu_whole(bu_frame& f, int i, long long min, long long dflt, long long& out) {
  if (!bu_has(f, i)) {
    out = dflt;
    return 0;
  }
  int k = rx_whole(*f.args[i], out);
  if (k == 1 || (k == 0 && out > 999999999)) return bu_fail(f, i, argument_n(i, " must be a whole number."));
  if (k == 2 || out < min) return bu_fail(f, i, argument_n(i, " must be a positive integer."));
  return 0;
}

int bu_integer(bu_frame& f, int i, long long dflt, long long& out) {
  if (!bu_has(f, i)) {
    out = dflt;
    return 0;
  }
  if (rx_whole(*f.args[i], out) != 0 || out > 999999999 || out < -999999999)
    return bu_fail(f, i, argument_n(i, " must be a whole number."));
  return 0;
}

int bu_pad(bu_frame& f, int i, char& pad) {
  pad = ' ';
  if (!bu_has(f, i)) return 0;
  std::string_view t = bu_text(f, i);
  if (t.size() != 1) return bu_fail(f, i, "the padding expression must be one character wide.");
  pad = t[0];
  return 0;
}

int bu_flag(bu_frame& f, int i, bool& out) {
  out = false;
  if (!bu_has(f, i)) return 0;
  long long n = 0;
  if (rx_whole(*f.args[i], n) != 0 || (n != 0 && n != 1))
    return bu_fail(f, i, argument_n(i, " must be 0 or 1."));
  out = n == 1;
  return 0;
}

int bu_option(bu_frame& f, int i, const char* allowed, char dflt, char& out) {
  out = dflt;
  if (!bu_has(f, i)) return 0;
  std::string_view t = bu_text(f, i);
  char c = t.empty() ? 0 : (char)toupper((unsigned char)t[0]);
  if (!c || !strchr(allowed, c))
    return bu_fail(f, i, argument_n(i, std::string(" must be one of \"").append(allowed).append("\".").c_str()));
  out = c;
  return 0;
}
