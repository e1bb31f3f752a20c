#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause
# Hardening steps of CI, after .ci/run: the test suite under valgrind
# memcheck, clang-tidy and cppcheck on the library sources (configuration in
# .clang-tidy and .ci/cppcheck-suppressions.txt), the ThreadSanitizer build
# with the thread test, and the fuzz targets (.ci/fuzz.sh: corpus replay and
# fixed-seed fuzzing with a bounded number of executions, deterministic).
# Sized for about 15 minutes on two cores; each step prints its time.
set -euo pipefail
cd "$(dirname "$0")/.."
export ZEPS_SHARED_DIR=${ZEPS_SHARED_DIR:-$PWD/../shared}
jobs=$(nproc)

packages=(cmake g++ make libgtest-dev clang libclang-rt-14-dev valgrind cppcheck clang-tidy)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  apt-get update -qq
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

step() { echo; echo "==== $1 ($(date -u +%T))"; }
lib_sources() {
  for d in frame common core g729 amr g722 ec; do
    if [ -d "$d" ]; then find "$d" -name '*.cpp'; fi
  done | sort
}

step "valgrind memcheck: the test suite (no errors, no leaks)"
cmake -S . -B build -DZEPS_WERROR=ON -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DZEPS_SHARED_DIR="$ZEPS_SHARED_DIR" >/dev/null
cmake --build build -j"$jobs"
# MEMCHECK_FILTER (a gtest filter, default all) can leave out the slowest suites.
for t in build/tests/zepsc_tests build/tests/zepsc_abi_tests; do
  valgrind -q --error-exitcode=1 --leak-check=full --show-leak-kinds=definite,indirect,possible \
    --errors-for-leak-kinds=definite,indirect,possible "$t" --gtest_brief=1 --gtest_filter="${MEMCHECK_FILTER:-*}"
done

step "clang-tidy: library sources"
# The compile commands of the GCC build without the GCC-only tuning switches
# of build n8 and the per-file scheduling switch, which clang does not know.
mkdir -p build/tidy
sed -E -e 's/ (\\")?-mtune-ctrl=[^ ]*//g' -e 's/ --param=vect-max-peeling-for-alignment=0//g' \
  -e 's/ -fschedule-insns//g' \
  build/compile_commands.json > build/tidy/compile_commands.json
# Only the files this host compiles (entries_direct.cpp serves other hosts).
lib_sources | while read -r f; do
  if grep -q "\"file\": \"$PWD/$f\"" build/tidy/compile_commands.json; then echo "$f"; fi
done | xargs -P "$jobs" -n 4 clang-tidy -p build/tidy --quiet

step "cppcheck: library sources"
cppcheck --std=c++20 --language=c++ --enable=warning,performance,portability,style --inline-suppr -q \
  --suppressions-list=.ci/cppcheck-suppressions.txt --error-exitcode=1 -j "$jobs" \
  -I include -I . -I build/generated -DZEPS_VARIANT_NS=u8 -DZEPS_VARIANT_INDEX=0 $(lib_sources)

step "ThreadSanitizer: eight threads over every contract row"
cmake -S . -B build-tsan -DZEPS_WERROR=ON -DZEPS_TSAN=ON -DZEPS_BUILD_BENCH=OFF -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DZEPS_SHARED_DIR="$ZEPS_SHARED_DIR" >/dev/null
cmake --build build-tsan -j"$jobs" --target zepsc_tests
TSAN_OPTIONS="halt_on_error=1 exitcode=66" build-tsan/tests/zepsc_tests --gtest_brief=1 --gtest_filter='Threads.*:Contract.*'

step "fuzzing: every target (corpus replay, fixed seeds, bounded runs)"
.ci/fuzz.sh

step "hardening passed"
