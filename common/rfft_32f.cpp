// SPDX-License-Identifier: BSD-3-Clause
// Single-precision real FFT, N = 2^order, order 1..16 (see common/rfft.h).
//
// Description block (S bytes, S = 8 mod 16 so that a block placed at an
// address 8 mod 16 has its tables 16-byte aligned):
//   RfftDesc32f header (8 bytes), then, each a multiple of 16 bytes:
//   complex-stage twiddles (SSE layout, see stage_twiddle_floats),
//   forward split twiddles 0.5*W^k (re[P], im[P]), inverse split twiddles
//   conj(W^k)/N (re[P], im[P]), P = N/4+1 rounded up to 4, and the
//   bit-reversal table of M = N/2 entries (rounded up to 4).
// Work buffer: the split real and imaginary arrays of the complex FFT, N floats.
//
// The SSE kernels and the scalar kernels perform the same single-precision
// operations in the same order, so both give identical bits.
#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <cmath>
#include <cstring>

#include "common/rfft.h"
#include "common/rfft_twiddle.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr std::int32_t kMagic32f = 0x52463332;  // "RF32"

int round4(int n) { return (n + 3) & ~3; }

/// Floats of twiddles for the complex DIF stages of an M-point FFT:
/// a radix-2 first stage (when log2 M is odd and its span is at least 4)
/// holds wr[h], wi[h]; each radix-4 stage of span s >= 4 holds
/// w1r[s], w1i[s], w2r[s], w2i[s], w3r[s], w3i[s].
int stage_twiddle_floats(int m) {
    const int M = 1 << m;
    int n = 0;
    int s = M;
    if (m & 1) {
        if (M / 2 >= 4) n += M;
        s = M / 2;
    }
    for (s /= 4; s >= 4; s /= 4) n += 6 * s;
    return n;
}

struct Layout32f {
    int M, m, P;
    int tw, fwd, inv, rev, total;  // offsets in 4-byte units from the table start
};

Layout32f layout_32f(int order) {
    Layout32f l{};
    l.m = order - 1;
    l.M = 1 << l.m;
    l.P = round4(l.M / 2 + 1);
    l.tw = 0;
    l.fwd = l.tw + stage_twiddle_floats(l.m);
    l.inv = l.fwd + 2 * l.P;
    l.rev = l.inv + 2 * l.P;
    l.total = l.rev + round4(l.M);
    return l;
}

float* tables(RfftDesc32f* s) { return reinterpret_cast<float*>(reinterpret_cast<std::uint8_t*>(s) + 8); }
const float* tables(const RfftDesc32f* s) {
    return reinterpret_cast<const float*>(reinterpret_cast<const std::uint8_t*>(s) + 8);
}
const std::uint32_t* rev_table(const RfftDesc32f* s, const Layout32f& l) {
    return reinterpret_cast<const std::uint32_t*>(tables(s) + l.rev);
}

// ---------------------------------------------------------------- kernels
// Split-format DIF butterflies. Radix-4, span s, offset j inside a group:
//   x[j]    = (a + c) + (b + d)
//   x[j+s]  = ((a + c) - (b + d)) W^2j
//   x[j+2s] = ((a - c) - i(b - d)) W^j
//   x[j+3s] = ((a - c) + i(b - d)) W^3j,   W = exp(-2 pi i / 4s)
// which is two radix-2 DIF levels at once, so the output is bit-reversed.

inline void cmul(float xr, float xi, float wr, float wi, float& yr, float& yi) {
    yr = xr * wr - xi * wi;
    yi = xr * wi + xi * wr;
}

void radix2_scalar(float* re, float* im, int h, const float* wr, const float* wi) {
    for (int j = 0; j < h; ++j) {
        const float ar = re[j], ai = im[j], br = re[j + h], bi = im[j + h];
        re[j] = ar + br;
        im[j] = ai + bi;
        if (wr) {
            cmul(ar - br, ai - bi, wr[j], wi[j], re[j + h], im[j + h]);
        } else {
            re[j + h] = ar - br;
            im[j + h] = ai - bi;
        }
    }
}

