/* SPDX-License-Identifier: BSD-3-Clause */
// Correlations of the GSM-AMR algebraic codebook searches (3GPP TS 26.073
// cor_h.c): the target/impulse-response correlation dn[] (cor_h_x2, Q0
// after the track-maximum normalisation) and the signed autocorrelation
// matrix rr[][] of the scaled impulse response (cor_h).
//
// The vector forms compute the reference's L_mac chains in 32-bit lanes,
// which is exact whenever no partial sum can saturate: cor_h proves it from
// the energy E of the scaled response (every partial sum of a lagged
// product chain is at most E by Cauchy-Schwarz, so 2 E + 2^15 <= MAX_32
// bounds every doubled sum and its rounding), cor_h_x2 from the energies of
// target and response. Otherwise the plain loops run. The *_scalar forms
// are the baseline the vector forms are tested against.
#pragma once

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <cstdint>

#include "amr/cb_search.h"
#include "common/fixed_math.h"

ZEPS_BEGIN_VARIANT
namespace amr_cb {

/// cor_h_x2 as the reference writes it.
inline void cor_h_x2_scalar(const Word16* h, const Word16* x, Word16* dn, Word16 sf, int nb_track, int step) {
    Word32 y32[kLCode];
    Word32 tot = 5;
    for (int k = 0; k < nb_track; k++) {
        Word32 max = 0;
        for (int i = k; i < kLCode; i += step) {
            Word32 s = 0;
            for (int j = i; j < kLCode; j++) s = L_mac(s, x[j], h[j - i]);
            y32[i] = s;
            s = L_abs(s);
            if (L_sub(s, max) > 0) max = s;
        }
        tot = L_add(tot, L_shr(max, 1));
    }
    const Word16 j = sub(norm_l(tot), sf);
    for (int i = 0; i < kLCode; i++) dn[i] = round_fx(L_shl(y32[i], j));
}

/// L_shl(v, n) for n >= 0: the exact shift saturated to 32 bits.
inline Word32 shl_sat(Word32 v, int n) {
    const std::int64_t w = static_cast<std::int64_t>(v) * (std::int64_t{1} << n);
    return w > MAX_32 ? MAX_32 : w < MIN_32 ? MIN_32 : static_cast<Word32>(w);
}

/// L_shl(v, n) for -32 <= n <= 31 without the reference's bit loop: a left
/// shift saturates exactly when the exact product leaves 32 bits.
inline Word32 shift_sat(Word32 v, int n) { return n >= 0 ? shl_sat(v, n) : L_shr(v, static_cast<Word16>(-n)); }

/// dn[i] = round(L_shl(y[i], n)) for the 40 correlations, -32 <= n <= 31.
inline void round_shifted_scalar(const Word32* y, int n, Word16* dn) {
    for (int i = 0; i < kLCode; i++) dn[i] = round_fx(shift_sat(y[i], n));
}

inline std::int64_t energy_scalar(const Word16* v) {
    std::int64_t e = 0;
    for (int i = 0; i < kLCode; i++) e += std::int32_t{v[i]} * v[i];
    return e;
}

#if defined(__SSSE3__)
inline __m128i load8(const Word16* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
#endif

/// Sum of the 40 squares: pmaddwd pairs (at most 2^31, so exact read as
/// unsigned) summed in 64-bit lanes.
inline std::int64_t energy(const Word16* v) {
#if defined(__SSSE3__)
    const __m128i zero = _mm_setzero_si128();
    __m128i acc = zero;
    for (int i = 0; i < kLCode; i += 8) {
        const __m128i p = _mm_madd_epi16(load8(v + i), load8(v + i));
        acc = _mm_add_epi64(acc, _mm_add_epi64(_mm_unpacklo_epi32(p, zero), _mm_unpackhi_epi32(p, zero)));
    }
    acc = _mm_add_epi64(acc, _mm_unpackhi_epi64(acc, acc));
    return _mm_cvtsi128_si64(acc);
#else
    return energy_scalar(v);
#endif
}

/// round_shifted_scalar four values at a time: the shift s = L_shl(y, n)
/// (a left shift saturated where shifting back does not return y, an
/// arithmetic right shift for n < 0), then round(s) = ((s >> 15) + 1) >> 1
/// packed with saturation (32768 only from s > MAX_32 - 2^15, where the
/// rounding add saturates to 32767).
inline void round_shifted(const Word32* y, int n, Word16* dn) {
#if defined(__SSSE3__)
    const __m128i left = _mm_cvtsi32_si128(n > 0 ? n : 0), right = _mm_cvtsi32_si128(n < 0 ? (n < -31 ? 31 : -n) : 0);
    const __m128i one = _mm_set1_epi32(1), top = _mm_set1_epi32(MAX_32);
    const auto shifted = [&](int i) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(y + i));
        const __m128i l = _mm_sll_epi32(v, left);
        const __m128i ok = _mm_cmpeq_epi32(_mm_sra_epi32(l, left), v);
        const __m128i sat = _mm_xor_si128(_mm_srai_epi32(v, 31), top);  // MAX_32 or MIN_32 by the sign
        const __m128i s = _mm_sra_epi32(_mm_or_si128(_mm_and_si128(ok, l), _mm_andnot_si128(ok, sat)), right);
        return _mm_srai_epi32(_mm_add_epi32(_mm_srai_epi32(s, 15), one), 1);
    };
    for (int i = 0; i < kLCode; i += 8)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dn + i), _mm_packs_epi32(shifted(i), shifted(i + 4)));
