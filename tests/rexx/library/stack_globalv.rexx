/* The stack's buffers and GLOBALV, with a child process sharing the storage area. */
trace off
fails = 0; n = 0
call value 'GLOBALVHOME', cwd() || '/gv.tmp', 'ENVIRONMENT'
'rm -rf gv.tmp'
queue 'outer'
'MAKEBUF'; call check rc, 1
queue 'a'; queue 'b'; call check queued(), 2
'DROPBUF'; call check rc queued(), '0 1'
'MAKEBUF'; 'MAKEBUF'; call check rc, 2
push 'x'; 'SENTRIES'; call check rc, 1
'DROPBUF 9'; call check rc, 2
'DROPBUF x'; call check rc, 1
'DROPBUF 1'; call check rc queued(), '0 1'
'MAKEBUF'; queue 'y'; 'DESBUF'; call check queued(), 0
'DROPBUF'; parse pull v; call check v queued(), 'outer 0'
'GLOBALV SELECT G SET A 1 B two'; call check rc, 0
'GLOBALV SELECT G GET A B'; call check a b, '1 two'
'GLOBALV SELECT G SETL LINE hello  big world'; 'GLOBALV SELECT G GET LINE'; call check line, 'hello  big world'
'GLOBALV SELECT G SETP P lasting'; drop p; 'GLOBALV SELECT G GET P'; call check p, 'lasting'
'GLOBALV SELECT G SET B'; drop b; 'GLOBALV SELECT G GET B'; call check b, 'B'
'GLOBALV SELECT H'; 'GLOBALV SET Q 9'; 'GLOBALV GET Q'; call check q, 9
call check value('molba_GROUP_GL', , 'ENVIRONMENT'), 'H'
'GLOBALV GRPSTACK'; call check queued(), 2
parse pull g1; parse pull g2; call check g1 g2, 'G H'
'GLOBALV SELECT G STACK A'; parse pull v; call check v, 1
r = 7; 'GLOBALV SELECT G PUT R'; drop r; 'GLOBALV SELECT G GET R'; call check r, 7
/* a child process sees this process tree's values */
call lineout 'child.tmp', "trace off; 'GLOBALV SELECT G GET A'; 'GLOBALV SELECT G SET C' a + 1"
call lineout 'child.tmp'
'"$(readlink /proc/$PPID/exe)" child.tmp'
'GLOBALV SELECT G GET C'; call check c, 2
'GLOBALV SELECT G PURGE'; drop a p; 'GLOBALV SELECT G GET A P'; call check a p, 'A P'
/* a value file that is a folder is taken as unset, and a SET replaces it */
'mkdir -p' value('molba_STORAGE_GL', , 'ENVIRONMENT') || '/G/Z'
'GLOBALV SELECT G GET Z'; call check rc z, '0 Z'
'GLOBALV SELECT G SET Z 3'; 'GLOBALV SELECT G GET Z'; call check rc z, '0 3'
'GLOBALV'; call check rc, 1000024
'GLOBALV SELECT'; call check rc, 1000004
'rm -rf gv.tmp child.tmp'
say 'ok' n - fails 'of' n
exit
check: n = n + 1
  if arg(1) \== arg(2) then do; fails = fails + 1; say 'case' n': got "'arg(1)'", want "'arg(2)'"'; end
  return
