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
    "batteryWatt": -6.996, "timeSinceUnpluggedTranslated": "0:00", "unpluggedTimerCount": 0,
    "sources": [{"operation": "batteryWithRemaining", "time": "4:00",
                 "powerSourceState": "Battery Power", "currentPercent": 70,
                 "batteryHealth": "Good"}]}], properties
assert mouse[0]["arguments"] == [{"isHasBattery": False}], mouse
END

# Several batteries that differ, and what is told when they go.
command -v umockdev-wrapper >/dev/null || skip "umockdev-wrapper is not installed"
umockdev-wrapper python3 - "$HOST" <<'END' || fail "several batteries are not as they should be"
import ctypes, json, subprocess, sys, threading, time

umockdev = ctypes.CDLL("libumockdev.so.0")
umockdev.umockdev_testbed_new.restype = ctypes.c_void_p
bed = ctypes.c_void_p(umockdev.umockdev_testbed_new())
def add(name, **attributes):
    lines = [f"P: /devices/{name}", "E: SUBSYSTEM=power_supply"]
    lines += [f"A: {key}={value}\\n" for key, value in attributes.items()]
    text = "\n".join(lines) + "\n\n"
    assert umockdev.umockdev_testbed_add_from_string(bed, text.encode(), None), text
def battery(name, status, percent, made_for, cycles):
    add(name, type="Battery", present=1, status=status, energy_now=percent * 400000,
        energy_full=40000000, energy_full_design=made_for, voltage_now=12000000,
        voltage_min_design=10000000, power_now=10000000, cycle_count=cycles)
def remove(name):
    path = f"/sys/devices/{name}".encode()
    umockdev.umockdev_testbed_uevent(bed, path, b"remove")
    umockdev.umockdev_testbed_remove_device(bed, path)
    return time.monotonic()

add("AC", type="Mains", online=1)
battery("BAT0", "Charging", 40, 50000000, 213)
battery("BAT1", "Full", 100, 60000000, 7)
host = subprocess.Popen([sys.argv[1], "stream", "--monitors", "battery"], stdout=subprocess.PIPE,
                        text=True)
guard = threading.Timer(30, host.kill)
guard.daemon = True
guard.start()
def next_properties():
    while True:
        line = host.stdout.readline()
        assert line, "nothing more is told"
        report = json.loads(line)
        if report["operation"] == "updateCurrentStatus":
            return report["arguments"][0]

try:
    both = next_properties()
    assert [(each["operation"], each["currentPercent"], each["batteryHealth"])
            for each in both["sources"]] == [("batteryChargingWithRemaining", 40, "Good"),
                                             ("batteryCharged", 100, "Fair")], both
    assert both["batteryCycleCount"] == 213, both  # the first one's
    remove("BAT1")
    one = next_properties()
    assert [each["currentPercent"] for each in one["sources"]] == [40], one
    moment = remove("BAT0")
    none = next_properties()
    assert none == {"isHasBattery": False}, none
    assert time.monotonic() - moment < 10, "it was told too late"
finally:
    host.kill()
    host.wait()
END
