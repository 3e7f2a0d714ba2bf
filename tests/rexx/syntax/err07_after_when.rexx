select
  when a = 1 then say 'one'
  say 'two'
end
