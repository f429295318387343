#!/bin/sh
# usage: pkg_config.sh COMPILER PREFIX SOURCE PROGRAM: builds and runs SOURCE with the flags pkg-config gives.
set -eu
pc=$(find "$2" -name qvxsys.pc)
PKG_CONFIG_PATH=$(dirname "$pc")
export PKG_CONFIG_PATH
libdir=$(pkg-config --define-variable=prefix="$2" --variable=libdir qvxsys)
flags=$(pkg-config --define-variable=prefix="$2" --cflags --libs qvxsys)
# shellcheck disable=SC2086
"$1" -std=c++20 "$3" $flags -Wl,-rpath,"$libdir" -o "$4"
"$4"
