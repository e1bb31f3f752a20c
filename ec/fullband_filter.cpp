// SPDX-License-Identifier: BSD-3-Clause
// Full-band (time-domain) echo-path filter for the narrow-band line-echo
// case: y[n] = sum over k of c[k] x[n + T - 1 - k], k = 0..T-1, with x the
// far-end history of len + T - 1 samples, oldest first (c[0] weighs the
// newest sample). Float, and 16-bit samples with Q15 coefficients (64-bit
// sum, rounded in Q15, saturated to 16 bits).
#include <cstdint>

#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsFullbandFilter_EC_32f(const Zep32f* pSrc, const Zep32f* pCoef, Zep32f* pDst, int len, int taps) {
    if (any_null(pSrc, pCoef, pDst)) return zepStsNullPtrErr;
    if (len < 1 || taps < 1) return zepStsSizeErr;
    for (int n = 0; n < len; ++n) {
        const Zep32f* x = pSrc + n + taps - 1;
        float acc = 0.0f;
        for (int k = 0; k < taps; ++k) acc += pCoef[k] * x[-k];
        pDst[n] = acc;
    }
    return zepStsNoErr;
}

ZepStatus zepsFullbandFilter_EC_16s(const Zep16s* pSrc, const Zep16s* pCoef, Zep16s* pDst, int len, int taps) {
    if (any_null(pSrc, pCoef, pDst)) return zepStsNullPtrErr;
    if (len < 1 || taps < 1) return zepStsSizeErr;
    for (int n = 0; n < len; ++n) {
        const Zep16s* x = pSrc + n + taps - 1;
        std::int64_t acc = 0;
        for (int k = 0; k < taps; ++k) acc += std::int32_t{pCoef[k]} * x[-k];
        acc = (acc + 16384) >> 15;
        pDst[n] = static_cast<Zep16s>(acc > 32767 ? 32767 : acc < -32768 ? -32768 : acc);
    }
    return zepStsNoErr;
}

ZEPS_END_VARIANT
