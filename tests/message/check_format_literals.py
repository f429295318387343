#!/usr/bin/env python3
"""Compiles calls of qvxsys::Format: those with a fault must fail, and the compiler must name the fault.

usage: check_format_literals.py INCLUDE-FOLDER COMPILER
"""
import subprocess
import sys
import tempfile

CASES = {
    'u"%1 of %2", 1, 2': None,
    'u"%%"': None,
    'u"' + 32 * "%1" + '", 1': None,
    'u8"%1 %%", 1': None,
    'u8"%2", 1': "InsufficientParametersToFormatString",
    'u"%99", 1': "InsufficientParametersToFormatString",
    'u"%1"': "InsufficientParametersToFormatString",
    'L"%2", 1': "InsufficientParametersToFormatString",
    '"%2", 1': "InsufficientParametersToFormatString",
    'u"100%"': "FormatStringEndsWithAnIncompleteMarker",
    'u"%a"': "InvalidNumberlessMarkerInFormatString",
    'u"%01", 1': "LeadingZeroInMarkerNumberInFormatString",
    'u"%100", 1': "InvalidMarkerNumberAbove99InFormatString",
    'u"%1\\u0661", 1': "InvalidMarkerNumberAbove99InFormatString",
    'u"%\\u0661", 1': "InsufficientParametersToFormatString",
    'u"' + 33 * "%1" + '", 1': "MoreThan32MarkersInFormatLiteral",
}


def compile_call(include, compiler, arguments):
    with tempfile.NamedTemporaryFile("w", suffix=".cpp") as unit:
        unit.write(f"#include <qvxsys/Format.h>\nTStringCore f() {{ return qvxsys::Format({arguments}); }}\n")
        unit.flush()
        return subprocess.run([compiler, "-std=c++20", "-fsyntax-only", f"-I{include}", unit.name], capture_output=True,
                              text=True)


def main():
    include, compiler = sys.argv[1:]
    findings = []
    for arguments, fault in CASES.items():
        result = compile_call(include, compiler, arguments)
        if fault is None and result.returncode != 0:
            findings.append(f"{arguments}: does not compile\n{result.stderr[:2000]}")
        elif fault is not None and result.returncode == 0:
            findings.append(f"{arguments}: compiles")
        elif fault is not None and fault not in result.stderr:
            findings.append(f"{arguments}: fails without naming {fault}\n{result.stderr[:2000]}")
    print("\n".join(findings) or f"{len(CASES)} calls checked")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
