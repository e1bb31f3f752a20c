// SPDX-License-Identifier: BSD-3-Clause
// 32-bit fixed-point real FFT with scale factor, N = 2^order, order 1..16
// (see common/rfft.h).
//
// Block floating point: the input is normalised by a common exponent to 28
// (forward) or 26 (inverse) significant bits, and before each complex stage
// the block is shifted right, with rounding, just as far as needed for that
// stage not to overflow 32 bits. The complex butterflies add in 32 bits and
// multiply by Q30 twiddles with 64-bit products rounded to nearest; the
// split step keeps its products at full precision. The result is finally
// shifted by the accumulated exponent and the scale factor (plus the
// inverse's 2^-order) with rounding to nearest, ties up, and saturated to
// 32 bits.
//
// Description block: RfftDesc32s header (8 bytes), then Q30 twiddles
// W_M^t = exp(-2 pi i t / M), t < M (re[M], im[M]), split twiddles W_N^k,
// k <= M/2 (re[M/2+1], im[M/2+1]), and the bit-reversal table (M entries).
// Work buffer: split real and imaginary arrays, N values.
//
// The block passes (peak search, block shifts, input normalisation and the
// final rounding of the inverse) also run on SSSE3 vectors, four words at a
// time, when M is a multiple of 4; a right shift by s with rounding to
// nearest, ties up, is (x >> s) + bit s - 1 of x, which equals
// (x + 2^(s-1)) >> s without the 33-bit sum. The butterflies with twiddles
// run four at a time too (radix-2 stage and radix-4 stages of span 4 and
// more): their signed 32 x 32-bit products are made exactly from SSE2's
// unsigned ones with the sign bits flipped, the corrections being
// multiples of 2^31 that the rounding shift turns into 32-bit additions
// (cmul_x4). The scalar forms are kept as the baseline and tested against.
#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <bit>
#include <cstring>

#include "common/rfft.h"
#include "common/rfft_twiddle.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr std::int32_t kMagic32s = 0x52463353;  // "RF3S"
using i64 = std::int64_t;
using i128 = __int128;

struct Layout32s {
    int M, m;
    int wr, wi, pr, pi, rev, total;  // offsets in 32-bit units from the table start
};

Layout32s layout_32s(int order) {
    Layout32s l{};
    l.m = order - 1;
    l.M = 1 << l.m;
    l.wr = 0;
    l.wi = l.wr + l.M;
    l.pr = l.wi + l.M;
    l.pi = l.pr + l.M / 2 + 1;
    l.rev = l.pi + l.M / 2 + 1;
    l.total = l.rev + l.M;
    return l;
}

std::int32_t* tables(RfftDesc32s* s) {
    return reinterpret_cast<std::int32_t*>(reinterpret_cast<std::uint8_t*>(s) + 8);
}
const std::int32_t* tables(const RfftDesc32s* s) {
    return reinterpret_cast<const std::int32_t*>(reinterpret_cast<const std::uint8_t*>(s) + 8);
}

constexpr i64 kQ30 = i64{1} << 30;

std::int32_t to_q30(double v) { return static_cast<std::int32_t>(std::llround(v * static_cast<double>(kQ30))); }

/// (x * w) in Q30, rounded to nearest.
inline std::int32_t mul_q30(i64 x_w_sum) { return static_cast<std::int32_t>((x_w_sum + (kQ30 >> 1)) >> 30); }

/// v * 2^-s rounded to nearest (ties up) and saturated to 32 bits; s may be
/// negative (left shift).
std::int32_t round_shift_sat(i128 v, int s) {
    if (s > 0) {
        if (s > 120) return 0;
        v = (v + (static_cast<i128>(1) << (s - 1))) >> s;
    } else if (s < 0) {
        if (v == 0) return 0;
        if (s < -40) return v > 0 ? INT32_MAX : INT32_MIN;
        v *= static_cast<i128>(1) << (-s);
    }
    if (v > INT32_MAX) return INT32_MAX;
    if (v < INT32_MIN) return INT32_MIN;
    return static_cast<std::int32_t>(v);
}

/// The same for |v| < 2^63 - 2^61, the common shifts without 128-bit work.
inline std::int32_t round_shift_sat(i64 v, int s) {
    if (s > 0 && s < 62) {
        v = (v + (i64{1} << (s - 1))) >> s;
        return v > INT32_MAX ? INT32_MAX : v < INT32_MIN ? INT32_MIN : static_cast<std::int32_t>(v);
    }
    return round_shift_sat(static_cast<i128>(v), s);
}

