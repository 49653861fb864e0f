#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks the models of the locks with Spin: tools/check_models.py [MODEL...] [--spin PROGRAM] [--cc PROGRAM] [--jobs N]

A model, tests/models/*.pml, lists its runs itself, a line each, as definitions for its preprocessor:

  // check: NAME=VALUE NAME ...                   every state is right
  // known: NAME=VALUE ... finds KIND             a weakness that is documented, and is to be found
  // mistake: NAME=VALUE ... finds KIND           a mistake that is put into the model, and is to be found

KIND is `assertion` or `deadlock`: an end at which somebody still waits. All states of a run are visited; a run that does
not come to its end within the limits has failed. Prints a table, and the way to the fault where there is one that is
not to be. Exits 1 when a run did not give what it is to give.
"""
import argparse
import re
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path

MODELS = Path(__file__).resolve().parent.parent / "tests" / "models"
LIMIT_DEPTH = 100_000
LIMIT_MEMORY_MB = 1_000
LIMIT_SECONDS = 120
TRAIL_LINES = 80

RUN = re.compile(r"^// (check|known|mistake): (.+?)(?: finds (assertion|deadlock))?$", re.MULTILINE)
FOUND = {"assertion": r"^pan:\d+: assertion violated", "deadlock": r"^pan:\d+: invalid end state"}
INCOMPLETE = re.compile(r"max search depth too small|Search not completed|out of memory|memory limit")


@dataclass
class Run:
    model: Path
    kind: str
    definitions: list
    expected: str
    states: int = 0
    found: str = ""
    text: str = ""

    @property
    def is_right(self):
        return self.found == self.expected

    def __str__(self):
        return " ".join(self.definitions)


def runs_of(model):
    runs = [Run(model, kind, definitions.split(), expected or "nothing")
            for kind, definitions, expected in RUN.findall(model.read_text(encoding="utf-8"))]
    if not any(run.kind == "check" for run in runs) or not any(run.kind == "mistake" for run in runs):
        raise SystemExit(f"{model.name}: needs checks and mistakes")
    if any((run.kind == "check") != (run.expected == "nothing") for run in runs):
        raise SystemExit(f"{model.name}: a check finds nothing, everything else something")
    return runs


def output_of(command, folder):
    done = subprocess.run(command, cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          timeout=LIMIT_SECONDS, check=False)
    return done.returncode, done.stdout


def build(run, tools, folder):
    """Empty, or what went wrong."""
    definitions = [f"-D{definition}" for definition in run.definitions]
    code, text = output_of([tools.spin, "-a", *definitions, str(run.model)], folder)
    if code != 0 or "Error" in text or not (folder / "pan.c").exists():
        return text
    # Not optimized: that takes longer than it saves in searches as short as these.
    code, text = output_of([tools.cc, "-O0", "-w", "-DSAFETY", f"-DMEMLIM={LIMIT_MEMORY_MB}", "-o", "pan", "pan.c"], folder)
    return text if code != 0 else ""


def judge(run, text):
    run.states = int((re.search(r"(\d+) states, stored", text) or [0, 0])[1])
    for kind, message in FOUND.items():
        if re.search(message, text, re.MULTILINE):
            return kind
    if re.search(r"errors: 0\b", text) and not INCOMPLETE.search(text):
        return "nothing"
    return "no end"


def perform(run, tools):
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        try:
            run.text = build(run, tools, folder)
            if run.text:
                run.found = "no model"
                return run
            _, run.text = output_of(["./pan", f"-m{LIMIT_DEPTH}", "-w20"], folder)
            run.found = judge(run, run.text)
            if run.found in FOUND and not run.is_right:
                trail = [f"-D{definition}" for definition in run.definitions]
                _, steps = output_of([tools.spin, "-t", "-p", "-k", f"{run.model.name}.trail", *trail, str(run.model)], folder)
                run.text = "\n".join(steps.splitlines()[-TRAIL_LINES:])
        except subprocess.TimeoutExpired:
            run.found = "no end"
    return run


def show(runs):
    width = max(len(str(run)) for run in runs)
    model = None
    for run in runs:
        if run.model != model:
            model = run.model
            print(f"\n{model.stem}")
        mark = "ok" if run.is_right else "WRONG"
        print(f"  {run.kind:<8} {str(run):<{width}} {run.states:>9,} states  {run.found:<10} {mark}")
    for run in runs:
        if not run.is_right:
            print(f"\n{run.model.name}: {run}: {run.found} instead of {run.expected}\n{run.text}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("models", nargs="*", help="names without folder and ending; all when none is given")
    parser.add_argument("--spin", default="spin")
    parser.add_argument("--cc", default="gcc")
    parser.add_argument("--jobs", type=int, default=2)
    tools = parser.parse_args()
    chosen = [MODELS / f"{name}.pml" for name in tools.models] or sorted(MODELS.glob("*.pml"))
    runs = [run for model in chosen for run in runs_of(model)]
    with ThreadPoolExecutor(tools.jobs) as pool:
        runs = list(pool.map(lambda run: perform(run, tools), runs))
    show(runs)
    wrong = sum(not run.is_right for run in runs)
    mistakes = [run for run in runs if run.kind == "mistake"]
    print(f"\n{len({run.model for run in runs})} models, {len(runs)} runs, {sum(run.states for run in runs):,} states; "
          f"{sum(run.is_right for run in mistakes)} of {len(mistakes)} planted mistakes found; {wrong} runs wrong")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
