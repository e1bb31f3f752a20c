/* SPDX-License-Identifier: BSD-3-Clause */
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
/// Cosine table of the LSP/LSF conversions (Lsf_lsp, Lsp_lsf), Q15; the same
/// values in ITU-T G.729 and 3GPP TS 26.073.
extern const std::int16_t table[65];
/// Slopes of that table for Lsp_lsf, Q12.
extern const std::int16_t slope[64];
/// The asymmetric 240-sample LP analysis window, Q15: hamwindow of ITU-T
/// G.729 3.2.1, the same values as window_200_40 of 3GPP TS 26.073.
extern const std::int16_t hamwindow[240];

}  // namespace zeps
