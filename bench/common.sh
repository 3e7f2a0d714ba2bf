# The set-up and helpers of the whole-process benchmarks on the generated
# source-like file, sourced by them with their arguments (path/to/xed and
# the runs per figure, default $default_runs or 3). It leaves them in a
# scratch folder (removed at the end) with $xed, $orig (the data file),
# $size (its bytes), $runs and HOME set.
set -eu
xed=$(realpath "${1:?usage: $(basename "$0") path/to/xed [runs]}")
runs=${2:-${default_runs:-3}}
work=$(mktemp -d "${TMPDIR:-/tmp}/xed-bench.XXXXXX")
trap 'rm -rf "$work"' EXIT
orig=$work/orig.txt
bash "$(dirname "${BASH_SOURCE[0]}")/gen_source.sh" > "$orig"
size=$(stat -c %s "$orig")

measure() {
  /usr/bin/time -f "%e %M %U %S" -o "$work/t" "$@" >/dev/null 2>&1 || true
  awk '{ print $1, $2, $3 + $4 }' "$work/t"
}

# Median over the runs of a command that changes its file: a fresh copy each time.
median() {
  for _ in $(seq "$runs"); do
    cp "$orig" "$work/f.txt"
    measure "$@"
  done | sort -n | awk -v n="$runs" \
    '{ t[NR] = $1; m[NR] = $2; c[NR] = $3 } END { i = int((n + 1) / 2); print t[i], m[i], c[i] }'
}
ratio() { awk -v m="$1" -v s="$size" 'BEGIN { printf "%.2f", m * 1024 / s }'; }
report() { printf '%-34s %6s s  cpu %6s s  peak %8s kB  (%sx file)\n' "$1" "$2" "$4" "$3" "$(ratio "$3")"; }

cd "$work"
mkdir -p home
export HOME=$work/home
