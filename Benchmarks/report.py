#!/usr/bin/env python3
"""The medians of a results directory as a table of ratios, with the spread of each ratio.

usage: report.py RESULTS_DIR [group...]

Ours stands beside its best peer: the fastest that is neither a limit nor mere context (another kind of
thing). Below 1 means that we are faster. The spread is that of the ratios of the single repetitions, the
first of ours over the first of the peer's and so on. Without peers in the results, only our own times are
printed. The group "growth" becomes a plot, RESULTS_DIR/growth.svg.
"""
import collections
import json
import pathlib
import statistics
import sys

import growth_plot

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


class Measured:
    """What the repetitions of one benchmark gave: nanoseconds an iteration, and the bytes or items in one."""

    def __init__(self):
        self.times = []
        self.bytes = self.items = 0

    def add(self, time, record):
        self.times.append(time)
        self.bytes = record.get("bytes_per_second", 0) * time * 1e-9
        self.items = record.get("items_per_second", 0) * time * 1e-9

    @property
    def time(self):
        return statistics.median(self.times)

    def time_per_item(self):
        return self.time / (self.items or 1)

    def figure(self):
        if self.bytes:
            return f"{self.bytes / self.time:.2f} GB/s"
        ns = self.time_per_item()
        for unit, factor in (("ns", 1), ("us", 1e3), ("ms", 1e6)):
            if ns < 1000 * factor:
                return f"{ns / factor:.3g} {unit}"
        return f"{ns / 1e9:.3g} s"

    def ratio(self, peer):
        ratios = [ours / theirs for ours, theirs in zip(self.times, peer.times)]
        spread = f" ({short(min(ratios))} to {short(max(ratios))})" if len(ratios) > 1 else ""
        return short(self.time / peer.time) + spread


def short(ratio):
    return f"{ratio:.2f}" if ratio >= 0.1 else f"{ratio:.1g}"


def read(path):
    """(workload, size) -> peer -> Measured"""
    rows = collections.defaultdict(lambda: collections.defaultdict(Measured))
    for record in json.loads(path.read_text())["benchmarks"]:
        if record["run_type"] != "iteration" or record.get("error_occurred"):
            continue
        parts = record["name"].split("/")
        # What a program run as a process takes is measured by hand, what several threads take by the clock.
        time = record["real_time" if {"manual_time", "real_time"} & set(parts) else "cpu_time"]
        parts = [p for p in parts if not p.startswith(("min_time", "iterations", "repeats", "manual_time", "real_time"))]
        rows[parts[0], "/".join(parts[2:])][parts[1]].add(time * NANOSECONDS[record["time_unit"]], record)
    return rows


def is_limit(name):
    return name.startswith(("limit", "context"))


def natural(key):
    """Sorts 16 before 256."""
    return [(0, int(part), "") if part.isdigit() else (1, 0, part) for word in key for part in word.split("/")]


def table(group, rows):
    for (workload, size), peers in sorted(rows.items(), key=lambda row: natural(row[0])):
        ours = {name: p for name, p in peers.items() if name.startswith("ours")}
        others = sorted((p for p in peers.items() if p[0] not in ours), key=lambda p: p[1].time)
        competitors = [p for p in others if not is_limit(p[0])]
        limits = [p for p in others if is_limit(p[0])]
        for name, measured in sorted(ours.items()):
            variant = name[len("ours"):].strip("_")
            ratio = measured.ratio(competitors[0][1]) if competitors else ""
            cells = [group, " ".join(filter(None, (workload, size, variant))), measured.figure(), ratio]
            cells += [", ".join(f"{n} {p.figure()}" for n, p in some) for some in (competitors, limits)]
            print("| " + " | ".join(cells) + " |")


def plot(rows, path):
    lines = collections.defaultdict(list)
    for (workload, size), peers in rows.items():
        lines[workload].append((int(size), peers["ours"].time_per_item()))
    path.write_text(growth_plot.svg(lines))
    print(f"\nThe time an item against the size: {path}")


def main(results, groups):
    print("| Group | Workload | Ours | Ratio to the best peer (spread) | Peers | Limits |\n|---|---|---|---|---|---|")
    paths = [path for path in sorted(results.glob("*.json")) if not groups or path.stem in groups]
    for path in paths:
        if path.stem != "growth":
            table(path.stem, read(path))
    for path in paths:
        if path.stem == "growth":
            plot(read(path), results / "growth.svg")


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]), set(sys.argv[2:]))
