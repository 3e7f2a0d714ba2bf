say "hello"
