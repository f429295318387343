#!/usr/bin/env python3
"""Checks what the built library offers: its SONAME, that every exported symbol carries the version of the script and
belongs to the library, and that the undecorated allocation functions are there.

usage: check_exports.py LIBRARY
"""
import re
import subprocess
import sys

VERSION = "QVXSYS_1"
OURS = re.compile(r"^(typeinfo (name )?for |vtable for )?"
                  r"(CharacterUtils|StringUtils|TCType|QvxICU|KMP|TStringCore|TStringView|TCodePointReference|TTextDecoder|"
                  r"quorvex|qvxsys::detail)\b")
REQUIRED = {"TMalloc", "TCalloc", "TRealloc", "TFree"}


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def main():
    library = sys.argv[1]
    findings = []
    if "[libqvxsys.so.1]" not in output("readelf", "-d", library):
        findings.append("the SONAME is not libqvxsys.so.1")
    plain = set()
    for line in output("nm", "-D", "-C", "--defined-only", library).splitlines():
        kind, symbol = line.split(" ", 2)[1:]
        if kind == "A":
            continue
        name, _, version = symbol.rpartition("@")
        name = name.rstrip("@")
        if version != VERSION:
            findings.append(f"{symbol}: not of version {VERSION}")
        elif name in REQUIRED:
            plain.add(name)
        elif not OURS.match(name):
            findings.append(f"{name}: exported, but not the library's")
    findings += [f"{name}: not exported" for name in sorted(REQUIRED - plain)]
    print("\n".join(findings) or "the library exports what it should")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
