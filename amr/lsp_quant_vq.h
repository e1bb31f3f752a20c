/* SPDX-License-Identifier: BSD-3-Clause */
// Codebook searches of the GSM-AMR LSP quantisers (3GPP TS 26.073
// q_plsf_3.c Vq_subvec3/Vq_subvec4, q_plsf_5.c Vq_subvec/Vq_subvec_s).
//
// The reference scores a row by dist = sum of L_mac(temp, temp) with
// temp = mult(wf, sub(r, d)) (residual r and row d in the LSF domain, weights
// wf Q13) and keeps the first row with the smallest dist, dist_min starting
// at MAX_32. Every term 2 temp^2 is >= 0, so the saturating sum equals
// min(2 S, MAX_32) with S = sum of temp^2 computed exactly, and
// "dist < dist_min" is "S < S_min" with S_min starting at 2^30. The searches
// below score rows by S in 32-bit unsigned arithmetic (4 terms of at most
// 32767^2 stay below 2^32), with SSSE3 or in plain scalar code; the *_ref
// search keeps the reference's operators. Tests hold all three equal.
#pragma once

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <bit>
#include <cstdint>

#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT
namespace amr_dtx {

/// mult(wf, x) for any 16-bit pair, exact: (wf * x) >> 15, saturated.
inline std::int32_t vq_mult(std::int32_t wf, std::int32_t x) {
    const std::int32_t t = (wf * x) >> 15;
    return t > 32767 ? 32767 : t;
}

/// sub(r, d) (sign = +1) or add(r, d) (sign = -1), saturated to 16 bits.
inline std::int32_t vq_diff(std::int32_t r, std::int32_t d, int sign) {
    const std::int32_t x = sign > 0 ? r - d : r + d;
    return x > 32767 ? 32767 : (x < -32768 ? -32768 : x);
}

/// Half the reference distance of one row, before saturation.
template <int N>
inline std::uint32_t vq_half_distance(const Word16* r, const Word16* row, const Word16* wf, int sign) {
    std::uint32_t s = 0;
    for (int k = 0; k < N; k++) {
        const std::int32_t t = vq_mult(wf[k], vq_diff(r[k], row[k], sign));
        s += static_cast<std::uint32_t>(t * t);
    }
    return s;
}

/// Reference distance of one row with the standard's operators.
template <int N>
inline Word32 vq_distance_ref(const Word16* r, const Word16* row, const Word16* wf, int sign) {
    Word32 dist = 0;
    for (int k = 0; k < N; k++) {
        const Word16 temp = mult(wf[k], sign > 0 ? sub(r[k], row[k]) : add(r[k], row[k]));
        dist = L_mac(dist, temp, temp);
    }
    return dist;
}

/// First smallest score of n candidates (the reference keeps the first row
/// on ties); returns 0 when none is below the saturated distance.
inline int vq_first_min(const std::uint32_t* s, int n) {
    std::uint32_t s_min = 0x40000000u;
    int best = 0;
    for (int i = 0; i < n; i++) {
        if (s[i] < s_min) {  // NOLINT(clang-analyzer-core.UndefinedBinaryOperatorResult): scores fill s[0..n)
            s_min = s[i];
            best = i;
        }
    }
    return best;
}

#if defined(__SSSE3__)
/// The running minimum m (biased by 2^31 so that the signed compare orders
/// unsigned scores) lowered by the scores s[0 .. n - n % 4).
inline __m128i vq_min4(const std::uint32_t* s, int n, __m128i m) {
    const __m128i bias = _mm_set1_epi32(static_cast<int>(0x80000000u));
    for (int i = 0; i + 4 <= n; i += 4) {
        const __m128i v = _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i)), bias);
        const __m128i gt = _mm_cmpgt_epi32(m, v);
        m = _mm_or_si128(_mm_and_si128(gt, v), _mm_andnot_si128(gt, m));
    }
    return m;
}

/// The smallest of the scores below 2^30 (2^30 when none): vq_min4's lanes and the tail.
inline std::uint32_t vq_min(const std::uint32_t* s, int n, __m128i m) {
    alignas(16) std::uint32_t l[4] = {};
    _mm_store_si128(reinterpret_cast<__m128i*>(l), _mm_xor_si128(m, _mm_set1_epi32(static_cast<int>(0x80000000u))));
    std::uint32_t v = 0x40000000u;
    for (const std::uint32_t x : l) v = x < v ? x : v;
    for (int i = n - n % 4; i < n; i++) v = s[i] < v ? s[i] : v;
    return v;
}

/// Lanes of s[i..i+3] equal to v, one bit each.
inline int vq_equal4(const std::uint32_t* s, int i, std::uint32_t v) {
    const __m128i e = _mm_cmpeq_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i)),
                                      _mm_set1_epi32(static_cast<int>(v)));
    return _mm_movemask_ps(_mm_castsi128_ps(e));
}

