/* SPDX-License-Identifier: BSD-3-Clause */
// One step of the depth-first pulse searches of the GSM-AMR algebraic
// codebooks (3GPP TS 26.073 c3_14pf.c, c4_17pf.c, s10_8pf.c ...): every
// position of one track is tried as the next pulse, with
//   ps1  = add(ps0, dn[i])
//   alp1 = L_mac(... L_mac(alp0, t_1[i], c_1) ..., t_n[i], c_n)
//   sq1  = mult(ps1, ps1),  alp_16 = round(alp1)
// where each c is a power-of-two fraction (L_mult(t, c) = t << shift, never
// saturating) and the terms t are rows or the diagonal of rr[][] read with
// the track's stride. The vector form computes 8 positions at once with the
// reference's saturations reproduced exactly (32-bit saturating adds
// emulated, the one saturating square mult(-32768, -32768) fixed up), so it
// needs no input bound; where the start value and the shifts bound every
// partial sum inside 32 bits, plain adds replace the emulated saturating
// ones. The plain form is the baseline it is tested against.
// The choice among a track's candidates is the reference's sequential one,
// found in lanes where every candidate's energy term is positive
// (first_greatest_ratio).
#pragma once

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <cstdint>

#include "amr/cb_correlation.h"
#include "amr/cb_search.h"
#include "amr/mac_bound.h"

ZEPS_BEGIN_VARIANT
namespace amr_cb {

/// A strided run of 16-bit values (a track of dn[], a row or the diagonal of rr[][]).
struct Strided {
    const Word16* p;
    int stride;
};

/// One L_mac term: values and the left shift of L_mult(value, 2^(shift - 1)).
struct Term {
    Strided v;
    int shift;
};

/// The candidates of one track: up to 16 positions.
struct Candidates {
    alignas(16) Word16 ps[16];
    alignas(16) Word16 sq[16];
    alignas(16) Word16 alp[16];
};

inline void evaluate_track_scalar(Word16 ps0, Word32 alp0, Strided dn, const Term* terms, int nterms, int count,
                                  Candidates& c) {
    for (int k = 0; k < count; k++) {
        const Word16 ps1 = add(ps0, dn.p[k * dn.stride]);
        Word32 alp1 = alp0;
        for (int t = 0; t < nterms; t++)
            alp1 = L_mac(alp1, terms[t].v.p[k * terms[t].v.stride], static_cast<Word16>(1 << (terms[t].shift - 1)));
        c.ps[k] = ps1;
        c.sq[k] = mult(ps1, ps1);
        c.alp[k] = round_fx(alp1);
    }
}

#if defined(__SSSE3__)
namespace simd {

/// 8 strided values from k0 on (lanes past count read as 0). A stride of 1
/// is a track-ordered run (TrackMatrix) with 8 readable values from k0.
inline __m128i gather8(Strided s, int k0, int count) {
    const Word16* p = s.p + k0 * s.stride;
    const int d = s.stride;
    if (d == 1) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        if (count - k0 >= 8) return v;
        const __m128i lane = _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7);
        return _mm_and_si128(v, _mm_cmpgt_epi16(_mm_set1_epi16(static_cast<short>(count - k0)), lane));
    }
    if (count - k0 >= 8) {  // one pinsrw from memory per value
        __m128i v = _mm_cvtsi32_si128(p[0]);
        v = _mm_insert_epi16(v, p[d], 1);
        v = _mm_insert_epi16(v, p[2 * d], 2);
        v = _mm_insert_epi16(v, p[3 * d], 3);
        v = _mm_insert_epi16(v, p[4 * d], 4);
        v = _mm_insert_epi16(v, p[5 * d], 5);
        v = _mm_insert_epi16(v, p[6 * d], 6);
        return _mm_insert_epi16(v, p[7 * d], 7);
    }
    __m128i v = _mm_setzero_si128();
    switch (count - k0) {  // the tail of a 10-position track: 2 values
        default: v = _mm_insert_epi16(v, p[d], 1); [[fallthrough]];
        case 1: v = _mm_insert_epi16(v, p[0], 0);
    }
    return v;
}

/// L_add of 4 lanes with the reference's saturation.
inline __m128i sat_add32(__m128i a, __m128i b) {
    const __m128i r = _mm_add_epi32(a, b);
    const __m128i ovf = _mm_srai_epi32(_mm_and_si128(_mm_xor_si128(a, r), _mm_xor_si128(b, r)), 31);
    const __m128i sat = _mm_xor_si128(_mm_srai_epi32(a, 31), _mm_set1_epi32(0x7fffffff));
    return _mm_or_si128(_mm_and_si128(ovf, sat), _mm_andnot_si128(ovf, r));
}

