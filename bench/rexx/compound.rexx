/* A million compound-variable stores and lookups. */
do i = 1 to 1000000
  a.i = i // 1000
end
t = 0
do i = 1 to 1000000
  t = t + a.i
end
say t
