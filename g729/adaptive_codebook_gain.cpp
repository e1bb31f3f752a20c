// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.729 3.7.3 and Annex A A.3.7.3, adaptive-codebook gain: the
// adaptive vector filtered by the weighted synthesis filter's impulse
// response (Convolve, h in Q12) and the gain <x,y>/<y,y> of G_pitch, in Q14,
// bounded to 0..1.2. The base and Annex A routines compute the same values.
#include "common/args.h"
#include "common/exports.h"
#include "g729/pitch_kernels.h"

ZEPS_BEGIN_VARIANT
namespace {

using namespace g729p;

ZepStatus gain(const Zep16s* xn, const Zep16s* h, const Zep16s* v, Zep16s* y, Zep16s* g) {
    if (any_null(xn, h, v, y, g)) return zepStsNullPtrErr;
    Word16 y1[kSubfr];
    convolve_q12(v, h, y1);
    const Word16 gp = g_pitch(xn, y1);
    for (int i = 0; i < kSubfr; ++i) y[i] = y1[i];
    *g = gp;
    return zepStsNoErr;
}

}  // namespace

ZepStatus zepsAdaptiveCodebookGain_G729_16s(const Zep16s* pSrcAdptTarget, const Zep16s* pSrcImpulseResponse,
                                            const Zep16s* pSrcAdptVector, Zep16s* pDstFltAdptVector,
                                            Zep16s* pResultAdptGain) {
    return gain(pSrcAdptTarget, pSrcImpulseResponse, pSrcAdptVector, pDstFltAdptVector, pResultAdptGain);
}

ZepStatus zepsAdaptiveCodebookGain_G729A_16s(const Zep16s* pSrcAdptTarget, const Zep16s* pSrcImpulseResponse,
                                             const Zep16s* pSrcAdptVector, Zep16s* pDstFltAdptVector,
                                             Zep16s* pResultAdptGain) {
    return gain(pSrcAdptTarget, pSrcImpulseResponse, pSrcAdptVector, pDstFltAdptVector, pResultAdptGain);
}

ZEPS_END_VARIANT
