/* SPDX-License-Identifier: BSD-3-Clause */
// Constant tables of the G.729 Annex D (6.4 kbit/s) stages: the 6-bit gain
// codebooks, the 11-bit fixed codebook's tracks and Gray code, and the
// phase-dispersion filters, under the reference's names (tabld8kd.c).
#pragma once

#include <cstdint>

namespace zeps {

/// Gain codebook, first stage (Annex D): {pitch gain Q14, code-gain correction Q14}.
extern const std::int16_t gbk1_6k[8][2];
/// Gain codebook, second stage (Annex D): {pitch gain Q14, code-gain correction Q14}.
extern const std::int16_t gbk2_6k[8][2];
/// Pre-selection coefficients (coef_6k Q9/Q13/Q16/Q18, L_coef_6k Q25/Q29/Q32/Q34).
extern const std::int16_t coef_6k[2][2];
extern const std::int32_t L_coef_6k[2][2];
/// Pre-selection thresholds: thr1_6k Q13, thr2_6k Q15.
extern const std::int16_t thr1_6k[2];
extern const std::int16_t thr2_6k[2];
/// Index maps between the transmitted gain indices and the codebook rows.
extern const std::int16_t map1_6k[8];
extern const std::int16_t imap1_6k[8];
extern const std::int16_t map2_6k[8];
extern const std::int16_t imap2_6k[8];
/// Pulse positions of the two tracks of the 11-bit codebook (16 and 32).
extern const std::int16_t trackTable0[16];
extern const std::int16_t trackTable1[32];
/// Gray code of the position indices and its inverse.
extern const std::int16_t grayEncode[32];
extern const std::int16_t grayDecode[32];
/// Phase-dispersion impulse responses (low and medium dispersion), Q15.
extern const std::int16_t ph_imp_low[40];
extern const std::int16_t ph_imp_mid[40];

}  // namespace zeps
