/* SPDX-License-Identifier: BSD-3-Clause */
// Candidate evaluation of the G.729 fixed-codebook searches (ITU-T G.729
// 3.8 D4i40_17, Annex A A.3.8 D4i40_17_fast) eight pulse positions of one
// track at a time, each with its scalar twin (the reference's operators).
// The choice among the candidates stays sequential in the callers (the
// reference's strict-improvement test in position order).
//
// Bounds (why the vector forms are exact):
// - main body: every correlation is a Word16, so |alp3| <= |alp2| + 14 * 2^15;
//   alp2 itself is a sum of at most 9 such terms, far inside 32 bits, and the
//   vector form refuses any |alp2| above 2^30 (the scalar runs instead).
//   add() is a saturating 16-bit add (paddsw); mult(ps, ps) is the 32-bit
//   product shifted by 15 and packed with signed saturation, which is what
//   mult's clamp of -32768 * -32768 gives.
// - Annex A: alp2 = L_mac(L_mac(alp1, r, 1/8), t, 1/2) may saturate, so the
//   vector form runs only while |alp1| + 2^13 max|r| + 2^15 max|t| <=
//   MAX_32 - 2^15; round_fx's L_add of 2^15 then cannot saturate either and
//   round_fx(alp2) is (alp2 + 2^15) >> 16.
// - Annex A, first pulse pair: exact for every input (see first_pair_a).
// - the candidate test: see any_better8.
#pragma once

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <bit>
#include <cstdint>

