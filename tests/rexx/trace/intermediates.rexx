a = 2
trace i
b = a * 3 + 1
trace off
say b trace()
