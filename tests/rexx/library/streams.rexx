/* Streams: lines and characters, positions, queries, NOTREADY. */
fails = 0; n = 0
f = 'streams.tmp'
call lineout f; 'rm -f' f
call check lineout(f, 'one'), 0
call lineout f, 'two'
call charout f, 'three' || '0a'x
call check lineout(f), 0
call check lines(f), 3
call check linein(f), 'one'
call check lines(f), 2
call check linein(f) linein(f), 'two three'
call check lines(f) stream(f), '0 READY'
call check linein(f), ''
call check stream(f), 'NOTREADY'
call check linein(f, 2), 'two'
call check linein(f, 1, 0) || linein(f), 'one'
call check chars(f), 10
call check charin(f, 1, 3), 'one'
call check c2x(charin(f)), '0A'
call check charin(f, , 2), 'tw'
call check stream(f, 'c', 'query size'), 14
call check stream(f, 'c', 'query exists') \== '', 1
call check stream(f, 'c', 'seek =5 read line'), 'ERROR'
call check stream(f, 'c', 'seek 2 read line') linein(f), '2 two'
call check stream(f, 'c', 'seek =1 read char') charin(f, , 3), '1 one'
call check stream(f, 'c', 'close'), 'UNKNOWN'
call check charout(f, 'XY', 1), 0
call check linein(f, 1), 'XYe'
call lineout f
call check linelast(f), 'three'
call check lines(f, 'N'), 1
/* many lines through the buffers, one longer than the read buffer */
g = 'streams2.tmp'; 'rm -f' g
do i = 1 to 5000; call lineout g, 'line' i; end
call lineout g, copies('x', 300000)
call lineout g, 'after'
call lineout g
call check lines(g), 5002
do i = 1 to 4999; x = linein(g); end
call check linein(g), 'line 5000'
call check length(linein(g)) linein(g), '300000 after'
call lineout g
'rm -f' g
/* failures */
call check lineout('/nonexistent/dir/x', 'a'), 1
call check linein('.'), ''
call check stream('.'), 'NOTREADY'
call check stream('.', 'D'), 'LINEIN(): unable to open file "."'
call check stream('never.used'), 'UNKNOWN'
signal on notready
x = linein('/nonexistent/zz')
call check 'not trapped', 'trapped'
notready: call check condition('C') condition('D'), 'NOTREADY LINEIN(): unable to open file "/nonexistent/zz"'
signal off notready
signal on syntax name nostart
x = linein('stdin', 3)
nostart: call check condition('D'), 'LINEIN(): no start value may be given for "stdin".'
signal on syntax name manychars
x = chars(f, 1)
manychars: call check condition('D'), 'CHARS(): 1 argument allowed.'
call check linein(), 'typed line'
call check stdout('to stdout' || '0a'x), 0
call lineout f
'rm -f' f
say 'ok' n - fails 'of' n
exit
check: n = n + 1
  if arg(1) \== arg(2) then do; fails = fails + 1; say 'case' n': got "'arg(1)'", want "'arg(2)'"'; end
  return
