// SPDX-License-Identifier: BSD-3-Clause
// G.729 memory of the weighting filter for the next subframe's target
// (ITU-T G.729 3.10, the end of Coder_ld8k): the last 10 samples of the
// weighted error x - gp y1 - gc y2, with gp y1 = extract_h(L_shl(L_mult(y1,
// gp), 1)) (y1 Q0, gp Q14) and gc y2 = extract_h(L_shl(L_mult(y2, gc), 2))
// (y2 Q12, gc Q1).
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsWeightedErrorMemory_G729_16s(Zep16s gainPitch, Zep16s gainCode, const Zep16s* pSrcAdptTarget,
                                           const Zep16s* pSrcFltAdptVector, const Zep16s* pSrcFltFixedVector,
                                           Zep16s* pDstMem) {
    if (any_null(pSrcAdptTarget, pSrcFltAdptVector, pSrcFltFixedVector, pDstMem)) return zepStsNullPtrErr;
    for (int i = 30, j = 0; i < 40; ++i, ++j) {
        const Word16 t = extract_h(L_shl(L_mult(pSrcFltAdptVector[i], gainPitch), 1));
        const Word16 k = extract_h(L_shl(L_mult(pSrcFltFixedVector[i], gainCode), 2));
        pDstMem[j] = sub(pSrcAdptTarget[i], add(t, k));
    }
    return zepStsNoErr;
}

ZEPS_END_VARIANT
