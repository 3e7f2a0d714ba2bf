# A macro that grows a string until memory runs out takes the editor's
# out-of-memory path: the changed file is kept as a ".check" copy and the
# process says why it ends, instead of aborting. The interpreter on its own
# ends such a program with error 5.
. "$(dirname "$0")/lib.sh"
need_as_limit
printf 'old\n' > "$W/f.txt"
printf "s = 'x'\ndo forever\n  s = s || s\nend\n" > "$W/grow.vorta"
cp "$W/grow.vorta" "$W/grow.rexx"
RC=0
(cd "$W" && prlimit --as=800000000 "$XED" -batch -np -c "hash grow.vorta" -c "input edited" -c grow f.txt \
  >"$W/.out" 2>"$W/.err" </dev/null) || RC=$?
[ "$RC" -eq 1 ] || fail "status $RC, wanted 1 (stderr: $(head -c 300 "$W/.err"))"
grep -q "No more memory available" "$W/.err" || fail "the reason is not given: $(head -c 300 "$W/.err")"
# The string's block is the interpreter's own: its size comes along.
grep -q "( size = [1-9][0-9]* )" "$W/.err" || fail "the size is not given: $(head -c 300 "$W/.err")"
grep -q "Save successfull" "$W/.err" || fail "no rescue: $(head -c 300 "$W/.err")"
same "$W/f.txt.check" 'edited\nold\n'
same "$W/f.txt" 'old\n'
RC=0
(cd "$W" && prlimit --as=300000000 "$MOLBA" grow.rexx >"$W/.out" 2>"$W/.err" </dev/null) || RC=$?
[ "$RC" -eq 5 ] || fail "molba: status $RC, wanted 5"
grep -q "Error 5 on line 3" "$W/.err" || fail "molba: no error 5: $(head -c 300 "$W/.err")"
pass
