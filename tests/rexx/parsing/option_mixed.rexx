OPTION MIXED; abc = 1; say ABC abc
