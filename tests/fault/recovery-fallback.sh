# A rescue whose ".check" copy cannot go beside the file (a folder the user
# may not write, holding a file the user may) goes to the user's private
# recovery folder instead, and the error stream says where.
. "$(dirname "$0")/lib.sh"
[ "$(id -u)" -eq 0 ] || [ -w /tmp ] || skip "no folder to set up"
mkdir "$W/ro" "$W/user"
printf 'old\n' > "$W/ro/f.txt"
printf 'do forever\nend\n' > "$W/user/spin.vorta"
if [ "$(id -u)" -eq 0 ]; then
  chmod 666 "$W/ro/f.txt"
  chown -R 65534:65534 "$W/user"
else
  chmod 555 "$W/ro"
fi
as_user true 2>/dev/null || skip "cannot run as an unprivileged user"
as_user test -x "$XED" || skip "the editor is not reachable by an unprivileged user"
state="$W/user/state"
AS=""
[ "$(id -u)" -eq 0 ] && AS="setpriv --reuid=65534 --regid=65534 --clear-groups"
(cd "$W/user" && exec $AS env HOME="$W/user" XDG_STATE_HOME="$state" \
  "$XED" -batch -np -c "hash spin.vorta" -c "input edited" -c spin ../ro/f.txt >"$W/.out" 2>"$W/.err" </dev/null) &
pid=$!
sleep 0.5
kill -TERM "$pid" # the same process all along: each step execs the next
for _ in $(seq 40); do kill -0 "$pid" 2>/dev/null || break; sleep 0.05; done
kill -0 "$pid" 2>/dev/null && { kill -9 "$pid"; fail "still running after a SIGTERM"; }
[ "$(id -u)" -eq 0 ] || chmod 755 "$W/ro"
same "$W/ro/f.txt" 'old\n'
[ ! -e "$W/ro/f.txt.check" ] || fail "a copy was made where the user may not write"
copy=$(ls "$state"/vorta/recovery/*f.txt.check 2>/dev/null | head -1)
[ -n "$copy" ] || fail "no copy in the recovery folder: $(cat "$W/.err")"
same "$copy" 'edited\nold\n'
grep -qF "after renaming in $copy" "$W/.err" || fail "the error stream does not say where: $(cat "$W/.err")"
[ "$(stat -c %a "$state/vorta/recovery")" = 700 ] || fail "the recovery folder is open to others"
pass
