/* A million internal function calls. */
t = 0
do i = 1 to 1000000
  t = t + sq(i // 10)
end
say t
exit
sq: return arg(1) * arg(1)
