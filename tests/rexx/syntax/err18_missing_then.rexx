if a = 1
  say 'one'
say 'after'
