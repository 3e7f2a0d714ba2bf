signal on error name trap
call on halt
address sh 'ls' 
numeric form (x)
trace ?r
option mixed upper
parse upper value a'b'c with x y . '(' z
