/* SPDX-License-Identifier: BSD-3-Clause */
// Private kernels of the G.729 pitch stages (ITU-T G.729 3.7, 3.8): the
// 1/3-sample interpolations (Interpol_3, Pred_lt_3), the backward-filtered
// target of Annex A (Cor_h_X), the pitch gain (G_pitch) and the search range
// of a subframe. The Q12 convolution (Convolve) and the normalised
// correlation (Norm_Corr) are shared with GSM-AMR: common/norm_corr.h.
//
// Q formats: excitation, target and filtered vectors Q0; impulse response
// Q12; interpolation filters Q15; normalised correlations Q0 (16 bits);
// gains Q14.
#pragma once

#include "common/basic_op.h"
#include "common/fixed_math.h"
#include "g729/g729_pitch_tables.h"
#include "common/norm_corr.h"
#include "common/pitch_simd.h"

ZEPS_BEGIN_VARIANT
namespace g729p {

inline constexpr int kFrame = 80;        // L_FRAME
inline constexpr int kPitMin = 20;       // PIT_MIN
inline constexpr int kPitMax = 143;      // PIT_MAX
inline constexpr int kExcOffset = 154;   // PIT_MAX + L_INTERPOL: current subframe in the buffer

/// Closed-loop search range of one subframe (the encoder's t0_min/t0_max
/// rule of Coder_ld8k and Enc_lag3): +-3 around the open-loop lag in
/// subframe 0, -5..+4 around the first subframe's lag in subframe 1.
struct LagRange {
    Word16 t_min;
    Word16 t_max;
};
inline LagRange lag_range(Word16 delay, Word16 subframe) {
    LagRange r{};
    if (subframe == 0) {
        r.t_min = sub(delay, 3);
        if (r.t_min < kPitMin) r.t_min = kPitMin;
        r.t_max = add(r.t_min, 6);
        if (r.t_max > kPitMax) { r.t_max = kPitMax; r.t_min = kPitMax - 6; }
    } else {
        r.t_min = sub(delay, 5);
        if (r.t_min < kPitMin) r.t_min = kPitMin;
        r.t_max = add(r.t_min, 9);
        if (r.t_max > kPitMax) { r.t_max = kPitMax; r.t_min = kPitMax - 9; }
    }
    return r;
}

/// Pred_lt_3 (reference loop): the adaptive vector of lag T0 and fraction
/// frac (-1..1), interpolated from exc[-T0 - 10 ..] and written to
/// exc[0..39] in place (lags below 40 read the samples already written).
inline void pred_lt_3_scalar(Word16* exc, Word16 T0, Word16 frac) {
    const Word16* x0 = exc - T0;
    Word16 f = negate(frac);
    if (f < 0) {
        f = static_cast<Word16>(f + kPitchUpSamp);
        --x0;
    }
    const std::int16_t* c1 = &inter_3l[f];
    const std::int16_t* c2 = &inter_3l[kPitchUpSamp - f];
    for (int j = 0; j < kSubfr; ++j) {
        const Word16* x1 = x0++;
        const Word16* x2 = x0;
        Word32 s = 0;
        for (int i = 0, k = 0; i < kPitchInter10; ++i, k += kPitchUpSamp) {
            s = L_mac(s, x1[-i], c1[k]);
            s = L_mac(s, x2[i], c2[k]);
        }
        exc[j] = round_fx(s);
    }
}

/// Interpol_3: the normalised correlation interpolated at fraction frac
/// (-2..2) thirds around x[0].
inline Word16 interpol_3(const Word16* x, Word16 frac) {
    if (frac < 0) {
        frac = static_cast<Word16>(frac + kPitchUpSamp);
        --x;
    }
    const Word16* x1 = x;
    const Word16* x2 = x + 1;
    const std::int16_t* c1 = &inter_3[frac];
    const std::int16_t* c2 = &inter_3[kPitchUpSamp - frac];
    Word32 s = 0;
    for (int i = 0, k = 0; i < kPitchInter4; ++i, k += kPitchUpSamp) {
        s = L_mac(s, x1[-i], c1[k]);
        s = L_mac(s, x2[i], c2[k]);
    }
    return round_fx(s);
}

/// G_pitch: the adaptive-codebook gain <xn,y1>/<y1,y1> in Q14, 0 when the
/// correlation is not positive, at most 1.2 (19661). The base and Annex A
/// routines are identical.
inline Word16 g_pitch_scalar(const Word16* xn, const Word16* y1) {
    Word16 scaled_y1[kSubfr];
    for (int i = 0; i < kSubfr; ++i) scaled_y1[i] = shr(y1[i], 2);

    Flag ovf = false;
    Word32 s = dot40(y1, y1, 1, ovf);
    Word16 exp_yy, yy;
    if (!ovf) {
        exp_yy = norm_l(s);
        yy = round_fx(L_shl(s, exp_yy));
    } else {
        s = dot40(scaled_y1, scaled_y1, 1, ovf);
        exp_yy = norm_l(s);
        yy = round_fx(L_shl(s, exp_yy));
        exp_yy = sub(exp_yy, 4);
    }

    ovf = false;
    s = dot40(xn, y1, 0, ovf);
    Word16 exp_xy, xy;
    if (!ovf) {
        exp_xy = norm_l(s);
        xy = round_fx(L_shl(s, exp_xy));
    } else {
        s = dot40(xn, scaled_y1, 0, ovf);
        exp_xy = norm_l(s);
        xy = round_fx(L_shl(s, exp_xy));
        exp_xy = sub(exp_xy, 2);
    }
    if (xy <= 0) return 0;

    Word16 gain = div_s(shr(xy, 1), yy);
    gain = shr(gain, sub(exp_xy, exp_yy));
    if (gain > 19661) gain = 19661;
    return gain;
}

/// Cor_h_X (Annex A): the target filtered backwards through h, normalised
/// so that its largest magnitude fits in 13 bits.
inline void cor_h_x_scalar(const Word16* h, const Word16* x, Word16* d) {
    Word32 y32[kSubfr];
    Word32 max = 0;
    for (int i = 0; i < kSubfr; ++i) {
        Word32 s = 0;
        for (int j = i; j < kSubfr; ++j) s = L_mac(s, x[j], h[j - i]);
        y32[i] = s;
        const Word32 a = L_abs(s);
        if (a > max) max = a;
    }
    Word16 j = norm_l(max);
    if (j > 16) j = 16;
    j = sub(18, j);
    for (int i = 0; i < kSubfr; ++i) d[i] = extract_l(L_shr(y32[i], j));
}


/// The target less the filtered adaptive vector times its gain (G.729 3.8):
/// xn2 = xn - extract_h(L_shl(L_mult(y1, gain), 1)).
inline void adaptive_contribution_scalar(Word16 gain, const Word16* y1, const Word16* xn, Word16* xn2) {
    for (int i = 0; i < kSubfr; ++i) {
        const Word32 t = L_shl(L_mult(y1[i], gain), 1);
        xn2[i] = sub(xn[i], extract_h(t));
    }
}

/// The weighting filter's error memory (G.729 3.10): the last 10 samples of
/// xn - extract_h(L_shl(L_mult(y1, gp), 1)) - extract_h(L_shl(L_mult(y2, gc), 2)),
/// the two contributions added with add first.
inline void error_memory_scalar(Word16 gp, Word16 gc, const Word16* xn, const Word16* y1, const Word16* y2,
                                Word16* mem) {
    for (int i = 30, j = 0; i < kSubfr; ++i, ++j) {
        const Word16 t = extract_h(L_shl(L_mult(y1[i], gp), 1));
        const Word16 k = extract_h(L_shl(L_mult(y2[i], gc), 2));
        mem[j] = sub(xn[i], add(t, k));
    }
}

// ---- vectorised forms: identical results, the scalar loops as fallback ----

#if defined(__SSSE3__)
/// Pred_lt_3 as a 20-tap filter: out[j] = sum_m b[j + m] w[m] with b =
/// x0 - 9, eight outputs a step from the ten loads v_q = b + 2q (q = 0..9)
/// and b + 19. Lane k of pmaddwd(v_q, (w[2q], w[2q+1])) is the share of
/// taps 2q, 2q+1 in output j + 2k, that of pmaddwd(v_q, (w[2q-1], w[2q]))
/// the share of taps 2q-1, 2q in output j + 2k + 1 (w[-1] = 0), and
/// pmaddwd(b + 19, (0, w[19])) adds the last tap of the odd outputs (the
/// pairs of inter_3l_pairs); the even and odd sums are interleaved at the
/// end. A step reads b[j .. j + 26] = x0[j - 9 .. j + 17], all before
/// exc[j] (x0 <= exc - 18: lags of 18 and up), so in-place lags below 40
/// read only outputs already final.
/// A step whose samples exceed 18000 in magnitude could saturate (the taps
/// sum to at most 59398 in Q15: 2 * 59398 * 18000 + 0x8000 < 2^31) and
/// runs the reference loop instead.
inline void pred_lt_3(Word16* exc, Word16 T0, Word16 frac) {
    const Word16* x0 = exc - T0;
    Word16 f = negate(frac);
    if (f < 0) {
        f = static_cast<Word16>(f + kPitchUpSamp);
        --x0;
    }
    const __m128i* we = reinterpret_cast<const __m128i*>(inter_3l_pairs[f]);
    const __m128i* wo = we + 10;
    const __m128i round = _mm_set1_epi32(0x8000);
    // Steps read x0[-9 .. 49]. When all of it lies before exc (lags above
    // 49), nothing the loop writes is read back and one check covers every
    // step; otherwise each step checks its own 27 samples (b[0 .. 26]).
    const bool checked = x0 + 49 < exc && !any_abs_above(x0 - 9, 56, 18000) && !any_abs_above(x0 + 42, 8, 18000);
    for (int j = 0; j < kSubfr; j += 8) {
        const Word16* b = x0 + j - 9;
        if (!checked && (any_abs_above(b, 24, 18000) || any_abs_above(b + 19, 8, 18000))) {
            const std::int16_t* c1 = &inter_3l[f];
            const std::int16_t* c2 = &inter_3l[kPitchUpSamp - f];
            for (int jj = j; jj < j + 8; ++jj) {
                const Word16* x1 = x0 + jj;
                Word32 s = 0;
                for (int i = 0, k = 0; i < kPitchInter10; ++i, k += kPitchUpSamp) {
                    s = L_mac(s, x1[-i], c1[k]);
                    s = L_mac(s, x1[1 + i], c2[k]);
                }
                exc[jj] = round_fx(s);
            }
            continue;
        }
        __m128i v = load8(b);
        __m128i even = _mm_madd_epi16(v, we[0]);
        __m128i odd = _mm_madd_epi16(v, wo[0]);
        for (int q = 1; q < 10; ++q) {
            v = load8(b + 2 * q);
            even = _mm_add_epi32(even, _mm_madd_epi16(v, we[q]));
            odd = _mm_add_epi32(odd, _mm_madd_epi16(v, wo[q]));
        }
        odd = _mm_add_epi32(odd, _mm_madd_epi16(load8(b + 19), wo[10]));
        // round_fx of the doubled sum: (2 s + 0x8000) >> 16, exact under the bound.
        auto rounded = [round](__m128i s) { return _mm_srai_epi32(_mm_add_epi32(_mm_slli_epi32(s, 1), round), 16); };
        const __m128i lo = rounded(_mm_unpacklo_epi32(even, odd)), hi = rounded(_mm_unpackhi_epi32(even, odd));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(exc + j), _mm_packs_epi32(lo, hi));
    }
}
/// The adaptive contribution eight samples at a time. With p = y1 gain
/// (|p| <= 2^30), extract_h of the saturated 4 p is p >> 14 clamped to 16
/// bits (both saturate at the same points, the -32768 * -32768 product
/// included), which the saturating pack computes; the saturating
/// subtraction is sub.
inline void adaptive_contribution(Word16 gain, const Word16* y1, const Word16* xn, Word16* xn2) {
    const __m128i g = _mm_set1_epi16(gain);
    for (int i = 0; i < kSubfr; i += 8) {
        const __m128i y = load8(y1 + i);
        const __m128i lo = _mm_mullo_epi16(y, g), hi = _mm_mulhi_epi16(y, g);
        const __m128i p0 = _mm_srai_epi32(_mm_unpacklo_epi16(lo, hi), 14);
        const __m128i p1 = _mm_srai_epi32(_mm_unpackhi_epi16(lo, hi), 14);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(xn2 + i), _mm_subs_epi16(load8(xn + i), _mm_packs_epi32(p0, p1)));
    }
}
/// extract_h(L_shl(L_mult(y, g), s)) for eight samples: with p = y g
/// (|p| <= 2^30) it is p >> (15 - s) clamped to 16 bits, the -32768 * -32768
/// product included (both saturate to 32767).
template <int S>
inline __m128i scaled_product_h(__m128i y, __m128i g) {
    const __m128i lo = _mm_mullo_epi16(y, g), hi = _mm_mulhi_epi16(y, g);
    return _mm_packs_epi32(_mm_srai_epi32(_mm_unpacklo_epi16(lo, hi), 15 - S),
                           _mm_srai_epi32(_mm_unpackhi_epi16(lo, hi), 15 - S));
}

