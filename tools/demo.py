#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The main job on real files: tools/demo.py [--runner PROGRAM] KY

Reads tables that Debian ships, types them, writes a summary as INI, reads it back, changes a value by its path, and logs
every step into one rotating log that several processes write at the same time.
"""
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
WRITERS = 4
LINES_A_WRITER = 1500
MAX_SIZE = "128k"
KEPT = 16
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
    print(f"\n{len(lines)} lines of {WRITERS + 3} processes in {len(files)} files: "
          f"every writer's {LINES_A_WRITER} lines are there, once and in order")
    return lines


def main():
    ky = Ky(sys.argv[1:])
    folder = Path("build/demo-windows" if ky.runner else "build/demo").resolve()
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    log, summary = ky.path(folder / "demo.log"), ky.path(folder / "summary.ini")
    session = ["--log", log, "--log-max-size", MAX_SIZE, "--log-keep", str(KEPT)]

    print(f"{WRITERS} processes begin to write {LINES_A_WRITER} lines each into one rotating log")
    writers = start_writers(ky, log)

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
    lines = check_log(folder)
    print("\nThe log's tail:")
    print("\n".join(lines[-5:]))
    print("\nThe tool's own steps in the same log:")
    print("\n".join(line for line in lines if not re.search(r"\(writer\d\)", line)))
    print(f"\nThe summary ({summary}):")
    print("\n".join((folder / "summary.ini").read_text(encoding="utf-8").splitlines()[:16]), "...", sep="\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())
