/* A backquoted command under TRACE I, and prefix operators. */
trace i
y = `"echo 5"`
n = -y || \0
