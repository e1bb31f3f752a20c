// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex A perceptual weighting denominator (ITU-T G.729 Annex A
// A.3.3, Coder_ld8a): Ap1(z) = A(z/0.75) (1 - 0.7 z^-1) truncated to order
// 10, Ap1[i] = sub(Ap[i], mult(Ap[i-1], 22938)), Ap1[0] = 4096; the
// weighted speech is the LPC residual filtered by 1/Ap1(z). Q12.
#include <cstring>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsWeightingDenominator_G729A_16s(const Zep16s* pSrcWeightedLPC, Zep16s* pDstLPC) {
    if (any_null(pSrcWeightedLPC, pDstLPC)) return zepStsNullPtrErr;
    Word16 ap1[11];
    ap1[0] = 4096;
    for (int i = 1; i <= 10; ++i) ap1[i] = sub(pSrcWeightedLPC[i], mult(pSrcWeightedLPC[i - 1], 22938));
    std::memcpy(pDstLPC, ap1, sizeof ap1);
    return zepStsNoErr;
}

ZEPS_END_VARIANT
