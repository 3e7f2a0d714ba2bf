numeric form fancy
