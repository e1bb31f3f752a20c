// SPDX-License-Identifier: BSD-3-Clause
// zepsLSFDecode_GSMAMR_16s: LSF decoding with bad-frame concealment
// (3GPP TS 26.073 d_plsf_3.c D_plsf_3, d_plsf_5.c D_plsf_5); LSPs Q15 out.
#include "amr/amr_rate.h"
#include "amr/dec_lpc.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

/// Codebook sizes of the indices by rate code; count 0 for a rate not accepted.
struct IndexLimits {
    int count;
    int size[5];
};
IndexLimits index_limits(Zep32s rate) {
    switch (rate) {
        case 0: case 1: return {3, {256, 256, 128}};
        case 8: return {3, {512, 512, 512}};
        case 3: case 6: case 7: case 11: case 25: return {3, {256, 512, 512}};
        case 12: return {5, {128, 256, 512, 256, 64}};
        default: return {0, {}};
    }
}

}  // namespace

ZepStatus zepsLSFDecode_GSMAMR_16s(Zep16s* pPastRq, Zep16s* pPastLSFQ, const Zep16s* pSrcIndex, Zep16s* pDstLSP,
                                   Zep32s rate, Zep32s bfi) {
    if (any_null(pPastRq, pPastLSFQ, pSrcIndex, pDstLSP)) return zepStsNullPtrErr;
    const IndexLimits lim = index_limits(rate);
    if (lim.count == 0) return zepStsRangeErr;
    if (bfi == 0)
        for (int i = 0; i < lim.count; i++)
            if (pSrcIndex[i] < 0 || pSrcIndex[i] >= lim.size[i]) return zepStsOutOfRangeErr;
    amr_dec::LsfState st;
    for (int i = 0; i < amr_dec::kM; i++) {
        st.past_r_q[i] = pPastRq[i];
        st.past_lsf_q[i] = pPastLSFQ[i];
    }
    const Word16 bad = bfi != 0 ? 1 : 0;
    if (rate == 12) {
        Word16 mid[amr_dec::kM], fin[amr_dec::kM];
        amr_dec::d_plsf_5(st, bad, pSrcIndex, mid, fin);
        for (int i = 0; i < amr_dec::kM; i++) {
            pDstLSP[i] = mid[i];
            pDstLSP[amr_dec::kM + i] = fin[i];
        }
    } else {
        const Word16 mode = rate == 25 ? Word16{amr_dec::MRDTX} : static_cast<Word16>(amr_rate::mode_of_rate(rate));
        amr_dec::d_plsf_3(st, mode, bad, pSrcIndex, pDstLSP);
    }
    for (int i = 0; i < amr_dec::kM; i++) {
        pPastRq[i] = st.past_r_q[i];
        pPastLSFQ[i] = st.past_lsf_q[i];
    }
    return zepStsNoErr;
}

ZEPS_END_VARIANT