inline void bfly4_scalar(float* re, float* im, int i0, int s, const float* w, int j, int stride) {
    const int i1 = i0 + s, i2 = i0 + 2 * s, i3 = i0 + 3 * s;
    const float t0r = re[i0] + re[i2], t0i = im[i0] + im[i2];
    const float t1r = re[i0] - re[i2], t1i = im[i0] - im[i2];
    const float t2r = re[i1] + re[i3], t2i = im[i1] + im[i3];
    const float t3r = re[i1] - re[i3], t3i = im[i1] - im[i3];
    re[i0] = t0r + t2r;
    im[i0] = t0i + t2i;
    const float x1r = t0r - t2r, x1i = t0i - t2i;
    const float x2r = t1r + t3i, x2i = t1i - t3r;
    const float x3r = t1r - t3i, x3i = t1i + t3r;
    if (w) {
        cmul(x1r, x1i, w[2 * stride + j], w[3 * stride + j], re[i1], im[i1]);
        cmul(x2r, x2i, w[0 * stride + j], w[1 * stride + j], re[i2], im[i2]);
        cmul(x3r, x3i, w[4 * stride + j], w[5 * stride + j], re[i3], im[i3]);
    } else {
        re[i1] = x1r, im[i1] = x1i;
        re[i2] = x2r, im[i2] = x2i;
        re[i3] = x3r, im[i3] = x3i;
    }
}

void radix4_scalar(float* re, float* im, int M, int s, const float* w) {
    for (int g = 0; g < M; g += 4 * s)
        for (int j = 0; j < s; ++j) bfly4_scalar(re, im, g + j, s, w, j, s);
}

void cfft_dif_scalar(float* re, float* im, int m, const float* tw) {
    const int M = 1 << m;
    int s = M;
    if (m & 1) {
        const int h = M / 2;
        if (h >= 4) {
            radix2_scalar(re, im, h, tw, tw + h);
            tw += 2 * h;
        } else {
            radix2_scalar(re, im, h, nullptr, nullptr);
        }
        s = h;
    }
    for (s /= 4; s >= 1; s /= 4) {
        if (s >= 4) {
            radix4_scalar(re, im, M, s, tw);
            tw += 6 * s;
        } else {
            radix4_scalar(re, im, M, s, nullptr);
        }
    }
}

#if defined(__SSSE3__)
// ---- SSE versions (same operations, four butterflies per instruction)

inline void cmul4(__m128 xr, __m128 xi, __m128 wr, __m128 wi, __m128& yr, __m128& yi) {
    yr = _mm_sub_ps(_mm_mul_ps(xr, wr), _mm_mul_ps(xi, wi));
    yi = _mm_add_ps(_mm_mul_ps(xr, wi), _mm_mul_ps(xi, wr));
}

void radix2_sse(float* re, float* im, int h, const float* wr, const float* wi) {
    for (int j = 0; j < h; j += 4) {
        const __m128 ar = _mm_loadu_ps(re + j), ai = _mm_loadu_ps(im + j);
        const __m128 br = _mm_loadu_ps(re + j + h), bi = _mm_loadu_ps(im + j + h);
        _mm_storeu_ps(re + j, _mm_add_ps(ar, br));
        _mm_storeu_ps(im + j, _mm_add_ps(ai, bi));
        __m128 yr, yi;
        cmul4(_mm_sub_ps(ar, br), _mm_sub_ps(ai, bi), _mm_loadu_ps(wr + j), _mm_loadu_ps(wi + j), yr, yi);
        _mm_storeu_ps(re + j + h, yr);
        _mm_storeu_ps(im + j + h, yi);
    }
}

