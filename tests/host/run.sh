# ./run with a build that is none: what it says meanwhile, and how it ends.
RUN=$1
. "$(dirname "$0")/common.sh"

mkdir -p "$WORK/scripts" "$WORK/bin" "$WORK/build/run/host"
cp "$RUN" "$WORK/run"
: >"$WORK/scripts/install-packages"
chmod +x "$WORK/scripts/install-packages"
# Stands for cmake: takes $SECONDS_TAKEN and leaves a program that prints its arguments.
cat >"$WORK/bin/cmake" <<'END'
#!/bin/sh
[ "$1" = --build ] || exit 0
echo '[3/7] Building something'
sleep "$SECONDS_TAKEN"
[ -z "$BREAKS" ] || { echo 'error: of the compiler'; exit 1; }
printf '#!/bin/sh\necho "started: $*"\n' >build/run/host/vantile-host
chmod +x build/run/host/vantile-host
END
chmod +x "$WORK/bin/cmake"
PATH=$WORK/bin:$PATH
export PATH SECONDS_TAKEN BREAKS
SECONDS_TAKEN=0 BREAKS=

runs() {
  "$WORK/run" "$@" >"$WORK/out" 2>"$WORK/err"
}

runs stream --count 1 || fail "the first build ended with $?"
check "the first build is announced" grep -q 'several minutes' "$WORK/err"
check "the program gets the arguments" [ "$(cat "$WORK/out")" = "started: stream --count 1" ]

runs || fail "a short build ended with $?"
check "a short build is silent" [ ! -s "$WORK/err" ]

SECONDS_TAKEN=3
runs || fail "a longer build ended with $?"
check "a longer build says so" [ "$(cat "$WORK/err")" = "Building vantile-host." ]

if command -v script >/dev/null; then
  script -qec "$WORK/run" /dev/null >"$WORK/out" </dev/null || fail "on a terminal it ended with $?"
  check "a terminal shows the progress" grep -q 'vantile-host: step 3 of 7' "$WORK/out"
  check "the program starts on a line of its own" [ "$(tail -c 11 "$WORK/out" | tr -d '\r\n')" = "started: " ]
fi

SECONDS_TAKEN=0 BREAKS=yes
runs && fail "a build that fails is taken for a success"
check "the build's output is shown" grep -q 'error: of the compiler' "$WORK/err"
check "the log is named" grep -q 'the build failed; all of its output is in build/run.log' "$WORK/err"
