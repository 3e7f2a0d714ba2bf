#!/usr/bin/env bash
# The window under Xvfb at 60 lines by 200 columns on the 2-million-line
# source-like file: the editor types and pages by itself (500 keys, each sent
# once the previous one is on the screen) and reports the time from a key to
# the end of its paint (median, 99th percentile) and the time of a full
# repaint. Needs xvfb-run and an editor built with its window.
# Usage: bench/window.sh path/to/xed
. "$(dirname "$0")/common.sh" "$@"
command -v xvfb-run >/dev/null || { echo "xvfb-run is not installed"; exit 77; }
echo "file: $(wc -l < "$orig") lines, $size bytes"
cp "$orig" f.c
export XDG_CONFIG_HOME=$work/config XED_WINDOW_BENCH=$work/figures
rm -f "$work/figures"
xvfb-run -a -s "-screen 0 2560x1600x24" \
  "$xed" -np -noauto -Wh 60 -Ww 200 -font "%*%9%18" f.c >"$work/out" 2>&1 || true
if [ ! -s "$work/figures" ]; then
  echo "no figures: the window did not run"
  cat "$work/out"
  exit 1
fi
cat "$work/figures"
