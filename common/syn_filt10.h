/* SPDX-License-Identifier: BSD-3-Clause */
// The order-10 LP synthesis filter 1/A(z) (Syn_filt of ITU-T G.729 and of
// 3GPP TS 26.073, the same routine to the bit), shared by the G.729 and
// GSM-AMR stages: y = x / A(z), a Q12, signals Q0, with the reference's
// L_mult / L_msu chain, L_shl by 3 and rounding.
//
// While 2 * sum|a| * max|value so far| stays within 31 bits the chain is a
// plain 32-bit sum. With SSSE3 blocks of ten samples run in pairs almost
// wholly in lanes while that bound holds (checked once a block); the scalar
// form, syn_filt_scalar, is kept and held equal by the tests.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT
namespace syn10 {

inline constexpr int kOrder = 10;

/// One output sample of Syn_filt with the reference's saturating operators;
/// y_at(j) gives y[i-j]. Sets ovf when an operator saturated.
template <class Past>
inline Word16 syn_sample_saturating(const Word16* a, Word16 x, Past y_at, Flag& ovf) {
    Word32 s = L_mult(x, a[0], ovf);
    for (int j = 1; j <= kOrder; ++j) s = L_msu(s, a[j], y_at(j), ovf);
    s = L_shl(s, 3, ovf);
    return round_fx(s, ovf);
}

/// One sample of Syn_filt on the plain or saturating path; past(j) gives
/// y[i-j]. peak and limit follow the bound described at syn_filt.
template <class Past>
inline Word16 syn_sample(const Word16* a, const Word32* c, Word16 xi, Past past, bool always_plain,
                         std::int64_t limit, std::int64_t& peak, Flag& ovf) {
    if (!always_plain) peak = std::max<std::int64_t>(peak, xi < 0 ? -std::int64_t{xi} : xi);
    Word16 out;
    if (always_plain || peak <= limit) {
        // The newest output's product is added last: the recursion's
        // latency is one multiply and a few adds a sample, the older terms
        // summed while the previous sample is still being formed.
        Word32 acc = c[0] * xi;
        for (int j = kOrder; j >= 2; --j) acc -= c[j] * past(j);
        acc -= c[1] * past(1);
        Word32 s = 2 * acc;
        if (s > 0x0fffffff || s < -0x10000000) {
            ovf = true;
            s = s > 0 ? MAX_32 : MIN_32;
        } else {
            s *= 8;
        }
        if (s > MAX_32 - 0x8000) {
            ovf = true;
            out = MAX_16;
        } else {
            out = extract_h(s + 0x8000);
        }
    } else {
        out = syn_sample_saturating(a, xi, [&](int j) { return static_cast<Word16>(past(j)); }, ovf);
    }
    if (!always_plain) peak = std::max<std::int64_t>(peak, out < 0 ? -std::int64_t{out} : out);
    return out;
}

/// Ten samples of Syn_filt with the window in a ring r[0..9] (r[k] holds
/// y[i-10+k] on entry and on return): sample T writes slot T, so no value
/// moves between locals.
template <std::size_t... T>
inline void syn_block10(const Word16* a, const Word32* c, const Word16* x, Word16* y, Word32* r, bool always_plain,
                        std::int64_t limit, std::int64_t& peak, Flag& ovf, std::index_sequence<T...>) {
    auto step = [&](auto t) {
        constexpr int k = decltype(t)::value;
        const Word16 out = syn_sample(
            a, c, x[k], [&](int j) { return r[(k - j + kOrder) % kOrder]; }, always_plain, limit, peak, ovf);
        r[k] = out;
        y[k] = out;
    };
    (step(std::integral_constant<int, static_cast<int>(T)>{}), ...);
}

/// Syn_filt's setup: the coefficients as Word32, the plain-sum limit on
/// every value (2 sum|a| limit <= MAX_32; at least 32768 when every Word16
/// qualifies) and the peak of the memory.
struct SynBound {
    Word32 c[kOrder + 1];
    std::int64_t limit;
    bool always_plain;
    std::int64_t peak;
};

inline SynBound syn_bound(const Word16* a, const Word16* mem) {
    SynBound b{};
    std::int64_t sum_a = 0;
    for (int j = 0; j <= kOrder; ++j) {
        b.c[j] = a[j];
        sum_a += a[j] < 0 ? -std::int64_t{a[j]} : a[j];
    }
    b.limit = sum_a == 0 ? std::int64_t{1} << 40 : MAX_32 / (2 * sum_a);
    // Every value is a Word16 (|v| <= 32768): with limit >= 32768 the plain
    // sum always holds and the peak need not be followed.
    b.always_plain = b.limit >= 32768;
    for (int j = 0; j < kOrder; ++j) b.peak = std::max<std::int64_t>(b.peak, mem[j] < 0 ? -std::int64_t{mem[j]} : mem[j]);
    return b;
}

/// Samples i..lg-1 of Syn_filt one at a time, w[0..9] the ten newest
/// outputs (w[0] the newest).
inline void syn_samples(const Word16* a, SynBound& b, const Word16* x, Word16* y, int i, int lg, Word32* w,
                        Flag& ovf) {
    for (; i < lg; ++i) {
        const Word16 out =
            syn_sample(a, b.c, x[i], [&](int j) { return w[j - 1]; }, b.always_plain, b.limit, b.peak, ovf);
        for (int k = kOrder - 1; k > 0; --k) w[k] = w[k - 1];
        w[0] = out;
        y[i] = out;
    }
}

/// Syn_filt on the scalar path (the baseline of the lane form below).
///
/// While 2 * sum|a| * max|value so far| stays within 31 bits no product or
/// partial sum of the reference's L_mult / L_msu chain can saturate, and the
/// sample is the plain 32-bit sum; otherwise the saturating operators run.
/// The 10 newest outputs ride in locals (a ring over blocks of ten samples,
/// then a shifted window for the rest), so the recursion never waits on a
/// store to memory.
inline bool syn_filt_scalar(const Word16* a, const Word16* x, Word16* y, int lg, const Word16* mem) {
    SynBound b = syn_bound(a, mem);
    Word32 r[kOrder];
    for (int k = 0; k < kOrder; ++k) r[k] = mem[k];
    Flag ovf = false;
    int i = 0;
    for (; i + kOrder <= lg; i += kOrder)
        syn_block10(a, b.c, x + i, y + i, r, b.always_plain, b.limit, b.peak, ovf, std::make_index_sequence<kOrder>{});
    Word32 w[kOrder];  // w[0] the newest
    for (int k = 0; k < kOrder; ++k) w[k] = r[kOrder - 1 - k];
    syn_samples(a, b, x, y, i, lg, w, ovf);
    return ovf;
}

#if defined(__SSSE3__)
/// The lane form. A block of ten samples y[b..b+9] runs in pairs (k, k+1),
/// k even, with A = y[k-8..k-1] in the eight lanes (oldest first):
///   sample k:   taps 1..8 on A (coefficients [a8..a1]);
///   sample k+1: taps 2..9 on A ([a9..a2]), and tap 1 on y[k], the pair's
///               cross term, in one scalar multiply.
/// The rest meets values known before the block (the inputs' products
/// a0 x, taps 9 and 10 of sample k and tap 10 of sample k+1 on the ten
/// older outputs): four pmaddwd pairs give them for the whole block. A pair
/// then costs two pmaddwd, two horizontal adds, one subtraction, one
/// multiply and the outputs' shifts and saturation tests; A moves on by a
/// pshufd and two inserts, the history never stored and reloaded, the
/// outputs stored once a block from A.
///
/// No lane can wrap while the block keeps the plain bound, 2 sum|a| max|v|
/// <= MAX_32: with sum|a| <= 32767 no coefficient is -32768, and otherwise
/// every value is within limit < 32768, so no pmaddwd pair is (-32768)^2;
/// every pair, partial and whole sum (+ 0x800) is within sum|a| max|v| +
/// 0x800 < 2^31. A block past the bound (tracked when sum|a| > 32767) may
/// wrap (lanes and the scalar parts, taken mod 2^32, are defined) and is
/// discarded before anything is written.
struct SynLaneCoefs {
    __m128i newer_even;  // [a8..a1]
    __m128i newer_odd;   // [a9..a2]
    __m128i x_even;      // [a0, 0] in each lane pair
    __m128i x_odd;       // [0, a0]
    __m128i old_even;    // [a10, a9]
    __m128i old_odd;     // [0, a10]
    std::uint32_t a1;
};

inline __m128i syn_lane_pairs(Word16 lo, Word16 hi) {
    return _mm_set1_epi32(static_cast<int>(static_cast<std::uint32_t>(static_cast<std::uint16_t>(lo)) |
                                           static_cast<std::uint32_t>(static_cast<std::uint16_t>(hi)) << 16));
}

inline SynLaneCoefs syn_lane_coefs(const Word16* a) {
    const __m128i rev = _mm_setr_epi8(14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1);
    return {_mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(a + 1)), rev),
            _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(a + 2)), rev),
            syn_lane_pairs(a[0], 0),
            syn_lane_pairs(0, a[0]),
            syn_lane_pairs(a[10], a[9]),
            syn_lane_pairs(0, a[10]),
            static_cast<std::uint32_t>(a[1])};
}