#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT
namespace g729c {

#if defined(__SSSE3__)
inline __m128i fcb_load8(const Word16* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline void fcb_store8(Word16* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }

/// Sign-extended low / high four lanes of eight 16-bit values.
inline __m128i widen_lo(__m128i v) { return _mm_srai_epi32(_mm_unpacklo_epi16(v, v), 16); }
inline __m128i widen_hi(__m128i v) { return _mm_srai_epi32(_mm_unpackhi_epi16(v, v), 16); }

/// mult(v, v) of eight lanes: (v v) >> 15, saturated.
inline __m128i square_q15(__m128i v) {
    const __m128i lo = _mm_mullo_epi16(v, v), hi = _mm_mulhi_epi16(v, v);
    const __m128i p0 = _mm_srai_epi32(_mm_unpacklo_epi16(lo, hi), 15);
    const __m128i p1 = _mm_srai_epi32(_mm_unpackhi_epi16(lo, hi), 15);
    return _mm_packs_epi32(p0, p1);
}
#endif

/// row[k] = mult(row[k], g[k]) for eight lanes: the reference's sign
/// folding of a row of the correlation matrix.
inline void mult8_scalar(Word16* row, const Word16* g) {
    for (int k = 0; k < 8; ++k) row[k] = mult(row[k], g[k]);
}

/// mult8 in lanes: the full 32-bit product shifted by 15 and packed with
/// signed saturation is mult() for every input (no bound needed).
inline void mult8(Word16* row, const Word16* g) {
#if defined(__SSSE3__)
    const __m128i r = fcb_load8(row), s = fcb_load8(g);
    const __m128i lo = _mm_mullo_epi16(r, s), hi = _mm_mulhi_epi16(r, s);
    const __m128i p0 = _mm_srai_epi32(_mm_unpacklo_epi16(lo, hi), 15);
    const __m128i p1 = _mm_srai_epi32(_mm_unpackhi_epi16(lo, hi), 15);
    fcb_store8(row, _mm_packs_epi32(p0, p1));
#else
    mult8_scalar(row, g);
#endif
}

/// row[k] = mult(row[k], neg[k] ? MIN_16 : MAX_16) for eight lanes, neg[k]
/// 0 or -1: the Annex A sign folding, whose signs are exactly MAX_16 or
/// MIN_16.
inline void fold8_scalar(Word16* row, const Word16* neg) {
    for (int k = 0; k < 8; ++k) row[k] = mult(row[k], neg[k] != 0 ? MIN_16 : MAX_16);
}

/// fold8 in lanes, exact for every input: mult(x, MAX_16) is x - 1 for
/// x > 0, -32767 for x = -32768 and x otherwise; mult(x, MIN_16) is the
/// saturating -x, that is ~x + 1 saturated (~x is 32767 for x = -32768),
/// never below -32767. With n the lane mask both are max(subs(x ^ n,
/// n | (x > 0)), -32767) where (x > 0) is 0 or 1: n = 0 subtracts the 1 of
/// a positive x (no saturation), n = -1 subtracts -1 from ~x, and the max
/// only lifts the n = 0 case x = -32768.
inline void fold8(Word16* row, const Word16* neg) {
#if defined(__SSSE3__)
    const __m128i x = fcb_load8(row), n = fcb_load8(neg);
    const __m128i pos = _mm_srli_epi16(_mm_cmpgt_epi16(x, _mm_setzero_si128()), 15);
    const __m128i folded = _mm_subs_epi16(_mm_xor_si128(x, n), _mm_or_si128(n, pos));
    fcb_store8(row, _mm_max_epi16(folded, _mm_set1_epi16(-MAX_16)));
#else
    fold8_scalar(row, neg);
#endif
}

/// Main body, fourth pulse of D4i40_17 at the eight positions of one track:
/// ps_sq[k] = mult(ps3, ps3) with ps3 = add(ps2, dn8[k]), and
/// alp[k] = extract_l(L_shr(alp2 + 2 rd[k] + 4 r0[k] + 4 r1[k] + 4 r2[k], 5))
/// with the reference's L_mac chain.
inline void fourth_pulse_scalar(Word16 ps2, Word32 alp2, const Word16* dn8, const Word16* rd, const Word16* r0,
                                const Word16* r1, const Word16* r2, Word16* ps_sq, Word16* alp) {
    for (int k = 0; k < 8; ++k) {
        const Word16 ps3 = add(ps2, dn8[k]);
        Word32 alp3 = L_mac(alp2, rd[k], 1);
        alp3 = L_mac(alp3, r0[k], 2);
        alp3 = L_mac(alp3, r1[k], 2);
        alp3 = L_mac(alp3, r2[k], 2);
        alp[k] = extract_l(L_shr(alp3, 5));
        ps_sq[k] = mult(ps3, ps3);
    }
}

inline void fourth_pulse(Word16 ps2, Word32 alp2, const Word16* dn8, const Word16* rd, const Word16* r0,
                         const Word16* r1, const Word16* r2, Word16* ps_sq, Word16* alp) {
#if defined(__SSSE3__)
    if (alp2 > (1 << 30) || alp2 < -(1 << 30)) {
        fourth_pulse_scalar(ps2, alp2, dn8, rd, r0, r1, r2, ps_sq, alp);
        return;
    }
    fcb_store8(ps_sq, square_q15(_mm_adds_epi16(_mm_set1_epi16(ps2), fcb_load8(dn8))));
    const __m128i d = fcb_load8(rd);
    const __m128i r0v = fcb_load8(r0), r1v = fcb_load8(r1), r2v = fcb_load8(r2);
    const __m128i base = _mm_set1_epi32(alp2);
    auto half = [&](__m128i dw, __m128i a, __m128i b, __m128i c) {
        const __m128i cross = _mm_add_epi32(_mm_add_epi32(a, b), c);
        const __m128i s = _mm_add_epi32(base, _mm_add_epi32(_mm_slli_epi32(dw, 1), _mm_slli_epi32(cross, 2)));
        return _mm_srai_epi32(_mm_slli_epi32(_mm_srai_epi32(s, 5), 16), 16);  // extract_l(s >> 5)
    };
    const __m128i lo = half(widen_lo(d), widen_lo(r0v), widen_lo(r1v), widen_lo(r2v));
    const __m128i hi = half(widen_hi(d), widen_hi(r0v), widen_hi(r1v), widen_hi(r2v));
    fcb_store8(alp, _mm_packs_epi32(lo, hi));
#else
    fourth_pulse_scalar(ps2, alp2, dn8, rd, r0, r1, r2, ps_sq, alp);
#endif
}

/// Annex A, last pulse pair of D4i40_17_fast at the eight positions of one
/// track: ps_sq[k] = mult(ps2, ps2) with ps2 = add(ps1, dn8[k]), and
/// alp[k] = round_fx(L_mac(L_mac(alp1, r[k], 1/8), t[k], 1/2)).
inline void pair_pulse_a_scalar(Word16 ps1, Word32 alp1, const Word16* dn8, const Word16* r, const Word16* t,
                                Word16* ps_sq, Word16* alp) {
    for (int k = 0; k < 8; ++k) {
        const Word16 ps2 = add(ps1, dn8[k]);
        Word32 alp2 = L_mac(alp1, r[k], 4096);
        alp2 = L_mac(alp2, t[k], 16384);
        ps_sq[k] = mult(ps2, ps2);
        alp[k] = round_fx(alp2);
    }
}

/// Annex A, first pulse pair of D4i40_17_fast at the eight positions of one
/// track, the first pulse's correlation r0 = rr[i0][i0]: ps[k] = add(ps1,
/// dn8[k]), ps_sq[k] = mult(ps[k], ps[k]) and alp[k] = round_fx(L_mac(L_mac(
/// L_mult(r0, 1/4), t[k], 1/2), d[k], 1/4)).
inline void first_pair_a_scalar(Word16 ps1, Word16 r0, const Word16* dn8, const Word16* t, const Word16* d,
                                Word16* ps, Word16* ps_sq, Word16* alp) {
    const Word32 alp1 = L_mult(r0, 8192);
    for (int k = 0; k < 8; ++k) {
        ps[k] = add(ps1, dn8[k]);
        Word32 alp2 = L_mac(alp1, t[k], 16384);
        alp2 = L_mac(alp2, d[k], 8192);
        ps_sq[k] = mult(ps[k], ps[k]);
        alp[k] = round_fx(alp2);
    }
}

/// first_pair_a in lanes, exact for every input: alp2 = 2^14 (r0 + 2 t + d)
/// lies in [-2^31, 2^31 - 2^16], so no L_mac saturates and neither does
/// round_fx's L_add of 2^15; round_fx(alp2) is then (r0 + 2 t + d + 2) >> 2,
/// one pmaddwd of the pairs (t, d) by (2, 1) and a shift in 32-bit lanes.
inline void first_pair_a(Word16 ps1, Word16 r0, const Word16* dn8, const Word16* t, const Word16* d, Word16* ps,
                         Word16* ps_sq, Word16* alp) {
#if defined(__SSSE3__)
    const __m128i p = _mm_adds_epi16(_mm_set1_epi16(ps1), fcb_load8(dn8));
    fcb_store8(ps, p);
    fcb_store8(ps_sq, square_q15(p));
    const __m128i tv = fcb_load8(t), dv = fcb_load8(d);
    const __m128i w = _mm_set1_epi32(0x00010002);  // (t, d) . (2, 1)
    const __m128i base = _mm_set1_epi32(std::int32_t{r0} + 2);
    const __m128i lo = _mm_srai_epi32(_mm_add_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(tv, dv), w), base), 2);
    const __m128i hi = _mm_srai_epi32(_mm_add_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(tv, dv), w), base), 2);
    fcb_store8(alp, _mm_packs_epi32(lo, hi));
