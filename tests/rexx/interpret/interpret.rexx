/* INTERPRET runs in the current frame; labels in its text stay private. */
interpret 'a = 1; b = a + 1'
say a b
do i = 1 to 3
  interpret 'if i = 2 then iterate; say "loop" i'
end
cmd = 'say "built:" 6*7'
interpret cmd
interpret 'x:'
say symbol('X')
say f(5)
exit
f: interpret 'return arg(1) * 2'
