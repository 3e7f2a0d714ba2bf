#!/usr/bin/env bash
# Per-key cost of the editor's page: a scripted session of 500 keys (typing,
# scrolling, ENTER) on a 2-million-line file, 60 by 200, through the headless
# screen, against the same start with no keys; once on an ASCII file, once on
# a UTF-8 file (accented and wide characters on every line) in a UTF-8 locale.
# Usage: bench/keys.sh [path to xed]   (default build/xed)
set -eu
. "$(dirname "$0")/key_mix.sh"
xed=${1:-$(dirname "$0")/../build/xed}
xed=$(realpath "$xed")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
awk 'BEGIN { for (i = 1; i <= 2000000; i++) printf "line %d of a source-like file with some text\n", i }' > big.txt
awk 'BEGIN { for (i = 1; i <= 2000000; i++) printf "ligne %d d\047un fichier été, 日本語 テキスト ñandú\n", i }' > utf8.txt
printf 'resize 60 200\n' > none.keys
{
  printf 'resize 60 200\n'
  key_mix
} > session.keys
keys=$key_mix_keys
median() { sort -n | awk '{ a[NR] = $1 } END { print a[int((NR + 1) / 2)] }'; }
time_of() { # prints the median seconds of 7 runs: keys, file (the load alone varies by some 6%)
  for k in 1 2 3 4 5 6 7; do
    LANG=C.UTF-8 /usr/bin/time -f "%e" -o t.out "$xed" -np -keys "$1" "$2" >/dev/null 2>&1 || true
    cat t.out
  done | median
}
for f in big.txt utf8.txt; do
  base=$(time_of none.keys "$f")
  full=$(time_of session.keys "$f")
  echo "$f:"
  awk -v b="$base" -v f="$full" -v k="$keys" 'BEGIN {
    printf "  start and load, no keys   %6.2f s\n", b
    printf "  with %d keys             %6.2f s\n", k, f
    printf "  per key                   %6.3f ms\n", (f - b) * 1000 / k }'
done
