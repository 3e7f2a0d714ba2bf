do i = 1 to 2
  nop
end j
