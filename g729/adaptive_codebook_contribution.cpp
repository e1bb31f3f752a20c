// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.729 3.8 (Coder_ld8k / Coder_ld8a): the target of the fixed-
// codebook search, the pitch target minus the filtered adaptive vector
// scaled by the pitch gain: xn2 = xn - extract_h(L_shl(L_mult(y1, g), 1)).
// Q formats: gain Q14, vectors Q0. The float member computes the same in
// single precision.
#include "common/args.h"
#include "common/exports.h"
#include "g729/pitch_kernels.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsAdaptiveCodebookContribution_G729_16s(Zep16s gain, const Zep16s* pFltAdptVector,
                                                    const Zep16s* pSrcAdptTarget, Zep16s* pDstAdptTarget) {
    if (any_null(pFltAdptVector, pSrcAdptTarget, pDstAdptTarget)) return zepStsNullPtrErr;
    g729p::adaptive_contribution(gain, pFltAdptVector, pSrcAdptTarget, pDstAdptTarget);
    return zepStsNoErr;
}

ZepStatus zepsAdaptiveCodebookContribution_G729_32f(Zep32f gain, const Zep32f* pFltAdptVector,
                                                    const Zep32f* pSrcAdptTarget, Zep32f* pDstAdptTarget) {
    if (any_null(pFltAdptVector, pSrcAdptTarget, pDstAdptTarget)) return zepStsNullPtrErr;
    for (int i = 0; i < g729p::kSubfr; ++i) pDstAdptTarget[i] = pSrcAdptTarget[i] - pFltAdptVector[i] * gain;
    return zepStsNoErr;
}

ZEPS_END_VARIANT
