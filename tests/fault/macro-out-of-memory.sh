# A macro that grows a string until memory runs out takes the editor's
# out-of-memory path: the changed file is kept as a ".check" copy and the
# process says why it ends, instead of aborting. The interpreter on its own
# ends such a program with error 5.
. "$(dirname "$0")/lib.sh"
command -v prlimit >/dev/null || skip "prlimit is missing"
ldd "$XED" 2>/dev/null | grep -q 'libasan\|libtsan' && skip "built with sanitizers, which need more address space than a limit leaves"
printf 'old\n' > "$W/f.txt"
printf "s = 'x'\ndo forever\n  s = s || s\nend\n" > "$W/grow.vorta"
cp "$W/grow.vorta" "$W/grow.rexx"
RC=0
(cd "$W" && prlimit --as=800000000 "$XED" -batch -np -c "hash grow.vorta" -c "input edited" -c grow f.txt \
  >"$W/.out" 2>"$W/.err" </dev/null) || RC=$?
[ "$RC" -eq 1 ] || fail "status $RC, wanted 1 (stderr: $(head -c 300 "$W/.err"))"
grep -q "No more memory available" "$W/.err" || fail "the reason is not given: $(head -c 300 "$W/.err")"
grep -q "Save successfull" "$W/.err" || fail "no rescue: $(head -c 300 "$W/.err")"
same "$W/f.txt.check" 'edited\nold\n'
same "$W/f.txt" 'old\n'
RC=0
(cd "$W" && prlimit --as=300000000 "$MOLBA" grow.rexx >"$W/.out" 2>"$W/.err" </dev/null) || RC=$?
[ "$RC" -eq 5 ] || fail "molba: status $RC, wanted 5"
grep -q "Error 5 on line 3" "$W/.err" || fail "molba: no error 5: $(head -c 300 "$W/.err")"
pass
