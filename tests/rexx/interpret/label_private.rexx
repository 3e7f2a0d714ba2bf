interpret 'x: nop'
call x
