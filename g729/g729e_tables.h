/* SPDX-License-Identifier: BSD-3-Clause */
// Constant tables of the G.729 Annex E stages (tab_ld8e.c), under the
// reference's names.
#pragma once

#include <cstdint>

namespace zeps {

/// Lag window of the order-30 backward analysis, double precision (hi Q15, lo).
extern const std::int16_t lag_h_bwd[30];
extern const std::int16_t lag_l_bwd[30];
/// Mantissa table of the frame energy in dB (ener_dB), Q11.
extern const std::int16_t tab_log[17];

}  // namespace zeps
