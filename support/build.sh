# Shared by the commands `run` and `check`: getting packages and building presets. Sourced, not run.

# ensure_packages NAME...: installs the Debian packages that are missing.
ensure_packages() {
    missing=
    for package in "$@"; do
        case $(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null) in
        installed) ;;
        *) missing="$missing $package" ;;
        esac
    done
    [ -n "$missing" ] || return 0
    if ! command -v apt-get >/dev/null; then
        echo "$(basename "$0"): this needs Debian packages, and there is no apt-get here:$missing" >&2
        return 1
    fi
    as_root=
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            echo "$(basename "$0"): not root and no sudo; install these packages first:$missing" >&2
            return 1
        fi
        as_root=sudo
    fi
    echo "$(basename "$0"): installing$missing" >&2
    log=$(mktemp)
    # shellcheck disable=SC2086
    if ! { $as_root apt-get update && $as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends $missing; } >"$log" 2>&1 </dev/null; then
        cat "$log" >&2
        rm -f "$log"
        echo "$(basename "$0"): could not install$missing" >&2
        return 1
    fi
    rm -f "$log"
}

# build_preset PRESET [CMAKE-OPTION...]: configures and builds; what it prints is shown only when it fails.
build_preset() {
    preset=$1
    shift
    mkdir -p "build/$preset"
    log="build/$preset/build.log"
    if ! { cmake --preset "$preset" "$@" && cmake --build --preset "$preset"; } >"$log" 2>&1 </dev/null; then
        cat "$log" >&2
        echo "$(basename "$0"): the build of $preset failed (build/$preset/build.log)" >&2
        return 1
    fi
}

# add_tests FOLDER: adds the tests of a build tree to those that the combined run in build/check makes.
add_tests() {
    echo "subdirs(\"$1\")" >>build/check/CTestTestfile.cmake
}

# add_skipped NAME REASON: a test that is reported as skipped.
add_skipped() {
    {
        echo "add_test($1 sh -c \"echo '$1: skipped: $2'; exit 77\")"
        echo "set_tests_properties($1 PROPERTIES SKIP_RETURN_CODE 77)"
    } >>build/check/CTestTestfile.cmake
}

# add_failed NAME REASON: a test that fails.
add_failed() {
    echo "check: $1: $2" >&2
    echo "add_test($1 sh -c \"echo '$1: failed: $2'; exit 1\")" >>build/check/CTestTestfile.cmake
}

# What the library and the tool are built with and from.
build_packages="g++ cmake ninja-build pkg-config libicu-dev libboost-dev libdw-dev libncurses-dev libcli11-dev nlohmann-json3-dev"
# What the tests need besides.
test_packages="libgtest-dev libfmt-dev python3 gdb binutils xz-utils elfutils lldb socat procps locales doxygen abigail-tools
    lintian dpkg-dev fakeroot file"
# What the sanitizer and fuzz builds need besides.
clang_packages="clang llvm libclang-rt-14-dev"
# What the benchmarks need besides: the benchmark library and the peers that are measured beside this one.
bench_packages="libbenchmark-dev python3 qt6-base-dev libabsl-dev libboost-thread-dev libtbb-dev libfmt-dev
    libfast-float-dev libdouble-conversion-dev libssl-dev libcrypto++-dev libmimalloc-dev libunwind8"
# What the Windows build and its tests need besides: the compiler, Wine, and what its libraries are built from and with.
windows_packages="g++-mingw-w64-x86-64-posix wine wine64 icu-devtools googletest dpkg-dev make"