/// The error memory as two overlapping eight-sample blocks (30..37, 32..39):
/// adds and subs are add and sub.
inline void error_memory(Word16 gp, Word16 gc, const Word16* xn, const Word16* y1, const Word16* y2, Word16* mem) {
    const __m128i g1 = _mm_set1_epi16(gp), g2 = _mm_set1_epi16(gc);
    for (int i : {30, 32}) {
        const __m128i s = _mm_adds_epi16(scaled_product_h<1>(load8(y1 + i), g1), scaled_product_h<2>(load8(y2 + i), g2));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(mem + i - 30), _mm_subs_epi16(load8(xn + i), s));
    }
}
#else
// Hosts without SSSE3: the scalar form (the same results).
inline void error_memory(Word16 gp, Word16 gc, const Word16* xn, const Word16* y1, const Word16* y2, Word16* mem) {
    error_memory_scalar(gp, gc, xn, y1, y2, mem);
}
inline void adaptive_contribution(Word16 gain, const Word16* y1, const Word16* xn, Word16* xn2) {
    adaptive_contribution_scalar(gain, y1, xn, xn2);
}
inline void pred_lt_3(Word16* exc, Word16 T0, Word16 frac) { pred_lt_3_scalar(exc, T0, frac); }
#endif

#if defined(__SSSE3__)
/// G_pitch, with the dot products in 32-bit lanes where they cannot saturate.
inline Word16 g_pitch(const Word16* xn, const Word16* y1) {
    alignas(16) Word16 scaled_y1[kSubfr];
    for (int i = 0; i < kSubfr; ++i) scaled_y1[i] = shr(y1[i], 2);
    const std::int64_t ey = energy64(y1, kSubfr), exn = energy64(xn, kSubfr);

    Flag ovf = false;
    Word32 s = energy40_sat(ey, 1, ovf);
    Word16 exp_yy, yy;
    if (!ovf) {
        exp_yy = norm_l(s);
        yy = round_fx(L_shl(s, exp_yy));
    } else {
        s = energy40_sat(energy64(scaled_y1, kSubfr), 1, ovf);
        exp_yy = norm_l(s);
        yy = round_fx(L_shl(s, exp_yy));
        exp_yy = sub(exp_yy, 4);
    }

    ovf = false;
    s = dot40_known(xn, y1, exn, ey, 0, ovf);
    Word16 exp_xy, xy;
    if (!ovf) {
        exp_xy = norm_l(s);
        xy = round_fx(L_shl(s, exp_xy));
    } else {
        s = dot40(xn, scaled_y1, 0, ovf);
        exp_xy = norm_l(s);
        xy = round_fx(L_shl(s, exp_xy));
        exp_xy = sub(exp_xy, 2);
    }
    if (xy <= 0) return 0;

    Word16 gain = div_s(shr(xy, 1), yy);
    gain = shr(gain, sub(exp_xy, exp_yy));
    if (gain > 19661) gain = 19661;
    return gain;
}