void radix4_sse(float* re, float* im, int M, int s, const float* w) {
    for (int g = 0; g < M; g += 4 * s) {
        float* r = re + g;
        float* q = im + g;
        for (int j = 0; j < s; j += 4) {
            const __m128 ar = _mm_loadu_ps(r + j), ai = _mm_loadu_ps(q + j);
            const __m128 br = _mm_loadu_ps(r + j + s), bi = _mm_loadu_ps(q + j + s);
            const __m128 cr = _mm_loadu_ps(r + j + 2 * s), ci = _mm_loadu_ps(q + j + 2 * s);
            const __m128 dr = _mm_loadu_ps(r + j + 3 * s), di = _mm_loadu_ps(q + j + 3 * s);
            const __m128 t0r = _mm_add_ps(ar, cr), t0i = _mm_add_ps(ai, ci);
            const __m128 t1r = _mm_sub_ps(ar, cr), t1i = _mm_sub_ps(ai, ci);
            const __m128 t2r = _mm_add_ps(br, dr), t2i = _mm_add_ps(bi, di);
            const __m128 t3r = _mm_sub_ps(br, dr), t3i = _mm_sub_ps(bi, di);
            _mm_storeu_ps(r + j, _mm_add_ps(t0r, t2r));
            _mm_storeu_ps(q + j, _mm_add_ps(t0i, t2i));
            __m128 yr, yi;
            cmul4(_mm_sub_ps(t0r, t2r), _mm_sub_ps(t0i, t2i), _mm_loadu_ps(w + 2 * s + j),
                  _mm_loadu_ps(w + 3 * s + j), yr, yi);
            _mm_storeu_ps(r + j + s, yr);
            _mm_storeu_ps(q + j + s, yi);
            cmul4(_mm_add_ps(t1r, t3i), _mm_sub_ps(t1i, t3r), _mm_loadu_ps(w + j), _mm_loadu_ps(w + s + j), yr,
                  yi);
            _mm_storeu_ps(r + j + 2 * s, yr);
            _mm_storeu_ps(q + j + 2 * s, yi);
            cmul4(_mm_sub_ps(t1r, t3i), _mm_add_ps(t1i, t3r), _mm_loadu_ps(w + 4 * s + j),
                  _mm_loadu_ps(w + 5 * s + j), yr, yi);
            _mm_storeu_ps(r + j + 3 * s, yr);
            _mm_storeu_ps(q + j + 3 * s, yi);
        }
    }
}

/// Last radix-4 level (span 1, no twiddles) on four groups at a time: the
/// 4x4 blocks are transposed so that each register holds one butterfly leg.
void radix4_last_sse(float* re, float* im, int M) {
    for (int g = 0; g < M; g += 16) {
        __m128 ar = _mm_loadu_ps(re + g), br = _mm_loadu_ps(re + g + 4);
        __m128 cr = _mm_loadu_ps(re + g + 8), dr = _mm_loadu_ps(re + g + 12);
        __m128 ai = _mm_loadu_ps(im + g), bi = _mm_loadu_ps(im + g + 4);
        __m128 ci = _mm_loadu_ps(im + g + 8), di = _mm_loadu_ps(im + g + 12);
        _MM_TRANSPOSE4_PS(ar, br, cr, dr);
        _MM_TRANSPOSE4_PS(ai, bi, ci, di);
        const __m128 t0r = _mm_add_ps(ar, cr), t0i = _mm_add_ps(ai, ci);
        const __m128 t1r = _mm_sub_ps(ar, cr), t1i = _mm_sub_ps(ai, ci);
        const __m128 t2r = _mm_add_ps(br, dr), t2i = _mm_add_ps(bi, di);
        const __m128 t3r = _mm_sub_ps(br, dr), t3i = _mm_sub_ps(bi, di);
        __m128 y0r = _mm_add_ps(t0r, t2r), y0i = _mm_add_ps(t0i, t2i);
        __m128 y1r = _mm_sub_ps(t0r, t2r), y1i = _mm_sub_ps(t0i, t2i);
        __m128 y2r = _mm_add_ps(t1r, t3i), y2i = _mm_sub_ps(t1i, t3r);
        __m128 y3r = _mm_sub_ps(t1r, t3i), y3i = _mm_add_ps(t1i, t3r);
        _MM_TRANSPOSE4_PS(y0r, y1r, y2r, y3r);
        _MM_TRANSPOSE4_PS(y0i, y1i, y2i, y3i);
        _mm_storeu_ps(re + g, y0r), _mm_storeu_ps(re + g + 4, y1r);
        _mm_storeu_ps(re + g + 8, y2r), _mm_storeu_ps(re + g + 12, y3r);
        _mm_storeu_ps(im + g, y0i), _mm_storeu_ps(im + g + 4, y1i);
        _mm_storeu_ps(im + g + 8, y2i), _mm_storeu_ps(im + g + 12, y3i);
    }
}

