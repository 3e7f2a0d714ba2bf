say 'start'
interpret 'say (('
