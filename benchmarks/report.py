#!/usr/bin/env python3
"""Writes the tables of the page of performance, and compares instruction counts with the stored.

report.py times LINES...            what the programs printed: "group/subject<TAB>nanoseconds"
report.py counts LINES.. -- PAGES.. what callgrind wrote, with caches of lines and of pages
report.py --check|--update COUNTS.. what callgrind wrote
"""
import datetime
import os
import re
import statistics
import sys
from collections import defaultdict

PAGE = "docs/internals/performance.md"
STORED = "benchmarks/instructions.txt"
LIMIT = 1.03  # what a stored ratio of instructions may grow to
CALLS = 100_000  # counted of each case, as CMakeLists.txt says
NAMES = (10, 1_000, 100_000)

# What, against, the two cases, and the goal: their ratio is at most that. No goal where the other
# does not do the same work; the row says what it leaves out.
ROWS = [
    ("`allocate`, `deallocate`", "malloc, free", "allocate", "bare", 1.05),
    *[(f"`findObject`, {count:,} names", against, f"findObject {count}", subject, goal)
      for count in NAMES
      for against, subject, goal in [
          ("lock, find in a map of owned entries", "bare", 1.05 if count == 100_000 else 1.10),
          ("the same without a count: a map of pointers", "pointers",
           1.20 if count == 100_000 else 1.10),
          ("`unordered_map`, `shared_mutex`: no order, no count", "hashed", None)]],
    ("`registerObject`, `unregisterObject`, held name", "twice lock, find, count", "register",
     "bare", 1.10),
    ("the same", "Boost.Interprocess: twice lock, find, count", "register", "Boost", 1.00),
    *[(f"`readProperty`, {count:,} names", against, f"readProperty {count}", subject, goal)
      for count in NAMES
      for against, subject, goal in [
          ("find", "bare", 1.10),
          ("`unordered_map`, `shared_mutex`: no order", "hashed", None)]],
    ("`readProperty` of a missing name, caught", "the same text and object, thrown by a DLL",
     "missing property", "bare", 1.05),
    ("`randomNumber`", "lock, rand()", "randomNumber", "bare", 1.15),
    ("`log` to one sink", "spdlog", "log", "spdlog", 0.50),
    ("`log` into a full cache", "lock, one comparison", "full cache", "bare", 1.50),
    ("`LogMessage`, text and two integers", "spdlog", "LogMessage", "spdlog", 0.67),
    ("`LogMessage`, text and 1.125", "spdlog", "LogMessage point", "spdlog", 1.00),
    ("`LogMessage`, 300 bytes of text", "spdlog", "LogMessage 300", "spdlog", 1.00),
    ("load and unload the DLL", "a DLL of one function, BareLibrary.cpp", "load", "bare", 1.30),
    ("registry value read", "RegQueryValueExW", "registry read", "bare", 1.10),
    ("registry value set", "RegSetValueExW", "registry set", "bare", 1.10),
    ("`runCommand`, 64 KB of output", "`_popen`: no limit of time, errors not apart", "runCommand",
     "bare", None),
]
# Wine's server answers these, now and then in a fifth of its time: of them the median counts.
SERVED = ("registry", "runCommand")


def write_block(name, lines):
    """Replaces what stands between the two comments of that name in the page, and prints it."""
    block = "\n".join(lines)
    print(block + "\n")
    with open(PAGE, encoding="utf-8") as file:
        text = file.read()
    before, rest = text.split(f"<!-- {name} -->\n")
    after = rest.split(f"\n<!-- end of {name} -->")[1]
    with open(PAGE, "w", encoding="utf-8") as file:
        file.write(f"{before}<!-- {name} -->\n{block}\n<!-- end of {name} -->{after}")


