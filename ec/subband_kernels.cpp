// SPDX-License-Identifier: BSD-3-Clause
// Fold (analysis) and overlap-add (synthesis) kernels of the sub-band filter
// bank, 16-bit Q13 window and float. The SSE versions process 8 (16-bit) or
// 4 (float) taps per instruction with the same rounding, saturation and
// operation order as the scalar versions. The 16-bit "narrow" forms, for
// windows whose taps all lie in -8191 .. 8191 (|tap| < 1.0 in Q13, as the
// built-in windows), make each Q13 product with one SSSE3 rounding high
// multiply by 4 w and keep the sums in 16-bit words.
#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <cstring>

#include "common/basic_op.h"
#include "ec/subband_kernels.h"

ZEPS_BEGIN_VARIANT
namespace {

/// (d w + 4096) >> 13, not saturated (the Q13 product of a tap).
inline Word32 q13_product(Word16 d, Word16 w) { return (Word32{d} * w + 4096) >> 13; }

#if defined(__SSSE3__)
/// Eight Q13 products (d w + 4096) >> 13 as two vectors of four 32-bit values.
inline void q13_products8(__m128i d, __m128i w, __m128i& p0, __m128i& p1) {
    const __m128i lo = _mm_mullo_epi16(d, w), hi = _mm_mulhi_epi16(d, w);
    const __m128i r = _mm_set1_epi32(4096);
    p0 = _mm_srai_epi32(_mm_add_epi32(_mm_unpacklo_epi16(lo, hi), r), 13);
    p1 = _mm_srai_epi32(_mm_add_epi32(_mm_unpackhi_epi16(lo, hi), r), 13);
}

/// The same products for taps in -8191 .. 8191, as eight 16-bit words: with
/// 4w a 16-bit word other than -32768, (d 4w + 2^14) >> 15 (the rounding
/// high product) is exactly (d w + 2^12) >> 13, and |d w| < 2^28 keeps it
/// within 16 bits (no saturation to make).
inline __m128i q13_products8_narrow(__m128i d, __m128i w) { return _mm_mulhrs_epi16(d, _mm_slli_epi16(w, 2)); }

inline __m128i load8(const std::int16_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline __m128i load4x32(const std::int32_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
#endif

}  // namespace

void subband_fold_16s_scalar(const std::int16_t* d, const std::int16_t* w, int L, int N, std::int32_t* u) {
    for (int n = 0; n < N; ++n) {
        Word16 acc = saturate(q13_product(d[n], w[n]));
        for (int b = N; b < L; b += N) acc = add(acc, saturate(q13_product(d[b + n], w[b + n])));
        u[n] = acc;
    }
}

#if defined(__SSSE3__)
void subband_fold_16s(const std::int16_t* d, const std::int16_t* w, int L, int N, std::int32_t* u) {
    if (N < 8) {
        subband_fold_16s_scalar(d, w, L, N, u);
        return;
    }
    for (int n = 0; n < N; n += 8) {
        __m128i p0, p1;
        q13_products8(load8(d + n), load8(w + n), p0, p1);
        __m128i acc = _mm_packs_epi32(p0, p1);
        for (int b = N; b < L; b += N) {
            q13_products8(load8(d + b + n), load8(w + b + n), p0, p1);
            acc = _mm_adds_epi16(acc, _mm_packs_epi32(p0, p1));
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(u + n), _mm_srai_epi32(_mm_unpacklo_epi16(acc, acc), 16));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(u + n + 4), _mm_srai_epi32(_mm_unpackhi_epi16(acc, acc), 16));
    }
}
#else
// Hosts without SSSE3: the scalar forms (the same results).
void subband_fold_16s(const std::int16_t* d, const std::int16_t* w, int L, int N, std::int32_t* u) {
    subband_fold_16s_scalar(d, w, L, N, u);
}
#endif

bool subband_window_is_narrow(const std::int16_t* w, int L) {
    for (int n = 0; n < L; ++n)
        if (w[n] < -8191 || w[n] > 8191) return false;
    return true;
}

#if defined(__SSSE3__)
void subband_fold_16s_narrow(const std::int16_t* d, const std::int16_t* w, int L, int N, std::int32_t* u) {
    if (N < 8) {
        subband_fold_16s_scalar(d, w, L, N, u);
        return;
    }
    for (int n = 0; n < N; n += 8) {
        __m128i acc = q13_products8_narrow(load8(d + n), load8(w + n));
        for (int b = N; b < L; b += N) acc = _mm_adds_epi16(acc, q13_products8_narrow(load8(d + b + n), load8(w + b + n)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(u + n), _mm_srai_epi32(_mm_unpacklo_epi16(acc, acc), 16));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(u + n + 4), _mm_srai_epi32(_mm_unpackhi_epi16(acc, acc), 16));
    }
}

void subband_ola_16s_narrow(std::int16_t* d, const std::int16_t* w, const std::int32_t* y, int L, int N) {
    if (N < 8) {
        subband_ola_16s_scalar(d, w, y, L, N);
        return;
    }
    const __m128i reverse = _mm_setr_epi8(14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1);
    for (int j = 0; j < N; j += 8) {
        const __m128i y8 = _mm_packs_epi32(load4x32(y + j), load4x32(y + j + 4));
        for (int n = j; n < L; n += N) {
            const __m128i wr = _mm_shuffle_epi8(load8(w + L - 8 - n), reverse);
            const __m128i sum = _mm_adds_epi16(load8(d + n), q13_products8_narrow(y8, wr));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d + n), sum);
        }
    }
}
#else
void subband_fold_16s_narrow(const std::int16_t* d, const std::int16_t* w, int L, int N, std::int32_t* u) {
    subband_fold_16s_scalar(d, w, L, N, u);
}
void subband_ola_16s_narrow(std::int16_t* d, const std::int16_t* w, const std::int32_t* y, int L, int N) {
    subband_ola_16s_scalar(d, w, y, L, N);
}
#endif