/// Last radix-4 level of a 16- or 32-point transform, leaving the result in
/// natural order (in place). In the transposed registers lane l of leg q
/// holds position 4l + q of its 16-point block, i.e. bin
/// bitrev(q) * M/4 + bitrev(l) * M/16 + block: swapping lanes 1 and 2 puts
/// the bins of one leg in order, and for M = 32 the two blocks interleave.
inline void last_legs(const float* re, const float* im, __m128 yr[4], __m128 yi[4]) {
    __m128 ar = _mm_loadu_ps(re), br = _mm_loadu_ps(re + 4), cr = _mm_loadu_ps(re + 8), dr = _mm_loadu_ps(re + 12);
    __m128 ai = _mm_loadu_ps(im), bi = _mm_loadu_ps(im + 4), ci = _mm_loadu_ps(im + 8), di = _mm_loadu_ps(im + 12);
    _MM_TRANSPOSE4_PS(ar, br, cr, dr);
    _MM_TRANSPOSE4_PS(ai, bi, ci, di);
    const __m128 t0r = _mm_add_ps(ar, cr), t0i = _mm_add_ps(ai, ci);
    const __m128 t1r = _mm_sub_ps(ar, cr), t1i = _mm_sub_ps(ai, ci);
    const __m128 t2r = _mm_add_ps(br, dr), t2i = _mm_add_ps(bi, di);
    const __m128 t3r = _mm_sub_ps(br, dr), t3i = _mm_sub_ps(bi, di);
    yr[0] = _mm_add_ps(t0r, t2r), yi[0] = _mm_add_ps(t0i, t2i);
    yr[1] = _mm_sub_ps(t0r, t2r), yi[1] = _mm_sub_ps(t0i, t2i);
    yr[2] = _mm_add_ps(t1r, t3i), yi[2] = _mm_sub_ps(t1i, t3r);
    yr[3] = _mm_sub_ps(t1r, t3i), yi[3] = _mm_add_ps(t1i, t3r);
    for (int q = 0; q < 4; ++q) {
        yr[q] = _mm_shuffle_ps(yr[q], yr[q], _MM_SHUFFLE(3, 1, 2, 0));
        yi[q] = _mm_shuffle_ps(yi[q], yi[q], _MM_SHUFFLE(3, 1, 2, 0));
    }
}

constexpr int kRev2[4] = {0, 2, 1, 3};

void radix4_last16_natural(float* re, float* im) {
    __m128 yr[4], yi[4];
    last_legs(re, im, yr, yi);
    for (int q = 0; q < 4; ++q) {
        _mm_storeu_ps(re + 4 * kRev2[q], yr[q]);
        _mm_storeu_ps(im + 4 * kRev2[q], yi[q]);
    }
}

void radix4_last32_natural(float* re, float* im) {
    __m128 ar[4], ai[4], br[4], bi[4];
    last_legs(re, im, ar, ai);
    last_legs(re + 16, im + 16, br, bi);
    for (int q = 0; q < 4; ++q) {
        float* r = re + 8 * kRev2[q];
        float* i = im + 8 * kRev2[q];
        _mm_storeu_ps(r, _mm_unpacklo_ps(ar[q], br[q]));
        _mm_storeu_ps(r + 4, _mm_unpackhi_ps(ar[q], br[q]));
        _mm_storeu_ps(i, _mm_unpacklo_ps(ai[q], bi[q]));
        _mm_storeu_ps(i + 4, _mm_unpackhi_ps(ai[q], bi[q]));
    }
}

/// DIF transform; returns true when the result is in natural order
/// (M = 16 and 32), false when it is bit-reversed.
bool cfft_dif_sse(float* re, float* im, int m, const float* tw) {
    const int M = 1 << m;
    int s = M;
    if (m & 1) {
        const int h = M / 2;
        if (h >= 4) {
            radix2_sse(re, im, h, tw, tw + h);
            tw += 2 * h;
        } else {
            radix2_scalar(re, im, h, nullptr, nullptr);
        }
        s = h;
    }
    for (s /= 4; s >= 1; s /= 4) {
        if (s >= 4) {
            radix4_sse(re, im, M, s, tw);
            tw += 6 * s;
        } else if (M == 16) {
            radix4_last16_natural(re, im);
            return true;
        } else if (M == 32) {
            radix4_last32_natural(re, im);
            return true;
        } else if (M >= 16) {
            radix4_last_sse(re, im, M);
        } else {
            radix4_scalar(re, im, M, s, nullptr);
        }
    }
    return false;
}
#endif

