#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The main job on real files: tools/demo.py [--runner PROGRAM] KY

Runs the program ky_demo, which lies beside KY, over tables that Debian ships: it merges them, talks to a worker process
and survives a fault; what it has written is compared with what Python reads. Then the tool types the same tables, writes
a summary as INI, reads it back and changes a value by its path. Every step is logged into one rotating log that several
processes write at the same time.
"""
import collections
import configparser
import csv
import re
import shlex
import shutil
import subprocess
import sys
import threading
import time
from pathlib import Path

RELEASES = ["/usr/share/distro-info/debian.csv", "/usr/share/distro-info/ubuntu.csv"]
REGISTRIES = ["/usr/share/ieee-data/oui.csv", "/usr/share/ieee-data/mam.csv", "/usr/share/ieee-data/oui36.csv",
              "/usr/share/ieee-data/iab.csv"]
FOLDERS = ["/usr/share/distro-info", "/usr/share/ieee-data"]
ROWS_A_FILE = 10000
WRITERS = 4
OTHERS = 4  # ky_demo, its worker, and the two commands of the tool that log
LINES_A_WRITER = 1500
MAX_SIZE = "128k"
MAX_BYTES = 128 * 1024
KEPT = 16
MAX_SHOWN = 120
MARK = b"\xef\xbb\xbf"


class Ky:
    def __init__(self, arguments):
        self.runner = []
        if arguments[0] == "--runner":
            self.runner, arguments = [arguments[1]], arguments[2:]
        self.program = arguments[0]

    def path(self, path):
        """Absolute paths of this system, as a program under the runner sees them."""
        return f"Z:{path}" if self.runner and str(path).startswith("/") else str(path)

    def command(self, *arguments):
        return [*self.runner, self.program, *arguments]

    def run(self, *arguments):
        print(f"\n$ ky {shlex.join(arguments)}", flush=True)
        done = subprocess.run(self.command(*arguments), capture_output=True, check=False)
        text = done.stdout.decode("utf-8").replace("\r\n", "\n")
        sys.stderr.buffer.write(done.stderr)
        if done.returncode != 0:
            sys.exit(f"failed with exit code {done.returncode}")
        return text


def feed(writer, number):
    """A little at a time, so that the writers are busy while the tool does its work."""
    for first in range(0, LINES_A_WRITER, 25):
        lines = range(first, min(first + 25, LINES_A_WRITER))
        writer.stdin.write("".join(f"writer {number} line {i}\n" for i in lines).encode())
        writer.stdin.flush()
        time.sleep(0.01)
    writer.stdin.close()


def start_writers(ky, log):
    writers = []
    for number in range(WRITERS):
        writer = subprocess.Popen(
            ky.command("log", log, "--stdin", "--qualifier", f"writer{number}", "--max-size", MAX_SIZE, "--keep", str(KEPT)),
            stdin=subprocess.PIPE)
        threading.Thread(target=feed, args=(writer, number)).start()
        writers.append(writer)
    return writers


def check_log(folder):
    """Every line of every writer is there once and in order; every file begins with its one mark."""
    files = sorted(folder.glob("demo.log_*.back"), key=lambda p: -int(re.findall(r"_(\d+)\.back", p.name)[0]))
    files.append(folder / "demo.log")
    lines = []
    for file in files:
        content = file.read_bytes()
        assert content.startswith(MARK) and content.count(MARK) == 1, f"mark of {file.name}"
        assert content.endswith(b"\r\n"), f"end of {file.name}"
        lines += content[len(MARK):].decode("utf-8").split("\r\n")[:-1]
    for number in range(WRITERS):
        found = [int(m.group(1)) for m in (re.search(rf"writer {number} line (\d+)$", line) for line in lines) if m]
        assert found == list(range(LINES_A_WRITER)), f"lines of writer {number}"
    print(f"\n{len(lines)} lines of {WRITERS + OTHERS} processes in {len(files)} files: "
          f"every writer's {LINES_A_WRITER} lines are there, once and in order")
    return lines


def rows_of(path):
    """The rows of a table as dictionaries of the cells that are not empty, line breaks as blanks; and its columns."""
    with open(path, encoding="utf-8-sig", newline="") as file:
        header, *rows = csv.reader(file)
    cells = [[re.sub("[\r\n]", " ", cell) for cell in row] for row in rows]
    return [{name: cell for name, cell in zip(header, row) if cell} for row in cells], header


def check_merged(folder):
    """The split files hold every row of every table, and the worker has counted what is in them."""
    tables = [rows_of(path) for root in FOLDERS for path in Path(root).rglob("*.csv")]
    files = [rows_of(path) for path in folder.glob("merged*.csv")]
    assert all(len(rows) <= ROWS_A_FILE for rows, _ in files) and len({tuple(header) for _, header in files}) == 1
    expected, found = (collections.Counter(tuple(sorted(row.items())) for rows, _ in some for row in rows)
                       for some in (tables, files))
    assert expected == found, "rows of the merged table"

    summary = configparser.ConfigParser(interpolation=None)
    summary.read(folder / "demo-summary.ini", encoding="utf-8")
    assert summary["run"]["ok"] == "true" and summary["fault"]["logged"] == "1"
    assert int(summary["merged"]["rows"]) == found.total() and int(summary["merged"]["files"]) == len(files)
    columns = [summary[name] for name in summary.sections() if name.startswith("column")]
    assert sorted(column["name"] for column in columns) == sorted(files[0][1])
    for column in columns:
        cells = [row.get(column["name"], "") for rows, header in tables for row in rows if column["name"] in header]
        assert int(column["cells"]) == len(cells) and int(column["different"]) == len(set(cells)), column["name"]
    print(f"\nPython finds the same {found.total()} rows in the tables and in the {len(files)} files, and the same "
          f"{len(columns)} columns as the worker")


def run_program(ky, folder, log):
    program = Path(ky.program).with_name("ky_demo").with_suffix(Path(ky.program).suffix)
    settings = folder / "demo.ini"
    inputs = "\n".join(f"folder{i}={ky.path(root)}" for i, root in enumerate(FOLDERS) if Path(root).exists())
    settings.write_text(f"[input]\n{inputs}\n[output]\nfolder={ky.path(folder)}\nrowsPerFile={ROWS_A_FILE}\n"
                        f"[log]\nfile={log}\nmaxSize={MAX_BYTES}\nkeep={KEPT}\n", encoding="utf-8")
    print(f"\n$ ky_demo {settings.name}", flush=True)
    done = subprocess.run([*ky.runner, program, ky.path(settings)], check=False)
    if done.returncode != 0:
        sys.exit(f"failed with exit code {done.returncode}")


def check_program_log(lines):
    """Parent and worker have logged, and the fault stands there once, with its stack."""
    text = "\n".join(lines)
    for qualifier in ("demo", "worker"):
        assert f"INFO({qualifier}) : " in text, f"lines of {qualifier}"
    assert text.count("EXCEPTION_ACCESS_VIOLATION") == 1
    assert re.search(r"EXCEPTION_ACCESS_VIOLATION.*\s+#0 @0x", text), "stack of the fault"


def main():
    ky = Ky(sys.argv[1:])
    folder = Path("build/demo-windows" if ky.runner else "build/demo").resolve()
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    log, summary = ky.path(folder / "demo.log"), ky.path(folder / "summary.ini")
    session = ["--log", log, "--log-max-size", MAX_SIZE, "--log-keep", str(KEPT)]

    print(f"{WRITERS} processes begin to write {LINES_A_WRITER} lines each into one rotating log")
    writers = start_writers(ky, log)

    run_program(ky, folder, log)
    tables = [ky.path(p) for p in RELEASES + REGISTRIES if Path(p).exists()]
    print(ky.run("csv", *tables, "--rows", "3", "--ini", summary, *session), end="")
    entries = ky.run("ini", summary, "list", *session).splitlines()
    print("\n".join(entries[:12]), f"... {len(entries) - 12} more", sep="\n")
    ky.run("ini", summary, "set", "debian.csv/column1/name", "release number", *session)
    changed = ky.run("ini", summary, "get", "debian.csv/column1/name", *session).strip()
    print(changed)
    assert changed == "release number"

    for writer in writers:
        assert writer.wait() == 0
    check_merged(folder)
    lines = check_log(folder)
    check_program_log(lines)
    print("\nThe log's tail:")
    print("\n".join(lines[-5:]))
    print("\nThe program's and the tool's own steps in the same log:")
    for line in lines:
        if not re.search(r"\(writer\d\)", line):
            for part in line.split("\n")[:3]: # of a stack the top
                print(part if len(part) <= MAX_SHOWN else part[:MAX_SHOWN - 3] + "...")
    print(f"\nThe summary ({summary}):")
    print("\n".join((folder / "summary.ini").read_text(encoding="utf-8").splitlines()[:16]), "...", sep="\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())
