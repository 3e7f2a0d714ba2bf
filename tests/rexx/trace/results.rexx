trace r
x = 1 + 2
say x
trace o
say 'quiet'
