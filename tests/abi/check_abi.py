#!/usr/bin/env python3
"""Compares what programs that were linked against this library rely on with the baseline in libqvxsys.abi.xz: exported
symbols, their types, the layouts of the classes in the public headers. What is new may be; what has changed or gone
fails, with abidiff's report.

    check_abi.py LIBRARY            compare; the library must have been built with -g
    check_abi.py LIBRARY --update   make the library the baseline: with a release, or when a break is wanted
"""
import lzma
import pathlib
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
BASELINE = HERE / "libqvxsys.abi.xz"
HEADERS = HERE.parent.parent / "public"


def describe(library):
    """The library's interface as abidw writes it: what can be reached from exported symbols, members of the standard
    library's types included, and nothing that differs from machine to machine."""
    return subprocess.run(["abidw", "--headers-dir", HEADERS, "--drop-private-types", "--exported-interfaces-only",
                           "--drop-undefined-syms", "--no-parameter-names", "--no-write-default-sizes",
                           "--no-corpus-path", "--no-comp-dir-path", "--no-show-locs", "--type-id-style", "hash",
                           library],
                          check=True, stdout=subprocess.PIPE).stdout


def main():
    library = sys.argv[1]
    if "--update" in sys.argv[2:]:
        BASELINE.write_bytes(lzma.compress(describe(library), preset=9))
        return 0
    with tempfile.TemporaryDirectory() as folder:
        old, new = (pathlib.Path(folder) / name for name in ("baseline.abi", "library.abi"))
        old.write_bytes(lzma.decompress(BASELINE.read_bytes()))
        new.write_bytes(describe(library))
        return subprocess.run(["abidiff", "--no-added-syms", "--suppressions", HERE / "suppressions.ini", old,
                               new]).returncode


sys.exit(main())