void subband_ola_16s_scalar(std::int16_t* d, const std::int16_t* w, const std::int32_t* y, int L, int N) {
    for (int n = 0; n < L; ++n) d[n] = saturate(Word32{d[n]} + q13_product(saturate(y[n % N]), w[L - 1 - n]));
}

#if defined(__SSSE3__)
void subband_ola_16s(std::int16_t* d, const std::int16_t* w, const std::int32_t* y, int L, int N) {
    if (N < 8) {
        subband_ola_16s_scalar(d, w, y, L, N);
        return;
    }
    const __m128i reverse = _mm_setr_epi8(14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1);
    for (int j = 0; j < N; j += 8) {
        const __m128i y8 = _mm_packs_epi32(load4x32(y + j), load4x32(y + j + 4));
        for (int n = j; n < L; n += N) {
            const __m128i wr = _mm_shuffle_epi8(load8(w + L - 8 - n), reverse);
            __m128i t0, t1;
            q13_products8(y8, wr, t0, t1);
            const __m128i dv = load8(d + n);
            const __m128i s0 = _mm_add_epi32(_mm_srai_epi32(_mm_unpacklo_epi16(dv, dv), 16), t0);
            const __m128i s1 = _mm_add_epi32(_mm_srai_epi32(_mm_unpackhi_epi16(dv, dv), 16), t1);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d + n), _mm_packs_epi32(s0, s1));
        }
    }
}
#else
void subband_ola_16s(std::int16_t* d, const std::int16_t* w, const std::int32_t* y, int L, int N) {
    subband_ola_16s_scalar(d, w, y, L, N);
}
#endif

void subband_fold_32f_scalar(const float* d, const float* w, int L, int N, float* u) {
    for (int n = 0; n < N; ++n) {
        float acc = d[n] * w[n];
        for (int b = N; b < L; b += N) acc = acc + d[b + n] * w[b + n];
        u[n] = acc;
    }
}

#if defined(__SSSE3__)
void subband_fold_32f(const float* d, const float* w, int L, int N, float* u) {
    if (N < 4) {
        subband_fold_32f_scalar(d, w, L, N, u);
        return;
    }
    for (int n = 0; n < N; n += 4) {
        __m128 acc = _mm_mul_ps(_mm_loadu_ps(d + n), _mm_loadu_ps(w + n));
        for (int b = N; b < L; b += N)
            acc = _mm_add_ps(acc, _mm_mul_ps(_mm_loadu_ps(d + b + n), _mm_loadu_ps(w + b + n)));
        _mm_storeu_ps(u + n, acc);
    }
}
#else
void subband_fold_32f(const float* d, const float* w, int L, int N, float* u) {
    subband_fold_32f_scalar(d, w, L, N, u);
}
#endif

