/* Each template form: words, literals, columns, placeholders, variables. */
parse value 'a b c' with p1 p2; say '['p1']['p2']'
parse value 'abc' with 2 p1; say '['p1']'
parse value 'a,b' with p1 ',' p2; say '['p1']['p2']'
parse value 'a b' with . p2; say '['p2']'
s = 'hello world'; p = 'o'
parse var s (p) rest; say '['rest']'
parse var s 1 a 3 1 b2; say '['a']['b2']'
parse var s a +2 bb +3 c; say '['a']['bb']['c']'
parse var s 7 a -6 bb 6; say '['a']['bb']'
parse var s a =3 bb; say '['a']['bb']'
parse value '  lead  two   three ' with a bb c; say '['a']['bb']['c']'
parse value 'one' with a bb c; say '['a']['bb']['c']'
parse value 'x.y.z' with a '.' bb '.' c; say a bb c
parse value 'no match' with a '#' bb; say '['a']['bb']'
parse upper value 'MiXed case' with a bb; say a bb
n = 3; parse value 'abcdef' with =(n) a +(n); say '['a']'
parse value 'k=v' with key '=' val; say key val
parse numeric d; say d
parse source . . name .; say name
push 'stacked line'; parse pull line; say '['line']'
queue 'Upper me'; pull u; say u
call args 'one two', 'three'
exit
args: parse arg a bb, c; say '['a']['bb']['c']'
  arg q; say q
  return
