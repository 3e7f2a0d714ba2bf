do i = 1 to 3
  leave i + 1
end
