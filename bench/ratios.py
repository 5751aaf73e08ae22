#!/usr/bin/env python3
"""Prints what the benchmarks measured as ratios: bench/ratios.py MEASURED.json...."""

import json
import statistics
import sys

# Name, what it is compared with, and the ratio aimed at: how much processor time the first may take
# beside the second. Nothing: for information. Elapsed time is too much at the mercy of whatever
# else the machine does to decide.
COMPARISONS = [
    ("memory tick", "bare reads", 1.3),
    ("memory tick", "libgtop", 1 / 1.8),
    ("memory tick", "libstatgrab", None),
    ("cpu tick", "bare cpu reads", 1.6),
    ("cpu usage", "libgtop cpu", 1.0),
    ("cpu usage", "libstatgrab cpu", 1.0),
    ("process tick", "bare reads of processes", 3.0),
    ("process tick", "one run of ps", 1 / 10),
    ("battery update", "bare reads of supplies", 1.5),
    ("network tick", "bare list of counters", 3.0),
    ("network tick", "psutil counters", 1 / 10),
    ("network counters", "bare list of counters", None),
    ("configuration answer", "bare list of counters", None),
    ("disk tick", "psutil disks", 1 / 10),
    ("trv_all_app", "find -type d", 1.0),
    ("trv_all_app", "find", 1.0),
    ("trv_all_app", "fts, names", None),
    ("get_folder_size", "du -s -b", 1.0),
    ("get_folder_size", "nftw, sizes", None),
    ("get_folder_size", "fts, sizes", None),
    ("first accounting", "du -s", 1.0),
]
# Name, what it stands on, what each unit of a count may add in ns of the processor, and the count
# that the benchmark of the other tells.
ADDITIONS = [("disk tick", "bare statvfs", 3000, "volumes")]
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6}


def measured(files):
    """Processor and wall-clock times in ns of every repetition, by name, and what was counted."""
    times, counts = {}, {}
    for file in files:
        with open(file, encoding="utf-8") as opened:
            runs = json.load(opened)["benchmarks"]
        for run in runs:
            if run["run_type"] != "iteration":
                continue
            if run.get("error_occurred"):
                sys.exit(f"{run['name']}: {run['error_message']}")
            unit = NANOSECONDS[run["time_unit"]]
            processor = run["processor"] * 1e6 if "processor" in run else run["cpu_time"] * unit
            name = run["run_name"].split("/")[0]
            times.setdefault(name, []).append((processor, run["real_time"] * unit))
            counts.update({what: run[what] for _, of, _, what in ADDITIONS if of == name})
    return times, counts


def is_measured(times, name, peer):
    """Whether the part that both belong to was asked for. One without the other is an error."""
    if name not in times and peer not in times:
        return False
    for each in (name, peer):
        if each not in times:
            sys.exit(f"'{each}' was not measured")
    return True


def readable(nanoseconds):
    return f"{nanoseconds / 1e6:.0f} ms" if nanoseconds >= 1e6 else f"{nanoseconds / 1e3:.1f} us"


def main():
    times, counts = measured(sys.argv[1:])
    missed = False
    print(f"{'':36} {'processor':>20} {'':6} {'elapsed':>20} {'':6} aimed at")
    for name, peer, target in COMPARISONS:
        if not is_measured(times, name, peer):
            continue
        columns, ratios = [], []
        for column in (0, 1):
            mine, theirs = (
                statistics.median(run[column] for run in times[each]) for each in (name, peer)
            )
            ratios.append(mine / theirs)
            columns.append(f"{readable(mine):>9} / {readable(theirs):>8} {ratios[-1]:6.2f}")
        verdict = ""
        if target is not None:
            met = ratios[0] <= target
            missed |= not met
            verdict = f"<= {target:.2f} {'met' if met else 'MISSED'}"
        print(f"{name + ' / ' + peer:36} {columns[0]} {columns[1]} {verdict}")
    for name, peer, allowed, what in ADDITIONS:
        if not is_measured(times, name, peer):
            continue
        mine, theirs = (statistics.median(run[0] for run in times[each]) for each in (name, peer))
        added = (mine - theirs) / counts[what]
        missed |= added > allowed
        verdict = "met" if added <= allowed else "MISSED"
        print(f"{name} beyond {peer}: {added:.0f} ns of each of {counts[what]:.0f} {what}, "
              f"at most {allowed} {verdict}")
    sys.exit(1 if missed else 0)


main()
