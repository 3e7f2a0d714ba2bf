# ADD with a count one past what the file may hold is refused before any
# memory is asked for, and the session goes on; a count that just fits the
# line limit but not memory takes the out-of-memory path, which keeps every
# change made before it in a ".check" copy.
. "$(dirname "$0")/lib.sh"
need_as_limit
printf 'old\n' > "$W/f.txt"
# After "input edited" the file has 2 lines; after "input kept", 3.
RC=0
(cd "$W" && prlimit --as=800000000 "$XED" -batch -np -c "input edited" -c "add 2147483645" \
  -c "input kept" -c "add 2147483643" -c "input never" -c file f.txt \
  >"$W/.out" 2>"$W/.err" </dev/null) || RC=$?
[ "$RC" -eq 1 ] || fail "status $RC, wanted 1 (stderr: $(head -c 300 "$W/.err"))"
grep -q "No more memory available" "$W/.err" || fail "the reason is not given: $(head -c 300 "$W/.err")"
grep -q "Save successfull" "$W/.err" || fail "no rescue: $(head -c 300 "$W/.err")"
same "$W/f.txt.check" 'edited\nkept\nold\n'
same "$W/f.txt" 'old\n'
pass