/// Number of significant bits of |v| (0 for 0, 32 for -2^31).
int bit_length(std::uint32_t a) { return std::bit_width(a); }
std::uint32_t magnitude(std::int32_t v) {
    return v < 0 ? 0u - static_cast<std::uint32_t>(v) : static_cast<std::uint32_t>(v);
}

/// x * 2^e for e >= 0 (fits by the choice of e), rounded x * 2^e for e < 0.
inline std::int32_t normalise(std::int32_t x, int e) {
    if (e >= 0) return static_cast<std::int32_t>(static_cast<i64>(x) * (i64{1} << e));
    return static_cast<std::int32_t>((static_cast<i64>(x) + (i64{1} << (-e - 1))) >> (-e));
}

#if defined(__SSSE3__)
/// Peak of |v| over n words (n a multiple of 4), ORed into the result.
inline std::uint32_t peak_or_x4(const std::int32_t* v, int n) {
    __m128i acc = _mm_setzero_si128();
    for (int i = 0; i < n; i += 4)
        acc = _mm_or_si128(acc, _mm_abs_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(v + i))));
    acc = _mm_or_si128(acc, _mm_shuffle_epi32(acc, _MM_SHUFFLE(1, 0, 3, 2)));
    acc = _mm_or_si128(acc, _mm_shuffle_epi32(acc, _MM_SHUFFLE(2, 3, 0, 1)));
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(acc));
}

/// x * 2^-s rounded to nearest, ties up, for 1 <= s <= 31, four words.
inline __m128i round_shift_x4(__m128i x, __m128i s, __m128i s1) {
    const __m128i half = _mm_and_si128(_mm_sra_epi32(x, s1), _mm_set1_epi32(1));
    return _mm_add_epi32(_mm_sra_epi32(x, s), half);
}

/// dst[i] = normalise(src[i], e) for n words (n a multiple of 4), e >= -31.
void normalise_x4(const std::int32_t* src, std::int32_t* dst, int n, int e) {
    if (e >= 0) {
        const __m128i c = _mm_cvtsi32_si128(e);
        for (int i = 0; i < n; i += 4)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i),
                             _mm_sll_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(src + i)), c));
        return;
    }
    const __m128i c = _mm_cvtsi32_si128(-e), c1 = _mm_cvtsi32_si128(-e - 1);
    for (int i = 0; i < n; i += 4)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i),
                         round_shift_x4(_mm_loadu_si128(reinterpret_cast<const __m128i*>(src + i)), c, c1));
}
#else
// Hosts without SSSE3: the block passes word by word (the same results).
inline std::uint32_t peak_or_x4(const std::int32_t* v, int n) {
    std::uint32_t peak = 0;
    for (int i = 0; i < n; ++i) peak |= magnitude(v[i]);
    return peak;
}
void normalise_x4(const std::int32_t* src, std::int32_t* dst, int n, int e) {
    for (int i = 0; i < n; ++i) dst[i] = normalise(src[i], e);
}
#endif

// ---------------------------------------------------------------- complex DIF
// Same stage structure and butterflies as the float transform; the twiddle
// W_{4s}^(p j) of a radix-4 stage of span s is W_M^(p j M / 4s).

inline void cmul(i64 xr, i64 xi, i64 wr, i64 wi, std::int32_t& yr, std::int32_t& yi) {
    yr = mul_q30(xr * wr - xi * wi);
    yi = mul_q30(xr * wi + xi * wr);
}

void radix2(std::int32_t* re, std::int32_t* im, int h, const std::int32_t* wr, const std::int32_t* wi) {
    for (int j = 0; j < h; ++j) {
        const std::int32_t ar = re[j], ai = im[j], br = re[j + h], bi = im[j + h];
        re[j] = ar + br;
        im[j] = ai + bi;
        cmul(ar - br, ai - bi, wr[j], wi[j], re[j + h], im[j + h]);
    }
}

