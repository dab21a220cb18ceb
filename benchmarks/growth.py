#!/usr/bin/env python3
"""Prints the tables of growth and draws their curves.

growth.py TIMES.json FOLDER: Google Benchmark's file, and where the pictures go.
"""
import json
import statistics
import sys
from collections import defaultdict

import matplotlib

matplotlib.use("svg")
matplotlib.rcParams["svg.hashsalt"] = "growth"  # the same file for the same figures
matplotlib.rcParams["svg.fonttype"] = "none"  # text as text
from matplotlib import pyplot  # noqa: E402, once the backend is chosen

PICTURES = {
    "names": ("Names", ["findObject", "getChannel", "readProperty", "bare map"]),
    "threads": ("Threads", ["register", "log", "bare lock"]),
}


def read_times(json_file):
    """Median nanoseconds an operation takes, all threads together: {series: {size: time}}."""
    runs = defaultdict(list)
    with open(json_file, encoding="utf-8") as file:
        for run in json.load(file)["benchmarks"]:
            if run["run_type"] == "iteration":
                series, size = run["run_name"].split("/")[:2]
                by_threads = series in PICTURES["threads"][1]
                # By the clock for threads; else the time of the one thread, whoever else runs.
                time = 1e9 / run["items_per_second"] if by_threads else run["cpu_time"]
                runs[series, int(size)].append(time)
    times = defaultdict(dict)
    for (series, size), samples in sorted(runs.items()):
        times[series][size] = statistics.median(samples)
    return times


def main():
    json_file, folder = sys.argv[1:]
    times = read_times(json_file)
    for picture, (what, all_series) in PICTURES.items():
        sizes = sorted(times[all_series[0]])
        print(f"| {what} | " + " | ".join(f"{series}, ns" for series in all_series) + " |")
        print("|---:|" + "---:|" * len(all_series))
        for size in sizes:
            print(f"| {size:,} | "
                  + " | ".join(f"{times[series][size]:,.1f}" for series in all_series) + " |")
        print()

        shown, panels = pyplot.subplots(1, len(all_series) - 1, figsize=(9, 2.9), sharey=True)
        bare = all_series[-1]
        for panel, series in zip(panels, all_series):
            panel.plot(sizes, [times[bare][size] for size in sizes], "o--", color="0.6",
                       label=bare)
            panel.plot(sizes, [times[series][size] for size in sizes], "o-", label=series)
            panel.set_xscale("log", base=10 if what == "Names" else 2)
            panel.set_xticks(sizes, [f"{size:,}" for size in sizes] if what == "Threads" else None)
            if what == "Names":
                panel.set_yscale("log")
            panel.set_ylim(bottom=10 if what == "Names" else 0)
            panel.set_xlabel(what)
            panel.grid(True, color="0.9")
            panel.legend(frameon=False)
        panels[0].set_ylabel("ns an operation")
        shown.tight_layout()
        shown.savefig(f"{folder}/growth-{picture}.svg", metadata={"Date": None})


main()
