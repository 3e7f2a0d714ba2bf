/* A merged file that doesn't parse raises its error at the call, where
   SIGNAL ON SYNTAX traps it; the program goes on without the file. */
signal on syntax
say 'before'
x = './broken_lib.mlbx'(1)
say 'not reached'
exit
syntax:
say 'trapped' rc 'at line' sigl
say 'x assigned:' symbol('X')
