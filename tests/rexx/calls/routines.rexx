/* Internal calls, functions, PROCEDURE EXPOSE, RESULT, ARG(). */
g = 'global'; a.1 = 'one'
call show 'x', , 'z'
say 'result:' result
say 'square:' sq(7)
say 'nested:' sq(sq(2))
call hidden
say 'g after hidden:' g 'h:' h
call exposer
say 'g after exposer:' g a.1 a.2
call noresult
say symbol('RESULT')
say 'fact 10:' fact(10)
say ismain() inner()
exit
show: procedure
  say 'args' arg() '[' || arg(1) || '][' || arg(2) || '][' || arg(3) || ']' arg(2, 'E') arg(3, 'E')
  return 'done'
sq: procedure
  return arg(1) * arg(1)
hidden: procedure
  g = 'changed'; h = 'local'
  return
exposer: procedure expose g a.
  g = 'exposed'; a.2 = 'two'
  return
noresult: return
fact: procedure
  parse arg n
  if n <= 1 then return 1
  return n * fact(n - 1)
inner: return ismain()
