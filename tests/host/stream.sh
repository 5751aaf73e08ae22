# What `stream` prints is JSON, one object a line, and ends when it should.
. "$(dirname "$0")/common.sh"
command -v jq >/dev/null || skip "jq is not installed"

"$HOST" stream --count 2 >"$WORK/lines" || fail "stream --count 2 ended with $?"
check "stream --count 2 prints two lines" [ "$(wc -l <"$WORK/lines")" -eq 2 ]

holds() {
  jq -e -s "$1" "$WORK/lines" >/dev/null
}
check "each line names monitor and operation" holds \
  'all(.monitor == "memory" and .operation == "updateMemoryStatusWithVMStatusWithSwapDict")'
check "each line has three arguments" holds 'all(.arguments | length == 3)'
check "the counts make up the total" holds \
  'all(.arguments[0] | .memory_free + .memory_used == .memory_total)'
check "swap is told of once" holds '.[0].arguments[2].swap_count >= 0 and .[1].arguments[2] == null'
check "the samples are about a second apart" holds \
  '.[1].time - .[0].time | . > 0.5 and . < 5'
check "the keys keep their order" [ \
  "$(head -n 1 "$WORK/lines" | jq -r 'keys_unsorted | join(" ")')" = \
  "time monitor operation arguments" ]

"$HOST" </dev/null >"$WORK/lines" || fail "without a terminal it ended with $?"
check "without a terminal there are five samples" [ "$(wc -l <"$WORK/lines")" -eq 5 ]
