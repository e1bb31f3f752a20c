// SPDX-License-Identifier: BSD-3-Clause
// The vectorised G.729 pitch kernels against their plain reference loops,
// on inputs chosen to sit on both sides of the energy bounds that select
// the vector path (full-scale excitation, -32768 runs, tiny signals).
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "g729/pitch_kernels.h"
#include "tests/variant_check.h"

namespace {

namespace k = zeps::ref::g729p;
using zeps::test::Rng;
using V16 = std::vector<std::int16_t>;

/// A vector whose level spans the whole range: silence, speech-like, loud
/// and saturated runs.
V16 levelled(Rng& rng, std::size_t n) {
    static const int kLevels[] = {0, 3, 300, 3000, 9000, 18000, 18001, 25000, 32767};
    const int lvl = kLevels[rng.uniform(0, 8)];
    V16 v(n);
    for (auto& x : v) x = static_cast<std::int16_t>(rng.uniform(-lvl, lvl));
    if (rng.chance(6))  // saturated runs, with -32768 products
        for (auto i = static_cast<std::size_t>(rng.uniform(0, static_cast<std::int64_t>(n) - 1)); i < n; i += 3)
            v[i] = rng.chance(2) ? -32768 : 32767;
    return v;
}

V16 response(Rng& rng) {
    V16 h = levelled(rng, 40);
    if (rng.chance(2)) h[0] = 4096;
    return h;
}

TEST(G729PitchKernels, VectorPathsEqualReferenceLoops) {
    Rng rng(729);
    for (int round = 0; round < 3000; ++round) {
        const V16 exc = levelled(rng, 194), xn = levelled(rng, 40), h = response(rng);
        const auto lag = static_cast<std::int16_t>(rng.uniform(18, 144));
        const auto frac = static_cast<std::int16_t>(rng.uniform(-1, 1));

        V16 a = exc, b = exc;
        k::pred_lt_3(a.data() + 154, lag, frac);
        k::pred_lt_3_scalar(b.data() + 154, lag, frac);
        ASSERT_EQ(a, b) << "Pred_lt_3 round " << round;

        V16 ya(40), yb(40);
        k::convolve_q12(exc.data() + 100, h.data(), ya.data());
        k::convolve_q12_scalar(exc.data() + 100, h.data(), yb.data());
        ASSERT_EQ(ya, yb) << "Convolve round " << round;

        ASSERT_EQ(k::g_pitch(xn.data(), ya.data()), k::g_pitch_scalar(xn.data(), ya.data())) << "G_pitch " << round;

        V16 da(40), db(40);
        k::cor_h_x(h.data(), xn.data(), da.data());
        k::cor_h_x_scalar(h.data(), xn.data(), db.data());
        ASSERT_EQ(da, db) << "Cor_h_X round " << round;

        const auto t0 = static_cast<std::int16_t>(rng.uniform(20, 134));
        const auto t1 = static_cast<std::int16_t>(t0 + rng.uniform(6, 9));
        const auto tmin = static_cast<std::int16_t>(t0 - 4), tmax = static_cast<std::int16_t>(t1 + 4);
        std::int16_t ca[20] = {}, cb[20] = {};
        k::norm_corr(exc.data() + 154, xn.data(), h.data(), tmin, tmax, ca);
        k::norm_corr_scalar(exc.data() + 154, xn.data(), h.data(), tmin, tmax, cb);
        ASSERT_EQ(0, std::memcmp(ca, cb, sizeof ca)) << "Norm_Corr round " << round;
    }
}

TEST(G729PitchKernels, ContributionAndErrorMemoryEqualReferenceLoops) {
    // Every gain at the edges and at random against vectors of every level,
    // full-scale ones with -32768 * -32768 products included.
    Rng rng(38);
    const std::int16_t gains[] = {-32768, -32767, -1, 0, 1, 16384, 19661, 32767};
    for (int round = 0; round < 20000; ++round) {
        const auto gain = round < 800 ? gains[round % 8] : static_cast<std::int16_t>(rng.uniform(-32768, 32767));
        const V16 y = levelled(rng, 40), xn = levelled(rng, 40);
        V16 a(40), b(40);
        k::adaptive_contribution(gain, y.data(), xn.data(), a.data());
        k::adaptive_contribution_scalar(gain, y.data(), xn.data(), b.data());
        ASSERT_EQ(a, b) << "gain " << gain << " round " << round;
        const auto gc = round < 800 ? gains[round / 100] : static_cast<std::int16_t>(rng.uniform(-32768, 32767));
        const V16 z = levelled(rng, 40);
        V16 ma(10), mb(10);
        k::error_memory(gain, gc, xn.data(), y.data(), z.data(), ma.data());
        k::error_memory_scalar(gain, gc, xn.data(), y.data(), z.data(), mb.data());
        ASSERT_EQ(ma, mb) << "error memory, gains " << gain << " " << gc << " round " << round;
    }
}

}  // namespace
