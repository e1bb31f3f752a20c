/* SPDX-License-Identifier: BSD-3-Clause */
// SSSE3 kernels of the G.729 and GSM-AMR pitch stages. They compute the reference's
// saturating multiply-accumulate loops (L_mac chains) in 32-bit lanes, which
// is exact whenever no partial sum of the chain can leave the 32-bit range;
// the callers prove that with an energy bound first (Cauchy-Schwarz:
// 2 sum|x y| <= 2 sqrt(sum x^2 sum y^2)) and fall back to the plain L_mac
// loop otherwise. A madd pair a0 b0 + a1 b1 stays inside int32 under the
// same bound. Results here are undoubled sums (the reference's L_mac doubles
// every product: the caller doubles once).
#pragma once

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <algorithm>
#include <cstdint>

#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT
namespace g729p {

/// True when a doubled dot product of vectors with sums of squares ex, ey
/// can never saturate at any partial sum: 4 ex ey <= MAX_32^2.
inline bool dot_is_safe(std::int64_t ex, std::int64_t ey) {
    const unsigned __int128 lim = static_cast<unsigned __int128>(MAX_32) * static_cast<unsigned __int128>(MAX_32);
    return static_cast<unsigned __int128>(ex) * static_cast<unsigned __int128>(ey) * 4u <= lim;
}

#if defined(__SSSE3__)
inline __m128i load8(const Word16* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }

/// Exact sum of squares of n samples (n a multiple of 8, or a scalar tail).
inline std::int64_t energy64(const Word16* x, int n) {
    __m128i acc = _mm_setzero_si128();  // two 64-bit lanes
    const __m128i zero = _mm_setzero_si128();
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        const __m128i v = load8(x + i);
        const __m128i p = _mm_madd_epi16(v, v);  // 4 unsigned pair sums <= 2^31
        acc = _mm_add_epi64(acc, _mm_unpacklo_epi32(p, zero));
        acc = _mm_add_epi64(acc, _mm_unpackhi_epi32(p, zero));
    }
    std::int64_t lanes[2];
    _mm_storeu_si128(reinterpret_cast<__m128i*>(lanes), acc);
    std::int64_t s = lanes[0] + lanes[1];
    for (; i < n; ++i) s += std::int32_t{x[i]} * x[i];
    return s;
}


inline std::int32_t hsum(__m128i v) {
    v = _mm_add_epi32(v, _mm_shuffle_epi32(v, _MM_SHUFFLE(1, 0, 3, 2)));
    v = _mm_add_epi32(v, _mm_shuffle_epi32(v, _MM_SHUFFLE(2, 3, 0, 1)));
    return _mm_cvtsi128_si32(v);
}

/// Undoubled dot product of n samples (n a multiple of 8), in 32-bit lanes.
inline std::int32_t dot_lanes(const Word16* x, const Word16* y, int n) {
    __m128i acc = _mm_madd_epi16(load8(x), load8(y));
    for (int i = 8; i < n; i += 8) acc = _mm_add_epi32(acc, _mm_madd_epi16(load8(x + i), load8(y + i)));
    return hsum(acc);
}

/// Four undoubled dot products of x with y0..y3 (n a multiple of 8), as the
/// four lanes of the result.
inline __m128i dot4_lanes(const Word16* x, const Word16* y0, const Word16* y1, const Word16* y2, const Word16* y3,
                          int n) {
    __m128i a0 = _mm_setzero_si128(), a1 = a0, a2 = a0, a3 = a0;
    for (int i = 0; i < n; i += 8) {
        const __m128i v = load8(x + i);
        a0 = _mm_add_epi32(a0, _mm_madd_epi16(v, load8(y0 + i)));
        a1 = _mm_add_epi32(a1, _mm_madd_epi16(v, load8(y1 + i)));
        a2 = _mm_add_epi32(a2, _mm_madd_epi16(v, load8(y2 + i)));
        a3 = _mm_add_epi32(a3, _mm_madd_epi16(v, load8(y3 + i)));
    }
    return _mm_hadd_epi32(_mm_hadd_epi32(a0, a1), _mm_hadd_epi32(a2, a3));
}

/// Largest magnitude of n samples (n a multiple of 8), as a 32-bit value.
inline std::int32_t max_abs(const Word16* x, int n) {
    __m128i mx = _mm_setzero_si128(), mn = _mm_setzero_si128();
    for (int i = 0; i < n; i += 8) {
        const __m128i v = load8(x + i);
        mx = _mm_max_epi16(mx, v);
        mn = _mm_min_epi16(mn, v);
    }
    std::int16_t a[8], b[8];
    _mm_storeu_si128(reinterpret_cast<__m128i*>(a), mx);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(b), mn);
    std::int32_t m = 0;
    for (int i = 0; i < 8; ++i) {
        if (a[i] > m) m = a[i];
        if (-std::int32_t{b[i]} > m) m = -std::int32_t{b[i]};
    }
    return m;
}

/// True when some of the n samples (n a multiple of 8) exceeds `limit` in
/// magnitude.
inline bool any_abs_above(const Word16* x, int n, Word16 limit) {
    const __m128i hi = _mm_set1_epi16(limit), lo = _mm_set1_epi16(static_cast<Word16>(-limit));
    __m128i out = _mm_setzero_si128();
    for (int i = 0; i < n; i += 8) {
        const __m128i v = load8(x + i);
        out = _mm_or_si128(out, _mm_or_si128(_mm_cmpgt_epi16(v, hi), _mm_cmplt_epi16(v, lo)));
    }
    return _mm_movemask_epi8(out) != 0;
}
#else
// Hosts without SSSE3: the same sums in plain code (32-bit sums wrap as the
// lanes do; the callers' bounds keep them exact).
inline std::int64_t energy64(const Word16* x, int n) {
    std::int64_t s = 0;
    for (int i = 0; i < n; ++i) s += std::int32_t{x[i]} * x[i];
    return s;
}

inline std::int32_t dot_lanes(const Word16* x, const Word16* y, int n) {
    std::uint32_t s = 0;
    for (int i = 0; i < n; ++i) s += static_cast<std::uint32_t>(std::int32_t{x[i]} * y[i]);
    return static_cast<std::int32_t>(s);
}

inline std::int32_t max_abs(const Word16* x, int n) {
    std::int32_t m = 0;
    for (int i = 0; i < n; ++i) m = std::max(m, x[i] < 0 ? -std::int32_t{x[i]} : std::int32_t{x[i]});
    return m;
}

inline bool any_abs_above(const Word16* x, int n, Word16 limit) {
    for (int i = 0; i < n; ++i)
        if (x[i] > limit || x[i] < -limit) return true;
    return false;
}
#endif

}  // namespace g729p
ZEPS_END_VARIANT
