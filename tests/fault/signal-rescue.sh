# Signals from outside end a batch run only after its changed files are kept
# as ".check" copies, with the file's mode and through no planted link; a
# macro looping forever, one that traps the halt, and one waiting for a
# shell command are stopped within a second or two.
. "$(dirname "$0")/lib.sh"
cat > "$W/spin.vorta" <<'M'
do forever
end
M
cat > "$W/stubborn.vorta" <<'M'
signal on halt
again:
do forever
end
halt:
signal again
M
cat > "$W/waits.vorta" <<'M'
address unix 'sleep 60'
M
echo victim > "$W/victim"
n=0
for case in "TERM spin" "HUP spin" "INT stubborn" "QUIT spin" "USR1 spin" "TERM waits"; do
  set -- $case
  sig=$1 macro=$2
  n=$((n + 1))
  f="f$n.txt"
  printf 'old\n' > "$W/$f"
  chmod 600 "$W/$f"
  ln -s victim "$W/$f.check"
  (cd "$W" && exec "$XED" -batch -np -c "hash $macro.vorta" -c "input edited" -c "$macro" "$f" \
    >"$W/.out" 2>"$W/.err" </dev/null) &
  pid=$!
  sleep 0.5
  kill -"$sig" "$pid"
  for _ in $(seq 40); do kill -0 "$pid" 2>/dev/null || break; sleep 0.05; done
  if kill -0 "$pid" 2>/dev/null; then kill -9 "$pid"; fail "SIG$sig with $macro: still running after two seconds"; fi
  RC=0
  wait "$pid" || RC=$?
  [ "$RC" -ge 128 ] || fail "SIG$sig with $macro: status $RC"
  same "$W/$f" 'old\n'
  same "$W/$f.check" 'edited\nold\n'
  [ ! -L "$W/$f.check" ] || fail "SIG$sig: the planted link is still there"
  [ "$(mode "$W/$f.check")" = 600 ] || fail "SIG$sig: copy mode $(mode "$W/$f.check"), wider than the file's"
  grep -q "ended by SIG$sig" "$W/.err" || fail "SIG$sig: not said on the error stream: $(head -c 200 "$W/.err")"
  same "$W/victim" 'victim\n'
done
pass