def write_times(files):
    times = defaultdict(list)
    for name in files:
        with open(name, encoding="utf-8") as file:
            for line in file:
                case, time = line.rstrip().split("\t")
                times[case].append(float(time))
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        processor = re.search(r"^model name\s*: (.*)$", file.read(), re.M)[1]
    load = float(os.environ["LOAD_BEFORE"])  # without what the benchmarks add to it
    quiet = load <= 1
    lines = [f"Measured on {datetime.date.today()}: {processor}, {os.cpu_count()} cores, "
             f"{os.environ['WINE_VERSION']}, load {load:.1f} before the run."
             + ("" if quiet else " **The machine was busy, so there are no medians.**"), "",
             "| What | Against | ns | against, ns | Ratio | Median | Middle half | Goal | |",
             "|---|---|---:|---:|---:|---:|---:|---:|---|"]
    for what, against, group, subject, goal in ROWS:
        ours, other = times[group + "/ours"], times[f"{group}/{subject}"]
        typical = statistics.median if group.startswith(SERVED) else min
        ratio = typical(ours) / typical(other)
        low, median, high = statistics.quantiles((a / b for a, b in zip(ours, other)), n=4)
        spread = f"{median:.2f} | {low:.2f} to {high:.2f}" if quiet else "| "
        verdict = "" if goal is None else "met" if ratio <= goal + 0.005 else "**missed**"
        lines.append(f"| {what} | {against} | {typical(ours):,.0f} | {typical(other):,.0f} "
                     f"| {ratio:.2f} | {spread} | {'' if goal is None else f'{goal:.2f}'} "
                     f"| {verdict} |")
    write_block("Intel" if "Intel" in processor else "AMD", lines)


def read_counts(files):
    """{case: {event: count of one call}}"""
    counts = {}
    for name in files:
        with open(name, encoding="utf-8") as file:
            text = file.read()
        case = re.search(r"^desc: Trigger: Client Request: (.*)$", text, re.M)
        if case:
            events = re.search(r"^events: (.*)$", text, re.M)[1].split()
            totals = re.search(r"^(?:summary|totals): (.*)$", text, re.M)[1].split()
            counts[case[1]] = {e: int(n) / CALLS for e, n in zip(events, totals)}
    return counts


def instruction_ratios(counts):
    groups = [group for group in dict.fromkeys(row[2] for row in ROWS) if group + "/ours" in counts]
    return {group: counts[group + "/ours"]["Ir"] / counts[group + "/bare"]["Ir"]
            for group in groups}


def write_counts(line_files, page_files):
    lines, pages = read_counts(line_files), read_counts(page_files)
    table = ["| Case | Instructions | bare | Ratio |", "|---|---:|---:|---:|"]
    for group, ratio in instruction_ratios(lines).items():
        table.append(f"| {group} | {lines[group + '/ours']['Ir']:.0f} "
                     f"| {lines[group + '/bare']['Ir']:.0f} | {ratio:.2f} |")
    write_block("instructions", table)
    table = ["| 100,000 names | Instructions | misses of 32 KB | of 1 MB | of 2,048 pages |",
             "|---|---:|---:|---:|---:|"]
    for case, seen in sorted(lines.items()):
        if " 100000/" in case:
            table.append(f"| {case.replace(' 100000/', ', ')} | {seen['Ir']:.0f} "
                         f"| {seen['D1mr']:.1f} | {seen['DLmr']:.1f} | {pages[case]['DLmr']:.2f} |")
    write_block("misses", table)


def compare(mode, files):
    counts = read_counts(files)
    ratios = instruction_ratios(counts)
    if mode == "--update":
        with open(STORED, "w", encoding="utf-8") as file:
            file.writelines(f"{group}\t{ratio:.3f}\n" for group, ratio in ratios.items())
    with open(STORED, encoding="utf-8") as file:
        stored = dict(line.rstrip().split("\t") for line in file)
    grown = set(ratios) ^ set(stored)
    for group, ratio in ratios.items():
        before = float(stored.get(group, "inf"))
        if ratio > before * LIMIT:
            grown.add(group)
        print(f"{group:20} {ratio:6.3f}  stored {before:6.3f}  "
              f"{counts[group + '/ours']['Ir']:7.1f} instructions, bare "
              f"{counts[group + '/bare']['Ir']:7.1f}{'  GREW' if group in grown else ''}")
    if grown:
        sys.exit(f"More instructions than {STORED} allows, or other cases: "
                 + ", ".join(sorted(grown)))


if sys.argv[1] == "times":
    write_times(sys.argv[2:])
elif sys.argv[1] == "counts":
    end = sys.argv.index("--")
    write_counts(sys.argv[2:end], sys.argv[end + 1:])
else:
    compare(sys.argv[1], sys.argv[2:])