// ---------------------------------------------------------------- split steps

/// Forward: even/odd separation of the packed transform Z (bit-reversed in
/// re/im) into X[0..M], interleaved.
void split_forward(const float* re, const float* im, float* dst, const Layout32f& l, const float* hwr,
                   const float* hwi, const std::uint32_t* rev) {
    const int M = l.M;
    const float r0 = re[0], i0 = im[0];
    dst[0] = r0 + i0;
    dst[1] = 0.0f;
    dst[2 * M] = r0 - i0;
    dst[2 * M + 1] = 0.0f;
    for (int k = 1; k <= M / 2; ++k) {
        const std::uint32_t pa = rev[k], pb = rev[M - k];
        const float ar = re[pa], ai = im[pa], br = re[pb], bi = im[pb];
        const float fer = ar + br, fei = ai - bi;
        const float f_r = ai + bi, f_i = br - ar;
        const float tr = hwr[k] * f_r - hwi[k] * f_i;
        const float ti = hwr[k] * f_i + hwi[k] * f_r;
        const float her = 0.5f * fer, hei = 0.5f * fei;
        dst[2 * k] = her + tr;
        dst[2 * k + 1] = hei + ti;
        dst[2 * (M - k)] = her - tr;
        dst[2 * (M - k) + 1] = ti - hei;
    }
}

/// Inverse: builds the packed spectrum Z/N (natural order) from X[0..M].
void split_inverse(const float* src, float* re, float* im, const Layout32f& l, const float* iwr,
                   const float* iwi) {
    const int M = l.M;
    const float c = 1.0f / static_cast<float>(2 * M);
    re[0] = (src[0] + src[2 * M]) * c;
    im[0] = (src[0] - src[2 * M]) * c;
    for (int k = 1; k <= M / 2; ++k) {
        const float ar = src[2 * k], ai = src[2 * k + 1];
        const float br = src[2 * (M - k)], bi = src[2 * (M - k) + 1];
        const float fer = (ar + br) * c, fei = (ai - bi) * c;
        const float dr = ar - br, di = ai + bi;
        const float f_r = dr * iwr[k] - di * iwi[k];
        const float f_i = dr * iwi[k] + di * iwr[k];
        re[k] = fer - f_i;
        im[k] = fei + f_r;
        re[M - k] = fer + f_i;
        im[M - k] = f_r - fei;
    }
}

/// Inverse output: y[2n] + i y[2n+1] = z[n], z bit-reversed in re/im.
void unpack_inverse(const float* re, const float* im, float* dst, int M, const std::uint32_t* rev) {
    for (int n = 0; n < M; ++n) {
        dst[2 * n] = re[rev[n]];
        dst[2 * n + 1] = im[rev[n]];
    }
}

#if defined(__SSSE3__)
// ---- SSE split steps on natural-order data (M a multiple of 8): four bins
// k and the four mirror bins M-k per step, the same operations as above.

inline __m128 reverse4(__m128 v) { return _mm_shuffle_ps(v, v, _MM_SHUFFLE(0, 1, 2, 3)); }

void split_forward_sse(const float* re, const float* im, float* dst, int M, const float* hwr, const float* hwi) {
    const float r0 = re[0], i0 = im[0];
    dst[0] = r0 + i0;
    dst[1] = 0.0f;
    dst[2 * M] = r0 - i0;
    dst[2 * M + 1] = 0.0f;
    const __m128 half = _mm_set1_ps(0.5f);
    for (int k = 1; k <= M / 2; k += 4) {
        const __m128 ar = _mm_loadu_ps(re + k), ai = _mm_loadu_ps(im + k);
        const __m128 br = reverse4(_mm_loadu_ps(re + M - k - 3)), bi = reverse4(_mm_loadu_ps(im + M - k - 3));
        const __m128 wr = _mm_loadu_ps(hwr + k), wi = _mm_loadu_ps(hwi + k);
        const __m128 fer = _mm_add_ps(ar, br), fei = _mm_sub_ps(ai, bi);
        const __m128 f_r = _mm_add_ps(ai, bi), f_i = _mm_sub_ps(br, ar);
        const __m128 tr = _mm_sub_ps(_mm_mul_ps(wr, f_r), _mm_mul_ps(wi, f_i));
        const __m128 ti = _mm_add_ps(_mm_mul_ps(wr, f_i), _mm_mul_ps(wi, f_r));
        const __m128 her = _mm_mul_ps(half, fer), hei = _mm_mul_ps(half, fei);
        const __m128 xr = _mm_add_ps(her, tr), xi = _mm_add_ps(hei, ti);
        _mm_storeu_ps(dst + 2 * k, _mm_unpacklo_ps(xr, xi));
        _mm_storeu_ps(dst + 2 * k + 4, _mm_unpackhi_ps(xr, xi));
        const __m128 mr = reverse4(_mm_sub_ps(her, tr)), mi = reverse4(_mm_sub_ps(ti, hei));
        _mm_storeu_ps(dst + 2 * (M - k - 3), _mm_unpacklo_ps(mr, mi));
        _mm_storeu_ps(dst + 2 * (M - k - 3) + 4, _mm_unpackhi_ps(mr, mi));
    }
}

