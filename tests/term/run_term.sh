#!/bin/bash
# Runs one terminal case: the real editor in a tmux pane of a fixed size,
# driven by the case's `steps` file, its screen read with capture-pane.
#
#   run_term.sh XED CASE_DIR
#
# The case folder holds `steps`, and any files to copy into the work folder
# (`in` becomes the file `f`). Steps, one a line (# starts a comment):
#
#   size ROWS COLS        the pane's size for the start (default 24 80)
#   term NAME             TERM for the start (default tmux-256color)
#   home DIR              HOME for the next starts: DIR inside the work folder
#                         (default the work folder itself)
#   profile on|off        whether the next starts look for a profile (default
#                         off: they pass -np)
#   env NAME=VALUE        the next starts have NAME set to VALUE (a relative
#                         PATH entry is taken in the work folder)
#   prog NAME             the next starts run the program under the name NAME
#                         (a link to it), as `fli`
#   start ARGS...         starts `xed -np ARGS` in the work folder (`xed ARGS`
#                         after `profile on`)
#   keys KEY...           tmux key names (Enter, F3, S-F1, PageDown, C-a, ...)
#   type TEXT             TEXT typed as it stands
#   raw HEX...            bytes sent as they are (escape sequences)
#   click ROW COL [BUTTON]  a button (1 left, the default, 2 middle, 3 right)
#                         pressed and released on a cell
#   wheel up|down [MODS]  the wheel; MODS the xterm bits (4 Shift, 16 Ctrl)
#   see TEXT              waits until the screen shows TEXT
#   notsee TEXT           waits until the screen no longer shows TEXT
#   row N TEXT            waits until screen row N (from 1) starts with TEXT
#   attr N TEXT           waits until screen row N, escape sequences included
#                         (ESC written as \e), holds TEXT
#   title TEXT            waits until the pane's title holds TEXT
#   resize ROWS COLS      changes the pane's size
#   signal NAME           sends the signal to the editor
#   close                 the pane goes away, as a terminal window closed (in
#                         a case that closes, the editor is the pane's own
#                         process: no job control, no `ended` or `rc`)
#   stopped               waits until the editor has stopped (job control)
#   resume                brings a stopped editor back to the foreground
#   ended                 waits until the editor has ended
#   rc N                  the editor ended with status N
#   shell COMMAND         runs COMMAND with bash in the work folder, as another
#                         program would change the files behind the editor
#   file NAME EXPECTED    the work file NAME equals the case file EXPECTED
#   exists NAME           the work file NAME exists
#   clipboard TEXT        waits until tmux's newest paste buffer, which the
#                         OSC 52 sequences of the editor fill, is TEXT (\n
#                         for a line end)
#
# Every wait gives up after a few seconds. Exit 0 passed, 1 failed, 77 when
# tmux is missing. At the end an editor still running is hung up and seen to
# end; in a build with the sanitizers any report of theirs fails the case
# (tests/sanitizer_reports.sh).
set -u
xed=$(realpath "$1")
case_dir=$2
command -v tmux >/dev/null || { echo "SKIP: tmux is not installed"; exit 77; }
. "$(dirname "$0")/../sanitizer_reports.sh"
san_watch

work=$(mktemp -d "${TMPDIR:-/tmp}/xedterm.XXXXXX")
sock="xedterm$$"
t() { tmux -L "$sock" -f /dev/null "$@"; }
cleanup() { end_editors; t kill-server >/dev/null 2>&1; }
trap cleanup EXIT

