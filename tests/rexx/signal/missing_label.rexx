say 'before'
signal nowhere
