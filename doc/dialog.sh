#!/usr/bin/env bash
# Makes doc/dialog.png: a macro-built box with every kind of item, in the
# window under Xvfb. Usage: doc/dialog.sh path/to/xed
set -eu
xed=$(realpath "$1")
out=$(realpath "$(dirname "$0")")/dialog.png
command -v xvfb-run >/dev/null || { echo "xvfb-run is not installed"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
cat > mkbox.vorta <<'REXX'
/* A box with every kind of item, for the picture. */
call dy_start
call dy_label 1, 0, 'Name:'
call dy_input 8, 0, 20, 'Ada Lovelace'
call dy_tg 'Style', 1, 2, 0, 2, 3, 'Bold', 14, 3, 'Italic'
call dy_tg 'Align', 1, 5, 1, 2, 6, 'Left', 14, 6, 'Right'
call dy_ch 'Size:', 1, 8, 'small', 'medium', 'large'
fruit.0 = 5; fruit.1 = 'pear'; fruit.2 = 'apple'; fruit.3 = 'fig'; fruit.4 = 'plum'; fruit.5 = 'kiwi'
call dy_scl 1, 10, 3, 14, 'fruit', 'Multiple', 'Fruit'
call dy_input 18, 10, 0, 'Notes on'||'0a'x||'several lines'
call dy_button 2, 15, 'OK'
call dy_button 14, 15, 'Cancel'
h = dy_end('', 0, 0, 0, 'Every kind of item', 'Grab', 1)
call dy_stg h, 1, 1, 1
call dy_ascl h, 1, 'date', 2, 1
call dy_map h
REXX
printf '#include <stdio.h>\n\nint main(void)\n{\n    printf("hello\\n");\n    return 0;\n}\n' > f.c
HOME=$work XDG_CONFIG_HOME=$work/cfg XED_WINDOW_SHOT=$out \
  xvfb-run -a -s "-screen 0 1600x1000x24" "$xed" -np -noauto -Wh 30 -Ww 90 -c mkbox f.c
echo "$out"
