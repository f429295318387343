#!/usr/bin/env python3
"""Uses the library in the ways that docs/packages.md shows, by the commands of that page.

usage: consumer_test.py CASE --build BUILD --work FOLDER [--flags FLAGS] [--archive]     CASE is a function below
The environment's CXX and CMAKE_GENERATOR are those that the library was built with.
"""
import argparse
import json
import os
import pathlib
import shlex
import shutil
import subprocess
import sys

from packages_page import PAGE, must, run

ROOT = PAGE.parents[1]


def expect(condition, message):
    if not condition:
        sys.exit(message)


def install(work, environment, arguments):
    """Installs to one place and moves the result to the one where the other cases look for it."""
    made = work / "made"
    for folder in (made, work / "prefix"):
        shutil.rmtree(folder, ignore_errors=True)
    run("Installing from a build", work / "install", environment | {"PREFIX": str(made)})
    made.rename(work / "prefix")


def cmake(work, environment, arguments):
    run("CMake", work / "cmake", environment)


def pkg_config(work, environment, arguments):
    run("pkg-config", work / "pkg_config", environment)
    linked = must(["readelf", "-d", work / "pkg_config/hello"])
    expect("libqvxsys.so.1]" in linked and "libicu" not in linked, f"linked with too much or too little:\n{linked}")


def archive(work, environment, arguments):
    run("The archive", work / "archive", environment)
    for program in ("hello", "build/hello"):
        expect("libqvxsys" not in must(["readelf", "-d", work / "archive" / program]), "the shared library is linked")


def components(work, environment, arguments):
    """What find_package is asked, and what it answers: a piece of its error, or nothing."""
    table = [
        ("1.0", "COMPONENTS shared static tool", "" if arguments.archive else 'no component "static" here'),
        ("", "COMPONENTS tool", ""),
        ("1.0", "COMPONENTS tool nonsense",
         'no component "nonsense" here: its components are shared, static and tool'),
        ("", "OPTIONAL_COMPONENTS nonsense", ""),
        ("2.0", "", "version"),
    ]
    folder = work / "components"
    folder.mkdir(parents=True, exist_ok=True)
    for version, asked, answer in table:
        (folder / "CMakeLists.txt").write_text(
            "cmake_minimum_required(VERSION 3.25)\nproject(components LANGUAGES CXX)\n"
            f"find_package(qvxsys {version} REQUIRED {asked})\n"
            "if(qvxsys_nonsense_FOUND OR NOT TARGET qvxsys::qvxsys)\nmessage(FATAL_ERROR wrong)\nendif()\n"
            "if(qvxsys_tool_FOUND)\nget_target_property(tool qvxsys::qvx LOCATION)\n"
            "execute_process(COMMAND ${tool} --version COMMAND_ERROR_IS_FATAL ANY)\nendif()\n")
        result = subprocess.run(["cmake", "-S", ".", "-B", "build", f"-DCMAKE_PREFIX_PATH={environment['PREFIX']}"],
                                cwd=folder, env=environment, capture_output=True, encoding="utf-8")
        flowed = " ".join(result.stderr.split())
        expect((result.returncode == 0) == (not answer) and answer in flowed, f"{version} {asked}: {result.returncode}, {flowed}")


def commands(build, part=""):
    """The compiler's arguments by source, for the objects below `part`."""
    found = {}
    for entry in json.loads((pathlib.Path(build) / "compile_commands.json").read_text()):
        words = shlex.split(entry["command"])
        words = words[words.index(os.environ["CXX"]):]
        if part in words[words.index("-o") + 1]:
            found[entry["file"]] = [word.replace(part, "") for word in words if word != "-Werror"]
    return found


