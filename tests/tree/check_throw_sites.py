#!/usr/bin/env python3
"""Collects the identifiers of the library's throw sites and finds those that are used twice, that are not written as
0x and eight upper-case digits, or that go round the one function that names errors by them.

usage: check_throw_sites.py ROOT [--list]     exits with 1 and one line per finding
"""
import argparse
import pathlib
import re
import sys

# A call with a literal. The function's own declaration and definition have a type there.
SITE = re.compile(r"\bThrowSite\s*[({]\s*(?!std::uint32_t\b)([^\s,)}]*)")
IDENTIFIER = re.compile(r"0x[0-9A-F]{8}")
MAKER = "main/qvxsys/error/TError.cpp"
# Literals first, so that a // in one begins no comment; a ' between digits begins no literal.
TOKEN = re.compile(r"""
    (?P<literal> R"(?P<mark>[^\s()\\"]{0,16})\(.*?\)(?P=mark)"
        | "(?:\\.|[^"\\\n])*"
        | (?<![0-9A-Fa-f])'(?:\\.|[^'\\\n])+' | \b(?:u8?|U|L)'(?:\\.|[^'\\\n])+' )
    | //[^\n]* | /\*.*?\*/""", re.S | re.X)


def sources(root):
    for top in ("public", "main", "tools"):
        for path in sorted((root / top).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                yield path.relative_to(root).as_posix(), path.read_text(encoding="utf-8")


def without_comments(text):
    """The text with its comments blanked, lines kept."""
    return TOKEN.sub(lambda match: match[0] if match["literal"] else re.sub(r"[^\n]", " ", match[0]), text)


def check(root):
    """The sites as {identifier: [place]} and the findings."""
    sites, findings = {}, []
    for name, text in sources(root):
        code = without_comments(text)
        for match in SITE.finditer(code):
            place = f"{name}:{code.count(chr(10), 0, match.start()) + 1}"
            if IDENTIFIER.fullmatch(match[1]):
                sites.setdefault(match[1], []).append(place)
            else:
                findings.append(f"{place}: the identifier is not a literal of eight upper-case digits: {match[1]}")
        if name != MAKER:
            # Hosts, the tool among them, make errors with codes of their own.
            by_hand = r"\bMakeError\s*\(" if name.startswith("main/") else r"\bMakeError\s*\(\s*0x"
            for pattern, what in ((r"AutoGen_0x", "spells out a code name"), (by_hand, "makes an error by hand")):
                findings += [f"{name}:{code.count(chr(10), 0, m.start()) + 1}: {what}" for m in re.finditer(pattern, code)]
    for identifier, places in sites.items():
        if len(places) > 1:
            findings.append(f"{identifier} is used at {', '.join(places)}")
    return sites, findings


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("root", type=pathlib.Path)
    parser.add_argument("--list", action="store_true", help="print all identifiers and their places")
    arguments = parser.parse_args()
    sites, findings = check(arguments.root.resolve())
    if arguments.list:
        print("\n".join(f"{identifier} {places[0]}" for identifier, places in sorted(sites.items())))
    if not sites:
        findings.append("no throw sites found")
    print("\n".join(findings) or f"{len(sites)} throw sites, each with an identifier of its own")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
