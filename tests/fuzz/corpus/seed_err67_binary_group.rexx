say '0101 1'b
