# Shared by the fault-injection scripts: each script is sourced with the
# editor's path in $XED and the interpreter's in $MOLBA, works in its own
# folder $W (kept on failure), and ends through pass, skip or fail.
#   fail MESSAGE     the fault lost or exposed something: exit 1
#   skip MESSAGE     the fault cannot be made on this machine: exit 77
#   pass             exit 0, or 1 when a sanitizer reported (a build with
#                    them: tests/sanitizer_reports.sh)
#   xb ARGS...       runs `xed -batch -np ARGS` in $W with a private HOME,
#                    standard streams in $W/.out and $W/.err, status in $RC
#   same FILE TEXT   FILE holds exactly TEXT (printf-style escapes)
#   mode FILE        the file's permission bits in octal
#   as_user CMD...   runs CMD as an unprivileged user when we are root
#                    (permission bits mean nothing to root)
#   need_as_limit    skips unless the editor can run under an address-space
#                    limit: prlimit is there and no sanitizer is built in
#                    (they reserve more address space than a limit leaves)
set -u
XED=$(realpath "$1")
MOLBA=$(realpath "$2")
. "$(dirname "${BASH_SOURCE[0]}")/../sanitizer_reports.sh"
san_watch
W=$(mktemp -d "${TMPDIR:-/tmp}/xedfault.XXXXXX")
chmod 755 "$W"
export HOME="$W/home" XDG_DATA_HOME="$W/home/.local/share" XDG_CONFIG_HOME="$W/home/.config" \
  XDG_STATE_HOME="$W/home/.local/state"
mkdir -p "$HOME"
RC=0

fail() { echo "FAILED: $*"; echo "--- work folder kept: $W"; exit 1; }
skip() { echo "SKIP: $*"; rm -rf "$W"; exit 77; }
pass() {
  san_check || fail "the sanitizers reported"
  rm -rf "$W"
  exit 0
}

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

need_as_limit() {
  command -v prlimit >/dev/null || skip "prlimit is missing"
  if ldd "$XED" 2>/dev/null | grep -q 'libasan\|libtsan'; then
    skip "built with sanitizers, which need more address space than a limit leaves"
  fi
}

as_user() {
  if [ "$(id -u)" -ne 0 ]; then "$@"; return; fi
  command -v setpriv >/dev/null || skip "setpriv is missing"
  setpriv --reuid=65534 --regid=65534 --clear-groups env HOME="$HOME" "$@"
}
