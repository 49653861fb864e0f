#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs the benchmark programs and prints one table: tools/bench.py BIN_DIR [AREA...] [--out FOLDER] [--from JSON]

A benchmark is named WORKLOAD/CASE/CONTESTANT. The contestant "ky" is this library, names that begin with "floor" are
what no implementation can avoid, all others are peers. Each figure is the median of the repetitions of one run. Rows
that bench/targets.json names have a target: at most so many times the time of the best peer, of the floor, or of the
contestant that is named there.

--out FOLDER also writes results.json, performance.md and performance.svg there; --from JSON takes the figures of an
earlier run instead of measuring.
"""
import json
import math
import os
import subprocess
import sys
import tempfile
from collections import defaultdict
from pathlib import Path

REPETITIONS = 5
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
TARGETS = Path(__file__).resolve().parent.parent / "bench" / "targets.json"


def run(program):
    # Into a file: what a benchmark logs goes to the standard output.
    with tempfile.TemporaryDirectory() as folder:
        report = Path(folder) / "report.json"
        command = [str(program), f"--benchmark_out={report}", "--benchmark_out_format=json",
                   f"--benchmark_repetitions={REPETITIONS}", "--benchmark_enable_random_interleaving=true",
                   "--benchmark_min_time=0.15"]
        done = subprocess.run(command, capture_output=True, text=True, errors="replace", check=False)
        if done.returncode != 0:
            print(f"{program.name} failed:\n{done.stderr[-2000:]}", file=sys.stderr)
            return []
        return json.loads(report.read_text(encoding="utf-8"))["benchmarks"]


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
            whole = entry["real_time"] * NANOSECONDS[entry["time_unit"]]
            per_item = 1e9 / entry["items_per_second"] if entry.get("items_per_second") else whole
            rows[row][contestant] = per_item
    return rows


def best(row, wanted):
    found = [(time, name) for name, time in row.items() if wanted(name)]
    return min(found) if found else (None, "")


def ratio(value, base):
    return value / base if value and base else None


def shown(value, form="{:.2f}"):
    return form.format(value) if value is not None else "-"


def figure(nanoseconds):
    """Three digits and a unit."""
    if nanoseconds is None:
        return "-"
    for unit, factor in (("ns", 1), ("us", 1e3), ("ms", 1e6)):
        if nanoseconds < 1000 * factor or unit == "ms":
            return f"{nanoseconds / factor:.3g} {unit}"
    return None


class Row:
    def __init__(self, name, times, target):
        self.name = name
        self.own = times.get("ky")
        self.peer, self.peer_name = best(times, lambda n: not n.startswith(("floor", "ky")))
        self.floor, _ = best(times, lambda n: n.startswith("floor"))
        self.to_peer, self.to_floor = ratio(self.own, self.peer), ratio(self.own, self.floor)
        self.target, self.verdict = "", ""
        for base, limit in target.items():
            reached = {"peer": self.to_peer, "floor": self.to_floor}.get(base, ratio(self.own, times.get(base)))
            if reached is not None:
                self.target = f"{limit:g} x {base}"
                self.verdict = "met" if reached <= limit else "missed"

    def cells(self):
        return [self.name, figure(self.own), figure(self.peer), self.peer_name, figure(self.floor), shown(self.to_peer),
                shown(self.to_floor), self.target, self.verdict]


HEADER = ["row", "kySystem", "best peer", "which", "floor", "/ peer", "/ floor", "target", ""]


def text_table(rows):
    lines = [HEADER] + [row.cells() for row in rows]
    widths = [max(len(line[i]) for line in lines) for i in range(len(HEADER))]
    return "\n".join("  ".join(cell.ljust(width) if i in (0, 3, 7, 8) else cell.rjust(width)
                               for i, (cell, width) in enumerate(zip(line, widths))).rstrip() for line in lines)


def markdown_table(rows):
    lines = ["| " + " | ".join(HEADER) + " |", "|" + "---|" * len(HEADER)]
    lines += ["| `" + row.cells()[0] + "` | " + " | ".join(row.cells()[1:]) + " |" for row in rows]
    return "\n".join(lines) + "\n"


def plot(rows):
    """Bars from the best peer's time (1) to ours, in powers of two, as a drawing that a browser shows."""
    rows = [row for row in rows if row.to_peer]
    left, unit, step = 270, 42, 17
    middle, height = left + 7 * unit, 40 + step * len(rows)
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{middle + 3 * unit}" height="{height}" '
           'font-family="sans-serif" font-size="11">',
           '<rect width="100%" height="100%" fill="#ffffff"/>',
           f'<text x="{left}" y="14">time beside the best peer (shorter is faster; 1 is equal)</text>']
    for power in range(-7, 3):
        x = middle + power * unit
        label = f"1/{2 ** -power}" if power < 0 else f"{2 ** power}"
        out.append(f'<line x1="{x}" x2="{x}" y1="34" y2="{height}" stroke="{"#444444" if power == 0 else "#dddddd"}"/>')
        out.append(f'<text x="{x}" y="30" text-anchor="middle" fill="#666666">{label}</text>')
    for index, row in enumerate(rows):
        x = middle + max(-7.0, min(2.5, math.log2(row.to_peer))) * unit
        y = 38 + index * step
        colour = "#2a7a4b" if row.to_peer <= 1 else "#b0562a"
        out.append(f'<text x="{left - 8}" y="{y + 10}" text-anchor="end">{row.name}</text>')
        out.append(f'<rect x="{min(x, middle):.1f}" y="{y}" width="{abs(x - middle):.1f}" height="{step - 5}" fill="{colour}"/>')
    return "\n".join(out + ["</svg>"]) + "\n"


def option(arguments, name):
    if name not in arguments:
        return None
    at = arguments.index(name)
    value = arguments[at + 1]
    del arguments[at:at + 2]
    return value


def main():
    arguments = sys.argv[1:]
    out, source = option(arguments, "--out"), option(arguments, "--from")
    if source:
        times = json.loads(Path(source).read_text(encoding="utf-8"))
    else:
        folder = Path(arguments[0])
        areas = arguments[1:] or [p.name[6:] for p in sorted(folder.glob("bench_*")) if os.access(p, os.X_OK)]
        times = collect([folder / f"bench_{area}" for area in areas])
    targets = json.loads(TARGETS.read_text(encoding="utf-8"))
    rows = [Row(name, times[name], targets.get(name, {})) for name in sorted(times) if "ky" in times[name]]
    print(text_table(rows))
    missing = sorted(set(targets) - set(times))
    if missing and not source and not arguments[1:]:
        print("not measured: " + ", ".join(missing))
    if out:
        Path(out).mkdir(parents=True, exist_ok=True)
        Path(out, "results.json").write_text(json.dumps(times, indent=1, sort_keys=True), encoding="utf-8")
        Path(out, "performance.md").write_text(markdown_table(rows), encoding="utf-8")
        Path(out, "performance.svg").write_text(plot(rows), encoding="utf-8")
    return 0 if rows else 1


if __name__ == "__main__":
    sys.exit(main())