for f in "$case_dir"/*; do
  [ "$(basename "$f")" = steps ] && continue
  cp "$f" "$work/"
done
[ -f "$work/in" ] && mv "$work/in" "$work/f"

term=tmux-256color
infocmp "$term" >/dev/null 2>&1 || term=screen-256color
rows=24 cols=80
home=
np=-np
extra=
run=$xed # the path the editor is started by
fail() {
  echo "FAILED at line $n: $line"
  echo "$*"
  echo "--- screen:"
  t capture-pane -p -t x 2>/dev/null
  echo "--- work folder kept: $work"
  trap - EXIT
  cleanup
  exit 1
}

screen() { t capture-pane -p -t x 2>/dev/null; }

# Waits up to ten seconds for a shell test to hold.
until_ok() {
  for _ in $(seq 200); do
    # shellcheck disable=SC2294
    if eval "$1"; then return 0; fi
    sleep 0.05
  done
  return 1
}

editor_pid() {
  local pane
  pane=$(t display -p -t x '#{pane_pid}' 2>/dev/null) || return
  if [ "$closes" = yes ]; then
    ps -o args= -p "$pane" | grep -qF -- "$run" && echo "$pane"
  else
    pgrep -P "$pane" -f "$run" | head -1
  fi
}
closes=no
grep -q '^close' "$case_dir/steps" && closes=yes
editors=() # every editor started, to see them end

# Whether the editor of that process number is there and not a zombie.
running() {
  local s
  s=$(ps -o stat=,args= -p "$1" 2>/dev/null) || return 1
  [[ $s != Z* && $s == *"$run"* ]]
}

# Editors still running are hung up, as by their terminal's shell, and seen
# to end before the terminal goes: a sanitizer build looks for leaks as the
# program ends, stopping it meanwhile, and a SIGCONT from its process group
# being orphaned in that moment would leave it spinning.
end_editors() {
  local p
  for p in "${editors[@]}"; do
    [ -n "$p" ] || continue
    if running "$p"; then
      kill -HUP "$p"
      # Only a stopped editor is continued: one that is running may already
      # be looking for leaks by the time a SIGCONT would come.
      [[ $(ps -o stat= -p "$p" 2>/dev/null) == T* ]] && kill -CONT "$p"
    fi
    until_ok '! running "$p"' || {
      echo "editor $p of ${#editors[@]} still running:"
      ps -o pid=,pgid=,tpgid=,stat=,wchan:20=,pcpu=,args= -p "$p"
      grep -E "^(State|SigPnd|ShdPnd|SigBlk|SigIgn|SigCgt|Threads)" "/proc/$p/status"
      return 1
    }
  done
}

n=0
while IFS= read -r line || [ -n "$line" ]; do
  n=$((n + 1))
  case "$line" in ''|'#'*) continue ;; esac
  verb=${line%% *}
  rest=${line#"$verb"}
  rest=${rest# }
  case "$verb" in
    size) read -r rows cols <<<"$rest" ;;
    term) term=$rest ;;
    home) home=/$rest; mkdir -p "$work$home" ;;
    profile) if [ "$rest" = on ]; then np=; else np=-np; fi ;;
    env) extra="$extra '$rest'" ;;
    prog) mkdir -p "$work/.prog" && ln -sf "$xed" "$work/.prog/$rest" && run=$work/.prog/$rest ;;
    start)
      # A job-control shell, so that a stopped editor can be brought back:
      # while .stopped exists the editor is stopped; removing it resumes.
      envs="env -u DISPLAY -u WAYLAND_DISPLAY TERM=$term LANG=C.UTF-8 HOME='$work$home' XDG_CONFIG_HOME='$work$home/.config' XDG_DATA_HOME='$work$home/.local' XDG_STATE_HOME='$work$home/.state'$extra"
      if [ "$closes" = yes ]; then
        # The editor leads the terminal's session, so the hang-up and the
        # SIGCONT that goes with it reach it as the terminal goes. Under a
        # shell they would come only as the shell exits, which may be while
        # a sanitizer build, already ending on the lost terminal, has
        # stopped itself to look for leaks; a SIGCONT then cancels the stop
        # it waits for, and it never ends.
        printf "cd '%s'\nexec %s '%s' %s %s\n" "$work" "$envs" "$run" "$np" "$rest" >"$work/.run"
      else
      cat >"$work/.run" <<EOS
set -m
cd '$work'
$envs '$run' $np $rest
rc=\$?
while [ \$rc -gt 128 ] && [ -n "\$(jobs -s)" ]; do
  touch .stopped
  while [ -e .stopped ]; do sleep 0.05; done
  fg >/dev/null
  rc=\$?
done
echo \$rc > .rc
sleep 60
EOS
      fi
      t new-session -d -s x -x "$cols" -y "$rows" "bash '$work/.run'" || fail "tmux did not start"
      # Programs in the pane may set the clipboard (OSC 52) for the cases to read.
      t set -s set-clipboard on
      until_ok '[ -n "$(editor_pid)" ] || [ -f "$work/.rc" ]' || fail "the editor did not start"
      editors+=("$(editor_pid)")
      ;;
    keys) t send-keys -t x $rest ;;
    type) t send-keys -t x -l -- "$rest" ;;
    raw) t send-keys -t x -H $rest ;;
    click)
      read -r r c b <<<"$rest"
      b=$(( ${b:-1} - 1 ))
      t send-keys -t x -l -- $'\e'"[<$b;$c;${r}M"$'\e'"[<$b;$c;${r}m"
      ;;
    wheel)
      read -r dir mods <<<"$rest"
      b=64
      [ "$dir" = down ] && b=65
      b=$((b + ${mods:-0}))
      t send-keys -t x -l -- $'\e'"[<$b;1;1M"
      ;;
    see) until_ok 'screen | grep -qF -- "$rest"' || fail "not on the screen: $rest" ;;
    notsee) until_ok '! screen | grep -qF -- "$rest"' || fail "still on the screen: $rest" ;;
    row)
      r=${rest%% *}
      want=${rest#"$r" }
      until_ok 'screen | sed -n "${r}p" | grep -q "^$(printf %s "$want" | sed "s/[][\\.*^$]/\\\\&/g")"' ||
        fail "row $r does not start with: $want"
      ;;
    attr)
      r=${rest%% *}
      want=$(printf '%b' "${rest#"$r" }")
      until_ok 't capture-pane -e -p -t x | sed -n "${r}p" | grep -qF -- "$want"' ||
        fail "row $r has not: ${rest#"$r" } in $(t capture-pane -e -p -t x | sed -n "${r}p" | cat -v)"
      ;;
    title)
      until_ok 't display -p -t x "#{pane_title}" | grep -qF -- "$rest"' ||
        fail "title: $(t display -p -t x '#{pane_title}')"
      ;;
    resize) read -r rr cc <<<"$rest"; t resize-window -t x -x "$cc" -y "$rr" ;;
    signal) p=$(editor_pid); [ -n "$p" ] || fail "no editor to signal"; kill -s "$rest" "$p" ;;
    close) t kill-server ;;
    stopped) until_ok '[ -f "$work/.stopped" ]' || fail "the editor did not stop" ;;
    resume) rm -f "$work/.stopped" ;;
    ended) until_ok '[ -f "$work/.rc" ]' || fail "the editor is still running" ;;
    rc) [ "$(cat "$work/.rc")" = "$rest" ] || fail "status $(cat "$work/.rc"), wanted $rest" ;;
    file)
      read -r name expected <<<"$rest"
      until_ok 'cmp -s "$work/$name" "$case_dir/$expected"' ||
        fail "$(diff -u "$case_dir/$expected" "$work/$name" 2>&1)"
      ;;
    shell) (cd "$work" && bash -c "$rest") || fail "the command failed" ;;
    clipboard)
      want=$(printf '%b' "$rest")
      until_ok '[ "$(t show-buffer 2>/dev/null)" = "$want" ]' ||
        fail "clipboard: $(t show-buffer 2>&1 | cat -v)"
      ;;
    exists) until_ok '[ -e "$work/$rest" ]' || fail "no file $rest in: $(ls -A "$work")" ;;
    *) fail "unknown step" ;;
  esac
done <"$case_dir/steps"
end_editors || fail "an editor did not end on a hang-up"
t kill-server >/dev/null 2>&1
san_check || fail "the sanitizers reported"
rm -rf "$work"
echo PASSED
exit 0
