/* SPDX-License-Identifier: BSD-3-Clause */
// The decoders' output high-pass with its doubling (ITU-T G.729 4.2.5
// Post_Process, 3GPP TS 26.073 post_pro.c Post_Process; both run the 100 Hz
// / 60 Hz filter b = 7699, -15398, 7699, a = 8192, 15836, -7667 in Q13):
//   acc = Mpy_32_16(y1, a1) + Mpy_32_16(y2, a2) + L_mac(x b0) + L_mac(x1 b1) + L_mac(x2 b2)
//   y = L_shl(acc, 2) (Q15 -> the stored memory), out = round(L_shl(y, 1)).
// The memory rides as half values h = y >> 1 = hi 2^15 + lo (L_Extract's
// pair), so each recursive term Mpy_32_16(hi, lo, a) is 2 ((h a) >> 15) (for
// a > -32768 and any lo: hi a 2^15 is a multiple of 2^15 and neither product
// saturates) and the recursion waits on one multiply, a shift and an add a
// sample. The caller converts its own memory layout to and from Memory.
#pragma once

#include <cstdint>

#include "common/basic_op.h"

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

ZEPS_BEGIN_VARIANT
namespace post_hp {

/// Filter taps in Q13 (a0 = 8192 is implied).
struct Taps {
    Word16 b0, b1, b2, a1, a2;
};

/// The filter memory: the last two outputs as half values (h1 newest) and
/// the last two inputs (x1 newest).
struct Memory {
    std::int64_t h1, h2;
    Word16 x1, x2;
};

constexpr std::int64_t mag64(Word16 v) { return v < 0 ? -std::int64_t{v} : std::int64_t{v}; }

/// The decoders' post-processing filter (G.729's 100 Hz high-pass, which
/// GSM-AMR's post-processing shares to the bit).
inline constexpr Taps kDecoderTaps{7699, -15398, 7699, 15836, -7667};

constexpr bool same_taps(const Taps& x, const Taps& y) {
    return x.b0 == y.b0 && x.b1 == y.b1 && x.b2 == y.b2 && x.a1 == y.a1 && x.a2 == y.a2;
}

/// Whether run() is exact for these taps, for any memory and input:
/// - the recursive terms sum to at most 2 32768 (|a1| + |a2|) + 2 (|a1| +
///   |a2|) (hi and lo any 16-bit values: |mult(lo, a)| <= |a|), and with |L_mult(x, b0)| <= 65536 |b0| the first two partial
///   sums stay within 31 bits: only the later taps, the shifts and the
///   rounding can saturate (the filters above: 1.5404e9 + 504.6e6 < 2^31);
/// - 2^28 + 65536 |b2| <= MAX_32, so that a whole sum within +-2^28 proves
///   the sum before the last tap exact too;
/// - 65536 (|b0| + |b1| + |b2|) <= MAX_32: the doubled input part fits a
///   32-bit lane (the filters above: 65536 30796 = 2.018e9), which also keeps
///   b1 and b2 above -32768 (their L_mult products plain);
/// - a1 and a2 above -32768 (the half-value product identity).
constexpr bool exact_for(const Taps& c) {
    const std::int64_t a = mag64(c.a1) + mag64(c.a2);
    return 65538 * a + 65536 * mag64(c.b0) <= MAX_32 && (std::int64_t{1} << 28) + 65536 * mag64(c.b2) <= MAX_32 &&
           65536 * (mag64(c.b0) + mag64(c.b1) + mag64(c.b2)) <= MAX_32 && c.a1 > MIN_16 && c.a2 > MIN_16;
}

/// The doubled input part f[i] = 2 (b0 x[i] + b1 x[i-1] + b2 x[i-2]) of n
/// samples (x[-2], x[-1] read), one at a time: the scalar twin of the lane
/// form; exact in 32 bits under exact_for.
inline void input_part_scalar(const Word16* x, std::int32_t* f, int n, const Taps& c) {
    for (int i = 0; i < n; i++)
        f[i] = 2 * (c.b0 * static_cast<std::int32_t>(x[i]) + c.b1 * static_cast<std::int32_t>(x[i - 1]) +
                    c.b2 * static_cast<std::int32_t>(x[i - 2]));
}

/// input_part_scalar eight samples at a time: (x[i], x[i-1]) against
/// (b0, b1) and (x[i-2], 0) against (b2, 0) in two pmaddwd, the doubling
/// in the taps when they stay 16-bit, else as pslld (under exact_for no
/// pair, lane or doubled sum can wrap); the last n % 8 samples scalar.
inline void input_part(const Word16* x, std::int32_t* f, int n, const Taps& c) {
    int i = 0;
#if defined(__SSSE3__)
    // Taps of magnitude below 2^14 are doubled in place of the products (no shift).
    const bool doubled = mag64(c.b0) < 16384 && mag64(c.b1) < 16384 && mag64(c.b2) < 16384;
    const int k = doubled ? 2 : 1;
    const __m128i c01 = _mm_unpacklo_epi16(_mm_set1_epi16(static_cast<Word16>(k * c.b0)), _mm_set1_epi16(static_cast<Word16>(k * c.b1)));
    const __m128i c2 = _mm_set1_epi32(static_cast<std::uint16_t>(k * c.b2));
    const __m128i shift = _mm_cvtsi32_si128(doubled ? 0 : 1);
    const __m128i zero = _mm_setzero_si128();
    for (; i + 8 <= n; i += 8) {
        const __m128i x0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(x + i));
        const __m128i x1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(x + i - 1));
        const __m128i x2 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(x + i - 2));
        const __m128i lo = _mm_add_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(x0, x1), c01), _mm_madd_epi16(_mm_unpacklo_epi16(x2, zero), c2));
        const __m128i hi = _mm_add_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(x0, x1), c01), _mm_madd_epi16(_mm_unpackhi_epi16(x2, zero), c2));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(f + i), doubled ? lo : _mm_sll_epi32(lo, shift));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(f + i + 4), doubled ? hi : _mm_sll_epi32(hi, shift));
    }
