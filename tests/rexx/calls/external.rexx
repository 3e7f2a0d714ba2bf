/* External routines found by path and run apart, with arguments and results.
   A quoted name in a function call is folded like a symbol. */
say './twice.mlbx'(21)
call './TWICE.MLBX' 5, 'hello'
say result
call './lower_fn.mlbx' 'a', 'b'
say result
x = 4
say './TWICE.MLBX'(x) x
call './plain_fn'
say 'not reached'
