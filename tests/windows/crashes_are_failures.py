#!/usr/bin/env python3
"""Runs a program that crashes as ctest runs every test here, several times in each way: all must be reported as failed,
and the one run without a crash as passed. A runner that loses exit codes now and then would make every green run of
this suite worthless.

usage: crashes_are_failures.py CTEST LAUNCHER... PROGRAM
"""
import pathlib
import re
import subprocess
import sys
import tempfile

WAYS = ["write", "abort", "throw", "throw-from-library", "stack", "thread", "trap"]
TIMES = 5


def main():
    ctest, *command = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        tests = [("none", 0)] + [(way, n) for way in WAYS for n in range(TIMES)]
        quoted = " ".join(f"[==[{part}]==]" for part in command)
        lines = [f"add_test({way}.{n} {quoted} {way})\n" for way, n in tests]
        pathlib.Path(folder, "CTestTestfile.cmake").write_text("".join(lines))
        run = subprocess.run([ctest, "--test-dir", folder, "--timeout", "60"], capture_output=True, text=True)
    failed = set(re.findall(r"^\s*\d+ - (\S+) \(", run.stdout.partition("did not pass")[2] or run.stdout.partition(
        "tests FAILED")[2], re.MULTILINE))
    expected = {f"{way}.{n}" for way, n in tests if way != "none"}
    if failed != expected or run.returncode == 0:
        print(run.stdout)
        print("not reported as failed:", sorted(expected - failed), "failed for no reason:", sorted(failed - expected))
        return 1
    print(f"{len(expected)} crashes, all of them reported as failed")
    return 0


if __name__ == "__main__":
    sys.exit(main())