#else
    first_pair_a_scalar(ps1, r0, dn8, t, d, ps, ps_sq, alp);
#endif
}

/// Annex A, the eight rows of one last-pair loop of D4i40_17_fast:
/// ps1[r] = add(ps0, dn8[r]) and alp1[r] = L_mac(L_mac(L_mac(alp0, a[r],
/// 1/8), b[r], 1/8), c[r], 1/16), the reference's chain.
inline void pair_rows_a_scalar(Word16 ps0, Word32 alp0, const Word16* dn8, const Word16* a, const Word16* b,
                               const Word16* c, Word16* ps1, Word32* alp1) {
    for (int r = 0; r < 8; ++r) {
        ps1[r] = add(ps0, dn8[r]);
        alp1[r] = L_mac(L_mac(L_mac(alp0, a[r], 4096), b[r], 4096), c[r], 2048);
    }
}

/// pair_rows_a in lanes for alp0 = L_mult(alp, 1/4) of any Word16 alp
/// (|alp0| <= 2^29): the terms are at most 2^28, 2^28 and 2^27 in
/// magnitude, so no step saturates and alp1 = alp0 + 2^13 (a + b) + 2^12 c,
/// one pmaddwd of the pairs (a, b) by (2^13, 2^13) (never both -32768
/// products at 2^13) and c widened and shifted.
inline void pair_rows_a(Word16 ps0, Word32 alp0, const Word16* dn8, const Word16* a, const Word16* b,
                        const Word16* c, Word16* ps1, Word32* alp1) {
#if defined(__SSSE3__)
    fcb_store8(ps1, _mm_adds_epi16(_mm_set1_epi16(ps0), fcb_load8(dn8)));
    const __m128i av = fcb_load8(a), bv = fcb_load8(b), cv = fcb_load8(c);
    const __m128i w = _mm_set1_epi16(8192), base = _mm_set1_epi32(alp0);
    const __m128i lo = _mm_add_epi32(_mm_add_epi32(base, _mm_madd_epi16(_mm_unpacklo_epi16(av, bv), w)),
                                     _mm_slli_epi32(widen_lo(cv), 12));
    const __m128i hi = _mm_add_epi32(_mm_add_epi32(base, _mm_madd_epi16(_mm_unpackhi_epi16(av, bv), w)),
                                     _mm_slli_epi32(widen_hi(cv), 12));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(alp1), lo);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(alp1 + 4), hi);
