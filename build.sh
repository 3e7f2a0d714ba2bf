#!/usr/bin/env bash
# Sets up a Debian machine (run as root: installs what is missing), builds,
# then either opens the editor on the sample file (`run`) or runs every test
# (`test`), the second time on a build with the sanitizers.
set -eu
cd "$(dirname "$0")"
pkgs="build-essential cmake ninja-build libgtest-dev libncurses-dev libpcre2-dev tmux regina-rexx qt6-base-dev fonts-dejavu-core xvfb xauth libhunspell-dev hunspell-en-us man-db"
missing=""
for p in $pkgs; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing="$missing $p"
done
if [ -n "$missing" ]; then
  apt-get update
  DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $missing
fi
cmake -S . -B build -G Ninja >/dev/null
cmake --build build
# The whole suite again on a build with the address and undefined-behaviour
# sanitizers; any report they write, leaks at exit included, fails it.
sanitized_suite() {
  cmake -S . -B build-san -G Ninja -DXED_SANITIZE=ON >/dev/null
  cmake --build build-san
  local reports=$PWD/build-san/reports
  rm -rf "$reports"
  mkdir -p "$reports"
  ASAN_OPTIONS="detect_leaks=1:allocator_may_return_null=1:log_path=$reports/asan" \
  LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp:print_suppressions=0" \
  UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1:log_path=$reports/ubsan" \
    bash -c 'cd build-san && ctest --output-on-failure -j2' || return 1
  # Warnings (a refused huge allocation a test asks for) are not failures.
  if grep -l -E 'ERROR: |runtime error' "$reports"/* 2>/dev/null; then
    echo "sanitizer reports:"
    grep -h -A 30 -E 'ERROR: |runtime error' "$reports"/* | head -n 80
    return 1
  fi
}
case "${1:-run}" in
  run)  exec ./build/xed samples/sample.c ;;
  test) (cd build && ctest --output-on-failure -j2) && sanitized_suite ;;
  build) ;;
  *) echo "usage: build.sh [run|test|build]" >&2; exit 2 ;;
esac
