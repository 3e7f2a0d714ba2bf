# The rule file is looked for in the working folder, the home folder and
# beside the program; an editor installed without one says so when asked
# to list the rules (and a plain compile goes on silently with none), and
# a rule file that cannot be opened is told apart from a missing one.
. "$(dirname "$0")/lib.sh"
# A copy of the program in a folder of its own has no shipped data beside it.
mkdir -p "$W/bin"
cp "$XED" "$W/bin/xed" || skip "cannot copy the program"
XED="$W/bin/xed"
printf 'int main(void) { return 0; }\n' > "$W/ok.c"
# COMPILE belongs to the page: a key script types it.
printf 'resize 8 60\ntype compile -l\nkey enter\ndump\n' > "$W/keys"
listing() { RC=0; (cd "$W" && "$XED" -np -keys keys ok.c >"$W/.out" 2>"$W/.err" </dev/null) || RC=$?; }
listing
grep -qxF '..... File vorta_compile.rules not found' "$W/.out" ||
  fail "no message 103: $(cat "$W/.out" "$W/.err")"
# A rule file in the working folder that is there but unreadable (a folder
# by that name cannot be opened as a file, even by root).
mkdir "$W/vorta_compile.rules"
listing
grep -qxF '..... Unable to open file vorta_compile.rules' "$W/.out" ||
  fail "no message 104: $(cat "$W/.out" "$W/.err")"
pass