#if defined(__SSSE3__)
/// Four complex products (x * w) in Q30 rounded to nearest, the bits of
/// cmul, from unsigned 32 x 32-bit products: with x' = x + 2^31 and
/// w' = w + 2^31 (the sign bit flipped, both in 0 .. 2^32 - 1 for every
/// word), x w = x' w' - 2^31 (x' + w') + 2^62. The correction terms are
/// multiples of 2^31, so after the rounding shift by 30 they leave the
/// 32-bit result as -2 (x' + w') mod 2^32 and the 2^31 offsets cancel:
///   yr = [(xr' wr' - xi' wi' + 2^29) >> 30] - 2 (xr - xi + wr - wi),
///   yi = [(xr' wi' + xi' wr' + 2^29) >> 30] - 2 (xr + xi + wr + wi),
/// all mod 2^32 (the 64-bit sums mod 2^64 keep bits 30..61 exact, and the
/// low 32 bits of the quotient are those of the scalar 64-bit form).
struct Mul4 {
    __m128i sign = _mm_set1_epi32(INT32_MIN);
    __m128i half = _mm_set1_epi64x(i64{1} << 29);
};

/// Bits 30..61 of four 64-bit sums (even lanes e, odd lanes o) in lane order.
inline __m128i q30_lanes(__m128i e, __m128i o) {
    const __m128 r = _mm_shuffle_ps(_mm_castsi128_ps(_mm_srli_epi64(e, 30)), _mm_castsi128_ps(_mm_srli_epi64(o, 30)),
                                    _MM_SHUFFLE(2, 0, 2, 0));
    return _mm_shuffle_epi32(_mm_castps_si128(r), _MM_SHUFFLE(3, 1, 2, 0));
}

inline void cmul_x4(const Mul4& k, __m128i xr, __m128i xi, __m128i wr, __m128i wi, __m128i& yr, __m128i& yi) {
    const __m128i ur = _mm_xor_si128(xr, k.sign), ui = _mm_xor_si128(xi, k.sign);
    const __m128i vr = _mm_xor_si128(wr, k.sign), vi = _mm_xor_si128(wi, k.sign);
    const __m128i ur1 = _mm_srli_epi64(ur, 32), ui1 = _mm_srli_epi64(ui, 32);
    const __m128i vr1 = _mm_srli_epi64(vr, 32), vi1 = _mm_srli_epi64(vi, 32);
    const __m128i re0 = _mm_add_epi64(_mm_sub_epi64(_mm_mul_epu32(ur, vr), _mm_mul_epu32(ui, vi)), k.half);
    const __m128i re1 = _mm_add_epi64(_mm_sub_epi64(_mm_mul_epu32(ur1, vr1), _mm_mul_epu32(ui1, vi1)), k.half);
    const __m128i im0 = _mm_add_epi64(_mm_add_epi64(_mm_mul_epu32(ur, vi), _mm_mul_epu32(ui, vr)), k.half);
    const __m128i im1 = _mm_add_epi64(_mm_add_epi64(_mm_mul_epu32(ur1, vi1), _mm_mul_epu32(ui1, vr1)), k.half);
    const __m128i cr = _mm_add_epi32(_mm_sub_epi32(xr, xi), _mm_sub_epi32(wr, wi));
    const __m128i ci = _mm_add_epi32(_mm_add_epi32(xr, xi), _mm_add_epi32(wr, wi));
    yr = _mm_sub_epi32(q30_lanes(re0, re1), _mm_add_epi32(cr, cr));
    yi = _mm_sub_epi32(q30_lanes(im0, im1), _mm_add_epi32(ci, ci));
}

