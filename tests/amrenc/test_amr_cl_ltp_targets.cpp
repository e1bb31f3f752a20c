// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR cl_ltp and subframePostProc: the codebook target xn2 and the LTP
// residual res2 with the pitch contribution removed, and the total
// excitation from the two gains, eight samples at a time against the
// reference operators, at the saturation boundaries (products at +-2^29,
// (-32768)^2, sums and shifts past 32 bits, subtractions past 16 bits); the
// gain quantiser's energies and correlations against their L_mac chains;
// the open-loop search signal's scaling at its energy thresholds.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "amr/enc_gain.h"
#include "amr/enc_pitch.h"
#include "amr/ol_corr_lanes.h"
#include "tests/variant_check.h"

namespace {

TEST(AmrClLtpTargets, LanesEqualReferenceOperators) {
    namespace k = zeps::ref::amr_enc;
    zeps::test::Rng rng(795);
    // products v g at 2^29 - 1, 2^29, -2^29, -2^29 - 1 and (-32768)^2
    const std::int16_t gains[] = {-32768, -32767, -1, 0, 1, 16384, 19661, 32767};
    const std::int16_t edges[] = {-32768, -32767, -16385, -16384, -16383, -1, 0, 1, 16383, 16384, 16385, 32767};
    int saturated = 0;
    for (int round = 0; round < 20000; ++round) {
        std::vector<std::int16_t> x(40), v(40);
        const std::int16_t g = rng.chance(2) ? gains[rng.uniform(0, 7)] : rng.s16();
        for (int i = 0; i < 40; i++) {
            x[i] = rng.chance(4) ? edges[rng.uniform(0, 11)] : rng.s16();
            v[i] = rng.chance(4) ? edges[rng.uniform(0, 11)] : rng.s16();
        }
        std::vector<std::int16_t> want(40, 0x5a5a), got(40, 0x5a5a);
        k::subtract_gained_scalar(x.data(), v.data(), g, want.data());
        k::subtract_gained(x.data(), v.data(), g, got.data());
        ASSERT_EQ(got, want) << "round " << round << " g " << g;
        std::vector<std::int16_t> inplace = x;  // res2 is updated in place
        k::subtract_gained(inplace.data(), v.data(), g, inplace.data());
        ASSERT_EQ(inplace, want) << "round " << round;
        for (int i = 0; i < 40; i++) saturated += want[i] == 32767 || want[i] == -32768;
    }
    // the reference form against a direct reading of the operators at the product boundaries
    using namespace zeps::ref;
    for (std::int16_t g : gains)
        for (std::int16_t e : edges) {
            std::vector<std::int16_t> x(40, 0), v(40, e), got(40, 0x5a5a);
            k::subtract_gained(x.data(), v.data(), g, got.data());
            EXPECT_EQ(got[39], sub(0, extract_h(L_shl(L_mult(e, g), 1)))) << e << " " << g;
        }
    EXPECT_GT(saturated, 1000);
}

TEST(AmrClLtpTargets, ExcitationLanesEqualReferenceOperators) {
    namespace k = zeps::ref::amr_enc;
    zeps::test::Rng rng(122);
    const std::int16_t gains[] = {-32768, -1, 0, 1, 8192, 16384, 19661, 32767};
    const std::int16_t edges[] = {-32768, -32767, -1, 0, 1, 32766, 32767};
    int clamped = 0;
    for (int round = 0; round < 40000; ++round) {
        std::vector<std::int16_t> exc(40), code(40);
        const std::int16_t gp = rng.chance(2) ? gains[rng.uniform(0, 7)] : rng.s16();
        const std::int16_t gc = rng.chance(2) ? gains[rng.uniform(0, 7)] : rng.s16();
        const auto shift = static_cast<std::int16_t>(rng.uniform(1, 2));  // 2 at 12.2 kbit/s
        for (int i = 0; i < 40; i++) {
            exc[i] = rng.chance(3) ? edges[rng.uniform(0, 6)] : rng.s16();
            code[i] = rng.chance(3) ? edges[rng.uniform(0, 6)] : rng.s16();
        }
        std::vector<std::int16_t> want = exc, got = exc;
        k::gained_excitation_scalar(want.data(), code.data(), gp, gc, shift);
        k::gained_excitation(got.data(), code.data(), gp, gc, shift);
        ASSERT_EQ(got, want) << "round " << round << " gains " << gp << " " << gc << " shift " << shift;
        for (int i = 0; i < 40; i++) clamped += want[i] == 32767 || want[i] == -32768;
    }
    EXPECT_GT(clamped, 10000);
}

TEST(AmrClLtpTargets, GainEnergiesEqualMacChains) {
    namespace k = zeps::ref::amr_enc;
    using namespace zeps::ref;
    zeps::test::Rng rng(59);
    const int levels[] = {0, 4, 4096, 16384, 32767};
    int saturated = 0;
    for (int round = 0; round < 20000; ++round) {
        std::vector<std::int16_t> a(40), b(40);
        const int la = levels[rng.uniform(0, 4)], lb = levels[rng.uniform(0, 4)];
        const bool same = rng.chance(4);  // equal or opposite vectors meet the Cauchy-Schwarz bound
        for (int i = 0; i < 40; i++) {
            a[i] = rng.chance(8) ? (rng.chance(2) ? -32768 : 32767) : static_cast<std::int16_t>(rng.uniform(-la, la));
            b[i] = same ? a[i] : rng.chance(8) ? -32768 : static_cast<std::int16_t>(rng.uniform(-lb, lb));
        }
        const Word32 init = static_cast<Word32>(rng.uniform(0, 1));
        Word32 chain = init, squares = init;
        for (int i = 0; i < 40; i++) {
            chain = L_mac(chain, a[i], b[i]);
            squares = L_mac(squares, a[i], a[i]);
        }
        ASSERT_EQ(k::mac_chain(a.data(), b.data(), init), chain) << "round " << round;
        ASSERT_EQ(k::sum_sq_sat(a.data(), init), squares) << "round " << round;
        saturated += chain == MAX_32 || chain == MIN_32 || squares == MAX_32;
    }
    EXPECT_GT(saturated, 1000);
}

TEST(AmrClLtpTargets, OpenLoopScalingLanesEqualReferenceOperators) {
    namespace k = zeps::ref::amr;
    using namespace zeps::ref;
    zeps::test::Rng rng(143);
    // 223 and 303 samples (80- and 160-sample frames); levels either side of
    // the 2^20 threshold (|x| near 724) and of saturation
    const int levels[] = {0, 1, 64, 100, 724, 725, 2000, 32767};
    int facs[3] = {};
    for (int round = 0; round < 6000; ++round) {
        const int n = rng.chance(2) ? 223 : 303;
        const int lvl = levels[rng.uniform(0, 7)];
        std::vector<std::int16_t> x(static_cast<std::size_t>(n));
        for (auto& v : x) v = static_cast<std::int16_t>(rng.uniform(-lvl, lvl));
        if (rng.chance(4)) x[static_cast<std::size_t>(rng.uniform(0, n - 1))] = rng.chance(2) ? -32768 : 32767;
        Word32 t0 = 0;
        for (auto v : x) t0 = L_mac(t0, v, v);
        std::vector<std::int16_t> want(x.size(), 0x5a5a), got(x.size(), 0x5a5a);
        const int fw = k::scale_for_search_scalar(x.data(), n, t0, want.data());
        const int fg = k::scale_for_search(x.data(), n, t0, got.data());
        ASSERT_EQ(fg, fw) << "round " << round;
        ASSERT_EQ(got, want) << "round " << round << " level " << lvl;
        facs[fw == 3 ? 0 : fw == -3 ? 1 : 2]++;
    }
    for (int f : facs) EXPECT_GT(f, 500);
}

}  // namespace
