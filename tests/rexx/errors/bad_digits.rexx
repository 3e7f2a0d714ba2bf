numeric digits 15
say 'ok 15'
numeric digits 16
