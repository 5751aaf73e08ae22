# `info` as a table and as JSON, beside what the machine's own tools say.
. "$(dirname "$0")/common.sh"

"$HOST" info >"$WORK/table" 2>"$WORK/err" || fail "info ended with $?"
check "info prints a line a property" [ "$(grep -cv '^volume:' "$WORK/table")" -eq 13 ]
check "info complains of nothing" [ ! -s "$WORK/err" ]
check "the table has this machine's name" grep -qFx "host name:          $(uname -n)" "$WORK/table"
check "the table has this user" grep -qFx "user:               $(id -nru)" "$WORK/table"
check "all values stand in one column" [ -z "$(grep -v '^[^:]*:  *[^ ]' "$WORK/table")" ]

"$HOST" info --json >"$WORK/json" || fail "info --json ended with $?"
check "info --json prints one line" [ "$(wc -l <"$WORK/json")" -eq 1 ]

"$HOST" info >/dev/full 2>"$WORK/err"
status=$?
check "an output that takes nothing ends it with 1, not $status" [ "$status" -eq 1 ]
check "it says so in a line" [ "$(wc -l <"$WORK/err")" -eq 1 ]

command -v python3 >/dev/null || skip "python3 is not installed"
python3 - "$WORK/json" "$WORK/table" <<'END' || fail "the JSON is not as it should be"
import json, os, sys

with open(sys.argv[1], encoding="utf-8") as file:
    info = json.load(file)
assert list(info) == [
    "computerName", "sysName", "sysUserName", "sysFullUserName", "sysOSName", "sysOSVersion",
    "sysPhysicalMemory", "sysSerialNumber", "sysUUID", "sysModelID", "sysProcessorName",
    "sysProcessorSpeed", "sysProcessorCount", "volumes"], list(info)
assert info["sysName"] == os.uname().nodename, info
assert info["sysOSName"] is None, info
assert info["sysPhysicalMemory"] == os.sysconf("SC_PHYS_PAGES") * os.sysconf("SC_PAGE_SIZE"), info
for volume in info["volumes"]:
    space = os.statvfs(volume["disk_path"])
    assert volume["disk_totalsize"] == space.f_blocks * space.f_frsize, volume
with open(sys.argv[2], encoding="utf-8") as file:
    lines = [line for line in file if line.startswith("volume:")]
assert len(lines) == len(info["volumes"]), lines
END
