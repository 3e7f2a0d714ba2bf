signal on syntax
x = 1 / 0
