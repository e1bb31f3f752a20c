/* SPDX-License-Identifier: BSD-3-Clause */
// Constant tables of the G.729 pitch stages (ITU-T G.729 tab_ld8k.c,
// Annex C tab_ld8a.c), under the reference's names.
#pragma once

#include <cstdint>

namespace zeps {

/// Interpolation length (taps per side) of the correlation filter, L_INTER4.
inline constexpr int kPitchInter4 = 4;
/// Interpolation length (taps per side) of the excitation filter, L_INTER10.
inline constexpr int kPitchInter10 = 10;
/// Up-sampling factor of the fractional delays, UP_SAMP.
inline constexpr int kPitchUpSamp = 3;

/// 1/3-resolution interpolation filter for the normalised correlation
/// (G.729 3.7, inter_3), Q15, FIR_SIZE_ANA = 13 taps.
extern const std::int16_t inter_3[13];
/// 1/3-resolution interpolation filter for the adaptive-codebook vector
/// (G.729 3.7, inter_3l, -3 dB at 3600 Hz), Q15, FIR_SIZE_SYN = 31 taps.
extern const std::int16_t inter_3l[31];
/// inter_3l in the tap pairs of the vector Pred_lt_3: [fraction][pair][lane].
alignas(16) extern const std::int16_t inter_3l_pairs[3][21][8];
/// The same filter in floating point (Annex C inter_3l).
extern const float inter_3l_flt[31];

}  // namespace zeps
