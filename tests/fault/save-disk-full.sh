# A disk that fills up during a save: the old text and backup stay, and the
# text that could not be saved goes to the private recovery folder (the
# file's own folder being full), mode kept, and the error stream says where.
. "$(dirname "$0")/lib.sh"
mkdir "$W/small"
mount -t tmpfs -o size=64k tmpfs "$W/small" 2>/dev/null || skip "no tmpfs can be mounted here"
trap 'umount "$W/small" 2>/dev/null' EXIT
printf 'old text\n' > "$W/small/f.txt"
chmod 600 "$W/small/f.txt"
big=$(head -c 100000 /dev/zero | tr '\0' n)
xb -c "input $big" -c file small/f.txt
[ "$RC" -eq 1 ] || fail "status $RC, wanted 1"
grep -q "No space left on device" "$W/.err" || fail "no disk-full error: $(head -c 300 "$W/.err")"
same "$W/small/f.txt" 'old text\n'
copy=$(sed -n 's/^vorta: changes to .* kept in //p' "$W/.err")
case "$copy" in "$XDG_STATE_HOME"/vorta/recovery/*) ;; *) fail "the copy is not in the recovery folder: [$copy]";; esac
[ "$(wc -c < "$copy")" -eq 100010 ] || fail "the copy does not hold the new text"
[ "$(mode "$copy")" = 600 ] || fail "the copy's mode is $(mode "$copy"), wider than the file's"
[ "$(mode "$XDG_STATE_HOME/vorta/recovery")" = 700 ] || fail "the recovery folder is open to others"
umount "$W/small"
trap - EXIT
pass
