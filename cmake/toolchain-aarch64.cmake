# SPDX-License-Identifier: BSD-3-Clause
# Cross build for aarch64 Linux with Debian's cross toolchain
# (g++-aarch64-linux-gnu); the tests run under qemu-user (qemu-aarch64).
#   cmake -S . -B build-aarch64 -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-aarch64.cmake
# The environment variable ZEPS_AARCH64_PREFIX may name a folder holding
# further aarch64 libraries (GoogleTest, cross-built by .ci/aarch64.sh).
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_ASM_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_FIND_ROOT_PATH /usr/aarch64-linux-gnu $ENV{ZEPS_AARCH64_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Programs built here run through the emulator (ctest, test discovery); it
# finds the aarch64 C and C++ runtime in the cross toolchain's sysroot.
find_program(ZEPS_QEMU_AARCH64 NAMES qemu-aarch64 qemu-aarch64-static REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR ${ZEPS_QEMU_AARCH64} -L /usr/aarch64-linux-gnu)
# pkg-config looks at aarch64 packages only (never the build machine's).
set(ENV{PKG_CONFIG_LIBDIR} "/usr/lib/aarch64-linux-gnu/pkgconfig:/usr/aarch64-linux-gnu/lib/pkgconfig")
set(ENV{PKG_CONFIG_PATH} "")