/// vq_first_min in two passes: the minimum in lanes, then its first position.
inline int vq_first_min_lanes(const std::uint32_t* s, int n) {
    const std::uint32_t v = vq_min(s, n, vq_min4(s, n, _mm_set1_epi32(static_cast<int>(0x40000000u ^ 0x80000000u))));
    if (v >= 0x40000000u) return 0;
    int i = 0;
    for (; i + 4 <= n; i += 4)
        if (const int m = vq_equal4(s, i, v)) return i + std::countr_zero(static_cast<unsigned>(m));
    for (; i < n; i++)
        if (s[i] == v) return i;
    return 0;
}

/// vq_first_min over the candidates pos[0], neg[0], pos[1], neg[1], ...
/// without interleaving them: 2 i for pos[i], 2 i + 1 for neg[i].
inline int vq_first_min_pairs_lanes(const std::uint32_t* pos, const std::uint32_t* neg, int n) {
    const __m128i start = _mm_set1_epi32(static_cast<int>(0x40000000u ^ 0x80000000u));
    const std::uint32_t vp = vq_min(pos, n, vq_min4(pos, n, start)), vn = vq_min(neg, n, vq_min4(neg, n, start));
    const std::uint32_t v = vp < vn ? vp : vn;
    if (v >= 0x40000000u) return 0;
    int i = 0;
    for (; i + 4 <= n; i += 4) {
        const int mp = vq_equal4(pos, i, v), mn = vq_equal4(neg, i, v);
        if ((mp | mn) != 0) {
            const int j = i + std::countr_zero(static_cast<unsigned>(mp | mn));
            return pos[j] == v ? 2 * j : 2 * j + 1;
        }
    }
    for (; i < n; i++) {
        if (pos[i] == v) return 2 * i;
        if (neg[i] == v) return 2 * i + 1;
    }
    return 0;
}
#endif

/// Scores of `count` consecutive N-wide rows, plain scalar code.
template <int N>
inline void vq_scores_scalar(const Word16* r, const Word16* rows, const Word16* wf, int count, int sign,
                             std::uint32_t* s) {
    for (int i = 0; i < count; i++) s[i] = vq_half_distance<N>(r, rows + i * N, wf, sign);
}

#if defined(__SSSE3__)
/// temp = mult(wf, sub(r, x)) (sign > 0) or mult(wf, add(r, x)) in 8 lanes:
/// the low 16 bits of (wf * d) >> 15, exact whenever wf != -32768 (the
/// weights of Lsf_wt lie in -32376..32767).
inline __m128i vq_temp8(__m128i r, __m128i w, __m128i x, int sign) {
    const __m128i d = sign > 0 ? _mm_subs_epi16(r, x) : _mm_adds_epi16(r, x);
    const __m128i hi = _mm_mulhi_epi16(w, d), lo = _mm_mullo_epi16(w, d);
    return _mm_or_si128(_mm_slli_epi16(hi, 1), _mm_srli_epi16(lo, 15));
}

/// pshufb control taking, for lane j, value k of 3-wide row j of eight
/// rows held in three registers, where it lies in register m (zero elsewhere).
inline __m128i column3_mask(int k, int m) {
    alignas(16) std::int8_t b[16] = {};
    for (int j = 0; j < 8; j++) {
        const int e = 3 * j + k;
        const bool in = e / 8 == m;
        b[2 * j] = static_cast<std::int8_t>(in ? 2 * (e % 8) : -128);
        b[2 * j + 1] = static_cast<std::int8_t>(in ? 2 * (e % 8) + 1 : -128);
    }
    return _mm_load_si128(reinterpret_cast<const __m128i*>(b));
}

