/* SAY family, UPPER/LOWER, stack, ADDRESS, commands, EXIT values. */
sayn 'no newline '
say 'then newline'
s = 'MiXeD'; t = s
upper s; lower t; say s t
push 'b'; push 'a'; queue 'c'; say queued()
do queued(); pull l; say 'pulled' l; end
say address()
address sh 'exit 4'; say 'rc' rc address()
address unix; say address(); address; say address()
'echo from the shell'
say 'rc' rc
x = 'abc'; x[5] = 'z'; say x
x = 'xxxxx'; x[2:4] = 'ab'; say x
nop
exit 'ab'
