// The built-in function frame: the flat table of every built-in in its fixed
// order, the lookup by name under the symbol case mode, and the argument
// helpers that give every handler the same checks and message wording.
#include <cctype>
#include <cstdio>
#include <cstring>
#include <string>
#include <unordered_map>
#include <vector>

#include "rexx/builtins/bu_dialog.h"
#include "rexx/builtins/bu_system.h"

// One row per name; a family that is not built in yet has a null handler,
// and filling it in is the only edit a new built-in needs.
constexpr bu_row bu_table[] = {
    {"ActivateKeyboardLayout", bu_activatekeyboardlayout, 0},
    {"GetAdaptersInfo", bu_getadaptersinfo, 0},
    {"SHGetKnownFolderPath", bu_shgetknownfolderpath, 0},
    {"SetPriority", bu_setpriority, 0},
    {"dy_clip", bu_dy_clip, 0},
    {"dy_folder", bu_dy_folder, 0},
    {"service_create", bu_service_create, 0},
    {"service_delete", bu_service_delete, 0},
    {"service_stop", bu_service_stop, 0},
    {"service_start", bu_service_start, 0},
    {"service_status", bu_service_status, 0},
    {"registry_get", bu_registry_get, 0},
    {"registry_del", bu_registry_del, 0},
    {"registry_keys", bu_registry_keys, 0},
    {"registry_values", bu_registry_values, 0},
    {"registry_set", bu_registry_set, 0},
    {"abbrev", bu_abbrev, 0},
    {"abs", bu_abs, 0},
    {"acos", bu_acos, 0},
    {"address", nullptr, 0},
    {"arch", bu_arch, 0},
    {"arg", nullptr, 0},
    {"asin", bu_asin, 0},
    {"askcons", bu_askcons, 0},
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
    {"close_cons", bu_close_cons, 0},
    {"cls", bu_cls, 0},
    {"clear", bu_cls, BU_ALIAS},
    {"compare", bu_compare, 0},
    {"concat", bu_concat, 0},
    {"condition", nullptr, 0},
    {"copies", bu_copies, 0},
    {"copy", bu_cp, 0},
    {"cos", bu_cos, 0},
    {"cp", bu_cp, BU_ALIAS},
    {"iousage", bu_iousage, 0},
    {"cpuusage", bu_cpuusage, 0},
    {"netusage", bu_netusage, 0},
    {"csh", bu_csh, 0},
    {"cuserid", bu_userid, 0},
    {"cvtails", nullptr, 0},
    {"cwd", bu_cwd, 0},
    {"d2c", bu_d2c, 0},
    {"d2x", bu_d2x, 0},
    {"datatype", bu_datatype, 0},
    {"date", bu_date, 0},
    {"del", bu_rm, 0},
    {"delstr", bu_delstr, 0},
    {"delword", bu_delword, 0},
    {"digits", bu_digits, 0},
    {"dir", bu_ls, 0},
    {"deobf", bu_deobf, 0},
    {"dofollow", bu_dofollow, 0},
    {"dup2", bu_dup2, 0},
    {"errortext", nullptr, 0},
    {"externals", bu_externals, 0},
    {"exec", bu_exec, 0},
    {"fd", bu_fd, 0},
    {"fileconv", bu_fileconv, 0},
    {"find", bu_find, 0},
    {"fn", bu_fn, 0},
    {"follow", bu_follow, 0},
    {"fork", bu_fork, 0},
    {"form", bu_form, 0},
    {"format", bu_format, 0},
    {"comma", bu_comma, 0},
    {"fileislocked", bu_fileislocked, 0},
    {"ft", bu_ft, 0},
    {"fuzz", bu_fuzz, 0},
    {"fwc", bu_fwc, 0},
    {"getcwd", bu_cwd, BU_ALIAS},
    {"getdiskspace", bu_getdiskspace, 0},
    {"getenv", bu_getenv, 0},
    {"getpid", bu_getpid, 0},
    {"getwd", bu_cwd, BU_ALIAS},
    {"hostname", bu_hostname, 0},
    {"index", bu_index, 0},
    {"insert", bu_insert, 0},
    {"justify", bu_justify, 0},
    {"kill", bu_kill, 0},
    {"ksh", bu_ksh, 0},
    {"lastpos", bu_lastpos, 0},
    {"left", bu_left, 0},
    {"length", bu_length, 0},
    {"linein", bu_linein, 0},
    {"lineout", bu_lineout, 0},
    {"linelast", bu_linelast, 0},
    {"lines", bu_lines, 0},
    {"linesize", bu_linesize, 0},
    {"lower", bu_lower, 0},
    {"ls", bu_ls, BU_ALIAS},
    {"ln", bu_ln, 0},
    {"max", bu_max, 0},
    {"min", bu_min, 0},
    {"mklistfiles", bu_mklistfiles, 0},
    {"mkdir", bu_mkdir, 0},
    {"mv", bu_mv, 0},
    {"obf", bu_obf, 0},
    {"open_cons", bu_open_cons, 0},
    {"overlay", bu_overlay, 0},
    {"parg", bu_parg, 0},
    {"pi", bu_pi, 0},
    {"popen", bu_popen, 0},
    {"pos", bu_pos, 0},
    {"rpos", bu_rpos, 0},
    {"putenv", bu_setenv, 0},
    {"qpid", bu_qpid, 0},
    {"queued", nullptr, 0},
    {"random", bu_random, 0},
    {"readjunc", bu_readjunc, 0},
    {"readlink", bu_readlink, 0},
    {"recycle", bu_recycle, 0},
    {"regcomp", bu_regcomp, 0},
    {"regexec", bu_regexec, 0},
    {"rename", bu_mv, BU_ALIAS},
    {"reverse", bu_reverse, 0},
    {"right", bu_right, 0},
    {"rm", bu_rm, BU_ALIAS},
    {"rmdir", bu_rmdir, 0},
    {"script", bu_script, 0},
    {"sh", bu_popen, BU_ALIAS},
    {"setenv", bu_setenv, BU_ALIAS},
    {"setarg", bu_setarg, 0},
    {"sign", bu_sign, 0},
    {"sin", bu_sin, 0},
    {"sleep", bu_sleep, 0},
    {"SockLoadFuncs", bu_sockloadfuncs, 0},
    {"SockDropFuncs", bu_sockdropfuncs, 0},
    {"SockVersion", bu_sockversion, 0},
    {"SockAccept", bu_sockaccept, 0},
    {"SockBind", bu_sockbind, 0},
    {"SockClose", bu_sockclose, 0},
    {"SockConnect", bu_sockconnect, 0},
    {"SockGetHostByAddr", bu_sockgethostbyaddr, 0},
    {"SockGetHostByName", bu_sockgethostbyname, 0},
    {"SockGetHostId", bu_sockgethostid, 0},
    {"SockGetPeerName", bu_sockgetpeername, 0},
    {"SockGetSockName", bu_sockgetsockname, 0},
    {"SockGetSockOpt", bu_sockgetsockopt, 0},
    {"SockInit", bu_sockinit, 0},
    {"SockIoctl", bu_sockioctl, 0},
    {"SockListen", bu_socklisten, 0},
    {"SockPSock_Errno", bu_sockpsock_errno, 0},
    {"SockRecv", bu_sockrecv, 0},
    {"SockRecvFrom", bu_sockrecvfrom, 0},
    {"SockSelect", bu_sockselect, 0},
    {"SockSend", bu_socksend, 0},
    {"SockSendTo", bu_socksendto, 0},
    {"SockSetSockOpt", bu_socksetsockopt, 0},
    {"SockShutDown", bu_sockshutdown, 0},
    {"SockSock_Errno", bu_socksock_errno, 0},
    {"SockSocket", bu_socksocket, 0},
    {"SockSoClose", bu_sockclose, 0},
    {"accept", bu_sockaccept, BU_ALIAS},
    {"bind", bu_sockbind, BU_ALIAS},
    {"closesocket", bu_sockclose, BU_ALIAS},
    {"connect", bu_sockconnect, BU_ALIAS},
    {"gethostbyaddr", bu_sockgethostbyaddr, BU_ALIAS},
    {"gethostbyname", bu_sockgethostbyname, BU_ALIAS},
    {"gethostid", bu_sockgethostid, BU_ALIAS},
    {"getpeername", bu_sockgetpeername, BU_ALIAS},
    {"getsockname", bu_sockgetsockname, BU_ALIAS},
    {"getsockopt", bu_sockgetsockopt, BU_ALIAS},
    {"ioctl", bu_sockioctl, BU_ALIAS},
    {"ismain", nullptr, 0},
    {"listen", bu_socklisten, BU_ALIAS},
    {"rchange", bu_rchange, 0},
    {"recv", bu_sockrecv, BU_ALIAS},
    {"recvfrom", bu_sockrecvfrom, BU_ALIAS},
    {"select", bu_sockselect, BU_ALIAS},
    {"send", bu_socksend, BU_ALIAS},
    {"sendto", bu_socksendto, BU_ALIAS},
    {"setsockopt", bu_socksetsockopt, BU_ALIAS},
    {"shutdown", bu_sockshutdown, BU_ALIAS},
    {"socket", bu_socksocket, BU_ALIAS},
    {"sort", bu_sort, 0},
    {"sourceline", nullptr, 0},
    {"space", bu_space, 0},
    {"state", bu_state, 0},
    {"statew", bu_statew, 0},
    {"still_active", bu_still_active, 0},
    {"lstate", bu_lstate, 0},
    {"stderr", bu_stderr, 0},
    {"stdin", bu_stdin, 0},
    {"stdout", bu_stdout, 0},
    {"stime", bu_stime, 0},
    {"stream", bu_stream, 0},
    {"strip", bu_strip, 0},
    {"subdirs", bu_subdirs, 0},
    {"substr", bu_substr, 0},
    {"subword", bu_subword, 0},
    {"symbol", nullptr, 0},
    {"SysCls", bu_cls, BU_ALIAS},
    {"SysFileDelete", bu_sysfiledelete, 0},
    {"SysFileSearch", bu_sysfilesearch, 0},
    {"SysFileTree", bu_sysfiletree, 0},
    {"SysGetKey", bu_charin, BU_ALIAS},
    {"SysMkDir", bu_sysmkdir, 0},
    {"SysRmDir", bu_sysrmdir, 0},
    {"SysSearchPath", bu_syssearchpath, 0},
    {"SysSetPriority", bu_syssetpriority, 0},
    {"SysSleep", bu_sleep, BU_ALIAS},
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
    {"tcsh", bu_tcsh, 0},
    {"tee", bu_tee, 0},
    {"teec", bu_teec, 0},
    {"teek", bu_teek, 0},
    {"time", bu_time, 0},
    {"trace", nullptr, 0},
    {"translate", bu_translate, 0},
    {"trunc", bu_trunc, 0},
    {"unix", bu_popen, BU_ALIAS},
    {"unsetenv", bu_unsetenv, 0},
    {"upper", bu_upper, 0},
    {"upperw", bu_upperw, 0},
    {"userid", bu_userid, BU_ALIAS},
    {"ShellExecute", bu_shellexecute, 0},
    {"usleep", bu_usleep, 0},
    {"utime", bu_utime, 0},
    {"value", nullptr, 0},
    {"verify", bu_verify, 0},
    {"version", bu_version, 0},
    {"waitpid", bu_waitpid, 0},
    {"windows", bu_popen, BU_ALIAS},
    {"windows_ne", bu_windows_ne, 0},
    {"wipe", bu_wipe, 0},
    {"word", bu_word, 0},
    {"wordindex", bu_wordindex, 0},
    {"wordlength", bu_wordlength, 0},
    {"wordpos", bu_wordpos, 0},
    {"words", bu_words, 0},
    {"x2b", bu_x2b, 0},
    {"x2c", bu_x2c, 0},
    {"x2d", bu_x2d, 0},
    {"xhome", bu_xhome, 0},
    {"xrange", bu_xrange, 0},
    {"IsFileOpened", bu_isfileopened, 0},
    {"getfile", nullptr, 0},
    {"flfiles", nullptr, 0},
    {"dy_ascl", bu_dy_ascl_fn, 0},
    {"dy_beep", bu_dy_beep, 0},
    {"dy_button", bu_dy_button, 0},
    {"dy_button_col", bu_dy_colour, 0},
    {"dy_button_color", bu_dy_colour, BU_ALIAS},
    {"dy_ch", bu_dy_ch, 0},
    {"dy_ch_col", bu_dy_colour, 0},
    {"dy_ch_color", bu_dy_colour, BU_ALIAS},
    {"dy_destroy", bu_dy_destroy, 0},
    {"dy_dispatch", bu_dy_dispatch, 0},
    {"dy_dscl", bu_dy_dscl_fn, 0},
    {"dy_end", bu_dy_end, 0},
    {"dy_focus", bu_dy_focus, 0},
    {"dy_font", bu_dy_font, 0},
    {"dy_input", bu_dy_input, 0},
    {"dy_input_col", bu_dy_colour, 0},
    {"dy_input_color", bu_dy_colour, BU_ALIAS},
    {"dy_label", bu_dy_label, 0},
    {"dy_label_col", bu_dy_colour, 0},
    {"dy_label_color", bu_dy_colour, BU_ALIAS},
    {"dy_map", bu_dy_map, 0},
    {"dy_open", bu_dy_open, 0},
    {"dy_printer", bu_dy_printer, 0},
    {"dy_pscl", bu_dy_pscl_fn, 0},
    {"dy_rscl", bu_dy_rscl_fn, 0},
    {"dy_save", bu_dy_save, 0},
    {"dy_scl", bu_dy_scl, 0},
    {"dy_scl_col", bu_dy_colour, 0},
    {"dy_scl_color", bu_dy_colour, BU_ALIAS},
    {"dy_sinput", bu_dy_sinput, 0},
    {"dy_slabel", bu_dy_slabel, 0},
    {"dy_sscl", bu_dy_sscl_fn, 0},
    {"dy_start", bu_dy_start, 0},
    {"dy_sch", bu_dy_sch_fn, 0},
    {"dy_stg", bu_dy_stg_fn, 0},
    {"dy_tg", bu_dy_tg, 0},
    {"dy_tg_color", bu_dy_colour, 0},
    {"dy_tg_col", bu_dy_colour, BU_ALIAS},
    {"dy_unmap", bu_dy_unmap, 0},
    {"dy_vch", bu_dy_vch, 0},
    {"dy_vinput", bu_dy_vinput, 0},
    {"dy_vscl", bu_dy_vscl, 0},
    {"dy_vtg", bu_dy_vtg, 0},
    {"dy_warp", bu_dy_warp, 0},
    {"dy_header", bu_dy_header, 0},
    {"dy_refresh", bu_dy_refresh, 0},
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
