say 'abc'x
