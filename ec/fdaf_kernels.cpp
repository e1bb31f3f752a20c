// SPDX-License-Identifier: BSD-3-Clause
// Spectrum kernels of the partitioned-block frequency-domain echo-canceller
// filter, float (16-bit sample units): the filters' complex accumulation
// with the weighted far-end power, the gradient step, the weighted far-end power and the partition norms.
// SSE2 lanes hold two complex bins; each kernel's scalar twin computes the
// same sums in the same order (ec/fdaf_kernels_decl.inc), so both give the
// same bits.
#include <cmath>
#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "ec/fdaf_kernels.h"

ZEPS_BEGIN_VARIANT

void fdaf_accumulate_32f_scalar(const float* X, const float* W, const float* V, const float* r, float* Y, float* T,
                                float* S, int P, int C) {
    const std::size_t c = static_cast<std::size_t>(C);
    for (std::size_t k = 0; k < c; k += 2) {
        float a0 = 0, a1 = 0, b0 = 0, b1 = 0, c0 = 0, c1 = 0, d0 = 0, d1 = 0, q0 = 0, q1 = 0;
        for (std::size_t p = 0, o = k; p < static_cast<std::size_t>(P); ++p, o += c) {
            q0 += r[p] * (X[o] * X[o]);
            q1 += r[p] * (X[o + 1] * X[o + 1]);
            a0 += X[o] * W[o];
            a1 += X[o] * W[o + 1];
            b0 += X[o + 1] * W[o + 1];
            b1 += X[o + 1] * W[o];
            if (V == nullptr) continue;
            c0 += X[o] * V[o];
            c1 += X[o] * V[o + 1];
            d0 += X[o + 1] * V[o + 1];
            d1 += X[o + 1] * V[o];
        }
        Y[k] = a0 + (-b0);
        Y[k + 1] = a1 + b1;
        if (V != nullptr) {
            T[k] = c0 + (-d0);
            T[k + 1] = c1 + d1;
        }
        S[k / 2] = q0 + q1;
    }
}

void fdaf_add_gradient_32f_scalar(const float* X, const float* G, const float* r, float* W, float* n, int P, int C) {
    const std::size_t c = static_cast<std::size_t>(C);
    for (std::size_t p = 0; p < static_cast<std::size_t>(P); ++p) {
        const float* x = X + p * c;
        float* w = W + p * c;
        for (std::size_t k = 0; k < c; k += 2) {
            w[k] += (G[k] * x[k] + G[k + 1] * x[k + 1]) * r[p];
            w[k + 1] += ((-G[k]) * x[k + 1] + G[k + 1] * x[k]) * r[p];
        }
        if (n != nullptr) fdaf_norms_32f_scalar(w, n + p, 1, C);
    }
}

void fdaf_weighted_power_32f_scalar(const float* X, const float* r, float* S, int P, int C) {
    const std::size_t c = static_cast<std::size_t>(C);
    for (std::size_t k = 0; k < c; k += 2) {
        float q0 = 0.0f, q1 = 0.0f;
        for (std::size_t p = 0, o = k; p < static_cast<std::size_t>(P); ++p, o += c) {
            q0 += r[p] * (X[o] * X[o]);
            q1 += r[p] * (X[o + 1] * X[o + 1]);
        }
        S[k / 2] = q0 + q1;
    }
}

void fdaf_norms_32f_scalar(const float* W, float* n, int P, int C) {
    const std::size_t c = static_cast<std::size_t>(C);
    for (int p = 0; p < P; ++p) {
        const float* w = W + static_cast<std::size_t>(p) * c;
        float q0 = 0, q1 = 0, q2 = 0, q3 = 0;
        for (std::size_t k = 0; k < c; k += 4) {
            q0 += w[k] * w[k];
            q1 += w[k + 1] * w[k + 1];
            q2 += w[k + 2] * w[k + 2];
            q3 += w[k + 3] * w[k + 3];
        }
        const float e = (q0 + q1) + (q2 + q3);
        n[p] = std::sqrt(std::isfinite(e) ? e : 0.0f);
    }
}

#if defined(__SSE2__)

namespace {

/// The sign bits of the real lanes (0 and 2).
inline __m128 real_sign() { return _mm_castsi128_ps(_mm_set_epi32(0, INT32_MIN, 0, INT32_MIN)); }
/// The sign bits of the imaginary lanes (1 and 3).
inline __m128 imag_sign() { return _mm_castsi128_ps(_mm_set_epi32(INT32_MIN, 0, INT32_MIN, 0)); }
inline __m128 dup_re(__m128 x) { return _mm_shuffle_ps(x, x, _MM_SHUFFLE(2, 2, 0, 0)); }
inline __m128 dup_im(__m128 x) { return _mm_shuffle_ps(x, x, _MM_SHUFFLE(3, 3, 1, 1)); }
inline __m128 swap_pairs(__m128 x) { return _mm_shuffle_ps(x, x, _MM_SHUFFLE(2, 3, 0, 1)); }
/// Bins k/2 and k/2 + 1 of S from the lanes (l0 + l1, l2 + l3).
inline void store_pair_sums(__m128 q, float* S, std::size_t k) {
    alignas(16) float qs[4] = {};
    _mm_store_ps(qs, q);
    S[k / 2] = qs[0] + qs[1];
    S[k / 2 + 1] = qs[2] + qs[3];
}

}  // namespace

