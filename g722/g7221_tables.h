/* SPDX-License-Identifier: BSD-3-Clause */
// ITU-T G.722.1 constant tables of the modulated lapped transform (G.722.1
// clause 3.2 and 5.3.4 / Annex C): the analysis and synthesis windows for the
// 320-sample (7 kHz) and 640-sample (14 kHz) frames, and the tables of the
// fixed-point DCT-IV of the reference: the 10-point core matrices, the
// rotation (cosine, minus sine) tables of each butterfly stage, the 7 kHz
// analysis and synthesis biases and the synthesis dither. Q15 fractions.
#pragma once

#include <cstdint>

namespace zeps {

/// One rotation of a DCT-IV butterfly stage: cos and -sin, Q15.
struct G7221CosMsin {
    std::int16_t cosine, minus_sine;
};

extern const std::int16_t g7221_samples_to_rmlt_window[320];
extern const std::int16_t g7221_rmlt_to_samples_window[320];
extern const std::int16_t g7221_max_samples_to_rmlt_window[640];
extern const std::int16_t g7221_max_rmlt_to_samples_window[640];

/// Analysis DCT-IV (dct_type_iv_a): input bias of the 320-point transform,
/// 10-point core, rotation tables for stage spans 20, 40, ..., 640.
extern const std::int16_t g7221_anal_bias[320];
extern const std::int16_t g7221_dct_core_a[10][10];
extern const G7221CosMsin* const g7221_a_cos_msin_table[6];

/// Synthesis DCT-IV (dct_type_iv_s): output bias of the 320-point
/// transform, dither of the first butterfly stage, core and rotations.
extern const std::int16_t g7221_syn_bias_7khz[320];
extern const std::int16_t g7221_dither[320];
extern const std::int16_t g7221_max_dither[640];
extern const std::int16_t g7221_dct_core_s[10][10];
extern const G7221CosMsin* const g7221_s_cos_msin_table[6];

}  // namespace zeps
