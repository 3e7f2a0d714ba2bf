if then say 1