inline __m128i load4(const std::int32_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline void store4(std::int32_t* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
/// w[0], w[d], w[2d], w[3d].
inline __m128i gather4(const std::int32_t* w, int d) { return _mm_setr_epi32(w[0], w[d], w[2 * d], w[3 * d]); }

/// radix2 four butterflies a step (h a multiple of 4).
void radix2_x4(std::int32_t* re, std::int32_t* im, int h, const std::int32_t* wr, const std::int32_t* wi) {
    const Mul4 k;
    for (int j = 0; j < h; j += 4) {
        const __m128i ar = load4(re + j), ai = load4(im + j), br = load4(re + j + h), bi = load4(im + j + h);
        store4(re + j, _mm_add_epi32(ar, br));
        store4(im + j, _mm_add_epi32(ai, bi));
        __m128i yr, yi;
        cmul_x4(k, _mm_sub_epi32(ar, br), _mm_sub_epi32(ai, bi), load4(wr + j), load4(wi + j), yr, yi);
        store4(re + j + h, yr);
        store4(im + j + h, yi);
    }
}

/// radix4 with twiddles, four butterflies (j .. j+3) a step, s a multiple of
/// 4. At j = 0 the twiddles are 1 (2^30, 0), whose products give x back, so
/// the untwiddled legs of radix4 come out the same.
void radix4_x4(std::int32_t* re, std::int32_t* im, int M, int s, const std::int32_t* wr, const std::int32_t* wi) {
    const Mul4 k;
    const int step = M / (4 * s);
    for (int g = 0; g < M; g += 4 * s) {
        for (int j = 0; j < s; j += 4) {
            std::int32_t* r = re + g + j;
            std::int32_t* i = im + g + j;
            const __m128i x0r = load4(r), x1r = load4(r + s), x2r = load4(r + 2 * s), x3r = load4(r + 3 * s);
            const __m128i x0i = load4(i), x1i = load4(i + s), x2i = load4(i + 2 * s), x3i = load4(i + 3 * s);
            const __m128i t0r = _mm_add_epi32(x0r, x2r), t0i = _mm_add_epi32(x0i, x2i);
            const __m128i t1r = _mm_sub_epi32(x0r, x2r), t1i = _mm_sub_epi32(x0i, x2i);
            const __m128i t2r = _mm_add_epi32(x1r, x3r), t2i = _mm_add_epi32(x1i, x3i);
            const __m128i t3r = _mm_sub_epi32(x1r, x3r), t3i = _mm_sub_epi32(x1i, x3i);
            store4(r, _mm_add_epi32(t0r, t2r));
            store4(i, _mm_add_epi32(t0i, t2i));
            const int t1 = j * step;
            __m128i yr, yi;
            cmul_x4(k, _mm_sub_epi32(t0r, t2r), _mm_sub_epi32(t0i, t2i), gather4(wr + 2 * t1, 2 * step),
                    gather4(wi + 2 * t1, 2 * step), yr, yi);
            store4(r + s, yr);
            store4(i + s, yi);
            cmul_x4(k, _mm_add_epi32(t1r, t3i), _mm_sub_epi32(t1i, t3r), gather4(wr + t1, step), gather4(wi + t1, step),
                    yr, yi);
            store4(r + 2 * s, yr);
            store4(i + 2 * s, yi);
            cmul_x4(k, _mm_sub_epi32(t1r, t3i), _mm_add_epi32(t1i, t3r), gather4(wr + 3 * t1, 3 * step),
                    gather4(wi + 3 * t1, 3 * step), yr, yi);
            store4(r + 3 * s, yr);
            store4(i + 3 * s, yi);
        }
    }
}
#endif

void radix4(std::int32_t* re, std::int32_t* im, int M, int s, const std::int32_t* wr, const std::int32_t* wi) {
    const int step = M / (4 * s);
    for (int g = 0; g < M; g += 4 * s) {
        for (int j = 0; j < s; ++j) {
            const int i0 = g + j, i1 = i0 + s, i2 = i0 + 2 * s, i3 = i0 + 3 * s;
            const std::int32_t t0r = re[i0] + re[i2], t0i = im[i0] + im[i2];
            const std::int32_t t1r = re[i0] - re[i2], t1i = im[i0] - im[i2];
            const std::int32_t t2r = re[i1] + re[i3], t2i = im[i1] + im[i3];
            const std::int32_t t3r = re[i1] - re[i3], t3i = im[i1] - im[i3];
            re[i0] = t0r + t2r;
            im[i0] = t0i + t2i;
            if (j == 0) {
                re[i1] = t0r - t2r, im[i1] = t0i - t2i;
                re[i2] = t1r + t3i, im[i2] = t1i - t3r;
                re[i3] = t1r - t3i, im[i3] = t1i + t3r;
            } else {
                const int t1 = j * step, t2 = 2 * t1, t3 = 3 * t1;
                cmul(t0r - t2r, t0i - t2i, wr[t2], wi[t2], re[i1], im[i1]);
                cmul(t1r + t3i, t1i - t3r, wr[t1], wi[t1], re[i2], im[i2]);
                cmul(t1r - t3i, t1i + t3r, wr[t3], wi[t3], re[i3], im[i3]);
            }
        }
    }
}

#if defined(__SSSE3__)
/// 4x4 transpose of 32-bit words.
inline void transpose4(__m128i& a, __m128i& b, __m128i& c, __m128i& d) {
    const __m128i t0 = _mm_unpacklo_epi32(a, b), t1 = _mm_unpackhi_epi32(a, b);
    const __m128i t2 = _mm_unpacklo_epi32(c, d), t3 = _mm_unpackhi_epi32(c, d);
    a = _mm_unpacklo_epi64(t0, t2);
    b = _mm_unpackhi_epi64(t0, t2);
    c = _mm_unpacklo_epi64(t1, t3);
    d = _mm_unpackhi_epi64(t1, t3);
}

/// The last radix-4 stage (span 1, no twiddles) for M a multiple of 16: four
/// groups at a time, transposed so that each vector holds one leg of four
/// butterflies; the same 32-bit additions as radix4.
void radix4_last_x4(std::int32_t* re, std::int32_t* im, int M) {
    for (int g = 0; g < M; g += 16) {
        __m128i r0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(re + g));
        __m128i r1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(re + g + 4));
        __m128i r2 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(re + g + 8));
        __m128i r3 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(re + g + 12));
        __m128i i0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(im + g));
        __m128i i1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(im + g + 4));
        __m128i i2 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(im + g + 8));
        __m128i i3 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(im + g + 12));
        transpose4(r0, r1, r2, r3);
        transpose4(i0, i1, i2, i3);
        const __m128i t0r = _mm_add_epi32(r0, r2), t0i = _mm_add_epi32(i0, i2);
        const __m128i t1r = _mm_sub_epi32(r0, r2), t1i = _mm_sub_epi32(i0, i2);
        const __m128i t2r = _mm_add_epi32(r1, r3), t2i = _mm_add_epi32(i1, i3);
        const __m128i t3r = _mm_sub_epi32(r1, r3), t3i = _mm_sub_epi32(i1, i3);
        r0 = _mm_add_epi32(t0r, t2r), i0 = _mm_add_epi32(t0i, t2i);
        r1 = _mm_sub_epi32(t0r, t2r), i1 = _mm_sub_epi32(t0i, t2i);
        r2 = _mm_add_epi32(t1r, t3i), i2 = _mm_sub_epi32(t1i, t3r);
        r3 = _mm_sub_epi32(t1r, t3i), i3 = _mm_add_epi32(t1i, t3r);
        transpose4(r0, r1, r2, r3);
        transpose4(i0, i1, i2, i3);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(re + g), r0);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(re + g + 4), r1);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(re + g + 8), r2);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(re + g + 12), r3);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(im + g), i0);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(im + g + 4), i1);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(im + g + 8), i2);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(im + g + 12), i3);
    }
}
#else
void radix4_last_x4(std::int32_t* re, std::int32_t* im, int M) { radix4(re, im, M, 1, nullptr, nullptr); }
#endif