/// Two Word16 at p in lanes 0 and 1, the other lanes zero.
inline __m128i syn_load2(const Word16* p) {
    std::int32_t v;
    std::memcpy(&v, p, sizeof v);
    return _mm_cvtsi32_si128(v);
}

inline void syn_store2(Word16* p, __m128i v) {
    const std::int32_t w = _mm_cvtsi128_si32(v);
    std::memcpy(p, &w, sizeof w);
}

/// round(L_shl(2 acc, 3)) from t = acc + 0x800 of the plain sum acc
/// (taken mod 2^32): t >> 12 unless the shift or the rounding saturates
/// (acc outside [-2^27, 0x07fff7ff]), where the output is the clamp and
/// ovf is set.
[[gnu::always_inline]] inline std::int32_t syn_round_out(std::uint32_t t, bool& ovf) {
    std::int32_t o = static_cast<std::int32_t>(t) >> 12;
    if (t + 0x07fff800u > 0x0ffff7ffu) [[unlikely]] {
        ovf = true;
        o = static_cast<std::int32_t>(t) > 0x800 ? MAX_16 : MIN_16;
    }
    // Either way a Word16: no sign extension before the multiply or insert.
    if (o < MIN_16 || o > MAX_16) __builtin_unreachable();
    return o;
}

