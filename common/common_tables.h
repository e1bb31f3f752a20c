// Constant tables shared by the fixed-point families (compiled once).
#pragma once

#include <cstdint>

namespace zeps {

/// 1/sqrt interpolation table of the ITU-T/3GPP Inv_sqrt routine (Q15).
extern const std::int16_t tabsqr[49];
/// log2 interpolation table of the ITU-T/3GPP Log2 routine (Q15).
extern const std::int16_t tablog[33];
/// 2^x interpolation table of the ITU-T/3GPP Pow2 routine (Q14..Q15).
extern const std::int16_t tabpow[33];

}  // namespace zeps
