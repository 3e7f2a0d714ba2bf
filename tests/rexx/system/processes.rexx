/* Processes: programs started, waited for and killed; commands whose
   output comes back; the copier of SCRIPT. */
fails = 0; n = 0
home = getenv('HOME')
h = fork('exit 3')
call check waitpid(h), 3
call check still_active(h), 0
h2 = fork('exec sleep 30')
call check still_active(h2), 1
call check waitpid(h2, 0), -1
p = qpid(h2)
call check datatype(p, 'W') & p > 1, 1
call check kill(p, 'KILL'), 0
call check waitpid(h2), 137
call check still_active(h2), 0
h3 = fork('exec sleep 30')
call check kill(qpid(h3)), 0
call check waitpid(h3), 143
call check kill(999999), 3
signal on syntax name badhandle
call waitpid 999; call check 'no error', 'error'
badhandle: call check rc condition('D'), '40 WAITPID(): invalid handlde.'
signal on syntax name notwhole
call waitpid 'x'; call check 'no error', 'error'
notwhole: call check rc condition('D'), '41 WAITPID(): the first argument must be a whole number.'
call check popen('echo hi; echo there'), 'hi'||'0a'x||'there'
call check popen('printf "a\nb\n"', 'L.'), 2
call check l.1 l.2, 'a b'
call check popen('exit 4'), ''
call check rc, 4
call check sh('echo via sh') unix('echo via unix'), 'via sh via unix'
call check exec('exit 2'), 2
call check windows_ne('echo hidden; exit 1'), 1
call check getpid() > 1, 1
call check setpriority('NORMAL_PRIORITY_CLASS'), 0
signal on syntax name badclass
call setpriority 'FAST'; call check 'no error', 'error'
badclass: call check condition('D'), 'SETPRIORITY(): invalid priority class "FAST".'
call check script(home'/session.log'), 0
say 'this line goes to the log as well'
call check script(), 0
call check linein(home'/session.log'), 'this line goes to the log as well'
call check script(home'/session.log', 'append'), 0
say 'and this one after it'
call script
call check linein(home'/session.log'), 'and this one after it'
call check script(home), 1
say 'ok' n - fails 'of' n
exit
check: n = n + 1
  if arg(1) \== arg(2) then do; fails = fails + 1; say 'case' n': got "'arg(1)'", want "'arg(2)'"'; end
  return
