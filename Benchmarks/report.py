#!/usr/bin/env python3
"""The medians of a results directory as a table of ratios.

usage: report.py RESULTS_DIR [group...]

Ours stands beside its best peer: the fastest that is neither a limit nor mere context (another kind of
thing). Below 1 means that we are faster. Without peers in the results, only our own times are printed.
"""
import json
import pathlib
import sys

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def read(path):
    """(workload, size) -> peer -> (nanoseconds an iteration, the median's record)"""
    rows = {}
    for record in json.loads(path.read_text())["benchmarks"]:
        if record.get("aggregate_name") != "median":
            continue
        parts = record["run_name"].split("/")
        # What a program run as a process takes is measured by hand, what several threads take by the clock.
        time = record["real_time" if {"manual_time", "real_time"} & set(parts) else "cpu_time"]
        parts = [p for p in parts if not p.startswith(("min_time", "repeats", "manual_time", "real_time"))]
        peers = rows.setdefault((parts[0], "/".join(parts[2:])), {})
        peers[parts[1]] = (time * NANOSECONDS[record["time_unit"]], record)
    return rows


def figure(time, record):
    if record.get("bytes_per_second"):
        return f"{record['bytes_per_second'] / 1e9:.2f} GB/s"
    ns = 1e9 / record["items_per_second"] if record.get("items_per_second") else time
    for unit, factor in (("ns", 1), ("us", 1e3), ("ms", 1e6)):
        if ns < 1000 * factor:
            return f"{ns / factor:.3g} {unit}"
    return f"{ns / 1e9:.3g} s"


def is_limit(name):
    return name.startswith(("limit", "context"))


def natural(key):
    """Sorts 16 before 256."""
    return [(0, int(part), "") if part.isdigit() else (1, 0, part) for word in key for part in word.split("/")]


def table(group, rows):
    for (workload, size), peers in sorted(rows.items(), key=lambda row: natural(row[0])):
        ours = {name: p for name, p in peers.items() if name.startswith("ours")}
        others = sorted((p for p in peers.items() if p[0] not in ours), key=lambda p: p[1][0])
        competitors = [p for p in others if not is_limit(p[0])]
        limits = [p for p in others if is_limit(p[0])]
        for name, (time, record) in sorted(ours.items()):
            variant = name[len("ours"):].strip("_")
            ratio = f"{time / competitors[0][1][0]:.2f}" if competitors else ""
            cells = [group, " ".join(filter(None, (workload, size, variant))), figure(time, record), ratio]
            cells += [", ".join(f"{n} {figure(*p)}" for n, p in some) for some in (competitors, limits)]
            print("| " + " | ".join(cells) + " |")


def main(results, groups):
    print("| Group | Workload | Ours | Ratio to the best peer | Peers | Limits |\n|---|---|---|---|---|---|")
    for path in sorted(results.glob("*.json")):
        if not groups or path.stem in groups:
            table(path.stem, read(path))


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]), set(sys.argv[2:]))
