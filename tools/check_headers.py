#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compiles every public header alone, twice in one file: tools/check_headers.py COMPILER...

As C++17, 20 and 23, with every warning an error. Compilers that are not installed are left out; the last line names the
ones that were asked, and how long ky.h took alone in the best of three runs.
"""
import os
import shutil
import subprocess
import sys
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

INCLUDE = Path(__file__).resolve().parent.parent / "include"
STANDARDS = ("c++17", "c++20", "c++2b")
WARNINGS = ("-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wsign-conversion", "-Wshadow", "-Wold-style-cast", "-Werror")


def compile_header(job):
    compiler, standard, header = job
    text = f"#include <{header}>\n" * 2
    done = subprocess.run([compiler, f"-std={standard}", *WARNINGS, "-fsyntax-only", f"-I{INCLUDE}", "-x", "c++", "-"],
                          input=text, capture_output=True, text=True, check=False)
    return f"{compiler} {standard} {header}:\n{done.stderr}" if done.returncode else None


def seconds_for(compiler, header):
    best = None
    for _ in range(3):
        start = time.monotonic()
        compile_header((compiler, STANDARDS[0], header))
        best = min(best or 1e9, time.monotonic() - start)
    return best


def main():
    compilers = [name for name in sys.argv[1:] if shutil.which(name)]
    headers = sorted(path.relative_to(INCLUDE).as_posix() for path in INCLUDE.rglob("*.h"))
    jobs = [(compiler, standard, header) for compiler in compilers for standard in STANDARDS for header in headers]
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        faults = [fault for fault in pool.map(compile_header, jobs) if fault]
    print("\n".join(faults))
    for compiler in compilers:
        print(f"{compiler}: {len(headers)} headers, {', '.join(STANDARDS)}; ky.h alone {seconds_for(compiler, 'ky/ky.h'):.2f} s")
    return 1 if faults or not jobs else 0


if __name__ == "__main__":
    sys.exit(main())
