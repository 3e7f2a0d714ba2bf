#!/usr/bin/env bash
# Times the file list on a made directory of 100,000 files of varied sizes:
#   the first screen of `fli` (start, scan, sort by name, one screen of fields)
#   a sort by size and the redraw (function key 6)
#   twenty screens scrolled down (function key 8), per key
# Each figure is the median time of several runs of the whole process,
# less the run that stops one step earlier, so that start-up and the end of
# the process fall out. Usage: bench/flist.sh path/to/xed [runs] [files]
set -eu
xed=$(realpath "${1:?usage: $(basename "$0") path/to/xed [runs] [files]}")
runs=${2:-5}
count=${3:-100000}
work=$(mktemp -d "${TMPDIR:-/tmp}/xed-bench.XXXXXX")
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/home" "$work/big" "$work/empty"
export HOME=$work/home XDG_DATA_HOME=$work/home/.local/share XDG_STATE_HOME=$work/home/.local/state
python3 - "$work/big" "$count" <<'PY'
import os, sys
d, n = sys.argv[1], int(sys.argv[2])
for i in range(n):
    fd = os.open(os.path.join(d, "f%06d.%s" % (i, ("c", "h", "txt", "o")[i % 4])), os.O_WRONLY | os.O_CREAT, 0o644)
    os.ftruncate(fd, (i * 7919) % 100000)
    os.close(fd)
PY
ln -sf "$xed" "$work/fli"
printf '' > "$work/k0"
printf 'key f6\n' > "$work/k1"
for _ in $(seq 20); do echo 'key f8'; done > "$work/k2"
cat "$work/k1" "$work/k2" > "$work/k3"

# Median time in microseconds of a run of `fli` with a key script in a
# folder: the processor time the run took where perf(1) can count it (a
# machine shared with other work makes wall time too noisy), else wall time.
run() {
  for _ in $(seq "$runs"); do
    if command -v perf >/dev/null 2>&1; then
      (cd "$work/$1" && perf stat -x, -e task-clock "$work/fli" -np -keys "$work/$2" 2>&1 >/dev/null </dev/null |
        awk -F, '/task-clock/ { printf "%d\n", $1 * 1000 }')
    else
      (cd "$work/$1" && s=$(date +%s%N) && "$work/fli" -np -keys "$work/$2" >/dev/null 2>&1 </dev/null;
       e=$(date +%s%N); echo $(( (e - s) / 1000 )))
    fi
  done | sort -n | awk -v n="$runs" '{ t[NR] = $1 } END { print t[int((n + 1) / 2)] }'
}
base=$(run empty k0)
first=$(run big k0)
sorted=$(run big k1)
scrolled=$(run big k3)
ms() { awk -v u="$1" 'BEGIN { printf "%.3f", u / 1000 }'; }
echo "files: $count, runs: $runs"
printf '%-44s %9s ms\n' "start-up and end, empty folder" "$(ms "$base")"
printf '%-44s %9s ms\n' "first screen of $count files" "$(ms $((first - base)))"
printf '%-44s %9s ms\n' "sort by size and redraw" "$(ms $((sorted - first)))"
printf '%-44s %9s ms\n' "scroll down a screen, per key (20 keys)" "$(ms $(((scrolled - sorted) / 20)))"
