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
// Help and manual pages (xfcm_help.cpp), and their selection forms.
int xfcm_help(const xfcmd &c);
int xfcm_man(const xfcmd &c);
int xfcm_s_help(const xfcmd &c);
int xfcm_s_man(const xfcmd &c);
// Spelling (xfcm_spell.cpp).
int xfcm_spell(const xfcmd &c);
int xfcm_spell_next(const xfcmd &c);
int xfcm_spell_add(const xfcmd &c);
// Printing (xfcm_print.cpp).
int xfcm_printfile(const xfcmd &c);
int xfcm_printscreen(const xfcmd &c);
// Tags (xfcm_ctags.cpp).
int xfcm_ctags(const xfcmd &c);
// Links to outside environments that are never there (xfcm_links.cpp).
int xfcm_saber(const xfcmd &c);
int xfcm_clms(const xfcmd &c);
int xfcm_wb(const xfcmd &c);
int xfcm_menu(const xfcmd &c);
int xfcm_menubar(const xfcmd &c);
int xfcm_toolbar(const xfcmd &c);
int xfcm_font(const xfcmd &c);
int xfcm_pquit(const xfcmd &c);
int xfcm_prompt(const xfcmd &c);
int xfcm_dy_all(const xfcmd &c); // DY_All, DY_Exclude, DY_SHow
int xfcm_dy_find(const xfcmd &c);
int xfcm_dy_font(const xfcmd &c);
int xfcm_dy_open(const xfcmd &c);
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
int xfcm_prefix_screen(const xfcmd &c);
int xfcm_pending(const xfcmd &c);
int xfcm_read(const xfcmd &c);
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

// Targets, searches and changes.
int xfcm_stay(const xfcmd &c);
int xfcm_varblank(const xfcmd &c);
int xfcm_hex(const xfcmd &c);
int xfcm_wrap(const xfcmd &c);
int xfcm_locate(const xfcmd &c);
int xfcm_xedlocate(const xfcmd &c);
int xfcm_pdflocate(const xfcmd &c);
int xfcm_point(const xfcmd &c);
int xfcm_span(const xfcmd &c);
int xfcm_arbchar(const xfcmd &c);
int xfcm_case(const xfcmd &c);
int xfcm_zone(const xfcmd &c);
int xfcm_zone_screen(const xfcmd &c);
int xfcm_lastlorc(const xfcmd &c);
int xfcm_regtype(const xfcmd &c);
int xfcm_change(const xfcmd &c);
int xfcm_xedchange(const xfcmd &c);
int xfcm_rchange(const xfcmd &c);
int xfcm_xedrchange(const xfcmd &c);
int xfcm_srchange(const xfcmd &c);
int xfcm_count(const xfcmd &c);
int xfcm_find(const xfcmd &c);
int xfcm_xedfind(const xfcmd &c);
int xfcm_findup(const xfcmd &c);
int xfcm_nfind(const xfcmd &c);
int xfcm_nfindup(const xfcmd &c);
int xfcm_pdffind(const xfcmd &c);
int xfcm_pdfchange(const xfcmd &c);
int xfcm_rfind(const xfcmd &c);
int xfcm_pdfrchange(const xfcmd &c);
int xfcm_match(const xfcmd &c);
int xfcm_selectall(const xfcmd &c);
int xfcm_s_set(const xfcmd &c);
int xfcm_s_copy(const xfcmd &c);
int xfcm_s_cut(const xfcmd &c);
int xfcm_s_paste(const xfcmd &c);
int xfcm_s_upper(const xfcmd &c);
int xfcm_s_lower(const xfcmd &c);
int xfcm_s_lshift(const xfcmd &c);
int xfcm_s_rshift(const xfcmd &c);
int xfcm_s_find(const xfcmd &c);
int xfcm_c_find(const xfcmd &c);
int xfcm_s_xed(const xfcmd &c);
int xfcm_s_prsh(const xfcmd &c);
int xfcm_color(const xfcmd &c);

// Selective display.
int xfcm_all(const xfcmd &c);
int xfcm_exclude(const xfcmd &c);
int xfcm_xedexclude(const xfcmd &c);
int xfcm_pdfexclude(const xfcmd &c);
int xfcm_show(const xfcmd &c);
int xfcm_display(const xfcmd &c);
int xfcm_scope(const xfcmd &c);
int xfcm_shadow(const xfcmd &c);

// Block line operations.
int xfcm_copy(const xfcmd &c);
int xfcm_xedcopy(const xfcmd &c);
int xfcm_pdfcopy(const xfcmd &c);
int xfcm_create(const xfcmd &c);
int xfcm_pdfreplace(const xfcmd &c);
int xfcm_xedreplace(const xfcmd &c);
int xfcm_move(const xfcmd &c);
int xfcm_delete(const xfcmd &c);
int xfcm_xeddelete(const xfcmd &c);
int xfcm_pdfdelete(const xfcmd &c);
int xfcm_duplicat(const xfcmd &c);
int xfcm_shift(const xfcmd &c);
int xfcm_uppercas(const xfcmd &c);
int xfcm_lowercas(const xfcmd &c);
int xfcm_merge(const xfcmd &c);
int xfcm_sort(const xfcmd &c);
int xfcm_nsort(const xfcmd &c);
int xfcm_repeat(const xfcmd &c);
int xfcm_stack(const xfcmd &c);

// Reflow.
int xfcm_flow(const xfcmd &c);
int xfcm_center(const xfcmd &c);
int xfcm_leftadjust(const xfcmd &c);
int xfcm_rightadjust(const xfcmd &c);

// The column pointer and the edits at it.
int xfcm_clocate(const xfcmd &c);
int xfcm_cinsert(const xfcmd &c);
int xfcm_creplace(const xfcmd &c);
int xfcm_coverlay(const xfcmd &c);
int xfcm_cappend(const xfcmd &c);
int xfcm_cfirst(const xfcmd &c);
int xfcm_clast(const xfcmd &c);

// Shell windows, filters and compiling.
int xfcm_shell(const xfcmd &c);
int xfcm_xshell(const xfcmd &c);
int xfcm_xshowhistory(const xfcmd &c);
int xfcm_closeconsole(const xfcmd &c);
int xfcm_filter(const xfcmd &c);
int xfcm_compile(const xfcmd &c);
int xfcm_nexterror(const xfcmd &c);
int xfcm_clearerrors(const xfcmd &c);