#else
    round_shifted_scalar(y, n, dn);
#endif
}

#if defined(__SSSE3__)

inline std::int32_t hsum32(__m128i v) {
    v = _mm_add_epi32(v, _mm_shuffle_epi32(v, _MM_SHUFFLE(1, 0, 3, 2)));
    v = _mm_add_epi32(v, _mm_shuffle_epi32(v, _MM_SHUFFLE(2, 3, 0, 1)));
    return _mm_cvtsi128_si32(v);
}
#endif

/// cor_h_x2: when 4 Ex Eh <= MAX_32^2 no doubled partial sum can saturate
/// and each y32[i] is a plain dot product of x[i..39] with h[0..39-i].
inline void cor_h_x2(const Word16* h, const Word16* x, Word16* dn, Word16 sf, int nb_track, int step) {
#if defined(__SSSE3__)
    const std::int64_t ex = energy(x), eh = energy(h);
    const unsigned __int128 lim = static_cast<unsigned __int128>(MAX_32) * static_cast<unsigned __int128>(MAX_32);
    if (static_cast<unsigned __int128>(ex) * static_cast<unsigned __int128>(eh) * 4u > lim) {
        cor_h_x2_scalar(h, x, dn, sf, nb_track, step);
        return;
    }
    alignas(16) Word16 xp[2 * kLCode] = {};
    for (int i = 0; i < kLCode; i++) xp[i] = x[i];
    Word32 y32[kLCode];
    for (int i = 0; i < kLCode; i++) {
        const Word16* xi = xp + i;
        __m128i acc = _mm_madd_epi16(load8(xi), load8(h));
        // blocks from m = 40 - i on read only the zeros past x[39]
        for (int m = 8; m < kLCode - i; m += 8) acc = _mm_add_epi32(acc, _mm_madd_epi16(load8(xi + m), load8(h + m)));
        y32[i] = 2 * hsum32(acc);
    }
    Word32 tot = 5;
    for (int k = 0; k < nb_track; k++) {
        Word32 max = 0;
        for (int i = k; i < kLCode; i += step) {
            const Word32 s = L_abs(y32[i]);
            if (s > max) max = s;
        }
        tot = L_add(tot, L_shr(max, 1));
    }
    const Word16 j = sub(norm_l(tot), sf);
    round_shifted(y32, j, dn);
#else
    cor_h_x2_scalar(h, x, dn, sf, nb_track, step);
#endif
}

