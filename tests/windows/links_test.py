#!/usr/bin/env python3
"""Folders that are links are walked into when they are named, and only then. Wine shows this machine's symbolic links as
the reparse points that links are on Windows.

usage: links_test.py LAUNCHER... QVX
"""
import json
import os
import subprocess
import sys
import tempfile


def scanned(command, path, folder):
    run = subprocess.run([*command, "scan", "--json", path], cwd=folder, capture_output=True, encoding="utf-8")
    if run.returncode != 0:
        sys.exit(f"scan {path}: status {run.returncode}\n{run.stderr}")
    return [file["path"].replace("\\", "/") for file in json.loads(run.stdout)["files"]]


def main():
    command = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        os.mkdir(os.path.join(folder, "a"))
        with open(os.path.join(folder, "a", "x"), "w", encoding="utf-8") as file:
            file.write("text\n")
        os.symlink(".", os.path.join(folder, "a", "self"))
        os.symlink("a", os.path.join(folder, "link"))
        found = {path: scanned(command, path, folder) for path in ("a", ".", "link")}
    expected = {"a": ["a/x"], ".": ["./a/x"], "link": ["link/x"]}
    if found != expected:
        sys.exit(f"found {found}, expected {expected}")
    print("links are followed when they are named, and only then")
    return 0


if __name__ == "__main__":
    sys.exit(main())
