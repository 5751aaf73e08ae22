# What `stream` prints is JSON, one object a line, and ends when it should.
. "$(dirname "$0")/common.sh"
command -v python3 >/dev/null || skip "python3 is not installed"

"$HOST" stream --monitors memory --count 2 >"$WORK/lines" ||
  fail "stream --count 2 ended with $?"
check "stream --count 2 prints two lines" [ "$(wc -l <"$WORK/lines")" -eq 2 ]

python3 - "$WORK/lines" <<'END' || fail "the lines are not as they should be"
import json, sys

def refuse(word):
    raise ValueError(f"{word} is no JSON")

with open(sys.argv[1], encoding="utf-8") as lines:
    reports = [json.loads(line, parse_constant=refuse) for line in lines]

for report in reports:
    assert list(report) == ["time", "monitor", "operation", "arguments"], list(report)
    assert report["monitor"] == "memory", report
    assert report["operation"] == "updateMemoryStatusWithVMStatusWithSwapDict", report
    memory, vm, swap = report["arguments"]
    assert memory["memory_free"] + memory["memory_used"] == memory["memory_total"], memory
    assert vm["vm_pageins"] >= 0, vm

first, second = reports
assert first["arguments"][2]["swap_count"] >= 0, first
assert second["arguments"][2] is None, "swap is told of again"
assert 0.5 < second["time"] - first["time"] < 5, "the samples are not about a second apart"
END

"$HOST" stream --monitors cpu --count 2 >"$WORK/lines" 2>"$WORK/errors" ||
  fail "stream of cpu ended with $?"
check "stream of cpu says nothing on standard error" [ ! -s "$WORK/errors" ]
python3 - "$WORK/lines" "$(grep -c '^cpu[0-9]' /proc/stat)" <<'END' || fail "a sample of cpu is not whole"
import json, sys

with open(sys.argv[1], encoding="utf-8") as lines:
    reports = [json.loads(line) for line in lines]  # nothing of the sensors' stands between them
cores = int(sys.argv[2])
sample = ["cpuUsedWithCoreWithSystemWithUserWithIdle"] * cores + [
    "cpuUsedWithSystemWithUserWithIdle", "processorWithTaskCountWithThreadCount",
    "loadAverageWith1mWith5mWith15m"]
told = [report["operation"] for report in reports if report["operation"] != "cpuWithTemperature"]
assert told == sample * 2, told
for report in reports:
    if report["operation"].startswith("cpuUsed"):
        assert abs(sum(report["arguments"][-3:]) - 1) < 0.001, report
END

"$HOST" stream --monitors process --interval 1 --count 1 >"$WORK/lines" ||
  fail "stream of process ended with $?"
python3 - "$WORK/lines" <<'END' || fail "the applications are not as they should be"
import json, sys

with open(sys.argv[1], encoding="utf-8") as lines:
    (report,) = [json.loads(line) for line in lines]
assert report["operation"] == "updateProcessStaus", report
for application in report["arguments"][0] or []:
    assert application["pid"] > 0 and application["appName"], application
END

"$HOST" stream --monitors disk --interval 1 --count 2 >"$WORK/lines" ||
  fail "stream of disk ended with $?"
python3 - "$WORK/lines" <<'END' || fail "the volumes are not as they should be"
import json, os, sys

with open(sys.argv[1], encoding="utf-8") as lines:
    reports = [json.loads(line) for line in lines]
assert [report["operation"] for report in reports] == ["diskDetails"] * 2, reports
for report in reports:
    (volumes,) = report["arguments"]
    for volume in volumes:
        space = os.statvfs(volume["disk_path"])
        assert volume["disk_totalsize"] == space.f_blocks * space.f_frsize, volume
        assert volume["disk_name"], volume
END

"$HOST" </dev/null >"$WORK/lines" || fail "without a terminal it ended with $?"
check "without a terminal there are five samples" \
  [ "$(grep -c '"monitor":"memory"' "$WORK/lines")" -eq 5 ]