/// Block floating point: before a stage of growth `radix`, the block is
/// shifted right (rounding to nearest) until its largest component has at
/// most 29 (radix 2) or 28 (radix 4) significant bits, so that no butterfly
/// can leave 32 bits. Returns the number of bits shifted out.
template <bool Simd>
int make_headroom(std::int32_t* re, std::int32_t* im, int M, int radix) {
    const bool vec = Simd && M % 4 == 0;
    std::uint32_t peak = 0;
    if (vec) {
        peak = peak_or_x4(re, M) | peak_or_x4(im, M);
    } else {
        for (int n = 0; n < M; ++n) peak |= magnitude(re[n]) | magnitude(im[n]);
    }
    const int s = bit_length(peak) - (radix == 2 ? 29 : 28);
    if (s <= 0) return 0;
    if (vec) {
        normalise_x4(re, re, M, -s);
        normalise_x4(im, im, M, -s);
        return s;
    }
    for (int n = 0; n < M; ++n) {
        re[n] = normalise(re[n], -s);
        im[n] = normalise(im[n], -s);
    }
    return s;
}

/// In-place DIF transform, bit-reversed output; returns the bits shifted out.
template <bool Simd>
int cfft_dif(std::int32_t* re, std::int32_t* im, const Layout32s& l, const std::int32_t* t) {
    int shifted = 0;
    int s = l.M;
    if (l.m & 1) {
        s = l.M / 2;
        shifted += make_headroom<Simd>(re, im, l.M, 2);
#if defined(__SSSE3__)
        if (Simd && s % 4 == 0)
            radix2_x4(re, im, s, t + l.wr, t + l.wi);
        else
#endif
            radix2(re, im, s, t + l.wr, t + l.wi);
    }
    for (s /= 4; s >= 1; s /= 4) {
        shifted += make_headroom<Simd>(re, im, l.M, 4);
        if (Simd && s == 1 && l.M % 16 == 0)
            radix4_last_x4(re, im, l.M);
#if defined(__SSSE3__)
        else if (Simd && s % 4 == 0)
            radix4_x4(re, im, l.M, s, t + l.wr, t + l.wi);
#endif
        else
            radix4(re, im, l.M, s, t + l.wr, t + l.wi);
    }
    return shifted;
}

