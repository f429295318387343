#!/usr/bin/env python3
"""Checks what the built library offers: that every exported symbol belongs to the library, and that the undecorated
allocation functions are there; of a shared object also its SONAME and that every symbol carries the script's version.

usage: check_exports.py LIBRARY [--objdump OBJDUMP]     OBJDUMP is needed for a DLL
"""
import argparse
import re
import subprocess
import sys

VERSION = "QVXSYS_1"
OURS = re.compile(r"^(typeinfo (name )?for |vtable for |(non-)?virtual thunk to )?"
                  r"(CharacterUtils|StringUtils|TCType|QvxICU|KMP|TStringCore|TStringEditing|TStringStorage|TStringView|"
                  r"TCodePointReference|TTextDecoder|"
                  r"TError|QuorvexError|QuorvexException|QuorvexOutOfMemoryException|QuorvexUserErrorException|"
                  r"StackExceptionAndRethrow|TFormatStringCore|TScanStringCore|AssertHooks|ThrowLogicException|"
                  r"InjectLookupTStr|LogicException|RefCntObject|RefCntObjectNonVirtualBase<RefCntObject>|"
                  r"IEvent|TEvent|TAutoResetEvent|TCountdownEvent|TCancelEvent|WaitForAll|WaitForAny|WaitForAnyExact|"
                  r"WaitForAllExact|TRecursiveMutex|TReadWriteLock|TSemaphore|TSemaphoreScope|"
                  r"TThreadPool|NonThreadPoolWorkerManager|ParallelForThread|TestHooks|AsyncTask|"
                  r"TPathCore|TStackWalker|TSystem|GetLastErrorString|TMath|WriteCrashDump|"
                  r"ResourceManager|ResourceObserver|ResourceReporter|MemoryPressure|"
                  r"InitializeStaticRepository|DeinitializeStaticRepository|InitOnce|sha2|quorvex|qvxsys::detail|qvxsys::LoadedVersion|qvxsys::LoadedVersionText)\b")
REQUIRED = {"TMalloc", "TCalloc", "TRealloc", "TFree"}


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


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("library")
    parser.add_argument("--objdump", default="objdump")
    arguments = parser.parse_args()
    findings = []
    is_dll = arguments.library.endswith(".dll")
    names = set(dll_symbols(arguments.library, arguments.objdump) if is_dll
                else elf_symbols(arguments.library, findings))
    findings += [f"{name}: exported, but not the library's" for name in sorted(names - REQUIRED)
                 if not OURS.match(name)]
    findings += [f"{name}: not exported" for name in sorted(REQUIRED - names)]
    print("\n".join(findings) or f"the library exports what it should: {len(names)} symbols")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
