/* SPDX-License-Identifier: BSD-3-Clause */
// Exactness bounds of the multiply-accumulate chains of the GSM-AMR decoder
// (3GPP TS 26.073 residu.c, syn_filt.c, pred_lt.c, agc.c). A chain
// s = L_mac(... L_mac(L_mult(a0, x0), a1, x1) ..., an, xn) has terms 2 ak xk;
// when the sum of their magnitudes is at most MAX_32, no partial sum and no
// L_mult can saturate, and the chain equals the plain integer sum. The fast
// forms below take that path only when these bounds hold on the actual
// operands; otherwise they run the saturating chain.
#pragma once

#include <cstdint>

#include "common/basic_op.h"

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

ZEPS_BEGIN_VARIANT
namespace amr_dec {

/// |v| as a 32-bit value (32768 for -32768).
constexpr std::int32_t mag(Word16 v) { return v < 0 ? -std::int32_t{v} : std::int32_t{v}; }

/// Sum of |a[0..n-1]|.
inline std::int32_t mag_sum(const Word16* a, int n) {
    std::int32_t s = 0;
    for (int i = 0; i < n; i++) s += mag(a[i]);
    return s;
}

/// max |x[0..n-1]| (0 for n <= 0), one sample at a time (the baseline of mag_max).
inline std::int32_t mag_max_scalar(const Word16* x, int n) {
    std::int32_t m = 0;
    for (int i = 0; i < n; i++) m = m > mag(x[i]) ? m : mag(x[i]);
    return m;
}

#if defined(__SSSE3__)
/// mag_max eight samples at a time (n >= 8): pabsw leaves -32768 as 0x8000,
/// which is 32768 read unsigned; flipping the top bit turns the unsigned
/// order into pmaxsw's signed one. The last block may overlap the one before.
inline std::int32_t mag_max_lanes(const Word16* x, int n) {
    const __m128i top = _mm_set1_epi16(MIN_16);
    __m128i m = top;  // 0 biased
    auto take = [&](int i) {
        const __m128i v = _mm_abs_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(x + i)));
        m = _mm_max_epi16(m, _mm_xor_si128(v, top));
    };
    for (int i = 0; i + 8 <= n; i += 8) take(i);
    if (n % 8 != 0) take(n - 8);
    m = _mm_max_epi16(m, _mm_shuffle_epi32(m, 0x4E));
    m = _mm_max_epi16(m, _mm_shuffle_epi32(m, 0xB1));
    m = _mm_max_epi16(m, _mm_shufflelo_epi16(m, 0xB1));
    return static_cast<std::uint16_t>(_mm_cvtsi128_si32(m) ^ 0x8000);
}
#endif

/// max |x[0..n-1]| (0 for n <= 0).
inline std::int32_t mag_max(const Word16* x, int n) {
#if defined(__SSSE3__)
    if (n >= 8) return mag_max_lanes(x, n);
#endif
    return mag_max_scalar(x, n);
}

/// True when 2 * weight * m cannot exceed MAX_32: a chain whose terms have
/// magnitudes summing to at most weight * m (Q0 products) cannot saturate.
constexpr bool chain_exact(std::int64_t weight, std::int64_t m) { return 2 * weight * m <= MAX_32; }

/// Plain sum of the squares of x[0..n-1] >> shift, as a 64-bit value.
inline std::int64_t sum_squares_scalar(const Word16* x, int n, int shift) {
    std::int64_t s = 0;
    for (int i = 0; i < n; i++) {
        const std::int64_t v = x[i] >> shift;
        s += v * v;
    }
    return s;
}

#if defined(__SSSE3__)
/// sum_squares_scalar eight samples at a time: one pmaddwd gives the sum of
/// two squares, at most 2^31, exact as an unsigned 32-bit lane (zero-extended
/// into 64-bit sums); the last n % 8 samples scalar.
inline std::int64_t sum_squares_lanes(const Word16* x, int n, int shift) {
    const __m128i zero = _mm_setzero_si128(), sh = _mm_cvtsi32_si128(shift);
    __m128i acc = zero;
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        const __m128i v = _mm_sra_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(x + i)), sh);
        const __m128i p = _mm_madd_epi16(v, v);
        acc = _mm_add_epi64(acc, _mm_add_epi64(_mm_unpacklo_epi32(p, zero), _mm_unpackhi_epi32(p, zero)));
    }
    std::int64_t lanes[2] = {0, 0};
    _mm_storeu_si128(reinterpret_cast<__m128i*>(lanes), acc);
    return lanes[0] + lanes[1] + sum_squares_scalar(x + i, n - i, shift);
}
#endif

/// Plain sum of the squares of x[0..n-1] >> shift (0..15).
inline std::int64_t sum_squares(const Word16* x, int n, int shift = 0) {
#if defined(__SSSE3__)
    return sum_squares_lanes(x, n, shift);
#else
    return sum_squares_scalar(x, n, shift);
#endif
}

/// Sum of squares L_mac(... L_mult(x0, x0) ..., xn, xn): the terms are not
/// negative, so the saturating chain is the plain sum clamped at MAX_32.
/// With shift (0..15), of the samples x >> shift.
inline Word32 energy_sat(const Word16* x, int n, int shift = 0) {
    const std::int64_t s = 2 * sum_squares(x, n, shift);
    return s > MAX_32 ? MAX_32 : static_cast<Word32>(s);
}

/// L_shl(a, n) for 0 <= n <= 31: the shift loop's saturation is one clamp of the exact product.
constexpr Word32 shl_sat32(Word32 a, int n) { return saturate32(std::int64_t{a} * (std::int64_t{1} << n)); }

/// extract_h(L_shl(L_mult(x, g), 3)): the doubled product saturates only at
/// x = g = -32768, where the shift saturates anyway, so the value is
/// (x g) >> 12 clamped to 16 bits.
constexpr Word16 scale_q12(Word16 x, Word16 g) {
    const std::int32_t v = (std::int32_t{x} * g) >> 12;
    return static_cast<Word16>(v > MAX_16 ? MAX_16 : (v < MIN_16 ? MIN_16 : v));
}

}  // namespace amr_dec
ZEPS_END_VARIANT
