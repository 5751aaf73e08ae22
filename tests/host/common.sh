# Part of the tests of the built program: HOST is the program, `check WHAT CONDITION...` ends the
# test when the condition does not hold.

HOST=$1
WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT

fail() {
  echo "FAILED: $*" >&2
  exit 1
}

check() {
  what=$1
  shift
  "$@" || fail "$what"
}

skip() {
  echo "skipped: $*"
  exit 77
}
