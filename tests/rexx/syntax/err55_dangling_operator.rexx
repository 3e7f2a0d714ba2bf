say 1 +
say 2
