# Shared by the fault-injection scripts: each script is sourced with the
# editor's path in $XED and the interpreter's in $MOLBA, works in its own
# folder $W (kept on failure), and ends through pass, skip or fail.
#   fail MESSAGE     the fault lost or exposed something: exit 1
#   skip MESSAGE     the fault cannot be made on this machine: exit 77
#   pass             exit 0
#   xb ARGS...       runs `xed -batch -np ARGS` in $W with a private HOME,
#                    standard streams in $W/.out and $W/.err, status in $RC
#   same FILE TEXT   FILE holds exactly TEXT (printf-style escapes)
#   mode FILE        the file's permission bits in octal
#   as_user CMD...   runs CMD as an unprivileged user when we are root
#                    (permission bits mean nothing to root)
set -u
XED=$(realpath "$1")
MOLBA=$(realpath "$2")
W=$(mktemp -d "${TMPDIR:-/tmp}/xedfault.XXXXXX")
chmod 755 "$W"
export HOME="$W/home" XDG_DATA_HOME="$W/home/.local/share" XDG_CONFIG_HOME="$W/home/.config" \
  XDG_STATE_HOME="$W/home/.local/state"
mkdir -p "$HOME"
RC=0

fail() { echo "FAILED: $*"; echo "--- work folder kept: $W"; exit 1; }
skip() { echo "SKIP: $*"; rm -rf "$W"; exit 77; }
pass() { rm -rf "$W"; exit 0; }

xb() {
  RC=0
  (cd "$W" && "$XED" -batch -np "$@" >"$W/.out" 2>"$W/.err" </dev/null) || RC=$?
}

same() {
  local want
  want=$(printf "$2"; echo x)
  local got
  got=$(cat "$1" 2>/dev/null; echo x)
  [ "$got" = "$want" ] || fail "$1 holds [$(printf %s "${got%x}" | head -c 200)], wanted [$(printf %s "${want%x}" | head -c 200)]"
}

mode() { stat -c %a "$1"; }

as_user() {
  if [ "$(id -u)" -ne 0 ]; then "$@"; return; fi
  command -v setpriv >/dev/null || skip "setpriv is missing"
  setpriv --reuid=65534 --regid=65534 --clear-groups env HOME="$HOME" "$@"
}
