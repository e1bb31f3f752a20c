// SPDX-License-Identifier: BSD-3-Clause
// Weighted sum of two 16-bit vectors with one constant and one scale factor
// each, truncating (the NR convention): each 16 x 16 -> 32-bit product is
// shifted right arithmetically by its own scale factor, the two terms are
// added and the sum is saturated to 16 bits.
#include <cstdint>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsInterpolateC_NR_16s(const Zep16s* pSrc1, Zep16s val1, int val1ScaleFactor, const Zep16s* pSrc2,
                                  Zep16s val2, int val2ScaleFactor, Zep16s* pDst, int len) {
    if (any_null(pSrc1, pSrc2, pDst)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    if (val1ScaleFactor < 0 || val2ScaleFactor < 0) return zepStsScaleRangeErr;
    const int s1 = val1ScaleFactor > 31 ? 31 : val1ScaleFactor;
    const int s2 = val2ScaleFactor > 31 ? 31 : val2ScaleFactor;
    for (int i = 0; i < len; ++i) {
        const std::int64_t t = std::int64_t{(std::int32_t{pSrc1[i]} * val1) >> s1} +
                               ((std::int32_t{pSrc2[i]} * val2) >> s2);
        pDst[i] = static_cast<Word16>(t > MAX_16 ? MAX_16 : (t < MIN_16 ? MIN_16 : t));
    }
    return zepStsNoErr;
}

ZEPS_END_VARIANT