/// L_mult of 4 lanes of exact products p = a b: 2 p, MAX_32 for the one
/// overflowing product (-32768)^2 = 2^30.
inline __m128i l_mult32(__m128i p) {
    return _mm_xor_si128(_mm_slli_epi32(p, 1), _mm_cmpeq_epi32(p, _mm_set1_epi32(0x40000000)));
}

}  // namespace simd
#endif

namespace simd {

/// True when no partial sum of the chain (and its rounding) can leave the
/// 32-bit range: |alp0| + sum 2^(15 + shift) + 2^15 <= MAX_32, since every
/// term is at most 32768 << shift in magnitude.
inline bool chain_is_exact(Word32 alp0, const Term* terms, int nterms) {
    std::int64_t bound = (alp0 < 0 ? -std::int64_t{alp0} : std::int64_t{alp0}) + 0x8000;
    for (int t = 0; t < nterms; t++) bound += std::int64_t{1} << (15 + terms[t].shift);
    return bound <= MAX_32;
}

#if defined(__SSSE3__)
/// The L_mac chains of 8 positions from k0 on, in two vectors of 4 sums;
/// plain adds where chain_is_exact proved them equal to the saturating ones,
/// or where the values do: every partial sum and the rounding then stay
/// within |alp0| + 2^15 + sum |v_t| 2^s_t <= MAX_32 (the sum formed in units
/// of 2^smin, the smallest shift, below 2^25). Returns whether the sums took
/// plain adds (a rounding of them need not saturate either).
inline bool mac_terms(Word32 alp0, const Term* terms, int nterms, int k0, int count, bool exact, __m128i& lo,
                      __m128i& hi) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i a0 = _mm_set1_epi32(alp0);
    lo = hi = a0;
    if (exact) {
        for (int t = 0; t < nterms; t++) {
            const __m128i v = gather8(terms[t].v, k0, count);
            const __m128i cnt = _mm_cvtsi32_si128(16 - terms[t].shift);
            lo = _mm_add_epi32(lo, _mm_sra_epi32(_mm_unpacklo_epi16(zero, v), cnt));
            hi = _mm_add_epi32(hi, _mm_sra_epi32(_mm_unpackhi_epi16(zero, v), cnt));
        }
        return true;
    }
    int smin = 15;
    for (int t = 0; t < nterms; t++) smin = terms[t].shift < smin ? terms[t].shift : smin;
    const std::int64_t room = (MAX_32 - 0x8000 - (alp0 < 0 ? -std::int64_t{alp0} : std::int64_t{alp0})) >> smin;
    if (room > 0) {
        __m128i ul = zero, uh = zero;
        for (int t = 0; t < nterms; t++) {
            const __m128i v = gather8(terms[t].v, k0, count);
            const __m128i cnt = _mm_cvtsi32_si128(16 - terms[t].shift);
            lo = _mm_add_epi32(lo, _mm_sra_epi32(_mm_unpacklo_epi16(zero, v), cnt));
            hi = _mm_add_epi32(hi, _mm_sra_epi32(_mm_unpackhi_epi16(zero, v), cnt));
            const __m128i a = _mm_abs_epi16(v);  // |-32768| read unsigned
            const __m128i up = _mm_cvtsi32_si128(terms[t].shift - smin);
            ul = _mm_add_epi32(ul, _mm_sll_epi32(_mm_unpacklo_epi16(a, zero), up));
            uh = _mm_add_epi32(uh, _mm_sll_epi32(_mm_unpackhi_epi16(a, zero), up));
        }
        const __m128i r = _mm_set1_epi32(static_cast<std::int32_t>(room < MAX_32 ? room : MAX_32));
        if (_mm_movemask_epi8(_mm_or_si128(_mm_cmpgt_epi32(ul, r), _mm_cmpgt_epi32(uh, r))) == 0) return true;
        lo = hi = a0;
    }
    for (int t = 0; t < nterms; t++) {
        const __m128i v = gather8(terms[t].v, k0, count);
        const __m128i cnt = _mm_cvtsi32_si128(16 - terms[t].shift);
        lo = sat_add32(lo, _mm_sra_epi32(_mm_unpacklo_epi16(zero, v), cnt));
        hi = sat_add32(hi, _mm_sra_epi32(_mm_unpackhi_epi16(zero, v), cnt));
    }
    return false;
}
#endif

}  // namespace simd

