/* A counted loop of ten million additions. */
s = 0
do i = 1 to 10000000
  s = s + 1
end
say s
