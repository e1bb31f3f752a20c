/* SPDX-License-Identifier: BSD-3-Clause */
// Private kernels of the G.729 fixed-codebook searches (ITU-T G.729 3.8,
// Annex A A.3.8): the correlation matrix of the impulse response at the
// pulse positions (Cor_h) and the backward-filtered target (Cor_h_X), in
// the reference's rr[] layout. Impulse response Q12, target Q0.
#pragma once

#include <cstdint>

#include "common/basic_op.h"
#include "g729/codec_kernels.h"
#include "g729/cor_h_lanes.h"
#include "g729/pitch_kernels.h"

ZEPS_BEGIN_VARIANT
namespace g729c {

inline constexpr int kStep = 5;
inline constexpr int kNbPos = 8;
inline constexpr int kMSize = 64;
inline constexpr int kDimRR = 616;
inline constexpr Word16 k1_2 = 16384, k1_4 = 8192, k1_8 = 4096, k1_16 = 2048;

/// The correlation matrix of the impulse response, laid out as the
/// reference's rr[]: five diagonals of 8, then ten cross blocks of 64.
struct RR {
    Word16 v[kDimRR];
    Word16* i0i0() { return v; }
    Word16* i1i1() { return v + kNbPos; }
    Word16* i2i2() { return v + 2 * kNbPos; }
    Word16* i3i3() { return v + 3 * kNbPos; }
    Word16* i4i4() { return v + 4 * kNbPos; }
    Word16* i0i1() { return v + 5 * kNbPos; }
    Word16* i0i2() { return i0i1() + kMSize; }
    Word16* i0i3() { return i0i1() + 2 * kMSize; }
    Word16* i0i4() { return i0i1() + 3 * kMSize; }
    Word16* i1i2() { return i0i1() + 4 * kMSize; }
    Word16* i1i3() { return i0i1() + 5 * kMSize; }
    Word16* i1i4() { return i0i1() + 6 * kMSize; }
    Word16* i2i3() { return i0i1() + 7 * kMSize; }
    Word16* i2i4() { return i0i1() + 8 * kMSize; }
};

/// cor = L_mac(cor, h1[k], h2[k]) and advance, as the reference's pointer
/// pairs; Plain when no partial sum can saturate (the plain doubled sum).
template <bool Plain>
inline Word32 mac1(Word32 cor, Word16 a, Word16 b) {
    if constexpr (Plain)
        return cor + 2 * (Word32{a} * b);
    else
        return L_mac(cor, a, b);
}
template <bool Plain>
inline Word32 mac_step(Word32 cor, const Word16*& a, const Word16*& b) {
    cor = mac1<Plain>(cor, *a, *b);
    ++a;
    ++b;
    return cor;
}

/// The correlation chains of Cor_h over the scaled impulse response h.
template <bool Plain>
inline void cor_h_chains(const Word16* h, RR& rr);

/// Cor_h: the correlations of the (scaled) impulse response at the pulse
/// positions. Every chain is a partial sum of products h[k] h[k + d], whose
/// magnitude never exceeds the energy of h (Cauchy-Schwarz); when twice
/// that energy fits in 31 bits the chains are plain 32-bit sums (eight lags
/// at a time in lanes where SSSE3 is available, g729/cor_h_lanes.h).
inline void cor_h(const Word16* H, RR& rr) {
    Word16 h[kSubfr];
    // The L_mac(H[i], H[i]) chain from 0: non-negative terms, so the exact
    // sum clamped at MAX_32 (code_energy).
    const Word32 cor = code_energy(H);
    const bool halve = extract_h(cor) > 32000;
    cor_h_scale(H, halve, halve ? static_cast<Word16>(0) : shr(norm_l(cor), 1), h);
    const std::int64_t e = g729p::energy64(h, kSubfr);
    if (2 * e <= MAX_32) {
#if defined(__SSSE3__)
        cor_h_chains_lanes(h, rr.v);
#else
        cor_h_chains<true>(h, rr);
#endif
    } else
        cor_h_chains<false>(h, rr);
}

template <bool Plain>
inline void cor_h_chains(const Word16* h, RR& rr) {
    Word32 cor;
    // The diagonals, filled from their last position down (indices, so that
    // no pointer steps before the start of rr).
    const Word16* ph = h;
    cor = 0;
    for (int i = 0; i < kNbPos; ++i) {
        const int at = kNbPos - 1 - i;
        cor = mac1<Plain>(cor, *ph, *ph); ++ph; rr.i4i4()[at] = extract_h(cor);
        cor = mac1<Plain>(cor, *ph, *ph); ++ph; rr.i3i3()[at] = extract_h(cor);
        cor = mac1<Plain>(cor, *ph, *ph); ++ph; rr.i2i2()[at] = extract_h(cor);
        cor = mac1<Plain>(cor, *ph, *ph); ++ph; rr.i1i1()[at] = extract_h(cor);
        cor = mac1<Plain>(cor, *ph, *ph); ++ph; rr.i0i0()[at] = extract_h(cor);
    }
    Word16 *p0, *p1, *p2, *p3, *p4;
    constexpr int ldec = kNbPos + 1;
    // Lag 1 (mod 5) blocks.
    {
        int l_fin_sup = kMSize - 1, l_fin_inf = l_fin_sup - 1;
        constexpr int lag = 1;
        for (int k = 0; k < kNbPos; ++k) {
            p3 = rr.i2i3() + l_fin_sup; p2 = rr.i1i2() + l_fin_sup; p1 = rr.i0i1() + l_fin_sup;
            p0 = rr.i0i4() + l_fin_inf;
            cor = 0;
            const Word16 *a = h, *b = h + lag + kStep * k;
            for (int i = k + 1; i < kNbPos; ++i) {
                cor = mac_step<Plain>(cor, a, b);
                cor = mac_step<Plain>(cor, a, b); *p3 = extract_h(cor);
                cor = mac_step<Plain>(cor, a, b); *p2 = extract_h(cor);
                cor = mac_step<Plain>(cor, a, b); *p1 = extract_h(cor);
                cor = mac_step<Plain>(cor, a, b); *p0 = extract_h(cor);
                p3 -= ldec; p2 -= ldec; p1 -= ldec; p0 -= ldec;
            }
            cor = mac_step<Plain>(cor, a, b);
            cor = mac_step<Plain>(cor, a, b); *p3 = extract_h(cor);
            cor = mac_step<Plain>(cor, a, b); *p2 = extract_h(cor);
            cor = mac_step<Plain>(cor, a, b); *p1 = extract_h(cor);
            l_fin_sup -= kNbPos; --l_fin_inf;
        }
    }
    // Lag 2 blocks.
    {
        int l_fin_sup = kMSize - 1, l_fin_inf = l_fin_sup - 1;
        constexpr int lag = 2;
        for (int k = 0; k < kNbPos; ++k) {
            p4 = rr.i2i4() + l_fin_sup; p3 = rr.i1i3() + l_fin_sup; p2 = rr.i0i2() + l_fin_sup;
            p1 = rr.i1i4() + l_fin_inf; p0 = rr.i0i3() + l_fin_inf;
            cor = 0;
            const Word16 *a = h, *b = h + lag + kStep * k;
            for (int i = k + 1; i < kNbPos; ++i) {
                cor = mac_step<Plain>(cor, a, b); *p4 = extract_h(cor);
                cor = mac_step<Plain>(cor, a, b); *p3 = extract_h(cor);
                cor = mac_step<Plain>(cor, a, b); *p2 = extract_h(cor);
                cor = mac_step<Plain>(cor, a, b); *p1 = extract_h(cor);
                cor = mac_step<Plain>(cor, a, b); *p0 = extract_h(cor);
                p4 -= ldec; p3 -= ldec; p2 -= ldec; p1 -= ldec; p0 -= ldec;
            }
            cor = mac_step<Plain>(cor, a, b); *p4 = extract_h(cor);
            cor = mac_step<Plain>(cor, a, b); *p3 = extract_h(cor);
            cor = mac_step<Plain>(cor, a, b); *p2 = extract_h(cor);
            l_fin_sup -= kNbPos; --l_fin_inf;
        }
    }
    // Lag 3 blocks.
    {
        int l_fin_sup = kMSize - 1, l_fin_inf = l_fin_sup - 1;
        constexpr int lag = 3;
        for (int k = 0; k < kNbPos; ++k) {
            p4 = rr.i1i4() + l_fin_sup; p3 = rr.i0i3() + l_fin_sup; p2 = rr.i2i4() + l_fin_inf;
            p1 = rr.i1i3() + l_fin_inf; p0 = rr.i0i2() + l_fin_inf;
            cor = 0;
            const Word16 *a = h, *b = h + lag + kStep * k;
            for (int i = k + 1; i < kNbPos; ++i) {
                cor = mac_step<Plain>(cor, a, b); *p4 = extract_h(cor);
                cor = mac_step<Plain>(cor, a, b); *p3 = extract_h(cor);
                cor = mac_step<Plain>(cor, a, b); *p2 = extract_h(cor);
                cor = mac_step<Plain>(cor, a, b); *p1 = extract_h(cor);
                cor = mac_step<Plain>(cor, a, b); *p0 = extract_h(cor);
                p4 -= ldec; p3 -= ldec; p2 -= ldec; p1 -= ldec; p0 -= ldec;
            }
            cor = mac_step<Plain>(cor, a, b); *p4 = extract_h(cor);
            cor = mac_step<Plain>(cor, a, b); *p3 = extract_h(cor);
            l_fin_sup -= kNbPos; --l_fin_inf;
        }
    }
    // Lag 4 blocks.
    {
        int l_fin_sup = kMSize - 1, l_fin_inf = l_fin_sup - 1;
        constexpr int lag = 4;
        for (int k = 0; k < kNbPos; ++k) {
            p3 = rr.i0i4() + l_fin_sup; p2 = rr.i2i3() + l_fin_inf; p1 = rr.i1i2() + l_fin_inf;
            p0 = rr.i0i1() + l_fin_inf;
            cor = 0;
            const Word16 *a = h, *b = h + lag + kStep * k;
            for (int i = k + 1; i < kNbPos; ++i) {
                cor = mac_step<Plain>(cor, a, b); *p3 = extract_h(cor);
                cor = mac_step<Plain>(cor, a, b);
                cor = mac_step<Plain>(cor, a, b); *p2 = extract_h(cor);
                cor = mac_step<Plain>(cor, a, b); *p1 = extract_h(cor);
                cor = mac_step<Plain>(cor, a, b); *p0 = extract_h(cor);
                p3 -= ldec; p2 -= ldec; p1 -= ldec; p0 -= ldec;
            }
            cor = mac_step<Plain>(cor, a, b); *p3 = extract_h(cor);
            l_fin_sup -= kNbPos; --l_fin_inf;
        }
    }
}

/// Cor_h_X: the target filtered backwards through h, normalised to 13 bits
/// (the correlations in 32-bit lanes when the energy bound allows).
inline void cor_h_x(const Word16* h, const Word16* x, Word16* d) { g729p::cor_h_x(h, x, d); }

}  // namespace g729c
ZEPS_END_VARIANT
