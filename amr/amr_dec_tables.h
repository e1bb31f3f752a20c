/* SPDX-License-Identifier: BSD-3-Clause */
// Constant tables of the GSM-AMR decoder (3GPP TS 26.073), shared by both
// processor builds, under the standard's names.
#pragma once

#include <cstdint>

#include "common/common_tables.h"

namespace zeps::amr_dec_tab {

/// pitch gain quantiser, Q14 (gains.tab)
extern const std::int16_t qua_gain_pitch[16];
/// code gain factors (Q11) with their log2 (Q10) and 20 log10 (Q10) energies, 32 x 3 (gains.tab)
extern const std::int16_t qua_gain_code[96];
/// joint pitch/code gains of MR67, MR74, MR102: gain_pit Q14, g_code Q12, qua_ener_MR122 Q10, qua_ener Q10; 128 x 4 (qua_gain.tab)
extern const std::int16_t table_gain_highrates[512];
/// joint pitch/code gains of MR515, MR59, same layout, 64 x 4 (qua_gain.tab)
extern const std::int16_t table_gain_lowrates[256];
/// MR475 joint gains of two subframes: gain_pit Q14, g_code Q12 of the even, then the odd subframe; 256 x 4 (qgain475.tab)
extern const std::int16_t table_gain_MR475[1024];
/// 1/6-resolution interpolation filter of Pred_lt_3or6, Q15 (pred_lt.c)
extern const std::int16_t inter_6[61];
/// phase dispersion impulse responses, Q15 (ph_disp.tab)
extern const std::int16_t ph_imp_low_MR795[40];
extern const std::int16_t ph_imp_mid_MR795[40];
extern const std::int16_t ph_imp_low[40];
extern const std::int16_t ph_imp_mid[40];
/// square-root table of sqrt_l_exp, Q15 (sqrt_l.tab)
extern const std::int16_t sqrt_l_table[49];
/// the 200+40 LP analysis window, read as pseudo-random parameters by build_CN_param (window.tab):
/// the same values as G.729's hamwindow, one table for both
inline constexpr const auto& window_200_40 = zeps::hamwindow;
/// first track positions of the 2i40_9bits codebook (c2_9pf.tab)
extern const std::int16_t startPos[16];
/// Gray decoding (gray.tab)
extern const std::int16_t dgray[8];
/// LSPs at reset, Q15 (lsp.tab)
extern const std::int16_t lsp_init_data[10];
/// scale of the comfort-noise LSF variability, Q15 (dtx_dec.c)
extern const std::int16_t lsf_hist_mean_scale[10];
/// comfort-noise level adjustment per mode, Q11 (dtx_dec.c)
extern const std::int16_t dtx_log_en_adjust[9];
/// post-filter weighting factors 0.7^i (MR122, MR102 use 0.7/0.75, the others 0.55/0.7), Q15 (pstfilt.c)
extern const std::int16_t gamma3_MR122[10];
extern const std::int16_t gamma3[10];
extern const std::int16_t gamma4_MR122[10];
extern const std::int16_t gamma4[10];
/// decoder homing frames: the parameters of each mode's homing frame (d_homing.tab)
extern const std::int16_t dhf_MR475[17];
extern const std::int16_t dhf_MR515[19];
extern const std::int16_t dhf_MR59[19];
extern const std::int16_t dhf_MR67[19];
extern const std::int16_t dhf_MR74[19];
extern const std::int16_t dhf_MR795[23];
extern const std::int16_t dhf_MR102[39];
extern const std::int16_t dhf_MR122[57];
/// parameter widths in bits per mode, MRDTX last (bitno.tab)
extern const std::int16_t bitno_MR475[17];
extern const std::int16_t bitno_MR515[19];
extern const std::int16_t bitno_MR59[19];
extern const std::int16_t bitno_MR67[19];
extern const std::int16_t bitno_MR74[19];
extern const std::int16_t bitno_MR795[23];
extern const std::int16_t bitno_MR102[39];
extern const std::int16_t bitno_MR122[57];
extern const std::int16_t bitno_MRDTX[5];

}  // namespace zeps::amr_dec_tab
