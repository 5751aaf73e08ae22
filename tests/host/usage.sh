# Help, the version, and one clear line for arguments that make no sense.
. "$(dirname "$0")/common.sh"

refuses() {
  expected=$1
  shift
  "$HOST" "$@" >"$WORK/out" 2>"$WORK/err"
  status=$?
  check "'$*' ends with 2, not $status" [ "$status" -eq 2 ]
  check "'$*' prints nothing on standard output" [ ! -s "$WORK/out" ]
  check "'$*' prints one line" [ "$(wc -l <"$WORK/err")" -eq 1 ]
  check "'$*' says: $expected, not: $(cat "$WORK/err")" \
    [ "$(cat "$WORK/err")" = "vantile-host: $expected" ]
}

refuses "unknown monitor 'memroy' (known: memory, cpu, process, network, disk, battery, downloads, applications, trash)" \
  stream --monitors memroy
refuses "unknown watcher 'trsh' (known: downloads, applications, trash)" watch downloads trsh
refuses "unknown option '--interval' (see vantile-host watch --help)" watch --interval 1
refuses "--interval must be a whole number of seconds from 1 to 86400, not '0'" \
  stream --interval 0
refuses "--count must be a whole number, 0 for no end, not 'many'" stream --count many
refuses "unknown option '--verbose' (see vantile-host --help)" --verbose
refuses "unknown command 'strem' (known: stream, watch, clean, info; see vantile-host --help)" strem
refuses "unexpected argument 'all' (see vantile-host info --help)" info all
refuses "unknown option '--json' (see vantile-host stream --help)" stream --json
refuses "option '--count' needs a value (see vantile-host stream --help)" stream --count

"$HOST" stream --monitors "$(printf 'a\nb')" 2>"$WORK/err"
check "a line break in an argument stays out of the message" [ "$(wc -l <"$WORK/err")" -eq 1 ]

for command in "" stream watch clean info; do
  "$HOST" $command --help >"$WORK/out" || fail "$command --help ended with $?"
  check "$command --help fits into 100 columns" [ -z "$(grep '.\{101\}' "$WORK/out")" ]
done
"$HOST" --help >"$WORK/out" || fail "--help ended with $?"
check "--help has examples" grep -q '^Examples:' "$WORK/out"
"$HOST" --version | grep -Eq '^vantile-host [0-9]+\.[0-9]+\.[0-9]+$' || fail "--version"
