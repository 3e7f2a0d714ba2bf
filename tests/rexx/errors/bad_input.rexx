/* Bad input of many kinds: each gives its numbered error or completes. */
signal on syntax
s = copies('x', 5000000); say length(s) length(s || s)
t = ''; do i = 1 to 200; t = t || d2c((i * 37 + 11) // 256); end
call try t
call try copies('(', 5000) || '1' || copies(')', 5000)
call try 'x = 1e400 + 1'
call try 'numeric digits 0'
call try 'numeric digits -3'
call try 'numeric digits abc'
call try 'numeric fuzz 9'
call try 'do 1e12; leave; end'
call try 'x = d2c(65)'
say 'done'
exit
try: procedure
  signal on syntax
  interpret arg(1)
  say 'ok'
  return
syntax: say 'error' rc; return
