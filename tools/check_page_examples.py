#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Holds the pages to the truth: run as a test, prints every breach, exits 1 if there is one.

- every C++ block of README.md and docs/*.md is an excerpt of a program that the tests build and run. A comment before
  the block names it: <!-- example: page/name --> is the region "name" of docs/examples/page.cpp, the lines between two
  comments `// [name]` (several such pairs are joined by an empty line); <!-- example: name --> is the whole of
  examples/name.cpp without its opening comment
- every region of such a program stands in a page
- every relative link of a page leads to a file, and to a heading of it
- every page of docs/ stands in the index docs/pages.md and in the navigation docs/layout.xml
- a code span with an apostrophe has double marks: the generator of the reference takes it for a quotation otherwise
- every path of this tree that a page names in code marks exists

With --write the excerpts are put into the pages.
"""
import re
import sys
import textwrap

sys.dont_write_bytecode = True  # nothing is left in the tree
from check_layout import ROOT, relative, report

MARK = re.compile(r"^<!-- example: ([\w/]+) -->$")
FENCE = re.compile(r"^\s*```(\w*)$")
REGION = re.compile(r"^\s*// \[(\w+)\]$")
LINK = re.compile(r"\]\(([^)\s]+)\)")
NAMED_PATH = re.compile(r"`((?:bench|cmake|debug|docs|examples|fuzz|include|packaging|src|tests|tools)/[\w./-]+)`")

CODE_SPAN = re.compile(r"(?<!`)`([^`]+)`(?!`)")
PLACEHOLDERS = {"include/ky/kyName.h"}


def pages():
    return sorted(p for folder in (ROOT, ROOT / "docs") for p in folder.glob("*.md"))


def regions(path):
    """Name and text of every marked region of a program."""
    parts, name, lines = {}, None, []
    for line in path.read_text(encoding="utf-8").splitlines():
        mark = REGION.match(line)
        if mark and name is None:
            name, lines = mark.group(1), []
        elif mark and mark.group(1) == name:
            parts.setdefault(name, []).append(textwrap.dedent("\n".join(lines)).strip("\n"))
            name = None
        else:
            lines.append(line)
    if name is not None:
        sys.exit(f"{relative(path)}: region {name} has no end")
    return {key: "\n\n".join(texts).splitlines() for key, texts in parts.items()}


def whole(path):
    lines = path.read_text(encoding="utf-8").splitlines()
    while lines and lines[0].startswith("//"):
        lines.pop(0)
    return lines


class Programs:
    def __init__(self):
        self.of_pages = {p.stem: regions(p) for p in sorted((ROOT / "docs/examples").glob("*.cpp"))}
        self.unused = {f"{page}/{name}" for page, found in self.of_pages.items() for name in found}

    def excerpt(self, key):
        """The lines, or None."""
        page, _, name = key.partition("/")
        self.unused.discard(key)
        if name:
            return self.of_pages.get(page, {}).get(name)
        path = ROOT / "examples" / f"{page}.cpp"
        return whole(path) if path.exists() else None


def blocks(lines):
    """Start (the line behind the fence), end (the closing fence) and language of every fenced block."""
    start, language = None, ""
    for number, line in enumerate(lines):
        fence = FENCE.match(line)
        if fence and start is None:
            start, language = number + 1, fence.group(1)
        elif fence:
            yield start, number, language
            start = None


def check_examples(page, lines, programs, write):
    changed = False
    for start, end, language in reversed(list(blocks(lines))):
        if language != "cpp":
            continue
        where = f"{relative(page)}:{start}"
        mark = MARK.match(lines[start - 2]) if start > 1 else None
        excerpt = programs.excerpt(mark.group(1)) if mark else None
        if not mark:
            yield f"{where}: C++ block without a program"
        elif excerpt is None:
            yield f"{where}: there is no example {mark.group(1)}"
        elif lines[start:end] != excerpt:
            if not write:
                yield f"{where}: differs from {mark.group(1)}; run tools/check_page_examples.py --write"
            lines[start:end] = excerpt
            changed = True
    if write and changed:
        page.write_text("\n".join(lines) + "\n", encoding="utf-8")


def anchors(path):
    found = set()
    lines = path.read_text(encoding="utf-8").splitlines()
    code = {n for start, end, _ in blocks(lines) for n in range(start, end)}
    for number, line in enumerate(lines):
        if line.startswith("#") and number not in code:
            text = line.lstrip("#").strip().lower()
            found.add(re.sub(r"[^\w\- ]", "", text).replace(" ", "-"))
    return found


def check_text(page, lines):
    code = {n for start, end, _ in blocks(lines) for n in range(start, end)}
    for number, line in enumerate(lines):
        if number in code:
            continue
        for target in LINK.findall(re.sub(r"`[^`]*`", "", line)):
            name, _, anchor = target.partition("#")
            if re.match(r"\w+:", name):
                continue
            path = (page.parent / name).resolve() if name else page
            if not path.exists():
                yield f"{relative(page)}:{number + 1}: link to {target}, which is not there"
            elif anchor and anchor not in anchors(path):
                yield f"{relative(page)}:{number + 1}: no heading {target}"
        for span in CODE_SPAN.findall(line):
            if "'" in span:
                yield f"{relative(page)}:{number + 1}: `{span}` needs double code marks, for the generator of the reference"
        for target in NAMED_PATH.findall(line):
            if target not in PLACEHOLDERS and not (ROOT / target).exists():
                yield f"{relative(page)}:{number + 1}: there is no {target}"


def check_index():
    index = (ROOT / "docs/pages.md").read_text(encoding="utf-8")
    navigation = (ROOT / "docs/layout.xml").read_text(encoding="utf-8")
    for page in (ROOT / "docs").glob("*.md"):
        if page.name != "pages.md" and f"]({page.name})" not in index:
            yield f"docs/pages.md: {page.name} is missing"
        if f"@ref md_docs_{page.stem}\"" not in navigation:
            yield f"docs/layout.xml: {page.name} is missing"


def main():
    programs = Programs()
    breaches = []
    for page in pages():
        lines = page.read_text(encoding="utf-8").splitlines()
        breaches += check_examples(page, lines, programs, "--write" in sys.argv[1:])
        breaches += check_text(page, lines)
    breaches += check_index()
    breaches += [f"docs/examples: region {key} stands in no page" for key in sorted(programs.unused)]
    return report(breaches)


if __name__ == "__main__":
    sys.exit(main())
