#!/usr/bin/env bash
# Runs one REXX program through the stand-alone interpreter and compares.
#   name.rexx   the program (run from its own folder)
#   name.out    expected standard output (required unless name.err exists)
#   name.err    expected standard error
#   name.in     standard input (default: empty)
#   name.args   arguments, one a line
#   name.rc     expected exit status (default 0, or unchecked when name.err exists)
# In a build with the sanitizers any report of theirs fails the program
# (tests/sanitizer_reports.sh).
set -u
molba=$1
prog=$2
. "$(dirname "$0")/../sanitizer_reports.sh"
san_watch
dir=$(dirname "$prog")
base=$(basename "$prog" .rexx)
stem="$dir/$base"
work=$(mktemp -d "${TMPDIR:-/tmp}/xed-rexx.XXXXXX")
args=()
if [ -f "$stem.args" ]; then
  while IFS= read -r line || [ -n "$line" ]; do args+=("$line"); done < "$stem.args"
fi
input=/dev/null
[ -f "$stem.in" ] && input="$stem.in"
# The user's folders all fall under the work folder: nothing a program
# writes to its settings, Trash or unit files reaches the real ones.
(cd "$dir" && env -u XDG_CONFIG_HOME -u XDG_DATA_HOME -u XDG_STATE_HOME -u XDG_CACHE_HOME \
  -u SYSTEMD_UNIT_PATH HOME="$work" "$molba" "$base.rexx" "${args[@]}" <"$input" >"$work/stdout" 2>"$work/stderr")
rc=$?
fail=0
if [ -f "$stem.rc" ]; then
  want=$(head -n1 "$stem.rc")
  [ "$rc" != "$want" ] && { echo "exit status $rc, expected $want"; fail=1; }
elif [ ! -f "$stem.err" ] && [ "$rc" != 0 ]; then
  echo "exit status $rc, expected 0"; fail=1
fi
if [ -f "$stem.out" ]; then
  diff -u --label expected --label actual "$stem.out" "$work/stdout" || fail=1
elif [ ! -f "$stem.err" ]; then
  echo "no $base.out or $base.err beside the program"; fail=1
fi
if [ -f "$stem.err" ]; then
  diff -u --label "expected stderr" --label "actual stderr" "$stem.err" "$work/stderr" || fail=1
fi
san_check || fail=1
if [ $fail -ne 0 ]; then
  echo "--- stderr:"; head -c 4000 "$work/stderr"
  echo "work folder kept: $work"
  exit 1
fi
rm -rf "$work"
exit 0
