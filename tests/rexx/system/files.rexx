/* Files and folders: a made tree walked, copied, moved, linked, listed,
   recycled into the Trash and removed; names, status and failures. */
fails = 0; n = 0
t = getenv('HOME')'/t'
call check mkdir(t'/a/b/c'), 0
call check mkdir(t'/a/b/c'), 0
call lineout t'/a/one.txt', 'first'; call lineout t'/a/one.txt'
call lineout t'/a/b/two.txt', 'second'; call lineout t'/a/b/two.txt'
call lineout t'/a/b/c/three.log', 'third'; call lineout t'/a/b/c/three.log'
call check sysfiletree(t'/a/*.txt', 'f.', 'FSO'), 0
call check f.0, 2
call check sysfiletree(t'/a/*', 'd.', 'DSO'), 0
call check d.0, 2
call check subdirs(t'/a/b'), 'c'
call check subdirs(t'/a', 's.') s.1, '1 b'
/* copies: a tree, a file into a folder, an identical file skipped */
call check cp(t'/a', t'/copy'), 0
call check linein(t'/copy/b/c/three.log'), 'third'
call check copy(t'/a/one.txt', t'/copy/b'), 0
call check cp(t'/a/one.txt', t'/copy/one.txt'), 0
call check cp(t'/a/one.txt', t'/copy/one.txt'), 0
call check cp(t'/nothing.here', t'/x'), 1
/* moves, links, names */
call check mv(t'/copy/one.txt', t'/moved.txt'), 0
call check state(t'/copy/one.txt'), ''
call check rc, 2
call check word(state(t'/moved.txt'), 1) word(state(t'/moved.txt'), 2), 'F 6'
call check ln(t'/moved.txt', t'/link'), 0
call check readlink(t'/link') rc, t'/moved.txt 0'
call check readlink(t'/moved.txt') rc, ' -1'
call check follow(t'/copy/../link'), t'/moved.txt'
call check word(lstate(t'/link'), 1), 'L'
call check word(state(t'/link'), 1), 'F'
call check dofollow('OFF'), 'ON'
call check word(state(t'/link'), 1), 'L'
call check dofollow('ON'), 'OFF'
call check ln(t'/a', t'/dirlink'), 0
call check readjunc(t'/dirlink'), t'/a'
call check readjunc(t'/link') rc, ' -1'
call check word(statew(t'/a'), 1), 'D'
call check fn('/x/y/name.tar.gz') ft('/x/y/name.tar.gz') fd('/x/y/name.tar.gz'), 'name.tar gz /x/y'
call check fn('.profile') ft('.profile') fd('/top'), '.profile  /'
/* listings */
call check ls(t'/a', 'l.'), 2
call check l.1 l.2, t'/a/b' t'/a/one.txt'
call check dir(t'/a/*.txt'), t'/a/one.txt'
/* joining files and line ends */
call check concat(t'/both', t'/a/one.txt', t'/a/b/two.txt'), 0
call check charin(t'/both', 1, 20), 'first'||'0a'x||'second'||'0a'x
call stream t'/both', 'c', 'close'
call check fileconv(t'/both', 'dos'), 0
call check chars(t'/both'), 15
call stream t'/both', 'c', 'close'
call check fileconv(t'/both', 'unix'), 0
call check stream(t'/both', 'c', 'query size'), 13
call check utime(t'/both', 2001, 2, 3, 4, 5, 6), 0
call check left(statew(t'/both'), 24), 'F 13 2001-02-03 04:05:06'
/* status details */
call check words(getdiskspace(t)), 4
call check fileislocked(t'/both'), 0
call lineout t'/open.txt', 'kept open'
call check isfileopened(t'/open.txt'), 1
call lineout t'/open.txt'
call check isfileopened(t'/open.txt'), 0
call check state(copies('a', 5000)) rc, ' 36'
/* the Trash */
call check recycle(t'/moved.txt'), 0
call check state(t'/moved.txt'), ''
trash = getenv('HOME')'/.local/share/Trash'
call check linein(trash'/info/moved.txt.trashinfo'), '[Trash Info]'
call check linein(trash'/info/moved.txt.trashinfo'), 'Path='t'/moved.txt'
call check linein(trash'/files/moved.txt'), 'first'
call check recycle(t'/moved.txt'), 1
/* removal */
call check rm(t'/copy/b/*.txt'), 0
call check sysfiletree(t'/copy/*.txt', 'f.', 'FSO') f.0, '0 0'
call check del(t'/nothing'), 1
call check wipe(t'/both'), 0
call check state(t'/both'), ''
call check rmdir(t'/copy', 1), 0
call check subdirs(t'/copy'), ''
call check rmdir(t'/copy'), 0
call check rmdir(t'/copy'), 2
call check rmdir(t'/open.txt'), 20
call check systempfilename(t'/tmp.???') \== '', 1
signal on syntax name cpargs
x = cp(); call check 'no error', 'error'
cpargs: call check condition('D'), 'CP(): must receive 1 or 2 argument.'
signal on syntax name utargs
x = utime(t'/a', 2001, 2, 3); call check 'no error', 'error'
utargs: call check condition('D'), 'UTIME(): must receive 7 arguments.'
signal on syntax name stargs
x = stime('31/13/01'); call check 'no error', 'error'
stargs: call check condition('D'), 'STIME(): argument 1 must be a date "dd/mm/yy".'
say 'ok' n - fails 'of' n
exit
check: n = n + 1
  if arg(1) \== arg(2) then do; fails = fails + 1; say 'case' n': got "'arg(1)'", want "'arg(2)'"'; end
  return
