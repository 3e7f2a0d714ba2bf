#!/usr/bin/env bash
# Keys while a shell window fills: a child writes 100 MB of lines into an
# XSHELL window while the session types 450 keys (the mix of bench/keys.sh)
# into the user's file, on a 60 by 200 headless page. The time from the
# first key to the last is taken by marks the session writes with SHELL,
# once with the child writing and once with a child that writes nothing;
# then the window is saved and compared with what the child wrote.
# Usage: bench/shell_keys.sh [path to xed]   (default build/xed)
set -eu
. "$(dirname "$0")/key_mix.sh"
xed=${1:-$(dirname "$0")/../build/xed}
xed=$(realpath "$xed")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
# 1,048,576 numbered lines of 100 bytes.
cat > gen.sh <<'GEN'
awk 'BEGIN { for (i = 1; i <= 1048576; i++) printf "%08d output line of a long build log, with some more text to make it one hundred bytes long....\n", i }'
GEN
sh gen.sh > expected.txt
printf 'edit me\n' > file.txt
mark() { printf 'key home\ntype shell date +%%s.%%N >> %s/marks\nkey enter\n' "$work"; }
session() { # the child's command
  printf 'resize 60 200\ntype xshell %s\nkey enter\ntype xedit file.txt\nkey enter\n' "$1"
  mark
  key_mix
  mark
  # The user's file is left unsaved; the window, now current, is saved.
  printf 'settle\nkey home\ntype qquit\nkey enter\ntype ssave %s/got.txt\nkey enter\n' "$work"
}
keys=$key_mix_keys
session "sh gen.sh" > busy.keys
session "true" > quiet.keys
median() { sort -n | awk '{ a[NR] = $1 } END { print a[int((NR + 1) / 2)] }'; }
span() { # median seconds between the marks over 5 runs of a script
  for k in 1 2 3 4 5; do
    rm -f marks got.txt
    LANG=C.UTF-8 "$xed" -np -keys "$1" file.txt >/dev/null 2>&1 || true
    awk 'NR == 1 { a = $1 } NR == 2 { printf "%.4f\n", $1 - a }' marks
    if [ "$2" = check ] &&
       ! { echo "sh gen.sh"; cat expected.txt; echo 'Shell "sh gen.sh" exiting with return status = 0'; } | cmp -s - got.txt; then
      echo "output lost: $(wc -c < got.txt 2>/dev/null) bytes kept" >&2
      kill $$
    fi
  done | median
}
quiet=$(span quiet.keys none)
busy=$(span busy.keys check)
awk -v q="$quiet" -v b="$busy" -v k="$keys" 'BEGIN {
  printf "%d keys, no output arriving       %7.3f s  %6.3f ms a key\n", k, q, q * 1000 / k
  printf "%d keys, 100 MB arriving meanwhile %7.3f s  %6.3f ms a key\n", k, b, b * 1000 / k }'
echo "every byte of the output kept: yes"
