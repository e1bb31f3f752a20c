/* SPDX-License-Identifier: BSD-3-Clause */
// LSP <-> LSF conversion, LSF reordering and LSF weighting of the GSM-AMR
// LSP quantisers (3GPP TS 26.073 lsp_lsf.c Lsp_lsf/Lsf_lsp, reorder.c
// Reorder_lsf, q_plsf.c Lsf_wt).
//
// Formats: LSPs are cosines in Q15; LSFs are normalised frequencies in Q15 of
// half the sampling rate, i.e. 0..16384 for 0..4 kHz; weights are Q13.
#pragma once

#include "amr/amr_dtx_tables.h"
#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT
namespace amr_dtx {

inline constexpr int kM = 10;                ///< LP order M
inline constexpr Word16 kLsfGap = 205;       ///< LSF_GAP, 50 Hz
inline constexpr Word16 kLspPredFacMR122 = 21299;  ///< LSP_PRED_FAC_MR122, 0.65 in Q15

/// Lsp_lsf: LSP (Q15 cosine) to normalised LSF, by the slope table, from the
/// last coefficient down so the table search only moves forward.
inline void lsp_to_lsf(const Word16* lsp, Word16* lsf) {
    using zeps::amr_dtx_tab::slope;
    using zeps::amr_dtx_tab::table;
    Word16 ind = 63;  // end of the table - 1
    for (int i = kM - 1; i >= 0; i--) {
        while (sub(table[ind], lsp[i]) < 0) ind--;  // table[0] = 32767 stops it
        const Word32 L_tmp = L_mult(sub(lsp[i], table[ind]), slope[ind]);
        lsf[i] = add(round_fx(L_shl(L_tmp, 3)), shl(ind, 8));
    }
}

/// Lsf_lsp: normalised LSF to LSP by linear interpolation of the cosine
/// table, ind = lsf >> 8, offset = lsf & 255. The reference reads
/// table[ind + 1] and so stays inside the table only for 0 <= lsf < 16384;
/// at lsf = 16384 its offset is 0 and its result table[64] = -32768. Here an
/// LSF of 16384 or more gives table[64] (interpolating from table[63] with a
/// full step of 256) and a negative LSF gives table[0], so a stray LSF (from
/// a corrupt predictor state or an LSP of exactly -1.0) never leaves the table.
inline void lsf_to_lsp(const Word16* lsf, Word16* lsp) {
    using zeps::amr_dtx_tab::table;
    for (int i = 0; i < kM; i++) {
        Word16 ind = shr(lsf[i], 8);
        Word16 offset = static_cast<Word16>(lsf[i] & 0x00ff);
        if (ind < 0) {
            ind = 0;
            offset = 0;
        } else if (ind > 63) {
            ind = 63;
            offset = 256;
        }
        const Word32 L_tmp = L_mult(sub(table[ind + 1], table[ind]), offset);
        lsp[i] = add(table[ind], extract_l(L_shr(L_tmp, 9)));
    }
}

/// Reorder_lsf: enforces a minimum distance between consecutive LSFs.
inline void reorder_lsf(Word16* lsf, Word16 min_dist) {
    Word16 lsf_min = min_dist;
    for (int i = 0; i < kM; i++) {
        if (sub(lsf[i], lsf_min) < 0) lsf[i] = lsf_min;
        lsf_min = add(lsf[i], min_dist);
    }
}

/// Lsf_wt: weighting factors (Q13) from the distances to the neighbours.
inline void lsf_weights(const Word16* lsf, Word16* wf) {
    wf[0] = lsf[1];
    for (int i = 1; i < 9; i++) wf[i] = sub(lsf[i + 1], lsf[i - 1]);
    wf[9] = sub(16384, lsf[8]);
    for (int i = 0; i < kM; i++) {
        const Word16 temp = sub(wf[i], 1843);  // 1843 = 450 Hz
        if (temp < 0)
            wf[i] = sub(3427, mult(wf[i], 28160));
        else
            wf[i] = sub(1843, mult(temp, 6242));
        wf[i] = shl(wf[i], 3);
    }
}

}  // namespace amr_dtx
ZEPS_END_VARIANT