#else
    pair_rows_a_scalar(ps0, alp0, dn8, a, b, c, ps1, alp1);
#endif
}

/// The largest magnitude of eight values (as a 32-bit count).
inline std::int32_t max_abs8_scalar(const Word16* v) {
    std::int32_t m = 0;
    for (int k = 0; k < 8; ++k) {
        const std::int32_t a = v[k] < 0 ? -std::int32_t{v[k]} : v[k];
        if (a > m) m = a;
    }
    return m;
}

/// max_abs8 in lanes: pabsw gives |v| as an unsigned 16-bit value (0x8000
/// for -32768); biased by 0x8000 the unsigned order becomes the signed order
/// of pmaxsw, and three halving steps leave the maximum in the low lane.
inline std::int32_t max_abs8(const Word16* v) {
#if defined(__SSSE3__)
    __m128i a = _mm_xor_si128(_mm_abs_epi16(fcb_load8(v)), _mm_set1_epi16(MIN_16));
    a = _mm_max_epi16(a, _mm_shuffle_epi32(a, 0x4E));
    a = _mm_max_epi16(a, _mm_shuffle_epi32(a, 0xB1));
    a = _mm_max_epi16(a, _mm_srli_epi32(a, 16));
    return (_mm_cvtsi128_si32(a) & 0xFFFF) ^ 0x8000;
#else
    return max_abs8_scalar(v);
#endif
}

/// The lanes' condition of pair_pulse_a: |alp1| + 2^13 rmax + 2^15 tmax <=
/// MAX_32 - 2^15 (rmax, tmax at most 32768).
inline bool pair_lanes_fit(Word32 alp1, std::int32_t rmax, std::int32_t tmax) {
    const std::int64_t reach = (alp1 < 0 ? -std::int64_t{alp1} : alp1) + std::int64_t{rmax} * 8192 + std::int64_t{tmax} * 32768;
    return reach <= MAX_32 - 0x8000;
}