bool valid(const RfftDesc32s* s, int scaleFactor) {
    return s->magic == kMagic32s && s->order >= kRfftMinOrder && s->order <= kRfftMaxOrder &&
           scaleFactor >= -31 && scaleFactor <= 31;
}

}  // namespace

bool rfft_get_size_32s(int order, int* pDescSize, int* pWorkSize, int* pInitSize) {
    if (order < kRfftMinOrder || order > kRfftMaxOrder) return false;
    const Layout32s l = layout_32s(order);
    *pDescSize = 8 + 4 * l.total;
    *pWorkSize = 4 * (2 * l.M);
    *pInitSize = 0;
    return true;
}

RfftDesc32s* rfft_init_32s(int order, std::uint8_t* pMem) {
    if (order < kRfftMinOrder || order > kRfftMaxOrder) return nullptr;
    const Layout32s l = layout_32s(order);
    auto* desc = reinterpret_cast<RfftDesc32s*>(pMem);
    desc->order = order;
    desc->magic = kMagic32s;
    std::int32_t* t = tables(desc);
    for (int k = 0; k < l.M; ++k) {
        const UnitRoot u = unit_root(k, l.M);
        t[l.wr + k] = to_q30(u.c);
        t[l.wi + k] = to_q30(-u.s);
    }
    for (int k = 0; k <= l.M / 2; ++k) {
        const UnitRoot u = unit_root(k, 2 * l.M);
        t[l.pr + k] = to_q30(u.c);
        t[l.pi + k] = to_q30(-u.s);
    }
    for (int k = 0; k < l.M; ++k)
        t[l.rev + k] = static_cast<std::int32_t>(bit_reverse(static_cast<std::uint32_t>(k), l.m));
    return desc;
}

namespace {

template <bool Simd>
bool fwd_32s(const std::int32_t* pSrc, std::int32_t* pDst, int scaleFactor, const RfftDesc32s* pDesc,
                      std::uint8_t* pWork) {
    if (!valid(pDesc, scaleFactor)) return false;
    const Layout32s l = layout_32s(pDesc->order);
    const std::int32_t* t = tables(pDesc);
    const int M = l.M;
    std::uint32_t peak = 0;
    if (Simd && M % 2 == 0) {
        peak = peak_or_x4(pSrc, 2 * M);
    } else {
        for (int n = 0; n < 2 * M; ++n) peak |= magnitude(pSrc[n]);
    }
    const int e = 28 - bit_length(peak);
    auto* re = reinterpret_cast<std::int32_t*>(pWork);
    std::int32_t* im = re + M;
    for (int n = 0; n < M; ++n) {
        re[n] = normalise(pSrc[2 * n], e);
        im[n] = normalise(pSrc[2 * n + 1], e);
    }
    const int g = cfft_dif<Simd>(re, im, l, t);
    // 2 X[k] 2^(30+e) = 2^30 Fe' + W^k Fo', Fe' = Z[k] + conj Z[M-k],
    // Fo' = -i (Z[k] - conj Z[M-k]); X[M-k] = conj(Fe' - W^k Fo') / 2.
    const int shift = 31 + e - g + scaleFactor;
    const std::int32_t* rev = t + l.rev;
    const i64 r0 = re[0], i0 = im[0];
    pDst[0] = round_shift_sat((r0 + i0) * (i64{1} << 31), shift);
    pDst[1] = 0;
    pDst[2 * M] = round_shift_sat((r0 - i0) * (i64{1} << 31), shift);
    pDst[2 * M + 1] = 0;
    for (int k = 1; k <= M / 2; ++k) {
        const int pa = rev[k], pb = rev[M - k];
        const i64 ar = re[pa], ai = im[pa], br = re[pb], bi = im[pb];
        // |Z| < 2^30.5 after the last stage, so every term below stays
        // under 2^62.5.
        const i64 fer = (ar + br) * kQ30, fei = (ai - bi) * kQ30;
        const i64 f_r = ai + bi, f_i = br - ar;
        const i64 wr = t[l.pr + k], wi = t[l.pi + k];
        const i64 tr = wr * f_r - wi * f_i, ti = wr * f_i + wi * f_r;
        pDst[2 * k] = round_shift_sat(fer + tr, shift);
        pDst[2 * k + 1] = round_shift_sat(fei + ti, shift);
        pDst[2 * (M - k)] = round_shift_sat(fer - tr, shift);
        pDst[2 * (M - k) + 1] = round_shift_sat(ti - fei, shift);
    }
    return true;
}

#if defined(__SSSE3__)
/// Re and im of four bins k .. k+3 of an interleaved spectrum.
inline void bins4(const std::int32_t* x, int k, __m128i& r, __m128i& i) {
    const __m128 a = _mm_castsi128_ps(load4(x + 2 * k)), b = _mm_castsi128_ps(load4(x + 2 * k + 4));
    r = _mm_castps_si128(_mm_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0)));
    i = _mm_castps_si128(_mm_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1)));
}
inline __m128i reverse4(__m128i v) { return _mm_shuffle_epi32(v, _MM_SHUFFLE(0, 1, 2, 3)); }

