"""Reads docs/packages.md: the files, the commands and the expected output of each of its sections."""
import pathlib
import re
import subprocess
import sys

PAGE = pathlib.Path(__file__).resolve().parents[2] / "docs/packages.md"


class Section:
    def __init__(self, text):
        self.files = dict(re.findall(r"^`([\w.]+)`:\n\n```\w+\n(.*?)^```$", text, re.M | re.S))
        self.commands = "".join(re.findall(r"^```sh\n(.*?)^```$", text, re.M | re.S))
        self.output = "".join(re.findall(r"^```text\n(.*?)^```$", text, re.M | re.S))

    def write(self, folder):
        for name, text in self.files.items():
            (folder / name).write_text(text, encoding="utf-8")


def sections():
    """By heading; "" is what stands before the first, with the program that all of them use."""
    title, *rest = re.split(r"^## (.*)\n", PAGE.read_text(encoding="utf-8"), flags=re.M)
    return {"": Section(title)} | {name: Section(text) for name, text in zip(rest[::2], rest[1::2])}


def write_files(heading, folder):
    """The files of a section and the program."""
    every = sections()
    folder.mkdir(parents=True, exist_ok=True)
    every[""].write(folder)
    every[heading].write(folder)
    return every[heading]


def must(command, **more):
    """The output of a command that has to succeed."""
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8", **more)
    if result.returncode != 0:
        sys.exit(f"{command}: status {result.returncode}\n{result.stdout}")
    return result.stdout


def run(heading, folder, environment, before=""):
    """Does in `folder` what a section says, after the shell commands `before`, and compares how the output ends."""
    section = write_files(heading, folder)
    if not section.commands:
        sys.exit(f"no commands in the section {heading}")
    output = must(["sh", "-euc", before + section.commands], cwd=folder, env=environment)
    if not output.endswith(section.output):
        sys.exit(f"{heading}: the page says\n{section.output}\nand there was\n{output}")
    return output
