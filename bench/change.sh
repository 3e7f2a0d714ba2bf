#!/usr/bin/env bash
# Times searching and changing a 2-million-line source-like file (about
# 92 MB, `foo` on some 370,000 lines) as whole processes, beside the
# command-line tools on the same file:
#   c/foo/bar/ * * and FILE       against  sed -i s/foo/bar/g
#   /NEEDLE/ near the last line   against  vim -es (load included)
#   the same with R/NEE+DLE/      against  the plain search
# Prints the median wall time of several runs and the peak resident memory.
# Usage: bench/change.sh path/to/xed [runs]
default_runs=5
. "$(dirname "$0")/common.sh" "$@"
echo "file: $(wc -l < "$orig") lines, $size bytes, foo on $(grep -c foo "$orig") lines, $(grep -o foo "$orig" | wc -l) times"

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
