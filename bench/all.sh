#!/usr/bin/env bash
# Times selective display and the block commands on the 2-million-line
# source-like file as whole processes, each beside the load alone:
#   all /foo/, then all            the selection and its undoing
#   exclude /foo/                  the other way round
#   delete * from line 2           one block of 1,999,999 lines
#   copy * :1 from line 2          the same block copied to the top
# Prints the median wall time of several runs and the peak resident memory.
# Usage: bench/all.sh path/to/xed [runs]
. "$(dirname "$0")/common.sh" "$@"
echo "file: $(wc -l < "$orig") lines, $size bytes"

read -r t m c <<<"$(median "$xed" -batch -np -c qquit f.txt)"
report "xed load and QQUIT (the floor)" "$t" "$m" "$c"
read -r t m c <<<"$(median "$xed" -batch -np -c "all /foo/" -c qquit f.txt)"
report "xed all /foo/" "$t" "$m" "$c"
read -r t m c <<<"$(median "$xed" -batch -np -c "all /foo/" -c all -c qquit f.txt)"
report "xed all /foo/, all" "$t" "$m" "$c"
read -r t m c <<<"$(median "$xed" -batch -np -c "exclude /foo/" -c qquit f.txt)"
report "xed exclude /foo/" "$t" "$m" "$c"
read -r t m c <<<"$(median "$xed" -batch -np -c :2 -c "delete *" -c qquit f.txt)"
report "xed delete * from line 2" "$t" "$m" "$c"
read -r t m c <<<"$(median "$xed" -batch -np -c :2 -c "copy * :1" -c qquit f.txt)"
report "xed copy * :1 from line 2" "$t" "$m" "$c"
