/* SPDX-License-Identifier: BSD-3-Clause */
// SSSE3 kernels of the G.729 Annex A post-filter (ITU-T G.729 Annex A
// A.4.2), eight samples a step, each beside its scalar twin with the
// reference's operators. Samples Q0, gains Q15 (mult) or Q12 (AGC),
// LP coefficients Q12.
//
// Exactness: a Word16 product is exact in 32 bits; mult(a, b) =
// sat16((a b) >> 15) (the one saturating case, -32768 * -32768, gives 32768,
// which the signed pack clamps as the operator does); add / sub are the
// saturating 16-bit lane operations. extract_h(L_shl(L_mult(o, g), 3)) =
// sat16((o g) >> 12), since L_shl saturates exactly when the wide result
// leaves 16 bits. Residu's round(L_shl(2 s, 3)) = sat16((s + 2048) >> 12)
// when its plain 32-bit sum s is exact (the caller's bound).
#pragma once

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT
namespace g729f {

#if defined(__SSSE3__)
inline __m128i ld8(const Word16* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline void st8(Word16* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }

/// The 32-bit products a b of eight lane pairs, low and high halves.
inline void mul32(__m128i a, __m128i b, __m128i& lo, __m128i& hi) {
    const __m128i l = _mm_mullo_epi16(a, b), h = _mm_mulhi_epi16(a, b);
    lo = _mm_unpacklo_epi16(l, h);
    hi = _mm_unpackhi_epi16(l, h);
}

/// mult(g, x) of eight lanes, g broadcast.
inline __m128i mult8(__m128i g, __m128i x) {
    __m128i lo, hi;
    mul32(g, x, lo, hi);
    return _mm_packs_epi32(_mm_srai_epi32(lo, 15), _mm_srai_epi32(hi, 15));
}
#endif

/// out[i] = add(mult(g0, res[i]), mult(gain, res[i - t0])), n a multiple of 8.
#if defined(__SSSE3__)
inline void ltp_mix(const Word16* res, int t0, Word16 g0, Word16 gain, Word16* out, int n) {
    const __m128i vg0 = _mm_set1_epi16(g0), vg = _mm_set1_epi16(gain);
    for (int i = 0; i < n; i += 8)
        st8(out + i, _mm_adds_epi16(mult8(vg0, ld8(res + i)), mult8(vg, ld8(res + i - t0))));
}
#endif
inline void ltp_mix_scalar(const Word16* res, int t0, Word16 g0, Word16 gain, Word16* out, int n) {
    for (int i = 0; i < n; ++i) out[i] = add(mult(g0, res[i]), mult(gain, res[i - t0]));
}

/// x[i] -= mult(g, x[i-1]) over n samples (n a multiple of 8), x[-1] = prev.
#if defined(__SSSE3__)
inline void preemph(Word16* x, Word16 g, Word16 prev, int n) {
    const __m128i vg = _mm_set1_epi16(g);
    __m128i carry = _mm_set1_epi16(prev);  // lane 7 holds x[i-1] of the next block
    for (int i = 0; i < n; i += 8) {
        const __m128i v = ld8(x + i);
        const __m128i before = _mm_alignr_epi8(v, carry, 14);
        st8(x + i, _mm_subs_epi16(v, mult8(vg, before)));
        carry = v;
    }
}
#endif
inline void preemph_scalar(Word16* x, Word16 g, Word16 prev, int n) {
    for (int i = n - 1; i > 0; --i) x[i] = sub(x[i], mult(g, x[i - 1]));
    x[0] = sub(x[0], mult(g, prev));
}

/// out[i] = extract_h(L_shl(L_mult(out[i], gain[i]), 3)), n a multiple of 8.
#if defined(__SSSE3__)
inline void agc_scale(Word16* out, const Word16* gain, int n) {
    for (int i = 0; i < n; i += 8) {
        __m128i lo, hi;
        mul32(ld8(out + i), ld8(gain + i), lo, hi);
        st8(out + i, _mm_packs_epi32(_mm_srai_epi32(lo, 12), _mm_srai_epi32(hi, 12)));
    }
}
#endif
inline void agc_scale_scalar(Word16* out, const Word16* gain, int n) {
    for (int i = 0; i < n; ++i) out[i] = extract_h(L_shl(L_mult(out[i], gain[i]), 3));
}

/// Residu with plain sums: y[i] = round(L_shl(2 sum a[j] x[i-j], 3)),
/// x[-10..-1] read; valid when 2 sum|a| max|x| <= MAX_32 (every partial sum
/// exact, and so is any sum of the products in any order). n a multiple of
/// 8. In lanes: tap pair p < 5 multiplies (x[i-2p], x[i-2p-1]) by
/// (a[2p], a[2p+1]) in one pmaddwd, the last (x[i-10], x[i-9]) by (a[10], 0)
/// so that nothing before x[-10] is read; the rounding as psrad and the
/// 16-bit clamp as packssdw.
#if defined(__SSSE3__)
inline void residu_plain(const Word16* a, const Word16* x, Word16* y, int n) {
    __m128i ap[6];
    for (int p = 0; p < 6; ++p) {
        const Word16 odd = p < 5 ? a[2 * p + 1] : Word16{0};
        ap[p] = _mm_unpacklo_epi16(_mm_set1_epi16(a[2 * p]), _mm_set1_epi16(odd));
    }
    const __m128i rnd = _mm_set1_epi32(2048);
    for (int i = 0; i < n; i += 8) {
        __m128i slo = rnd, shi = rnd;
        for (int p = 0; p < 6; ++p) {
            const __m128i x0 = ld8(x + i - 2 * p);
            const __m128i x1 = ld8(x + i - (p < 5 ? 2 * p + 1 : 9));
            slo = _mm_add_epi32(slo, _mm_madd_epi16(_mm_unpacklo_epi16(x0, x1), ap[p]));
            shi = _mm_add_epi32(shi, _mm_madd_epi16(_mm_unpackhi_epi16(x0, x1), ap[p]));
        }
        st8(y + i, _mm_packs_epi32(_mm_srai_epi32(slo, 12), _mm_srai_epi32(shi, 12)));
    }
}
#endif
inline void residu_plain_scalar(const Word16* a, const Word16* x, Word16* y, int n) {
    for (int i = 0; i < n; ++i) {
        Word32 s = L_mult(x[i], a[0]);
        for (int j = 1; j <= 10; ++j) s = L_mac(s, a[j], x[i - j]);
        y[i] = round_fx(L_shl(s, 3));
    }
}

/// y[i] = x[i] >> 2 (shr by 2), n a multiple of 8.
inline void quarter(const Word16* x, Word16* y, int n) {
#if defined(__SSSE3__)
    for (int i = 0; i < n; i += 8) st8(y + i, _mm_srai_epi16(ld8(x + i), 2));
#else
    for (int i = 0; i < n; ++i) y[i] = shr(x[i], 2);
#endif
}

#if !defined(__SSSE3__)
// Hosts without SSSE3: the vector names run the scalar twins (the same results).
inline void ltp_mix(const Word16* res, int t0, Word16 g0, Word16 gain, Word16* out, int n) {
    ltp_mix_scalar(res, t0, g0, gain, out, n);
}
inline void preemph(Word16* x, Word16 g, Word16 prev, int n) { preemph_scalar(x, g, prev, n); }
inline void agc_scale(Word16* out, const Word16* gain, int n) { agc_scale_scalar(out, gain, n); }
inline void residu_plain(const Word16* a, const Word16* x, Word16* y, int n) { residu_plain_scalar(a, x, y, n); }
#endif

}  // namespace g729f
ZEPS_END_VARIANT
