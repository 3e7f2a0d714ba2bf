say '0102'b
