#!/usr/bin/env python3
"""The tool writes to a console whose code page is not UTF-8: names in other scripts must arrive all the same.

usage: console_test.py LAUNCHER... QVX
"""
import os
import pty
import subprocess
import sys
import tempfile

NAME = "\u65E5\u672C-\u00E9-\u0416.txt"


def main():
    command = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        with open(os.path.join(folder, NAME), "w", encoding="utf-8") as file:
            file.write("text\n")
        terminal, end = pty.openpty()
        child = subprocess.Popen([*command, "scan", "."], cwd=folder, stdin=end, stdout=end, stderr=end)
        os.close(end)
        shown = b""
        while True:
            try:
                piece = os.read(terminal, 4096)
            except OSError:
                break
            if not piece:
                break
            shown += piece
        status = child.wait()
    text = shown.decode("utf-8", "replace")
    if status != 0 or NAME not in text or "total" not in text:
        sys.exit(f"status {status}, shown: {text!r}")
    print("the console shows", NAME)
    return 0


if __name__ == "__main__":
    sys.exit(main())
