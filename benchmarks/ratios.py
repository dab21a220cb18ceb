#!/usr/bin/env python3
"""Writes the table of ratios into docs/internals/performance.md, and prints it.

ratios.py NATIVE PAGE LINES...: what the harness printed, natively (only peers that do not compile for
Windows) and on Windows; a line is "group/subject<TAB>nanoseconds".
"""
import statistics
import sys

from report import heading, read_times, write_block

# What, against, the two cases, and the goal: their ratio is at most that.
# Wine's server answers these, now and then in a fifth of its time: of them the median counts.
SERVED = [
    ("registry value read", "RegQueryValueExW", "registry read", "bare", 1.10),
    ("registry value set", "RegSetValueExW", "registry set", "bare", 1.10),
    ("100 registry sub keys listed", "RegEnumKeyW, RegOpenKeyW", "registry list", "bare", 1.10),
    ("`runCommand`, 64 KB of output", "the platform's calls", "runCommand", "bare", 1.10),
]
SHIPPED = [
    ("`allocate` and `deallocate`", "malloc, free", "allocate", "bare", 1.05),
    ("`findObject`, 10 names", "lock, find", "findObject/10", "bare", 1.10),
    ("`findObject`, 100,000 names", "lock, find", "findObject/100000", "bare", 1.05),
    ("`registerObject` and `unregisterObject`, held name", "twice lock, find", "register", "bare", 1.10),
    ("the same", "one find of Boost.Interprocess", "register", "Boost", 1.0),
    ("`readProperty`", "find", "readProperty", "bare", 1.10),
    ("the same", "boost::property_tree", "readProperty", "Boost", 1 / 1.5),
    ("`readProperty` of a missing name, caught", "the same object thrown by a DLL", "missing property", "bare", 1.10),
    ("`randomNumber`", "lock, rand()", "randomNumber", "bare", 1.15),
    ("`log` to one sink", "spdlog", "log", "spdlog", 0.5),
    ("`log` into a full cache", "spdlog's backtrace", "full cache", "spdlog", 0.2),
    ("`LogMessage`, text and two integers", "spdlog", "LogMessage", "spdlog", 2 / 3),
    ("`LogMessage`, text and 1.125", "spdlog", "LogMessage point", "spdlog", 1.0),
    ("`LogMessage`, 300 bytes of text", "spdlog", "LogMessage 300", "spdlog", 1.0),
    ("load and unload the DLL", "an empty DLL", "load", "bare", 1.3),
    *SERVED,
]
NATIVE = [
    ("`LogMessage`, text and two integers", peer, "LogMessage", peer, 1.0)
    for peer in ("POCO", "Boost.Log", "glog")
] + [
    ("`readProperty`", "POCO, getString", "readProperty", "POCO", 1 / 1.5),
    ("`readProperty`", "POCO, getRawString", "readProperty", "POCO raw", 1 / 1.5),
]


def rows(times, goals):
    yield "| What | Against | ns | against, ns | Ratio | Median | Middle half | Goal | |"
    yield "|---|---|---:|---:|---:|---:|---:|---:|---|"
    for row in goals:
        what, against, group, subject, goal = row
        ours, other = times[group + "/ours"], times[f"{group}/{subject}"]
        typical = statistics.median if row in SERVED else min
        ratio = typical(ours) / typical(other)
        low, median, high = statistics.quantiles((a / b for a, b in zip(ours, other)), n=4)
        yield (f"| {what} | {against} | {typical(ours):,.0f} | {typical(other):,.0f} | {ratio:.2f} "
               f"| {median:.2f} | {low:.2f} to {high:.2f} | {goal:.2f} "
               f"| {'met' if ratio <= goal else '**missed**'} |")


def main():
    native, page, *shipped = sys.argv[1:]
    write_block(page, "ratios", [heading(), "", *rows(read_times(shipped), SHIPPED)])
    write_block(page, "native", [heading(), "", *rows(read_times([native]), NATIVE)])


main()
