// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex B windowed autocorrelation (B.3.2, Annex B Autocorr with
// NP = 12): 240-sample window hamwindow (Q15), lags 0..12 normalised in
// double precision, exponent of r[0] returned.
#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <cstdint>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "common/fast_ops.h"
#include "g729/g729_tables.h"
#include "g729/lp_kernels.h"

ZEPS_BEGIN_VARIANT

void g729_corr240_scalar(const Word16* y, std::int64_t& energy, Word32* r) {
    std::int64_t e = 0;
    for (int j = 0; j < kWindow; ++j) e += Word32{y[j]} * y[j];
    energy = e;
    for (int k = 1; k <= kCorrLags; ++k) {
        Word32 s = 0;
        for (int j = 0; j < kWindow - k; ++j) s += Word32{y[j]} * y[j + k];
        r[k] = s;
    }
}

namespace {

#if defined(__SSSE3__)
/// The window's energy: pmaddwd pairs are below 2^31 and non-negative;
/// widened to 64 bits.
std::int64_t energy240(const Word16* y) {
    const __m128i zero = _mm_setzero_si128();
    __m128i e64 = zero;
    for (int j = 0; j < kWindow; j += 8) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(y + j));
        const __m128i p = _mm_madd_epi16(v, v);
        e64 = _mm_add_epi64(e64, _mm_unpacklo_epi32(p, zero));
        e64 = _mm_add_epi64(e64, _mm_unpackhi_epi32(p, zero));
    }
    alignas(16) std::int64_t e2[2];
    _mm_store_si128(reinterpret_cast<__m128i*>(e2), e64);
    return e2[0] + e2[1];
}

inline Word32 horizontal_sum(__m128i acc) {
    acc = _mm_add_epi32(acc, _mm_shuffle_epi32(acc, 0x4e));
    acc = _mm_add_epi32(acc, _mm_shuffle_epi32(acc, 0xb1));
    return _mm_cvtsi128_si32(acc);
}

/// Lags 1..kCorrLags, four lags a pass sharing the loads of y[j]: y is
/// followed by zeros, so every lag sums over 240 products; the partial sums
/// are bounded by the energy (Cauchy-Schwarz), no wrap.
void lags240(const Word16* y, Word32* r) {
    for (int k = 1; k < kCorrLags; k += 4) {
        __m128i acc[4] = {_mm_setzero_si128(), _mm_setzero_si128(), _mm_setzero_si128(), _mm_setzero_si128()};
        for (int j = 0; j < kWindow; j += 8) {
            const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(y + j));
            for (int l = 0; l < 4; ++l) {
                const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(y + j + k + l));
                acc[l] = _mm_add_epi32(acc[l], _mm_madd_epi16(a, b));
            }
        }
        for (int l = 0; l < 4; ++l) r[k + l] = horizontal_sum(acc[l]);
    }
}
static_assert(kCorrLags % 4 == 0, "lags240 takes the lags four at a time");
#else
std::int64_t energy240(const Word16* y) {
    std::int64_t e = 0;
    for (int j = 0; j < kWindow; ++j) e += Word32{y[j]} * y[j];
    return e;
}

void lags240(const Word16* y, Word32* r) {
    for (int k = 1; k <= kCorrLags; ++k) {
        Word32 s = 0;
        for (int j = 0; j < kWindow - k; ++j) s += Word32{y[j]} * y[j + k];
        r[k] = s;
    }
}
#endif

/// y[i] = shr(y[i], 2) over the window (an arithmetic shift, never saturating).
inline void scale_down4(Word16* y) {
#if defined(__SSSE3__)
    for (int i = 0; i < kWindow; i += 8) {
        __m128i* p = reinterpret_cast<__m128i*>(y + i);
        _mm_storeu_si128(p, _mm_srai_epi16(_mm_loadu_si128(p), 2));
    }
#else
    for (int i = 0; i < kWindow; ++i) y[i] = shr(y[i], 2);
#endif
}

}  // namespace

/// The lane form (the scalar sums on hosts without SSSE3; the same results).
void g729_corr240_ssse3(const Word16* y, std::int64_t& energy, Word32* r) {
    energy = energy240(y);
    lags240(y, r);
}

ZepStatus zepsAutoCorr_G729B(const Zep16s* pSrc, Zep16s* pNormOut, Zep32s* pDst) {
    if (any_null(pSrc, pNormOut, pDst)) return zepStsNullPtrErr;
    alignas(16) Word16 y[kWindowPadded] = {};
    // mult_r with the window: pmulhrsw rounds exactly as mult_r, and the
    // window never reaches -32768, so the one saturating case cannot occur.
#if defined(__SSSE3__)
    for (int i = 0; i < kWindow; i += 8) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pSrc + i));
        const __m128i w = _mm_loadu_si128(reinterpret_cast<const __m128i*>(hamwindow + i));
        _mm_store_si128(reinterpret_cast<__m128i*>(y + i), _mm_mulhrs_epi16(x, w));
    }
#else
    for (int i = 0; i < kWindow; ++i) y[i] = mult_r(pSrc[i], hamwindow[i]);
#endif

    Word32 r[kCorrLags + 1];
    Word16 exp_r0 = 1;
    Word32 sum;
    // The energy decides the scaling; the lags are summed once, on the
    // scaled window.
    for (;;) {
        // L_mac from 1 saturates exactly when the doubled sum exceeds MAX_32.
        const std::int64_t exact = 1 + 2 * energy240(y);
        if (exact <= MAX_32) {
            sum = static_cast<Word32>(exact);
            break;
        }
        scale_down4(y);
        exp_r0 = add(exp_r0, 4);
    }
    lags240(y, r);
    const Word16 norm = norm_l_fast(sum);
    pDst[0] = L_shl_fast(sum, norm) & ~Word32{1};
    for (int k = 1; k <= kCorrLags; ++k) {
        const Word32 v = static_cast<Word32>(static_cast<std::uint32_t>(r[k]) * 2u);
        pDst[k] = L_shl_fast(v, norm) & ~Word32{1};
    }
    *pNormOut = sub(exp_r0, norm);
    return zepStsNoErr;
}

ZEPS_END_VARIANT
