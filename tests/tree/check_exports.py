#!/usr/bin/env python3
"""Checks what the built library offers: that each exported symbol belongs to a name of exports.txt, that each of these
names is still there, in the library and in its header, and that the undecorated allocation functions are; of a shared
object also its SONAME and that every symbol carries the script's version.

usage: check_exports.py LIBRARY [--objdump OBJDUMP] [--list]     OBJDUMP is needed for a DLL; --list shows the counts
"""
import argparse
import collections
import pathlib
import re
import subprocess
import sys

VERSION = "QVXSYS_1"
HERE = pathlib.Path(__file__).resolve().parent
HEADERS = HERE.parent.parent / "public" / "qvxsys"
GENERATED = re.compile(r"^(typeinfo (name )?for |vtable for |(non-)?virtual thunk to )")


def listed():
    """The names of exports.txt, each with the header that it is listed under."""
    header = None
    for line in (HERE / "exports.txt").read_text(encoding="utf-8").splitlines():
        words = line.partition("#")[0].split()
        if words and not line[0].isspace():
            header = words.pop(0).rstrip(":")
        for name in words:
            yield name, header


def output(*command, **more):
    return subprocess.run(command, check=True, capture_output=True, text=True, **more).stdout


def elf_symbols(library, findings):
    if "[libqvxsys.so.1]" not in output("readelf", "-d", library):
        findings.append("the SONAME is not libqvxsys.so.1")
    for line in output("nm", "-D", "-C", "--defined-only", library).splitlines():
        kind, symbol = line.split(" ", 2)[1:]
        if kind == "A":
            continue
        name, _, version = symbol.rpartition("@")
        if version != VERSION:
            findings.append(f"{symbol}: not of version {VERSION}")
        else:
            yield name.rstrip("@")


def dll_symbols(library, objdump):
    table = output(objdump, "-p", library).partition("[Ordinal/Name Pointer] Table")[2].partition("\n\n")[0]
    mangled = re.findall(r"^\s*\[\s*\d+\] (\S+)$", table, re.MULTILINE)
    return output("c++filt", input="\n".join(mangled) + "\n").splitlines()


def owner(name, names):
    """The listed name that a symbol's name belongs to: its own or that of a class around it; None if there is none."""
    while name and name not in names:
        pattern = next((p for p in names if p.endswith("*") and name.startswith(p[:-1])), None)
        if pattern:
            return pattern
        name = name.rpartition("::")[0]
    return name or None


def check_names(symbols, findings):
    """Compares both ways; returns how many symbols each header has."""
    names = dict(listed())
    found, unknown = collections.Counter(), {}
    for symbol in sorted(symbols):
        name = re.match(r"[^<(\[\s]*", GENERATED.sub("", symbol))[0]
        found[owner(name, names)] += 1
        if owner(name, names) is None:
            unknown.setdefault(name.rpartition("::")[0] or name, symbol)
    findings += [f"{symbol}: exported, but not in tests/tree/exports.txt. If users need it, add its class or function "
                 "to the line of its header; if not, keep it out of cmake/libqvxsys.map" for symbol in unknown.values()]
    for name, header in names.items():
        last = name.rpartition("::")[2]
        if not found[name]:
            findings.append(f"{name}: in tests/tree/exports.txt, but no longer exported: programs that use it would "
                            "not start. Where that is meant, take it out there")
        elif not last.endswith("*") and not re.search(rf"\b{last}(?!\w)", (HEADERS / header).read_text("utf-8")):
            findings.append(f"{name}: listed under {header}, which does not name it")
    counts = collections.Counter()
    for name, count in found.items():
        counts[names.get(name, "unlisted")] += count
    return counts


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("library")
    parser.add_argument("--objdump", default="objdump")
    parser.add_argument("--list", action="store_true")
    arguments = parser.parse_args()
    findings = []
    is_dll = arguments.library.endswith(".dll")
    symbols = set(dll_symbols(arguments.library, arguments.objdump) if is_dll
                  else elf_symbols(arguments.library, findings))
    counts = check_names(symbols, findings)
    if arguments.list:
        print("\n".join(f"{count:5} {header}" for header, count in sorted(counts.items())))
    print("\n".join(findings) or f"the library exports what it should: {len(symbols)} symbols")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
