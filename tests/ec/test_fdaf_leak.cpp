// SPDX-License-Identifier: BSD-3-Clause
// The frequency-domain update with the leakage step: it adapts while the
// echo dominates the error, holds the filter when the error is mostly a
// near-end signal the filter cannot explain (the property that keeps it in
// place in double talk), and a step of 0 leaves the coefficients alone.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "frame/variants.h"

namespace {

constexpr int kOrder = 6, kParts = 4, kB = 32;

/// A state block whose state lands at the same place in every copy (a
/// 16-byte-aligned buffer), so a copy is a valid state.
struct FdState {
    std::vector<Zep8u> mem;
    FdState() {
        int s = 0;
        EXPECT_EQ(zeps::u8::zepsFreqDomainFilterGetSize_EC_32f(kOrder, kParts, &s), zepStsNoErr);
        mem.assign(static_cast<std::size_t>(s) + 16, 0);
        EXPECT_EQ(zeps::u8::zepsFreqDomainFilterInit_EC_32f(p(), kOrder, kParts), zepStsNoErr);
    }
    FdState(const FdState& o) : mem(o.mem.size(), 0) {
        std::memcpy(p(), const_cast<FdState&>(o).p(), o.mem.size() - 16);
    }
    FdState& operator=(const FdState&) = delete;
    Zep8u* p() {
        const auto a = reinterpret_cast<std::uintptr_t>(mem.data());
        return mem.data() + ((16 - a % 16) % 16);
    }
};

/// Far end white noise (amplitude `level`), echo through a fixed decaying
/// path, near-end noise of the given amplitude added; deterministic.
struct Source {
    std::uint32_t seed = 12345;
    float level = 3000.0f;
    std::vector<float> hist = std::vector<float>(kB * kParts + kB, 0.0f);
    float uniform() {
        seed = seed * 1664525u + 1013904223u;
        return static_cast<float>(static_cast<std::int32_t>(seed)) * 0x1.0p-31f;
    }
    void block(float* far, float* nearIn, float* echo, float noise) {
        const std::size_t L = static_cast<std::size_t>(kB * kParts);
        std::memmove(hist.data(), hist.data() + kB, sizeof(float) * L);
        for (int n = 0; n < kB; ++n) hist[L + static_cast<std::size_t>(n)] = far[n] = level * uniform();
        for (int n = 0; n < kB; ++n) {
            double y = 0;
            for (std::size_t k = 0; k < L; ++k)
                y += 0.4 * std::exp(-0.04 * static_cast<double>(k)) * std::cos(0.3 * static_cast<double>(k)) *
                     hist[L + static_cast<std::size_t>(n) - k];
            echo[n] = static_cast<float>(y);
            nearIn[n] = echo[n] + noise * uniform();
        }
    }
};

/// Echo-only residual power of the state's adapting filter over 8 blocks (no
/// update; measured once the history holds only these blocks), relative to
/// the echo's power, in dB.
double residual_db(FdState st, Source src) {
    float far[kB], nearIn[kB], echo[kB], e[kB], v[kB];
    double pe = 0, pr = 0;
    for (int b = 0; b < kParts + 1 + 8; ++b) {
        src.block(far, nearIn, echo, 0.0f);
        EXPECT_EQ(zeps::u8::zepsFreqDomainFilter_EC_32f(far, echo, e, v, st.p()), zepStsNoErr);
        if (b > kParts)
            for (int n = 0; n < kB; ++n) pe += double{echo[n]} * echo[n], pr += double{e[n]} * e[n];
    }
    return 10.0 * std::log10(pr / pe);
}

void run(FdState& st, Source& src, int blocks, float noise, bool leak, float step = 1.0f) {
    float far[kB], nearIn[kB], echo[kB], e[kB], v[kB];
    const float delta = 1000.0f * 2 * kB * kParts;
    for (int b = 0; b < blocks; ++b) {
        src.block(far, nearIn, echo, noise);
        ASSERT_EQ(zeps::u8::zepsFreqDomainFilter_EC_32f(far, nearIn, e, v, st.p()), zepStsNoErr);
        ASSERT_EQ(leak ? zeps::u8::zepsFreqDomainLeakUpdate_EC_32f(0, step, delta, st.p())
                       : zeps::u8::zepsFreqDomainCoefUpdate_EC_32f(0, step, delta, st.p()),
                  zepStsNoErr);
    }
}

TEST(FdafLeak, ConvergesThenHoldsAgainstNearEndNoise) {
    FdState st;
    Source src;
    run(st, src, 400, 3.0f, true);
    const double converged = residual_db(st, src);
    EXPECT_LT(converged, -30.0);
    // A near-end signal at three times the echo's level for 100 blocks: the
    // plain update from the same state drifts, the leakage step much less
    // (measured: converged -62.1 dB; after: leakage -15.4 dB, plain -3.9 dB).
    FdState plain = st;
    Source src2 = src;
    run(st, src, 100, 3000.0f, true);
    run(plain, src2, 100, 3000.0f, false);
    const double leak = residual_db(st, src), drift = residual_db(plain, src2);
    std::printf("converged %.1f dB; after near-end noise: leakage step %.1f dB, plain step %.1f dB\n", converged, leak,
                drift);
    EXPECT_LT(leak, drift - 10.0);
    EXPECT_LT(leak, -15.0);
}

TEST(FdafLeak, StepZeroKeepsTheCoefficientsAndRestartIsAccepted) {
    FdState st;
    Source src;
    run(st, src, 50, 3.0f, true);
    FdState copy = st;
    Source src2 = src;
    run(st, src, 20, 3.0f, true, 0.0f);  // the estimate moves, the filter does not
    EXPECT_EQ(residual_db(st, src), residual_db(copy, src));
    float far[kB], nearIn[kB], echo[kB], e[kB], v[kB];
    src2.block(far, nearIn, echo, 3.0f);
    ASSERT_EQ(zeps::u8::zepsFreqDomainFilter_EC_32f(far, nearIn, e, v, copy.p()), zepStsNoErr);
    EXPECT_EQ(zeps::u8::zepsFreqDomainLeakUpdate_EC_32f(3, 1.0f, 1.0f, copy.p()), zepStsNoErr);
    EXPECT_EQ(zeps::u8::zepsFreqDomainLeakUpdate_EC_32f(4, 1.0f, 1.0f, copy.p()), zepStsBadArgErr);
    EXPECT_EQ(zeps::u8::zepsFreqDomainLeakUpdate_EC_32f(0, NAN, 1.0f, copy.p()), zepStsRangeErr);
    EXPECT_EQ(zeps::u8::zepsFreqDomainLeakUpdate_EC_32f(0, 1.0f, INFINITY, copy.p()), zepStsRangeErr);
}

// The caller's step gates the initial steps (1.3 per bin) but does not scale
// them: the same coefficients at steps 0.3 and 1.0 over the first 5 blocks
// (5 of the 20 step units the initial steps last); once adapted it scales
// the leakage step.
TEST(FdafLeak, InitialStepsAreGatedNotScaledByTheCallersStep) {
    FdState low, full;
    Source a, b;
    run(low, a, 5, 3.0f, true, 0.3f);
    run(full, b, 5, 3.0f, true, 1.0f);
    EXPECT_EQ(residual_db(low, a), residual_db(full, b));
    run(low, a, 40, 3.0f, true);
    FdState low2 = low;
    Source a2 = a;
    run(low, a, 5, 3.0f, true, 0.3f);
    run(low2, a2, 5, 3.0f, true, 1.0f);
    EXPECT_NE(residual_db(low, a), residual_db(low2, a2));
}

// The proportionate share: on this path (its energy in the first of 4
// partitions) it converges faster than the equal share over the first 8
// blocks (the initial steps, 1.3 per bin);
// share 0 is the equal share bit for bit; refused shares leave the state
// alone. The far-end power hold is off (decay 1) so that the shares alone
// differ.
TEST(FdafLeak, ProportionateShareConvergesFasterOnAShortPath) {
    FdState equal, prop, zero;
    for (FdState* s : {&equal, &prop, &zero})
        ASSERT_EQ(zeps::u8::zepsFreqDomainFilterSetHold_EC_32f(1.0f, s->p()), zepStsNoErr);
    ASSERT_EQ(zeps::u8::zepsFreqDomainFilterSetProp_EC_32f(0.5f, prop.p()), zepStsNoErr);
    ASSERT_EQ(zeps::u8::zepsFreqDomainFilterSetProp_EC_32f(0.0f, zero.p()), zepStsNoErr);
    const std::vector<Zep8u> before = prop.mem;
    for (const float bad : {-0.01f, 1.01f, NAN, INFINITY})
        EXPECT_EQ(zeps::u8::zepsFreqDomainFilterSetProp_EC_32f(bad, prop.p()), zepStsRangeErr);
    EXPECT_EQ(prop.mem, before);
    EXPECT_EQ(zeps::u8::zepsFreqDomainFilterSetProp_EC_32f(0.5f, nullptr), zepStsNullPtrErr);
    std::vector<Zep8u> raw(equal.mem.size(), 0);
    EXPECT_EQ(zeps::u8::zepsFreqDomainFilterSetProp_EC_32f(0.5f, raw.data()), zepStsBadArgErr);
    Source a, b, c;
    run(equal, a, 8, 3.0f, true);
    run(prop, b, 8, 3.0f, true);
    run(zero, c, 8, 3.0f, true);
    const double eq = residual_db(equal, a), pr = residual_db(prop, b);
    // Measured: equal share -13.0 dB, proportionate -16.6 dB.
    std::printf("after 8 blocks: equal share %.1f dB, proportionate share 0.5 %.1f dB\n", eq, pr);
    EXPECT_LT(pr, eq - 2.0);
    EXPECT_EQ(zero.mem, equal.mem);
}

// The adapting filter alone (after a save, as a guard's caller runs it)
// changes no result: the same errors, bit for bit, through saves, restores
// (the saved filter's error formed late), restarts and both updates, with
// the proportionate share; the saved filter's error once both are run again.
TEST(FdafLeak, AdaptingFilterAloneGivesTheSameErrors) {
    FdState both, alone;
    ASSERT_EQ(zeps::u8::zepsFreqDomainFilterSetProp_EC_32f(0.5f, both.p()), zepStsNoErr);
    ASSERT_EQ(zeps::u8::zepsFreqDomainFilterSetProp_EC_32f(0.5f, alone.p()), zepStsNoErr);
    Source src;
    const float delta = 1000.0f * 2 * kB * kParts;
    float far[kB], nearIn[kB], echo[kB], e[kB], v[kB], e2[kB], v2[kB];
    int restoredLate = 0;
    for (int b = 0; b < 300; ++b) {
        src.block(far, nearIn, echo, b % 50 < 10 ? 2000.0f : 3.0f);  // bursts of near-end noise
        const bool single = b % 3 != 0;
        ASSERT_EQ(zeps::u8::zepsFreqDomainFilter_EC_32f(far, nearIn, e, v, both.p()), zepStsNoErr);
        if (single) {
            ASSERT_EQ(zeps::u8::zepsFreqDomainFilterAdapt_EC_32f(far, nearIn, e2, alone.p()), zepStsNoErr);
        } else {
            ASSERT_EQ(zeps::u8::zepsFreqDomainFilter_EC_32f(far, nearIn, e2, v2, alone.p()), zepStsNoErr);
            ASSERT_EQ(std::memcmp(v, v2, sizeof v), 0) << "block " << b;
        }
        ASSERT_EQ(std::memcmp(e, e2, sizeof e), 0) << "block " << b;
        const int action = b % 7 == 3 ? 1 : b % 11 == 5 ? 2 : b % 37 == 20 ? 3 : 0;
        restoredLate += single && action == 2;
        const float step = b % 13 == 0 ? 0.0f : 0.8f;
        if (b % 2 == 0) {
            ASSERT_EQ(zeps::u8::zepsFreqDomainLeakUpdate_EC_32f(action, step, delta, both.p()), zepStsNoErr);
            ASSERT_EQ(zeps::u8::zepsFreqDomainLeakUpdate_EC_32f(action, step, delta, alone.p()), zepStsNoErr);
        } else {
            ASSERT_EQ(zeps::u8::zepsFreqDomainCoefUpdate_EC_32f(action % 3, step, delta, both.p()), zepStsNoErr);
            ASSERT_EQ(zeps::u8::zepsFreqDomainCoefUpdate_EC_32f(action % 3, step, delta, alone.p()), zepStsNoErr);
        }
    }
    EXPECT_GT(restoredLate, 5);
    EXPECT_EQ(zeps::u8::zepsFreqDomainFilterAdapt_EC_32f(far, nearIn, nullptr, alone.p()), zepStsNullPtrErr);
    std::vector<Zep8u> raw(alone.mem.size(), 0);
    EXPECT_EQ(zeps::u8::zepsFreqDomainFilterAdapt_EC_32f(far, nearIn, e, raw.data()), zepStsBadArgErr);
}

}  // namespace

