x = 'abc'
say x[0]
