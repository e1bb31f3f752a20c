/* SPDX-License-Identifier: BSD-3-Clause */
// Constant tables of the ITU-T G.729 LP analysis and LSP quantisation
// (names as in the standard's tab_ld8k.c / tab_ld8a.c), compiled once.
#pragma once

#include <cstdint>

#include "common/common_tables.h"

namespace zeps {

extern const std::int16_t lag_h[12];           ///< lag window, high parts (Annex B length)
extern const std::int16_t lag_l[12];           ///< lag window, low parts
extern const std::int16_t grid[61];            ///< root-search cosine grid, base codec, Q15
extern const std::int16_t grid_a[51];          ///< root-search cosine grid, Annex A, Q15
extern const std::int16_t table2[64];          ///< Lsf_lsp2/Lsp_lsf2 cosine table, Q15
extern const std::int16_t slope_cos[64];       ///< Lsf_lsp2 slopes, Q12
extern const std::int16_t slope_acos[64];      ///< Lsp_lsf2 slopes, Q12
extern const std::int16_t lspcb1[128][10];     ///< first-stage LSF codebook, Q13
extern const std::int16_t lspcb2[32][10];      ///< second-stage LSF codebook, Q13
extern const std::int16_t lspcb1_pairs[5][256];  ///< lspcb1 columns paired (lspcb1_pairs[p][2k+c] = lspcb1[k][2p+c])
extern const std::int16_t lspcb2_cols[10][32]; ///< lspcb2 transposed (lspcb2_cols[j][k] = lspcb2[k][j])
extern const std::int16_t fg[2][4][10];        ///< MA predictor coefficients, Q15
extern const std::int16_t fg_sum[2][10];       ///< 1 - sum of fg per mode, Q15
extern const std::int16_t fg_sum_inv[2][10];   ///< 1 / fg_sum per mode, Q12
extern const std::int16_t freq_prev_reset[10]; ///< MA memory reset row, Q13
extern const std::int16_t hw[145];             ///< Annex E hybrid window, Q15

}  // namespace zeps

/// Floating-point tables of the G.729 Annex C reference (same names).
namespace zeps::g729f {

extern const float lspcb1[128][10];  ///< first-stage LSF codebook, radians
extern const float lspcb2[32][10];   ///< second-stage LSF codebook, radians
extern const float fg[2][4][10];     ///< MA predictor coefficients
extern const float fg_sum[2][10];    ///< 1 - sum of fg per mode
extern const float fg_sum_inv[2][10];///< 1 / fg_sum per mode
extern const float grid[61];         ///< root-search cosine grid, base codec
extern const float grid_a[51];       ///< root-search cosine grid, Annex A
extern const float hw[145];          ///< Annex E hybrid window (Annex C+)

}  // namespace zeps::g729f