// The far-end power hold: a far end that falls by 30 dB every other 8
// blocks over near-end noise at the quiet far end's level. Normalised by the
// current power (decay 1) the quiet blocks take full steps on an error that
// is mostly noise; the held power keeps them small, and the filter stays
// closer to the path. Refused decays leave the state alone.
TEST(FdafLeak, HeldFarEndPowerKeepsTheFilterThroughQuietStretches) {
    FdState held, plain;
    ASSERT_EQ(zeps::u8::zepsFreqDomainFilterSetHold_EC_32f(1.0f, plain.p()), zepStsNoErr);
    const std::vector<Zep8u> before = held.mem;
    for (const float bad : {0.0f, -0.01f, 1.01f, NAN, INFINITY})
        EXPECT_EQ(zeps::u8::zepsFreqDomainFilterSetHold_EC_32f(bad, held.p()), zepStsRangeErr);
    EXPECT_EQ(held.mem, before);
    EXPECT_EQ(zeps::u8::zepsFreqDomainFilterSetHold_EC_32f(0.2f, nullptr), zepStsNullPtrErr);
    std::vector<Zep8u> raw(held.mem.size(), 0);
    EXPECT_EQ(zeps::u8::zepsFreqDomainFilterSetHold_EC_32f(0.2f, raw.data()), zepStsBadArgErr);
    EXPECT_EQ(raw, std::vector<Zep8u>(held.mem.size(), 0));
    Source a, b;
    for (int r = 0; r < 30; ++r) {
        a.level = b.level = r % 2 == 0 ? 3000.0f : 95.0f;
        run(held, a, 8, 95.0f, true);
        run(plain, b, 8, 95.0f, true);
    }
    a.level = b.level = 3000.0f;
    const double h = residual_db(held, a), p = residual_db(plain, b);
    // Measured: held -31.8 dB, current power -23.1 dB.
    std::printf("after 240 blocks of alternating far-end levels: held %.1f dB, current power %.1f dB\n", h, p);
    EXPECT_LT(h, p - 3.0);
}
