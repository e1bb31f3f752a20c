#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause
# The aarch64 build: cross-compiles the library (one generic build of the
# scalar kernels, as on every host other than x86-64) and its tests with
# Debian's cross toolchain, then runs the whole suite under qemu-user. The
# command-line tool, the benchmarks and the fuzz driver are not built.
set -euo pipefail
cd "$(dirname "$0")/.."
start=$(date +%s)

packages=(g++-aarch64-linux-gnu qemu-user googletest cmake make)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  apt-get update -qq
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

toolchain="$PWD/cmake/toolchain-aarch64.cmake"
jobs=$(nproc)

# GoogleTest for aarch64, cross-built once from Debian's sources (unless
# ZEPS_AARCH64_PREFIX already names a folder holding one).
if [ -z "${ZEPS_AARCH64_PREFIX:-}" ]; then
  gtest="$PWD/build-aarch64-gtest"
  if [ ! -f "$gtest/prefix/lib/libgtest.a" ]; then
    cmake -S /usr/src/googletest -B "$gtest/build" -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
          -DCMAKE_INSTALL_PREFIX="$gtest/prefix" -DBUILD_GMOCK=OFF -DCMAKE_BUILD_TYPE=Release > "$gtest.log"
    cmake --build "$gtest/build" -j"$jobs" >> "$gtest.log"
    cmake --install "$gtest/build" >> "$gtest.log"
  fi
  export ZEPS_AARCH64_PREFIX="$gtest/prefix"
fi

cmake -S . -B build-aarch64 -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DZEPS_WERROR=ON \
      -DZEPS_BUILD_BENCH=OFF -DZEPS_BUILD_TOOL=OFF
cmake --build build-aarch64 -j"$jobs"
ctest --test-dir build-aarch64 --output-on-failure -j"$jobs"
echo "aarch64 build and tests: $(( $(date +%s) - start )) s"
echo "processor time (user, system) of the script, then of its children:"
times
