say 'ab cd'x 'a bc'x
