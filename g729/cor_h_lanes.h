/* SPDX-License-Identifier: BSD-3-Clause */
// Cor_h's correlation chains (ITU-T G.729 3.8, Annex A A.3.8) as running
// sums of eight lags at a time in 32-bit lanes, for the plain case only: an
// impulse response h (Q12, scaled) with 2 sum h^2 <= MAX_32. Every chain
// value is extract_h of the doubled partial sum S_L(n) = sum_{j<n} h[j] h[j+L];
// by Cauchy-Schwarz |S_L(n)| <= sum h^2, so no lane can overflow and
// extract_h(2 S) = S >> 15 fits in 16 bits (the pack never saturates).
// All partial sums go to a table S[n-1][L]; kCorHSlots names, for each entry
// of the reference's rr[] layout, the (lag, length) it holds, in the order
// the reference's pointer walk fills them.
#pragma once

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT
namespace g729c {

inline constexpr int kCorHLen = 40;              // subframe length = longest chain
inline constexpr int kCorHSums = kCorHLen * kCorHLen;
inline constexpr int kCorHEntries = 616;         // size of rr[]

/// Slot of S_L(n) (n products of lag L) in the partial-sum table.
constexpr std::uint16_t cor_h_slot(int lag, int n) { return static_cast<std::uint16_t>((n - 1) * kCorHLen + lag); }

/// One chain of the reference's walk: put() advances and records the
/// running sum at an rr[] entry, skip() advances without a store.
struct CorHWalk {
    std::array<std::uint16_t, kCorHEntries>* at;
    int lag;
    int n = 0;
    constexpr void put(int idx) { (*at)[static_cast<std::size_t>(idx)] = cor_h_slot(lag, ++n); }
    constexpr void skip() { ++n; }
};

/// rr[] entry -> partial-sum slot, following the reference's Cor_h walk:
/// five diagonals of 8 at 0, then ten 8x8 blocks (i0i1, i0i2, i0i3, i0i4,
/// i1i2, i1i3, i1i4, i2i3, i2i4) from 40, each filled from its end in steps
/// of 9 along the chains of lags 1..4 (mod 5).
constexpr std::array<std::uint16_t, kCorHEntries> make_cor_h_slots() {
    std::array<std::uint16_t, kCorHEntries> at{};
    constexpr int P = 8, M = 64, D = 9;
    constexpr int b01 = 5 * P, b02 = b01 + M, b03 = b01 + 2 * M, b04 = b01 + 3 * M, b12 = b01 + 4 * M,
                  b13 = b01 + 5 * M, b14 = b01 + 6 * M, b23 = b01 + 7 * M, b24 = b01 + 8 * M;
    CorHWalk d{&at, 0};
    for (int i = 0; i < P; ++i)
        for (int q = 4; q >= 0; --q) d.put(q * P + P - 1 - i);
    for (int lag = 1; lag <= 4; ++lag) {
        for (int k = 0; k < P; ++k) {
            const int sup = M - 1 - P * k, inf = M - 2 - k;
            CorHWalk w{&at, lag + 5 * k};
            int t = 0;
            for (int i = k + 1; i < P; ++i, t += D) {
                switch (lag) {
                case 1: w.skip(); w.put(b23 + sup - t); w.put(b12 + sup - t); w.put(b01 + sup - t); w.put(b04 + inf - t); break;
                case 2: w.put(b24 + sup - t); w.put(b13 + sup - t); w.put(b02 + sup - t); w.put(b14 + inf - t); w.put(b03 + inf - t); break;
                case 3: w.put(b14 + sup - t); w.put(b03 + sup - t); w.put(b24 + inf - t); w.put(b13 + inf - t); w.put(b02 + inf - t); break;
                default: w.put(b04 + sup - t); w.skip(); w.put(b23 + inf - t); w.put(b12 + inf - t); w.put(b01 + inf - t); break;
                }
            }
            switch (lag) {
            case 1: w.skip(); w.put(b23 + sup - t); w.put(b12 + sup - t); w.put(b01 + sup - t); break;
            case 2: w.put(b24 + sup - t); w.put(b13 + sup - t); w.put(b02 + sup - t); break;
            case 3: w.put(b14 + sup - t); w.put(b03 + sup - t); break;
            default: w.put(b04 + sup - t); break;
            }
        }
    }
    return at;
}
inline constexpr std::array<std::uint16_t, kCorHEntries> kCorHSlots = make_cor_h_slots();

#if defined(__SSSE3__)
/// Eight lags' running sums (two halves of four lanes) advanced by one
/// product with the broadcast c, stored as extract_h of the doubled sums.
struct CorHLanes {
    __m128i lo = _mm_setzero_si128(), hi = _mm_setzero_si128();
    void step(const Word16* b, __m128i c, Word16* out) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b));
        const __m128i pl = _mm_mullo_epi16(v, c), ph = _mm_mulhi_epi16(v, c);
        lo = _mm_add_epi32(lo, _mm_unpacklo_epi16(pl, ph));
        hi = _mm_add_epi32(hi, _mm_unpackhi_epi16(pl, ph));
        const __m128i s = _mm_packs_epi32(_mm_srai_epi32(lo, 15), _mm_srai_epi32(hi, 15));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), s);
    }
};
#endif

