// SPDX-License-Identifier: BSD-3-Clause
// Common primitives used by the G.729 stages: dot product with L_mac
// doubling and clamping, energy-normalised autocorrelation, and the
// truncating two-vector weighted sum. Checks, saturation boundaries, both builds.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "frame/variants.h"
#include "tests/variant_check.h"

namespace {
using V16 = std::vector<std::int16_t>;
using V32 = std::vector<std::int32_t>;
namespace u8 = zeps::u8;
namespace n8 = zeps::n8;

TEST(CommonG729, DotProdClampsAndWarns) {
    const V16 big = {32767, 32767}, neg = {-32768, -32768}, one = {-32768, 1};
    Zep32s d = 0;
    EXPECT_EQ(u8::zepsDotProd_G729A_16s32s(big.data(), big.data(), 2, &d), zepStsOverflow);  // 4294705156 clamped
    EXPECT_EQ(d, 2147483647);
    EXPECT_EQ(u8::zepsDotProd_G729A_16s32s(big.data(), neg.data(), 2, &d), zepStsOverflow);
    EXPECT_EQ(d, INT32_MIN);
    EXPECT_EQ(u8::zepsDotProd_G729A_16s32s(neg.data(), neg.data(), 1, &d), zepStsOverflow);  // 2^31: one over
    EXPECT_EQ(u8::zepsDotProd_G729A_16s32s(one.data(), big.data(), 2, &d), zepStsNoErr);
    EXPECT_EQ(d, 2 * (-32768 * 32767 + 32767));
    d = 7;
    EXPECT_EQ(u8::zepsDotProd_G729A_16s32s(nullptr, big.data(), 0, &d), zepStsNullPtrErr);
    EXPECT_EQ(u8::zepsDotProd_G729A_16s32s(big.data(), big.data(), 0, &d), zepStsSizeErr);
    EXPECT_EQ(d, 7);
}

TEST(CommonG729, AutoCorrNormERefusesLoudInputAndNormalises) {
    V16 x(100, 0);
    x[0] = 16384;  // 2 * 16384^2 = 2^29: norm 1
    x[1] = -8192;
    V32 r(4, -1);
    int norm = -1;
    EXPECT_EQ(u8::zepsAutoCorr_NormE_16s32s(x.data(), 100, r.data(), 4, &norm), zepStsNoErr);
    const std::int64_t e = 2LL * (16384 * 16384 + 8192 * 8192);
    EXPECT_EQ(norm, 1);
    EXPECT_EQ(r[0], e << 1);
    EXPECT_EQ(r[1], (2LL * 16384 * -8192) << 1);
    EXPECT_EQ(r[2], 0);
    // Energy just above 0x3FFFFFFF: warning, nothing written.
    x = V16(2, 23170);
    x.push_back(2);
    r.assign(4, -1);
    EXPECT_EQ(u8::zepsAutoCorr_NormE_16s32s(x.data(), 3, r.data(), 4, &norm), zepStsOverflow);
    EXPECT_EQ(r, V32(4, -1));
    EXPECT_EQ(u8::zepsAutoCorr_NormE_16s32s(x.data(), 0, r.data(), 4, &norm), zepStsBadArgErr);
    EXPECT_EQ(u8::zepsAutoCorr_NormE_16s32s(x.data(), 3, r.data(), 0, &norm), zepStsBadArgErr);
    EXPECT_EQ(u8::zepsAutoCorr_NormE_16s32s(x.data(), 0, nullptr, 4, &norm), zepStsNullPtrErr);
    EXPECT_EQ(r, V32(4, -1));
}

// Loud inputs at and around the energy limit, full-scale samples (whose
// squares pair to 2^31 in a 32-bit lane), more lags than samples, lengths
// with tails after the eight-wide blocks: the 64-bit sums computed here.
TEST(CommonG729, AutoCorrNormEMatchesWideSums) {
    zeps::test::Rng rng(11);
    for (int rep = 0; rep < 300; ++rep) {
        const int len = 1 + static_cast<int>(rng.uniform(0, 60));
        const int lags = 1 + static_cast<int>(rng.uniform(0, 70));
        V16 x(static_cast<std::size_t>(len));
        const int amp = rep % 3 == 0 ? 32768 : static_cast<int>(23170 / std::max(1.0, std::sqrt(len / 2.0)));
        for (auto& v : x) v = static_cast<std::int16_t>(rng.uniform(-amp, amp - 1));
        std::int64_t e = 0;
        for (const auto v : x) e += 2LL * v * v;
        V32 r(static_cast<std::size_t>(lags) + 1, 5);
        int norm = -7;
        const ZepStatus st = u8::zepsAutoCorr_NormE_16s32s(x.data(), len, r.data(), lags, &norm);
        if (e > 0x3fffffff) {
            ASSERT_EQ(st, zepStsOverflow);
            ASSERT_EQ(r, V32(r.size(), 5));
            continue;
        }
        ASSERT_EQ(st, zepStsNoErr);
        for (int k = 0; k < lags; ++k) {
            std::int64_t s = 0;
            for (int n = 0; n + k < len; ++n) s += 2LL * x[n] * x[n + k];
            ASSERT_EQ(r[k], static_cast<std::int32_t>(static_cast<std::uint32_t>(s << norm))) << rep << " lag " << k;
        }
        ASSERT_EQ(r[lags], 5);
    }
}

TEST(CommonG729, InterpolateCNRTruncatesAndSaturates) {
    const V16 a = {-3, 32767, -32768}, b = {0, 32767, -32768};
    V16 y(3, 9);
    EXPECT_EQ(u8::zepsInterpolateC_NR_16s(a.data(), 1, 1, b.data(), 1, 0, y.data(), 3), zepStsNoErr);
    EXPECT_EQ(y, (V16{-2, 32767, -32768}));  // -3 >> 1 = -2 (toward minus infinity); saturation both ways
    y.assign(3, 9);
    EXPECT_EQ(u8::zepsInterpolateC_NR_16s(a.data(), 1, -1, b.data(), 1, 0, y.data(), 0), zepStsSizeErr);
    EXPECT_EQ(u8::zepsInterpolateC_NR_16s(a.data(), 1, -1, b.data(), 1, 0, y.data(), 3), zepStsScaleRangeErr);
    EXPECT_EQ(u8::zepsInterpolateC_NR_16s(a.data(), 1, 0, b.data(), 1, -1, y.data(), 3), zepStsScaleRangeErr);
    EXPECT_EQ(u8::zepsInterpolateC_NR_16s(a.data(), 1, -1, b.data(), 1, 0, nullptr, 0), zepStsNullPtrErr);
    EXPECT_EQ(y, V16(3, 9));
}

// Every pair of extreme inputs and constants, every shift up to and past 31,
// over lengths that leave tails after the eight-wide blocks: the sum of the
// two shifted products saturated to 16 bits, computed here in 64 bits.
TEST(CommonG729, InterpolateCNRMatchesWideSumAtExtremes) {
    const std::int16_t ext[] = {-32768, -32767, -1, 0, 1, 32767};
    V16 a, b;
    for (const auto p : ext)
        for (const auto q : ext) a.push_back(p), b.push_back(q);
    for (const std::int16_t v1 : {-32768, -1, 1, 32767})
        for (const std::int16_t v2 : {-32768, 19661, 32767})
            for (const int s1 : {0, 1, 15, 31, 40})
                for (const int s2 : {0, 14, 31}) {
                    const int len = 17 + (s1 + s2) % 20;
                    V16 y(a.size(), 7);
                    ASSERT_EQ(u8::zepsInterpolateC_NR_16s(a.data(), v1, s1, b.data(), v2, s2, y.data(), len),
                              zepStsNoErr);
                    for (int i = 0; i < len; ++i) {
                        const std::int64_t t = ((std::int64_t{a[i]} * v1) >> std::min(s1, 31)) +
                                               ((std::int64_t{b[i]} * v2) >> std::min(s2, 31));
                        ASSERT_EQ(y[i], std::clamp<std::int64_t>(t, -32768, 32767))
                            << i << " v " << v1 << "," << v2 << " s " << s1 << "," << s2;
                    }
                    ASSERT_EQ(y[len], 7);
                }
}

}  // namespace

