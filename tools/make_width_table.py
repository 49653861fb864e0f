#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes src/text/character_width_table.cpp from the files of the Unicode character database.

tools/make_width_table.py [--check] [FOLDER]

FOLDER holds UnicodeData.txt, EastAsianWidth.txt and emoji/emoji-variation-sequences.txt (Debian: package unicode-data,
/usr/share/unicode). With --check nothing is written: exit code 1 when the table differs, 77 when the folder is missing
or holds another version of Unicode than the table.
"""
import re
import sys
from pathlib import Path

TARGET = Path(__file__).resolve().parent.parent / "src/text/character_width_table.cpp"
ZERO, NARROW, WIDE, WIDE_AS_EMOJI = range(4)
END = 0x110000
LINE_WIDTH = 120


def read_ranges(path):
    """Yields (first, last, fields) of a file of the database."""
    for line in path.read_text(encoding="utf-8").splitlines():
        fields = [field.strip() for field in line.split("#")[0].split(";")]
        if len(fields) > 1:
            first, _, last = fields[0].partition("..")
            yield int(first, 16), int(last or first, 16), fields


def read_categories(path):
    """Category of each code point; '' when unassigned."""
    categories = [""] * END
    first = 0
    for line in path.read_text(encoding="utf-8").splitlines():
        code, name, category = line.split(";")[:3]
        code = int(code, 16)
        if name.endswith(", First>"):
            first = code
            continue
        start = first if name.endswith(", Last>") else code
        categories[start:code + 1] = [category] * (code + 1 - start)
    return categories


def width_classes(folder):
    classes = [NARROW] * END
    # Unassigned code points that the standard reserves for ideographs.
    for first, last in ((0x3400, 0x4DBF), (0x4E00, 0x9FFF), (0xF900, 0xFAFF), (0x20000, 0x2FFFD), (0x30000, 0x3FFFD)):
        classes[first:last + 1] = [WIDE] * (last + 1 - first)
    for first, last, fields in read_ranges(folder / "EastAsianWidth.txt"):
        classes[first:last + 1] = [WIDE if fields[1] in ("W", "F") else NARROW] * (last + 1 - first)
    for line in (folder / "emoji/emoji-variation-sequences.txt").read_text(encoding="utf-8").splitlines():
        found = re.match(r"([0-9A-F]+) FE0F\s*;", line)
        if found and classes[int(found.group(1), 16)] == NARROW:
            classes[int(found.group(1), 16)] = WIDE_AS_EMOJI
    visible_formats = {0xAD, *range(0x600, 0x606), 0x6DD, 0x70F, 0x890, 0x891, 0x8E2, 0x110BD, 0x110CD}
    for code, category in enumerate(read_categories(folder / "UnicodeData.txt")):
        if category in ("Mn", "Me", "Cf") and code not in visible_formats:
            classes[code] = ZERO
    # Vowels and final consonants of conjoining Hangul stand in the syllable that the first consonant begins.
    for first, last in ((0x1160, 0x11FF), (0xD7B0, 0xD7FF)):
        classes[first:last + 1] = [ZERO] * (last + 1 - first)
    return classes


def table_text(folder, version):
    classes = width_classes(folder)
    entries = [f"0x{(code << 2) | kind:X}" for code, kind in enumerate(classes)
               if code == 0 or kind != classes[code - 1]]
    lines, line = [], "   "
    for entry in entries:
        if len(line) + len(entry) + 2 > LINE_WIDTH:
            lines.append(line)
            line = "   "
        line += f" {entry},"
    lines.append(line)
    return "\n".join([
        "// SPDX-License-Identifier: MIT",
        f"// Made by tools/make_width_table.py from the character database of Unicode {version}; do not edit.",
        '#include "text/character_width_table.h"',
        "",
        "namespace ky::impl",
        "{",
        "",
        "// clang-format off",
        f"const std::uint32_t characterWidthRuns[characterWidthRunCount] = {{",
        *lines,
        "};",
        "// clang-format on",
        "",
        "} // namespace ky::impl",
        "",
    ]), len(entries)


def main():
    arguments = [argument for argument in sys.argv[1:] if argument != "--check"]
    folder = Path(arguments[0] if arguments else "/usr/share/unicode")
    widths = folder / "EastAsianWidth.txt"
    if not widths.exists():
        print(f"{folder} holds no character database")
        return 77
    version = re.match(r"# EastAsianWidth-([0-9.]+)\.txt", widths.read_text(encoding="utf-8")).group(1)
    text, count = table_text(folder, version)
    if "--check" not in sys.argv:
        TARGET.write_text(text, encoding="utf-8")
        print(f"{count} runs, Unicode {version}: characterWidthRunCount in character_width_table.h")
        return 0
    current = TARGET.read_text(encoding="utf-8")
    if f"Unicode {version};" not in current:
        print(f"the table is of another version than {version}")
        return 77
    if text != current:
        print(f"{TARGET.name} is not what the database gives")
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