/// Samples k and k+1 with per = [a0 x[k] + 0x800 - older taps of k, the
/// same of k+1] in lanes 0 and 1; A moves on two outputs.
[[gnu::always_inline]] inline void syn_pair_lanes(const SynLaneCoefs& c, __m128i per, __m128i& A, bool& ovf) {
    const __m128i next = _mm_shuffle_epi32(A, 0xf9);  // lanes 2..7 down by two
    const __m128i h = _mm_hadd_epi32(_mm_madd_epi16(A, c.newer_even), _mm_madd_epi16(A, c.newer_odd));
    const __m128i t = _mm_sub_epi32(per, _mm_hadd_epi32(h, h));
    std::uint64_t both = 0;
    _mm_storel_epi64(reinterpret_cast<__m128i*>(&both), t);
    const std::int32_t even = syn_round_out(static_cast<std::uint32_t>(both), ovf);
    const std::int32_t odd =
        syn_round_out(static_cast<std::uint32_t>(both >> 32) - c.a1 * static_cast<std::uint32_t>(even), ovf);
    A = _mm_insert_epi16(_mm_insert_epi16(next, even, 6), odd, 7);
}

/// Nonzero lanes where |v| > lim (lanes as unsigned: |-32768| is 32768).
inline __m128i syn_over(__m128i v, __m128i lim) { return _mm_subs_epu16(_mm_abs_epi16(v), lim); }

