#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Holds the rules of the house: run as a test, prints every breach, exits 1 if there is one.

- platform conditionals stand only in include/ky/kyExport.h and src/platform/
- system headers stand only in *_windows.*, *_linux.* and src/platform/
- every native header has both sides; a native file has at most 200 lines; a pair shares at most a tenth of its lines
- includes point down
- public headers include only public headers and the standard library, and define no macros but KY_*
- files have at most 700 lines and begin with the licence tag
"""
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
CODE_DIRS = ("include", "src", "tools", "examples", "docs", "tests", "bench", "fuzz")
MAX_FILE_LINES = 700
MAX_NATIVE_LINES = 200
MAX_TWIN_SHARE = 0.10
TWIN_RUN = 6

# Rooms from the ground up: a room includes private headers of its own rank or below.
RANK = {"platform": 0, "frame": 0, "text": 1, "concurrency": 2, "diagnostics": 2, "variant": 3, "io": 4,
        "filesystem": 4, "process": 5, "sysinfo": 5, "progress": 5}
# The files that stand above all rooms although they live in the frame.
TOP_FLOOR = {"src/frame/kySystem.cpp", "src/frame/early_use.cpp"}

CONDITIONAL = re.compile(
    r"^\s*#\s*(?:if|ifdef|ifndef|elif)\b.*\b(_WIN32|_WIN64|WIN32|__linux__|__unix__|_MSC_VER|__MINGW\w*|__GNUC__|__clang__)\b")
SYSTEM_HEADER = re.compile(
    r"^\s*#\s*include\s*<((?:windows|winsock2|ws2tcpip|rpc|psapi|shellapi|shlobj|unistd|fcntl|pthread|syslog|dlfcn|"
    r"spawn|poll|signal|semaphore|io|process)\.h|(?:sys|linux|netinet)/[^>]+)>")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
STANDARD = re.compile(r"^[a-z_0-9]+$")
DEFINE = re.compile(r"^\s*#\s*define\s+(\w+)")


def code_files():
    for folder in CODE_DIRS:
        for path in sorted((ROOT / folder).rglob("*")):
            if path.suffix in (".h", ".cpp") and path.is_file():
                yield path


def relative(path):
    return path.relative_to(ROOT).as_posix()


def is_platform_file(name):
    return name.startswith("src/platform/") or re.search(r"_(windows|linux)\.(h|cpp)$", name) is not None


def check_common(name, lines):
    if len(lines) > MAX_FILE_LINES:
        yield f"{name}: {len(lines)} lines, at most {MAX_FILE_LINES}"
    if not lines or "SPDX-License-Identifier: MIT" not in lines[0]:
        yield f"{name}:1: no licence tag"
    conditionals_allowed = name == "include/ky/kyExport.h" or name.startswith("src/platform/")
    for number, line in enumerate(lines, 1):
        if not conditionals_allowed and CONDITIONAL.match(line):
            yield f"{name}:{number}: platform conditional"
        if not is_platform_file(name) and SYSTEM_HEADER.match(line):
            yield f"{name}:{number}: system header outside a platform file"


def check_public_header(name, lines):
    for number, line in enumerate(lines, 1):
        found = INCLUDE.match(line)
        if found and not (found.group(2).startswith("ky/") or STANDARD.match(found.group(2))):
            yield f"{name}:{number}: public header includes {found.group(2)}"
        found = DEFINE.match(line)
        if found and not found.group(1).startswith("KY_"):
            yield f"{name}:{number}: public header defines {found.group(1)}"


def check_direction(name, lines):
    if name in TOP_FLOOR:
        return
    room = name.split("/")[1]
    for number, line in enumerate(lines, 1):
        found = INCLUDE.match(line)
        if not found or found.group(1) != '"':
            continue
        target = found.group(2).split("/")[0]
        if target not in RANK:
            yield f"{name}:{number}: include {found.group(2)} is not rooted"
        elif RANK[target] > RANK[room]:
            yield f"{name}:{number}: {room} includes upward from {target}"


def significant(lines, own, other):
    result = []
    for line in lines:
        text = line.strip()
        if not text or text.startswith(("//", "#include", "/*", "*")) or text in ("{", "}", "};"):
            continue
        result.append(text.replace(own, "?"))
    return result


def twin_share(first, second):
    """Share of the lines of the longer file that stand in a run of TWIN_RUN or more in the other one too."""
    runs = {tuple(second[i:i + TWIN_RUN]) for i in range(len(second) - TWIN_RUN + 1)}
    shared = set()
    for i in range(len(first) - TWIN_RUN + 1):
        if tuple(first[i:i + TWIN_RUN]) in runs:
            shared.update(range(i, i + TWIN_RUN))
    return len(shared) / max(len(first), len(second), 1)


def check_native_pairs():
    for header in sorted((ROOT / "src").rglob("*_native.h")):
        base = relative(header)[: -len("_native.h")]
        sides = [ROOT / f"{base}_{system}.cpp" for system in ("linux", "windows")]
        for side in sides:
            if not side.exists():
                yield f"{relative(header)}: {relative(side)} is missing"
    for linux in sorted((ROOT / "src").rglob("*_linux.cpp")):
        windows = linux.with_name(linux.name.replace("_linux", "_windows"))
        texts = []
        for side in (linux, windows):
            if not side.exists():
                continue
            lines = side.read_text(encoding="utf-8").splitlines()
            texts.append(significant(lines, "linux" if side is linux else "windows", ""))
            if len(lines) > MAX_NATIVE_LINES and not relative(side).startswith("src/platform/"):
                yield f"{relative(side)}: {len(lines)} lines, a native file has at most {MAX_NATIVE_LINES}"
        if len(texts) == 2:
            share = twin_share(*texts)
            if share > MAX_TWIN_SHARE:
                yield f"{relative(linux)}: shares {share:.0%} of its lines with the other platform's file"


def report(breaches):
    for breach in breaches:
        print(breach)
    print(f"{len(breaches)} breach(es)")
    return 1 if breaches else 0


def main():
    breaches = list(check_native_pairs())
    for path in code_files():
        name = relative(path)
        lines = path.read_text(encoding="utf-8").splitlines()
        if name.startswith("tests/") and is_platform_file(name):
            continue
        breaches += check_common(name, lines)
        if name.startswith("include/ky/"):
            breaches += check_public_header(name, lines)
        if name.startswith("src/"):
            breaches += check_direction(name, lines)
    return report(breaches)


if __name__ == "__main__":
    sys.exit(main())
