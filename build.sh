#!/usr/bin/env bash
# Sets up a Debian machine (run as root: installs what is missing), builds,
# then either opens the editor on the sample file (`run`) or runs every test
# (`test`).
set -eu
cd "$(dirname "$0")"
pkgs="build-essential cmake ninja-build libgtest-dev libncurses-dev libpcre2-dev tmux regina-rexx"
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
case "${1:-run}" in
  run)  exec ./build/xed samples/sample.c ;;
  test) cd build && exec ctest --output-on-failure -j2 ;;
  build) ;;
  *) echo "usage: build.sh [run|test|build]" >&2; exit 2 ;;
esac
