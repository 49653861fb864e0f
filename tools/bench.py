#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs the benchmark programs and prints one table of ratios: tools/bench.py BIN_DIR [AREA] [--json OUT]

A benchmark is named WORKLOAD/CASE/CONTESTANT. The contestant "ky" is this library, names that begin with "floor" are
what no implementation can avoid, all others are peers. Each figure is the median of the repetitions of one run.
"""
import json
import os
import subprocess
import sys
from collections import defaultdict
from pathlib import Path

REPETITIONS = 5


def run(program):
    command = [str(program), "--benchmark_format=json", f"--benchmark_repetitions={REPETITIONS}",
               "--benchmark_enable_random_interleaving=true", "--benchmark_min_time=0.15"]
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        print(f"{program.name} failed:\n{done.stderr[-2000:]}", file=sys.stderr)
        return []
    return json.loads(done.stdout)["benchmarks"]


def collect(programs):
    rows = defaultdict(dict)
    for program in programs:
        print(f"running {program.name} ...", file=sys.stderr, flush=True)
        for entry in run(program):
            if entry.get("aggregate_name") != "median" or entry.get("error_occurred"):
                continue
            parts = [p for p in entry["run_name"].split("/") if not p.startswith(("threads:", "real_time", "process_time",
                                                                                  "manual_time", "iterations:"))]
            row, contestant = "/".join(parts[:2]), "/".join(parts[2:]) or "ky"
            # Several names may stand for work done N items at a time; time an item is what compares.
            per_item = 1e9 / entry["items_per_second"] if entry.get("items_per_second") else entry["real_time"]
            rows[row][contestant] = per_item
    return rows


def best(row, wanted):
    found = [(time, name) for name, time in row.items() if wanted(name)]
    return min(found) if found else (None, "-")


def ratio(value, base):
    return f"{value / base:6.2f}" if value and base else "     -"


def main():
    arguments = sys.argv[1:]
    out = None
    if "--json" in arguments:
        at = arguments.index("--json")
        out = arguments[at + 1]
        del arguments[at:at + 2]
    folder = Path(arguments[0])
    areas = arguments[1:] or [p.name[6:] for p in sorted(folder.glob("bench_*")) if os.access(p, os.X_OK)]
    rows = collect([folder / f"bench_{area}" for area in areas])
    print(f"{'row':<40} {'/ best peer':>11} {'best peer':<26} {'/ floor':>8}")
    for name in sorted(rows):
        row = rows[name]
        own = row.get("ky")
        peer, peer_name = best(row, lambda n: n != "ky" and not n.startswith(("floor", "ky")))
        floor, _ = best(row, lambda n: n.startswith("floor"))
        print(f"{name:<40} {ratio(own, peer):>11} {peer_name:<26} {ratio(own, floor):>8}")
    if out:
        Path(out).write_text(json.dumps(rows, indent=1, sort_keys=True), encoding="utf-8")
    return 0 if rows else 1


if __name__ == "__main__":
    sys.exit(main())
