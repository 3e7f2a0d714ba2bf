option lower sideways
