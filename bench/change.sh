#!/usr/bin/env bash
# Times searching and changing a 2-million-line source-like file (about
# 92 MB, `foo` on some 370,000 lines) as whole processes, beside the
# command-line tools on the same file:
#   c/foo/bar/ * * and FILE       against  sed -i s/foo/bar/g
#   /NEEDLE/ near the last line   against  vim -es (load included)
#   the same with R/NEE+DLE/      against  the plain search
# Prints the median wall time of several runs and the peak resident memory.
# Usage: bench/change.sh path/to/xed [runs]
set -eu
xed=$(realpath "${1:?usage: change.sh path/to/xed [runs]}")
runs=${2:-5}
work=$(mktemp -d "${TMPDIR:-/tmp}/xed-bench.XXXXXX")
trap 'rm -rf "$work"' EXIT
orig=$work/orig.txt

awk 'BEGIN {
  srand(11);
  split("int char return while for static const void struct if else", kw, " ");
  for (i = 1; i <= 2000000; i++) {
    n = int(rand() * 4);
    s = sprintf("%*s", n * 4, "");
    s = s kw[1 + int(rand() * 11)] " value_" i " = call(" int(rand() * 100000) ", y, z);";
    r = rand();
    if (r < 0.1833) {
      s = s " /* foo */";
      if (rand() < 0.1687) s = s " foo_" i;
    }
    if (i == 1999990) s = s " NEEDLE";
    print s;
  }
}' > "$orig"
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

cd "$work"
mkdir -p home
export HOME=$work/home
echo "file: $(wc -l < "$orig") lines, $size bytes, foo on $(grep -c foo "$orig") lines, $(grep -o foo "$orig" | wc -l) times"
ratio() { awk -v m="$1" -v s="$size" 'BEGIN { printf "%.2f", m * 1024 / s }'; }
report() { printf '%-34s %6s s  cpu %6s s  peak %8s kB  (%sx file)\n' "$1" "$2" "$4" "$3" "$(ratio "$3")"; }

read -r t m c <<<"$(median sed -i s/foo/bar/g f.txt)"
report "sed -i s/foo/bar/g" "$t" "$m" "$c"
read -r t m c <<<"$(median "$xed" -batch -np -c :1 -c "c/foo/bar/ * *" -c file f.txt)"
report "xed c/foo/bar/ * * and FILE" "$t" "$m" "$c"
cp "$orig" f.txt
"$xed" -batch -np -c :1 -c "c/foo/bar/ * *" -c file f.txt
sed s/foo/bar/g "$orig" | cmp -s - f.txt && echo "  (the same bytes as sed's)" || echo "  (DIFFERENT from sed's result)"
if command -v vim >/dev/null; then
  read -r t m c <<<"$(median vim -u NONE -es -c /NEEDLE -c "qa!" f.txt)"
  report "vim -es /NEEDLE" "$t" "$m" "$c"
else
  echo "vim -es /NEEDLE                    (vim is not installed)"
fi
read -r t m c <<<"$(median "$xed" -batch -np -c /NEEDLE/ -c qquit f.txt)"
report "xed /NEEDLE/" "$t" "$m" "$c"
read -r t m c <<<"$(median "$xed" -batch -np -c "R/NEE+DLE/" -c qquit f.txt)"
report "xed R/NEE+DLE/" "$t" "$m" "$c"
read -r t m c <<<"$(median "$xed" -batch -np -c "case m i" -c /needle/ -c qquit f.txt)"
report "xed /needle/ ignoring case" "$t" "$m" "$c"
read -r t m c <<<"$(median "$xed" -batch -np -c qquit f.txt)"
report "xed load and QQUIT (the floor)" "$t" "$m" "$c"
