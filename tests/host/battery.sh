# What `stream` prints of a battery that umockdev puts before it, and of none.
. "$(dirname "$0")/common.sh"
command -v python3 >/dev/null || skip "python3 is not installed"
command -v umockdev-run >/dev/null || skip "umockdev-run is not installed"

cat >"$WORK/laptop" <<'END'
P: /devices/AC
E: SUBSYSTEM=power_supply
A: type=Mains\n
A: online=0\n

P: /devices/BAT0
E: SUBSYSTEM=power_supply
A: type=Battery\n
A: present=1\n
A: status=Discharging\n
A: energy_now=28000000\n
A: energy_full=40000000\n
A: energy_full_design=50000000\n
A: voltage_now=12000000\n
A: voltage_min_design=10000000\n
A: power_now=7000000\n
A: cycle_count=213\n

END
cat >"$WORK/mouse" <<'END'
P: /devices/mouse
E: SUBSYSTEM=power_supply
A: type=Battery\n
A: scope=Device\n
A: capacity=5\n

END

for machine in laptop mouse; do
  umockdev-run --device="$WORK/$machine" -- "$HOST" stream --monitors battery --count 1 \
    >"$WORK/$machine.lines" || fail "stream of a $machine's battery ended with $?"
done
python3 - "$WORK/laptop.lines" "$WORK/mouse.lines" <<'END' || fail "a battery is not as it should be"
import json, sys

laptop, mouse = ([json.loads(line) for line in open(name)] for name in sys.argv[1:])
assert [report["monitor"] for report in laptop + mouse] == ["battery"] * 3, laptop + mouse
told, properties = laptop
assert told["operation"] == "batteryWithRemaining" and told["arguments"] == ["4:00"], told
assert properties["operation"] == "updateCurrentStatus", properties
assert properties["arguments"] == [{
    "isHasBattery": True, "powerSourceState": "Battery Power", "currentPercent": 70,
    "batteryHealth": "Good", "batteryMaxCapacity": 4000, "batteryCurrentCapacity": 2800,
    "batteryCycleCount": 213, "batteryAmperage": -583, "batteryVoltage": 12000,
    "batteryWatt": -6.996, "timeSinceUnpluggedTranslated": "0:00"}], properties
assert mouse[0]["arguments"] == [{"isHasBattery": False}], mouse
END
