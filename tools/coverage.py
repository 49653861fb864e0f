#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs the tests of a build with coverage and prints what they reach:

    tools/coverage.py BUILD_DIR [--reuse] [--filter TESTS] [--markdown FILE] [--missing PART_OF_A_NAME]

Counts lines and the outcomes of conditions in the portable code: src/ without the files of one platform. What several
programs reach of one place is added up, and so is what the instances of a template reach; a condition that is constant on
this platform counts as not reached. --filter runs only the tests of that name and adds to the records there are; --reuse
runs none. --missing lists the outcomes that nobody reached in the files of such a name.
"""
import argparse
import json
import os
import subprocess
import sys
from collections import defaultdict
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
VERSION = "-14"
GOAL = 90.0
# Nothing of the library runs in these.
ASIDE = "^(headers|layout|pages|exports|reference|package_.*)$"


def run_tests(build, profiles, only):
    profiles.mkdir(parents=True, exist_ok=True)
    if not only:
        for old in profiles.glob("*.profraw"):
            old.unlink()
    environment = dict(os.environ, LLVM_PROFILE_FILE=str(profiles / "%c%m.profraw"))
    choice = ["-R", only] if only else []
    return subprocess.run(["ctest", "--test-dir", str(build), "-j2", "--output-on-failure", "-E", ASIDE, *choice],
                          env=environment, check=False).returncode


def recorded(build):
    """The library and the programs that hold parts of it."""
    found = [build / "lib" / "libkySystem.so"] + sorted((build / "bin").iterdir())
    return [path for path in found if path.is_file() and b"__llvm_covmap" in path.read_bytes()]


def export(build, profiles):
    merged = profiles / "all.profdata"
    records = [str(path) for path in profiles.glob("*.profraw")]
    subprocess.run([f"llvm-profdata{VERSION}", "merge", "-sparse", "-o", str(merged), *records], check=True)
    first, *others = recorded(build)
    objects = [argument for other in others for argument in ("-object", str(other))]
    done = subprocess.run([f"llvm-cov{VERSION}", "export", "-skip-expansions", f"-instr-profile={merged}", str(first),
                           *objects, str(ROOT / "src")], stdout=subprocess.PIPE, text=True, check=True)
    return json.loads(done.stdout)["data"][0]["files"]


def is_portable(name):
    return name.startswith("src/") and not name.startswith("src/platform/") and "_linux" not in name and "_windows" not in name


def outcomes(file):
    """{(line, column, outcome): times}"""
    found = defaultdict(int)
    for line, column, _, _, taken, passed, *_ in file["branches"]:
        found[line, column, True] += taken
        found[line, column, False] += passed
    return found


def portable_files(files):
    """{name: (lines reached, lines, outcomes)}"""
    found = {}
    for file in files:
        name = os.path.relpath(os.path.normpath(file["filename"]), ROOT)
        if is_portable(name):
            lines = file["summary"]["lines"]
            found[name] = (lines["covered"], lines["count"], outcomes(file))
    return found


def percent(covered, count):
    return 100.0 * covered / count if count else 100.0


def table(files):
    rooms, worst = defaultdict(lambda: [0, 0, 0, 0]), []
    for name, (lines_reached, lines, branches) in files.items():
        reached = sum(1 for times in branches.values() if times)
        for key in (name.split("/")[1], "all"):
            rooms[key] = [a + b for a, b in zip(rooms[key], (lines_reached, lines, reached, len(branches)))]
        worst.append((len(branches) - reached, percent(reached, len(branches)), name))
    return rooms, sorted(worst, reverse=True)


def print_missing(files, part):
    for name, (_, _, branches) in sorted(files.items()):
        if part not in name:
            continue
        text = (ROOT / name).read_text(encoding="utf-8").splitlines()
        for line, column, outcome in sorted(place for place, times in branches.items() if not times):
            print(f"{name}:{line}:{column}: never {'true' if outcome else 'false'}: {text[line - 1].strip()}")


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=Path)
    parser.add_argument("--reuse", action="store_true")
    parser.add_argument("--filter", metavar="TESTS")
    parser.add_argument("--markdown", type=Path, metavar="FILE")
    parser.add_argument("--missing", metavar="PART_OF_A_NAME")
    return parser.parse_args()


def main():
    chosen = arguments()
    profiles = chosen.build.resolve() / "profiles"
    failed = 0 if chosen.reuse else run_tests(chosen.build, profiles, chosen.filter)
    files = portable_files(export(chosen.build, profiles))
    rooms, worst = table(files)
    lines = ["| room | lines | branches |", "|---|---|---|"]
    for room in sorted(rooms, key=lambda name: (name == "all", name)):
        numbers = rooms[room]
        lines.append(f"| {room} | {percent(*numbers[:2]):.1f} % | {percent(*numbers[2:]):.1f} % |")
    print("\n".join(lines))
    print("\nmost branches not reached:")
    for missing, share, name in worst[:25]:
        print(f"{missing:5d}  {share:5.1f} %  {name}")
    if chosen.missing:
        print_missing(files, chosen.missing)
    if chosen.markdown:
        chosen.markdown.write_text("\n".join(lines) + "\n", encoding="utf-8")
    return failed or (0 if percent(*rooms["all"][2:]) >= GOAL else 1)


if __name__ == "__main__":
    sys.exit(main())
