x = 2
if x then say 'yes'