/// Bit k set when pair_lanes_fit(alp1[k], rmax[k], tmax), for eight rows.
inline unsigned pair_lanes_fit8_scalar(const Word32* alp1, const std::int32_t* rmax, std::int32_t tmax) {
    unsigned m = 0;
    for (int k = 0; k < 8; ++k)
        if (pair_lanes_fit(alp1[k], rmax[k], tmax)) m |= 1u << k;
    return m;
}

/// pair_lanes_fit8 in lanes: pabsd gives |alp1| as an unsigned 32-bit value
/// (2^31 for MIN_32) and the reach stays below 2^31 + 2^28 + 2^30 < 2^32, so
/// it is exact as an unsigned sum; the unsigned compare is the signed one of
/// both sides with the top bit flipped.
inline unsigned pair_lanes_fit8(const Word32* alp1, const std::int32_t* rmax, std::int32_t tmax) {
#if defined(__SSSE3__)
    const __m128i flip = _mm_set1_epi32(MIN_32), t = _mm_set1_epi32(tmax * 32768);
    const __m128i limit = _mm_xor_si128(_mm_set1_epi32(MAX_32 - 0x8000), flip);
    auto over = [&](int k) {
        const __m128i a = _mm_abs_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(alp1 + k)));
        const __m128i r = _mm_slli_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(rmax + k)), 13);
        const __m128i reach = _mm_add_epi32(_mm_add_epi32(a, r), t);
        return static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(_mm_cmpgt_epi32(_mm_xor_si128(reach, flip), limit))));
    };
    return ~(over(0) | (over(4) << 4)) & 0xFFu;
#else
    return pair_lanes_fit8_scalar(alp1, rmax, tmax);
#endif
}

/// pair_pulse_a with its lanes' condition already decided (fits from
/// pair_lanes_fit or pair_lanes_fit8).
inline void pair_pulse_a_fit(Word16 ps1, Word32 alp1, const Word16* dn8, const Word16* r, const Word16* t, bool fits,
                             Word16* ps_sq, Word16* alp) {
#if defined(__SSSE3__)
    if (!fits) {
        pair_pulse_a_scalar(ps1, alp1, dn8, r, t, ps_sq, alp);
        return;
    }
    fcb_store8(ps_sq, square_q15(_mm_adds_epi16(_mm_set1_epi16(ps1), fcb_load8(dn8))));
    const __m128i rv = fcb_load8(r), tv = fcb_load8(t);
    // |alp2| <= reach leaves room for round_fx's 0x8000: added with alp1.
    const __m128i base = _mm_set1_epi32(alp1 + 0x8000);
    auto half = [&](__m128i rw, __m128i tw) {
        return _mm_srai_epi32(_mm_add_epi32(base, _mm_add_epi32(_mm_slli_epi32(rw, 13), _mm_slli_epi32(tw, 15))), 16);
    };
    fcb_store8(alp, _mm_packs_epi32(half(widen_lo(rv), widen_lo(tv)), half(widen_hi(rv), widen_hi(tv))));
#else
    static_cast<void>(fits);
    pair_pulse_a_scalar(ps1, alp1, dn8, r, t, ps_sq, alp);
#endif
}

/// Vector form for callers that know max|r| (rmax) and max|t| (tmax).
inline void pair_pulse_a(Word16 ps1, Word32 alp1, const Word16* dn8, const Word16* r, const Word16* t,
                         std::int32_t rmax, std::int32_t tmax, Word16* ps_sq, Word16* alp) {
    pair_pulse_a_fit(ps1, alp1, dn8, r, t, pair_lanes_fit(alp1, rmax, tmax), ps_sq, alp);
}

