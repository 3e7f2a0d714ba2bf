/* test */
say 'hello' x.1 f(1,,2)
do i = 1 to 10 by 2
  if i > 3 then leave
  else say i
end i
select
  when a = 1 then nop
  otherwise say 'x'
end
parse upper value x with a b c
call foo 1, 2
exit 0
foo: procedure expose a b
return arg(1)
