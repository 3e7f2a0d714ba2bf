/* Operator binding as the grammar fixes it */
say 2 ** 3 ** 2          /* power binds right to left */
say -2 ** 2              /* prefix minus binds tighter than power */
say 1 \= 2 = 3           /* = binds tighter than the other comparisons */
say 1 + 2 * 3 - 4 // 3
say 1 > = 0               /* operators written with blanks inside */
say 1 \ = 1
say 1 >= 0 1              /* blank concatenation binds tighter */
say 1e+2 + .5 1E-1
x = 'abcdef'
say x[2:3] x[:2] x[5:] x[3]
x[1:2] = 'XY'
say x
