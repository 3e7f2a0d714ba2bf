// Handlers of the command table, one family per file.
#pragma once

#include "commands/commands.h"

int xfcm_add(const xfcmd &c);
int xfcm_aquit(const xfcmd &c);
int xfcm_backward(const xfcmd &c);
int xfcm_bottom(const xfcmd &c);
int xfcm_bsearch(const xfcmd &c);
int xfcm_cmsg(const xfcmd &c);
int xfcm_command(const xfcmd &c);
int xfcm_define(const xfcmd &c);
int xfcm_down(const xfcmd &c);
int xfcm_equal(const xfcmd &c);
int xfcm_forward(const xfcmd &c);
int xfcm_fsearch(const xfcmd &c);
int xfcm_hash(const xfcmd &c);
int xfcm_history(const xfcmd &c);
int xfcm_impcmscp(const xfcmd &c);
int xfcm_input(const xfcmd &c);
int xfcm_iswitch(const xfcmd &c);
int xfcm_linend(const xfcmd &c);
int xfcm_macro(const xfcmd &c);
int xfcm_mode(const xfcmd &c);
int xfcm_msg(const xfcmd &c);
int xfcm_notimpl(const xfcmd &c);
int xfcm_pquit(const xfcmd &c);
int xfcm_prompt(const xfcmd &c);
int xfcm_pwd(const xfcmd &c);
int xfcm_qid(const xfcmd &c);
int xfcm_qmark(const xfcmd &c);
int xfcm_query(const xfcmd &c);
int xfcm_quit(const xfcmd &c);
int xfcm_refresh(const xfcmd &c);
int xfcm_replace(const xfcmd &c);
int xfcm_rsearch(const xfcmd &c);
int xfcm_set(const xfcmd &c);
int xfcm_sw(const xfcmd &c);
int xfcm_synonym(const xfcmd &c);
int xfcm_syscmd(const xfcmd &c);
int xfcm_top(const xfcmd &c);
int xfcm_up(const xfcmd &c);
int xfcm_xedit(const xfcmd &c);

// Files in and out, and their settings.
int xfcm_autobin(const xfcmd &c);
int xfcm_autosave(const xfcmd &c);
int xfcm_backup(const xfcmd &c);
int xfcm_binary(const xfcmd &c);
int xfcm_file(const xfcmd &c);
int xfcm_fileconv(const xfcmd &c);
int xfcm_get(const xfcmd &c);
int xfcm_isoconv(const xfcmd &c);
int xfcm_keepblanks(const xfcmd &c);
int xfcm_encoding(const xfcmd &c);
int xfcm_syntax(const xfcmd &c);
int xfcm_lastfiles(const xfcmd &c);
int xfcm_limit(const xfcmd &c);
int xfcm_preservlinks(const xfcmd &c);
int xfcm_recycle(const xfcmd &c);
int xfcm_redo(const xfcmd &c);
int xfcm_rw(const xfcmd &c);
int xfcm_save(const xfcmd &c);
int xfcm_saveclearundo(const xfcmd &c);
int xfcm_undo(const xfcmd &c);
int xfcm_screen(const xfcmd &c);
int xfcm_cmdline(const xfcmd &c);
int xfcm_curline(const xfcmd &c);
int xfcm_number(const xfcmd &c);
int xfcm_prefix(const xfcmd &c);
int xfcm_autoexp(const xfcmd &c);
int xfcm_autoindent(const xfcmd &c);

// Keys.
int xfcm_key(const xfcmd &c);
int xfcm_remap(const xfcmd &c);
int xfcm_sckeys(const xfcmd &c);
int xfcm_home(const xfcmd &c);
int xfcm_endline(const xfcmd &c);
int xfcm_endcurl(const xfcmd &c);
int xfcm_split(const xfcmd &c);
int xfcm_lineadd(const xfcmd &c);
int xfcm_pgup(const xfcmd &c);
int xfcm_pgdown(const xfcmd &c);
int xfcm_left(const xfcmd &c);
int xfcm_right(const xfcmd &c);
int xfcm_nextword(const xfcmd &c);
int xfcm_prevword(const xfcmd &c);
int xfcm_scale(const xfcmd &c);
int xfcm_tabline(const xfcmd &c);
int xfcm_reserved(const xfcmd &c);
int xfcm_mousemode(const xfcmd &c);
int xfcm_clickdelay(const xfcmd &c);
int xfcm_repeatdelay(const xfcmd &c);
