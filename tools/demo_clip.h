/* SPDX-License-Identifier: BSD-3-Clause */
// Speech clip embedded in the command-line tool for its demo.
#pragma once

#include <cstdint>

namespace zepsc_cli {
inline constexpr int kDemoClipLength = 12000;  // 1.5 s at 8 kHz
extern const std::int16_t kDemoClip[kDemoClipLength];
}  // namespace zepsc_cli