void split_inverse_sse(const float* src, float* re, float* im, int M, const float* iwr, const float* iwi) {
    const float c = 1.0f / static_cast<float>(2 * M);
    re[0] = (src[0] + src[2 * M]) * c;
    im[0] = (src[0] - src[2 * M]) * c;
    const __m128 cv = _mm_set1_ps(c);
    for (int k = 1; k <= M / 2; k += 4) {
        const __m128 a0 = _mm_loadu_ps(src + 2 * k), a1 = _mm_loadu_ps(src + 2 * k + 4);
        const __m128 b0 = _mm_loadu_ps(src + 2 * (M - k - 3)), b1 = _mm_loadu_ps(src + 2 * (M - k - 3) + 4);
        const __m128 ar = _mm_shuffle_ps(a0, a1, _MM_SHUFFLE(2, 0, 2, 0));
        const __m128 ai = _mm_shuffle_ps(a0, a1, _MM_SHUFFLE(3, 1, 3, 1));
        const __m128 br = reverse4(_mm_shuffle_ps(b0, b1, _MM_SHUFFLE(2, 0, 2, 0)));
        const __m128 bi = reverse4(_mm_shuffle_ps(b0, b1, _MM_SHUFFLE(3, 1, 3, 1)));
        const __m128 wr = _mm_loadu_ps(iwr + k), wi = _mm_loadu_ps(iwi + k);
        const __m128 fer = _mm_mul_ps(_mm_add_ps(ar, br), cv), fei = _mm_mul_ps(_mm_sub_ps(ai, bi), cv);
        const __m128 dr = _mm_sub_ps(ar, br), di = _mm_add_ps(ai, bi);
        const __m128 f_r = _mm_sub_ps(_mm_mul_ps(dr, wr), _mm_mul_ps(di, wi));
        const __m128 f_i = _mm_add_ps(_mm_mul_ps(dr, wi), _mm_mul_ps(di, wr));
        _mm_storeu_ps(re + k, _mm_sub_ps(fer, f_i));
        _mm_storeu_ps(im + k, _mm_add_ps(fei, f_r));
        _mm_storeu_ps(re + M - k - 3, reverse4(_mm_add_ps(fer, f_i)));
        _mm_storeu_ps(im + M - k - 3, reverse4(_mm_sub_ps(f_r, fei)));
    }
}

/// Inverse output from natural-order z: y[2n] = re[n], y[2n+1] = im[n].
void unpack_natural(const float* re, const float* im, float* dst, int M) {
    for (int n = 0; n < M; n += 4) {
        const __m128 r = _mm_loadu_ps(re + n), i = _mm_loadu_ps(im + n);
        _mm_storeu_ps(dst + 2 * n, _mm_unpacklo_ps(r, i));
        _mm_storeu_ps(dst + 2 * n + 4, _mm_unpackhi_ps(r, i));
    }
}
#endif

/// Packs N real samples into the split arrays: re[n] = x[2n], im[n] = x[2n+1].
void pack_forward(const float* src, float* re, float* im, int M) {
    int n = 0;
#if defined(__SSSE3__)
    for (; n + 4 <= M; n += 4) {
        const __m128 lo = _mm_loadu_ps(src + 2 * n), hi = _mm_loadu_ps(src + 2 * n + 4);
        _mm_storeu_ps(re + n, _mm_shuffle_ps(lo, hi, _MM_SHUFFLE(2, 0, 2, 0)));
        _mm_storeu_ps(im + n, _mm_shuffle_ps(lo, hi, _MM_SHUFFLE(3, 1, 3, 1)));
    }
#endif
    for (; n < M; ++n) {
        re[n] = src[2 * n];
        im[n] = src[2 * n + 1];
    }
}

