queue 'first'
queue 'second'
parse pull
pull rest
say rest queued()
