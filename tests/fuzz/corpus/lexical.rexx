say 'ab cd'x '0101 1111'b a > = b a \ = b 2**3**2
{ say 1 }
say a,
 /* c */ b