ZEPS_VARIANT_CHECK(zepsDotProd_G729A_16s32s) {
    for (int rep = 0; rep < 40; ++rep) {
        const int len = static_cast<int>(rng.uniform(0, 80));
        const V16 a = rng.vec<std::int16_t>(80), b = rng.vec<std::int16_t>(80);
        Zep32s x = 1, y = 1;
        EXPECT_EQ(u8::zepsDotProd_G729A_16s32s(a.data(), b.data(), len, &x),
                  n8::zepsDotProd_G729A_16s32s(a.data(), b.data(), len, &y));
        EXPECT_EQ(x, y);
    }
}

ZEPS_VARIANT_CHECK(zepsAutoCorr_NormE_16s32s) {
    for (int rep = 0; rep < 40; ++rep) {
        const int len = static_cast<int>(rng.uniform(0, 240)), lags = static_cast<int>(rng.uniform(0, 14));
        V16 x = rng.vec<std::int16_t>(240);
        if (rep % 2) {
            for (auto& v : x) v = static_cast<std::int16_t>(v >> 6);
        }
        V32 r1(14, -1), r2(14, -1);
        int n1 = -1, n2 = -1;
        EXPECT_EQ(u8::zepsAutoCorr_NormE_16s32s(x.data(), len, r1.data(), lags, &n1),
                  n8::zepsAutoCorr_NormE_16s32s(x.data(), len, r2.data(), lags, &n2));
        EXPECT_EQ(r1, r2);
        EXPECT_EQ(n1, n2);
    }
}

ZEPS_VARIANT_CHECK(zepsInterpolateC_NR_16s) {
    for (int rep = 0; rep < 40; ++rep) {
        const int len = static_cast<int>(rng.uniform(0, 64));
        const V16 a = rng.vec<std::int16_t>(64), b = rng.vec<std::int16_t>(64);
        const auto v1 = rng.s16(), v2 = rng.s16();
        const int s1 = static_cast<int>(rng.uniform(-1, 40)), s2 = static_cast<int>(rng.uniform(-1, 40));
        V16 x(64, -1), y(64, -1);
        EXPECT_EQ(u8::zepsInterpolateC_NR_16s(a.data(), v1, s1, b.data(), v2, s2, x.data(), len),
                  n8::zepsInterpolateC_NR_16s(a.data(), v1, s1, b.data(), v2, s2, y.data(), len));
        EXPECT_EQ(x, y);
    }
}
