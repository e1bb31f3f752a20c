/* SPDX-License-Identifier: BSD-3-Clause */
// The joint gain searches of the GSM-AMR encoder (3GPP TS 26.073 qua_gain.c
// Qua_gain, gain_q.c MR475_gain_quant) eight table entries at a time.
//
// Each entry's error is a sum of terms Mpy_32_16(hi, lo, n) = 2 (hi n +
// mult(lo, n)) with hi, lo the L_Extract halves of a normalised coefficient
// (0 <= lo < 2^15) and n >= 0 a gain (Q14 pitch gain, code gain from a
// Q12/Q11 table factor and gcode0 in 16384..32767) or a product of two gains
// (mult of non-negative values: (a b) >> 15). The callers run these forms
// only when a bound on the whole chain proves that the reference's L_add
// chain never saturates; then each term is one pmaddwd of the pair (n,
// mult(lo, n)) with (hi, 1) and the error is plain 32-bit arithmetic. The
// entry of least error is the first one reaching it, as the reference's
// sequential strict comparison keeps; entries whose pitch gains exceed
// gp_limit are left out (their error reads MAX_32, which no strict
// comparison against the MAX_32 start accepts).
#pragma once

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <cstdint>

#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT
namespace amr_enc {

#if defined(__SSSE3__)
namespace gain_lanes {

/// The four columns of eight consecutive rows of a 4-column gain table.
struct Columns8 {
    __m128i c[4];
};

inline Columns8 load_columns8(const std::int16_t* rows) {
    const auto ld = [rows](int k) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(rows + 8 * k)); };
    const __m128i a = _mm_unpacklo_epi16(ld(0), ld(1)), b = _mm_unpackhi_epi16(ld(0), ld(1));
    const __m128i c = _mm_unpacklo_epi16(ld(2), ld(3)), d = _mm_unpackhi_epi16(ld(2), ld(3));
    const __m128i ab0 = _mm_unpacklo_epi16(a, b), ab1 = _mm_unpackhi_epi16(a, b);  // rows 0..3: columns 0,1 | 2,3
    const __m128i cd0 = _mm_unpacklo_epi16(c, d), cd1 = _mm_unpackhi_epi16(c, d);  // rows 4..7
    return {{_mm_unpacklo_epi64(ab0, cd0), _mm_unpackhi_epi64(ab0, cd0), _mm_unpacklo_epi64(ab1, cd1),
             _mm_unpackhi_epi64(ab1, cd1)}};
}

/// mult() of 8 lanes, (a b) >> 15, for lanes whose product is not
/// (-32768)^2 (the one saturating case; every caller has a non-negative factor).
inline __m128i mult8(__m128i a, __m128i b) {
    return _mm_or_si128(_mm_slli_epi16(_mm_mulhi_epi16(a, b), 1), _mm_srli_epi16(_mm_mullo_epi16(a, b), 15));
}

/// Half the error terms of 8 entries: sum += hi n + mult(lo, n) per lane
/// (four lanes in each of lo_sum, hi_sum).
inline void add_term8(__m128i& lo_sum, __m128i& hi_sum, __m128i n, Word16 hi, Word16 lo) {
    const __m128i m = mult8(n, _mm_set1_epi16(lo));
    const __m128i w = _mm_set1_epi32(static_cast<std::int32_t>(static_cast<std::uint16_t>(hi)) | (1 << 16));
    lo_sum = _mm_add_epi32(lo_sum, _mm_madd_epi16(_mm_unpacklo_epi16(n, m), w));
    hi_sum = _mm_add_epi32(hi_sum, _mm_madd_epi16(_mm_unpackhi_epi16(n, m), w));
}

/// The five terms of one subframe: pitch gain gp, code gain gc.
inline void add_subframe8(__m128i& lo_sum, __m128i& hi_sum, __m128i gp, __m128i gc, const Word16* hi,
                          const Word16* lo) {
    add_term8(lo_sum, hi_sum, mult8(gp, gp), hi[0], lo[0]);
    add_term8(lo_sum, hi_sum, gp, hi[1], lo[1]);
    add_term8(lo_sum, hi_sum, mult8(gc, gc), hi[2], lo[2]);
    add_term8(lo_sum, hi_sum, gc, hi[3], lo[3]);
    add_term8(lo_sum, hi_sum, mult8(gc, gp), hi[4], lo[4]);
}

