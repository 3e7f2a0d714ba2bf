#!/usr/bin/env bash
# Builds the lexer and parser with libFuzzer and the address and
# undefined-behaviour sanitizers, and fuzzes them for a while.
#   tests/fuzz/run_fuzz.sh [seconds] [build folder]
# The corpus kept in the tree (tests/fuzz/corpus) seeds a scratch corpus in
# the build folder; the tree's corpus is never written to by a run.
set -eu
secs=${1:-600}
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
out=${2:-$root/build-fuzz}
mkdir -p "$out/corpus" "$out/crashes"
cxx=${CXX_FUZZ:-clang++}
srcs=()
for f in lex lex2 parse parse_expr tree rxerror; do srcs+=("$root/rexx/$f.cpp"); done
"$cxx" -std=c++20 -g -O1 -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined \
  -I"$root" "$here/fuzz_parse.cpp" "${srcs[@]}" -o "$out/fuzz_parse"
cp -n "$here"/corpus/* "$out/corpus/" 2>/dev/null || true
cd "$out/crashes"
exec nice -n 19 "$out/fuzz_parse" -max_total_time="$secs" -timeout=10 -rss_limit_mb=2048 \
  -max_len=4096 -dict="$here/rexx.dict" -print_final_stats=1 "$out/corpus"