bool valid(const RfftDesc32f* s) {
    return s->magic == kMagic32f && s->order >= kRfftMinOrder && s->order <= kRfftMaxOrder;
}

#if defined(__SSSE3__)
template <bool Sse>
bool forward(const float* pSrc, float* pDst, const RfftDesc32f* pDesc, std::uint8_t* pWork) {
    if (!valid(pDesc)) return false;
    if (Sse) {
        float* re = reinterpret_cast<float*>(pWork);
        float* im = re + (1 << (pDesc->order - 1));
        pack_forward(pSrc, re, im, 1 << (pDesc->order - 1));
        return rfft_fwd_32f_split(re, im, pDst, pDesc);
    }
    const Layout32f l = layout_32f(pDesc->order);
    const float* t = tables(pDesc);
    float* re = reinterpret_cast<float*>(pWork);
    float* im = re + l.M;
    pack_forward(pSrc, re, im, l.M);
    bool natural = false;
    if (Sse)
        natural = cfft_dif_sse(re, im, l.m, t + l.tw);
    else
        cfft_dif_scalar(re, im, l.m, t + l.tw);
    if (natural)
        split_forward_sse(re, im, pDst, l.M, t + l.fwd, t + l.fwd + l.P);
    else
        split_forward(re, im, pDst, l, t + l.fwd, t + l.fwd + l.P, rev_table(pDesc, l));
    return true;
}

template <bool Sse>
bool inverse(const float* pSrc, float* pDst, const RfftDesc32f* pDesc, std::uint8_t* pWork) {
    if (!valid(pDesc)) return false;
    const Layout32f l = layout_32f(pDesc->order);
    const float* t = tables(pDesc);
    float* re = reinterpret_cast<float*>(pWork);
    float* im = re + l.M;
    if (Sse && l.M >= 8)
        split_inverse_sse(pSrc, re, im, l.M, t + l.inv, t + l.inv + l.P);
    else
        split_inverse(pSrc, re, im, l, t + l.inv, t + l.inv + l.P);
    // Exchanging the real and imaginary arrays conjugates the transform.
    bool natural = false;
    if (Sse)
        natural = cfft_dif_sse(im, re, l.m, t + l.tw);
    else
        cfft_dif_scalar(im, re, l.m, t + l.tw);
    if (natural)
        unpack_natural(re, im, pDst, l.M);
    else
        unpack_inverse(re, im, pDst, l.M, rev_table(pDesc, l));
    return true;
}
#else
// Hosts without SSSE3: both forms are the scalar kernels.
template <bool Sse>
bool forward(const float* pSrc, float* pDst, const RfftDesc32f* pDesc, std::uint8_t* pWork) {
    if (!valid(pDesc)) return false;
    const Layout32f l = layout_32f(pDesc->order);
    const float* t = tables(pDesc);
    float* re = reinterpret_cast<float*>(pWork);
    float* im = re + l.M;
    pack_forward(pSrc, re, im, l.M);
    cfft_dif_scalar(re, im, l.m, t + l.tw);
    split_forward(re, im, pDst, l, t + l.fwd, t + l.fwd + l.P, rev_table(pDesc, l));
    return true;
}

template <bool Sse>
bool inverse(const float* pSrc, float* pDst, const RfftDesc32f* pDesc, std::uint8_t* pWork) {
    if (!valid(pDesc)) return false;
    const Layout32f l = layout_32f(pDesc->order);
    const float* t = tables(pDesc);
    float* re = reinterpret_cast<float*>(pWork);
    float* im = re + l.M;
    split_inverse(pSrc, re, im, l, t + l.inv, t + l.inv + l.P);
    // Exchanging the real and imaginary arrays conjugates the transform.
    cfft_dif_scalar(im, re, l.m, t + l.tw);
    unpack_inverse(re, im, pDst, l.M, rev_table(pDesc, l));
    return true;
}
#endif

}  // namespace

