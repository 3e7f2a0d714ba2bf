call x
do 1
x: say 'in'
end
