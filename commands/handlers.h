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
