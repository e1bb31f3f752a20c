/* SPDX-License-Identifier: BSD-3-Clause */
// The order-10 LP synthesis filter 1/A(z) (Syn_filt of ITU-T G.729 and of
// 3GPP TS 26.073, the same routine to the bit), shared by the G.729 and
// GSM-AMR stages: y = x / A(z), a Q12, signals Q0, with the reference's
// L_mult / L_msu chain, L_shl by 3 and rounding.
//
// While 2 * sum|a| * max|value so far| stays within 31 bits the chain is a
// plain 32-bit sum. With SSSE3 blocks of ten samples run with the seven
// oldest products in one pmaddwd while that bound holds; the scalar form,
// syn_filt_scalar, is kept and held equal by the tests.
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
/// The state of the lane form before an even sample i: y[i-3..i-10] in
/// lanes 0..7 of w (lane k holds y[i-3-k]), y[i-1..i-3] in scalars. The
/// samples go in pairs: the seven oldest products of both (taps 4..10) come
/// from w alone, one pmaddwd each and one shared horizontal sum; three
/// scalar taps leave the lane path (insert, pmaddwd, horizontal sum) three
/// samples to deliver its part, so the recursion waits only on the newest
/// product.
struct SynLanes {
    __m128i w;
    std::int64_t y1, y2, y3;
};

/// The lane state before sample i from prev = y[i-10..i-1] (oldest first).
inline SynLanes syn_lanes_from(const Word16* prev) {
    const __m128i rev = _mm_setr_epi8(14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1);
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(prev));
    return {_mm_shuffle_epi8(v, rev), prev[kOrder - 1], prev[kOrder - 2], prev[kOrder - 3]};
}

/// a[4..10] in lanes 0..6, lane 7 zero: the odd sample's coefficients
/// (lane k meets y[(i+1)-4-k]).
inline __m128i syn_lane_coefficients(const Word16* a) {
    return _mm_srli_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(a + 3)), 2);
}

/// One sample on the plain sum given lanes = sum_{j>=4} c_j y[i-j]:
/// c0 x + 0x800 - lanes - c3 y[i-3] - c2 y[i-2] - c1 y[i-1], the newest
/// product last; then round(L_shl(2 acc, 3)) = (acc + 0x800) >> 12 unless
/// L_shl or the rounding saturates (acc outside [-2^27, 0x07fff7ff]), so
/// the recursion waits on one multiply, a subtraction and a shift a sample.
/// Returns |output|. The products and sums are exact whenever the block's
/// values keep the plain bound (checked by the caller, which discards the
/// block otherwise; a wrapped lane sum is then only discarded).
template <int K>
[[gnu::always_inline]] inline std::int64_t syn_out_lanes(const std::int64_t* c, std::int32_t lanes, const Word16* x,
                                                         Word16* out, SynLanes& s, bool& ovf) {
    const std::int64_t older = c[0] * x[K] + 0x800 - lanes - c[3] * s.y3 - c[2] * s.y2;
    const std::int64_t t = older - c[1] * s.y1;  // acc + 0x800
    std::int64_t o = t >> 12;
    if (t < -0x07fff800 || t > 0x07ffffff) [[unlikely]] {
        ovf = true;
        o = t > 0 ? MAX_16 : MIN_16;
    }
    s.y3 = s.y2;
    s.y2 = s.y1;
    s.y1 = o;
    out[K] = static_cast<Word16>(o);
    return o < 0 ? -o : o;
}