/// rr[][] and dn[] rearranged so that the positions of one track are
/// contiguous: track t of row i holds rr[i][t + step k] at t * width + k
/// (width 16 for the 10 positions of a step-4 track, 8 for step 5; lanes
/// past the track zero), the diagonal and dn[] likewise. rr[][] is cor_h's
/// symmetric matrix, so for step 4 track t of rows i0 .. i0 + 7 is the 8x8
/// block of rows t + step k, columns i0 .. i0 + 7, transposed.
struct TrackMatrix {
    alignas(16) Word16 row[kLCode][80];
    alignas(16) Word16 diag[80];
    alignas(16) Word16 dn[80];
    int step = 5, width = 8;

    TrackMatrix(const CorrMatrix& rr, const Word16* d, int step_) : step(step_), width(step_ == 4 ? 16 : 8) {
        const int count = step == 4 ? 10 : 8;
        for (int t = 0; t < step; t++) {
            for (int k = 0; k < width; k++) {
                const int pos = t + step * k;
                const bool in = k < count;
                diag[t * width + k] = in ? rr[pos][pos] : 0;
                dn[t * width + k] = in ? d[pos] : 0;
            }
        }
#if defined(__SSSE3__)
        if (step == 4) {
            fill_rows_transposed<4>(rr);
        } else {
            fill_rows_transposed<5>(rr);
        }
#else
        fill_rows_scalar(rr);
#endif
    }
    /// Track t of row i of rr[][], of the diagonal, of dn[].
    Strided track(int i, int t) const { return {&row[i][t * width], 1}; }
    Strided diagonal(int t) const { return {&diag[t * width], 1}; }
    Strided dn_track(int t) const { return {&dn[t * width], 1}; }

    /// The rows read one value at a time (any rr[][]).
    void fill_rows_scalar(const CorrMatrix& rr) {
        const int count = step == 4 ? 10 : 8;
        for (int i = 0; i < kLCode; i++) {
            Word16* r = row[i];
            for (int t = 0; t < step; t++) {
                for (int k = 0; k < count; k++) r[t * width + k] = rr[i][t + step * k];
                for (int k = count; k < width; k++) r[t * width + k] = 0;
            }
        }
    }
#if defined(__SSSE3__)
    /// The rows as transposed 8x8 blocks of the symmetric rr[][] (positions
    /// 8 and 9 of a step-4 track from a block of two rows and six zeros);
    /// the step a constant, so that every load and store is a fixed offset.
    template <int Step>
    void fill_rows_transposed(const CorrMatrix& rr) {
        constexpr int kWidth = Step == 4 ? 16 : 8;
        const __m128i zero = _mm_setzero_si128();
        for (int t = 0; t < Step; t++) {
            for (int i0 = 0; i0 < kLCode; i0 += 8) {
                __m128i a[8], tr[8];
                for (int k = 0; k < 8; k++) a[k] = load8(&rr[t + Step * k][i0]);
                transpose8(a, tr);
                for (int c = 0; c < 8; c++)
                    _mm_store_si128(reinterpret_cast<__m128i*>(&row[i0 + c][t * kWidth]), tr[c]);
                if constexpr (kWidth == 16) {
                    a[0] = load8(&rr[t + Step * 8][i0]);
                    a[1] = load8(&rr[t + Step * 9][i0]);
                    for (int k = 2; k < 8; k++) a[k] = zero;
                    transpose8(a, tr);
                    for (int c = 0; c < 8; c++)
                        _mm_store_si128(reinterpret_cast<__m128i*>(&row[i0 + c][t * kWidth + 8]), tr[c]);
                }
            }
        }
    }
#endif
};

/// The pulse sums ps1 and the unrounded L_mac chains alp1 of a track's positions.
struct Sums {
    alignas(16) Word16 ps[16];
    alignas(16) Word32 alp[16];
};

inline void track_sums_scalar(Word16 ps0, Word32 alp0, Strided dn, const Term* terms, int nterms, int count, Sums& c) {
    for (int k = 0; k < count; k++) {
        Word32 alp1 = alp0;
        for (int t = 0; t < nterms; t++)
            alp1 = L_mac(alp1, terms[t].v.p[k * terms[t].v.stride], static_cast<Word16>(1 << (terms[t].shift - 1)));
        c.ps[k] = add(ps0, dn.p[k * dn.stride]);
        c.alp[k] = alp1;
    }
}

/// True when -lim <= v[k] <= lim for every k < count: whether a whole
/// loop of starts v[k] stays within TrackWithFixedTerm::exact_limit.
inline bool all_within_scalar(const Word32* v, int count, std::int64_t lim) {
    for (int k = 0; k < count; k++)
        if (v[k] > lim || v[k] < -lim) return false;
    return true;
}

