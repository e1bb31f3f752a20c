#!/usr/bin/env bash
# Installs the built tree into a scratch prefix, builds the example against it
# both through the CMake package and through pkg-config, runs both on the same
# speech file and requires identical output.
set -euo pipefail
build=$1 src=$2 speech=$3
prefix="$build/install-test"
rm -rf "$prefix" "$build/example-cmake"
cmake --install "$build" --prefix "$prefix" > /dev/null
test -L "$prefix/lib/libzepsc.so.8" && test -L "$prefix/lib/libzepcore.so.8" && test -f "$prefix/include/zepsc.h"

cmake -S "$src/examples" -B "$build/example-cmake" -DCMAKE_PREFIX_PATH="$prefix" > /dev/null
cmake --build "$build/example-cmake" > /dev/null
"$build/example-cmake/g729_lp_chain" "$speech" > "$build/example-cmake.out"

export PKG_CONFIG_PATH="$prefix/lib/pkgconfig"
cc -std=c99 -Wall -Wextra -Werror "$src/examples/g729_lp_chain.c" $(pkg-config --cflags --libs zepsc) \
   -Wl,-rpath,"$prefix/lib" -o "$build/example-pkgconfig"
"$build/example-pkgconfig" "$speech" > "$build/example-pkgconfig.out"

cmp "$build/example-cmake.out" "$build/example-pkgconfig.out"
tail -n 1 "$build/example-cmake.out"
