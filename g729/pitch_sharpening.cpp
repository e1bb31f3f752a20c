// SPDX-License-Identifier: BSD-3-Clause
// G.729 pitch sharpening of the fixed-codebook vector (ITU-T G.729 3.8,
// 4.1.4): c[i] += beta * c[i - T0] for i = T0..39, beta the previous
// subframe's quantised pitch gain bounded to 0.2..0.8 (Q14, doubled to Q15
// as the reference does with shl). The same filter applies to the impulse
// response before the encoder's codebook search.
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsPitchSharpening_G729_16s_I(Zep16s lag, Zep16s sharp, Zep16s* pSrcDst) {
    if (any_null(pSrcDst)) return zepStsNullPtrErr;
    if (lag < 1) return zepStsRangeErr;
    const Word16 beta = shl(sharp, 1);
    for (int i = lag; i < 40; ++i) pSrcDst[i] = add(pSrcDst[i], mult(pSrcDst[i - lag], beta));
    return zepStsNoErr;
}

ZEPS_END_VARIANT
