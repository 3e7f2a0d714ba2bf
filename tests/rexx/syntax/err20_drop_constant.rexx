drop a 5 b