namespace {

/// accumulate for one filter (Y, S) or both (also T from V).
template <bool kBoth>
void accumulate_sse(const float* X, const float* W, const float* V, const float* r, float* Y, float* T, float* S,
                    int P, int C) {
    const std::size_t c = static_cast<std::size_t>(C);
    for (std::size_t k = 0; k < c; k += 4) {
        __m128 a = _mm_setzero_ps(), b = a, av = a, bv = a, q = a;
        for (std::size_t p = 0, o = k; p < static_cast<std::size_t>(P); ++p, o += c) {
            const __m128 x = _mm_load_ps(X + o), w = _mm_load_ps(W + o);
            const __m128 xr = dup_re(x), xi = dup_im(x);
            q = _mm_add_ps(q, _mm_mul_ps(_mm_set1_ps(r[p]), _mm_mul_ps(x, x)));
            a = _mm_add_ps(a, _mm_mul_ps(xr, w));
            b = _mm_add_ps(b, _mm_mul_ps(xi, swap_pairs(w)));
            if constexpr (kBoth) {
                const __m128 v = _mm_load_ps(V + o);
                av = _mm_add_ps(av, _mm_mul_ps(xr, v));
                bv = _mm_add_ps(bv, _mm_mul_ps(xi, swap_pairs(v)));
            }
        }
        _mm_store_ps(Y + k, _mm_add_ps(a, _mm_xor_ps(b, real_sign())));
        if constexpr (kBoth) _mm_store_ps(T + k, _mm_add_ps(av, _mm_xor_ps(bv, real_sign())));
        store_pair_sums(q, S, k);
    }
}

}  // namespace

void fdaf_accumulate_32f(const float* X, const float* W, const float* V, const float* r, float* Y, float* T, float* S,
                         int P, int C) {
    if (V != nullptr) accumulate_sse<true>(X, W, V, r, Y, T, S, P, C);
    else accumulate_sse<false>(X, W, V, r, Y, T, S, P, C);
}

void fdaf_add_gradient_32f(const float* X, const float* G, const float* r, float* W, float* n, int P, int C) {
    const std::size_t c = static_cast<std::size_t>(C);
    for (std::size_t p = 0; p < static_cast<std::size_t>(P); ++p) {
        const float* x = X + p * c;
        float* w = W + p * c;
        const __m128 rp = _mm_set1_ps(r[p]);
        __m128 q = _mm_setzero_ps();
        for (std::size_t k = 0; k < c; k += 4) {
            const __m128 g = _mm_load_ps(G + k);
            const __m128 gr = _mm_xor_ps(dup_re(g), imag_sign());  // (Gr, -Gr)
            const __m128 gi = dup_im(g);
            const __m128 xk = _mm_load_ps(x + k);
            const __m128 u = _mm_add_ps(_mm_mul_ps(gr, xk), _mm_mul_ps(gi, swap_pairs(xk)));
            const __m128 wk = _mm_add_ps(_mm_load_ps(w + k), _mm_mul_ps(u, rp));
            _mm_store_ps(w + k, wk);
            q = _mm_add_ps(q, _mm_mul_ps(wk, wk));
        }
        if (n != nullptr) {
            alignas(16) float qs[4] = {};
            _mm_store_ps(qs, q);
            const float e = (qs[0] + qs[1]) + (qs[2] + qs[3]);
            n[p] = std::sqrt(std::isfinite(e) ? e : 0.0f);
        }
    }
}

void fdaf_weighted_power_32f(const float* X, const float* r, float* S, int P, int C) {
    const std::size_t c = static_cast<std::size_t>(C);
    for (std::size_t k = 0; k < c; k += 4) {
        __m128 q = _mm_setzero_ps();
        for (std::size_t p = 0, o = k; p < static_cast<std::size_t>(P); ++p, o += c) {
            const __m128 x = _mm_load_ps(X + o);
            q = _mm_add_ps(q, _mm_mul_ps(_mm_set1_ps(r[p]), _mm_mul_ps(x, x)));
        }
        store_pair_sums(q, S, k);
    }
}

void fdaf_norms_32f(const float* W, float* n, int P, int C) {
    const std::size_t c = static_cast<std::size_t>(C);
    for (int p = 0; p < P; ++p) {
        const float* w = W + static_cast<std::size_t>(p) * c;
        __m128 q = _mm_setzero_ps();
        for (std::size_t k = 0; k < c; k += 4) q = _mm_add_ps(q, _mm_mul_ps(_mm_load_ps(w + k), _mm_load_ps(w + k)));
        alignas(16) float qs[4] = {};
        _mm_store_ps(qs, q);
        const float e = (qs[0] + qs[1]) + (qs[2] + qs[3]);
        n[p] = std::sqrt(std::isfinite(e) ? e : 0.0f);
    }
}

#else

void fdaf_accumulate_32f(const float* X, const float* W, const float* V, const float* r, float* Y, float* T, float* S,
                         int P, int C) {
    fdaf_accumulate_32f_scalar(X, W, V, r, Y, T, S, P, C);
}
void fdaf_add_gradient_32f(const float* X, const float* G, const float* r, float* W, float* n, int P, int C) {
    fdaf_add_gradient_32f_scalar(X, G, r, W, n, P, C);
}
void fdaf_weighted_power_32f(const float* X, const float* r, float* S, int P, int C) {
    fdaf_weighted_power_32f_scalar(X, r, S, P, C);
}
void fdaf_norms_32f(const float* W, float* n, int P, int C) { fdaf_norms_32f_scalar(W, n, P, C); }

#endif

ZEPS_END_VARIANT
