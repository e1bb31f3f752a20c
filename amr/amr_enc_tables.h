/* SPDX-License-Identifier: BSD-3-Clause */
// Constant tables of the GSM-AMR encoder (3GPP TS 26.073), shared by both
// processor builds, under the standard's names.
#pragma once

#include <cstdint>

namespace zeps::amr_enc_tab {

/// LP analysis windows of 12.2 kbit/s (window.tab): the first analysis
/// (160 + 80 samples) and the second (232 + 8), Q15
extern const std::int16_t window_160_80[240];
extern const std::int16_t window_232_8[240];
/// 1/6-resolution interpolation filter of the fractional pitch search
/// (inter_36.tab, Interpol_3or6), Q15
extern const std::int16_t inter_6_srch[25];

}  // namespace zeps::amr_enc_tab