/// The impulse response scaled for maximum precision (cor_h): h/2 when its
/// energy saturates, else h * 0.99 / sqrt(energy).
inline void scale_response_scalar(const Word16* h, Word16* h2) {
    Word32 s = 2;
    for (int i = 0; i < kLCode; i++) s = L_mac(s, h[i], h[i]);
    if (sub(extract_h(s), 32767) == 0) {
        for (int i = 0; i < kLCode; i++) h2[i] = shr(h[i], 1);
    } else {
        s = L_shr(s, 1);
        Word16 k = extract_h(L_shl(Inv_sqrt(s), 7));
        k = mult(k, 32440);  // 0.99 k
        for (int i = 0; i < kLCode; i++) h2[i] = round_fx(shl_sat(L_mult(h[i], k), 9));
    }
}

/// scale_response_scalar without its chains. The energy chain
/// L_mac(2, h, h) only adds terms >= 0, so it is min(2 + 2 sum h^2, MAX_32)
/// (the one saturating L_mult, 2^31 - 1, saturates the sum as well). With
/// k >= 0 (a 0.99 fraction of a positive value) L_mult(h, k) = 2 h k is
/// exact, and round(L_shl(2 h k, 9)) is (h k + 32) >> 6 clamped to 16 bits:
/// the shift saturates exactly when that quotient leaves 16 bits, and the
/// rounding add only where it is 32768.
inline void scale_response(const Word16* h, Word16* h2) {
#if defined(__SSSE3__)
    const std::int64_t e = 2 + 2 * energy(h);
    const Word32 s = e > MAX_32 ? MAX_32 : static_cast<Word32>(e);
    if (extract_h(s) == 32767) {
        for (int i = 0; i < kLCode; i++) h2[i] = shr(h[i], 1);
        return;
    }
    const Word16 k = mult(extract_h(L_shl(Inv_sqrt(L_shr(s, 1)), 7)), 32440);  // 0.99 k
    const __m128i kv = _mm_set1_epi16(k), bias = _mm_set1_epi32(32);
    for (int i = 0; i < kLCode; i += 8) {
        const __m128i v = load8(h + i);
        const __m128i pl = _mm_mullo_epi16(v, kv), ph = _mm_mulhi_epi16(v, kv);
        const __m128i lo = _mm_srai_epi32(_mm_add_epi32(_mm_unpacklo_epi16(pl, ph), bias), 6);
        const __m128i hi = _mm_srai_epi32(_mm_add_epi32(_mm_unpackhi_epi16(pl, ph), bias), 6);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(h2 + i), _mm_packs_epi32(lo, hi));
    }
#else
    scale_response_scalar(h, h2);
#endif
}

/// cor_h as the reference writes it.
inline void cor_h_scalar(const Word16* h, const Word16* sign, CorrMatrix& rr) {
    Word16 h2[kLCode];
    scale_response_scalar(h, h2);
    Word32 s = 0;
    for (int k = 0, i = kLCode - 1; k < kLCode; k++, i--) {
        s = L_mac(s, h2[k], h2[k]);
        rr[i][i] = round_fx(s);
    }
    for (int dec = 1; dec < kLCode; dec++) {
        s = 0;
        int j = kLCode - 1;
        int i = j - dec;
        for (int k = 0; k < kLCode - dec; k++, i--, j--) {
            s = L_mac(s, h2[k], h2[k + dec]);
            rr[j][i] = mult(round_fx(s), mult(sign[i], sign[j]));
            rr[i][j] = rr[j][i];
        }
    }
}

#if defined(__SSSE3__)
/// mult() of 8 lanes whose product never saturates (no -32768 * -32768).
inline __m128i mult8(__m128i a, __m128i b) {
    const __m128i hi = _mm_mulhi_epi16(a, b);
    const __m128i lo = _mm_mullo_epi16(a, b);
    return _mm_or_si128(_mm_slli_epi16(hi, 1), _mm_srli_epi16(lo, 15));
}

