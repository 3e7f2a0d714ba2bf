#!/usr/bin/env bash
# Times SORT on the 2-million-line source-like file as whole processes
# (load, sort, save), beside sort(1) with one thread on the same file, in
# the caller's locale and in the C locale:
#   xed -c "sort all" -c file      against  sort --parallel=1 FILE -o FILE
#   xed -c "sort all d 1 10"       against  sort -r -k1.1,1.10 (a column key)
#   xed -c "nsort all 30 35"       the numeric compare on the call's argument
# Prints the median wall time of several runs and the peak resident memory.
# Usage: bench/sort.sh path/to/xed [runs]
. "$(dirname "$0")/common.sh" "$@"
echo "file: $(wc -l < "$orig") lines, $size bytes, locale ${LC_ALL:-${LANG:-unset}}"

read -r t m c <<<"$(median sort --parallel=1 f.txt -o f.txt)"
report "sort --parallel=1" "$t" "$m" "$c"
read -r t m c <<<"$(median env LC_ALL=C sort --parallel=1 f.txt -o f.txt)"
report "LC_ALL=C sort --parallel=1" "$t" "$m" "$c"
read -r t m c <<<"$(median "$xed" -batch -np -c "sort all" -c file f.txt)"
report "xed sort all and FILE" "$t" "$m" "$c"
cp "$orig" f.txt
"$xed" -batch -np -c "sort all" -c file f.txt
LC_ALL=C sort "$orig" | cmp -s - f.txt && echo "  (the same bytes as sort's in the C locale)" ||
  echo "  (DIFFERENT from sort's result)"
read -r t m c <<<"$(median env LC_ALL=C sort --parallel=1 -s -r -k1.1,1.10 f.txt -o f.txt)"
report "LC_ALL=C sort -s -r -k1.1,1.10" "$t" "$m" "$c"
read -r t m c <<<"$(median "$xed" -batch -np -c "sort all d 1 10" -c file f.txt)"
report "xed sort all d 1 10 and FILE" "$t" "$m" "$c"
read -r t m c <<<"$(median "$xed" -batch -np -c "nsort all 30 35" -c file f.txt)"
report "xed nsort all 30 35 and FILE" "$t" "$m" "$c"
read -r t m c <<<"$(median "$xed" -batch -np -c file f.txt)"
report "xed load and FILE (the floor)" "$t" "$m" "$c"