/// The inverse split step for k = 1 .. M/2 (M a multiple of 8), four bins
/// a step, on the normalised spectrum x: the same 32-bit sums as the scalar
/// loop (whose 64-bit values are cast back to 32 bits) and its Q30 products
/// by cmul_x4, (d_r + i d_i)(w_r - i w_i). At k = M/2 the mirror stores come
/// last, as in the scalar loop. Returns the next k (M/2 + 1).
int inv_split_x4(const std::int32_t* x, std::int32_t* re, std::int32_t* im, int M, const std::int32_t* wr,
                 const std::int32_t* wi) {
    const Mul4 c;
    for (int k = 1; k <= M / 2; k += 4) {
        __m128i ar, ai, br, bi;
        bins4(x, k, ar, ai);
        bins4(x, M - k - 3, br, bi);
        br = reverse4(br), bi = reverse4(bi);  // bins M-k .. M-k-3
        const __m128i fer = _mm_add_epi32(ar, br), fei = _mm_sub_epi32(ai, bi);
        const __m128i dr = _mm_sub_epi32(ar, br), di = _mm_add_epi32(ai, bi);
        __m128i f_r, f_i;
        cmul_x4(c, dr, di, load4(wr + k), _mm_sub_epi32(_mm_setzero_si128(), load4(wi + k)), f_r, f_i);
        store4(re + k, _mm_sub_epi32(fer, f_i));
        store4(im + k, _mm_add_epi32(fei, f_r));
        store4(re + M - k - 3, reverse4(_mm_add_epi32(fer, f_i)));
        store4(im + M - k - 3, reverse4(_mm_sub_epi32(f_r, fei)));
    }
    return M / 2 + 1;
}
#endif

