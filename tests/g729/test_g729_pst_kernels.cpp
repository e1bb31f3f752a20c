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

TEST(G729PostFilterKernels, ExcitationMixU8) { check_mix(zeps::u8::g729_mix_excitation); }
TEST(G729PostFilterKernels, ExcitationMixN8) { check_mix(zeps::n8::g729_mix_excitation); }

TEST(G729PostFilterKernels, VectorEqualsScalarU8) { check_kernel(zeps::u8::g729_pst_kernel); }
TEST(G729PostFilterKernels, VectorEqualsScalarN8) { check_kernel(zeps::n8::g729_pst_kernel); }

}  // namespace
