select
  when a say 1
end