#endif
    input_part_scalar(x + i, f + i, n - i, c);
}

/// The filter in place over lg >= 1 samples, under exact_for(c). Inlined
/// into each caller so that constant taps (kDecoderTaps) become immediates. With t the
/// whole sum (before the shift by 2): while |t| < 2^28 - 2^12, 8 t + 2^15
/// fits 32 bits and the chain without its last tap (|t| + 65536 |b2| within
/// 31 bits) cannot have saturated either, so the output is 8 t rounded with
/// no clamp and h = 2 t; otherwise each saturation is one clamp (the sum
/// before the last tap, the sum, the shift, the rounding) and h = y >> 1.
/// The input part comes first for a block of up to 80 samples (input_part).
[[gnu::always_inline]] inline void run(Memory& m, Word16* signal, int lg, const Taps& c) {
    constexpr std::int64_t kQuiet = (std::int64_t{1} << 28) - (1 << 12);
    constexpr int kBlock = 80;
    std::int64_t h1 = m.h1, h2 = m.h2;
    Word16 xb[kBlock + 2];  // x[at-2 .. at+n-1]
    xb[0] = m.x2;
    xb[1] = m.x1;
    for (int at = 0; at < lg; at += kBlock) {
        const int n = lg - at < kBlock ? lg - at : kBlock;
        Word16* out = signal + at;
        for (int k = 0; k < n; k++) xb[k + 2] = out[k];
        std::int32_t f[kBlock];
        input_part(xb + 2, f, n, c);
        // One sample from its two older outputs; returns its own half value.
        auto step = [&](int k, std::int64_t older, std::int64_t newer) -> std::int64_t {
            const std::int64_t t = f[k] + 2 * ((older * c.a2) >> 15) + 2 * ((newer * c.a1) >> 15);
            if (t > -kQuiet && t < kQuiet) [[likely]] {
                out[k] = static_cast<Word16>((8 * t + 0x8000) >> 16);
                return 2 * t;
            }
            const std::int64_t in2 = 2 * c.b2 * std::int64_t{xb[k]};  // xb[k] = x[k-2]
            const std::int64_t y = saturate32(4 * std::int64_t{saturate32(std::int64_t{saturate32(t - in2)} + in2)});
            const std::int64_t o = (2 * y + 0x8000) >> 16;
            out[k] = static_cast<Word16>(o > MAX_16 ? MAX_16 : (o < MIN_16 ? MIN_16 : o));
            return y >> 1;
        };
        // Two samples a turn, the half values trading places instead of moving.
        int k = 0;
        for (; k + 2 <= n; k += 2) {
            h2 = step(k, h2, h1);
            h1 = step(k + 1, h1, h2);
        }
        if (k < n) {
            const std::int64_t h = step(k, h2, h1);
            h2 = h1;
            h1 = h;
        }
        xb[0] = xb[n];
        xb[1] = xb[n + 1];
    }
    m = Memory{h1, h2, xb[1], xb[0]};
}

}  // namespace post_hp
ZEPS_END_VARIANT
