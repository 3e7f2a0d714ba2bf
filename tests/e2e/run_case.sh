#!/usr/bin/env bash
# Runs one end-to-end case folder through the real editor binary.
#
# A case folder holds plain files:
#   in      the starting file, copied into the work folder as "file" (or the
#           name given in "name")
#   cmd     commands, one a line, each given to `xed -batch -np` as a -c word
#   args    instead of cmd: the whole argument vector, one word a line
#   keys    a key script: the editor runs on the headless screen (-keys),
#           with the cmd lines as -c words; its dumps go to standard output
#   screen  expected standard output of a keys case (the dumps)
#   env     extra NAME=VALUE lines for the environment
#   prog    the name the program is started under (its argv[0]), such as fli;
#           with keys, the lines of "words" then end the argument vector
#           instead of the file's name
#   setup/  files copied into the work folder before the run
#   gen     a shell script run in the work folder before the run, for inputs
#           too large to keep in the tree
#   out     expected contents of the file after the run
#   msgs    expected @messages of the batch run (absent file = no messages)
#   stdout, stderr   expected standard output and error
#   status  expected exit status (default 0)
#   files   lines "path" that must exist afterwards, "!path" that must not
#   expect/ files that must be in the work folder afterwards with this content
#   unprivileged  (empty) the editor runs as a user the mode bits bind: when
#           the tests run as root, as nobody through setpriv (the case is
#           skipped when setpriv is missing)
# In the expected texts, @WORK@ stands for the work folder's real path.
# On failure the differences are printed and the work folder is kept. In a
# build with the sanitizers any report of theirs fails the case
# (tests/sanitizer_reports.sh).
set -u
xed=$1
case_dir=$2
. "$(dirname "$0")/../sanitizer_reports.sh"
san_watch
work=$(mktemp -d "${TMPDIR:-/tmp}/xed-e2e.XXXXXX")
mkdir -p "$work/home"
name=file
[ -f "$case_dir/name" ] && name=$(head -n1 "$case_dir/name")
[ -f "$case_dir/in" ] && cp "$case_dir/in" "$work/$name"
[ -d "$case_dir/setup" ] && cp -R "$case_dir/setup/." "$work/"
[ -f "$case_dir/gen" ] && (cd "$work" && bash "$case_dir/gen")

args=()
if [ -f "$case_dir/args" ]; then
  while IFS= read -r line || [ -n "$line" ]; do args+=("$line"); done < "$case_dir/args"
elif [ -f "$case_dir/keys" ]; then
  args=(-np -keys "$case_dir/keys")
  if [ -f "$case_dir/cmd" ]; then
    while IFS= read -r line || [ -n "$line" ]; do args+=(-c "$line"); done < "$case_dir/cmd"
  fi
  if [ -f "$case_dir/prog" ]; then
    if [ -f "$case_dir/words" ]; then
      while IFS= read -r line || [ -n "$line" ]; do args+=("$line"); done < "$case_dir/words"
    fi
  elif [ -f "$case_dir/in" ] || [ -f "$case_dir/gen" ]; then
    args+=("$name")
  fi
else
  args=(-batch -np)
  if [ -f "$case_dir/cmd" ]; then
    while IFS= read -r line || [ -n "$line" ]; do args+=(-c "$line"); done < "$case_dir/cmd"
  fi
  { [ -f "$case_dir/in" ] || [ -f "$case_dir/gen" ]; } && args+=("$name")
fi

envs=(HOME="$work/home" XDG_DATA_HOME="$work/home/.local/share" XDG_CONFIG_HOME="$work/home/.config"
  XDG_STATE_HOME="$work/home/.local/state")
if [ -f "$case_dir/env" ]; then
  while IFS= read -r line || [ -n "$line" ]; do [ -n "$line" ] && envs+=("$line"); done < "$case_dir/env"
fi

# Root reads and writes past any mode bits: a case about them runs the
# editor as nobody, in a work folder made its own.
as_user=()
if [ -f "$case_dir/unprivileged" ] && [ "$(id -u)" -eq 0 ]; then
  if ! command -v setpriv >/dev/null; then
    echo "SKIP: setpriv is missing, and as root the mode bits do not bind"
    rm -rf "$work"
    exit 77
  fi
  chown -R 65534:65534 "$work"
  as_user=(setpriv --reuid=65534 --regid=65534 --clear-groups)
fi

prog=$xed
[ -f "$case_dir/prog" ] && prog=$(head -n1 "$case_dir/prog")
# exec -a gives the program the name it decides its personality by.
(cd "$work" && "${as_user[@]}" env "${envs[@]}" bash -c 'exec -a "$0" "$@"' "$prog" "$xed" "${args[@]}" \
  >"$work/.stdout" 2>"$work/.stderr" </dev/null)
rc=$?

fail=0
real_work=$(cd "$work" && pwd -P)
check() {   # expected-file actual-file label
  if ! diff -u --label "expected $3" --label "actual $3" <(sed "s|@WORK@|$real_work|g" "$1") "$2"; then
    fail=1
  fi
}
want=0
[ -f "$case_dir/status" ] && want=$(head -n1 "$case_dir/status")
if [ "$rc" != "$want" ]; then
  echo "exit status $rc, expected $want"; fail=1
fi
msgfile="$work/vorta/@messages"
[ -f "$msgfile" ] || msgfile=/dev/null
if [ -f "$case_dir/msgs" ]; then check "$case_dir/msgs" "$msgfile" "@messages"; fi
if [ -f "$case_dir/out" ]; then check "$case_dir/out" "$work/$name" "$name"; fi
if [ -f "$case_dir/stdout" ]; then check "$case_dir/stdout" "$work/.stdout" "stdout"; fi
if [ -f "$case_dir/screen" ]; then check "$case_dir/screen" "$work/.stdout" "screen"; fi
if [ -f "$case_dir/stderr" ]; then check "$case_dir/stderr" "$work/.stderr" "stderr"; fi
if [ -f "$case_dir/files" ]; then
  while IFS= read -r f || [ -n "$f" ]; do
    [ -z "$f" ] && continue
    if [ "${f#!}" != "$f" ]; then
      [ -e "$work/${f#!}" ] && { echo "file ${f#!} should not exist"; fail=1; }
    else
      [ -e "$work/$f" ] || { echo "file $f should exist"; fail=1; }
    fi
  done < "$case_dir/files"
fi

if [ -d "$case_dir/expect" ]; then
  while IFS= read -r f; do
    rel=${f#"$case_dir/expect/"}
    if [ -f "$work/$rel" ]; then check "$f" "$work/$rel" "$rel"; else echo "file $rel is missing"; fail=1; fi
  done < <(find "$case_dir/expect" -type f | sort)
fi
san_check || fail=1
if [ $fail -ne 0 ]; then
  echo "--- stderr of the run:"; head -c 4000 "$work/.stderr"
  echo "work folder kept: $work"
  exit 1
fi
chmod -R u+rwX "$work" 2>/dev/null
rm -rf "$work"
exit 0