/// S[(n-1) 40 + L] = extract_h(2 S_L(n)) for every lag L and length
/// n <= 40 - L, eight lags per lane set, two sets sharing each broadcast
/// (other entries are left unspecified).
inline void cor_h_partial_sums(const Word16* h, Word16* S) {
    alignas(16) Word16 hp[kCorHLen + 8] = {};
    for (int i = 0; i < kCorHLen; ++i) hp[i] = h[i];
#if defined(__SSSE3__)
    for (int l0 = 0; l0 < kCorHLen; l0 += 16) {
        CorHLanes a, b;
        const int both = l0 + 8 < kCorHLen ? kCorHLen - l0 - 8 : 0;
        int j = 0;
        for (; j < both; ++j) {
            const __m128i c = _mm_set1_epi16(hp[j]);
            a.step(hp + j + l0, c, S + j * kCorHLen + l0);
            b.step(hp + j + l0 + 8, c, S + j * kCorHLen + l0 + 8);
        }
        for (; j < kCorHLen - l0; ++j) a.step(hp + j + l0, _mm_set1_epi16(hp[j]), S + j * kCorHLen + l0);
    }
#else
    for (int l0 = 0; l0 < kCorHLen; l0 += 8) {
        Word32 acc[8] = {};
        for (int j = 0; j < kCorHLen - l0; ++j)
            for (int m = 0; m < 8; ++m) {
                acc[m] += Word32{hp[j]} * hp[j + l0 + m];
                S[j * kCorHLen + l0 + m] = static_cast<Word16>(acc[m] >> 15);
            }
    }
#endif
}

/// rr[i] = S[kCorHSlots[i]], unrolled so that every slot is a constant
/// offset (in runs of eight: folds stay short for every compiler).
template <std::size_t Base, std::size_t... I>
inline void scatter_cor_h8(const Word16* S, Word16* rr, std::index_sequence<I...>) {
    ((rr[Base + I] = S[kCorHSlots[Base + I]]), ...);
}
template <std::size_t... R>
inline void scatter_cor_h(const Word16* S, Word16* rr, std::index_sequence<R...>) {
    static_assert(kCorHEntries % 8 == 0);
    (scatter_cor_h8<8 * R>(S, rr, std::make_index_sequence<8>{}), ...);
}

/// The plain chains in lanes: rr[] (616 entries) from the partial sums.
inline void cor_h_chains_lanes(const Word16* h, Word16* rr) {
    Word16 S[kCorHSums];
    cor_h_partial_sums(h, S);
    scatter_cor_h(S, rr, std::make_index_sequence<kCorHEntries / 8>{});
}

}  // namespace g729c
ZEPS_END_VARIANT