/// all_within_scalar four values at a time (two signed compares a lane);
/// v is read up to count rounded up to 4 (the lanes past count ignored).
inline bool all_within(const Word32* v, int count, std::int64_t lim) {
#if defined(__SSSE3__)
    if (lim < 0) return count == 0;
    if (lim >= MAX_32) return lim > MAX_32 || all_within_scalar(v, count, lim);  // only MIN_32 can lie beyond MAX_32
    const __m128i hi = _mm_set1_epi32(static_cast<std::int32_t>(lim)), lo = _mm_set1_epi32(static_cast<std::int32_t>(-lim));
    const __m128i lane = _mm_setr_epi32(0, 1, 2, 3);
    __m128i out = _mm_setzero_si128();
    for (int k0 = 0; k0 < count; k0 += 4) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(v + k0));
        __m128i o = _mm_or_si128(_mm_cmpgt_epi32(x, hi), _mm_cmpgt_epi32(lo, x));
        if (count - k0 < 4) o = _mm_and_si128(o, _mm_cmpgt_epi32(_mm_set1_epi32(count - k0), lane));
        out = _mm_or_si128(out, o);
    }
    return _mm_movemask_epi8(out) == 0;
#else
    return all_within_scalar(v, count, lim);
#endif
}

inline void track_sums(Word16 ps0, Word32 alp0, Strided dn, const Term* terms, int nterms, int count, Sums& c) {
#if defined(__SSSE3__)
    using namespace simd;
    const bool exact = chain_is_exact(alp0, terms, nterms);
    for (int k0 = 0; k0 < count; k0 += 8) {
        __m128i lo, hi;
        mac_terms(alp0, terms, nterms, k0, count, exact, lo, hi);
        _mm_store_si128(reinterpret_cast<__m128i*>(c.ps + k0), _mm_adds_epi16(_mm_set1_epi16(ps0), gather8(dn, k0, count)));
        _mm_store_si128(reinterpret_cast<__m128i*>(c.alp + k0), lo);
        _mm_store_si128(reinterpret_cast<__m128i*>(c.alp + k0 + 4), hi);
    }
#else
    track_sums_scalar(ps0, alp0, dn, terms, nterms, count, c);
#endif
}

inline void evaluate_track(Word16 ps0, Word32 alp0, Strided dn, const Term* terms, int nterms, int count,
                           Candidates& c) {
#if defined(__SSSE3__)
    using namespace simd;
    const __m128i half = _mm_set1_epi32(0x8000);
    const __m128i minv = _mm_set1_epi16(MIN_16);
    const bool exact = chain_is_exact(alp0, terms, nterms);
    for (int k0 = 0; k0 < count; k0 += 8) {
        const __m128i ps = _mm_adds_epi16(_mm_set1_epi16(ps0), gather8(dn, k0, count));
        __m128i lo, hi;
        const bool plain = mac_terms(alp0, terms, nterms, k0, count, exact, lo, hi);
        lo = _mm_srai_epi32(plain ? _mm_add_epi32(lo, half) : sat_add32(lo, half), 16);
        hi = _mm_srai_epi32(plain ? _mm_add_epi32(hi, half) : sat_add32(hi, half), 16);
        const __m128i sq = _mm_or_si128(_mm_slli_epi16(_mm_mulhi_epi16(ps, ps), 1),
                                        _mm_srli_epi16(_mm_mullo_epi16(ps, ps), 15));
        _mm_store_si128(reinterpret_cast<__m128i*>(c.ps + k0), ps);
        _mm_store_si128(reinterpret_cast<__m128i*>(c.sq + k0), _mm_xor_si128(sq, _mm_cmpeq_epi16(ps, minv)));
        _mm_store_si128(reinterpret_cast<__m128i*>(c.alp + k0), _mm_packs_epi32(lo, hi));
    }
#else
    evaluate_track_scalar(ps0, alp0, dn, terms, nterms, count, c);
#endif
}

/// True when some candidate k < count improves on (sq, alp); when none
/// does, a sequential choice over them keeps (sq, alp). Needs sq >= -1, as
/// improves(): alp sq1 - sq alp1 then fits 32 bits and one pmaddwd forms it.
inline bool any_improves_scalar(const Candidates& c, int count, Word16 sq, Word16 alp) {
    for (int k = 0; k < count; k++)
        if (improves(c.sq[k], c.alp[k], sq, alp)) return true;
    return false;
}

