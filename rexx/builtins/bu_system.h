// The system families of the library (sockets, registry, services,
// processes, files, usage, console): their handlers for the table, and the
// helpers they share: stem arguments, waits that keep the editor's events
// flowing and give way to a halt, and results that are messages and RC
// rather than errors.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "rexx/builtins/builtins.h"

// ---- shared by the system families --------------------------------------------

// A stem argument: a symbol, given with or without its dot, folded to the
// program's symbol case; "NAME(): \"x\" is not a valid REXX symbol." else.
int bu_stem(bu_frame& f, int i, std::string& stem);
// stem + tail, the tail folded as a constant symbol would be.
std::string bu_tail(const std::string& stem, std::string_view tail);
// Waits `ms` milliseconds (negative: until a halt), keeping the editor's
// events flowing; false when a halt was asked for meanwhile.
bool bu_wait_ms(long long ms);
// Waits for `fd` to be ready for `events` (poll bits): 1 ready, 0 timed
// out (negative ms: never), -1 a halt was asked for.
int bu_wait_fd(int fd, short events, long long ms);
// Whether a halt waits to be acted on.
bool bu_halted();
// A line on the error stream ("" + newline added).
void bu_message(std::string_view text);
// Sets the special variable RC.
void bu_set_rc(long long rc);
// A stem set from a list: stem.0 and stem.1 to stem.n.
void bu_set_list(const std::string& stem, const std::vector<std::string>& items);

// ---- the system families: sockets, registry, services, processes, files,
// usage, console ----
int bu_activatekeyboardlayout(bu_frame& f, value& r);
int bu_arch(bu_frame& f, value& r);
int bu_askcons(bu_frame& f, value& r);
int bu_close_cons(bu_frame& f, value& r);
int bu_cls(bu_frame& f, value& r);
int bu_concat(bu_frame& f, value& r);
int bu_cp(bu_frame& f, value& r);
int bu_cpuusage(bu_frame& f, value& r);
int bu_csh(bu_frame& f, value& r);
int bu_dofollow(bu_frame& f, value& r);
int bu_exec(bu_frame& f, value& r);
int bu_fd(bu_frame& f, value& r);
int bu_fileconv(bu_frame& f, value& r);
int bu_fileislocked(bu_frame& f, value& r);
int bu_fn(bu_frame& f, value& r);
int bu_follow(bu_frame& f, value& r);
int bu_fork(bu_frame& f, value& r);
int bu_ft(bu_frame& f, value& r);
int bu_getadaptersinfo(bu_frame& f, value& r);
int bu_getdiskspace(bu_frame& f, value& r);
int bu_getenv(bu_frame& f, value& r);
int bu_getpid(bu_frame& f, value& r);
int bu_hostname(bu_frame& f, value& r);
int bu_iousage(bu_frame& f, value& r);
int bu_isfileopened(bu_frame& f, value& r);
int bu_kill(bu_frame& f, value& r);
int bu_ksh(bu_frame& f, value& r);
int bu_ln(bu_frame& f, value& r);
int bu_ls(bu_frame& f, value& r);
int bu_lstate(bu_frame& f, value& r);
int bu_mkdir(bu_frame& f, value& r);
int bu_mv(bu_frame& f, value& r);
int bu_netusage(bu_frame& f, value& r);
int bu_open_cons(bu_frame& f, value& r);
int bu_popen(bu_frame& f, value& r);
int bu_qpid(bu_frame& f, value& r);
int bu_readjunc(bu_frame& f, value& r);
int bu_readlink(bu_frame& f, value& r);
int bu_recycle(bu_frame& f, value& r);
int bu_registry_del(bu_frame& f, value& r);
int bu_registry_get(bu_frame& f, value& r);
int bu_registry_keys(bu_frame& f, value& r);
int bu_registry_set(bu_frame& f, value& r);
int bu_registry_values(bu_frame& f, value& r);
int bu_rm(bu_frame& f, value& r);
int bu_rmdir(bu_frame& f, value& r);
int bu_script(bu_frame& f, value& r);
int bu_service_create(bu_frame& f, value& r);
int bu_service_delete(bu_frame& f, value& r);
int bu_service_start(bu_frame& f, value& r);
int bu_service_status(bu_frame& f, value& r);
int bu_service_stop(bu_frame& f, value& r);
int bu_setarg(bu_frame& f, value& r);
int bu_setenv(bu_frame& f, value& r);
int bu_setpriority(bu_frame& f, value& r);
int bu_shellexecute(bu_frame& f, value& r);
int bu_shgetknownfolderpath(bu_frame& f, value& r);
int bu_sleep(bu_frame& f, value& r);
int bu_sockaccept(bu_frame& f, value& r);
int bu_sockbind(bu_frame& f, value& r);
int bu_sockclose(bu_frame& f, value& r);
int bu_sockconnect(bu_frame& f, value& r);
int bu_sockdropfuncs(bu_frame& f, value& r);
int bu_sockgethostbyaddr(bu_frame& f, value& r);
int bu_sockgethostbyname(bu_frame& f, value& r);
int bu_sockgethostid(bu_frame& f, value& r);
int bu_sockgetpeername(bu_frame& f, value& r);
int bu_sockgetsockname(bu_frame& f, value& r);
int bu_sockgetsockopt(bu_frame& f, value& r);
int bu_sockinit(bu_frame& f, value& r);
int bu_sockioctl(bu_frame& f, value& r);
int bu_socklisten(bu_frame& f, value& r);
int bu_sockloadfuncs(bu_frame& f, value& r);
int bu_sockpsock_errno(bu_frame& f, value& r);
int bu_sockrecv(bu_frame& f, value& r);
int bu_sockrecvfrom(bu_frame& f, value& r);
int bu_sockselect(bu_frame& f, value& r);
int bu_socksend(bu_frame& f, value& r);
int bu_socksendto(bu_frame& f, value& r);
int bu_socksetsockopt(bu_frame& f, value& r);
int bu_sockshutdown(bu_frame& f, value& r);
int bu_socksock_errno(bu_frame& f, value& r);
int bu_socksocket(bu_frame& f, value& r);
int bu_sockversion(bu_frame& f, value& r);
int bu_state(bu_frame& f, value& r);
int bu_statew(bu_frame& f, value& r);
int bu_still_active(bu_frame& f, value& r);
int bu_stime(bu_frame& f, value& r);
int bu_subdirs(bu_frame& f, value& r);
int bu_tcsh(bu_frame& f, value& r);
int bu_tee(bu_frame& f, value& r);
int bu_teec(bu_frame& f, value& r);
int bu_teek(bu_frame& f, value& r);
int bu_unsetenv(bu_frame& f, value& r);
int bu_usleep(bu_frame& f, value& r);
int bu_utime(bu_frame& f, value& r);
int bu_version(bu_frame& f, value& r);
int bu_waitpid(bu_frame& f, value& r);
int bu_windows_ne(bu_frame& f, value& r);
int bu_wipe(bu_frame& f, value& r);
int bu_xhome(bu_frame& f, value& r);
