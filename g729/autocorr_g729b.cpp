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
#include "g729/fast_ops.h"
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

#if defined(__SSSE3__)
void g729_corr240_ssse3(const Word16* y, std::int64_t& energy, Word32* r) {
    // Energy: pmaddwd pairs are below 2^31 and non-negative; widen to 64 bits.
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
    energy = e2[0] + e2[1];
    // Lags: y is followed by zeros, so every lag sums over 240 products; the
    // partial sums are bounded by the energy (Cauchy-Schwarz), no wrap.
    for (int k = 1; k <= kCorrLags; ++k) {
        __m128i acc = zero;
        for (int j = 0; j < kWindow; j += 8) {
            const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(y + j));
            const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(y + j + k));
            acc = _mm_add_epi32(acc, _mm_madd_epi16(a, b));
        }
        acc = _mm_add_epi32(acc, _mm_shuffle_epi32(acc, 0x4e));
        acc = _mm_add_epi32(acc, _mm_shuffle_epi32(acc, 0xb1));
        r[k] = _mm_cvtsi128_si32(acc);
    }
}
#else
// Hosts without SSSE3: the scalar sums (the same results).
void g729_corr240_ssse3(const Word16* y, std::int64_t& energy, Word32* r) { g729_corr240_scalar(y, energy, r); }
#endif

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
    for (;;) {
        std::int64_t energy;
        g729_corr240_ssse3(y, energy, r);
        // L_mac from 1 saturates exactly when the doubled sum exceeds MAX_32.
        const std::int64_t exact = 1 + 2 * energy;
        if (exact <= MAX_32) {
            sum = static_cast<Word32>(exact);
            break;
        }
        for (int i = 0; i < kWindow; ++i) y[i] = shr(y[i], 2);
        exp_r0 = add(exp_r0, 4);
    }
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