bool rfft_get_size_32f(int order, int* pDescSize, int* pWorkSize, int* pInitSize) {
    if (order < kRfftMinOrder || order > kRfftMaxOrder) return false;
    const Layout32f l = layout_32f(order);
    *pDescSize = 8 + 4 * l.total;
    *pWorkSize = 4 * (2 * l.M);
    *pInitSize = 0;
    return true;
}

RfftDesc32f* rfft_init_32f(int order, std::uint8_t* pMem) {
    if (order < kRfftMinOrder || order > kRfftMaxOrder) return nullptr;
    const Layout32f l = layout_32f(order);
    auto* desc = reinterpret_cast<RfftDesc32f*>(pMem);
    desc->order = order;
    desc->magic = kMagic32f;
    float* t = tables(desc);
    std::memset(t, 0, 4 * static_cast<std::size_t>(l.total));
    // Complex-stage twiddles, in the order the stages run.
    float* w = t + l.tw;
    int s = l.M;
    if (l.m & 1) {
        const int h = l.M / 2;
        if (h >= 4) {
            for (int j = 0; j < h; ++j) {
                const UnitRoot u = unit_root(j, 2 * h);
                w[j] = static_cast<float>(u.c);
                w[h + j] = static_cast<float>(-u.s);
            }
            w += 2 * h;
        }
        s = h;
    }
    for (s /= 4; s >= 4; s /= 4) {
        for (int j = 0; j < s; ++j) {
            for (int p = 1; p <= 3; ++p) {
                const UnitRoot u = unit_root(p * j, 4 * s);
                w[2 * (p - 1) * s + j] = static_cast<float>(u.c);
                w[(2 * (p - 1) + 1) * s + j] = static_cast<float>(-u.s);
            }
        }
        w += 6 * s;
    }
    // Split-step twiddles W^k = exp(-2 pi i k / N), k = 0 .. M/2.
    const int N = 2 * l.M;
    for (int k = 0; k <= l.M / 2; ++k) {
        const UnitRoot u = unit_root(k, N);
        t[l.fwd + k] = static_cast<float>(0.5 * u.c);
        t[l.fwd + l.P + k] = static_cast<float>(-0.5 * u.s);
        t[l.inv + k] = static_cast<float>(u.c / N);
        t[l.inv + l.P + k] = static_cast<float>(u.s / N);
    }
    auto* rev = reinterpret_cast<std::uint32_t*>(t + l.rev);
    for (int k = 0; k < l.M; ++k) rev[k] = bit_reverse(static_cast<std::uint32_t>(k), l.m);
    return desc;
}

bool rfft_fwd_32f_split(float* pRe, float* pIm, float* pDst, const RfftDesc32f* pDesc) {
    if (!valid(pDesc)) return false;
    const Layout32f l = layout_32f(pDesc->order);
    const float* t = tables(pDesc);
#if defined(__SSSE3__)
    if (cfft_dif_sse(pRe, pIm, l.m, t + l.tw))
        split_forward_sse(pRe, pIm, pDst, l.M, t + l.fwd, t + l.fwd + l.P);
    else
        split_forward(pRe, pIm, pDst, l, t + l.fwd, t + l.fwd + l.P, rev_table(pDesc, l));
#else
    cfft_dif_scalar(pRe, pIm, l.m, t + l.tw);
    split_forward(pRe, pIm, pDst, l, t + l.fwd, t + l.fwd + l.P, rev_table(pDesc, l));
#endif
    return true;
}

bool rfft_fwd_32f(const float* pSrc, float* pDst, const RfftDesc32f* pDesc, std::uint8_t* pWork) {
    return forward<true>(pSrc, pDst, pDesc, pWork);
}
bool rfft_inv_32f(const float* pSrc, float* pDst, const RfftDesc32f* pDesc, std::uint8_t* pWork) {
    return inverse<true>(pSrc, pDst, pDesc, pWork);
}
bool rfft_fwd_32f_scalar(const float* pSrc, float* pDst, const RfftDesc32f* pDesc, std::uint8_t* pWork) {
    return forward<false>(pSrc, pDst, pDesc, pWork);
}
bool rfft_inv_32f_scalar(const float* pSrc, float* pDst, const RfftDesc32f* pDesc, std::uint8_t* pWork) {
    return inverse<false>(pSrc, pDst, pDesc, pWork);
}

ZEPS_END_VARIANT
