/* The command line after the program name is one argument. */
parse arg first rest
say arg() "[" || first || "][" || rest || "]"
arg up
say up
