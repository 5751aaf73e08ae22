# Part of the tests of the built program: HOST is the program, `check WHAT CONDITION...` ends the
# test when the condition does not hold.

HOST=$1
WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT
# What is counted of volumes is not kept for the user.
export XDG_CACHE_HOME="$WORK/caches"

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

# Gives the program a Trash, a folder DOWNLOADS and a browser's settings of its own, in WORK. The
# home is the account's and stays where it is.
own_folders() {
  XDG_CONFIG_HOME=$WORK/config
  XDG_DATA_HOME=$WORK/data
  DOWNLOADS=$WORK/downloads
  export XDG_CONFIG_HOME XDG_DATA_HOME WORK DOWNLOADS
  mkdir -p "$XDG_CONFIG_HOME/chromium/Default" "$DOWNLOADS"
  echo "{\"download\":{\"default_directory\":\"$DOWNLOADS\"}}" \
    >"$XDG_CONFIG_HOME/chromium/Default/Preferences"
}
