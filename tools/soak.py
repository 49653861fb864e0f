#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs the long forms of the reliability tests: tools/soak.py BIN_DIR [MINUTES]

Every program runs once at least, and then again in turn until the time is up, as many at once as there are processors.
The tests tell what they tried, what they survived meanwhile and what was lost; the sums are printed as one table, and
beside it what each program needed. A program that fails is not run again and makes the exit code 1: a test fails or
hangs, a process or a file is left behind.
"""
import os
import resource
import signal
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

# Programs whose tests have a long form, in the order of the table.
PROGRAMS = (
    "diagnostics_process_test", "diagnostics_fault_test", "diagnostics_crash_test", "diagnostics_test",
    "diagnostics_crash_path_test", "frame_test", "frame_module_test", "concurrency_system_mutex_test",
    "concurrency_system_mutex_files_test", "concurrency_wait_condition_test", "concurrency_thread_test",
    "concurrency_work_thread_test", "concurrency_updater_test", "concurrency_solver_test",
    "concurrency_dispatch_test", "concurrency_pool_process_test", "variant_internal_test", "ini_test", "io_test",
    "csv_writer_test", "device_test", "data_stream_test", "filesystem_path_test", "filesystem_file_faults_test",
    "filesystem_walk_faults_test", "filesystem_lock_test", "filesystem_lock_faults_test", "process_test",
    "process_arguments_test", "process_command_line_test", "process_output_test", "process_linux_test", "pipe_test",
    "pipe_access_test", "pipe_clients_test", "system_record_test", "progress_model_test", "progress_proxy_test",
    "text_test", "frame_mixed_test")

# What runs out there must not be missed anywhere.
FEW_DESCRIPTORS = {"frame_mixed_test": 64}

LIMIT_SECONDS = 1200


class Run:
    """One run of one program in a session and a temporary folder of its own."""

    def __init__(self, program, folder):
        self.name = program.name
        self.temporary = Path(folder, "temporary")
        self.rows_file = Path(folder, "rows")
        self.output_file = Path(folder, "output")
        # Some tests go on as another user.
        os.chmod(folder, 0o755)
        self.temporary.mkdir()
        os.chmod(self.temporary, 0o1777)
        environment = dict(os.environ, KY_SOAK="1", KY_SOAK_ROWS=str(self.rows_file), TMPDIR=str(self.temporary))
        start = time.monotonic()
        with open(self.output_file, "wb") as output:
            self.child = subprocess.Popen([str(program), "--gtest_brief=1"], env=environment, stdin=subprocess.DEVNULL,
                                          stdout=output, stderr=subprocess.STDOUT, start_new_session=True)
        if self.name in FEW_DESCRIPTORS:
            resource.prlimit(self.child.pid, resource.RLIMIT_NOFILE, (FEW_DESCRIPTORS[self.name],) * 2)
        self.faults = []
        self.wait(start + LIMIT_SECONDS)
        self.seconds = time.monotonic() - start
        self.look_for_remains()
        self.told = list(self.rows())

    def wait(self, end):
        pid = 0
        while pid == 0:
            pid, status, usage = os.wait4(self.child.pid, os.WNOHANG)
            if pid == 0 and time.monotonic() > end:
                self.faults.append(f"did not end within {LIMIT_SECONDS} s")
                os.kill(self.child.pid, signal.SIGKILL)
                end += LIMIT_SECONDS
            time.sleep(0.01)
        self.child.returncode = os.waitstatus_to_exitcode(status)
        self.megabytes = usage.ru_maxrss / 1024
        self.processor_seconds = usage.ru_utime + usage.ru_stime
        if self.child.returncode != 0:
            self.faults.append(f"ended with {self.child.returncode}")

    def look_for_remains(self):
        end = time.monotonic() + 20
        while session_members(self.child.pid) and time.monotonic() < end:
            time.sleep(0.1)
        remains = session_members(self.child.pid)
        if remains:
            self.faults.append(f"left processes: {', '.join(remains)}")
        files = sorted(entry.name for entry in self.temporary.iterdir())
        if files:
            self.faults.append(f"left files: {', '.join(files[:10])}")

    def rows(self):
        if not self.rows_file.exists():
            return
        for line in self.rows_file.read_text(encoding="utf-8").splitlines():
            subject, *rest = line.split("\t")
            yield (subject, *rest[1::2]), [int(number) for number in rest[::2]]


def session_members(session):
    """Names of the processes of a session that have not ended."""
    names = []
    for entry in Path("/proc").iterdir():
        if not entry.name.isdigit():
            continue
        try:
            name, rest = (entry / "stat").read_text(encoding="utf-8", errors="replace").rsplit(")", 1)
        except OSError:
            continue
        state, _, _, of_session = rest.split()[:4]
        if int(of_session) == session and state not in "ZX":
            names.append(name.split("(", 1)[1])
    return names


def print_table(heads, rows):
    rows = [heads, *rows]
    widths = [max(len(row[i]) for row in rows) for i in range(len(heads))]
    for index, row in enumerate(rows):
        print("| " + " | ".join(cell.ljust(width) for cell, width in zip(row, widths)) + " |")
        if index == 0:
            print("|" + "|".join("-" * (width + 2) for width in widths) + "|")


def counted(number, what):
    return f"{number:,} {what}" if what else ""


class Soak:
    """Many runs, and the sums of what they tell."""

    def __init__(self, folder, minutes):
        self.folder = folder
        self.start = time.monotonic()
        self.end = self.start + 60 * minutes
        self.lock = threading.Lock()
        self.turns = 0
        self.failed = set()
        self.sums = {}
        self.runs = {name: [] for name in PROGRAMS}

    def run_all(self):
        workers = [threading.Thread(target=self.work) for _ in range(os.cpu_count())]
        for worker in workers:
            worker.start()
        for worker in workers:
            worker.join()

    def work(self):
        while True:
            with self.lock:
                over = self.turns >= len(PROGRAMS) and time.monotonic() > self.end
                if over or len(self.failed) == len(PROGRAMS):
                    return
                name = PROGRAMS[self.turns % len(PROGRAMS)]
                self.turns += 1
                if name in self.failed:
                    continue
            with tempfile.TemporaryDirectory() as folder:
                run = Run(self.folder / name, folder)
                with self.lock:
                    self.add(run)

    def add(self, run):
        print(f"{run.name}: {'FAILED' if run.faults else 'passed'} in {run.seconds:.0f} s", flush=True)
        for key, numbers in run.told:
            self.sums[key] = [a + b for a, b in zip(self.sums.get(key, (0, 0, 0)), numbers)]
        self.runs[run.name].append(run)
        if run.faults:
            self.failed.add(run.name)
            print(run.output_file.read_text(encoding="utf-8", errors="replace")[-12000:])
            print(f"{run.name}: {'; '.join(run.faults)}")

    def print_result(self):
        minutes = (time.monotonic() - self.start) / 60
        runs = sum(len(runs) for runs in self.runs.values())
        print(f"\n{minutes:.0f} minutes, {runs} runs of {len(PROGRAMS)} programs, {len(self.failed)} failed\n")
        first = [key[0] for name in PROGRAMS for run in self.runs[name] for key, _ in run.told]
        print_table(("subject", "tried", "survived meanwhile", "lost"),
                    [(key[0], *map(counted, numbers, key[1:]))
                     for key, numbers in sorted(self.sums.items(), key=lambda entry: first.index(entry[0][0]))])
        print()
        print_table(("program", "runs", "seconds", "of a processor", "MB at most, first run", "last run"),
                    [(name, str(len(runs)), f"{sum(run.seconds for run in runs):.0f}",
                      f"{sum(run.processor_seconds for run in runs):.0f}", f"{runs[0].megabytes:.0f}",
                      f"{runs[-1].megabytes:.0f}") for name, runs in self.runs.items() if runs])


def main():
    folder = Path(sys.argv[1])
    missing = [name for name in PROGRAMS if not (folder / name).exists()]
    if missing:
        sys.exit(f"not built: {', '.join(missing)}")
    soak = Soak(folder, float(sys.argv[2]) if len(sys.argv) > 2 else 20)
    soak.run_all()
    soak.print_result()
    return 1 if soak.failed else 0


if __name__ == "__main__":
    sys.exit(main())