/// round() of 8 doubled sums S held undoubled with a bias, S + 2^14, in two
/// 32-bit vectors (no saturation possible): (2 S + 2^15) >> 16 = (S + 2^14) >> 15.
inline __m128i round8_biased(__m128i lo, __m128i hi) {
    return _mm_packs_epi32(_mm_srai_epi32(lo, 15), _mm_srai_epi32(hi, 15));
}

/// t[r][c] = a[c][r] for an 8x8 block of 16-bit values.
inline void transpose8(const __m128i* a, __m128i* t) {
    __m128i b[8], c[8];
    for (int r = 0; r < 4; r++) {
        b[2 * r] = _mm_unpacklo_epi16(a[2 * r], a[2 * r + 1]);
        b[2 * r + 1] = _mm_unpackhi_epi16(a[2 * r], a[2 * r + 1]);
    }
    c[0] = _mm_unpacklo_epi32(b[0], b[2]);
    c[1] = _mm_unpackhi_epi32(b[0], b[2]);
    c[2] = _mm_unpacklo_epi32(b[1], b[3]);
    c[3] = _mm_unpackhi_epi32(b[1], b[3]);
    c[4] = _mm_unpacklo_epi32(b[4], b[6]);
    c[5] = _mm_unpackhi_epi32(b[4], b[6]);
    c[6] = _mm_unpacklo_epi32(b[5], b[7]);
    c[7] = _mm_unpackhi_epi32(b[5], b[7]);
    for (int r = 0; r < 4; r++) {
        t[2 * r] = _mm_unpacklo_epi64(c[r], c[r + 4]);
        t[2 * r + 1] = _mm_unpackhi_epi64(c[r], c[r + 4]);
    }
}

/// The upper triangle of rr[][] from its lower one: 8x8 blocks transposed;
/// in the diagonal blocks, row r keeps its columns up to r and takes the
/// others from the transpose (lanes beyond the lower triangle are read,
/// never kept).
inline void mirror_lower(CorrMatrix& rr) {
    const __m128i lane = _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7);
    for (int bj = 0; bj < 5; bj++) {
        __m128i a[8], t[8];
        for (int bi = 0; bi < bj; bi++) {
            for (int r = 0; r < 8; r++) a[r] = load8(&rr[8 * bj + r][8 * bi]);
            transpose8(a, t);
            for (int r = 0; r < 8; r++) _mm_storeu_si128(reinterpret_cast<__m128i*>(&rr[8 * bi + r][8 * bj]), t[r]);
        }
        for (int r = 0; r < 8; r++) a[r] = load8(&rr[8 * bj + r][8 * bj]);
        transpose8(a, t);
        for (int r = 0; r < 8; r++) {
            const __m128i keep = _mm_cmpgt_epi16(_mm_set1_epi16(static_cast<short>(r + 1)), lane);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(&rr[8 * bj + r][8 * bj]),
                             _mm_or_si128(_mm_and_si128(keep, a[r]), _mm_andnot_si128(keep, t[r])));
        }
    }
}
#endif

