/* SPDX-License-Identifier: BSD-3-Clause */
// Pulse sign preselection of the GSM-AMR algebraic codebook searches
// (3GPP TS 26.073 set_sign.c: set_sign, set_sign12k2). Signs are +-32767,
// correlations Q0 as cor_h_x scales them. The lane forms of the sign terms
// are tested against the plain loops (the *_scalar forms).
#pragma once

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include "amr/cb_correlation.h"
#include "amr/cb_search.h"
#include "common/fixed_math.h"

ZEPS_BEGIN_VARIANT
namespace amr_cb {

/// set_sign: the sign of each dn[] (dn[] made absolute), and in dn2[] the
/// 8 - n smallest of each of the 5 tracks marked -1 (the n largest kept).
inline void set_sign(Word16* dn, Word16* sign, Word16* dn2, int n) {
    for (int i = 0; i < kLCode; i++) {
        Word16 val = dn[i];
        if (val >= 0) {
            sign[i] = 32767;
        } else {
            sign[i] = -32767;
            val = negate(val);
        }
        dn[i] = val;
        dn2[i] = val;
    }
    for (int i = 0; i < 5; i++) {
        for (int k = 0; k < 8 - n; k++) {
            Word16 min = 0x7fff;
            int pos = 0;
            for (int j = i; j < kLCode; j += 5) {
                if (dn2[j] >= 0 && dn2[j] < min) {
                    min = dn2[j];
                    pos = j;
                }
            }
            dn2[pos] = -1;
        }
    }
}

/// The chain s = L_mac(s, v[i], v[i]) over the 40 values from 256.
inline Word32 energy_256_scalar(const Word16* v) {
    Word32 s = 256;
    for (int i = 0; i < kLCode; i++) s = L_mac(s, v[i], v[i]);
    return s;
}

/// energy_256_scalar without its chain: every term is >= 0, so the chain is
/// min(256 + 2 sum v^2, MAX_32) (the one saturating L_mult, 2^31 - 1,
/// saturates the sum as well).
inline Word32 energy_256(const Word16* v) {
    const std::int64_t e = 256 + 2 * energy(v);
    return e > MAX_32 ? MAX_32 : static_cast<Word32>(e);
}

/// The sign of each position from cor = round(L_shl(k_cn cn + k_dn dn, 10))
/// (the L_mult/L_mac pair), en[] = |cor| and dn[] signed alike (saturating
/// negations), as set_sign12k2 writes it.
inline void sign_terms_scalar(Word16 k_cn, Word16 k_dn, const Word16* cn, Word16* dn, Word16* sign, Word16* en) {
    for (int i = 0; i < kLCode; i++) {
        Word16 val = dn[i];
        Word16 cor = round_fx(L_shl(L_mac(L_mult(k_cn, cn[i]), k_dn, val), 10));
        if (cor >= 0) {
            sign[i] = 32767;
        } else {
            sign[i] = -32767;
            cor = negate(cor);
            val = negate(val);
        }
        dn[i] = val;
        en[i] = cor;
    }
}

/// sign_terms_scalar eight positions at a time for k_cn, k_dn >= 0: the
/// sum S = k_cn cn + k_dn dn is exact in 32 bits (one pmaddwd; |S| < 2^31
/// with no -32768 factor among the k), and cor is (S + 16) >> 5 clamped to
/// 16 bits: L_shl(2 S, 10) = S 2^11 saturates exactly where that quotient
/// leaves 16 bits (S >= 2^20 or S < -2^20; a saturated 2 S saturates the
/// shift alike), and the rounding add only where the quotient is 32768.
inline void sign_terms(Word16 k_cn, Word16 k_dn, const Word16* cn, Word16* dn, Word16* sign, Word16* en) {
#if defined(__SSSE3__)
    if (k_cn < 0 || k_dn < 0) {
        sign_terms_scalar(k_cn, k_dn, cn, dn, sign, en);
        return;
    }
    const __m128i k = _mm_set1_epi32(static_cast<std::int32_t>(static_cast<std::uint16_t>(k_cn)) |
                                     static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint16_t>(k_dn)) << 16));
    const __m128i bias = _mm_set1_epi32(16), zero = _mm_setzero_si128(), plus = _mm_set1_epi16(32767);
    for (int i = 0; i < kLCode; i += 8) {
        const __m128i c = load8(cn + i), d = load8(dn + i);
        const __m128i lo = _mm_srai_epi32(_mm_add_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(c, d), k), bias), 5);
        const __m128i hi = _mm_srai_epi32(_mm_add_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(c, d), k), bias), 5);
        const __m128i cor = _mm_packs_epi32(lo, hi);
        const __m128i neg = _mm_cmpgt_epi16(zero, cor);
        const auto pick = [neg](__m128i keep, __m128i negated) {
            return _mm_or_si128(_mm_andnot_si128(neg, keep), _mm_and_si128(neg, negated));
        };
        _mm_storeu_si128(reinterpret_cast<__m128i*>(sign + i), pick(plus, _mm_sub_epi16(zero, plus)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dn + i), pick(d, _mm_subs_epi16(zero, d)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(en + i), pick(cor, _mm_subs_epi16(zero, cor)));
    }
#else
    sign_terms_scalar(k_cn, k_dn, cn, dn, sign, en);
#endif
}

/// set_sign12k2: signs from the normalised sum of the target correlation and
/// the LTP residual, the position of the largest such sum per track
/// (pos_max) and the track order of the pulses starting at the best track
/// (ipos[0..2 nb_track - 1]).
inline void set_sign12k2(Word16* dn, const Word16* cn, Word16* sign, Word16* pos_max, int nb_track, Word16* ipos,
                         int step) {
    const Word16 k_cn = extract_h(L_shl(Inv_sqrt(energy_256(cn)), 5));
    const Word16 k_dn = extract_h(L_shl(Inv_sqrt(energy_256(dn)), 5));
    Word16 en[kLCode];
    sign_terms(k_cn, k_dn, cn, dn, sign, en);
    Word16 max_of_all = -1;
    int pos = 0;
    ipos[0] = 0;  // the first track always wins (every en[] >= 0): only keeps the compiler informed
    for (int i = 0; i < nb_track; i++) {
        Word16 max = -1;
        for (int j = i; j < kLCode; j += step) {
            if (sub(en[j], max) > 0) {
                max = en[j];
                pos = j;
            }
        }
        pos_max[i] = static_cast<Word16>(pos);
        if (sub(max, max_of_all) > 0) {
            max_of_all = max;
            ipos[0] = static_cast<Word16>(i);
        }
    }
    Word16 p = ipos[0];
    ipos[nb_track] = p;
    for (int i = 1; i < nb_track; i++) {
        p = static_cast<Word16>(p + 1);
        if (p >= nb_track) p = 0;
        ipos[i] = p;
        ipos[i + nb_track] = p;
    }
}

}  // namespace amr_cb
ZEPS_END_VARIANT
