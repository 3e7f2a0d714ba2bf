#!/usr/bin/env bash
# Makes the pictures of the box of samples/everyitem.vorta (every kind of
# item) in the window under Xvfb: doc/dialog_window.png with the box as a
# window of its own, and doc/dialog.png with it drawn as a page of fields, as
# the terminal shows it. Usage: doc/dialog.sh path/to/xed
set -eu
xed=$(realpath "$1")
doc=$(realpath "$(dirname "$0")")
command -v xvfb-run >/dev/null || { echo "xvfb-run is not installed"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
cp "$doc/../samples/everyitem.vorta" .
printf '#include <stdio.h>\n\nint main(void)\n{\n    printf("hello\\n");\n    return 0;\n}\n' > f.c
shot() {  # picture, then the environment of the run
  out=$doc/$1
  shift
  env HOME="$work" XDG_CONFIG_HOME="$work/cfg" XED_WINDOW_SHOT="$out" "$@" \
    xvfb-run -a -s "-screen 0 1600x1000x24" "$xed" -np -noauto -Wh 30 -Ww 90 -c everyitem f.c
  echo "$out"
}
shot dialog_window.png XED_DIALOG_PAGES=
shot dialog.png XED_DIALOG_PAGES=1
