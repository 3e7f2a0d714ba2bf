/* Number rendering and arithmetic on doubles. */
say 1/3 2**0.5
say 1.50 + 0 1.50 * 2.0
say 0.1 + 0.2 = 0.3
say 123456789012 + 0
say 7 % 2 7 // 2 -7 // 2 -7 % 2
say 10 / 4 2 ** 10 -3 ** 2
numeric digits 4
say 2/3 12345 * 1
numeric digits
numeric form engineering
say 12345678901 * 10
numeric form scientific
numeric fuzz 1
say 1.00000001 = 1
numeric fuzz 0
say 1 | novar
say 0 & novar
say 'abc' = ' abc '
say 'abc' == ' abc '
say 'ab'[2:4]'|' 'hello'[2] 'hello'[:3] 'hello'[4:]
say (\0) (\1) (-(3)) (+'4')
