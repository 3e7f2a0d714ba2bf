do 3
  nop
end i
