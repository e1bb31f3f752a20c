// SPDX-License-Identifier: BSD-3-Clause
// Settings of the echo canceller's control stages: the Geigel detector's
// far-end peak floor and the coefficient guard's restore ratio (what each
// changes in the decisions, refused values leave the state alone).
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "frame/variants.h"

namespace {

struct Block {
    explicit Block(int size) : mem(static_cast<std::size_t>(size) + 16, 0) {}
    Zep8u* p() { return mem.data() + 3; }  // any address
    std::vector<Zep8u> mem;
};

Block geigel(float floor) {
    int size = 0;
    EXPECT_EQ(zeps::u8::zepsDoubleTalkGetSize_EC_32f(64, &size), zepStsNoErr);
    Block b(size);
    EXPECT_EQ(zeps::u8::zepsDoubleTalkInit_EC_32f(b.p(), 64, 1.0f, 16), zepStsNoErr);
    if (floor > 0.0f) {
        EXPECT_EQ(zeps::u8::zepsDoubleTalkSetFloor_EC_32f(floor, b.p()), zepStsNoErr);
    }
    return b;
}

/// Double-talk flag of a block of 64 samples at constant magnitudes.
int flagged(Block& b, float far, float nearIn) {
    std::vector<float> x(64, far), d(64, nearIn);
    for (std::size_t i = 1; i < 64; i += 2) x[i] = -far, d[i] = -nearIn;
    Zep32s dt = -1;
    EXPECT_EQ(zeps::u8::zepsDoubleTalk_EC_32f(x.data(), d.data(), &dt, 64, b.p()), zepStsNoErr);
    return dt;
}

TEST(EcSettings, DoubleTalkFloorIgnoresNearEndAloneWhileTheFarEndIsSilent) {
    Block plain = geigel(0.0f), floored = geigel(100.0f);
    EXPECT_EQ(flagged(plain, 10.0f, 50.0f), 1);  // near-end noise above a silent far end
    EXPECT_EQ(flagged(floored, 10.0f, 50.0f), 0);
    EXPECT_EQ(flagged(floored, 10.0f, 150.0f), 1);  // above the floor: double talk
    Block p2 = geigel(0.0f), f2 = geigel(100.0f);
    EXPECT_EQ(flagged(p2, 1000.0f, 500.0f), 0);  // far end active: the plain rule
    EXPECT_EQ(flagged(f2, 1000.0f, 500.0f), 0);
    EXPECT_EQ(flagged(p2, 1000.0f, 1200.0f), 1);
    EXPECT_EQ(flagged(f2, 1000.0f, 1200.0f), 1);
    const std::vector<Zep8u> before = f2.mem;
    for (const float bad : {-1.0f, NAN, INFINITY, 3.2e38f})
        EXPECT_EQ(zeps::u8::zepsDoubleTalkSetFloor_EC_32f(bad, f2.p()), zepStsRangeErr);
    EXPECT_EQ(zeps::u8::zepsDoubleTalkSetFloor_EC_32f(1.0f, nullptr), zepStsNullPtrErr);
    std::vector<Zep8u> raw(f2.mem.size(), 0);
    EXPECT_EQ(zeps::u8::zepsDoubleTalkSetFloor_EC_32f(1.0f, raw.data()), zepStsBadArgErr);
    EXPECT_EQ(f2.mem, before);
}

/// Frames until the guard restores (-1 when it never does within 20) after
/// a save, with the adapting filter's error 1.8 times the saved one's.
int frames_to_restore(float ratio) {
    int size = 0;
    EXPECT_EQ(zeps::u8::zepsCoefGuardGetSize_EC_32f(&size), zepStsNoErr);
    Block b(size);
    EXPECT_EQ(zeps::u8::zepsCoefGuardInit_EC_32f(b.p()), zepStsNoErr);
    if (ratio > 0.0f) {
        EXPECT_EQ(zeps::u8::zepsCoefGuardSetRestore_EC_32f(ratio, b.p()), zepStsNoErr);
    }
    Zep32s action = -1;
    const float good[3] = {1000.0f, 10.0f, 10.0f}, worse[3] = {1000.0f, 18.0f, 10.0f};
    EXPECT_EQ(zeps::u8::zepsCoefGuard_EC_32f(good, 0, &action, b.p()), zepStsNoErr);
    EXPECT_EQ(action, ZEP_EC_GUARD_SAVE);
    for (int f = 1; f <= 20; ++f) {
        EXPECT_EQ(zeps::u8::zepsCoefGuard_EC_32f(worse, 1, &action, b.p()), zepStsNoErr);
        if (action == ZEP_EC_GUARD_RESTORE) return f;
    }
    return -1;
}

TEST(EcSettings, GuardRestoresOnTheSetLead) {
    EXPECT_EQ(frames_to_restore(0.0f), -1);  // 3 dB after Init: a 2.6 dB lead is kept
    EXPECT_EQ(frames_to_restore(0.7f), 1);
    EXPECT_EQ(frames_to_restore(0.5f), -1);
    int size = 0;
    ASSERT_EQ(zeps::u8::zepsCoefGuardGetSize_EC_32f(&size), zepStsNoErr);
    Block b(size);
    ASSERT_EQ(zeps::u8::zepsCoefGuardInit_EC_32f(b.p()), zepStsNoErr);
    const std::vector<Zep8u> before = b.mem;
    for (const float bad : {0.0f, -0.5f, 1.01f, NAN, INFINITY})
        EXPECT_EQ(zeps::u8::zepsCoefGuardSetRestore_EC_32f(bad, b.p()), zepStsRangeErr);
    EXPECT_EQ(zeps::u8::zepsCoefGuardSetRestore_EC_32f(0.7f, nullptr), zepStsNullPtrErr);
    std::vector<Zep8u> raw(b.mem.size(), 0);
    EXPECT_EQ(zeps::u8::zepsCoefGuardSetRestore_EC_32f(0.7f, raw.data()), zepStsBadArgErr);
    EXPECT_EQ(b.mem, before);
}

}  // namespace
