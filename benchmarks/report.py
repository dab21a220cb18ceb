"""Reads what the harness prints, and writes blocks of docs/internals/performance.md."""
import datetime
import os
import re
from collections import defaultdict


def read_times(files):
    """{case: [nanoseconds of each round]}"""
    times = defaultdict(list)
    for name in files:
        with open(name, encoding="utf-8") as file:
            for line in file:
                case, time = line.rstrip().split("\t")
                times[case].append(float(time))
    return times


def heading():
    """When and where; a machine that had other work to do is said to be spoiled."""
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        processor = re.search(r"^model name\s*: (.*)$", file.read(), re.M)[1]
    load = float(os.environ["LOAD_BEFORE"])  # without what the benchmarks add to it
    text = (f"Measured on {datetime.date.today()}: {processor}, {os.cpu_count()} cores, "
            f"load {load:.1f} before the run.")
    return text if load <= 1 else f"{text} **The machine was busy, so only minimums count.**"


def write_block(page, name, lines):
    """Replaces what stands between the two comments of that name, and prints it."""
    block = "\n".join(lines)
    print(block + "\n")
    with open(page, encoding="utf-8") as file:
        text = file.read()
    begin, end = f"<!-- {name} -->\n", f"\n<!-- end of {name} -->"
    before, after = text.split(begin)[0], text.split(end)[1]
    with open(page, "w", encoding="utf-8") as file:
        file.write(f"{before}{begin}{block}{end}{after}")
