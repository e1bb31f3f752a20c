// SPDX-License-Identifier: BSD-3-Clause
// Weighted sum of two 16-bit vectors with one constant and one scale factor
// each, truncating (the NR convention): each 16 x 16 -> 32-bit product is
// shifted right arithmetically by its own scale factor, the two terms are
// added and the sum is saturated to 16 bits.
//
// The SSSE3 path forms the products eight at a time (mullo/mulhi pairs) and
// adds the shifted terms in 32 bits, which is exact unless both terms can
// reach 2^30 (both constants -32768 with both shifts 0): then the 64-bit
// loop runs.
#include <cstdint>
#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

namespace {

inline Word16 interpolate_nr_one(Word16 x1, Word16 v1, int s1, Word16 x2, Word16 v2, int s2) {
    const std::int64_t t =
        std::int64_t{(std::int32_t{x1} * v1) >> s1} + ((std::int32_t{x2} * v2) >> s2);
    return static_cast<Word16>(t > MAX_16 ? MAX_16 : (t < MIN_16 ? MIN_16 : t));
}

#if defined(__SSSE3__)
/// The shifted product x v >> s of eight lanes, as two halves of four.
inline void shifted_products(__m128i x, __m128i v, __m128i s, __m128i& lo, __m128i& hi) {
    const __m128i pl = _mm_mullo_epi16(x, v), ph = _mm_mulhi_epi16(x, v);
    lo = _mm_sra_epi32(_mm_unpacklo_epi16(pl, ph), s);
    hi = _mm_sra_epi32(_mm_unpackhi_epi16(pl, ph), s);
}

/// Eight outputs at a time; returns how many were written.
inline int interpolate_nr_lanes(const Word16* x1, Word16 v1, int s1, const Word16* x2, Word16 v2, int s2, Word16* y,
                                int len) {
    if (v1 == MIN_16 && v2 == MIN_16 && s1 == 0 && s2 == 0) return 0;
    const __m128i c1 = _mm_set1_epi16(v1), c2 = _mm_set1_epi16(v2);
    const __m128i n1 = _mm_cvtsi32_si128(s1), n2 = _mm_cvtsi32_si128(s2);
    int i = 0;
    for (; i + 8 <= len; i += 8) {
        __m128i a_lo, a_hi, b_lo, b_hi;
        shifted_products(_mm_loadu_si128(reinterpret_cast<const __m128i*>(x1 + i)), c1, n1, a_lo, a_hi);
        shifted_products(_mm_loadu_si128(reinterpret_cast<const __m128i*>(x2 + i)), c2, n2, b_lo, b_hi);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(y + i),
                         _mm_packs_epi32(_mm_add_epi32(a_lo, b_lo), _mm_add_epi32(a_hi, b_hi)));
    }
    return i;
}
#endif

}  // namespace

ZepStatus zepsInterpolateC_NR_16s(const Zep16s* pSrc1, Zep16s val1, int val1ScaleFactor, const Zep16s* pSrc2,
                                  Zep16s val2, int val2ScaleFactor, Zep16s* pDst, int len) {
    if (any_null(pSrc1, pSrc2, pDst)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    if (val1ScaleFactor < 0 || val2ScaleFactor < 0) return zepStsScaleRangeErr;
    const int s1 = val1ScaleFactor > 31 ? 31 : val1ScaleFactor;
    const int s2 = val2ScaleFactor > 31 ? 31 : val2ScaleFactor;
    int i = 0;
#if defined(__SSSE3__)
    i = interpolate_nr_lanes(pSrc1, val1, s1, pSrc2, val2, s2, pDst, len);
#endif
    for (; i < len; ++i) pDst[i] = interpolate_nr_one(pSrc1[i], val1, s1, pSrc2[i], val2, s2);
    return zepStsNoErr;
}

ZEPS_END_VARIANT
