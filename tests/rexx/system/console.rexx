/* The console and the remaining system rows: environment, folders,
   adapters, usage figures, waits, and arguments changed in place. */
fails = 0; n = 0
home = getenv('HOME')
call check setenv('XED_TEST_VAR', 'a value'), 0
call check getenv('XED_TEST_VAR'), 'a value'
call check putenv('XED_TEST_VAR=other'), 0
call check popen('echo $XED_TEST_VAR'), 'other'
call check unsetenv('XED_TEST_VAR'), 0
call check getenv('XED_TEST_VAR'), ''
call check shgetknownfolderpath('LocalAppData'), home'/.local/share'
call check shgetknownfolderpath('profile'), home
call check shgetknownfolderpath('Downloads'), home'/Downloads'
call check shgetknownfolderpath('AdminTools'), 'not available'
call check activatekeyboardlayout('00000409'), 'not available'
call check getadaptersinfo('ad.'), 0
lo = 0
do i = 1 to ad.0; if ad.i.type = 'LOOPBACK' then lo = i; end
call check lo > 0, 1
call check ad.lo.ipaddress ad.lo.ipmask, '127.0.0.1 255.0.0.0'
call check ad.lo.adaptername \== '' & datatype(ad.lo.comboindex, 'W'), 1
call check ad.lo.gatewayaddress, '0.0.0.0'
call check hostname() \== '', 1
call check arch(), 'linux'
call check stream(xhome()'/molba', 'c', 'query exists') \== '', 1
call check datatype(cpuusage(1), 'N'), 1
call check words(netusage('lo', 1)), 2
call check netusage('no-such-interface', 1), 'not available'
io = iousage('_Total', 1)
call check words(io) = 2 | io = 'not available', 1
call check sleep(0) usleep(1000) syssleep(0), '0 0 0'
call twice 'a', 'b'
call check open_cons() close_cons(), 'not available 0'
signal on syntax name cpu
x = cpuusage(); call check 'no error', 'error'
cpu: call check condition('D'), 'CPUUSAGE(): must receive 1 argument.'
signal on syntax name io
x = iousage('x'); call check 'no error', 'error'
io: call check condition('D'), 'IOUSAGE(): must receive 2 argument.'
signal on syntax name folder
x = shgetknownfolderpath('Nowhere'); call check 'no error', 'error'
folder: call check condition('D'), 'SHGETKNOWNFOLDERPATH(): unknown folder "Nowhere".'
say 'ok' n - fails 'of' n
exit
twice: call setarg 1, 'changed'
  call setarg 3, 'added'
  call check arg(1) arg(2) arg(3) arg(), 'changed b added 3'
  return
check: n = n + 1
  if arg(1) \== arg(2) then do; fails = fails + 1; say 'case' n': got "'arg(1)'", want "'arg(2)'"'; end
  return
