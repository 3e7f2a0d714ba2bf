say 'before'
leave
