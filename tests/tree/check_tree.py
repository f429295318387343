#!/usr/bin/env python3
"""Checks the tree's own rules: which layer may include which, where conditionals on the platform may stand, which
sources may include ICU and <windows.h>, that constants of exported classes are exported, that every public header
compiles alone, and that no file outgrows its limit.

usage: check_tree.py ROOT [--compiler CXX]     exits with 1 and one line per finding
"""
import argparse
import pathlib
import re
import subprocess
import sys
import tempfile

# The layers, lowest first. Each may use itself and those it names (and what they name).
LAYERS = {
    "memory": [],
    "unwind": ["memory"],
    "text": ["memory"],
    "error": ["text", "unwind"],
    "system": ["error"],
    "stack": ["system", "unwind"],
    "path": ["stack"],
    "dump": ["system"],
    "sync": ["system"],
    "repository": ["sync"],
    "task": ["sync"],
    "hash": ["error"],
    "icu": ["error"],
    "monitor": ["task"],
    "tool": ["monitor", "path", "repository", "hash", "icu", "stack", "dump"],
}

# Which layer a file belongs to: the first pattern that matches.
FILES = [
    (r"main/platform/", "memory"),
    (r"main/diagnostics/tmemory", "memory"),
    (r"main/diagnostics/dump/", "dump"),
    (r"public/qvxsys/TMemory\.h", "memory"),
    (r"main/diagnostics/unwind/", "unwind"),
    (r"public/qvxsys/StackTrace\.h", "unwind"),
    (r"main/diagnostics/", "stack"),
    (r"public/qvxsys/(Symbols|TStackWalker)\.h", "stack"),
    (r"public/qvxsys/Platform\.h", "memory"),
    (r"public/qvxsys/qvxsys\.h", "tool"),
    (r"public/qvxsys/(ErrorOrigin|LogicException|QuorvexError|QuorvexException|ReferenceCount|TError)\.h", "error"),
    (r"public/qvxsys/(Format|FormatScan|InlineVector|TFormatStringCore|TScanStringCore)\.h", "error"),
    (r"public/qvxsys/(CpuTime|TMath|TSystem|Version)\.h", "system"),
    (r"public/qvxsys/(FileSystemPath|PathIterator|PathText|TPathCore)\.h", "path"),
    (r"public/qvxsys/(SyncWords|TEvent|TLocks|TSemaphore|ThreadAnnotations)\.h", "sync"),
    (r"public/qvxsys/(CrashDump|CrashHandler)\.h", "dump"),
    (r"public/qvxsys/StaticRepository\.h", "repository"),
    (r"public/qvxsys/(AsyncTaskTls|Cancel|Deadline|Executor|Future|FutureCoroutine|FutureGroup|FutureState|Launch|"
     r"ParallelFor|Promise|Run|SharedState|TThreadPool|TaskState|Tasks|Timer)\.h", "task"),
    (r"public/qvxsys/(Hash|sha2)\.h", "hash"),
    (r"public/qvxsys/(MemoryPressure|Resource(Manager|Observer|Reporter|Values))\.h", "monitor"),
    (r"public/qvxsys/(QvxICU|ICUTypes|Icu(Constants|Declare|Pointer|Properties))\.h", "text"),
    (r"public/qvxsys/(ICU|Icu|Locale)\w+\.h", "icu"),
    (r"public/qvxsys/", "text"),
    (r"main/qvxsys/text/", "text"),
    (r"main/qvxsys/(error|message)/", "error"),
    (r"main/qvxsys/system/", "system"),
    (r"main/qvxsys/path/", "path"),
    (r"main/synchronize/", "sync"),
    (r"main/qvxsys/repository/", "repository"),
    (r"main/thread/", "task"),
    (r"main/qvxsys/hash/", "hash"),
    (r"main/icu/", "icu"),
    (r"main/monitor/", "monitor"),
    (r"tools/qvx/", "tool"),
]

CONDITIONALS_ALLOWED = {"public/qvxsys/Platform.h"}
WINDOWS_GATE = "main/platform/WindowsApi.h"
WINDOWS_SOURCE = re.compile(r"_win\.cpp$")
ICU_ALLOWED = re.compile(r"^main/(icu/|qvxsys/text/(QvxICU\.cpp|IcuForward\.h)$)")
SIZE_LIMIT = 1000

