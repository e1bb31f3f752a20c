#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause
# Install tests: the installed tree as a user gets it.
#
#   test_install.sh prefix    BUILD SRC SPEECH FAKE_CORE_C [STATIC]
#     installs BUILD with `cmake --install --prefix` to a custom prefix; runs
#     the installed tool; builds every example there through the CMake package
#     and through pkg-config, shared and static, runs them and compares their
#     outputs with each other and with the tool; proves that the static
#     library makes its load-time build choice (a core-library test double,
#     FAKE_CORE_C, reports the processor features). STATIC OFF (the build's
#     ZEPS_BUILD_STATIC) leaves the static part out.
#   test_install.sh multiarch BUILD SRC SPEECH CC CXX [LAUNCHER]
#     configures and builds the library alone (no tests, no benchmarks,
#     GoogleTest and Google Benchmark made unfindable) for /usr with the
#     multiarch library folder lib/x86_64-linux-gnu, stages the install with
#     DESTDIR and does the same from there (pkg-config through its sysroot).
#   test_install.sh nosndfile BUILD SRC
#     configures with libsndfile unfindable: the library alone configures,
#     without the tool; with the tests on, configuring stops with a message.
#
# SPEECH is a raw 8 kHz 16-bit speech file; its folder also holds female.s16
# and noisy.s16.
set -euo pipefail
mode=$1 build=$2 src=$3
# The installed programs must find everything on their own.
unset LD_LIBRARY_PATH

fail() {
  echo "FAIL: $*" >&2
  exit 1
}

# Without the shared speech the test is skipped (ctest reads the message),
# unless ZEPS_REQUIRE_SHARED_DATA asks for the data.
if [ "$mode" != nosndfile ] && [ ! -e "$4" ]; then
  if [ -n "${ZEPS_REQUIRE_SHARED_DATA:-}" ] && [ "${ZEPS_REQUIRE_SHARED_DATA}" != 0 ]; then
    fail "shared data not found: $4; ZEPS_REQUIRE_SHARED_DATA is set"
  fi
  echo "shared data not found: $4 (the folder named by ZEPS_SHARED_DIR at configure time); skipped"
  exit 0
fi

# le16/le32 N: the little-endian bytes of N, as printf escapes.
le16() { printf '\\x%02x\\x%02x' $(($1 & 255)) $(($1 >> 8 & 255)); }
le32() { printf '\\x%02x\\x%02x\\x%02x\\x%02x' $(($1 & 255)) $(($1 >> 8 & 255)) $(($1 >> 16 & 255)) $(($1 >> 24 & 255)); }
# make_wav RAW WAV: a canonical mono 8 kHz 16-bit WAV file around raw PCM.
make_wav() {
  local n
  n=$(stat -c %s "$1")
  { printf "RIFF$(le32 $((36 + n)))WAVEfmt $(le32 16)$(le16 1)$(le16 1)$(le32 8000)$(le32 16000)$(le16 2)$(le16 16)"
    printf "data$(le32 "$n")"
    cat "$1"; } > "$2"
}

examples=(hello g729_lp_chain g726_g711 amr_vad_dtx subband_round_trip)

# run_examples BINDIR OUTDIR: runs every example, outputs to OUTDIR.
run_examples() {
  local bin=$1 out=$2
  mkdir -p "$out"
  "$bin/hello" > "$out/hello.txt"
  "$bin/g729_lp_chain" "$speech" > "$out/g729.txt"
  "$bin/g726_g711" "$speech" "$out/g726.s16" 32 > "$out/g726.txt"
  "$bin/amr_vad_dtx" "$speechdir/noisy.s16" > "$out/vad.csv"
  "$bin/subband_round_trip" "$speechdir/female.s16" "$out/subband.s16" > "$out/subband.txt"
}

# same_outputs A B: two runs of the examples agree file for file.
same_outputs() {
  local f
  for f in g729.txt g726.txt g726.s16 vad.csv subband.txt subband.s16; do
    cmp "$1/$f" "$2/$f" || fail "$f differs between $1 and $2"
  done
}

# build_cmake PREFIX_PATH OUT [STATIC]: the examples through find_package(zepsc).
build_cmake() {
  rm -rf "$2"
  cmake -S "$src/examples" -B "$2" -DCMAKE_PREFIX_PATH="$1" -DZEPS_EXAMPLES_STATIC="${3:-OFF}" \
        -DCMAKE_C_FLAGS="-Wall -Wextra -Werror" > "$2.log" || { cat "$2.log"; fail "configuring the examples"; }
  cmake --build "$2" >> "$2.log" 2>&1 || { cat "$2.log"; fail "building the examples"; }
}

