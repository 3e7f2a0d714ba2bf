trace ?r
x = 1
y = 2
say x y
