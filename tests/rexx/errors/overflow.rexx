say 1e300 * 1e300
