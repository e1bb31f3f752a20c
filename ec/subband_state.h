/* SPDX-License-Identifier: BSD-3-Clause */
// Sub-band filter-bank states (weighted overlap-add bank over a real FFT of
// N = 2^order points, frame F, window L = m N taps) and their layout inside
// the caller's block.
//
// Each state starts at the first 16-byte boundary of the caller's block and
// holds pointers into itself (it is never copied byte-wise). Before any use,
// the processing functions check the header (subband_state_ok): the magic
// value of its precision, lengths an initialisation can give, and every
// pointer at the place the initialisation put it in this very block (a
// copied or moved state points into its old block, a zero or random block has
// no magic), and the transform description's order; a block failing any of
// these is refused before anything is read through its pointers. Layout:
//   16-bit: header (48 bytes), window copy Q13 (round16(2L)), delay line
//           (round16(2L)), fixed-point FFT description (S).
//   float:  header (40 bytes), float FFT description (S = 8 mod 16, so its
//           tables and everything after are 16-byte aligned), window copy
//           (4L), delay line (4L).
// Work buffer (also rounded up to 16 inside): the folded block / the time
// block of the inverse (round16(4N) bytes), then the FFT's work area.
#pragma once

#include <cstddef>
#include <cstdint>

#include "common/basic_op.h"
#include "common/rfft.h"
#include "zepsc.h"

ZEPS_BEGIN_VARIANT

struct SubbandState16s {
    Word16* pDelay;         // L samples, oldest first
    Word16* pWindow;        // L taps, Q13 (right after the header)
    RfftDesc32s* pDesc;     // real FFT of order log2 N, inverse divided by N
    std::int32_t len;       // L
    std::int32_t fftLen;    // N
    std::int32_t frameSize; // F
    std::int32_t magic;     // kSubbandMagic16s once the state is complete
    std::int32_t narrow;    // 1 when every tap lies in -8191 .. 8191 (narrow kernels)
};

struct SubbandState32f {
    std::int32_t len;       // L
    std::int32_t fftLen;    // N
    std::int32_t frameSize; // F
    std::int32_t magic;     // kSubbandMagic32f once the state is complete
    float* pDelay;          // L samples, oldest first
    float* pWindow;         // L taps
    RfftDesc32f* pDesc;     // real FFT of order log2 N, inverse divided by N (right after the header)
};

inline constexpr std::int32_t kSubbandMagic16s = 0x31364253;  // "SB16"
inline constexpr std::int32_t kSubbandMagic32f = 0x46324253;  // "SB2F"

inline constexpr std::size_t kSubbandHeader16s = 48;
inline constexpr std::size_t kSubbandHeader32f = 40;
static_assert(sizeof(SubbandState16s) <= kSubbandHeader16s);
static_assert(sizeof(SubbandState32f) == kSubbandHeader32f);

inline constexpr std::int64_t round16(std::int64_t n) { return (n + 15) & ~std::int64_t{15}; }

/// First 16-byte boundary at or after p.
template <class T>
inline T* align16(Zep8u* p) {
    const auto a = reinterpret_cast<std::uintptr_t>(p);
    return reinterpret_cast<T*>(p + ((16 - (a & 15)) & 15));
}

/// log2 n for a power of two n in 2..2^kRfftMaxOrder, else -1.
inline int subband_order_of(std::int32_t n) {
    for (int k = kRfftMinOrder; k <= kRfftMaxOrder; ++k)
        if (n == (std::int32_t{1} << k)) return k;
    return -1;
}

/// Lengths an initialisation can give: N a power of two the transform
/// takes, F in 1..N, L a positive multiple of N.
inline bool subband_lengths_ok(std::int32_t L, std::int32_t N, std::int32_t F) {
    return subband_order_of(N) > 0 && F >= 1 && F <= N && L >= N && L % N == 0;
}

/// Address arithmetic on integers (a garbage length must not form an
/// out-of-range pointer).
inline bool points_at(const void* p, const Zep8u* base, std::int64_t offset) {
    return reinterpret_cast<std::uintptr_t>(p) ==
           reinterpret_cast<std::uintptr_t>(base) + static_cast<std::uint64_t>(offset);
}

/// True when the block holds a complete 16-bit state built in this block.
inline bool subband_state_ok(const SubbandState16s* s) {
    const auto* base = reinterpret_cast<const Zep8u*>(s);
    if (s->magic != kSubbandMagic16s || !subband_lengths_ok(s->len, s->fftLen, s->frameSize)) return false;
    const std::int64_t w = round16(2 * std::int64_t{s->len});
    if (!points_at(s->pWindow, base, kSubbandHeader16s) || !points_at(s->pDelay, base, kSubbandHeader16s + w) ||
        !points_at(s->pDesc, base, kSubbandHeader16s + 2 * w))
        return false;
    return s->pDesc->order == subband_order_of(s->fftLen);
}

/// True when the block holds a complete float state built in this block.
inline bool subband_state_ok(const SubbandState32f* s) {
    const auto* base = reinterpret_cast<const Zep8u*>(s);
    if (s->magic != kSubbandMagic32f || !subband_lengths_ok(s->len, s->fftLen, s->frameSize)) return false;
    if (!points_at(s->pDesc, base, kSubbandHeader32f)) return false;
    const int order = subband_order_of(s->fftLen);
    int S = 0, W = 0, I = 0;
    rfft_get_size_32f(order, &S, &W, &I);
    return s->pDesc->order == order && points_at(s->pWindow, base, kSubbandHeader32f + S) &&
           points_at(s->pDelay, base, kSubbandHeader32f + S + 4 * std::int64_t{s->len});
}

ZEPS_END_VARIANT
