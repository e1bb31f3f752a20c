// SPDX-License-Identifier: BSD-3-Clause
// G.729 total excitation of a subframe (ITU-T G.729 4.1.6, the loop of
// Decod_ld8k and Coder_ld8k): u = round(2 (gp v + gc c)) with the adaptive
// vector v (Q0, in place), the fixed vector c (Q13), gp in Q14, gc in Q1.
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsMixExcitation_G729_16s_I(Zep16s gainPitch, Zep16s gainCode, const Zep16s* pCode, Zep16s* pSrcDstExc,
                                       int len) {
    if (any_null(pCode, pSrcDstExc)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    for (int i = 0; i < len; ++i) {
        Word32 t = L_mult(pSrcDstExc[i], gainPitch);
        t = L_mac(t, pCode[i], gainCode);
        pSrcDstExc[i] = round_fx(L_shl(t, 1));
    }
    return zepStsNoErr;
}

ZEPS_END_VARIANT
