/* Under OPTION NOLOAD an external file runs apart: its variables are its
   own, and its labels stay its own. */
option noload
shared = 'from the caller'
say './merged_lib.mlbx'(3)
say 'fromlib' symbol('FROMLIB')