/// Sequential first minimum over entries offered 8 at a time in order.
class FirstMin8 {
public:
    /// Entries first .. first + 7 with errors 2 (lo_sum, hi_sum); lanes set in
    /// `excluded` (16-bit mask) are left out.
    void offer(int first, __m128i lo_sum, __m128i hi_sum, __m128i excluded) {
        const __m128i maxv = _mm_set1_epi32(MAX_32);
        const __m128i xl = _mm_unpacklo_epi16(excluded, excluded), xh = _mm_unpackhi_epi16(excluded, excluded);
        offer_errors(first, _mm_or_si128(_mm_and_si128(xl, maxv), _mm_andnot_si128(xl, _mm_slli_epi32(lo_sum, 1))),
                     _mm_or_si128(_mm_and_si128(xh, maxv), _mm_andnot_si128(xh, _mm_slli_epi32(hi_sum, 1))));
    }
    /// Entries first .. first + 7 with errors (dl, dh).
    void offer_errors(int first, __m128i dl, __m128i dh) {
        const __m128i il = _mm_add_epi32(_mm_set1_epi32(first), _mm_setr_epi32(0, 1, 2, 3));
        const __m128i ih = _mm_add_epi32(il, _mm_set1_epi32(4));
        const __m128i ll = _mm_cmpgt_epi32(dl_, dl), lh = _mm_cmpgt_epi32(dh_, dh);
        dl_ = _mm_or_si128(_mm_and_si128(ll, dl), _mm_andnot_si128(ll, dl_));
        dh_ = _mm_or_si128(_mm_and_si128(lh, dh), _mm_andnot_si128(lh, dh_));
        il_ = _mm_or_si128(_mm_and_si128(ll, il), _mm_andnot_si128(ll, il_));
        ih_ = _mm_or_si128(_mm_and_si128(lh, ih), _mm_andnot_si128(lh, ih_));
    }
    /// The first entry of least error (0 when every error was MAX_32).
    int index() const {
        alignas(16) std::int32_t d[8], i[8];
        _mm_store_si128(reinterpret_cast<__m128i*>(d), dl_);
        _mm_store_si128(reinterpret_cast<__m128i*>(d + 4), dh_);
        _mm_store_si128(reinterpret_cast<__m128i*>(i), il_);
        _mm_store_si128(reinterpret_cast<__m128i*>(i + 4), ih_);
        int best = 0;
        for (int k = 1; k < 8; k++)
            if (d[k] < d[best] || (d[k] == d[best] && i[k] < i[best])) best = k;
        return i[best];
    }

private:
    __m128i dl_ = _mm_set1_epi32(MAX_32), dh_ = _mm_set1_epi32(MAX_32);
    __m128i il_ = _mm_setzero_si128(), ih_ = _mm_setzero_si128();
};

/// Qua_gain's search over rows 0 .. len-1 (len a multiple of 8).
inline int qua_gain_search(const std::int16_t* table, int len, Word16 gcode0, const Word16* hi, const Word16* lo,
                           Word16 gp_limit) {
    const __m128i g0 = _mm_set1_epi16(gcode0), limit = _mm_set1_epi16(gp_limit);
    FirstMin8 best;
    for (int i = 0; i < len; i += 8) {
        const Columns8 r = load_columns8(table + 4 * i);
        const __m128i gp = r.c[0], gc = mult8(r.c[1], g0);
        __m128i ls = _mm_setzero_si128(), hs = _mm_setzero_si128();
        add_subframe8(ls, hs, gp, gc, hi, lo);
        best.offer(i, ls, hs, _mm_cmpgt_epi16(gp, limit));
    }
    return best.index();
}

/// MR475_gain_quant's search over the 256 rows of two subframes' gains.
inline int mr475_search(const std::int16_t* table, Word16 sf0_gcode0, Word16 sf1_gcode0, const Word16* hi,
                        const Word16* lo, Word16 gp_limit) {
    const __m128i g0 = _mm_set1_epi16(sf0_gcode0), g1 = _mm_set1_epi16(sf1_gcode0);
    const __m128i limit = _mm_set1_epi16(gp_limit);
    FirstMin8 best;
    for (int i = 0; i < 256; i += 8) {
        const Columns8 r = load_columns8(table + 4 * i);
        __m128i ls = _mm_setzero_si128(), hs = _mm_setzero_si128();
        add_subframe8(ls, hs, r.c[0], mult8(r.c[1], g0), hi, lo);
        add_subframe8(ls, hs, r.c[2], mult8(r.c[3], g1), hi + 5, lo + 5);
        best.offer(i, ls, hs, _mm_or_si128(_mm_cmpgt_epi16(r.c[0], limit), _mm_cmpgt_epi16(r.c[2], limit)));
    }
    return best.index();
}

