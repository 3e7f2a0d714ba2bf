say 'start'
do i = 1 to 3
  say i
