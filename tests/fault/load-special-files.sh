# Loading refuses what is not a regular file, without waiting: a pipe with
# no writer, an endless device, a link to either. Saving never replaces a
# pipe or what a link to one leads to.
. "$(dirname "$0")/lib.sh"
mkfifo "$W/pipe"
ln -s /dev/zero "$W/zero"
ln -s pipe "$W/topipe.txt"
for name in pipe /dev/zero zero topipe.txt; do
  RC=0
  (cd "$W" && timeout 10 "$XED" -batch -np -c "emsg done" "$name" >"$W/.out" 2>"$W/.err" </dev/null) || RC=$?
  [ "$RC" -ne 124 ] || fail "loading $name hung"
  grep -q "Not an editable file" "$W/vorta/@messages" 2>/dev/null || grep -q "Not an editable file" "$W/.err" ||
    fail "loading $name: no refusal ($(cat "$W/.err" "$W/vorta/@messages" 2>/dev/null | head -c 300))"
done
printf 'text\n' > "$W/f.txt"
xb -c "ssave topipe" f.txt
[ -p "$W/pipe" ] || fail "the pipe was replaced"
[ -L "$W/topipe.txt" ] || fail "the link to the pipe was replaced"
[ ! -e "$W/pipe%" ] && [ ! -e "$W/topipe.txt%" ] || fail "the pipe was renamed to a backup"
[ "$RC" -eq 1 ] || fail "status $RC after a refused save, wanted 1"
pass
