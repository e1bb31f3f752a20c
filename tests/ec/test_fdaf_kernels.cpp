// SPDX-License-Identifier: BSD-3-Clause
// The frequency-domain filter's SSE spectrum kernels against their scalar
// twins, bit for bit, on both builds: partition counts 1..9, spectra of 4 to
// 260 floats, values up to +-3e4 (the far-end spectra of 16-bit speech reach
// 1e6; the sums stay far inside float range), zero padding as the filter
// keeps it.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "tests/ec/internal_access.h"

namespace {

/// 16-byte aligned float storage.
struct Buf {
    std::vector<float> v;
    explicit Buf(std::size_t n) : v(n + 4, 0.0f) {}
    float* p() {
        const auto a = reinterpret_cast<std::uintptr_t>(v.data());
        return v.data() + ((16 - a % 16) % 16) / 4;
    }
};

struct Lcg {
    std::uint32_t s = 2024;
    float next(float scale) {
        s = s * 1664525u + 1013904223u;
        return scale * static_cast<float>(static_cast<std::int32_t>(s)) * 0x1.0p-31f;
    }
};

/// P spectra of C floats with `bins` complex bins used and zero padding.
void fill(float* x, int P, int C, int bins, float scale, Lcg& g) {
    for (int p = 0; p < P; ++p)
        for (int k = 0; k < C; ++k) x[p * C + k] = k < 2 * bins ? g.next(scale) : 0.0f;
}

template <class Fn>
void both_builds(Fn fn) {
    fn(zeps::u8::fdaf_accumulate_32f, zeps::u8::fdaf_accumulate_32f_scalar, zeps::u8::fdaf_add_gradient_32f,
       zeps::u8::fdaf_add_gradient_32f_scalar, zeps::u8::fdaf_weighted_power_32f,
       zeps::u8::fdaf_weighted_power_32f_scalar, zeps::u8::fdaf_norms_32f, zeps::u8::fdaf_norms_32f_scalar);
#if defined(__x86_64__)
    fn(zeps::n8::fdaf_accumulate_32f, zeps::n8::fdaf_accumulate_32f_scalar, zeps::n8::fdaf_add_gradient_32f,
       zeps::n8::fdaf_add_gradient_32f_scalar, zeps::n8::fdaf_weighted_power_32f,
       zeps::n8::fdaf_weighted_power_32f_scalar, zeps::n8::fdaf_norms_32f, zeps::n8::fdaf_norms_32f_scalar);
#endif
}

bool same(const float* a, const float* b, int n) { return std::memcmp(a, b, sizeof(float) * std::size_t(n)) == 0; }

TEST(FdafKernels, SseEqualsScalarBitForBit) {
    both_builds([](auto acc, auto accS, auto grad, auto gradS, auto pow, auto powS, auto norms, auto normsS) {
        Lcg g;
        for (const int order : {2, 3, 7, 8})
            for (const int P : {1, 2, 8, 9}) {
                const int N = 1 << order, C = (N + 2 + 3) & ~3, bins = N / 2 + 1;
                const std::size_t n = std::size_t(P) * std::size_t(C);
                Buf X(n), W(n), V(n), Y(C), T(C), S(C), Y2(C), T2(C), S2(C), G(C), W2(n);
                fill(X.p(), P, C, bins, 3.0e4f, g);
                fill(W.p(), P, C, bins, 2.0f, g);
                fill(V.p(), P, C, bins, 2.0f, g);
                fill(G.p(), 1, C, bins, 1.0e-3f, g);
                float r[9] = {};
                for (int p = 0; p < P; ++p) r[p] = 0.5f + g.next(0.5f) + 0.5f;
                acc(X.p(), W.p(), V.p(), r, Y.p(), T.p(), S.p(), P, C);
                accS(X.p(), W.p(), V.p(), r, Y2.p(), T2.p(), S2.p(), P, C);
                EXPECT_TRUE(same(Y.p(), Y2.p(), C) && same(T.p(), T2.p(), C) && same(S.p(), S2.p(), C / 2))
                    << "accumulate, order " << order << ", " << P << " partitions";
                // One filter only: the same Y and S, T untouched.
                Buf Y3(C), T3(C), S3(C);
                acc(X.p(), W.p(), nullptr, r, Y3.p(), T3.p(), S3.p(), P, C);
                EXPECT_TRUE(same(Y3.p(), Y2.p(), C) && same(S3.p(), S2.p(), C / 2) && T3.p()[0] == 0.0f &&
                            T3.p()[C - 1] == 0.0f)
                    << "accumulate without V, order " << order;
                accS(X.p(), W.p(), nullptr, r, Y3.p(), T3.p(), S3.p(), P, C);
                EXPECT_TRUE(same(Y3.p(), Y2.p(), C) && same(S3.p(), S2.p(), C / 2) && T3.p()[0] == 0.0f)
                    << "scalar accumulate without V, order " << order;
                // The accumulation's power is the weighted power, bit for bit.
                pow(X.p(), r, S.p(), P, C);
                powS(X.p(), r, S3.p(), P, C);
                EXPECT_TRUE(same(S.p(), S2.p(), C / 2) && same(S3.p(), S2.p(), C / 2))
                    << "weighted power, order " << order;
                std::memcpy(W2.p(), W.p(), sizeof(float) * n);
                float a[9] = {}, b[9] = {}, na[9] = {}, nb[9] = {};
                grad(X.p(), G.p(), r, W.p(), na, P, C);
                gradS(X.p(), G.p(), r, W2.p(), nb, P, C);
                EXPECT_TRUE(same(W.p(), W2.p(), static_cast<int>(n))) << "gradient, order " << order;
                norms(W.p(), a, P, C);
                normsS(W.p(), b, P, C);
                EXPECT_TRUE(same(a, b, P) && same(na, a, P) && same(nb, a, P)) << "norms, order " << order;
                std::memcpy(W2.p(), W.p(), sizeof(float) * n);
                grad(X.p(), G.p(), r, W.p(), nullptr, P, C);  // no norms: the same update
                gradS(X.p(), G.p(), r, W2.p(), nullptr, P, C);
                EXPECT_TRUE(same(W.p(), W2.p(), static_cast<int>(n))) << "gradient without norms, order " << order;
            }
    });
}

// A reference check of the scalar forms themselves on one bin: the complex
// products, conjugate and sums the filter relies on.
TEST(FdafKernels, ScalarFormsComputeTheComplexSums) {
    Buf X(8), W(8), V(8), Y(4), T(4), S(4), G(4);
    const float x[8] = {1, 2, 0, 0, 3, -1, 0, 0}, w[8] = {0.5f, -1, 0, 0, 2, 0.25f, 0, 0};
    std::memcpy(X.p(), x, sizeof x);
    std::memcpy(W.p(), w, sizeof w);
    const float one[2] = {1.0f, 1.0f};
    zeps::u8::fdaf_accumulate_32f_scalar(X.p(), W.p(), V.p(), one, Y.p(), T.p(), S.p(), 2, 4);
    // (1+2i)(0.5-i) + (3-i)(2+0.25i) = (2.5+0i) + (6.25-1.25i)
    EXPECT_EQ(Y.p()[0], 8.75f);
    EXPECT_EQ(Y.p()[1], -1.25f);
    EXPECT_EQ(S.p()[0], 15.0f);  // |1+2i|^2 + |3-i|^2
    const float gg[4] = {1, 1, 0, 0};
    std::memcpy(G.p(), gg, sizeof gg);
    const float r[2] = {1.0f, 2.0f};
    zeps::u8::fdaf_add_gradient_32f_scalar(X.p(), G.p(), r, W.p(), nullptr, 2, 4);
    // W_0 += (1+i)(1-2i) = 3 - i; W_1 += 2 (1+i)(3+i) = 4 + 8i
    EXPECT_EQ(W.p()[0], 3.5f);
    EXPECT_EQ(W.p()[1], -2.0f);
    EXPECT_EQ(W.p()[4], 6.0f);
    EXPECT_EQ(W.p()[5], 8.25f);
}

}  // namespace
