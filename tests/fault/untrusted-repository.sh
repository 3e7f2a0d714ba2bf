# A cloned repository carrying a profile and a reprofile macro that run
# shell commands: opening one of its files runs neither, in batch or with no
# screen, and one line says how to trust the folder; once the folder is
# listed, both run.
. "$(dirname "$0")/lib.sh"
repo="$W/repo"
mkdir -p "$repo"
printf 'text\n' > "$repo/README"
printf "address unix 'touch pwned-by-profile'\n" > "$repo/profile.vorta"
printf "address unix 'touch pwned-by-reprofile'\n" > "$repo/reprofile.vorta"
run() { RC=0; (cd "$repo" && "$XED" "$@" README >"$W/.out" 2>"$W/.err" </dev/null) || RC=$?; }
for mode in -batch -nobatch; do
  if [ "$mode" = -batch ]; then run -batch -c "msg opened"; else run -c "msg opened"; fi
  [ "$RC" -eq 0 ] || fail "$mode: status $RC"
  [ ! -e "$repo/pwned-by-profile" ] || fail "$mode: the repository's profile ran"
  [ ! -e "$repo/pwned-by-reprofile" ] || fail "$mode: the repository's reprofile macro ran"
  grep -qF "vorta: reprofile.vorta in $repo not run: the folder is not trusted (list it in $XDG_CONFIG_HOME/vorta/trusted)" "$W/.err" ||
    fail "$mode: no line saying how to trust the folder: $(cat "$W/.err")"
  [ "$(grep -c 'reprofile.vorta.*not run' "$W/.err")" -eq 1 ] || fail "$mode: said more than once"
done
grep -qF "vorta: profile.vorta in $repo not run" "$W/.err" || fail "the skipped profile is not reported: $(cat "$W/.err")"
mkdir -p "$XDG_CONFIG_HOME/vorta"
echo "$repo" > "$XDG_CONFIG_HOME/vorta/trusted"
run -c "msg opened"
[ -e "$repo/pwned-by-profile" ] && [ -e "$repo/pwned-by-reprofile" ] || fail "a listed folder's profiles did not run: $(cat "$W/.err")"
pass
