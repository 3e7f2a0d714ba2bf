#!/usr/bin/env bash
# Times each benchmark program under molba and under the reference
# interpreter (regina): processor seconds (user + system), median of three
# runs, peak memory of the last run, and the ratio molba / regina.
# The outputs are compared too: a ratio means little when they differ.
#   bench/rexx/run.sh path/to/molba
set -u
molba=${1:?usage: run.sh path/to/molba}
here=$(cd "$(dirname "$0")" && pwd)
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

# Prints "cpu_seconds peak_kb" for one program under one interpreter.
measure() {
  for _ in 1 2 3; do
    /usr/bin/time -o "$tmp/t" -f '%U %S %M' "$@" >/dev/null 2>&1
    awk '{ printf "%.2f %s\n", $1 + $2, $3 }' "$tmp/t"
  done | sort -n | sed -n 2p
}

printf '%-10s %9s %9s %9s %9s %7s  %s\n' program molba_s molba_kb regina_s regina_kb ratio outputs
for p in "$here"/*.rexx; do
  name=$(basename "$p" .rexx)
  a=$("$molba" "$p" 2>&1)
  if command -v regina >/dev/null; then
    b=$(regina "$p" 2>&1)
    read -r rs rk <<<"$(measure regina "$p")"
  else
    b="(no regina)"; rs=0; rk=-
  fi
  read -r ms mk <<<"$(measure "$molba" "$p")"
  same=$([ "$a" = "$b" ] && echo agree || echo "differ: $a / $b")
  ratio=$(awk -v a="$ms" -v b="$rs" 'BEGIN { if (b > 0) printf "%.2f", a / b; else print "-" }')
  printf '%-10s %9s %9s %9s %9s %7s  %s\n' "$name" "$ms" "$mk" "$rs" "$rk" "$ratio" "$same"
done
