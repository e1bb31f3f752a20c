/* SPDX-License-Identifier: BSD-3-Clause */
// Normalised correlation of the closed-loop pitch search, shared by the
// G.729 and GSM-AMR encoders (Norm_Corr of ITU-T G.729 3.7 and of 3GPP TS
// 26.073 are the same routine to the bit for 40-sample subframes), with the
// Q12 convolution (Convolve) and the saturating 40-sample dot products it
// rests on.
//
// Q formats: excitation, target and filtered vectors Q0; impulse response
// Q12; normalised correlations Q0 (16 bits).
#pragma once

#include <algorithm>
#include <cstdint>

#include "common/basic_op.h"
#include "common/fixed_math.h"
#include "common/pitch_simd.h"

ZEPS_BEGIN_VARIANT
namespace g729p {

inline constexpr int kSubfr = 40;        // L_SUBFR

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

/// Inv_sqrt of a positive value without the saturating operators: the
/// normalising shift cannot saturate, the interpolation stays between two
/// positive table values and the final shift is a right shift.
inline Word32 inv_sqrt_pos(Word32 x) {
    const int n = norm_l(x);
    std::int32_t v = static_cast<std::int32_t>(static_cast<std::uint32_t>(x) << n);
    const int e = 30 - n;
    if ((e & 1) == 0) v >>= 1;
    v >>= 9;
    const int i = (v >> 16) - 16;
    const std::int32_t a = (v >> 1) & 0x7fff;
    const std::int32_t y = (std::int32_t{tabsqr[i]} << 16) - 2 * (std::int32_t{tabsqr[i]} - tabsqr[i + 1]) * a;
    return y >> ((e >> 1) + 1);
}

/// extract_h(L_shl(Mpy_32(corr, Inv_sqrt(energy)), 16)): the normalised
/// correlation of one lag. The inverse root is at most 0x3fffffff, so its
/// high part is below 2^14 and no partial sum of Mpy_32 can saturate; the
/// shift by 16 followed by extract_h is a clamp to 16 bits.
inline Word16 normalised_corr(Word32 corr, Word32 energy) {
    const Word32 r = energy <= 0 ? 0x3fffffff : inv_sqrt_pos(energy);
    const std::int32_t rh = r >> 16, rl = (r >> 1) - (rh << 15);
    const std::int32_t ch = corr >> 16, cl = (corr >> 1) - (ch << 15);
    const std::int32_t m = 2 * (ch * rh + ((ch * rl) >> 15) + ((cl * rh) >> 15));
    return static_cast<Word16>(std::clamp<std::int32_t>(m, -32768, 32767));
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
        corr[t - t_min] = normalised_corr(dot40_known(xn, excf, exn, ee, 0, f), energy40_sat(ee, 0, f));
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
#else
inline void norm_corr(const Word16* exc, const Word16* xn, const Word16* h, Word16 t_min, Word16 t_max,
                      Word16* corr) {
    norm_corr_scalar(exc, xn, h, t_min, t_max, corr);
}
#endif

}  // namespace g729p
ZEPS_END_VARIANT
