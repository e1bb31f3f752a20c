/* SPDX-License-Identifier: BSD-3-Clause */
// Private kernels of the G.729 pitch stages (ITU-T G.729 3.7, 3.8): the
// 1/3-sample interpolations (Interpol_3, Pred_lt_3), the Q12 convolution
// (Convolve), the normalised correlation of the closed-loop search
// (Norm_Corr), the backward-filtered target of Annex A (Cor_h_X), the pitch
// gain (G_pitch) and the search range of a subframe.
//
// Q formats: excitation, target and filtered vectors Q0; impulse response
// Q12; interpolation filters Q15; normalised correlations Q0 (16 bits);
// gains Q14.
#pragma once

#include "common/basic_op.h"
#include "common/fixed_math.h"
#include "g729/g729_pitch_tables.h"
#include "g729/pitch_simd.h"

ZEPS_BEGIN_VARIANT
namespace g729p {

inline constexpr int kSubfr = 40;        // L_SUBFR
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

/// Convolve: y = x * h over 40 samples, h in Q12, result L_shl(.,3) high part.
inline void convolve_q12_scalar(const Word16* x, const Word16* h, Word16* y) {
    for (int n = 0; n < kSubfr; ++n) {
        Word32 s = 0;
        for (int i = 0; i <= n; ++i) s = L_mac(s, x[i], h[n - i]);
        y[n] = extract_h(L_shl(s, 3));
    }
}

/// Saturating dot product of two 40-sample vectors (the reference loop of
/// L_mac), starting from `init`.
inline Word32 dot40(const Word16* x, const Word16* y, Word32 init, Flag& ovf) {
    Word32 s = init;
    for (int i = 0; i < kSubfr; ++i) s = L_mac(s, x[i], y[i], ovf);
    return s;
}
inline Word32 dot40(const Word16* x, const Word16* y) {
    Flag f = false;
    return dot40(x, y, 0, f);
}

/// Norm_Corr: corr[t] for t = t_min..t_max (corr indexed from t_min), the
/// correlation of the target with the past excitation filtered at lag t,
/// divided by the square root of its energy. exc points at the subframe.
inline void norm_corr_scalar(const Word16* exc, const Word16* xn, const Word16* h, Word16 t_min, Word16 t_max,
                      Word16* corr) {
    Word16 excf[kSubfr];
    int k = -t_min;
    convolve_q12_scalar(exc + k, h, excf);
    Word16 h_fac = 15 - 12;
    Word16 scaling = 0;
    if (dot40(excf, excf) > 67108864L) {  // energy above 2^26: scale by 1/4
        for (Word16& v : excf) v = shr(v, 2);
        h_fac = 15 - 12 - 2;
        scaling = 2;
    }
    for (int t = t_min; t <= t_max; ++t) {
        Word16 norm_h, norm_l, corr_h, corr_l;
        L_Extract(Inv_sqrt(dot40(excf, excf)), norm_h, norm_l);
        L_Extract(dot40(xn, excf), corr_h, corr_l);
        const Word32 s = Mpy_32(corr_h, corr_l, norm_h, norm_l);
        corr[t - t_min] = extract_h(L_shl(s, 16));
        if (t != t_max) {
            --k;
            const Word16 e = exc[k];
            for (int j = kSubfr - 1; j > 0; --j)
                excf[j] = add(extract_h(L_shl(L_mult(e, h[j]), h_fac)), excf[j - 1]);
            excf[0] = shr(e, scaling);
        }
    }
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


// ---- vectorised forms: identical results, the scalar loops as fallback ----

#if defined(__SSSE3__)
/// Pred_lt_3 as a 20-tap filter: out[j] = sum_m x0[j - 9 + m] w[m], taken
/// four outputs at a time. Four consecutive outputs never read each other
/// (lags are at least 18), so in-place lags below 40 stay exact. A block
/// whose samples exceed 18000 in magnitude could saturate (the taps sum to
/// at most 59398 in Q15) and runs the reference loop instead.
inline void pred_lt_3(Word16* exc, Word16 T0, Word16 frac) {
    const Word16* x0 = exc - T0;
    Word16 f = negate(frac);
    if (f < 0) {
        f = static_cast<Word16>(f + kPitchUpSamp);
        --x0;
    }
    alignas(16) Word16 w[24] = {};
    for (int i = 0; i < kPitchInter10; ++i) {
        w[9 - i] = inter_3l[f + kPitchUpSamp * i];
        w[10 + i] = inter_3l[kPitchUpSamp - f + kPitchUpSamp * i];
    }
    const __m128i round = _mm_set1_epi32(0x8000);
    for (int j = 0; j < kSubfr; j += 4) {
        const Word16* b = x0 + j - 9;
        if (any_abs_above(b, 24, 18000)) {  // b[0..22] carry the taps of the block
            for (int jj = j; jj < j + 4; ++jj) {
                const Word16* x1 = x0 + jj;
                Word32 s = 0;
                for (int i = 0; i < kPitchInter10; ++i) {
                    s = L_mac(s, x1[-i], w[9 - i]);
                    s = L_mac(s, x1[1 + i], w[10 + i]);
                }
                exc[jj] = round_fx(s);
            }
            continue;
        }
        __m128i s = dot4_lanes(w, b, b + 1, b + 2, b + 3, 24);
        s = _mm_srai_epi32(_mm_add_epi32(_mm_slli_epi32(s, 1), round), 16);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(exc + j), _mm_packs_epi32(s, s));
    }
}
#else
// Hosts without SSSE3: the scalar form (the same results).
inline void pred_lt_3(Word16* exc, Word16 T0, Word16 frac) { pred_lt_3_scalar(exc, T0, frac); }
#endif

/// Reversed, zero-padded impulse response for the convolution: y[n] is the
/// dot product of x[0..39] with hrev[39 - n ..].
struct HRev {
    alignas(16) Word16 v[88] = {};
    explicit HRev(const Word16* h) {
        for (int p = 0; p < kSubfr; ++p) v[p] = h[kSubfr - 1 - p];
    }
};

#if defined(__SSSE3__)
/// Convolve with a precomputed energy bound: exact in 32-bit lanes when
/// 4 ex eh <= MAX_32^2; y = extract_h(L_shl(2 s, 3)) = sat16(s >> 12).
inline void convolve_q12(const Word16* x, const Word16* h, const HRev& hr, std::int64_t eh, Word16* y) {
    if (!dot_is_safe(energy64(x, kSubfr), eh)) {
        convolve_q12_scalar(x, h, y);
        return;
    }
    for (int n = 0; n < kSubfr; n += 4) {
        const Word16* r = hr.v + kSubfr - 1 - n;
        __m128i s = dot4_lanes(x, r, r - 1, r - 2, r - 3, kSubfr);
        s = _mm_srai_epi32(s, 12);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(y + n), _mm_packs_epi32(s, s));
    }
}
#else
inline void convolve_q12(const Word16* x, const Word16* h, const HRev&, std::int64_t, Word16* y) {
    convolve_q12_scalar(x, h, y);
}
#endif
inline void convolve_q12(const Word16* x, const Word16* h, Word16* y) {
    const HRev hr(h);
    convolve_q12(x, h, hr, energy64(h, kSubfr), y);
}

