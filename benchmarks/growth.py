#!/usr/bin/env python3
"""Writes the tables of growth into docs/internals/performance.md, prints them, and draws the curves.

growth.py PAGE FOLDER LINES...: where the pictures go, and what the harness printed.
"""
import statistics
import sys

import matplotlib
from report import heading, read_times, write_block

matplotlib.use("svg")
matplotlib.rcParams["svg.hashsalt"] = "growth"  # the same file for the same figures
matplotlib.rcParams["svg.fonttype"] = "none"  # text as text
from matplotlib import pyplot  # noqa: E402, once the backend is chosen

# What the columns are, and each series beside its bare one.
PICTURES = {
    "names": ("Names", [("findObject", "bare map"), ("getChannel", "bare map"),
                        ("readProperty", "bare wide map")]),
    "threads": ("Threads", [("findObject threads", "bare find threads"),
                            ("log threads", "bare log threads")]),
}
TAILS = [("`findObject`", "findObject tail"), ("bare lock and find", "bare find tail"),
         ("`log`", "log tail"), ("bare lock and write", "bare log tail")]


def main():
    page, folder, *files = sys.argv[1:]
    runs = read_times(files)
    for picture, (what, pairs) in PICTURES.items():
        all_series = list(dict.fromkeys(series for pair in pairs for series in pair))
        # One thread's minimum is what the call costs; waiting for others is part of the cost.
        typical = min if picture == "names" else statistics.median
        times = {}
        for series in all_series:
            times[series] = {int(case.rsplit("/", 1)[1]): typical(samples)
                             for case, samples in runs.items()
                             if case.rsplit("/", 1)[0] == series}
        sizes = sorted(times[all_series[0]])
        heads = " | ".join(f"{series.removesuffix(' threads')}, ns" for series in all_series)
        lines = [heading(), "", f"| {what} | {heads} |", "|---:|" + "---:|" * len(all_series)]
        for size in sizes:
            lines.append(f"| {size:,} | " + " | ".join(f"{times[series][size]:,.0f}"
                                                       for series in all_series) + " |")
        write_block(page, picture, lines)

        shown, panels = pyplot.subplots(1, len(pairs), figsize=(9, 2.9), sharey=True)
        for panel, (series, bare) in zip(panels, pairs):
            panel.plot(sizes, [times[bare][size] for size in sizes], "o--", color="0.6",
                       label=bare.removesuffix(" threads"))
            panel.plot(sizes, [times[series][size] for size in sizes], "o-",
                       label=series.removesuffix(" threads"))
            panel.set_xscale("log", base=10 if what == "Names" else 2)
            panel.set_xticks(sizes, [f"{size:,}" for size in sizes] if what == "Threads" else None)
            panel.set_yscale("log")
            panel.set_xlabel(what)
            panel.grid(True, color="0.9")
            panel.legend(frameon=False)
        panels[0].set_ylabel("ns a call")
        shown.tight_layout()
        shown.savefig(f"{folder}/growth-{picture}.svg", metadata={"Date": None})

    lines = [heading(), "", "| 8 threads | 99 % of calls, ns | 99.9 %, ns |", "|---|---:|---:|"]
    for what, series in TAILS:
        lines.append(f"| {what} | " + " | ".join(
            f"{statistics.median(runs[f'{series}/{share} %']):,.0f}" for share in (99, 99.9)) + " |")
    write_block(page, "tail", lines)


main()
