say 'start'
call nosuchroutine 1
