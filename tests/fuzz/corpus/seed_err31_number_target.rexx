x = 5 = 3   /* fine: a comparison */
5 = 3