/// One block of ten samples on the plain sum; p0, p8 hold the ten older
/// outputs (y[b-10..b-3] in p0's lanes, y[b-2], y[b-1] in p8's lanes 0, 1)
/// and move on to the block's. When kTrack, the block stands only when its
/// inputs and outputs keep the plain bound (|v| <= lim; the older outputs
/// kept it already): otherwise false is returned with nothing written and
/// p0, p8 untouched. The outputs stay in lanes until the two stores.
template <bool kTrack>
[[gnu::always_inline]] inline bool syn_block_lanes(const SynLaneCoefs& c, __m128i lim, const Word16* x, Word16* y,
                                                   __m128i& p0, __m128i& p8, bool& ovf) {
    const __m128i x0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(x)), x8 = syn_load2(x + 8);
    auto terms = [&](__m128i xv, __m128i pv, __m128i xc, __m128i oc) {
        return _mm_sub_epi32(_mm_madd_epi16(xv, xc), _mm_madd_epi16(pv, oc));
    };
    const __m128i e0 = terms(x0, p0, c.x_even, c.old_even), o0 = terms(x0, p0, c.x_odd, c.old_odd);
    const __m128i e8 = terms(x8, p8, c.x_even, c.old_even), o8 = terms(x8, p8, c.x_odd, c.old_odd);
    const __m128i round = _mm_set1_epi32(0x800);
    const __m128i q0 = _mm_add_epi32(_mm_unpacklo_epi32(e0, o0), round);
    const __m128i q4 = _mm_add_epi32(_mm_unpackhi_epi32(e0, o0), round);
    const __m128i q8 = _mm_add_epi32(_mm_unpacklo_epi32(e8, o8), round);
    const __m128i q2 = _mm_shuffle_epi32(q0, 0xee), q6 = _mm_shuffle_epi32(q4, 0xee);
    bool block_ovf = false;
    bool& f = kTrack ? block_ovf : ovf;
    __m128i A = _mm_alignr_epi8(p8, p0, 4);
    syn_pair_lanes(c, q0, A, f);
    const __m128i A1 = A;
    syn_pair_lanes(c, q2, A, f);
    syn_pair_lanes(c, q4, A, f);
    syn_pair_lanes(c, q6, A, f);
    const __m128i A3 = A;
    syn_pair_lanes(c, q8, A, f);
    if constexpr (kTrack) {
        const __m128i over = _mm_or_si128(_mm_or_si128(syn_over(x0, lim), syn_over(x8, lim)),
                                          _mm_or_si128(syn_over(A1, lim), syn_over(A, lim)));
        if (_mm_movemask_epi8(_mm_cmpeq_epi16(over, _mm_setzero_si128())) != 0xffff) [[unlikely]]
            return false;
        ovf = ovf || block_ovf;
    }
    p0 = A3;
    p8 = _mm_srli_si128(A, 12);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(y), p0);
    syn_store2(y + 8, p8);
    return true;
}

/// Whole blocks of ten samples in the lane form (while the values keep the
/// plain bound when kTrack); returns the count of samples done, the ten
/// outputs before that sample (mem at 0) in ps.
template <bool kTrack>
inline int syn_blocks_lanes(const Word16* a, std::int64_t limit, const Word16* x, Word16* y, int lg,
                            const Word16* mem, Word16* ps, bool& ovf) {
    const SynLaneCoefs c = syn_lane_coefs(a);
    const __m128i lim = _mm_set1_epi16(static_cast<short>(kTrack ? limit : 0));
    __m128i p0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(mem)), p8 = syn_load2(mem + 8);
    int i = 0;
    for (; i + kOrder <= lg; i += kOrder)
        if (!syn_block_lanes<kTrack>(c, lim, x + i, y + i, p0, p8, ovf)) [[unlikely]]
            break;
    _mm_storeu_si128(reinterpret_cast<__m128i*>(ps), p0);
    syn_store2(ps + 8, p8);
    return i;
}

