x = 1
if x then