/// Samples K and K+1 (K even): both lane sums from w (the even sample's
/// coefficients are the odd one's moved up a lane, lane 0 meeting zero),
/// then the two outputs; w moves on two lanes.
template <int K>
[[gnu::always_inline]] inline std::int64_t syn_pair_lanes(const std::int64_t* c, __m128i cv_odd, __m128i cv_even,
                                                          const Word16* x, Word16* out, SynLanes& s, bool& ovf) {
    __m128i h = _mm_hadd_epi32(_mm_madd_epi16(s.w, cv_even), _mm_madd_epi16(s.w, cv_odd));
    h = _mm_add_epi32(h, _mm_shuffle_epi32(h, 0xb1));
    const std::int32_t even = _mm_cvtsi128_si32(h), odd = _mm_cvtsi128_si32(_mm_srli_si128(h, 8));
    const std::int64_t y1 = s.y1, y2 = s.y2;
    const std::int64_t m0 = syn_out_lanes<K>(c, even, x, out, s, ovf);
    const std::int64_t m1 = syn_out_lanes<K + 1>(c, odd, x, out, s, ovf);
    s.w = _mm_insert_epi16(_mm_insert_epi16(_mm_slli_si128(s.w, 4), static_cast<int>(y1), 0), static_cast<int>(y2), 1);
    return std::max(m0, m1);
}

/// Ten samples (five pairs) on the plain sum; returns the largest |output| when kTrack.
template <bool kTrack, std::size_t... P>
[[gnu::always_inline]] inline std::int64_t syn_block10_lanes(const std::int64_t* c, __m128i cv_odd, __m128i cv_even,
                                                             const Word16* x, Word16* out, SynLanes& s, bool& ovf,
                                                             std::index_sequence<P...>) {
    std::int64_t m = 0;
    if constexpr (kTrack)
        ((m = std::max(m, syn_pair_lanes<2 * static_cast<int>(P)>(c, cv_odd, cv_even, x, out, s, ovf))), ...);
    else
        (syn_pair_lanes<2 * static_cast<int>(P)>(c, cv_odd, cv_even, x, out, s, ovf), ...);
    return m;
}

/// Whole blocks of ten samples in the lane form while every value (memory,
/// inputs, outputs) keeps the plain bound; a block that breaks it is
/// discarded (nothing written: y may be x) and the count of samples done
/// returned. prev holds the ten newest outputs (oldest first) on return.
template <bool kTrack>
inline int syn_blocks_lanes(const Word16* a, SynBound& b, const Word16* x, Word16* y, int lg, Word16* prev,
                            bool& ovf) {
    const std::int64_t c[4] = {a[0], a[1], a[2], a[3]};
    const __m128i cv = syn_lane_coefficients(a), cv_even = _mm_slli_si128(cv, 2);
    SynLanes s = syn_lanes_from(prev);
    int i = 0;
    for (; i + kOrder <= lg; i += kOrder) {
        std::int64_t xm = 0;
        if constexpr (kTrack) {
            for (int k = 0; k < kOrder; ++k)
                xm = std::max<std::int64_t>(xm, x[i + k] < 0 ? -std::int64_t{x[i + k]} : x[i + k]);
            if (std::max(b.peak, xm) > b.limit) break;
        }
        Word16 out[kOrder];
        bool block_ovf = false;
        const std::int64_t m =
            syn_block10_lanes<kTrack>(c, cv, cv_even, x + i, out, s, block_ovf, std::make_index_sequence<kOrder / 2>{});
        if constexpr (kTrack) {
            if (m > b.limit) break;
            b.peak = std::max(b.peak, std::max(m, xm));
        }
        ovf = ovf || block_ovf;
        std::memcpy(y + i, out, sizeof out);
        std::memcpy(prev, out, sizeof out);
    }
    return i;
}

/// Syn_filt in the lane form: the same outputs and overflow report as
/// syn_filt_scalar; blocks past the plain bound and the last lg % 10
/// samples take the scalar per-sample path.
inline bool syn_filt_lanes(const Word16* a, const Word16* x, Word16* y, int lg, const Word16* mem) {
    SynBound b = syn_bound(a, mem);
    Word16 prev[kOrder];
    std::memcpy(prev, mem, sizeof prev);
    bool block_ovf = false;
    const int i = b.always_plain ? syn_blocks_lanes<false>(a, b, x, y, lg, prev, block_ovf)
                                 : syn_blocks_lanes<true>(a, b, x, y, lg, prev, block_ovf);
    Flag ovf = block_ovf;
    Word32 w[kOrder];  // w[0] the newest
    for (int k = 0; k < kOrder; ++k) w[k] = prev[kOrder - 1 - k];
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
