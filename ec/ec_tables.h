/* SPDX-License-Identifier: BSD-3-Clause */
// Constant tables of the echo-canceller sub-band filter bank (ec_tables.cpp).
#pragma once

namespace zeps {

/// Configuration A: order 5, frame 24, 128 taps; first 64 taps (float).
inline constexpr int kSubbandWinAOrder = 5, kSubbandWinAFrame = 24, kSubbandWinALen = 128;
inline constexpr int kSubbandWinAHalf = kSubbandWinALen / 2;
extern const float kSubbandWinA_32f[kSubbandWinAHalf];

/// Configuration B: order 6, frame 44, 256 taps; first 128 taps (float).
inline constexpr int kSubbandWinBOrder = 6, kSubbandWinBFrame = 44, kSubbandWinBLen = 256;
inline constexpr int kSubbandWinBHalf = kSubbandWinBLen / 2;
extern const float kSubbandWinB_32f[kSubbandWinBHalf];

}  // namespace zeps
