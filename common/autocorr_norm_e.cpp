// SPDX-License-Identifier: BSD-3-Clause
// Autocorrelation normalised by its zero-lag energy, in the G.729 style:
// r[k] = 2 * sum x[n] x[n+k] (the doubling of L_mac), all lags shifted left
// by the normalisation shift of r[0]. Samples Q0/Q15, lags Q31 after the shift.
//
// Exactness of the lane sums: the energy is summed in 64 bits (pmaddwd's
// pairs of squares read as unsigned 32-bit values, the one 2^31 case
// included). Once it passes the check, every lag's sum is bounded by the
// energy (Cauchy-Schwarz), so the 32-bit lanes, which add modulo 2^32 in any
// order, end on the exact sum.
#include <cstdint>
#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

/// sum x[n]^2 over n < len, exact in 64 bits.
inline std::int64_t sum_of_squares(const Zep16s* x, int len) {
    std::int64_t e = 0;
    int n = 0;
#if defined(__SSSE3__)
    __m128i acc = _mm_setzero_si128();
    const __m128i zero = _mm_setzero_si128();
    for (; n + 8 <= len; n += 8) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(x + n));
        const __m128i sq = _mm_madd_epi16(v, v);  // each lane in [0, 2^31], read unsigned
        acc = _mm_add_epi64(acc, _mm_add_epi64(_mm_unpacklo_epi32(sq, zero), _mm_unpackhi_epi32(sq, zero)));
    }
    alignas(16) std::int64_t lanes[2];
    _mm_store_si128(reinterpret_cast<__m128i*>(lanes), acc);
    e = lanes[0] + lanes[1];
#endif
    for (; n < len; ++n) e += std::int32_t{x[n]} * x[n];
    return e;
}

/// sum x[n] y[n] over n < len, modulo 2^32 (exact when the sum fits).
inline std::uint32_t dot_mod32(const Zep16s* x, const Zep16s* y, int len) {
    std::uint32_t s = 0;
    int n = 0;
#if defined(__SSSE3__)
    __m128i acc = _mm_setzero_si128();
    for (; n + 8 <= len; n += 8)
        acc = _mm_add_epi32(acc, _mm_madd_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(x + n)),
                                                _mm_loadu_si128(reinterpret_cast<const __m128i*>(y + n))));
    acc = _mm_add_epi32(acc, _mm_shuffle_epi32(acc, 0x4e));
    acc = _mm_add_epi32(acc, _mm_shuffle_epi32(acc, 0xb1));
    s = static_cast<std::uint32_t>(_mm_cvtsi128_si32(acc));
#endif
    for (; n < len; ++n) s += static_cast<std::uint32_t>(std::int32_t{x[n]} * y[n]);
    return s;
}

}  // namespace

ZepStatus zepsAutoCorr_NormE_16s32s(const Zep16s* pSrc, int len, Zep32s* pDst, int lenDst, int* pNorm) {
    if (any_null(pSrc, pDst, pNorm)) return zepStsNullPtrErr;
    if (len < 1 || lenDst < 1) return zepStsBadArgErr;
    const std::int64_t energy = 2 * sum_of_squares(pSrc, len);
    if (energy > 0x3fffffff) return zepStsOverflow;  // caller scales down and calls again
    const Word16 norm = norm_l(static_cast<Word32>(energy));
    pDst[0] = static_cast<Word32>(energy) << norm;
    for (int k = 1; k < lenDst; ++k) {
        // |sum| <= energy / 2 by Cauchy-Schwarz, so the modular sum is exact.
        const std::uint32_t s = k < len ? dot_mod32(pSrc, pSrc + k, len - k) : 0;
        // norm + 1 <= 30 (r[0] is positive and even here, or zero with norm 0);
        // the shift is done in 64 bits so that no count is out of range.
        pDst[k] = static_cast<Word32>(static_cast<std::uint32_t>(std::uint64_t{s} << (norm + 1)));
    }
    *pNorm = norm;
    return zepStsNoErr;
}

ZEPS_END_VARIANT
