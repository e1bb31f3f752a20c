// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex I music detection: the state protocol, the decision left alone
// below 11.8 kbit/s, the start-up rule, and the both-builds checks.
#include <gtest/gtest.h>

#include <vector>

#include "tests/g729b/g729b_test_util.h"
#include "tests/variant_check.h"

using namespace zeps::test::g729b;
namespace u8 = zeps::u8;
namespace n8 = zeps::n8;

namespace {

using Bytes = std::vector<Zep8u>;

Bytes fresh_state() {
    Bytes s(38, 0xa5);
    EXPECT_EQ(u8::zepsMusicDetectInit_G729I(s.data()), zepStsNoErr);
    return s;
}

}  // namespace

TEST(G729IMusic, DecisionChangesOnlyAt11k8) {
    const Zep16s rc[10] = {-30000, 25000, -10000, 5000, 0, 0, 0, 0, 0, 0};
    const Zep16s lags[5] = {40, 40, 41, 40, 40}, gains[5] = {16000, 16000, 16000, 16000, 16000};
    const Zep32s r0 = 0x40000000;  // a loud frame
    for (int rate = 0; rate <= 2; ++rate) {
        Bytes s = fresh_state();
        // An early loud frame (frame count below 64) is voice at 11.8 kbit/s only.
        Zep16s vad = 0;
        ASSERT_EQ(u8::zepsMusicDetect_G729I_16s(rate, r0, 1, rc, lags, gains, 0, 5, 1, &vad, s.data()), zepStsNoErr);
        EXPECT_EQ(vad, rate == 2 ? 1 : 0) << rate;
        // A voice decision stays voice.
        vad = 1;
        ASSERT_EQ(u8::zepsMusicDetect_G729I_16s(rate, r0, 1, rc, lags, gains, 1, 6, 1, &vad, s.data()), zepStsNoErr);
        EXPECT_EQ(vad, 1);
    }
    // A silent frame (r[0] = 0) stays noise even at the start.
    Bytes s = fresh_state();
    Zep16s vad = 0;
    ASSERT_EQ(u8::zepsMusicDetect_G729I_16s(2, 0, 1, rc, lags, gains, 0, 5, 0, &vad, s.data()), zepStsNoErr);
    EXPECT_EQ(vad, 0);
}

TEST(G729IMusic, RangeErrorsLeaveEverythingUnchanged) {
    const Zep16s rc[10] = {}, lags[5] = {20, 20, 20, 20, 20}, gains[5] = {};
    struct Case {
        int rate;
        Zep16s prev_mode, frame, prev_vad, vad;
    };
    const Case bad[] = {{3, 0, 1, 0, 0}, {-1, 0, 1, 0, 0}, {2, 2, 1, 0, 0}, {2, 0, 0, 0, 0},
                        {2, 0, 1, -1, 0}, {2, 0, 1, 0, 2}};
    for (const Case& c : bad) {
        Bytes s = fresh_state();
        const Bytes before = s;
        Zep16s vad = c.vad;
        EXPECT_EQ(u8::zepsMusicDetect_G729I_16s(c.rate, 1 << 20, 1, rc, lags, gains, c.prev_mode, c.frame, c.prev_vad,
                                                &vad, s.data()),
                  zepStsRangeErr);
        EXPECT_EQ(vad, c.vad);
        EXPECT_EQ(s, before);
    }
}

ZEPS_VARIANT_CHECK(zepsMusicDetectGetStateSize_G729I) {
    Zep32s a = -1, b = -2;
    ASSERT_EQ(u8::zepsMusicDetectGetStateSize_G729I(&a), n8::zepsMusicDetectGetStateSize_G729I(&b));
    ASSERT_EQ(a, 38);
    ASSERT_EQ(a, b);
}

ZEPS_VARIANT_CHECK(zepsMusicDetectInit_G729I) {
    Bytes a(38), b(38);
    for (auto& x : a) x = static_cast<Zep8u>(rng.next());
    for (auto& x : b) x = static_cast<Zep8u>(rng.next());
    ASSERT_EQ(u8::zepsMusicDetectInit_G729I(a.data()), n8::zepsMusicDetectInit_G729I(b.data()));
    ASSERT_TRUE(zeps::test::same_bytes(a, b));
}

ZEPS_VARIANT_CHECK(zepsMusicDetect_G729I_16s) {
    Bytes a(38), b(38);
    u8::zepsMusicDetectInit_G729I(a.data());
    n8::zepsMusicDetectInit_G729I(b.data());
    // Through several 64-frame periods, with saturating words now and then.
    Zep16s frame = static_cast<Zep16s>(rng.chance(2) ? 1 : rng.uniform(32700, 32767));
    for (int k = 0; k < 200; ++k) {
        frame = frame == 32767 ? Zep16s{256} : static_cast<Zep16s>(frame + 1);
        const V16 rc = rng.vec<Zep16s>(10);
        V16 lags(5), gains(5);
        for (auto& l : lags) l = rng.chance(8) ? rng.s16() : static_cast<Zep16s>(rng.uniform(20, 143));
        for (auto& g : gains) g = rng.chance(8) ? rng.s16() : static_cast<Zep16s>(rng.uniform(0, 19661));
        const Zep32s r0 = static_cast<Zep32s>(rng.next());
        const Zep16s e = static_cast<Zep16s>(rng.uniform(-40, 40));
        const int rate = rng.chance(16) ? rng.uniform(-1, 3) : rng.uniform(0, 2);
        const Zep16s mode = static_cast<Zep16s>(rng.uniform(0, 1)), pv = static_cast<Zep16s>(rng.uniform(0, 1));
        Zep16s va = static_cast<Zep16s>(rng.chance(16) ? rng.uniform(-1, 2) : rng.uniform(0, 1)), vb = va;
        ASSERT_EQ(u8::zepsMusicDetect_G729I_16s(rate, r0, e, rc.data(), lags.data(), gains.data(), mode, frame, pv,
                                                &va, a.data()),
                  n8::zepsMusicDetect_G729I_16s(rate, r0, e, rc.data(), lags.data(), gains.data(), mode, frame, pv,
                                                &vb, b.data()));
        ASSERT_EQ(va, vb);
        ASSERT_TRUE(zeps::test::same_bytes(a, b));
    }
}
