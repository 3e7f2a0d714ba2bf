address nosuch 'x'
