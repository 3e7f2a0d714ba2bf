#!/usr/bin/env bash
# Times each benchmark program under molba and under the reference
# interpreter (regina), median of three runs, and prints the ratio.
#   bench/rexx/run.sh path/to/molba
set -u
molba=${1:?usage: run.sh path/to/molba}
here=$(cd "$(dirname "$0")" && pwd)
median() { sort -n | sed -n 2p; }
tmp=$(mktemp -d)
printf '%-12s %10s %10s %8s %s\n' program molba_s regina_s ratio outputs
for p in "$here"/*.rexx; do
  name=$(basename "$p" .rexx)
  a=$("$molba" "$p" 2>&1)
  b=$(command -v regina >/dev/null && regina "$p" 2>&1 || echo "(no regina)")
  same=$([ "$a" = "$b" ] && echo agree || echo "differ: $a / $b")
  tm=$( (for _ in 1 2 3; do /usr/bin/time -f '%e' "$molba" "$p" 2>&1 >/dev/null | tail -n1; done) | median)
  tr=$( (for _ in 1 2 3; do /usr/bin/time -f '%e' regina "$p" 2>&1 >/dev/null | tail -n1; done) | median)
  ratio=$(awk -v a="$tm" -v b="$tr" 'BEGIN { if (b > 0) printf "%.2f", a / b; else print "-" }')
  printf '%-12s %10s %10s %8s %s\n' "$name" "$tm" "$tr" "$ratio" "$same"
done
rm -rf "$tmp"
