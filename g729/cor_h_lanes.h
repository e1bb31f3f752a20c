/* SPDX-License-Identifier: BSD-3-Clause */
// Cor_h's correlation matrix (ITU-T G.729 3.8, Annex A A.3.8) written block
// row by block row, for the plain case only: an impulse response h (Q12,
// scaled) with 2 sum h^2 <= MAX_32.
//
// With h zero outside 0..39, the entry of rr[] at pulse positions (i, j) is
// extract_h of the doubled R(i, j) = sum_{n=0}^{39} h[n - i] h[n - j]: the
// reference's chain for lag |i - j| stopped after 40 - max(i, j) products.
// Moving both positions on by one track step drops the products of n = 35..39:
//   R(i, j) = R(i + 5, j + 5) + sum_{q=0}^{4} h[35 + q - i] h[35 + q - j],
// and R is 0 once either position reaches 40. Row r of the block of tracks
// (ta, tb) holds R(ta + 5r, tb + 5c) for c = 0..7, so it is row r + 1 moved
// one column to the left (a zero entering at c = 7) plus eight five-term
// products: the rows are built from the last one up, with no partial-sum
// table and no scatter.
//
// Exactness: every value summed is a sum of products h[k] h[k + L] over a
// run of k, at most sum h^2 <= 2^30 - 1 in magnitude (Cauchy-Schwarz), so
// the lanes' 32-bit sums are exact (wrapping adds would even hide an
// intermediate overflow, and none occurs) and extract_h(2 R) = R >> 15 fits
// in 16 bits (the pack never saturates). The diagonals are the running
// energy, as the reference sums it.
#pragma once

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT
namespace g729c {

inline constexpr int kCorHLen = 40;  // subframe length = longest chain
inline constexpr int kCorHPad = 40;  // zeros ahead of h in the padded copy
inline constexpr int kCorHBlocks = 9;  // cross blocks i0i1 .. i2i4 after the five diagonals

/// Tracks (ta, tb) of the cross blocks in rr[] order.
inline constexpr int kCorHBlockTracks[kCorHBlocks][2] = {{0, 1}, {0, 2}, {0, 3}, {0, 4}, {1, 2},
                                                         {1, 3}, {1, 4}, {2, 3}, {2, 4}};

/// The five diagonals, rr[8 t + r] = extract_h(2 R(t + 5r, t + 5r)): the
/// running energy of h, stored from the end of each diagonal.
inline void cor_h_diagonals(const Word16* h, Word16* rr) {
    Word32 cor = 0;
    const Word16* ph = h;
#pragma GCC unroll 8
    for (int i = 0; i < 8; ++i)
#pragma GCC unroll 5
        for (int t = 4; t >= 0; --t) {
            cor += 2 * (static_cast<Word32>(*ph) * *ph);
            ++ph;
            rr[8 * t + 7 - i] = extract_h(cor);
        }
}

/// Cor_h's scaling of the impulse response: h = shr(H, 1) when halve, else
/// shl(H, k) (k = 0..15), over 40 samples.
inline void cor_h_scale_scalar(const Word16* H, bool halve, Word16 k, Word16* h) {
    for (int i = 0; i < kCorHLen; ++i) h[i] = halve ? shr(H[i], 1) : shl(H[i], k);
}

/// cor_h_scale in lanes, exact for every input: shr by 1 is the arithmetic
/// shift; for k <= 15, H 2^k lies within +-2^30, so the 32-bit shift is
/// exact and the signed saturating pack is shl's clamp.
inline void cor_h_scale(const Word16* H, bool halve, Word16 k, Word16* h) {
#if defined(__SSSE3__)
    const __m128i count = _mm_cvtsi32_si128(k);
    for (int i = 0; i < kCorHLen; i += 8) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(H + i));
        __m128i r;
        if (halve) {
            r = _mm_srai_epi16(v, 1);
        } else {
            const __m128i lo = _mm_sll_epi32(_mm_srai_epi32(_mm_unpacklo_epi16(v, v), 16), count);
            const __m128i hi = _mm_sll_epi32(_mm_srai_epi32(_mm_unpackhi_epi16(v, v), 16), count);
            r = _mm_packs_epi32(lo, hi);
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(h + i), r);
    }
#else
    cor_h_scale_scalar(H, halve, k, h);
#endif
}

/// h behind kCorHPad zeros (and zeros after): hz[kCorHPad + k] = h[k].
struct CorHPadded {
    alignas(16) Word16 v[kCorHPad + kCorHLen + 16] = {};
    explicit CorHPadded(const Word16* h) { std::memcpy(v + kCorHPad, h, kCorHLen * sizeof(Word16)); }
    /// h[k] for any k in -40..55 (zero outside 0..39).
    Word16 at(int k) const { return v[kCorHPad + k]; }
};

