#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs the long forms of the reliability tests and prints a table: tools/soak.py BIN_DIR [MINUTES]

Tests that have a long form take it when KY_SOAK is set. Rounds are repeated until the time is used up; the first failure
ends the run and its output is shown.
"""
import os
import subprocess
import sys
import time
from pathlib import Path

# Programs whose tests have a long form.
LONG_FORMS = ("diagnostics_process_test", "diagnostics_crash_test", "diagnostics_fault_test",
              "diagnostics_crash_path_test", "concurrency_mutex_test",
              "concurrency_wait_condition_test", "concurrency_thread_test", "concurrency_work_thread_test",
              "concurrency_updater_test", "concurrency_system_mutex_test", "concurrency_system_mutex_files_test",
              "filesystem_lock_test", "filesystem_walk_faults_test", "filesystem_file_faults_test",
              "variant_test", "ini_test", "io_test", "frame_test", "tool_test")


def main():
    folder = Path(sys.argv[1])
    minutes = float(sys.argv[2]) if len(sys.argv) > 2 else 20
    end = time.monotonic() + 60 * minutes
    environment = dict(os.environ, KY_SOAK="1")
    tally = {}
    round_number = 0
    while round_number == 0 or time.monotonic() < end:
        round_number += 1
        for program in LONG_FORMS:
            start = time.monotonic()
            done = subprocess.run([str(folder / program), "--gtest_brief=1"],
                                  env=environment, capture_output=True, text=True, check=False)
            runs, seconds = tally.get(program, (0, 0.0))
            tally[program] = (runs + 1, seconds + time.monotonic() - start)
            print(f"round {round_number}: {program}: {'passed' if done.returncode == 0 else 'FAILED'} "
                  f"in {time.monotonic() - start:.0f} s", flush=True)
            if done.returncode != 0:
                print(done.stdout[-8000:], done.stderr[-4000:], sep="\n")
                return 1
    print(f"\n{'program':<32} {'rounds':>6} {'seconds':>8}")
    for program, (runs, seconds) in tally.items():
        print(f"{program:<32} {runs:>6} {seconds:>8.0f}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
