#!/usr/bin/env python3
"""Makes the zip and uses it as a stranger would: unpacked elsewhere, its tool prints the table that the tool prints on
Linux, it names a DLL that is missing, and a project that finds the CMake package builds and runs.

The environment variable QVX_NATIVE names the tool built for this machine. Without it the tables are not compared and the
test is reported as skipped (status 77) when all else is well.
"""
import argparse
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import zipfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "consumer"))
import packages_page  # noqa: E402

EXPECTED = ["bin/qvxsys.dll", "bin/qvx.exe", "bin/libstdc++-6.dll", "bin/libgcc_s_seh-1.dll", "bin/libwinpthread-1.dll",
            "licenses/icu.txt", "licenses/qvxsys.txt", "lib/libqvxsys.dll.a",
            "include/qvxsys/qvxsys.h", "include/qvxsys/TStringCore.h",
            "lib/cmake/qvxsys/qvxsysConfig.cmake", "lib/cmake/qvxsys/qvxsysConfigVersion.cmake",
            "share/doc/qvxsys/docs/packages.md"]


def run(*command, **more):
    result = subprocess.run([str(part) for part in command], capture_output=True, encoding="utf-8", **more)
    return result.returncode, result.stdout, result.stderr


def must(*command, **more):
    status, out, err = run(*command, **more)
    if status != 0:
        sys.exit(f"{command}: status {status}\n{out}\n{err}")
    return out


def main():
    parser = argparse.ArgumentParser()
    for name in ("cmake", "cpack", "toolchain"):
        parser.add_argument("--" + name, required=True)
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--source", type=pathlib.Path, required=True)
    parser.add_argument("--wine", nargs="+", required=True)
    arguments = parser.parse_args()

    with tempfile.TemporaryDirectory() as folder:
        folder = pathlib.Path(folder)
        must(arguments.cpack, "-G", "ZIP", "-B", folder / "made", cwd=arguments.build)
        (made,) = (folder / "made").glob("*.zip")
        shutil.copy(made, arguments.build)
        with zipfile.ZipFile(made) as package:
            package.extractall(folder)
        (root,) = [path.parent.parent for path in folder.glob("*/bin/qvx.exe")]
        missing = [name for name in EXPECTED if not (root / name).is_file()]
        if missing:
            sys.exit(f"{made.name} lacks {missing}")

        qvx = root / "bin/qvx.exe"
        table = must(*arguments.wine, qvx, "scan", "samples", cwd=arguments.source)

        project, work = folder / "project", folder / "consumer"
        section = packages_page.write_files("CMake", project)
        must(arguments.cmake, "-G", "Ninja", "-S", project, "-B", work,
             f"-DCMAKE_TOOLCHAIN_FILE={arguments.toolchain}", f"-Dqvxsys_DIR={root / 'lib/cmake/qvxsys'}")
        must(arguments.cmake, "--build", work)
        shutil.copy(work / "hello.exe", root / "bin")
        if must(*arguments.wine, root / "bin/hello.exe") != section.output:
            sys.exit("the consumer does not print what it should")

        icu = next((root / "bin").glob("icuuc*.dll"))
        icu.unlink()
        status, _, err = run(*arguments.wine, qvx, "--version")
        if status == 0 or icu.name not in err:
            sys.exit(f"without {icu.name}: status {status}\n{err}")

    native = os.environ.get("QVX_NATIVE")
    if not native:
        print("the tables were not compared: QVX_NATIVE does not name the tool for this machine")
        return 77
    # Lines end differently there, and so do the names of folders.
    expected = must(native, "scan", "samples", cwd=arguments.source)
    if table.replace("\\", "/") != expected or len(expected.splitlines()) < 20:
        sys.exit(f"the tables differ:\n{expected}\nand\n{table}")
    print(f"{made.name}: the tool prints the same {len(expected.splitlines())} lines as on Linux")
    return 0


if __name__ == "__main__":
    sys.exit(main())
