#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares what a library exports with the list in the tree: tools/check_exports.py LIBRARY [--objdump PROGRAM] [--update]

LIBRARY is libkySystem.so or kySystem.dll. The list, src/exports.txt, is the same for both platforms: names are spelled
without what differs between them (the widths that `long` and `long long` have, the standard library's own names), and
without what the compilers add (inline functions, tables of virtual functions and type records).
"""
import re
import subprocess
import sys
from pathlib import Path

LIST = Path(__file__).resolve().parent.parent / "src" / "exports.txt"
STRING = "std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >"


def output_of(*command, text=None):
    return subprocess.run(command, input=text, capture_output=True, text=True, check=True).stdout


def mangled_names(library, objdump):
    """Exported names; those of the .so with their kind, V and W being what every user's program has as well."""
    if library.suffix == ".dll":
        table = output_of(objdump, "-p", str(library)).split("[Ordinal/Name Pointer] Table", 1)[1]
        return set(re.findall(r"^\s*\[\s*\d+\](?: \+base\[\s*\d+\]\s+[0-9a-f]+)? (\S+)$", table, re.MULTILINE))
    lines = output_of("nm", "-D", "--defined-only", str(library)).splitlines()
    return {line.split()[2].split("@")[0] for line in lines if line.split()[1] in "TBDR"}


def spelled(name):
    name = name.replace(STRING, "std::string").replace("[abi:cxx11]", "").replace("std::__cxx11::", "std::")
    name = re.sub(r"std::basic_string<wchar_t, std::char_traits<wchar_t>, std::allocator<wchar_t> >", "std::wstring", name)
    name = name.replace("std::basic_string_view<char, std::char_traits<char> >", "std::string_view")
    name = re.sub(r"std::vector<(.*?), std::allocator<\1 > >", r"std::vector<\1>", name)
    return name.replace("long long", "long").strip()


def exports(library, objdump):
    names = output_of("c++filt", text="\n".join(sorted(mangled_names(library, objdump)))).splitlines()
    added = re.compile(r"^(vtable|typeinfo|typeinfo name|VTT|guard variable|construction vtable|non-virtual thunk|std::|"
                       r"(virtual|covariant) .*thunk|operator (new|delete))\b")
    return {spelled(name) for name in names if "ky" in name and not added.match(name)}


def main():
    arguments = sys.argv[1:]
    update = "--update" in arguments
    if update:
        arguments.remove("--update")
    objdump = "objdump"
    if "--objdump" in arguments:
        at = arguments.index("--objdump")
        objdump = arguments[at + 1]
        del arguments[at:at + 2]
    found = exports(Path(arguments[0]), objdump)
    if update:
        LIST.write_text("\n".join(sorted(found)) + "\n", encoding="utf-8")
        print(f"{len(found)} names")
        return 0
    listed = set(LIST.read_text(encoding="utf-8").splitlines())
    for name in sorted(listed - found):
        print(f"missing: {name}")
    for name in sorted(found - listed):
        print(f"new: {name}")
    return 1 if found != listed else 0


if __name__ == "__main__":
    sys.exit(main())