inline bool any_improves(const Candidates& c, int count, Word16 sq, Word16 alp) {
#if defined(__SSSE3__)
    const __m128i w = _mm_set1_epi32(static_cast<std::int32_t>(static_cast<std::uint16_t>(alp)) |
                                     static_cast<std::int32_t>(static_cast<std::uint32_t>(-sq) << 16));
    const __m128i zero = _mm_setzero_si128();
    const __m128i lane = _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7);
    for (int k0 = 0; k0 < count; k0 += 8) {
        const __m128i s1 = _mm_load_si128(reinterpret_cast<const __m128i*>(c.sq + k0));
        const __m128i a1 = _mm_load_si128(reinterpret_cast<const __m128i*>(c.alp + k0));
        const __m128i lo = _mm_cmpgt_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(s1, a1), w), zero);
        const __m128i hi = _mm_cmpgt_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(s1, a1), w), zero);
        const __m128i live = _mm_cmpgt_epi16(_mm_set1_epi16(static_cast<short>(count - k0)), lane);
        if (_mm_movemask_epi8(_mm_and_si128(_mm_packs_epi32(lo, hi), live)) != 0) return true;
    }
    return false;
#else
    return any_improves_scalar(c, count, sq, alp);
#endif
}

/// The reference's sequential choice over candidates begin .. end - 1 from
/// the best so far (sq, alp): each candidate that improves() on the best
/// becomes the best. Returns the position the choice ends on, -1 when no
/// candidate is taken.
inline int sequential_choice(const Candidates& c, int begin, int end, Word16 sq, Word16 alp) {
    int best = -1;
    for (int k = begin; k < end; k++) {
        if (improves(c.sq[k], c.alp[k], sq, alp)) {
            sq = c.sq[k];
            alp = c.alp[k];
            best = k;
        }
    }
    return best;
}

/// The position among count (8 or 10) candidates that a sequential choice
/// from the start (sq, alp) = (-1, 1) ends on (each candidate taken when
/// improves() it over the best so far), or -1 where some alp <= 0 (then the
/// caller runs the sequential loop). With every alp positive the choice is
/// the first position of the greatest ratio sq / alp: candidate 0 always
/// replaces the start (sq0 >= 0 > -alp0), and from then on
/// improves(sq1, alp1, sq, alp), alp sq1 > sq alp1, is sq1 / alp1 > sq / alp
/// exactly (both denominators positive), a strict test that keeps the
/// earlier of two equal ratios. Lanes find it among the first 8 by a
/// tournament whose every match sets a run of positions against the run
/// right after it (pairs, then pairs of pairs, ...), the later run winning
/// only on a strictly greater ratio, compared as one pmaddwd of (sq_r, alp_r)
/// with (alp_l, -sq_l): sq_r alp_l - alp_r sq_l, exact in 32 bits (both
/// products below 2^30). The winner's position is the first holding its
/// (sq, alp): an earlier one would have its ratio. Positions 8 and 9 follow
/// one at a time, as the sequential loop takes them. Hosts without SSSE3
/// take the same choice one candidate at a time.
inline int first_greatest_ratio(const Candidates& c, int count = 8) {
#if defined(__SSSE3__)
    const __m128i s = _mm_load_si128(reinterpret_cast<const __m128i*>(c.sq));
    const __m128i a = _mm_load_si128(reinterpret_cast<const __m128i*>(c.alp));
    const __m128i zero = _mm_setzero_si128();
    if (_mm_movemask_epi8(_mm_cmpgt_epi16(a, zero)) != 0xffff) return -1;
    for (int k = 8; k < count; k++)
        if (c.alp[k] <= 0) return -1;
    // even positions in the low half, odd ones in the high half
    const __m128i split = _mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15);
    const __m128i se = _mm_shuffle_epi8(s, split), ae = _mm_shuffle_epi8(a, split);
    // (alp, -sq) of a lane holding (sq, alp)
    const __m128i swap = _mm_setr_epi8(2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13);
    const __m128i negate_high = _mm_setr_epi16(1, -1, 1, -1, 1, -1, 1, -1);
    const auto flipped = [&](__m128i x) { return _mm_sign_epi16(_mm_shuffle_epi8(x, swap), negate_high); };
    const auto match = [&](__m128i l, __m128i r) {
        const __m128i later = _mm_cmpgt_epi32(_mm_madd_epi16(r, flipped(l)), zero);
        return _mm_or_si128(_mm_and_si128(later, r), _mm_andnot_si128(later, l));
    };
    // lanes (sq, alp) of positions 0 2 4 6 against 1 3 5 7, then 01 against 23 and 45 against 67, then 0123 against 4567
    __m128i w = match(_mm_unpacklo_epi16(se, ae), _mm_unpackhi_epi16(se, ae));
    w = match(w, _mm_shuffle_epi32(w, _MM_SHUFFLE(3, 3, 1, 1)));
    w = match(w, _mm_shuffle_epi32(w, _MM_SHUFFLE(2, 2, 2, 2)));
    w = _mm_shuffle_epi32(w, 0);
    const __m128i eq = _mm_packs_epi32(_mm_cmpeq_epi32(_mm_unpacklo_epi16(s, a), w),
                                       _mm_cmpeq_epi32(_mm_unpackhi_epi16(s, a), w));
    const int best = __builtin_ctz(static_cast<unsigned>(_mm_movemask_epi8(eq))) / 2;
    const int tail = sequential_choice(c, 8, count, c.sq[best], c.alp[best]);
    return tail >= 0 ? tail : best;
