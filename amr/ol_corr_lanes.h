// SPDX-License-Identifier: BSD-3-Clause
// The correlations of the GSM-AMR open-loop pitch search (3GPP TS 26.073
// calc_cor.c comp_corr): corr[t] = sum_i 2 sig[i] sig[i - t], Q0 doubled as
// the reference's L_mac chain leaves it, for a range of lags.
//
// Both forms need the caller's proof that no chain can saturate: the
// signal's energy E is below 2^30, so no sample is -32768 and, by
// Cauchy-Schwarz, every partial sum of any subset of the products is at most
// E in magnitude; then each chain is the plain sum doubled. The vector form
// computes four lags in one pass over the signal (one load of sig[i..i+7]
// for four pmaddwd), the last lags of the range one at a time; the scalar
// form is the baseline it is tested against.
#pragma once

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <cstdint>

#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT
namespace amr {

/// corr[t] = 2 sum_{i<n} sig[i] sig[i - t] for t = lag_min..lag_max, plain loops.
inline void doubled_lag_dots_scalar(const Word16* sig, int n, int lag_max, int lag_min, Word32* corr) {
    for (int t = lag_max; t >= lag_min; --t) {
        std::int32_t s = 0;
        for (int i = 0; i < n; ++i) s += std::int32_t{sig[i]} * sig[i - t];
        corr[t] = 2 * s;
    }
}

#if defined(__SSSE3__)
/// The sum of the products sig[i] sig[i - t] for i = 0..n-1, eight at a time.
inline std::int32_t lag_dot_lanes(const Word16* sig, int n, int t) {
    __m128i acc = _mm_setzero_si128();
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(sig + i));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(sig + i - t));
        acc = _mm_add_epi32(acc, _mm_madd_epi16(a, b));
    }
    acc = _mm_hadd_epi32(acc, acc);
    acc = _mm_hadd_epi32(acc, acc);
    std::int32_t s = _mm_cvtsi128_si32(acc);
    for (; i < n; ++i) s += std::int32_t{sig[i]} * sig[i - t];
    return s;
}
#endif

/// doubled_lag_dots_scalar, four lags t, t-1, t-2, t-3 a pass.
inline void doubled_lag_dots(const Word16* sig, int n, int lag_max, int lag_min, Word32* corr) {
#if defined(__SSSE3__)
    int t = lag_max;
    for (; t - 3 >= lag_min; t -= 4) {
        __m128i a0 = _mm_setzero_si128(), a1 = a0, a2 = a0, a3 = a0;
        int i = 0;
        for (; i + 8 <= n; i += 8) {
            const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(sig + i));
            const Word16* y = sig + i - t;  // lag t - k reads y + k
            a0 = _mm_add_epi32(a0, _mm_madd_epi16(x, _mm_loadu_si128(reinterpret_cast<const __m128i*>(y))));
            a1 = _mm_add_epi32(a1, _mm_madd_epi16(x, _mm_loadu_si128(reinterpret_cast<const __m128i*>(y + 1))));
            a2 = _mm_add_epi32(a2, _mm_madd_epi16(x, _mm_loadu_si128(reinterpret_cast<const __m128i*>(y + 2))));
            a3 = _mm_add_epi32(a3, _mm_madd_epi16(x, _mm_loadu_si128(reinterpret_cast<const __m128i*>(y + 3))));
        }
        // lanes: the sums of lags t, t-1, t-2, t-3
        alignas(16) std::int32_t s[4] = {};
        _mm_store_si128(reinterpret_cast<__m128i*>(s), _mm_hadd_epi32(_mm_hadd_epi32(a0, a1), _mm_hadd_epi32(a2, a3)));
        for (; i < n; ++i)
            for (int k = 0; k < 4; ++k) s[k] += std::int32_t{sig[i]} * sig[i - t + k];
        for (int k = 0; k < 4; ++k) corr[t - k] = 2 * s[k];
    }
    for (; t >= lag_min; --t) corr[t] = 2 * lag_dot_lanes(sig, n, t);
#else
    doubled_lag_dots_scalar(sig, n, lag_max, lag_min, corr);
#endif
}

/// The open-loop search signal as Pitch_ol scales it from the energy chain
/// t0 of the n input samples: shr by 3 where t0 saturated (fac 3), shl by 3
/// where t0 < 2^20 (fac -3), a copy otherwise (fac 0). Reference operators.
inline int scale_for_search_scalar(const Word16* x, int n, Word32 t0, Word16* y) {
    if (t0 == MAX_32) {
        for (int i = 0; i < n; ++i) y[i] = shr(x[i], 3);
        return 3;
    }
    if (t0 < 1048576) {
        for (int i = 0; i < n; ++i) y[i] = shl(x[i], 3);
        return -3;
    }
    for (int i = 0; i < n; ++i) y[i] = x[i];
    return 0;
}

/// scale_for_search_scalar eight samples at a time. t0 is the chain
/// sum 2 x^2 (clamped), so t0 < 2^20 bounds every |x| below 2^9.5 and x << 3
/// cannot saturate; shr by 3 is the arithmetic shift.
inline int scale_for_search(const Word16* x, int n, Word32 t0, Word16* y) {
#if defined(__SSSE3__)
    const int fac = t0 == MAX_32 ? 3 : t0 < 1048576 ? -3 : 0;
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(x + i));
        if (fac == 3) v = _mm_srai_epi16(v, 3);
        if (fac == -3) v = _mm_slli_epi16(v, 3);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(y + i), v);
    }
    scale_for_search_scalar(x + i, n - i, t0, y + i);
    return fac;
#else
    return scale_for_search_scalar(x, n, t0, y);
#endif
}

}  // namespace amr
ZEPS_END_VARIANT