template <bool Simd>
bool inv_32s(const std::int32_t* pSrc, std::int32_t* pDst, int scaleFactor, const RfftDesc32s* pDesc,
             std::uint8_t* pWork) {
    if (!valid(pDesc, scaleFactor)) return false;
    const Layout32s l = layout_32s(pDesc->order);
    const std::int32_t* t = tables(pDesc);
    const int M = l.M;
    const bool vec = Simd && M % 4 == 0;
    // The imaginary parts of bins 0 and N/2 are not used.
    std::uint32_t peak = magnitude(pSrc[0]) | magnitude(pSrc[2 * M]);
    if (vec) {
        peak |= magnitude(pSrc[2]) | magnitude(pSrc[3]) | peak_or_x4(pSrc + 4, 2 * M - 4);
    } else {
        for (int n = 2; n < 2 * M; ++n) peak |= magnitude(pSrc[n]);
    }
    const int e = 26 - bit_length(peak);
    // The normalised bins 0..M-1 (the image of bin 0 unused), then bin M.
    const i64 xm = normalise(pSrc[2 * M], e);
    const std::int32_t* x = pSrc;
    if (vec) {
        normalise_x4(pSrc, pDst, 2 * M, e);
        x = pDst;
    }
    auto* re = reinterpret_cast<std::int32_t*>(pWork);
    std::int32_t* im = re + M;
    const auto at = [&](int n) -> i64 { return vec ? x[n] : normalise(x[n], e); };
    const i64 x0 = at(0);
    re[0] = static_cast<std::int32_t>(x0 + xm);
    im[0] = static_cast<std::int32_t>(x0 - xm);
    // Z[k] = Fe' + i Fo', Fe' = X[k] + conj X[M-k], Fo' = (X[k] - conj X[M-k]) conj W^k.
    int k = 1;
#if defined(__SSSE3__)
    if (vec && M % 8 == 0) k = inv_split_x4(x, re, im, M, t + l.pr, t + l.pi);
#endif
    for (; k <= M / 2; ++k) {
        const i64 ar = at(2 * k), ai = at(2 * k + 1);
        const i64 br = at(2 * (M - k)), bi = at(2 * (M - k) + 1);
        const i64 fer = ar + br, fei = ai - bi, dr = ar - br, di = ai + bi;
        const i64 wr = t[l.pr + k], wi = t[l.pi + k];
        const i64 f_r = mul_q30(dr * wr + di * wi), f_i = mul_q30(di * wr - dr * wi);
        re[k] = static_cast<std::int32_t>(fer - f_i);
        im[k] = static_cast<std::int32_t>(fei + f_r);
        re[M - k] = static_cast<std::int32_t>(fer + f_i);
        im[M - k] = static_cast<std::int32_t>(f_r - fei);
    }
    const int g = cfft_dif<Simd>(im, re, l, t);  // exchanged arrays: the conjugate transform
    const int shift = e - g + pDesc->order + scaleFactor;
    const std::int32_t* rev = t + l.rev;
#if defined(__SSSE3__)
    if (vec && shift >= 0 && shift <= 31) {
        // Rounded in natural order, four bins a step; each (re, im) pair is
        // stored at its bit-reversed place (the permutation is its own inverse).
        const __m128i c = _mm_cvtsi32_si128(shift), c1 = _mm_cvtsi32_si128(shift > 0 ? shift - 1 : 0);
        const __m128i keep = shift > 0 ? _mm_set1_epi32(1) : _mm_setzero_si128();
        for (int n = 0; n < M; n += 4) {
            const __m128i r = _mm_loadu_si128(reinterpret_cast<const __m128i*>(re + n));
            const __m128i i = _mm_loadu_si128(reinterpret_cast<const __m128i*>(im + n));
            const __m128i rr = _mm_add_epi32(_mm_sra_epi32(r, c), _mm_and_si128(_mm_sra_epi32(r, c1), keep));
            const __m128i ii = _mm_add_epi32(_mm_sra_epi32(i, c), _mm_and_si128(_mm_sra_epi32(i, c1), keep));
            const __m128i lo = _mm_unpacklo_epi32(rr, ii), hi = _mm_unpackhi_epi32(rr, ii);
            _mm_storel_epi64(reinterpret_cast<__m128i*>(pDst + 2 * rev[n]), lo);
            _mm_storeh_pd(reinterpret_cast<double*>(pDst + 2 * rev[n + 1]), _mm_castsi128_pd(lo));
            _mm_storel_epi64(reinterpret_cast<__m128i*>(pDst + 2 * rev[n + 2]), hi);
            _mm_storeh_pd(reinterpret_cast<double*>(pDst + 2 * rev[n + 3]), _mm_castsi128_pd(hi));
        }
        return true;
    }
#endif
    for (int n = 0; n < M; ++n) {
        pDst[2 * n] = round_shift_sat(i64{re[rev[n]]}, shift);
        pDst[2 * n + 1] = round_shift_sat(i64{im[rev[n]]}, shift);
    }
    return true;
}

}  // namespace

bool rfft_fwd_32s_sfs(const std::int32_t* pSrc, std::int32_t* pDst, int scaleFactor, const RfftDesc32s* pDesc,
                      std::uint8_t* pWork) {
    return fwd_32s<true>(pSrc, pDst, scaleFactor, pDesc, pWork);
}
bool rfft_fwd_32s_sfs_scalar(const std::int32_t* pSrc, std::int32_t* pDst, int scaleFactor,
                             const RfftDesc32s* pDesc, std::uint8_t* pWork) {
    return fwd_32s<false>(pSrc, pDst, scaleFactor, pDesc, pWork);
}
bool rfft_inv_32s_sfs(const std::int32_t* pSrc, std::int32_t* pDst, int scaleFactor, const RfftDesc32s* pDesc,
                      std::uint8_t* pWork) {
    return inv_32s<true>(pSrc, pDst, scaleFactor, pDesc, pWork);
}
bool rfft_inv_32s_sfs_scalar(const std::int32_t* pSrc, std::int32_t* pDst, int scaleFactor,
                             const RfftDesc32s* pDesc, std::uint8_t* pWork) {
    return inv_32s<false>(pSrc, pDst, scaleFactor, pDesc, pWork);
}

ZEPS_END_VARIANT