CONDITIONAL = re.compile(
    r"^\s*#\s*(?:el)?if.*\b(_WIN32|_WIN64|WIN32|__linux__|__unix__|__APPLE__|__MINGW\w+|_MSC_VER|__GLIBC__)\b")
EXPORTED_CLASS = re.compile(r"^( *)(?:class|struct) QVXSYS_API \S+[^;]*$")
CONSTANT = re.compile(r"^ *static constexpr [^(]*[={]")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')


def sources(root):
    for top in ("public", "main", "tools"):
        for path in sorted((root / top).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                yield path


def layer_of(name):
    return next((layer for pattern, layer in FILES if re.match(pattern, name)), None)


def allowed(layer):
    below = {layer}
    for other in LAYERS[layer]:
        below |= allowed(other)
    return below


def resolve(root, path, quoted, included):
    """The tree's file that an include names, or None for one from outside."""
    if included.startswith("qvxsys/"):
        return root / "public" / included
    if quoted:
        for base in (path.parent, *path.parents):
            if base == root.parent:
                break
            if (base / included).is_file():
                return (base / included).resolve()
        for candidate in (root / "main").rglob(pathlib.PurePath(included).name):
            if str(candidate).endswith("/" + included):
                return candidate
    return None


def check_file(root, path):
    name = path.relative_to(root).as_posix()
    lines = path.read_text(encoding="utf-8").splitlines()
    layer = layer_of(name)
    if layer is None:
        yield f"{name}: belongs to no layer"
        return
    if len(lines) > SIZE_LIMIT:
        yield f"{name}: {len(lines)} lines, the limit is {SIZE_LIMIT}"
    end_of_class = None
    for number, line in enumerate(lines, 1):
        where = f"{name}:{number}"
        if exported := EXPORTED_CLASS.match(line):
            end_of_class = exported[1] + "};"
        elif line == end_of_class:
            end_of_class = None
        elif end_of_class and CONSTANT.match(line):
            yield f"{where}: a constant of an exported class without QVXSYS_API_CONSTANT"
        if CONDITIONAL.match(line) and name not in CONDITIONALS_ALLOWED:
            yield f"{where}: platform conditional outside {', '.join(sorted(CONDITIONALS_ALLOWED))}"
        match = INCLUDE.match(line)
        if not match:
            continue
        quoted, included = match[1] == '"', match[2]
        if included.startswith("unicode/") and not ICU_ALLOWED.match(name):
            yield f"{where}: ICU is included outside its door"
        if included.lower() == "windows.h" and name != WINDOWS_GATE:
            yield f"{where}: <windows.h> outside {WINDOWS_GATE}"
        if included == "WindowsApi.h" and not WINDOWS_SOURCE.search(name):
            yield f"{where}: WindowsApi.h outside the sources for Windows"
        target = resolve(root, path, quoted, included)
        if target is None:
            if quoted:
                yield f"{where}: no file {included}"
            continue
        if name.startswith("public/") and not target.relative_to(root).as_posix().startswith("public/"):
            yield f"{where}: a public header includes a private one"
        of = layer_of(target.relative_to(root).as_posix())
        if of not in allowed(layer):
            yield f"{where}: layer {layer} includes {included} of layer {of}"


def check_headers(root, compiler):
    """Every public header compiles alone, without a warning, and twice."""
    for header in sorted((root / "public").rglob("*.h")):
        name = header.relative_to(root / "public").as_posix()
        with tempfile.NamedTemporaryFile("w", suffix=".cpp") as unit:
            unit.write(f"#include <{name}>\n#include <{name}>\n")
            unit.flush()
            result = subprocess.run(
                [compiler, "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wshadow",
                 "-Wold-style-cast", "-Werror", f"-I{root / 'public'}", unit.name], capture_output=True, text=True)
        if result.returncode != 0:
            yield f"public/{name}: does not compile alone\n{result.stderr[:2000]}"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("root", type=pathlib.Path)
    parser.add_argument("--compiler")
    arguments = parser.parse_args()
    root = arguments.root.resolve()
    findings = [finding for path in sources(root) for finding in check_file(root, path)]
    if arguments.compiler:
        findings += check_headers(root, arguments.compiler)
    print("\n".join(findings) or "the tree keeps its rules")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
