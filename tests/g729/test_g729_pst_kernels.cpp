// SPDX-License-Identifier: BSD-3-Clause
// The vector kernels of the G.729 Annex A post-filter against their scalar
// twins (the reference's operators), both builds, on random and extreme
// inputs: the long-term mix, the tilt pre-emphasis, the AGC scaling and
// Residu under its plain-sum bound.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "tests/variant_check.h"

#define ZEPS_DECLARE_PST_KERNELS(ns)                                                                      \
    namespace zeps::ns {                                                                                  \
    void g729_pst_kernel(int, bool, const std::int16_t*, const std::int16_t*, std::int16_t*, std::int16_t, \
                         std::int16_t, int);                                                              \
    void g729_mix_excitation(bool, std::int16_t, std::int16_t, const std::int16_t*, std::int16_t*, int);   \
    std::int16_t g729_agc_gains(bool, std::int16_t, std::int16_t, std::int16_t, std::int16_t*);           \
    }
ZEPS_DECLARE_PST_KERNELS(u8)
#if defined(__x86_64__)  // elsewhere n8 names the one generic build, u8
ZEPS_DECLARE_PST_KERNELS(n8)
#endif

namespace {
using V16 = std::vector<std::int16_t>;
using zeps::test::Rng;

std::int16_t pick(Rng& rng, int mode) {
    switch (mode) {
        case 0: return static_cast<std::int16_t>(rng.uniform(-32768, 32767));
        case 1: return rng.next() % 2 ? 32767 : -32768;
        default: return rng.s16();
    }
}

template <class Kernel>
void check_kernel(Kernel k) {
    Rng rng(729);
    for (int round = 0; round < 3000; ++round) {
        const int mode = round % 3, which = round % 4;
        V16 a(11), x(200), y0(40), gains(40);
        for (auto& v : x) v = pick(rng, mode);
        const std::int16_t g0 = pick(rng, mode), g1 = pick(rng, mode);
        const int t0 = static_cast<int>(rng.uniform(20, 150));
        const std::int16_t* in = x.data() + 160;
        if (which == 3) {  // Residu: coefficients, then samples scaled into the bound
            std::int64_t sum_a = 0;
            for (auto& v : a) {
                v = pick(rng, mode);
                sum_a += std::abs(int{v});
            }
            const std::int64_t peak = sum_a == 0 ? 32768 : std::min<std::int64_t>(32768, 0x7fffffff / (2 * sum_a));
            const std::int64_t top = std::min<std::int64_t>(peak, 32767);
            for (int j = -10; j < 40; ++j) {  // extremes at the bound in mode 1
                const std::int64_t r = mode == 1 ? (rng.next() % 2 ? top : -top) : rng.uniform(-top, top);
                x[160 + j] = static_cast<std::int16_t>(r);
            }
        }
        if (which == 2) in = gains.data(), std::for_each(gains.begin(), gains.end(), [&](auto& v) { v = pick(rng, mode); });
        for (int j = 0; j < 40; ++j) y0[j] = x[160 + j];
        V16 yv = y0, ys = y0;
        k(which, true, a.data(), in, yv.data(), g0, g1, t0);
        k(which, false, a.data(), in, ys.data(), g0, g1, t0);
        ASSERT_EQ(yv, ys) << "kernel " << which << " round " << round;
    }
}

/// The excitation mix u = round(2 (gp v + gc c)) in lanes against its chain,
/// extreme gains (-32768 takes the chain) and odd lengths included.
template <class Mix>
void check_mix(Mix mix) {
    Rng rng(8);
    for (int round = 0; round < 3000; ++round) {
        const int mode = round % 3, len = 1 + static_cast<int>(rng.uniform(0, 80));
        V16 v(len), c(len);
        for (auto& x : v) x = pick(rng, mode);
        for (auto& x : c) x = pick(rng, mode);
        const std::int16_t gp = pick(rng, mode), gc = pick(rng, mode);
        V16 ov = v, os = v;
        mix(true, gp, gc, c.data(), ov.data(), len);
        mix(false, gp, gc, c.data(), os.data(), len);
        ASSERT_EQ(ov, os) << "round " << round;
    }
}

/// The AGC gain chain with its early settling against the reference's
/// chain: every Word16 starting gain, g0 at 0, 1 and its bound 32767 - fac
/// (where the add comes nearest saturating), the post-filter's factor 0.9 and
/// factors at the ends of the range.
template <class Gains>
void check_agc_gains(Gains gains) {
    for (const std::int16_t fac : {std::int16_t{29491}, std::int16_t{1}, std::int16_t{32767}, std::int16_t{16384}}) {
        const int top = 32767 - fac;
        for (const int g0 : {0, 1, top / 2, top - 1, top}) {
            if (g0 < 0) continue;
            for (int past = -32768; past <= 32767; ++past) {
                std::int16_t fast[40], ref[40];
                const auto p = static_cast<std::int16_t>(past), g = static_cast<std::int16_t>(g0);
                const std::int16_t last_fast = gains(true, p, g, fac, fast);
                const std::int16_t last_ref = gains(false, p, g, fac, ref);
                ASSERT_EQ(last_fast, last_ref) << fac << " " << g0 << " " << past;
                ASSERT_TRUE(std::equal(fast, fast + 40, ref)) << fac << " " << g0 << " " << past;
            }
        }
    }
}

TEST(G729PostFilterKernels, AgcGainsU8) { check_agc_gains(zeps::u8::g729_agc_gains); }
TEST(G729PostFilterKernels, AgcGainsN8) { check_agc_gains(zeps::n8::g729_agc_gains); }

TEST(G729PostFilterKernels, ExcitationMixU8) { check_mix(zeps::u8::g729_mix_excitation); }
TEST(G729PostFilterKernels, ExcitationMixN8) { check_mix(zeps::n8::g729_mix_excitation); }

TEST(G729PostFilterKernels, VectorEqualsScalarU8) { check_kernel(zeps::u8::g729_pst_kernel); }
TEST(G729PostFilterKernels, VectorEqualsScalarN8) { check_kernel(zeps::n8::g729_pst_kernel); }

}  // namespace
