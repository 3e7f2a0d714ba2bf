# A file changed, deleted or created by another program after the load is
# not written over by a plain save in batch; the forcing form writes it.
. "$(dirname "$0")/lib.sh"
# The macro changes the file on disk within the same second as the load,
# keeping its size: only the nanoseconds tell.
cat > "$W/other.vorta" <<'M'
address unix arg(1)
M
printf 'mine\n' > "$W/f.txt"
xb -c "hash other.vorta" -c "input edited" -c "other echo thei > f.txt" -c "file" f.txt
[ "$RC" -eq 1 ] || fail "status $RC, wanted 1"
same "$W/f.txt" 'thei\n'
grep -q "changed on disk since it was loaded" "$W/vorta/@messages" "$W/.err" 2>/dev/null || fail "no message"
same "$W/f.txt.check" 'edited\nmine\n'

printf 'mine\n' > "$W/g.txt"
xb -c "hash other.vorta" -c "input edited" -c "other rm g.txt" -c "save" g.txt
[ "$RC" -eq 1 ] || fail "status $RC after a deleted file, wanted 1"
[ ! -e "$W/g.txt" ] || fail "a file deleted on disk was made again"

printf 'mine\n' > "$W/h.txt"
xb -c "hash other.vorta" -c "input edited" -c "other echo thei > h.txt" -c "ffile" h.txt
[ "$RC" -eq 0 ] || fail "status $RC after FFILE, wanted 0"
same "$W/h.txt" 'edited\nmine\n'
pass