#else
    for (int k = 0; k < count; k++)
        if (c.alp[k] <= 0) return -1;
    return sequential_choice(c, 0, count, -1, 1);
#endif
}

/// evaluate_track with a fixed first term and dn[] over many calls (the
/// next pulse on one track tried after each choice of the pulses before it):
/// those are loaded and shifted once; the other terms follow in order.
class TrackWithFixedTerm {
public:
    static constexpr int kMaxRest = 4;
#if defined(__SSSE3__)
    TrackWithFixedTerm(Strided dn, Term first, int count) : count_(count), first_(first), dn_(dn) {
        const __m128i zero = _mm_setzero_si128();
        const __m128i cnt = _mm_cvtsi32_si128(16 - first.shift);
        for (int k0 = 0, b = 0; k0 < count; k0 += 8, b++) {
            dnv_[b] = simd::gather8(dn, k0, count);
            const __m128i v = simd::gather8(first.v, k0, count);
            lo_[b] = _mm_sra_epi32(_mm_unpacklo_epi16(zero, v), cnt);
            hi_[b] = _mm_sra_epi32(_mm_unpackhi_epi16(zero, v), cnt);
        }
    }
    /// The candidates after ps0, alp0 with the fixed term, then rest[0 .. nrest-1]
    /// (nrest <= kMaxRest); plain adds where chain_is_exact proves them equal
    /// to the saturating ones.
    void evaluate(Word16 ps0, Word32 alp0, const Term* rest, int nrest, Candidates& c) const {
        using namespace simd;
        Term terms[kMaxRest + 1] = {first_};
        for (int t = 0; t < nrest; t++) terms[t + 1] = rest[t];
        if (chain_is_exact(alp0, terms, nrest + 1)) {
            evaluate_lanes<true>(ps0, alp0, rest, nrest, c);
        } else {
            evaluate_lanes<false>(ps0, alp0, rest, nrest, c);
        }
    }
#else
    // Hosts without SSSE3: the plain loop (the same results).
    TrackWithFixedTerm(Strided dn, Term first, int count) : count_(count), first_(first), dn_(dn) {}
    void evaluate(Word16 ps0, Word32 alp0, const Term* rest, int nrest, Candidates& c) const {
        evaluate_scalar(ps0, alp0, rest, nrest, c);
    }
#endif
    void evaluate(Word16 ps0, Word32 alp0, Term second, Candidates& c) const { evaluate(ps0, alp0, &second, 1, c); }
    /// The same computed by the plain loop.
    void evaluate_scalar(Word16 ps0, Word32 alp0, const Term* rest, int nrest, Candidates& c) const {
        Term terms[kMaxRest + 1] = {first_};
        for (int t = 0; t < nrest; t++) terms[t + 1] = rest[t];
        evaluate_track_scalar(ps0, alp0, dn_, terms, nrest + 1, count_, c);
    }
    void evaluate_scalar(Word16 ps0, Word32 alp0, Term second, Candidates& c) const {
        evaluate_scalar(ps0, alp0, &second, 1, c);
    }

