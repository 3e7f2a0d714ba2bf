/* EXECIO: reading and writing files, the stack and variables, operand errors. */
trace off
fails = 0; n = 0
f = 'execio.tmp'
'rm -f' f
do i = 1 to 5; queue 'line' i; end
'EXECIO 5 DISKW' f '( FINIS'; call check rc, 0
'EXECIO * DISKR' f '( STEM a. FINIS'; call check rc a.0 a.1 a.5, '0 5 line 1 line 5'
'EXECIO 2 DISKR' f; call check rc queued(), '0 2'
parse pull x; parse pull y; call check x '/' y, 'line 1 / line 2'
'EXECIO 2 DISKR' f '( STEM b.'; call check rc b.0 b.1 b.2, '0 2 line 3 line 4'
'EXECIO 5 DISKR' f '( STEM c.'; call check rc c.0 c.1, '2 1 line 5'
'EXECIO 0 DISKR' f '( FINIS'; call check rc, 0
'EXECIO 1 DISKR' f '4 ( VAR v FINIS'; call check rc v, '0 line 4'
'EXECIO * DISKR' f '( LOCATE /e 4/ STEM l. FINIS'; call check rc l.0 l.1 l.2, '0 2 line 4 line 5'
'EXECIO * DISKR' f '( FIND /line 3/ STEM l. FINIS'; call check rc l.0 l.1, '0 3 line 3'
'EXECIO * DISKR' f '( AVOID /line/ STEM l. FINIS'; call check rc l.0, '2 0'
'EXECIO 2 DISKR' f '( LIFO FINIS'; parse pull x; call check x queued(), 'line 2 1'
pull .
'EXECIO 2 DISKR' f '( SKIP'; 'EXECIO 1 DISKR' f '( VAR v FINIS'; call check v, 'line 3'
'EXECIO * DISKR' f '( MARGINS 3 4 STEM m. FINIS'; call check m.1, 'ne'
s.1 = 'new'; s.2 = 'more'
'EXECIO * DISKW' f '( STEM s. FINIS'; call check rc, 0
'EXECIO * DISKR' f '( STEM t. FINIS'; call check t.0 t.6 t.7, '7 new more'
'EXECIO 1 DISKW' f '2 ( STRING replaced two'; call check rc, 0
'EXECIO 1 DISKI' f '1 ( STRING first'; call check rc, 0
'EXECIO 2 DISKD' f '3'; call check rc, 0
'EXECIO * DISKR' f '( STEM t. FINIS'; call check t.0 t.1 t.2 t.3, '6 first line 1 line 4'
'EXECIO 1 DISKRU' f '( VAR u'; 'EXECIO 1 DISKW' f '( STRING FIRST!'; 'EXECIO 0 DISKW' f '( FINIS'
call check u linein(f, 1), 'first FIRST!'
call lineout f
'EXECIO 1 DISKW' f '1 F 8 ( STRING ab'; 'EXECIO 1 DISKR' f '( VAR w FINIS'; call check '['w']', '[ab      ]'
/* errors */
call err '1 DISKR' f '( VAR x STEM y.', 24
call err '1 DISKR' f '( LOCATE /e 4/ VAR x', 24
call err '* DISKR nonexist.file ( STEM q.', 28
call err 'x DISKR' f, 24
call err '1 DISKX' f, 24
call err '1 DISKW' f '0', 24
call err '1 DISKW' f '1 Q', 24
call err '1 DISKW' f '1 F 0', 24
call err '1 DISKR' f '( STEM', 24
call err '1 DISKR' f '( ZONE 5', 24
call err '1 DISKR' f '( BOGUS', 24
call err '1 DISKR', 24
call err '* DISKR .', 28
'rm -f' f
say 'ok' n - fails 'of' n
exit
err: parse arg ops, want
  'EXECIO' ops; call check rc, want
  return
check: n = n + 1
  if arg(1) \== arg(2) then do; fails = fails + 1; say 'case' n': got "'arg(1)'", want "'arg(2)'"'; end
  return