/// The signs of the backward-filtered target over 40 samples: sign[i] =
/// MAX_16 where d[i] >= 0, else MIN_16 (inv the opposite), and d[i] made
/// non-negative by negate() (saturating: -32768 becomes 32767).
inline void target_signs_scalar(Word16* d, Word16* sign, Word16* inv) {
    for (int i = 0; i < 40; ++i) {
        if (d[i] >= 0) {
            sign[i] = MAX_16;
            inv[i] = MIN_16;
        } else {
            sign[i] = MIN_16;
            inv[i] = MAX_16;
            d[i] = negate(d[i]);
        }
    }
}

/// target_signs in lanes: negate() is the saturating subtraction from 0.
inline void target_signs(Word16* d, Word16* sign, Word16* inv) {
#if defined(__SSSE3__)
    const __m128i z = _mm_setzero_si128(), mx = _mm_set1_epi16(MAX_16);
    for (int i = 0; i < 40; i += 8) {
        const __m128i v = fcb_load8(d + i);
        const __m128i neg = _mm_cmpgt_epi16(z, v);  // all ones where d < 0
        fcb_store8(sign + i, _mm_xor_si128(mx, neg));  // MAX_16 ^ -1 = MIN_16
        fcb_store8(inv + i, _mm_xor_si128(mx, _mm_xor_si128(neg, _mm_set1_epi16(-1))));
        fcb_store8(d + i, _mm_or_si128(_mm_andnot_si128(neg, v), _mm_and_si128(neg, _mm_subs_epi16(z, v))));
    }
#else
    target_signs_scalar(d, sign, inv);
#endif
}

/// The filtered codeword, one pulse at a time: y[i] = add(y[i], h[i - at])
/// (sub() for a negative pulse) for i >= at, over 40 samples.
inline void add_pulse_response_scalar(Word16* y, const Word16* h, int at, bool positive) {
    for (int i = at, j = 0; i < 40; ++i, ++j) y[i] = positive ? add(y[i], h[j]) : sub(y[i], h[j]);
}

/// add_pulse_response in lanes over h padded with 40 leading zeros (hz[40 +
/// i] = h[i]): the saturating add or subtract of zero leaves y[i < at] as it
/// is, so the lanes run over all 40 samples.
inline void add_pulse_response(Word16* y, const Word16* hz, int at, bool positive) {
#if defined(__SSSE3__)
    const Word16* hs = hz + 40 - at;
    for (int i = 0; i < 40; i += 8) {
        const __m128i v = fcb_load8(y + i), g = fcb_load8(hs + i);
        fcb_store8(y + i, positive ? _mm_adds_epi16(v, g) : _mm_subs_epi16(v, g));
    }
#else
    add_pulse_response_scalar(y, hz + 40, at, positive);
#endif
}

/// The first position k of the largest v[k] other than skip (skip -1 for
/// none), for eight non-negative values: the reference's scan for the first
/// pulse, if (sub(dn[j], max) > 0 && j != prev), from max = -1 (with dn >= 0
/// and max >= -1, sub() keeps the sign of the plain difference).
inline int first_max8_scalar(const Word16* v, int skip) {
    int at = 0;
    Word16 max = -1;
    for (int k = 0; k < 8; ++k)
        if (v[k] > max && k != skip) {
            max = v[k];
            at = k;
        }
    return at;
}

/// first_max8 in lanes: the skipped lane set to -1 (below every value),
/// the maximum spread over all lanes, the first lane equal to it.
inline int first_max8(const Word16* v, int skip) {
#if defined(__SSSE3__)
    const __m128i lane = _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7);
    const __m128i x = _mm_or_si128(fcb_load8(v), _mm_cmpeq_epi16(lane, _mm_set1_epi16(static_cast<Word16>(skip))));
    __m128i m = _mm_max_epi16(x, _mm_shuffle_epi32(x, 0x4E));
    m = _mm_max_epi16(m, _mm_shuffle_epi32(m, 0xB1));
    m = _mm_max_epi16(m, _mm_shufflelo_epi16(_mm_shufflehi_epi16(m, 0xB1), 0xB1));
    const auto eq = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(x, m)));
    return std::countr_zero(eq) / 2;
