/* Common run-time errors, each trapped by SIGNAL ON SYNTAX in a routine. */
call try '1/0'
call try "'a'+1"
call try '1e300*1e300'
call try "left('abc',5,'xy')"
call try "'q' * 2"
call try 'nosuch(1)'
call try 'x = y.1 + 1'
call try '3 + 4'
exit
try: procedure
  signal on syntax
  interpret 'x =' arg(1)
  say arg(1) '-> no error'
  return
syntax:
  say arg(1) '-> error' rc errortext(rc) 'at line' sigl
  return
