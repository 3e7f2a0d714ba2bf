/* Services through a stand-in systemctl put first on PATH: status, start,
   stop, create as a unit file, delete. */
fails = 0; n = 0
home = getenv('HOME')
call setenv 'PATH', cwd()'/stand-in:'getenv('PATH')
call setenv 'SYSTEMD_UNIT_PATH', home'/units'
call check service_status('nosuch'), 'SERVICE_DOES_NOT_EXIST'
call check service_status('always'), 'SERVICE_STOPPED'
call check service_start('always'), 0
call check service_status('always'), 'SERVICE_RUNNING'
call check service_stop('always.service'), 0
call check service_status('always'), 'SERVICE_STOPPED'
call check service_start('nosuch'), 5
call check service_status('bad/name'), 'SERVICE_DOES_NOT_EXIST'
call check service_create('mine', 'My service', 'SERVICE_ALL_ACCESS', 'SERVICE_WIN32_OWN_PROCESS',,
  'SERVICE_AUTO_START', 'SERVICE_ERROR_NORMAL', '/usr/bin/true --flag'), 0
u = home'/units/mine.service'
call check linein(u), '[Unit]'
call check linein(u), 'Description=My service'
call check linein(u) linein(u), ' [Service]'
call check linein(u), 'ExecStart=/usr/bin/true --flag'
call check linein(u), 'Restart=on-failure'
call stream u, 'c', 'close'
call check service_status('mine'), 'SERVICE_STOPPED'
call check service_start('mine'), 0
call check service_status('mine'), 'SERVICE_RUNNING'
call check service_create('mine', 'Again', 'SERVICE_ALL_ACCESS', 'SERVICE_WIN32_OWN_PROCESS',,
  'SERVICE_DEMAND_START', 'SERVICE_ERROR_IGNORE', '/usr/bin/true'), 1
call check service_delete('mine'), 0
call check stream(u, 'c', 'query exists'), ''
call check service_status('mine'), 'SERVICE_DOES_NOT_EXIST'
call check service_delete('mine'), 1
calls = home'/services/calls'
do while lines(calls) > 0; last = linein(calls); if wordpos('enable', last) > 0 then enabled = last; end
call check enabled, 'enable mine.service'
signal on syntax name badstart
x = service_create('x', 'x', 'SERVICE_START|SERVICE_STOP', 'SERVICE_WIN32_OWN_PROCESS', 'SERVICE_SOMETIMES', 'SERVICE_ERROR_NORMAL', '/bin/x'); call check 'no error', 'error'
badstart: call check condition('D'), 'SERVICE_CREATE(): dwStartType is invalid: "SERVICE_SOMETIMES".'
signal on syntax name few
x = service_create('x', 'x', 'a', 'b', 'c', 'd'); call check 'no error', 'error'
few: call check condition('D'), 'SERVICE_CREATE(): must receive 7 to 11 arguments.'
signal on syntax name access
x = service_create('x', 'x', 'SERVICE_START|FLY', 'SERVICE_WIN32_OWN_PROCESS', 'SERVICE_DEMAND_START',,
  'SERVICE_ERROR_NORMAL', '/bin/x'); call check 'no error', 'error'
access: call check condition('D'), 'SERVICE_CREATE(): dwDesiredAccess is invalid: "SERVICE_START|FLY".'
say 'ok' n - fails 'of' n
exit
check: n = n + 1
  if arg(1) \== arg(2) then do; fails = fails + 1; say 'case' n': got "'arg(1)'", want "'arg(2)'"'; end
  return
