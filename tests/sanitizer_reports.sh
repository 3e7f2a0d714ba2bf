# Sourced by the test runners. In a build with the sanitizers the test's
# registration sets XED_SANITIZED=1; every program the test starts then
# writes its sanitizer reports into a folder of the test's own, not to its
# standard error, where a terminal case would never see them and a case that
# leaves its status unchecked would let them pass. san_check fails the test
# when a report is there. Outside such a build both do nothing.
#   san_watch   reports of the programs started from now on go to $SAN_DIR
#   san_check   prints the reports and returns 1 when there is one; the
#               folder goes when there is none

san_watch() {
  [ "${XED_SANITIZED:-}" = 1 ] || return 0
  SAN_DIR=$(mktemp -d "${TMPDIR:-/tmp}/xed-san.XXXXXX")
  # Programs a test runs as another user report here too.
  chmod 1733 "$SAN_DIR"
  # Later words win: the folder replaces any log_path the caller gave.
  export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}log_path=$SAN_DIR/report"
  export UBSAN_OPTIONS="${UBSAN_OPTIONS:+$UBSAN_OPTIONS:}log_path=$SAN_DIR/report"
}

san_check() {
  [ "${XED_SANITIZED:-}" = 1 ] && [ -n "${SAN_DIR:-}" ] || return 0
  # Warnings (an allocation refused on purpose) are not reports.
  local found
  found=$(grep -l -E 'ERROR: [A-Za-z]*Sanitizer|runtime error:' "$SAN_DIR"/report.* 2>/dev/null)
  if [ -z "$found" ]; then
    rm -rf "$SAN_DIR"
    return 0
  fi
  echo "sanitizer reports (kept in $SAN_DIR):"
  # shellcheck disable=SC2086
  head -n 60 $found
  return 1
}