def subproject(work, environment, arguments):
    """A project that takes the tree in. The library's objects are those of its own build, once it is certain that they
    would be compiled by the same commands; the build type that goes with them stays unset, as the project leaves it."""
    environment |= {"CXXFLAGS": arguments.flags, "CMAKE_EXPORT_COMPILE_COMMANDS": "ON",
                    "CMAKE_CXX_COMPILER_LAUNCHER": f"sh;{ROOT / 'tests/consumer/reuse.sh'};{arguments.build}"}
    folder = work / "subproject"
    shutil.rmtree(folder, ignore_errors=True)
    run("A part of your own build", folder, environment)
    build = folder / "build"
    own, library = commands(arguments.build), commands(build, "_deps/qvxsys-build/")
    differ = [words for source, words in library.items() if words != own[source]]
    expect(len(library) > 100 and not differ, f"{len(library)} sources, compiled in another way: {differ[:1]}")
    (hello,) = [words for source, words in commands(build).items() if source.endswith("hello.cpp")]
    foreign = [word for word in hello if word.startswith(("-W", "-f"))]
    expect(not foreign, f"the project's own source is compiled with {foreign}")
    expect(len(commands(build)) == len(library) + 1, "more than the library is built")
    expect("CMAKE_BUILD_TYPE:STRING=\n" in (build / "CMakeCache.txt").read_text(), "the build type was set")
    must(["cmake", "--install", build, "--prefix", folder / "installed"])
    expect(not (folder / "installed").exists(), "the library is installed")


def debian(work, environment, arguments):
    """Makes the packages, has lintian look at them, installs them below a folder with a copy of this machine's own package
    database, so that their dependencies are checked, and uses what is installed there."""
    folder = work / "debian"
    shutil.rmtree(folder, ignore_errors=True)
    root, database = folder / "root", folder / "dpkg"
    root.mkdir(parents=True)
    shutil.copytree("/var/lib/dpkg", database, ignore=shutil.ignore_patterns(
        "lock*", "*-old", "available", "parts", "*.md5sums", "*.symbols", "*.shlibs", "*.templates"))
    as_root = "" if os.getuid() == 0 else "fakeroot -- "
    run("Debian", folder, environment,
        f'sudo() {{ program=$1; shift; {as_root}"$program" --instdir="{root}" --admindir="{database}" --no-triggers '
        '--force-script-chrootless "$@"; }\n')
    packages = {path.name.split("_")[0]: path for path in (folder / "packages").glob("*.deb")}
    print(must(["lintian", "--allow-root", "--fail-on", "error,warning", *packages.values()]))

    library = next(name for name in packages if name.startswith("libqvxsys") and name != "libqvxsys-dev")
    expect(set(packages) == {library, "libqvxsys-dev", "qvx"}, f"the packages are {set(packages)}")
    depends = {name: must(["dpkg-deb", "-f", path, "Depends"]) for name, path in packages.items()}
    for name, needed in ((library, "libicu libdw1 libc6"), ("libqvxsys-dev", library), ("qvx", f"{library} libncurses")):
        expect(all(one in depends[name] for one in needed.split()), f"{name} depends on {depends[name]}")
    control = must(["dpkg-deb", "--ctrl-tarfile", packages[library]], errors="replace")
    expect(all(name in control for name in ("./shlibs", "./triggers")) and "./postinst" not in control, "control files")

    usr = root / "usr"
    libdir = usr / "lib/x86_64-linux-gnu"
    version = must([usr / "bin/qvx", "--version"], env=environment | {"LD_LIBRARY_PATH": str(libdir)}).split()[1]
    wanted = [libdir / f"libqvxsys.so.{version}", usr / "share/man/man1/qvx.1.gz",
              usr / "share/doc/qvxsys/docs/packages.md", usr / f"share/doc/{library}/changelog.gz"]
    if (ROOT / "support/CMakeLists.txt").exists():
        wanted.append(usr / "share/gdb/auto-load" / libdir.relative_to(root) / f"libqvxsys.so.{version}-gdb.py")
    for path in wanted:
        expect(path.is_file(), f"{path.relative_to(root)} is not installed")

    installed = environment | {"PREFIX": str(usr)}
    for use in (cmake, pkg_config, archive):
        use(folder, installed, arguments)


def main():
    parser = argparse.ArgumentParser()
    cases = (install, cmake, pkg_config, archive, components, subproject, debian)
    parser.add_argument("case", choices=[case.__name__ for case in cases])
    parser.add_argument("--build", required=True)
    parser.add_argument("--work", type=pathlib.Path, required=True)
    parser.add_argument("--flags", default="")
    parser.add_argument("--archive", action="store_true", help="there is one")
    arguments = parser.parse_args()
    environment = os.environ | {"QVXSYS": str(ROOT), "BUILD": arguments.build, "PREFIX": str(arguments.work / "prefix"),
                                "LC_ALL": "C.UTF-8"}
    globals()[arguments.case](arguments.work, environment, arguments)


if __name__ == "__main__":
    main()
