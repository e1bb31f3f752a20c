/* SPDX-License-Identifier: BSD-3-Clause */
// Helpers of the whole-codec replays: where the shared data is, reading
// files, and byte comparisons that name the first differing frame.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/codec.h"

namespace zeps::codec_test {

/// The shared data folder: $ZEPS_SHARED_DIR, else the one the build was
/// configured with.
std::string shared_dir();

/// A scratch file name in the temporary folder, unique to this process (the
/// u8 and n8 runs of a test may run at once).
std::string temp_file(const std::string& stem);

/// The whole file; the test fails (and an empty vector comes back) when it
/// cannot be read.
std::vector<std::uint8_t> read_bytes(const std::string& path);
/// A raw 16-bit little-endian PCM file.
std::vector<std::int16_t> read_pcm(const std::string& path);

/// The registered codec of that name (the test fails when there is none).
const zepsc_cli::CodecSpec& codec(const std::string& name);

/// Fails with the first differing frame (frame_bytes bytes a frame) unless
/// the two byte strings are equal.
void expect_same_bytes(const std::vector<std::uint8_t>& got, const std::vector<std::uint8_t>& want,
                       std::size_t frame_bytes, const std::string& what);
/// The same for PCM, frame_samples samples a frame.
void expect_same_pcm(const std::vector<std::int16_t>& got, const std::vector<std::int16_t>& want,
                     std::size_t frame_samples, const std::string& what);

}  // namespace zeps::codec_test