/// MR795_gain_code_quant3's search: code gains mult(qua_gain_code[3 i],
/// gcode0) of the 32 rows against the three pitch-gain candidates, in the
/// reference's order (candidate j outer); returns 32 j + i. l_tmp0[j] is the
/// reference's pitch part of candidate j's error, hi/lo the five
/// coefficients. Each error is l_tmp0[j] + 2 (A_i + B_ij) with
///   A_i  = c2 H + mult(c2, L) + mult(c2lo, H) + c3 gc + mult(c3lo, gc),
///          (H, L) = L_Extract(L_mult(gc, gc)) = (gc^2 >> 15, gc^2 & 0x7fff),
///   B_ij = c4 P + mult(c4, Q) + mult(c4lo, P),
///          (P, Q) = L_Extract(L_mult(gc, gp_j)),
/// all gains non-negative (the caller's condition).
inline int mr795_code_search(const std::int16_t* qua_gain_code, Word16 gcode0, const Word16* g_pitch_cand,
                             const Word32* l_tmp0, const Word16* hi, const Word16* lo) {
    alignas(16) Word16 factor[32];
    for (int i = 0; i < 32; i++) factor[i] = qua_gain_code[3 * i];
    const __m128i zero = _mm_setzero_si128(), low15 = _mm_set1_epi16(0x7fff);
    const auto pair = [](Word16 a, Word16 b) {
        return _mm_set1_epi32(static_cast<std::int32_t>(static_cast<std::uint16_t>(a)) |
                              static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint16_t>(b)) << 16));
    };
    const __m128i w23 = pair(hi[2], hi[3]), w4 = pair(hi[4], 1), ones = pair(1, 1);
    const __m128i c2 = _mm_set1_epi16(hi[2]), c2lo = _mm_set1_epi16(lo[2]), c3lo = _mm_set1_epi16(lo[3]);
    const __m128i c4 = _mm_set1_epi16(hi[4]), c4lo = _mm_set1_epi16(lo[4]);
    __m128i gc[4], a_lo[4], a_hi[4];
    for (int b = 0; b < 4; b++) {
        gc[b] = mult8(_mm_load_si128(reinterpret_cast<const __m128i*>(factor + 8 * b)), _mm_set1_epi16(gcode0));
        const __m128i h = mult8(gc[b], gc[b]), l = _mm_and_si128(_mm_mullo_epi16(gc[b], gc[b]), low15);
        const __m128i m = mult8(c2, l), n = mult8(c2lo, h), k = mult8(c3lo, gc[b]);
        a_lo[b] = _mm_add_epi32(_mm_add_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(h, gc[b]), w23),
                                              _mm_madd_epi16(_mm_unpacklo_epi16(m, n), ones)),
                                _mm_unpacklo_epi16(k, zero));
        a_hi[b] = _mm_add_epi32(_mm_add_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(h, gc[b]), w23),
                                              _mm_madd_epi16(_mm_unpackhi_epi16(m, n), ones)),
                                _mm_unpackhi_epi16(k, zero));
    }
    FirstMin8 best;
    for (int j = 0; j < 3; j++) {
        const __m128i gp = _mm_set1_epi16(g_pitch_cand[j]), base = _mm_set1_epi32(l_tmp0[j]);
        for (int b = 0; b < 4; b++) {
            const __m128i p = mult8(gc[b], gp), q = _mm_and_si128(_mm_mullo_epi16(gc[b], gp), low15);
            const __m128i pm = _mm_unpacklo_epi16(p, mult8(c4, q)), ph = _mm_unpackhi_epi16(p, mult8(c4, q));
            const __m128i r = mult8(c4lo, p);
            const __m128i sl = _mm_add_epi32(_mm_add_epi32(a_lo[b], _mm_madd_epi16(pm, w4)), _mm_unpacklo_epi16(r, zero));
            const __m128i sh = _mm_add_epi32(_mm_add_epi32(a_hi[b], _mm_madd_epi16(ph, w4)), _mm_unpackhi_epi16(r, zero));
            best.offer_errors(32 * j + 8 * b, _mm_add_epi32(base, _mm_slli_epi32(sl, 1)),
                              _mm_add_epi32(base, _mm_slli_epi32(sh, 1)));
        }
    }
    return best.index();
}

}  // namespace gain_lanes
#endif

}  // namespace amr_enc
ZEPS_END_VARIANT
