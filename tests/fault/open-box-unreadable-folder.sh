#!/usr/bin/env bash
# The Open box started on a folder the user may not read: the box says so
# and offers only "..", and a name typed from there is still opened; the
# box never shows what it could not read, and nothing crashes.
. "$(dirname "$0")/lib.sh"
as_user true 2>/dev/null || skip "cannot run as an unprivileged user"
as_user test -x "$XED" || skip "the editor is not reachable by an unprivileged user"
mkdir -p "$W/user/locked" "$W/user/home"
printf 'main\n' > "$W/user/f"
printf 'other line\n' > "$W/user/other.txt"
printf 'secret\n' > "$W/user/locked/hidden.txt"
cat > "$W/user/keys" <<'KEYS'
type dy_open locked
key enter
dump
type ../other.txt
key enter
dump
KEYS
[ "$(id -u)" -eq 0 ] && chown -R 65534:65534 "$W/user"
chmod 311 "$W/user/locked"
RC=0
(cd "$W/user" && as_user env HOME="$W/user/home" "$XED" -np -keys keys f >"$W/.out" 2>"$W/.err" </dev/null) || RC=$?
chmod 755 "$W/user/locked"
[ "$RC" -eq 0 ] || fail "the editor ended with status $RC: $(head -c 300 "$W/.err")"
grep -q 'Unable to read this folder' "$W/.out" || fail "the box did not say the folder cannot be read"
grep -q '| \.\./' "$W/.out" || fail "the box did not offer the way up"
grep -q 'hidden.txt' "$W/.out" && fail "the box listed a folder it may not read"
grep -q '^===== other line' "$W/.out" || fail "the file named from there was not opened"
pass
