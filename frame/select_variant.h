/* SPDX-License-Identifier: BSD-3-Clause */
// Choice of the processor build from the core library's feature mask.
#pragma once

#include <cstdint>

namespace zeps {

inline constexpr std::uint64_t kFeatureSsse3 = 0x10;
inline constexpr std::uint64_t kFeatureMovbe = 0x20;

/// Build 1 ("n8") only when both SSSE3 and MOVBE are reported; build 0
/// ("u8") otherwise. No other bit, processor family or model is consulted.
constexpr std::int32_t select_variant(std::uint64_t features) {
    const std::uint64_t both = kFeatureSsse3 | kFeatureMovbe;
    return (features & both) == both ? 1 : 0;
}

}  // namespace zeps