# build_pkgconfig OUT LIBDIR [static]: the examples through pkg-config
# (PKG_CONFIG_PATH and PKG_CONFIG_SYSROOT_DIR set by the caller).
build_pkgconfig() {
  local e libs
  mkdir -p "$1"
  if [ "${3:-}" = static ]; then
    libs="-Wl,-Bstatic $(pkg-config --libs zepsc) -Wl,-Bdynamic -lstdc++"
  else
    libs="$(pkg-config --libs zepsc) -Wl,-rpath,$2"
  fi
  for e in "${examples[@]}"; do
    # shellcheck disable=SC2046
    cc -std=c99 -Wall -Wextra -Werror "$src/examples/$e.c" $(pkg-config --cflags zepsc) $libs -lm -o "$1/$e" ||
      fail "building $e through pkg-config"
  done
}

# check_family_outputs OUT TOOL: the examples' results against known ones
# and against the installed tool on the same speech.
check_family_outputs() {
  local out=$1 tool=$2 work="$1/tool"
  mkdir -p "$work"
  cmp "$out/vad.csv" "$src/tools/test/golden/vad1_noisy.csv" || fail "amr_vad_dtx differs from the tool's golden output"
  grep -q "configuration B, 16-bit: delay 212 samples .* SNR 23[.]78 dB" "$out/subband.txt" ||
    fail "subband_round_trip: $(cat "$out/subband.txt")"
  make_wav "$speechdir/female.s16" "$work/female.wav"
  "$tool" subband "$work/female.wav" -o "$work/sb.wav" --config B > /dev/null
  tail -c +45 "$work/sb.wav" | cmp - "$out/subband.s16" || fail "subband_round_trip differs from 'zepsc subband'"
  grep -Eq "^G[.]726 32 kbit/s over mu-law: [0-9]+ samples, SNR (1[5-9]|2[0-9])[.][0-9]+ dB$" "$out/g726.txt" ||
    fail "g726_g711: $(cat "$out/g726.txt")"
}

# check_static_dispatch PREFIX INCDIR LIBDIR FAKE_CORE_C OUT: a static program
# picks the processor build at start-up, from the features the core reports.
check_static_dispatch() {
  local inc=$2 lib=$3 fake=$4 out=$5 want mask
  cc -std=c11 -Wall -Wextra -Werror -I"$inc" "$src/examples/hello.c" "$lib/libzepsc.a" "$fake" -lm \
     -o "$out/hello-fakecore" || fail "linking the static library with the core test double"
  for mask in 10 30; do
    want=u8
    [ $mask = 30 ] && want=n8
    ZEPCORE_TEST_MASK=$mask "$out/hello-fakecore" | grep -q "build $want\$" ||
      fail "static library with features 0x$mask did not choose $want"
  done
}

