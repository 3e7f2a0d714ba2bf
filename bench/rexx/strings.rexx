/* String building, then SUBSTR and POS scanning over the result. */
s = ''
do i = 1 to 100000
  s = s || 'ab' || (i // 10)
end
n = 0
do i = 1 to length(s) by 97
  n = n + pos('b', substr(s, i, 20))
end
say length(s) n