#else
    return first_max8_scalar(v, skip);
#endif
}

/// The reference's candidate test of the searches, L_msu(L_mult(alp, sq2),
/// sq, alp2) > 0: true when (sq2, alp2) improves on (sq, alp).
inline bool fcb_better(Word16 sq2, Word16 alp2, Word16 sq, Word16 alp) {
    return L_msu(L_mult(alp, sq2), sq, alp2) > 0;
}

/// Whether any of eight candidates (sq8[k], alp8[k]) passes fcb_better
/// against (sq, alp); when none does, the sequential choice over them keeps
/// (sq, alp) and may be skipped.
inline bool any_better8_scalar(const Word16* sq8, const Word16* alp8, Word16 sq, Word16 alp) {
    for (int k = 0; k < 8; ++k)
        if (fcb_better(sq8[k], alp8[k], sq, alp)) return true;
    return false;
}

/// Bit k set when candidate k passes fcb_better against (sq, alp).
inline unsigned better_mask8_scalar(const Word16* sq8, const Word16* alp8, Word16 sq, Word16 alp) {
    unsigned m = 0;
    for (int k = 0; k < 8; ++k)
        if (fcb_better(sq8[k], alp8[k], sq, alp)) m |= 1u << k;
    return m;
}

/// any_better8 in lanes, for sq8[k] >= 0 (squares from mult) and sq >= -1
/// (the searches start from -1): neither product L_mult(alp, sq2) nor
/// L_mult(sq, alp2) can then saturate (that needs -32768 * -32768), and
/// L_msu's clamp keeps the sign of the exact difference, so the test is
/// alp sq2 - sq alp2 > 0. That value lies within +-(32767 * 32768 + 32768^2)
/// < 2^31: one pmaddwd of the pairs (sq2, alp2) and (alp, -sq) gives it
/// exactly (-sq is never -32768, so pmaddwd's one overflow cannot occur).
inline bool any_better8(const Word16* sq8, const Word16* alp8, Word16 sq, Word16 alp) {
#if defined(__SSSE3__)
    const __m128i s = fcb_load8(sq8), a = fcb_load8(alp8);
    const __m128i w = _mm_set1_epi32(static_cast<int>((std::uint32_t{static_cast<std::uint16_t>(-sq)} << 16) |
                                                      static_cast<std::uint16_t>(alp)));
    const __m128i lo = _mm_madd_epi16(_mm_unpacklo_epi16(s, a), w);
    const __m128i hi = _mm_madd_epi16(_mm_unpackhi_epi16(s, a), w);
    const __m128i z = _mm_setzero_si128();
    return _mm_movemask_epi8(_mm_or_si128(_mm_cmpgt_epi32(lo, z), _mm_cmpgt_epi32(hi, z))) != 0;
#else
    return any_better8_scalar(sq8, alp8, sq, alp);
#endif
}

/// better_mask8 in lanes, under any_better8's conditions (and for the same
/// reason exact).
inline unsigned better_mask8(const Word16* sq8, const Word16* alp8, Word16 sq, Word16 alp) {
#if defined(__SSSE3__)
    const __m128i s = fcb_load8(sq8), a = fcb_load8(alp8);
    const __m128i w = _mm_set1_epi32(static_cast<int>((std::uint32_t{static_cast<std::uint16_t>(-sq)} << 16) |
                                                      static_cast<std::uint16_t>(alp)));
    const __m128i z = _mm_setzero_si128();
    const __m128i lo = _mm_cmpgt_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(s, a), w), z);
    const __m128i hi = _mm_cmpgt_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(s, a), w), z);
    return static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(lo)) |
                                 (_mm_movemask_ps(_mm_castsi128_ps(hi)) << 4));
#else
    return better_mask8_scalar(sq8, alp8, sq, alp);
#endif
}

}  // namespace g729c
ZEPS_END_VARIANT
