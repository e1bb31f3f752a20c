// SPDX-License-Identifier: BSD-3-Clause
// Weighted sum of two vectors, pDst = pSrc1 * val1 + pSrc2 * val2, as the
// G.729 family uses it to blend parameter vectors (e.g. the LSP and gain
// interpolations of ITU-T G.729 3.2.5 and Annex D/E), in 16-bit fixed point
// with a scale factor and in float.
//
// Fixed point: each 16 x 16 -> 32-bit product (plain, not doubled) is
// shifted right by the scale factor on its own, with rounding (_Sfs: adds
// 2^(sf-1) first) or truncation (_NR_), the two terms are added and the sum
// saturated to 16 bits.
#include <cstdint>

#include "common/args.h"
#include "common/exports.h"
#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT
namespace {

inline constexpr int kMaxScale = 31;

inline std::int64_t scaled_product(Zep16s a, Zep16s b, int sf, bool rounding) {
    const std::int64_t p = std::int64_t{a} * b;
    const std::int64_t r = (rounding && sf > 0) ? (std::int64_t{1} << (sf - 1)) : 0;
    return (p + r) >> sf;  // arithmetic shift of a 64-bit value: floor division
}

ZepStatus weighted_sum(const Zep16s* s1, Zep16s v1, const Zep16s* s2, Zep16s v2, Zep16s* d, int len, int sf,
                       bool rounding) {
    if (any_null(s1, s2, d)) return zepStsNullPtrErr;
    if (sf < 0 || sf > kMaxScale) return zepStsScaleRangeErr;
    if (len < 1) return zepStsSizeErr;
    for (int i = 0; i < len; ++i) {
        const std::int64_t t = scaled_product(s1[i], v1, sf, rounding) + scaled_product(s2[i], v2, sf, rounding);
        d[i] = static_cast<Zep16s>(t > MAX_16 ? MAX_16 : (t < MIN_16 ? MIN_16 : t));
    }
    return zepStsNoErr;
}

}  // namespace

ZepStatus zepsInterpolateC_G729_16s_Sfs(const Zep16s* pSrc1, Zep16s val1, const Zep16s* pSrc2, Zep16s val2,
                                        Zep16s* pDst, int len, int scaleFactor) {
    return weighted_sum(pSrc1, val1, pSrc2, val2, pDst, len, scaleFactor, true);
}

ZepStatus zepsInterpolateC_NR_G729_16s_Sfs(const Zep16s* pSrc1, Zep16s val1, const Zep16s* pSrc2, Zep16s val2,
                                           Zep16s* pDst, int len, int scaleFactor) {
    return weighted_sum(pSrc1, val1, pSrc2, val2, pDst, len, scaleFactor, false);
}

ZepStatus zepsInterpolateC_G729_32f(const Zep32f* pSrc1, Zep32f val1, const Zep32f* pSrc2, Zep32f val2, Zep32f* pDst,
                                    int len) {
    if (any_null(pSrc1, pSrc2, pDst)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    for (int i = 0; i < len; ++i) pDst[i] = pSrc1[i] * val1 + pSrc2[i] * val2;
    return zepStsNoErr;
}

ZEPS_END_VARIANT
