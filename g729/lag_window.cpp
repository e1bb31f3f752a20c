// SPDX-License-Identifier: BSD-3-Clause
// G.729 lag window (3.2.1, Lag_window; Annex B extends it to order 12): the
// autocorrelation r[1..len] and the window are both in double precision
// (hi << 16 + lo << 1), multiplied with Mpy_32.
#include <cstdint>
#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "g729/g729_tables.h"

ZEPS_BEGIN_VARIANT

namespace {

/// One lag: Mpy_32 without its (unreachable) saturation, the window being
/// below 1; the doubling modulo 2^32 as L_mult's.
inline Word32 windowed(Word32 x, int i) {
    const DPF r = L_Extract(x);
    const std::int32_t p = Word32{r.hi} * lag_h[i] + ((Word32{r.hi} * lag_l[i]) >> 15) +
                           ((Word32{r.lo} * lag_h[i]) >> 15);
    return static_cast<Word32>(static_cast<std::uint32_t>(p) * 2u);
}

#if defined(__SSSE3__)
/// Four lags from i on. hi = x >> 16 and lo = (x >> 1) & 0x7fff sit in
/// 32-bit lanes whose upper halves pmaddwd multiplies by the window's zero
/// upper halves (its parts are positive), so each product is the 16 x 16 one.
inline __m128i windowed4(__m128i x, int i) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i wh = _mm_unpacklo_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(lag_h + i)), zero);
    const __m128i wl = _mm_unpacklo_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(lag_l + i)), zero);
    const __m128i hi = _mm_srai_epi32(x, 16);
    const __m128i lo = _mm_and_si128(_mm_srli_epi32(x, 1), _mm_set1_epi32(0x7fff));
    const __m128i p = _mm_add_epi32(_mm_madd_epi16(hi, wh), _mm_add_epi32(_mm_srai_epi32(_mm_madd_epi16(hi, wl), 15),
                                                                         _mm_srai_epi32(_mm_madd_epi16(lo, wh), 15)));
    return _mm_slli_epi32(p, 1);
}
#endif

}  // namespace

ZepStatus zepsLagWindow_G729_32s_I(Zep32s* pSrcDst, int len) {
    if (any_null(pSrcDst)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    if (len > 12) return zepStsRangeErr;
    int i = 0;
#if defined(__SSSE3__)
    for (; i + 4 <= len; i += 4) {
        auto* at = reinterpret_cast<__m128i*>(pSrcDst + i);
        _mm_storeu_si128(at, windowed4(_mm_loadu_si128(at), i));
    }
#endif
    for (; i < len; ++i) pSrcDst[i] = windowed(pSrcDst[i], i);
    return zepStsNoErr;
}

ZEPS_END_VARIANT
