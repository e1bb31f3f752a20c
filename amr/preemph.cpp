// SPDX-License-Identifier: BSD-3-Clause
// Pre-emphasis of GSM-AMR VAD option 2 (3GPP TS 26.073 vad2.c):
// y[n] = x[n] + gamma * x[n-1], gamma in Q15 (-26214 = -0.8), x and y in the
// same Q format, the product truncated by mult and the sum saturated.
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsPreemphasize_GSMAMR_16s(const Zep16s* pSrc, Zep16s* pDst, Zep32s len, Zep16s gamma, Zep16s* pMem) {
    if (any_null(pSrc, pDst, pMem)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;

    // Backwards, so that pSrc and pDst may be the same array.
    const Word16 last = pSrc[len - 1];
    for (int i = len - 1; i > 0; --i) pDst[i] = add(pSrc[i], mult(gamma, pSrc[i - 1]));
    pDst[0] = add(pSrc[0], mult(gamma, *pMem));
    *pMem = last;
    return zepStsNoErr;
}

ZEPS_END_VARIANT
