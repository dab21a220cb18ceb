#!/usr/bin/env python3
"""Prints the table of ratios.

ratios.py TIMES.json LINES.txt: Google Benchmark's file, and what the harness under Wine printed.
"""
import json
import statistics
import sys
from collections import defaultdict

# What, against, the two cases, and the goal: their ratio is at most that. "At least twice as
# fast" is a ratio of at most 0.5.
GOALS = [
    ("allocate and deallocate through the DLL", "malloc and free", "allocate/ours", "allocate/bare", 1.05),
    ("findObject, 10 names", "lock, std::map::find", "findObject 10/ours", "findObject 10/bare", 1.10),
    ("findObject, 100,000 names", "lock, std::map::find", "findObject 100000/ours", "findObject 100000/bare", 1.10),
    ("register and unregister, held name", "Boost.Interprocess find", "register/ours", "register/Boost.Interprocess", 1.0),
    ("register and unregister, held name", "lock, bare map", "register/ours", "register/bare", 1.15),
    ("readProperty, hit", "bare std::map::find", "readProperty/ours", "readProperty/bare", 1.05),
    ("readProperty, hit", "POCO MapConfiguration, getString", "readProperty/ours", "readProperty/POCO", 1 / 1.5),
    ("readProperty, hit", "the same, getRawString", "readProperty/ours", "readProperty/POCO raw", 1 / 1.5),
    ("readProperty, hit", "boost::property_tree", "readProperty/ours", "readProperty/Boost", 1 / 1.5),
    ("randomNumber", "lock, rand()", "randomNumber/ours", "randomNumber/bare", 1.10),
    ("log, one sink", "spdlog, text as it stands", "log/ours", "log/spdlog", 0.5),
    ("LogMessage, text and two integers", "spdlog, formatted", "LogMessage/ours", "LogMessage/spdlog", 1.0),
    ("LogMessage, text and two integers", "POCO LogStream", "LogMessage/ours", "LogMessage/POCO", 1.0),
    ("LogMessage, text and two integers", "Boost.Log", "LogMessage/ours", "LogMessage/Boost", 1.0),
    ("LogMessage, text and two integers", "glog", "LogMessage/ours", "LogMessage/glog", 1.0),
    ("log into a full cache", "spdlog backtrace", "full cache/ours", "full cache/spdlog", 0.2),
] + [
    (f"LogMessage, {count} threads, one channel", peer, f"{count} threads/ours", f"{count} threads/{case}", 1.0)
    for count in (2, 8)
    for peer, case in (("spdlog, formatted", "spdlog"), ("POCO LogStream", "POCO"), ("Boost.Log", "Boost"), ("glog", "glog"))
] + [
    ("registry read (Wine)", "RegQueryValueExW", "registry read/ours", "registry read/bare", 1.10),
    ("registry set (Wine)", "RegSetValueExW", "registry set/ours", "registry set/bare", 1.10),
    ("registry list of 100 sub keys (Wine)", "RegEnumKeyW, RegOpenKeyW", "registry list/ours", "registry list/bare", 1.10),
    ("runCommand, 1 MB (Wine)", "bare loop of 128-byte reads", "runCommand/ours", "runCommand/bare", 1.10),
    ("load and unload the DLL (Wine)", "an empty DLL", "load/ours", "load/bare", 1.5),
]


def read_times(json_file, lines_file):
    """Nanoseconds of each repetition of each case."""
    times = defaultdict(list)
    with open(json_file, encoding="utf-8") as file:
        for run in json.load(file)["benchmarks"]:
            if run["run_type"] == "iteration":
                name = run["run_name"].split("/real_time")[0]
                # Time of the thread alone where there is one; of the clock for several.
                field = "real_time" if run["threads"] > 1 else "cpu_time"
                times[name].append((run["repetition_index"], run[field]))
    times = {name: [time for _, time in sorted(runs)] for name, runs in times.items()}
    with open(lines_file, encoding="utf-8") as file:
        for line in file:
            name, time = line.rstrip().split("\t")
            times.setdefault(name, []).append(float(time))
    return times


def main():
    times = read_times(*sys.argv[1:])
    print("| What | Against | ns | Against, ns | Ratio | Spread | Goal | |")
    print("|---|---|---:|---:|---:|---:|---:|---|")
    for what, against, ours, other, goal in GOALS:
        ratios = [a / b for a, b in zip(times[ours], times[other])]
        low, ratio, high = statistics.quantiles(ratios, n=4)  # the middle half is the spread
        print(f"| {what} | {against} | {statistics.median(times[ours]):,.1f} "
              f"| {statistics.median(times[other]):,.1f} | {ratio:.2f} "
              f"| {low:.2f} to {high:.2f} | {goal:.2f} "
              f"| {'met' if ratio <= goal else 'missed'} |")


main()