#if defined(__SSSE3__)
/// The operands of every block, built once: rows[k + 2] holds the pair
/// (h[k], h[k + 1]) in every lane (k = -2..39, the rows' broadcasts);
/// cols[s + 4][half], s = -4..4, holds in lane l the pair (h[35 - s - 5c],
/// h[36 - s - 5c]) of column c = 4 half + l, and last[tb][half] the pair
/// (h[39 - tb - 5c], 0). The columns come from the decimated h read
/// backwards, dec[e][c] = h[40 - e - 5c], eight columns in one load.
struct CorHOperands {
    alignas(16) __m128i rows[42];
    alignas(16) __m128i cols[9][2];
    alignas(16) __m128i last[5][2];
    explicit CorHOperands(const CorHPadded& hz) {
        for (int k = -2; k < 40; ++k) {
            std::int32_t p;
            std::memcpy(&p, hz.v + kCorHPad + k, sizeof p);
            rows[k + 2] = _mm_set1_epi32(p);
        }
        alignas(16) Word16 dec[5][16] = {};
#pragma GCC unroll 9
        for (int c = 0; c < 9; ++c)
#pragma GCC unroll 5
            for (int e = 0; e < 5; ++e) dec[e][c] = hz.v[kCorHPad + 40 - e - 5 * c];
        // h[40 - d - 5c] = dec[d % 5][c + d / 5].
        auto column = [&](int d) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(dec[d % 5] + d / 5)); };
#pragma GCC unroll 9
        for (int s = -4; s <= 4; ++s) {
            const __m128i x = column(5 + s), y = column(4 + s);
            cols[s + 4][0] = _mm_unpacklo_epi16(x, y);
            cols[s + 4][1] = _mm_unpackhi_epi16(x, y);
        }
#pragma GCC unroll 5
        for (int tb = 0; tb < 5; ++tb) {
            const __m128i x = column(1 + tb);
            last[tb][0] = _mm_unpacklo_epi16(x, _mm_setzero_si128());
            last[tb][1] = _mm_unpackhi_epi16(x, _mm_setzero_si128());
        }
    }
};

/// One cross block (tracks ta < tb), rows 7 down to 0, eight columns in two
/// halves of four 32-bit lanes. The five products of an entry are the pmaddwd
/// pairs q = (0, 1), (2, 3) and (4, 5) of h[35 + q - i] (the row broadcast)
/// with h[35 + q - tb - 5c] (the columns, zero for q = 5).
template <int ta, int tb>
inline void cor_h_block_lanes(const CorHOperands& op, Word16* block) {
    const __m128i c00 = op.cols[tb + 4][0], c01 = op.cols[tb + 4][1];
    const __m128i c10 = op.cols[tb + 2][0], c11 = op.cols[tb + 2][1];
    const __m128i c20 = op.last[tb][0], c21 = op.last[tb][1];
    __m128i lo = _mm_setzero_si128(), hi = _mm_setzero_si128();
#pragma GCC unroll 8
    for (int r = 7; r >= 0; --r) {
        const __m128i* a = op.rows + 2 + 35 - ta - 5 * r;  // pairs from h[35 - i]
        lo = _mm_alignr_epi8(hi, lo, 4);  // column c takes row r + 1's column c + 1
        hi = _mm_srli_si128(hi, 4);
        lo = _mm_add_epi32(lo, _mm_add_epi32(_mm_add_epi32(_mm_madd_epi16(a[0], c00), _mm_madd_epi16(a[2], c10)),
                                             _mm_madd_epi16(a[4], c20)));
        hi = _mm_add_epi32(hi, _mm_add_epi32(_mm_add_epi32(_mm_madd_epi16(a[0], c01), _mm_madd_epi16(a[2], c11)),
                                             _mm_madd_epi16(a[4], c21)));
        const __m128i s = _mm_packs_epi32(_mm_srai_epi32(lo, 15), _mm_srai_epi32(hi, 15));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(block + 8 * r), s);
    }
}

template <std::size_t... B>
inline void cor_h_blocks_lanes(const CorHOperands& op, Word16* blocks, std::index_sequence<B...>) {
    (cor_h_block_lanes<kCorHBlockTracks[B][0], kCorHBlockTracks[B][1]>(op, blocks + 64 * B), ...);
}
#else
/// The same block recursion one entry at a time (hosts without SSSE3).
inline void cor_h_block_lanes(const CorHPadded& hz, int ta, int tb, Word16* block) {
    Word32 row[9] = {};  // row[8] stays 0: R past the last position
    for (int r = 7; r >= 0; --r) {
        const int i = ta + 5 * r;
        for (int c = 0; c < 8; ++c) {
            const int j = tb + 5 * c;
            Word32 s = row[c + 1];
            for (int q = 0; q < 5; ++q) s += static_cast<Word32>(hz.at(35 + q - i)) * hz.at(35 + q - j);
            row[c] = s;
            block[8 * r + c] = static_cast<Word16>(s >> 15);
        }
    }
}
#endif

/// The plain chains: rr[] (616 entries), five diagonals of 8, then the nine
/// cross blocks of 64.
inline void cor_h_chains_lanes(const Word16* h, Word16* rr) {
    cor_h_diagonals(h, rr);
    const CorHPadded hz(h);
#if defined(__SSSE3__)
    const CorHOperands op(hz);
    cor_h_blocks_lanes(op, rr + 40, std::make_index_sequence<kCorHBlocks>{});
#else
    for (int b = 0; b < kCorHBlocks; ++b)
        cor_h_block_lanes(hz, kCorHBlockTracks[b][0], kCorHBlockTracks[b][1], rr + 40 + 64 * b);
#endif
}

}  // namespace g729c
ZEPS_END_VARIANT
