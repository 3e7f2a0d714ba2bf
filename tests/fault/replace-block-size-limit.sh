# REPLACE and CREATE of a block that meets a file-size limit fail with the
# save's messages: the replaced file keeps its old text, no new file and no
# temporary file is left, and the edited file keeps the lines.
. "$(dirname "$0")/lib.sh"
command -v prlimit >/dev/null || skip "prlimit is missing"
big=$(head -c 100000 /dev/zero | tr '\0' n)
printf '%s\nshort\n' "$big" > "$W/f.txt"
printf 'old text\n' > "$W/t.txt"
RC=0
(cd "$W" && prlimit --fsize=65536 "$XED" -batch -np -c ":1" -c "point .a" -c ":2" -c "point .b" \
  -c "pdfreplace t.txt .a .b" -c "create n.txt .a .b" -c "qquit" f.txt \
  >"$W/.out" 2>"$W/.err" </dev/null) || RC=$?
[ "$RC" -eq 1 ] || fail "status $RC, wanted 1 (stderr: $(head -c 300 "$W/.err"))"
[ "$(grep -c "error occured while writing" "$W/.err")" -eq 2 ] || fail "not two write errors: $(head -c 300 "$W/.err")"
same "$W/t.txt" 'old text\n'
[ -e "$W/n.txt" ] && fail "a broken n.txt was left"
[ -e "$W/t.txt%" ] && fail "a backup was made of a text that was not replaced"
ls -a "$W" | grep -q '~$' && fail "a temporary file was left behind: $(ls -a "$W")"
[ "$(wc -c < "$W/f.txt")" -eq 100007 ] || fail "the edited file changed"
pass
