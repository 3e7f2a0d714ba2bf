#!/usr/bin/env molba
say 'a''b' "it's" ('ab cd'x == 'abcd'x) '0100 0001'b '41'x
a = 'A'; b = 'B'
say a'-'a (a)(b) (a) (b)
say a /* comment */ b a/**/b
say 'one',
    /* a continued clause */ 'two'
{ say 'brace' }
say f(1,,3)
exit
f: return arg() arg(2, 'e') arg(3)
