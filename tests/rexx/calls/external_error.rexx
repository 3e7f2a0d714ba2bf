/* An error inside an external routine, merged into the program, is
   reported at its own line in its own file and ends the run. */
say 'before'
call './TWICE.MLBX' 'text'
