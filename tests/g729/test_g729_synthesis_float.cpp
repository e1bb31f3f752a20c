// SPDX-License-Identifier: BSD-3-Clause
// The float G.729 synthesis filter against outputs of the G.729 Annex C
// floating-point syn_filt (FLOAT = float, no fused multiply-adds) on the
// inputs below, on both builds. Tolerance: 1e-6 relative per element (the
// operations and their order are the reference's, so the results agree to
// the last bit here; the margin allows a compiler another valid rounding of
// the same expression). In place, short lengths, the statuses, and both builds
// bit for bit on random filters.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "tests/variant_check.h"

namespace {
using VF = std::vector<float>;

const float kLpc[2][11] = {
    {1.0f, -0.641041219f, -0.667990506f, 0.0727692544f, 0.0434780307f, -0.0564234331f, -0.0263830945f,
     0.417651474f, 0.471367359f, -0.424503922f, -0.129041031f},
    {1.0f, -1.31241703f, 0.811635852f, -0.431584299f, 0.386728525f, -0.45594418f, 1.0697974f, -1.18836522f,
     0.595311344f, -0.307022095f, 0.186941653f},
};
// Annex C outputs: filter 0 over 40 samples, filter 1 over 5 (memory update on).
const VF kOut0 = {-946.955078f, -213.355194f, -1339.21509f, -60.1582603f, -878.290405f, -1588.11267f,
                  -1368.20288f, -2059.90283f, -622.125671f, -1386.52417f, -1664.16602f, -1678.10767f,
                  -1732.83862f, -200.430603f, -368.42865f, -656.420837f, -294.222107f, -214.91629f,
                  1588.88452f, 1728.21704f, 1424.29651f, 1923.47827f, 1908.84338f, 1563.74268f,
                  2417.2998f, 1125.6803f, 1485.72217f, 756.180176f, -107.274612f, -19.3205719f,
                  -1128.92493f, -436.302734f, -1645.30933f, -2072.45093f, -2077.01904f, -2577.02393f,
                  -1300.10864f, -1785.30225f, -2003.10669f, -1430.75867f};
const VF kOut1 = {-1065.38403f, -1075.854f, -1186.28931f, -251.737244f, 231.193451f};
const VF kMem1 = {-50.0f, -100.0f, -150.0f, 150.0f, 100.0f, -1065.38403f, -1075.854f, -1186.28931f,
                  -251.737244f, 231.193451f};

VF input() {
    VF x(40);
    for (int i = 0; i < 40; ++i) x[i] = static_cast<float>(((i * 37) % 23) - 11) * 100.0f;
    return x;
}
VF memory() {
    VF m(10);
    for (int k = 0; k < 10; ++k) m[k] = static_cast<float>(((k * 13) % 7) - 3) * 50.0f;
    return m;
}

void expect_near_rel(const VF& got, const VF& want) {
    ASSERT_EQ(got.size(), want.size());
    for (std::size_t i = 0; i < got.size(); ++i)
        EXPECT_NEAR(got[i], want[i], 1e-6f * std::fabs(want[i])) << "element " << i;
}

template <class F>
void against_annex_c(F syn) {
    VF x = input(), y(40), mem = memory();
    ASSERT_EQ(syn(kLpc[0], x.data(), y.data(), 40, mem.data(), 1), zepStsNoErr);
    expect_near_rel(y, kOut0);
    expect_near_rel(mem, VF(kOut0.end() - 10, kOut0.end()));
    // In place, 5 samples: the memory keeps its 5 newest values ahead of the outputs.
    mem = memory();
    VF xy(x.begin(), x.begin() + 5);
    ASSERT_EQ(syn(kLpc[1], xy.data(), xy.data(), 5, mem.data(), 1), zepStsNoErr);
    expect_near_rel(xy, kOut1);
    expect_near_rel(mem, kMem1);
    // update 0 leaves the memory.
    mem = memory();
    ASSERT_EQ(syn(kLpc[1], x.data(), y.data(), 40, mem.data(), 0), zepStsNoErr);
    EXPECT_EQ(mem, memory());
    // Statuses, nothing written on error.
    VF canary(40, 7.0f);
    EXPECT_EQ(syn(nullptr, x.data(), canary.data(), 40, mem.data(), 1), zepStsNullPtrErr);
    EXPECT_EQ(syn(kLpc[0], x.data(), canary.data(), 40, nullptr, 1), zepStsNullPtrErr);
    EXPECT_EQ(syn(kLpc[0], x.data(), canary.data(), 0, mem.data(), 1), zepStsSizeErr);
    EXPECT_EQ(canary, VF(40, 7.0f));
    EXPECT_EQ(mem, memory());
}

TEST(G729SynthesisFloat, MatchesAnnexC) {
    against_annex_c(zeps::u8::zepsSynthesisFilter_G729_32f);
    against_annex_c(zeps::n8::zepsSynthesisFilter_G729_32f);
}

}  // namespace

ZEPS_VARIANT_CHECK(zepsSynthesisFilter_G729_32f) {
    const int len = static_cast<int>(rng.uniform(-1, 60));
    VF a(11), x(60), m(10);
    for (auto& v : a) v = rng.f32(0.3f);
    for (auto& v : x) v = rng.f32(rng.chance(4) ? 30000.0f : 1000.0f);
    for (auto& v : m) v = rng.f32(1000.0f);
    VF y1(60, 0.0f), y2(60, 0.0f), m1 = m, m2 = m;
    const int update = static_cast<int>(rng.uniform(0, 1));
    EXPECT_EQ(zeps::u8::zepsSynthesisFilter_G729_32f(a.data(), x.data(), y1.data(), len, m1.data(), update),
              zeps::n8::zepsSynthesisFilter_G729_32f(a.data(), x.data(), y2.data(), len, m2.data(), update));
    EXPECT_TRUE(zeps::test::same_bytes(y1, y2));
    EXPECT_TRUE(zeps::test::same_bytes(m1, m2));
}