    /// True when chain_is_exact holds for the fixed term and one more of the
    /// given shift from every start alp0 with |alp0| <= max_abs_alp0 (the
    /// bound grows with |alp0|): a whole loop of improving() calls may then
    /// take the plain adds.
    bool exact_for(std::int64_t max_abs_alp0, int shift) const { return max_abs_alp0 <= exact_limit(shift); }
    /// The largest |alp0| for which exact_for holds (negative where none does).
    std::int64_t exact_limit(int shift) const {
        return MAX_32 - 0x8000 - (std::int64_t{1} << (15 + first_.shift)) - (std::int64_t{1} << (15 + shift));
    }
    /// evaluate(ps0, alp0, {run, shift}, c), then any_improves(c, count, sq,
    /// alp), in one pass of the lanes: the pair searches' inner loop over the
    /// second pulse. Needs exact_for(|alp0|, shift) and a track-ordered run
    /// (a TrackMatrix track: 16-byte aligned, 8 readable values from each
    /// block of 8); lanes of c past count are left unspecified.
    [[gnu::always_inline]] inline bool improving(Word16 ps0, Word32 alp0, const Word16* run, int shift, Word16 sq,
                                                 Word16 alp, Candidates& c) const {
#if defined(__SSSE3__)
        const __m128i zero = _mm_setzero_si128();
        const __m128i half = _mm_set1_epi32(0x8000);
        const __m128i minv = _mm_set1_epi16(MIN_16);
        const __m128i cnt = _mm_cvtsi32_si128(16 - shift);
        const __m128i a0 = _mm_set1_epi32(alp0);
        const __m128i p0 = _mm_set1_epi16(ps0);
        // (alp, -sq) in every 32-bit lane: pmaddwd with (sq1, alp1) is alp sq1 - sq alp1
        const __m128i w = _mm_set1_epi32(static_cast<std::int32_t>(static_cast<std::uint16_t>(alp)) |
                                         static_cast<std::int32_t>(static_cast<std::uint32_t>(-sq) << 16));
        __m128i better = zero;
        for (int k0 = 0, b = 0; k0 < count_; k0 += 8, b++) {
            const __m128i ps = _mm_adds_epi16(p0, dnv_[b]);
            const __m128i v = _mm_load_si128(reinterpret_cast<const __m128i*>(run + k0));
            __m128i lo = _mm_add_epi32(_mm_add_epi32(a0, lo_[b]), _mm_sra_epi32(_mm_unpacklo_epi16(zero, v), cnt));
            __m128i hi = _mm_add_epi32(_mm_add_epi32(a0, hi_[b]), _mm_sra_epi32(_mm_unpackhi_epi16(zero, v), cnt));
            lo = _mm_srai_epi32(_mm_add_epi32(lo, half), 16);
            hi = _mm_srai_epi32(_mm_add_epi32(hi, half), 16);
            const __m128i a16 = _mm_packs_epi32(lo, hi);
            __m128i sq1 = _mm_or_si128(_mm_slli_epi16(_mm_mulhi_epi16(ps, ps), 1),
                                       _mm_srli_epi16(_mm_mullo_epi16(ps, ps), 15));
            sq1 = _mm_xor_si128(sq1, _mm_cmpeq_epi16(ps, minv));
            _mm_store_si128(reinterpret_cast<__m128i*>(c.ps + k0), ps);
            _mm_store_si128(reinterpret_cast<__m128i*>(c.sq + k0), sq1);
            _mm_store_si128(reinterpret_cast<__m128i*>(c.alp + k0), a16);
            const __m128i gl = _mm_cmpgt_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(sq1, a16), w), zero);
            const __m128i gh = _mm_cmpgt_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(sq1, a16), w), zero);
            __m128i g = _mm_packs_epi32(gl, gh);
            if (count_ - k0 < 8)
                g = _mm_and_si128(g, _mm_cmpgt_epi16(_mm_set1_epi16(static_cast<short>(count_ - k0)),
                                                     _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7)));
            better = _mm_or_si128(better, g);
        }
        return _mm_movemask_epi8(better) != 0;
#else
        return improving_scalar(ps0, alp0, run, shift, sq, alp, c);
#endif
    }
    /// The same computed by the plain loop.
    bool improving_scalar(Word16 ps0, Word32 alp0, const Word16* run, int shift, Word16 sq, Word16 alp,
                          Candidates& c) const {
        evaluate_scalar(ps0, alp0, Term{{run, 1}, shift}, c);
        return any_improves_scalar(c, count_, sq, alp);
    }

private:
#if defined(__SSSE3__)
    template <bool kExact>
    void evaluate_lanes(Word16 ps0, Word32 alp0, const Term* rest, int nrest, Candidates& c) const {
        using namespace simd;
        const auto add32 = [](__m128i a, __m128i b) { return kExact ? _mm_add_epi32(a, b) : sat_add32(a, b); };
        const __m128i zero = _mm_setzero_si128();
        const __m128i half = _mm_set1_epi32(0x8000);
        const __m128i minv = _mm_set1_epi16(MIN_16);
        const __m128i a0 = _mm_set1_epi32(alp0);
        for (int k0 = 0, b = 0; k0 < count_; k0 += 8, b++) {
            const __m128i ps = _mm_adds_epi16(_mm_set1_epi16(ps0), dnv_[b]);
            __m128i lo = add32(a0, lo_[b]), hi = add32(a0, hi_[b]);
            for (int t = 0; t < nrest; t++) {
                const __m128i v = gather8(rest[t].v, k0, count_);
                const __m128i cnt = _mm_cvtsi32_si128(16 - rest[t].shift);
                lo = add32(lo, _mm_sra_epi32(_mm_unpacklo_epi16(zero, v), cnt));
                hi = add32(hi, _mm_sra_epi32(_mm_unpackhi_epi16(zero, v), cnt));
            }
            lo = _mm_srai_epi32(add32(lo, half), 16);
            hi = _mm_srai_epi32(add32(hi, half), 16);
            const __m128i sq = _mm_or_si128(_mm_slli_epi16(_mm_mulhi_epi16(ps, ps), 1),
                                            _mm_srli_epi16(_mm_mullo_epi16(ps, ps), 15));
            _mm_store_si128(reinterpret_cast<__m128i*>(c.ps + k0), ps);
            _mm_store_si128(reinterpret_cast<__m128i*>(c.sq + k0), _mm_xor_si128(sq, _mm_cmpeq_epi16(ps, minv)));
            _mm_store_si128(reinterpret_cast<__m128i*>(c.alp + k0), _mm_packs_epi32(lo, hi));
        }
    }
