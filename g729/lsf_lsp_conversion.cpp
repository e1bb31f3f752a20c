// SPDX-License-Identifier: BSD-3-Clause
// G.729 conversions between LSFs and LSPs by table interpolation (3.2.4,
// Lsf_lsp2, Lsp_lsf2, Lsp_lsf). LSP Q15 (cosines); LSF Q13 radians, or Q15
// normalised frequency for the Lsp_lsf form.
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "g729/g729_tables.h"
#include "g729/lsf_lsp.h"

ZEPS_BEGIN_VARIANT

bool lsf_to_lsp(const Word16* lsf, Word16* lsp, int n) {
    for (int i = 0; i < n; ++i) {
        const Word16 freq = mult(lsf[i], 20861);  // 1/(2 pi) in Q17
        Word16 ind = shr(freq, 8);
        if (ind < 0) return false;
        const Word16 offset = static_cast<Word16>(freq & 0x00ff);
        if (ind > 63) ind = 63;
        const Word32 t = L_mult(slope_cos[ind], offset);
        lsp[i] = add(table2[ind], extract_l(L_shr(t, 13)));
    }
    return true;
}

namespace {

/// The last index k of table2 with table2[k] >= v (table2 falls strictly
/// from table2[0] = 32767, so the indices that qualify are 0..k), by a
/// branch-free binary search.
inline int last_cosine_at_least(Word16 v) {
    int k = 0;
    for (int step = 32; step > 0; step >>= 1) k += table2[k + step] >= v ? step : 0;
    return k;
}

}  // namespace

void lsp_to_lsf(const Word16* lsp, Word16* lsf, int n) {
    // Lsp_lsf2 scans table2 downwards from the previous index while
    // table2[ind] < lsp[i] (stopping at 0); on the falling table that ends
    // at the smaller of the previous index and last_cosine_at_least(lsp[i]).
    Word16 ind = 63;
    for (int i = n - 1; i >= 0; --i) {
        const int k = last_cosine_at_least(lsp[i]);
        if (k < ind) ind = static_cast<Word16>(k);
        const Word16 offset = sub(lsp[i], table2[ind]);
        const Word32 t = L_mult(slope_acos[ind], offset);
        const Word16 freq = add(shl(ind, 9), extract_l(L_shr(t, 12)));
        lsf[i] = mult(freq, 25736);  // 2 pi in Q12
    }
}

ZepStatus zepsLSFToLSP_G729_16s(const Zep16s* pLSF, Zep16s* pLSP) {
    if (any_null(pLSF, pLSP)) return zepStsNullPtrErr;
    return lsf_to_lsp(pLSF, pLSP, 10) ? zepStsNoErr : zepStsNegativeLSFErr;
}

ZepStatus zepsLSPToLSF_G729_16s(const Zep16s* pLSP, Zep16s* pLSF) {
    if (any_null(pLSP, pLSF)) return zepStsNullPtrErr;
    lsp_to_lsf(pLSP, pLSF, 10);
    return zepStsNoErr;
}

ZepStatus zepsLSPToLSF_Norm_G729_16s(const Zep16s* pLSP, Zep16s* pLSF) {
    if (any_null(pLSP, pLSF)) return zepStsNullPtrErr;
    Word16 ind = 63;
    for (int i = 9; i >= 0; --i) {
        while (ind > 0 && sub(table[ind], pLSP[i]) < 0) ind = sub(ind, 1);
        const Word32 t = L_mult(sub(pLSP[i], table[ind]), slope[ind]);
        pLSF[i] = add(round_fx(L_shl(t, 3)), shl(ind, 8));
    }
    return zepStsNoErr;
}

ZEPS_END_VARIANT
