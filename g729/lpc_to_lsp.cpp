// SPDX-License-Identifier: BSD-3-Clause
// G.729 LP to LSP conversion (3.2.3, Az_lsp; Annex A A.3.2.3): roots of the
// sum and difference polynomials F1, F2 by Chebyshev evaluation on a cosine
// grid, bisection and linear interpolation. LP Q12 in, LSP Q15 out; the
// polynomials are Q11 (Q10 when Q11 overflows), Chebyshev sums Q24/Q23.
#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <algorithm>
#include <cstdint>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "common/fast_ops.h"
#include "g729/g729_tables.h"
#include "g729/lp_kernels.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kOrder = 10;
constexpr int kHalf = 5;
constexpr int kGridMax = 64;  // grid points rounded up to a multiple of 8

}  // namespace

/// Chebyshev series C(x) of the order-5 polynomial f (Chebps_11 for q = 11,
/// Chebps_10 for q = 10); result Q14, saturated.
Word16 chebps(Word16 x, const Word16* f, int q) {
    const Word16 one_h = q == 11 ? 256 : 128;
    const Word16 two_x = q == 11 ? 512 : 256;
    Word16 b2_h = one_h, b2_l = 0, b1_h, b1_l;
    L_Extract(L_mac(L_mult(x, two_x), f[1], 4096), b1_h, b1_l);
    for (int i = 2; i < kHalf; ++i) {
        Word32 t0 = L_shl(Mpy_32_16(b1_h, b1_l, x), 1);
        t0 = L_mac(t0, b2_h, MIN_16);
        t0 = L_msu(t0, b2_l, 1);
        t0 = L_mac(t0, f[i], 4096);
        b2_h = b1_h;
        b2_l = b1_l;
        L_Extract(t0, b1_h, b1_l);
    }
    Word32 t0 = Mpy_32_16(b1_h, b1_l, x);
    t0 = L_mac(t0, b2_h, MIN_16);
    t0 = L_msu(t0, b2_l, 1);
    t0 = L_mac(t0, f[kHalf], 2048);
    return extract_h(L_shl(t0, static_cast<Word16>(q == 11 ? 6 : 7)));
}

namespace {

/// chebps computed with plain 64-bit arithmetic; every intermediate that the
/// reference saturates is range-checked, and the exact routine is used when
/// one of them leaves the 32-bit range (so the result is always chebps's).
Word16 chebps_fast(Word16 x, const Word16* f, int q) {
    const std::int64_t X = x;
    std::int64_t t = X * (q == 11 ? 1024 : 512) + std::int64_t{f[1]} * 8192;
    std::int64_t b1h = t >> 16, b1l = (t >> 1) & 0x7fff;
    std::int64_t b2h = q == 11 ? 256 : 128, b2l = 0;
    bool ok = true;
    for (int i = 2; i < kHalf; ++i) {
        const std::int64_t p1 = 2 * b1h * X;
        const std::int64_t p = p1 + 2 * ((b1l * X) >> 15);
        const std::int64_t p2 = 2 * p;
        const std::int64_t u = -65536 * b2h;
        const std::int64_t s1 = p2 + u;
        const std::int64_t s2 = s1 - 2 * b2l;
        t = s2 + std::int64_t{f[i]} * 8192;
        ok = ok && fits32(p1) && fits32(p) && fits32(p2) && fits32(u) && fits32(s1) && fits32(s2) && fits32(t);
        b2h = b1h;
        b2l = b1l;
        b1h = t >> 16;
        b1l = (t >> 1) & 0x7fff;
    }
    const std::int64_t p1 = 2 * b1h * X;
    const std::int64_t p = p1 + 2 * ((b1l * X) >> 15);
    const std::int64_t u = -65536 * b2h;
    const std::int64_t s1 = p + u;
    const std::int64_t s2 = s1 - 2 * b2l;
    t = s2 + std::int64_t{f[kHalf]} * 4096;
    ok = ok && fits32(p1) && fits32(p) && fits32(u) && fits32(s1) && fits32(s2) && fits32(t);
    if (!ok) return chebps(x, f, q);
    std::int64_t r = t * (q == 11 ? 64 : 128);
    r = r > MAX_32 ? MAX_32 : (r < MIN_32 ? MIN_32 : r);
    return static_cast<Word16>(r >> 16);
}

}  // namespace