/// cor_h. Diagonal lag d of the reference, P_d[n] = sum_{m<=n} h2[m] h2[m+d],
/// lands in row j = 39 - n at column j - d: for a block of 8 lags the
/// running sums at step n are one reversed contiguous store into row j,
/// signed there by mult(., mult(sign[i], sign[j])) in lanes (no -32768 *
/// -32768 for mult8: the searches' signs are +-32767, and a rounded sum is
/// above -32768 as 2 |sum| <= MAX_32 - 2^15). Lanes of lags beyond the row
/// fall on columns below 0, the last ones of row j - 1, above its diagonal,
/// which mirror_lower rewrites.
inline void cor_h(const Word16* h, const Word16* sign, CorrMatrix& rr) {
#if defined(__SSSE3__)
    alignas(16) Word16 h2[kLCode + 8 * 6] = {};
    scale_response(h, h2);
    if (2 * energy(h2) + 0x8000 > MAX_32) {
        cor_h_scalar(h, sign, rr);
        return;
    }
    // rr[j][j] in the matrix read as one run of 40 x 40 values (columns below 0 of row j are row j - 1's last)
    Word16* const flat = &rr[0][0];
    const auto row_end = [flat](int j) { return flat + (kLCode + 1) * j; };
    alignas(16) Word16 sp[8 + kLCode] = {};  // sign[] with 8 zeros before it
    for (int i = 0; i < kLCode; i++) sp[8 + i] = sign[i];
    // mult(sign[i], sign[j]) for the rows j signed +-32767 (every row of the
    // searches), formed once: mult8 is exact as neither factor is -32768
    alignas(16) Word16 by_plus[8 + kLCode] = {}, by_minus[8 + kLCode] = {};
    for (int i = 0; i < 8 + kLCode; i += 8) {
        _mm_store_si128(reinterpret_cast<__m128i*>(by_plus + i), mult8(load8(sp + i), _mm_set1_epi16(32767)));
        _mm_store_si128(reinterpret_cast<__m128i*>(by_minus + i), mult8(load8(sp + i), _mm_set1_epi16(-32767)));
    }
    __m128i acc[5][2];  // running sums of 8 lags each, biased for round8_biased
    for (auto& a : acc) a[0] = a[1] = _mm_set1_epi32(0x4000);
    const __m128i rev = _mm_setr_epi8(14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1);
    for (int n = 0; n < kLCode; n++) {
        const int j = kLCode - 1 - n;
        const __m128i hn = _mm_set1_epi16(h2[n]);
        const __m128i sj = _mm_set1_epi16(sign[j]);
        const Word16* products = sign[j] == 32767 ? by_plus : sign[j] == -32767 ? by_minus : nullptr;
        const int blocks = j / 8 + 1;  // lags 0..j
        for (int b = 0; b < blocks; b++) {
            const __m128i v = load8(h2 + n + 8 * b);
            const __m128i plo = _mm_mullo_epi16(hn, v), phi = _mm_mulhi_epi16(hn, v);
            acc[b][0] = _mm_add_epi32(acc[b][0], _mm_unpacklo_epi16(plo, phi));
            acc[b][1] = _mm_add_epi32(acc[b][1], _mm_unpackhi_epi16(plo, phi));
            // lanes: lag 8b + l at column j - 8b - l; reversed, columns j - 8b - 7 .. j - 8b
            const __m128i r = _mm_shuffle_epi8(round8_biased(acc[b][0], acc[b][1]), rev);
            const int c0 = 8 + j - 8 * b - 7;  // columns j - 8b - 7 .. j - 8b
            const __m128i v_signed = mult8(r, products != nullptr ? load8(products + c0) : mult8(load8(sp + c0), sj));
            if (b > 0) {
                _mm_storeu_si128(reinterpret_cast<__m128i*>(row_end(j) - 8 * b - 7), v_signed);
            } else if (j > 0) {  // the diagonal (lane 7) unsigned
                const __m128i diag = _mm_setr_epi16(0, 0, 0, 0, 0, 0, 0, -1);
                _mm_storeu_si128(reinterpret_cast<__m128i*>(row_end(j) - 7),
                                 _mm_or_si128(_mm_and_si128(diag, r), _mm_andnot_si128(diag, v_signed)));
            } else {
                rr[0][0] = static_cast<Word16>(_mm_extract_epi16(r, 7));  // no row before row 0
            }
        }
    }
    mirror_lower(rr);
#else
    cor_h_scalar(h, sign, rr);
#endif
}

}  // namespace amr_cb
ZEPS_END_VARIANT
