/* SPDX-License-Identifier: BSD-3-Clause */
// Constant tables of the GSM-AMR LSP quantisers (3GPP TS 26.073 q_plsf_3.tab,
// q_plsf_5.tab) and of the LSP/LSF conversion (lsp_lsf.tab), shared by both
// processor builds. Names are the standard's; the split-VQ codebooks are
// stored row by row.
#pragma once

#include <cstdint>

#include "common/common_tables.h"

namespace zeps::amr_dtx_tab {

inline constexpr int kDico1Size = 256;     ///< DICO1_SIZE (q_plsf_3)
inline constexpr int kDico2Size = 512;     ///< DICO2_SIZE
inline constexpr int kDico3Size = 512;     ///< DICO3_SIZE
inline constexpr int kMr515_3Size = 128;   ///< MR515_3_SIZE
inline constexpr int kMr795_1Size = 512;   ///< MR795_1_SIZE
inline constexpr int kPastRqInitSize = 8;  ///< PAST_RQ_INIT_SIZE
inline constexpr int kDico1_5Size = 128;   ///< DICO1_5_SIZE (q_plsf_5)
inline constexpr int kDico2_5Size = 256;   ///< DICO2_5_SIZE
inline constexpr int kDico3_5Size = 256;   ///< DICO3_5_SIZE
inline constexpr int kDico4_5Size = 256;   ///< DICO4_5_SIZE
inline constexpr int kDico5_5Size = 64;    ///< DICO5_5_SIZE

extern const std::int16_t mean_lsf_3[10];  ///< mean LSF of the 3-split quantiser (normalised frequency, 16384 = 4 kHz)
extern const std::int16_t pred_fac_3[10];  ///< MA prediction factors, Q15
extern const std::int16_t past_rq_init[80];  ///< predictor start vectors for SID frames (8 x 10)
extern const std::int16_t dico1_lsf_3[768];  ///< first split, 256 x 3
extern const std::int16_t dico2_lsf_3[1536];  ///< second split, 512 x 3
extern const std::int16_t dico3_lsf_3[2048];  ///< third split, 512 x 4
extern const std::int16_t mr515_3_lsf[512];  ///< third split of MR475/MR515, 128 x 4
extern const std::int16_t mr795_1_lsf[1536];  ///< first split of MR795, 512 x 3
extern const std::int16_t mean_lsf_5[10];  ///< mean LSF of the split-matrix quantiser
extern const std::int16_t dico1_lsf_5[512];  ///< split 1, 128 x 4
extern const std::int16_t dico2_lsf_5[1024];  ///< split 2, 256 x 4
extern const std::int16_t dico3_lsf_5[1024];  ///< split 3 (signed), 256 x 4
extern const std::int16_t dico4_lsf_5[1024];  ///< split 4, 256 x 4
extern const std::int16_t dico5_lsf_5[256];  ///< split 5, 64 x 4
using zeps::table;  // cosine table of Lsf_lsp / Lsp_lsf, Q15 (common_tables.h)
using zeps::slope;  // its slopes for Lsp_lsf, Q12
}  // namespace zeps::amr_dtx_tab
