// SPDX-License-Identifier: BSD-3-Clause
// G.729 memory of the weighting filter for the next subframe's target
// (ITU-T G.729 3.10, the end of Coder_ld8k): the last 10 samples of the
// weighted error x - gp y1 - gc y2, with gp y1 = extract_h(L_shl(L_mult(y1,
// gp), 1)) (y1 Q0, gp Q14) and gc y2 = extract_h(L_shl(L_mult(y2, gc), 2))
// (y2 Q12, gc Q1).
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "g729/pitch_kernels.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsWeightedErrorMemory_G729_16s(Zep16s gainPitch, Zep16s gainCode, const Zep16s* pSrcAdptTarget,
                                           const Zep16s* pSrcFltAdptVector, const Zep16s* pSrcFltFixedVector,
                                           Zep16s* pDstMem) {
    if (any_null(pSrcAdptTarget, pSrcFltAdptVector, pSrcFltFixedVector, pDstMem)) return zepStsNullPtrErr;
    g729p::error_memory(gainPitch, gainCode, pSrcAdptTarget, pSrcFltAdptVector, pSrcFltFixedVector, pDstMem);
    return zepStsNoErr;
}

ZEPS_END_VARIANT
