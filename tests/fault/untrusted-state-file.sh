# The agreements given on the page are kept in a private state file: a
# reprofile macro the user let run runs again in batch without a word, until
# its text changes; the file is made 0600 in a 0700 folder, and a link
# planted in its place, or a state folder others can enter, is never read
# or written through.
. "$(dirname "$0")/lib.sh"
command -v sha256sum >/dev/null || skip "sha256sum is missing"
repo="$W/repo"
mkdir -p "$repo"
printf 'text\n' > "$repo/README"
printf "address unix 'touch ran'\n" > "$repo/reprofile.vorta"
real_repo=$(cd "$repo" && pwd -P)
state="$XDG_STATE_HOME/vorta"
agreed="$state/trusted-files"
# The editor in the repository, with the arguments given; page KEYLINE runs
# it on the headless page, answering the question with one key script line.
run() { RC=0; rm -f "$repo/ran"; (cd "$repo" && "$XED" "$@" README >"$W/.out" 2>"$W/.err" </dev/null) || RC=$?; }
page() { printf '%s\n' "$1" > "$W/answers"; run -keys "$W/answers"; }
skipped() { [ ! -e "$repo/ran" ] && grep -qF "vorta: reprofile.vorta in $real_repo not run" "$W/.err"; }
entry() { echo "$(sha256sum < "$repo/reprofile.vorta" | cut -d' ' -f1) $real_repo/reprofile.vorta"; }

page "type Y"
[ -e "$repo/ran" ] || fail "Y did not run the macro: $(cat "$W/.err")"
[ "$(mode "$state")" = 700 ] || fail "state folder mode $(mode "$state")"
[ "$(mode "$agreed")" = 600 ] || fail "state file mode $(mode "$agreed")"
same "$agreed" "$(entry)\n"

run -batch
[ -e "$repo/ran" ] || fail "the agreement was not kept: $(cat "$W/.err")"
[ ! -s "$W/.err" ] || fail "a kept agreement still said something: $(cat "$W/.err")"

printf '/* changed */\n' >> "$repo/reprofile.vorta"
run -batch
skipped || fail "a changed macro ran, or was skipped without a word: $(cat "$W/.err")"

# A link in place of the state file, to a list that agrees to the new text.
printf '%s\n' "$(entry)" > "$W/forged"
rm "$agreed"
ln -s "$W/forged" "$agreed"
run -batch
skipped || fail "an agreement was read through a link: $(cat "$W/.err")"
page "type Y"
[ -e "$repo/ran" ] || fail "Y did not run the macro: $(cat "$W/.err")"
[ -L "$agreed" ] || fail "the planted link was replaced"
same "$W/forged" "$(entry)\n"

# A state folder that others can enter is not ours to believe.
rm "$agreed"
printf '%s\n' "$(entry)" > "$agreed"
run -batch
[ -e "$repo/ran" ] || fail "a valid agreement was not kept: $(cat "$W/.err")"
chmod 755 "$state"
run -batch
skipped || fail "an agreement was read from a folder others can enter: $(cat "$W/.err")"
pass
