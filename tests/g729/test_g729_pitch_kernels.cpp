// SPDX-License-Identifier: BSD-3-Clause
// The plain-arithmetic scaling of the weighted speech in the Annex A
// open-loop pitch search against the reference's saturating form, both
// builds: even-sample energies exactly at each threshold of the choice
// (doubled sum 2^20 and MAX_32, -32768 samples included), odd samples that
// saturate the shift by 3, and random speech-scale and full-range signals.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "tests/variant_check.h"

#define ZEPS_DECLARE_OL_SCALE(ns)                                                   \
    namespace zeps::ns {                                                            \
    void g729_ol_scale(bool fast, const std::int16_t* sig, std::int16_t* scal);    \
    std::int16_t g729_ol_pitch_a(bool fast, const std::int16_t* src);              \
    }
ZEPS_DECLARE_OL_SCALE(u8)
#if defined(__x86_64__)  // elsewhere n8 names the one generic build, u8
ZEPS_DECLARE_OL_SCALE(n8)
#endif

namespace {
using V16 = std::vector<std::int16_t>;
using zeps::test::Rng;
constexpr int kSpan = 223;  // 143 past samples and one frame

std::int64_t isqrt(std::int64_t v) {
    auto x = static_cast<std::int64_t>(std::sqrt(static_cast<double>(v)));
    while (x * x > v) --x;
    while ((x + 1) * (x + 1) <= v) ++x;
    return x;
}

/// Even samples whose squares sum to `energy` exactly (greedy squares,
/// random signs, at most 32767 each, or -32768 when asked), odd samples
/// from `odd_mode`: 0 small, 1 extremes, 2 around the shl(.,3) clamp.
V16 signal(Rng& rng, std::int64_t energy, int odd_mode, bool min16) {
    V16 s(kSpan, 0);
    std::int64_t left = energy;
    int i = 0;
    if (min16 && left >= 32768LL * 32768) {
        s[0] = -32768;
        left -= 32768LL * 32768;
        i = 2;
    }
    for (; i < kSpan && left > 0; i += 2) {
        std::int64_t x = isqrt(left);
        if (x > 32767) x = 32767;
        left -= x * x;
        s[i] = static_cast<std::int16_t>(rng.uniform(0, 1) ? x : -x);
    }
    EXPECT_EQ(left, 0);
    for (int k = 1; k < kSpan; k += 2) {
        switch (odd_mode) {
            case 0: s[k] = static_cast<std::int16_t>(rng.uniform(-300, 300)); break;
            case 1: s[k] = rng.uniform(0, 1) ? 32767 : -32768; break;
            default: s[k] = static_cast<std::int16_t>(rng.uniform(-4097, 4097)); break;
        }
    }
    return s;
}

template <class F>
void scalings_agree(F scale) {
    Rng rng(73);
    const std::int64_t kMax32 = 2147483647;
    // Energies (undoubled) around 2^19 (doubled 2^20) and MAX_32 / 2.
    const std::int64_t bounds[] = {0, 1, 524287, 524288, 524289, 1073741823, 1073741824, 1073741825,
                                   kMax32, 60LL * 32768 * 32768};
    int cases = 0;
    for (const std::int64_t e : bounds)
        for (int odd = 0; odd < 3; ++odd)
            for (int m = 0; m < 2; ++m) {
                const V16 s = signal(rng, e, odd, m == 1);
                V16 a(kSpan, 0x5a5a), b(kSpan, -0x5a5b);
                scale(true, s.data(), a.data());
                scale(false, s.data(), b.data());
                ASSERT_EQ(a, b) << "energy " << e << " odd mode " << odd;
                ++cases;
            }
    for (int rep = 0; rep < 3000; ++rep) {
        V16 s(kSpan);
        const int amp = rep % 3 == 0 ? 700 : rep % 3 == 1 ? 6000 : 32767;
        for (auto& x : s) x = static_cast<std::int16_t>(rng.uniform(-amp - (amp == 32767), amp));
        V16 a(kSpan, 0x5a5a), b(kSpan, -0x5a5b);
        scale(true, s.data(), a.data());
        scale(false, s.data(), b.data());
        ASSERT_EQ(a, b) << "rep " << rep;
    }
    EXPECT_EQ(cases, 60);
}

/// A periodic signal (period 20..143) of peak `amp` with noise, whose even
/// and odd samples may differ in scale (odd_gain), so that the energy bound
/// of the lane correlations holds, barely holds or fails.
V16 voiced(Rng& rng, int amp, double odd_gain) {
    V16 s(kSpan);
    const int period = static_cast<int>(rng.uniform(20, 143));
    const double noise = static_cast<double>(rng.uniform(0, 30)) / 100.0;
    for (int i = 0; i < kSpan; ++i) {
        const double ph = 6.283185307179586 * (i % period) / period;
        double v = amp * (std::sin(ph) * (1 - noise) + noise * (static_cast<double>(rng.uniform(-1000, 1000)) / 1000.0));
        if (i % 2) v *= odd_gain;
        v = std::fmax(-32768.0, std::fmin(32767.0, v));
        s[i] = static_cast<std::int16_t>(v);
    }
    return s;
}

template <class F>
void searches_agree(F pitch) {
    Rng rng(19);
    const int amps[] = {90, 180, 360, 724, 1500, 3000, 3500, 4000, 4200, 4400, 4600, 5500, 8000, 20000, 32767};
    const double odd_gains[] = {1.0, 0.25, 1.5, 3.0, 8.0};
    for (int rep = 0; rep < 4; ++rep)
        for (const int amp : amps)
            for (const double g : odd_gains) {
                const V16 s = voiced(rng, amp, g);
                ASSERT_EQ(pitch(true, s.data() + 143), pitch(false, s.data() + 143))
                    << "amp " << amp << " odd gain " << g << " rep " << rep;
            }
    for (int rep = 0; rep < 300; ++rep) {
        V16 s(kSpan);
        for (auto& x : s) x = rng.s16();
        ASSERT_EQ(pitch(true, s.data() + 143), pitch(false, s.data() + 143)) << "random rep " << rep;
    }
}

TEST(G729PitchKernels, OpenLoopSearchLanesEqualReferenceU8) { searches_agree(zeps::u8::g729_ol_pitch_a); }
#if defined(__x86_64__)
TEST(G729PitchKernels, OpenLoopSearchLanesEqualReferenceN8) { searches_agree(zeps::n8::g729_ol_pitch_a); }
#endif

TEST(G729PitchKernels, OpenLoopScalingEqualsSaturatingU8) { scalings_agree(zeps::u8::g729_ol_scale); }
#if defined(__x86_64__)
TEST(G729PitchKernels, OpenLoopScalingEqualsSaturatingN8) { scalings_agree(zeps::n8::g729_ol_scale); }
#endif

}  // namespace
