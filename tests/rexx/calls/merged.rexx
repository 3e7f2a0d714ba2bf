/* An external file is merged into the program: it runs as an internal
   routine, seeing and setting the caller's variables, and its labels
   become the program's own, callable by name once it is in. */
shared = 'from the caller'
say './merged_lib.mlbx'(3)
say 'set by the file:' fromlib
call helper_in_lib 'direct'
say result
say './merged_lib.mlbx'(4) n
