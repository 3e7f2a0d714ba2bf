x = 1
say "hello
