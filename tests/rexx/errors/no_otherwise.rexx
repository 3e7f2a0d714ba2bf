select
  when 1 = 2 then say 'no'
end
