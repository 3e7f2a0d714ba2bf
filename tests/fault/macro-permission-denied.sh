#!/usr/bin/env bash
# A macro's system functions meet a folder it may not write and a settings
# store it may not change: each refusal is a result (an error number, a
# count of failures with a message, 1 for the registry), never a crash, and
# the refused folder is left as it was.
. "$(dirname "$0")/lib.sh"
as_user true 2>/dev/null || skip "cannot run as an unprivileged user"
as_user test -x "$MOLBA" || skip "the interpreter is not reachable by an unprivileged user"
mkdir -p "$W/ro/config" "$W/user"
echo keep > "$W/ro/f.txt"
chmod 555 "$W/ro" "$W/ro/config"
chmod 777 "$W/user"
cat > "$W/user/p.rexx" <<'PROG'
say 'rm' rm('../ro/f.txt')
say 'wipe' wipe('../ro/f.txt')
say 'recycle' recycle('../ro/f.txt')
say 'mv' mv('../ro/f.txt', 'moved.txt')
say 'cp' cp('../ro/f.txt', '../ro/copy.txt')
say 'mkdir' mkdir('../ro/new/deeper')
say 'fileconv' fileconv('../ro/f.txt', 'dos')
say 'ln' ln('f.txt', '../ro/link')
say 'script' script('../ro/session.log')
say 'registry' registry_set('HKEY_CURRENT_USER', 'Soft\App', 'n', 'v')
say 'state' word(state('../ro/f.txt'), 1) rc
PROG
AS=""
[ "$(id -u)" -eq 0 ] && AS="setpriv --reuid=65534 --regid=65534 --clear-groups"
RC=0
(cd "$W/user" && $AS env HOME="$W/user" XDG_CONFIG_HOME="$W/ro/config" XDG_DATA_HOME="$W/user/share" \
  "$MOLBA" p.rexx >"$W/.out" 2>"$W/.err" </dev/null) || RC=$?
[ "$RC" -eq 0 ] || fail "the macro ended with status $RC: $(head -c 300 "$W/.err")"
same "$W/.out" "rm 1\nwipe 1\nrecycle 1\nmv 13\ncp 1\nmkdir 13\nfileconv 13\nln 13\nscript 1\nregistry 1\nstate F 0\n"
grep -q '^Unable to remove "../ro/f.txt": Permission denied$' "$W/.err" || fail "no message for rm: $(cat "$W/.err")"
grep -q '^REGISTRY_SET Error: Unable to Set Value$' "$W/.err" || fail "no message for the registry: $(cat "$W/.err")"
grep -q '^SCRIPT: Unable to open file "../ro/session.log": Permission denied$' "$W/.err" || fail "no message for script"
same "$W/ro/f.txt" "keep\n"
[ "$(ls -A "$W/ro")" = "$(printf 'config\nf.txt')" ] || fail "the refused folder changed: $(ls -A "$W/ro")"
[ -z "$(ls -A "$W/ro/config")" ] || fail "the settings store changed"
chmod 755 "$W/ro" "$W/ro/config"
pass
