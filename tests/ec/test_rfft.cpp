// SPDX-License-Identifier: BSD-3-Clause
// The internal real FFT against a direct DFT in double precision, orders
// 1..10, both precisions and both builds.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "tests/ec/internal_access.h"
#include "tests/variant_check.h"

namespace zeps::test {
namespace {

struct Fft32f {
    std::vector<std::uint8_t> desc, work;
    u8::RfftDesc32f* s;
    explicit Fft32f(int order) {
        int S, W, I;
        EXPECT_TRUE(u8::rfft_get_size_32f(order, &S, &W, &I));
        EXPECT_EQ(I, 0);
        EXPECT_EQ(S % 16, 8);
        desc.resize(S), work.resize(W);
        s = u8::rfft_init_32f(order, desc.data());
    }
};

struct Fft32s {
    std::vector<std::uint8_t> desc, work;
    u8::RfftDesc32s* s;
    explicit Fft32s(int order) {
        int S, W, I;
        EXPECT_TRUE(u8::rfft_get_size_32s(order, &S, &W, &I));
        desc.resize(S), work.resize(W);
        s = u8::rfft_init_32s(order, desc.data());
    }
};

double max_abs(const std::vector<double>& v) {
    double m = 0;
    for (double x : v) m = std::max(m, std::fabs(x));
    return m;
}

TEST(Rfft, OrdersOutsideOneToSixteenAreRefused) {
    int S = -1, W = -1, I = -1;
    std::uint8_t mem[64];
    for (int order : {0, 17, -3}) {
        EXPECT_FALSE(u8::rfft_get_size_32f(order, &S, &W, &I));
        EXPECT_FALSE(u8::rfft_get_size_32s(order, &S, &W, &I));
        EXPECT_EQ(u8::rfft_init_32f(order, mem), nullptr);
        EXPECT_EQ(u8::rfft_init_32s(order, mem), nullptr);
    }
    EXPECT_EQ(S, -1);
}

// Float: relative error (to the largest bin) below 1e-6 for N up to 1024,
// forward and inverse; SSE and scalar kernels give the same bits.
TEST(Rfft, FloatMatchesDirectDft) {
    Rng rng(7);
    for (int order = 1; order <= 10; ++order) {
        SCOPED_TRACE(order);
        const int N = 1 << order;
        Fft32f f(order);
        std::vector<float> x(N), X(N + 2), X2(N + 2), y(N), y2(N);
        std::vector<double> xd(N);
        for (int n = 0; n < N; ++n) xd[n] = x[n] = rng.f32(1000.0f);
        ASSERT_TRUE(u8::rfft_fwd_32f(x.data(), X.data(), f.s, f.work.data()));
        ASSERT_TRUE(u8::rfft_fwd_32f_scalar(x.data(), X2.data(), f.s, f.work.data()));
        EXPECT_EQ(std::memcmp(X.data(), X2.data(), 4 * X.size()), 0);
        const std::vector<double> R = dft_real(xd);
        double err = 0;
        for (int i = 0; i < N + 2; ++i) err = std::max(err, std::fabs(X[i] - R[i]));
        EXPECT_LT(err / max_abs(R), 1e-6);
        EXPECT_EQ(X[1], 0.0f);
        EXPECT_EQ(X[N + 1], 0.0f);
        // inverse of a random spectrum; bins 0 and N/2 imaginary parts ignored
        std::vector<double> V(N + 2);
        for (int i = 0; i < N + 2; ++i) V[i] = X[i] = rng.f32(1000.0f);
        ASSERT_TRUE(u8::rfft_inv_32f(X.data(), y.data(), f.s, f.work.data()));
        ASSERT_TRUE(u8::rfft_inv_32f_scalar(X.data(), y2.data(), f.s, f.work.data()));
        EXPECT_EQ(std::memcmp(y.data(), y2.data(), 4 * y.size()), 0);
        const std::vector<double> r = idft_real(V, N);
        err = 0;
        for (int n = 0; n < N; ++n) err = std::max(err, std::fabs(y[n] - r[n]));
        EXPECT_LT(err / max_abs(r), 1e-6);
    }
}

// Fixed point, 16-bit input: every bin within 1 of the exactly rounded DFT
// (the block-floating-point butterflies keep 28 significant bits; measured
// worst error before the final rounding 0.53 for N = 1024, 0.50 for N = 64).
TEST(Rfft, FixedForwardWithinOneOfRoundedDft) {
    Rng rng(11);
    for (int order = 1; order <= 10; ++order) {
        SCOPED_TRACE(order);
        const int N = 1 << order;
        Fft32s f(order);
        for (int round = 0; round < 20; ++round) {
            std::vector<std::int32_t> x(N), X(N + 2);
            std::vector<double> xd(N);
            for (int n = 0; n < N; ++n) xd[n] = x[n] = round < 2 ? (round ? -32768 : 32767) : rng.s16();
            const std::vector<double> R = dft_real(xd);
            for (int sf : {0, 1, order, -2}) {
                ASSERT_TRUE(u8::rfft_fwd_32s_sfs(x.data(), X.data(), sf, f.s, f.work.data()));
                for (int i = 0; i < N + 2; ++i) {
                    const double want = std::floor(std::ldexp(R[i], -sf) + 0.5);
                    ASSERT_LE(std::fabs(X[i] - want), 1.0) << "bin " << i << " sf " << sf;
                }
            }
        }
    }
}

// Fixed-point inverse of 32-bit spectra: within 1 of the rounded inverse
// DFT; large spectra saturate; scale factors outside -31..31 are refused
// with nothing written.
TEST(Rfft, FixedInverseAndScaleFactors) {
    Rng rng(13);
    for (int order = 1; order <= 10; ++order) {
        SCOPED_TRACE(order);
        const int N = 1 << order;
        Fft32s f(order);
        std::vector<std::int32_t> X(N + 2), y(N, 77);
        std::vector<double> V(N + 2);
        for (int i = 0; i < N + 2; ++i) V[i] = X[i] = static_cast<std::int32_t>(rng.uniform(-(1 << 22), 1 << 22));
        const std::vector<double> r = idft_real(V, N);
        for (int sf : {0, 3, -4}) {
            ASSERT_TRUE(u8::rfft_inv_32s_sfs(X.data(), y.data(), sf, f.s, f.work.data()));
            for (int n = 0; n < N; ++n) ASSERT_LE(std::fabs(y[n] - std::floor(std::ldexp(r[n], -sf) + 0.5)), 1.0);
        }
        std::vector<std::int32_t> keep = y;
        EXPECT_FALSE(u8::rfft_inv_32s_sfs(X.data(), y.data(), 32, f.s, f.work.data()));
        EXPECT_EQ(y, keep);
        std::vector<std::int32_t> Z0(N + 2, 5), Z(N + 2, 5);
        EXPECT_FALSE(u8::rfft_fwd_32s_sfs(X.data(), Z.data(), -32, f.s, f.work.data()));
        EXPECT_EQ(Z, Z0);
        // full-scale bin 0 with a left shift saturates to the 32-bit limits
        std::fill(X.begin(), X.end(), 0);
        X[0] = INT32_MIN;
        ASSERT_TRUE(u8::rfft_inv_32s_sfs(X.data(), y.data(), -31, f.s, f.work.data()));
        for (int n = 0; n < N; ++n) EXPECT_EQ(y[n], INT32_MIN);
        X[0] = INT32_MAX;
        ASSERT_TRUE(u8::rfft_fwd_32s_sfs(X.data(), Z.data(), -31, f.s, f.work.data()));
        EXPECT_EQ(Z[0], INT32_MAX);
        EXPECT_EQ(Z[N], INT32_MAX);
    }
}

// The vector block passes of the fixed-point transforms give the scalar
// forms' bits: spectra and signals from tiny to full scale (every input
// normalisation and block shift), scale factors giving right, zero and left
// final shifts, and the extreme words.
TEST(Rfft, FixedVectorPassesMatchScalar) {
    Rng rng(17);
    for (int order = 1; order <= 10; ++order) {
        SCOPED_TRACE(order);
        const int N = 1 << order;
        Fft32s f(order);
        std::vector<std::int32_t> X(N + 2), a(N + 2), b(N + 2);
        for (int round = 0; round < 40; ++round) {
            const int bits = 1 + round % 32;
            for (std::int32_t& v : X) {
                const std::int64_t lim = (std::int64_t{1} << (bits - 1)) - 1;
                v = static_cast<std::int32_t>(rng.uniform(-lim - 1, lim));
            }
            if (round == 39) std::fill(X.begin(), X.end(), INT32_MIN);
            if (round == 38) X[0] = INT32_MAX, X[N] = INT32_MIN;
            for (int sf : {0, 5, -3, 31, -31}) {
                ASSERT_TRUE(u8::rfft_inv_32s_sfs(X.data(), a.data(), sf, f.s, f.work.data()));
                ASSERT_TRUE(u8::rfft_inv_32s_sfs_scalar(X.data(), b.data(), sf, f.s, f.work.data()));
                ASSERT_TRUE(std::equal(a.begin(), a.begin() + N, b.begin())) << "inverse, sf " << sf << " round " << round;
                ASSERT_TRUE(u8::rfft_fwd_32s_sfs(X.data(), a.data(), sf, f.s, f.work.data()));
                ASSERT_TRUE(u8::rfft_fwd_32s_sfs_scalar(X.data(), b.data(), sf, f.s, f.work.data()));
                ASSERT_EQ(a, b) << "forward, sf " << sf << " round " << round;
            }
        }
    }
}

}  // namespace
}  // namespace zeps::test
