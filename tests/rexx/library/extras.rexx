/* The library's own string, stem, regular-expression and numeric functions. */
fails = 0; n = 0
call check c2o('A'), '101'
call check c2o('AB'), '40502'
call check c2o(''), '0'
call check c2o('00'x), '0'
call check upperw('hello big  world'), 'Hello Big  World'
call check rpos('a', 'banana'), 6
call check rpos('a', 'banana', 5), 4
call check rpos('x', 'banana'), 0
call check deobf(obf('Secret text!')), 'Secret text!'
call check length(obf('abc')), 6
call check obf('aaaa') \== 'aaaa', 1
call check datatype(obf('some text'), 'X'), 1
a.0 = 4; a.1 = 'pear 3'; a.2 = 'apple 10'; a.3 = 'fig 2'; a.4 = 'Apple 1'
call check sort(a), 4
call check a.1 a.2 a.3 a.4, 'Apple 1 apple 10 fig 2 pear 3'
call check a.sortorder.1 a.sortorder.4, '4 1'
d.0 = 3; d.1 = ' 10'; d.2 = '  2'; d.3 = '100'
call sort d, 'n 1 3'
call check space(d.1 d.2 d.3), '2 10 100'
call sort d, 'N 1 3'
call check space(d.1 d.2 d.3), '100 10 2'
b.0 = 3; b.1 = 'b'; b.2 = 'A'; b.3 = 'c'
call sort b, 'x 1 *'
call check b.1 b.2 b.3, 'A b c'
c.0 = 0; call check sort(c), 0
signal on syntax name badcols
call sort a, 'Q 1 *'; call check 'no error', 'error'
badcols: call check condition('D'), 'SORT(): Invalid columns "Q 1 *" SORT() parameters.'
call check parg('abcdefghij', 'x 3 y 4 z *', 'p'), 10
call check p.x '/' p.y '/' p.z, 'abc / defg / hij'
call parg 'ab  cd', 'f 4 g 2', 'q', 1
call check q.f'|'q.g, 'ab|cd'
signal on syntax name badparg
call parg 'x', 'a 1 b', 'q'; call check 'no error', 'error'
badparg: call check condition('D'), 'PARG(): argument 2 must have an even number of elements.'
call check rchange('hello world', 'o+', '0'), 'hell0 w0rld'
call check rchange('Hello', 'h', 'J', 1), 'Jello'
call check regcomp('^ab*c$', 1), 0
call check regexec('abbbc', 1) regexec('ABC', 1, 'Ignore') regexec('xbc', 1), '1 1 0'
signal on syntax name badre
x = rchange('a', '(', 'b'); call check 'no error', 'error'
badre: call check condition('D'), 'RCHANGE(): Invalid regular expression.'
numeric digits 9
call check sin(0) cos(0) pi(), '0 1 3.14159265'
call check asin(1), '1.57079633'
call check atan(1) * 4, '3.14159265'
call check sin(90, 'D') cos(180, 'D') asin(1, 'D'), '1 -1 90'
signal on syntax name badacos
x = acos(2); call check 'no error', 'error'
badacos: call check condition('D'), 'ACOS(): argument 1 must be between -1 and 1.'
r1 = random(1, 100, 42); r2 = random(1, 100); s1 = random(1, 100, 42); s2 = random(1, 100)
call check r1 r2, s1 s2
ok = 1
do 200; x = random(3, 7); if x < 3 | x > 7 | \datatype(x, 'W') then ok = 0; end
call check ok, 1
call check random(5, 5), 5
signal on syntax name badrand
x = random(1, 200000); call check 'no error', 'error'
badrand: call check rc, 40
call check linesize() > 0, 1
call check externals(), 0
say 'ok' n - fails 'of' n
exit
check: n = n + 1
  if arg(1) \== arg(2) then do; fails = fails + 1; say 'case' n': got "'arg(1)'", want "'arg(2)'"'; end
  return
