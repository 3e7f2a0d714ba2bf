/* Assignments of the form s = s || ...: the right side sees the old value. */
s = 'x'
s = s || 'ab' s
s = s'c'
say s
t = 5; t = t || 1 2; say t
n.1 = 'a'; n.1 = n.1 || 'b'; say n.1
i = 'i'; u = 'u'; u = u || i.u; say u
g = 'g'; g = g || grow(); say g
do k = 1 to 3; w = k; w = w k; say w; end
exit
grow: g = 'changed'; return '+'
