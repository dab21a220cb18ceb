#!/usr/bin/env python3
"""Compares the instruction counts of the library with those of its bare parts.

instructions.py --check|--update RATIOS.txt COUNTS...: the files that callgrind wrote, one a case.
The counts differ from one processor and C library to the next; their ratios hardly do.
"""
import re
import sys

LIMIT = 1.03


def read_counts(files):
    counts = {}
    for name in files:
        with open(name, encoding="utf-8") as file:
            text = file.read()
        case = re.search(r"^desc: Trigger: Client Request: (.*)$", text, re.M)
        if case:
            counts[case[1]] = int(re.search(r"^(?:summary|totals): (\d+)$", text, re.M)[1])
    return counts


def main():
    mode, ratios_file, *count_files = sys.argv[1:]
    counts = read_counts(count_files)
    ratios = {
        case.removesuffix("/ours"): count / counts[case.removesuffix("/ours") + "/bare"]
        for case, count in counts.items()
        if case.endswith("/ours")
    }
    if mode == "--update":
        with open(ratios_file, "w", encoding="utf-8") as file:
            file.writelines(f"{group}\t{ratio:.3f}\n" for group, ratio in ratios.items())
    with open(ratios_file, encoding="utf-8") as file:
        stored = dict(line.rstrip().split("\t") for line in file)
    grown = set(ratios) ^ set(stored)
    for group, ratio in ratios.items():
        before = float(stored.get(group, "inf"))
        if ratio > before * LIMIT:
            grown.add(group)
        print(f"{group:20} {ratio:6.3f}  stored {before:6.3f}  "
              f"{counts[group + '/ours'] / 2000:7.1f} instructions, bare "
              f"{counts[group + '/bare'] / 2000:7.1f}{'  GREW' if group in grown else ''}")
    if grown:
        sys.exit("More instructions than benchmarks/instructions.txt allows, or other cases: "
                 + ", ".join(sorted(grown)))


main()
