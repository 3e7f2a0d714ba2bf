#!/usr/bin/env bash
# Cost of syntax colouring on a 2-million-line C-like file, through the
# headless screen at 60 by 200: the same runs on the file named .c (coloured)
# and .txt (not coloured), median of 3 runs each.
#   load       start and show the top page
#   end        show the last page: the states of every line above worked out
#   keys       the key session of bench/keys.sh (typing, scrolling, ENTER)
#   comment    "/*" typed on the first line, ENTER, then the last page shown
# Usage: bench/syntax.sh [path to xed]   (default build/xed)
set -eu
. "$(dirname "$0")/key_mix.sh"
xed=${1:-$(dirname "$0")/../build/xed}
xed=$(realpath "$xed")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
awk 'BEGIN { for (i = 1; i <= 2000000; i++) {
  if (i % 50 == 1) printf "/* block %d of a source-like file */\n", i
  else if (i % 7 == 0) printf "    if (x%d > 0) { total += f(\"s%d\", x%d); } // note\n", i, i, i
  else printf "    int value_%d = compute(%d, buffer[%d]);\n", i, i, i % 64 } }' > big.c
cp big.c big.txt
printf 'resize 60 200\n' > load.keys
printf 'resize 60 200\nkey s-f12\n' > end.keys
{
  printf 'resize 60 200\n'
  key_mix
} > keys.keys
keys=$key_mix_keys
printf 'resize 60 200\nclick 31 7\ntype /*\nkey enter\nkey s-f12\n' > comment.keys
median() { sort -n | awk '{ a[NR] = $1 } END { print a[int((NR + 1) / 2)] }'; }
time_of() { # keys file, file: median seconds
  for k in 1 2 3; do
    /usr/bin/time -f "%e" -o t.out "$xed" -np -keys "$1" "$2" >/dev/null 2>&1 || true
    cat t.out
  done | median
}
printf '%-10s %8s %8s %8s\n' run coloured plain extra
for r in load end keys comment; do
  c=$(time_of $r.keys big.c)
  p=$(time_of $r.keys big.txt)
  awk -v r="$r" -v c="$c" -v p="$p" 'BEGIN { printf "%-10s %7.2fs %7.2fs %7.2fs\n", r, c, p, c - p }'
done
awk -v k="$keys" 'BEGIN { printf "(the keys run has %d keys)\n", k }'
