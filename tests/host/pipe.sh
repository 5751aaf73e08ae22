# A reader that goes away ends the program quietly, an output that fails does not.
. "$(dirname "$0")/common.sh"

{
  "$HOST" stream 2>"$WORK/err"
  echo $? >"$WORK/status"
} | head -n 1 >"$WORK/out"
check "the reader got its line" [ "$(wc -l <"$WORK/out")" -eq 1 ]
check "a closed pipe ends stream with 0" [ "$(cat "$WORK/status")" -eq 0 ]
check "a closed pipe is no error" [ ! -s "$WORK/err" ]

# The reader is gone long before the first sample is due.
{
  "$HOST" stream --interval 86400
  echo $? >"$WORK/status"
} | true
check "a reader that left early is noticed" [ "$(cat "$WORK/status")" -eq 0 ]

if [ -c /dev/full ]; then
  "$HOST" stream --count 1 >/dev/full 2>"$WORK/err"
  check "a full disk ends stream with 1" [ $? -eq 1 ]
  check "a full disk is named" grep -q '^vantile-host: cannot write to standard output: ' \
    "$WORK/err"
fi

"$HOST" --version >&- 2>"$WORK/err"
check "a closed standard output ends with 1" [ $? -eq 1 ]
