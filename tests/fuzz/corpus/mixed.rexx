option lower
x.a.b = f(,1,) g (2) `ls` y[1:] ½ z ­ w
call on error name t
signal value x
address sh "ls" a
trace -1
drop (a) b
procedure expose c.
parse value 1 2 with a b
exit