/// True when no intermediate of chebps can saturate for any |x| <= 1: the
/// bounds below are in units of f (Q11 or Q10; the 32-bit range is 2^18 of
/// them), b_k <= 2 b_(k+1) + b_(k+2) + |f_k| with a margin for the
/// truncations.
bool chebps_never_saturates(const Word16* f, int q) {
    auto mag = [](Word16 v) { return v < 0 ? -std::int64_t{v} : std::int64_t{v}; };
    const std::int64_t one = std::int64_t{1} << q, limit = (std::int64_t{1} << 18) - 64;
    std::int64_t b1 = 2 * one + mag(f[1]) + 2, b2 = one;
    for (int i = 2; i < kHalf; ++i) {
        const std::int64_t t = 2 * b1 + b2 + mag(f[i]) + 2;
        if (2 * b1 > limit || t > limit) return false;
        b2 = b1;
        b1 = t;
    }
    return b1 + b2 + mag(f[kHalf]) + 2 <= limit;
}

/// The lane arithmetic of chebps_x8 for one point. The Mpy_32_16 of the
/// hi/lo split, hi x + ((lo x) >> 15), is ((b >> 1) x) >> 15 for
/// b = (hi << 16) + (lo << 1), since b >> 1 = hi 2^15 + lo.
Word16 chebps_unsaturated(Word16 x, const Word16* f, int q) {
    const std::int64_t X = x;
    std::int64_t t = X * (q == 11 ? 1024 : 512) + std::int64_t{f[1]} * 8192;
    std::int64_t c2 = std::int64_t{q == 11 ? 256 : 128} * 65536, c1 = t & ~std::int64_t{1};
    for (int i = 2; i < kHalf; ++i) {
        t = 4 * (((t >> 1) * X) >> 15) - c2 + std::int64_t{f[i]} * 8192;
        c2 = c1;
        c1 = t & ~std::int64_t{1};
    }
    t = 2 * (((t >> 1) * X) >> 15) - c2 + std::int64_t{f[kHalf]} * 4096;
    const std::int64_t r = t >> (q == 11 ? 10 : 9);
    return static_cast<Word16>(r > MAX_16 ? MAX_16 : (r < MIN_16 ? MIN_16 : r));
}

/// chebps at the eight points x[0..7] in 32-bit lanes; exact when
/// chebps_never_saturates(f, q), since then every operation of the reference
/// equals its plain integer value. The sums b are always even (the L_Extract
/// low part loses no bit), so a lane holds b = (hi << 16) + lo2 with
/// lo2 = 2 lo, and the reference's Mpy_32_16(hi, lo, x) / 2 is
/// hi x + floor(lo2 x / 2^16): pmaddwd with (0, x) gives the first term,
/// pmulhuw of lo2 with x (corrected by lo2 where x < 0, x read unsigned
/// there) the second.
#if defined(__SSSE3__)
void chebps_x8(const Word16* x, const Word16* f, int q, Word16* y) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i xv = _mm_loadu_si128(reinterpret_cast<const __m128i*>(x));
    const __m128i xh[2] = {_mm_unpacklo_epi16(zero, xv), _mm_unpackhi_epi16(zero, xv)};  // (0, x)
    const __m128i xl[2] = {_mm_unpacklo_epi16(xv, zero), _mm_unpackhi_epi16(xv, zero)};  // (x, 0)
    const __m128i neg[2] = {_mm_srai_epi16(xl[0], 15), _mm_srai_epi16(xl[1], 15)};
    const __m128i one_even = _mm_set1_epi32(1);
    const int xshift = q == 11 ? 10 : 9;
    const __m128i f1 = _mm_set1_epi32(8192 * f[1]);
    __m128i t[2], c2[2], c1[2];
    for (int h = 0; h < 2; ++h) {
        t[h] = _mm_add_epi32(_mm_slli_epi32(_mm_srai_epi32(xh[h], 16), xshift), f1);
        c2[h] = _mm_set1_epi32(q == 11 ? (256 << 16) : (128 << 16));
        c1[h] = t[h];
    }
    // hi x + floor(lo2 x / 2^16) of each lane of b.
    auto half_product = [&](__m128i b, int h) {
        const __m128i m = _mm_sub_epi16(_mm_mulhi_epu16(b, xl[h]), _mm_and_si128(b, neg[h]));
        return _mm_add_epi32(_mm_madd_epi16(b, xh[h]), _mm_madd_epi16(m, one_even));
    };
    for (int i = 2; i < kHalf; ++i) {
        const __m128i fi = _mm_set1_epi32(8192 * f[i]);
        for (int h = 0; h < 2; ++h) {
            t[h] = _mm_add_epi32(_mm_sub_epi32(_mm_slli_epi32(half_product(t[h], h), 2), c2[h]), fi);
            c2[h] = c1[h];
            c1[h] = t[h];
        }
    }
    const __m128i f5 = _mm_set1_epi32(4096 * f[kHalf]);
    for (int h = 0; h < 2; ++h) t[h] = _mm_add_epi32(_mm_sub_epi32(_mm_slli_epi32(half_product(t[h], h), 1), c2[h]), f5);
    // extract_h(L_shl(t, 6 or 7)) = t >> 10 (or 9), saturated to 16 bits.
    const int rshift = q == 11 ? 10 : 9;
    const __m128i r = _mm_packs_epi32(_mm_srai_epi32(t[0], rshift), _mm_srai_epi32(t[1], rshift));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(y), r);
}
#else
// Hosts without SSSE3: the same lane arithmetic, one point at a time.
void chebps_x8(const Word16* x, const Word16* f, int q, Word16* y) {
    for (int i = 0; i < 8; ++i) y[i] = chebps_unsaturated(x[i], f, q);
}
#endif

