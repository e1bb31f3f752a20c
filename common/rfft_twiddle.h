/* SPDX-License-Identifier: BSD-3-Clause */
// Twiddle factors and bit reversal for the internal real FFT.
// cos and sin of 2 pi t / n in double precision, reduced to the first octant
// so that the values are exact at multiples of pi/4 (0, +-1) and symmetric.
#pragma once

#include <cmath>
#include <cstdint>

#include "common/variant.h"

ZEPS_BEGIN_VARIANT

struct UnitRoot {
    double c, s;
};

/// cos and sin of 2 pi t / n for n a power of two, t >= 0.
inline UnitRoot unit_root(long t, long n) {
    t %= n;
    // Work in units of n/8 (octants); n >= 8 is arranged by scaling.
    long scale = 1;
    while (n * scale < 8) scale *= 2;
    t *= scale;
    n *= scale;
    const long q = n / 4;                   // quarter turn
    const long quad = t / q, r = t % q;     // quadrant, remainder in it
    double c, s;
    if (r == 0) {
        c = 1.0, s = 0.0;
    } else if (2 * r == q) {
        c = s = std::sqrt(0.5);
    } else if (2 * r < q) {
        const double a = 2.0 * M_PI * static_cast<double>(r) / static_cast<double>(n);
        c = std::cos(a), s = std::sin(a);
    } else {
        const double a = 2.0 * M_PI * static_cast<double>(q - r) / static_cast<double>(n);
        c = std::sin(a), s = std::cos(a);
    }
    switch (quad) {  // rotate by quad quarter turns
        case 0: return {c, s};
        case 1: return {-s, c};
        case 2: return {-c, -s};
        default: return {s, -c};
    }
}

/// The low `bits` bits of v in reverse order.
inline std::uint32_t bit_reverse(std::uint32_t v, int bits) {
    std::uint32_t r = 0;
    for (int b = 0; b < bits; ++b) r |= ((v >> b) & 1u) << (bits - 1 - b);
    return r;
}

ZEPS_END_VARIANT
