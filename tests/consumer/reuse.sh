#!/bin/sh
# usage: reuse.sh BUILD COMPILER ARGUMENT...: a compiler launcher for a project that has taken this tree in by FetchContent.
# Objects of the library are taken from BUILD (whose commands the test compares); all else is compiled.
set -eu
build=$1
shift
object= dependencies= before=
for argument in "$@"; do
    case $before in
    -o) object=$argument ;;
    -MF) dependencies=$argument ;;
    esac
    before=$argument
done
made=$build/${object#_deps/qvxsys-build/}
if [ "$made" = "$build/$object" ] || [ ! -f "$made" ]; then
    exec "$@"
fi
ln -f "$made" "$object" 2>/dev/null || cp "$made" "$object"
echo "$object:" >"$dependencies"
