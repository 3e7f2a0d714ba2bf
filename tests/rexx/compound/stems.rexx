/* Compound symbols: defaults, derived tails, drops, exposure. */
a.1 = 2; a. = 5; say a.1 a.2
drop a; say a
b. = 'def'; b.x = 'set'; x = 'x'; say b.x b.y
i = 3; j = 'k'; c.i.j = 'deep'; say c.3.k c.i.j
drop b.x; say b.x
d.1 = 'one'; d.2 = 'two'; drop d.; say d.1 d.2
e.0 = 2; e.1 = 'a'; e.2 = 'b'
call showe
say 'tails' cvtails('e')
n = 1000; do k = 1 to n; s.k = k; end; t = 0; do k = 1 to n; t = t + s.k; end; say t
exit
showe: procedure expose e.
  do k = 1 to e.0; say 'e' k e.k; end
  e.3 = 'c'
  return
