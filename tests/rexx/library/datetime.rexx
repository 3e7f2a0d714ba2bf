/* DATE and TIME conversions; every expected value agrees with another REXX interpreter. */
fails = 0; n = 0
call check date('S', '1 Jan 2000'), '20000101'
call check date('B', '20240229', 'S'), '738944'
call check date('W', '20240229', 'S'), 'Thursday'
call check date('N', '738944', 'B'), '29 Feb 2024'
call check date('U', '29 Feb 2024'), '02/29/24'
call check date('S', '02/29/24', 'U'), '20240229'
call check date('E', '20240101', 'S'), '01/01/24'
call check date('B', '1 Jan 0001'), '0'
call check date('W', '1 Jan 1900'), 'Monday'
call check date('D', '31 Dec 2024'), '366'
call check date('C', '1 Jan 2000'), '1'
call check date('O', '1 Mar 2000'), '00/03/01'
call check date('B', '25/12/99', 'E'), '730112'
call check date('S', '95/02/28', 'O'), '19950228'
call check date('I', '20240229', 'S'), '2024-02-29'
call check date('M', '20241105', 'S'), 'November'
call check date('S', '2024-03-01', 'I'), '20240301'
call check date('E', '20240101', 'S', '.'), '01.01.24'
call check date('S', '2024/01/05', 'S', '-', '/'), '2024-01-05'
call check time('C', '13:05:00'), '1:05pm'
call check time('C', '00:30:00'), '12:30am'
call check time('M', '13:05:00'), '785'
call check time('S', '1:05pm', 'C'), '47100'
call check time('N', '3600', 'S'), '01:00:00'
call check time('L', '12:00:00'), '12:00:00.000000'
call check time('H', '47000', 'S'), '13'
call check time('N', '12:00am', 'C'), '00:00:00'
call check date('B') - date('B', date('S'), 'S'), 0
call check length(time()), 8
call check time('E') >= 0, 1
call check date('S', date('T', '20240701', 'S'), 'T'), '20240701'
signal on syntax name bad1
x = date('S', '31 Feb 2024'); call check 'no error', 'error'
bad1: call check condition('D'), 'DATE(): argument 2 "31 Feb 2024" is not in the format described by "N".'
signal on syntax name bad2
x = date('Q'); call check 'no error', 'error'
bad2: call check rc, 40
signal on syntax name bad3
x = date('B', , 'S'); call check 'no error', 'error'
bad3: call check rc, 40
say 'ok' n - fails 'of' n
exit
check: n = n + 1
  if arg(1) \== arg(2) then do; fails = fails + 1; say 'case' n': got "'arg(1)'", want "'arg(2)'"'; end
  return
