/* SIGNAL to labels, into a loop body, SIGNAL VALUE, and conditions. */
signal first
say 'skipped'
first: say 'at first, sigl' sigl
signal value 'SECOND'
second: say 'at second'
signal inloop
do 3
  say 'never before the label'
inloop: say 'in loop body once'
end
say 'after loop'
signal on novalue
say 'reading' undefinedvar
say 'not reached'
novalue: say 'novalue:' condition('C') condition('D') condition('I')
signal on syntax name oops
x = 'a' + 1
say 'not reached'
oops: say 'syntax trapped rc' rc 'line' sigl
call on error name cmdfail
'exit 3'
say 'after command rc' rc
signal off error
'exit 2'
say 'off: rc' rc
exit
cmdfail: say 'error condition:' condition('C') condition('D') condition('I') rc
  return