/// sum |a_j| over the 11 coefficients, in lanes: |a| as unsigned lanes
/// (pabsw leaves 0x8000 for -32768), moved down by 32768 into pmaddwd's
/// signed range and the 16 lanes' 16 * 32768 added back.
inline std::int64_t syn_sum_abs(const Word16* a) {
    const __m128i bias = _mm_set1_epi16(static_cast<short>(0x8000)), ones = _mm_set1_epi16(1);
    const __m128i lo = _mm_abs_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(a)));  // a0..a7
    const __m128i hi = _mm_srli_si128(_mm_abs_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(a + 3))), 10);
    __m128i s = _mm_add_epi32(_mm_madd_epi16(_mm_xor_si128(lo, bias), ones),
                              _mm_madd_epi16(_mm_xor_si128(hi, bias), ones));
    s = _mm_hadd_epi32(s, s);
    s = _mm_hadd_epi32(s, s);
    return std::int64_t{_mm_cvtsi128_si32(s)} + 16 * 32768;
}

/// Syn_filt in the lane form: the same outputs and overflow report as
/// syn_filt_scalar. Whole blocks go in lanes while the plain bound holds
/// (checked once a block); from a block that breaks it, and for the last
/// lg % 10 samples, the scalar per-sample path runs.
inline bool syn_filt_lanes(const Word16* a, const Word16* x, Word16* y, int lg, const Word16* mem) {
    // The bound of syn_bound: limit >= 32768 (always plain) exactly when
    // sum |a| <= 32767, so the division is needed only otherwise.
    const std::int64_t sum_a = syn_sum_abs(a);
    const bool always_plain = sum_a <= 32767;
    const std::int64_t limit = always_plain ? std::int64_t{32768} : MAX_32 / (2 * sum_a);
    Word16 ps[kOrder] = {};
    bool lane_ovf = false;
    int i = 0;
    if (always_plain) {
        i = syn_blocks_lanes<false>(a, limit, x, y, lg, mem, ps, lane_ovf);
    } else {
        const __m128i lim = _mm_set1_epi16(static_cast<short>(limit));
        const __m128i over = _mm_or_si128(syn_over(_mm_loadu_si128(reinterpret_cast<const __m128i*>(mem)), lim),
                                          syn_over(_mm_loadu_si128(reinterpret_cast<const __m128i*>(mem + 2)), lim));
        if (_mm_movemask_epi8(_mm_cmpeq_epi16(over, _mm_setzero_si128())) != 0xffff)
            return syn_filt_scalar(a, x, y, lg, mem);  // the memory already past the bound
        i = syn_blocks_lanes<true>(a, limit, x, y, lg, mem, ps, lane_ovf);
    }
    if (i == lg) return lane_ovf;
    // The rest one sample at a time. syn_sample compares the peak only with
    // the limit, and every value so far kept within it: zero stands in for
    // the peak (mem may have been overwritten by then).
    SynBound b{};
    for (int j = 0; j <= kOrder; ++j) b.c[j] = a[j];
    b.limit = limit;
    b.always_plain = always_plain;
    Flag ovf = lane_ovf;
    Word32 w[kOrder];  // w[0] the newest
    for (int k = 0; k < kOrder; ++k) w[k] = ps[kOrder - 1 - k];
    syn_samples(a, b, x, y, i, lg, w, ovf);
    return ovf;
}
#endif

/// Syn_filt: y = x / A(z), a Q12, with the memory mem[0..9] (oldest first).
/// In-place use (y == x) is allowed. Returns true when a basic operator
/// saturated (the reference's Overflow flag). The memory is not touched.
inline bool syn_filt(const Word16* a, const Word16* x, Word16* y, int lg, const Word16* mem) {
#if defined(__SSSE3__)
    return syn_filt_lanes(a, x, y, lg, mem);
#else
    return syn_filt_scalar(a, x, y, lg, mem);
#endif
}

}  // namespace syn10
ZEPS_END_VARIANT
