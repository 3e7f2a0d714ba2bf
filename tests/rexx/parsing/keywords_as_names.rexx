/* Words of the language stay variables where they cannot open a clause */
do = 3; say do
say = 'said'; say say
end = 1; say end + 1
value = 'v'; say value
then = 't'; say then
i = 0
do forever; i = i + 1; if i > 2 then leave; end
say i
do j = 1 to 3; end j
say j
if \(a = 'B') then say 'not'
select; when i = 3 then say 'when'; otherwise say 'other'; end
