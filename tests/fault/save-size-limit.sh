# A save that meets a file-size limit fails with its message instead of
# killing the process, keeps the old text on disk and the old backup, and a
# retry does not replace that backup by a broken file; the batch ends with
# status 1 and says what became of the text (here no copy can be written
# either: the limit holds for every file the process writes).
. "$(dirname "$0")/lib.sh"
command -v prlimit >/dev/null || skip "prlimit is missing"
printf 'old text\n' > "$W/f.txt"
printf 'older text\n' > "$W/f.txt%"
# A line of 100000 characters cannot go past a limit of 64 KiB.
big=$(head -c 100000 /dev/zero | tr '\0' n)
RC=0
(cd "$W" && prlimit --fsize=65536 "$XED" -batch -np -c "replace $big" -c save -c file f.txt \
  >"$W/.out" 2>"$W/.err" </dev/null) || RC=$?
[ "$RC" -eq 1 ] || fail "status $RC, wanted 1 (stderr: $(head -c 300 "$W/.err"))"
grep -q "error occured while writing" "$W/.err" || fail "no write error on the error stream"
grep -q "2 saves failed" "$W/.err" || fail "the failed saves are not reported: $(head -c 300 "$W/.err")"
same "$W/f.txt" 'old text\n'
same "$W/f.txt%" 'older text\n'
grep -q "changes to $W/f.txt lost: no copy could be written" "$W/.err" || fail "the loss is not reported"
ls -a "$W" | grep -q '~$' && fail "a temporary file was left behind: $(ls -a "$W")"
pass
