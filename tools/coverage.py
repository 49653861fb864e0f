#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs the tests of a build with coverage and prints what they reach: tools/coverage.py BUILD_DIR [--markdown FILE] [--reuse]

Counts the branches of the portable code: src/ without the files of one platform. Programs that die on purpose leave no
record, so what only they reach counts as not reached. --reuse takes the records of an earlier run.
"""
import json
import os
import subprocess
import sys
from collections import defaultdict
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
VERSION = "-14"
GOAL = 90.0


def run_tests(build, profiles):
    for old in profiles.glob("*.profraw"):
        old.unlink()
    profiles.mkdir(parents=True, exist_ok=True)
    environment = dict(os.environ, LLVM_PROFILE_FILE=str(profiles / "%4m.profraw"))
    return subprocess.run(["ctest", "--test-dir", str(build), "-j2", "--output-on-failure", "-LE", "package"],
                          env=environment, check=False).returncode


def programs(build):
    found = [path for path in sorted((build / "bin").iterdir()) if path.is_file() and os.access(path, os.X_OK)]
    return [build / "lib" / "libkySystem.so"] + found


def summary(build, profiles):
    merged = profiles / "all.profdata"
    records = [str(path) for path in profiles.glob("*.profraw")]
    subprocess.run([f"llvm-profdata{VERSION}", "merge", "-sparse", "-o", str(merged), *records], check=True)
    first, *others = programs(build)
    objects = [argument for other in others for argument in ("-object", str(other))]
    done = subprocess.run([f"llvm-cov{VERSION}", "export", "-summary-only", f"-instr-profile={merged}", str(first), *objects],
                          capture_output=True, text=True, check=True)
    return json.loads(done.stdout)["data"][0]["files"]


def is_portable(name):
    return name.startswith("src/") and not name.startswith("src/platform/") and "_linux" not in name and "_windows" not in name


def percent(covered, count):
    return 100.0 * covered / count if count else 100.0


def table(files):
    rooms, worst = defaultdict(lambda: [0, 0, 0, 0]), []
    for file in files:
        path = Path(file["filename"])
        if not path.is_relative_to(ROOT):
            continue
        name = path.relative_to(ROOT).as_posix()
        if not is_portable(name):
            continue
        lines, branches = file["summary"]["lines"], file["summary"]["branches"]
        numbers = (lines["covered"], lines["count"], branches["covered"], branches["count"])
        for key in (name.split("/")[1], "all"):
            rooms[key] = [a + b for a, b in zip(rooms[key], numbers)]
        worst.append((percent(numbers[2], numbers[3]), numbers[3] - numbers[2], name))
    return rooms, sorted(worst, key=lambda entry: -entry[1])


def main():
    build = Path(sys.argv[1])
    profiles = build / "profiles"
    failed = 0 if "--reuse" in sys.argv else run_tests(build, profiles)
    rooms, worst = table(summary(build, profiles))
    lines = ["| room | lines | branches |", "|---|---|---|"]
    for room in sorted(rooms, key=lambda name: (name == "all", name)):
        numbers = rooms[room]
        lines.append(f"| {room} | {percent(*numbers[:2]):.1f} % | {percent(*numbers[2:]):.1f} % |")
    print("\n".join(lines))
    print("\nmost branches not reached:")
    for share, missing, name in worst[:25]:
        print(f"{missing:5d}  {share:5.1f} %  {name}")
    if "--markdown" in sys.argv:
        Path(sys.argv[sys.argv.index("--markdown") + 1]).write_text("\n".join(lines) + "\n", encoding="utf-8")
    reached = percent(*rooms["all"][2:])
    return failed or (0 if reached >= GOAL else 1)


if __name__ == "__main__":
    sys.exit(main())
