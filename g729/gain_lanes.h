/* SPDX-License-Identifier: BSD-3-Clause */
// The distances of the G.729 gain codebook search (ITU-T G.729 3.9
// Qua_gain) for eight second-stage rows at a time, with their scalar twin
// (the reference's operators). Row gains: pitch gain Q14, correction Q12/13
// (halved), code gain Q1 after mult by gcode0; coefficients as hi/lo pairs.
//
// Why the lanes are exact: with every hi above -32768 and every lo in
// [0, 32767] (what L_Extract leaves), hi n + mult(lo, n) fits in 32 bits and
// Mpy_32_16 is its doubling saturated (its L_mult cannot saturate); the
// chain of L_add is emulated with the usual sign test (an overflow exactly
// when both operands share a sign the sum does not), saturating to MAX_32 or
// MIN_32 by the first operand's sign. Other coefficients run the scalar twin.
#pragma once

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <cstdint>

#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT
namespace g729c {

/// d[j] for the pair (row 1 {p1, c1}, row 2 {p2[j], c2[j]}), j < 8: with
/// g_pitch = add(p1, p2[j]), g_code = mult(gcode0, extract_l(L_shr(L_add(c1,
/// c2[j]), 1))), d = sum over k of Mpy_32_16(chi[k], clo[k], n_k) for n = (g_pitch^2,
/// g_pitch, g_code^2, g_code, g_code g_pitch) by L_add; MAX_32 for a pair
/// skipped by taming (g_pitch >= 16383 with tame set), which the search's
/// strict test against a best starting at MAX_32 never picks.
inline void gain_dist8_scalar(const Word16* chi, const Word16* clo, Word16 gcode0, Word16 p1, Word16 c1,
                              const Word16* p2, const Word16* c2, bool tame, Word32* d) {
    for (int j = 0; j < 8; ++j) {
        const Word16 gp = add(p1, p2[j]);
        if (tame && gp >= 16383) {
            d[j] = MAX_32;
            continue;
        }
        const Word16 gc = mult(gcode0, extract_l(L_shr(L_add(c1, c2[j]), 1)));
        const Word16 n[5] = {mult(gp, gp), gp, mult(gc, gc), gc, mult(gc, gp)};
        Word32 s = Mpy_32_16(chi[0], clo[0], n[0]);
        for (int k = 1; k < 5; ++k) s = L_add(s, Mpy_32_16(chi[k], clo[k], n[k]));
        d[j] = s;
    }
}

#if defined(__SSSE3__)
namespace gl {
inline __m128i ld(const Word16* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
/// (a b) >> 15 in 32-bit lanes, low and high four.
inline __m128i prod_lo(__m128i a, __m128i b) {
    return _mm_srai_epi32(_mm_unpacklo_epi16(_mm_mullo_epi16(a, b), _mm_mulhi_epi16(a, b)), 15);
}
inline __m128i prod_hi(__m128i a, __m128i b) {
    return _mm_srai_epi32(_mm_unpackhi_epi16(_mm_mullo_epi16(a, b), _mm_mulhi_epi16(a, b)), 15);
}
/// mult() of eight lanes (packing saturates -32768 * -32768 as mult does).
inline __m128i mult_v(__m128i a, __m128i b) { return _mm_packs_epi32(prod_lo(a, b), prod_hi(a, b)); }
/// L_add of four lanes.
inline __m128i l_add(__m128i a, __m128i b) {
    const __m128i s = _mm_add_epi32(a, b);
    const __m128i ovf = _mm_srai_epi32(_mm_and_si128(_mm_xor_si128(s, a), _mm_xor_si128(s, b)), 31);
    const __m128i sat = _mm_xor_si128(_mm_srai_epi32(a, 31), _mm_set1_epi32(MAX_32));
    return _mm_or_si128(_mm_andnot_si128(ovf, s), _mm_and_si128(ovf, sat));
}
/// hi n + mult(lo, n) of eight lanes as two sets of four (hi > -32768,
/// 0 <= lo): Mpy_32_16 before its doubling, exact (at most (|hi| + 1) |n|).
inline void half_products(Word16 hi, Word16 lo, __m128i n, __m128i& r0, __m128i& r1) {
    const __m128i m = mult_v(_mm_set1_epi16(lo), n);
    const __m128i w = _mm_set1_epi32(static_cast<int>((1u << 16) | static_cast<std::uint16_t>(hi)));
    r0 = _mm_madd_epi16(_mm_unpacklo_epi16(n, m), w);
    r1 = _mm_madd_epi16(_mm_unpackhi_epi16(n, m), w);
}
/// Mpy_32_16(hi, lo, n) of eight lanes as two sets of four (hi > -32768, 0 <= lo).
inline void mpy(Word16 hi, Word16 lo, __m128i n, __m128i& r0, __m128i& r1) {
    __m128i x0, x1;
    half_products(hi, lo, n, x0, x1);
    r0 = l_add(x0, x0);
    r1 = l_add(x1, x1);
}
/// The largest magnitude of eight lanes (pabsw biased into pmaxsw order).
inline std::int32_t max_abs_v(__m128i v) {
    __m128i a = _mm_xor_si128(_mm_abs_epi16(v), _mm_set1_epi16(MIN_16));
    a = _mm_max_epi16(a, _mm_shuffle_epi32(a, 0x4E));
    a = _mm_max_epi16(a, _mm_shuffle_epi32(a, 0xB1));
    a = _mm_max_epi16(a, _mm_srli_epi32(a, 16));
    return (_mm_cvtsi128_si32(a) & 0xFFFF) ^ 0x8000;
}
/// True when no step of the distance chains can saturate, from gp_max and
/// gc_max, the largest |g_pitch| and |g_code| of the eight pairs: the terms
/// n are g_pitch^2, g_pitch, g_code^2, g_code and g_code g_pitch by mult(),
/// each |mult(a, b)| <= (|a| |b| >> 15) + 1, and each Mpy_32_16 of a term
/// is 2 (hi n + mult(lo, n)), at most 2 (|hi| + 1) |n|. When twice the sum
/// of those reaches over no 32-bit value, no L_mac inside Mpy_32_16 nor
/// L_add of the chain saturates: the distance is the plain doubled sum.
inline bool plain_sums(const Word16* chi, std::int32_t gp_max, std::int32_t gc_max) {
    const std::int64_t gp = gp_max, gc = gc_max;
    const std::int64_t n[5] = {((gp * gp) >> 15) + 1, gp, ((gc * gc) >> 15) + 1, gc, ((gc * gp) >> 15) + 1};
    std::int64_t reach = 0;
    for (int k = 0; k < 5; ++k) {
        const std::int64_t hi = chi[k];
        reach += ((hi < 0 ? -hi : hi) + 1) * n[k];
    }
    return 2 * reach <= MAX_32;
}
}  // namespace gl
#endif

inline void gain_dist8(const Word16* chi, const Word16* clo, Word16 gcode0, Word16 p1, Word16 c1, const Word16* p2,
                       const Word16* c2, bool tame, Word32* d) {
#if defined(__SSSE3__)
    for (int k = 0; k < 5; ++k)
        if (chi[k] == MIN_16 || clo[k] < 0) {
            gain_dist8_scalar(chi, clo, gcode0, p1, c1, p2, c2, tame, d);
            return;
        }
    using namespace gl;
    const __m128i gp = _mm_adds_epi16(_mm_set1_epi16(p1), ld(p2));
    const __m128i cv = ld(c2), c1v = _mm_set1_epi32(c1);
    const __m128i corr = _mm_packs_epi32(_mm_srai_epi32(_mm_add_epi32(c1v, _mm_srai_epi32(_mm_unpacklo_epi16(cv, cv), 16)), 1),
                                         _mm_srai_epi32(_mm_add_epi32(c1v, _mm_srai_epi32(_mm_unpackhi_epi16(cv, cv), 16)), 1));
    const __m128i gc = mult_v(_mm_set1_epi16(gcode0), corr);
    const __m128i n[5] = {mult_v(gp, gp), gp, mult_v(gc, gc), gc, mult_v(gc, gp)};
    __m128i s0, s1, t0, t1;
    if (plain_sums(chi, max_abs_v(gp), max_abs_v(gc))) {
        // x = hi n + mult(lo, n) per term; the doubling of every term and
        // the L_add chain become one plain sum doubled at the end.
        half_products(chi[0], clo[0], n[0], s0, s1);
        for (int k = 1; k < 5; ++k) {
            half_products(chi[k], clo[k], n[k], t0, t1);
            s0 = _mm_add_epi32(s0, t0);
            s1 = _mm_add_epi32(s1, t1);
        }
        s0 = _mm_slli_epi32(s0, 1);
        s1 = _mm_slli_epi32(s1, 1);
    } else {
        mpy(chi[0], clo[0], n[0], s0, s1);
        for (int k = 1; k < 5; ++k) {
            mpy(chi[k], clo[k], n[k], t0, t1);
            s0 = l_add(s0, t0);
            s1 = l_add(s1, t1);
        }
    }
    if (tame) {  // g_pitch >= 16383: d = MAX_32
        const __m128i skip = _mm_cmpgt_epi16(gp, _mm_set1_epi16(16382));
        const __m128i k0 = _mm_unpacklo_epi16(skip, skip), k1 = _mm_unpackhi_epi16(skip, skip);
        const __m128i mx = _mm_set1_epi32(MAX_32);
        s0 = _mm_or_si128(_mm_andnot_si128(k0, s0), _mm_and_si128(k0, mx));
        s1 = _mm_or_si128(_mm_andnot_si128(k1, s1), _mm_and_si128(k1, mx));
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d), s0);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 4), s1);
#else
    gain_dist8_scalar(chi, clo, gcode0, p1, c1, p2, c2, tame, d);
#endif
}

}  // namespace g729c
ZEPS_END_VARIANT
