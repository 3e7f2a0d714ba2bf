x = 1
say x; else say 0