/// Cor_h_X, with the 40 backward correlations in 32-bit lanes when the
/// energy bound allows.
inline void cor_h_x(const Word16* h, const Word16* x, Word16* d) {
    if (!dot_is_safe(energy64(h, kSubfr), energy64(x, kSubfr))) {
        cor_h_x_scalar(h, x, d);
        return;
    }
    alignas(16) Word16 xp[56] = {};
    alignas(16) Word16 hp[48] = {};
    for (int i = 0; i < kSubfr; ++i) {
        xp[i] = x[i];
        hp[i] = h[i];
    }
    alignas(16) Word32 y32[kSubfr];
    for (int i = 0; i < kSubfr; i += 4) {
        const int n = (kSubfr - i + 7) & ~7;
        const __m128i s = dot4_lanes(hp, xp + i, xp + i + 1, xp + i + 2, xp + i + 3, n);
        _mm_store_si128(reinterpret_cast<__m128i*>(y32 + i), _mm_slli_epi32(s, 1));
    }
    // Under the bound every |y| <= MAX_32, and the largest magnitude has the
    // leading bit of the OR of all magnitudes: norm_l of the OR is norm_l of
    // the maximum.
    __m128i any = _mm_setzero_si128();
    for (int i = 0; i < kSubfr; i += 4)
        any = _mm_or_si128(any, _mm_abs_epi32(_mm_load_si128(reinterpret_cast<const __m128i*>(y32 + i))));
    any = _mm_or_si128(any, _mm_shuffle_epi32(any, _MM_SHUFFLE(1, 0, 3, 2)));
    any = _mm_or_si128(any, _mm_shuffle_epi32(any, _MM_SHUFFLE(2, 3, 0, 1)));
    Word16 j = norm_l(_mm_cvtsi128_si32(any));
    if (j > 16) j = 16;
    j = sub(18, j);
    // L_shr by 2..18 is an arithmetic shift; extract_l keeps the low 16 bits.
    const __m128i count = _mm_cvtsi32_si128(j);
    for (int i = 0; i < kSubfr; i += 8) {
        __m128i a = _mm_sra_epi32(_mm_load_si128(reinterpret_cast<const __m128i*>(y32 + i)), count);
        __m128i b = _mm_sra_epi32(_mm_load_si128(reinterpret_cast<const __m128i*>(y32 + i + 4)), count);
        a = _mm_srai_epi32(_mm_slli_epi32(a, 16), 16);
        b = _mm_srai_epi32(_mm_slli_epi32(b, 16), 16);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i), _mm_packs_epi32(a, b));
    }
}
#else
inline Word16 g_pitch(const Word16* xn, const Word16* y1) { return g_pitch_scalar(xn, y1); }
inline void cor_h_x(const Word16* h, const Word16* x, Word16* d) { cor_h_x_scalar(h, x, d); }
#endif

}  // namespace g729p
ZEPS_END_VARIANT
