// Sub-band filter-bank states (weighted overlap-add bank over a real FFT of
// N = 2^order points, frame F, window L = m N taps) and their layout inside
// the caller's block.
//
// Each state starts at the first 16-byte boundary of the caller's block and
// holds pointers into itself (it is never copied byte-wise):
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
    Word16* pWindow;        // L taps, Q13
    RfftDesc32s* pDesc;     // real FFT of order log2 N, inverse divided by N
    std::int32_t len;       // L
    std::int32_t fftLen;    // N
    std::int32_t frameSize; // F
};

struct SubbandState32f {
    std::int32_t len;       // L
    std::int32_t fftLen;    // N
    std::int32_t frameSize; // F
    float* pDelay;          // L samples, oldest first
    float* pWindow;         // L taps
    RfftDesc32f* pDesc;     // real FFT of order log2 N, inverse divided by N
};

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

ZEPS_END_VARIANT
