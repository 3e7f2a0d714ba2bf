/* Every DO form, LEAVE and ITERATE with and without names. */
do i = 1 to 3; i = 10; end; say 'changed control:' i
n = 0; do i = 1 by 0 for 3; n = n + 1; end; say 'by 0 for 3:' n
do 2; say 'counted'; end
do 0; say 'never'; end
do i = 10 to 1 by -3; say 'down' i; end
do i = 1 to 2 by 0.5; say 'half' i; end
do i = 1 while i < 3; say 'while' i; end
do i = 1 until i >= 2; say 'until' i; end
do forever; say 'forever once'; leave; end
do w in 'alpha  beta' || '09'x || 'gamma'; say 'in' w; end
do i = 1 to 3
  do j = 1 to 3
    if j = 2 then iterate i
    if i = 3 then leave i
    say 'nest' i j
  end
end
do
  say 'plain block'
end
k = 0; do while k < 5; k = k + 1; if k // 2 = 0 then iterate; say 'odd' k; end
do i = 1 to 3 for 2; say 'for' i; end
say 'after loop' i
