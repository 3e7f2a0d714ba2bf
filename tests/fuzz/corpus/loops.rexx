do i = 1 to 3 by 1 for 2 while i < 4
  if i then leave i; else iterate
end i
do forever; end
do x in s.; end