/// Scores of `count` consecutive rows, SSSE3: 4-wide rows two to a
/// register (pmaddwd pairs the squares, phaddd completes each row), 3-wide
/// rows eight to three registers split into their columns (the sum of the
/// three squares is below 2^32, so pmaddwd's wrap of 2 * 32768^2 is the
/// unsigned value); the rest in scalar code. Same results as
/// vq_scores_scalar for weights above -32768.
template <int N>
inline void vq_scores(const Word16* r, const Word16* rows, const Word16* wf, int count, int sign, std::uint32_t* s) {
    static_assert(N == 3 || N == 4);
    int i = 0;
    if constexpr (N == 4) {
        const __m128i rr = _mm_setr_epi16(r[0], r[1], r[2], r[3], r[0], r[1], r[2], r[3]);
        const __m128i ww = _mm_setr_epi16(wf[0], wf[1], wf[2], wf[3], wf[0], wf[1], wf[2], wf[3]);
        for (; i + 4 <= count; i += 4) {
            const auto* p = reinterpret_cast<const __m128i*>(rows + 4 * i);
            const __m128i ta = vq_temp8(rr, ww, _mm_loadu_si128(p), sign);
            const __m128i tb = vq_temp8(rr, ww, _mm_loadu_si128(p + 1), sign);
            const __m128i sums = _mm_hadd_epi32(_mm_madd_epi16(ta, ta), _mm_madd_epi16(tb, tb));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(s + i), sums);
        }
    } else {
        // Eight rows are three registers; pshufb splits them into the rows'
        // first, second and third values (cols[k] lane j = rows[3 j + k]).
        __m128i mask[3][3], rk[3], wk[3];
        for (int k = 0; k < 3; k++) {
            rk[k] = _mm_set1_epi16(r[k]);
            wk[k] = _mm_set1_epi16(wf[k]);
            for (int m = 0; m < 3; m++) mask[k][m] = column3_mask(k, m);
        }
        const __m128i zero = _mm_setzero_si128();
        for (; i + 8 <= count; i += 8) {
            const auto* p = reinterpret_cast<const __m128i*>(rows + 3 * i);
            const __m128i v[3] = {_mm_loadu_si128(p), _mm_loadu_si128(p + 1), _mm_loadu_si128(p + 2)};
            __m128i t[3];
            for (int k = 0; k < 3; k++) {
                const __m128i col = _mm_or_si128(
                    _mm_or_si128(_mm_shuffle_epi8(v[0], mask[k][0]), _mm_shuffle_epi8(v[1], mask[k][1])),
                    _mm_shuffle_epi8(v[2], mask[k][2]));
                t[k] = vq_temp8(rk[k], wk[k], col, sign);
            }
            // t0^2 + t1^2 by one pmaddwd (modulo 2^32, as the unsigned sum), t2^2 with a zero partner
            const __m128i lo = _mm_add_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(t[0], t[1]), _mm_unpacklo_epi16(t[0], t[1])),
                                             _mm_madd_epi16(_mm_unpacklo_epi16(t[2], zero), _mm_unpacklo_epi16(t[2], zero)));
            const __m128i hi = _mm_add_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(t[0], t[1]), _mm_unpackhi_epi16(t[0], t[1])),
                                             _mm_madd_epi16(_mm_unpackhi_epi16(t[2], zero), _mm_unpackhi_epi16(t[2], zero)));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(s + i), lo);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(s + i + 4), hi);
        }
    }
    vq_scores_scalar<N>(r, rows + N * i, wf, count - i, sign, s + i);
}
#else
/// Hosts without SSSE3: the scalar scores (the same results).
template <int N>
inline void vq_scores(const Word16* r, const Word16* rows, const Word16* wf, int count, int sign, std::uint32_t* s) {
    vq_scores_scalar<N>(r, rows, wf, count, sign, s);
}
#endif

/// Best row of an N-wide codebook of `size` rows, `stride` rows apart (the
/// reference's use_half reads every second row). With signed_rows each row
/// is also tried negated, right after the row itself, and the result is
/// 2 * row + sign. r and wf hold the N values in the codebook's order.
/// `simd` selects vq_scores or the plain scalar scores (same results).
template <int N>
inline int vq_search(const Word16* r, const Word16* dico, const Word16* wf, int size, int stride, bool signed_rows,
                     bool simd = true) {
    constexpr int kMaxRows = 512;
    std::uint32_t s[2 * kMaxRows];
    const auto scores = simd ? vq_scores<N> : vq_scores_scalar<N>;
#if defined(__SSSE3__)
    if (simd) {
        if (signed_rows) {
            std::uint32_t s_neg[kMaxRows];
            vq_scores<N>(r, dico, wf, size, +1, s);
            vq_scores<N>(r, dico, wf, size, -1, s_neg);
            return vq_first_min_pairs_lanes(s, s_neg, size);
        }
        vq_scores<N>(r, dico, wf, size * stride, +1, s);
        for (int i = 1; i < size && stride > 1; i++) s[i] = s[i * stride];
        return vq_first_min_lanes(s, size);
    }
#endif
    if (signed_rows) {
        std::uint32_t s_neg[kMaxRows];
        scores(r, dico, wf, size, +1, s + size);
        scores(r, dico, wf, size, -1, s_neg);
        for (int i = 0; i < size; i++) {  // candidate order: row, then its negative
            s[2 * i] = s[size + i];  // NOLINT(clang-analyzer-core.uninitialized.Assign): scores wrote s[size..2 size)
            s[2 * i + 1] = s_neg[i];
        }
        return vq_first_min(s, 2 * size);
    }
    scores(r, dico, wf, size * stride, +1, s);
    for (int i = 1; i < size && stride > 1; i++) s[i] = s[i * stride];
    return vq_first_min(s, size);
}

/// vq_search with the reference's operators and comparisons.
template <int N>
inline int vq_search_ref(const Word16* r, const Word16* dico, const Word16* wf, int size, int stride,
                         bool signed_rows) {
    Word32 dist_min = MAX_32;
    int best = 0;
    for (int i = 0; i < size; i++) {
        const Word16* row = dico + i * N * stride;
        for (int sign = +1; sign >= (signed_rows ? -1 : 1); sign -= 2) {
            const Word32 dist = vq_distance_ref<N>(r, row, wf, sign);
            if (L_sub(dist, dist_min) < 0) {
                dist_min = dist;
                best = signed_rows ? 2 * i + (sign < 0 ? 1 : 0) : i;
            }
        }
    }
    return best;
}

}  // namespace amr_dtx
ZEPS_END_VARIANT
