trace l
call sub
exit
sub:
  return
