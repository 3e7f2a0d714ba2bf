/* Runaway recursion ends with a clean error. */
say down(1)
exit
down: return down(arg(1) + 1)
