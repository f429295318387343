#!/usr/bin/env python3
"""The C++ in the documentation is code that runs: each ```cpp block of README.md and docs/ stands, line after line, in a
program of examples/, whatever its indentation there. And the names in the last column of the guides' tables ("if you know
..., here it is") are those of public headers. Prints one line per block or name that is not.

usage: check_guides.py ROOT
"""
import pathlib
import re
import sys


def lines_of(text):
    return [re.sub(r"\s+", " ", line.strip()) for line in text.splitlines() if line.strip()]


def unknown_names(root):
    """(page, line, name) of those in the tables that no public header has."""
    known = set()
    for header in (root / "public").rglob("*.h"):
        known |= set(re.findall(r"\w+", header.read_text(encoding="utf-8")))
    for page in sorted((root / "docs/guides").glob("*.md")):
        for number, line in enumerate(page.read_text(encoding="utf-8").splitlines(), 1):
            if not line.startswith("|"):
                continue
            for code in re.findall(r"`([^`]+)`", line.rstrip("|").rpartition("|")[2]):
                for name in re.findall(r"[A-Za-z_]\w+", re.sub(r'"[^"]*"', "", code)):
                    if name not in known:
                        yield page.relative_to(root), number, name


def main():
    root = pathlib.Path(sys.argv[1])
    # A line end on both sides, so that only whole lines match.
    programs = ["\n" + "\n".join(lines_of(path.read_text(encoding="utf-8"))) + "\n"
                for path in sorted((root / "examples").glob("*.cpp"))]
    blocks = faults = 0
    for page in [root / "README.md", *sorted((root / "docs").rglob("*.md"))]:
        text = page.read_text(encoding="utf-8")
        for match in re.finditer(r"^```cpp\n(.*?)^```$", text, re.M | re.S):
            blocks += 1
            # "..." on a line of its own leaves something out.
            for part in re.split(r"^\s*(?://\s*)?\.\.\.\s*$", match.group(1), flags=re.M):
                wanted = "\n" + "\n".join(lines_of(part)) + "\n"
                if not any(wanted in program for program in programs):
                    print(f"{page.relative_to(root)}:{text[:match.start()].count(chr(10)) + 1}: not in examples/")
                    faults += 1
                    break
    for page, number, name in unknown_names(root):
        print(f"{page}:{number}: no public header has {name}")
        faults += 1
    print(f"{blocks} blocks, {faults} faults")
    return 1 if faults or not blocks else 0


sys.exit(main())
