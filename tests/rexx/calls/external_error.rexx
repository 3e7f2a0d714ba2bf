/* An error inside an external routine ends the caller at the call. */
say 'before'
call './TWICE.MLBX' 'text'
