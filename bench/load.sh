#!/usr/bin/env bash
# Times loading a 2-million-line text file (about 100 MB): load and quit,
# and load and FILE unchanged, beside `wc -l` on the same file as the floor.
# Prints the median wall time of several runs and the peak resident memory.
# Usage: bench/load.sh path/to/xed [runs]
set -eu
xed=$(realpath "${1:?usage: load.sh path/to/xed [runs]}")
runs=${2:-5}
work=$(mktemp -d "${TMPDIR:-/tmp}/xed-bench.XXXXXX")
trap 'rm -rf "$work"' EXIT
big=$work/big.txt

# Source-like lines of varied length: indentation, words, numbers.
awk 'BEGIN {
  srand(7);
  split("int char return while for static const void struct if else", kw, " ");
  for (i = 1; i <= 2000000; i++) {
    n = int(rand() * 6);
    s = sprintf("%*s", n * 4, "");
    s = s kw[1 + int(rand() * 11)] " name_" i " = value(" int(rand() * 100000) ", x);";
    w = int(rand() * 16);
    for (k = 0; k < w; k += 8) s = s " /*pad*/";
    print s;
  }
}' > "$big"
size=$(stat -c %s "$big")

# One measurement: "seconds peak_kb cpu_seconds" of a command.  CPU time
# (user + system) is the steadier figure on a machine shared with others.
measure() {
  /usr/bin/time -f "%e %M %U %S" -o "$work/t" "$@" >/dev/null 2>&1 || true
  awk '{ print $1, $2, $3 + $4 }' "$work/t"
}

# Median of the runs of a command: prints "seconds peak_kb cpu_seconds".
median() {
  for _ in $(seq "$runs"); do measure "$@"; done | sort -n | awk -v n="$runs" \
    '{ t[NR] = $1; m[NR] = $2; c[NR] = $3 } END { i = int((n + 1) / 2); print t[i], m[i], c[i] }'
}

cd "$work"
mkdir -p home
export HOME=$work/home
lines=$(wc -l < "$big")
echo "file: $lines lines, $size bytes"
ratio() { awk -v m="$1" -v s="$size" 'BEGIN { printf "%.2f", m * 1024 / s }'; }
read -r t m c <<<"$(median wc -l "$big")"
echo "wc -l:               $t s  cpu $c s  peak ${m} kB"
read -r t m c <<<"$(median "$xed" -batch -np -c qquit "$big")"
echo "load and QQUIT:      $t s  cpu $c s  peak ${m} kB  ($(ratio "$m")x file size)"
read -r t m c <<<"$(median "$xed" -batch -np -c file "$big")"
echo "load and FILE:       $t s  cpu $c s  peak ${m} kB  ($(ratio "$m")x file size)"
