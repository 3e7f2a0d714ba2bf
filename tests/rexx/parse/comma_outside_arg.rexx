parse value 'x' with a, b