#endif
    int count_;
    Term first_;
    Strided dn_;
#if defined(__SSSE3__)
    __m128i dnv_[2], lo_[2], hi_[2];
#endif
};

#if defined(__SSSE3__)
namespace simd {

/// filter_pulses where 2^15 + sum_k 2 |sgn_k| max |h| <= MAX_32: no
/// product is (-32768)^2, no partial sum nor the rounding leaves 32 bits, so
/// each output is (sum_k h sgn_k + 2^14) >> 15, the products of two pulses
/// summed by one pmaddwd (a zero sign pads an odd count).
inline void filter_pulses_exact(const Word16* h, const Word16* pos, const Word16* sgn, int n, Word16* y) {
    const __m128i bias = _mm_set1_epi32(0x4000);
    for (int i0 = 0; i0 < kLCode; i0 += 8) {
        __m128i lo = bias, hi = bias;
        for (int k = 0; k < n; k += 2) {
            const __m128i v0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(h + i0 - pos[k]));
            const bool pair = k + 1 < n;
            const __m128i v1 = pair ? _mm_loadu_si128(reinterpret_cast<const __m128i*>(h + i0 - pos[k + 1])) : v0;
            const Word16 s1 = pair ? sgn[k + 1] : 0;
            const __m128i s = _mm_set1_epi32(static_cast<std::int32_t>(static_cast<std::uint16_t>(sgn[k])) |
                                             static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint16_t>(s1)) << 16));
            lo = _mm_add_epi32(lo, _mm_madd_epi16(_mm_unpacklo_epi16(v0, v1), s));
            hi = _mm_add_epi32(hi, _mm_madd_epi16(_mm_unpackhi_epi16(v0, v1), s));
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(y + i0),
                         _mm_packs_epi32(_mm_srai_epi32(lo, 15), _mm_srai_epi32(hi, 15)));
    }
}

}  // namespace simd
#endif

/// filter_pulses_scalar eight outputs at a time: the L_mac chain of each
/// output in a 32-bit lane, products exact (pmullw/pmulhw), L_mult's and
/// L_add's saturations emulated, so the lanes equal the chain for any input;
/// plain sums (filter_pulses_exact) where the response's largest magnitude
/// bounds every chain.
inline void filter_pulses(const PaddedResponse& hp, const Word16* pos, const Word16* sgn, int n, Word16* y) {
#if defined(__SSSE3__)
    using namespace simd;
    const Word16* h = hp.h();
    std::int64_t weight = 0;
    for (int k = 0; k < n; k++) weight += amr_dec::mag(sgn[k]);
    if (0x8000 + 2 * weight * amr_dec::mag_max(h, kLCode) <= MAX_32) {
        filter_pulses_exact(h, pos, sgn, n, y);
        return;
    }
    const __m128i half = _mm_set1_epi32(0x8000);
    for (int i0 = 0; i0 < kLCode; i0 += 8) {
        __m128i lo = _mm_setzero_si128(), hi = _mm_setzero_si128();
        for (int k = 0; k < n; k++) {
            // h[i - pos_k] for i = i0 .. i0 + 7 (the 40 zeros below h[0] cover i < pos_k)
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(h + i0 - pos[k]));
            const __m128i s = _mm_set1_epi16(sgn[k]);
            const __m128i pl = _mm_mullo_epi16(v, s), ph = _mm_mulhi_epi16(v, s);
            lo = sat_add32(lo, l_mult32(_mm_unpacklo_epi16(pl, ph)));
            hi = sat_add32(hi, l_mult32(_mm_unpackhi_epi16(pl, ph)));
        }
        lo = _mm_srai_epi32(sat_add32(lo, half), 16);
        hi = _mm_srai_epi32(sat_add32(hi, half), 16);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(y + i0), _mm_packs_epi32(lo, hi));
    }
#else
    filter_pulses_scalar(hp, pos, sgn, n, y);
#endif
}

}  // namespace amr_cb
ZEPS_END_VARIANT