namespace {

/// The bisections of one sign change with every midpoint they could visit
/// evaluated up front (a tree of 2^n - 1 points, at most 15, in two
/// eight-point batches), then walked exactly as the sequential bisection.
void bisect_batched(Word16& xlow, Word16& ylow, Word16& xhigh, Word16& yhigh, const Word16* coef, int q,
                    int bisections) {
    alignas(16) Word16 lo[16], hi[16], pts[16] = {}, ys[16];
    const int nodes = (1 << bisections) - 1;
    lo[0] = xlow;
    hi[0] = xhigh;
    for (int n = 0; n < nodes; ++n) {
        pts[n] = add(shr(lo[n], 1), shr(hi[n], 1));  // NOLINT(clang-analyzer-core.CallAndMessage): lo/hi[n] set by the parent node)
        if (2 * n + 2 < nodes) {
            lo[2 * n + 1] = lo[n];  // sign change in the lower part: [xlow, xmid]
            hi[2 * n + 1] = pts[n];
            lo[2 * n + 2] = pts[n];  // else [xmid, xhigh]
            hi[2 * n + 2] = hi[n];
        }
    }
    for (int k = 0; k < nodes; k += 8) chebps_x8(pts + k, coef, q, ys + k);
    int n = 0;
    for (int i = 0; i < bisections; ++i) {
        if (L_mult(ylow, ys[n]) <= 0) {  // NOLINT(clang-analyzer-core.CallAndMessage): chebps_x8 wrote ys[0..nodes))
            yhigh = ys[n];
            xhigh = pts[n];
            n = 2 * n + 1;
        } else {
            ylow = ys[n];
            xlow = pts[n];
            n = 2 * n + 2;
        }
    }
}

/// F1 and F2 in Q11; false when a coefficient overflowed.
bool sum_diff_polynomials_q11(const Word16* a, Word16* f1, Word16* f2) {
    Flag ovf = false;
    f1[0] = 2048;
    f2[0] = 2048;
    for (int i = 0; i < kHalf; ++i) {
        f1[i + 1] = sub(extract_h(L_mac(L_mult(a[i + 1], 16384, ovf), a[kOrder - i], 16384, ovf)), f1[i], ovf);
        f2[i + 1] = add(extract_h(L_msu(L_mult(a[i + 1], 16384, ovf), a[kOrder - i], 16384, ovf)), f2[i], ovf);
    }
    return !ovf;
}

void sum_diff_polynomials_q10(const Word16* a, Word16* f1, Word16* f2) {
    f1[0] = 1024;
    f2[0] = 1024;
    for (int i = 0; i < kHalf; ++i) {
        f1[i + 1] = sub(extract_h(L_mac(L_mult(a[i + 1], 8192), a[kOrder - i], 8192)), f1[i]);
        f2[i + 1] = add(extract_h(L_msu(L_mult(a[i + 1], 8192), a[kOrder - i], 8192)), f2[i]);
    }
}

/// Root between xlow and xhigh by linear interpolation (Q15).
Word16 interpolate_root(Word16 xlow, Word16 ylow, Word16 xhigh, Word16 yhigh) {
    const Word16 x = sub(xhigh, xlow);
    Word16 y = sub(yhigh, ylow);
    if (y == 0) return xlow;
    const Word16 sign = y;
    y = abs_s(y);
    const Word16 e = norm_s_fast(y);
    y = shl(y, e);
    y = div_s_fast(16383, y);
    y = extract_l(L_shr(L_mult(x, y), sub(20, e)));
    if (sign < 0) y = negate(y);
    return sub(xlow, extract_l(L_shr(L_mult(ylow, y), 11)));
}

void az_lsp(const Word16* a, const Word16* old_lsp, Word16* lsp_out, const Word16* grid_tab, int grid_points,
            int bisections) {
    Word16 f1[kHalf + 1], f2[kHalf + 1];
    int q = 11;
    if (!sum_diff_polynomials_q11(a, f1, f2)) {
        q = 10;
        sum_diff_polynomials_q10(a, f1, f2);
    }
    // Values of F1 and F2 on the whole grid, eight points at a time, when no
    // saturation can occur; otherwise each grid point is evaluated on demand.
    const bool batch = chebps_never_saturates(f1, q) && chebps_never_saturates(f2, q);
    alignas(16) Word16 gx[kGridMax + 8] = {}, gy1[kGridMax + 8], gy2[kGridMax + 8];
    if (batch) {
        std::copy(grid_tab, grid_tab + grid_points + 1, gx);
        for (int k = 0; k <= grid_points; k += 8) {
            chebps_x8(gx + k, f1, q, gy1 + k);
            chebps_x8(gx + k, f2, q, gy2 + k);
        }
    }
    auto on_grid = [&](int k, const Word16* c) {
        return batch ? (c == f1 ? gy1[k] : gy2[k]) : chebps_fast(grid_tab[k], c, q);
    };
    Word16 lsp[kOrder];
    int nf = 0;
    const Word16* coef = f1;
    Word16 xlow = grid_tab[0];
    Word16 ylow = on_grid(0, coef);
    int j = 0;
    while (nf < kOrder && j < grid_points) {
        ++j;
        Word16 xhigh = xlow, yhigh = ylow;
        xlow = grid_tab[j];
        ylow = on_grid(j, coef);
        if (L_mult(ylow, yhigh) <= 0) {
            if (batch) {
                bisect_batched(xlow, ylow, xhigh, yhigh, coef, q, bisections);
            } else {
                for (int i = 0; i < bisections; ++i) {
                    const Word16 xmid = add(shr(xlow, 1), shr(xhigh, 1));
                    const Word16 ymid = chebps_fast(xmid, coef, q);
                    if (L_mult(ylow, ymid) <= 0) {
                        yhigh = ymid;
                        xhigh = xmid;
                    } else {
                        ylow = ymid;
                        xlow = xmid;
                    }
                }
            }
            xlow = interpolate_root(xlow, ylow, xhigh, yhigh);
            lsp[nf++] = xlow;
            coef = (coef == f1) ? f2 : f1;
            ylow = batch ? chebps_unsaturated(xlow, coef, q) : chebps_fast(xlow, coef, q);
        }
    }
    const Word16* src = nf < kOrder ? old_lsp : lsp;
    for (int i = 0; i < kOrder; ++i) lsp_out[i] = src[i];
}

}  // namespace

ZepStatus zepsLPCToLSP_G729_16s(const Zep16s* pLPC, const Zep16s* pPrevLSP, Zep16s* pLSP) {
    if (any_null(pLPC, pPrevLSP, pLSP)) return zepStsNullPtrErr;
    az_lsp(pLPC, pPrevLSP, pLSP, grid, 60, 4);
    return zepStsNoErr;
}

ZepStatus zepsLPCToLSP_G729A_16s(const Zep16s* pLPC, const Zep16s* pPrevLSP, Zep16s* pLSP) {
    if (any_null(pLPC, pPrevLSP, pLSP)) return zepStsNullPtrErr;
    az_lsp(pLPC, pPrevLSP, pLSP, grid_a, 50, 2);
    return zepStsNoErr;
}

ZEPS_END_VARIANT
