#!/usr/bin/env bash
# Times reading a 1,000,000-line file with LINEIN in a loop and with
# EXECIO * DISKR into a stem, and writing it with LINEOUT, in molba and in
# regina on the same programs and file.
#   bench/rexx_io.sh [path to molba]   (default: build/molba)
set -eu
molba=${1:-build/molba}
work=$(mktemp -d "${TMPDIR:-/tmp}/rexx_io.XXXXXX")
trap 'rm -rf "$work"' EXIT
seq -f 'line %g of the benchmark file, with some text after it' 1 1000000 > "$work/in.txt"
cat > "$work/linein.rexx" <<'R'
parse arg f
n = 0
do while lines(f) > 0
  l = linein(f); n = n + 1
end
say n
R
cat > "$work/execio.rexx" <<'R'
parse arg f
parse version v
/* regina takes EXECIO only through its own environment */
if pos('REGINA', translate(v)) > 0 then address execio '* DISKR' f '( STEM a. FINIS'
else 'EXECIO * DISKR' f '( STEM a. FINIS'
say a.0
R
cat > "$work/lineout.rexx" <<'R'
parse arg f o
do while lines(f) > 0
  call lineout o, linein(f)
end
call lineout o
R
run() {  # interpreter, program, args: prints seconds
  local s e
  s=$(date +%s.%N)
  (cd "$work" && "$1" "./$2" $3 >"$work/last.out" 2>&1) || cat "$work/last.out" >&2
  e=$(date +%s.%N)
  [ -s "$work/last.out" ] && [ "$(head -c 5 "$work/last.out")" != "10000" ] && head -3 "$work/last.out" >&2
  echo "$s $e" | awk '{printf "%.2f", $2 - $1}'
}
printf '%-10s %8s %8s\n' case molba regina
for c in linein execio lineout; do
  args="in.txt"
  [ $c = lineout ] && args="in.txt out.txt"
  m=$(run "$(realpath "$molba")" $c.rexx "$args"); rm -f "$work/out.txt"
  r=$(run regina $c.rexx "$args"); rm -f "$work/out.txt"
  printf '%-10s %8s %8s\n' $c "$m" "$r"
done
