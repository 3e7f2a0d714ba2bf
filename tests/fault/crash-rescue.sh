# A crash (here a SIGSEGV from outside, as a fault inside would raise it)
# still writes the trace and keeps the changed file as a ".check" copy, and
# the process then ends by its signal.
. "$(dirname "$0")/lib.sh"
printf 'old\n' > "$W/f.txt"
printf 'do forever\nend\n' > "$W/spin.vorta"
(cd "$W" && exec "$XED" -batch -np -c "hash spin.vorta" -c "input edited" -c spin f.txt \
  >"$W/.out" 2>"$W/.err" </dev/null) &
pid=$!
sleep 0.5
kill -SEGV "$pid"
for _ in $(seq 80); do kill -0 "$pid" 2>/dev/null || break; sleep 0.05; done
kill -0 "$pid" 2>/dev/null && { kill -9 "$pid"; fail "still running after the crash"; }
RC=0
wait "$pid" || RC=$?
[ "$RC" -eq 139 ] || fail "status $RC, wanted 139 (the signal's)"
[ -s "$W/xed.trace" ] || fail "no trace written"
[ "$(mode "$W/xed.trace")" = 600 ] || fail "the trace is open to others: $(mode "$W/xed.trace")"
same "$W/f.txt.check" 'edited\nold\n'
same "$W/f.txt" 'old\n'
pass