/// Saturating doubled dot product of two 40-sample vectors whose sums of
/// squares are known, with the reference's overflow flag.
inline Word32 dot40_known(const Word16* x, const Word16* y, std::int64_t ex, std::int64_t ey, Word32 init, Flag& ovf) {
    if (dot_is_safe(ex, ey) && init == 0) return 2 * dot_lanes(x, y, kSubfr);
    return dot40(x, y, init, ovf);
}

/// Doubled energy 1 + 2 sum x^2 (init 1) or 2 sum x^2 (init 0) saturated as
/// the reference's chain of non-negative L_mac terms; ovf when it saturated.
inline Word32 energy40_sat(std::int64_t e, Word32 init, Flag& ovf) {
    const std::int64_t s = init + 2 * e;
    if (s > MAX_32) {
        ovf = true;
        return MAX_32;
    }
    return static_cast<Word32>(s);
}

#if defined(__SSSE3__)
/// Norm_Corr, vectorised: see norm_corr_scalar.
inline void norm_corr(const Word16* exc, const Word16* xn, const Word16* h, Word16 t_min, Word16 t_max,
                      Word16* corr) {
    alignas(16) Word16 hp[48] = {};
    alignas(16) Word16 excf[48] = {};
    for (int i = 0; i < kSubfr; ++i) hp[i] = h[i];
    const std::int64_t exn = energy64(xn, kSubfr);
    int k = -t_min;
    convolve_q12(exc + k, h, excf);
    int sh = 12;  // extract_h(L_shl(L_mult(e, h), h_fac)) = sat16(e h >> (15 - h_fac))
    Word16 scaling = 0;
    if (2 * energy64(excf, kSubfr) > 67108864L) {
        for (int i = 0; i < kSubfr; ++i) excf[i] = shr(excf[i], 2);
        sh = 14;
        scaling = 2;
    }
    const __m128i shift = _mm_cvtsi32_si128(sh);
    for (int t = t_min; t <= t_max; ++t) {
        Flag f = false;
        const std::int64_t ee = energy64(excf, kSubfr);
        Word16 norm_h, norm_l, corr_h, corr_l;
        L_Extract(Inv_sqrt(energy40_sat(ee, 0, f)), norm_h, norm_l);
        L_Extract(dot40_known(xn, excf, exn, ee, 0, f), corr_h, corr_l);
        corr[t - t_min] = extract_h(L_shl(Mpy_32(corr_h, corr_l, norm_h, norm_l), 16));
        if (t == t_max) break;
        --k;
        const Word16 e = exc[k];
        const __m128i ev = _mm_set1_epi16(e);
        alignas(16) Word16 old[48];
        for (int i = 0; i < 48; i += 8) _mm_store_si128(reinterpret_cast<__m128i*>(old + i), load8(excf + i));
        for (int j = 1; j < kSubfr; j += 8) {
            const __m128i hv = load8(hp + j);
            const __m128i lo = _mm_mullo_epi16(ev, hv), hi = _mm_mulhi_epi16(ev, hv);
            const __m128i p0 = _mm_sra_epi32(_mm_unpacklo_epi16(lo, hi), shift);
            const __m128i p1 = _mm_sra_epi32(_mm_unpackhi_epi16(lo, hi), shift);
            const __m128i v = _mm_adds_epi16(_mm_packs_epi32(p0, p1), load8(old + j - 1));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(excf + j), v);
        }
        excf[kSubfr] = 0;
        excf[0] = shr(e, scaling);
    }
}

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
    Word32 max = 0;
    for (int i = 0; i < kSubfr; ++i) {
        const Word32 a = L_abs(y32[i]);
        if (a > max) max = a;
    }
    Word16 j = norm_l(max);
    if (j > 16) j = 16;
    j = sub(18, j);
    for (int i = 0; i < kSubfr; ++i) d[i] = extract_l(L_shr(y32[i], j));
}
#else
inline void norm_corr(const Word16* exc, const Word16* xn, const Word16* h, Word16 t_min, Word16 t_max,
                      Word16* corr) {
    norm_corr_scalar(exc, xn, h, t_min, t_max, corr);
}
inline Word16 g_pitch(const Word16* xn, const Word16* y1) { return g_pitch_scalar(xn, y1); }
inline void cor_h_x(const Word16* h, const Word16* x, Word16* d) { cor_h_x_scalar(h, x, d); }
#endif

}  // namespace g729p
ZEPS_END_VARIANT
