/* Every argument check of the dialog box functions, with its words. */
n = 0; fails = 0
call dy_start
call expect "dy_label(1, 2)", 'DY_LABEL(): needs 3 or 9 arguments.'
call expect "dy_label(1, 2, 'a', 1, 2, 3)", 'DY_LABEL(): needs 3 or 9 arguments.'
call expect "dy_label('x', 2, 'a')", 'DY_LABEL(): the first argument must be a number.'
call expect "dy_label(1, 'y', 'a')", 'DY_LABEL(): the second argument must be a number.'
call expect "dy_label(1, 2, 'a', 0, 0, 0, 0, 0, 300)", 'DY_LABEL(): argument 9 must be greater or equal than -1 and lower than 256.'
call expect "dy_button(1)", 'DY_BUTTON(): needs 3 or 9 arguments.'
call expect "dy_button('x', 2, 'a')", 'DY_BUTTON(): the first argument must be a number.'
call expect "dy_button(1, 'y', 'a')", 'DY_BUTTON(): the second argument must be a number.'
call expect "dy_input(1, 2)", 'DY_INPUT(): needs 3, 4 or 10 arguments.'
call expect "dy_input(1, 2, 3, 'a', 5)", 'DY_INPUT(): needs 3, 4 or 10 arguments.'
call expect "dy_input('x', 2, 3)", 'DY_INPUT(): the first argument must be a number.'
call expect "dy_input(1, 'y', 3)", 'DY_INPUT(): the second argument must be a number.'
call expect "dy_input(1, 2, 'w')", 'DY_INPUT(): the third argument must be a number.'
call expect "dy_tg('t', 1, 2, 0, 1, 2)", 'DY_TG(): needs at least 7 arguments.'
call expect "dy_tg('t', 1, 2, 0, 1, 2, 'a', 4)", 'DY_TG(): invalid argument count.'
call expect "dy_tg('t', 1, 2, 0, 1, 2, 'a', 'x', 3, 'b')", 'DY_TG(): the X argument for toggle 2 must be a number.'
call expect "dy_tg('t', 1, 2, 0, 1, 'y', 'a')", 'DY_TG(): the Y argument for toggle 1 must be a number.'
call expect "dy_tg('t', 1, 2, 5, 1, 2, 'a')", 'DY_TG(): the fourth argument must be 0 or 1.'
call expect "dy_ch('t', 1, 2)", 'DY_CH(): needs at least 4 arguments.'
call expect "dy_ch('t', 'x', 2, 'a')", 'DY_CH(): the second argument must be a number.'
call expect "dy_ch('t', 1, 'y', 'a')", 'DY_CH(): the third argument must be a number.'
call expect "dy_scl(1, 2, 3)", 'DY_SCL(): needs at least 4 arguments.'
call expect "dy_scl(1, 2, 3, 4, 's', 'Single', 't', 1, 2)", 'DY_SCL(): needs 13 arguments.'
call expect "dy_scl('x', 2, 3, 4)", 'DY_SCL(): the first argument must be a number.'
call expect "dy_scl(1, 'y', 3, 4)", 'DY_SCL(): the second argument must be a number.'
call expect "dy_scl(1, 2, 0, 4)", 'DY_SCL(): the third argument must be a positive number.'
call expect "dy_scl(1, 2, 3, 4.5)", 'DY_SCL(): the fourth argument must be a whole positive number.'
call expect "dy_scl(1, 2, 3, 4, 'a b')", 'DY_SCL(): argument 5 is not a valid REXX symbol.'
call expect "dy_scl(1, 2, 3, 4, 's', 'Some')", 'DY_SCL(): the sixth argument must be either "Single" or "Multiple".'
call expect "dy_end('', 1, 2, 0, 't')", 'DY_END(): needs 6, 7 or 10 arguments.'
call expect "dy_end('', 'x', 2, 0, 't', 'Grab')", 'DY_END(): argument 2 must be a number.'
call expect "dy_end('', 1, 'y', 0, 't', 'Grab')", 'DY_END(): argument 3 must be a number.'
call expect "dy_end('', 1, 2, 'z', 't', 'Grab')", 'DY_END(): argument 4 must be a number.'
call expect "dy_end('', 1, 2, 0, 't', 'Hold')", 'DY_END(): argument 6 must be "Grab", "Nograb" or "Display".'
call expect "dy_end('', 1, 2, 0, 't', 'Grab', 2)", 'DY_END(): argument 7 must be 0 or 1.'
call expect "dy_end('', 1, 2, 0, 't', 'Grab', 1, 256, 0, 0)", 'DY_END(): argument 8 must be greater or equal than 0 and lower than 256.'
call expect "dy_end('', 1, 2, 0, 't', 'Grab', 1, 0, -1, 0)", 'DY_END(): argument 9 must be greater or equal than 0 and lower than 256.'
call expect "dy_end('', 1, 2, 0, 't', 'Grab', 1, 0, 0, 'b')", 'DY_END(): argument 10 must be greater or equal than 0 and lower than 256.'
h0 = dy_end('', 0, 0, 0, 'first', 'Grab')
/* A description left open is dropped with one warning. */
call dy_start
call dy_label 1, 1, 'dropped'
call dy_start
call dy_label 1, 1, 'kept'
h = dy_end('', 0, 0, 0, 'box', 'nograb')
call same h, h0 + 1
call same dy_slabel(h, 1, 'still kept'), 0
call expect "dy_end('', 1, 2, 0, 't', 'Grab')", 'DY_END(): no initialized dyalog box.'
call expect "dy_label(1, 2, 'a')", 'DY_LABEL(): no initialized dyalog box.'
call expect "dy_map()", 'DY_MAP(): needs 1 argument.'
call expect "dy_map(1, 2)", 'DY_MAP(): needs 1 argument.'
call expect "dy_unmap()", 'DY_UNMAP(): needs 1 argument.'
call expect "dy_unmap('h')", 'DY_UNMAP(): argument 1 must be a number.'
call expect "dy_destroy(1, 2)", 'DY_DESTROY(): needs 1 argument.'
call expect "dy_destroy(1.5)", 'DY_DESTROY(): argument 1 must be a number.'
call expect "dy_vinput(1)", 'DY_VINPUT(): needs 2 arguments.'
call expect "dy_vch(1)", 'DY_VCH(): needs 2 arguments.'
call expect "dy_vtg(1, 1)", 'DY_VTG(): needs 3 arguments.'
call expect "dy_vtg(1, 1, '1x')", 'DY_VTG(): argument 3 is not a valid REXX symbol.'
call expect "dy_vscl(1, 1)", 'DY_VSCL(): needs 3 arguments.'
call expect "dy_vscl(1, 1, 'a+b')", 'DY_VSCL(): argument 3 is not a valid REXX symbol.'
call expect "dy_vscl(1, 1, 'a', 'b c')", 'DY_VSCL(): argument 4 is not a valid REXX symbol.'
call expect "dy_sinput(1, 1)", 'DY_SINPUT(): needs 3 arguments.'
call expect "dy_slabel(1, 1)", 'DY_SLABEL(): needs 3 arguments.'
call expect "dy_sch(1, 1)", 'DY_SCH(): needs 3 arguments.'
call expect "dy_stg(1, 1, 1)", 'DY_STG(): needs 4 arguments.'
call expect "dy_sscl(1, 1)", 'DY_SSCL(): needs 3 to 4 arguments.'
call expect "dy_sscl(1, 1, 's', 'maybe')", 'DY_SSCL(): the fourth argument must be a logical value.'
call expect "dy_ascl(1, 1)", 'DY_ASCL(): needs between 3 and 5 arguments.'
call expect "dy_ascl(1, 1, 'a', 1, 1, 1)", 'DY_ASCL(): needs between 3 and 5 arguments.'
call expect "dy_dscl(1, 1)", 'DY_DSCL(): needs 3 to 4 arguments.'
call expect "dy_pscl(1, 1)", 'DY_PSCL(): needs 3 arguments.'
call expect "dy_rscl(1, 1, 1)", 'DY_RSCL(): needs 4 arguments.'
call expect "dy_button_col(1, 1)", 'DY_BUTTON_COL: needs 8 arguments.'
call expect "dy_ch_col(1, 1)", 'DY_CH_COL: needs 8 arguments.'
call expect "dy_input_col(1, 1)", 'DY_INPUT_COL: needs 8 arguments.'
call expect "dy_label_col(1, 1)", 'DY_LABEL_COL: needs 8 arguments.'
call expect "dy_scl_col(1, 1)", 'DY_SCL_COL: needs 8 arguments.'
call expect "dy_tg_col(1, 1)", 'DY_TG_COL: needs 8 arguments.'
call expect "dy_label_color(1, 1, 0, 0, 0, 0, 0, 256)", 'DY_LABEL_COLOR(): argument 8 must be greater or equal than -1 and lower than 256.'
call expect "dy_focus(1)", 'DY_FOCUS(): needs 2 arguments.'
call expect "dy_font()", 'DY_FONT(): argument 1 missing.'
call expect "dy_font('Mono%bold%x%12')", 'DY_FONT(): invalid "Mono%bold%x%12" font.'
call expect "dy_header(1)", 'DY_HEADER(): needs 2 arguments.'
call expect "dy_clip()", 'DY_CLIP(): needs 1 argument.'
call expect "dy_folder('a', 'b')", 'DY_FOLDER(): needs 0 to 1 arguments.'
call expect "dy_printer('a', 'b')", 'DY_PRINTER(): needs 0 to 1 arguments.'
call expect "dy_beep(1)", 'DY_BEEP(): must receive 0 arguments.'
/* Bad handles and item numbers: an empty result, the message on the error stream. */
call same dy_map(h + 1), ''
call same dy_unmap(99), ''
call same dy_vinput(h, 1), ''
call same dy_vch(h, 1), ''
call same dy_vtg(h, 1, 'st'), ''
call same dy_slabel(h, 2, 'x'), ''
call same dy_label_col(h, 3, 1, 2, 3, 4, 5, 6), ''
call same dy_focus(h, 2), ''
call same dy_destroy(h), 0
call same dy_destroy(h), ''
call same dy_font('Courier New%bold%8%16'), 0
say 'ok' n - fails 'of' n
exit

/* Runs a call that must fail, and compares its words. */
expect: procedure expose n fails
  parse arg code, want
  n = n + 1
  got = '(no error)'
  signal on syntax name caught
  interpret 'x =' code
  signal done
caught:
  got = condition('D')
done:
  if got \== want then do
    fails = fails + 1
    say 'case' n code': got "'got'", want "'want'"'
  end
  return

same: procedure expose n fails
  n = n + 1
  if arg(1) \== arg(2) then do
    fails = fails + 1
    say 'case' n': got "'arg(1)'", want "'arg(2)'"'
  end
  return
