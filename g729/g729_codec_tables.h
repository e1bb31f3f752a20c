/* SPDX-License-Identifier: BSD-3-Clause */
// Constant tables of the G.729 excitation and gain stages (ITU-T G.729
// tab_ld8k.c, identical in Annex A tab_ld8a.c), under the reference's names.
#pragma once

#include <cstdint>

namespace zeps {

/// Gain codebook, first stage (G.729 3.9.2): {pitch gain Q14, code-gain correction Q13}.
extern const std::int16_t gbk1[8][2];
/// Gain codebook, second stage: {pitch gain Q14, code-gain correction Q13}.
extern const std::int16_t gbk2[16][2];
/// Gain_update's past_qua_en entry (Q10) for codebook rows i, j (derived
/// from gbk1, gbk2; a test holds it to Gain_update).
extern const std::int16_t gbk12_qua_en[8][16];
/// Index maps between the transmitted gain indices and the codebook rows.
extern const std::int16_t map1[8];
extern const std::int16_t imap1[8];
extern const std::int16_t map2[16];
extern const std::int16_t imap2[16];
/// MA prediction coefficients of the code-gain predictor, Q13.
extern const std::int16_t pred[4];
/// Pre-selection coefficients of the gain quantiser (coef Q10/Q14/Q16/Q19, L_coef Q26/Q30/Q32/Q35).
extern const std::int16_t coef[2][2];
extern const std::int32_t L_coef[2][2];
/// Pre-selection thresholds: thr1 Q14, thr2 Q15.
extern const std::int16_t thr1[4];
extern const std::int16_t thr2[8];
/// Taming zones of the excitation-error memory, one per lag 0..152.
extern const std::int16_t tab_zone[153];

}  // namespace zeps

namespace zeps {

/// Interpolation filters of the main-body post-filter's 1/8-sample delays
/// (G.729 4.2.1): 7 phases of 4 taps (tab_hup_s) and of 16 taps (tab_hup_l), Q15.
extern const std::int16_t tab_hup_s[28];
extern const std::int16_t tab_hup_l[112];

}  // namespace zeps
