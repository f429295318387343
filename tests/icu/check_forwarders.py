#!/usr/bin/env python3
"""Checks that every stable flat function of ICU's own headers is forwarded exactly once, but for those named here.

usage: check_forwarders.py FOLDER_OF_PUBLIC_HEADERS ICU_INCLUDE_FOLDER...
"""
import pathlib
import re
import sys

FAMILIES = ("ubrk ucasemap uchar uclean ucnv ucnv_cb ucnv_err ucnvsel ucol ucoleitr ucpmap ucsdet ucurr uenum "
            "ufieldpositer uformattable uiter uloc unorm2 unum uregex usearch uset ustring utext utypes uversion").split()
OLDEST = 70  # the library builds with this version of ICU
ADAPTED = {"ucnv_clone", "ucol_clone"}  # newer, but there under another name
CPLUSPLUS = "takes an object of ICU's C++ classes"
EXCEPTIONS = {
    "u_cleanup": "written out: the library lets go of what it keeps before",
    "uenum_openFromStringEnumeration": CPLUSPLUS,
    "uiter_setCharacterIterator": CPLUSPLUS,
    "uiter_setReplaceable": CPLUSPLUS,
    "utext_openCharacterIterator": CPLUSPLUS,
    "utext_openConstUnicodeString": CPLUSPLUS,
    "utext_openReplaceable": CPLUSPLUS,
    "utext_openUnicodeString": CPLUSPLUS,
    "utext_setup": "for providers of texts, which need the members of UText",
}
PROTOTYPE = re.compile(r"^(?:U_CAPI|U_STABLE)\s[^;{]*?\b(\w+)\s*\([^;{]*?\)\s*;", re.MULTILINE)
TAG = re.compile(r"@(stable|draft|internal|deprecated|obsolete)(?:\s+ICU\s*(\d+)(?:\.\d+)*)?")
FORWARDED = re.compile(r"QVX_ICU(?:_0)?\([^,()]*,\s*(\w+)")


def stable(text, at):
    """Whether the comment before a prototype calls it stable, in the oldest version already."""
    tags = TAG.findall(text[text.rfind("/**", 0, at):at])
    kinds = {kind for kind, _ in tags}
    return kinds == {"stable"} and all(int(version or 0) <= OLDEST for _, version in tags)


def main():
    public, folders = pathlib.Path(sys.argv[1]), [pathlib.Path(folder) for folder in sys.argv[2:]]
    forwarded = []
    for header in sorted(public.glob("*.h")):
        if header.name != "IcuDeclare.h":
            forwarded += FORWARDED.findall(header.read_text(encoding="utf-8"))
    findings = [f"{name}: forwarded twice" for name in sorted(set(forwarded)) if forwarded.count(name) > 1]
    declared = wanted = 0
    for family in FAMILIES:
        path = next((folder / "unicode" / f"{family}.h" for folder in [*folders, pathlib.Path("/usr/include")]
                     if (folder / "unicode" / f"{family}.h").is_file()), None)
        if path is None:
            findings.append(f"{family}.h: not found")
            continue
        text = path.read_text(encoding="utf-8")
        for match in PROTOTYPE.finditer(text):
            name = match[1]
            declared += 1
            if name in EXCEPTIONS or not (stable(text, match.start()) or name in ADAPTED):
                continue
            wanted += 1
            if name not in forwarded:
                findings.append(f"{name}: of {family}.h, not forwarded")
    if wanted < 600:
        findings.append(f"only {wanted} functions found: the headers are not read as they should be")
    print("\n".join(findings) or f"{wanted} of {declared} functions are forwarded, {len(forwarded)} lines")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