#if defined(__SSSE3__)
void subband_fold_32f_split(const float* d, const float* w, int L, int N, float* re, float* im) {
    if (N < 8) {
        float u[4];
        subband_fold_32f_scalar(d, w, L, N, u);
        for (int n = 0; n < N / 2; ++n) re[n] = u[2 * n], im[n] = u[2 * n + 1];  // NOLINT(clang-analyzer-core.uninitialized.Assign): the fold wrote u[0..N))
        return;
    }
    for (int n = 0; n < N; n += 8) {
        __m128 a0 = _mm_mul_ps(_mm_loadu_ps(d + n), _mm_loadu_ps(w + n));
        __m128 a1 = _mm_mul_ps(_mm_loadu_ps(d + n + 4), _mm_loadu_ps(w + n + 4));
        for (int b = N; b < L; b += N) {
            a0 = _mm_add_ps(a0, _mm_mul_ps(_mm_loadu_ps(d + b + n), _mm_loadu_ps(w + b + n)));
            a1 = _mm_add_ps(a1, _mm_mul_ps(_mm_loadu_ps(d + b + n + 4), _mm_loadu_ps(w + b + n + 4)));
        }
        _mm_storeu_ps(re + n / 2, _mm_shuffle_ps(a0, a1, _MM_SHUFFLE(2, 0, 2, 0)));
        _mm_storeu_ps(im + n / 2, _mm_shuffle_ps(a0, a1, _MM_SHUFFLE(3, 1, 3, 1)));
    }
}
#else
void subband_fold_32f_split(const float* d, const float* w, int L, int N, float* re, float* im) {
    for (int n = 0; n < N / 2 * 2; ++n) {
        float acc = d[n] * w[n];
        for (int b = N; b < L; b += N) acc = acc + d[b + n] * w[b + n];
        (n % 2 == 0 ? re : im)[n / 2] = acc;
    }
}
#endif

#if defined(__SSSE3__)
void subband_shift_ola_32f(float* d, const float* w, const float* y, int L, int N, int F) {
    if (N < 4) {
        std::memmove(d, d + F, sizeof(float) * static_cast<std::size_t>(L - F));
        std::memset(d + (L - F), 0, sizeof(float) * static_cast<std::size_t>(F));
        subband_ola_32f_scalar(d, w, y, L, N);
        return;
    }
    // In increasing n, d[n+F] is read before it is overwritten (F >= 1).
    const int keep = L - F;
    for (int b = 0; b < L; b += N) {
        for (int j = 0; j < N; j += 4) {
            const int n = b + j;
            const __m128 wr = _mm_shuffle_ps(_mm_loadu_ps(w + L - 4 - n), _mm_loadu_ps(w + L - 4 - n),
                                             _MM_SHUFFLE(0, 1, 2, 3));
            const __m128 t = _mm_mul_ps(_mm_loadu_ps(y + j), wr);
            __m128 old;
            if (n + 4 <= keep) {
                old = _mm_loadu_ps(d + n + F);
            } else if (n < keep) {  // the vector across the end of the kept samples
                alignas(16) float part[4] = {0.0f, 0.0f, 0.0f, 0.0f};
                for (int i = 0; n + i < keep; ++i) part[i] = d[n + F + i];
                old = _mm_load_ps(part);
            } else {
                old = _mm_setzero_ps();
            }
            _mm_storeu_ps(d + n, _mm_add_ps(old, t));
        }
    }
}
#else
void subband_shift_ola_32f(float* d, const float* w, const float* y, int L, int N, int F) {
    std::memmove(d, d + F, sizeof(float) * static_cast<std::size_t>(L - F));
    std::memset(d + (L - F), 0, sizeof(float) * static_cast<std::size_t>(F));
    subband_ola_32f_scalar(d, w, y, L, N);
}
#endif

void subband_ola_32f_scalar(float* d, const float* w, const float* y, int L, int N) {
    for (int n = 0; n < L; ++n) d[n] = d[n] + y[n % N] * w[L - 1 - n];
}

#if defined(__SSSE3__)
void subband_ola_32f(float* d, const float* w, const float* y, int L, int N) {
    if (N < 4) {
        subband_ola_32f_scalar(d, w, y, L, N);
        return;
    }
    for (int j = 0; j < N; j += 4) {
        const __m128 y4 = _mm_loadu_ps(y + j);
        for (int n = j; n < L; n += N) {
            const __m128 wr = _mm_shuffle_ps(_mm_loadu_ps(w + L - 4 - n), _mm_loadu_ps(w + L - 4 - n),
                                             _MM_SHUFFLE(0, 1, 2, 3));
            _mm_storeu_ps(d + n, _mm_add_ps(_mm_loadu_ps(d + n), _mm_mul_ps(y4, wr)));
        }
    }
}
#else
void subband_ola_32f(float* d, const float* w, const float* y, int L, int N) {
    subband_ola_32f_scalar(d, w, y, L, N);
}
#endif

ZEPS_END_VARIANT
