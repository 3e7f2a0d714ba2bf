do 2.5
  say 'no'
end