case $mode in
prefix)
  speech=$4 fake=$5 static=${6:-ON}
  variants=(cmake pkgconfig)
  [ "$static" = OFF ] || variants+=(cmake-static pkgconfig-static)
  speechdir=$(dirname "$speech")
  prefix="$build/install-test"
  rm -rf "$prefix" "$build/example-cmake" "$build/example-cmake-static" "$build/example-pkgconfig" \
         "$build/example-pkgconfig-static" "$build/example-out"
  cmake --install "$build" --prefix "$prefix" > /dev/null
  for f in lib/libzepsc.so.8 lib/libzepcore.so.8; do test -L "$prefix/$f" || fail "missing $f"; done
  if [ "$static" != OFF ]; then
    for f in lib/libzepsc.a lib/libzepcore.a; do test -f "$prefix/$f" || fail "missing $f"; done
  fi
  for f in include/zepsc.h include/zepcore.h include/zepsc/frame.h bin/zepsc \
           lib/pkgconfig/zepsc.pc lib/cmake/zepsc/zepscConfig.cmake share/doc/zepsc/README.md \
           share/doc/zepsc/LICENSE share/doc/zepsc/CHANGELOG.md; do
    test -f "$prefix/$f" || fail "missing $f"
  done
  ls "$prefix"/share/doc/zepsc/docs/*.md > /dev/null || fail "missing share/doc/zepsc/docs"
  grep -qx "prefix=$prefix" "$prefix/lib/pkgconfig/zepsc.pc" || fail "zepsc.pc: $(head -3 "$prefix/lib/pkgconfig/zepsc.pc")"

  "$prefix/bin/zepsc" info > "$build/example-tool-info.txt" || fail "the installed tool does not start"
  loaded=$(ldd "$prefix/bin/zepsc" | awk '$1 == "libzepsc.so.8" { print $3 }')
  [ "$(readlink -f "$loaded")" = "$(readlink -f "$prefix/lib/libzepsc.so.8")" ] || fail "the tool loads '$loaded'"

  build_cmake "$prefix" "$build/example-cmake"
  export PKG_CONFIG_PATH="$prefix/lib/pkgconfig"
  build_pkgconfig "$build/example-pkgconfig" "$prefix/lib"
  if [ "$static" != OFF ]; then
    build_cmake "$prefix" "$build/example-cmake-static" ON
    build_pkgconfig "$build/example-pkgconfig-static" "$prefix/lib" static
    for b in example-cmake-static example-pkgconfig-static; do
      ! readelf -d "$build/$b/hello" | grep -q "libzep" || fail "$b/hello needs a shared zepsc library"
    done
  fi

  out="$build/example-out"
  for o in "${variants[@]}"; do
    run_examples "$build/example-$o" "$out/$o"
    same_outputs "$out/cmake" "$out/$o"
    # The same processor build, shared or static.
    grep "^library" "$out/$o/hello.txt" | cmp - <(grep "^library" "$out/cmake/hello.txt") || fail "$o chose another build"
  done
  check_family_outputs "$out/cmake" "$prefix/bin/zepsc"
  if [ "$static" != OFF ]; then
    check_static_dispatch "$prefix" "$prefix/include" "$prefix/lib" "$fake" "$out"
  fi
  cat "$out/cmake/hello.txt"
  tail -n 1 "$out/cmake/g729.txt"
  ;;

multiarch)
  speech=$4 cc=$5 cxx=$6 launcher=${7:-}
  speechdir=$(dirname "$speech")
  sub="$build/multiarch" stage="$build/multiarch-stage" libdir=lib/x86_64-linux-gnu
  rm -rf "$sub" "$stage"
  args=(-DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_INSTALL_LIBDIR=$libdir -DZEPS_BUILD_TESTS=OFF -DZEPS_BUILD_BENCH=OFF
        -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON -DCMAKE_DISABLE_FIND_PACKAGE_benchmark=ON -DZEPS_WERROR=ON
        -DCMAKE_C_COMPILER="$cc" -DCMAKE_CXX_COMPILER="$cxx")
  if [ -n "$launcher" ]; then
    args+=(-DCMAKE_C_COMPILER_LAUNCHER="$launcher" -DCMAKE_CXX_COMPILER_LAUNCHER="$launcher")
  fi
  cmake -S "$src" -B "$sub" "${args[@]}" > "$sub.log" 2>&1 || { cat "$sub.log"; fail "configuring the library alone"; }
  cmake --build "$sub" -j2 >> "$sub.log" 2>&1 || { tail -n 50 "$sub.log"; fail "building the library alone"; }
  DESTDIR="$stage" cmake --install "$sub" >> "$sub.log"
  usr="$stage/usr"
  for f in libzepsc.so.8 libzepcore.so.8 libzepsc.a pkgconfig/zepsc.pc cmake/zepsc/zepscConfig.cmake; do
    test -e "$usr/$libdir/$f" || fail "missing $libdir/$f"
  done
  pc="$usr/$libdir/pkgconfig/zepsc.pc"
  grep -qx 'prefix=/usr' "$pc" && grep -qx "libdir=\${prefix}/$libdir" "$pc" && grep -qx "includedir=\${prefix}/include" "$pc" ||
    fail "zepsc.pc: $(head -3 "$pc")"

  "$usr/bin/zepsc" info > "$sub-tool-info.txt" || fail "the installed tool does not start"
  build_cmake "$usr" "$sub-example-cmake"
  export PKG_CONFIG_PATH="$usr/$libdir/pkgconfig" PKG_CONFIG_SYSROOT_DIR="$stage"
  build_pkgconfig "$sub-example-pkgconfig" "$usr/$libdir"
  out="$sub-example-out"
  rm -rf "$out"
  run_examples "$sub-example-cmake" "$out/cmake"
  run_examples "$sub-example-pkgconfig" "$out/pkgconfig"
  same_outputs "$out/cmake" "$out/pkgconfig"
  check_family_outputs "$out/cmake" "$usr/bin/zepsc"
  tail -n 1 "$out/cmake/g729.txt"
  ;;

nosndfile)
  dir="$build/nosndfile"
  empty="$build/nosndfile-pkgconfig"
  rm -rf "$dir" "$empty"
  mkdir -p "$empty"
  # Tests on: configuring stops and says what is missing.
  if PKG_CONFIG_LIBDIR="$empty" cmake -S "$src" -B "$dir" -DZEPS_BUILD_BENCH=OFF > "$dir.log" 2>&1; then
    fail "configured the tests without libsndfile"
  fi
  grep -q "libsndfile1-dev" "$dir.log" || { cat "$dir.log"; fail "no message naming the package"; }
  rm -rf "$dir"
  PKG_CONFIG_LIBDIR="$empty" cmake -S "$src" -B "$dir" -DZEPS_BUILD_TESTS=OFF -DZEPS_BUILD_BENCH=OFF \
    -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON -DCMAKE_DISABLE_FIND_PACKAGE_benchmark=ON > "$dir.log" 2>&1 ||
    { cat "$dir.log"; fail "the library alone does not configure without libsndfile"; }
  targets=$(cmake --build "$dir" --target help)
  grep -q "zepsc_static" <<< "$targets" || fail "no library targets"
  ! grep -q "zepsc_cli" <<< "$targets" || fail "the tool is built without libsndfile"
  grep "without the zepsc tool" "$dir.log"
  ;;

*)
  fail "unknown mode $mode"
  ;;
esac
