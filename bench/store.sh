#!/usr/bin/env bash
# Line store: 10,000 single-line inserts near the top of a 2-million-line
# file, one command each, against the same run without the inserts.
# Usage: bench/store.sh [path to xed]   (default build/xed)
set -eu
xed=${1:-$(dirname "$0")/../build/xed}
xed=$(realpath "$xed")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
awk 'BEGIN { for (i = 1; i <= 2000000; i++) printf "line %d of a source-like file with some text\n", i }' > big.txt
awk 'BEGIN { for (i = 1; i <= 10000; i++) printf "input inserted %d\n", i }' > ins.x
median() { sort -n | awk '{ a[NR] = $1 } END { print a[int((NR + 1) / 2)] }'; }
run() { # label, then xed arguments; prints median seconds and peak KiB of 3 runs
  local label=$1; shift
  local times=() mem=0
  for k in 1 2 3; do
    /usr/bin/time -f "%e %M" -o t.out "$xed" "$@" >/dev/null 2>&1
    read -r s m < t.out
    times+=("$s"); mem=$m
  done
  printf '%-28s %6s s  %8s KiB\n' "$label" "$(printf '%s\n' "${times[@]}" | median)" "$mem"
}
run "load 2M lines" -batch -np -c "qquit" big.txt
run "load + 10,000 inserts" -batch -np -c "hash ins.x" -c ":2" -c "ins" -c "qquit" big.txt
